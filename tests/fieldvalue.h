/// Fields of the binary formats as plain bytes, so that what a block gives back can be held against
/// something that is none of the library's making.
#ifndef WQDATA_TESTS_FIELDVALUE_H_
#define WQDATA_TESTS_FIELDVALUE_H_

#include <gtest/gtest.h>
#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "support.h"

namespace wqd_test {

/// The types that a binary block holds, vectors of numbers and the like in front.
inline constexpr int kFieldTypes[] = {
    TYPE_VECTOR_DOUBLE, TYPE_VECTOR_LONG, TYPE_VECTOR_INT,    TYPE_VECTOR_LPACK, TYPE_VECTOR_DATE,
    TYPE_VECTOR_TIME,   TYPE_DOUBLE,      TYPE_LONG,          TYPE_INT,          TYPE_LPACK,
    TYPE_STRING,        TYPE_DATE,        TYPE_VECTOR_STRING, TYPE_TIME,         TYPE_ERROR,
};
inline constexpr int kElementVectors = 6;  // the vectors that have an element count

inline std::size_t WidthOf(int type) {
  if (type == TYPE_DOUBLE || type == TYPE_VECTOR_DOUBLE) return 8;
  if (type == TYPE_INT || type == TYPE_VECTOR_INT || type == TYPE_ERROR) return 2;
  return type == TYPE_STRING || type == TYPE_VECTOR_STRING || type == TYPE_EMPTY ? 1 : 4;
}

/// `bytes` are the elements in the platform's byte order; of a text without its NUL.
struct Field {
  int type;
  FID id;
  std::string bytes;
  std::uint16_t baseCode = 0;

  bool operator==(const Field&) const = default;

  std::uint32_t Count() const { return static_cast<std::uint32_t>(bytes.size() / WidthOf(type)); }

  template <typename Element>
  std::vector<Element> As() const {
    std::vector<Element> elements(bytes.size() / sizeof(Element));
    if (!elements.empty()) std::memcpy(elements.data(), bytes.data(), bytes.size());
    return elements;
  }
};

inline std::ostream& operator<<(std::ostream& out, const Field& field) {
  out << "type " << field.type << ", id " << field.id << ", base code " << field.baseCode << ", "
      << field.bytes.size() << " bytes";
  for (std::size_t i = 0; i < field.bytes.size() && i < 24; ++i) {
    out << ' ' << static_cast<int>(static_cast<unsigned char>(field.bytes[i]));
  }
  return out;
}

template <typename Element>
std::string ValueBytes(const Element& element) {
  return std::string(reinterpret_cast<const char*>(&element), sizeof element);
}

/// How a field gets into a block.
enum class Road { kDirect, kValueClass, kItem };
inline constexpr Road kRoads[] = {Road::kDirect, Road::kValueClass, Road::kItem};

inline std::uint32_t StringsIn(const std::string& bytes) {
  std::uint32_t ends = 0;
  for (const char c : bytes) ends += c == '\0';
  return ends;
}

inline wqd::CDataItem ItemOf(const Field& f) {
  wqd::CDataItem item;
  switch (f.type) {
    case TYPE_DOUBLE: item.Set(f.id, f.As<double>()[0]); break;
    case TYPE_LONG: item.Set(f.id, f.As<std::int32_t>()[0]); break;
    case TYPE_INT: item.Set(f.id, f.As<std::int16_t>()[0]); break;
    case TYPE_LPACK: item.Set(f.id, wqd::CFixPtNum(f.As<std::int32_t>()[0], f.baseCode)); break;
    case TYPE_STRING: item.Set(f.id, f.bytes.data(), static_cast<int>(f.bytes.size())); break;
    case TYPE_DATE: item.Set(f.id, f.As<ZULDATE>()[0]); break;
    case TYPE_TIME: item.Set(f.id, f.As<ZULTIME>()[0]); break;
    case TYPE_ERROR: item.SetError(f.id, f.As<std::int16_t>()[0]); break;
    case TYPE_VECTOR_DOUBLE: item.SetVector(f.id, f.As<double>().data(), f.Count()); break;
    case TYPE_VECTOR_LONG: item.SetVector(f.id, f.As<std::int32_t>().data(), f.Count()); break;
    case TYPE_VECTOR_INT: item.SetVector(f.id, f.As<std::int16_t>().data(), f.Count()); break;
    case TYPE_VECTOR_LPACK:
      item.SetVector(f.id, f.As<std::int32_t>().data(), f.baseCode, f.Count());
      break;
    case TYPE_VECTOR_DATE: item.SetVector(f.id, f.As<ZULDATE>().data(), f.Count()); break;
    case TYPE_VECTOR_TIME: item.SetVector(f.id, f.As<ZULTIME>().data(), f.Count()); break;
    default: item.SetVector(f.id, f.bytes.data(), f.Count());
  }
  return item;
}

inline bool Add(wqd::CDataBlock& block, const Field& f, Road road) {
  wqd::CDataItem item = ItemOf(f);
  if (road == Road::kItem) return block.Add(item);
  if (road == Road::kValueClass && f.type == TYPE_DATE) return block.Add(f.id, item.GetDate());
  if (road == Road::kValueClass && f.type == TYPE_TIME) return block.Add(f.id, item.GetTime());
  const auto baseCode = static_cast<std::int16_t>(f.baseCode);
  switch (f.type) {
    case TYPE_DOUBLE: return block.Add(f.id, f.As<double>()[0]);
    case TYPE_LONG: return block.Add(f.id, f.As<std::int32_t>()[0]);
    case TYPE_INT: return block.Add(f.id, f.As<std::int16_t>()[0]);
    case TYPE_LPACK: return block.Add(f.id, wqd::CFixPtNum(f.As<std::int32_t>()[0], f.baseCode));
    case TYPE_STRING: return block.Add(f.id, f.bytes.c_str());
    case TYPE_DATE: return block.Add(f.id, f.As<ZULDATE>()[0]);
    case TYPE_TIME: return block.Add(f.id, f.As<ZULTIME>()[0]);
    case TYPE_ERROR: return block.AddError(f.id, f.As<std::int16_t>()[0]);
    case TYPE_VECTOR_DOUBLE: return block.AddDoubleVector(f.id, f.As<double>().data(), f.Count());
    case TYPE_VECTOR_LONG: return block.AddLongVector(f.id, f.As<std::int32_t>().data(), f.Count());
    case TYPE_VECTOR_INT: return block.AddShortVector(f.id, f.As<std::int16_t>().data(), f.Count());
    case TYPE_VECTOR_LPACK:
      return block.AddPriceVector(f.id, f.As<std::int32_t>().data(), baseCode, f.Count());
    case TYPE_VECTOR_DATE: return block.AddDateVector(f.id, f.As<ZULDATE>().data(), f.Count());
    case TYPE_VECTOR_TIME: return block.AddTimeVector(f.id, f.As<ZULTIME>().data(), f.Count());
    default: return block.AddStringVector(f.id, f.bytes.data(), StringsIn(f.bytes), f.Count());
  }
}

inline Field FieldOf(wqd::CDataItem& item) {
  Field field{item.GetType(), item.GetId(), {}};
  const auto size = static_cast<std::size_t>(item.GetSize());
  switch (item.GetType()) {
    case TYPE_DOUBLE: field.bytes = ValueBytes(item.GetFloat()); break;
    case TYPE_LONG: field.bytes = ValueBytes(item.GetLong()); break;
    case TYPE_INT: field.bytes = ValueBytes(item.GetShort()); break;
    case TYPE_LPACK: field.bytes = ValueBytes(static_cast<std::int32_t>(item.GetFPN())); break;
    case TYPE_STRING: field.bytes.assign(item.GetString(), size - 1); break;
    case TYPE_DATE: field.bytes = ValueBytes(static_cast<ZULDATE>(item.GetDate())); break;
    case TYPE_TIME: field.bytes = ValueBytes(static_cast<ZULTIME>(item.GetTime())); break;
    case TYPE_ERROR: field.bytes = ValueBytes(item.GetError()); break;
    default:
      field.bytes.assign(static_cast<const char*>(item.GetVectorPtr()), size * WidthOf(field.type));
  }
  if (field.type == TYPE_LPACK || field.type == TYPE_VECTOR_LPACK) {
    field.baseCode = static_cast<std::uint16_t>(item.GetBaseCode());
  }
  return field;
}

/// A vector of `count` numbered elements, or for strings of `count` bytes, the last a NUL.
inline Field VectorOf(int type, std::uint32_t count) {
  Field field{type, FID{9}, std::string(count * WidthOf(type), 'a')};
  if (type == TYPE_VECTOR_STRING && count > 0) field.bytes.back() = '\0';
  if (type == TYPE_VECTOR_STRING) return field;
  if (type == TYPE_VECTOR_LPACK) field.baseCode = 0xFFFE;
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto number = static_cast<std::uint16_t>(i + 1);
    std::memcpy(&field.bytes[i * WidthOf(type)], &number, sizeof number);
  }
  return field;
}

/// A field of random type, identifier and value. It is no missing one.
inline Field RandomField(std::mt19937& random) {
  const auto below = [&random](std::size_t bound) { return random() % bound; };
  Field field{kFieldTypes[below(std::size(kFieldTypes))], static_cast<FID>(random()), {}};
  const bool vector = field.type >= TYPE_VECTOR_DOUBLE && field.type <= TYPE_VECTOR_TIME;
  const bool text = WidthOf(field.type) == 1;
  const std::size_t count = vector || text ? below(below(8) == 0 ? 700 : 12) : 1;
  for (std::size_t i = 0; i < count * WidthOf(field.type); ++i) {
    field.bytes += static_cast<char>(text ? 1 + below(255) : below(256));
  }
  switch (field.type) {
    case TYPE_DOUBLE: field.bytes = ValueBytes(static_cast<double>(random()) / 7 - 1e8); break;
    case TYPE_LONG:
    case TYPE_INT: field.bytes[0] = '\1'; break;  // the marker's is 0
    case TYPE_DATE:
      field.bytes = ValueBytes(ZULDATE{static_cast<std::int8_t>(1 + below(31)),
                                       static_cast<std::int8_t>(1 + below(12)),
                                       static_cast<std::uint16_t>(100 + below(9000))});
      break;
    case TYPE_TIME:
      field.bytes = ValueBytes(
          ZULTIME{static_cast<std::uint16_t>(below(1440)), static_cast<std::uint16_t>(below(60))});
      break;
    case TYPE_VECTOR_STRING:
      for (char& c : field.bytes) c = below(4) == 0 ? '\0' : c;
      if (count > 0) field.bytes.back() = '\0';
      break;
    default: break;
  }
  constexpr std::uint16_t kBaseCodes[] = {0, 3, 8, 15, 18, 101, 104, 109};
  if (field.type == TYPE_LPACK) field.bytes[0] = '\1', field.baseCode = kBaseCodes[below(8)];
  if (field.type == TYPE_VECTOR_LPACK) field.baseCode = static_cast<std::uint16_t>(random());
  return field;
}

inline Field LongField(FID id, std::int32_t value) { return {TYPE_LONG, id, ValueBytes(value)}; }

using Fields = std::vector<Field>;

/// The fields of the current record, counted as the block counts them.
inline Fields ReadRecord(wqd::CDataBlock& block) {
  Fields fields;
  for (bool more = block.FirstField(); more; more = block.NextField()) {
    wqd::CDataItem item;
    EXPECT_TRUE(block.GetCurrentField(&item)) << block.GetCurrentFieldType();
    EXPECT_EQ(block.GetCurrentFieldId(), item.GetId());
    fields.push_back(FieldOf(item));
  }
  EXPECT_EQ(block.GetFieldCount(), static_cast<int>(fields.size()));
  return fields;
}

inline std::vector<Fields> Read(wqd::CDataBlock& block) {
  std::vector<Fields> records;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    records.push_back(ReadRecord(block));
  }
  EXPECT_EQ(block.GetRecordCount(), static_cast<int>(records.size()));
  return records;
}

}  // namespace wqd_test

#endif  // WQDATA_TESTS_FIELDVALUE_H_
