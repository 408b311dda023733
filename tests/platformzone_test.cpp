#include <wqdata/service/clock.h>
#include <wqdata/values/timezone.h>
#include <wqdata/values/windowszones.h>

#include <map>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd::values;
using namespace wqd_test;
namespace fs = std::filesystem;

constexpr std::int64_t kStep = 15 * 60;
constexpr std::int64_t kMargin = 12;             // steps; more than any clock is changed by
constexpr std::int64_t kFirstTime = 1798761600;  // 1 January 2027
constexpr std::int64_t kSteps = 2 * 365 * 86400 / kStep + 96;  // to 1 January 2029

/// Seconds ahead of UTC at each step, from `kMargin` steps before the first to as many behind the
/// last, by the C library.
std::vector<std::int64_t> Offsets(const std::string& zone) {
  setenv("TZ", zone.c_str(), 1);
  tzset();
  std::vector<std::int64_t> offsets;
  for (std::int64_t i = -kMargin; i <= kSteps + kMargin; ++i) {
    const std::time_t time = kFirstTime + i * kStep;
    std::tm parts;
    offsets.push_back(localtime_r(&time, &parts)->tm_gmtoff);
  }
  return offsets;
}

SYSTEMTIME Reading(std::int64_t time) {
  SYSTEMTIME reading = {1970, 1, 0, 1, 0, 0, 0, 0};
  wqd::service::later_reading(reading, time / 60, reading);
  reading.wSecond = static_cast<std::uint16_t>(time % 60);
  return reading;
}

/// Whether the reading of a step is shown a second time, before or after a change.
bool IsRepeated(const std::int64_t* offset) {
  for (const std::int64_t other : {offset[-kMargin], offset[kMargin]}) {
    if (other != *offset && offset[(*offset - other) / kStep] == other) return true;
  }
  return false;
}

/// The longest time in minutes for which the zone is wrong, in one direction or the other.
std::int64_t WorstError(const CTimeZone& zone, const std::vector<std::int64_t>& standing) {
  std::int64_t worst = 0, toLocal = 0, toUtc = 0;
  for (std::int64_t i = 0; i < kSteps; ++i) {
    const std::int64_t* const offset = &standing[static_cast<std::size_t>(i + kMargin)];
    const SYSTEMTIME utc = Reading(kFirstTime + i * kStep);
    const SYSTEMTIME local = Reading(kFirstTime + i * kStep + *offset);
    SYSTEMTIME shown, back;
    UtcTimeToTzTime(&zone, &utc, &shown);
    TzTimeToUtcTime(&zone, &local, &back, -1);
    toLocal = std::memcmp(&shown, &local, sizeof local) == 0 ? 0 : toLocal + 1;
    toUtc = std::memcmp(&back, &utc, sizeof utc) == 0 || IsRepeated(offset) ? 0 : toUtc + 1;
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

/// The zones whose rule has a change that no record can hold, with the worst error in minutes.
std::map<std::string, std::int64_t> DocumentedErrors() {
  std::ifstream page(fs::path(__FILE__).parent_path() / "../docs/timezones.md");
  std::map<std::string, std::int64_t> errors;
  for (std::string line; std::getline(page, line);) {
    char name[64], file[64];
    int minutes = 0;
    if (std::sscanf(line.c_str(), "| %63[^|] | `%63[^`]` | %d", name, file, &minutes) == 3) {
      errors[Texts(name).front()] = minutes;
    }
  }
  return errors;
}

/// What a file has besides its standing rule is none of the record's.
TEST(EveryPlatformZone, AgreesWithTheCLibraryUnderTheStandingRule) {
  std::map<std::string, std::int64_t> errors;
  std::string former;
  for (const PlatformZone& platform : platform_zones()) {
    EXPECT_LT(std::exchange(former, platform.name), platform.name) << "each once and in order";
    const fs::path root = "/usr/share/zoneinfo";
    const bool modern = fs::exists(root / platform.file);
    ASSERT_TRUE(modern || platform.oldFile != nullptr) << platform.name;
    CTimeZone zone;
    ASSERT_TRUE(GetTzInfo(platform.name, &zone)) << platform.name;
    const auto standing = Offsets(Footer(root / (modern ? platform.file : platform.oldFile)));
    const std::int64_t error = WorstError(zone, standing);
    if (error != 0) errors[platform.name] = error;
  }
  EXPECT_EQ(errors, DocumentedErrors());
  EXPECT_EQ(errors.size(), 6u);
}

}  // namespace
