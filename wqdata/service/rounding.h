/// Rounding of exact numbers to prices.
///
/// A number reaches these functions as twice its magnitude in units of a scale, rounded down: that
/// tells the nearest whole number and on which side of a half it lies, and no rounding comes
/// before the one that counts.
#ifndef WQDATA_SERVICE_ROUNDING_H_
#define WQDATA_SERVICE_ROUNDING_H_

#include <bit>
#include <cfloat>
#include <cstdint>

#include <wqdata/service/basecode.h>
#include <wqdata/types.h>

namespace wqd::service {

/// Stands for any number that no scale holds.
inline constexpr std::uint64_t kTooLarge = std::uint64_t{1} << 62;

/// floor(2 × `magnitude` × `factor`), exactly; `kTooLarge` from 2^61 on. `magnitude` is finite and
/// not negative, `factor` at most 10^8.
std::uint64_t twice_scaled(double magnitude, std::uint64_t factor);

constexpr std::uint64_t half_rounded_up(std::uint64_t twice) { return (twice + 1) / 2; }

/// Products below it have a fraction of a bit at least, which can be told exactly, where doubles
/// are calculated as doubles; elsewhere there are none.
inline constexpr double kLargestProduct = FLT_EVAL_METHOD == 0 ? 0x1p52 : 0.0;

/// What `magnitude` × `factor` has above `product`, its rounded value: exact where the product lies
/// between 0.5 and `kLargestProduct`, and the factor has at most 26 significant bits. Each part of
/// the magnitude times the factor is then exact, and what is left of the sum fits in a double.
/// std::fma would tell the same, by a slow call where processors may be without its instruction.
inline double lost_by_rounding(double magnitude, double factor, double product) {
  constexpr std::uint64_t kUpperBits = ~std::uint64_t{0} << 27;
  const auto upper = std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) & kUpperBits);
  return (upper * factor - product) + (magnitude - upper) * factor;
}

/// The whole number nearest to the exact product, below `kLargestProduct`, of a number not below 0
/// and a scale's factor, at most 10^8; of a half the upper one when `up(lower)`. The product
/// itself is rounded, by less than anything that can lie between a fraction and a half: only at a
/// half it matters which way. Nothing branches, since prices halved and averaged are often halves.
template <typename Up>
std::uint64_t nearest_product(double magnitude, double factor, Up up) {
  const double product = magnitude * factor;
  const auto whole = static_cast<std::int64_t>(product);  // signed: one instruction each way
  const double fraction = product - static_cast<double>(whole);
  const double lost = lost_by_rounding(magnitude, factor, product);
  const auto lower = static_cast<std::uint64_t>(whole);
  const int aboveHalf = int{fraction > 0.5} | (int{fraction == 0.5} & int{lost > 0.0});
  const int atHalf = int{fraction == 0.5} & int{lost == 0.0} & int{up(lower)};
  return lower + static_cast<std::uint64_t>(aboveHalf | atHalf);
}

/// A price of `magnitude` and sign; MISSING_LONG for one beyond 32 bits.
constexpr std::int32_t signed_price(bool negative, std::uint64_t magnitude) {
  if (magnitude > INT32_MAX) return MISSING_LONG;
  const auto price = static_cast<std::int32_t>(magnitude);
  return negative ? -price : price;
}

/// Drops the zeros that a mantissa has to spare behind the point.
constexpr FloatingPrice without_trailing_zeros(FloatingPrice price) {
  while (price.exponent < 0 && price.mantissa % 10 == 0) {
    price.mantissa /= 10;
    ++price.exponent;
  }
  return price;
}

/// The price of the floating code nearest to a number, halves away from zero, or MISSING_LONG.
/// `twice(e)` is floor(2 × magnitude / 10^e). The finest scale that holds the number is taken; the
/// last price of a scale is also nearest to what lies before the middle of its gap to the first
/// price of the next coarser one.
template <typename Twice>
std::int32_t nearest_floating(bool negative, Twice twice) {
  constexpr std::uint64_t kMostMantissa = FloatingPrice::kMostMantissa;
  constexpr std::uint64_t kFirstOfCoarser = (kMostMantissa / 10 + 1) * 10;
  for (int e = FloatingPrice::kLeastExponent; e <= FloatingPrice::kMostExponent; ++e) {
    const std::uint64_t most = negative && e != 0 ? kMostMantissa + 1 : kMostMantissa;
    const std::uint64_t doubled = twice(e);
    std::uint64_t mantissa = half_rounded_up(doubled);
    const bool inGap = doubled < most + kFirstOfCoarser && e < FloatingPrice::kMostExponent;
    if (mantissa > most && !inGap) continue;
    mantissa = mantissa > most ? most : mantissa;
    const auto magnitude = static_cast<std::int32_t>(mantissa);
    return pack_floating(without_trailing_zeros({negative ? -magnitude : magnitude, e}));
  }
  return MISSING_LONG;
}

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_ROUNDING_H_
