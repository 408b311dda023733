/// The data of the benchmarks, the same for every library, and how a series is timed.
#ifndef WQDATA_BENCH_DATA_H_
#define WQDATA_BENCH_DATA_H_

#include <benchmark/benchmark.h>
#include <wqdata/types.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace wqd_bench {

/// A record of eight fields. The price is in `kBaseCode`.
struct Row {
  std::int32_t number;
  std::int16_t small;
  double real;
  std::int32_t price;
  ZULDATE date;
  ZULTIME time;
  std::string text;  ///< 3 to 8 letters
  std::int16_t error;
};
inline constexpr std::uint16_t kBaseCode = 105;
inline constexpr std::size_t kFieldsOfRow = 8;

/// The identifiers of the fields in their order.
enum Id : FID { kNumber = 1, kSmall, kReal, kPrice, kDate, kTime, kText, kError };

/// A record of two vectors of 256 elements.
struct VectorRow {
  std::vector<std::int32_t> numbers;
  std::vector<double> reals;
};
inline constexpr std::size_t kElements = 256;

/// 10000 and 1000 records, the same in every run. WQDATA_BENCH_RECORDS in the environment sets the
/// first number, and a tenth of it the second up to 250000, for runs at another scale.
const std::vector<Row>& rows();
const std::vector<VectorRow>& vector_rows();

/// One field of all rows by itself: a loop over the rows would also wait for the bytes of the other
/// fields, which a program that has such values does not carry along.
template <typename Value>
std::vector<Value> column(Value Row::*field) {
  std::vector<Value> values;
  for (const Row& row : rows()) values.push_back(row.*field);
  return values;
}

/// What a walk adds up of a value, so that no field can be left out unnoticed.
inline std::uint64_t digest(std::int32_t value) { return static_cast<std::uint32_t>(value); }
inline std::uint64_t digest(double value) { return std::bit_cast<std::uint64_t>(value); }
inline std::uint64_t digest(ZULDATE date) {
  return static_cast<std::uint64_t>((date.year * 16 + date.month) * 32 + date.day);
}
inline std::uint64_t digest(ZULTIME time) {
  return static_cast<std::uint64_t>(time.minutes * 60 + time.seconds);
}

/// True while series are checked: every byte of a text and a vector counts then. While they are
/// timed it is the ends alone, since the sum is not the work.
inline bool checking = true;
std::uint64_t digest_of_bytes(const void* bytes, std::size_t size);

inline std::uint64_t digest(const char* text, std::size_t length) {
  return (checking ? digest_of_bytes(text, length) : 0) + length * 256 +
         static_cast<unsigned char>(text[length - 1]);
}

/// The same of a vector, which may lie at any address.
template <typename Element>
std::uint64_t digest_of_vector(const void* elements, std::size_t size) {
  Element first, last;
  std::memcpy(&first, elements, sizeof first);
  std::memcpy(&last, static_cast<const char*>(elements) + size - sizeof last, sizeof last);
  return (checking ? digest_of_bytes(elements, size) : 0) + digest(first) + digest(last);
}

/// The same of all fields.
std::uint64_t digest_of_rows();
std::uint64_t digest_of_vectors();

/// Registers `run`, which handles `items` fields, under "workload/series", once it was `right`.
/// What it returns is kept from being optimised away.
template <typename Run>
void series(const std::string& name, std::size_t items, bool right, Run run) {
  if (!right) {
    std::fprintf(stderr, "%s does not do its work\n", name.c_str());
    std::exit(EXIT_FAILURE);
  }
  benchmark::RegisterBenchmark(name.c_str(), [run, items](benchmark::State& state) mutable {
    for (auto step : state) benchmark::DoNotOptimize(run());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(items));
  });
}

/// Runs what was registered, as the arguments say. The exit status.
inline int run_benchmarks(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
  checking = false;
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}

}  // namespace wqd_bench

#endif  // WQDATA_BENCH_DATA_H_
