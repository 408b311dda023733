// What items of numbers and texts hold and print, and what those of every type convert into.
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
      {{FID{7}, -99999999}, "-99999999"},
      {{FID{7}, 12345678}, "12345678"},
      {{FID{7}, std::int16_t{0}}, "0"},
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

TEST(Item, PrintsNumbersAsTheCLibraryDoesAndWithAPointInEveryLocale) {
  std::vector<double> values = {DBL_MAX, DBL_TRUE_MIN, kInfinity, kNan,
                                0.0,     0.00005,      0.00015,   0.99995,
                                2.00005, 1e15 + 0.3,   4.5e11,    4.5e11 - 6e-5};
  std::mt19937_64 random(3);
  for (int i = 0; i < 20000; ++i) {
    values.push_back(std::bit_cast<double>(random()));
    values.push_back(static_cast<double>(random() >> (random() % 64)) / 32768.0);
    values.push_back(static_cast<double>(random() >> (12 + random() % 50) | 1) /
                     20000.0);  // halves
    const auto number = static_cast<std::int32_t>(random()) >> random() % 32;
    ASSERT_EQ(CDataItem(FID{7}, number).GetString(), std::to_string(number));
    const auto small = static_cast<std::int16_t>(number % 32768);
    ASSERT_EQ(short_item(small).GetString(), std::to_string(small));
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

/// Type, size and error; byte, short, long and double; price, date and time; and the text.
std::string Converted(CDataItem item) {
  const bool integral = item.GetType() == TYPE_LONG || item.GetType() == TYPE_INT;
  EXPECT_TRUE(item.GetLength() == item.GetSize() && item.IsIntegralType() == integral &&
              item.IsNull() == (item.GetType() == TYPE_ERROR));
  const CFixPtNum price = item.GetFPN();
  const CZulDate date = item.GetDate();
  const std::string string = item.GetString();
  char text[200];
  const InLocale usual;
  std::snprintf(text, sizeof text, "%d %d %d; %d %d %d %.10g; %d:%.9g %d/%d/%d %d; ",
                item.GetType(), item.GetSize(), item.GetError(), item.GetByte(), item.GetShort(),
                item.GetLong(), item.GetFloat(), price.GetBaseCode(), double(price), date.Month(),
                date.Day(), date.Year(), int(item.GetTime()));
  return text + string;
}

TEST(Items, ConvertByTheTableOfTypes) {
  // What a number or a time has no value for, and what nothing has a value for.
  const std::string noShort = " 0; 0 -32768 -2147483648 ", noTime = " 0/0/0 139380; ";
  const std::string none = " 0 -32768 -2147483648 -100000000; 0:-100000000";
  const std::string missing = "101 2 2;" + none + noTime + "N/A";
  const std::pair<CDataItem, std::string> rows[] = {
      {{FID{7}, 1.5}, "1 8" + noShort + "1.5; 110:1.5" + noTime + "1.5000"},
      {{FID{7}, -0.00004}, "1 8" + noShort + "-4e-05; 110:-4e-05" + noTime + "-0.0000"},
      {{FID{7}, 570}, "2 4 0; 0 570 570 570; 101:570 0/0/0 34200; 570"},
      {{FID{7}, 0x12348000},
       "2 4 0; 0 -32768 305430528 305430528; 101:305430528 0/0/0 1145962496; 305430528"},
      {{FID{7}, -65535}, "2 4 0; 0 1 -65535 -65535; 101:-65535 0/0/0 -3932100; -65535"},
      {{FID{7}, std::int16_t{300}}, "3 2 0; 44 300 300 300; 101:300 0/0/0 18000; 300"},
      {{FID{7}, std::int16_t{-2}}, "3 2 0; 254 -2 -2 -2; 101:-2 0/0/0 -120; -2"},
      {{FID{7}, 7, true}, "101 2 7;" + none + noTime + "N/A"},
      {CDataItem(), "101 2 1;" + none + noTime + "N/A"},
      {{FID{7}, CFixPtNum(1.5, -3)}, "5 16" + noShort + "1.5; -3:1.5" + noTime + "N/A"},
      {{FID{7}, CFixPtNum(101.25, 3)}, "5 16" + noShort + "101.25; 3:101.25" + noTime + "101 2/8"},
      {{FID{7}, ZULDATE{9, 2, 2004}}, "7 4 0;" + none + " 2/9/2004 139380; 02/09/2004"},
      {{FID{7}, ZULDATE{0, 13, 2004}}, "7 4 0;" + none + " 13/0/2004 139380; 13/00/2004"},
      {{FID{7}, ZULDATE{1, 1, 35}}, "7 4 0;" + none + " 1/1/2035 139380; 01/01/2035"},
      {{FID{7}, CZulTime(9, 30, 15)}, "8 4 0;" + none + " 0/0/0 34215; 09:30:15"},
      {{FID{7}, ZULTIME{2322, 0}}, "8 4 0;" + none + " 0/0/0 139320; 38:42:00"},
      {{FID{7}, CZulTime(139440)}, "8 4 0;" + none + " 0/0/0 139440; 38:44:00"},
      {{FID{7}, ZULDATE{5, 0, 2004}}, missing},
      {{FID{7}, CZulDate(256, 1, 2004)}, missing},
      {{FID{7}, ZULTIME{2323, 7}}, missing},
      {{FID{7}, CZulTime(139439)}, missing},
  };
  for (const auto& [item, converted] : rows) {
    CDataItem copy = item;
    EXPECT_EQ(Converted(copy), converted);
    EXPECT_EQ(Converted(CDataItem(std::move(copy))), converted);
  }
}

TEST(Items, OfTextConvertByWhatItBeginsWith) {
  for (const auto& [text, converted] : Rows(R"(
      => 6 1 0; 0 0 0 0; 0:-100000000 0/0/0 0
      é => 6 3 0; 195 0 0 0; 0:-100000000 0/0/0 0
      abc => 6 4 0; 97 0 0 0; 0:-100000000 0/0/0 0 | 12.5 => 6 5 0; 49 12 12 12.5; 102:12.5 0/0/0 720
      ~-7e2x => 6 7 0; 32 -7 -7 -700; 0:-100000000 0/0/0 -420
      70000 => 6 6 0; 55 4464 70000 70000; 101:70000 0/0/0 4200000
      2147483648 => 6 11 0; 50 -1 2147483647 2147483648; 110:2.1474836e+09 0/0/0 -60
      -99999999999 => 6 13 0; 45 0 -2147483648 -1e+11; 110:-1e+11 0/0/0 0
      101 2/8 => 6 8 0; 49 101 101 101.25; 3:101.25 0/0/0 6060
      101^08+ => 6 8 0; 49 101 101 101.265625; 16:101.265625 0/0/0 6060
      12/31/2004 => 6 11 0; 49 12 12 -100000000; 0:-100000000 12/31/2004 720
      02/31/2004 => 6 11 0; 48 2 2 -100000000; 0:-100000000 2/31/2004 120
      5 ^ => 6 4 0; 53 5 5 -100000000; 0:-100000000 0/0/0 300
      9:30 => 6 5 0; 57 9 9 9; 0:-100000000 0/0/0 34200)")) {
    EXPECT_EQ(Converted({FID{7}, text.c_str(), -1}), converted + "; " + text);
  }
}

}  // namespace
