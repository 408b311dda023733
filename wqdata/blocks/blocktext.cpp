// Blocks printed as text: a line for each record, or for each row of a record with vectors.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <string_view>
#include <vector>

#include <wqdata/blocks/textblock.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/fieldlayout.h>
#include <wqdata/service/operations.h>

namespace wqd {
namespace {

constexpr std::size_t kMostFields = std::numeric_limits<std::uint16_t>::max();

/// A field of a record that is printed as rows. The rows ask for its elements from the first on.
struct Column {
  CDataItem item;
  std::size_t string = 0;  ///< of a string vector, the offset of the string of the latest row
};

template <typename Element>
Element element_of(CDataItem& vector, int index) {
  return static_cast<const Element*>(vector.GetVectorPtr())[index];
}

/// The string of a row: the last one serves all further rows, and may lack its NUL.
std::string_view string_of(Column& column, int row) {
  const std::string_view all(static_cast<const char*>(column.item.GetVectorPtr()),
                             static_cast<std::size_t>(column.item.GetSize()));
  const std::size_t next = all.find('\0', column.string) + 1;
  if (row > 0 && next != 0 && next < all.size()) column.string = next;
  return all.substr(column.string, all.find('\0', column.string) - column.string);
}

/// Sets `cell` to the element for a row of a vector that has some: the last one serves all further
/// rows. False without memory.
bool set_cell(CDataItem& cell, Column& column, int row) {
  CDataItem& vector = column.item;
  const FID id = vector.GetId();
  const int index = std::min(row, vector.GetSize() - 1);
  switch (vector.GetType()) {
    case TYPE_VECTOR_DOUBLE: cell.Set(id, element_of<double>(vector, index)); break;
    case TYPE_VECTOR_LONG: cell.Set(id, element_of<std::int32_t>(vector, index)); break;
    case TYPE_VECTOR_INT: cell.Set(id, element_of<std::int16_t>(vector, index)); break;
    case TYPE_VECTOR_DATE: cell.Set(id, element_of<ZULDATE>(vector, index)); break;
    case TYPE_VECTOR_TIME: cell.Set(id, element_of<ZULTIME>(vector, index)); break;
    case TYPE_VECTOR_LPACK:
      cell.Set(id, CFixPtNum(element_of<std::int32_t>(vector, index), vector.GetBaseCode()));
      break;
    default: {
      const std::string_view text = string_of(column, row);
      return cell.SetText(id, text.data(), text.size());
    }
  }
  return true;
}

bool add_cell(CTextBlock& target, Column& column, int row) {
  CDataItem& item = column.item;
  if (!service::is_vector(item.GetType())) return target.Add(item);
  if (item.GetSize() == 0) return target.Add(item.GetId(), "");
  CDataItem cell;
  return set_cell(cell, column, row) && target.Add(cell);
}

/// A field that can't be read is the error item of a new column.
std::vector<Column> read_columns(CDataBlock& source) {
  std::vector<Column> columns;
  for (bool more = source.FirstField(); more; more = source.NextField()) {
    if (columns.size() == kMostFields) throw std::bad_alloc();
    source.GetCurrentField(&columns.emplace_back().item);
  }
  return columns;
}

}  // namespace

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
  StartRecord();
  for (bool more = source.FirstField(); more; more = source.NextField()) {
    CDataItem item;
    source.GetCurrentField(&item);
    if (Add(item)) continue;
    service::log_message(
        service::kLevelFailed,
        "CTextBlock::AddBlock: inblock<%s>, Add(item) failed for <%d>, datablocklen<%d>",
        CfName(source.GetFormat()), int{item.GetId()}, source.GetDataSize());
  }
  return EndRecord() || m_readOnly;
}

/// Each vector is read once: read again for each row, a long one would take the square of its
/// length. False as above.
bool CTextBlock::AddRows(CDataBlock& source, int rows) {
  const char* const format = CfName(source.GetFormat());
  try {
    std::vector<Column> columns = read_columns(source);
    bool room = true;
    for (int row = 0; row < rows && room; ++row) {
      StartRecord();
      for (Column& column : columns) {
        if (add_cell(*this, column, row)) continue;
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
