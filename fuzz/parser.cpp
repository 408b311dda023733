// Delimited text: text and stream, both buffers, and the text rewritten give the same fields.
#include <wqdata/textsupport/myparser.h>

#include <vector>

#include "target.h"

using namespace wqd_fuzz;

namespace {

using Fields = std::vector<std::string>;

/// The fields of a text, with the places where they end within it.
Fields fields_of(const Copy& text, const char* delimiters) {
  wqd::CMyParser parser(text.data(), delimiters);
  wqd::CMyParser other = parser;
  Fields fields;
  char buffer[wqd::CMyParser::kFieldBufferSize];
  const char* position = text.data();
  for (std::string field; parser.NextField(field);) {
    Expect(other.NextField(buffer) && field == buffer, "both buffers take the same field");
    Expect(parser.GetInputPosition() >= position, "a parser does not go back");
    position = parser.GetInputPosition();
    Expect(position <= text.data() + std::strlen(text.data()), "a parser stays in the text");
    fields.push_back(field);
    Expect(fields.size() <= static_cast<std::size_t>(text.size()) + 1, "a text ends");
  }
  Expect(!other.NextField(buffer) && buffer[0] == '\0', "the end stays the end");
  return fields;
}

Fields fields_of_stream(const Copy& text, const char* delimiters) {
  const std::size_t size = std::strlen(text.data());
  std::FILE* const stream = size > 0 ? fmemopen(text.data(), size, "r") : std::tmpfile();
  Fields fields;
  if (stream == nullptr) std::abort();
  wqd::CMyParser parser(stream, delimiters);
  for (std::string field; parser.NextField(field);) {
    fields.push_back(field);
    Expect(fields.size() <= size + 1, "a stream ends");
  }
  std::fclose(stream);
  return fields;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr const char* kSets[] = {nullptr, ",\n", "\t,\n", ";", "\r", "", "\"a", " "};
  const char* const delimiters = size == 0 ? nullptr : kSets[data[0] % 8];
  const Copy text(data + (size > 0), size - (size > 0), true);
  const Fields fields = fields_of(text, delimiters);
  Expect(fields == fields_of_stream(text, delimiters), "a text and a stream give the same fields");
  if (data == nullptr || size == 0 || data[0] % 8 > 2) return 0;
  std::string joined;
  for (const std::string& field : fields) joined += '"' + field + "\",";
  if (!joined.empty()) joined.pop_back();
  const Copy again(reinterpret_cast<const std::uint8_t*>(joined.data()), joined.size(), true);
  Expect(fields == fields_of(again, delimiters), "split, joined and split again is equal");
  return 0;
}
