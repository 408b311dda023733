/// Small functions on NUL-ended texts and on files. None of them logs or throws, and all are safe
/// on any thread, as long as no other one changes the text meanwhile.
#ifndef WQDATA_TEXTSUPPORT_HELPERS_H_
#define WQDATA_TEXTSUPPORT_HELPERS_H_

#include <cstddef>
#include <cstdint>

#include <wqdata/export.h>

/// Copies at most `size` - 1 characters of `source` into `destination`, a buffer of `size` bytes,
/// and fills the rest of it with zeros. A null `source` counts as empty; a null `destination`, and
/// a `size` of 0, take nothing. The two must not overlap. Returns `destination`.
WQDATA_API char* my_strncpy(char* destination, const char* source, std::size_t size);

/// Removes the white space (of the C locale) at the end of `text`, in place: the right end,
/// whatever the name says. Returns `text`, which may be null.
WQDATA_API char* str_trimLeft(char* text);

/// Compares `text` with `pattern`, character by character, and answers as `strcmp` does: 0 for a
/// match, else the difference of the first two characters that differ, as signed 8-bit numbers.
/// A "?" in the pattern matches any one character. A "*" matches all that is left, and ends the
/// comparison: what follows it in the pattern is not looked at. Null counts as an empty text.
///
///     MatchPattern("abc", "a?c");   // 0
///     MatchPattern("abc", "a*z");   // 0
///     MatchPattern("abc", "ab");    // 99, the "c" that is left
///     MatchPattern("ab", "ab?");    // -63, the "?" that found none
WQDATA_API int MatchPattern(const char* text, const char* pattern);

/// The offset of the first "?" or "*" in `text`, -1 for a text without one and for null.
WQDATA_API int FindWildCard(const char* text);

/// Stores the time of the last change of the file `path` in `seconds` since 1970 began, in UTC, and
/// returns true. False, with `seconds` as it was, for a file that can't be looked at, a time that
/// 32 bits can't hold, and null.
WQDATA_API bool GetFileModTime(const char* path, std::int32_t* seconds);

/// Writes a file name into `buffer` of `size` bytes: absolute, from the working directory, and
/// without components of `.` and `..`. No file is looked at. With a `name`, the path is made of
/// `directory`, `name` and `extension`, joined as path components, null and empty ones left out;
/// with a null `name` it is `extension` alone. Returns the length of the text now in `buffer`: 0,
/// and the empty text, when the path does not fit or there is no working directory. A null `buffer`
/// and a `size` below 1 take nothing, with the result 0.
///
///     GetZulFileName("/data", "daily", "prices.dat", buffer, size);  // "/data/daily/prices.dat"
///     GetZulFileName(nullptr, nullptr, "../b.dat", buffer, size);    // "/home/b.dat" in /home/me
WQDATA_API int GetZulFileName(const char* directory, const char* name, const char* extension,
                              char* buffer, int size);

#endif  // WQDATA_TEXTSUPPORT_HELPERS_H_
