/// Decimal digits, eight of them in one word. A loop that ends with a number's last digit ends
/// elsewhere for each number, which processors don't foresee: here next to nothing branches.
#ifndef WQDATA_SERVICE_DIGITS_H_
#define WQDATA_SERVICE_DIGITS_H_

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <wqdata/service/littleendian.h>
#include <wqdata/service/rounding.h>

namespace wqd::service {

/// What `put_long` and `put_double` may write to, however short their text, since they write whole
/// words: a sign, two words of digits, and one behind the point.
inline constexpr std::size_t kDigitsRoom = 32;
static_assert(kDigitsRoom >= 1 + 3 * sizeof(std::uint64_t));

inline constexpr std::uint64_t kEightDigits = 100'000'000;
inline constexpr std::uint64_t kZeros = 0x3030303030303030;  // as characters

/// The digits of a number below `kEightDigits`, a byte each, the first one in the lowest. It is
/// parted into halves, pairs and single digits, all of a kind at once; the quotients are those of
/// the division by 100 and by 10, exact for as many digits as there are.
constexpr std::uint64_t eight_digits(std::uint64_t number) {
  const std::uint64_t halves = number / 10000 | (number % 10000) << 32;
  const std::uint64_t upperPairs = halves * 10486 >> 20 & 0x0000007F0000007F;
  const std::uint64_t pairs = upperPairs | (halves - 100 * upperPairs) << 16;
  const std::uint64_t upperDigits = pairs * 103 >> 10 & 0x000F000F000F000F;
  return upperDigits | (pairs - 10 * upperDigits) << 8;
}

/// The number of such digits: pairs, and then halves of them at once.
constexpr std::uint64_t number_of(std::uint64_t digits) {
  constexpr std::uint64_t kPairs = 0x000000FF000000FF;  // the first and the third, one of each half
  const std::uint64_t pairs = digits * 10 + (digits >> 8);
  const std::uint64_t upper = (pairs & kPairs) * (100 + (std::uint64_t{1'000'000} << 32));
  const std::uint64_t lower = (pairs >> 16 & kPairs) * (1 + (std::uint64_t{10'000} << 32));
  return (upper + lower) >> 32;
}

inline void put_word(char* at, std::uint64_t characters) {
  characters = in_record_order(characters);
  std::memcpy(at, &characters, sizeof characters);
}

/// Writes `digits` without the zeros in front, but `least` of them at least, 1 to 8, and NULs up to
/// a whole word. Where the digits end.
inline char* put_without_zeros(char* at, std::uint64_t digits, int least) {
  const int skipped = std::min(std::countr_zero(digits) / 8, 8 - least);
  put_word(at, (digits | kZeros) >> 8 * skipped);
  return at + 8 - skipped;
}

/// The room for `put_short` and a sign in front.
inline constexpr int kShortRoom = 10;

/// Writes a number below `kEightDigits` and its NUL, and leaves the bytes behind as they were: for
/// the buffers of others, of which the functions above would write more. The number of its digits.
inline int put_short(char* at, std::uint64_t number) {
  const std::uint64_t digits = eight_digits(number);
  const int skipped = std::min(std::countr_zero(digits) / 8, 7);
  const int length = 8 - skipped;
  std::uint64_t behind = 0;
  std::memcpy(&behind, at, sizeof behind);
  behind = in_record_order(behind) & ~std::uint64_t{0} << 4 * (length + 1) << 4 * (length + 1);
  put_word(at, (digits | kZeros) >> 8 * skipped | behind);
  if (length == 8) at[length] = '\0';
  return length;
}

/// Writes a number below 10^16 with a point in front of its last `decimals` digits, 0 to 7, and a
/// digit at least in front of the point. Where the text ends: no NUL.
inline char* put_scaled(char* at, std::uint64_t number, int decimals) {
  const std::uint64_t last = eight_digits(number % kEightDigits);
  if (number < kEightDigits) {
    at = put_without_zeros(at, last, decimals + 1);
  } else {
    at = put_without_zeros(at, eight_digits(number / kEightDigits), 1);
    put_word(at, last | kZeros);
    at += 8;
  }
  if (decimals == 0) return at;
  at[-decimals] = '.';
  put_word(at - decimals + 1, (last | kZeros) >> 8 * (8 - decimals));
  return at + 1;
}

/// Writes what printf writes for "%d", without the NUL. Where the text ends.
inline char* put_long(char* at, std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  *at = '-';
  return put_scaled(at + (value < 0), value < 0 ? 0 - bits : bits, 0);
}

inline constexpr int kUsualDecimals = 4;
inline constexpr double kUsualScale = 10000;

/// True for a double that `put_double` writes: all but an infinity, a NaN and the largest.
inline bool is_usual(double value) { return std::abs(value) * kUsualScale < kLargestProduct; }

/// The same for "%.4f" of such a double.
inline char* put_double(char* at, double value) {
  const auto isOdd = [](std::uint64_t lower) { return lower % 2 == 1; };
  const std::uint64_t scaled = nearest_product(std::abs(value), kUsualScale, isOdd);
  *at = '-';
  return put_scaled(at + std::signbit(value), scaled, kUsualDecimals);
}

/// The most characters that `SixteenDigits` takes, and as many bytes must be there.
inline constexpr std::size_t kMostCharacters = 2 * sizeof(std::uint64_t);

/// The characters of a number's text, less '0': the last ones of two words, in front of which stand
/// zeros. What lies behind the text is of no matter.
class SixteenDigits {
 public:
  /// Of 1 to `kMostCharacters`.
  SixteenDigits(const char* text, std::size_t length) {
    const bool two = length > sizeof(std::uint64_t);
    const std::size_t missing = kMostCharacters - length;
    m_lower = two ? Word(text + length - 8) : Word(text) << 8 * (missing - 8);
    m_upper = two ? Word(text) << 8 * missing : 0;
  }

  /// Takes the point out, behind which there are so many digits then; `decimals` stays where there
  /// is none. False, with the characters spoiled, when others than digits and one point are there.
  bool TakePoint(int& decimals) {
    const std::uint64_t upper = Beyond9(m_upper), lower = Beyond9(m_lower);
    if ((upper | lower) == 0) return true;
    if (upper == 0) {
      decimals = std::countl_zero(lower) / 8;
      const std::uint64_t last = m_upper >> 56;
      m_upper <<= 8;
      return TakeOut(m_lower, lower, last);
    }
    decimals = 8 + std::countl_zero(upper) / 8;
    return lower == 0 && TakeOut(m_upper, upper, 0);
  }

  std::uint64_t Number() const { return number_of(m_upper) * kEightDigits + number_of(m_lower); }

 private:
  static std::uint64_t Word(const char* at) {
    return load<std::uint64_t>(reinterpret_cast<const std::uint8_t*>(at)) ^ kZeros;
  }

  /// The high bit of each byte that is above 9; of one behind a byte from 138 on it may be set too.
  static std::uint64_t Beyond9(std::uint64_t word) {
    return ((word + 0x7676767676767676) | word) & 0x8080808080808080;
  }

  /// Takes the marked character out of a word, if it is a single one and a point: those in front of
  /// it move up, behind `first`.
  static bool TakeOut(std::uint64_t& word, std::uint64_t mark, std::uint64_t first) {
    const std::uint64_t unit = mark >> 7;  // the character's lowest bit
    const std::uint64_t character = (mark << 1) - unit;
    const bool several = (mark & (mark - 1)) != 0;
    if (several || (word & character) != ('.' ^ '0') * unit) return false;
    const std::uint64_t front = word & (unit - 1);
    word = (word & ~(front | character)) | front << 8 | first;
    return true;
  }

  std::uint64_t m_upper;
  std::uint64_t m_lower;
};

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_DIGITS_H_
