/// Builds blocks of days and reads days from blocks.
#ifndef WQDATA_EXAMPLES_QUOTES_QUOTEBLOCKS_H_
#define WQDATA_EXAMPLES_QUOTES_QUOTEBLOCKS_H_

#include <vector>

#include <wqdata/blocks/datablock.h>

#include "quote.h"

/// What stands in a record: values alone, or each behind a field with its identifier, as a feed of
/// text sends them. A text block drops identifiers, so for pairs they are written as values; a
/// binary one keeps those that the values are added under, and needs no pairs.
enum class Layout { kValues, kPairs };

/// A closed block of `format` with a record for each day. Missing values become "N/A" in text and
/// error fields in a binary block. Throws std::runtime_error if the block can't take them, a binary
/// one of more than 65535 days.
wqd::DataBlockPtr BuildQuotes(cf_id format, Layout layout, const std::vector<Quote>& quotes);

/// What a walk over a block found.
struct ReceivedQuotes {
  std::vector<Quote> quotes;
  int missing = 0;  ///< values that arrived as missing
};

/// Reads a day from each record of `block`, by identifier: the order of the fields is free, and
/// unknown fields are passed over. A record has at most `kFieldsPerQuote` fields.
ReceivedQuotes ReceiveQuotes(wqd::CDataBlock& block);

/// The same for the `size` bytes of a block of `format` at `data`, which stay the caller's; text is
/// NUL-ended. Throws std::runtime_error if there is no memory for the block.
ReceivedQuotes ReceiveQuotes(cf_id format, void* data, int size);

#endif  // WQDATA_EXAMPLES_QUOTES_QUOTEBLOCKS_H_
