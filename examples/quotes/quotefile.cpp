#include "quotefile.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include <wqdata/items/dataitem.h>
#include <wqdata/textsupport/myparser.h>

namespace {

constexpr std::string_view kHeader = "date,open,high,low,close,adjclose,volume";
constexpr std::size_t kKeptBytes = wqd::CMyParser::kFieldBufferSize - 1;
constexpr double kVolumeLimit = 9007199254740992.0;  // 2^53

bool IsMissingText(const std::string& text) { return text.empty() || text == "N/A"; }

/// `Scan` alone would take other orders, and anything behind the day.
wqd::CZulDate ReadDate(const std::string& text) {
  wqd::CZulDate date;
  if (!date.Scan(text.c_str()) || DateText(date) != text) {
    throw std::runtime_error("'" + text + "' is not a date");
  }
  return date;
}

wqd::CFixPtNum ReadPrice(const PriceField& field, const std::string& text) {
  if (IsMissingText(text)) return kMissingPrice;
  const wqd::CFixPtNum price(text.c_str());
  if (static_cast<std::int32_t>(price) == MISSING_LONG) {
    throw std::runtime_error(std::string(field.name) + " '" + text + "' is not a price");
  }
  return price;
}

/// A price that its text fits is the double nearest to the text, as is the text read as a number.
bool IsRounded(const wqd::CFixPtNum& price, const std::string& text) {
  const wqd::CDataItem number(FID{0}, text.c_str(), -1);
  return !IsMissingText(text) && number.GetFloat() != static_cast<double>(price);
}

double ReadVolume(const std::string& text) {
  if (IsMissingText(text)) return MISSING_DOUBLE;
  const char* const end = text.data() + text.size();
  double volume = -1;
  const auto [rest, error] = std::from_chars(text.data(), end, volume);
  if (error != std::errc() || rest != end || volume < 0 || !(volume < kVolumeLimit) ||
      volume != std::floor(volume)) {
    throw std::runtime_error("volume '" + text + "' is not a whole number from 0 to below 2^53");
  }
  return volume;
}

std::vector<std::string> SplitLine(const std::string& line) {
  std::vector<std::string> values;
  wqd::CMyParser parser(line.c_str(), ",");
  for (std::string value; parser.NextField(value);) values.push_back(value);
  return values;
}

void ReadLine(const std::string& line, FileQuotes& file) {
  if (line.size() >= kKeptBytes)
    throw std::runtime_error("the line is too long, or a quote is open");
  if (line.find('\n') != std::string::npos) throw std::runtime_error("a quote spans the line end");
  const std::vector<std::string> values = SplitLine(line);
  if (values.size() != kFieldsPerQuote) {
    throw std::runtime_error(std::to_string(values.size()) + " values instead of " +
                             std::to_string(kFieldsPerQuote));
  }
  Quote quote;
  quote.date = ReadDate(values.front());
  for (std::size_t i = 0; i < kPriceFields.size(); ++i) {
    const wqd::CFixPtNum price = ReadPrice(kPriceFields[i], values[i + 1]);
    if (IsRounded(price, values[i + 1])) ++file.rounded;
    quote.*kPriceFields[i].price = price;
  }
  quote.volume = ReadVolume(values.back());
  file.quotes.push_back(quote);
}

/// The parser takes a read error for the end of the file, so the stream is asked.
bool NextLine(wqd::CMyParser& lines, std::FILE* stream, std::string& line) {
  const bool found = lines.NextField(line);
  if (std::ferror(stream) != 0) throw std::runtime_error(std::strerror(errno));
  return found;
}

}  // namespace

FileQuotes ReadQuotes(std::FILE* stream) {
  wqd::CMyParser lines(stream, "\n");
  std::string line;
  if (!NextLine(lines, stream, line) || line != kHeader) {
    throw std::runtime_error("line 1: the header is not '" + std::string(kHeader) + "'");
  }
  FileQuotes file;
  for (int number = 2; NextLine(lines, stream, line); ++number) {
    if (line.empty()) continue;
    try {
      ReadLine(line, file);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
    }
  }
  if (file.quotes.empty()) throw std::runtime_error("there is no day in the file");
  return file;
}
