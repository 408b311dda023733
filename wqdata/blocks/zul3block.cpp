#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include <wqdata/blocks/fielditem.h>
#include <wqdata/blocks/zul3block.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/bigzul3.h>
#include <wqdata/service/operations.h>
#include <wqdata/service/text.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

using service::kZul3FieldCountAt;
using service::kZul3HeaderSize;
using service::kZul3LengthAt;
using service::kZul3RecordCountAt;

constexpr std::uint32_t kMostItemElements = 16000;  // of a longer vector of an item, the last ones

/// The type of an item and its value, as the log shows them; a text is left out.
void describe(CDataItem& item, char* text, std::size_t size) {
  const CFixPtNum price = item.GetFPN();
  const CZulDate date = item.GetDate();
  const ZULTIME time = item.GetTime();
  service::NumberText number;
  const auto count = [&](const char* name) {
    std::snprintf(text, size, "%s<%d>", name, item.GetSize());
  };
  switch (item.GetType()) {
    case TYPE_DOUBLE: {
      const std::string_view real = service::fixed_text(item.GetFloat(), number, 6);
      std::snprintf(text, size, "TYPE_DOUBLE, val<%.*s>", static_cast<int>(real.size()),
                    real.data());
      return;
    }
    case TYPE_INT: std::snprintf(text, size, "TYPE_INT, val<%d>", item.GetShort()); return;
    case TYPE_LONG:
      std::snprintf(text, size, "TYPE_LONG, val<%" PRId32 ">", item.GetLong());
      return;
    case TYPE_LPACK:
      std::snprintf(text, size, "TYPE_LPACK, val<%" PRId32 ", %d>",
                    static_cast<std::int32_t>(price), price.GetBaseCode());
      return;
    case TYPE_DATE:
      std::snprintf(text, size, "TYPE_DATE, val<%d/%d/%d>", date.Month(), date.Day(), date.Year());
      return;
    case TYPE_TIME:
      std::snprintf(text, size, "TYPE_TIME, val<%d,%d>", time.minutes, time.seconds);
      return;
    case TYPE_ERROR: std::snprintf(text, size, "TYPE_ERROR, val<%d>", item.GetError()); return;
    case TYPE_VECTOR_DOUBLE: return count("TYPE_VECTOR_DOUBLE, nElements");
    case TYPE_VECTOR_LPACK: return count("TYPE_VECTOR_LPACK, nElements");
    case TYPE_VECTOR_LONG: return count("TYPE_VECTOR_LONG, nelements");
    case TYPE_VECTOR_INT: return count("TYPE_VECTOR_INT, nelements");
    case TYPE_VECTOR_DATE: return count("TYPE_VECTOR_DATE, nelements");
    case TYPE_VECTOR_TIME: return count("TYPE_VECTOR_TIME, nelements");
    default: std::snprintf(text, size, "TYPE_VECTOR_STRING, wSize<%d>", item.GetSize() & 0xFFFF);
  }
}

}  // namespace

CZul3Block::CZul3Block() { m_format = ZUL3; }

CZul3Block::CZul3Block(void* bytes, int size) : m_pRecord(static_cast<std::uint8_t*>(bytes)) {
  m_format = ZUL3;
  m_readOnly = bytes != nullptr;
  if (m_readOnly && size >= 0) m_present = static_cast<std::uint32_t>(size);
  if (m_readOnly) FirstRecord();
}

CZul3Block::~CZul3Block() {
  if (m_allocSize > 0) service::BigZUL3_free(m_pRecord);
}

/// A wrapped record stays unwritten even when an assignment took its read-only flag away.
bool CZul3Block::IsWritable() const {
  return !m_readOnly && (m_pRecord == nullptr || m_allocSize > 0);
}

/// What the header says, as far as the bytes go; all 0 without a record, and for bytes that are no
/// whole header.
inline CZul3Block::Header CZul3Block::ReadHeader() const {
  if (m_pRecord == nullptr || m_present < kZul3HeaderSize) return {};
  const auto length = service::load<std::uint32_t>(m_pRecord + kZul3LengthAt);
  if (length < kZul3HeaderSize) return {};
  return {std::min(length, m_present), service::load<std::uint16_t>(m_pRecord + kZul3RecordCountAt),
          service::load<std::uint16_t>(m_pRecord + kZul3FieldCountAt)};
}

void CZul3Block::SetHeaderWord(std::uint32_t offset, std::uint16_t word) {
  service::store(m_pRecord + offset, word);
}

void* CZul3Block::GetData() { return m_pRecord; }

int CZul3Block::GetDataSize() {
  return static_cast<int>(std::min<std::uint32_t>(ReadHeader().length, INT32_MAX));
}

int CZul3Block::GetRecordCount() { return ReadHeader().records; }

int CZul3Block::GetFieldCount() { return ReadHeader().fields; }

bool CZul3Block::StartRecord() {
  if (!IsWritable()) return false;
  if (m_pRecord != nullptr) SetHeaderWord(kZul3FieldCountAt, 0);
  return true;
}

bool CZul3Block::EndRecord() {
  if (!IsWritable()) return false;
  const Header header = ReadHeader();
  if (header.fields == 0) {
    if (header.records > 0) SetHeaderWord(kZul3FieldCountAt, m_finishedFields);
    m_emptyAt = header.length;
    return true;
  }
  if (header.length == m_emptyAt) return true;
  if (header.records == UINT16_MAX) return false;
  m_finishedFields = header.fields;
  SetHeaderWord(kZul3RecordCountAt, static_cast<std::uint16_t>(header.records + 1));
  return true;
}

/// Appends a value at once, where there is room. False for all else, which goes the way of items.
template <int type, typename Stored>
bool CZul3Block::Append(FID id, const Stored& stored, std::uint16_t baseCode) {
  constexpr std::size_t kSize = service::kFixedSize<service::kZul3Fields, type>;
  if (m_readOnly || !service::BigZUL3_has_room(m_pRecord, kSize, m_allocSize)) return false;
  service::BigZUL3_append_fixed<type>(m_pRecord, id, stored, baseCode);
  return true;
}

bool CZul3Block::Add(FID id, const ZULTIME& value) {
  const bool added = !is_missing(value) && Append<TYPE_TIME>(id, brought_together(value));
  return added || CDataBlock::Add(id, value);
}

bool CZul3Block::Add(FID id, const ZULDATE& value) {
  const bool added = !is_missing(value) && Append<TYPE_DATE>(id, ZULDATE(CZulDate(value)));
  return added || CDataBlock::Add(id, value);
}

bool CZul3Block::Add(FID id, const CFixPtNum& value) {
  const auto baseCode = static_cast<std::uint16_t>(value.GetBaseCode());
  const std::int32_t price = value;
  const bool added = price != MISSING_LONG && Append<TYPE_LPACK>(id, price, baseCode);
  return added || CDataBlock::Add(id, value);
}

bool CZul3Block::Add(FID id, double value) {
  const bool added = !is_missing(value) && Append<TYPE_DOUBLE>(id, value);
  return added || CDataBlock::Add(id, value);
}

bool CZul3Block::Add(FID id, std::int32_t value) {
  const bool added = !is_missing(value) && Append<TYPE_LONG>(id, value);
  return added || CDataBlock::Add(id, value);
}

bool CZul3Block::Add(FID id, std::int16_t value) {
  const bool added = !is_missing(value) && Append<TYPE_INT>(id, value);
  return added || CDataBlock::Add(id, value);
}

bool CZul3Block::AddError(FID id, std::int16_t error) {
  return Append<TYPE_ERROR>(id, error) || CDataBlock::AddError(id, error);
}

bool CZul3Block::Add(CDataItem& item) {
  const bool added = append_scalar(item, [&]<int type>(auto value, std::uint16_t baseCode = 0) {
    return Append<type>(item.GetId(), value, baseCode);
  });
  if (added) return true;
  if (!IsWritable()) return false;
  switch (item.GetType()) {
    case TYPE_DOUBLE:
    case TYPE_LONG:
    case TYPE_INT:
    case TYPE_LPACK:
    case TYPE_STRING:
    case TYPE_DATE:
    case TYPE_TIME:
    case TYPE_ERROR: return AddScalar(item) || Refused(item);
    case TYPE_VECTOR_DOUBLE:
    case TYPE_VECTOR_LONG:
    case TYPE_VECTOR_INT:
    case TYPE_VECTOR_LPACK:
    case TYPE_VECTOR_DATE:
    case TYPE_VECTOR_TIME: return AddVector(item) || Refused(item);
    case TYPE_VECTOR_STRING: return AddStrings(item) || Refused(item);
    case TYPE_EMPTY:
      service::log_message(service::kLevelRejected,
                           "CZul3Block::Add(CDataItem&) failed, fid<%d>, TYPE_EMPTY, ignored",
                           item.GetId());
      return true;
    default:
      service::log_message(service::kLevelUnhandled,
                           "Unhandled type<%d> in CZul3Block::Add(CDataItem&)", item.GetType());
      return true;
  }
}

bool CZul3Block::AddScalar(CDataItem& item) {
  const FID id = item.GetId();
  const auto add = [this, &item, id](auto value) { return AddField(item.GetType(), id, &value); };
  switch (item.GetType()) {
    case TYPE_DOUBLE: return add(item.GetFloat());
    case TYPE_LONG: return add(item.GetLong());
    case TYPE_INT: return add(item.GetShort());
    case TYPE_DATE: return add(static_cast<ZULDATE>(item.GetDate()));
    case TYPE_TIME: return add(static_cast<ZULTIME>(item.GetTime()));
    case TYPE_ERROR: return add(item.GetError());
    case TYPE_STRING: return AddField(TYPE_STRING, id, item.GetString());
    default: break;
  }
  return AddPrice(id, item.GetFPN());
}

bool CZul3Block::AddPrice(FID id, const CFixPtNum& price) {
  const auto baseCode = static_cast<std::uint16_t>(price.GetBaseCode());
  return service::BigZUL3_add_lpack(m_pRecord, id, baseCode, price, m_allocSize) != 0;
}

/// The head of a vector beyond the limit is left out, and no word said.
bool CZul3Block::AddVector(CDataItem& item) {
  const auto count = static_cast<std::uint32_t>(item.GetSize());
  const std::uint32_t taken = std::min(count, kMostItemElements);
  const std::uint64_t width = service::find_layout(service::kZul3Fields, item.GetType())->width;
  const auto* const elements = static_cast<const std::uint8_t*>(item.GetVectorPtr());
  const bool prices = item.GetType() == TYPE_VECTOR_LPACK;
  const auto baseCode = static_cast<std::uint16_t>(prices ? item.GetBaseCode() : 0);
  return AddVector(item.GetType(), item.GetId(), elements + (count - taken) * width, baseCode,
                   taken);
}

/// A size beyond 16 bits is refused: its low bits alone would cut a string in two.
bool CZul3Block::AddStrings(CDataItem& item) {
  const auto size = static_cast<std::uint32_t>(item.GetSize());
  const auto* const strings = static_cast<const char*>(item.GetVectorPtr());
  return AddStringVector(item.GetId(), strings, service::count_strings(strings, size), size);
}

bool CZul3Block::AddField(int type, FID id, const void* value) {
  return service::BigZUL3_add_field(m_pRecord, type, id, value, m_allocSize) == 0;
}

bool CZul3Block::AddVector(int type, FID id, const void* elements, std::uint16_t baseCode,
                           std::uint32_t count) {
  return IsWritable() && service::BigZUL3_add_vector(m_pRecord, type, id, count, baseCode, elements,
                                                     m_allocSize) == 0;
}

/// Says in the log what could not be added. Always false.
bool CZul3Block::Refused(CDataItem& item) {
  char value[std::tuple_size_v<service::NumberText> + 40];
  describe(item, value, sizeof value);
  const int id = item.GetId();
  if (item.GetType() == TYPE_STRING) {
    service::log_message(service::kLevelFailed,
                         "CZul3Block::Add(CDataItem&) failed, fid<%d>, TYPE_STRING, val<%s>, "
                         "m_allocSize<%" PRIu32 ">",
                         id, item.GetString(), m_allocSize);
  } else {
    service::log_message(service::kLevelFailed,
                         "CZul3Block::Add(CDataItem&) failed, fid<%d>, %s, m_allocSize<%" PRIu32
                         ">",
                         id, value, m_allocSize);
  }
  service::log_message(service::kLevelFailed,
                       "CZul3Block::Add(CDataItem&) failed, fid<%d>, type<%d>, m_allocSize<%" PRIu32
                       ">",
                       id, item.GetType(), m_allocSize);
  return false;
}

bool CZul3Block::Add(FID id, const char* text) {
  if (!IsWritable() || text == nullptr) return false;
  if (AddField(TYPE_STRING, id, text)) return true;
  service::log_message(service::kLevelFailed,
                       "BigZUL3_add_field failed for Add(FID, const char*), fid<%d>, sz<%s>, "
                       "m_allocSize<%" PRIu32 ">",
                       int{id}, text, m_allocSize);
  return false;
}

bool CZul3Block::AddShortVector(FID id, const std::int16_t* values, std::uint32_t count) {
  return AddVector(TYPE_VECTOR_INT, id, values, 0, count);
}

bool CZul3Block::AddLongVector(FID id, const std::int32_t* values, std::uint32_t count) {
  return AddVector(TYPE_VECTOR_LONG, id, values, 0, count);
}

bool CZul3Block::AddDoubleVector(FID id, const double* values, std::uint32_t count) {
  return AddVector(TYPE_VECTOR_DOUBLE, id, values, 0, count);
}

bool CZul3Block::AddDateVector(FID id, const ZULDATE* values, std::uint32_t count) {
  return AddVector(TYPE_VECTOR_DATE, id, values, 0, count);
}

bool CZul3Block::AddTimeVector(FID id, const ZULTIME* values, std::uint32_t count) {
  return AddVector(TYPE_VECTOR_TIME, id, values, 0, count);
}

bool CZul3Block::AddPriceVector(FID id, const std::int32_t* prices, std::int16_t baseCode,
                                std::uint32_t count) {
  return AddVector(TYPE_VECTOR_LPACK, id, prices, static_cast<std::uint16_t>(baseCode), count);
}

bool CZul3Block::AddStringVector(FID id, const char* strings, std::uint32_t count,
                                 std::uint32_t bytes) {
  return IsWritable() &&
         service::BigZUL3_add_string_vector(m_pRecord, id, count, bytes, strings, m_allocSize) == 0;
}

/// The bytes from an offset on, none for offset 0.
inline service::Bytes CZul3Block::BytesFrom(std::uint32_t offset, std::uint32_t length) const {
  const bool within = offset != 0 && offset < length;
  return {m_pRecord + offset, within ? length - offset : 0};
}

/// Of the header the length alone, for a step from field to field: to stand on one takes a whole
/// header.
inline std::uint32_t CZul3Block::Length() const {
  return std::min(service::load<std::uint32_t>(m_pRecord + kZul3LengthAt), m_present);
}

inline service::Bytes CZul3Block::BytesFrom(std::uint32_t offset) const {
  if (offset == 0) return {nullptr, 0};
  return BytesFrom(offset, Length());
}

/// Stands on the field at an offset, or on none for offset 0.
inline void CZul3Block::StandAt(std::uint32_t offset, std::uint32_t fieldIndex) {
  m_field = offset;
  m_fieldIndex = static_cast<std::uint16_t>(fieldIndex);
  m_readSize = 0;
}

/// Stands on the first of `bytes`, or on no field when there are none.
inline bool CZul3Block::StandOn(service::Bytes bytes, std::uint32_t fieldIndex) {
  const bool there = bytes.Left() != 0;
  StandAt(there ? static_cast<std::uint32_t>(bytes.At() - m_pRecord) : 0, fieldIndex);
  return there;
}

/// The bytes from the current record's first field on, none when there is none.
inline service::Bytes CZul3Block::FirstFieldBytes(const Header& header) const {
  const bool counted = !m_readOnly || header.fields > 0;
  return BytesFrom(counted ? m_recordStart : 0, header.length);
}

bool CZul3Block::FirstRecord() {
  m_recordIndex = 0;
  m_recordStart = m_pRecord != nullptr ? kZul3HeaderSize : 0;
  return FirstField();
}

bool CZul3Block::FirstField() { return StandOn(FirstFieldBytes(ReadHeader()), 0); }

bool CZul3Block::NextField() {
  if (m_field == 0) return false;
  const auto fields = service::load<std::uint16_t>(m_pRecord + kZul3FieldCountAt);
  if (m_fieldIndex + 1 >= fields) return false;
  if (m_readSize == 0) return StepOverField();
  const std::uint32_t next = m_field + m_readSize;
  const bool more = next < Length();
  StandAt(more ? next : 0, m_fieldIndex + 1U);
  return more;
}

bool CZul3Block::StepOverField() {
  return StandOn(service::BigZUL3_next_field(BytesFrom(m_field)), m_fieldIndex + 1U);
}

/// The record's extent stands nowhere: the next one begins behind the fields that are left.
bool CZul3Block::NextRecord() {
  const Header header = ReadHeader();
  if (m_recordIndex + 1 >= header.records) {
    m_field = 0;
    return false;
  }
  ++m_recordIndex;
  const FieldsFrom rest = RestOfRecord(header);
  rest.bytes.AskAhead();
  StandOn(service::skip_fields<service::kZul3Fields>(rest.bytes, rest.count), 0);
  m_recordStart = m_field;
  return m_field != 0;
}

/// The fields that the current record ends with, from the current one on or from a later one whose
/// place is known.
inline CZul3Block::FieldsFrom CZul3Block::RestOfRecord(const Header& header) {
  const bool alike = m_alike != 0 && m_alike == m_recordStart;
  if (alike && m_fieldIndex < m_first.count() && m_first.count() <= header.fields) {
    return {BytesFrom(m_recordStart + m_first.size(), header.length),
            header.fields - m_first.count()};
  }
  if (m_field == 0) StandOn(FirstFieldBytes(header), 0);
  const std::uint32_t left = m_fieldIndex < header.fields ? header.fields - m_fieldIndex : 0U;
  if (left > 0 && m_readSize != 0) {
    return {BytesFrom(m_field + m_readSize, header.length), left - 1};
  }
  return {BytesFrom(m_field, header.length), left};
}

bool CZul3Block::FindField(FID id) {
  const Header header = ReadHeader();
  service::Bytes bytes = FirstFieldBytes(header);
  const bool alike = m_first.Match(bytes, header.fields);
  m_alike = alike ? m_recordStart : 0;  // a miss may have changed what the others were alike to
  if (alike) {
    const std::uint32_t field = m_first.Find(id);
    if (field < m_first.count()) {
      bytes.Skip(m_first.OffsetOf(field));
      return StandOn(bytes, field);
    }
  }
  const auto end = service::find_field<service::kZul3Fields>(bytes, id, header.fields);
  return StandOn(end.bytes, end.skipped) && end.found;
}

int CZul3Block::GetVectorSize() {
  std::uint32_t largest = 0;
  service::FieldView view;
  for (bool more = FirstField(); more; more = NextField()) {
    if (View(view)) largest = std::max(largest, service::vector_size(view));
  }
  return static_cast<int>(largest);
}

bool CZul3Block::View(service::FieldView& view) const {
  return service::view_field(service::kZul3Fields, BytesFrom(m_field), view);
}

bool CZul3Block::GetCurrentField(CDataItem* item) {
  const std::uint32_t size = read_value<service::kZul3Fields>(BytesFrom(m_field), item);
  if (size == 0) return ReadOtherField(item);
  m_readSize = size;
  return true;
}

bool CZul3Block::ReadOtherField(CDataItem* item) {
  m_readSize = read_other_field<service::kZul3Fields>(BytesFrom(m_field), item, "CZul3Block");
  return m_readSize != 0;
}

FID CZul3Block::GetCurrentFieldId() {
  service::FieldView view;
  return View(view) ? view.id : FID{0};
}

int CZul3Block::GetCurrentFieldType() {
  service::FieldView view;
  return View(view) ? view.type : 0;
}

}  // namespace wqd
