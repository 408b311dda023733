// What was received goes into every other encoding, and arrives.
#include <algorithm>

#include "records.h"

using namespace wqd_fuzz;

namespace {

/// Lines that a record becomes in text: one for each element of its longest vector.
std::size_t rows_of(wqd::CDataBlock& source) {
  std::size_t rows = 0;
  for (bool more = source.FirstRecord(); more; more = source.NextRecord()) {
    rows += static_cast<std::size_t>(std::max(source.GetVectorSize(), 1));
  }
  return rows;
}

/// What arrives in ZUL3 from ZUL4 has as many fields in each record as the longest.
void pad(Walked& walked) {
  std::size_t longest = 0;
  for (const Record& record : walked.records) longest = std::max(longest, record.size());
  for (Record& record : walked.records) record.resize(longest, "0 error 2");
  if (longest == 0) walked.records.clear();  // a record without fields is none there
}

void check_text(wqd::CDataBlock& source, cf_id format, std::size_t rows) {
  const wqd::DataBlockPtr target = new_block(format);
  Expect(target->Add(&source), "text takes any block");
  Expect(is_valid(*target, format), "what is written is valid");
  Expect(static_cast<std::size_t>(target->GetRecordCount()) == rows, "a record has its rows");
  const auto* const data = static_cast<const char*>(target->GetData());
  const auto lines = std::count(data, data + target->GetDataSize(), '\n');
  Expect(static_cast<std::size_t>(lines) >= rows, "each row is a line");
}

/// What valid bytes hold arrives, and what can't be read is refused. Text goes into ZUL4 alone
/// here: its records have fields of their own number, which ZUL3 can't say.
void check_binary(wqd::CDataBlock& source, cf_id from, cf_id to, bool valid, std::size_t most) {
  Walked walked = walk(source, most);
  const wqd::DataBlockPtr target = new_block(to);
  const bool done = target->Add(&source);
  Expect(done || !valid, "valid bytes are taken");
  Expect(!done || walked.whole, "what can't be read is refused");
  if (!done || (to == ZUL3 && from == TEXT)) return;
  if (from != TEXT) {
    Expect(walked.records.empty() ||
               walked.records.size() >= static_cast<std::size_t>(source.GetRecordCount()),
           "a source holds the records that it declares");
  }
  if (to == ZUL3 && from == ZUL4) pad(walked);
  Expect(is_valid(*target, to), "what is written is valid");
  Expect(walk(*target, 4 * most + 65536) == walked, "what arrives is what was there");
}

void check_copy(wqd::CDataBlock& source, bool valid, std::size_t most) {
  const wqd::DataBlockPtr copy(wqd::CDataBlock::NewDataBlock(&source));
  Expect((copy == nullptr) == (source.GetFormat() == TEXT), "a copy is of a record format");
  if (valid) Expect(walk(*copy, 2 * most) == walk(source, most), "a copy is equal");
}

/// Bytes are taken as they are, and only as bytes.
void check_bytes(const Copy& bytes) {
  const wqd::DataBlockPtr source = wrap(Btrieve, bytes), target = new_block(Btrieve);
  Expect(target->Add(source.get()) && target->Add(source.get()), "bytes go into bytes");
  Expect(target->GetDataSize() == 2 * bytes.size(), "bytes are appended");
  for (const cf_id format : {ZUL3, ZUL4, TEXT}) {
    const wqd::DataBlockPtr other = new_block(format);
    Expect(other->Add(source.get()) && other->GetRecordCount() == 0, "bytes have no records");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr cf_id kFormats[] = {ZUL3, ZUL4, TEXT};
  if (size == 0) return 0;
  const cf_id from = kFormats[data[0] % 3];
  if (from == TEXT && size > 256) return 0;  // each line brings along all that follow it
  const Copy bytes(data + 1, size - 1, from == TEXT);
  const wqd::DataBlockPtr source = wrap(from, bytes);
  const bool valid = from != TEXT && ValidateData(from, bytes.data(), size - 1);
  const std::size_t rows = rows_of(*source);
  const std::size_t most = from == TEXT ? size * size : size;
  if (rows < 5000) {
    check_text(*source, TEXT, rows);
    check_text(*source, CSV, rows);
  }
  check_binary(*source, from, ZUL4, valid, most);
  if (!valid && from == ZUL4 && source->GetRecordCount() > 1000) return 0;  // padded to the most
  check_binary(*source, from, ZUL3, valid, most);
  Expect(!new_block(Btrieve)->Add(source.get()), "Btrieve takes Btrieve alone");
  check_copy(*source, valid, most);
  check_bytes(bytes);
  return 0;
}
