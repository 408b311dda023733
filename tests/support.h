/// What several tests share.
#ifndef WQDATA_TESTS_SUPPORT_H_
#define WQDATA_TESTS_SUPPORT_H_

#include <gtest/gtest.h>
#include <wqdata/blocks/datablock.h>
#include <wqdata/service/servicelib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <mutex>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace wqd_test {

#ifdef WQDATA_SANITIZED
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

/// Collects the lines of the log, with their levels, from its construction to its end, which
/// restores the default sink. One at a time; any thread may log meanwhile.
class LogCapture {
 public:
  using Lines = std::vector<std::pair<int, std::string>>;

  LogCapture() { set_log_sink(&LogCapture::Take, this); }
  ~LogCapture() { set_log_sink(nullptr, nullptr); }

  /// The lines so far, in the order of their arrival.
  Lines lines() const {
    const std::lock_guard lock(m_mutex);
    return m_lines;
  }

 private:
  static void Take(int level, const char* text, void* context) {
    auto& capture = *static_cast<LogCapture*>(context);
    const std::lock_guard lock(capture.m_mutex);
    capture.m_lines.emplace_back(level, text);
  }

  mutable std::mutex m_mutex;
  Lines m_lines;
};

/// Puts a locale in force until its end, the one with a decimal point if it is not named: what the
/// C library is asked for the expected answer must not follow the locale that the tests run in.
class InLocale {
 public:
  explicit InLocale(const char* name = "C") : m_former(std::setlocale(LC_ALL, nullptr)) {
    std::setlocale(LC_ALL, name);
  }
  ~InLocale() { std::setlocale(LC_ALL, m_former.c_str()); }

 private:
  std::string m_former;
};

/// Puts a locale with a decimal comma in force until its end.
class DecimalComma : InLocale {
 public:
  DecimalComma() : InLocale("de_DE.UTF-8") {}

  /// False where the system has no such locale.
  bool InForce() const { return *std::localeconv()->decimal_point == ','; }
};

/// A text that tells a double from every other, -0 from 0 too; all NaNs are alike.
inline std::string Exact(double value) {
  if (std::isnan(value)) return "nan";
  char text[64];
  const InLocale usual;
  std::snprintf(text, sizeof text, "%.17g (%a)", value, value);
  return text;
}

/// The texts of a table, which stand on lines of their own or with " | " between them. Blanks
/// around a text are not part of it; a "~" in it stands for a blank.
inline std::vector<std::string> Texts(std::string_view table) {
  std::vector<std::string> texts;
  while (!table.empty()) {
    const std::size_t end = std::min({table.find(" | "), table.find('\n'), table.size()});
    std::string text(table.substr(0, end));
    table.remove_prefix(std::min(table.find_first_not_of(" |\n", end), table.size()));
    text.erase(0, text.find_first_not_of(' ')).erase(text.find_last_not_of(' ') + 1);
    std::replace(text.begin(), text.end(), '~', ' ');
    if (!text.empty()) texts.push_back(text);
  }
  return texts;
}

/// The rows "input => expected" of such a table; nothing in front of the arrow is an empty input.
inline std::vector<std::pair<std::string, std::string>> Rows(std::string_view table) {
  std::vector<std::pair<std::string, std::string>> rows;
  for (const std::string& row : Texts(table)) {
    const std::size_t arrow = row.find("=> ");
    if (arrow == std::string::npos) ADD_FAILURE() << "a row without an arrow: " << row;
    rows.emplace_back(row.substr(0, arrow == 0 ? 0 : arrow - 1), row.substr(arrow + 3));
  }
  return rows;
}

/// Expects that `answer` gives what stands behind the arrow for each row of such a table.
template <typename Answer>
void ExpectRows(std::string_view table, Answer answer) {
  for (const auto& [input, expected] : Rows(table)) EXPECT_EQ(answer(input), expected) << input;
}

/// Expects the same answer for each text of a table.
template <typename Answer>
void ExpectAll(std::string_view table, Answer answer, const std::string& expected) {
  for (const std::string& input : Texts(table)) EXPECT_EQ(answer(input), expected) << input;
}

/// Which of the operators == != < <= > >= hold, each by a sign of its own.
template <typename Left, typename Right>
std::string Holding(Left& a, Right& b) {
  const bool holds[] = {a == b, a != b, (a < b), a <= b, (a > b), a >= b};
  std::string shown;
  for (std::size_t i = 0; i < 6; ++i) {
    if (holds[i]) shown += "=!<l>g"[i];
  }
  return shown;
}

/// Expects `work`, done ten times as often as `count`, to take no more than some tenfold of the
/// processor time.
template <typename Work>
void ExpectLinearCost(int count, Work work) {
  const auto time_of = [&work](int times) {
    const std::clock_t begin = std::clock();
    work(times);
    return static_cast<double>(std::clock() - begin);
  };
  double ratio = 40;
  for (int attempt = 0; attempt < 3 && ratio >= 40; ++attempt) {  // noise may spoil one or two
    ratio = time_of(10 * count) / (time_of(count) + 1);
  }
  EXPECT_LT(ratio, 40);
}

inline std::string Letters(std::size_t count) { return std::string(count, 'A'); }

inline wqd::DataBlockPtr NewBlock(cf_id format) {
  return wqd::DataBlockPtr(wqd::CDataBlock::NewDataBlock(format));
}

inline std::string BytesOf(wqd::CDataBlock& block) {
  const auto size = static_cast<std::size_t>(block.GetDataSize());
  return size == 0 ? "" : std::string(static_cast<const char*>(block.GetData()), size);
}

}  // namespace wqd_test

#endif  // WQDATA_TESTS_SUPPORT_H_
