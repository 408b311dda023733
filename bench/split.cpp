// Delimited text into fields, plain and quoted, and pairs of identifier and value out of a block.
#include <csv.h>
#include <fmt/format.h>
#include <wqdata/textsupport/myparser.h>

#include <array>
#include <charconv>
#include <cstring>
#include <utility>

#include "ours.h"

using namespace wqd_bench;

namespace {

std::uint64_t sum_of(const std::string& field) {
  return field.empty() ? 1 : digest(field.data(), field.size());
}

std::array<std::string, kFieldsOfRow> fields_of(const Row& row) {
  const auto [day, month, year] = row.date;
  return {std::to_string(row.number),
          std::to_string(row.small),
          fmt::format("{:.4f}", row.real),
          std::to_string(row.price),
          fmt::format("{}/{}/{}", month, day, year),
          std::to_string(row.time.minutes),
          row.text,
          std::to_string(row.error)};
}

/// Lines of eight fields, with `quote` around each.
std::string lines(const std::string& quote) {
  std::string text;
  for (const Row& row : rows()) {
    for (const std::string& field : fields_of(row)) text += quote + field + quote + ',';
    text.back() = '\n';
  }
  text.pop_back();
  return text;
}

std::uint64_t sum_of_lines() {
  std::uint64_t sum = 0;
  for (const Row& row : rows()) {
    for (const std::string& field : fields_of(row)) sum += sum_of(field);
  }
  return sum;
}

std::uint64_t split_by_parser(const std::string& text) {
  std::uint64_t sum = 0;
  wqd::CMyParser parser(text.c_str(), ",\n");
  for (std::string field; parser.NextField(field);) sum += sum_of(field);
  return sum;
}

/// The loop that a program would write itself: to the next delimiter, and quotes off.
std::uint64_t split_by_memchr(const std::string& text) {
  std::uint64_t sum = 0;
  std::string field;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at <= end) {
    const void* const line = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
    const char* const lineEnd = line != nullptr ? static_cast<const char*>(line) : end;
    while (at <= lineEnd) {
      const void* const comma = std::memchr(at, ',', static_cast<std::size_t>(lineEnd - at));
      const char* const fieldEnd = comma != nullptr ? static_cast<const char*>(comma) : lineEnd;
      const bool quoted = fieldEnd - at >= 2 && *at == '"' && fieldEnd[-1] == '"';
      field.assign(at + quoted, fieldEnd - quoted);
      sum += sum_of(field);
      at = fieldEnd + 1;
    }
  }
  return sum;
}

std::uint64_t split_by_libcsv(const std::string& text) {
  csv_parser parser;
  csv_init(&parser, CSV_APPEND_NULL);
  std::uint64_t sum = 0;
  const auto take = [](void* field, std::size_t size, void* to) {
    *static_cast<std::uint64_t*>(to) +=
        size == 0 ? 1 : digest(static_cast<const char*>(field), size);
  };
  csv_parse(&parser, text.data(), text.size(), take, nullptr, &sum);
  csv_fini(&parser, take, nullptr, &sum);
  csv_free(&parser);
  return sum;
}

void register_split(const std::string& workload, const std::string& quote) {
  const std::string& text = *new std::string(lines(quote));
  const std::uint64_t sum = sum_of_lines();
  const auto add = [&](const char* name, std::uint64_t (*split)(const std::string&)) {
    series(workload + name, rows().size() * kFieldsOfRow, split(text) == sum,
           [split, &text] { return split(text); });
  };
  add("/wqdata", split_by_parser);
  add("/memchr", split_by_memchr);
  add("/libcsv", split_by_libcsv);
}

using Pair = std::pair<int, std::string>;

std::array<Pair, 4> pairs_of(const Row& row) {
  return {Pair(22, fmt::format("{:.4f}", row.real)), Pair(32, std::to_string(row.number)),
          Pair(40, row.text), Pair(41, std::to_string(row.small))};
}

/// A line of pairs "identifier tab value tab ..." for each record.
std::string lines_of_pairs() {
  std::string text;
  for (const Row& row : rows()) {
    for (const auto& [id, value] : pairs_of(row)) text += fmt::format("{}\t{}\t", id, value);
    text.back() = '\n';
  }
  text.pop_back();
  return text;
}

std::uint64_t sum_of_pairs() {
  std::uint64_t sum = 0;
  for (const Row& row : rows()) {
    for (const auto& [id, value] : pairs_of(row)) sum += static_cast<unsigned>(id) + sum_of(value);
  }
  return sum;
}

std::uint64_t walk_pairs(wqd::CDataBlock& block) {
  std::uint64_t sum = 0;
  wqd::CDataItem item;
  for (bool more = block.FirstRecord() && block.FirstField(); more; more = block.NextField()) {
    if (!block.GetCurrentField(&item)) continue;
    sum += item.GetId() + digest(item.GetString(), static_cast<std::size_t>(item.GetSize()) - 1);
  }
  return sum;
}

std::uint64_t walk_by_memchr(const std::string& text) {
  std::uint64_t sum = 0;
  std::string value;
  const char* at = text.data();
  const char* const end = at + text.size();
  const auto token_end = [end](const char* from, char delimiter) {
    const void* const found = std::memchr(from, delimiter, static_cast<std::size_t>(end - from));
    return found != nullptr ? static_cast<const char*>(found) : end;
  };
  while (at < end) {
    const char* const lineEnd = token_end(at, '\n');
    while (at < lineEnd) {
      int id = 0;
      at = std::from_chars(at, lineEnd, id).ptr + 1;
      const char* const valueEnd = std::min(token_end(at, '\t'), lineEnd);
      value.assign(at, valueEnd);
      sum += static_cast<std::uint64_t>(id) + digest(value.data(), value.size());
      at = valueEnd + 1;
    }
    at = lineEnd + 1;
  }
  return sum;
}

void register_pairs() {
  const std::string workload = "Walk pairs of wrapped text";
  const std::size_t items = rows().size() * 4;
  const std::uint64_t sum = sum_of_pairs();
  std::string& text = *new std::string(lines_of_pairs());
  wqd::CDataBlock& block = *wqd::CDataBlock::NewDataBlock(TEXT, text.data(), 0);
  series(workload + "/wqdata", items, walk_pairs(block) == sum,
         [&block] { return walk_pairs(block); });
  series(workload + "/memchr, from_chars", items, walk_by_memchr(text) == sum,
         [&text] { return walk_by_memchr(text); });
}

}  // namespace

int main(int argc, char** argv) {
  register_split("Split plain CSV", "");
  register_split("Split quoted CSV", "\"");
  register_pairs();
  return run_benchmarks(argc, argv);
}
