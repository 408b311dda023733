/// Reads a price file.
#ifndef WQDATA_EXAMPLES_QUOTES_QUOTEFILE_H_
#define WQDATA_EXAMPLES_QUOTES_QUOTEFILE_H_

#include <cstdio>
#include <vector>

#include "quote.h"

/// The days of a price file.
struct FileQuotes {
  std::vector<Quote> quotes;
  int rounded = 0;  ///< prices with more digits than a price can hold, which were rounded
};

/// Reads the days of a price file from `stream`, which stays open and the caller's. The file is a
/// header line, "date,open,high,low,close,adjclose,volume", and a line for each day:
///
/// - The date is a day of the years 1970 to 2035, written "2000-01-03".
/// - A price is written in any notation that `CFixPtNum` reads, and takes the base code of it. One
///   that the notation's scale can't hold in 32 bits is rounded to 8 digits.
/// - A volume is whole, from 0 to below 2^53.
/// - A price or volume that is empty or "N/A" is missing.
/// - Blank lines are skipped.
///
/// Throws std::runtime_error, "line 7: …" where a line is to blame, for anything else and for a
/// file without a day.
FileQuotes ReadQuotes(std::FILE* stream);

#endif  // WQDATA_EXAMPLES_QUOTES_QUOTEFILE_H_
