/// The records of the benchmarks in the libraries that take a schema: a message of capnproto or a
/// table of flatbuffers for each, back to back, since a program does not know how many will come.
/// Buffers are used again.
#ifndef WQDATA_BENCH_SCHEMAPEERS_H_
#define WQDATA_BENCH_SCHEMAPEERS_H_

#include <cstddef>
#include <cstdint>

namespace wqd_bench {

/// Build all records, each kind in a buffer of its own that the functions below look at. They give
/// the number of bytes.
std::size_t build_messages();
std::size_t build_tables();

/// The fields that the program knows, by the code that was made from the schema. Messages are
/// checked as they are read, tables before.
std::uint64_t read_messages();
std::uint64_t read_tables();

/// Every field by the types that go along with that code, in verified tables.
std::uint64_t visit_tables();

/// The records once more, as lists of fields that say their identifier and type: what a program
/// takes that does not know the fields of what it receives.
void build_tagged_tables();

/// Every field of them, in verified tables.
std::uint64_t walk_tagged_tables();

/// Verifies the tables of `build_tables`; and a byte of them that says where the first begins.
bool are_valid_tables();
std::uint8_t& start_of_a_table();

}  // namespace wqd_bench

#endif  // WQDATA_BENCH_SCHEMAPEERS_H_
