#include "records.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include <wqdata/textsupport/myparser.h>

namespace {

Record MakeDay(const Quote& quote) {
  Record record;
  record.emplace_back(kDateField, quote.date);
  for (const PriceField& field : kPriceFields) record.emplace_back(field.id, quote.*field.price);
  record.emplace_back(kVolumeField, quote.volume);
  return record;
}

Record MakeMonth(const wqd::CZulDate& firstDay, const std::vector<double>& volumes) {
  Record record;
  record.emplace_back(kMonthField, firstDay);
  record.emplace_back().SetVector(kVolumesField, volumes.data(),
                                  static_cast<std::uint32_t>(volumes.size()));
  return record;
}

bool SameMonth(const wqd::CZulDate& a, const wqd::CZulDate& b) {
  return a.Year() == b.Year() && a.Month() == b.Month();
}

bool IsVector(const wqd::CDataItem& item) { return item.GetType() == TYPE_VECTOR_DOUBLE; }

const double* Elements(wqd::CDataItem& vector) {
  return static_cast<const double*>(vector.GetVectorPtr());
}

/// The value of an item in a line: of a vector, an element.
wqd::CDataItem ValueIn(std::size_t row, wqd::CDataItem& item) {
  return IsVector(item) ? wqd::CDataItem(item.GetId(), Elements(item)[row]) : item;
}

/// Missing values are equal to each other here, whereas items say that nothing can be said.
bool SameValue(wqd::CDataItem& expected, wqd::CDataItem& found) {
  if (IsVector(expected) && IsVector(found)) {
    return std::equal(Elements(expected), Elements(expected) + expected.GetSize(), Elements(found),
                      Elements(found) + found.GetSize());
  }
  return expected == found || (expected.IsNull() && found.IsNull());
}

bool SameItem(wqd::CDataItem& expected, wqd::CDataItem& found) {
  return expected.GetId() == found.GetId() && expected.GetType() == found.GetType() &&
         SameValue(expected, found) &&
         (expected.GetType() != TYPE_LPACK || expected.GetBaseCode() == found.GetBaseCode());
}

std::string Shown(wqd::CDataItem item) {
  std::string text = IsVector(item) ? "" : item.GetString();
  for (int i = 0; IsVector(item) && i < item.GetSize(); ++i) {
    text += (i > 0 ? " " : "") + std::string(wqd::CDataItem(FID{0}, Elements(item)[i]).GetString());
  }
  return "field " + std::to_string(item.GetId()) + " '" + text + "'";
}

std::string Difference(std::size_t record, const std::string& expected, const std::string& found) {
  return "record " + std::to_string(record + 1) + ": " + expected + " expected, " + found +
         " found";
}

/// The fields of the current record.
Record ReadRecord(wqd::CDataBlock& block) {
  Record record;
  for (bool more = block.FirstField(); more; more = block.NextField()) {
    if (!block.GetCurrentField(&record.emplace_back())) break;
  }
  return record;
}

std::string FindDifference(std::size_t number, Record& expected, Record& found) {
  const wqd::CDataItem nothing;
  for (std::size_t i = 0; i < std::max(expected.size(), found.size()); ++i) {
    wqd::CDataItem wanted = i < expected.size() ? expected[i] : nothing;
    wqd::CDataItem item = i < found.size() ? found[i] : wqd::CDataItem(FID{0}, "no field", -1);
    const bool padding = i >= expected.size() && item.IsNull() && item.GetId() == 0;
    if (!padding && !SameItem(wanted, item)) return Difference(number, Shown(wanted), Shown(item));
  }
  return "";
}

std::size_t LinesOf(const Record& record) {
  std::size_t lines = 1;
  for (const wqd::CDataItem& item : record) {
    if (IsVector(item)) lines = static_cast<std::size_t>(item.GetSize());
  }
  return lines;
}

}  // namespace

std::vector<Record> MakeRecords(const std::vector<Quote>& quotes) {
  std::vector<Record> records;
  std::vector<double> volumes;
  for (auto quote = quotes.begin(); quote != quotes.end(); ++quote) {
    records.push_back(MakeDay(*quote));
    volumes.push_back(quote->volume);
    const auto next = quote + 1;
    if (next != quotes.end() && SameMonth(quote->date, next->date)) continue;
    const auto firstDay = next - static_cast<std::ptrdiff_t>(volumes.size());
    records.push_back(MakeMonth(firstDay->date, volumes));
    volumes.clear();
  }
  return records;
}

wqd::DataBlockPtr BuildBlock(cf_id format, std::vector<Record>& records) {
  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(format));
  bool done = block != nullptr;
  for (Record& record : records) {
    done = done && block->StartRecord();
    for (wqd::CDataItem& item : record) done = done && block->Add(item);
    done = done && block->EndRecord();
  }
  if (!done) throw std::runtime_error(std::string("the days are too many for ") + CfName(format));
  return block;
}

wqd::DataBlockPtr ConvertBlock(cf_id format, wqd::CDataBlock& source) {
  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(format));
  if (block == nullptr || !block->Add(&source)) {
    throw std::runtime_error(std::string("cannot convert into ") + CfName(format));
  }
  return block;
}

std::string FindDifference(wqd::CDataBlock& block, std::vector<Record>& records) {
  std::size_t number = 0;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord(), ++number) {
    Record found = ReadRecord(block);
    if (number == records.size()) return Difference(number, "no record", Shown(found.front()));
    std::string difference = FindDifference(number, records[number], found);
    if (!difference.empty()) return difference;
  }
  return number == records.size() ? "" : Difference(number, "a record", "none");
}

std::string FindTextDifference(const char* text, std::size_t width, std::vector<Record>& records) {
  wqd::CMyParser parser(text, ",\n");
  std::string value;
  for (std::size_t number = 0; number < records.size(); ++number) {
    Record& record = records[number];
    for (std::size_t row = 0; row < LinesOf(record); ++row) {
      for (std::size_t i = 0; i < width; ++i) {
        wqd::CDataItem expected = i < record.size() ? ValueIn(row, record[i]) : wqd::CDataItem();
        if (!parser.NextField(value)) return Difference(number, Shown(expected), "no value");
        wqd::CDataItem found(expected.GetId(), value.c_str(), -1);
        if (!SameValue(expected, found)) return Difference(number, Shown(expected), Shown(found));
      }
    }
  }
  // Behind the last line end there is an empty value, and nothing behind that.
  const bool ended = parser.NextField(value) && value.empty() && !parser.NextField(value);
  return ended ? "" : Difference(records.size(), "no line", "one");
}
