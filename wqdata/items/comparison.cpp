#include <wqdata/items/dataitem.h>
#include <wqdata/textsupport/helpers.h>

namespace wqd {
namespace {

/// Values without an order, as with a NaN, count as less.
template <typename Value>
CmpRc order(Value left, Value right) {
  if (left > right) return CMP_GREATER;
  return left == right ? CMP_EQUAL : CMP_LESS;
}

}  // namespace

CmpRc CDataItem::Compare(CDataItem& other) {
  if (IsNull() || other.IsNull()) return CMP_INVALID;
  switch (m_type) {
    case TYPE_DOUBLE:
    case TYPE_LPACK: return order(GetFloat(), other.GetFloat());
    case TYPE_LONG: return order(GetLong(), other.GetLong());
    case TYPE_INT: return order(GetShort(), other.GetShort());
    case TYPE_STRING: return order(MatchPattern(GetString(), other.GetString()), 0);
    case TYPE_DATE: return order(GetDate().Compare(other.GetDate()), 0);
    case TYPE_TIME: return order<int>(GetTime(), other.GetTime());
    default: return CMP_INVALID;
  }
}

bool CDataItem::operator==(CDataItem& other) { return Compare(other) == CMP_EQUAL; }

bool CDataItem::operator!=(CDataItem& other) {
  const CmpRc result = Compare(other);
  return result == CMP_GREATER || result == CMP_LESS;
}

bool CDataItem::operator<(CDataItem& other) { return Compare(other) == CMP_LESS; }

bool CDataItem::operator<=(CDataItem& other) {
  const CmpRc result = Compare(other);
  return result == CMP_LESS || result == CMP_EQUAL;
}

bool CDataItem::operator>(CDataItem& other) { return Compare(other) == CMP_GREATER; }

bool CDataItem::operator>=(CDataItem& other) {
  const CmpRc result = Compare(other);
  return result == CMP_GREATER || result == CMP_EQUAL;
}

}  // namespace wqd
