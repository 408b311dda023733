#ifndef WQDATA_VALUES_TIME_H_
#define WQDATA_VALUES_TIME_H_

#include <cstdint>

#include <wqdata/export.h>
#include <wqdata/types.h>

namespace wqd {

/// A time of day, as seconds since midnight. Arithmetic wraps within a day, 0 to 86399; nothing
/// else does: a constructor or `Scan` may leave any number, 86400 and negative ones included.
///
/// A plain number, in a text or a numeric item, counts minutes.
///
/// No operation allocates, logs or throws. Times are plain values: different ones may be used on
/// different threads, and one may be read by many.
class WQDATA_API CZulTime {
 public:
  /// Midnight.
  CZulTime() = default;

  /// Seconds since midnight, stored unchanged.
  explicit CZulTime(int seconds);

  /// As `Set`.
  CZulTime(int hours, int minutes, int seconds);

  /// As `Scan`.
  explicit CZulTime(const char* text);

  /// The record's minutes times 60, plus its seconds.
  CZulTime(ZULTIME record) : m_seconds(record.minutes * 60 + record.seconds) {}

  /// Stores (hours × 60 + minutes) × 60 + seconds, of any numbers; wraps beyond 32 bits.
  void Set(int hours, int minutes, int seconds);

  /// The parts of the time. Hours may exceed 23; a negative time has parts of 0 or below.
  int Hour() const;
  int Minute() const;
  int Second() const;

  /// The time `seconds` later, or earlier when negative, wrapped to 0 to 86399. `Add(0)` brings a
  /// time that is out of a day back into it.
  CZulTime Add(int seconds) const;
  CZulTime operator+(int seconds) const;
  CZulTime operator-(int seconds) const;
  CZulTime& operator++();
  CZulTime& operator--();

  /// The difference in seconds, both of them; wraps beyond 32 bits.
  int operator-(const CZulTime& other) const;
  int Compare(const CZulTime& other) const;

  /// By the seconds.
  bool operator<(const CZulTime& other) const;
  bool operator<=(const CZulTime& other) const;
  bool operator>(const CZulTime& other) const;
  bool operator>=(const CZulTime& other) const;

  /// Seconds since midnight.
  operator int() const { return m_seconds; }

  /// Whole minutes and remaining seconds, each cut to 16 bits. 139380 to 139439 seconds give the
  /// marker of a missing time.
  operator ZULTIME() const {
    return {static_cast<std::uint16_t>(m_seconds / 60), static_cast<std::uint16_t>(m_seconds % 60)};
  }

  /// True from `start` up to, and without, `end`. An `end` at or before `start` lies behind
  /// midnight; with both the same every time is inside.
  bool InInterval(const CZulTime& start, const CZulTime& end) const;

  /// Reads `hours:minutes[:seconds]`, or a number of minutes. From a part that can't be read on all
  /// are 0, and so is null; a number beyond 32 bits is the nearest one, and the seconds wrap. There
  /// is no failing text, and the result is always true.
  ///
  ///     Scan("9:30")       9:30:00
  ///     Scan("570")        9:30:00
  ///     Scan("25:99:99")   96039 seconds
  bool Scan(const char* text);

  /// Writes "hh:mm:ss", each with two digits at least, at most 15 characters. Returns its length,
  /// with no NUL behind a text of exactly `size` characters; of a longer text `size` characters
  /// are written, without a NUL, and the result is negative. A negative `size` counts as 0, for
  /// which `buffer` may be null.
  int Print(char* buffer, int size) const;

 private:
  std::int32_t m_seconds = 0;
};

}  // namespace wqd

#endif  // WQDATA_VALUES_TIME_H_
