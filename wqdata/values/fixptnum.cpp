#include <algorithm>
#include <cmath>
#include <cstring>

#include <wqdata/service/basecode.h>
#include <wqdata/service/operations.h>
#include <wqdata/values/fixptnum.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

constexpr double kTolerance = 0.00001;

double value_of(std::int32_t price, int baseCode) {
  double value = 0.0;
  return service::price_to_double(baseCode, price, value) != 0 ? value : 0.0;
}

int higher_rank(int a, int b) {
  return std::max(service::base_code_rank(a), service::base_code_rank(b));
}

}  // namespace

CFixPtNum::CFixPtNum(std::int32_t price, int baseCode) { Set(price, baseCode); }

CFixPtNum::CFixPtNum(double value, int baseCode) { Set(value, baseCode); }

CFixPtNum::CFixPtNum(FPN record) { Set(record.value, record.baseCode); }

CFixPtNum::CFixPtNum(LPACK record) { Set(record.price, record.baseCode); }

CFixPtNum::CFixPtNum(const char* text) {
  int baseCode = 0;
  std::int32_t price = MISSING_LONG;
  service::price_from_string(text, baseCode, price);
  Set(price, baseCode);
}

void CFixPtNum::Set(double value, int baseCode) {
  m_value = value;
  m_scaled = Scaled(baseCode, MISSING_LONG);
}

/// The long stays where it says it all: not for the floating code, which has several for a number,
/// of which the shortest counts, and not for one so low that its number may be the missing one.
void CFixPtNum::Set(std::int32_t price, int baseCode) {
  constexpr std::int32_t kLowest = static_cast<std::int32_t>(MISSING_DOUBLE) + 1;
  if (price <= kLowest || !service::is_scaled(baseCode)) return SetNumberOf(price, baseCode);
  m_scaled = Scaled(baseCode, price);
}

void CFixPtNum::SetNumberOf(std::int32_t price, int baseCode) {
  Set(price == MISSING_LONG ? MISSING_DOUBLE : value_of(price, baseCode), baseCode);
}

bool CFixPtNum::ChangeBase(int baseCode) {
  Set(Value(), baseCode);
  return true;
}

bool CFixPtNum::ConvertNumericBaseCode() {
  const int numeric = service::numeric_base_code(static_cast<std::uint16_t>(GetBaseCode()));
  if (numeric == GetBaseCode()) return false;
  return ChangeBase(numeric);
}

bool CFixPtNum::HoldsMissing() const { return is_missing(m_value); }

double CFixPtNum::ValueOfLong() const { return value_of(Long(), GetBaseCode()); }

std::int32_t CFixPtNum::NearestLong() const {
  std::int32_t price = MISSING_LONG;
  if (!HoldsMissing()) service::price_from_double(m_value, GetBaseCode(), price);
  return price;
}

CFixPtNum::operator FPN() const { return {Value(), static_cast<std::int16_t>(GetBaseCode())}; }

CFixPtNum::operator LPACK() const {
  return {static_cast<std::uint16_t>(GetBaseCode()), static_cast<std::int32_t>(*this)};
}

CFixPtNum CFixPtNum::operator+(double number) const { return {Value() + number, GetBaseCode()}; }

CFixPtNum CFixPtNum::operator-(double number) const { return {Value() - number, GetBaseCode()}; }

CFixPtNum CFixPtNum::operator*(double number) const { return {Value() * number, GetBaseCode()}; }

CFixPtNum CFixPtNum::operator/(double number) const { return {Value() / number, GetBaseCode()}; }

CFixPtNum CFixPtNum::operator+(CFixPtNum other) const {
  return {Value() + other.Value(), higher_rank(GetBaseCode(), other.GetBaseCode())};
}

CFixPtNum CFixPtNum::operator-(CFixPtNum other) const {
  return {Value() - other.Value(), higher_rank(GetBaseCode(), other.GetBaseCode())};
}

bool CFixPtNum::operator==(double other) const { return std::abs(Value() - other) < kTolerance; }

bool CFixPtNum::operator!=(double other) const { return !(*this == other); }

bool CFixPtNum::operator<(double other) const { return other - Value() > kTolerance; }

bool CFixPtNum::operator<=(double other) const { return Value() - other < kTolerance; }

bool CFixPtNum::operator>(double other) const { return Value() - other > kTolerance; }

bool CFixPtNum::operator>=(double other) const { return other - Value() < kTolerance; }

bool CFixPtNum::operator==(CFixPtNum other) const { return *this == other.Value(); }

bool CFixPtNum::operator!=(CFixPtNum other) const { return *this != other.Value(); }

bool CFixPtNum::operator<(CFixPtNum other) const { return *this < other.Value(); }

bool CFixPtNum::operator<=(CFixPtNum other) const { return *this <= other.Value(); }

bool CFixPtNum::operator>(CFixPtNum other) const { return *this > other.Value(); }

bool CFixPtNum::operator>=(CFixPtNum other) const { return *this >= other.Value(); }

int CFixPtNum::Print(char* buffer, int) const {
  service::price_to_string(GetBaseCode(), *this, buffer);
  return static_cast<int>(std::strlen(buffer));
}

}  // namespace wqd
