/// The encoding of the format ZUL4.
#ifndef WQDATA_BLOCKS_ZUL4BLOCK_H_
#define WQDATA_BLOCKS_ZUL4BLOCK_H_

#include <cstdint>

#include <wqdata/blocks/datablock.h>
#include <wqdata/blocks/fielditem.h>
#include <wqdata/service/recordlib.h>

namespace wqd {

/// A thin class over the record library, which owns the bytes, the cursors and all writing. Records
/// of one block may have different numbers of fields; a record is counted as it is opened.
///
/// A walk stays within the bytes: those that a caller said to have handed in, and of them no more
/// than the header declares.
class CZul4Block final : public CDataBlock {
 public:
  /// An empty block to write.
  CZul4Block();

  /// A block around the caller's bytes, of which there are `size`; with a negative `size` as many
  /// as the header says. Null bytes give an empty block to write.
  CZul4Block(void* bytes, int size);

  /// A block that writes into the caller's buffer. One that can't hold the header, and null, make a
  /// block that refuses every field.
  struct Fixed {
    void* buffer;
    int size;
  };
  explicit CZul4Block(Fixed fixed);

  CZul4Block& operator=(const CZul4Block&) = delete;

  using CDataBlock::Add;

  void* GetData() override;
  int GetDataSize() override;
  int GetRecordCount() override;
  int GetFieldCount() override;

  /// What the current record declares, even if it can't be true.
  int DeclaredFieldCount() const;

  /// The largest `GetFieldCount` of its records. The cursors stay.
  int LargestFieldCount() const;

  int GetVectorSize() override;
  bool StartRecord() override;
  bool EndRecord() override;
  bool Add(FID id, const ZULTIME& value) override;
  bool Add(FID id, const ZULDATE& value) override;
  bool Add(FID id, const CFixPtNum& value) override;
  bool Add(FID id, double value) override;
  bool Add(FID id, std::int32_t value) override;
  bool Add(FID id, std::int16_t value) override;
  bool Add(CDataItem& item) override;
  bool Add(FID id, const char* text) override;
  bool AddError(FID id, std::int16_t error) override;
  bool AddShortVector(FID id, const std::int16_t* values, std::uint32_t count) override;
  bool AddLongVector(FID id, const std::int32_t* values, std::uint32_t count) override;
  bool AddDoubleVector(FID id, const double* values, std::uint32_t count) override;
  bool AddDateVector(FID id, const ZULDATE* values, std::uint32_t count) override;
  bool AddTimeVector(FID id, const ZULTIME* values, std::uint32_t count) override;
  bool AddStringVector(FID id, const char* strings, std::uint32_t count,
                       std::uint32_t bytes) override;
  bool AddPriceVector(FID id, const std::int32_t* prices, std::int16_t baseCode,
                      std::uint32_t count) override;
  bool FirstRecord() override;
  bool NextRecord() override;
  bool FirstField() override;
  bool NextField() override;
  bool FindField(FID id) override;
  bool GetCurrentField(CDataItem* item) override;
  FID GetCurrentFieldId() override;
  int GetCurrentFieldType() override;

 protected:
  ~CZul4Block() override;

 private:
  bool IsWritable() const;
  template <int type, typename Element>
  bool Append(FID id, Element element, std::uint16_t baseCode = 0);
  template <int type, typename Value>
  bool AddValue(FID id, Value value, int (*add)(service::ZUL4HANDLE&, FID, Value));
  bool AddScalar(CDataItem& item);
  bool AddVector(CDataItem& item);
  bool Refused();
  [[gnu::noinline]] bool ReadOtherField(CDataItem* item);  // apart from the rest: see `read_value`

  service::ZUL4HANDLE m_handle{};

  // The field that was read last, 0 for none, and its size: a step behind it need not look at it
  // again. They stand apart, since of neighbours compilers make one word, and the size, which
  // follows from the branch that read the field, would wait for the offset from field to field.
  std::uint32_t m_readField = 0;
  bool m_wrapped = false;  // around received bytes, whatever the read-only flag says
  std::uint32_t m_readSize = 0;
};

// Here, for a transfer to have the two without a call for each field.

inline bool CZul4Block::NextField() {
  if (m_readField != m_handle.field) return service::ZUL4_next_field(m_handle) == 0;
  return service::ZUL4_next_field(m_handle, m_readSize) == 0;
}

inline bool CZul4Block::GetCurrentField(CDataItem* item) {
  const std::uint32_t size =
      read_value<service::kZul4Fields>(service::ZUL4_field_bytes(m_handle), item);
  if (size == 0) return ReadOtherField(item);
  m_readField = m_handle.field;
  m_readSize = size;
  return true;
}

}  // namespace wqd

#endif  // WQDATA_BLOCKS_ZUL4BLOCK_H_
