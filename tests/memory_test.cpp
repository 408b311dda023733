// What allocates, and what happens when memory is short. The program has its own operator new, and
// is linked with --wrap=realloc, so that both roads to memory can be watched and closed.
#include <wqdata/items/dataitem.h>
#include <wqdata/textsupport/myparser.h>

#include <new>

#include "support.h"

namespace {

int allocations = 0;
bool newFails = false;
std::size_t largestRealloc = SIZE_MAX;

void* Allocate(std::size_t size) {
  ++allocations;
  return newFails ? nullptr : std::malloc(size);
}

void* AllocateOrThrow(std::size_t size) {
  void* const memory = Allocate(size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

extern "C" {
void* __real_realloc(void* memory, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size) {
  ++allocations;
  return size <= largestRealloc ? __real_realloc(memory, size) : nullptr;
}
}

namespace {

using namespace wqd;
using namespace wqd_test;

/// Lets no realloc beyond `largest` bytes and, if told so, no new succeed until its end.
struct Shortage {
  explicit Shortage(std::size_t largest, bool noNew = false) {
    largestRealloc = largest;
    newFails = noNew;
  }
  ~Shortage() { largestRealloc = SIZE_MAX, newFails = false; }
};

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
  allocations = 0;
  bool done = block->Add(FID{1}, 1) && block->EndRecord();
  EXPECT_EQ(allocations, 1);
  for (int i = 0; i < 40; ++i) {
    done = done && block->StartRecord() && block->Add(FID{1}, 1e300) && block->Add(FID{2}, i) &&
           block->Add(FID{3}, std::int16_t{4}) && block->AddError(FID{5}, 1) &&
           block->Add(items[5]) && block->Add(FID{7}, letters.c_str()) && block->EndRecord();
  }
  EXPECT_TRUE(done && block->Close());
  for (bool record = block->FirstRecord(); record; record = block->NextRecord()) {
    for (bool field = block->FirstField(); field && ++fields; field = block->NextField()) {
      block->GetCurrentField(&item);
    }
    EXPECT_FALSE(block->GetField(FID{3}, &item) && block->FindField(FID{99}));
  }
  for (CDataItem& each : items) {
    each.Print(buffer, sizeof buffer);
    each.GetString(), each.GetFloat(), each.GetLong(), each.GetShort(), each.GetByte();
    each.Set(FID{1}, each.GetString(), -1);
  }
  EXPECT_EQ(allocations, 1) << fields << " fields, " << block->GetDataSize() << " bytes";
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
      const Shortage shortage(0);
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
  const std::string letters = Letters(65528);
  const std::string start = "1,a\n" + std::string(1, '\0') + letters;
  const std::string large(200000, 'B');
  const DataBlockPtr block = NewBlock(CSV);
  ASSERT_TRUE(block->Add(FID{1}, 1) && block->Add(FID{2}, "a") && block->EndRecord());
  ASSERT_TRUE(block->Close() && block->StartRecord() && block->Add(FID{1}, letters.c_str()));
  ASSERT_TRUE(BytesOf(*block) == start && block->FirstRecord());
  const LogCapture log;
  {
    const Shortage shortage(0);
    EXPECT_FALSE(block->Add(FID{2}, large.c_str()));  // there is room for its separator
    EXPECT_FALSE(block->Add(FID{2}, 1234567) || block->Add(FID{2}, -2.5));
    EXPECT_TRUE(BytesOf(*block) == start && block->EndRecord());
    EXPECT_FALSE(block->EndRecord() || block->Close() || block->Add(FID{2}, ""));
  }
  EXPECT_EQ(log.lines().size(), 6u);
  EXPECT_TRUE(block->GetRecordCount() == 2 && block->GetFieldCount() == 1);
  EXPECT_EQ(block->GetCurrentFieldId(), 1);  // the walk goes on
  EXPECT_TRUE(block->Add(FID{2}, large.c_str()) && block->EndRecord());
  EXPECT_TRUE(BytesOf(*block) == start + "\n," + large + "\n");
  EXPECT_TRUE(block->GetRecordCount() == 3 && block->GetFieldCount() == 2);
}

TEST(Growth, MovesALargeBlockFewTimesAndTakesTheBareNeedWhereTheSystemRefusesMore) {
  const std::string text = Letters(64999) + "B";
  std::string expected = text;
  const DataBlockPtr large = NewBlock(TEXT);
  allocations = 0;
  for (int i = 0; i < 300; ++i) ASSERT_TRUE(large->Add(FID{1}, text.c_str()));
  EXPECT_LT(allocations, 40);
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

TEST(ShortOfMemory, FactoryGivesNull) {
  const int before = CDataBlock::_instances;
  char text[] = "1,a";
  const Shortage shortage(SIZE_MAX, true);
  EXPECT_FALSE(CDataBlock::NewDataBlock(TEXT) || CDataBlock::NewDataBlock(TEXT, text, 0));
  EXPECT_EQ(CDataBlock::_instances, before);
}

TEST(ShortOfMemory, LongTextLeavesTheItemAsItWas) {
  const std::string text = Letters(2000);
  const CDataItem longText(FID{9}, text.c_str(), -1);
  CDataItem items[] = {CDataItem(FID{1}, "short", -1), CDataItem(FID{2}, 2.5),
                       CDataItem(FID{3}, 5, true), CDataItem(FID{4}, Letters(600).c_str(), -1)};
  for (CDataItem& item : items) {
    const CDataItem before = item;
    const Shortage shortage(SIZE_MAX, true);
    item.Set(FID{7}, text.c_str(), -1);
    item = longText;
    EXPECT_TRUE(item.GetId() == before.GetId() && item.GetType() == before.GetType() &&
                item.GetSize() == before.GetSize() && item.GetError() == before.GetError());
    EXPECT_STREQ(item.GetString(), before.GetString()) << before.GetId();
  }
  const Shortage shortage(SIZE_MAX, true);
  EXPECT_EQ(CDataItem(longText).GetError(), 1);
  EXPECT_EQ(CDataItem(FID{9}, text.c_str(), 512).GetError(), 1);
  EXPECT_EQ(CDataItem(FID{9}, text.c_str(), 511).GetType(), TYPE_STRING);
}

TEST(ShortOfMemory, ParserOfATextStaysBeforeTheFieldItCannotGive) {
  const std::string text = Letters(100) + ",b";
  CMyParser parser(text.c_str(), nullptr);
  std::string field = "left over";
  {
    const Shortage shortage(SIZE_MAX, true);
    EXPECT_FALSE(parser.NextField(field));
  }
  EXPECT_EQ(field, "");
  EXPECT_TRUE(parser.NextField(field) && field == Letters(100)) << field;
  EXPECT_TRUE(parser.NextField(field) && field == "b") << field;
}

}  // namespace
