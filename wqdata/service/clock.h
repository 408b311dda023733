/// The platform's clock, and readings of it as ticks.
#ifndef WQDATA_SERVICE_CLOCK_H_
#define WQDATA_SERVICE_CLOCK_H_

#include <cstdint>

#include <wqdata/types.h>

namespace wqd::service {

/// The present time, as UTC and on the local clock of the process.
SYSTEMTIME utc_now();
SYSTEMTIME local_now();

/// Ticks of 100 nanoseconds from 1 January 1601 00:00:00 in the Gregorian calendar. False, with
/// `ticks` as it was, for a reading that no clock shows: a day that is not in its month, an hour
/// from 24 on, a year outside 1601 to 30827. The weekday is not looked at.
bool ticks_of(const SYSTEMTIME& reading, std::int64_t& ticks);

/// The inverse, which fills the weekday too. False, with `reading` as it was, for ticks outside
/// those years.
bool reading_of(std::int64_t ticks, SYSTEMTIME& reading);

inline constexpr std::int64_t kTicksInMinute = 600'000'000;

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_CLOCK_H_
