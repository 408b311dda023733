// Runs the saved inputs of a target without libFuzzer, each as it is, and cut at and damaged in
// each of its first 512 bytes: what once failed stays mended on every build.
//
//   replay_NAME DIRECTORY   prints the number of inputs run; fails when there was none
#include <algorithm>
#include <clocale>
#include <filesystem>
#include <fstream>
#include <iterator>
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

}  // namespace

int main(int argc, char** argv) {
  const char* const locale = std::getenv("WQDATA_TEST_LOCALE");
  if (locale != nullptr && std::setlocale(LC_ALL, locale) == nullptr) return EXIT_FAILURE;
  std::size_t runs = 0;
  if (argc == 2) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(file), {}};
      runs += run_damaged(Bytes(bytes.begin(), bytes.end()));
    }
  }
  std::printf("%zu inputs\n", runs);
  return runs > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
