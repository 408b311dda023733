/// The roads to memory of a program that is linked with --wrap=realloc, for its one source file:
/// allocations are counted, can be refused, and what a block moved away from is spoiled.
#ifndef WQDATA_TESTS_ALLOCATIONS_H_
#define WQDATA_TESTS_ALLOCATIONS_H_

#include <malloc.h>

#include <new>

#include "support.h"

namespace wqd_test {

inline int news = 0;
inline int reallocs = 0;
inline std::size_t largestRealloc = SIZE_MAX;
inline int untilRefusal = 0;  // the allocation to refuse, from 1; 0 for none, -1 when it was
inline bool refusalLasts = false;

/// Lets no realloc beyond `largest` bytes succeed until its end.
struct Shortage {
  explicit Shortage(std::size_t largest = 0) { largestRealloc = largest; }
  ~Shortage() { largestRealloc = SIZE_MAX; }
};

/// Refuses one allocation, the `nth`, or all from there on, until its end.
struct Refusal {
  Refusal(int nth, bool lasts) {
    untilRefusal = nth;
    refusalLasts = lasts;
  }
  ~Refusal() { untilRefusal = 0; }

  /// False while fewer allocations were made.
  bool Reached() const { return untilRefusal <= 0; }
};

/// Counts an allocation, and tells whether it is one to refuse.
inline bool Refused() {
  if (untilRefusal == 0) return false;
  if (untilRefusal < 0) return refusalLasts;
  if (--untilRefusal > 0) return false;
  untilRefusal = -1;
  return true;
}

inline void* Allocate(std::size_t size) {
  ++news;
  return Refused() ? nullptr : std::malloc(size);
}

}  // namespace wqd_test

void* operator new(std::size_t size) {
  void* const memory = wqd_test::Allocate(size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return wqd_test::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return wqd_test::Allocate(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

extern "C" {  // NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
void* __wrap_realloc(void* old, std::size_t size) {
  ++wqd_test::reallocs;
  if (size > wqd_test::largestRealloc || wqd_test::Refused()) return nullptr;
  if (old == nullptr) return std::malloc(size);
  const std::size_t held = malloc_usable_size(old);
  void* const moved = std::malloc(size);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, old, std::min(held, size));
  std::memset(old, 0xDD, held);
  std::free(old);
  return moved;
}
}  // NOLINTEND(bugprone-reserved-identifier)

#endif  // WQDATA_TESTS_ALLOCATIONS_H_
