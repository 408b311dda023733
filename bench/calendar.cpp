// Readings of a zone's clock and back, and dates as day numbers and back.
#include <absl/time/time.h>
#include <cctz/civil_time.h>
#include <cctz/time_zone.h>
#include <date/tz.h>
#include <wqdata/values/date.h>
#include <wqdata/values/timezone.h>

#include <chrono>
#include <random>

#include "data.h"

using namespace wqd_bench;

namespace {

constexpr const char* kZone = "America/New_York";

/// Seconds since 1970, in years for which all libraries have the same rule, and in months in which
/// no clock is changed: what is shown twice can't be read back.
const std::vector<std::int64_t>& instants() {
  static const std::vector<std::int64_t> all = [] {
    constexpr std::int64_t kJanuary2008 = 1199145600, kYear = 31556952, kDay = 86400;
    std::mt19937 random(3);
    const auto below = [&random](std::int64_t bound) {
      return static_cast<std::int64_t>(random()) % bound;
    };
    std::vector<std::int64_t> seconds;
    for (std::size_t i = rows().size(); i > 0; --i) {
      const std::int64_t start = below(2) == 0 ? 0 : 120 * kDay;  // of winter, of summer
      seconds.push_back(kJanuary2008 + below(25) * kYear + start + below(60 * kDay));
    }
    return seconds;
  }();
  return all;
}

struct Reading {
  int year, month, day, hour, minute, second;

  std::uint64_t Sum() const {
    return static_cast<std::uint64_t>(
        ((((year * 12 + month) * 31 + day) * 24 + hour) * 60 + minute) % 1000003 * 60 + second);
  }
};

/// All start from broken-down readings and end with them, as records have them.
SYSTEMTIME broken_down(std::int64_t seconds) {
  const auto days = std::chrono::floor<std::chrono::days>(std::chrono::seconds(seconds));
  const std::chrono::year_month_day day{std::chrono::sys_days(days)};
  const std::chrono::hh_mm_ss time(std::chrono::seconds(seconds) - days);
  const auto word = [](auto number) { return static_cast<std::uint16_t>(number); };
  return {word(static_cast<int>(day.year())),
          word(static_cast<unsigned>(day.month())),
          0,
          word(static_cast<unsigned>(day.day())),
          word(time.hours().count()),
          word(time.minutes().count()),
          word(time.seconds().count()),
          0};
}

Reading reading_of(const SYSTEMTIME& t) {
  return {t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute, t.wSecond};
}

const std::vector<SYSTEMTIME>& utc_readings() {
  static const std::vector<SYSTEMTIME> all = [] {
    std::vector<SYSTEMTIME> readings;
    for (const std::int64_t seconds : instants()) readings.push_back(broken_down(seconds));
    return readings;
  }();
  return all;
}

std::uint64_t convert_ours(const wqd::CTimeZone& zone) {
  std::uint64_t sum = 0;
  for (const SYSTEMTIME& utc : utc_readings()) {
    SYSTEMTIME local = {}, back = {};
    const int state = UtcTimeToTzTime(&zone, &utc, &local);
    TzTimeToUtcTime(&zone, &local, &back, state);
    sum += reading_of(local).Sum() + reading_of(back).Sum();
  }
  return sum;
}

std::uint64_t convert_cctz(const cctz::time_zone& zone) {
  std::uint64_t sum = 0;
  const cctz::time_zone utcZone = cctz::utc_time_zone();
  const auto reading = [](const cctz::civil_second& t) {
    return Reading{
        static_cast<int>(t.year()), t.month(), t.day(), t.hour(), t.minute(), t.second()};
  };
  for (const SYSTEMTIME& utc : utc_readings()) {
    const cctz::civil_second civil(utc.wYear, utc.wMonth, utc.wDay, utc.wHour, utc.wMinute,
                                   utc.wSecond);
    const cctz::civil_second local = cctz::convert(cctz::convert(civil, utcZone), zone);
    const cctz::civil_second back = cctz::convert(cctz::convert(local, zone), utcZone);
    sum += reading(local).Sum() + reading(back).Sum();
  }
  return sum;
}

std::uint64_t convert_absl(const absl::TimeZone& zone) {
  std::uint64_t sum = 0;
  const absl::TimeZone utcZone = absl::UTCTimeZone();
  const auto reading = [](const absl::CivilSecond& t) {
    return Reading{
        static_cast<int>(t.year()), t.month(), t.day(), t.hour(), t.minute(), t.second()};
  };
  for (const SYSTEMTIME& utc : utc_readings()) {
    const absl::CivilSecond civil(utc.wYear, utc.wMonth, utc.wDay, utc.wHour, utc.wMinute,
                                  utc.wSecond);
    const absl::CivilSecond local = absl::ToCivilSecond(absl::FromCivil(civil, utcZone), zone);
    const absl::CivilSecond back = absl::ToCivilSecond(absl::FromCivil(local, zone), utcZone);
    sum += reading(local).Sum() + reading(back).Sum();
  }
  return sum;
}

std::uint64_t convert_date(const date::time_zone* zone) {
  std::uint64_t sum = 0;
  const auto reading = [](auto t) {
    const auto days = date::floor<date::days>(t);
    const date::year_month_day day(days);
    const date::hh_mm_ss time(t - days);
    return Reading{static_cast<int>(day.year()),
                   static_cast<int>(static_cast<unsigned>(day.month())),
                   static_cast<int>(static_cast<unsigned>(day.day())),
                   static_cast<int>(time.hours().count()),
                   static_cast<int>(time.minutes().count()),
                   static_cast<int>(time.seconds().count())};
  };
  for (const SYSTEMTIME& utc : utc_readings()) {
    const date::sys_seconds time = date::sys_days(date::year(utc.wYear) / utc.wMonth / utc.wDay) +
                                   std::chrono::hours(utc.wHour) +
                                   std::chrono::minutes(utc.wMinute) +
                                   std::chrono::seconds(utc.wSecond);
    const date::local_seconds local = zone->to_local(time);
    const date::sys_seconds back = zone->to_sys(local, date::choose::earliest);
    sum += reading(date::local_seconds(local)).Sum() + reading(back).Sum();
  }
  return sum;
}

void register_zones() {
  const std::string workload = "UTC to a zone's clock, and back";
  static const wqd::CTimeZone ours(kZone);
  static const cctz::time_zone byCctz = [] {
    cctz::time_zone zone;
    cctz::load_time_zone(kZone, &zone);
    return zone;
  }();
  static const absl::TimeZone byAbsl = [] {
    absl::TimeZone zone;
    absl::LoadTimeZone(kZone, &zone);
    return zone;
  }();
  static const date::time_zone* const byDate = date::locate_zone(kZone);
  const std::uint64_t sum = convert_cctz(byCctz);
  series(workload + "/wqdata", rows().size(), convert_ours(ours) == sum,
         [] { return convert_ours(ours); });
  series(workload + "/cctz", rows().size(), true, [] { return convert_cctz(byCctz); });
  series(workload + "/abseil", rows().size(), convert_absl(byAbsl) == sum,
         [] { return convert_absl(byAbsl); });
  series(workload + "/date", rows().size(), convert_date(byDate) == sum,
         [] { return convert_date(byDate); });
}

/// Both ways of all dates: the day number, and the date of the number.
template <typename Number, typename Date>
std::uint64_t all_dates(const std::vector<ZULDATE>& dates, Number number, Date date) {
  std::uint64_t sum = 0;
  for (const ZULDATE& each : dates) {
    const auto day = number(each);
    sum += static_cast<std::uint64_t>(day) + digest(date(day));
  }
  return sum;
}

void register_dates() {
  const std::string workload = "Date to day number, and back";
  static const std::vector<ZULDATE> dates = column(&Row::date);
  const auto ours = [] {
    return all_dates(
        dates, [](ZULDATE date) { return DateToInt(date.month, date.day, date.year); },
        [](int day) { return static_cast<ZULDATE>(IntToDate(day)); });
  };
  const auto chrono = [] {
    return all_dates(
        dates,
        [](ZULDATE date) {
          const auto day = std::chrono::year(date.year) / date.month / date.day;
          return static_cast<int>(std::chrono::sys_days(day).time_since_epoch().count()) + 1;
        },
        [](int number) {
          const std::chrono::year_month_day day{
              std::chrono::sys_days(std::chrono::days(number - 1))};
          return ZULDATE{static_cast<std::int8_t>(static_cast<unsigned>(day.day())),
                         static_cast<std::int8_t>(static_cast<unsigned>(day.month())),
                         static_cast<std::uint16_t>(static_cast<int>(day.year()))};
        });
  };
  series(workload + "/wqdata", rows().size(), ours() == chrono(), ours);
  series(workload + "/std::chrono", rows().size(), true, chrono);
}

}  // namespace

int main(int argc, char** argv) {
  register_zones();
  register_dates();
  return run_benchmarks(argc, argv);
}
