/// Text in and out of buffers and numbers, the same in every locale and without allocation.
#ifndef WQDATA_SERVICE_TEXT_H_
#define WQDATA_SERVICE_TEXT_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace wqd::service {

/// Writes `text` by the rule of every `Print` of the library, which touches at most `size` bytes:
/// a text shorter than `size` with its NUL, the result its length; a text of exactly `size`
/// without a NUL, the result `size`; of a longer one the first `size` characters without a NUL, the
/// result negative. A `size` below 0 is taken as 0.
int put_text(std::string_view text, char* buffer, int size);

/// Room for the longest text of a number: the largest double as "%.4f" has 315 characters.
using NumberText = std::array<char, 328>;

/// What printf writes for "%.4f", or with that many decimals, to 6: "nan" and "inf" included. The
/// view is into `room`.
std::string_view fixed_text(double value, NumberText& room, int decimals = 4);

/// `put_text` of what printf writes for "%d".
int put_decimal(std::int32_t value, char* buffer, int size);

/// Composes a short text of numbers and signs: 63 characters at the most, which no date, time or
/// price exceeds.
class TextWriter {
 public:
  TextWriter& Put(char c);

  /// As printf writes for "%d", and for "%0*d": `width` counts the sign.
  TextWriter& Plain(std::int64_t number);
  TextWriter& Padded(std::int64_t number, int width = 2);

  std::string_view Text() const;

 private:
  std::array<char, 63> m_text;
  std::size_t m_length = 0;
};

/// The white space of the C locale.
bool is_space(char c);

/// The first character at or behind `text` that is not white space.
const char* skip_space(const char* text);

bool is_digit(char c);

/// Reads what scanf reads for "%d": white space, a sign, digits. Returns the place behind them, or
/// null for no number at `text`. A number beyond 32 bits is the nearest one within.
const char* scan_int(const char* text, std::int32_t& value);

/// What `atoi` makes of a text: 0 for no number, and the nearest number within 32 bits.
std::int32_t text_to_int(const char* text);

/// The bytes that must be readable for `read_whole_number`, however short the text.
inline constexpr std::size_t kWholeNumberRoom = 17;

/// Reads a text of `length` characters that are a number from the first to the last, as decimals
/// are written without a plus sign: what `text_to_double` gives for it. False, with `value` as it
/// was, for any other text, even if it begins with a number.
bool read_whole_number(const char* text, std::size_t length, double& value);

/// What `atof` makes of a text in the C locale: 0 for no number, an infinity or 0 for one out of
/// the range of a double.
double text_to_double(const char* text);

/// Compares two texts without regard to the case of ASCII letters.
bool equal_ignoring_case(std::string_view a, std::string_view b);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_TEXT_H_
