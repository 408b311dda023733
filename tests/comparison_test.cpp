// The order and the arithmetic of items, by the types of both.
#include <wqdata/items/dataitem.h>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;
using namespace std::string_literals;

constexpr FID kId = 9;

/// An item of a letter for its type and a value: "D:1.5" a double, "L:5" a long, "I:5" a short,
/// "P:1 1/8" a price, "S:abc" a text, "A:01/05/2004" a date, "T:09:30" a time, "V:5" a vector of a
/// long, "B:abc" a blob, "E:7" an error item.
CDataItem Operand(const std::string& text) {
  const char* const value = text.c_str() + 2;
  const auto number = static_cast<std::int32_t>(std::atoll(value));
  CDataItem item;
  const InLocale usual;
  switch (text[0]) {
    case 'D': return {kId, std::strtod(value, nullptr)};
    case 'L': return {kId, number};
    case 'I': return {kId, static_cast<std::int16_t>(number)};
    case 'P': return {kId, CFixPtNum(value)};
    case 'S': return {kId, value, -1};
    case 'A': return {kId, CZulDate(value)};
    case 'T': return {kId, CZulTime(value)};
    case 'V': item.SetVector(kId, &number, 1); return item;
    case 'B': return {const_cast<char*>(value), static_cast<int>(text.size()) - 2};
    default: return {kId, static_cast<std::int16_t>(number), true};
  }
}

/// The sign between two items that says what `Compare` and all six operators tell, "!" for no
/// order.
std::string Order(CDataItem& left, CDataItem& right) {
  const std::string told = Holding(left, right);
  switch (left.Compare(right)) {
    case CMP_EQUAL: return told == "=lg" ? "=" : told;
    case CMP_LESS: return told == "!<l" ? "<" : told;
    case CMP_GREATER: return told == "!>g" ? ">" : told;
    default: return told.empty() ? "!" : told;
  }
}

std::string Shown(CDataItem item) {
  char text[40];
  const InLocale usual;
  switch (item.GetType()) {
    case TYPE_LONG: std::snprintf(text, sizeof text, "L:%d", item.GetLong()); break;
    case TYPE_DOUBLE: std::snprintf(text, sizeof text, "D:%g", item.GetFloat()); break;
    case TYPE_ERROR: std::snprintf(text, sizeof text, "E:%d", item.GetError()); break;
    default: std::snprintf(text, sizeof text, "type %d", item.GetType());
  }
  return item.GetId() == 0 ? text : std::string(text) + " under an identifier";
}

/// What a text such as "L:5 + D:1.5" comes to; "?" asks for the order.
std::string Result(const std::string& text) {
  std::size_t sign = text.find(' ');
  while (text.find_first_of("+-*/?", sign) != sign + 1 || text[sign + 2] != ' ') {
    sign = text.find(' ', sign + 1);
  }
  CDataItem left = Operand(text.substr(0, sign));
  CDataItem right = Operand(text.substr(sign + 3));
  switch (text[sign + 1]) {
    case '+': return Shown(left + right);
    case '-': return Shown(left - right);
    case '*': return Shown(left * right);
    case '/': return Shown(left / right);
    default: return Order(left, right);
  }
}

/// A sign for each operand on the right of `left`.
template <typename Sign>
std::string SignsOf(const std::string& left, Sign sign) {
  std::string signs;
  for (const char* const right :
       {"D:5", "L:5", "I:5", "P:5", "S:5", "A:01/05/2004", "T:00:05", "V:5", "B:5", "E:5"}) {
    signs += sign(left, right);
  }
  return signs;
}

TEST(Compare, TakesEachTypeByTheLeftOne) {
  // D and P by number, dates and the like count as missing; L and I: doubles and prices have no
  // value as a long; S: the right one's text is the pattern, "5.0000" of the double; A: what is no
  // date is the zero date; T: whole numbers and texts of them are minutes, others missing.
  ExpectRows(R"(
      D:5 => =====>>>>! | L:5 => >==>=>>>>! | I:5 => >==>=>>>>! | P:5 => =====>>>>!
      S:5 => <====>>>>! | A:01/05/2004 => >>>>>=>>>! | T:00:05 => <==<=<=<<!
      V:5 => !!!!!!!!!! | B:5 => !!!!!!!!!! | E:5 => !!!!!!!!!!)",
             [](const std::string& operand) {
               return SignsOf(operand, [](const std::string& left, const std::string& right) {
                 return Result(left + " ? " + right);
               });
             });
}

TEST(Compare, KeepsToItsRulesAtTheEdges) {
  ExpectRows(R"(
      D:1 ? D:1.0000001 => <      | D:nan ? D:1 => <            | D:1 ? D:nan => <
      D:nan ? D:nan => <          | D:-0.0 ? D:0 => =           | D:5 ? S:abc => >
      P:1 1/8 ? D:1.125 => =      | P:1 ? P:1.0 => =            | D:0.5 ? S:1/2 => =
      L:5 ? D:5.0 => >            | D:5.0 ? L:5 => =            | L:-7 ? L:7 => <
      L:12 ? S:12abc => =         | L:2147483647 ? I:-1 => >    | L:-2147483647 ? D:1 => >
      I:1 ? L:65537 => =          | I:0 ? L:65535 => >          | I:-32767 ? D:1 => >
      S:abc ? S:a* => =           | S:abc ? S:a?c => =          | S:a* ? S:abc => <
      S:abc ? S:ab => >           | S:ab ? S:abc => <           | S: ? S: => =
      S:1.5000 ? D:1.5 => =       | S:1.5 ? D:1.5 => <          | S: ? V:5 => =
      S:N/B ? S:N/A* => >         | S:x ? S:N/A => !            | S:7 ? L:7 => =
      A:01/05/2004 ? S:2004-01-06 => <          | A:12/31/2003 ? A:01/01/2004 => <
      A:02/01/2004 ? A:01/31/2004 => >          | A:01/05/2004 ? L:20040105 => >
      T:09:30 ? L:570 => =        | T:09:30 ? S:09:30:01 => <   | T:09:31 ? I:570 => >
      E:1 ? E:1 => !              | L:-2147483648 ? L:1 => !    | L:1 ? E:2 => !
      V:5 ? V:5 => !              | B:abc ? S:abc => !)",
             Result);
  CDataItem fresh;
  CDataItem vector = Operand("V:5");
  EXPECT_EQ(Order(fresh, fresh) + Order(vector, vector), "!!");
}

TEST(Arithmetic, PromotesEachPairOfTypes) {
  // L for a long, D for a double, E for the error item.
  const auto type = [](const std::string& left, const std::string& right) {
    std::string results;
    for (const char* sign : {" + ", " - ", " * ", " / "}) results += Result(left + sign + right);
    if (results == "L:10L:0L:25L:1") return "L"s;
    if (results == "D:10D:0D:25D:1") return "D"s;
    return results == "E:2E:2E:2E:2" ? "E" : results;
  };
  ExpectRows(R"(
      D:5 => DDDDDEEEEE | L:5 => DLLDDEEEEE | I:5 => DLLDDEEEEE | P:5 => DDDDDEEEEE
      S:5 => DDDDDEEEEE | A:01/05/2004 => EEEEEEEEEE | T:00:05 => EEEEEEEEEE
      V:5 => EEEEEEEEEE | B:5 => EEEEEEEEEE | E:5 => EEEEEEEEEE)",
             [type](const std::string& operand) { return SignsOf(operand, type); });
}

TEST(Arithmetic, WrapsTruncatesAndRefuses) {
  ExpectRows(R"(
      L:2147483647 + L:2 => L:-2147483647        | L:2147483647 + L:1 => E:2
      L:-2147483647 - I:2 => L:2147483647        | L:-2147483647 - I:1 => E:2
      L:65536 * L:65537 => L:65536               | L:65536 * L:32768 => E:2
      L:2147483647 * L:2147483647 => L:1         | I:32767 * I:32767 => L:1073676289
      L:7 / L:2 => L:3      | L:-7 / L:2 => L:-3 | L:-2147483647 / L:-1 => L:2147483647
      L:1 / L:0 => E:2      | I:1 / I:0 => E:2   | L:1 / D:0 => E:2    | L:1 / S:abc => E:2
      D:1 / D:-0.0 => E:2   | D:1 / P:0 => E:2   | D:1 / L:0 => E:2    | D:0 / D:0 => E:2
      D:1 / D:nan => D:nan  | D:1e308 * L:10 => D:inf                  | D:7 / L:2 => D:3.5
      D:-99999999 - D:1 => E:2                   | D:-99999999 - D:1.02 => D:-1e+08
      S:12.5 + L:1 => D:13.5 | S:abc + L:1 => D:1 | S:12 + S:3 => D:15  | S:1 1/2 * S:^16 => D:0.75
      P:1 1/8 + P:1 1/8 => D:2.25                | A:01/05/2004 + L:1 => E:2
      E:7 + L:1 => E:2      | L:1 + E:7 => E:2   | S:12/31/2004 + L:1 => E:2)",
             Result);
}

}  // namespace
