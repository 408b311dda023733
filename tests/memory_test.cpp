// What allocates, and how blocks grow.
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

TEST(Allocations, AWalkUsesTheBlockOfVectorsAgainWhereAQuarterIsFilled) {
  const std::pair<std::uint32_t, int> counts[] = {{100, 1}, {25, 0}, {24, 1}, {25, 1}, {0, 1}};
  for (const cf_id format : kBinaryFormats) {
    const DataBlockPtr block = NewBlock(format);
    ASSERT_TRUE(block->StartRecord());
    for (const auto& [count, taken] : counts) Add(*block, VectorOf(TYPE_VECTOR_DOUBLE, count));
    ASSERT_TRUE(block->EndRecord() && block->FirstRecord());
    CDataItem item;
    for (const auto& [count, taken] : counts) {
      news = 0;
      const bool read = block->GetCurrentField(&item);
      EXPECT_TRUE(read && news == taken) << count << " elements, " << news << " blocks";
      EXPECT_EQ(FieldOf(item), VectorOf(TYPE_VECTOR_DOUBLE, count));
      block->NextField();
    }
    const double one = 1;
    news = 0;
    for (int i = 0; i < 3; ++i) item.SetVector(FID{1}, &one, 1);
    EXPECT_EQ(news, 3) << "a program's own vector has a block of its size";
  }
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

/// Numbers are written in place where room is plenty, and by way of their text where it is not.
TEST(Growth, NumbersAreWrittenAsTheirTextsAre) {
  const auto expect_same = [](std::size_t used, auto number) {
    CDataItem item(FID{1}, number);
    const std::string start = Letters(used), text = CDataItem(item).GetString();
    for (const bool first : {true, false}) {
      const DataBlockPtr blocks[] = {NewBlock(CSV), NewBlock(CSV), NewBlock(CSV)};
      for (const DataBlockPtr& block : blocks) {
        ASSERT_TRUE(block->Add(FID{1}, start.c_str()) && (!first || block->StartRecord()));
      }
      const Shortage none;
      const bool done = blocks[0]->Add(FID{1}, text.c_str());
      EXPECT_EQ(blocks[1]->Add(FID{1}, number), done) << text << " behind " << used;
      EXPECT_EQ(blocks[2]->Add(item), done) << text << " behind " << used;
      for (const DataBlockPtr& block : blocks) {
        EXPECT_EQ(BytesOf(*block) == start + (first ? "" : ",") + text, done) << text;
        EXPECT_EQ(block->GetFieldCount(), (first ? 0 : 1) + (done ? 1 : 0));
      }
    }
  };
  const LogCapture log;
  for (std::size_t used = 65490; used < 65536; ++used) {
    expect_same(used, INT32_MIN + 1), expect_same(used, 0), expect_same(used, INT32_MIN);
    expect_same(used, -450359962736.5), expect_same(used, 450359962738.0);
    expect_same(used, std::int16_t{-1});
  }
  std::mt19937_64 random(7);
  for (int i = 0; i < 2000; ++i) {
    const auto number = static_cast<std::int32_t>(random()) >> random() % 32;
    expect_same(0, number), expect_same(0, static_cast<std::int16_t>(number));
    expect_same(0, std::ldexp(static_cast<double>(number), -static_cast<int>(random() % 40)));
  }
}

TEST(Growth, BytesOfTheBlockItselfAreTakenAsTheyStoodThere) {
  const std::string text(40, 'y');
  for (const cf_id format : kBinaryFormats) {
    const DataBlockPtr block = NewBlock(format);
    ASSERT_TRUE(block->StartRecord() && block->Add(FID{1}, text.c_str()));
    for (int i = 0; i < 2000; ++i) {
      const auto* const data = static_cast<const char*>(block->GetData());
      ASSERT_TRUE(block->Add(FID{1}, data + (format == ZUL3 ? 18 : 24)));
    }
    // Words of the header, as they are before the field is counted.
    const auto* const words = static_cast<const char*>(block->GetData()) + (format == ZUL3 ? 8 : 0);
    Fields expected(2001, {TYPE_STRING, 1, text});
    expected.push_back({TYPE_VECTOR_LONG, 2, std::string(words, 4)});
    ASSERT_TRUE(block->AddLongVector(FID{2}, reinterpret_cast<const std::int32_t*>(words), 1));
    ASSERT_TRUE(block->EndRecord());
    EXPECT_EQ(Read(*block), std::vector<Fields>{expected});
  }
  const DataBlockPtr block = NewBlock(Btrieve);
  std::string expected = "ab";
  ASSERT_TRUE(block->AddBlob(FID{1}, "ab", 2));
  for (int i = 0; i < 14; ++i) {
    const auto size = static_cast<std::uint32_t>(expected.size());
    ASSERT_TRUE(block->AddBlob(FID{1}, static_cast<char*>(block->GetData()) + 1, size - 1));
    expected += expected.substr(1);
  }
  EXPECT_EQ(BytesOf(*block), expected);
}

TEST(Growth, ATextThatCanNotBeClosedHasAnEndBehindItsBytes) {
  const DataBlockPtr block = NewBlock(CSV);
  ASSERT_TRUE(block->Add(FID{1}, Letters(65534).c_str()));
  char* const end = static_cast<char*>(block->GetData()) + 65534;
  *end = 'x';
  const LogCapture log;
  const Shortage none;
  EXPECT_TRUE(!block->Close() && *end == '\0' && block->GetDataSize() == 65534);
}

TEST(Growth, CostsWhatTheRecordsCost) {
  for (const cf_id format : {TEXT, ZUL3, ZUL4, Btrieve}) {
    SCOPED_TRACE(CfName(format));
    ExpectLinearCost(6000, [format](int records) {
      reallocs = 0;
      const DataBlockPtr block = NewBlock(format);
      bool done = true;
      for (int record = 0; record < records; ++record) {
        block->StartRecord();
        for (FID i = 0; i < 50; ++i) {
          done = done && (block->Add(i, record) || block->AddBlob(FID{1}, "blob", 4));
        }
        block->EndRecord();
      }
      EXPECT_TRUE(done && block->GetDataSize() >= records * 50);
      EXPECT_LT(reallocs, 60) << records;
    });
  }
}

TEST(Growth, TakesTheBareNeedWhereTheSystemRefusesMore) {
  const std::string text = Letters(65000);
  const DataBlockPtr block = NewBlock(TEXT);
  const LogCapture log;
  const Shortage shortage(std::size_t{17} * 65536);  // 16 are reached by doubling
  int added = 0;
  while (block->StartRecord() && block->Add(FID{1}, text.c_str())) ++added;
  EXPECT_EQ(added, 17);
  EXPECT_EQ(log.lines().size(), 1u);
}

}  // namespace
