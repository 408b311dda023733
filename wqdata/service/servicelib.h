/// The part of the service library that programs see: where the library's log goes.
#ifndef WQDATA_SERVICE_SERVICELIB_H_
#define WQDATA_SERVICE_SERVICELIB_H_

#include <wqdata/export.h>

/// Takes one line of the log. `level` is 0 for a type that is not handled, 1 for an operation that
/// failed, 2 for input that was rejected or ignored, and -1 for a line without a level. `text` is
/// NUL-ended, without a line end of its own; what came in from outside stands in it as it came, any
/// byte but a NUL. It lives for the duration of the call only. `context` is what `set_log_sink` was
/// given.
///
/// A sink is called on the thread that logs, by several threads at once if several log, and with
/// no lock held: it may itself call the library, as long as what it logs itself comes to an end. An
/// exception that leaves it is dropped; it must not end its thread.
using LogSink = void (*)(int level, const char* text, void* context);

/// Sends the lines logged from now on to `sink`. A null `sink` restores the default, which writes
/// each line to standard error with blanks for its control characters. Safe while other threads
/// log; a line under way on one of them may still reach the former sink, so its context must live
/// until those threads are past their calls. `context` is never looked at and stays the caller's.
WQDATA_API void set_log_sink(LogSink sink, void* context);

#endif  // WQDATA_SERVICE_SERVICELIB_H_
