#include <array>

#include <wqdata/service/clock.h>
#include <wqdata/service/text.h>
#include <wqdata/values/date.h>

namespace {

constexpr int kEpochYear = 1970;
constexpr int kLastValidYear = 2035;
constexpr int kLastNumberedYear = 2099;
constexpr int kEpochWeekday = 4;  // day number 1 is a Thursday
constexpr int kDaysInFourYears = 4 * 365 + 1;

constexpr std::array<std::uint8_t, 12> kDaysInMonth = {31, 28, 31, 30, 31, 30,
                                                       31, 31, 30, 31, 30, 31};
constexpr std::array<const char*, 12> kMonthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool is_month(std::int64_t month) { return month >= 1 && month <= 12; }

std::int32_t wrapped(std::int64_t number) { return static_cast<std::int32_t>(number); }

/// Numbers of a date on their way through a calculation that a 32-bit year may not hold.
struct WideDate {
  std::int64_t year;
  std::int64_t month;
  std::int64_t day;
};

constexpr std::int64_t floor_divide(std::int64_t a, std::int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

// Years are counted from March on for the sums, so that the leap day is the last of its year: every
// fourth year has one, and the months before it have lengths that a line through 153 days in five
// months gives. The line is scaled by powers of two, near enough for twelve months, which spares
// divisions; January and February are told from the others by a number and not by a branch, which
// no processor foresees.

/// The shift rounds down, before year 0 too.
constexpr std::int64_t days_before_year(std::int64_t year) { return year * kDaysInFourYears >> 2; }

constexpr std::int64_t days_before_month(std::int64_t monthFromMarch) {
  return (979 * monthFromMarch + 18) >> 5;
}

/// Days from 1 March of year 0 to a date with a real month.
constexpr std::int64_t serial_day(const WideDate& date) {
  const std::int64_t month = date.month - 3;  // from March on
  const std::int64_t early = month < 0 ? 1 : 0;
  return days_before_year(date.year - early) + days_before_month(month + 12 * early) + date.day - 1;
}

constexpr std::int64_t kDayZero = serial_day({kEpochYear, 1, 1}) - 1;  // of day numbers

/// The inverse of `serial_day`.
WideDate date_of_serial(std::int64_t serial) {
  const std::int64_t year = floor_divide(4 * serial + 3, kDaysInFourYears);
  const auto dayOfYear = static_cast<std::uint32_t>(serial - days_before_year(year));
  const std::uint32_t line = 2141 * dayOfYear + 1305;  // 65536 a month
  const std::int64_t month = line >> 16;               // from March on
  const std::int64_t early = month >= 10 ? 1 : 0;
  return {year + early, month + 3 - 12 * early, (line & 0xFFFF) / 2141 + 1};
}

WideDate moved(const WideDate& date, std::int64_t days) {
  return date_of_serial(serial_day(date) + days);
}

/// `days` steps forward, each of them what a walk day by day does: past the month's end comes day 1
/// of the next month, and a month outside 1 to 12 has no days, so that each step leaves one.
WideDate later(WideDate date, std::int64_t days) {
  const std::int64_t length = DaysInMonth(wrapped(date.month), wrapped(date.year));
  if (date.day + days <= length) return {date.year, date.month, date.day + days};
  const std::int64_t toMonthEnd = date.day < length ? length - date.day : 0;
  days -= toMonthEnd + 1;
  date = date.month >= 12 ? WideDate{date.year + 1, 1, 1} : WideDate{date.year, date.month + 1, 1};
  const std::int64_t monthsToJanuary = date.month < 1 ? 1 - date.month : 0;
  if (days < monthsToJanuary) return {date.year, date.month + days, 1};
  return moved({date.year, date.month + monthsToJanuary, 1}, days - monthsToJanuary);
}

/// The same backward: before day 1 comes the last day of the month before, which is day 0 for a
/// month above 12.
WideDate earlier(WideDate date, std::int64_t days) {
  const std::int64_t toFirst = date.day > 1 ? date.day - 1 : 0;
  if (days <= toFirst) return {date.year, date.month, date.day - days};
  days -= toFirst + 1;
  date = date.month <= 1 ? WideDate{date.year - 1, 12, 0} : WideDate{date.year, date.month - 1, 0};
  const std::int64_t monthsToDecember = date.month > 12 ? date.month - 12 : 0;
  if (days < monthsToDecember) return {date.year, date.month - days, 0};
  date.month -= monthsToDecember;
  date.day = DaysInMonth(wrapped(date.month), wrapped(date.year));
  return moved(date, monthsToDecember - days);
}

int weekday_of(std::int64_t dayNumber) {
  const std::int64_t days = dayNumber + kEpochWeekday - 1;
  return static_cast<int>(days - floor_divide(days, 7) * 7);
}

/// Reads three numbers with `separator` between them.
bool scan_three(const char* text, char separator, std::array<std::int32_t, 3>& numbers) {
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0 && *text++ != separator) return false;
    text = wqd::service::scan_int(text, numbers[i]);
    if (text == nullptr) return false;
  }
  return true;
}

}  // namespace

int IsLeap(int year) { return year % 4 == 0 ? 1 : 0; }

int DaysInMonth(int month, int year) {
  if (!is_month(month)) return 0;
  return kDaysInMonth[static_cast<std::size_t>(month - 1)] + (month == 2 ? IsLeap(year) : 0);
}

const char* MonthName(int month) {
  return is_month(month) ? kMonthNames[static_cast<std::size_t>(month - 1)] : "N/A";
}

int DateToInt(int month, int day, int year) {
  if (!is_month(month) || year < kEpochYear || year > kLastNumberedYear) return 0;
  return wrapped(serial_day({year, month, day}) - kDayZero);
}

wqd::CZulDate IntToDate(int number) {
  if (number <= 0) return {1, number, kEpochYear};
  const WideDate date = date_of_serial(kDayZero + number);
  return {wrapped(date.month), wrapped(date.day), wrapped(date.year)};
}

int DayOfWeek(int month, int day, int year) { return weekday_of(DateToInt(month, day, year)); }

wqd::CZulDate Today() {
  const SYSTEMTIME now = wqd::service::local_now();
  return {now.wMonth, now.wDay, now.wYear};
}

std::int32_t SystemTimeToTimeT(const SYSTEMTIME* time) {
  const std::int64_t days = DateToInt(time->wMonth, time->wDay, time->wYear) - 1;
  return wrapped(((days * 24 + time->wHour) * 60 + time->wMinute) * 60 + time->wSecond);
}

namespace wqd {

CZulDate::CZulDate(int month, int day, int year) { Set(month, day, year); }

CZulDate::CZulDate(const char* text) { Scan(text); }

bool CZulDate::Scan(const char* text) {
  std::array<std::int32_t, 3> read{};
  *this = CZulDate();
  if (text == nullptr) return false;
  if (!scan_three(text, '/', read) && !scan_three(text, '-', read)) return false;
  if (is_month(read[0])) {
    Set(read[0], read[1], read[2]);
  } else if (read[0] >= kEpochYear && read[0] <= kLastValidYear) {
    Set(read[1], read[2], read[0]);
  }
  return IsValid();
}

int CZulDate::Print(char* buffer, int size) const {
  service::TextWriter text;
  text.Padded(Month()).Put('/').Padded(Day()).Put('/').Plain(Year());
  return service::put_text(text.Text(), buffer, size);
}

bool CZulDate::IsValid() const {
  return Year() >= kEpochYear && Year() <= kLastValidYear && is_month(Month()) && Day() >= 1 &&
         Day() <= DaysInMonth(Month(), Year());
}

int CZulDate::Compare(const CZulDate& other) const {
  if (Year() != other.Year()) return Year() < other.Year() ? -1 : 1;
  if (Month() != other.Month()) return Month() < other.Month() ? -1 : 1;
  if (Day() != other.Day()) return Day() < other.Day() ? -1 : 1;
  return 0;
}

int CZulDate::ConvertToInt() const { return DateToInt(Month(), Day(), Year()); }

CZulDate::operator int() const { return ConvertToInt(); }

int CZulDate::DayOfWeek() const { return ::DayOfWeek(Month(), Day(), Year()); }

CZulDate CZulDate::Add(int days) const { return Moved(days); }

CZulDate CZulDate::operator+(int days) const { return Moved(days); }

CZulDate CZulDate::operator-(int days) const { return Moved(-std::int64_t{days}); }

CZulDate& CZulDate::operator++() { return *this = Moved(1); }

CZulDate& CZulDate::operator--() { return *this = Moved(-1); }

CZulDate CZulDate::Moved(std::int64_t days) const {
  const WideDate from = {Year(), Month(), Day()};
  const WideDate to = days > 0 ? later(from, days) : days < 0 ? earlier(from, -days) : from;
  return {wrapped(to.month), wrapped(to.day), wrapped(to.year)};
}

int CZulDate::operator-(const CZulDate& other) const {
  return wrapped(std::int64_t{ConvertToInt()} - other.ConvertToInt());
}

bool CZulDate::operator==(const CZulDate& other) const { return Compare(other) == 0; }

bool CZulDate::operator<(const CZulDate& other) const { return Compare(other) < 0; }

bool CZulDate::operator<=(const CZulDate& other) const { return Compare(other) <= 0; }

bool CZulDate::operator>(const CZulDate& other) const { return Compare(other) > 0; }

bool CZulDate::operator>=(const CZulDate& other) const { return Compare(other) >= 0; }

}  // namespace wqd
