#include "data.h"

#include <algorithm>
#include <cstdlib>
#include <random>

namespace wqd_bench {
namespace {

Row random_row(std::mt19937& random) {
  const auto below = [&random](unsigned bound) { return static_cast<unsigned>(random() % bound); };
  Row row{};
  row.number = static_cast<std::int32_t>(random() >> below(31)) | 1;
  row.small = static_cast<std::int16_t>(below(32000));
  row.real = static_cast<double>(2 * below(1000000000) + 1) / 10000;  // msgpack packs 5.0 as 5
  row.price = static_cast<std::int32_t>(1 + below(100000000));
  row.date = {static_cast<std::int8_t>(1 + below(28)), static_cast<std::int8_t>(1 + below(12)),
              static_cast<std::uint16_t>(1980 + below(50))};
  row.time = {static_cast<std::uint16_t>(below(1440)), static_cast<std::uint16_t>(below(60))};
  for (unsigned i = 3 + below(6); i > 0; --i) row.text += static_cast<char>('A' + below(26));
  row.error = static_cast<std::int16_t>(2 + below(2));
  return row;
}

constexpr std::size_t kMostVectorRows = 250'000;  // of 3 KB each, which every library copies

std::size_t record_count() {
  const char* const count = std::getenv("WQDATA_BENCH_RECORDS");
  return count == nullptr ? 10000 : static_cast<std::size_t>(std::atoll(count));
}

}  // namespace

const std::vector<Row>& rows() {
  static const std::vector<Row> all = [] {
    std::mt19937 random(1);
    std::vector<Row> made;
    for (std::size_t i = record_count(); i > 0; --i) made.push_back(random_row(random));
    return made;
  }();
  return all;
}

const std::vector<VectorRow>& vector_rows() {
  static const std::vector<VectorRow> all = [] {
    std::mt19937 random(2);
    std::vector<VectorRow> made(std::min(record_count() / 10, kMostVectorRows));
    for (VectorRow& row : made) {
      for (std::size_t i = 0; i < kElements; ++i) {
        row.numbers.push_back(static_cast<std::int32_t>(random()));
        row.reals.push_back(static_cast<double>(random()) / 7);
      }
    }
    return made;
  }();
  return all;
}

std::uint64_t digest_of_bytes(const void* bytes, std::size_t size) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < size; ++i)
    sum = sum * 31 + static_cast<const std::uint8_t*>(bytes)[i];
  return sum;
}

std::uint64_t digest_of_rows() {
  std::uint64_t sum = 0;
  for (const Row& row : rows()) {
    sum += digest(row.number) + digest(row.small) + digest(row.real) + digest(row.price) +
           digest(row.date) + digest(row.time) + digest(row.text.data(), row.text.size()) +
           digest(row.error);
  }
  return sum;
}

std::uint64_t digest_of_vectors() {
  std::uint64_t sum = 0;
  for (const auto& [numbers, reals] : vector_rows()) {
    sum += digest_of_vector<std::int32_t>(numbers.data(), kElements * sizeof numbers[0]) +
           digest_of_vector<double>(reals.data(), kElements * sizeof reals[0]);
  }
  return sum;
}

}  // namespace wqd_bench
