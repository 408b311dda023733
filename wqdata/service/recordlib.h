/// The record library behind the ZUL4 format: it owns the bytes of a record, writes its fields and
/// walks them. Every operation answers zero for success and nonzero for failure, after which the
/// record is as it was.
///
/// A record file of the format is a header of 8 bytes and the records, back to back; a record is a
/// head of 8 bytes and its fields. docs/formats.md gives it to the byte.
#ifndef WQDATA_SERVICE_RECORDLIB_H_
#define WQDATA_SERVICE_RECORDLIB_H_

#include <cstddef>
#include <cstdint>

#include <wqdata/service/fieldlayout.h>

namespace wqd::service {

/// What a block holds of its record: 24 bytes on every platform. All zero, it has no record.
struct ZUL4HANDLE {
  std::uint8_t flags;  ///< kZul4Borrowed and others
  std::uint8_t reserved;
  std::uint16_t index;     ///< of the current record, from 0
  std::uint32_t capacity;  ///< bytes that may be written, or of an attached record read
  std::uint8_t* record;    ///< null while there is none
  std::uint32_t current;   ///< offset of the current record, 0 for none
  std::uint32_t field;     ///< offset of the current field, 0 for none
#if UINTPTR_MAX == UINT32_MAX
  std::uint32_t unused;
#endif
};
static_assert(sizeof(ZUL4HANDLE) == 24 && offsetof(ZUL4HANDLE, flags) == 0);

/// In the flags: the bytes are a caller's, and are not freed.
inline constexpr std::uint8_t kZul4Borrowed = 0x80;

/// In the flags: no field can be added, since the bytes were received, or since the latest record
/// could not be opened.
inline constexpr std::uint8_t kZul4Refused = 0x01;

/// Offsets of the header's words; bytes 4 and 5 are zero.
inline constexpr std::uint32_t kZul4LengthAt = 0;       // 32 bits: bytes in all, header included
inline constexpr std::uint32_t kZul4RecordCountAt = 6;  // 16 bits
inline constexpr std::uint32_t kZul4HeaderSize = 8;

/// Offsets of the words in the head of a record; bytes 6 and 7 are zero.
inline constexpr std::uint32_t kZul4RecordLengthAt =
    0;                                                 // 32 bits: bytes of the record with its head
inline constexpr std::uint32_t kZul4FieldCountAt = 4;  // 16 bits
inline constexpr std::uint32_t kZul4RecordHead = 8;

/// Opens `size` bytes for walking. What the header declares beyond them is not there.
int ZUL4_attach(std::uint8_t* bytes, ZUL4HANDLE& handle, std::uint32_t size);

/// Sets the handle up to write into a caller's buffer. Nonzero, and every later add refused, for a
/// buffer that can't hold a header.
int ZUL4_attach_fixed(ZUL4HANDLE& handle, void* buffer, std::int64_t size);

/// Makes the record of a handle that has none.
int ZUL4_create(ZUL4HANDLE& handle);

/// Opens a new record behind the last one. When it is refused, so are the fields of that record:
/// every add until a record can be opened.
int ZUL4_add_record(ZUL4HANDLE& handle);

/// Releases what the adds made.
void ZUL4_free(std::uint8_t* record);

/// Bytes in all, of which no more are said to be there than are; 0 without a record.
std::uint32_t ZUL4_length(const ZUL4HANDLE& handle);

/// The header's count of records; 0 without a record.
std::uint16_t ZUL4_record_count(const ZUL4HANDLE& handle);

/// Make a record the current one. The first field of it is then current, if it has one.
int ZUL4_seek_record(ZUL4HANDLE& handle, std::uint32_t index);
int ZUL4_next_record(ZUL4HANDLE& handle);

/// The record at the front of `bytes`, with its head; none where no whole record is there.
Bytes ZUL4_record(Bytes bytes);

/// The count of fields in the current record, 0 for none: as the record declares it, and as far as
/// its bytes can hold them.
std::uint16_t ZUL4_declared_field_count(const ZUL4HANDLE& handle);
std::uint16_t ZUL4_field_count(const ZUL4HANDLE& handle);

/// The latter's largest of all records that a walk comes to.
std::uint16_t ZUL4_largest_field_count(const ZUL4HANDLE& handle);

/// Looks at the current field. Nonzero when there is none, or it does not fit its record.
int ZUL4_current_field(const ZUL4HANDLE& handle, FieldView& view);

/// The bytes from the current field to the end of its record, none when there is none. The record
/// was whole when it was entered, and it does not shrink.
inline Bytes ZUL4_field_bytes(const ZUL4HANDLE& handle) {
  if (handle.field == 0) return {nullptr, 0};
  const std::uint32_t before = handle.field - handle.current;
  const auto size = load<std::uint32_t>(handle.record + handle.current + kZul4RecordLengthAt);
  return {handle.record + handle.field, size > before ? size - before : 0};
}

/// Makes the first field of the current record the current one; none is when the record has none.
inline int ZUL4_first_field(ZUL4HANDLE& handle) {
  handle.field = handle.current == 0 ? 0 : handle.current + kZul4RecordHead;
  if (ZUL4_field_bytes(handle).Left() != 0) return 0;
  handle.field = 0;
  return 1;
}

/// Makes the next one the current one. Behind the last field, and one that can't be stepped over,
/// there is none.
int ZUL4_next_field(ZUL4HANDLE& handle);

/// The same for a caller that knows the size of the current field, or 0 for one that has none.
inline int ZUL4_next_field(ZUL4HANDLE& handle, std::uint32_t size) {
  const bool more = size != 0 && size < ZUL4_field_bytes(handle).Left();
  handle.field = more ? handle.field + size : 0;
  return more ? 0 : 1;
}

/// Makes the first field with the identifier `id` of the current record the current one.
int ZUL4_find_field(ZUL4HANDLE& handle, FID id);

/// True while the current record is the last one, and takes fields.
inline bool ZUL4_is_open(const ZUL4HANDLE& handle) {
  return handle.current != 0 && (handle.flags & kZul4Refused) == 0 &&
         handle.index + 1 == load<std::uint16_t>(handle.record + kZul4RecordCountAt);
}

/// True when a field of `size` bytes can be appended as the record stands.
inline bool ZUL4_has_room(const ZUL4HANDLE& handle, std::uint64_t size) {
  if (!ZUL4_is_open(handle)) return false;
  const auto length = load<std::uint32_t>(handle.record + kZul4LengthAt);
  const auto fields = load<std::uint16_t>(handle.record + handle.current + kZul4FieldCountAt);
  return size <= handle.capacity - length && fields != UINT16_MAX;
}

/// Appends a field of `size` bytes, for which there is room: `write` is given its place. The field
/// is counted once it is written, since it may be made of words of these headers.
template <typename Write>
void ZUL4_append(ZUL4HANDLE& handle, std::uint64_t size, Write write) {
  std::uint8_t* const record = handle.record;
  const std::uint32_t current = handle.current;
  const auto length = load<std::uint32_t>(record + kZul4LengthAt);
  const auto fields = load<std::uint16_t>(record + current + kZul4FieldCountAt);
  const auto end = static_cast<std::uint32_t>(length + size);
  write(record + length);
  store(record + current + kZul4RecordLengthAt, end - current);
  store(record + current + kZul4FieldCountAt, static_cast<std::uint16_t>(fields + 1));
  store(record + kZul4LengthAt, end);
}

/// Appends a field of fixed size, for which there is room.
template <int type, typename Element>
void ZUL4_append_fixed(ZUL4HANDLE& handle, FID id, Element element, std::uint16_t baseCode = 0) {
  ZUL4_append(handle, kFixedSize<kZul4Fields, type>, [=](std::uint8_t* at) {
    write_fixed_field<kZul4Fields, type>(at, id, element, baseCode);
  });
}

/// Append a field to the last record, which becomes the current one. Refused without an open
/// record, for null elements, a field count beyond 16 bits, a record near 2 GiB, and without room.
int ZUL4_add_short(ZUL4HANDLE& handle, FID id, std::int16_t value);
int ZUL4_add_long(ZUL4HANDLE& handle, FID id, std::int32_t value);
int ZUL4_add_double(ZUL4HANDLE& handle, FID id, double value);
int ZUL4_add_string(ZUL4HANDLE& handle, FID id, const char* text);
int ZUL4_add_lpack(ZUL4HANDLE& handle, FID id, std::uint16_t baseCode, std::int32_t price);
int ZUL4_add_date(ZUL4HANDLE& handle, FID id, ZULDATE value);
int ZUL4_add_time(ZUL4HANDLE& handle, FID id, ZULTIME value);
int ZUL4_add_error(ZUL4HANDLE& handle, FID id, std::int16_t error);
int ZUL4_add_short_vector(ZUL4HANDLE& handle, FID id, const std::int16_t* values,
                          std::uint32_t count);
int ZUL4_add_long_vector(ZUL4HANDLE& handle, FID id, const std::int32_t* values,
                         std::uint32_t count);
int ZUL4_add_double_vector(ZUL4HANDLE& handle, FID id, const double* values, std::uint32_t count);
int ZUL4_add_date_vector(ZUL4HANDLE& handle, FID id, const ZULDATE* values, std::uint32_t count);
int ZUL4_add_time_vector(ZUL4HANDLE& handle, FID id, const ZULTIME* values, std::uint32_t count);
int ZUL4_add_lpack_vector(ZUL4HANDLE& handle, FID id, std::uint16_t baseCode,
                          const std::int32_t* prices, std::uint32_t count);
int ZUL4_add_string_vector(ZUL4HANDLE& handle, FID id, const char* strings, std::uint32_t count,
                           std::uint32_t bytes);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_RECORDLIB_H_
