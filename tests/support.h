/// What several tests share.
#ifndef WQDATA_TESTS_SUPPORT_H_
#define WQDATA_TESTS_SUPPORT_H_

#include <wqdata/service/servicelib.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace wqd_test {

/// Collects the lines of the log, with their levels, from its construction to its end, which
/// restores the default sink. One at a time; any thread may log meanwhile.
class LogCapture {
 public:
  using Lines = std::vector<std::pair<int, std::string>>;

  LogCapture() { set_log_sink(&LogCapture::Take, this); }
  ~LogCapture() { set_log_sink(nullptr, nullptr); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

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

/// Puts a locale with a decimal comma in force until its end.
class DecimalComma {
 public:
  DecimalComma() {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8"}) {
      if (std::setlocale(LC_ALL, name) != nullptr) break;
    }
  }
  ~DecimalComma() { std::setlocale(LC_ALL, "C"); }
  DecimalComma(const DecimalComma&) = delete;
  DecimalComma& operator=(const DecimalComma&) = delete;

  /// False where the system has no such locale.
  bool InForce() const { return *std::localeconv()->decimal_point == ','; }
};

/// A text that tells a double from every other, -0 from 0 too; all NaNs are alike.
inline std::string Exact(double value) {
  if (std::isnan(value)) return "nan";
  char text[64];
  std::snprintf(text, sizeof text, "%.17g (%a)", value, value);
  return text;
}

}  // namespace wqd_test

#endif  // WQDATA_TESTS_SUPPORT_H_
