// Dates, times and zones: printed and read again is equal, and steps taken back lead back.
#include <wqdata/values/date.h>
#include <wqdata/values/time.h>
#include <wqdata/values/timezone.h>

#include <cmath>

#include "target.h"

using namespace wqd;
using namespace wqd_fuzz;

namespace {

constexpr int kLastDay = 47482;  // the day number of 12/31/2099

void check_date(const CZulDate& date, int days) {
  char text[64];
  std::memset(text, 'x', sizeof text);
  const int length = date.Print(text, sizeof text);
  Expect(length > 0 && length <= 35 && text[length] == '\0', "a date fits 35 characters");
  CZulDate read;
  if (date.IsValid()) Expect(read.Scan(text) && read == date, "printed and read again is equal");
  Expect(date.DayOfWeek() >= 0 && date.DayOfWeek() <= 6, "a weekday is 0 to 6");
  const CZulDate moved = date.Add(days);
  const int number = date.ConvertToInt(), there = moved.ConvertToInt();
  if (!date.IsValid() || there == 0) return;
  Expect(IntToDate(number) == date, "a day number is that of one day");
  if (std::int64_t{number} + days > 0 && std::int64_t{number} + days <= kLastDay) {
    Expect(there == number + days, "days are added");
    Expect(moved.Add(-days) == date, "days are taken back");
    Expect(moved.Compare(date) == (days > 0) - (days < 0), "later days come later");
  }
}

void check_time(CZulTime time, int seconds) {
  char text[64];
  std::memset(text, 'x', sizeof text);
  const int length = time.Print(text, sizeof text);
  Expect(length > 0 && length <= 15 && text[length] == '\0', "a time fits 15 characters");
  const CZulTime moved = time.Add(seconds);
  Expect(moved >= CZulTime(0) && moved < CZulTime(86400), "a sum lies within the day");
  CZulTime read;
  Expect(moved.Print(text, sizeof text) == 8 && read.Scan(text) && read == moved,
         "printed and read again is equal");
  Expect(CZulTime(static_cast<ZULTIME>(moved)) == moved, "a record holds a time of the day");
  Expect(moved.Add(-(seconds % 86400)) == time.Add(0), "seconds are taken back");
}

bool is_reading(const SYSTEMTIME& t) {
  return t.wYear > 1601 && t.wYear < 30827 && t.wMonth >= 1 && t.wMonth <= 12 && t.wDay >= 1 &&
         t.wDay <= 28 && t.wHour < 24 && t.wMinute < 60 && t.wSecond < 60 && t.wMilliseconds < 1000;
}

bool is_same(const SYSTEMTIME& a, const SYSTEMTIME& b) {
  return a.wYear == b.wYear && a.wMonth == b.wMonth && a.wDay == b.wDay && a.wHour == b.wHour &&
         a.wMinute == b.wMinute && a.wSecond == b.wSecond && a.wMilliseconds == b.wMilliseconds;
}

/// A reading that UTC became is that UTC again, by the daylight state that it was given. Shifts of
/// more than a week are no clock's.
void check_zone(const CTimeZone& zone, const SYSTEMTIME& utc) {
  constexpr std::int64_t kWeek = 7 * 24 * 60;
  SYSTEMTIME local = {}, back = {};
  const int state = UtcTimeToTzTime(&zone, &utc, &local);
  Expect(state == 0 || state == 1, "a state is settled");
  Expect(TzTimeToUtcTime(&zone, &local, &back, state) == state, "a known state is kept");
  const bool clock = std::abs(std::int64_t{zone.Bias}) <= kWeek &&
                     std::abs(std::int64_t{zone.Bias} + zone.DaylightBias) <= kWeek;
  if (clock && is_reading(utc)) Expect(is_same(back, utc), "a reading and its UTC agree");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Numbers numbers(data, size);
  const auto days = numbers.Take<std::int32_t>();
  const auto date = numbers.Take<ZULDATE>();
  const auto time = numbers.Take<ZULTIME>();
  check_date(CZulDate(date), days % 60000);
  check_date(IntToDate(days), days >> 16);
  check_date(CZulDate(date.month % 14, date.day % 34, 1965 + date.year % 140), days % 60000);
  check_time(CZulTime(time), days);
  check_time(CZulTime(days), time.seconds);
  const std::string rest = numbers.Text();
  const Copy text(reinterpret_cast<const std::uint8_t*>(rest.data()), rest.size(), true);
  CZulDate read;
  const bool valid = read.Scan(text.data());
  Expect(valid == read.IsValid(), "a text is true for a valid date");
  check_date(read, days);
  check_time(CZulTime(text.data()), days);
  CTimeZone zone;
  zone.Bias = numbers.Take<std::int32_t>();
  zone.DaylightBias = numbers.Take<std::int32_t>();
  zone.StandardDate = numbers.Take<SYSTEMTIME>();
  zone.DaylightDate = numbers.Take<SYSTEMTIME>();
  const auto utc = numbers.Take<SYSTEMTIME>();
  check_zone(zone, utc);
  zone.Bias %= 900;
  zone.DaylightBias %= 120;
  check_zone(zone, {static_cast<std::uint16_t>(1970 + utc.wYear % 130),
                    static_cast<std::uint16_t>(1 + utc.wMonth % 12), 0,
                    static_cast<std::uint16_t>(1 + utc.wDay % 28),
                    static_cast<std::uint16_t>(utc.wHour % 24), 0, 0, 0});
  const std::int32_t bias = zone.Bias;
  Expect(GetTzInfo(text.data(), &zone) || zone.Bias == bias, "an unknown name leaves the zone");
  return 0;
}
