// Grammar of a price text in a fraction notation, blanks on either side:
//
//     text   = [sign] ( slash | caret )
//     slash  = [whole blank+] digits "/" denominator     denominator: 2, 4, 8, … 256
//     caret  = [whole] "^" digit digit [ "+" | digit ]   two digits: 00 to 31; third: 0 to 7

#include <bit>
#include <cmath>

#include <wqdata/service/fraction.h>
#include <wqdata/service/operations.h>
#include <wqdata/service/text.h>
#include <wqdata/types.h>

namespace wqd::service {
namespace {

constexpr std::uint64_t kLargestWhole = std::uint64_t{1} << 54;
constexpr std::uint64_t kLargestDenominator = 256;

/// Null for no digits at `at`, and for a number that no whole part may have.
const char* read_digits(const char* at, std::uint64_t& number) {
  if (!is_digit(*at)) return nullptr;
  number = 0;
  for (; is_digit(*at); ++at) {
    number = number * 10 + static_cast<std::uint64_t>(*at - '0');
    if (number > kLargestWhole) return nullptr;
  }
  return at;
}

/// `at` stands behind the caret. Returns the place behind the notation, or null.
const char* read_thirtyseconds(const char* at, Fraction& out) {
  if (!is_digit(at[0]) || !is_digit(at[1])) return nullptr;
  const auto ticks = static_cast<std::uint32_t>((at[0] - '0') * 10 + (at[1] - '0'));
  if (ticks > 31) return nullptr;
  at += 2;
  out.caretDigits = 2;
  if (*at == '+') {
    out.numerator = ticks * 2 + 1;
    out.scaleBits = 6;
    return at + 1;
  }
  if (!is_digit(*at)) {
    out.numerator = ticks;
    out.scaleBits = 5;
    return at;
  }
  if (*at > '7') return nullptr;
  out.caretDigits = 3;
  out.numerator = ticks * 8 + static_cast<std::uint32_t>(*at - '0');
  out.scaleBits = 8;
  return at + 1;
}

/// `at` stands behind the slash. Returns the place behind the denominator, or null.
const char* read_denominator(const char* at, std::uint64_t numerator, Fraction& out) {
  std::uint64_t denominator = 0;
  at = read_digits(at, denominator);
  if (at == nullptr || denominator < 2 || denominator > kLargestDenominator) return nullptr;
  if (!std::has_single_bit(denominator) || numerator >= denominator) return nullptr;
  out.numerator = static_cast<std::uint32_t>(numerator);
  out.scaleBits = std::countr_zero(denominator);
  return at;
}

const char* read_unsigned(const char* at, Fraction& out) {
  if (*at == '^') return read_thirtyseconds(at + 1, out);
  std::uint64_t first = 0;
  at = read_digits(at, first);
  if (at == nullptr) return nullptr;
  if (*at == '/') return read_denominator(at + 1, first, out);
  out.whole = first;
  if (*at == '^') return read_thirtyseconds(at + 1, out);
  if (!is_space(*at)) return nullptr;
  std::uint64_t numerator = 0;
  at = read_digits(skip_space(at), numerator);
  return at != nullptr && *at == '/' ? read_denominator(at + 1, numerator, out) : nullptr;
}

}  // namespace

std::uint64_t scaled(const Fraction& parts) {
  return (parts.whole << parts.scaleBits) + parts.numerator;
}

bool parse_fraction(const char* text, Fraction& out) {
  if (text == nullptr) return false;
  out = Fraction{};
  const char* at = skip_space(text);
  out.negative = *at == '-';
  if (*at == '-' || *at == '+') ++at;
  at = read_unsigned(at, out);
  return at != nullptr && *skip_space(at) == '\0';
}

double fraction_to_double(const char* text) {
  Fraction parts;
  if (!parse_fraction(text, parts)) return MISSING_DOUBLE;
  const double value = std::ldexp(static_cast<double>(scaled(parts)), -parts.scaleBits);
  return parts.negative ? -value : value;
}

}  // namespace wqd::service
