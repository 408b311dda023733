/// Memory of the buffers that blocks grow, each named by an address and a capacity.
#ifndef WQDATA_SERVICE_MEMORY_H_
#define WQDATA_SERVICE_MEMORY_H_

#include <cstdint>

namespace wqd::service {

/// No block is larger than a signed 32-bit size can say.
inline constexpr std::uint64_t kLargestBlock = INT32_MAX;

/// Returns `bytes`, which has room for `capacity`, with room for at least `needed`, moved if it
/// must be, its content kept and `capacity` raised. `bytes` is null with a capacity of 0, or came
/// from here. Room is taken twice as large as it was, so that appending costs what the bytes cost;
/// where the system refuses that much, the bare need is tried. Null when memory is short or
/// `needed` is above `kLargestBlock`: the buffer and `capacity` then stand as they were.
///
/// `source`, if not null, is the address of bytes that are about to be appended. Where they lie in
/// the buffer itself, it moves along.
[[nodiscard]] void* grown(void* bytes, std::uint32_t& capacity, std::uint64_t needed,
                          const void** source = nullptr);

/// Gives back what `grown` returned. Null is ignored.
void release(void* bytes);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_MEMORY_H_
