/// The platform's clock, and sums of its readings.
#ifndef WQDATA_SERVICE_CLOCK_H_
#define WQDATA_SERVICE_CLOCK_H_

#include <cstdint>

#include <wqdata/types.h>

namespace wqd::service {

/// The present time, as UTC and on the local clock of the process.
SYSTEMTIME utc_now();
SYSTEMTIME local_now();

/// The reading `minutes` later, any sum of a few 32-bit numbers, in the Gregorian calendar, with
/// its weekday filled in. False, with `result` as it was, for a reading that no clock shows (a day
/// that is not in its month, an hour from 24 on, a year outside 1601 to 30827; the weekday is not
/// looked at), and when the result has no such year.
bool later_reading(const SYSTEMTIME& reading, std::int64_t minutes, SYSTEMTIME& result);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_CLOCK_H_
