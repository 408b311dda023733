/// The missing-value rule, one test for each type of value.
#ifndef WQDATA_VALUES_MISSING_H_
#define WQDATA_VALUES_MISSING_H_

#include <cmath>
#include <cstddef>
#include <cstdint>

#include <wqdata/types.h>

namespace wqd {

/// Error values of an item that was never given a value, and of one that was given a missing one.
inline constexpr std::int16_t kNeverSet = 1;
inline constexpr std::int16_t kMissing = 2;

inline constexpr char kMissingText[] = "N/A";

inline bool is_missing(std::int16_t value) { return value == MISSING_SHORT; }

inline bool is_missing(std::int32_t value) { return value == MISSING_LONG; }

inline bool is_missing(double value) { return std::abs(MISSING_DOUBLE - value) < 0.01; }

/// Stops at the first byte that differs, so that a shorter text is not read past its NUL.
inline bool is_missing(const char* text) {
  if (text == nullptr) return true;
  for (std::size_t i = 0; i < sizeof kMissingText; ++i) {
    if (text[i] != kMissingText[i]) return false;
  }
  return true;
}

inline bool is_missing(const ZULDATE& date) { return date.month == 0; }

inline bool is_missing(const ZULTIME& time) { return time.minutes == MISSING_TIME_MINUTES; }

}  // namespace wqd

#endif  // WQDATA_VALUES_MISSING_H_
