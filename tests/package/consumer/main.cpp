// A program outside the library's tree: it uses every public header, and checks what it gets.
#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/servicelib.h>
#include <wqdata/textsupport/myparser.h>
#include <wqdata/types.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

// The package tells its users how the library was built.
#if defined(WQDATA_STATIC) != EXPECT_STATIC
#error "WQDATA_STATIC does not fit the kind of the library"
#endif

int main() {
  const wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(CSV));
  if (!block) return 1;
  const bool written = block->StartRecord() && block->Add(FID{1}, 1.5) &&
                       block->Add(FID{2}, std::int32_t{7}) && block->EndRecord() && block->Close();
  const char expected[] = "1.5000,7\n";
  if (!written || block->GetData() == nullptr ||
      std::memcmp(block->GetData(), expected, sizeof expected) != 0) {
    std::fprintf(stderr, "unexpected text: %s\n",
                 written ? static_cast<const char*>(block->GetData()) : "(none)");
    return 1;
  }
  return 0;
}
