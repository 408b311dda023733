// What items of numbers and texts hold and print.
#include <wqdata/items/dataitem.h>

#include <cfloat>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

CDataItem text_item(const std::string& text) {
  return CDataItem(FID{7}, text.data(), static_cast<int>(text.size()));
}

CDataItem short_item(std::int16_t value) { return CDataItem(FID{7}, value, false); }

std::string by_snprintf(double value) {
  char text[400];
  const InLocale usual;
  std::snprintf(text, sizeof text, "%.4f", value);
  return text;
}

/// Identifier, type, size, error and text.
std::string observed(const CDataItem& item) {
  return testing::PrintToString(std::tuple(item.GetId(), item.GetType(), item.GetSize(),
                                           item.GetError(), std::string(item.GetString())));
}

TEST(Item, TurnsMarkersIntoErrors) {
  constexpr int kLastInBand = 671088;  // 0.01 is 671088.64 units in the last place of the marker
  const auto near = [](int units) { return MISSING_DOUBLE + units * 0x1p-26; };
  const CDataItem missing[] = {short_item(-32768),          {FID{7}, INT_MIN},
                               {FID{7}, near(kLastInBand)}, {FID{7}, near(-kLastInBand)},
                               {FID{7}, nullptr, 5},        {FID{7}, "N/A", 1},
                               {FID{7}, "N/A\0x", 5}};
  for (const CDataItem& item : missing) EXPECT_EQ(observed(item), observed({FID{7}, 2, true}));
  const double doubles[] = {near(kLastInBand + 1), near(-kLastInBand - 1), 99999999.999999, kNan,
                            -kInfinity};
  for (const double value : doubles) EXPECT_FALSE(CDataItem(FID{7}, value).IsNull()) << value;
  for (const int value : {INT_MIN + 1, -32768}) EXPECT_FALSE(CDataItem(FID{7}, value).IsNull());
  EXPECT_FALSE(short_item(-32767).IsNull());
  for (const char* text : {"N/A.", "n/a", "N/", ""}) EXPECT_FALSE(text_item(text).IsNull()) << text;
  // The fourth byte decides as the text is stored; a copy and a move see a NUL there.
  CDataItem cut(FID{7}, "N/A.", 3);
  EXPECT_FALSE(cut.IsNull());
  EXPECT_TRUE(CDataItem(cut).IsNull() && CDataItem(std::move(cut)).IsNull());
}

TEST(Item, PrintsWithinItsBuffer) {
  const std::pair<CDataItem, std::string> rows[] = {
      {{FID{7}, -1234.56789}, "-1234.5679"},
      {{FID{7}, -INT_MAX}, "-2147483647"},
      {text_item({"ab\0cd", 5}), "ab"},
      {text_item(std::string(700, 'x')), std::string(700, 'x')},
      {CDataItem(), "N/A"},
  };
  for (const auto& [item, text] : rows) {
    const int n = static_cast<int>(text.size());
    for (const int size : {INT_MIN, 0, 1, n - 1, n, n + 1, n + 60}) {
      const auto room = static_cast<std::size_t>(std::max(size, 0));
      std::string expected(room + 32, '#');
      std::string buffer = expected;
      expected.replace(16, std::min(text.size(), room), text, 0, room);
      if (n < size) expected[16 + text.size()] = '\0';
      const int result = item.Print(buffer.data() + 16, size);
      EXPECT_TRUE(buffer == expected && std::max(result, -1) == (n <= size ? n : -1))
          << text << " in " << size << ": " << result << buffer;
    }
  }
  EXPECT_LT(text_item("x").Print(nullptr, 0), 0);
}

TEST(Item, PrintsDoublesAsSnprintfDoesAndWithAPointInEveryLocale) {
  std::vector<double> values = {DBL_MAX, DBL_TRUE_MIN, kInfinity, kNan,    0.0,
                                0.00005, 0.00015,      0.99995,   2.00005, 1e15 + 0.3};
  std::mt19937_64 random(3);
  for (int i = 0; i < 20000; ++i) {
    values.push_back(std::bit_cast<double>(random()));
    values.push_back(static_cast<double>(random() >> (random() % 64)) / 32768.0);
  }
  for (double value : values) {
    ASSERT_EQ(CDataItem(FID{7}, value).GetString(), by_snprintf(value)) << Exact(value);
    value = -value;
    ASSERT_EQ(CDataItem(FID{7}, value).GetString(), by_snprintf(value)) << Exact(value);
  }
  const DecimalComma locale;
  if (!locale.InForce()) GTEST_SKIP() << "no locale with a decimal comma: not shown in one";
  EXPECT_STREQ(CDataItem(FID{7}, 1234567.5).GetString(), "1234567.5000");
  EXPECT_TRUE(text_item("12.5").GetFloat() == 12.5 && text_item("12,5").GetFloat() == 12.0);
  EXPECT_EQ(text_item("0x1.8p1").GetFloat(), 3.0);
}

TEST(Item, StoresTextsOfAnyLengthAndByte) {
  std::mt19937_64 random(4);
  for (const std::size_t length : {0U, 1U, 4U, 511U, 512U, 1023U, 1024U, 100000U}) {
    std::string text(length, '\0');
    for (char& c : text) c = static_cast<char>(random() % 4 == 0 ? 0 : random());
    CDataItem item = text_item(text);
    ASSERT_EQ(item.GetSize(), static_cast<int>(length) + 1);
    const auto offset = item.GetString() - reinterpret_cast<const char*>(&item);
    EXPECT_EQ(offset >= 0 && offset < std::ptrdiff_t{sizeof item}, length <= 511) << length;
    const CDataItem copy = item;
    item.Set(FID{7}, "!", 1);
    EXPECT_EQ(std::string(copy.GetString(), length + 1), text + '\0') << length;
  }
  CDataItem item(FID{7}, "abc", 2);
  item.Set(FID{8}, "too long", INT_MAX);
  item.SetId(FID{0});
  EXPECT_EQ(observed(item), observed(CDataItem(FID{0}, "ab\0cd", -1)));
}

/// A new buffer is taken while the old one is still there, so its address differs.
TEST(Item, GrowsToTwiceTheNeedAndNeverShrinks) {
  const std::string text(5000, 'x');
  CDataItem item;
  std::string grown;
  for (const int length : {511, 512, 3, 1023, 1024, 600, 2047, 2048, 4095, 4999}) {
    const char* const buffer = item.GetString();
    item.Set(FID{7}, text.c_str(), length);
    if (item.GetString() != buffer) grown += std::to_string(length) + " ";
  }
  EXPECT_EQ(grown, "512 1024 2048 4999 ");
}

TEST(Item, StoresAPieceOfItsOwnText) {
  for (const std::size_t length : {10U, 500U, 3000U}) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += static_cast<char>('a' + i % 23);
    for (const std::size_t offset : {std::size_t{0}, std::size_t{3}, length - 1, length}) {
      CDataItem item = text_item(text), part = text_item(text);
      item.Set(FID{8}, item.GetString() + offset, -1);
      EXPECT_EQ(item.GetString(), text.substr(offset)) << offset;
      part.Set(FID{8}, part.GetString() + offset, 4);
      EXPECT_EQ(part.GetString(), text.substr(offset, 4)) << offset;
    }
  }
  CDataItem number(FID{7}, -1.5);
  number.Set(FID{8}, number.GetString() + 1, -1);
  EXPECT_STREQ(number.GetString(), "1.5000");
}

}  // namespace
