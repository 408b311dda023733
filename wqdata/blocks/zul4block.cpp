#include <algorithm>

#include <wqdata/blocks/fielditem.h>
#include <wqdata/blocks/zul4block.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/operations.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

int add_price(service::ZUL4HANDLE& handle, FID id, const CFixPtNum& price) {
  const auto baseCode = static_cast<std::uint16_t>(price.GetBaseCode());
  return service::ZUL4_add_lpack(handle, id, baseCode, price);
}

}  // namespace

CZul4Block::CZul4Block() { m_format = ZUL4; }

CZul4Block::CZul4Block(void* bytes, int size) {
  m_format = ZUL4;
  m_readOnly = m_wrapped = bytes != nullptr;
  const std::uint32_t present = size < 0 ? UINT32_MAX : static_cast<std::uint32_t>(size);
  if (m_wrapped) service::ZUL4_attach(static_cast<std::uint8_t*>(bytes), m_handle, present);
}

CZul4Block::CZul4Block(Fixed fixed) {
  m_format = ZUL4;
  service::ZUL4_attach_fixed(m_handle, fixed.buffer, fixed.size);
}

CZul4Block::~CZul4Block() {
  if ((m_handle.flags & service::kZul4Borrowed) == 0) service::ZUL4_free(m_handle.record);
}

/// A wrapped record stays unwritten even when an assignment took its read-only flag away.
bool CZul4Block::IsWritable() const { return !m_readOnly && !m_wrapped; }

void* CZul4Block::GetData() { return m_handle.record; }

int CZul4Block::GetDataSize() {
  return static_cast<int>(std::min<std::uint32_t>(service::ZUL4_length(m_handle), INT32_MAX));
}

int CZul4Block::GetRecordCount() { return service::ZUL4_record_count(m_handle); }

int CZul4Block::GetFieldCount() { return service::ZUL4_field_count(m_handle); }

int CZul4Block::DeclaredFieldCount() const { return service::ZUL4_declared_field_count(m_handle); }

int CZul4Block::LargestFieldCount() const { return service::ZUL4_largest_field_count(m_handle); }

bool CZul4Block::StartRecord() {
  if (!IsWritable()) return false;
  if (m_handle.record == nullptr) service::ZUL4_create(m_handle);
  service::ZUL4_add_record(m_handle);
  return true;
}

bool CZul4Block::EndRecord() { return IsWritable(); }

/// Appends a value at once, where there is room.
template <int type, typename Element>
bool CZul4Block::Append(FID id, Element element, std::uint16_t baseCode) {
  constexpr std::size_t kSize = service::kFixedSize<service::kZul4Fields, type>;
  if (m_readOnly || !service::ZUL4_has_room(m_handle, kSize)) return false;
  service::ZUL4_append_fixed<type>(m_handle, id, element, baseCode);
  return true;
}

/// The same by `add` where there is none as yet, and the missing value's error.
template <int type, typename Value>
bool CZul4Block::AddValue(FID id, Value value, int (*add)(service::ZUL4HANDLE&, FID, Value)) {
  if (!is_missing(value) && Append<type>(id, value)) return true;
  if (!IsWritable()) return false;
  return is_missing(value) ? AddError(id, kMissing) : add(m_handle, id, value) == 0;
}

bool CZul4Block::Add(FID id, const ZULTIME& value) {
  return AddValue<TYPE_TIME>(id, value, service::ZUL4_add_time);
}

bool CZul4Block::Add(FID id, const ZULDATE& value) {
  return AddValue<TYPE_DATE>(id, value, service::ZUL4_add_date);
}

bool CZul4Block::Add(FID id, const CFixPtNum& value) {
  const auto baseCode = static_cast<std::uint16_t>(value.GetBaseCode());
  const std::int32_t price = value;
  if (price != MISSING_LONG && Append<TYPE_LPACK>(id, price, baseCode)) return true;
  if (!IsWritable()) return false;
  return value.IsMissing() ? AddError(id, kMissing) : add_price(m_handle, id, value) == 0;
}

bool CZul4Block::Add(FID id, double value) {
  return AddValue<TYPE_DOUBLE>(id, value, service::ZUL4_add_double);
}

bool CZul4Block::Add(FID id, std::int32_t value) {
  return AddValue<TYPE_LONG>(id, value, service::ZUL4_add_long);
}

bool CZul4Block::Add(FID id, std::int16_t value) {
  return AddValue<TYPE_INT>(id, value, service::ZUL4_add_short);
}

bool CZul4Block::AddError(FID id, std::int16_t error) {
  if (Append<TYPE_ERROR>(id, error)) return true;
  return IsWritable() && service::ZUL4_add_error(m_handle, id, error) == 0;
}

bool CZul4Block::Add(FID id, const char* text) {
  if (!IsWritable() || text == nullptr) return false;
  return service::ZUL4_add_string(m_handle, id, text) == 0 || Refused();
}

bool CZul4Block::Add(CDataItem& item) {
  const bool added = append_scalar(item, [&]<int type>(auto value, std::uint16_t baseCode = 0) {
    return Append<type>(item.GetId(), value, baseCode);
  });
  if (added) return true;
  if (!IsWritable()) return false;
  const int type = item.GetType();
  if (service::is_vector(type)) return AddVector(item) || Refused();
  if (service::find_layout(service::kZul4Fields, type) == nullptr || type == TYPE_EMPTY)
    return false;
  return AddScalar(item) || Refused();
}

bool CZul4Block::AddScalar(CDataItem& item) {
  const FID id = item.GetId();
  switch (item.GetType()) {
    case TYPE_INT: return service::ZUL4_add_short(m_handle, id, item.GetShort()) == 0;
    case TYPE_LONG: return service::ZUL4_add_long(m_handle, id, item.GetLong()) == 0;
    case TYPE_DOUBLE: return service::ZUL4_add_double(m_handle, id, item.GetFloat()) == 0;
    case TYPE_DATE: return service::ZUL4_add_date(m_handle, id, item.GetDate()) == 0;
    case TYPE_TIME: return service::ZUL4_add_time(m_handle, id, item.GetTime()) == 0;
    case TYPE_STRING: return service::ZUL4_add_string(m_handle, id, item.GetString()) == 0;
    case TYPE_ERROR: return service::ZUL4_add_error(m_handle, id, item.GetError()) == 0;
    default: break;
  }
  return add_price(m_handle, id, item.GetFPN()) == 0;
}

bool CZul4Block::AddVector(CDataItem& item) {
  const FID id = item.GetId();
  const auto size = static_cast<std::uint32_t>(item.GetSize());
  const void* const elements = item.GetVectorPtr();
  switch (item.GetType()) {
    case TYPE_VECTOR_LONG:
      return AddLongVector(id, static_cast<const std::int32_t*>(elements), size);
    case TYPE_VECTOR_INT:
      return AddShortVector(id, static_cast<const std::int16_t*>(elements), size);
    case TYPE_VECTOR_DOUBLE: return AddDoubleVector(id, static_cast<const double*>(elements), size);
    case TYPE_VECTOR_DATE: return AddDateVector(id, static_cast<const ZULDATE*>(elements), size);
    case TYPE_VECTOR_TIME: return AddTimeVector(id, static_cast<const ZULTIME*>(elements), size);
    case TYPE_VECTOR_LPACK:
      return AddPriceVector(id, static_cast<const std::int32_t*>(elements), item.GetBaseCode(),
                            size);
    default: break;
  }
  const auto* const strings = static_cast<const char*>(elements);
  return AddStringVector(id, strings, service::count_strings(strings, size), size);
}

/// Says in the log that a field found no room. Always false.
bool CZul4Block::Refused() {
  service::log_message(service::kLevelFailed, "Couldn't allocate ZUL4 record size %d",
                       GetDataSize());
  return false;
}

bool CZul4Block::AddShortVector(FID id, const std::int16_t* values, std::uint32_t count) {
  return IsWritable() && service::ZUL4_add_short_vector(m_handle, id, values, count) == 0;
}

bool CZul4Block::AddLongVector(FID id, const std::int32_t* values, std::uint32_t count) {
  return IsWritable() && service::ZUL4_add_long_vector(m_handle, id, values, count) == 0;
}

bool CZul4Block::AddDoubleVector(FID id, const double* values, std::uint32_t count) {
  return IsWritable() && service::ZUL4_add_double_vector(m_handle, id, values, count) == 0;
}

bool CZul4Block::AddDateVector(FID id, const ZULDATE* values, std::uint32_t count) {
  return IsWritable() && service::ZUL4_add_date_vector(m_handle, id, values, count) == 0;
}

bool CZul4Block::AddTimeVector(FID id, const ZULTIME* values, std::uint32_t count) {
  return IsWritable() && service::ZUL4_add_time_vector(m_handle, id, values, count) == 0;
}

bool CZul4Block::AddStringVector(FID id, const char* strings, std::uint32_t count,
                                 std::uint32_t bytes) {
  return IsWritable() && service::ZUL4_add_string_vector(m_handle, id, strings, count, bytes) == 0;
}

bool CZul4Block::AddPriceVector(FID id, const std::int32_t* prices, std::int16_t baseCode,
                                std::uint32_t count) {
  const auto code = static_cast<std::uint16_t>(baseCode);
  return IsWritable() && service::ZUL4_add_lpack_vector(m_handle, id, code, prices, count) == 0;
}

bool CZul4Block::FirstRecord() { return service::ZUL4_seek_record(m_handle, 0) == 0; }

bool CZul4Block::NextRecord() { return service::ZUL4_next_record(m_handle) == 0; }

bool CZul4Block::FirstField() { return service::ZUL4_first_field(m_handle) == 0; }

bool CZul4Block::FindField(FID id) { return service::ZUL4_find_field(m_handle, id) == 0; }

int CZul4Block::GetVectorSize() {
  std::int32_t largest = 0;
  service::FieldView view;
  for (bool more = FirstField(); more; more = NextField()) {
    if (service::ZUL4_current_field(m_handle, view) != 0) break;
    largest = std::max(largest, static_cast<std::int32_t>(service::vector_size(view)));
  }
  return largest;
}

bool CZul4Block::ReadOtherField(CDataItem* item) {
  const service::Bytes bytes = service::ZUL4_field_bytes(m_handle);
  m_readSize = read_other_field<service::kZul4Fields>(bytes, item, "CZul4Block");
  m_readField = m_readSize != 0 ? m_handle.field : 0;
  return m_readSize != 0;
}

FID CZul4Block::GetCurrentFieldId() {
  service::FieldView view;
  return service::ZUL4_current_field(m_handle, view) == 0 ? view.id : FID{0};
}

int CZul4Block::GetCurrentFieldType() {
  service::FieldView view;
  return service::ZUL4_current_field(m_handle, view) == 0 ? view.type : 0;
}

}  // namespace wqd
