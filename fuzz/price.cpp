// Prices: read, printed and read again is equal, and decimal text is what its digits say.
#include <wqdata/items/dataitem.h>
#include <wqdata/service/operations.h>
#include <wqdata/types.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "target.h"

using namespace wqd;
using namespace wqd_fuzz;

namespace {

/// Any number of digits, with a point or not, is a price near the number, or beyond the largest: of
/// code 110 with 28 bits and a sign, times 10^7.
void check_magnitude(const std::string& text, int baseCode, std::int32_t price) {
  constexpr double kLargest = 134217727e7;
  double number = 0;
  const char* const end = text.data() + text.size();
  if (text.empty() || text.find_first_not_of("-.0123456789") != std::string::npos) return;
  const auto [at, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (at != end || error != std::errc()) return;
  if (price == MISSING_LONG) {
    Expect(std::abs(number) > 0.999 * kLargest, "a number in range is a price");
    return;
  }
  double value = 0;
  Expect(service::price_to_double(baseCode, price, value) != 0, "what was read has a value");
  Expect(std::abs(value - number) <= std::max(4e-8 * std::abs(number), 6e-9),
         "a price is near its text");
}

/// A text of at most 9 digits, with a point among them and a sign in front of them or not, is read
/// as it stands: as many decimals, the same digits.
void check_decimal(const std::string& text, int baseCode, std::int32_t price) {
  const std::size_t point = text.find('.');
  std::string digits = text;
  if (point != std::string::npos) digits.erase(point, 1);
  const bool negative = !digits.empty() && digits[0] == '-';
  const std::string plain = digits.substr(negative ? 1 : 0);
  if (plain.empty() || plain.size() > 9) return;
  if (plain.find_first_not_of("0123456789") != std::string::npos || point == 0) return;
  const std::size_t decimals = point == std::string::npos ? 0 : text.size() - point - 1;
  if (decimals > 8 || (negative && point == 1)) return;
  std::int32_t expected = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), expected);
  Expect(baseCode == 101 + static_cast<int>(decimals), "decimals are counted");
  Expect(price == expected, "decimal text is what its digits say");
}

/// What is printed reads back as the same value; so does the nearest double.
void check_price(int baseCode, std::int32_t price) {
  double value = 0;
  char text[service::kPriceTextSize];
  std::memset(text, 'x', sizeof text);
  service::price_to_string(baseCode, price, text);
  Expect(std::memchr(text, '\0', sizeof text) != nullptr, "a price fits its buffer");
  const bool known = service::price_to_double(baseCode, price, value) != 0;
  const bool none = !known || price == MISSING_LONG;
  Expect((std::strcmp(text, "N/A") == 0) == none, "a missing price is N/A, and no other is");
  if (none) return;
  int codeRead = 0;
  std::int32_t priceRead = 0;
  double valueRead = 0;
  service::price_from_string(text, codeRead, priceRead);
  Expect(service::price_to_double(codeRead, priceRead, valueRead) != 0 && valueRead == value,
         "printed and read again is equal");
  std::int32_t nearest = 0;
  service::price_from_double(value, baseCode, nearest);
  Expect(service::price_to_double(baseCode, nearest, valueRead) != 0 && valueRead == value,
         "the double of a price is that price");
}

/// Texts of numbers are read as the C library reads them with a decimal point. Hexadecimal ones are
/// left out: it rounds some halves of the smallest the wrong way.
void check_numbers(const char* text) {
  const double fraction = service::fraction_to_double(text);
  Expect(fraction == MISSING_DOUBLE || std::strpbrk(text, "/^") != nullptr,
         "a fraction has its mark");
  if (std::strpbrk(text, "xX/^") != nullptr) return;
  static const locale_t usual = newlocale(LC_ALL_MASK, "C", nullptr);
  const double read = CDataItem(FID{1}, text, -1).GetFloat();
  const double expected = strtod_l(text, nullptr, usual);
  const bool missing = std::strncmp(text, "N/A", 4) == 0;
  Expect(missing || read == expected || (std::isnan(read) && std::isnan(expected)),
         "a number is what the C library reads");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Numbers numbers(data, size);
  const auto baseCode = numbers.Take<std::uint8_t>();
  const std::string rest = numbers.Text();
  const auto price = numbers.Take<std::int32_t>();
  const auto wideCode = numbers.Take<std::int32_t>();
  check_price(baseCode, price);
  check_price(wideCode, price);
  const Copy text(reinterpret_cast<const std::uint8_t*>(rest.data()), rest.size(), true);
  int codeRead = -1;
  std::int32_t priceRead = 0;
  service::price_from_string(text.data(), codeRead, priceRead);
  if (priceRead == MISSING_LONG) {
    Expect(codeRead == 0, "a text that is no price has code 0");
  } else {
    check_price(codeRead, priceRead);
  }
  check_decimal(text.data(), codeRead, priceRead);
  check_magnitude(text.data(), codeRead, priceRead);
  check_numbers(text.data());
  std::int32_t nearest = 0;
  const auto real = Numbers(data, size).Take<double>();
  service::price_from_double(real, baseCode, nearest);
  check_price(baseCode, nearest);
  return 0;
}
