#ifndef WQDATA_VALUES_FIXPTNUM_H_
#define WQDATA_VALUES_FIXPTNUM_H_

#include <cstddef>
#include <cstdint>

#include <wqdata/export.h>
#include <wqdata/types.h>

namespace wqd {

/// A price: a number together with a base code, which says how the price is scaled as an integer
/// and how it is written. The codes and their notations are in docs/prices.md.
///
///     CFixPtNum price("101 2/8");       // base code 3, value 101.25
///     std::int32_t eighths = price;     // 810
///     price.ChangeBase(105);
///     price.Print(buffer, size);        // "101.2500"
///
/// The number itself is a double. It is rounded to the scale of its code only where it becomes a
/// long price or a text, to the nearest price, halves away from zero; what the scale can't hold is
/// then missing.
///
/// Write the other operand of an arithmetic operator or a comparison as a double: with an integer
/// the call is ambiguous, between the value and the long price.
///
/// A value less than 0.01 away from MISSING_DOUBLE is the missing price. Arithmetic does not
/// protect it: MISSING_DOUBLE plus 1 is an ordinary price.
///
/// No operation allocates, logs or throws. Prices are plain values: different ones may be used on
/// different threads, and one may be read by many.
class WQDATA_API CFixPtNum {
 public:
  /// Base code 0, value 0.
  CFixPtNum() = default;

  /// As `Set` of the same arguments.
  CFixPtNum(std::int32_t price, int baseCode);
  CFixPtNum(double value, int baseCode);

  /// The record's value, and its base code, sign-extended.
  CFixPtNum(FPN record);

  /// As `Set` of the record's price and its base code, zero-extended.
  CFixPtNum(LPACK record);

  /// Reads a price in any notation, and takes the base code that the notation shows; where the
  /// scale of that code can't hold the price, 110, which rounds to 8 digits: "2147483648" is
  /// 2147483600. A text that is no price, one out of every range, and null give the missing price
  /// with base code 0.
  explicit CFixPtNum(const char* text);

  /// A literal 0 is no text.
  CFixPtNum(std::nullptr_t) = delete;

  /// Stores value and base code unchanged.
  void Set(double value, int baseCode);

  /// Stores the base code, and the number that the long price stands for in it: MISSING_DOUBLE for
  /// MISSING_LONG, 0 for a code that is unknown.
  void Set(std::int32_t price, int baseCode);

  /// Stores another base code. The value is not converted. Always true.
  bool ChangeBase(int baseCode);

  /// Turns a fraction's code into the decimal code with as many decimals as its fractions need;
  /// true if that changed the code. The value stays, but the range of a long price shrinks: in 109
  /// it ends at 21.47. Any code is cut to 16 bits, which is a change for one beyond them.
  bool ConvertNumericBaseCode();

  /// The base code, as it was given: any number.
  int GetBaseCode() const { return static_cast<std::int32_t>(m_scaled); }

  /// True for a value less than 0.01 away from MISSING_DOUBLE.
  bool IsMissing() const { return !IsLong() && HoldsMissing(); }

  /// The value.
  operator double() const { return Value(); }

  /// The long price nearest to the value in the scale of the base code, halves away from zero.
  /// MISSING_LONG for the missing price, a NaN or infinity, a value that 32 bits can't hold in this
  /// scale, and an unknown code.
  operator std::int32_t() const { return IsLong() ? Long() : NearestLong(); }

  /// The records, with the low 16 bits of the base code.
  operator FPN() const;
  operator LPACK() const;

  /// Plain arithmetic on the value, by the rules of doubles; the result has this base code.
  CFixPtNum operator+(double number) const;
  CFixPtNum operator-(double number) const;
  CFixPtNum operator*(double number) const;
  CFixPtNum operator/(double number) const;

  /// Sum and difference of the values, neither of them rescaled; the result has the greater of the
  /// two base codes.
  CFixPtNum operator+(CFixPtNum other) const;
  CFixPtNum operator-(CFixPtNum other) const;

  /// Comparisons by value alone, with a tolerance of 0.00001: `==` and `!=` for a difference below
  /// it, `<` and `>` for one above it. Of values exactly that far apart none is equal, less or
  /// greater; from the greater to the smaller `>=` holds and `<=` does not. With a NaN only `!=` is
  /// true.
  bool operator==(CFixPtNum other) const;
  bool operator!=(CFixPtNum other) const;
  bool operator<(CFixPtNum other) const;
  bool operator<=(CFixPtNum other) const;
  bool operator>(CFixPtNum other) const;
  bool operator>=(CFixPtNum other) const;
  bool operator==(double other) const;
  bool operator!=(double other) const;
  bool operator<(double other) const;
  bool operator<=(double other) const;
  bool operator>(double other) const;
  bool operator>=(double other) const;

  /// Writes the long price in the notation of the base code, "N/A" where it is missing, and
  /// returns the length. `size` is not looked at: `buffer` must have room for 24 bytes, the NUL
  /// included.
  int Print(char* buffer, int size) const;

 private:
  /// A price that came as a long stays one, since most leave as they came: records and texts hold
  /// longs. The number is worked out when it is asked for.
  bool IsLong() const { return Long() != MISSING_LONG; }
  std::int32_t Long() const { return static_cast<std::int32_t>(m_scaled >> 32); }
  double Value() const { return IsLong() ? ValueOfLong() : m_value; }
  void SetNumberOf(std::int32_t price, int baseCode);
  bool HoldsMissing() const;
  double ValueOfLong() const;
  std::int32_t NearestLong() const;

  /// Base code and long price in one word: of two, a copy of the whole would wait for the stores.
  static constexpr std::uint64_t Scaled(std::int32_t baseCode, std::int32_t price) {
    return std::uint64_t{static_cast<std::uint32_t>(price)} << 32 |
           static_cast<std::uint32_t>(baseCode);
  }

  std::uint64_t m_scaled = Scaled(0, MISSING_LONG);  // with a long that came in a scaled code
  double m_value = 0.0;                              // of no meaning beside a long price
};

}  // namespace wqd

#endif  // WQDATA_VALUES_FIXPTNUM_H_
