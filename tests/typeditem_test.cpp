// Prices, dates and times in items.
#include <wqdata/items/dataitem.h>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;

/// What an item answers to each accessor, on one line.
std::string Answers(const CDataItem& item) {
  const CFixPtNum price = item.GetFPN();
  const CZulDate date = item.GetDate();
  char text[80];
  std::snprintf(text, sizeof text, "%d:%.4f %d/%d/%d %d", price.GetBaseCode(),
                static_cast<double>(price), date.Month(), date.Day(), date.Year(),
                static_cast<int>(item.GetTime()));
  return text;
}

TEST(TypedItems, ConvertByTheTableOfTypes) {
  const std::string noPrice = "0:-100000000.0000 ";
  const std::pair<CDataItem, std::string> rows[] = {
      {{FID{1}, 1.5}, "110:1.5000 0/0/0 139380"},
      {{FID{1}, std::int32_t{570}}, "101:570.0000 0/0/0 34200"},
      {{FID{1}, std::int16_t{-7}, false}, "101:-7.0000 0/0/0 -420"},
      {{FID{1}, CFixPtNum(1.5, -3)}, "-3:1.5000 0/0/0 139380"},
      {{FID{1}, CZulDate(2, 9, 2004)}, noPrice + "2/9/2004 139380"},
      {{FID{1}, CZulTime(9, 30, 15)}, noPrice + "0/0/0 34215"},
      {{FID{1}, std::int16_t{7}, true}, noPrice + "0/0/0 139380"},
      {{FID{1}, "101 2/8", -1}, "3:101.2500 0/0/0 6060"},
      {{FID{1}, "02/31/2004", -1}, noPrice + "2/31/2004 120"},
      {{FID{1}, "9:30", -1}, noPrice + "0/0/0 34200"},
  };
  for (const auto& [item, answers] : rows) {
    CDataItem copy = item;
    EXPECT_EQ(Answers(copy), answers) << item.GetString();
    EXPECT_EQ(Answers(CDataItem(std::move(copy))), answers) << item.GetString();
  }
}

TEST(TypedItems, HoldTheirRecordsUnlessTheyAreMissing) {
  // Type, size, error and text.
  const std::string missing = "101 2 2 N/A", price = "5 16 0 ", date = "7 4 0 ", time = "8 4 0 ";
  const std::pair<CDataItem, std::string> rows[] = {
      {{FID{7}, CFixPtNum(101.25, 3)}, price + "101 2/8"},
      {{FID{7}, CFixPtNum(1.0, 99)}, price + "N/A"},
      {{FID{7}, ZULDATE{0, 13, 2004}}, date + "13/00/2004"},
      {{FID{7}, ZULDATE{5, 0, 2004}}, missing},
      {{FID{7}, CZulDate(256, 1, 2004)}, missing},
      {{FID{7}, ZULDATE{1, 1, 35}}, date + "01/01/2035"},  // its year on its way out
      {{FID{7}, ZULTIME{2322, 0}}, time + "38:42:00"},
      {{FID{7}, ZULTIME{2323, 7}}, missing},
      {{FID{7}, CZulTime(139439)}, missing},
      {{FID{7}, CZulTime(139440)}, time + "38:44:00"},
  };
  for (const auto& [item, held] : rows) {
    EXPECT_EQ(std::to_string(item.GetType()) + " " + std::to_string(item.GetSize()) + " " +
                  std::to_string(item.GetError()) + " " + item.GetString(),
              held);
  }
}

}  // namespace
