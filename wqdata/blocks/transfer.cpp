// From block to block: the one place that knows the pairs of encodings.

#include <algorithm>

#include <wqdata/blocks/datablock.h>
#include <wqdata/blocks/textblock.h>
#include <wqdata/blocks/zul4block.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

constexpr int kRefused = -1;

/// Whether a source says how many fields and records it has, for a walk to be held against.
bool declares_counts(CDataBlock& source) {
  return source.GetFormat() == ZUL3 || source.GetFormat() == ZUL4;
}

/// Whether the bytes of such a source are cut within what declares it.
bool is_cut_short(CDataBlock& source) {
  return declares_counts(source) && source.GetData() != nullptr && source.GetDataSize() == 0;
}

/// Whether the current record says that it has so many fields.
bool has_fields(CDataBlock& source, int fields) {
  return !declares_counts(source) || source.GetFieldCount() == fields;
}

bool has_fields(CZul4Block& source, int fields) { return source.DeclaredFieldCount() == fields; }

/// The fields of the largest record.
int largest_field_count(CDataBlock& source) {
  int largest = 0;
  for (bool more = source.FirstRecord(); more; more = source.NextRecord()) {
    largest = std::max(largest, source.GetFieldCount());
  }
  return largest;
}

int largest_field_count(CZul4Block& source) { return source.LargestFieldCount(); }

/// Adds the fields of the current record of `source`, and missing fields behind them up to
/// `fields`. How many that were; kRefused also for a record of another number of fields than it
/// declares: by a wrong one, the fields of other records would be read as its own.
///
/// Every field goes through the one `item`: to make one takes longer than to read a field.
template <typename Source>
int add_fields(Source& source, CDataBlock& target, int fields, CDataItem& item) {
  int written = 0;
  for (bool more = source.FirstField(); more; more = source.NextField(), ++written) {
    if (!source.GetCurrentField(&item) || !target.Add(item)) return kRefused;
  }
  if (!has_fields(source, written)) return kRefused;
  for (; written < fields; ++written) {
    if (!target.AddError(FID{0}, kNeverSet)) return kRefused;
  }
  return written;
}

/// Whether the record that was just ended, with so many fields, is in the target. A count that did
/// not grow says that it is not, but for a record without fields: ZUL3 counts none, and a read-only
/// block takes none.
bool is_there(CDataBlock& target, int recordsBefore, int recordsNow, int written) {
  if (recordsNow > recordsBefore) return true;
  return written == 0 && (target.GetFormat() != ZUL4 || target.IsReadOnly());
}

/// Adds the records of `source`. Those of ZUL4 may have different numbers of fields, and in ZUL3
/// all get as many as the largest has.
template <typename Source>
bool add_records(Source& source, CDataBlock& target) {
  if (is_cut_short(source)) return false;
  const bool levelled = source.GetFormat() == ZUL4 && target.GetFormat() == ZUL3;
  const int fields = levelled ? largest_field_count(source) : 0;
  CDataItem item;
  int records = 0;
  int before = target.GetRecordCount();
  for (bool more = source.FirstRecord(); more; more = source.NextRecord(), ++records) {
    target.StartRecord();
    const int written = add_fields(source, target, fields, item);
    if (written == kRefused) return false;
    target.EndRecord();
    const int now = target.GetRecordCount();
    if (!is_there(target, before, now, written)) return false;
    before = now;
  }
  // One in progress is not counted yet.
  return !declares_counts(source) || source.GetRecordCount() <= records;
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
  if (format != TEXT && format != CSV) {
    // Of a known class, the fields are read without virtual calls.
    auto* const zul4 = dynamic_cast<CZul4Block*>(source);
    return zul4 != nullptr ? add_records(*zul4, *this) : add_records(*source, *this);
  }
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
