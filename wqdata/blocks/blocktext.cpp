// Blocks printed as text: a line for each record, or for each row of a record with vectors.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <string_view>
#include <vector>

#include <wqdata/blocks/textblock.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/operations.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

constexpr std::size_t kMostFields = std::numeric_limits<std::uint16_t>::max();

template <typename Element>
Element element_of(CDataItem& vector, int index) {
  return static_cast<const Element*>(vector.GetVectorPtr())[index];
}

/// Sets `cell` to an element of `item`; false for an item that holds none, or strings.
bool set_element(CDataItem& cell, CDataItem& item, int index) {
  const FID id = item.GetId();
  switch (item.GetSize() == 0 ? TYPE_EMPTY : item.GetType()) {
    case TYPE_VECTOR_DOUBLE: cell.Set(id, element_of<double>(item, index)); return true;
    case TYPE_VECTOR_LONG: cell.Set(id, element_of<std::int32_t>(item, index)); return true;
    case TYPE_VECTOR_INT: cell.Set(id, element_of<std::int16_t>(item, index)); return true;
    case TYPE_VECTOR_DATE: cell.Set(id, element_of<ZULDATE>(item, index)); return true;
    case TYPE_VECTOR_TIME: cell.Set(id, element_of<ZULTIME>(item, index)); return true;
    case TYPE_VECTOR_LPACK:
      cell.Set(id, CFixPtNum(element_of<std::int32_t>(item, index), item.GetBaseCode()));
      return true;
    default: return false;
  }
}

}  // namespace

/// A field of a record that is printed as rows. Its text is at hand with its length: the rows of a
/// full block must not measure a long one again, each of them.
struct CTextBlock::Column {
  CDataItem item;
  std::string_view text;  ///< of the latest row, where no element is printed

  /// Sets `text` for the first row.
  void Begin() { text = IsStrings() ? StringFrom(0) : item.GetString(); }

  /// Sets it for the next one: the last string serves all further rows.
  void Next() {
    if (!IsStrings()) return;
    const std::size_t next =
        static_cast<std::size_t>(text.data() - Strings().data()) + text.size() + 1;
    if (next < Strings().size()) text = StringFrom(next);
  }

 private:
  bool IsStrings() const { return item.GetType() == TYPE_VECTOR_STRING; }

  std::string_view Strings() {
    return {static_cast<const char*>(item.GetVectorPtr()),
            static_cast<std::size_t>(item.GetSize())};
  }

  /// The string at an offset; the last one may lack its NUL.
  std::string_view StringFrom(std::size_t at) {
    const std::string_view rest = Strings().substr(at);
    return rest.substr(0, rest.find('\0'));
  }
};

/// Reads each field of the current record once: read again for each row, a long vector would take
/// the square of its length. A field that can't be read is the error item of a new column.
std::vector<CTextBlock::Column> CTextBlock::ReadColumns(CDataBlock& source) {
  std::vector<Column> columns;
  for (bool more = source.FirstField(); more; more = source.NextField()) {
    if (columns.size() == kMostFields) throw std::bad_alloc();
    source.GetCurrentField(&columns.emplace_back().item);
  }
  for (Column& column : columns) column.Begin();  // now that they stay where they are
  return columns;
}

bool CTextBlock::AddCell(Column& column, int row) {
  CDataItem cell;
  const int index = std::min(row, column.item.GetSize() - 1);
  if (set_element(cell, column.item, index)) return Add(cell);
  if (row > 0) column.Next();
  return AddValue(column.text);
}

bool CTextBlock::AddBlock(CDataBlock* source) {
  bool room = true;
  for (bool more = source->FirstRecord(); more && room; more = source->NextRecord()) {
    const int vsize = source->GetVectorSize();
    room = vsize == 0 ? AddLine(*source) : AddRows(*source, vsize);
  }
  Close();
  return true;
}

bool CTextBlock::AddBlock(CDataBlock* source, int vsize) {
  AddRows(*source, vsize);
  return true;
}

/// False when the block is full: what would follow finds no room either, and there may be no end of
/// it.
bool CTextBlock::AddLine(CDataBlock& source) {
  CDataItem item;
  StartRecord();
  for (bool more = source.FirstField(); more; more = source.NextField()) {
    item.SetError(FID{0}, kNeverSet);  // which a field that can't be read leaves
    source.GetCurrentField(&item);
    if (Add(item)) continue;
    service::log_message(
        service::kLevelFailed,
        "CTextBlock::AddBlock: inblock<%s>, Add(item) failed for <%d>, datablocklen<%d>",
        CfName(source.GetFormat()), int{item.GetId()}, source.GetDataSize());
  }
  return EndRecord() || m_readOnly;
}

/// False as above.
bool CTextBlock::AddRows(CDataBlock& source, int rows) {
  const char* const format = CfName(source.GetFormat());
  try {
    std::vector<Column> columns = ReadColumns(source);
    bool room = true;
    for (int row = 0; row < rows && room; ++row) {
      StartRecord();
      for (Column& column : columns) {
        if (AddCell(column, row)) continue;
        service::log_message(
            service::kLevelFailed,
            "CTextBlock::AddBlock w/h vsize<%d>, indata<%s>, failed at add <%d> w/h type<%d>", rows,
            format, int{column.item.GetId()}, column.item.GetType());
      }
      room = EndRecord() || m_readOnly;
    }
    return room;
  } catch (const std::bad_alloc&) {
    service::log_message(service::kLevelFailed,
                         "CTextBlock::AddBlock w/h vsize<%d>, indata<%s>, no memory for the record",
                         rows, format);
    return true;
  }
}

}  // namespace wqd
