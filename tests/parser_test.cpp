#include <gtest/gtest.h>
#include <wqdata/textsupport/myparser.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using wqd::CMyParser;
using Fields = std::vector<std::string>;
using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

Stream StreamOf(const std::string& bytes) {
  Stream stream(std::tmpfile(), std::fclose);
  std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
  std::rewind(stream.get());
  return stream;
}

bool Next(CMyParser& parser, std::string& field, bool inPlace) {
  if (!inPlace) return parser.NextField(field);
  char buffer[CMyParser::kFieldBufferSize];
  const bool found = parser.NextField(buffer);
  field = buffer;
  return found;
}

/// All fields, and what a failed call must show: an emptied field, again and again.
Fields FieldsOf(CMyParser parser, bool inPlace = false) {
  Fields fields;
  std::string field;
  while (Next(parser, field, inPlace) && fields.size() < 2000) fields.push_back(field);
  EXPECT_EQ(field, "");
  field = "left over";
  EXPECT_FALSE(Next(parser, field, inPlace));
  EXPECT_EQ(field, "");
  return fields;
}

/// Text and stream, with both forms of NextField. Only a stream can hold a byte 0.
void ExpectOnEveryRoad(const std::string& bytes, const char* delimiters, const Fields& expected) {
  SCOPED_TRACE(testing::PrintToString(bytes));
  for (const bool inPlace : {false, true}) {
    const Stream stream = StreamOf(bytes);
    EXPECT_EQ(FieldsOf({stream.get(), delimiters}, inPlace), expected);
    if (bytes.find('\0') != std::string::npos) continue;
    EXPECT_EQ(FieldsOf({bytes.c_str(), delimiters}, inPlace), expected);
  }
}

std::string A(std::size_t count) { return std::string(count, 'A'); }

TEST(Parser, FieldsOfTextAndStream) {
  using namespace std::string_literals;
  const struct {
    std::string bytes;
    const char* delimiters;
    Fields fields;
  } cases[] = {
      {"a,b", nullptr, {"a", "b"}},
      {",a,b\n", nullptr, {"", "a", "b", ""}},
      {"", nullptr, {""}},
      {"\"\", \t ", nullptr, {"", ""}},
      {" a b\t,\tc\r,\v,\xFF", nullptr, {"a b", "c", "\v", "\xFF"}},
      {"ab\"c,d\"ef,g", nullptr, {"abc,def", "g"}},
      {"\"a\"\"b\"", nullptr, {"ab"}},       // no escape
      {"\" a \n\",b", nullptr, {"a", "b"}},  // trimmed within quotes too
      {"x\"y,z\nw", nullptr, {"xy,z\nw"}},   // left open
      {"a\"b,c", "\",", {"ab,c"}},           // a quote is no delimiter
      {"a\r\nb", nullptr, {"a", "b"}},
      {"a\"\r\n\"b", nullptr, {"a\r\nb"}},
      {"a\r\nb\r,c", "\r,", {"a\nb", "", "c"}},
      {"a\rb\r\r\nc", nullptr, {"a\rb", "c"}},
      {"a\r\"b,c\"", nullptr, {"a\rb,c"}},  // what follows a CR keeps its meaning
      {"abc\r", nullptr, {"abc"}},
      {"abc\r", "\r", {"abc", ""}},
      {"a\tb,c\nd", ",\t\n", {"a", "b", "c", "d"}},
      {"a\xE9z", "\xE9", {"a", "z"}},
      {"a,b\nc", "", {"a,b\nc"}},
      {A(255) + ",b", nullptr, {A(255), "b"}},
      {A(255) + "x,b", nullptr, {A(255), "b"}},
      {A(299) + "x", nullptr, {A(255)}},
      {"\"" + A(255) + ",\"x,b", nullptr, {A(255), "b"}},
      {A(250) + "      x,b", nullptr, {A(250), "b"}},  // cut before it is trimmed
      {"a\0b,\0"s, nullptr, {"a", "b", "", ""}},
      {"\0\"a,\0b,c"s, nullptr, {"", "a,", "b", "c"}},
  };
  for (const auto& c : cases) ExpectOnEveryRoad(c.bytes, c.delimiters, c.fields);
}

TEST(Parser, RandomInputsOnEveryRoad) {
  std::mt19937 random(2024);
  const char* const sets[] = {nullptr, ",\t\n", ";", "\r\n", ""};
  for (int round = 0; round < 500; ++round) {
    const std::string alphabet = round % 4 == 0 ? "\"\r\n," : "aaaaaaaaaaa\xE9,;\t \r\n\"";
    std::string text(random() % 700, '\0');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    const char* const delimiters = sets[random() % std::size(sets)];
    ExpectOnEveryRoad(text, delimiters, FieldsOf({text.c_str(), delimiters}));
  }
}

TEST(Parser, NoInputHasNoFields) {
  const CMyParser parsers[] = {{}, {static_cast<char*>(nullptr), ","}, {Stream::pointer{}, ","}};
  for (const CMyParser& parser : parsers) {
    EXPECT_EQ(FieldsOf(parser), Fields{});
    EXPECT_EQ(parser.GetInputPosition(), nullptr);
  }
}

TEST(Parser, DelimitersOfACallStayAndPositionFollows) {
  const char text[] = "a,b;c,d;\"e";
  CMyParser parser(text, nullptr);
  const struct {
    const char* delimiters;
    std::string field;
    int position;
  } calls[] = {{nullptr, "a", 2}, {";", "b", 4}, {nullptr, "c,d", 8}, {",", "e", 10}};
  CMyParser copy;
  for (const auto& call : calls) {
    std::string field;
    EXPECT_TRUE(parser.NextField(field, call.delimiters) && field == call.field) << field;
    EXPECT_EQ(parser.GetInputPosition() - text, call.position) << field;
    if (field == "b") copy = parser;
  }
  EXPECT_EQ(FieldsOf(copy), (Fields{"c,d", "e"}));
}

struct OpenParser : CMyParser {
  using CMyParser::CMyParser;
  using CMyParser::NextChar;
  using CMyParser::PushBack;
};

TEST(Parser, CharactersFromAPlaceOnCanBePushedBack) {
  const char text[] = "skipped \xFF,z";
  const Stream stream = StreamOf(text);
  std::fseek(stream.get(), 8, SEEK_SET);
  for (OpenParser parser : {OpenParser(text + 8, nullptr), OpenParser(stream.get(), nullptr)}) {
    EXPECT_EQ(parser.NextChar(), 0xFF);
    parser.PushBack(0xFF);
    EXPECT_EQ(FieldsOf(parser), (Fields{"\xFF", "z"}));
  }
  EXPECT_EQ(std::fseek(stream.get(), 0, SEEK_SET), 0);  // it stayed open
}

/// A read error, behind which the stream would give more.
TEST(Parser, EndsAtAReadError) {
  struct Source {
    static ssize_t Read(void* cookie, char* to, std::size_t) {
      const char* const parts[] = {"a,b\r", nullptr, "c,d"};
      const char* const part = parts[std::min(2, (*static_cast<int*>(cookie))++)];
      if (part == nullptr) return -1;
      std::strcpy(to, part);
      return static_cast<ssize_t>(std::strlen(part));
    }
  };
  int part = 0;
  std::FILE* const stream = fopencookie(&part, "r", {Source::Read, nullptr, nullptr, nullptr});
  ASSERT_NE(stream, nullptr);
  std::setvbuf(stream, nullptr, _IOFBF, 64);
  wqd::CMyParser parser(stream, nullptr);
  std::string field;
  EXPECT_TRUE(parser.NextField(field) && field == "a") << field;
  EXPECT_TRUE(parser.NextField(field) && field == "b") << field;
  EXPECT_FALSE(parser.NextField(field)) << field;
  std::fclose(stream);
}

}  // namespace
