/// A price history as records of items, and what blocks make of it.
#ifndef WQDATA_EXAMPLES_QUOTES_RECORDS_H_
#define WQDATA_EXAMPLES_QUOTES_RECORDS_H_

#include <string>
#include <vector>

#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>

#include "quote.h"

using Record = std::vector<wqd::CDataItem>;

/// A record for each day, in the order of `quotes`: the date, the prices and the volume. Behind the
/// last day of each month stands one for the month: the date of its first day, and the closes of
/// its days as a vector.
std::vector<Record> MakeRecords(const std::vector<Quote>& quotes);

/// A block of `format` with these records. Throws std::runtime_error if it can't take them, as a
/// binary one of more than 65535.
wqd::DataBlockPtr BuildBlock(cf_id format, std::vector<Record>& records);

/// A new block of `format` with the contents of `source`. Throws std::runtime_error if it can't
/// take them.
wqd::DataBlockPtr ConvertBlock(cf_id format, wqd::CDataBlock& source);

/// Compares the fields of a binary block with `records`, item by item: identifier, type and value,
/// of a price the base code too. What stands behind the fields of a record must be the missing
/// fields of identifier 0 that ZUL3 needs. Returns the first difference, or nothing.
std::string FindDifference(wqd::CDataBlock& block, std::vector<Record>& records);

/// Compares the lines of a CSV block, each of `width` values, with `records`, value by value: what
/// is read from a line is compared as the type that the record has. A record with a vector has a
/// line for each element. Returns the first difference, or nothing.
std::string FindTextDifference(const char* text, std::size_t width, std::vector<Record>& records);

#endif  // WQDATA_EXAMPLES_QUOTES_RECORDS_H_
