#include <algorithm>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>

#include <wqdata/service/operations.h>

namespace wqd::service {
namespace {

constexpr char kSeparator = '/';

/// Writes a path as `expand_file_name` completes it.
void put_completed(const std::string& path, char* buffer, std::size_t size) {
  std::error_code error;
  std::filesystem::path complete = path;
  if (!complete.is_absolute()) complete = std::filesystem::current_path(error);
  if (!complete.empty() && !path.empty()) complete /= path;
  std::string text = error ? std::string() : complete.lexically_normal().string();
  // Separators alone are the root, however many there are.
  if (text.find_first_not_of(kSeparator) == std::string::npos)
    text.resize(std::min<std::size_t>(text.size(), 1));
  if (text.size() < size) std::memcpy(buffer, text.c_str(), text.size() + 1);
}

}  // namespace

void make_file_name(int, const char* directory, const char* name, const char* extension,
                    char* buffer, int size) {
  if (buffer == nullptr || size < 1) return;
  try {
    std::string path;
    for (const char* const part : {directory, name, extension}) {  // which may lie in the buffer
      if (part == nullptr || *part == '\0') continue;
      if (!path.empty()) path += kSeparator;
      path += part;
    }
    buffer[0] = '\0';
    put_completed(path, buffer, static_cast<std::size_t>(size));
  } catch (const std::bad_alloc&) {
    buffer[0] = '\0';
  }
}

void expand_file_name(char* buffer, int size) {
  if (buffer == nullptr || size < 1) return;
  char* const end = buffer + size;
  char* const textEnd = std::find(buffer, end, '\0');
  try {
    const std::string path(buffer, textEnd);
    buffer[0] = '\0';
    if (textEnd != end) put_completed(path, buffer, static_cast<std::size_t>(size));
  } catch (const std::bad_alloc&) {
    buffer[0] = '\0';
  }
}

}  // namespace wqd::service
