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

/// What a source says of itself, for its records to be made alike and for a walk to be held
/// against. Text says nothing.
class Declared {
 public:
  explicit Declared(CDataBlock& source)
      : m_source(source),
        m_zul4(dynamic_cast<CZul4Block*>(&source)),
        m_counts(source.GetFormat() == ZUL3 || source.GetFormat() == ZUL4) {}

  /// The fields of the largest record, where records may differ: 0 where they can't.
  int LargestFieldCount() const {
    if (m_source.GetFormat() != ZUL4) return 0;
    if (m_zul4 != nullptr) return m_zul4->LargestFieldCount();
    int largest = 0;
    for (bool more = m_source.FirstRecord(); more; more = m_source.NextRecord()) {
      largest = std::max(largest, m_source.GetFieldCount());
    }
    return largest;
  }

  /// Whether the current record says that it has so many fields.
  bool HasFields(int fields) const {
    if (m_zul4 != nullptr) return m_zul4->DeclaredFieldCount() == fields;
    return !m_counts || m_source.GetFieldCount() == fields;
  }

  /// Whether there are no more than so many records. The one in progress is not counted yet.
  bool HasNoMoreThan(int records) const {
    return !m_counts || m_source.GetRecordCount() <= records;
  }

 private:
  CDataBlock& m_source;
  CZul4Block* m_zul4;
  bool m_counts;
};

/// Adds the fields of the current record of `source`, and missing fields behind them up to
/// `fields`. How many that were; kRefused also for a record of another number of fields than it
/// declares: by a wrong one, the fields of other records would be read as its own.
///
/// Every field goes through the one `item`: to make one takes longer than to read a field.
int add_fields(CDataBlock& source, const Declared& declared, CDataBlock& target, int fields,
               CDataItem& item) {
  int written = 0;
  for (bool more = source.FirstField(); more; more = source.NextField(), ++written) {
    if (!source.GetCurrentField(&item) || !target.Add(item)) return kRefused;
  }
  if (!declared.HasFields(written)) return kRefused;
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

bool add_records(CDataBlock& source, CDataBlock& target) {
  const Declared declared(source);
  const int fields = target.GetFormat() == ZUL3 ? declared.LargestFieldCount() : 0;
  CDataItem item;
  int records = 0;
  int before = target.GetRecordCount();
  for (bool more = source.FirstRecord(); more; more = source.NextRecord(), ++records) {
    target.StartRecord();
    const int written = add_fields(source, declared, target, fields, item);
    if (written == kRefused) return false;
    target.EndRecord();
    const int now = target.GetRecordCount();
    if (!is_there(target, before, now, written)) return false;
    before = now;
  }
  return declared.HasNoMoreThan(records);
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
