// The memory of blocks while they grow, as times of their bytes: what they have asked for, and what
// of it the system had to give.
#include <malloc.h>
#include <unistd.h>
#include <wqdata/blocks/datablock.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace {

constexpr int kLeast = 1 << 18;  // below, a text block's first step alone is larger
constexpr int kMost = 1 << 29;

/// Bytes of this process that lie in memory.
std::int64_t resident() {
  std::int64_t pages = 0, residentPages = 0;
  std::ifstream("/proc/self/statm") >> pages >> residentPages;
  return residentPages * sysconf(_SC_PAGESIZE);
}

/// Grows a block to `kMost` bytes and prints the greatest ratios on the way.
void grow(cf_id format) {
  const std::int64_t before = resident();
  const wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(format));
  double asked = 0, given = 0;
  int looked = kLeast;
  block->StartRecord();
  for (int size = 0; size < kMost; size = block->GetDataSize()) {
    // Records of at most 65535 fields; a Btrieve block has bytes alone.
    for (int i = 0; i < 1000; ++i) {
      const bool added = format == Btrieve ? block->AddBlob(FID{1}, "some bytes", 10)
                                           : block->Add(FID{1}, "a text of some length");
      if (!added) std::exit(EXIT_FAILURE);
    }
    block->EndRecord();
    block->StartRecord();
    if (size < looked) continue;
    looked = size + size / 64;
    const auto bytes = static_cast<double>(block->GetDataSize());
    const auto usable = static_cast<double>(malloc_usable_size(block->GetData()));
    asked = std::max(asked, usable / bytes);
    given = std::max(given, static_cast<double>(resident() - before) / bytes);
  }
  std::printf("| %-8s | %5.2f | %5.2f |\n", CfName(format), asked, given);
}

}  // namespace

int main() {
  std::printf("\n| Block    | Asked | Given |\n|---|---:|---:|\n");
  for (const cf_id format : {TEXT, ZUL3, ZUL4, Btrieve}) grow(format);
  return 0;
}
