#include <cstring>

#include <wqdata/service/bigzul3.h>
#include <wqdata/service/memory.h>

namespace wqd::service {
namespace {

constexpr int kAdded = 0;
constexpr int kRefused = 1;

template <int type, typename Element>
int add_value(std::uint8_t*& record, FID id, const void* value, std::uint32_t& allocated) {
  if (!BigZUL3_get_room(record, kFixedSize<kZul3Fields, type>, allocated)) return kRefused;
  Element element;
  std::memcpy(&element, value, sizeof element);
  BigZUL3_append_fixed<type>(record, id, element);
  return kAdded;
}

int add_text(std::uint8_t*& record, FID id, const void* text, std::uint32_t& allocated) {
  const std::size_t length = std::strlen(static_cast<const char*>(text));
  const std::uint64_t size = text_field_size<kZul3Fields>(length);
  if (!BigZUL3_get_room(record, size, allocated, &text)) return kRefused;
  BigZUL3_append(record, size, [=](std::uint8_t* at) {
    write_text_field<kZul3Fields>(at, id, static_cast<const char*>(text), length);
  });
  return kAdded;
}

int add_vector(std::uint8_t*& record, VectorValue value, std::uint32_t& allocated) {
  const std::uint64_t size = vector_field_size(kZul3Fields, value);
  if (size == 0 || !BigZUL3_get_room(record, size, allocated, &value.elements)) return kRefused;
  BigZUL3_append(record, size,
                 [&](std::uint8_t* at) { write_vector_field(kZul3Fields, value, at); });
  return kAdded;
}

}  // namespace

bool BigZUL3_get_room(std::uint8_t*& record, std::uint64_t size, std::uint32_t& allocated,
                      const void** source) {
  if (BigZUL3_has_room(record, size, allocated)) return true;
  const bool exists = record != nullptr;
  const std::uint32_t length =
      exists ? load<std::uint32_t>(record + kZul3LengthAt) : kZul3HeaderSize;
  if (exists && load<std::uint16_t>(record + kZul3FieldCountAt) == UINT16_MAX) return false;
  void* const moved = grown(record, allocated, length + size, source);
  if (moved == nullptr) return false;
  record = static_cast<std::uint8_t*>(moved);
  if (exists) return true;
  std::memset(record, 0, kZul3HeaderSize);
  store(record + kZul3LengthAt, kZul3HeaderSize);
  return true;
}

int BigZUL3_add_field(std::uint8_t*& record, int type, FID id, const void* value,
                      std::uint32_t& allocated) {
  if (value == nullptr) return kRefused;
  switch (type) {
    case TYPE_DOUBLE: return add_value<TYPE_DOUBLE, double>(record, id, value, allocated);
    case TYPE_LONG: return add_value<TYPE_LONG, std::int32_t>(record, id, value, allocated);
    case TYPE_INT: return add_value<TYPE_INT, std::int16_t>(record, id, value, allocated);
    case TYPE_DATE: return add_value<TYPE_DATE, ZULDATE>(record, id, value, allocated);
    case TYPE_TIME: return add_value<TYPE_TIME, ZULTIME>(record, id, value, allocated);
    case TYPE_ERROR: return add_value<TYPE_ERROR, std::int16_t>(record, id, value, allocated);
    case TYPE_STRING: return add_text(record, id, value, allocated);
    default: return kRefused;
  }
}

int BigZUL3_add_lpack(std::uint8_t*& record, FID id, std::uint16_t baseCode, std::int32_t price,
                      std::uint32_t& allocated) {
  if (!BigZUL3_get_room(record, kFixedSize<kZul3Fields, TYPE_LPACK>, allocated)) return 0;
  BigZUL3_append_fixed<TYPE_LPACK>(record, id, price, baseCode);
  return 1;
}

int BigZUL3_add_vector(std::uint8_t*& record, int type, FID id, std::uint32_t count,
                       std::uint16_t baseCode, const void* elements, std::uint32_t& allocated) {
  if (!is_vector(type) || type == TYPE_VECTOR_STRING) return kRefused;
  return add_vector(record, {type, id, elements, count, baseCode}, allocated);
}

int BigZUL3_add_string_vector(std::uint8_t*& record, FID id, std::uint32_t count,
                              std::uint32_t size, const char* bytes, std::uint32_t& allocated) {
  return add_vector(record, {TYPE_VECTOR_STRING, id, bytes, size, 0, count}, allocated);
}

void BigZUL3_free(std::uint8_t* record) { release(record); }

}  // namespace wqd::service
