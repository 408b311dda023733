// Blocks made, used and freed on many threads while the log's sink changes. Worth most under the
// thread sanitizer.
#include <wqdata/textsupport/myparser.h>
#include <wqdata/values/timezone.h>

#include <atomic>
#include <functional>

#include "fieldvalue.h"

namespace {

using namespace wqd;
using namespace wqd_test;

/// Runs `work` with the numbers of so many threads, all at once.
void OnThreads(int count, const std::function<void(int)>& work) {
  std::atomic<int> waiting = count;
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

/// Makes a block of a record, sends it through the other encodings, and reads it at the end.
/// `freed` takes one of the blocks, which another thread may free.
std::string RoundTrip(int number, DataBlockPtr& freed) {
  DataBlockPtr block = NewBlock(ZUL4);
  block->StartRecord();
  for (const Field& field : OneOfEach(3)) Add(*block, field);
  block->Add(FID{1}, number);
  block->EndRecord();
  for (const cf_id format : {ZUL3, ZUL4, CSV}) {
    std::string bytes = BytesOf(*block);
    DataBlockPtr next = NewBlock(format);
    next->Add(Wrap(block->GetFormat(), bytes).get());
    block.swap(next);
    freed.swap(next);
  }
  EXPECT_EQ(CfId("none"), INVALID);  // a line in the log
  return BytesOf(*block);
}

TEST(Threads, MakeUseAndFreeBlocksWhileTheSinkOfTheLogChanges) {
  const int before = CDataBlock::_instances;
  std::mutex mutex;
  DataBlockPtr last;  // of whichever thread
  std::vector<std::string> expected;
  const auto sink = [](int level, const char* line, void* lines) {
    const bool whole = level == 2 && std::string_view(line) == "CfID: Invalid format 'none'";
    *static_cast<std::atomic<int>*>(lines) += whole ? 1 : 0;
  };
  std::atomic<int> wrong = 0, lines[2] = {};
  set_log_sink(sink, &lines[0]);
  for (int i = 0; i < 20; ++i) expected.push_back(RoundTrip(1000 + i, last));
  OnThreads(8, [&](int thread) {
    for (int i = 0; i < 200; ++i) {
      if (thread == 0) set_log_sink(sink, &lines[i % 2]);
      DataBlockPtr block;
      if (RoundTrip(1000 + i % 20, block) != expected[static_cast<std::size_t>(i) % 20]) ++wrong;
      const std::lock_guard lock(mutex);
      last.swap(block);
    }
  });
  set_log_sink(nullptr, nullptr);
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(lines[0] + lines[1], 20 + 8 * 200);
  last.reset();
  EXPECT_EQ(CDataBlock::_instances, before);
}

TEST(Threads, ReadOneTextZoneAndItemTogether) {
  char text[] = "22,101.2500\n32,7";
  const CTimeZone zone("Eastern Standard Time");
  const SYSTEMTIME utc = {2025, 7, 0, 4, 12, 0, 0, 0};
  const CDataItem item(FID{1}, 101.25);
  std::atomic<int> right = 0;
  OnThreads(8, [&](int) {
    for (int i = 0; i < 100; ++i) {
      const DataBlockPtr block(CDataBlock::NewDataBlock(TEXT, text, 0));
      SYSTEMTIME local = {};
      char printed[20];
      CDataItem price;
      right += block->GetField(FID{22}, &price) && price.GetFloat() == item.GetFloat() &&
               UtcTimeToTzTime(&zone, &utc, &local) == 1 && local.wHour == 8 &&
               CTimeZone("Eastern Standard Time").Bias == zone.Bias &&
               item.Print(printed, sizeof printed) == 8 && CfId("csv") == CSV;
    }
  });
  EXPECT_EQ(right, 800);
}

}  // namespace
