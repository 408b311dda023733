#include "summary.h"

#include <functional>
#include <string>

namespace {

double Number(const wqd::CFixPtNum& price) { return static_cast<double>(price); }
double Number(double number) { return number; }

/// The first day whose value is ahead of all others by `ahead`, null if every day lacks it.
template <typename T, typename Ahead>
const Quote* FindExtreme(const std::vector<Quote>& quotes, T Quote::*value, Ahead ahead) {
  const Quote* found = nullptr;
  for (const Quote& quote : quotes) {
    if (Number(quote.*value) == MISSING_DOUBLE) continue;
    if (found == nullptr || ahead(Number(quote.*value), Number(found->*value))) found = &quote;
  }
  return found;
}

std::string Text(const wqd::CFixPtNum& price) { return PriceText(price); }
std::string Text(double volume) {
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", volume);
  return text;
}

template <typename T>
void PrintExtreme(std::FILE* out, const char* title, const Quote* day, T Quote::*value) {
  const std::string text =
      day == nullptr ? "none" : Text(day->*value) + " on " + DateText(day->date);
  std::fprintf(out, "%-15s %s\n", title, text.c_str());
}

}  // namespace

void PrintHistory(std::FILE* out, const std::vector<Quote>& quotes) {
  std::fprintf(out, "%-15s %zu\n", "days", quotes.size());
  if (quotes.empty()) return;
  std::fprintf(out, "%-15s %s\n", "first day", DateText(quotes.front().date).c_str());
  std::fprintf(out, "%-15s %s\n", "last day", DateText(quotes.back().date).c_str());
  PrintExtreme(out, "highest high", FindExtreme(quotes, &Quote::high, std::greater<>()),
               &Quote::high);
  PrintExtreme(out, "lowest low", FindExtreme(quotes, &Quote::low, std::less<>()), &Quote::low);
  PrintExtreme(out, "largest volume", FindExtreme(quotes, &Quote::volume, std::greater<>()),
               &Quote::volume);
}
