// Grammar of a price text, blanks on either side; fractions are read by parse_fraction:
//
//     text    = [sign] ( fraction | decimal )
//     decimal = digits [ "." [digits] ] | "." digits

#include <cmath>
#include <cstdlib>

#include <wqdata/service/basecode.h>
#include <wqdata/service/fraction.h>
#include <wqdata/service/operations.h>
#include <wqdata/service/rounding.h>
#include <wqdata/service/text.h>

namespace wqd::service {
namespace {

struct Price {
  int baseCode = 0;
  std::int32_t price = MISSING_LONG;
};

/// A decimal text of any length: the first 18 significant digits, the digits left out behind them,
/// and the digits behind the point. What is left out is too small to count in any scale.
struct Decimal {
  static constexpr int kKeptDigits = 18;

  std::uint64_t digits = 0;
  std::int64_t leftOut = 0;
  std::int64_t decimals = 0;
  bool negative = false;
};

const char* read_digits(const char* at, Decimal& out) {
  for (; is_digit(*at); ++at) {
    if (out.digits < kPowersOfTen[Decimal::kKeptDigits - 1]) {
      out.digits = out.digits * 10 + static_cast<std::uint64_t>(*at - '0');
    } else {
      ++out.leftOut;
    }
  }
  return at;
}

bool parse_decimal(const char* text, Decimal& out) {
  const char* at = skip_space(text);
  out.negative = *at == '-';
  if (*at == '-' || *at == '+') ++at;
  const char* const whole = at;
  at = read_digits(at, out);
  std::int64_t read = at - whole;
  if (*at == '.') {
    const char* const decimals = ++at;
    at = read_digits(at, out);
    out.decimals = at - decimals;
    read += out.decimals;
  }
  return read > 0 && *skip_space(at) == '\0';
}

/// floor(2 × magnitude / 10^exponent).
std::uint64_t twice(const Decimal& number, int exponent) {
  const std::int64_t power = number.leftOut - number.decimals - exponent;
  if (number.digits == 0 || power < -19) return 0;
  if (power < 0) return 2 * number.digits / kPowersOfTen[static_cast<std::size_t>(-power)];
  if (power > 18) return kTooLarge;
  const std::uint64_t factor = kPowersOfTen[static_cast<std::size_t>(power)];
  return number.digits > kTooLarge / 2 / factor ? kTooLarge : 2 * number.digits * factor;
}

Price floating_or_none(std::int32_t price) {
  return price == MISSING_LONG ? Price{} : Price{kFloatingCode, price};
}

Price price_of(const Decimal& number) {
  if (number.decimals <= kMostDecimals && number.leftOut == 0 && number.digits <= INT32_MAX) {
    return {kDecimalOffset + static_cast<int>(number.decimals),
            signed_price(number.negative, number.digits)};
  }
  return floating_or_none(nearest_floating(
      number.negative, [&number](int exponent) { return twice(number, exponent); }));
}

/// floor(2 × magnitude / 10^exponent). Exact as a double is what the finer exponents can hold; the
/// others need whole numbers alone.
std::uint64_t twice(const Fraction& parts, int exponent) {
  constexpr std::uint64_t kMostExact = std::uint64_t{1} << 44;
  const std::uint64_t power = kPowersOfTen[static_cast<std::size_t>(std::abs(exponent))];
  if (exponent > 0) return (2 * scaled(parts) >> parts.scaleBits) / power;
  if (parts.whole > kMostExact) return kTooLarge;
  return twice_scaled(std::ldexp(static_cast<double>(scaled(parts)), -parts.scaleBits), power);
}

Price price_of(const Fraction& parts) {
  const std::uint64_t price = scaled(parts);
  const int offset = parts.caretDigits > 0 ? kBondOffset : 0;
  if (price <= INT32_MAX) {
    return {offset + parts.scaleBits, signed_price(parts.negative, price)};
  }
  if (parts.caretDigits == 3 && price % 2 == 0 && price / 2 <= INT32_MAX) {
    return {offset + parts.scaleBits - 1, signed_price(parts.negative, price / 2)};
  }
  return floating_or_none(
      nearest_floating(parts.negative, [&parts](int exponent) { return twice(parts, exponent); }));
}

Price parse_price(const char* text) {
  Fraction fraction;
  Decimal decimal;
  if (text == nullptr) return {};
  if (parse_fraction(text, fraction)) return price_of(fraction);
  return parse_decimal(text, decimal) ? price_of(decimal) : Price{};
}

}  // namespace

void price_from_string(const char* text, int& baseCode, std::int32_t& price) {
  const Price read = parse_price(text);
  baseCode = read.baseCode;
  price = read.price;
}

}  // namespace wqd::service
