/// The workloads through the library's public operations, for the benchmarks that share them.
#ifndef WQDATA_BENCH_OURS_H_
#define WQDATA_BENCH_OURS_H_

#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/values/fixptnum.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "data.h"

namespace wqd_bench {

/// The records of a block. A block holds 65535 of them; a program that has more uses one block
/// after the other.
template <typename Row>
constexpr std::size_t kRecordsOfBlock = 50000;
template <>
inline constexpr std::size_t kRecordsOfBlock<VectorRow> = 1000;

/// Makes blocks of a record for each of `all`, with the fields that `add` adds, and gives each to
/// `use`.
template <typename Row, typename Add, typename Use>
void build(cf_id format, const std::vector<Row>& all, Add add, Use use) {
  for (std::size_t begin = 0; begin < all.size(); begin += kRecordsOfBlock<Row>) {
    wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(format));
    const std::size_t end = std::min(begin + kRecordsOfBlock<Row>, all.size());
    for (std::size_t i = begin; i < end; ++i) {
      block->StartRecord();
      add(*block, all[i]);
      block->EndRecord();
    }
    use(std::move(block));
  }
}

/// With WQDATA_BENCH_KINDS=2 in the environment every other record, at random, begins with its last
/// field: what is gained by records that begin alike is then lost.
inline bool begins_with_error(const Row& row) {
  static const bool kinds = std::getenv("WQDATA_BENCH_KINDS") != nullptr;
  return kinds && row.error % 2 != 0;
}

template <typename Use>
void build_rows(cf_id format, Use use) {
  const auto add = [](wqd::CDataBlock& block, const Row& row) {
    const bool otherKind = begins_with_error(row);
    if (otherKind) block.AddError(kError, row.error);
    block.Add(kNumber, row.number);
    block.Add(kSmall, row.small);
    block.Add(kReal, row.real);
    block.Add(kPrice, wqd::CFixPtNum(row.price, kBaseCode));
    block.Add(kDate, row.date);
    block.Add(kTime, row.time);
    block.Add(kText, row.text.c_str());
    if (!otherKind) block.AddError(kError, row.error);
  };
  build(format, rows(), add, use);
}

template <typename Use>
void build_vectors(cf_id format, Use use) {
  const auto add = [](wqd::CDataBlock& block, const VectorRow& row) {
    block.AddLongVector(kNumber, row.numbers.data(), kElements);
    block.AddDoubleVector(kReal, row.reals.data(), kElements);
  };
  build(format, vector_rows(), add, use);
}

using Blocks = std::vector<wqd::DataBlockPtr>;

/// All blocks of a `Build`, which is one of the two above.
template <typename Build>
Blocks all_blocks(Build build) {
  Blocks blocks;
  build([&blocks](wqd::DataBlockPtr block) { blocks.push_back(std::move(block)); });
  return blocks;
}

inline Blocks blocks_of_rows(cf_id format) {
  return all_blocks([format](auto use) { build_rows(format, use); });
}

inline Blocks blocks_of_vectors(cf_id format) {
  return all_blocks([format](auto use) { build_vectors(format, use); });
}

template <typename Element>
std::uint64_t digest_of_vector(wqd::CDataItem& item) {
  const auto count = static_cast<std::size_t>(item.GetSize());
  return digest_of_vector<Element>(item.GetVectorPtr(), count * sizeof(Element));
}

inline std::uint64_t digest(wqd::CDataItem& item) {
  switch (item.GetType()) {
    case TYPE_LONG:
    case TYPE_INT: return digest(item.GetLong());
    case TYPE_DOUBLE: return digest(item.GetFloat());
    case TYPE_LPACK: return digest(static_cast<std::int32_t>(item.GetFPN()));
    case TYPE_DATE: return digest(static_cast<ZULDATE>(item.GetDate()));
    case TYPE_TIME: return digest(static_cast<std::int32_t>(item.GetTime()));  // of seconds
    case TYPE_STRING: return digest(item.GetString(), static_cast<std::size_t>(item.GetSize()) - 1);
    case TYPE_ERROR: return digest(item.GetError());
    case TYPE_VECTOR_LONG: return digest_of_vector<std::int32_t>(item);
    case TYPE_VECTOR_DOUBLE: return digest_of_vector<double>(item);
    default: return 0;
  }
}

/// Every field into an item, and its value out of it.
inline std::uint64_t walk(wqd::CDataBlock& block) {
  std::uint64_t sum = 0;
  wqd::CDataItem item;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    for (bool field = block.FirstField(); field; field = block.NextField()) {
      if (block.GetCurrentField(&item)) sum += digest(item);
    }
  }
  return sum;
}

inline std::uint64_t walk(const Blocks& blocks) {
  std::uint64_t sum = 0;
  for (const wqd::DataBlockPtr& block : blocks) sum += walk(*block);
  return sum;
}

/// Read-only blocks around the bytes of others, which must outlive them.
inline Blocks wrapped(const Blocks& blocks, cf_id format) {
  Blocks all;
  for (const wqd::DataBlockPtr& block : blocks) {
    all.emplace_back(wqd::CDataBlock::NewDataBlock(format, block->GetData(), block->GetDataSize()));
  }
  return all;
}

/// Blocks that last as long as the program, wrapped around bytes that do.
inline const Blocks& received(Blocks (*make)(cf_id), cf_id format) {
  const Blocks& built = *new Blocks(make(format));
  return *new Blocks(wrapped(built, format));
}

inline constexpr cf_id kRecordFormats[] = {ZUL3, ZUL4};

inline std::string our_name(const std::string& workload, cf_id format) {
  return workload + "/wqdata " + CfName(format);
}

}  // namespace wqd_bench

#endif  // WQDATA_BENCH_OURS_H_
