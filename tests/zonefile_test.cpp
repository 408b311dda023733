// Rules in zone files, and zones found by their names.
#include <sys/stat.h>
#include <wqdata/values/timezone.h>
#include <wqdata/values/zonefile.h>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd::values;
using namespace wqd_test;
using namespace std::string_literals;
namespace fs = std::filesystem;
using FileBytes = std::vector<std::uint8_t>;

constexpr SYSTEMTIME kNone{};

/// Month.occurrence.weekday/hour.
std::string Date(const SYSTEMTIME& t) {
  if (std::memcmp(&t, &kNone, sizeof t) == 0) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%d.%d.%d/%d", t.wMonth, t.wDay, t.wDayOfWeek, t.wHour);
  return text;
}

/// "300 -60 3.2.0/2 11.1.0/2": bias, daylight bias, the start and the end of daylight time;
/// "failed" if `fill` says so, and leaves the rule as it was.
template <typename Fill>
std::string RuleOf(Fill fill) {
  ZoneRule rule;
  std::memset(&rule, 0x5A, sizeof rule);
  const ZoneRule before = rule;
  if (!fill(rule)) return std::memcmp(&rule, &before, sizeof rule) == 0 ? "failed" : "changed";
  return std::to_string(rule.bias) + " " + std::to_string(rule.daylightBias) + " " +
         Date(rule.daylightDate) + " " + Date(rule.standardDate) +
         (rule.standardBias == 0 ? "" : " and a standard bias");
}

std::string FromPosix(std::string_view text) {
  return RuleOf([&](ZoneRule& rule) { return zone_rule_from_posix(text, rule); });
}

std::string FromFile(const FileBytes& bytes) {
  return RuleOf([&](ZoneRule& rule) { return zone_rule_from_file(bytes, rule); });
}

TEST(PosixRule, BecomesTheNearestRecord) {
  ExpectRows(R"(
    UTC0 => 0 0 - - | <-0930>+9:30 => 570 0 - - | <+1345>-13:45:00 => -825 0 - -
    ABC24:59 => 1499 0 - - | EST5EDT,M3.2.0,M11.1.0 => 300 -60 3.2.0/2 11.1.0/2
    <+00>0<+02>-2,M3.5.0/1,M10.5.0/3 => 0 -120 3.5.0/1 10.5.0/2
    <-04>4<-03>,M9.1.6/24,M4.1.6/24 => 240 -60 9.1.6/24 4.1.6/24
    IST-2IDT,M3.4.4/26,M10.5.0 => -120 -60 3.4.4/24 10.5.0/2
    <-02>2<-01>,M3.5.0/-1,M10.5.0/0 => 120 -60 3.5.0/0 10.5.0/0
    AAA5BBB,M3.2.0/167,M11.1.0/-166 => 300 -60 3.3.0/0 11.1.0/0
    EET-2EEST,M3.4.4/50,M10.4.4/50 => -120 -60 3.5.0/0 10.5.0/0
    AAA5BBB,M3.2.0/167,M11.1.0/-167 => failed
    <+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45 => -765 -60 9.5.0/3 4.1.0/4
    <+1030>-10:30<+11>-11,M10.1.0,M4.1.0 => -630 -30 10.1.0/2 4.1.0/2
    AAA5BBB,M3.2.0/2:30,M11.1.0/2:30 => 300 -60 3.2.0/3 11.1.0/3
    AAA5BBB,M3.2.0/2:29:59,M11.1.0/2:29:59 => 300 -60 3.2.0/2 11.1.0/2
    IST-1GMT0,M10.5.0,M3.5.0/1 => 0 -60 3.5.0/1 10.5.0/2 | AAA5BBB5,M3.2.0,M11.1.0 => 300 0 - -
    EST5EDT,J1/-1,365/25 => 240 0 - - | XXX3EDT4,0/0,J365/23 => 240 0 - -
    EST5EDT,0/0,J365/25 => 240 0 - - | EDT4EST5,J365/25,0/0 => 240 0 - -
    EST5EDT,0/0,J365/24:59 => failed | EST5EDT,0/0:00:01,J365/25 => failed
    EST5EDT,1/0,J365/25 => failed | EST5EDT,0/0,J364/48 => failed
    EST5EDT,0/0,J364/49 => 240 0 - - | AAA5BBB,M4.3.0,M4.1.0 => 300 -60 4.3.0/2 4.1.0/2)",
             FromPosix);
}

TEST(PosixRule, FailsForOtherTextsAndWhereNoRecordCanHoldIt) {
  EXPECT_EQ(FromPosix(""), "failed");
  ExpectAll(R"(
         EST5EDT,J60,J300 | EST5EDT,M3.2.0,300 | EST5EDT | EST5EDT4 | AAA5BBB,M4.1.0,M4.3.0
         AAA5BBB,M4.3.0,M4.3.6 | AAA5BBB,M3.5.6/26,M4.1.0/1 | LMT-0:01:15 | 5 | EST | ES5 | <ES>5
         <EST5 | <ES.>5 | EST25 | EST5:60 | EST0005 | EST+-5 | EST5~ | EST5EDT,M3.2.0
         EST5EDT,M3.2.0,M11.1.0, | EST5EDT,M0.2.0,M11.1.0 | EST5EDT,M13.2.0,M11.1.0
         EST5EDT,M3.0.0,M11.1.0 | EST5EDT,M3.6.0,M11.1.0 | EST5EDT,M3.2.7,M11.1.0
         EST5EDT,M3.2,M11.1.0 | EST5EDT,M3.2.0/168,M11.1.0 | EST5EDT,0/0,J366/25
         EST5EDT,J0/0,J365/25 | EST5EDT,0/0,366/25)",
            FromPosix, "failed");
}

/// How much the second block of a file has, in the order of its header: UT marks, standard marks,
/// leap seconds, times, types, characters. The first is always as large as this.
using Counts = std::array<std::uint32_t, 6>;
constexpr Counts kCounts = {2, 2, 1, 1, 2, 8};

/// All types are the first one, and the name of each is the first: that of no characters.
void AppendBlock(FileBytes& bytes, std::size_t timeSize, const Counts& n) {
  bytes.insert(bytes.end(), {'T', 'Z', 'i', 'f', '2'});
  bytes.insert(bytes.end(), 15, 0);
  for (const auto count : n) {
    for (const int shift : {24, 16, 8, 0})
      bytes.push_back(static_cast<std::uint8_t>(count >> shift));
  }
  const std::size_t perTime = timeSize + 1, perLeap = timeSize + 4;
  bytes.resize(bytes.size() + n[3] * perTime + n[4] * 6 + n[5] + n[2] * perLeap + n[0] + n[1]);
}

constexpr std::size_t kSecondBlock = 44 + 4 + 1 + 12 + 8 + 8 + 4;
constexpr std::size_t kTypes = kSecondBlock + 44 + 8 + 1;
constexpr std::size_t kFooter = kTypes + 12 + 8 + 12 + 4;

FileBytes ZoneFile(const Counts& counts = kCounts,
                   std::string_view footer = "\nAAA5BBB,M3.2.0,M11.1.0\n") {
  FileBytes bytes;
  AppendBlock(bytes, 4, kCounts);
  AppendBlock(bytes, 8, counts);
  bytes.insert(bytes.end(), footer.begin(), footer.end());
  return bytes;
}

constexpr const char* kRuleOfFile = "300 -60 3.2.0/2 11.1.0/2";

TEST(ZoneFile, IsReadWholeOrNotAtAll) {
  const FileBytes good = ZoneFile();
  ASSERT_EQ(FromFile(good), kRuleOfFile);
  for (auto end = good.begin(); end != good.end(); ++end) {
    EXPECT_EQ(FromFile({good.begin(), end}), "failed") << "cut to " << end - good.begin();
  }
  std::vector<std::pair<std::size_t, int>> damages = {
      {kTypes - 1, 2},         // no such type
      {kTypes + 4, 2},         // neither daylight nor standard time
      {kTypes + 11, 8},        // no such name
      {kTypes + 12 + 7, 'B'},  // a name without end
      {kFooter, ' '},         {good.size() - 1, ' '}};
  for (const std::size_t header : {std::size_t{0}, kSecondBlock}) {
    for (std::size_t at = 0; at < 5; ++at) damages.emplace_back(header + at, '1');
    for (std::size_t at = header + 20; at < header + 44; ++at) {
      for (const int value : {255, good[at] - 1, good[at] + 1}) damages.emplace_back(at, value);
    }
  }
  for (const auto& [at, value] : damages) {
    FileBytes bytes = good;
    bytes[at] = static_cast<std::uint8_t>(value);
    EXPECT_EQ(FromFile(bytes), "failed") << at << " set to " << value;
  }
}

TEST(ZoneFile, HasSectionsThatFitOneAnotherAndItsRuleInTheFooter) {
  const std::pair<Counts, const char*> cases[] = {
      {{0, 0, 0, 0, 2, 8}, kRuleOfFile}, {{1, 1, 1, 1, 1, 8}, kRuleOfFile},
      {{1, 2, 1, 1, 2, 8}, "failed"},    {{2, 3, 1, 1, 2, 8}, "failed"},
      {{2, 2, 1, 1, 2, 0}, "failed"},    {{0, 0, 1, 0, 0, 8}, "failed"}};
  for (const auto& [counts, rule] : cases) {
    EXPECT_EQ(FromFile(ZoneFile(counts)), rule) << testing::PrintToString(counts);
  }
  FileBytes former = ZoneFile();
  former[4] = former[kSecondBlock + 4] = 0;
  EXPECT_EQ(FromFile(former), "failed") << "version 1 has no footer";
  EXPECT_EQ(FromFile(ZoneFile(kCounts, "\nJST-9\n")), "-540 0 - -");
  for (const std::string& footer :
       {"\n\n"s, "\n"s, "\nJST-9"s, "JST-9\n"s, "\nJST-9\n\n"s, "\nJST-9\0\n"s}) {
    EXPECT_EQ(FromFile(ZoneFile(kCounts, footer)), "failed") << testing::PrintToString(footer);
  }
}

/// A folder of its own, gone with the test, and a file that lies beside it.
class ZoneFolder : public testing::Test {
 protected:
  ZoneFolder() {
    std::string name = (fs::temp_directory_path() / "wqdata-zones-XXXXXX").string();
    m_root = mkdtemp(name.data());
    m_outside = m_root.filename().string() + ".out";
  }
  ~ZoneFolder() override {
    fs::remove_all(m_root);
    fs::remove(m_root.string() + ".out");
  }

  void Write(const std::string& name, const FileBytes& bytes = ZoneFile()) const {
    fs::create_directories((m_root / name).parent_path());
    std::ofstream file(m_root / name, std::ios::binary);
    for (const std::uint8_t byte : bytes) file.put(static_cast<char>(byte));
  }

  std::string Find(std::string_view name) const {
    const std::array roots{"/no/such/folder", m_root.c_str()};
    return RuleOf([&](ZoneRule& rule) { return find_zone_rule(name, roots, rule); });
  }

  fs::path m_root;
  std::string m_outside;
};

TEST_F(ZoneFolder, YieldsRegularFilesOfPlainNamesAlone) {
  const std::string longest(31, 'L');
  const auto room = static_cast<std::uint32_t>(64 * 1024 - ZoneFile().size());
  for (const std::string& name : {longest, longest + "L", "with space"s, "../" + m_outside, "a.b"s,
                                  "Kol\xC3\xA9"s, "Area/Sub_area/Place-1+a"s}) {
    Write(name);
  }
  Write("broken", {'T', 'Z', 'i', 'f'});
  Write("empty", {});
  Write("largest", ZoneFile({2, 2, 1, 1, 2, 8 + room}));
  Write("too_large", ZoneFile({2, 2, 1, 1, 2, 9 + room}));
  ASSERT_EQ(mkfifo((m_root / "fifo").c_str(), 0600), 0);
  fs::create_symlink("Area/Sub_area/Place-1+a", m_root / "link");
  fs::create_symlink("loop", m_root / "loop");
  fs::create_symlink("/dev/zero", m_root / "device");
  Write("Asia/Calcutta");  // for a name of the platform, the file of the former name only
  const auto find = [this](const std::string& name) { return Find(name); };
  ExpectAll("link | largest | Asia/Calcutta | iNDIA standard TIME | Area/Sub_area/Place-1+a", find,
            kRuleOfFile);
  EXPECT_EQ(Find(longest), kRuleOfFile);
  ExpectAll(R"(
      too_large | Asia/Kolkata | with space | a.b | broken | empty | fifo | loop | device | Area
      Area/ | /Area/Sub_area/Place-1+a | Area//Sub_area/Place-1+a | ./link | Area/../link | /
      Area\Sub_area | Tokyo Standard Time)",
            find, "failed");
  for (const std::string& name : {longest + "L", "Kol\xC3\xA9"s, "../" + m_outside, "link\n"s,
                                  "link\0"s, ""s, std::string(300, 'x'), m_root.string() + "/link"})
    EXPECT_EQ(Find(name), "failed") << name;
}

TEST(GetTzInfo, LeavesTheRecordWhenItFails) {
  CTimeZone zone;
  std::memset(static_cast<void*>(&zone), 0x5A, sizeof zone);
  const CTimeZone before = zone;
  EXPECT_FALSE(GetTzInfo(nullptr, &zone) || GetTzInfo("", &zone) || GetTzInfo("UTC\n", &zone));
  for (const std::string& name : Texts("America | /etc/passwd | ../zoneinfo/UTC | tzdata.zi | "
                                       "leapseconds | Eastern Standard Tim")) {
    EXPECT_FALSE(GetTzInfo(name.c_str(), &zone)) << name;
  }
  EXPECT_EQ(std::memcmp(&zone, &before, sizeof zone), 0);
  ASSERT_TRUE(GetTzInfo("eastern Standard time", &zone));
  const char16_t expected[32] = u"eastern Standard time";  // as it was given, and no former rest
  EXPECT_EQ(std::memcmp(zone.StandardName, expected, sizeof expected), 0);
  EXPECT_TRUE(zone.Bias == 300 && zone.StandardBias == 0 && zone.DaylightName[0] == 0x5A5A);
}

}  // namespace
