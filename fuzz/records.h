/// The body of the targets for the two record formats.
#ifndef WQDATA_FUZZ_RECORDS_H_
#define WQDATA_FUZZ_RECORDS_H_

#include <algorithm>

#include "walk.h"

namespace wqd_fuzz {

/// Writes the fields of `source` into a block of its own, item by item.
inline wqd::DataBlockPtr rewritten(wqd::CDataBlock& source, cf_id format) {
  wqd::DataBlockPtr block = new_block(format);
  for (bool more = source.FirstRecord(); more; more = source.NextRecord()) {
    Expect(block->StartRecord(), "a new block takes records");
    for (bool field = source.FirstField(); field; field = source.NextField()) {
      wqd::CDataItem item;
      Expect(source.GetCurrentField(&item) && block->Add(item), "a field that was read is written");
    }
    Expect(block->EndRecord(), "a record is finished");
  }
  return block;
}

/// Every way to look for a field finds it, and one that is not there is not found.
inline void check_search(wqd::CDataBlock& block, std::size_t most) {
  std::size_t steps = 0;
  for (bool more = block.FirstRecord(); more && ++steps < 64; more = block.NextRecord()) {
    std::vector<FID> ids;
    for (bool field = block.FirstField(); field; field = block.NextField()) {
      if (block.GetCurrentField(nullptr)) ids.push_back(block.GetCurrentFieldId());
    }
    for (std::size_t i = 0; i < std::min<std::size_t>(ids.size(), 8); ++i) {
      Expect(block.FindField(ids[i]) && block.GetCurrentFieldId() == ids[i], "a field is found");
    }
    for (const int id : {0, 255, 65535}) {
      const bool there = block.FindField(static_cast<FID>(id));
      Expect(there || std::count(ids.begin(), ids.end(), id) == 0, "no field is found that is not");
    }
    Expect(static_cast<std::size_t>(block.GetVectorSize()) <= most, "a vector lies in the bytes");
  }
}

inline void check_records(cf_id format, const std::uint8_t* data, std::size_t size) {
  const Copy bytes(data, size);
  const bool valid = ValidateData(format, bytes.data(), size);
  const wqd::DataBlockPtr block = wrap(format, bytes);
  Expect(static_cast<std::size_t>(block->GetDataSize()) <= size, "no more bytes than there are");
  const Walked walked = walk(*block, size);
  check_search(*block, size);
  if (!valid) return;
  Expect(walked.whole, "valid bytes walk without a failure");
  Expect(static_cast<std::size_t>(block->GetRecordCount()) == walked.records.size(),
         "valid bytes hold the records that they declare");
  if (format == ZUL3 && walked.longest > 16000) return;  // more than an item carries there
  const wqd::DataBlockPtr again = rewritten(*block, format);
  Expect(is_valid(*again, format), "what is written is valid");
  Expect(walk(*again, 2 * size) == walked, "walked, rewritten and walked again is equal");
}

}  // namespace wqd_fuzz

#endif  // WQDATA_FUZZ_RECORDS_H_
