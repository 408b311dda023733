/// What there is to say about a price history and its way through a block.
#ifndef WQDATA_EXAMPLES_QUOTES_SUMMARY_H_
#define WQDATA_EXAMPLES_QUOTES_SUMMARY_H_

#include <cstdio>
#include <vector>

#include "quote.h"

/// Writes the number of days, the first and the last, and the extreme values with the first day
/// that had them, to `out`. Nothing but the number for no days.
void PrintHistory(std::FILE* out, const std::vector<Quote>& quotes);

/// The number of values, dates and missing ones included, that are the same in both, day by day.
/// Prices are the same to the last digit, beyond the tolerance of their `==`, and of one base code;
/// but of a price in the floating code 110 of `a` the text, and so `b`, may show another code.
std::size_t CountEqualValues(const std::vector<Quote>& a, const std::vector<Quote>& b);

#endif  // WQDATA_EXAMPLES_QUOTES_SUMMARY_H_
