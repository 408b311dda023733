#include <wqdata/textsupport/myparser.h>

#include <memory>
#include <random>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;

using Fields = std::vector<std::string>;
using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

Stream StreamOf(const std::string& bytes) {
  Stream stream(std::tmpfile(), std::fclose);
  std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
  std::rewind(stream.get());
  return stream;
}

/// All fields, and what a failed call must show: an emptied field, again and again.
Fields FieldsOf(CMyParser parser) {
  Fields fields;
  std::string field;
  while (parser.NextField(field) && fields.size() < 10000) fields.push_back(field);
  EXPECT_EQ(field, "");
  field = "left over";
  EXPECT_TRUE(!parser.NextField(field) && field.empty()) << field;
  return fields;
}

/// Text and stream. Only a stream can hold a byte 0.
void ExpectOnBothRoads(const std::string& bytes, const char* delimiters, const Fields& expected) {
  SCOPED_TRACE(testing::PrintToString(bytes));
  const Stream stream = StreamOf(bytes);
  EXPECT_EQ(FieldsOf({stream.get(), delimiters}), expected);
  if (bytes.find('\0') != std::string::npos) return;
  EXPECT_EQ(FieldsOf({bytes.c_str(), delimiters}), expected);
}

TEST(Parser, FieldsOfTextAndStream) {
  using namespace std::string_literals;
  const std::pair<std::string, Fields> cases[] = {
      {",a,b\n", {"", "a", "b", ""}},
      {"", {""}},
      {"\"\", \t ", {"", ""}},
      {" a b\t,\tc\r,\v,\xFF", {"a b", "c", "\v", "\xFF"}},
      {"ab\"c,d\"ef,g", {"abc,def", "g"}},
      {"\"a\"\"b\"", {"ab"}},       // no escape
      {"\" a \n\",b", {"a", "b"}},  // trimmed within quotes too
      {"x\"y,z\nw", {"xy,z\nw"}},   // left open
      {"a\r\nb", {"a", "b"}},
      {"a\"\r\n\"b", {"a\r\nb"}},
      {"a\rb\r\r\nc", {"a\rb", "c"}},
      {"a\r\"b,c\"", {"a\rb,c"}},  // what follows a CR keeps its meaning
      {"abc\r", {"abc"}},
      {Letters(255) + ",b", {Letters(255), "b"}},
      {Letters(255) + "x,b", {Letters(255), "b"}},
      {"\"" + Letters(255) + ",\"x,b", {Letters(255), "b"}},
      {Letters(250) + "      x,b", {Letters(250), "b"}},  // cut before it is trimmed
      {"a\0b,\0"s, {"a", "b", "", ""}},
      {"\0\"a,\0b,c"s, {"", "a,", "b", "c"}},
  };
  for (const auto& [bytes, fields] : cases) ExpectOnBothRoads(bytes, nullptr, fields);
  ExpectOnBothRoads("a\"b,c", "\",", {"ab,c"});  // a quote is no delimiter
  ExpectOnBothRoads("a\r\nb\r,c", "\r,", {"a\nb", "", "c"});
  ExpectOnBothRoads("abc\r", "\r", {"abc", ""});
  ExpectOnBothRoads("a\tb,c\nd", ",\t\n", {"a", "b", "c", "d"});
  ExpectOnBothRoads("a\xE9z", "\xE9", {"a", "z"});
  ExpectOnBothRoads("a,b\nc", "", {"a,b\nc"});
}

/// A stream is read by characters and a text by words, in memory that ends with its NUL.
TEST(Parser, TextAndStreamGiveTheSameFields) {
  std::mt19937 random(5);
  for (int i = 0; i < 2000; ++i) {
    const char* const delimiters[] = {",\n", ",\t\n", ";|", "\xE9,", "", "\r", "~\n\r"};
    const char* const set = delimiters[i % 7];
    const std::string common = "abc.-/ \x80\xFF" + std::string(set), rare = "\"\"\r\n \t\xE9,";
    std::string text(random() % (i % 10 == 0 ? 5000 : 40), '\0');
    const auto rareness = 2 + random() % 30;
    for (char& c : text) {
      const std::string& from = random() % rareness == 0 ? rare : common;
      c = from[random() % (random() % 4 == 0 ? from.size() : 4)];
      if (c == '\r' && random() % 2 == 0 && &c != &text.back()) *(&c + 1) = '\n';
    }
    const auto exact = std::make_unique<char[]>(text.size() + 1);
    std::strcpy(exact.get(), text.c_str());
    const Stream stream = StreamOf(text);
    ASSERT_EQ(FieldsOf({exact.get(), set}), FieldsOf({stream.get(), set}))
        << testing::PrintToString(text) << " by " << testing::PrintToString(set);
  }
}

TEST(Parser, NoInputHasNoFields) {
  for (const CMyParser& parser : {CMyParser(), CMyParser(static_cast<char*>(nullptr), ","),
                                  CMyParser(Stream::pointer{}, ",")}) {
    EXPECT_TRUE(FieldsOf(parser).empty() && parser.GetInputPosition() == nullptr);
  }
}

TEST(Parser, DelimitersOfACallStayAndPositionFollows) {
  const char text[] = "a,b;c,d;\"e";
  CMyParser parser(text, nullptr);
  CMyParser copy;
  std::string walk;
  const char* const calls[] = {nullptr, ";", nullptr, ","};
  for (const char* delimiters : calls) {
    std::string field;
    EXPECT_TRUE(parser.NextField(field, delimiters));
    walk += field + "@" + std::to_string(parser.GetInputPosition() - text) + " ";
    if (field == "b") copy = parser;
  }
  EXPECT_EQ(walk, "a@2 b@4 c,d@8 e@10 ");
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
  for (OpenParser parser : {OpenParser(text + 8, ","), OpenParser(stream.get(), ",")}) {
    EXPECT_EQ(parser.NextChar(), 0xFF);
    parser.PushBack(0xFF);
    EXPECT_EQ(FieldsOf(parser), (Fields{"\xFF", "z"}));
  }
  EXPECT_EQ(std::fseek(stream.get(), 0, SEEK_SET), 0);  // it stayed open
}

/// The second read is an error, behind which the stream would give more.
ssize_t ReadPart(void* cookie, char* to, std::size_t) {
  int& part = *static_cast<int*>(cookie);
  const bool fails = ++part == 2;
  if (!fails) std::strcpy(to, part == 1 ? "a,b\r" : "c,d");
  return fails ? -1 : static_cast<ssize_t>(std::strlen(to));
}

TEST(Parser, EndsAtAReadError) {
  int part = 0;
  const Stream stream(fopencookie(&part, "r", {ReadPart, nullptr, nullptr, nullptr}), std::fclose);
  ASSERT_NE(stream, nullptr);
  std::setvbuf(stream.get(), nullptr, _IOFBF, 64);
  EXPECT_EQ(FieldsOf({stream.get(), nullptr}), (Fields{"a", "b"}));
  char text[] = "a,b";
  const Stream readable(fmemopen(text, 3, "r"), std::fclose);
  EXPECT_EQ(std::fputc('x', readable.get()), EOF);  // an error that is none of the parser's
  EXPECT_EQ(FieldsOf({readable.get(), nullptr}), (Fields{"a", "b"}));
}

}  // namespace
