/// The encoding of the formats TEXT and CSV.
#ifndef WQDATA_BLOCKS_TEXTBLOCK_H_
#define WQDATA_BLOCKS_TEXTBLOCK_H_

#include <cstdint>
#include <string_view>
#include <vector>

#include <wqdata/blocks/datablock.h>
#include <wqdata/textsupport/myparser.h>

namespace wqd {

/// Lines of text. The two directions do not mirror each other: the writer puts out the values of a
/// record and drops their identifiers; the reader takes pairs of identifier and value.
///
/// A written line is the printed fields with a tab (TEXT) or comma (CSV) between them, and an LF;
/// nothing is quoted or escaped. `Close` puts a NUL behind the last line.
///
/// The reader takes NUL-ended text, a record behind each LF, and the fields of a `CMyParser` with
/// tab, comma and LF as delimiters, in either format and in any mix. An LF does not end a walk of
/// fields: the fields of a record are all those from its line to the end of the text.
///
/// Every scan of a walk ends at a NUL. A written block therefore has no records to walk before its
/// first `Close`, and what is added behind that NUL is never seen by a walk. A walk is over when
/// an addition makes the buffer grow: the next one begins with `FirstRecord`.
class CTextBlock final : public CDataBlock {
 public:
  /// An empty block to write, of TEXT or CSV.
  explicit CTextBlock(cf_id format);

  /// A block around the caller's NUL-ended text; for null an empty block to write.
  explicit CTextBlock(void* data);

  CTextBlock& operator=(const CTextBlock&) = delete;

  using CDataBlock::Add;

  void* GetData() override;
  int GetDataSize() override;
  int GetRecordCount() override;
  int GetFieldCount() override;
  bool StartRecord() override;
  bool EndRecord() override;
  bool Add(FID id, double value) override;
  bool Add(FID id, std::int32_t value) override;
  bool Add(FID id, std::int16_t value) override;
  bool Add(CDataItem& item) override;
  bool Add(FID id, const char* text) override;
  bool Close() override;
  bool FirstRecord() override;
  bool NextRecord() override;
  bool FirstField() override;
  bool NextField() override;
  bool FindField(FID id) override;
  bool GetCurrentField(CDataItem* item) override;
  FID GetCurrentFieldId() override;

  /// Prints a block of any format: a line for each record, and of a record with vectors a line for
  /// each row, see `CDataBlock::Add(CDataBlock*)`; then `Close`. Always true: what is lost is in
  /// the log.
  virtual bool AddBlock(CDataBlock* source);

  /// Prints the current record of `source` as `vsize` rows.
  bool AddBlock(CDataBlock* source, int vsize);

 protected:
  ~CTextBlock() override;

 private:
  struct Growth;
  struct Column;

  static constexpr std::uint64_t kKept = 1;  // for the NUL of `Close`, which alone may take it

  bool AddLine(CDataBlock& source);
  bool AddRows(CDataBlock& source, int rows);
  static std::vector<Column> ReadColumns(CDataBlock& source);
  bool AddCell(Column& column, int row);
  char Separator() const { return m_format == CSV ? ',' : '\t'; }
  char* BeginValue(std::size_t length);
  bool EndValue(const char* end);
  bool PutLong(std::int32_t value);
  bool PutDouble(double value);
  bool AddValue(std::string_view text);
  bool AddWithGrowth(std::string_view text);
  bool Append(std::string_view bytes, std::uint64_t kept = kKept);
  void Put(std::string_view bytes);
  static Growth GrownFor(std::uint64_t length, std::uint64_t size);
  bool MakeRoom(std::uint64_t separator, std::uint64_t text, std::uint64_t kept,
                const void** source = nullptr);
  bool Grow(const Growth& growth, const void** source);
  bool ReadPair(FID& id, CDataItem* item);
  static FID IdOf(std::string_view token);

  char* m_data = nullptr;         // the caller's while m_reserved is 0, else this block's
  std::uint32_t m_allocSize = 0;  // bytes in use or free to use, a multiple of the growth step
  std::uint32_t m_used = 0;       // bytes written, the NULs of Close included
  int m_fieldCount = 0;
  int m_recordCount = 0;
  const char* m_record = nullptr;
  const char* m_field = nullptr;
  const char* m_nextField = nullptr;  // null until the current field has been read
  std::uint32_t m_reserved = 0;       // bytes behind m_data, at least m_allocSize
  bool m_terminated = false;          // a NUL ends the text at or behind m_data
  CMyParser m_parser;                 // of the text at m_data, wherever in it
};

}  // namespace wqd

#endif  // WQDATA_BLOCKS_TEXTBLOCK_H_
