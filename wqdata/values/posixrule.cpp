// The grammar, with the ranges that zone files use:
//
//     text   = name offset [name [offset] "," day "," day]
//     name   = 3 or more letters, or "<" 3 or more of letters, digits, "+", "-" ">"
//     offset = ["+" | "-"] hours [":" minutes [":" seconds]]      hours up to 24, positive is west
//     day    = ("M" month "." week "." weekday | "J" 1-365 | 0-365) ["/" time]
//     time   = as offset, with hours up to 167; 2:00 if left out

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include <wqdata/service/text.h>
#include <wqdata/values/date.h>
#include <wqdata/values/zonefile.h>

namespace wqd::values {
namespace {

constexpr int kSecondsInHour = 3600;
constexpr int kSecondsInDay = 24 * kSecondsInHour;
constexpr int kSecondsInWeek = 7 * kSecondsInDay;
constexpr int kDaysInLeapYear = 366;

// Of 28 years each begins on its weekday, in leap years and others: there are no more kinds.
constexpr int kFirstYear = 1972;
constexpr int kYears = 28;

/// The day of a change, and the seconds from its midnight on the wall clock before the change.
struct Change {
  int month;  ///< 0 for a day counted from the year's beginning
  int week;
  int weekday;
  int dayOfYear;  ///< from 0 on, in a leap year
  int seconds;
};

/// Offsets are seconds to be added to the local clock for UTC.
struct PosixRule {
  int standard;
  int daylight;
  Change start;
  Change end;
};

bool is_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool is_quotable(char c) { return is_letter(c) || service::is_digit(c) || c == '+' || c == '-'; }

/// Consumes a text from its front. After a function returned false the rest is of no use.
class Reader {
 public:
  explicit Reader(std::string_view text) : m_left(text) {}

  bool AtEnd() const { return m_left.empty(); }
  bool At(char c) const { return m_left.starts_with(c); }

  bool Take(char c) {
    if (!At(c)) return false;
    m_left.remove_prefix(1);
    return true;
  }

  bool Name() {
    const bool quoted = Take('<');
    const bool longEnough = Skip(quoted ? is_quotable : is_letter) >= 3;
    return longEnough && (!quoted || Take('>'));
  }

  bool Offset(int& seconds) { return Time(24, seconds) && seconds % 60 == 0; }

  bool ChangeAt(Change& change) {
    change = {0, 0, 0, 0, 2 * kSecondsInHour};
    return Day(change) && (!Take('/') || Time(167, change.seconds));
  }

 private:
  std::size_t Skip(bool (*isOfKind)(char)) {
    const auto behind = std::find_if_not(m_left.begin(), m_left.end(), isOfKind);
    const auto length = static_cast<std::size_t>(behind - m_left.begin());
    m_left.remove_prefix(length);
    return length;
  }

  /// One to three digits.
  bool Number(int first, int last, int& number) {
    const std::string_view text = m_left;
    const std::size_t digits = Skip(service::is_digit);
    if (digits < 1 || digits > 3) return false;
    number = 0;
    for (const char c : text.substr(0, digits)) number = number * 10 + (c - '0');
    return number >= first && number <= last;
  }

  bool Time(int maxHours, int& seconds) {
    const int sign = Take('-') ? -1 : 1;
    if (sign > 0) Take('+');
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!Number(0, maxHours, hour)) return false;
    if (Take(':') && !Number(0, 59, minute)) return false;
    if (Take(':') && !Number(0, 59, second)) return false;
    seconds = sign * ((hour * 60 + minute) * 60 + second);
    return true;
  }

  bool Day(Change& change) {
    if (Take('M')) {
      return Number(1, 12, change.month) && Take('.') && Number(1, 5, change.week) && Take('.') &&
             Number(0, 6, change.weekday);
    }
    if (!Take('J')) return Number(0, 365, change.dayOfYear);
    if (!Number(1, 365, change.dayOfYear)) return false;
    // This count leaves out 29 February, the 59th day from 0 on.
    if (change.dayOfYear <= 59) --change.dayOfYear;
    return true;
  }

  std::string_view m_left;
};

bool read_daylight(Reader& reader, PosixRule& rule) {
  rule.daylight = rule.standard - kSecondsInHour;
  return reader.Name() && (reader.At(',') || reader.Offset(rule.daylight)) && reader.Take(',') &&
         reader.ChangeAt(rule.start) && reader.Take(',') && reader.ChangeAt(rule.end);
}

bool read_rule(std::string_view text, PosixRule& rule) {
  Reader reader(text);
  if (!reader.Name() || !reader.Offset(rule.standard)) return false;
  rule.daylight = rule.standard;
  return reader.AtEnd() || (read_daylight(reader, rule) && reader.AtEnd());
}

/// Seconds by which the daylight clock is ahead of the standard clock.
int shift_of(const PosixRule& rule) { return rule.standard - rule.daylight; }

/// From the year's first moment to its last, by the standard clock. Of the days counted from the
/// end of the year a leap year's come first.
bool is_daylight_all_year(const PosixRule& rule) {
  const Change& start = rule.start;
  const Change& end = rule.end;
  return start.month == 0 && start.dayOfYear == 0 && start.seconds <= 0 && end.month == 0 &&
         end.dayOfYear * kSecondsInDay + end.seconds - shift_of(rule) >=
             kDaysInLeapYear * kSecondsInDay;
}

enum class Edge { kStart, kEnd };

/// What the daylight rule makes of the hour of a transition date: seconds from the day's midnight.
int effective_seconds(Edge edge, int hour) {
  return (edge == Edge::kStart ? hour : std::max(hour - 1, 0)) * kSecondsInHour;
}

/// How badly an hour stands for a change, in the order of importance; the least is the best. The
/// hours of wall-clock readings are right when the rule turns over within the skipped or repeated
/// time.
auto badness(Edge edge, int hour, int wallSeconds, int shift) {
  const int effective = effective_seconds(edge, hour);
  const int late = effective - wallSeconds;
  const int error = std::abs(edge == Edge::kStart ? late : late + shift);
  const bool wallIsRight =
      edge == Edge::kStart ? late >= 0 && late <= shift : late <= 0 && late >= -shift;
  return std::tuple(error, hour * kSecondsInHour != wallSeconds, !wallIsRight, hour);
}

/// The least badness that an hour has, and that hour in it.
auto best_hour(Edge edge, int wallSeconds, int shift) {
  auto best = badness(edge, 0, wallSeconds, shift);
  for (int hour = 1; hour <= 24; ++hour)
    best = std::min(best, badness(edge, hour, wallSeconds, shift));
  return best;
}

/// Whether one date lies as many days behind another, of the same month, in every year.
bool is_at_distance(const SYSTEMTIME& from, const SYSTEMTIME& date, int& days) {
  days = transition_day(date, kFirstYear) - transition_day(from, kFirstYear);
  for (int year = kFirstYear + 1; year < kFirstYear + kYears; ++year) {
    if (transition_day(date, year) - transition_day(from, year) != days) return false;
  }
  return true;
}

/// A change far beyond its own day may lie nearer to a day that always follows, or precedes, it:
/// the Saturday behind a fourth Thursday of March is the day before the last Sunday.
bool make_date(Edge edge, const Change& change, int shift, SYSTEMTIME& date) {
  if (change.month == 0) return false;
  SYSTEMTIME own = {};
  own.wMonth = static_cast<std::uint16_t>(change.month);
  own.wDayOfWeek = static_cast<std::uint16_t>(change.weekday);
  own.wDay = static_cast<std::uint16_t>(change.week);
  auto best = best_hour(edge, change.seconds, shift);
  date = own;
  for (int day = 0; day < 5 * 7; ++day) {
    SYSTEMTIME other = own;
    other.wDay = static_cast<std::uint16_t>(day / 7 + 1);
    other.wDayOfWeek = static_cast<std::uint16_t>(day % 7);
    int days = 0;
    if (!is_at_distance(own, other, days)) continue;
    const auto found = best_hour(edge, change.seconds - days * kSecondsInDay, shift);
    if (std::get<0>(found) >= std::get<0>(best)) continue;
    best = found;
    date = other;
  }
  date.wHour = static_cast<std::uint16_t>(std::get<3>(best));
  return std::get<0>(best) < kSecondsInWeek;
}

/// Seconds from the epoch to a time of the day on which a transition date falls in a year.
std::int64_t instant(const SYSTEMTIME& date, int year, int seconds) {
  const int day = DateToInt(date.wMonth, transition_day(date, year), year);
  return std::int64_t{day} * kSecondsInDay + seconds;
}

/// A record tells the order of its changes by their months, for every year alike. The changes must
/// keep to it, as they are written and as the record has them.
bool keeps_order(const PosixRule& posix, const ZoneRule& rule) {
  const SYSTEMTIME& start = rule.daylightDate;
  const SYSTEMTIME& end = rule.standardDate;
  const bool startsFirst = start.wMonth < end.wMonth;
  const int endSeconds = posix.end.seconds - shift_of(posix);
  for (int year = kFirstYear; year < kFirstYear + kYears; ++year) {
    const bool written = instant(start, year, posix.start.seconds) < instant(end, year, endSeconds);
    const bool held = instant(start, year, effective_seconds(Edge::kStart, start.wHour)) <
                      instant(end, year, effective_seconds(Edge::kEnd, end.wHour));
    if (written != startsFirst || held != startsFirst) return false;
  }
  return true;
}

bool make_rule(const PosixRule& posix, ZoneRule& rule) {
  const int shift = shift_of(posix);
  if (shift == 0) {
    rule = {posix.standard / 60, 0, 0, {}, {}};
    return true;
  }
  if (is_daylight_all_year(posix)) {
    rule = {posix.daylight / 60, 0, 0, {}, {}};
    return true;
  }
  // Each change is told on the clock before it, so it keeps its meaning when the clocks swap names.
  if (shift < 0) return make_rule({posix.daylight, posix.standard, posix.end, posix.start}, rule);
  ZoneRule made = {posix.standard / 60, 0, -shift / 60, {}, {}};
  if (!make_date(Edge::kStart, posix.start, shift, made.daylightDate) ||
      !make_date(Edge::kEnd, posix.end, shift, made.standardDate) || !keeps_order(posix, made)) {
    return false;
  }
  rule = made;
  return true;
}

}  // namespace

bool zone_rule_from_posix(std::string_view text, ZoneRule& rule) {
  PosixRule posix{};
  return read_rule(text, posix) && make_rule(posix, rule);
}

}  // namespace wqd::values
