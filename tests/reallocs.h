/// The realloc of a program that is linked with --wrap=realloc, for its one source file: memory can
/// run short, and what a block moved away from can be spoiled.
#ifndef WQDATA_TESTS_REALLOCS_H_
#define WQDATA_TESTS_REALLOCS_H_

#include <malloc.h>

#include "support.h"

namespace wqd_test {

inline int reallocs = 0;
inline std::size_t largestRealloc = SIZE_MAX;
inline bool reallocSpoils = false;

/// Lets no realloc beyond `largest` bytes succeed until its end.
struct Shortage {
  explicit Shortage(std::size_t largest = 0) { largestRealloc = largest; }
  ~Shortage() { largestRealloc = SIZE_MAX; }
};

/// Until its end, what is moved goes elsewhere, and its former bytes are overwritten.
struct Spoiling {
  Spoiling() { reallocSpoils = true; }
  ~Spoiling() { reallocSpoils = false; }
};

}  // namespace wqd_test

extern "C" {  // NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
void* __real_realloc(void* memory, std::size_t size);
void* __wrap_realloc(void* old, std::size_t size) {
  ++wqd_test::reallocs;
  if (size > wqd_test::largestRealloc) return nullptr;
  if (!wqd_test::reallocSpoils || old == nullptr) return __real_realloc(old, size);
  const std::size_t held = malloc_usable_size(old);
  void* const moved = std::malloc(size);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, old, std::min(held, size));
  std::memset(old, 0xDD, held);
  std::free(old);
  return moved;
}
}  // NOLINTEND(bugprone-reserved-identifier)

#endif  // WQDATA_TESTS_REALLOCS_H_
