/// Fields of the binary formats as plain bytes, so that what a block gives back can be held against
/// something that is none of the library's making.
#ifndef WQDATA_TESTS_FIELDVALUE_H_
#define WQDATA_TESTS_FIELDVALUE_H_

#include <wqdata/items/dataitem.h>

#include "support.h"

namespace wqd_test {

inline constexpr cf_id kBinaryFormats[] = {ZUL3, ZUL4};

/// The types that a binary block holds.
inline constexpr int kFieldTypes[] = {
    TYPE_VECTOR_DOUBLE, TYPE_VECTOR_LONG, TYPE_VECTOR_INT, TYPE_VECTOR_LPACK, TYPE_VECTOR_STRING,
    TYPE_VECTOR_DATE,   TYPE_VECTOR_TIME, TYPE_DOUBLE,     TYPE_LONG,         TYPE_INT,
    TYPE_LPACK,         TYPE_STRING,      TYPE_DATE,       TYPE_TIME,         TYPE_ERROR,
};
inline constexpr std::span kVectorTypes = std::span(kFieldTypes).first<7>();

inline bool IsVector(int type) { return type >= TYPE_VECTOR_DOUBLE && type <= TYPE_VECTOR_TIME; }

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
using Fields = std::vector<Field>;
using Records = std::vector<Fields>;

inline std::ostream& operator<<(std::ostream& out, const Field& field) {
  return out << "type " << field.type << ", id " << field.id << ", base code " << field.baseCode
             << ", " << field.bytes.size() << " bytes "
             << testing::PrintToString(field.bytes.substr(0, 24));
}

/// What `use` gives for the elements of a field that is no text, as a vector of their own type.
template <typename Use>
auto WithElements(const Field& field, Use use) {
  switch (field.type) {
    case TYPE_DOUBLE:
    case TYPE_VECTOR_DOUBLE: return use(field.As<double>());
    case TYPE_DATE:
    case TYPE_VECTOR_DATE: return use(field.As<ZULDATE>());
    case TYPE_TIME:
    case TYPE_VECTOR_TIME: return use(field.As<ZULTIME>());
    default: break;
  }
  return WidthOf(field.type) == 2 ? use(field.As<std::int16_t>()) : use(field.As<std::int32_t>());
}

template <typename Element>
std::string ValueBytes(const Element& element) {
  return std::string(reinterpret_cast<const char*>(&element), sizeof element);
}

inline Field LongField(FID id, std::int32_t value) { return {TYPE_LONG, id, ValueBytes(value)}; }

inline wqd::CFixPtNum PriceOf(const Field& f) { return {f.As<std::int32_t>()[0], f.baseCode}; }

inline wqd::CDataItem ItemOf(const Field& f) {
  wqd::CDataItem item;
  const auto size = static_cast<int>(f.bytes.size());
  switch (f.type) {
    case TYPE_LPACK: item.Set(f.id, PriceOf(f)); break;
    case TYPE_STRING: item.Set(f.id, f.bytes.data(), size); break;
    case TYPE_ERROR: item.SetError(f.id, f.As<std::int16_t>()[0]); break;
    case TYPE_VECTOR_STRING: item.SetVector(f.id, f.bytes.data(), f.Count()); break;
    case TYPE_VECTOR_LPACK:
      item.SetVector(f.id, f.As<std::int32_t>().data(), f.baseCode, f.Count());
      break;
    default:
      WithElements(f, [&](const auto& elements) {
        return IsVector(f.type) ? item.SetVector(f.id, elements.data(), f.Count())
                                : item.Set(f.id, elements[0]);
      });
  }
  return item;
}

/// How a field gets into a block.
enum class Road { kDirect, kValueClass, kItem };
inline constexpr Road kRoads[] = {Road::kDirect, Road::kValueClass, Road::kItem};

inline bool Add(wqd::CDataBlock& block, const Field& f, Road road = Road::kDirect) {
  wqd::CDataItem item = ItemOf(f);
  if (road == Road::kItem) return block.Add(item);
  if (road == Road::kValueClass && f.type == TYPE_DATE) return block.Add(f.id, item.GetDate());
  if (road == Road::kValueClass && f.type == TYPE_TIME) return block.Add(f.id, item.GetTime());
  const std::uint32_t count = f.Count();
  const auto strings = std::count(f.bytes.begin(), f.bytes.end(), '\0');
  switch (f.type) {
    case TYPE_LPACK: return block.Add(f.id, PriceOf(f));
    case TYPE_STRING: return block.Add(f.id, f.bytes.c_str());
    case TYPE_ERROR: return block.AddError(f.id, f.As<std::int16_t>()[0]);
    case TYPE_VECTOR_DOUBLE: return block.AddDoubleVector(f.id, f.As<double>().data(), count);
    case TYPE_VECTOR_LONG: return block.AddLongVector(f.id, f.As<std::int32_t>().data(), count);
    case TYPE_VECTOR_INT: return block.AddShortVector(f.id, f.As<std::int16_t>().data(), count);
    case TYPE_VECTOR_DATE: return block.AddDateVector(f.id, f.As<ZULDATE>().data(), count);
    case TYPE_VECTOR_TIME: return block.AddTimeVector(f.id, f.As<ZULTIME>().data(), count);
    case TYPE_VECTOR_LPACK:
      return block.AddPriceVector(f.id, f.As<std::int32_t>().data(),
                                  static_cast<std::int16_t>(f.baseCode), count);
    case TYPE_VECTOR_STRING:
      return block.AddStringVector(f.id, f.bytes.data(), static_cast<std::uint32_t>(strings),
                                   count);
    default: return WithElements(f, [&](const auto& value) { return block.Add(f.id, value[0]); });
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
  const bool priced = field.type == TYPE_LPACK || field.type == TYPE_VECTOR_LPACK;
  if (priced) field.baseCode = static_cast<std::uint16_t>(item.GetBaseCode());
  return field;
}

/// A vector of `count` numbered elements, or for strings of `count` bytes, the last a NUL.
inline Field VectorOf(int type, std::uint32_t count) {
  Field field{type, FID{9}, std::string(count * WidthOf(type), 'a')};
  if (type == TYPE_VECTOR_STRING && count > 0) field.bytes.back() = '\0';
  if (WidthOf(type) == 1) return field;
  if (type == TYPE_VECTOR_LPACK) field.baseCode = 0xFFFE;
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto number = static_cast<std::uint16_t>(i + 1);
    std::memcpy(&field.bytes[i * WidthOf(type)], &number, sizeof number);
  }
  return field;
}

/// A field of each type, the vectors of `count` elements and the text of as many letters.
inline Fields OneOfEach(std::uint32_t count) {
  Fields fields;
  for (const int type : kFieldTypes) {
    Field field = VectorOf(type, IsVector(type) || type == TYPE_STRING ? count : 1);
    if (type == TYPE_DATE) field.bytes = ValueBytes(ZULDATE{31, 12, 2004});
    if (type == TYPE_TIME) field.bytes = ValueBytes(ZULTIME{1439, 59});
    fields.push_back(field);
  }
  return fields;
}

/// A field of random type, identifier and value. It is no missing one.
inline Field RandomField(std::mt19937& random) {
  constexpr std::uint16_t kBaseCodes[] = {0, 3, 8, 15, 18, 101, 104, 109};
  const auto below = [&random](unsigned bound) { return static_cast<unsigned>(random() % bound); };
  Field field{kFieldTypes[below(std::size(kFieldTypes))], static_cast<FID>(random()), {}};
  const bool many = IsVector(field.type) || field.type == TYPE_STRING;
  const std::size_t count = many ? below(below(8) == 0 ? 700 : 12) : 1;
  for (std::size_t i = 0; i < count * WidthOf(field.type); ++i) {
    field.bytes += static_cast<char>(1 + below(255));  // each marker has a byte 0
  }
  const ZULTIME time = wqd::CZulTime(static_cast<int>(below(86400)));
  if (field.type == TYPE_TIME) field.bytes = ValueBytes(time);
  if (field.type == TYPE_LPACK) field.baseCode = kBaseCodes[below(8)];
  if (field.type == TYPE_VECTOR_LPACK) field.baseCode = static_cast<std::uint16_t>(random());
  if (field.type != TYPE_VECTOR_STRING) return field;
  for (char& c : field.bytes) c = below(4) == 0 || &c == &field.bytes.back() ? '\0' : c;
  return field;
}

/// The field of a missing value.
inline Field Missing(FID id) { return {TYPE_ERROR, id, ValueBytes(std::int16_t{2})}; }

/// Records of random fields, some of them missing; all as long as each other, or of any length.
inline Records RandomRecords(std::mt19937& random, bool uniform) {
  Records records(1 + random() % 5);
  const std::size_t common = 1 + random() % 8;
  for (Fields& record : records) {
    record.resize(uniform ? common : random() % 9);
    for (Field& field : record) {
      field = random() % 8 == 0 ? Missing(static_cast<FID>(random())) : RandomField(random);
    }
  }
  return records;
}

inline Records Read(wqd::CDataBlock& block) {
  Records records;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    Fields& fields = records.emplace_back();
    for (bool field = block.FirstField(); field; field = block.NextField()) {
      wqd::CDataItem item;
      EXPECT_TRUE(block.GetCurrentField(&item)) << block.GetCurrentFieldType();
      EXPECT_EQ(block.GetCurrentFieldId(), item.GetId());
      fields.push_back(FieldOf(item));
    }
    EXPECT_EQ(block.GetFieldCount(), static_cast<int>(fields.size()));
  }
  EXPECT_EQ(block.GetRecordCount(), static_cast<int>(records.size()));
  return records;
}

/// A block of these records, which is not closed.
inline wqd::DataBlockPtr Build(cf_id format, const Records& records, Road road = Road::kDirect) {
  wqd::DataBlockPtr block = NewBlock(format);
  for (const Fields& record : records) {
    EXPECT_TRUE(block->StartRecord());
    for (const Field& field : record) EXPECT_TRUE(Add(*block, field, road)) << field;
    EXPECT_TRUE(block->EndRecord());
  }
  return block;
}

/// A read-only block around `bytes`, which outlive it.
inline wqd::DataBlockPtr Wrap(cf_id format, std::string& bytes) {
  const auto size = static_cast<int>(bytes.size());
  return wqd::DataBlockPtr(wqd::CDataBlock::NewDataBlock(format, bytes.data(), size));
}

}  // namespace wqd_test

#endif  // WQDATA_TESTS_FIELDVALUE_H_
