#include <algorithm>
#include <cstring>

#include <wqdata/service/memory.h>
#include <wqdata/service/recordlib.h>

namespace wqd::service {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;

constexpr std::uint8_t kRefused = 0x01;  // in the flags: the latest record could not be opened

/// The bytes of the record at an offset, with its head. None where no whole record is there.
Bytes record_at(const ZUL4HANDLE& handle, std::uint32_t offset) {
  const std::uint32_t length = ZUL4_length(handle);
  if (offset < kZul4HeaderSize || offset > length) return {nullptr, 0};
  return ZUL4_record({handle.record + offset, length - offset});
}

/// The bytes of the current record. It was whole when it was entered, and it does not shrink.
Bytes current_record(const ZUL4HANDLE& handle) {
  if (handle.current == 0) return {nullptr, 0};
  const std::uint8_t* const at = handle.record + handle.current;
  return {at, load<std::uint32_t>(at + kZul4RecordLengthAt)};
}

/// The bytes from the current field to the end of its record.
Bytes field_bytes(const ZUL4HANDLE& handle) {
  if (handle.field == 0) return {nullptr, 0};
  Bytes bytes = current_record(handle);
  return bytes.Skip(handle.field - handle.current) ? bytes : Bytes{nullptr, 0};
}

int enter_record(ZUL4HANDLE& handle, std::uint32_t index, std::uint32_t offset) {
  if (index >= ZUL4_record_count(handle)) return kFailed;
  if (record_at(handle, offset).Left() == 0) return kFailed;
  handle.index = static_cast<std::uint16_t>(index);
  handle.current = offset;
  handle.field = offset + kZul4RecordHead;
  return kDone;
}

bool is_in_last_record(const ZUL4HANDLE& handle) {
  return handle.current != 0 &&
         handle.index + 1 == load<std::uint16_t>(handle.record + kZul4RecordCountAt);
}

/// Moves to the record that is being written, which is the last one. False for none.
bool enter_last_record(ZUL4HANDLE& handle) {
  if (handle.current == 0 && ZUL4_seek_record(handle, 0) != kDone) return false;
  while (ZUL4_next_record(handle) == kDone) {
  }
  return true;
}

/// Makes room for `more` bytes. A text in the record itself, at `source`, moves along.
bool make_room(ZUL4HANDLE& handle, std::uint64_t more, const void** source = nullptr) {
  const std::uint64_t needed = (handle.record != nullptr ? ZUL4_length(handle) : 0) + more;
  if ((handle.flags & kZul4Borrowed) != 0)
    return handle.record != nullptr && needed <= handle.capacity;
  void* const moved = grown(handle.record, handle.capacity, needed, source);
  if (moved == nullptr) return false;
  handle.record = static_cast<std::uint8_t*>(moved);
  return true;
}

void set_length(ZUL4HANDLE& handle, std::uint64_t length) {
  store(handle.record + kZul4LengthAt, static_cast<std::uint32_t>(length));
}

/// Counts a field of `size` bytes at the end of the last record, for which there is room then, and
/// gives the place. Null, with nothing changed, when it is refused.
std::uint8_t* append(ZUL4HANDLE& handle, std::uint64_t size, const void** source) {
  if (handle.record == nullptr || (handle.flags & kRefused) != 0) return nullptr;
  if (!is_in_last_record(handle) && !enter_last_record(handle)) return nullptr;
  const auto fields = load<std::uint16_t>(handle.record + handle.current + kZul4FieldCountAt);
  const auto length = load<std::uint32_t>(handle.record + kZul4LengthAt);
  if (fields == UINT16_MAX) return nullptr;
  if (size > handle.capacity - length && !make_room(handle, size, source)) return nullptr;
  std::uint8_t* const head = handle.record + handle.current;
  const auto end = static_cast<std::uint32_t>(length + size);
  store(head + kZul4RecordLengthAt, end - handle.current);
  store(head + kZul4FieldCountAt, static_cast<std::uint16_t>(fields + 1));
  store(handle.record + kZul4LengthAt, end);
  return handle.record + length;
}

/// Inlined into the adds, each of which knows its type: of the layout's questions none is left.
[[gnu::always_inline]] inline int add(ZUL4HANDLE& handle, FieldValue value) {
  const std::uint64_t size = field_size(kZul4Fields, value);
  std::uint8_t* const at = size != 0 ? append(handle, size, &value.elements) : nullptr;
  if (at == nullptr) return kFailed;
  write_field(kZul4Fields, value, at);
  return kDone;
}

void write_header(ZUL4HANDLE& handle) {
  std::memset(handle.record, 0, kZul4HeaderSize);
  set_length(handle, kZul4HeaderSize);
}

}  // namespace

int ZUL4_attach(std::uint8_t* bytes, ZUL4HANDLE& handle, std::uint32_t size) {
  handle = ZUL4HANDLE{};
  handle.record = bytes;
  handle.capacity = size;
  handle.flags = kZul4Borrowed;
  return ZUL4_seek_record(handle, 0);
}

int ZUL4_attach_fixed(ZUL4HANDLE& handle, void* buffer, std::int64_t size) {
  handle = ZUL4HANDLE{};
  handle.flags = kZul4Borrowed;
  if (buffer == nullptr || size < kZul4HeaderSize) return kFailed;
  handle.record = static_cast<std::uint8_t*>(buffer);
  handle.capacity = static_cast<std::uint32_t>(size);
  write_header(handle);
  return kDone;
}

int ZUL4_create(ZUL4HANDLE& handle) {
  if (!make_room(handle, kZul4HeaderSize)) return kFailed;
  write_header(handle);
  return kDone;
}

int ZUL4_add_record(ZUL4HANDLE& handle) {
  const std::uint16_t records = ZUL4_record_count(handle);
  handle.flags |= kRefused;
  if (handle.record == nullptr || records == UINT16_MAX) return kFailed;
  if (!make_room(handle, kZul4RecordHead)) return kFailed;
  const std::uint32_t length = ZUL4_length(handle);
  std::uint8_t* const head = handle.record + length;
  std::memset(head, 0, kZul4RecordHead);
  store(head + kZul4RecordLengthAt, kZul4RecordHead);
  store(handle.record + kZul4RecordCountAt, static_cast<std::uint16_t>(records + 1));
  set_length(handle, length + kZul4RecordHead);
  handle.flags = static_cast<std::uint8_t>(handle.flags & ~kRefused);
  return enter_record(handle, records, length);
}

void ZUL4_free(std::uint8_t* record) { release(record); }

std::uint32_t ZUL4_length(const ZUL4HANDLE& handle) {
  if (handle.record == nullptr || handle.capacity < kZul4HeaderSize) return 0;
  const auto declared = load<std::uint32_t>(handle.record + kZul4LengthAt);
  const std::uint32_t length = std::min(declared, handle.capacity);
  return length < kZul4HeaderSize ? 0 : length;
}

std::uint16_t ZUL4_record_count(const ZUL4HANDLE& handle) {
  if (ZUL4_length(handle) < kZul4HeaderSize) return 0;
  return load<std::uint16_t>(handle.record + kZul4RecordCountAt);
}

Bytes ZUL4_record(Bytes bytes) {
  if (bytes.Left() < kZul4RecordHead) return {nullptr, 0};
  const auto size = load<std::uint32_t>(bytes.At() + kZul4RecordLengthAt);
  if (size < kZul4RecordHead || size > bytes.Left()) return {nullptr, 0};
  return {bytes.At(), size};
}

int ZUL4_seek_record(ZUL4HANDLE& handle, std::uint32_t index) {
  handle.current = 0;
  handle.field = 0;
  if (enter_record(handle, 0, kZul4HeaderSize) != kDone) return kFailed;
  for (; index > 0; --index) {
    if (ZUL4_next_record(handle) != kDone) return kFailed;
  }
  return kDone;
}

int ZUL4_next_record(ZUL4HANDLE& handle) {
  const Bytes record = current_record(handle);
  if (record.Left() == 0) return kFailed;
  return enter_record(handle, std::uint32_t{handle.index} + 1,
                      handle.current + static_cast<std::uint32_t>(record.Left()));
}

std::uint16_t ZUL4_declared_field_count(const ZUL4HANDLE& handle) {
  const Bytes record = current_record(handle);
  if (record.Left() == 0) return 0;
  return load<std::uint16_t>(record.At() + kZul4FieldCountAt);
}

std::uint16_t ZUL4_field_count(const ZUL4HANDLE& handle) {
  const std::uint16_t declared = ZUL4_declared_field_count(handle);
  if (declared == 0) return 0;
  const std::size_t fields = current_record(handle).Left() - kZul4RecordHead;
  return static_cast<std::uint16_t>(std::min<std::size_t>(declared, fields / kFieldHead));
}

int ZUL4_seek_field(ZUL4HANDLE& handle, std::uint32_t index) {
  handle.field = handle.current == 0 ? 0 : handle.current + kZul4RecordHead;
  if (field_bytes(handle).Left() == 0) {
    handle.field = 0;
    return kFailed;
  }
  for (; index > 0; --index) {
    if (ZUL4_next_field(handle) != kDone) return kFailed;
  }
  return kDone;
}

int ZUL4_next_field(ZUL4HANDLE& handle) {
  const Bytes bytes = field_bytes(handle);
  FieldView view;
  const bool known = view_field(kZul4Fields, bytes, view) && view.size > 0;
  handle.field =
      known && view.size < bytes.Left() ? handle.field + static_cast<std::uint32_t>(view.size) : 0;
  return handle.field != 0 ? kDone : kFailed;
}

int ZUL4_current_field(const ZUL4HANDLE& handle, FieldView& view) {
  return view_field(kZul4Fields, field_bytes(handle), view) ? kDone : kFailed;
}

int ZUL4_add_short(ZUL4HANDLE& handle, FID id, std::int16_t value) {
  return add(handle, {TYPE_INT, id, &value});
}

int ZUL4_add_long(ZUL4HANDLE& handle, FID id, std::int32_t value) {
  return add(handle, {TYPE_LONG, id, &value});
}

int ZUL4_add_double(ZUL4HANDLE& handle, FID id, double value) {
  return add(handle, {TYPE_DOUBLE, id, &value});
}

int ZUL4_add_string(ZUL4HANDLE& handle, FID id, const char* text) {
  if (text == nullptr) return kFailed;
  const std::size_t length = std::strlen(text);
  if (length > kLargestBlock) return kFailed;
  return add(handle, {TYPE_STRING, id, text, static_cast<std::uint32_t>(length)});
}

int ZUL4_add_lpack(ZUL4HANDLE& handle, FID id, std::uint16_t baseCode, std::int32_t price) {
  return add(handle, {TYPE_LPACK, id, &price, 1, baseCode});
}

int ZUL4_add_date(ZUL4HANDLE& handle, FID id, ZULDATE value) {
  return add(handle, {TYPE_DATE, id, &value});
}

int ZUL4_add_time(ZUL4HANDLE& handle, FID id, ZULTIME value) {
  return add(handle, {TYPE_TIME, id, &value});
}

int ZUL4_add_error(ZUL4HANDLE& handle, FID id, std::int16_t error) {
  return add(handle, {TYPE_ERROR, id, &error});
}

int ZUL4_add_short_vector(ZUL4HANDLE& handle, FID id, const std::int16_t* values,
                          std::uint32_t count) {
  return add(handle, {TYPE_VECTOR_INT, id, values, count});
}

int ZUL4_add_long_vector(ZUL4HANDLE& handle, FID id, const std::int32_t* values,
                         std::uint32_t count) {
  return add(handle, {TYPE_VECTOR_LONG, id, values, count});
}

int ZUL4_add_double_vector(ZUL4HANDLE& handle, FID id, const double* values, std::uint32_t count) {
  return add(handle, {TYPE_VECTOR_DOUBLE, id, values, count});
}

int ZUL4_add_date_vector(ZUL4HANDLE& handle, FID id, const ZULDATE* values, std::uint32_t count) {
  return add(handle, {TYPE_VECTOR_DATE, id, values, count});
}

int ZUL4_add_time_vector(ZUL4HANDLE& handle, FID id, const ZULTIME* values, std::uint32_t count) {
  return add(handle, {TYPE_VECTOR_TIME, id, values, count});
}

int ZUL4_add_lpack_vector(ZUL4HANDLE& handle, FID id, std::uint16_t baseCode,
                          const std::int32_t* prices, std::uint32_t count) {
  return add(handle, {TYPE_VECTOR_LPACK, id, prices, count, baseCode});
}

int ZUL4_add_string_vector(ZUL4HANDLE& handle, FID id, const char* strings, std::uint32_t count,
                           std::uint32_t bytes) {
  return add(handle, {TYPE_VECTOR_STRING, id, strings, bytes, 0, count});
}

}  // namespace wqd::service
