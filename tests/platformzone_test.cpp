#include <gtest/gtest.h>
#include <wqdata/service/clock.h>
#include <wqdata/values/timezone.h>
#include <wqdata/values/windowszones.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd::values;
using namespace wqd_test;
namespace fs = std::filesystem;

/// Holds the C library to a zone until its end.
class ZoneOfProcess {
 public:
  explicit ZoneOfProcess(const std::string& zone) {
    if (const char* former = std::getenv("TZ")) m_former = former;
    setenv("TZ", zone.c_str(), 1);
    tzset();
  }
  ~ZoneOfProcess() {
    m_former.empty() ? unsetenv("TZ") : setenv("TZ", m_former.c_str(), 1);
    tzset();
  }
  ZoneOfProcess(const ZoneOfProcess&) = delete;
  ZoneOfProcess& operator=(const ZoneOfProcess&) = delete;

 private:
  std::string m_former;
};

constexpr std::int64_t kStep = 15 * 60;
constexpr std::int64_t kMargin = 12;             // steps; more than any clock is changed by
constexpr std::int64_t kFirstTime = 1798761600;  // 1 January 2027
constexpr std::int64_t kSteps = 2 * 365 * 86400 / kStep + 96;  // to 1 January 2029

std::int64_t OffsetAt(std::int64_t step) {
  const std::time_t time = kFirstTime + step * kStep;
  std::tm parts;
  return localtime_r(&time, &parts)->tm_gmtoff;
}

/// Seconds ahead of UTC at each step, from `kMargin` steps before the first to as many behind the
/// last, by the C library. It is asked every hour, and every step of an hour with a change.
std::vector<std::int64_t> Offsets(const std::string& zone) {
  const ZoneOfProcess inForce(zone);
  std::vector<std::int64_t> offsets{OffsetAt(-kMargin)};
  for (std::int64_t i = -kMargin; i < kSteps + kMargin; i += 4) {
    const std::int64_t now = offsets.back();
    const std::int64_t next = OffsetAt(i + 4);
    for (const int step : {1, 2, 3}) offsets.push_back(now == next ? now : OffsetAt(i + step));
    offsets.push_back(next);
  }
  return offsets;
}

SYSTEMTIME Reading(std::int64_t time) {
  SYSTEMTIME reading{};
  wqd::service::reading_of((time + 11644473600) * 10'000'000, reading);
  return reading;
}

bool Same(const SYSTEMTIME& a, const SYSTEMTIME& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

/// Whether the reading of a step is shown a second time, before or after a change.
bool IsRepeated(const std::int64_t* offset) {
  for (const std::int64_t other : {offset[-kMargin], offset[kMargin]}) {
    if (other != *offset && offset[(*offset - other) / kStep] == other) return true;
  }
  return false;
}

/// The longest time in minutes for which the zone is wrong, in one direction or the other. What the
/// file has besides its standing rule is none of the record's.
std::int64_t WorstError(const CTimeZone& zone, const std::vector<std::int64_t>& inFile,
                        const std::vector<std::int64_t>& standing) {
  std::int64_t worst = 0, toLocal = 0, toUtc = 0;
  bool localIsWrong = false, utcIsWrong = false;
  for (std::int64_t i = 0; i < kSteps; ++i) {
    const std::int64_t* const offset = &standing[static_cast<std::size_t>(i + kMargin)];
    const bool isNearChange = offset[-kMargin] != offset[kMargin];
    if (i % 4 == 0 || isNearChange) {
      const SYSTEMTIME utc = Reading(kFirstTime + i * kStep);
      const SYSTEMTIME local = Reading(kFirstTime + i * kStep + *offset);
      SYSTEMTIME result;
      UtcTimeToTzTime(&zone, &utc, &result);
      localIsWrong = !Same(result, local);
      TzTimeToUtcTime(&zone, &local, &result, -1);
      utcIsWrong = !Same(result, utc) && !IsRepeated(offset);
    }
    const bool counts = inFile[static_cast<std::size_t>(i + kMargin)] == *offset;
    toLocal = counts && localIsWrong ? toLocal + 1 : 0;
    toUtc = counts && utcIsWrong ? toUtc + 1 : 0;
    worst = std::max({worst, toLocal, toUtc});
  }
  return worst * kStep / 60;
}

std::string Footer(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string last;
  for (std::string line; std::getline(file, line);) last = line;
  return last;
}

/// Zones whose rule has a change that no record can hold, with the worst error in minutes.
const std::map<std::string, int> kInexact = {
    {"Chatham Islands Standard Time", 15}, {"Lord Howe Standard Time", 30},
    {"Greenland Standard Time", 60},       {"Middle East Standard Time", 60},
    {"Israel Standard Time", 120},         {"West Bank Standard Time", 1560},
};

TEST(EveryPlatformZone, AgreesWithTheCLibrary) {
  std::size_t steps = 0, departures = 0;
  std::map<std::string, std::int64_t> errors;
  for (const PlatformZone& platform : platform_zones()) {
    const fs::path root = "/usr/share/zoneinfo";
    const bool modern = fs::exists(root / platform.file);
    ASSERT_TRUE(modern || platform.oldFile != nullptr) << platform.name;
    const fs::path path = root / (modern ? platform.file : platform.oldFile);
    CTimeZone zone;
    ASSERT_TRUE(GetTzInfo(platform.name, &zone)) << platform.name;
    const auto inFile = Offsets(":" + path.string());
    const auto standing = Offsets(Footer(path));
    for (std::size_t i = 0; i < inFile.size(); ++i) departures += inFile[i] != standing[i];
    steps += inFile.size();
    const std::int64_t error = WorstError(zone, inFile, standing);
    if (error != 0) errors[platform.name] = error;
  }
  for (const auto& [name, error] : errors) {
    EXPECT_TRUE(kInexact.contains(name)) << name << " is wrong for " << error << " minutes";
  }
  for (const auto& [name, error] : kInexact) EXPECT_EQ(errors[name], error) << name;
  EXPECT_LT(departures, steps / 100) << "the files' own standing rules hold nearly always";
}

TEST(EveryPlatformZone, IsFoundOnceInOrderAndDocumentedWhereInexact) {
  const auto before = [](const PlatformZone& a, const PlatformZone& b) {
    return std::string_view(a.name) >= b.name;
  };
  const auto zones = platform_zones();
  EXPECT_EQ(std::adjacent_find(zones.begin(), zones.end(), before), zones.end());
  EXPECT_EQ(find_platform_zone("GMT Standard Time"), nullptr);
  std::ifstream page(fs::path(__FILE__).parent_path() / "../docs/timezones.md");
  std::map<std::string, int> documented;
  for (std::string line; std::getline(page, line);) {
    char name[64], file[64];
    int minutes = 0;
    if (std::sscanf(line.c_str(), "| %63[^|] | `%63[^`]` | %d", name, file, &minutes) != 3)
      continue;
    documented[Texts(name).front()] = minutes;
  }
  EXPECT_EQ(documented, kInexact);
}

}  // namespace
