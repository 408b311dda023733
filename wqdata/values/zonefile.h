/// Zone definitions from the system's zone files: from the name of a zone to its record.
///
/// Nothing here throws, keeps state or looks at the environment, and every function is safe on any
/// thread. False means that there is no such record, and the output stays as it was.
#ifndef WQDATA_VALUES_ZONEFILE_H_
#define WQDATA_VALUES_ZONEFILE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <wqdata/types.h>

namespace wqd::values {

/// What a zone record holds besides its names. The dates are in the day-in-month form; all zeros in
/// a zone without daylight time.
struct ZoneRule {
  std::int32_t bias;  ///< minutes from the local standard time to UTC
  std::int32_t standardBias;
  std::int32_t daylightBias;  ///< minutes on top in daylight time, 0 for a zone without
  SYSTEMTIME standardDate;
  SYSTEMTIME daylightDate;
};
static_assert(sizeof(ZoneRule) == 44);

/// The standing rule in a POSIX TZ text, as closely as a record can hold it:
///
///     "JST-9"                        bias -540
///     "EST5EDT,M3.2.0,M11.1.0"       bias 300, daylightBias -60, both changes at 2
///     "IST-1GMT0,M10.5.0,M3.5.0/1"   bias 0, daylightBias -60: daylight time is the clock ahead
///     "EST5EDT,0/0,J365/25"          bias 240: daylight time all the year round is none
///
/// Where the hour of a change is not among those that a record can hold, it is the nearest one, on
/// that day or one that always lies as many days from it.
/// False for a text that is not of this form, offsets that are not whole minutes, daylight time
/// without its two days, other days than those of the M form, both changes in one month unless
/// daylight time ends in an earlier week of it than it begins, and a change that would be off by a
/// week or more.
bool zone_rule_from_posix(std::string_view text, ZoneRule& rule);

/// The standing rule of a zone file with these contents: the text in its footer. False also for a
/// file of version 1, which has none, for an empty footer, and for a file whose counts do not fit
/// its length to the last byte, or whose sections refer to what is not there.
bool zone_rule_from_file(std::span<const std::uint8_t> bytes, ZoneRule& rule);

/// The characters that a name may have, a platform name as well as that of a file.
inline constexpr std::size_t kMaxZoneNameLength = 31;

/// The rule of the zone `name`: a platform name in any case, or the name of a file below a root,
/// in its own case. A file name is made of components of letters,
/// digits, '+', '-' and '_' with single slashes between them. Roots are tried in their order until
/// one has a regular file of this name with at most 64 KiB that yields a rule.
bool find_zone_rule(std::string_view name, std::span<const char* const> roots, ZoneRule& rule);

/// The day of the month on which a transition date falls in a year.
int transition_day(const SYSTEMTIME& transition, int year);

}  // namespace wqd::values

#endif  // WQDATA_VALUES_ZONEFILE_H_
