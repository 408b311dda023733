#ifndef WQDATA_VALUES_TIMEZONE_H_
#define WQDATA_VALUES_TIMEZONE_H_

#include <cstdint>

#include <wqdata/export.h>
#include <wqdata/types.h>
#include <wqdata/values/date.h>
#include <wqdata/values/time.h>

namespace wqd {

/// A time zone: how far its clocks are from UTC, and when daylight time begins and ends. The fields
/// may be set by hand, or from a zone's name.
///
/// Daylight time is told by the two transition dates and these rules:
///
///   * A transition date is the `wDay`-th weekday `wDayOfWeek` of the month `wMonth`, at `wHour`.
///     A `wDay` beyond the last such day of the month is the last, so 5 always is; 0 counts as 1.
///     The other fields are not looked at, the year included.
///   * Daylight time begins at `wHour` of `DaylightDate`, on the standard clock.
///   * It ends one hour before `wHour` of `StandardDate`, or at 0 for a `wHour` of 0, and the
///     clock that this is told on is the one that shows the reading in question: the standard clock
///     for a conversion from UTC, the wall clock for one to UTC.
///   * An hour of 24 is the next midnight, less the hour at the end.
///   * A `DaylightDate` in the month of `StandardDate` or a later one: daylight time spans the new
///     year.
///   * In a year outside 1970 to 2099 the first of each month counts as a Wednesday.
///   * No daylight time with a `DaylightBias` of 0, or with month 0 in both dates.
///   * Numbers that no calendar has are compared as they are.
///
/// No operation throws, logs or caches. Zones are plain values: different ones may be used on
/// different threads, and one may be read by many.
class WQDATA_API CTimeZone {
 public:
  /// GMT, the zone of UTC: biases 0, `StandardName` "GMT Standard Time", all the rest zero.
  CTimeZone() = default;

  /// As `Set`, with its result dropped: GMT after a failure, to be told by its `StandardName`.
  explicit CTimeZone(const char* name);

  /// Makes this GMT, and then what `GetTzInfo` fills in for `name`. True for a null name, which
  /// leaves GMT; otherwise what `GetTzInfo` returns, where false leaves GMT too.
  bool Set(const char* name);

  /// By `StandardName` alone, exactly and with case: a zone is what it is called.
  bool operator==(const CTimeZone& other) const;

  std::int32_t Bias = 0;  ///< minutes: UTC is the local standard time plus `Bias`
  char16_t StandardName[32] = u"GMT Standard Time";  ///< the identity of the zone, NUL-ended
  SYSTEMTIME StandardDate = {};                      ///< from daylight to standard time
  std::int32_t StandardBias = 0;                     ///< not used by any conversion
  char16_t DaylightName[32] = {};                    ///< not used
  SYSTEMTIME DaylightDate = {};                      ///< from standard to daylight time
  std::int32_t DaylightBias = 0;  ///< minutes added to `Bias` in daylight time; -60 as a rule
};

/// A reading of the clock of a zone, in years 1601 to 30827, and whether it is known to be daylight
/// time. The daylight state is 1 for daylight time, 0 for standard time, and -1 for not decided:
/// each conversion then settles it for itself by the rules of the zone.
///
///     CTimeStamp stamp;
///     stamp.Set(CZulDate(7, 4, 2025), CZulTime(12, 0, 0), CTimeZone("Eastern Standard Time"));
///     stamp.ChangeTimeZone(CTimeZone("Tokyo Standard Time"));  // July 5, 2025, 01:00:00
///
/// No operation throws, logs or caches. Stamps are plain values: different ones may be used on
/// different threads, and one may be read by many.
class WQDATA_API CTimeStamp {
 public:
  /// A reading of all zeros in GMT, with state -1.
  CTimeStamp() = default;

  /// The reading of this date and time, each number cut to 16 bits, in a copy of `zone`, with state
  /// -1. Nothing is checked: what is no real time passes through conversions unchanged. The
  /// reading's weekday stays as it was until a conversion to or from another zone fills it.
  void Set(const CZulDate& date, const CZulTime& time, const CTimeZone& zone);

  /// The present time with milliseconds, in GMT, with state 0. Of the former zone the dates and
  /// `DaylightName` stay, which no conversion reads while the biases are 0.
  void SetUtcTime();

  /// The reading as UTC, see `TzTimeToUtcTime`, its weekday filled unless the reading is copied. A
  /// state of -1 stays. `utc` must not be null.
  void GetUtcTime(SYSTEMTIME* utc) const;

  /// Seconds of the UTC reading since 1 January 1970 00:00:00 UTC, see `SystemTimeToTimeT`; -86400
  /// for the default stamp.
  operator std::int32_t() const;

  /// The date, through `CZulDate::Set`, and the time of the reading.
  CZulDate GetDate() const;
  CZulTime GetTime() const;

  /// -1, 0 or 1.
  int GetDaylightState() const { return m_daylightState; }

  /// The zone. The reference is good as long as the stamp, and follows it.
  const CTimeZone& GetTimeZone() const { return m_zone; }

  /// The same instant in another zone, with the state that is found there. Nothing changes when
  /// the zones are equal, that is of the same name, even if their biases differ.
  void ChangeTimeZone(const CTimeZone& zone);

  /// The instant of `other` in this stamp's zone, with the state that is found there. Between equal
  /// zones reading and state are copied. This stamp's zone stays in any case.
  void ConvertToLocalTime(const CTimeStamp& other);

 private:
  SYSTEMTIME m_reading = {};
  std::int32_t m_daylightState = -1;
  CTimeZone m_zone;
};

}  // namespace wqd

// Plain functions. All of them are safe on any thread. The two conversions may have the same
// reading as input and output; no pointer to a zone or a reading may be null.

/// Fills `zone` with the definition of the zone `name`, by reading a zone file of the system:
/// `Bias`, `DaylightBias`, both dates, a `StandardBias` of 0, and `name` itself as `StandardName`.
/// `DaylightName` stays. False, and nothing changed, for a null name, one of 32 characters or more,
/// one that is not known, and a zone whose rules are beyond what a record holds.
///
///     "Eastern Standard Time"   the platform's name of a zone, in any case
///     "America/New_York"        the name of a zone file, in its own case
///     "GMT Standard Time"       UTC, in any case: sets `Bias` and `DaylightBias` to 0 and changes
///                               nothing else, `StandardName` included
WQDATA_API bool GetTzInfo(const char* name, wqd::CTimeZone* zone);

/// Turns a reading of the zone's wall clock into UTC. `state` is the daylight state of the reading,
/// see `CTimeStamp`; the state that was used is returned. One other than -1, 0 and 1 counts as
/// standard time and is returned unchanged. With `Bias` and `DaylightBias` both 0 the reading is
/// copied, whatever it holds, and the result is 0; a reading that no clock shows, or one whose UTC
/// is out of the years 1601 to 30827, is copied in any zone.
///
/// In 2003 the clocks of "Eastern Standard Time" as it was then (Bias 300, DaylightBias -60,
/// DaylightDate the first Sunday of April at 2, StandardDate the last Sunday of October at 2)
/// skipped an hour on April 6, from 2:00 to 3:00, and repeated one on October 26, from 1:00 to
/// 2:00.
///
///     local reading          state    UTC                    result
///     2003-04-06 02:30:00    -1       2003-04-06 06:30:00    1   the skipped hour: daylight time
///     2003-10-26 00:59:59    -1       2003-10-26 04:59:59    1
///     2003-10-26 01:30:00    -1       2003-10-26 06:30:00    0   the repeated hour: standard time
///     2003-10-26 01:30:00     1       2003-10-26 05:30:00    1
///     2003-10-26 01:30:00     0       2003-10-26 06:30:00    0
WQDATA_API int TzTimeToUtcTime(const wqd::CTimeZone* zone, const SYSTEMTIME* local, SYSTEMTIME* utc,
                               int state);

/// Turns UTC into a reading of the zone's wall clock, weekday included, and returns 1 for daylight
/// time, else 0. What is copied unchanged is as for `TzTimeToUtcTime`; the result for a reading
/// that no clock shows is what the zone's rules make of its numbers. In the zone above:
///
///     UTC                    local reading          result
///     2003-04-06 06:59:59    2003-04-06 01:59:59    0
///     2003-04-06 07:00:00    2003-04-06 03:00:00    1
///     2003-10-26 05:59:59    2003-10-26 01:59:59    1
///     2003-10-26 06:00:00    2003-10-26 01:00:00    0
WQDATA_API int UtcTimeToTzTime(const wqd::CTimeZone* zone, const SYSTEMTIME* utc,
                               SYSTEMTIME* local);

#endif  // WQDATA_VALUES_TIMEZONE_H_
