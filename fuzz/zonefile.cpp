// Zone files and the rules in them: a rule that was read can be written as a text that reads as it.
#include <wqdata/values/zonefile.h>

#include <span>

#include "target.h"

using namespace wqd::values;
using namespace wqd_fuzz;

namespace {

/// An offset of minutes as hours and minutes, its sign in front.
std::string offset(int minutes) {
  const int size = std::abs(minutes);
  return (minutes < 0 ? "-" : "") + std::to_string(size / 60) + ':' + std::to_string(size % 60);
}

std::string change(const SYSTEMTIME& date, int minutes) {
  return ",M" + std::to_string(date.wMonth) + '.' + std::to_string(date.wDay) + '.' +
         std::to_string(date.wDayOfWeek) + '/' + offset(minutes);
}

/// Daylight time ends at the hour before the record's, by the standard clock, and not before the
/// day; a text tells it by the daylight clock.
int end_hour(const ZoneRule& rule) { return std::max<int>(rule.standardDate.wHour, 1); }

std::string written(const ZoneRule& rule) {
  std::string text = "AAA" + offset(rule.bias);
  if (rule.daylightBias == 0) return text;
  return text + "BBB" + offset(rule.bias + rule.daylightBias) +
         change(rule.daylightDate, rule.daylightDate.wHour * 60) +
         change(rule.standardDate, (end_hour(rule) - 1) * 60 - rule.daylightBias);
}

void check_rule(const ZoneRule& rule) {
  for (const SYSTEMTIME& date : {rule.standardDate, rule.daylightDate}) {
    Expect(date.wMonth <= 12 && date.wDay <= 5 && date.wDayOfWeek <= 6 && date.wHour <= 24,
           "a change is a day that a record can hold");
  }
  Expect((rule.daylightBias == 0) == (rule.standardDate.wMonth == 0), "daylight time has its days");
  Expect(rule.standardBias == 0 && rule.daylightBias <= 0, "daylight time is the clock ahead");
  ZoneRule again = {};
  if (std::abs(rule.bias + rule.daylightBias) > 24 * 60) return;  // beyond what a text can say
  Expect(zone_rule_from_posix(written(rule), again), "a rule can be written");
  ZoneRule expected = rule;
  expected.standardDate.wHour = again.standardDate.wHour;
  Expect(end_hour(again) == end_hour(rule) && std::memcmp(&again, &expected, sizeof rule) == 0,
         "read, written and read again is equal");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Copy bytes(data, size);
  const auto* const start = reinterpret_cast<const std::uint8_t*>(bytes.data());
  ZoneRule untouched;
  std::memset(&untouched, 0x5A, sizeof untouched);
  ZoneRule rule = untouched;
  if (zone_rule_from_file(std::span(start, size), rule)) {
    check_rule(rule);
  } else {
    Expect(std::memcmp(&rule, &untouched, sizeof rule) == 0, "a refused file leaves the rule");
  }
  rule = untouched;
  if (zone_rule_from_posix({bytes.data(), size}, rule)) {
    check_rule(rule);
  } else {
    Expect(std::memcmp(&rule, &untouched, sizeof rule) == 0, "a refused text leaves the rule");
  }
  constexpr const char* kRoots[] = {"/nowhere", "/usr/share/zoneinfo"};
  const std::string_view name(bytes.data(), size);
  if (find_zone_rule(name, kRoots, rule)) {
    Expect(name.size() <= kMaxZoneNameLength && name.front() != '/' &&
               name.find("..") == std::string_view::npos,
           "a name stays below its root");
    check_rule(rule);
  }
  return 0;
}
