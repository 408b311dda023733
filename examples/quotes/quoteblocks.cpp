#include "quoteblocks.h"

#include <charconv>
#include <cstdint>
#include <stdexcept>

#include <wqdata/items/dataitem.h>

namespace {

bool AddId(wqd::CDataBlock& block, Layout layout, FID id) {
  return layout == Layout::kValues || block.Add(id, std::int32_t{id});
}

bool AddNumber(wqd::CDataBlock& block, FID id, const std::optional<double>& number) {
  return number ? block.Add(id, NumberText(*number).c_str()) : block.Add(id, MISSING_DOUBLE);
}

bool AddQuote(wqd::CDataBlock& block, Layout layout, const Quote& quote) {
  bool done = block.StartRecord() && AddId(block, layout, kDateField) &&
              block.Add(kDateField, quote.date.c_str());
  for (const NumberField& field : kNumberFields) {
    done = done && AddId(block, layout, field.id) && AddNumber(block, field.id, quote.*field.value);
  }
  return done && block.EndRecord();
}

void Store(const wqd::CDataItem& item, Quote& quote) {
  if (item.GetId() == kDateField) quote.date = item.GetString();
  for (const NumberField& field : kNumberFields) {
    if (item.GetId() == field.id) quote.*field.value = item.GetFloat();
  }
}

/// Stops after the fields of one day: in a text, a walk of fields does not end with the line.
Quote ReceiveQuote(wqd::CDataBlock& block, int& missing) {
  Quote quote;
  wqd::CDataItem item;
  bool more = block.FirstField();
  for (std::size_t i = 0; more && i < kFieldsPerQuote; ++i) {
    if (!block.GetCurrentField(&item)) break;
    if (item.IsNull()) {
      ++missing;
    } else {
      Store(item, quote);
    }
    more = block.NextField();
  }
  return quote;
}

}  // namespace

std::string NumberText(double number) {
  char text[400];  // the longest double has some 330 characters
  const auto [end, error] =
      std::to_chars(text, text + sizeof text, number, std::chars_format::fixed);
  return error == std::errc() ? std::string(text, end) : std::string();
}

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
