#ifndef WQDATA_VALUES_DATE_H_
#define WQDATA_VALUES_DATE_H_

#include <cstdint>

#include <wqdata/export.h>
#include <wqdata/types.h>

namespace wqd {

/// A calendar date: month, day and year, in this order wherever numbers are passed.
///
/// The calendar is a simple one. A year is a leap year when it is divisible by 4, 1900 and 2100
/// too. Day number 1 is 1 January 1970. Three ranges of years, their ends included, belong to
/// different operations:
///
///     1970 to 2035   `IsValid`, and a year that comes first in `Scan`
///     1970 to 2099   day numbers and weekdays
///     0 to 99        two-digit years, which become 1970 to 2069 in every date made from numbers
///
/// So 12/31/36 is a date of 2036: it has a day number and is not valid. A date may hold any three
/// numbers; no operation refuses one. The zero date, 0/0/0, stands for no date.
///
/// No operation allocates, logs or throws. Dates are plain values: different ones may be used on
/// different threads, and one may be read by many.
class WQDATA_API CZulDate {
 public:
  /// The zero date.
  CZulDate() = default;

  /// As `Set`.
  CZulDate(int month, int day, int year);

  /// As `Scan`, with its result dropped. Null gives the zero date.
  explicit CZulDate(const char* text);

  /// As `Set` of the record's numbers.
  CZulDate(ZULDATE record) { Set(record.month, record.day, record.year); }

  /// Stores any three numbers. A year of 0 to 69 becomes one of 2000 to 2069 and a year of 70 to
  /// 99 one of 1970 to 1999, unless all three numbers are 0.
  void Set(int month, int day, int year) {
    m_dayAndMonth =
        std::uint64_t{static_cast<std::uint32_t>(month)} << 32 | static_cast<std::uint32_t>(day);
    m_year = year;
    const bool zero = month == 0 && day == 0 && year == 0;
    if (year >= 0 && year <= 99 && !zero) m_year += year >= 70 ? 1900 : 2000;
  }

  /// Reads `month/day/year`, `month-day-year`, or with a year of 1970 to 2035 in front
  /// `year/month/day` or `year-month-day`. White space may stand before each number, anything
  /// behind the third; a number beyond 32 bits is the nearest one. True for a valid date. A text of
  /// no such form gives false and the zero date; one whose date is not valid gives false and that
  /// date. Null is a text of no such form.
  ///
  ///     Scan("02/29/2000")   true
  ///     Scan("12-01-15")     true: December 1, 2015
  ///     Scan("02/29/2001")   false, holding that date
  ///     Scan("13/01/2000")   false, holding the zero date
  bool Scan(const char* text);

  /// Writes "mm/dd/yyyy", month and day with two digits at least, at most 35 characters. Returns
  /// its length, with no NUL behind a text of exactly `size` characters; of a longer text `size`
  /// characters are written, without a NUL, and the result is negative. A negative `size` counts as
  /// 0, for which `buffer` may be null.
  int Print(char* buffer, int size) const;

  /// True for a day that exists in a year of 1970 to 2035.
  bool IsValid() const;

  /// -1, 0 or 1, by year, then month, then day, whether valid or not.
  int Compare(const CZulDate& other) const;

  /// The three numbers, whatever they are.
  int Day() const { return static_cast<std::int32_t>(m_dayAndMonth); }
  int Month() const { return static_cast<std::int32_t>(m_dayAndMonth >> 32); }
  int Year() const { return m_year; }

  /// The day number, see `DateToInt`: 0 for a date out of its range.
  int ConvertToInt() const;
  operator int() const;

  /// 0 for Sunday to 6; 3 for a date that has no day number.
  int DayOfWeek() const;

  /// The date `days` later, or earlier when negative, at the same cost for any distance. From a
  /// date that is not in the calendar the steps are: forward to the next day number, and from the
  /// month's last day or beyond to day 1 of the next month (April 31 plus 1 is May 1); backward to
  /// the day number before, and from day 1 or below to the last day of the month before. A month
  /// outside 1 to 12 has no days. The result passes through `Set`, so that one in the years 0 to 99
  /// moves to 1970 to 2069.
  CZulDate Add(int days) const;
  CZulDate operator+(int days) const;
  CZulDate operator-(int days) const;
  CZulDate& operator++();
  CZulDate& operator--();

  /// The difference of the day numbers, a date out of range counting as 0.
  int operator-(const CZulDate& other) const;

  /// By `Compare`.
  bool operator==(const CZulDate& other) const;
  bool operator<(const CZulDate& other) const;
  bool operator<=(const CZulDate& other) const;
  bool operator>(const CZulDate& other) const;
  bool operator>=(const CZulDate& other) const;

  /// The low 8 bits of day and month and the low 16 bits of the year.
  operator ZULDATE() const {
    return {static_cast<std::int8_t>(Day()), static_cast<std::int8_t>(Month()),
            static_cast<std::uint16_t>(m_year)};
  }

 private:
  CZulDate Moved(std::int64_t days) const;

  std::uint64_t m_dayAndMonth = 0;  // one word: of two, a copy of the date waits for the stores
  std::int32_t m_year = 0;
};

}  // namespace wqd

// Plain functions on the same calendar. All of them are safe on any thread, and none but `Today`
// allocates.

/// 1 for a year divisible by 4, else 0.
WQDATA_API int IsLeap(int year);

/// 28 to 31; 0 for a month outside 1 to 12.
WQDATA_API int DaysInMonth(int month, int year);

/// "Jan" to "Dec", a constant text; "N/A" for a month outside 1 to 12.
WQDATA_API const char* MonthName(int month);

/// The day number, 1 for 1 January 1970 to 47482 for 31 December 2099. 0 for a month outside 1 to
/// 12 or a year outside 1970 to 2099. The day is not tested: February 31 is the number of March 3,
/// or 2 in a leap year; sums beyond 32 bits wrap.
WQDATA_API int DateToInt(int month, int day, int year);

/// The date of a day number, the inverse of `DateToInt` in its range, and by the same calendar
/// beyond it. A number of 0 or less gives that day of January 1970, which is not valid.
WQDATA_API wqd::CZulDate IntToDate(int number);

/// 0 for Sunday to 6; 3 for a date that has no day number.
WQDATA_API int DayOfWeek(int month, int day, int year);

/// The date on the local clock, by the time zone of the process, which the C library loads at the
/// first call.
WQDATA_API wqd::CZulDate Today();

/// Seconds from 1 January 1970 00:00:00 to `time`, with no zone applied. A date without a day
/// number gives the seconds of the day minus 86400; what is beyond 32 bits, from 19 January 2038
/// on, wraps. `time` must not be null.
WQDATA_API std::int32_t SystemTimeToTimeT(const SYSTEMTIME* time);

#endif  // WQDATA_VALUES_DATE_H_
