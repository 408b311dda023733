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
  std::int32_t price = MISSING_LONG;
  service::price_from_string(text, m_baseCode, price);
  m_value = value_of(price, m_baseCode);
}

void CFixPtNum::Set(double value, int baseCode) {
  m_value = value;
  m_price = MISSING_LONG;
  m_baseCode = baseCode;
}

/// The floating code has several prices for a number, of which the shortest counts.
void CFixPtNum::Set(std::int32_t price, int baseCode) {
  m_baseCode = baseCode;
  m_value = price == MISSING_LONG ? MISSING_DOUBLE : value_of(price, baseCode);
  const bool counts = service::is_scaled(baseCode) && !IsMissing();
  m_price = counts ? price : MISSING_LONG;
}

bool CFixPtNum::ChangeBase(int baseCode) {
  m_baseCode = baseCode;
  m_price = MISSING_LONG;
  return true;
}

bool CFixPtNum::ConvertNumericBaseCode() {
  const int numeric = service::numeric_base_code(static_cast<std::uint16_t>(m_baseCode));
  if (numeric == m_baseCode) return false;
  return ChangeBase(numeric);
}

bool CFixPtNum::IsMissing() const { return is_missing(m_value); }

CFixPtNum::operator double() const { return m_value; }

CFixPtNum::operator std::int32_t() const {
  std::int32_t price = m_price;
  if (price == MISSING_LONG && !IsMissing()) service::price_from_double(m_value, m_baseCode, price);
  return price;
}

CFixPtNum::operator FPN() const { return {m_value, static_cast<std::int16_t>(m_baseCode)}; }

CFixPtNum::operator LPACK() const {
  return {static_cast<std::uint16_t>(m_baseCode), static_cast<std::int32_t>(*this)};
}

CFixPtNum CFixPtNum::operator+(double number) const { return {m_value + number, m_baseCode}; }

CFixPtNum CFixPtNum::operator-(double number) const { return {m_value - number, m_baseCode}; }

CFixPtNum CFixPtNum::operator*(double number) const { return {m_value * number, m_baseCode}; }

CFixPtNum CFixPtNum::operator/(double number) const { return {m_value / number, m_baseCode}; }

CFixPtNum CFixPtNum::operator+(CFixPtNum other) const {
  return {m_value + other.m_value, higher_rank(m_baseCode, other.m_baseCode)};
}

CFixPtNum CFixPtNum::operator-(CFixPtNum other) const {
  return {m_value - other.m_value, higher_rank(m_baseCode, other.m_baseCode)};
}

bool CFixPtNum::operator==(double other) const { return std::abs(m_value - other) < kTolerance; }

bool CFixPtNum::operator!=(double other) const { return !(*this == other); }

bool CFixPtNum::operator<(double other) const { return other - m_value > kTolerance; }

bool CFixPtNum::operator<=(double other) const { return m_value - other < kTolerance; }

bool CFixPtNum::operator>(double other) const { return m_value - other > kTolerance; }

bool CFixPtNum::operator>=(double other) const { return other - m_value < kTolerance; }

bool CFixPtNum::operator==(CFixPtNum other) const { return *this == other.m_value; }

bool CFixPtNum::operator!=(CFixPtNum other) const { return *this != other.m_value; }

bool CFixPtNum::operator<(CFixPtNum other) const { return *this < other.m_value; }

bool CFixPtNum::operator<=(CFixPtNum other) const { return *this <= other.m_value; }

bool CFixPtNum::operator>(CFixPtNum other) const { return *this > other.m_value; }

bool CFixPtNum::operator>=(CFixPtNum other) const { return *this >= other.m_value; }

int CFixPtNum::Print(char* buffer, int) const {
  service::price_to_string(m_baseCode, *this, buffer);
  return static_cast<int>(std::strlen(buffer));
}

}  // namespace wqd
