// Conversions between a zone's clock and UTC, zones, and time stamps.
#include <wqdata/values/timezone.h>

#include <type_traits>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;
using namespace std::string_literals;

static_assert(sizeof(CTimeZone) == 172 && std::is_trivially_copyable_v<CTimeZone>);
static_assert(sizeof(CTimeStamp) == 192 && std::is_trivially_copyable_v<CTimeStamp>);

/// "2003-04-06 06:59:59", with ".001" behind it if there are milliseconds.
std::string Text(const SYSTEMTIME& t) {
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", t.wYear, t.wMonth, t.wDay,
                t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
  return std::string(text, std::strlen(text) - (t.wMilliseconds == 0 ? 4 : 0));
}

SYSTEMTIME Reading(const std::string& text) {
  SYSTEMTIME t{};
  std::sscanf(text.c_str(), "%hu-%hu-%hu %hu:%hu:%hu.%hu", &t.wYear, &t.wMonth, &t.wDay, &t.wHour,
              &t.wMinute, &t.wSecond, &t.wMilliseconds);
  return t;
}

CTimeZone Zone(std::int32_t bias, std::int32_t daylightBias, SYSTEMTIME daylight = {},
               SYSTEMTIME standard = {}) {
  CTimeZone zone;
  zone.Bias = bias;
  zone.DaylightBias = daylightBias;
  zone.DaylightDate = daylight;
  zone.StandardDate = standard;
  zone.StandardName[0] = u'Z';
  zone.StandardBias = 777;  // must not be applied
  return zone;
}

CTimeZone Eastern() { return Zone(300, -60, {0, 4, 0, 1, 2, 0, 0, 0}, {0, 10, 0, 5, 2, 0, 0, 0}); }

std::string ToUtc(const CTimeZone& zone, const std::string& local, int state = -1) {
  SYSTEMTIME reading = Reading(local);  // input and output in one
  const int used = TzTimeToUtcTime(&zone, &reading, &reading, state);
  return Text(reading) + " " + std::to_string(used);
}

std::string ToLocal(const CTimeZone& zone, const std::string& utc) {
  SYSTEMTIME reading = Reading(utc);
  const int state = UtcTimeToTzTime(&zone, &reading, &reading);
  return Text(reading) + " " + std::to_string(state);
}

TEST(ToLocal, FollowsTheTransitionsOfTheRecord) {
  const std::pair<CTimeZone, const char*> zones[] = {
      // both sides of a transition; in 2002 the last Sunday is the fourth
      {Eastern(), R"(
       2001-04-01 07:00:00 => 2001-04-01 03:00:00 1 | 2004-10-31 05:59:59 => 2004-10-31 01:59:59 1
       2003-04-06 06:59:59 => 2003-04-06 01:59:59 0 | 2003-04-06 07:00:00 => 2003-04-06 03:00:00 1
       2003-10-26 05:59:59 => 2003-10-26 01:59:59 1 | 2003-10-26 06:00:00 => 2003-10-26 01:00:00 0
       2002-10-27 05:59:59.999 => 2002-10-27 01:59:59.999 1
       2002-10-27 06:00:00 => 2002-10-27 01:00:00 0)"},
      // both transitions in one month: daylight time all the year but between them
      {Zone(60, -60, {0, 4, 0, 3, 2, 0, 0, 0}, {0, 4, 0, 1, 3, 0, 0, 0}), R"(
       2025-04-06 02:59:59 => 2025-04-06 02:59:59 1 | 2025-04-06 03:00:00 => 2025-04-06 02:00:00 0
       2025-04-20 03:00:00 => 2025-04-20 03:00:00 1)"},
      // a bias of 0 with daylight time, and the reverse
      {Zone(0, -60, {0, 3, 0, 5, 1, 0, 0, 0}, {0, 10, 0, 5, 2, 0, 0, 0}), R"(
       2025-03-30 00:59:59 => 2025-03-30 00:59:59 0 | 2025-03-30 01:00:00 => 2025-03-30 02:00:00 1)"},
      {Zone(-540, 0, {0, 1, 0, 1, 0, 0, 0, 0}), "2025-07-31 15:00:00 => 2025-08-01 00:00:00 0"},
      // occurrence 0 is the first, 9 the last, and hour 0 has no hour before it
      {Zone(60, -60, {0, 3, 3, 0, 0, 0, 0, 0}, {0, 10, 3, 9, 0, 0, 0, 0}), R"(
       2025-03-05 00:59:59 => 2025-03-04 23:59:59 0 | 2025-03-05 01:00:00 => 2025-03-05 01:00:00 1
       2025-10-29 00:59:59 => 2025-10-29 00:59:59 1 | 2025-10-29 01:00:00 => 2025-10-29 00:00:00 0)"},
      // month 0 in both dates: no daylight time
      {Zone(60, -60, {}, {0, 10, 0, 1, 2, 0, 0, 0}),
       "2025-07-01 12:00:00 => 2025-07-01 12:00:00 1"},
      {Zone(60, -60), "2025-07-01 12:00:00 => 2025-07-01 11:00:00 0"},
  };
  for (const auto& [zone, rows] : zones) {
    ExpectRows(rows, [&zone = zone](const std::string& utc) { return ToLocal(zone, utc); });
  }
}

TEST(ToUtc, SettlesOrTakesTheDaylightState) {
  ExpectRows(R"(
         2003-04-06 01:59:59 -1 => 2003-04-06 06:59:59 0
         2003-04-06 02:30:00 -1 => 2003-04-06 06:30:00 1
         2003-10-26 00:59:59 -1 => 2003-10-26 04:59:59 1
         2003-10-26 01:30:00 -1 => 2003-10-26 06:30:00 0
         2003-10-26 01:30:00 1 => 2003-10-26 05:30:00 1
         2003-10-26 01:30:00 0 => 2003-10-26 06:30:00 0
         2003-07-01 12:00:00 2 => 2003-07-01 17:00:00 2
         2003-07-01 12:00:00 -2 => 2003-07-01 17:00:00 -2)",
             [](const std::string& given) {
               return ToUtc(Eastern(), given.substr(0, 19), std::stoi(given.substr(20)));
             });
  EXPECT_EQ(ToUtc(Zone(60, -60), "2003-07-01 12:00:00"), "2003-07-01 13:00:00 0");
  // Biases of 0 pass anything on.
  EXPECT_EQ(ToUtc(Zone(0, 0, {0, 1, 0, 1, 0, 0, 0, 0}), "2003-99-77 88:66:99.5555", 1),
            "2003-99-77 88:66:99.5555 0");
}

TEST(Conversions, CopyWhatNoClockShows) {
  // A bias and a reading, and the UTC of it, which leads back to it; dates and times that do not
  // exist are among the copied ones.
  ExpectRows(R"(
      1 1601-01-01 00:00:00 => 1601-01-01 00:01:00 | 1 1600-12-31 23:59:59 => copied
      1 30827-12-31 23:58:59.999 => 30827-12-31 23:59:59.999 | 1 30827-12-31 23:59:00 => copied
      -1 1601-01-01 00:01:00 => 1601-01-01 00:00:00 | -1 1601-01-01 00:00:59.999 => copied
      1 65535-01-01 00:00:00 => copied | -1 30828-01-01 00:00:00 => copied
      2147483647 2003-01-01 00:00:00 => 6086-01-23 02:07:00
      -2147483648 6086-01-23 02:08:00 => 2003-01-01 00:00:00
      2147483647 30827-12-31 23:59:59 => copied | -2147483648 2003-01-01 00:00:00 => copied
      60 2000-02-29 00:00:00 => 2000-02-29 01:00:00 | 60 1900-02-29 00:00:00 => copied
      60 2003-00-01 00:00:00 => copied | 60 2003-13-01 00:00:00 => copied
      60 2003-01-00 00:00:00 => copied | 60 2003-01-257 00:00:00 => copied
      60 2003-257-01 00:00:00 => copied | 60 2003-01-01 24:00:00 => copied
      60 2003-01-01 00:60:00 => copied | 60 2003-01-01 00:00:60 => copied
      60 2003-01-01 00:00:00.1000 => copied)",
             [](const std::string& given) {
               const std::int32_t bias = std::stoi(given);
               const std::string local = given.substr(given.find(' ') + 1);
               const std::string used = ToUtc(Zone(bias, 0), local);
               const std::string utc = used.substr(0, used.size() - 2);
               // All of the bias on the daylight side is the same road.
               EXPECT_EQ(ToUtc(Zone(0, bias), local, 1), utc + " 1") << given;
               if (utc == local) return "copied"s;
               EXPECT_EQ(ToLocal(Zone(bias, 0), utc), local + " 0");
               return utc;
             });
}

TEST(TimeZone, IsWhatItIsCalled) {
  CTimeZone zone = Eastern();
  EXPECT_TRUE(GetTzInfo("gmt STANDARD time", &zone));
  EXPECT_TRUE(zone.Bias == 0 && zone.DaylightBias == 0 && zone.StandardDate.wMonth == 10);
  EXPECT_TRUE(zone == Eastern()) << "the name stays, and is all that counts";
  zone.StandardName[0] = u'z';
  EXPECT_FALSE(zone == Eastern());
  for (char16_t& unit : zone.StandardName) unit = u'x';
  EXPECT_FALSE(zone == Eastern()) << "a name without a NUL";
  const CTimeZone gmt;
  for (const char* const name :
       {static_cast<const char*>(nullptr), "GMT Standard Time", "Nowhere"}) {
    zone = Eastern();
    EXPECT_EQ(zone.Set(name), name == nullptr || *name == 'G');
    EXPECT_EQ(std::memcmp(&zone, &gmt, sizeof gmt), 0);
    EXPECT_TRUE(CTimeZone(name) == gmt);
  }
}

/// Date, time and state of a stamp.
std::string Text(const CTimeStamp& stamp) {
  char text[64];
  const CZulDate date = stamp.GetDate();
  const CZulTime time = stamp.GetTime();
  std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d %d", date.Year(), date.Month(), date.Day(),
                time.Hour(), time.Minute(), time.Second(), stamp.GetDaylightState());
  return text;
}

TEST(TimeStamp, MovesBetweenZonesAndKeepsTheInstant) {
  CTimeZone tokyo = Zone(-540, 0);
  tokyo.StandardName[0] = u'T';
  CTimeStamp stamp;
  EXPECT_EQ(Text(stamp) + "/" + std::to_string(std::int32_t{stamp}), "0-0-0 0:0:0 -1/-86400");
  stamp.Set(CZulDate(10, 26, 2003), CZulTime(1, 30, 5), Eastern());
  const CTimeZone sameName = Zone(0, 0);
  stamp.ChangeTimeZone(sameName);
  EXPECT_EQ(std::int32_t{stamp}, 1067149805);
  EXPECT_EQ(Text(stamp), "2003-10-26 1:30:5 -1");  // the state is settled for a call only
  stamp.ChangeTimeZone(tokyo);
  EXPECT_EQ(Text(stamp), "2003-10-26 15:30:5 0");
  CTimeStamp other;
  other.Set(CZulDate(7, 4, 2003), CZulTime(12, 0, 0), Eastern());
  stamp.ConvertToLocalTime(other);
  EXPECT_EQ(Text(stamp), "2003-7-5 1:0:0 0");
  other.ConvertToLocalTime(stamp);
  EXPECT_EQ(Text(other), "2003-7-4 12:0:0 1");
  stamp.Set(CZulDate(), CZulTime(25, 0, 70000), sameName);
  stamp.ConvertToLocalTime(other);
  EXPECT_EQ(Text(stamp), "2003-7-4 12:0:0 1");
  EXPECT_EQ(stamp.GetTimeZone().Bias, 0) << "the zone stays";
  stamp.Set(CZulDate(65537, -1, 70003), CZulTime(24, 0, 0), Eastern());  // cut to 16 bits
  EXPECT_EQ(Text(stamp), "4467-1-65535 24:0:0 -1");
}

TEST(TimeStamp, TakesThePresentTimeAsGmt) {
  CTimeStamp stamp;
  stamp.Set(CZulDate(7, 4, 2003), CZulTime(12, 0, 0), Eastern());
  const std::time_t before = std::time(nullptr);
  stamp.SetUtcTime();
  EXPECT_TRUE(std::int32_t{stamp} >= before && std::int32_t{stamp} <= before + 2);
  SYSTEMTIME utc;
  stamp.GetUtcTime(&utc);
  EXPECT_EQ(utc.wDayOfWeek, stamp.GetDate().DayOfWeek());
  EXPECT_TRUE(stamp.GetDaylightState() == 0 && stamp.GetTimeZone() == CTimeZone() &&
              stamp.GetTimeZone().StandardBias == 0);
}

}  // namespace
