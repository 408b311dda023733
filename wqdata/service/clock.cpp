#include <chrono>
#include <ctime>

#include <wqdata/service/clock.h>

namespace wqd::service {
namespace {

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

constexpr std::int64_t kMinutesInHour = 60;
constexpr std::int64_t kMinutesInDay = 24 * kMinutesInHour;

using std::chrono::sys_days;

constexpr sys_days january_first(int year) {
  return std::chrono::year{year} / std::chrono::January / 1;
}

constexpr sys_days kFirstDay = january_first(kFirstYear);
constexpr std::int64_t kAllDays = (january_first(kLastYear + 1) - kFirstDay).count();

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

void set_date(sys_days day, SYSTEMTIME& reading) {
  const std::chrono::year_month_day date = day;
  reading.wYear = narrow(static_cast<int>(date.year()));
  reading.wMonth = narrow(static_cast<unsigned>(date.month()));
  reading.wDay = narrow(static_cast<unsigned>(date.day()));
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
  const std::chrono::hh_mm_ss time{floor<std::chrono::milliseconds>(now - day)};
  SYSTEMTIME reading{};
  set_date(day, reading);
  reading.wDayOfWeek = narrow(std::chrono::weekday{day}.c_encoding());
  reading.wHour = narrow(time.hours().count());
  reading.wMinute = narrow(time.minutes().count());
  reading.wSecond = narrow(time.seconds().count());
  reading.wMilliseconds = narrow(time.subseconds().count());
  return reading;
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

bool later_reading(const SYSTEMTIME& reading, std::int64_t minutes, SYSTEMTIME& result) {
  if (!is_reading(reading)) return false;
  const sys_days from{date_of(reading)};
  const std::int64_t days = (from - kFirstDay).count();
  const std::int64_t total =
      days * kMinutesInDay + reading.wHour * kMinutesInHour + reading.wMinute + minutes;
  if (total < 0 || total >= kAllDays * kMinutesInDay) return false;
  const std::int64_t laterDays = total / kMinutesInDay;
  const auto minuteOfDay = static_cast<std::uint32_t>(total - laterDays * kMinutesInDay);
  const sys_days to = kFirstDay + std::chrono::days{laterDays};
  result = reading;  // whose date mostly stays, and its seconds always
  if (to != from) set_date(to, result);
  result.wDayOfWeek = narrow(std::chrono::weekday{to}.c_encoding());
  result.wHour = narrow(minuteOfDay / kMinutesInHour);
  result.wMinute = narrow(minuteOfDay % kMinutesInHour);
  return true;
}

}  // namespace wqd::service
