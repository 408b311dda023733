/// What a base code says of a price: how its integer is scaled and how it is written.
#ifndef WQDATA_SERVICE_BASECODE_H_
#define WQDATA_SERVICE_BASECODE_H_

#include <array>
#include <cstdint>

namespace wqd::service {

enum class Notation {
  kUnknown,
  kFraction,  ///< p / 2^digits, codes 0 to 8
  kBond,      ///< p / 2^digits, 32nds and parts of them, codes 15 to 18
  kDecimal,   ///< p / 10^digits, codes 101 to 109
  kFloating,  ///< mantissa × 10^exponent, code 110
};

struct Scale {
  Notation notation;
  int digits;  ///< binary or decimal digits behind the point
};

inline constexpr int kBondOffset = 10;
inline constexpr int kDecimalOffset = 101;
inline constexpr int kFloatingCode = 110;
inline constexpr int kMostFractionBits = 8;
inline constexpr int kMostDecimals = 8;

constexpr Scale scale_of(int baseCode) {
  if (baseCode >= 0 && baseCode <= kMostFractionBits) return {Notation::kFraction, baseCode};
  if (baseCode >= 15 && baseCode <= 18) return {Notation::kBond, baseCode - kBondOffset};
  if (baseCode >= kDecimalOffset && baseCode <= kDecimalOffset + kMostDecimals) {
    return {Notation::kDecimal, baseCode - kDecimalOffset};
  }
  if (baseCode == kFloatingCode) return {Notation::kFloating, 0};
  return {Notation::kUnknown, 0};
}

/// True for a code that has one price at most for a number.
constexpr bool is_scaled(int baseCode) {
  const Notation notation = scale_of(baseCode).notation;
  return notation != Notation::kFloating && notation != Notation::kUnknown;
}

/// The powers of ten that 64 bits hold.
inline constexpr auto kPowersOfTen = [] {
  std::array<std::uint64_t, 20> powers{};
  std::uint64_t power = 1;
  for (std::uint64_t& entry : powers) {
    entry = power;
    power *= 10;
  }
  return powers;
}();

/// A price of the floating code: the low 4 bits are the exponent, the upper 28 the mantissa, both
/// signed. A mantissa of -2^27 with the exponent 0 would be MISSING_LONG, and is no price.
struct FloatingPrice {
  static constexpr int kLeastExponent = -8;
  static constexpr int kMostExponent = 7;
  static constexpr std::int32_t kMostMantissa = (1 << 27) - 1;

  std::int32_t mantissa;
  int exponent;
};

constexpr FloatingPrice unpack_floating(std::int32_t price) {
  const int low = price & 0xF;
  return {price >> 4, low >= 8 ? low - 16 : low};
}

constexpr std::int32_t pack_floating(FloatingPrice parts) {
  const auto mantissa = static_cast<std::uint32_t>(parts.mantissa);
  return static_cast<std::int32_t>(mantissa << 4 |
                                   (static_cast<std::uint32_t>(parts.exponent) & 0xF));
}

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_BASECODE_H_
