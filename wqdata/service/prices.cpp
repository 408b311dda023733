#include <cmath>

#include <wqdata/service/basecode.h>
#include <wqdata/service/operations.h>
#include <wqdata/service/rounding.h>
#include <wqdata/service/text.h>
#include <wqdata/types.h>

namespace wqd::service {
namespace {

constexpr int kBitsOf32nds = 5;

std::uint64_t power_of_ten(int digits) { return kPowersOfTen[static_cast<std::size_t>(digits)]; }

/// Both operands are exact, so the one division or product rounds once.
double floating_to_double(FloatingPrice price) {
  const auto power = static_cast<double>(power_of_ten(std::abs(price.exponent)));
  return price.exponent < 0 ? price.mantissa / power : price.mantissa * power;
}

std::int64_t magnitude_of(std::int64_t number) { return number < 0 ? -number : number; }

std::int64_t low_bits(std::int64_t magnitude, int bits) {
  return magnitude & ((std::int64_t{1} << bits) - 1);
}

void write_fraction(std::int64_t price, int bits, TextWriter& text) {
  text.Plain(price >> bits);
  if (bits > 0) text.Put(' ').Plain(low_bits(price, bits)).Put('/').Plain(std::int64_t{1} << bits);
}

void write_bond(std::int64_t price, int bits, TextWriter& text) {
  const int tickBits = bits - kBitsOf32nds;
  const std::int64_t partOfTick = low_bits(price, tickBits);
  text.Plain(price >> bits).Put('^').Padded(low_bits(price, bits) >> tickBits);
  if (tickBits == 1 && partOfTick != 0) text.Put('+');
  if (tickBits > 1) text.Plain(partOfTick << (3 - tickBits));  // the third digit counts eighths
}

void write_decimal(std::int64_t price, int decimals, TextWriter& text) {
  const auto unit = static_cast<std::int64_t>(power_of_ten(decimals));
  text.Plain(price / unit);
  if (decimals > 0) text.Put('.').Padded(price % unit, decimals);
}

void write_floating(FloatingPrice price, TextWriter& text) {
  const std::int64_t mantissa = magnitude_of(price.mantissa);
  if (price.exponent < 0) return write_decimal(mantissa, -price.exponent, text);
  text.Plain(mantissa * static_cast<std::int64_t>(power_of_ten(price.exponent)));
}

void write_price(Scale scale, std::int32_t price, TextWriter& text) {
  if (price < 0) text.Put('-');
  const std::int64_t magnitude = magnitude_of(price);
  switch (scale.notation) {
    case Notation::kFraction: return write_fraction(magnitude, scale.digits, text);
    case Notation::kBond: return write_bond(magnitude, scale.digits, text);
    case Notation::kDecimal: return write_decimal(magnitude, scale.digits, text);
    case Notation::kFloating: return write_floating(unpack_floating(price), text);
    case Notation::kUnknown: return;
  }
}

std::int32_t nearest_floating_of(bool negative, double magnitude) {
  return nearest_floating(negative, [magnitude](int exponent) {
    return exponent <= 0 ? twice_scaled(magnitude, power_of_ten(-exponent))
                         : twice_scaled(magnitude, 1) / power_of_ten(exponent);
  });
}

}  // namespace

std::uint64_t twice_scaled(double magnitude, std::uint64_t factor) {
  constexpr int kMantissaBits = 53;
  constexpr std::uint64_t kLow32 = 0xFFFFFFFF;
  if (!(magnitude * static_cast<double>(factor) < 0x1p60)) return kTooLarge;
  int exponent = 0;
  const double fraction = std::frexp(magnitude, &exponent);
  const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, kMantissaBits));
  const int shift = kMantissaBits - exponent - 1;  // the result is mantissa × factor >> shift
  if (shift < 0) return (mantissa * factor) << -shift;
  // The product has up to 80 bits: high × 2^32 + low.
  const std::uint64_t low = (mantissa & kLow32) * factor;
  const std::uint64_t high = (mantissa >> 32) * factor + (low >> 32);
  if (shift < 32) return (high << (32 - shift)) | ((low & kLow32) >> shift);
  return shift < 96 ? high >> (shift - 32) : 0;
}

int price_to_double(int baseCode, std::int32_t price, double& value) {
  const Scale scale = scale_of(baseCode);
  if (scale.notation == Notation::kUnknown) return 0;
  if (price == MISSING_LONG) {
    value = MISSING_DOUBLE;
  } else if (scale.notation == Notation::kFloating) {
    value = floating_to_double(unpack_floating(price));
  } else if (scale.notation == Notation::kDecimal) {
    value = price / static_cast<double>(power_of_ten(scale.digits));
  } else {
    value = std::ldexp(price, -scale.digits);
  }
  return 1;
}

void price_from_double(double value, int baseCode, std::int32_t& price) {
  const Scale scale = scale_of(baseCode);
  price = MISSING_LONG;
  if (!std::isfinite(value) || scale.notation == Notation::kUnknown) return;
  const bool negative = std::signbit(value);
  const double magnitude = std::abs(value);
  if (scale.notation == Notation::kFloating) {
    price = nearest_floating_of(negative, magnitude);
    return;
  }
  const std::uint64_t factor = scale.notation == Notation::kDecimal
                                   ? power_of_ten(scale.digits)
                                   : std::uint64_t{1} << scale.digits;
  const bool fast = magnitude * static_cast<double>(factor) < kLargestProduct;
  const auto away = [](std::uint64_t) { return true; };
  price =
      signed_price(negative, fast ? nearest_product(magnitude, static_cast<double>(factor), away)
                                  : half_rounded_up(twice_scaled(magnitude, factor)));
}

void price_to_string(int baseCode, std::int32_t price, char* buffer) {
  const Scale scale = scale_of(baseCode);
  TextWriter text;
  if (price == MISSING_LONG || scale.notation == Notation::kUnknown) {
    text.Put('N').Put('/').Put('A');
  } else {
    write_price(scale, price, text);
  }
  put_text(text.Text(), buffer, kPriceTextSize);
}

int base_code_rank(int baseCode) { return baseCode; }

std::uint16_t numeric_base_code(std::uint16_t baseCode) {
  const Scale scale = scale_of(baseCode);
  const bool fraction = scale.notation == Notation::kFraction || scale.notation == Notation::kBond;
  return fraction ? static_cast<std::uint16_t>(kDecimalOffset + scale.digits) : baseCode;
}

}  // namespace wqd::service
