/// The service library: what the rest of the library asks of its surroundings. Programs use the
/// log sink; the operations in namespace `wqd::service` serve the library itself and are not
/// exported from the shared library.
#ifndef WQDATA_SERVICE_SERVICELIB_H_
#define WQDATA_SERVICE_SERVICELIB_H_

#include <wqdata/export.h>

/// Takes one line of the log. `level` is 0 for a type that is not handled, 1 for an operation that
/// failed, 2 for input that was rejected or ignored, and -1 for a line without a level. `text` is
/// NUL-ended, without a line end, lives for the duration of the call only, and may hold any byte
/// that came in from outside. `context` is what `set_log_sink` was given.
///
/// A sink is called on the thread that logs, by several threads at once if several log, and with
/// no lock held: it may itself call the library. An exception that leaves it is dropped.
using LogSink = void (*)(int level, const char* text, void* context);

/// Sends the lines logged from now on to `sink`. A null `sink` restores the default, which writes
/// each line to standard error with blanks for its control characters. Safe while other threads
/// log; a line under way on one of them may still reach the former sink, so its context must live
/// until those threads are past their calls. `context` is never looked at and stays the caller's.
WQDATA_API void set_log_sink(LogSink sink, void* context);

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

#endif  // WQDATA_SERVICE_SERVICELIB_H_
