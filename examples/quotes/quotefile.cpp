#include "quotefile.h"

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include <wqdata/textsupport/myparser.h>

namespace {

constexpr std::string_view kHeader = "date,open,high,low,close,adjclose,volume";
constexpr std::size_t kKeptBytes = wqd::CMyParser::kFieldBufferSize - 1;
constexpr double kVolumeLimit = 9007199254740992.0;  // 2^53

/// True if the whole of `text` is one number of type T.
template <typename T>
bool ParseWhole(std::string_view text, T& number) {
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && rest == end;
}

bool IsDate(std::string_view text) {
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  return text.size() == 10 && text[4] == '-' && text[7] == '-' &&
         ParseWhole(text.substr(0, 4), year) && ParseWhole(text.substr(5, 2), month) &&
         ParseWhole(text.substr(8, 2), day) &&
         std::chrono::year_month_day(std::chrono::year(static_cast<int>(year)),
                                     std::chrono::month(month), std::chrono::day(day))
             .ok();
}

bool IsVolume(double number) {
  return number >= 0 && number < kVolumeLimit && number == std::floor(number);
}

std::optional<double> ReadNumber(const NumberField& field, const std::string& text) {
  if (text.empty() || text == "N/A") return std::nullopt;
  double number = 0;
  if (!ParseWhole(text, number) || !std::isfinite(number)) {
    throw std::runtime_error(std::string(field.name) + " '" + text + "' is not a number");
  }
  if (field.id == kVolumeField && !IsVolume(number)) {
    throw std::runtime_error("volume '" + text + "' is not a whole number from 0 to below 2^53");
  }
  return number;
}

std::vector<std::string> SplitLine(const std::string& line) {
  std::vector<std::string> values;
  wqd::CMyParser parser(line.c_str(), ",");
  for (std::string value; parser.NextField(value);) values.push_back(value);
  return values;
}

Quote ReadLine(const std::string& line) {
  if (line.size() >= kKeptBytes)
    throw std::runtime_error("the line is too long, or a quote is open");
  if (line.find('\n') != std::string::npos) throw std::runtime_error("a quote spans the line end");
  const std::vector<std::string> values = SplitLine(line);
  if (values.size() != kFieldsPerQuote) {
    throw std::runtime_error(std::to_string(values.size()) + " values instead of " +
                             std::to_string(kFieldsPerQuote));
  }
  if (!IsDate(values[0])) throw std::runtime_error("'" + values[0] + "' is not a date");
  Quote quote;
  quote.date = values[0];
  for (std::size_t i = 0; i < kNumberFields.size(); ++i) {
    quote.*kNumberFields[i].value = ReadNumber(kNumberFields[i], values[i + 1]);
  }
  return quote;
}

/// The parser takes a read error for the end of the file, so the stream is asked.
bool NextLine(wqd::CMyParser& lines, std::FILE* stream, std::string& line) {
  const bool found = lines.NextField(line);
  if (std::ferror(stream) != 0) throw std::runtime_error(std::strerror(errno));
  return found;
}

}  // namespace

std::vector<Quote> ReadQuotes(std::FILE* stream) {
  wqd::CMyParser lines(stream, "\n");
  std::string line;
  if (!NextLine(lines, stream, line) || line != kHeader) {
    throw std::runtime_error("line 1: the header is not '" + std::string(kHeader) + "'");
  }
  std::vector<Quote> quotes;
  for (int number = 2; NextLine(lines, stream, line); ++number) {
    if (line.empty()) continue;
    try {
      quotes.push_back(ReadLine(line));
    } catch (const std::runtime_error& error) {
      throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
    }
  }
  if (quotes.empty()) throw std::runtime_error("there is no day in the file");
  return quotes;
}
