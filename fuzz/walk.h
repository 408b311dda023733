/// Walks of blocks as something that can be compared.
#ifndef WQDATA_FUZZ_WALK_H_
#define WQDATA_FUZZ_WALK_H_

#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>

#include <cmath>
#include <vector>

#include "target.h"

namespace wqd_fuzz {

using Record = std::vector<std::string>;

struct Walked {
  std::vector<Record> records;
  bool whole = true;        ///< every field could be read
  std::size_t longest = 0;  ///< elements of a vector

  bool operator==(const Walked& other) const { return records == other.records; }
};

inline int width_of(int type) {
  switch (type) {
    case TYPE_VECTOR_DOUBLE: return 8;
    case TYPE_VECTOR_INT: return 2;
    case TYPE_VECTOR_STRING:
    case TYPE_EMPTY: return 1;
    default: return 4;
  }
}

/// The value of an item, exactly but for this: NaNs are alike, and what is missing is missing in
/// whatever way.
inline std::string shown(wqd::CDataItem& item) {
  std::string text = std::to_string(item.GetId()) + ' ' + std::to_string(item.GetType()) + ' ';
  const auto add = [&text](const void* bytes, std::size_t size) {
    if (size > 0) text.append(static_cast<const char*>(bytes), size);
    return text;
  };
  const double real = item.GetFloat();
  const ZULDATE date = item.GetDate();
  const ZULTIME time = item.GetTime();
  const std::int32_t price = item.GetFPN();
  const int baseCode = item.GetBaseCode();
  switch (item.GetType()) {
    case TYPE_DOUBLE: return std::isnan(real) ? text + "nan" : add(&real, sizeof real);
    case TYPE_LONG:
    case TYPE_INT: return text + std::to_string(item.GetLong());
    case TYPE_DATE: return add(&date, sizeof date);
    case TYPE_TIME: return add(&time, sizeof time);
    case TYPE_STRING: return text + item.GetString();
    case TYPE_ERROR:
      return std::to_string(item.GetId()) + " error " + std::to_string(item.GetError());
    case TYPE_LPACK:
      if (price == MISSING_LONG) return std::to_string(item.GetId()) + " error 2";
      return text + std::to_string(price) + " of " + std::to_string(baseCode);
    default: break;
  }
  if (item.GetType() == TYPE_VECTOR_LPACK) text += std::to_string(baseCode) + ' ';
  return add(item.GetVectorPtr(), static_cast<std::size_t>(item.GetSize()) *
                                      static_cast<std::size_t>(width_of(item.GetType())));
}

/// Reads the current field. A bad one is false however often it is asked for, and leaves the item
/// as it was, but for a field of an unknown type.
inline bool read_field(wqd::CDataBlock& block, wqd::CDataItem& item) {
  const bool known = block.GetCurrentField(nullptr);
  wqd::CDataItem again(FID{7}, std::int16_t{77}, true);
  const bool read = block.GetCurrentField(&item);
  const int lines = logged;
  Expect(read == known && block.GetCurrentField(&again) == read,
         "a field reads the same each time");
  const bool untouched = again.GetError() == 77 && again.GetId() == 7;
  const bool unknown =
      logged > lines && again.GetError() == 2 && again.GetId() == block.GetCurrentFieldId();
  Expect(read || untouched != unknown, "a field that can't be read leaves the item");
  return read;
}

/// Walks all of a block, of at most `most` fields.
inline Walked walk(wqd::CDataBlock& block, std::size_t most) {
  Walked walked;
  std::size_t steps = 0;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    Record& record = walked.records.emplace_back();
    for (bool field = block.FirstField(); field; field = block.NextField()) {
      Expect(++steps <= most, "a walk ends with the bytes");
      wqd::CDataItem item;
      walked.whole = read_field(block, item) && walked.whole;
      record.push_back(shown(item));
      const bool vector =
          item.GetType() >= TYPE_VECTOR_DOUBLE && item.GetType() <= TYPE_VECTOR_TIME;
      if (vector)
        walked.longest = std::max(walked.longest, static_cast<std::size_t>(item.GetSize()));
    }
  }
  return walked;
}

/// A block around bytes that outlive it.
inline wqd::DataBlockPtr wrap(cf_id format, const Copy& bytes) {
  return wqd::DataBlockPtr(wqd::CDataBlock::NewDataBlock(format, bytes.data(), bytes.size()));
}

inline wqd::DataBlockPtr new_block(cf_id format) {
  return wqd::DataBlockPtr(wqd::CDataBlock::NewDataBlock(format));
}

/// Whether a block's bytes are well formed; those of one that holds nothing are.
inline bool is_valid(wqd::CDataBlock& block, cf_id format) {
  return block.GetData() == nullptr ||
         ValidateData(format, block.GetData(), static_cast<std::size_t>(block.GetDataSize()));
}

}  // namespace wqd_fuzz

#endif  // WQDATA_FUZZ_WALK_H_
