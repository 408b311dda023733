// Prices, dates and times in items, and on their way into text blocks.
#include <wqdata/items/dataitem.h>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;

/// What an item answers to each accessor, on one line.
std::string Answers(const CDataItem& item) {
  const CFixPtNum price = item.GetFPN();
  const CZulDate date = item.GetDate();
  char priceText[64];
  std::snprintf(priceText, sizeof priceText, "%.4f", static_cast<double>(price));
  return std::to_string(price.GetBaseCode()) + ":" + priceText + " " +
         std::to_string(date.Month()) + "/" + std::to_string(date.Day()) + "/" +
         std::to_string(date.Year()) + " " + std::to_string(static_cast<int>(item.GetTime()));
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
    EXPECT_EQ(Answers(item), answers) << item.GetString();
    CDataItem copy = item;
    EXPECT_EQ(Answers(CDataItem(std::move(copy))), answers) << item.GetString();
  }
}

/// Identifier, type, size, error and text.
std::string Held(const CDataItem& item) {
  return std::to_string(item.GetId()) + " " + std::to_string(item.GetType()) + " " +
         std::to_string(item.GetSize()) + " " + std::to_string(item.GetError()) + " " +
         item.GetString();
}

TEST(TypedItems, HoldTheirRecordsUnlessTheyAreMissing) {
  const std::string missing = "7 101 2 2 N/A";
  const std::string price = "7 " + std::to_string(TYPE_LPACK) + " 16 0 ";
  const std::string date = "7 " + std::to_string(TYPE_DATE) + " 4 0 ";
  const std::string time = "7 " + std::to_string(TYPE_TIME) + " 4 0 ";
  const std::pair<CDataItem, std::string> rows[] = {
      {{FID{7}, CFixPtNum(101.25, 3)}, price + "101 2/8"},
      {{FID{7}, CFixPtNum(1.0, 99)}, price + "N/A"},
      {{FID{7}, CFixPtNum(MISSING_DOUBLE + 0.009, 3)}, missing},
      {{FID{7}, CFixPtNum(MISSING_LONG, 3)}, missing},
      {{FID{7}, ZULDATE{9, 2, 2004}}, date + "02/09/2004"},
      {{FID{7}, ZULDATE{0, 13, 2004}}, date + "13/00/2004"},
      {{FID{7}, ZULDATE{5, 0, 2004}}, missing},
      {{FID{7}, CZulDate(256, 1, 2004)}, missing},
      {{FID{7}, ZULDATE{1, 1, 35}}, date + "01/01/2035"},  // its year on its way out
      {{FID{7}, CZulTime(34215)}, time + "09:30:15"},
      {{FID{7}, ZULTIME{2322, 0}}, time + "38:42:00"},
      {{FID{7}, ZULTIME{2323, 7}}, missing},
      {{FID{7}, CZulTime(139439)}, missing},
      {{FID{7}, CZulTime(139440)}, time + "38:44:00"},
      {{FID{7}, CDataItem().GetFPN()}, missing},
      {{FID{7}, CDataItem().GetDate()}, missing},
      {{FID{7}, CDataItem().GetTime()}, missing},
  };
  for (const auto& [item, held] : rows) {
    EXPECT_EQ(Held(item), held);
    EXPECT_EQ(Held(CDataItem(item)), held);
  }
}

TEST(TypedBlocks, PrintPricesDatesAndTimes) {
  const DataBlockPtr block = NewBlock(CSV);
  EXPECT_TRUE(block->Add(FID{1}, CFixPtNum("101^08+")) &&
              block->Add(FID{2}, CZulDate(2, 9, 2004)) && block->Add(FID{3}, ZULDATE{9, 2, 4}) &&
              block->Add(FID{4}, CZulTime(9, 30, 15)) && block->Add(FID{5}, ZULTIME{570, 15}));
  EXPECT_TRUE(block->Add(FID{6}, CFixPtNum(MISSING_LONG, 3)) && block->Add(FID{7}, CZulDate()) &&
              block->Add(FID{8}, CZulTime(MISSING_TIME_SECONDS)));
  EXPECT_EQ(BytesOf(*block), "101^08+,02/09/2004,02/09/2004,09:30:15,09:30:15,N/A,N/A,N/A");
}

}  // namespace
