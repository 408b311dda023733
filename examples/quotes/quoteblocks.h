/// Builds blocks of days and reads days from blocks.
#ifndef WQDATA_EXAMPLES_QUOTES_QUOTEBLOCKS_H_
#define WQDATA_EXAMPLES_QUOTES_QUOTEBLOCKS_H_

#include <vector>

#include <wqdata/blocks/datablock.h>

#include "quote.h"

/// What stands in a line: values alone, as in a table, or each behind its identifier, as a feed
/// sends them. A text block drops identifiers, so for pairs they are written as values.
enum class Layout { kValues, kPairs };

/// A closed block of `format` with a record for each day. Missing values become "N/A". Throws
/// std::runtime_error if the block can't take them.
wqd::DataBlockPtr BuildQuotes(cf_id format, Layout layout, const std::vector<Quote>& quotes);

/// What a walk over a block found.
struct ReceivedQuotes {
  std::vector<Quote> quotes;
  int missing = 0;  ///< values that arrived as missing
};

/// Reads a day from each record of `block`, by identifier: the order of the fields is free, and
/// unknown fields are passed over. A record has at most `kFieldsPerQuote` fields.
ReceivedQuotes ReceiveQuotes(wqd::CDataBlock& block);

#endif  // WQDATA_EXAMPLES_QUOTES_QUOTEBLOCKS_H_
