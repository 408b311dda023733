// Patterns, texts in buffers, and files by their names.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wqdata/textsupport/helpers.h>

#include <sstream>

#include "support.h"

namespace {

using namespace wqd_test;
namespace fs = std::filesystem;

TEST(Helpers, MatchPatternOrdersTexts) {
  const auto match = [](const std::string& both) {
    const std::size_t bar = both.find('/');
    const std::string pattern = both.substr(bar + 1);
    return std::to_string(MatchPattern(both.substr(0, bar).c_str(), pattern.c_str()));
  };
  ExpectRows(R"(
    abc/abc => 0  | abc/ab => 99  | ab/abc => -99 | abc/a?c => 0  | ab/ab? => -63 | abc/a*z => 0
    /* => 0       | / => 0        | /? => -63     | abc/b* => -1  | b/a* => 1     | a*/abc => -56
    a?/ab => -35  | ?/? => 0      | a/ => 97      | /a => -97     | ab/* => 0     | abc/?* => 0
    ab/ab* => 0   | ab/b? => -1
  )",
             match);
  EXPECT_EQ(MatchPattern("\xff", "a"), -1 - 'a');
  EXPECT_EQ(MatchPattern("a", "\x80"), 'a' + 128);
  EXPECT_EQ(MatchPattern(nullptr, "a") + MatchPattern(nullptr, nullptr), -'a');
  EXPECT_EQ(MatchPattern("b", nullptr), 'b');
  ExpectRows("abc? => 3 | abc => -1 | *a => 0 | a?* => 1 | => -1",
             [](const std::string& text) { return std::to_string(FindWildCard(text.c_str())); });
  EXPECT_EQ(FindWildCard(nullptr), -1);
}

TEST(Helpers, CopiesAndTrimsInPlace) {
  const auto copied = [](const char* source, std::size_t size) {
    std::string buffer(8, 'x');
    EXPECT_EQ(my_strncpy(buffer.data(), source, size), buffer.data());
    std::replace(buffer.begin(), buffer.end(), '\0', '.');
    return buffer;
  };
  EXPECT_EQ(copied("abcdef", 4), "abc.xxxx");
  EXPECT_EQ(copied("abc", 4), "abc.xxxx");
  EXPECT_EQ(copied("ab", 6), "ab....xx");
  EXPECT_EQ(copied("ab", 1), ".xxxxxxx");
  EXPECT_EQ(copied("ab", 0), "xxxxxxxx");
  EXPECT_EQ(copied(nullptr, 3), "...xxxxx");
  EXPECT_EQ(my_strncpy(nullptr, "a", 3), nullptr);

  const auto trimmed = [](std::string text) { return std::string(str_trimLeft(text.data())); };
  EXPECT_EQ(trimmed("  a b \t\n\v\f\r "), "  a b");
  EXPECT_EQ(trimmed("   ") + trimmed("") + trimmed(" a") + trimmed("b\xa0"), " ab\xa0");
  EXPECT_EQ(str_trimLeft(nullptr), nullptr);
}

TEST(Helpers, GetFileModTimeCountsFrom1970) {
  const fs::path path = fs::temp_directory_path() / ("wqdata-" + std::to_string(getpid()));
  std::ofstream(path) << "a";
  std::int32_t seconds = 7;
  const std::pair<std::int64_t, std::int32_t> cases[] = {
      {1'000'000'000, 1'000'000'000}, {-1, -1}, {2147483647, 2147483647}, {2147483648, 7}};
  for (const auto& [changed, told] : cases) {
    const timespec time = {static_cast<std::time_t>(changed), 900'000'000}, both[] = {time, time};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), both, 0), 0);
    seconds = 7;
    EXPECT_EQ(GetFileModTime(path.c_str(), &seconds), told != 7) << changed;
    EXPECT_EQ(seconds, told);
  }
  fs::remove(path);
  EXPECT_FALSE(GetFileModTime(path.c_str(), &seconds) || GetFileModTime(nullptr, &seconds) ||
               GetFileModTime("/", nullptr));
  EXPECT_EQ(seconds, 7);
}

/// The file name of three parts with ";" between them, of which "0" is a null one.
std::string FileName(const std::string& parts, int size) {
  std::istringstream in(parts);
  std::string part[3];
  for (std::string& text : part) std::getline(in, text, ';');
  const auto given = [&part](int i) { return part[i] == "0" ? nullptr : part[i].c_str(); };
  std::string buffer(static_cast<std::size_t>(size) + 1, 'x');
  const int length = GetZulFileName(given(0), given(1), given(2), buffer.data(), size);
  EXPECT_EQ(buffer.back(), 'x') << parts;
  EXPECT_EQ(std::string(buffer.c_str()).size(), static_cast<std::size_t>(length)) << parts;
  return buffer.c_str();
}

TEST(Helpers, GetZulFileNameCompletesThePath) {
  const fs::path before = fs::current_path();
  fs::current_path("/usr/bin");
  ExpectRows(R"(
    /data;daily;prices.dat => /data/daily/prices.dat    | /data/;/daily//;./a => /data/daily/a
    data;daily;a => /usr/bin/data/daily/a               | ..;x;../a => /usr/a
    ;x;0 => /usr/bin/x   | 0;x; => /usr/bin/x           | 0;;a => /usr/bin/a
    0;0;a => /usr/bin/a  | /data;0;a => /usr/bin/a      | 0;0;/a/./b/../c => /a/c
    0;0;0 => /usr/bin    | 0;;0 => /usr/bin             | 0;0;/.. => / | 0;0;/// => /
  )",
             [](const std::string& parts) { return FileName(parts, 100); });
  // The room for a name, on both sides of what it needs.
  EXPECT_EQ(FileName("/a;b;c", 7) + FileName("/a;b;c", 6), "/a/b/c");
  EXPECT_EQ(FileName("0;0;/a/b/c", 7) + FileName("0;0;/a/b/c", 6), "/a/b/c");
  EXPECT_EQ(FileName("0;0;a", 11) + FileName("0;0;a", 10), "/usr/bin/a");
  EXPECT_EQ(GetZulFileName("a", "b", "c", nullptr, 10), 0);
  char directory[20] = "/data";
  EXPECT_EQ(GetZulFileName(directory, "x", "a", directory, 20), 9) << directory;
  char untouched = 'x';
  EXPECT_EQ(GetZulFileName("a", "b", "c", &untouched, 0), 0);
  EXPECT_EQ(untouched, 'x');
  fs::current_path(before);
}

}  // namespace
