/// The two fraction notations of price texts.
#ifndef WQDATA_SERVICE_FRACTION_H_
#define WQDATA_SERVICE_FRACTION_H_

#include <cstdint>

namespace wqd::service {

/// A price text as it was read: whole + numerator / 2^scaleBits, with a sign in front.
///
///     -101 2/8    whole 101, numerator 2, scaleBits 3; denominators are 2, 4, … 256
///     101^08      32nds, bond notation: numerator 8, scaleBits 5
///     101^08+     half a 32nd more: numerator 17, scaleBits 6
///     101^082     eighths of a 32nd: numerator 66, scaleBits 8
///
/// The fraction is below 1. The whole part may be left out (`1/8`, `^08`) and is at most 2^54,
/// beyond every price.
struct Fraction {
  std::uint64_t whole = 0;
  std::uint32_t numerator = 0;
  int scaleBits = 0;
  int caretDigits = 0;  ///< digits behind the caret, 0 for the notation with a slash
  bool negative = false;
};

/// The value in units of its fraction: whole × 2^scaleBits + numerator, below 2^63.
std::uint64_t scaled(const Fraction& parts);

/// Reads a text in one of the notations, blanks around it allowed. False for a null pointer and
/// for any other text; `out` is then undefined.
bool parse_fraction(const char* text, Fraction& out);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_FRACTION_H_
