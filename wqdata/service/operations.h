/// The part of the service library that serves the rest of the library.
#ifndef WQDATA_SERVICE_OPERATIONS_H_
#define WQDATA_SERVICE_OPERATIONS_H_

#if defined(__GNUC__)
#define WQDATA_PRINTF_LIKE(text, values) __attribute__((format(printf, text, values)))
#else
#define WQDATA_PRINTF_LIKE(text, values)
#endif

namespace wqd::service {

/// Logs one line, composed by the rules of printf. Never fails its caller: a line that can't be
/// composed for want of memory is cut. Decimal points follow the locale, so a caller that shows a
/// floating-point number formats it beforehand.
void log_message(int level, const char* format, ...) WQDATA_PRINTF_LIKE(2, 3);

/// The same for a line without a level.
void log_error(const char* format, ...) WQDATA_PRINTF_LIKE(1, 2);

/// The value of a price text in one of the two fraction notations, `101 2/8` or `101^08`, see
/// `Fraction`. MISSING_DOUBLE for a null pointer and for any text that is neither.
double fraction_to_double(const char* text);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_OPERATIONS_H_
