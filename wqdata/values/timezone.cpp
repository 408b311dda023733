#include <algorithm>
#include <iterator>
#include <string_view>

#include <wqdata/service/clock.h>
#include <wqdata/service/text.h>
#include <wqdata/values/timezone.h>
#include <wqdata/values/zonefile.h>

namespace wqd::values {

int transition_day(const SYSTEMTIME& transition, int year) {
  const int length = DaysInMonth(transition.wMonth, year);
  const int fromFirst = transition.wDayOfWeek - DayOfWeek(transition.wMonth, 1, year);
  int day = fromFirst < 0 ? fromFirst + 8 : fromFirst + 1;
  for (int occurrence = 1; occurrence < transition.wDay && day + 7 <= length; ++occurrence) {
    day += 7;
  }
  return day;
}

}  // namespace wqd::values

namespace {

using wqd::CTimeZone;

constexpr const char* kGmtName = "GMT Standard Time";
static_assert(wqd::values::kMaxZoneNameLength < std::size(CTimeZone().StandardName));

/// Where systems keep their zone files.
constexpr const char* kZoneFileRoots[] = {"/usr/share/zoneinfo", "/usr/lib/zoneinfo",
                                          "/usr/share/lib/zoneinfo"};

std::uint16_t narrow(int number) { return static_cast<std::uint16_t>(number); }

/// The name of a zone up to its NUL; a field set by hand may lack one.
std::u16string_view name_of(const CTimeZone& zone) {
  const char16_t* const end = std::find(zone.StandardName, std::end(zone.StandardName), u'\0');
  return {zone.StandardName, static_cast<std::size_t>(end - zone.StandardName)};
}

/// ASCII letters are the same numbers in both encodings, and a known zone's name has no others.
void set_name(std::string_view name, CTimeZone& zone) {
  char16_t* const end = std::copy(name.begin(), name.end(), zone.StandardName);
  std::fill(end, std::end(zone.StandardName), u'\0');
}

bool is_utc(const CTimeZone& zone) { return zone.Bias == 0 && zone.DaylightBias == 0; }

/// By the hour: minutes take no part. An hour below 0 is as good as 0.
bool is_past(const SYSTEMTIME& reading, const SYSTEMTIME& transition, int hour) {
  if (reading.wMonth != transition.wMonth) return reading.wMonth > transition.wMonth;
  const int day = wqd::values::transition_day(transition, reading.wYear);
  if (reading.wDay != day) return reading.wDay > day;
  return reading.wHour >= hour;
}

bool is_daylight_time(const SYSTEMTIME& reading, const CTimeZone& zone) {
  const SYSTEMTIME& start = zone.DaylightDate;
  const SYSTEMTIME& end = zone.StandardDate;
  // Month 0 in both dates is how a record says that there is no daylight time.
  if (zone.DaylightBias == 0 || (start.wMonth == 0 && end.wMonth == 0)) return false;
  const bool started = is_past(reading, start, start.wHour);
  const bool ended = is_past(reading, end, end.wHour - 1);
  return start.wMonth < end.wMonth ? started && !ended : started || !ended;
}

/// The reading `minutes` later; the reading itself where one of the two is none that a clock shows.
SYSTEMTIME later(const SYSTEMTIME& reading, std::int64_t minutes) {
  SYSTEMTIME result = reading;
  wqd::service::later_reading(reading, minutes, result);
  return result;
}

}  // namespace

bool GetTzInfo(const char* name, wqd::CTimeZone* zone) {
  if (name == nullptr) return false;
  if (wqd::service::equal_ignoring_case(name, kGmtName)) {
    zone->Bias = 0;
    zone->DaylightBias = 0;
    return true;
  }
  wqd::values::ZoneRule rule{};
  if (!wqd::values::find_zone_rule(name, kZoneFileRoots, rule)) return false;
  zone->Bias = rule.bias;
  zone->StandardDate = rule.standardDate;
  zone->StandardBias = rule.standardBias;
  zone->DaylightDate = rule.daylightDate;
  zone->DaylightBias = rule.daylightBias;
  set_name(name, *zone);
  return true;
}

int TzTimeToUtcTime(const wqd::CTimeZone* zone, const SYSTEMTIME* local, SYSTEMTIME* utc,
                    int state) {
  if (is_utc(*zone)) {
    *utc = *local;
    return 0;
  }
  const int used = state == -1 ? (is_daylight_time(*local, *zone) ? 1 : 0) : state;
  const std::int64_t daylightBias = used == 1 ? zone->DaylightBias : 0;
  *utc = later(*local, zone->Bias + daylightBias);
  return used;
}

int UtcTimeToTzTime(const wqd::CTimeZone* zone, const SYSTEMTIME* utc, SYSTEMTIME* local) {
  if (is_utc(*zone)) {
    *local = *utc;
    return 0;
  }
  const std::int64_t bias = zone->Bias;
  const SYSTEMTIME standard = later(*utc, -bias);
  const bool isDaylight = is_daylight_time(standard, *zone);
  *local = isDaylight ? later(*utc, -(bias + zone->DaylightBias)) : standard;
  return isDaylight ? 1 : 0;
}

namespace wqd {

CTimeZone::CTimeZone(const char* name) { Set(name); }

bool CTimeZone::Set(const char* name) {
  *this = CTimeZone();
  return name == nullptr || GetTzInfo(name, this);
}

bool CTimeZone::operator==(const CTimeZone& other) const {
  return name_of(*this) == name_of(other);
}

void CTimeStamp::Set(const CZulDate& date, const CZulTime& time, const CTimeZone& zone) {
  m_reading.wYear = narrow(date.Year());
  m_reading.wMonth = narrow(date.Month());
  m_reading.wDay = narrow(date.Day());
  m_reading.wHour = narrow(time.Hour());
  m_reading.wMinute = narrow(time.Minute());
  m_reading.wSecond = narrow(time.Second());
  m_reading.wMilliseconds = 0;
  m_daylightState = -1;
  m_zone = zone;
}

void CTimeStamp::SetUtcTime() {
  m_reading = service::utc_now();
  m_daylightState = 0;
  m_zone.Bias = 0;
  m_zone.StandardBias = 0;
  m_zone.DaylightBias = 0;
  set_name(kGmtName, m_zone);
}

void CTimeStamp::GetUtcTime(SYSTEMTIME* utc) const {
  TzTimeToUtcTime(&m_zone, &m_reading, utc, m_daylightState);
}

CTimeStamp::operator std::int32_t() const {
  SYSTEMTIME utc;
  GetUtcTime(&utc);
  return SystemTimeToTimeT(&utc);
}

CZulDate CTimeStamp::GetDate() const { return {m_reading.wMonth, m_reading.wDay, m_reading.wYear}; }

CZulTime CTimeStamp::GetTime() const {
  return {m_reading.wHour, m_reading.wMinute, m_reading.wSecond};
}

void CTimeStamp::ChangeTimeZone(const CTimeZone& zone) {
  if (zone == m_zone) return;
  SYSTEMTIME utc;
  GetUtcTime(&utc);
  m_daylightState = UtcTimeToTzTime(&zone, &utc, &m_reading);
  m_zone = zone;
}

void CTimeStamp::ConvertToLocalTime(const CTimeStamp& other) {
  if (m_zone == other.m_zone) {
    m_reading = other.m_reading;
    m_daylightState = other.m_daylightState;
    return;
  }
  SYSTEMTIME utc;
  other.GetUtcTime(&utc);
  m_daylightState = UtcTimeToTzTime(&m_zone, &utc, &m_reading);
}

}  // namespace wqd
