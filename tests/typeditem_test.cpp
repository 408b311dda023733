// What items of every type convert into.
#include <wqdata/items/dataitem.h>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;

constexpr FID kId = 7;

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
      {{kId, 1.5}, "1 8" + noShort + "1.5; 110:1.5" + noTime + "1.5000"},
      {{kId, -0.00004}, "1 8" + noShort + "-4e-05; 110:-4e-05" + noTime + "-0.0000"},
      {{kId, 570}, "2 4 0; 0 570 570 570; 101:570 0/0/0 34200; 570"},
      {{kId, 0x12348000},
       "2 4 0; 0 -32768 305430528 305430528; 101:305430528 0/0/0 1145962496; 305430528"},
      {{kId, -65535}, "2 4 0; 0 1 -65535 -65535; 101:-65535 0/0/0 -3932100; -65535"},
      {{kId, std::int16_t{300}}, "3 2 0; 44 300 300 300; 101:300 0/0/0 18000; 300"},
      {{kId, std::int16_t{-2}}, "3 2 0; 254 -2 -2 -2; 101:-2 0/0/0 -120; -2"},
      {{kId, 7, true}, "101 2 7;" + none + noTime + "N/A"},
      {CDataItem(), "101 2 1;" + none + noTime + "N/A"},
      {{kId, CFixPtNum(1.5, -3)}, "5 16" + noShort + "1.5; -3:1.5" + noTime + "N/A"},
      {{kId, CFixPtNum(101.25, 3)}, "5 16" + noShort + "101.25; 3:101.25" + noTime + "101 2/8"},
      {{kId, ZULDATE{9, 2, 2004}}, "7 4 0;" + none + " 2/9/2004 139380; 02/09/2004"},
      {{kId, ZULDATE{0, 13, 2004}}, "7 4 0;" + none + " 13/0/2004 139380; 13/00/2004"},
      {{kId, ZULDATE{1, 1, 35}}, "7 4 0;" + none + " 1/1/2035 139380; 01/01/2035"},
      {{kId, CZulTime(9, 30, 15)}, "8 4 0;" + none + " 0/0/0 34215; 09:30:15"},
      {{kId, ZULTIME{2322, 0}}, "8 4 0;" + none + " 0/0/0 139320; 38:42:00"},
      {{kId, CZulTime(139440)}, "8 4 0;" + none + " 0/0/0 139440; 38:44:00"},
      {{kId, ZULDATE{5, 0, 2004}}, missing},
      {{kId, CZulDate(256, 1, 2004)}, missing},
      {{kId, ZULTIME{2323, 7}}, missing},
      {{kId, CZulTime(139439)}, missing},
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
    EXPECT_EQ(Converted({kId, text.c_str(), -1}), converted + "; " + text);
  }
}

}  // namespace
