// Received ZUL3 records: walked, searched, rewritten and walked again.
#include "records.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  wqd_fuzz::check_records(ZUL3, data, size);
  return 0;
}
