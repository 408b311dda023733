#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#include <wqdata/service/digits.h>
#include <wqdata/service/text.h>

namespace wqd::service {
namespace {

char ascii_lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// About the power of ten, or in hexadecimal of two, of a number's leading digit. Only its sign is
/// of use, to tell a number that is too large from one that is too small.
std::int64_t leading_power(std::string_view number, bool hex) {
  const char exponentMark = hex ? 'p' : 'e';
  std::int64_t digits = 0;
  bool pastPoint = false;
  bool pastLeadingZeros = false;
  std::int64_t exponent = 0;
  for (std::size_t i = 0; i < number.size(); ++i) {
    const char c = number[i];
    if (ascii_lower(c) == exponentMark) {
      exponent = text_to_int(number.data() + i + 1);
      break;
    }
    pastPoint = pastPoint || c == '.';
    pastLeadingZeros = pastLeadingZeros || (c != '0' && c != '.');
    if (c == '.') continue;
    if (pastLeadingZeros && !pastPoint) ++digits;
    if (!pastLeadingZeros && pastPoint) --digits;
  }
  return digits * (hex ? 4 : 1) + exponent;
}

/// Where the text of a hexadecimal number may end at the latest: before an exponent with two signs,
/// of which the library function takes the second for one.
const char* hex_end(const char* text) {
  for (; *text != '\0'; ++text) {
    if (ascii_lower(text[0]) == 'p' && text[1] == '+' && text[2] == '-') break;
  }
  return text;
}

/// Reads a number without a sign. False, with `value` as it was, for a text that is none.
bool read_magnitude(const char* text, double& value) {
  const bool hex = text[0] == '0' && ascii_lower(text[1]) == 'x';
  if (hex) {
    value = 0.0;  // the 0 in front of the x is a number by itself
    text += 2;
  }
  // The library function takes a second sign, and a word, where the C rule has neither.
  const char first = ascii_lower(*text);
  if (first == '-' || (hex && (first == 'i' || first == 'n'))) return hex;
  const char* const end = hex ? hex_end(text) : text + std::strlen(text);
  const auto [behind, error] =
      std::from_chars(text, end, value, hex ? std::chars_format::hex : std::chars_format::general);
  if (error == std::errc::result_out_of_range) {
    const std::string_view number(text, static_cast<std::size_t>(behind - text));
    value = leading_power(number, hex) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  }
  return hex || error != std::errc::invalid_argument;
}

/// Reads what most texts of numbers are: up to 15 digits and no more than a minus sign in front of
/// them and a point among them. One division of two exact numbers then gives the nearest double.
/// False, with `value` as it was, for any other text.
bool read_plain_number(const char* text, std::size_t length, double& value) {
  constexpr int kMostExact = 15;  // digits that a double holds as they are
  if constexpr (FLT_EVAL_METHOD != 0) return false;
  const bool negative = length > 0 && *text == '-';
  if (negative) ++text, --length;
  if (length == 0 || length > kMostCharacters) return false;
  SixteenDigits digits(text, length);
  int decimals = -1;
  if (!digits.TakePoint(decimals)) return false;
  const int count = static_cast<int>(length) - (decimals < 0 ? 0 : 1);
  if (count == 0 || count > kMostExact) return false;
  const auto power =
      static_cast<double>(kPowersOfTen[static_cast<std::size_t>(std::max(decimals, 0))]);
  const double magnitude = static_cast<double>(static_cast<std::int64_t>(digits.Number())) / power;
  value = negative ? -magnitude : magnitude;
  return true;
}

}  // namespace

int put_text(std::string_view text, char* buffer, int size) {
  const auto room = static_cast<std::size_t>(std::max(size, 0));
  const std::size_t written = std::min(text.size(), room);
  if (written > 0) std::memcpy(buffer, text.data(), written);
  if (text.size() > room) return -1;
  if (text.size() < room) buffer[written] = '\0';
  return static_cast<int>(written);
}

std::string_view fixed_text(double value, NumberText& room, int decimals) {
  char* const begin = room.data();
  const char* const end =
      decimals == kUsualDecimals && is_usual(value)
          ? put_double(begin, value)
          : std::to_chars(begin, begin + room.size(), value, std::chars_format::fixed, decimals)
                .ptr;
  return {begin, static_cast<std::size_t>(end - begin)};
}

int put_decimal(std::int32_t value, char* buffer, int size) {
  const auto bits = static_cast<std::uint32_t>(value);
  const std::uint32_t magnitude = value < 0 ? 0 - bits : bits;
  if (size >= kShortRoom && magnitude < kEightDigits) {
    *buffer = '-';
    return (value < 0) + put_short(buffer + (value < 0), magnitude);
  }
  std::array<char, 11> room;
  const char* const end = std::to_chars(room.data(), room.data() + room.size(), value).ptr;
  return put_text({room.data(), static_cast<std::size_t>(end - room.data())}, buffer, size);
}

TextWriter& TextWriter::Put(char c) {
  if (m_length < m_text.size()) m_text[m_length++] = c;
  return *this;
}

TextWriter& TextWriter::Plain(std::int64_t number) { return Padded(number, 0); }

TextWriter& TextWriter::Padded(std::int64_t number, int width) {
  std::array<char, 24> digits;
  const std::uint64_t magnitude =
      number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
  const char* const end =
      std::to_chars(digits.data(), digits.data() + digits.size(), magnitude).ptr;
  std::ptrdiff_t zeros = width - (end - digits.data()) - (number < 0 ? 1 : 0);
  if (number < 0) Put('-');
  for (; zeros > 0; --zeros) Put('0');
  for (const char* digit = digits.data(); digit != end; ++digit) Put(*digit);
  return *this;
}

std::string_view TextWriter::Text() const { return {m_text.data(), m_length}; }

bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

const char* skip_space(const char* text) {
  while (is_space(*text)) ++text;
  return text;
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

const char* scan_int(const char* text, std::int32_t& value) {
  constexpr std::int64_t kBeyond = std::int64_t{1} << 32;
  const char* at = skip_space(text);
  const bool negative = *at == '-';
  if (*at == '-' || *at == '+') ++at;
  if (!is_digit(*at)) return nullptr;
  std::int64_t magnitude = 0;
  for (; is_digit(*at); ++at) magnitude = std::min(magnitude * 10 + (*at - '0'), kBeyond);
  const std::int64_t number = negative ? -magnitude : magnitude;
  value = static_cast<std::int32_t>(std::clamp<std::int64_t>(
      number, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
  return at;
}

std::int32_t text_to_int(const char* text) {
  std::int32_t value = 0;
  scan_int(text, value);
  return value;
}

bool read_whole_number(const char* text, std::size_t length, double& value) {
  static_assert(kWholeNumberRoom == 1 + kMostCharacters);
  if (read_plain_number(text, length, value)) return true;
  double read = 0.0;
  const auto [behind, error] = std::from_chars(text, text + length, read);
  if (behind != text + length || error != std::errc()) return false;
  value = read;
  return true;
}

double text_to_double(const char* text) {
  const char* at = skip_space(text);
  const bool negative = *at == '-';
  if (*at == '-' || *at == '+') ++at;
  double magnitude = 0.0;
  if (!read_magnitude(at, magnitude)) return 0.0;
  return negative ? -magnitude : magnitude;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return ascii_lower(x) == ascii_lower(y); });
}

}  // namespace wqd::service
