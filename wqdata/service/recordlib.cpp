#include <algorithm>
#include <cstring>

#include <wqdata/service/memory.h>
#include <wqdata/service/recordlib.h>

namespace wqd::service {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;

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

/// The fields that a record declares, as far as its bytes can hold them.
std::uint16_t fields_in(Bytes record) {
  if (record.Left() == 0) return 0;
  const auto declared = load<std::uint16_t>(record.At() + kZul4FieldCountAt);
  const std::size_t most = (record.Left() - kZul4RecordHead) / kFieldHead;
  return static_cast<std::uint16_t>(std::min<std::size_t>(declared, most));
}

void stand_on_record(ZUL4HANDLE& handle, std::uint32_t index, std::uint32_t offset) {
  handle.index = static_cast<std::uint16_t>(index);
  handle.current = offset;
  handle.field = offset + kZul4RecordHead;
}

int enter_record(ZUL4HANDLE& handle, std::uint32_t index, std::uint32_t offset) {
  if (index >= ZUL4_record_count(handle)) return kFailed;
  if (record_at(handle, offset).Left() == 0) return kFailed;
  stand_on_record(handle, index, offset);
  return kDone;
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
  const std::uint64_t needed = std::uint64_t{ZUL4_length(handle)} + more;
  if (handle.record != nullptr && needed <= handle.capacity) return true;
  if ((handle.flags & kZul4Borrowed) != 0) return false;
  void* const moved = grown(handle.record, handle.capacity, needed, source);
  if (moved == nullptr) return false;
  handle.record = static_cast<std::uint8_t*>(moved);
  return true;
}

void set_length(ZUL4HANDLE& handle, std::uint64_t length) {
  store(handle.record + kZul4LengthAt, static_cast<std::uint32_t>(length));
}

/// Goes to the last record and makes room in it. False, with nothing changed but the cursors, when
/// the field is refused. A text in the record itself, at `source`, moves along.
bool get_room(ZUL4HANDLE& handle, std::uint64_t size, const void** source = nullptr) {
  if (ZUL4_has_room(handle, size)) return true;
  if (handle.record == nullptr || (handle.flags & kZul4Refused) != 0) return false;
  if (!ZUL4_is_open(handle) && !enter_last_record(handle)) return false;
  const auto fields = load<std::uint16_t>(handle.record + handle.current + kZul4FieldCountAt);
  return fields != UINT16_MAX && make_room(handle, size, source);
}

template <int type, typename Element>
int add(ZUL4HANDLE& handle, FID id, Element element, std::uint16_t baseCode = 0) {
  if (!get_room(handle, kFixedSize<kZul4Fields, type>)) return kFailed;
  ZUL4_append_fixed<type>(handle, id, element, baseCode);
  return kDone;
}

int add_vector(ZUL4HANDLE& handle, VectorValue value) {
  const std::uint64_t size = vector_field_size(kZul4Fields, value);
  if (size == 0 || !get_room(handle, size, &value.elements)) return kFailed;
  ZUL4_append(handle, size, [&](std::uint8_t* at) { write_vector_field(kZul4Fields, value, at); });
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
  handle.flags = kZul4Borrowed | kZul4Refused;
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
  handle.flags |= kZul4Refused;
  if (handle.record == nullptr || records == UINT16_MAX) return kFailed;
  if (!make_room(handle, kZul4RecordHead)) return kFailed;
  const std::uint32_t length = ZUL4_length(handle);
  std::uint8_t* const head = handle.record + length;
  std::memset(head, 0, kZul4RecordHead);
  store(head + kZul4RecordLengthAt, kZul4RecordHead);
  store(handle.record + kZul4RecordCountAt, static_cast<std::uint16_t>(records + 1));
  set_length(handle, length + kZul4RecordHead);
  handle.flags = static_cast<std::uint8_t>(handle.flags & ~kZul4Refused);
  stand_on_record(handle, records, length);
  return kDone;
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
  bytes.AskAhead();
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
  return fields_in(current_record(handle));
}

std::uint16_t ZUL4_largest_field_count(const ZUL4HANDLE& handle) {
  std::uint16_t largest = 0;
  Bytes record = record_at(handle, kZul4HeaderSize);
  std::uint32_t offset = kZul4HeaderSize;
  for (auto records = ZUL4_record_count(handle); records > 0 && record.Left() != 0; --records) {
    largest = std::max(largest, fields_in(record));
    offset += static_cast<std::uint32_t>(record.Left());
    record = record_at(handle, offset);
  }
  return largest;
}

int ZUL4_next_field(ZUL4HANDLE& handle) {
  const std::uint64_t size = field_size<kZul4Fields>(ZUL4_field_bytes(handle));
  return ZUL4_next_field(handle, static_cast<std::uint32_t>(size));
}

int ZUL4_find_field(ZUL4HANDLE& handle, FID id) {
  if (ZUL4_first_field(handle) != kDone) return kFailed;
  const FoundField end = find_field<kZul4Fields>(ZUL4_field_bytes(handle), id, UINT32_MAX);
  handle.field = end.found ? static_cast<std::uint32_t>(end.bytes.At() - handle.record) : 0;
  return end.found ? kDone : kFailed;
}

int ZUL4_current_field(const ZUL4HANDLE& handle, FieldView& view) {
  return view_field(kZul4Fields, ZUL4_field_bytes(handle), view) ? kDone : kFailed;
}

int ZUL4_add_short(ZUL4HANDLE& handle, FID id, std::int16_t value) {
  return add<TYPE_INT>(handle, id, value);
}

int ZUL4_add_long(ZUL4HANDLE& handle, FID id, std::int32_t value) {
  return add<TYPE_LONG>(handle, id, value);
}

int ZUL4_add_double(ZUL4HANDLE& handle, FID id, double value) {
  return add<TYPE_DOUBLE>(handle, id, value);
}

int ZUL4_add_string(ZUL4HANDLE& handle, FID id, const char* text) {
  if (text == nullptr) return kFailed;
  const std::size_t length = std::strlen(text);
  const std::uint64_t size = text_field_size<kZul4Fields>(length);
  const void* source = text;
  if (!get_room(handle, size, &source)) return kFailed;
  ZUL4_append(handle, size, [=](std::uint8_t* at) {
    write_text_field<kZul4Fields>(at, id, static_cast<const char*>(source), length);
  });
  return kDone;
}

int ZUL4_add_lpack(ZUL4HANDLE& handle, FID id, std::uint16_t baseCode, std::int32_t price) {
  return add<TYPE_LPACK>(handle, id, price, baseCode);
}

int ZUL4_add_date(ZUL4HANDLE& handle, FID id, ZULDATE value) {
  return add<TYPE_DATE>(handle, id, value);
}

int ZUL4_add_time(ZUL4HANDLE& handle, FID id, ZULTIME value) {
  return add<TYPE_TIME>(handle, id, value);
}

int ZUL4_add_error(ZUL4HANDLE& handle, FID id, std::int16_t error) {
  return add<TYPE_ERROR>(handle, id, error);
}

int ZUL4_add_short_vector(ZUL4HANDLE& handle, FID id, const std::int16_t* values,
                          std::uint32_t count) {
  return add_vector(handle, {TYPE_VECTOR_INT, id, values, count});
}

int ZUL4_add_long_vector(ZUL4HANDLE& handle, FID id, const std::int32_t* values,
                         std::uint32_t count) {
  return add_vector(handle, {TYPE_VECTOR_LONG, id, values, count});
}

int ZUL4_add_double_vector(ZUL4HANDLE& handle, FID id, const double* values, std::uint32_t count) {
  return add_vector(handle, {TYPE_VECTOR_DOUBLE, id, values, count});
}

int ZUL4_add_date_vector(ZUL4HANDLE& handle, FID id, const ZULDATE* values, std::uint32_t count) {
  return add_vector(handle, {TYPE_VECTOR_DATE, id, values, count});
}

int ZUL4_add_time_vector(ZUL4HANDLE& handle, FID id, const ZULTIME* values, std::uint32_t count) {
  return add_vector(handle, {TYPE_VECTOR_TIME, id, values, count});
}

int ZUL4_add_lpack_vector(ZUL4HANDLE& handle, FID id, std::uint16_t baseCode,
                          const std::int32_t* prices, std::uint32_t count) {
  return add_vector(handle, {TYPE_VECTOR_LPACK, id, prices, count, baseCode});
}

int ZUL4_add_string_vector(ZUL4HANDLE& handle, FID id, const char* strings, std::uint32_t count,
                           std::uint32_t bytes) {
  return add_vector(handle, {TYPE_VECTOR_STRING, id, strings, bytes, 0, count});
}

}  // namespace wqd::service
