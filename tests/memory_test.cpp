// What allocates, and how a text block grows.
#include "allocations.h"
#include "fieldvalue.h"

namespace {

using namespace wqd;
using namespace wqd_test;

TEST(Allocations, WritingConvertingAndWalkingTakeNoneUntilTheBufferGrows) {
  const DataBlockPtr block = NewBlock(CSV);
  const std::string letters = Letters(600);
  CDataItem item;
  CDataItem items[] = {{},
                       {FID{1}, 1e300},
                       {FID{1}, -7},
                       {FID{1}, 7, false},
                       {FID{1}, "1 2/8", -1},
                       {FID{6}, letters.c_str(), -1}};
  char buffer[1000];
  int fields = 0;
  news = reallocs = 0;
  bool done = block->Add(FID{1}, 1) && block->EndRecord();
  EXPECT_EQ(news + reallocs, 1);
  for (int i = 0; i < 40; ++i) {
    done = done && block->StartRecord() && block->AddError(FID{5}, 1) &&
           block->Add(FID{7}, letters.c_str());
    for (CDataItem& each : items) done = done && block->Add(each);
    done = done && block->EndRecord();
  }
  EXPECT_TRUE(done && block->Close());
  for (bool record = block->FirstRecord(); record; record = block->NextRecord()) {
    for (bool field = block->FirstField(); field; field = block->NextField(), ++fields) {
      block->GetCurrentField(&item);
    }
    EXPECT_FALSE(block->FindField(FID{99}));
  }
  for (CDataItem& each : items) {
    each.Print(buffer, sizeof buffer);
    each.GetString(), each.GetFloat(), each.GetLong(), each.GetShort(), each.GetByte();
    each.Set(FID{1}, each.GetString(), -1);
  }
  EXPECT_EQ(news + reallocs, 1) << fields << " fields, " << block->GetDataSize() << " bytes";
  EXPECT_GT(fields, 40 * 41);
}

TEST(Growth, StepsAndLogLine) {
  // What is written first and added then, and the figures of the growth that is refused. A second
  // field has a separator, which grows the block by itself.
  for (const auto& [sizes, figures] : Rows(R"(
         0 0 => 65536, m_allocSize<0>, length<0>, sizeInc<65536>
         0 65536 => 65536, m_allocSize<0>, length<65536>, sizeInc<65536>
         0 65537 => 131072, m_allocSize<0>, length<65537>, sizeInc<131072>
         65533 1 => none | 65534 1 => 131072, m_allocSize<65536>, length<1>, sizeInc<65536>
         65535 0 => 131072, m_allocSize<65536>, length<0>, sizeInc<65536>
         65537 65533 => none
         65537 65534 => 196608, m_allocSize<131072>, length<65534>, sizeInc<65536>
         10 200000 => 327680, m_allocSize<65536>, length<200000>, sizeInc<262144>
         65533 +0 => none | 65534 +0 => 131072, m_allocSize<65536>, length<1>, sizeInc<65536>
         65534 +65536 => 196608, m_allocSize<65536>, length<65536>, sizeInc<65536>)")) {
    SCOPED_TRACE(sizes);
    char* end = nullptr;
    const std::string used = Letters(std::strtoul(sizes.c_str(), &end, 10));
    const std::string added(std::strtoul(end, nullptr, 10), 'B');
    const bool second = end[1] == '+';
    const DataBlockPtr block = NewBlock(CSV);
    ASSERT_TRUE(used.empty() || block->Add(FID{1}, used.c_str()));
    ASSERT_TRUE(second || block->StartRecord());
    const void* const data = block->GetData();
    const LogCapture log;
    {
      const Shortage none;
      EXPECT_EQ(block->Add(FID{1}, added.c_str()), figures == "none");
    }
    if (figures == "none") continue;
    EXPECT_EQ(log.lines(),
              (LogCapture::Lines{{1, "Couldn't allocate TEXT record size " + figures}}));
    EXPECT_TRUE(block->GetData() == data && BytesOf(*block) == used);
    EXPECT_EQ(block->GetFieldCount(), second ? 1 : 0);
    EXPECT_TRUE(block->Add(FID{1}, added.c_str()));
    EXPECT_TRUE(BytesOf(*block) == used + (second ? "," : "") + added);
  }
}

TEST(Growth, RefusedOperationsLeaveTheBlockAsItWas) {
  const std::string letters = Letters(65529);
  const std::string start = "1,a\n" + std::string(1, '\0') + letters;
  const DataBlockPtr block = NewBlock(CSV);
  ASSERT_TRUE(block->Add(FID{1}, 1) && block->Add(FID{2}, "a") && block->EndRecord() &&
              block->Close() && block->StartRecord() && block->Add(FID{1}, letters.c_str()));
  ASSERT_TRUE(BytesOf(*block) == start && block->FirstRecord());
  {
    const Shortage none;
    EXPECT_FALSE(block->EndRecord() || block->Close() || block->Add(FID{2}, -2.5));
  }
  EXPECT_EQ(block->GetCurrentFieldId(), 1);  // the walk goes on
  EXPECT_TRUE(BytesOf(*block) == start && block->GetRecordCount() == 1);
  EXPECT_TRUE(block->Add(FID{2}, "b") && block->EndRecord() && BytesOf(*block) == start + ",b\n");
  EXPECT_TRUE(block->GetRecordCount() == 2 && block->GetFieldCount() == 2);
}

TEST(Growth, MovesALargeBlockFewTimesAndTakesTheBareNeedWhereTheSystemRefusesMore) {
  const std::string text = Letters(64999) + "B";
  std::string expected = text;
  const DataBlockPtr large = NewBlock(TEXT);
  reallocs = 0;
  for (int i = 0; i < 300; ++i) ASSERT_TRUE(large->Add(FID{1}, text.c_str()));
  EXPECT_LT(reallocs, 40);
  for (int i = 1; i < 300; ++i) expected += "\t" + text;
  EXPECT_TRUE(BytesOf(*large) == expected);
  const DataBlockPtr block = NewBlock(TEXT);
  const LogCapture log;
  const Shortage shortage(std::size_t{16} * 65536);
  int added = 0;
  while (block->StartRecord() && block->Add(FID{1}, text.c_str())) ++added;
  EXPECT_EQ(added, 16);
  EXPECT_EQ(log.lines().size(), 1u);
}

}  // namespace
