// Delimited text into fields, plain and quoted, and pairs of identifier and value out of a block.
#include <csv.h>
#include <fmt/format.h>
#include <wqdata/textsupport/myparser.h>

#include <charconv>
#include <cstring>

#include "ours.h"

using namespace wqd_bench;

namespace {

/// Lines of eight fields; `quote` stands around each text.
const std::string& lines(const std::string& quote) {
  static std::string texts[2];
  std::string& text = texts[quote.empty() ? 0 : 1];
  if (!text.empty()) return text;
  for (const Row& row : rows()) {
    text += fmt::format("{},{},{:.4f},{},{}/{}/{},{},{}{}{},{}\n", row.number, row.small, row.real,
                        row.price, row.date.month, row.date.day, row.date.year, row.time.minutes,
                        quote, row.text, quote, row.error);
  }
  text.pop_back();
  return text;
}

std::uint64_t sum_of(const std::string& field) {
  return field.empty() ? 1 : digest(field.data(), field.size());
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

void register_split(const std::string& workload, const std::string& text) {
  const std::uint64_t sum = split_by_memchr(text);
  const auto add = [&](const char* name, std::uint64_t (*split)(const std::string&)) {
    series(workload + name, rows().size() * 8, split(text) == sum,
           [split, &text] { return split(text); });
  };
  add("/wqdata", split_by_parser);
  add("/memchr", split_by_memchr);
  add("/libcsv", split_by_libcsv);
}

/// A line of pairs "identifier tab value tab ..." for each record.
const std::string& pairs() {
  static std::string text;
  if (!text.empty()) return text;
  for (const Row& row : rows()) {
    text += fmt::format("22\t{:.4f}\t32\t{}\t40\t{}\t41\t{}\n", row.real, row.number, row.text,
                        row.small);
  }
  text.pop_back();
  return text;
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
  const std::uint64_t sum = walk_by_memchr(pairs());
  static std::string bytes = pairs();
  wqd::CDataBlock& block = *wqd::CDataBlock::NewDataBlock(TEXT, bytes.data(), 0);
  series(workload + "/wqdata", items, walk_pairs(block) == sum, [&] { return walk_pairs(block); });
  series(workload + "/memchr, from_chars", items, true, [] { return walk_by_memchr(pairs()); });
}

}  // namespace

int main(int argc, char** argv) {
  register_split("Split plain CSV", lines(""));
  register_split("Split quoted CSV", lines("\""));
  register_pairs();
  return run_benchmarks(argc, argv);
}
