// Hands the bytes of every kind of block to a system call, where memcheck sees each one that was
// never written. Nonzero when a block refuses something or the bytes can't be handed over.
#include <fcntl.h>
#include <unistd.h>

#include "fieldvalue.h"

namespace {

using namespace wqd;
using namespace wqd_test;

bool HandOut(CDataBlock& block) {
  const int sink = open("/dev/null", O_WRONLY);
  const auto size = static_cast<std::size_t>(block.GetDataSize());
  const bool done = write(sink, block.GetData(), size) == static_cast<ssize_t>(size);
  return close(sink) == 0 && done;
}

/// Writes records of fields of all types; a text block takes no vectors.
bool Fill(CDataBlock& block, bool vectors) {
  std::mt19937 random(1);
  bool done = true;
  for (int record = 0; record < 40; ++record) {
    done = done && block.StartRecord() && HandOut(block);
    for (int i = 0; i < 30; ++i) {
      const Field field = RandomField(random);
      const bool fits = vectors || !IsVector(field.type);
      done = done && (!fits || Add(block, field, kRoads[i % 3]));
    }
    done = done && block.EndRecord();
  }
  return done && block.Close() && HandOut(block);
}

}  // namespace

int main() {
  bool done = true;
  for (const cf_id format : {TEXT, CSV, ZUL3, ZUL4}) {
    done = done && Fill(*NewBlock(format), format == ZUL3 || format == ZUL4);
  }
  const std::unique_ptr<char[]> buffer(new char[1 << 20]);
  const DataBlockPtr fixed(CDataBlock::FixedSizeDataBlock(ZUL4, buffer.get(), 1 << 20));
  done = done && HandOut(*fixed) && Fill(*fixed, true);
  char bytes[] = "bytes";
  const DataBlockPtr btrieve(CDataBlock::NewDataBlock(Btrieve, bytes, 5));
  for (int i = 0; i < 1000; ++i) done = done && btrieve->AddBlob(FID{1}, bytes, 5);
  return done && HandOut(*btrieve) ? 0 : 1;
}
