/// The encoding of the format Btrieve.
#ifndef WQDATA_BLOCKS_BTRIEVEBLOCK_H_
#define WQDATA_BLOCKS_BTRIEVEBLOCK_H_

#include <cstdint>

#include <wqdata/blocks/datablock.h>

namespace wqd {

/// One buffer of bytes that the library never looks into. There are no records and no fields:
/// bytes can be held, appended and handed out.
class CBtrieveBlock final : public CDataBlock {
 public:
  /// An empty block.
  CBtrieveBlock();

  CBtrieveBlock& operator=(const CBtrieveBlock&) = delete;

  using CDataBlock::Add;

  void* GetData() override;
  int GetDataSize() override;
  int GetRecordCount() override;
  int GetFieldCount() override;
  bool StartRecord() override;
  bool EndRecord() override;
  bool Add(CDataItem& item) override;
  bool Add(FID id, const char* text) override;

  /// Appends a copy of `size` bytes, which may lie in the block itself. False, with the block as it
  /// was, for null with a `size` above 0, beyond 2 GiB, and without memory.
  bool AddBlob(FID id, const void* data, std::uint32_t size) override;

 protected:
  ~CBtrieveBlock() override;

 private:
  std::uint8_t* m_bytes = nullptr;
  std::uint32_t m_length = 0;
  std::uint32_t m_reserved = 0;
};

}  // namespace wqd

#endif  // WQDATA_BLOCKS_BTRIEVEBLOCK_H_
