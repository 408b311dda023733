// The log, and the numbers and fractions that texts begin with.
#include <wqdata/service/operations.h>
#include <wqdata/service/text.h>
#include <wqdata/types.h>

#include <atomic>
#include <sstream>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd::service;
using namespace wqd_test;

TEST(Log, ReachesTheSinkWholeWithItsLevel) {
  const LogCapture log;
  LogCapture::Lines expected = {{1, "field 7 of \"a\tb\": 100%"}, {-1, "-3\n"}, {0, ""}};
  log_message(1, "field %d of \"%s\": %d%%", 7, "a\tb", 100);
  log_error("%d\n", -3);
  log_message(0, "%s", "");
  for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 70000U}) {
    expected.emplace_back(2, std::string(length - 1, 'x') + "!");
    log_message(2, "%s%c", std::string(length - 1, 'x').c_str(), '!');
    expected.emplace_back(-1, expected.back().second);
    log_error("%s", expected.back().second.c_str());
  }
  EXPECT_EQ(log.lines(), expected);
}

TEST(Log, LetsASinkThrowLogAndChangeTheSink) {
  const auto sink = [](int level, const char* text, void* lines) {
    static_cast<LogCapture::Lines*>(lines)->emplace_back(level, text);
    if (level == 2) set_log_sink(nullptr, nullptr);
    if (level == 1) log_message(2, "again %s", text);
    throw level;
  };
  LogCapture::Lines lines;
  set_log_sink(sink, &lines);
  EXPECT_NO_THROW(log_error("e"));
  EXPECT_NO_THROW(log_message(1, "x"));
  EXPECT_EQ(lines, (LogCapture::Lines{{-1, "e"}, {1, "x"}, {2, "again x"}}));
}

TEST(Log, BlanksControlCharactersOnStandardError) {
  set_log_sink(nullptr, nullptr);
  testing::internal::CaptureStderr();
  log_message(2, "a\x01z\n\x1F\x7F\t\r~ \x80\xC3\xA9");
  log_error("%s", (std::string(1500, 'x') + "\n!").c_str());
  log_error("%s", "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "a z     ~ \x80\xC3\xA9\n" + std::string(1500, 'x') + " !\n\n");
}

/// One of two sinks that take turns, each with a count of its own for context.
template <int kTurn>
void TakeTurn(int, const char*, void* context) {
  auto& [turn, lines] = *static_cast<std::pair<int, std::atomic<int>>*>(context);
  lines += turn == kTurn;
}

TEST(Log, GivesEachSinkItsOwnContextWhileTheyTakeTurns) {
  std::pair<int, std::atomic<int>> a(1, 0), b(2, 0);
  set_log_sink(TakeTurn<1>, &a);
  std::atomic<bool> running = true;
  std::thread other([&running] {
    for (int i = 0; i < 50000; ++i) log_message(1, "%d", i);
    running = false;
  });
  while (running) set_log_sink(TakeTurn<2>, &b), set_log_sink(TakeTurn<1>, &a);
  other.join();
  set_log_sink(nullptr, nullptr);
  EXPECT_EQ(a.second + b.second, 50000);
}

TEST(Fraction, ReadsEveryFractionOfBothNotations) {
  const auto expect_value = [](const std::string& text, double expected) {
    EXPECT_EQ(fraction_to_double(text.c_str()), expected) << text;
    EXPECT_EQ(fraction_to_double((" \t-" + text + "\n ").c_str()), -expected) << text;
  };
  for (int n = 0; n < 256; ++n) {
    for (int denominator = 2; denominator <= 256; denominator *= 2) {
      if (n >= denominator) continue;
      const std::string slash = std::to_string(n) + "/" + std::to_string(denominator);
      expect_value(slash, n / double(denominator));
      expect_value(std::to_string(n * 1001) + " " + slash, n * 1001 + n / double(denominator));
    }
    const std::string caret = {'^', char('0' + n / 80), char('0' + n / 8 % 10)};
    expect_value(std::to_string(n * 1001) + caret + char('0' + n % 8), n * 1001 + n / 256.0);
    if (n % 8 == 0) expect_value(caret, n / 256.0);
    if (n % 8 == 4) expect_value(caret + "+", n / 256.0);
  }
}

TEST(Fraction, TellsWhatIsNone) {
  EXPECT_EQ(fraction_to_double("17592186044416 1/2"), 17592186044416.5);
  EXPECT_EQ(fraction_to_double("101\v007/0008"), 101.875);
  EXPECT_EQ(fraction_to_double("-0 1/8"), -0.125);
  EXPECT_EQ(fraction_to_double("+1/8"), 0.125);
  for (const char* text : {static_cast<const char*>(nullptr), "", " ", "1\x01/2"}) {
    EXPECT_EQ(fraction_to_double(text), MISSING_DOUBLE) << testing::PrintToString(text);
  }
  ExpectAll(R"(
         18014398509481985 1/2 | 99999999999999999999999 1/2 | / | ^ | 101 | 101.25 | 12/31/2004 | 1/1
         0/0 | 1/3 | 1/512 | 8/8 | 1/ | /8 | 1 /8 | 1/ 8 | 1 2/ | 1 1 1/8 | 1 -1/8 | - 1/8 | --1/8
         1.5 1/8 | 1/8x | ^1 | ^32 | ^318 | ^08 + | ^08++ | ^08+1 | ^0800 | 1 ^08 | 1^ 08 | 1^08^08
         1/2^08 | ^-1 | 1/8 1 | N/A | 1/4294967298 | ^3x | x^08 | 1^08/2)",
            [](const std::string& text) { return Exact(fraction_to_double(text.c_str())); },
            Exact(MISSING_DOUBLE));
}

/// Compares with the C library, whose 64-bit conversion saturates as ours does at 32 bits.
void expect_same_numbers(const std::string& text) {
  SCOPED_TRACE(testing::PrintToString(text));
  const char* const begin = text.c_str();
  char* end = nullptr;
  const auto wide = std::strtoll(begin, &end, 10);
  const auto expected = static_cast<std::int32_t>(std::clamp<long long>(
      wide, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
  std::int32_t scanned = 0;
  EXPECT_EQ(scan_int(begin, scanned), end == begin ? nullptr : end);
  EXPECT_EQ(scanned, expected);
  EXPECT_EQ(text_to_int(begin), expected);
  const double real = text_to_double(begin);
  double whole = 0.5;
  const std::string room = begin + std::string(kWholeNumberRoom, '7');  // is of no matter
  const bool isWhole = read_whole_number(room.c_str(), std::strlen(begin), whole);
  EXPECT_EQ(Exact(whole), Exact(isWhole ? real : 0.5));
  const InLocale usual;
  EXPECT_EQ(Exact(real), Exact(std::strtod(begin, &end)));
  EXPECT_TRUE(!isWhole || *end == '\0');
}

TEST(Number, ReadsAsTheCLibraryDoes) {
  std::istringstream texts(
      "| |0|-0|+7|+-5|-+5|--5|- 5|-|-abc|-.|-e5|-in| \t\n\v\f\r-12x|\0375|\2055|000000000000012|"
      "2147483647|2147483648|-2147483648|-2147483649|4294967295|4294967296|9223372036854775807|"
      "9223372036854775808|-99999999999999999999|.5|5.|.|-.5|.e5|1e|1e+|1e5|1E+05|1e-5x|1e5.5|1,5|"
      "1e308|1e309|-1e309|1.7976931348623158e308|1.7976931348623159e308|1e-400|-1e-400|4.9e-324|"
      "2.5e-324|2.4e-324|0e99999999999|1e99999999999|1e-99999999999|inf|-INFINITY|infinit|nan|-nan|"
      "NaN(1)x|in|0x|0x1p3|-0X1.8P-1|0x.8|0x.|0xp1|0x-1|0x+1|0xinf|0xnan|0x1p|0x1p1024|0x1p-1075|"
      "999999999999999|-99999999999999.9|0.00000000000001|9007199254740993|1.000000000000001|1.2.3|"
      "18446744073709551617|-0.0|1/"
      "2|1^08|0x1.8p-1075|0x0x1|0x1.fffffffffffff8p0|0xabcdefg|0xfp+-2|1e+-2");
  for (std::string text; std::getline(texts, text, '|');) expect_same_numbers(text);
  const std::string zeros(400, '0');
  for (const std::string& text :
       {"0." + zeros + "1", "0." + zeros + "1e400", "1" + zeros, "1" + zeros + "e-400", zeros + "1",
        "0x0." + zeros + "1p1500", "0x1" + zeros + "p-1500", "0x1" + zeros + "p-450"}) {
    expect_same_numbers(text);
  }
}

TEST(Number, ReadsRandomTextsAsTheCLibraryDoes) {
  std::mt19937_64 random(2);
  const std::string characters = "00112233445566778899..++--eExXpPaFinNty() \t/";
  for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
    std::string text(static_cast<std::size_t>(random() % 12), '\0');
    for (char& c : text) c = characters[static_cast<std::size_t>(random() % characters.size())];
    expect_same_numbers(text);
    expect_same_numbers(Exact(std::bit_cast<double>(random())));
    std::string digits = std::to_string(random() >> random() % 64);
    expect_same_numbers(
        digits.insert(static_cast<std::size_t>(random()) % (digits.size() + 1), 1, '.'));
  }
}

}  // namespace
