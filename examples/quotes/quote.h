/// One trading day of a price history, and the identifiers of its fields.
#ifndef WQDATA_EXAMPLES_QUOTES_QUOTE_H_
#define WQDATA_EXAMPLES_QUOTES_QUOTE_H_

#include <array>
#include <cstdio>
#include <string>

#include <wqdata/types.h>
#include <wqdata/values/date.h>
#include <wqdata/values/fixptnum.h>

/// The field identifiers of a record of one day.
inline constexpr FID kDateField = 1;
inline constexpr FID kOpenField = 10;  ///< prices in points of the index
inline constexpr FID kHighField = 11;
inline constexpr FID kLowField = 12;
inline constexpr FID kCloseField = 13;
inline constexpr FID kAdjCloseField = 14;  ///< close, adjusted for dividends and splits
inline constexpr FID kVolumeField = 20;    ///< shares traded, a whole number

/// Those of a record of one month.
inline constexpr FID kMonthField = 30;  ///< its first day of trading
inline constexpr FID kVolumesField =
    31;  ///< the volumes of its days, missing ones as MISSING_DOUBLE

inline const wqd::CFixPtNum kMissingPrice(MISSING_LONG, 0);

/// The values of one day; each is missing until it is set. A day's volume passes the range of 32
/// bits, so it is a double, which is exact below 2^53.
struct Quote {
  wqd::CZulDate date;
  wqd::CFixPtNum open = kMissingPrice;
  wqd::CFixPtNum high = kMissingPrice;
  wqd::CFixPtNum low = kMissingPrice;
  wqd::CFixPtNum close = kMissingPrice;
  wqd::CFixPtNum adjClose = kMissingPrice;
  double volume = MISSING_DOUBLE;
};

/// Ties an identifier to its price in `Quote`.
struct PriceField {
  FID id;
  const char* name;
  wqd::CFixPtNum Quote::*price;
};

/// The prices, in the order of the price file.
inline constexpr std::array<PriceField, 5> kPriceFields = {{
    {kOpenField, "open", &Quote::open},
    {kHighField, "high", &Quote::high},
    {kLowField, "low", &Quote::low},
    {kCloseField, "close", &Quote::close},
    {kAdjCloseField, "adjclose", &Quote::adjClose},
}};

/// The date, the prices and the volume.
inline constexpr std::size_t kFieldsPerQuote = kPriceFields.size() + 2;

/// "2000-01-03", as the price file writes a date.
inline std::string DateText(const wqd::CZulDate& date) {
  char text[40];  // the widest numbers that a date may hold fit in
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", date.Year(), date.Month(), date.Day());
  return text;
}

/// The price in the notation of its base code, "N/A" for a missing one.
inline std::string PriceText(const wqd::CFixPtNum& price) {
  char text[24];
  price.Print(text, sizeof text);
  return text;
}

#endif  // WQDATA_EXAMPLES_QUOTES_QUOTE_H_
