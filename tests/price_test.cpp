// Prices: base codes, notations, rounding, and the price class.
#include <wqdata/service/operations.h>
#include <wqdata/values/fixptnum.h>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd::service;
using namespace wqd_test;

std::string ToText(int code, std::int32_t price) {
  char buffer[kPriceTextSize + 8];
  std::memset(buffer, '#', sizeof buffer);
  price_to_string(code, price, buffer);
  EXPECT_EQ(buffer[kPriceTextSize], '#') << "past the room for a price, code " << code;
  return buffer;
}

TEST(Prices, AreWrittenInTheNotationOfTheirCode) {
  // Of code 110: 16 times the mantissa, and the lowest four bits of the exponent.
  ExpectRows(R"(
         0 101 => 101 | 0 -7 => -7 | 1 203 => 101 1/2 | 3 810 => 101 2/8 | 3 -2 => -0 2/8
         8 -2147483647 => -8388607 255/256 | 15 3240 => 101^08 | 15 31 => 0^31 | 16 6480 => 101^08
         16 6481 => 101^08+ | 17 12960 => 101^080 | 17 12961 => 101^082 | 18 25923 => 101^083
         18 -1 => -0^001 | 101 101 => 101 | 102 -5 => -0.5 | 105 1012500 => 101.2500
         109 2147483647 => 21.47483647 | 109 -1 => -0.00000001 | 110 162014 => 101.25
         110 -65 => -0.5 | 110 2147483639 => 1342177270000000 | 110 0 => 0
         110 -2147483640 => -1.34217728 | 5 -2147483648 => N/A | 110 -2147483648 => N/A | 9 5 => N/A
         111 5 => N/A | -1 5 => N/A | 14 5 => N/A | 19 5 => N/A | 100 5 => N/A)",
             [](const std::string& given) {
               std::int32_t code, price;
               std::sscanf(given.c_str(), "%d %d", &code, &price);
               return ToText(code, price);
             });
}

/// "105:1012500": the code and the price; the mantissa and the exponent of the floating code.
std::string Read(const std::string& text) {
  int code = -1;
  std::int32_t price = 12345;
  price_from_string(text.c_str(), code, price);
  if (price == MISSING_LONG) return "none " + std::to_string(code);
  if (code != 110) return std::to_string(code) + ":" + std::to_string(price);
  const int exponent = (price & 0xF) >= 8 ? (price & 0xF) - 16 : price & 0xF;
  return std::to_string(price >> 4) + "e" + std::to_string(exponent);
}

TEST(Prices, AreReadWithTheCodeThatTheNotationShows) {
  ExpectRows(R"(
         101 => 101:101 | 101. => 101:101 | 101.25 => 103:10125 | .5 => 102:5 | -0.5 => 102:-5
         ~+101.2500~ => 105:1012500 | -0 => 101:0 | 21.47483647 => 109:2147483647 | 1 1/8 => 3:9
         -0 1/8 => 3:-1 | 1/2 => 1:1 | 1   3/256 => 8:259 | ^08 => 15:8 | ^08+ => 16:17
         101^082 => 18:25922 | 101^083 => 18:25923 | 10000000^002 => 17:1280000001)",
             Read);
  // What the scale can't hold is nearest in the floating code, of which the finest scale counts.
  ExpectRows(R"(
         10000000^001 => 10000000e0 | 21.47483648 => 21474836e-6 | 2147483648 => 21474836e2
         536870912 1/4 => 53687091e1 | 0.123456785 => 12345679e-8 | -0.123456785 => -12345679e-8
         0.1234567849999999999999999999 => 12345678e-8 | 0.0000000001 => 0e0
         13421772840 => 134217727e2 | 13421772850 => 13421773e3 | 1342177270000000 => 134217727e7
         -1.342177280 => -134217728e-8)",
             Read);
  EXPECT_EQ(Read(""), "none 0");
  ExpectAll(R"(
         1342177275000000 | 99999999999999999999999999 | ~ | - | . | N/A | 1e5 | 1,5 | --1 | 1 1/3
         ^32 | ^088 | 1.5 1/2 | 0x10 | inf | 12/31/2004)",
            Read, "none 0");
}

TEST(Prices, RoundTheExactValueOnceHalvesAwayFromZero) {
  // 0.285 and 1.005 lie just below the half in binary, though the product rounds onto it.
  ExpectRows(R"(
         0.5 0 => 1 | -0.5 0 => -1 | 0.49999999999999994 0 => 0 | 2.5 0 => 3 | -0.0 105 => 0
         1.0625 3 => 9 | 1.0624999999999998 3 => 8 | 0.285 103 => 28 | 1.005 103 => 100
         0.125 103 => 13 | -0.125 103 => -13 | 2147483647.4 101 => 2147483647
         2147483647.5 101 => -2147483648 | -2147483647.4 101 => -2147483647
         -2147483648.0 101 => -2147483648 | 4503599627370497.5 101 => -2147483648
         1e300 110 => -2147483648 | 5e-324 109 => 0 | 101.25 110 => 162014
         134217728.0 110 => 2147483632 | 134217728.5 110 => 214748369 | 1e15 110 => 1600000007
         1342177274999999.0 110 => 2147483639 | 1342177279999999.0 110 => -2147483648
         nan 105 => -2147483648 | inf 110 => -2147483648 | -inf 0 => -2147483648
         1.0 9 => -2147483648 | 1.0 111 => -2147483648)",
             [](const std::string& given) {
               double value;
               int code;
               std::int32_t price;
               const InLocale usual;
               std::sscanf(given.c_str(), "%lf %d", &value, &code);
               price_from_double(value, code, price);
               return std::to_string(price);
             });
}

TEST(Prices, PrintedAndReadBackAreTheSameInEveryCodeAndLocale) {
  const DecimalComma locale;
  std::mt19937 random(2);
  for (int code = 0; code <= 110; ++code) {
    for (int i = 0; i < 20'000 && ToText(code, 5) != "N/A"; ++i) {
      const std::int32_t price = static_cast<std::int32_t>(random()) >> random() % 32;
      const CFixPtNum written(price, code);
      ASSERT_EQ(double{CFixPtNum(ToText(code, price).c_str())}, double{written})
          << code << ' ' << price;
      ASSERT_TRUE(code == 110 || std::int32_t{written} == price) << code << ' ' << price;
    }
  }
  if (!locale.InForce()) GTEST_SKIP() << "no locale with a decimal comma: not shown in one";
}

/// "3:101.25": the base code and the value.
std::string Shown(const CFixPtNum& price) {
  char text[64];
  const InLocale usual;
  std::snprintf(text, sizeof text, "%d:%.8g", price.GetBaseCode(), static_cast<double>(price));
  return text;
}

TEST(Price, KeepsCodeAndValueAsItsConstructorsSay) {
  const std::pair<CFixPtNum, std::string> cases[] = {{{810, 3}, "3:101.25"},
                                                     {{810, 99}, "99:0"},
                                                     {FPN{1.5, -2}, "-2:1.5"},
                                                     {LPACK{0xFFFE, 5}, "65534:0"},
                                                     {{MISSING_LONG, 77}, "77:-1e+08"},
                                                     {CFixPtNum("101^08+"), "16:101.26562"},
                                                     {CFixPtNum("no price"), "0:-1e+08"}};
  for (const auto& [price, shown] : cases) EXPECT_EQ(Shown(price), shown);
  const CFixPtNum wide(1.0, 0x1FFFE);
  EXPECT_EQ(static_cast<LPACK>(wide).baseCode, 0xFFFE);
  EXPECT_EQ(static_cast<FPN>(wide).baseCode, -2);
}

TEST(Price, OfTheMissingBandIsMissing) {
  for (const double value : {MISSING_DOUBLE, -99999999.995, MISSING_DOUBLE + 0.005}) {
    EXPECT_EQ(static_cast<std::int32_t>(CFixPtNum(value, 101)), MISSING_LONG) << value;
    char text[kPriceTextSize];
    EXPECT_EQ(CFixPtNum(value, 101).Print(text, 0), 3) << value;
    EXPECT_STREQ(text, "N/A");
  }
  EXPECT_EQ(static_cast<std::int32_t>(CFixPtNum(-99999999.98, 101)), -100000000);
}

TEST(Price, ComparesWithATolerance) {
  // The last two rows of numbers are exactly the tolerance apart.
  ExpectRows(R"(
      1.0 1.000009 => =lg | 1.0 1.00002 => !<l | 1.00002 1.0 => !>g
      nan 1.0 => ! | 1.0 nan => ! | 0.0 0.00001 => !l | 0.00001 0.0 => !g)",
             [](const std::string& given) {
               double a, b;
               const InLocale usual;
               std::sscanf(given.c_str(), "%lf %lf", &a, &b);
               const CFixPtNum left(a, 3), right(b, 105);
               EXPECT_EQ(Holding(left, right), Holding(left, b));
               return Holding(left, b);
             });
}

TEST(Price, SumsTakeTheHigherCodeAndNothingIsRescaled) {
  const CFixPtNum eighths(1.125, 3), decimal(1.5, 103);
  EXPECT_EQ(Shown(eighths + decimal) + Shown(decimal + eighths), "103:2.625103:2.625");
  EXPECT_EQ(Shown(eighths - decimal), "103:-0.375");
  EXPECT_EQ(Shown(eighths / 0.0), "3:inf");
  EXPECT_EQ(Shown(eighths * 2.0 - 1.0 + 0.5), "3:1.75");
}

TEST(Price, ConvertsFractionCodesToDecimalCodes) {
  const std::pair<int, int> cases[] = {{0, 101},       {3, 104},    {8, 109},   {15, 106},
                                       {18, 109},      {9, 9},      {103, 103}, {110, 110},
                                       {0x10003, 104}, {-1, 0xFFFF}};
  for (const auto& [before, after] : cases) {
    CFixPtNum price(1.5, before);
    EXPECT_EQ(price.ConvertNumericBaseCode(), before != after) << before;
    EXPECT_EQ(Shown(price), std::to_string(after) + ":1.5") << before;
  }
}

}  // namespace
