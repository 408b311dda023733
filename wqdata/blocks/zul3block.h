/// The encoding of the format ZUL3.
#ifndef WQDATA_BLOCKS_ZUL3BLOCK_H_
#define WQDATA_BLOCKS_ZUL3BLOCK_H_

#include <cstdint>

#include <wqdata/blocks/datablock.h>
#include <wqdata/blocks/fielditem.h>
#include <wqdata/service/fieldlayout.h>
#include <wqdata/service/firstfields.h>

namespace wqd {

/// One big record. The block keeps the two counters of its header and chooses the operation for
/// each value; the bytes of fields are the service library's.
///
/// There is one count of fields for all records. A record is counted by `EndRecord`, and holds what
/// that count says, so all records of a block must have the same number of fields.
///
/// A walk stays within the bytes: those that a caller said to have handed in, and of them no more
/// than the header declares. Cursors are offsets, which hold when an addition moves the record.
class CZul3Block final : public CDataBlock {
 public:
  /// An empty block to write.
  CZul3Block();

  /// A block around the caller's bytes, of which there are `size`; with a negative `size` as many
  /// as the header says. Null bytes give an empty block to write.
  CZul3Block(void* bytes, int size);

  CZul3Block& operator=(const CZul3Block&) = delete;

  using CDataBlock::Add;

  void* GetData() override;
  int GetDataSize() override;
  int GetRecordCount() override;
  int GetFieldCount() override;
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
  ~CZul3Block() override;

 private:
  struct Header {
    std::uint32_t length = 0;
    std::uint16_t records = 0;
    std::uint16_t fields = 0;
  };

  bool IsWritable() const;
  Header ReadHeader() const;
  void SetHeaderWord(std::uint32_t offset, std::uint16_t word);

  template <int type, typename Stored>
  bool Append(FID id, const Stored& stored, std::uint16_t baseCode = 0);
  bool AddScalar(CDataItem& item);
  bool AddVector(CDataItem& item);
  bool AddPrice(FID id, const CFixPtNum& price);
  bool AddStrings(CDataItem& item);
  bool AddField(int type, FID id, const void* value);
  bool AddVector(int type, FID id, const void* elements, std::uint16_t baseCode,
                 std::uint32_t count);
  bool Refused(CDataItem& item);

  struct FieldsFrom {
    service::Bytes bytes;
    std::uint32_t count;
  };

  service::Bytes FirstFieldBytes(const Header& header) const;
  std::uint32_t Length() const;
  void StandAt(std::uint32_t offset, std::uint32_t fieldIndex);
  bool StandOn(service::Bytes bytes, std::uint32_t fieldIndex);
  service::Bytes BytesFrom(std::uint32_t offset) const;
  service::Bytes BytesFrom(std::uint32_t offset, std::uint32_t length) const;
  // The less common ways of a step and of a read, apart from the others: see `read_value`.
  [[gnu::noinline]] bool StepOverField();
  [[gnu::noinline]] bool ReadOtherField(CDataItem* item);
  FieldsFrom RestOfRecord(const Header& header);
  bool View(service::FieldView& view) const;

  std::uint8_t* m_pRecord = nullptr;  // the caller's while m_allocSize is 0, else this block's
  std::uint32_t m_allocSize = 0;
  std::uint16_t m_recordIndex = 0;
  std::uint16_t m_fieldIndex = 0;
  std::uint16_t m_finishedFields = 0;  // of the record finished last, for one that stays empty
  std::uint32_t m_recordStart = 0;     // offset of the current record's first field, 0 for none
  std::uint32_t m_field = 0;           // offset of the current field, 0 for none
  std::uint32_t m_readSize = 0;        // of the current field once it was read, else 0
  service::FirstFields<service::kZul3Fields> m_first;
  std::uint32_t m_alike = 0;  // m_recordStart of the last record that was seen to begin with them
  std::uint32_t m_present = UINT32_MAX;  // bytes that are known to be there
  std::uint32_t m_emptyAt = 0;           // bytes there were when an empty record was ended
};

}  // namespace wqd

#endif  // WQDATA_BLOCKS_ZUL3BLOCK_H_
