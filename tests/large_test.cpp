// Blocks that only a 64-bit system with a few GiB of free memory can hold.
#include <wqdata/items/dataitem.h>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;

constexpr std::size_t kMiB = 1u << 20;

constexpr const char* kWhy = "too little memory, or a sanitizer, which takes too much of it";

bool HasRoom(std::size_t mib) {
  std::ifstream info("/proc/meminfo");
  std::size_t kib = mib * 1024;
  for (std::string word; info >> word && word != "MemAvailable:";) {
  }
  info >> kib;
  return !kSanitized && sizeof(void*) >= 8 && kib / 1024 >= mib;
}

TEST(LargeBlock, RefusesWhatPassesTheLargestSizeAndKeepsEverything) {
  if (!HasRoom(3000)) GTEST_SKIP() << kWhy;
  const DataBlockPtr block = NewBlock(TEXT);
  ASSERT_TRUE(block->Add(FID{1}, "1,a") && block->EndRecord() && block->Close());
  const int start = block->GetDataSize();
  int size = start;
  const LogCapture log;
  for (std::size_t length = 64 * kMiB; length > 0; length /= 2) {
    const std::string text(length, 'A');
    while (block->StartRecord() && block->Add(FID{2}, text.c_str())) {
      size += static_cast<int>(length);
      ASSERT_EQ(block->GetDataSize(), size);
    }
    ASSERT_EQ(block->GetDataSize(), size) << length;
  }
  EXPECT_GE(size, 0x7FFF0000 - 3);
  EXPECT_EQ(log.lines().size(), 27u);  // one for each length
  EXPECT_EQ(log.lines().back().second,
            "Couldn't allocate TEXT record size 2147483648, m_allocSize<2147418112>, length<1>, "
            "sizeInc<65536>");
  EXPECT_FALSE(block->EndRecord() || block->Add(FID{2}, "A"));
  EXPECT_TRUE(block->GetDataSize() == size && block->GetRecordCount() == 1);
  EXPECT_TRUE(block->Close() && !block->Close() && !block->Add(FID{2}, "A"));
  EXPECT_EQ(block->GetDataSize(), size + 1);
  const char* const letters = static_cast<const char*>(block->GetData()) + start;
  const auto others = static_cast<std::size_t>(size - start - 1);
  EXPECT_TRUE(*letters == 'A' && std::memcmp(letters, letters + 1, others) == 0);
  EXPECT_TRUE(block->FirstRecord() && block->GetCurrentFieldId() == 1);
}

TEST(LargeBlock, OfRecordsRefusesTheFieldAndReadsAsBefore) {
  if (!HasRoom(3000)) GTEST_SKIP() << kWhy;
  const std::vector<double> values(kMiB / 8, 1.5);
  const DataBlockPtr block = NewBlock(ZUL4);
  ASSERT_TRUE(block->StartRecord());
  std::vector<std::uint32_t> counts;
  for (std::uint32_t count = kMiB / 8, last = 1; last > 0; last = count, count /= 2) {
    while (block->AddDoubleVector(static_cast<FID>(counts.size()), values.data(), count)) {
      counts.push_back(count);
    }
  }
  const int size = block->GetDataSize();
  EXPECT_GE(size, 0x7FFFFFFF - 7);  // a field takes 8 bytes, and a record does
  EXPECT_TRUE(block->EndRecord() && block->StartRecord() && !block->AddError(FID{1}, 2));
  EXPECT_TRUE(block->GetDataSize() == size && block->GetRecordCount() == 1);
  EXPECT_EQ(block->GetFieldCount(), static_cast<int>(counts.size()));
  CDataItem item;
  ASSERT_TRUE(block->FirstRecord());
  for (std::size_t i = 0; i < counts.size(); ++i) {
    ASSERT_TRUE((i == 0 || block->NextField()) && block->GetCurrentFieldId() == i) << i;
    if (i % 100 != 0 && counts[i] == values.size()) continue;  // enough of those
    ASSERT_TRUE(block->GetCurrentField(&item) && item.GetSize() == static_cast<int>(counts[i]));
    EXPECT_EQ(std::memcmp(item.GetVectorPtr(), values.data(), counts[i] * sizeof(double)), 0) << i;
  }
  EXPECT_FALSE(block->NextField());
}

/// Processor time in ns for each byte of a block of `mib` MiB, written in fields of 4 KiB.
double TimeOfAByte(std::size_t mib) {
  const std::string text(4095, 'A');
  const std::clock_t begin = std::clock();
  const DataBlockPtr block = NewBlock(TEXT);
  for (std::size_t i = 0; i < mib * kMiB / 4096; ++i) {
    if (!block->Add(FID{1}, text.c_str())) ADD_FAILURE() << i;
  }
  return static_cast<double>(std::clock() - begin) / static_cast<double>(mib * kMiB);
}

TEST(LargeBlock, CostsAByteWhatASmallOneDoes) {
#if !defined(NDEBUG)
  GTEST_SKIP() << "no release build";
#endif
  if (!HasRoom(2000)) GTEST_SKIP() << kWhy;
  double ratio = 2;
  for (int attempt = 0; attempt < 3 && ratio > 1.5; ++attempt) {  // noise may spoil one or two
    std::vector<double> small(5);
    for (double& time : small) time = TimeOfAByte(64);
    std::nth_element(small.begin(), small.begin() + 2, small.end());
    ratio = TimeOfAByte(1024) / small[2];
  }
  EXPECT_LE(ratio, 1.5);
}

}  // namespace
