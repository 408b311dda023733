#include <functional>

#include <wqdata/items/dataitem.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

CDataItem no_result() { return {FID{0}, kMissing, true}; }

/// 64 bits hold every sum, product and quotient of two longs, of which the low 32 are the result.
std::int32_t low_32_bits(std::int64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

template <typename Operation>
CDataItem calculate(const CDataItem& left, const CDataItem& right, Operation operation) {
  if (left.IsIntegralType() && right.IsIntegralType()) {
    const auto result = operation(std::int64_t{left.GetLong()}, std::int64_t{right.GetLong()});
    return {FID{0}, low_32_bits(result)};
  }
  const double x = left.GetFloat();
  const double y = right.GetFloat();
  return is_missing(x) || is_missing(y) ? no_result() : CDataItem(FID{0}, operation(x, y));
}

bool is_zero(const CDataItem& item) {
  return item.IsIntegralType() ? item.GetLong() == 0 : item.GetFloat() == 0.0;
}

}  // namespace

CDataItem CDataItem::operator+(CDataItem& other) { return calculate(*this, other, std::plus<>()); }

CDataItem CDataItem::operator-(CDataItem& other) { return calculate(*this, other, std::minus<>()); }

CDataItem CDataItem::operator*(CDataItem& other) {
  return calculate(*this, other, std::multiplies<>());
}

CDataItem CDataItem::operator/(CDataItem& other) {
  return is_zero(other) ? no_result() : calculate(*this, other, std::divides<>());
}

}  // namespace wqd
