/// The bytes under data/, which are written out by hand, and what the tests that read them share.
#ifndef WQDATA_TESTS_GOLDEN_H_
#define WQDATA_TESTS_GOLDEN_H_

#include <charconv>
#include <map>
#include <sstream>

#include "fieldvalue.h"

namespace wqd_test {

/// An entry of a data file, whose head tells of the kinds.
struct Golden {
  std::string kind, name, value, bytes;
};

/// The bytes of the pairs of hexadecimal digits that a text begins with.
inline std::string BytesOfHex(const std::string& hex) {
  std::string bytes;
  std::istringstream in(hex);
  for (std::string pair; in >> pair && pair.size() == 2;) {
    if (pair.find_first_not_of("0123456789ABCDEF") != std::string::npos) break;
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
  }
  return bytes;
}

inline std::string Hex(const std::string& bytes) {
  std::string hex;
  for (const char byte : bytes) {
    hex += "0123456789ABCDEF"[byte >> 4 & 15];
    hex += "0123456789ABCDEF"[byte & 15];
    hex += ' ';
  }
  return hex;
}

inline std::vector<Golden> GoldenEntries(cf_id format) {
  const std::string path = WQDATA_SOURCE_DIR "/tests/data/";
  std::ifstream file(path + (format == ZUL3 ? "zul3.txt" : "zul4.txt"));
  std::vector<Golden> entries;
  for (std::string line, hex; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    Golden& entry = entries.emplace_back();
    std::istringstream in(line);
    in >> entry.kind >> entry.name >> hex;  // and the bar
    for (std::string word; in >> word && word != "|"; entry.value += word) {
      if (!entry.value.empty()) entry.value += ' ';
    }
    std::getline(in, hex);
    entry.bytes = BytesOfHex(hex);
  }
  return entries;
}

inline std::string Word(std::size_t value, int width) {
  std::string bytes;
  for (; width > 0; --width, value >>= 8) bytes += static_cast<char>(value & 0xFF);
  return bytes;
}

/// A block of records of fields. ZUL3 says of the last record how many fields all of them have.
inline std::string BlockOf(cf_id format, const std::vector<std::vector<std::string>>& records) {
  const bool heads = format == ZUL4;
  std::string all;
  for (const auto& fields : records) {
    std::string bytes;
    for (const std::string& field : fields) bytes += field;
    if (heads) all += Word(8 + bytes.size(), 4) + Word(fields.size(), 4);
    all += bytes;
  }
  if (heads) return Word(8 + all.size(), 4) + Word(0, 2) + Word(records.size(), 2) + all;
  return Word(0, 2) + Word(12 + all.size(), 4) + Word(0, 2) + Word(records.size(), 2) +
         Word(records.back().size(), 2) + all;
}

inline std::string TextOf(double value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}
inline std::string TextOf(int value) { return std::to_string(value); }
inline std::string TextOf(ZULDATE date) {
  return TextOf(date.month) + '/' + TextOf(date.day) + '/' + TextOf(date.year);
}
inline std::string TextOf(ZULTIME time) {
  return TextOf(time.minutes) + ':' + TextOf(time.seconds);
}

/// What a field means, in the words of the data files but for its identifier.
inline std::string Meaning(const Field& field) {
  constexpr const char* kNames[] = {
      "",      "double",  "long",  "int",  "", "lpack",  "string",  "date",  "time", "",
      "empty", "doubles", "longs", "ints", "", "lpacks", "strings", "dates", "times"};
  std::string text = field.type == TYPE_ERROR ? "error" : kNames[field.type];
  const std::string& bytes = field.bytes;
  if (field.type == TYPE_STRING) {
    if (!bytes.empty()) text += ' ';
    for (const char c : bytes) text += c == '\0' ? "\\0" : std::string(1, c);
    return text;
  }
  if (field.type == TYPE_VECTOR_STRING) {
    for (std::size_t at = 0, end = 0; at < bytes.size(); at = end + 1) {
      end = std::min(bytes.find('\0', at), bytes.size());
      text += (at == 0 ? " \"" : ",\"") + bytes.substr(at, end - at) + '"';
    }
    return text;
  }
  if (field.type == TYPE_LPACK || field.type == TYPE_VECTOR_LPACK) {
    text += ' ' + TextOf(field.baseCode);
  }
  return WithElements(field, [&text](const auto& elements) {
    for (const auto& element : elements) text += ' ' + TextOf(element);
    return text;
  });
}

inline std::string Meaning(wqd::CDataItem& item) { return Meaning(FieldOf(item)); }

}  // namespace wqd_test

#endif  // WQDATA_TESTS_GOLDEN_H_
