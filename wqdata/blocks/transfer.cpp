// From block to block: the one place that knows the pairs of encodings.

#include <algorithm>

#include <wqdata/blocks/datablock.h>
#include <wqdata/blocks/textblock.h>
#include <wqdata/items/dataitem.h>

namespace wqd {
namespace {

int largest_field_count(CDataBlock& source) {
  int largest = 0;
  for (bool more = source.FirstRecord(); more; more = source.NextRecord()) {
    largest = std::max(largest, source.GetFieldCount());
  }
  return largest;
}

/// Adds the fields of the current record of `source`, and missing fields behind them up to
/// `fields`.
bool add_fields(CDataBlock& source, CDataBlock& target, int fields) {
  int written = 0;
  for (bool more = source.FirstField(); more; more = source.NextField(), ++written) {
    CDataItem item;
    if (!source.GetCurrentField(&item) || !target.Add(item)) return false;
  }
  CDataItem padding;
  for (; written < fields; ++written) {
    if (!target.Add(padding)) return false;
  }
  return true;
}

bool add_records(CDataBlock& source, CDataBlock& target) {
  const bool padded = target.GetFormat() == ZUL3 && source.GetFormat() == ZUL4;
  const int fields = padded ? largest_field_count(source) : 0;
  for (bool more = source.FirstRecord(); more; more = source.NextRecord()) {
    const int records = target.GetRecordCount();
    target.StartRecord();
    if (!add_fields(source, target, fields) || !target.EndRecord()) return false;
    // ZUL4 says of a record that it can't open only that it does not count it.
    if (target.GetFormat() == ZUL4 && target.GetRecordCount() == records) return false;
  }
  return true;
}

}  // namespace

bool CDataBlock::Add(CDataBlock* source) {
  if (source == nullptr) return false;
  const cf_id format = GetFormat();
  if (format == Btrieve) {
    if (source->GetFormat() != Btrieve) return false;
    return AddBlob(FID{0}, source->GetData(), static_cast<std::uint32_t>(source->GetDataSize()));
  }
  if (source == this) return false;
  if (format != TEXT && format != CSV) return add_records(*source, *this);
  // An assignment through this class may have brought the format of text to another encoding.
  auto* const text = dynamic_cast<CTextBlock*>(this);
  return text != nullptr && text->AddBlock(source);
}

CDataBlock* CDataBlock::NewDataBlock(const CDataBlock* source) {
  if (source == nullptr) return nullptr;
  // Its cursors move, and nothing else.
  auto* const walked = const_cast<CDataBlock*>(source);  // NOLINT(*-pro-type-const-cast)
  const cf_id format = walked->GetFormat();
  if (format != ZUL3 && format != ZUL4) return nullptr;
  CDataBlock* const copy = NewDataBlock(format);
  if (copy != nullptr) copy->Add(walked);
  return copy;
}

}  // namespace wqd
