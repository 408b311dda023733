// Calendar dates and times of day.
#include <wqdata/values/date.h>
#include <wqdata/values/time.h>

#include <chrono>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;

std::string Shown(const CZulDate& date) {
  return std::to_string(date.Month()) + "/" + std::to_string(date.Day()) + "/" +
         std::to_string(date.Year());
}

TEST(Dates, AddIsAWalkDayByDayThroughWhateverIsNoDateToo) {
  // As the walk itself came out. Past the month's end comes day 1 of the next month, before day 1
  // the last day of the one before; a month that no calendar has is of no days. Day 1 of January 0
  // is one of the two-digit years.
  ExpectRows(R"(
      2 28 1900 1 => 2/29/1900 | 1 1 2001 -1461 => 1/1/1997 | 12 31 2000 1461 => 12/31/2004
      6 15 2010 4000 => 5/28/2021 | 6 15 2010 -4000 => 7/3/1999 | 1 1 70 -1 => 12/31/1969
      2 50 2001 1 => 3/1/2001 | 2 50 2001 3 => 3/3/2001 | 2 50 2001 -25 => 2/25/2001
      4 -20 2001 15 => 4/-5/2001 | 4 -20 2001 55 => 5/5/2001 | 4 -20 2001 -1 => 3/31/2001
      -8 5 2001 1 => -7/1/2001 | -8 5 2001 7 => -1/1/2001 | -8 5 2001 40 => 2/1/2001
      -8 5 2001 -4 => -8/1/2001 | -8 5 2001 -5 => 12/31/2000 | -8 5 2001 -40 => 11/26/2000
      21 5 2001 -4 => 21/1/2001 | 21 5 2001 -5 => 20/0/2001 | 21 5 2001 -14 => 12/30/2001
      21 5 2001 1 => 1/1/2002 | 0 -3 1999 -1 => 12/31/1998 | 13 1 1999 -1 => 12/31/1999
      0 0 0 1 => 1/1/2000 | 0 0 0 -1 => 12/31/-1 | 1 1 1970 2147483647 => 10/18/5881459
      1 1 1970 -2147483648 => 3/16/-5877520 | 1 2147483647 2000 1 => 2/1/2000
      1 -2147483648 2000 1 => 1/-2147483647/2000 | 2147483647 1 2000 1 => 1/1/2001
      -2147483648 1 2000 1 => -2147483647/1/2000 | 2147483647 1 2000 -1 => 2147483646/0/2000
      12 31 2147483647 1 => 1/1/-2147483648 | 1 1 -2147483648 -1 => 12/31/2147483647)",
             [](const std::string& sum) {
               int month, day, year, days;
               std::sscanf(sum.c_str(), "%d %d %d %d", &month, &day, &year, &days);
               return Shown(CZulDate(month, day, year).Add(days));
             });
  EXPECT_EQ(Shown(CZulDate(1, 1, 1970) - INT32_MIN), Shown(CZulDate(1, 2, 1970) + INT32_MAX));
}

TEST(Dates, NumbersAgreeWithTheStandardCalendarFrom1970To2099) {
  using namespace std::chrono;
  for (int n = 1; n <= 47482; ++n) {
    const year_month_day day{sys_days{days{n - 1}}};
    const CZulDate date = IntToDate(n);
    ASSERT_EQ(month(unsigned(date.Month())) / date.Day() / date.Year(), day) << n;
    ASSERT_EQ(int{date}, n);
    ASSERT_EQ(unsigned(date.DayOfWeek()), weekday{sys_days{day}}.c_encoding()) << n;
  }
  EXPECT_EQ(DateToInt(1, 1, 2100) + DateToInt(12, 31, 1969), 0);
  EXPECT_EQ(Shown(IntToDate(47483)) + " " + Shown(IntToDate(0)), "1/1/2100 1/0/1970");
  EXPECT_EQ(Shown(IntToDate(INT32_MIN)), "1/-2147483648/1970");
  EXPECT_EQ(Shown(IntToDate(INT32_MAX)), "10/17/5881459");
}

TEST(Dates, PlainFunctionsAnswerForBadNumbersToo) {
  EXPECT_TRUE(IsLeap(2100) == 1 && IsLeap(-4) == 1 && IsLeap(-1) == 0);
  for (const int month : {INT32_MIN, 0, 13, INT32_MAX}) {
    EXPECT_EQ(DaysInMonth(month, 2000) + DateToInt(month, 1, 2000), 0) << month;
    EXPECT_STREQ(MonthName(month), "N/A") << month;
  }
  EXPECT_STREQ(MonthName(12), "Dec");
  EXPECT_EQ(DateToInt(2, 31, 2001), DateToInt(3, 3, 2001));
  EXPECT_EQ(DayOfWeek(1, 1, 2100), 3);
  for (int day = -20; day < 0; ++day) {  // a week has seven days on either side of day number 0
    EXPECT_EQ(DayOfWeek(1, day, 1970), (DayOfWeek(1, day + 70, 1970))) << day;
  }
  EXPECT_LE(unsigned(DayOfWeek(1, INT32_MIN, 2099) | DayOfWeek(1, INT32_MAX, 2099)), 7u);
}

TEST(Dates, AreScannedFromTheirTwoFormsAndNoOther) {
  // What a date holds then, with a "?" where the scan says that it is no valid one.
  const auto scanned = [](const std::string& text) {
    CZulDate date(7, 7, 2007);
    const bool valid = date.Scan(text.c_str());
    return Shown(date) + (valid ? "" : "?");
  };
  EXPECT_FALSE(CZulDate().Scan(nullptr));
  ExpectRows(R"(
      02/29/2000 => 2/29/2000 | 02/29/2001 => 2/29/2001? | 2004-01-15 => 1/15/2004
      1970/1/1 => 1/1/1970 | 12-01-15 => 12/1/2015 | 12/31/36 => 12/31/2036?
      ~1/~2/ 3 and more => 1/2/2003 | +1/+2/+70 => 1/2/1970 | 1/2/-5 => 1/2/-5?
      12--1-5 => 12/-1/2005? | 2035-12-31 => 12/31/2035 | 1/0/2000 => 1/0/2000?
      1/2/99999999999 => 1/2/2147483647? | => 0/0/0?)",
             scanned);
  ExpectAll("2036-01-01 | 13/01/2000 | 1969-01-01 | 0/0/0 | 1/2 | 1/2-3 | 1 /2/3 | N/A", scanned,
            "0/0/0?");
}

TEST(Dates, OfTwoDigitYearsMoveToTheWindow) {
  const std::pair<int, int> cases[] = {{99, 1999}, {70, 1970}, {69, 2069},
                                       {0, 2000},  {100, 100}, {-1, -1}};
  for (const auto& [given, held] : cases) EXPECT_EQ(CZulDate(1, 1, given).Year(), held) << given;
  EXPECT_EQ(Shown(CZulDate(1, 0, 0)) + Shown(CZulDate(0, 0, 0)), "1/0/20000/0/0");
  EXPECT_EQ(Shown(CZulDate(ZULDATE{-1, -2, 70})), "-2/-1/1970");
  EXPECT_EQ(Shown(CZulDate(ZULDATE(CZulDate(257, 258, 65537 + 99)))), "1/2/100");
}

TEST(Dates, CompareAndSubtract) {
  CZulDate early(1, 31, 2004);
  const CZulDate late(2, 1, 2004);
  EXPECT_TRUE(early.Compare(late) == -1 && late.Compare(early) == 1);
  EXPECT_EQ(Holding(early, late) + Holding(late, early) + Holding(late, late), "!<l!>g=lg");
  EXPECT_TRUE(late - early == 1 && late - CZulDate(1, 1, 2100) == static_cast<int>(late));
  EXPECT_EQ(Shown(++early), "2/1/2004");
  EXPECT_EQ(Shown(--early), "1/31/2004");
}

TEST(DatesAndTimes, PrintByTheRuleOfTheBuffer) {
  char text[64];
  std::memset(text, '#', sizeof text);
  const CZulDate date(2, 9, 2004);
  EXPECT_TRUE(date.Print(text, 9) < 0 && date.Print(text, 10) == 10);
  EXPECT_EQ(std::string(text, 11), "02/09/2004#");
  EXPECT_EQ(CZulDate(INT32_MIN, INT32_MIN, INT32_MIN).Print(text, sizeof text), 35);
  EXPECT_STREQ(text, "-2147483648/-2147483648/-2147483648");
  for (const auto& [seconds, printed] :
       Rows("34215 => 09:30:15 | 96039 => 26:40:39 | -2147483648 => -596523:-14:-8")) {
    CZulTime(std::stoi(seconds)).Print(text, sizeof text);
    EXPECT_EQ(text, printed);
  }
}

TEST(Times, AreScannedAndNoTextFails) {
  EXPECT_EQ(static_cast<int>(CZulTime(nullptr)), 0);
  ExpectRows(R"(
      9:30 => 34200 | 9:30:15 => 34215 | 570 => 34200 | 25:99:99 => 96039 | => 0 | abc => 0
      :15 => 0 | 1:2:3:4 => 3723 | ~1: 2 => 3720 | 1: => 3600 | 1:x:3 => 3600 | 1:2x3 => 3720
      -1 => -60 | 12.5 => 720)",
             [](const std::string& text) {
               CZulTime time(1);
               return time.Scan(text.c_str()) ? std::to_string(static_cast<int>(time)) : "failed";
             });
}

TEST(Times, WrapWithinADayWhenAddedToAndOnlyThen) {
  const auto wrapped = [](std::int64_t sum) { return (sum % 86400 + 86400) % 86400; };
  for (const int seconds : {INT32_MIN, -86401, -86400, -1, 0, 86399, 86400, INT32_MAX}) {
    for (const int added : {INT32_MIN, -1, 0, 1, INT32_MAX}) {
      const CZulTime time(seconds);
      EXPECT_EQ(static_cast<int>(time + added), wrapped(std::int64_t{seconds} + added));
      EXPECT_EQ(static_cast<int>(time - added), wrapped(std::int64_t{seconds} - added));
    }
  }
  CZulTime midnight;
  EXPECT_TRUE(--midnight == 86399 && ++midnight == 0);
  EXPECT_EQ(CZulTime(9, 0, 0).Compare(CZulTime(10, 0, 0)), -3600);
}

TEST(Times, SurviveTheirRecord) {
  const ZULTIME record = CZulTime(139439);
  EXPECT_TRUE(record.minutes == MISSING_TIME_MINUTES && record.seconds == 59);
  EXPECT_EQ(static_cast<int>(CZulTime(ZULTIME{65535, 65535})), 65535 * 61);
}

TEST(Times, OfAnIntervalIncludeItsStartAndMayPassMidnight) {
  for (const auto& [start, end] : {std::pair{22, 6}, {9, 17}, {0, 0}}) {
    for (int hour = 0; hour < 24; ++hour) {
      const bool inside = start < end ? start <= hour && hour < end : start <= hour || hour < end;
      EXPECT_EQ(CZulTime(hour, 0, 0).InInterval(CZulTime(start, 0, 0), CZulTime(end, 0, 0)), inside)
          << hour << " of " << start << " to " << end;
    }
  }
}

TEST(SystemTime, BecomesSecondsOfTheSameClock) {
  const SYSTEMTIME reading = {2004, 2, 0, 29, 23, 59, 58, 999};
  const SYSTEMTIME none = {};
  EXPECT_EQ(SystemTimeToTimeT(&reading), 1078099198);
  EXPECT_EQ(SystemTimeToTimeT(&none), -86400);
  EXPECT_TRUE(Today().IsValid()) << Shown(Today());
}

}  // namespace
