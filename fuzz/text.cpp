// Received text: a walk of its pairs agrees with the parser, and with a walk of the text rewritten.
#include <wqdata/textsupport/myparser.h>

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

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Copy text(data, size, true);
  const wqd::DataBlockPtr block = wrap(TEXT, text);
  const Pairs pairs = walked(*block);
  Expect(pairs == parsed(text.data()), "a walk and the parser agree");
  for (std::size_t i = 0; i < std::min<std::size_t>(pairs.size(), 4); ++i) {
    Expect(block->FirstRecord() && block->FindField(pairs[i].id), "a field is found");
  }
  std::size_t lines = 0;
  for (bool more = block->FirstRecord(); more; more = block->NextRecord()) {
    Expect(++lines <= size + 1, "a walk of the lines ends");
  }
  std::string again;
  for (const auto& [id, value] : pairs) again += std::to_string(id) + ",\"" + value + "\"\n";
  if (!again.empty()) again.pop_back();
  const Copy rewritten(reinterpret_cast<const std::uint8_t*>(again.data()), again.size(), true);
  Expect(walked(*wrap(CSV, rewritten)) == pairs, "walked, rewritten and walked again is equal");
  return 0;
}
