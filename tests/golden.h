/// The bytes under data/, which are written out by hand, and what the tests that read them share.
#ifndef WQDATA_TESTS_GOLDEN_H_
#define WQDATA_TESTS_GOLDEN_H_

#include <charconv>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "fieldvalue.h"

namespace wqd_test {

/// An entry of a data file, whose head tells of the kinds.
struct Golden {
  std::string kind, name, value, bytes;
};

/// Records of fields, as bytes or as the texts of what they mean.
using Records = std::vector<std::vector<std::string>>;

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
inline std::string BlockOf(cf_id format, const Records& records) {
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

template <typename Element>
std::string Elements(const Field& field) {
  std::string text;
  for (const Element& element : field.As<Element>()) text += ' ' + TextOf(element);
  return text;
}

/// The characters of a text, or of the strings of a vector in quotes; a NUL is shown as \0.
inline std::string Characters(const Field& field) {
  const bool strings = field.type == TYPE_VECTOR_STRING;
  std::string text = strings && !field.bytes.empty() ? "\"" : "";
  for (std::size_t i = 0; i < field.bytes.size(); ++i) {
    const bool last = i + 1 == field.bytes.size();
    text += field.bytes[i] != '\0' ? std::string(1, field.bytes[i])
            : !strings             ? "\\0"
                                   : std::string(last ? "\"" : "\",\"");
  }
  return text.empty() ? text : ' ' + text;
}

/// What a field means, in the words of the data files but for its identifier.
inline std::string Meaning(const Field& field) {
  static const std::map<int, std::string> names = {
      {TYPE_DOUBLE, "double"},
      {TYPE_LONG, "long"},
      {TYPE_INT, "int"},
      {TYPE_LPACK, "lpack"},
      {TYPE_STRING, "string"},
      {TYPE_DATE, "date"},
      {TYPE_TIME, "time"},
      {TYPE_VECTOR_DOUBLE, "doubles"},
      {TYPE_VECTOR_LONG, "longs"},
      {TYPE_VECTOR_INT, "ints"},
      {TYPE_VECTOR_LPACK, "lpacks"},
      {TYPE_VECTOR_STRING, "strings"},
      {TYPE_VECTOR_DATE, "dates"},
      {TYPE_VECTOR_TIME, "times"},
      {TYPE_ERROR, "error"},
  };
  const std::string& name = names.at(field.type);
  switch (field.type) {
    case TYPE_DOUBLE:
    case TYPE_VECTOR_DOUBLE: return name + Elements<double>(field);
    case TYPE_LONG:
    case TYPE_VECTOR_LONG: return name + Elements<std::int32_t>(field);
    case TYPE_LPACK:
    case TYPE_VECTOR_LPACK:
      return name + ' ' + TextOf(field.baseCode) + Elements<std::int32_t>(field);
    case TYPE_DATE:
    case TYPE_VECTOR_DATE: return name + Elements<ZULDATE>(field);
    case TYPE_TIME:
    case TYPE_VECTOR_TIME: return name + Elements<ZULTIME>(field);
    case TYPE_STRING:
    case TYPE_VECTOR_STRING: return name + Characters(field);
    default: return name + Elements<std::int16_t>(field);
  }
}

inline std::string Meaning(wqd::CDataItem& item) { return Meaning(FieldOf(item)); }

}  // namespace wqd_test

#endif  // WQDATA_TESTS_GOLDEN_H_
