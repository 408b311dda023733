// Numbers into text, fields into lines of text, and numbers out of texts.
#include <fast_float/fast_float.h>
#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "ours.h"

using namespace wqd_bench;

namespace {

constexpr std::size_t kRoom = 400;  // for the largest double

std::uint64_t sum_of_chars(const char* text, std::size_t length) {
  return digest(text, length) + static_cast<unsigned char>(text[0]);
}

/// Adds up what `print` makes of each value: a text in the buffer that it is given, and its length.
template <typename Value, typename Print>
std::uint64_t print_all(const std::vector<Value>& values, Print print) {
  std::uint64_t sum = 0;
  char buffer[kRoom];
  for (const Value value : values) {
    const std::size_t length = print(value, buffer);
    sum += sum_of_chars(buffer, length);
  }
  return sum;
}

template <typename Value, typename Print>
void register_print(const std::string& name, const std::vector<Value>& values, std::uint64_t sum,
                    Print print) {
  series(name, values.size(), print_all(values, print) == sum,
         [&values, print] { return print_all(values, print); });
}

/// The values are multiplied by `scale`.
void register_doubles(const std::string& workload, double scale) {
  auto& values = *new std::vector<double>(column(&Row::real));
  for (double& value : values) value *= scale;
  const auto by_snprintf = [](double value, char* buffer) {
    return static_cast<std::size_t>(std::snprintf(buffer, kRoom, "%.4f", value));
  };
  const std::uint64_t sum = print_all(values, by_snprintf);
  wqd::CDataItem item;
  register_print(workload + "/wqdata", values, sum, [item](double value, char* buffer) mutable {
    item.Set(kReal, value);
    return static_cast<std::size_t>(item.Print(buffer, kRoom));
  });
  register_print(workload + "/std::to_chars", values, sum, [](double value, char* buffer) {
    const auto end = std::to_chars(buffer, buffer + kRoom, value, std::chars_format::fixed, 4).ptr;
    return static_cast<std::size_t>(end - buffer);
  });
  register_print(workload + "/fmt", values, sum, [](double value, char* buffer) {
    return static_cast<std::size_t>(fmt::format_to(buffer, FMT_COMPILE("{:.4f}"), value) - buffer);
  });
  register_print(workload + "/snprintf", values, sum, by_snprintf);
}

void register_longs() {
  const std::string workload = "Print longs";
  static const std::vector<std::int32_t> values = column(&Row::number);
  const std::uint64_t sum = print_all(values, [](std::int32_t value, char* buffer) {
    return static_cast<std::size_t>(std::snprintf(buffer, kRoom, "%d", value));
  });
  wqd::CDataItem item;
  register_print(workload + "/wqdata", values, sum,
                 [item](std::int32_t value, char* buffer) mutable {
                   item.Set(kNumber, value);
                   return static_cast<std::size_t>(item.Print(buffer, kRoom));
                 });
  register_print(workload + "/std::to_chars", values, sum, [](std::int32_t value, char* buffer) {
    return static_cast<std::size_t>(std::to_chars(buffer, buffer + kRoom, value).ptr - buffer);
  });
  register_print(workload + "/fmt", values, sum, [](std::int32_t value, char* buffer) {
    return static_cast<std::size_t>(fmt::format_to(buffer, FMT_COMPILE("{}"), value) - buffer);
  });
}

// A line of CSV has five fields: long, short, double, text, and another double.
constexpr std::size_t kFieldsOfLine = 5;
constexpr std::size_t kRoomOfLine = 80;

/// Lines by way of `line`, which writes one at a place and tells where it ends.
template <typename Line>
std::uint64_t write_lines(char* buffer, Line line) {
  char* at = buffer;
  for (const Row& row : rows()) at = line(row, at);
  return static_cast<std::uint64_t>(at - buffer);
}

char* line_by_to_chars(const Row& row, char* at) {
  char* const end = at + kRoomOfLine;
  at = std::to_chars(at, end, row.number).ptr;
  *at++ = ',';
  at = std::to_chars(at, end, row.small).ptr;
  *at++ = ',';
  at = std::to_chars(at, end, row.real, std::chars_format::fixed, 4).ptr;
  *at++ = ',';
  at = static_cast<char*>(std::memcpy(at, row.text.data(), row.text.size())) + row.text.size();
  *at++ = ',';
  at = std::to_chars(at, end, row.real / 2, std::chars_format::fixed, 4).ptr;
  *at++ = '\n';
  return at;
}

char* line_by_fmt(const Row& row, char* at) {
  return fmt::format_to(at, FMT_COMPILE("{},{},{:.4f},{},{:.4f}\n"), row.number, row.small,
                        row.real, row.text, row.real / 2);
}

char* line_by_snprintf(const Row& row, char* at) {
  return at + std::snprintf(at, kRoomOfLine, "%d,%d,%.4f,%s,%.4f\n", row.number, row.small,
                            row.real, row.text.c_str(), row.real / 2);
}

void add_fields_of_line(wqd::CDataBlock& block, const Row& row) {
  block.Add(kNumber, row.number);
  block.Add(kSmall, row.small);
  block.Add(kReal, row.real);
  block.Add(kText, row.text.c_str());
  block.Add(kReal, row.real / 2);
}

wqd::DataBlockPtr lines_of_fields() {
  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(CSV));
  for (const Row& row : rows()) {
    block->StartRecord();
    add_fields_of_line(*block, row);
    block->EndRecord();
  }
  block->Close();
  return block;
}

wqd::DataBlockPtr lines_of_block(wqd::CDataBlock& source) {
  wqd::DataBlockPtr lines(wqd::CDataBlock::NewDataBlock(CSV));
  lines->Add(&source);
  return lines;
}

void register_peers_of_lines(const std::string& workload, const std::string& expected) {
  static std::vector<char> buffer(rows().size() * kRoomOfLine);
  const auto add = [&](const char* name, char* (*line)(const Row&, char*)) {
    const std::uint64_t size = write_lines(buffer.data(), line);
    series(workload + name, rows().size() * kFieldsOfLine,
           std::string(buffer.data(), size) == expected,
           [line] { return write_lines(buffer.data(), line); });
  };
  add("/std::to_chars", line_by_to_chars);
  add("/fmt", line_by_fmt);
  add("/snprintf", line_by_snprintf);
}

void register_lines() {
  const auto text_of = [](wqd::CDataBlock& block) {
    return std::string(static_cast<const char*>(block.GetData()));
  };
  std::string text(rows().size() * kRoomOfLine, ' ');
  text.resize(write_lines(text.data(), line_by_snprintf));
  const std::size_t items = rows().size() * kFieldsOfLine;
  const std::string fields = "CSV from fields", block = "CSV from a ZUL3 block";
  series(fields + "/wqdata", items, text_of(*lines_of_fields()) == text,
         [] { return lines_of_fields()->GetDataSize(); });
  register_peers_of_lines(fields, text);
  const auto make = [](auto use) { build(ZUL3, rows(), add_fields_of_line, use); };
  const Blocks& sources = *new Blocks(all_blocks(make));
  std::string all;
  for (const wqd::DataBlockPtr& source : sources) all += text_of(*lines_of_block(*source));
  series(block + "/wqdata", items, all == text, [&sources] {
    int bytes = 0;
    for (const wqd::DataBlockPtr& source : sources) bytes += lines_of_block(*source)->GetDataSize();
    return bytes;
  });
  register_peers_of_lines(block, text);
}

/// The doubles as texts. Items are large, and a program has few: data of another scale has no more
/// of them, and reads them over and over.
template <typename Format>
std::vector<std::string> number_texts(Format format) {
  const std::size_t count = std::min(rows().size(), std::size_t{10000});
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < count; ++i) texts.push_back(fmt::format(format, rows()[i].real));
  return texts;
}

template <typename Texts, typename Read>
double read_all(const Texts& texts, Read read) {
  double sum = 0;
  for (std::size_t i = 0; i < rows().size(); i += texts.size()) {
    for (const auto& text : texts) sum += read(text);
  }
  return sum;
}

template <typename Texts, typename Read>
void register_read(const std::string& name, double sum, const Texts& texts, Read read) {
  const std::size_t passes = (rows().size() + texts.size() - 1) / texts.size();
  series(name, passes * texts.size(), read_all(texts, read) == sum,
         [&texts, read] { return read_all(texts, read); });
}

void register_reads(const std::string& workload, const std::vector<std::string>& texts) {
  const double sum =
      read_all(texts, [](const std::string& text) { return std::strtod(text.c_str(), nullptr); });
  auto& items = *new std::vector<wqd::CDataItem>;
  for (const std::string& text : texts) items.emplace_back(kText, text.c_str(), -1);
  register_read(workload + "/wqdata", sum, items,
                [](const wqd::CDataItem& item) { return item.GetFloat(); });
  register_read(workload + "/fast_float", sum, texts, [](const std::string& text) {
    double value = 0;
    fast_float::from_chars(text.data(), text.data() + text.size(), value);
    return value;
  });
  register_read(workload + "/std::from_chars", sum, texts, [](const std::string& text) {
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
  });
}

}  // namespace

int main(int argc, char** argv) {
  static const auto texts_of_four_decimals = number_texts(FMT_COMPILE("{:.4f}"));
  static const auto texts_of_17_digits = number_texts(FMT_COMPILE("{:.17g}"));
  static const auto texts_with_exponents = number_texts(FMT_COMPILE("{:.3e}"));
  register_doubles("Print doubles as %.4f", 1);
  register_doubles("Print doubles above 4.5e11", 1e13);
  register_longs();
  register_lines();
  register_reads("Number from the text of an item", texts_of_four_decimals);
  register_reads("Number of 17 digits", texts_of_17_digits);
  register_reads("Number with an exponent", texts_with_exponents);
  return run_benchmarks(argc, argv);
}
