/// What there is to say about a price history.
#ifndef WQDATA_EXAMPLES_QUOTES_SUMMARY_H_
#define WQDATA_EXAMPLES_QUOTES_SUMMARY_H_

#include <cstdio>
#include <vector>

#include "quote.h"

/// Writes the number of days, the first and the last, and the extreme values with the first day
/// that had them, to `out`. Nothing but the number for no days.
void PrintHistory(std::FILE* out, const std::vector<Quote>& quotes);

#endif  // WQDATA_EXAMPLES_QUOTES_SUMMARY_H_
