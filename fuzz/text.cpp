// Received text: a walk of its pairs agrees with the parser, and with a walk of the text rewritten.
#include <wqdata/textsupport/myparser.h>

#include <algorithm>

#include "walk.h"

using namespace wqd_fuzz;

namespace {

struct Pair {
  FID id;
  std::string value;

  bool operator==(const Pair&) const = default;
};
using Pairs = std::vector<Pair>;

/// The pairs of a text as its parser sees them: an identifier without a value is none.
Pairs parsed(const char* text) {
  wqd::CMyParser parser(text, "\t,\n");
  Pairs pairs;
  for (std::string id, value; parser.NextField(id) && parser.NextField(value);) {
    const long number = std::strtol(id.c_str(), nullptr, 10);
    const long cut = std::min(std::max(number, long{INT32_MIN}), long{INT32_MAX});
    pairs.push_back({static_cast<FID>(cut), value});
  }
  return pairs;
}

/// The pairs of a walk from the first field of the first record on, which runs to the end.
Pairs walked(wqd::CDataBlock& block) {
  Pairs pairs;
  if (!block.FirstRecord()) return pairs;
  for (bool more = block.FirstField(); more; more = block.NextField()) {
    wqd::CDataItem item;
    if (!read_field(block, item)) {
      Expect(!block.NextField(), "an identifier without a value is the last");
      return pairs;
    }
    Expect(item.GetId() == block.GetCurrentFieldId(), "an item has the identifier of its field");
    const bool missing = item.GetType() == TYPE_ERROR;
    Expect(missing ? item.GetError() == 2 : item.GetType() == TYPE_STRING, "a value is a text");
    pairs.push_back({item.GetId(), missing ? "N/A" : item.GetString()});
  }
  return pairs;
}

/// Each record begins behind a line end, and its first field is the pair that stands there.
void check_lines(wqd::CDataBlock& block, const char* text) {
  int lines = 0;
  const char* line = text;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    if (++lines <= 8) {
      const Pairs rest = parsed(line);
      wqd::CDataItem item;
      const bool read = block.FirstField() && block.GetCurrentField(&item);
      Expect(read == !rest.empty() && (!read || item.GetId() == rest.front().id),
             "a record begins with its line");
    }
    const char* const end = std::strchr(line, '\n');
    line = end != nullptr ? end + 1 : line + std::strlen(line);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Copy text(data, size, true);
  const wqd::DataBlockPtr block = wrap(TEXT, text);
  const Pairs pairs = walked(*block);
  Expect(pairs == parsed(text.data()), "a walk and the parser agree");
  for (const int id : {0, 22, 70000 % 65536, pairs.empty() ? 1 : int{pairs.back().id}}) {
    const auto sought = static_cast<FID>(id);
    const auto first = std::find_if(pairs.begin(), pairs.end(),
                                    [sought](const Pair& pair) { return pair.id == sought; });
    const bool there = block->FirstRecord() && block->FindField(sought);
    wqd::CDataItem item;
    if (first != pairs.end()) {
      Expect(there && block->GetCurrentField(&item) && item.GetId() == sought, "a field is found");
    } else {
      Expect(!there || sought == 0, "no field is found that is not");  // 0 is what stands for none
    }
  }
  check_lines(*block, text.data());
  std::string again;
  for (const auto& [id, value] : pairs) again += std::to_string(id) + ",\"" + value + "\"\n";
  if (!again.empty()) again.pop_back();
  const Copy rewritten(reinterpret_cast<const std::uint8_t*>(again.data()), again.size(), true);
  Expect(walked(*wrap(CSV, rewritten)) == pairs, "walked, rewritten and walked again is equal");
  return 0;
}
