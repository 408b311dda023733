/// Little-endian words at any address: the one place that moves the bytes of binary records.
#ifndef WQDATA_SERVICE_LITTLEENDIAN_H_
#define WQDATA_SERVICE_LITTLEENDIAN_H_

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include <wqdata/types.h>

namespace wqd::service {

inline constexpr bool kSwapped = std::endian::native == std::endian::big;

/// Reverses the bytes of a word where the platform's order is not the records' own.
template <typename Word>
Word in_record_order(Word word) {
  static_assert(std::is_arithmetic_v<Word>);
  if constexpr (kSwapped && sizeof(Word) > 1) {
    auto bytes = std::bit_cast<std::array<std::uint8_t, sizeof(Word)>>(word);
    std::reverse(bytes.begin(), bytes.end());
    return std::bit_cast<Word>(bytes);
  }
  return word;
}

inline ZULDATE in_record_order(ZULDATE date) {
  return {date.day, date.month, in_record_order(date.year)};
}

inline ZULTIME in_record_order(ZULTIME time) {
  return {in_record_order(time.minutes), in_record_order(time.seconds)};
}

/// Unbounded: the caller has checked that the whole word lies at `at`.
template <typename Word>
Word load(const std::uint8_t* at) {
  Word word;
  std::memcpy(&word, at, sizeof word);
  return in_record_order(word);
}

template <typename Word>
void store(std::uint8_t* at, Word word) {
  word = in_record_order(word);
  std::memcpy(at, &word, sizeof word);
}

/// The high bit of each byte of `word` that is 0, so that a word of text is searched at once. Exact
/// up to the lowest one: a byte above it may be marked that is none.
inline std::uint64_t zero_bytes(std::uint64_t word) {
  return (word - 0x0101010101010101) & ~word & 0x8080808080808080;
}

/// The index of the lowest byte that is marked so, counted from the first in memory.
inline std::uint32_t first_marked(std::uint64_t marks) {
  return static_cast<std::uint32_t>(std::countr_zero(marks)) / 8;
}

/// Moves a run of elements between a record and an array, in either direction. `from` and
/// `to` need no alignment, and may overlap.
template <typename Word>
void move_elements(void* to, const void* from, std::size_t count) {
  if (count == 0) return;
  std::memmove(to, from, count * sizeof(Word));
  if constexpr (!kSwapped || sizeof(Word) == 1) return;
  auto* target = static_cast<std::uint8_t*>(to);
  for (; count > 0; --count, target += sizeof(Word)) {
    const auto swapped = load<Word>(target);
    std::memcpy(target, &swapped, sizeof swapped);
  }
}

/// A run of received bytes that is gone through from its front. What is not all there is not
/// skipped: the result is false, and the run stands as it was.
class Bytes {
 public:
  Bytes(const std::uint8_t* begin, std::size_t size) : m_at(begin), m_left(size) {}

  const std::uint8_t* At() const { return m_at; }
  std::size_t Left() const { return m_left; }

  bool Skip(std::uint64_t count) {
    if (count > m_left) return false;
    m_at += count;
    m_left -= static_cast<std::size_t>(count);
    return true;
  }

  /// Asks the memory for the bytes that a walk from record to record comes to soon: by itself
  /// the processor stops asking at the end of each page.
  void AskAhead() const {
    constexpr std::size_t kAhead = 2048;
    if (m_left > kAhead) __builtin_prefetch(m_at + kAhead);
  }

 private:
  const std::uint8_t* m_at;
  std::size_t m_left;
};

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_LITTLEENDIAN_H_
