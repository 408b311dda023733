#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include <wqdata/service/operations.h>
#include <wqdata/service/servicelib.h>

namespace {

struct Destination {
  LogSink sink = nullptr;
  void* context = nullptr;
};

constinit std::mutex destinationMutex;
constinit Destination destination;

Destination CurrentDestination() {
  const std::lock_guard lock(destinationMutex);
  return destination;
}

/// `text` has room for a line end in the place of its NUL. A single write keeps the lines of
/// several threads apart, and a received text can't forge a line of its own.
void WriteToStandardError(char* text, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x20 || byte == 0x7F) text[i] = ' ';
  }
  text[length] = '\n';
  std::fwrite(text, 1, length + 1, stderr);
}

void Deliver(int level, char* text, std::size_t length) {
  const Destination to = CurrentDestination();
  if (to.sink == nullptr) return WriteToStandardError(text, length);
  try {
    to.sink(level, text, to.context);
  } catch (...) {  // logging never fails the caller
  }
}

void Compose(int level, const char* format, std::va_list values) {
  char line[1024] = "";
  std::va_list again;
  va_copy(again, values);
  const int wanted = std::vsnprintf(line, sizeof line, format, values);
  // Beyond what an int can count, the line is what there was room for.
  line[sizeof line - 1] = '\0';
  const std::size_t length = wanted < 0 ? std::strlen(line) : static_cast<std::size_t>(wanted);
  if (length < sizeof line) {
    Deliver(level, line, length);
  } else if (const std::unique_ptr<char[]> longLine(new (std::nothrow) char[length + 1]);
             longLine != nullptr) {
    std::vsnprintf(longLine.get(), length + 1, format, again);
    Deliver(level, longLine.get(), length);
  } else {
    Deliver(level, line, sizeof line - 1);
  }
  va_end(again);
}

}  // namespace

void set_log_sink(LogSink sink, void* context) {
  const std::lock_guard lock(destinationMutex);
  destination = {sink, context};
}

namespace wqd::service {

void log_message(int level, const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  Compose(level, format, values);
  va_end(values);
}

void log_error(const char* format, ...) {
  constexpr int kWithoutLevel = -1;
  std::va_list values;
  va_start(values, format);
  Compose(kWithoutLevel, format, values);
  va_end(values);
}

}  // namespace wqd::service
