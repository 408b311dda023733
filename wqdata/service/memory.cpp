#include <algorithm>
#include <cstdlib>

#include <wqdata/service/memory.h>

namespace wqd::service {
namespace {

std::uintptr_t address(const void* at) { return reinterpret_cast<std::uintptr_t>(at); }

}  // namespace

// std::realloc and not operator new: a large buffer then grows by remapping its pages, and the
// bytes written so far are not copied.
void* grown(void* bytes, std::uint32_t& capacity, std::uint64_t needed, const void** source) {
  if (needed > kLargestBlock) return nullptr;
  if (needed <= capacity) return bytes;
  const std::uintptr_t offset = source == nullptr ? UINTPTR_MAX : address(*source) - address(bytes);
  const bool within = offset < capacity;
  // Twice, for the fewest moves: pages that nothing was written to yet are only asked for.
  const std::uint64_t twice = std::uint64_t{capacity} * 2;
  std::uint64_t size = std::min(std::max(twice, needed), kLargestBlock);
  void* moved = std::realloc(bytes, static_cast<std::size_t>(size));
  if (moved == nullptr && size > needed) {
    size = needed;
    moved = std::realloc(bytes, static_cast<std::size_t>(size));
  }
  if (moved == nullptr) return nullptr;
  if (within) *source = static_cast<const char*>(moved) + offset;
  capacity = static_cast<std::uint32_t>(size);
  return moved;
}

void release(void* bytes) { std::free(bytes); }

}  // namespace wqd::service
