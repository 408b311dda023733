#include <sys/stat.h>

#include <cstring>
#include <limits>

#include <wqdata/service/operations.h>
#include <wqdata/service/text.h>
#include <wqdata/textsupport/helpers.h>

namespace {

const char* or_empty(const char* text) { return text == nullptr ? "" : text; }

int code_of(char c) { return static_cast<signed char>(c); }

}  // namespace

char* my_strncpy(char* destination, const char* source, std::size_t size) {
  if (destination == nullptr || size == 0) return destination;
  std::strncpy(destination, or_empty(source), size);
  destination[size - 1] = '\0';
  return destination;
}

char* str_trimLeft(char* text) {
  if (text == nullptr) return nullptr;
  char* end = text + std::strlen(text);
  while (end != text && wqd::service::is_space(end[-1])) --end;
  *end = '\0';
  return text;
}

int MatchPattern(const char* text, const char* pattern) {
  text = or_empty(text);
  for (pattern = or_empty(pattern); *pattern != '\0'; ++pattern, ++text) {
    if (*pattern == '*') return 0;
    const bool matches = *pattern == *text || (*pattern == '?' && *text != '\0');
    if (!matches) return code_of(*text) - code_of(*pattern);
  }
  return code_of(*text);
}

int FindWildCard(const char* text) {
  const std::size_t length = std::strcspn(or_empty(text), "?*");
  return or_empty(text)[length] == '\0' ? -1 : static_cast<int>(length);
}

bool GetFileModTime(const char* path, std::int32_t* seconds) {
  using Range = std::numeric_limits<std::int32_t>;
  struct stat file;
  if (path == nullptr || seconds == nullptr || stat(path, &file) != 0) return false;
  if (file.st_mtime < Range::min() || file.st_mtime > Range::max()) return false;
  *seconds = static_cast<std::int32_t>(file.st_mtime);
  return true;
}

int GetZulFileName(const char* directory, const char* name, const char* extension, char* buffer,
                   int size) {
  if (buffer == nullptr || size < 1) return 0;
  if (name != nullptr) {
    wqd::service::make_file_name(0, directory, name, extension, buffer, size);
  } else {
    // The name goes through the buffer even where its completed form would be the shorter one.
    const std::size_t length = std::strlen(or_empty(extension));
    if (length < static_cast<std::size_t>(size)) {
      std::memmove(buffer, or_empty(extension), length + 1);
      wqd::service::expand_file_name(buffer, size);
    } else {
      buffer[0] = '\0';
    }
  }
  return static_cast<int>(std::strlen(buffer));
}
