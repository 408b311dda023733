/// Reads a price file.
#ifndef WQDATA_EXAMPLES_QUOTES_QUOTEFILE_H_
#define WQDATA_EXAMPLES_QUOTES_QUOTEFILE_H_

#include <cstdio>
#include <vector>

#include "quote.h"

/// Reads the days of a price file from `stream`, which stays open and the caller's. The file is a
/// header line, "date,open,high,low,close,adjclose,volume", and a line for each day:
///
/// - The date is a day of the calendar, written "2000-01-03".
/// - A number that is empty or "N/A" is missing. A volume is whole, from 0 to below 2^53.
/// - Blank lines are skipped.
///
/// Throws std::runtime_error, "line 7: …" where a line is to blame, for anything else and for a
/// file without a day.
std::vector<Quote> ReadQuotes(std::FILE* stream);

#endif  // WQDATA_EXAMPLES_QUOTES_QUOTEFILE_H_
