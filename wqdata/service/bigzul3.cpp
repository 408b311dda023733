#include <cstring>

#include <wqdata/service/bigzul3.h>
#include <wqdata/service/memory.h>

namespace wqd::service {
namespace {

constexpr int kAdded = 0;
constexpr int kRefused = 1;

int add(std::uint8_t*& record, FieldValue value, std::uint32_t& allocated) {
  const bool exists = record != nullptr;
  const std::uint32_t length =
      exists ? load<std::uint32_t>(record + kZul3LengthAt) : kZul3HeaderSize;
  const std::uint16_t fields = exists ? load<std::uint16_t>(record + kZul3FieldCountAt) : 0;
  const std::uint64_t size = field_size(kZul3Fields, value);
  if (size == 0 || fields == UINT16_MAX) return kRefused;
  if (!exists || size > allocated - length) {
    void* const moved = grown(record, allocated, length + size, &value.elements);
    if (moved == nullptr) return kRefused;
    record = static_cast<std::uint8_t*>(moved);
    if (!exists) std::memset(record, 0, kZul3HeaderSize);
  }
  write_field(kZul3Fields, value, record + length);
  store(record + kZul3LengthAt, static_cast<std::uint32_t>(length + size));
  store(record + kZul3FieldCountAt, static_cast<std::uint16_t>(fields + 1));
  return kAdded;
}

}  // namespace

int BigZUL3_add_field(std::uint8_t*& record, int type, FID id, const void* value,
                      std::uint32_t& allocated) {
  if (value == nullptr || is_vector(type) || type == TYPE_LPACK) return kRefused;
  std::size_t count = 1;
  if (type == TYPE_STRING) count = std::strlen(static_cast<const char*>(value));
  if (count > kLargestBlock) return kRefused;
  return add(record, {type, id, value, static_cast<std::uint32_t>(count)}, allocated);
}

int BigZUL3_add_lpack(std::uint8_t*& record, FID id, std::uint16_t baseCode, std::int32_t price,
                      std::uint32_t& allocated) {
  return add(record, {TYPE_LPACK, id, &price, 1, baseCode}, allocated) == kAdded ? 1 : 0;
}

int BigZUL3_add_vector(std::uint8_t*& record, int type, FID id, std::uint32_t count,
                       std::uint16_t baseCode, const void* elements, std::uint32_t& allocated) {
  if (!is_vector(type) || type == TYPE_VECTOR_STRING) return kRefused;
  return add(record, {type, id, elements, count, baseCode}, allocated);
}

int BigZUL3_add_string_vector(std::uint8_t*& record, FID id, std::uint32_t count,
                              std::uint32_t size, const char* bytes, std::uint32_t& allocated) {
  return add(record, {TYPE_VECTOR_STRING, id, bytes, size, 0, count}, allocated);
}

const std::uint8_t* BigZUL3_next_field(const std::uint8_t* field, const std::uint8_t* end) {
  FieldView view;
  const auto left = static_cast<std::size_t>(end - field);
  if (!view_field(kZul3Fields, {field, left}, view) || view.size == 0) return nullptr;
  return view.size < left ? field + view.size : nullptr;
}

void BigZUL3_free(std::uint8_t* record) { release(record); }

}  // namespace wqd::service
