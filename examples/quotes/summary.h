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
/// Prices are the same if long price and base code are, beyond the tolerance of their `==`. But of
/// a price in the floating code 110 a text shows another code: if `received` came as TEXT or CSV,
/// which `format` tells, such a price counts by its number alone.
std::size_t CountEqualValues(const std::vector<Quote>& sent, const std::vector<Quote>& received,
                             cf_id format);

#endif  // WQDATA_EXAMPLES_QUOTES_SUMMARY_H_
