// Blocks on many threads, each with its own, while the log's sink changes. Worth most under the
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

/// Makes a block of a record, sends it through all other encodings and reads it at the end.
std::string RoundTrip(int number) {
  DataBlockPtr block = NewBlock(ZUL4);
  block->StartRecord();
  for (const int type : kFieldTypes) {
    if (!IsVector(type)) Add(*block, VectorOf(type, 1), Road::kItem);
  }
  block->Add(FID{1}, number);
  block->EndRecord();
  for (const cf_id format : {ZUL3, ZUL4, CSV}) {
    DataBlockPtr next = NewBlock(format);
    next->Add(block.get());
    block = std::move(next);
  }
  return BytesOf(*block);
}

TEST(Threads, MakeUseAndFreeBlocksOfTheirOwn) {
  const int before = CDataBlock::_instances;
  const std::string first = RoundTrip(1000);
  std::atomic<int> wrong = 0;
  OnThreads(8, [&](int thread) {
    for (int i = 0; i < 200; ++i) {
      const int number = 1000 + 1000 * thread + i;
      std::string expected = first;
      expected.replace(expected.rfind("1000"), 4, std::to_string(number));
      wrong += RoundTrip(number) == expected ? 0 : 1;
    }
  });
  EXPECT_EQ(wrong, 0);
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

struct Sink {
  std::atomic<int> lines = 0;
  std::atomic<int> torn = 0;

  static void Take(int level, const char* line, void* context) {
    auto& sink = *static_cast<Sink*>(context);
    ++sink.lines;
    if (level != 2 || std::string_view(line) != "CfID: Invalid format 'none'") ++sink.torn;
  }
};

TEST(Threads, TheSinkOfTheLogChangesWhileOthersLog) {
  Sink sinks[2];
  set_log_sink(&Sink::Take, &sinks[0]);
  OnThreads(8, [&](int thread) {
    for (int i = 0; i < 500; ++i) {
      if (thread == 0) {
        set_log_sink(&Sink::Take, &sinks[i % 2]);
      } else {
        EXPECT_EQ(CfId("none"), INVALID);
      }
    }
  });
  set_log_sink(nullptr, nullptr);
  EXPECT_EQ(sinks[0].lines + sinks[1].lines, 7 * 500);
  EXPECT_EQ(sinks[0].torn + sinks[1].torn, 0);
}

}  // namespace
