#include <chrono>
#include <ctime>

#include <wqdata/service/clock.h>

namespace wqd::service {
namespace {

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
using std::chrono::sys_days;

constexpr sys_days january_first(int year) {
  return std::chrono::year{year} / std::chrono::January / 1;
}

constexpr sys_days kFirstDay = january_first(kFirstYear);
constexpr Ticks kTicksInAllYears = january_first(kLastYear + 1) - kFirstDay;

template <typename Number>
std::uint16_t narrow(Number number) {
  return static_cast<std::uint16_t>(number);
}

std::chrono::year_month_day date_of(const SYSTEMTIME& reading) {
  return std::chrono::year{reading.wYear} / static_cast<int>(reading.wMonth) / reading.wDay;
}

/// Numbers beyond the ranges of the calendar types must not reach their constructors, which cut
/// them: month 257 would be January.
bool is_date(const SYSTEMTIME& reading) {
  return reading.wYear >= kFirstYear && reading.wYear <= kLastYear && reading.wMonth <= 12 &&
         reading.wDay <= 31 && date_of(reading).ok();
}

bool is_reading(const SYSTEMTIME& reading) {
  return is_date(reading) && reading.wHour < 24 && reading.wMinute < 60 && reading.wSecond < 60 &&
         reading.wMilliseconds < 1000;
}

Ticks time_of_day(const SYSTEMTIME& reading) {
  return std::chrono::hours{reading.wHour} + std::chrono::minutes{reading.wMinute} +
         std::chrono::seconds{reading.wSecond} + std::chrono::milliseconds{reading.wMilliseconds};
}

SYSTEMTIME make_reading(sys_days day, Ticks timeOfDay) {
  const std::chrono::year_month_day date = day;
  const std::chrono::hh_mm_ss time{floor<std::chrono::milliseconds>(timeOfDay)};
  return {narrow(static_cast<int>(date.year())),
          narrow(static_cast<unsigned>(date.month())),
          narrow(std::chrono::weekday{day}.c_encoding()),
          narrow(static_cast<unsigned>(date.day())),
          narrow(time.hours().count()),
          narrow(time.minutes().count()),
          narrow(time.seconds().count()),
          narrow(time.subseconds().count())};
}

std::tm local_parts(std::time_t time) {
  std::tm parts{};
#if defined(_WIN32)
  localtime_s(&parts, &time);
#else
  localtime_r(&time, &parts);
#endif
  return parts;
}

}  // namespace

SYSTEMTIME utc_now() {
  const auto now = std::chrono::system_clock::now();
  const auto day = floor<std::chrono::days>(now);
  return make_reading(day, floor<Ticks>(now - day));
}

SYSTEMTIME local_now() {
  const auto now = std::chrono::system_clock::now();
  const auto second = floor<std::chrono::seconds>(now);
  const std::tm parts = local_parts(std::chrono::system_clock::to_time_t(second));
  return {
      narrow(parts.tm_year + 1900), narrow(parts.tm_mon + 1),
      narrow(parts.tm_wday),        narrow(parts.tm_mday),
      narrow(parts.tm_hour),        narrow(parts.tm_min),
      narrow(parts.tm_sec),         narrow(floor<std::chrono::milliseconds>(now - second).count())};
}

bool ticks_of(const SYSTEMTIME& reading, std::int64_t& ticks) {
  if (!is_reading(reading)) return false;
  ticks = Ticks{sys_days{date_of(reading)} - kFirstDay + time_of_day(reading)}.count();
  return true;
}

bool reading_of(std::int64_t ticks, SYSTEMTIME& reading) {
  if (ticks < 0 || ticks >= kTicksInAllYears.count()) return false;
  const auto days = floor<std::chrono::days>(Ticks{ticks});
  reading = make_reading(kFirstDay + days, Ticks{ticks} - days);
  return true;
}

}  // namespace wqd::service
