#include "quoteblocks.h"

#include <cstdint>
#include <stdexcept>
#include <string>

#include <wqdata/items/dataitem.h>

namespace {

template <typename T>
bool AddField(wqd::CDataBlock& block, Layout layout, FID id, const T& value) {
  return (layout == Layout::kValues || block.Add(id, std::int32_t{id})) && block.Add(id, value);
}

bool AddQuote(wqd::CDataBlock& block, Layout layout, const Quote& quote) {
  bool done = block.StartRecord() && AddField(block, layout, kDateField, quote.date);
  for (const PriceField& field : kPriceFields) {
    done = done && AddField(block, layout, field.id, quote.*field.price);
  }
  return done && AddField(block, layout, kVolumeField, quote.volume) && block.EndRecord();
}

/// The accessors turn a missing value into the marker of their own type.
void Store(const wqd::CDataItem& item, Quote& quote) {
  if (item.GetId() == kDateField) quote.date = item.GetDate();
  if (item.GetId() == kVolumeField) quote.volume = item.GetFloat();
  for (const PriceField& field : kPriceFields) {
    if (item.GetId() == field.id) quote.*field.price = item.GetFPN();
  }
}

/// Stops after the fields of one day: in a text, a walk of fields does not end with the line.
Quote ReceiveQuote(wqd::CDataBlock& block, int& missing) {
  Quote quote;
  wqd::CDataItem item;
  bool more = block.FirstField();
  for (std::size_t i = 0; more && i < kFieldsPerQuote; ++i) {
    if (!block.GetCurrentField(&item)) break;
    if (item.IsNull()) ++missing;
    Store(item, quote);
    more = block.NextField();
  }
  return quote;
}

}  // namespace

wqd::DataBlockPtr BuildQuotes(cf_id format, Layout layout, const std::vector<Quote>& quotes) {
  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(format));
  bool done = block != nullptr;
  for (const Quote& quote : quotes) done = done && AddQuote(*block, layout, quote);
  if (!done || !block->Close()) {
    throw std::runtime_error(std::string("cannot build the block of ") + CfName(format));
  }
  return block;
}

ReceivedQuotes ReceiveQuotes(wqd::CDataBlock& block) {
  ReceivedQuotes received;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    received.quotes.push_back(ReceiveQuote(block, received.missing));
  }
  return received;
}

ReceivedQuotes ReceiveQuotes(cf_id format, void* data, int size) {
  const wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(format, data, size));
  if (block == nullptr) throw std::runtime_error(std::string("cannot wrap ") + CfName(format));
  return ReceiveQuotes(*block);
}
