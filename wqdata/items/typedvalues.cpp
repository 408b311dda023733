// Prices, dates and times in an item: held as packed records, built as classes when asked for.

#include <wqdata/items/dataitem.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

constexpr int kCodeOfDoubles = 110;
constexpr int kCodeOfIntegers = 101;

CZulTime minutes_since_midnight(std::int32_t minutes) {
  CZulTime time;
  time.Set(0, minutes, 0);
  return time;
}

}  // namespace

CDataItem::CDataItem(FID id, const CFixPtNum& value) {
  Initialize();
  Set(id, value);
}

CDataItem::CDataItem(FID id, const CZulDate& value) {
  Initialize();
  Set(id, value);
}

CDataItem::CDataItem(FID id, const ZULDATE& value) {
  Initialize();
  Set(id, value);
}

CDataItem::CDataItem(FID id, const CZulTime& value) {
  Initialize();
  Set(id, value);
}

CDataItem::CDataItem(FID id, const ZULTIME& value) {
  Initialize();
  Set(id, value);
}

void CDataItem::Set(FID id, const CFixPtNum& value) {
  if (value.IsMissing()) return SetError(id, kMissing);
  const bool fits = static_cast<std::int16_t>(value.GetBaseCode()) == value.GetBaseCode();
  SetHeader(id, TYPE_LPACK, sizeof(FPN));
  m_value.asPrice = fits ? value : CFixPtNum(static_cast<FPN>(value));
}

std::int16_t CDataItem::GetBaseCode() const {
  return static_cast<std::int16_t>(m_value.asPrice.GetBaseCode());
}

CFixPtNum CDataItem::ConvertToFPN() const {
  switch (m_type) {
    case TYPE_DOUBLE: return {m_value.asDouble, kCodeOfDoubles};
    case TYPE_LONG: return {m_value.asLong, kCodeOfIntegers};
    case TYPE_INT: return {std::int32_t{m_value.asShort}, kCodeOfIntegers};
    case TYPE_STRING: return CFixPtNum(m_string);
    default: return {MISSING_DOUBLE, 0};
  }
}

CZulDate CDataItem::ConvertToDate() const {
  return m_type == TYPE_STRING ? CZulDate(m_string) : CZulDate();
}

CZulTime CDataItem::ConvertToTime() const {
  switch (m_type) {
    case TYPE_LONG: return minutes_since_midnight(m_value.asLong);
    case TYPE_INT: return minutes_since_midnight(m_value.asShort);
    case TYPE_STRING: return CZulTime(m_string);
    default: return CZulTime(MISSING_TIME_SECONDS);
  }
}

}  // namespace wqd
