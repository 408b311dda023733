/// The part of the service library that serves the rest of the library.
#ifndef WQDATA_SERVICE_OPERATIONS_H_
#define WQDATA_SERVICE_OPERATIONS_H_

#include <cstdint>

#if defined(__GNUC__)
#define WQDATA_PRINTF_LIKE(text, values) __attribute__((format(printf, text, values)))
#else
#define WQDATA_PRINTF_LIKE(text, values)
#endif

namespace wqd::service {

/// The levels of the log.
inline constexpr int kLevelUnhandled = 0;  ///< a type that is not handled
inline constexpr int kLevelFailed = 1;     ///< an operation that failed
inline constexpr int kLevelRejected = 2;   ///< input that was rejected or ignored

/// Logs one line, composed by the rules of printf. Never fails its caller: a line that can't be
/// composed for want of memory is cut. Decimal points follow the locale, so a caller that shows a
/// floating-point number formats it beforehand.
void log_message(int level, const char* format, ...) WQDATA_PRINTF_LIKE(2, 3);

/// The same for a line without a level.
void log_error(const char* format, ...) WQDATA_PRINTF_LIKE(1, 2);

/// Room for the longest text of a price, its NUL included.
inline constexpr int kPriceTextSize = 24;

/// The number that the long price `price` stands for in a base code, rounded once to a double.
/// Nonzero when it was stored in `value`; zero, with `value` as it was, for an unknown code.
/// MISSING_LONG gives MISSING_DOUBLE.
int price_to_double(int baseCode, std::int32_t price, double& value);

/// The long price nearest to the exact value of `value` in the scale of a base code, halves away
/// from zero. MISSING_LONG for a NaN, an infinity, what 32 bits can't hold, and an unknown code.
void price_from_double(double value, int baseCode, std::int32_t& price);

/// Writes the NUL-ended notation of a price into `buffer`, which has room for `kPriceTextSize`:
/// "N/A" for MISSING_LONG and for an unknown code.
void price_to_string(int baseCode, std::int32_t price, char* buffer);

/// Reads a price in any notation, blanks around it allowed, and the base code that the notation
/// shows, or 110 with 8 digits where the scale of that code can't hold it. Code 0 and MISSING_LONG
/// for null, a text that is no price, or one out of every range.
void price_from_string(const char* text, int& baseCode, std::int32_t& price);

/// The rank of a base code: of two operands the greater becomes the code of the result.
int base_code_rank(int baseCode);

/// The decimal code with as many decimals as the fractions of a code need to be exact; any other
/// code itself. Its range is smaller: 109 ends at 21.47483647.
std::uint16_t numeric_base_code(std::uint16_t baseCode);

/// Joins the parts as components of a path, null and empty ones left out, and writes the path into
/// `buffer` of `size` bytes as `expand_file_name` completes it. `kind` is 0. The buffer then holds
/// a NUL-ended text, the empty one when the path does not fit, there is no working directory or no
/// memory; null, or a `size` below 1, takes nothing.
void make_file_name(int kind, const char* directory, const char* name, const char* extension,
                    char* buffer, int size);

/// Completes the path in `buffer` in place: absolute, from the working directory, and without
/// components of `.` and `..` and doubled separators. No file is looked at. Of the empty path it
/// makes the working directory. The result and its failures are those of `make_file_name`; a text
/// without a NUL in its `size` bytes does not fit.
void expand_file_name(char* buffer, int size);

/// The value of a price text in one of the two fraction notations, `101 2/8` or `101^08`, see
/// `Fraction`. MISSING_DOUBLE for a null pointer and for any text that is neither.
double fraction_to_double(const char* text);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_OPERATIONS_H_
