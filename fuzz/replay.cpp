// Runs the saved inputs of a target without libFuzzer, each as it is, and cut at and damaged in
// each of its first 512 bytes: what once failed stays mended on every build.
//
//   replay_NAME FILE...   prints the number of inputs run; fails when there was none
#include <algorithm>
#include <clocale>
#include <vector>

#include "target.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kMostDamaged = 512;  // bytes from an input's start

void run(const Bytes& bytes) { LLVMFuzzerTestOneInput(bytes.data(), bytes.size()); }

std::size_t run_damaged(const Bytes& bytes) {
  run(bytes);
  const std::size_t most = std::min(bytes.size(), kMostDamaged);
  for (std::size_t at = 0; at < most; ++at) {
    run(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(at)));
    for (const int byte : {0, bytes[at] + 1, bytes[at] - 1, 255}) {
      Bytes damaged = bytes;
      damaged[at] = static_cast<std::uint8_t>(byte);
      run(damaged);
    }
  }
  return 1 + 5 * most;
}

Bytes read_file(const char* path) {
  Bytes bytes;
  std::FILE* const file = std::fopen(path, "rb");
  if (file == nullptr) std::abort();
  for (int c = std::getc(file); c != EOF; c = std::getc(file)) {
    bytes.push_back(static_cast<std::uint8_t>(c));
  }
  std::fclose(file);
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  const char* const locale = std::getenv("WQDATA_TEST_LOCALE");
  if (locale != nullptr && std::setlocale(LC_ALL, locale) == nullptr) return EXIT_FAILURE;
  std::size_t runs = 0;
  for (int i = 1; i < argc; ++i) runs += run_damaged(read_file(argv[i]));
  std::printf("%zu inputs\n", runs);
  return runs > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
