/// The workloads through the library's public operations, for the benchmarks that share them.
#ifndef WQDATA_BENCH_OURS_H_
#define WQDATA_BENCH_OURS_H_

#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/values/fixptnum.h>

#include "data.h"

namespace wqd_bench {

inline wqd::DataBlockPtr build_rows(cf_id format) {
  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(format));
  for (const Row& row : rows()) {
    block->StartRecord();
    block->Add(kNumber, row.number);
    block->Add(kSmall, row.small);
    block->Add(kReal, row.real);
    block->Add(kPrice, wqd::CFixPtNum(row.price, kBaseCode));
    block->Add(kDate, row.date);
    block->Add(kTime, row.time);
    block->Add(kText, row.text.c_str());
    block->AddError(kError, row.error);
    block->EndRecord();
  }
  return block;
}

inline wqd::DataBlockPtr build_vectors(cf_id format) {
  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(format));
  for (const auto& [numbers, reals] : vector_rows()) {
    block->StartRecord();
    block->AddLongVector(kNumber, numbers.data(), kElements);
    block->AddDoubleVector(kReal, reals.data(), kElements);
    block->EndRecord();
  }
  return block;
}

inline std::uint64_t digest(wqd::CDataItem& item) {
  switch (item.GetType()) {
    case TYPE_LONG:
    case TYPE_INT: return digest(item.GetLong());
    case TYPE_DOUBLE: return digest(item.GetFloat());
    case TYPE_LPACK: return digest(static_cast<std::int32_t>(item.GetFPN()));
    case TYPE_DATE: return digest(static_cast<ZULDATE>(item.GetDate()));
    case TYPE_TIME: return digest(static_cast<ZULTIME>(item.GetTime()));
    case TYPE_STRING: return digest(item.GetString(), static_cast<std::size_t>(item.GetSize()) - 1);
    case TYPE_ERROR: return digest(item.GetError());
    case TYPE_VECTOR_LONG: {
      const auto* const elements = static_cast<const std::int32_t*>(item.GetVectorPtr());
      return digest(elements[0]) + digest(elements[item.GetSize() - 1]);
    }
    case TYPE_VECTOR_DOUBLE: {
      const auto* const elements = static_cast<const double*>(item.GetVectorPtr());
      return digest(elements[0]) + digest(elements[item.GetSize() - 1]);
    }
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

/// A read-only block around the bytes of another one, which must outlive it.
inline wqd::DataBlockPtr wrapped(wqd::CDataBlock& block, cf_id format) {
  return wqd::DataBlockPtr(
      wqd::CDataBlock::NewDataBlock(format, block.GetData(), block.GetDataSize()));
}

inline constexpr cf_id kRecordFormats[] = {ZUL3, ZUL4};

inline std::string our_name(const std::string& workload, cf_id format) {
  return workload + "/wqdata " + CfName(format);
}

}  // namespace wqd_bench

#endif  // WQDATA_BENCH_OURS_H_
