/// What the fuzz targets share: each is the body of one `LLVMFuzzerTestOneInput`, which takes any
/// bytes, and holds what the library makes of them against an oracle.
#ifndef WQDATA_FUZZ_TARGET_H_
#define WQDATA_FUZZ_TARGET_H_

#include <wqdata/service/servicelib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

/// The entry that libFuzzer, and the replay of saved inputs, call.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace wqd_fuzz {

/// Ends the program, with what should have held, unless it does.
inline void Expect(bool holds, const char* claim) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", claim);
  std::abort();
}

/// A heap copy of just the input's bytes, so that a read beside them is seen. `ended` puts a NUL
/// behind them.
class Copy {
 public:
  Copy(const std::uint8_t* data, std::size_t size, bool ended = false)
      : m_size(size), m_bytes(new char[size + (ended ? 1 : 0)]) {
    if (size > 0) std::memcpy(m_bytes.get(), data, size);
    if (ended) m_bytes[size] = '\0';
  }

  char* data() const { return m_bytes.get(); }
  int size() const { return static_cast<int>(m_size); }

 private:
  std::size_t m_size;
  std::unique_ptr<char[]> m_bytes;
};

/// Takes numbers from the front of an input. Behind its end they are 0.
class Numbers {
 public:
  Numbers(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

  template <typename Number>
  Number Take() {
    Number number{};
    const std::size_t taken = m_left < sizeof number ? m_left : sizeof number;
    if (taken > 0) std::memcpy(&number, m_data, taken);
    m_data += taken;
    m_left -= taken;
    return number;
  }

  /// The rest.
  std::string Text() const { return {reinterpret_cast<const char*>(m_data), m_left}; }

 private:
  const std::uint8_t* m_data;
  std::size_t m_left;
};

/// Lines of the log, which is kept quiet: hostile bytes are worth a line each.
inline int logged = 0;
inline const bool quiet = [] {
  set_log_sink([](int, const char*, void*) { ++logged; }, nullptr);
  return true;
}();

}  // namespace wqd_fuzz

#endif  // WQDATA_FUZZ_TARGET_H_
