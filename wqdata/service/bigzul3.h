/// Big ZUL3 records: a header of 12 bytes and the fields of all records, back to back, in one
/// allocation. The adds create and grow the record; `record` and `allocated` are null and 0 for one
/// that does not exist yet, and both may change with any add. An add that is refused changes
/// nothing.
#ifndef WQDATA_SERVICE_BIGZUL3_H_
#define WQDATA_SERVICE_BIGZUL3_H_

#include <cstdint>

#include <wqdata/service/fieldlayout.h>

namespace wqd::service {

/// Offsets of the header's words. What lies between them is zero.
inline constexpr std::uint32_t kZul3LengthAt = 2;  // 32 bits: bytes of the record, header included
inline constexpr std::uint32_t kZul3RecordCountAt = 8;  // 16 bits
inline constexpr std::uint32_t kZul3FieldCountAt = 10;  // 16 bits: fields of each record
inline constexpr std::uint32_t kZul3HeaderSize = 12;

/// True when a field of `size` bytes can be appended as the record stands.
inline bool BigZUL3_has_room(const std::uint8_t* record, std::uint64_t size,
                             std::uint32_t allocated) {
  if (allocated == 0) return false;
  const auto length = load<std::uint32_t>(record + kZul3LengthAt);
  const auto fields = load<std::uint16_t>(record + kZul3FieldCountAt);
  return size <= allocated - length && fields != UINT16_MAX;
}

/// Makes that room, in a record that is created with it if there is none. False when the field is
/// refused. `source` is that of `grown`.
bool BigZUL3_get_room(std::uint8_t*& record, std::uint64_t size, std::uint32_t& allocated,
                      const void** source = nullptr);

/// Appends a field of `size` bytes, for which there is room: `write` is given its place. The field
/// is counted once it is written, since it may be made of words of this header.
template <typename Write>
void BigZUL3_append(std::uint8_t* record, std::uint64_t size, Write write) {
  const auto length = load<std::uint32_t>(record + kZul3LengthAt);
  const auto fields = load<std::uint16_t>(record + kZul3FieldCountAt);
  write(record + length);
  store(record + kZul3LengthAt, static_cast<std::uint32_t>(length + size));
  store(record + kZul3FieldCountAt, static_cast<std::uint16_t>(fields + 1));
}

/// Appends a field of fixed size, for which there is room.
template <int type, typename Element>
void BigZUL3_append_fixed(std::uint8_t* record, FID id, Element element,
                          std::uint16_t baseCode = 0) {
  BigZUL3_append(record, kFixedSize<kZul3Fields, type>, [=](std::uint8_t* at) {
    write_fixed_field<kZul3Fields, type>(at, id, element, baseCode);
  });
}

/// Appends a field of one value or text. `value` is its address, in the platform's byte order and
/// of the width of `type`; a text is NUL-ended. Zero when added; nonzero for a type without a value
/// or with several, null, a field count beyond 16 bits, a record near 2 GiB, and without memory.
int BigZUL3_add_field(std::uint8_t*& record, int type, FID id, const void* value,
                      std::uint32_t& allocated);

/// Appends a price. NONZERO when added: the opposite sense to its neighbours.
int BigZUL3_add_lpack(std::uint8_t*& record, FID id, std::uint16_t baseCode, std::int32_t price,
                      std::uint32_t& allocated);

/// Appends a vector of numbers, prices, dates or times. Zero when added; nonzero as above, and for
/// a count beyond 16 bits.
int BigZUL3_add_vector(std::uint8_t*& record, int type, FID id, std::uint32_t count,
                       std::uint16_t baseCode, const void* elements, std::uint32_t& allocated);

/// Appends a vector of NUL-ended strings. Zero when added; nonzero as above, and unless `bytes`
/// hold exactly `count` whole strings.
int BigZUL3_add_string_vector(std::uint8_t*& record, FID id, std::uint32_t count,
                              std::uint32_t size, const char* bytes, std::uint32_t& allocated);

/// The bytes from the next field on, where `bytes` are those from a field on, also across a
/// record's end. None when there is no other field, and behind one that does not fit or has an
/// unknown type.
inline Bytes BigZUL3_next_field(Bytes bytes) {
  const std::uint64_t size = field_size<kZul3Fields>(bytes);
  return size != 0 && bytes.Skip(size) ? bytes : Bytes{nullptr, 0};
}

/// Releases what the adds made.
void BigZUL3_free(std::uint8_t* record);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_BIGZUL3_H_
