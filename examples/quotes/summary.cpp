#include "summary.h"

#include <algorithm>
#include <functional>

#include "quoteblocks.h"

namespace {

/// The first day whose value is ahead of all others by `ahead`, null if every day lacks it.
template <typename Ahead>
const Quote* FindExtreme(const std::vector<Quote>& quotes, std::optional<double> Quote::*value,
                         Ahead ahead) {
  const Quote* found = nullptr;
  for (const Quote& quote : quotes) {
    if (!(quote.*value)) continue;
    if (found == nullptr || ahead(*(quote.*value), *(found->*value))) found = &quote;
  }
  return found;
}

void PrintExtreme(std::FILE* out, const char* title, const Quote* day,
                  std::optional<double> Quote::*value) {
  if (day == nullptr) {
    std::fprintf(out, "%-15s none\n", title);
  } else {
    std::fprintf(out, "%-15s %s on %s\n", title, NumberText(*(day->*value)).c_str(),
                 day->date.c_str());
  }
}

std::size_t CountEqualValues(const Quote& a, const Quote& b) {
  std::size_t equal = a.date == b.date ? 1 : 0;
  for (const NumberField& field : kNumberFields) {
    if (a.*field.value == b.*field.value) ++equal;
  }
  return equal;
}

}  // namespace

void PrintHistory(std::FILE* out, const std::vector<Quote>& quotes) {
  std::fprintf(out, "%-15s %zu\n", "days", quotes.size());
  if (quotes.empty()) return;
  std::fprintf(out, "%-15s %s\n", "first day", quotes.front().date.c_str());
  std::fprintf(out, "%-15s %s\n", "last day", quotes.back().date.c_str());
  PrintExtreme(out, "highest high", FindExtreme(quotes, &Quote::high, std::greater<>()),
               &Quote::high);
  PrintExtreme(out, "lowest low", FindExtreme(quotes, &Quote::low, std::less<>()), &Quote::low);
  PrintExtreme(out, "largest volume", FindExtreme(quotes, &Quote::volume, std::greater<>()),
               &Quote::volume);
}

std::size_t CountEqualValues(const std::vector<Quote>& a, const std::vector<Quote>& b) {
  std::size_t equal = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    equal += CountEqualValues(a[i], b[i]);
  }
  return equal;
}
