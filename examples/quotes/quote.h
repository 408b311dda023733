/// One trading day of a price history, and the identifiers of its fields.
#ifndef WQDATA_EXAMPLES_QUOTES_QUOTE_H_
#define WQDATA_EXAMPLES_QUOTES_QUOTE_H_

#include <array>
#include <optional>
#include <string>

#include <wqdata/types.h>

/// The field identifiers of a record of one day.
inline constexpr FID kDateField = 1;   ///< "2000-01-03"
inline constexpr FID kOpenField = 10;  ///< prices in points of the index
inline constexpr FID kHighField = 11;
inline constexpr FID kLowField = 12;
inline constexpr FID kCloseField = 13;
inline constexpr FID kAdjCloseField = 14;  ///< close, adjusted for dividends and splits
inline constexpr FID kVolumeField = 20;    ///< shares traded, a whole number

/// The values of one day; a missing one is empty. A day's volume passes the range of 32 bits, so
/// it is a double as well, which is exact below 2^53.
struct Quote {
  std::string date;
  std::optional<double> open;
  std::optional<double> high;
  std::optional<double> low;
  std::optional<double> close;
  std::optional<double> adjClose;
  std::optional<double> volume;

  bool operator==(const Quote&) const = default;
};

/// Ties an identifier to its place in `Quote`.
struct NumberField {
  FID id;
  const char* name;
  std::optional<double> Quote::*value;
};

/// The fields behind the date, in the order of the price file.
inline constexpr std::array<NumberField, 6> kNumberFields = {{
    {kOpenField, "open", &Quote::open},
    {kHighField, "high", &Quote::high},
    {kLowField, "low", &Quote::low},
    {kCloseField, "close", &Quote::close},
    {kAdjCloseField, "adjclose", &Quote::adjClose},
    {kVolumeField, "volume", &Quote::volume},
}};

/// The date and the numbers.
inline constexpr std::size_t kFieldsPerQuote = 1 + kNumberFields.size();

#endif  // WQDATA_EXAMPLES_QUOTES_QUOTE_H_
