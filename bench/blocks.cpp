// Transfer from one record format into the other, and validation of received bytes.
#include <algorithm>

#include "flexrow.h"
#include "ours.h"
#include "peers.h"
#include "schemapeers.h"

using namespace wqd_bench;

namespace {

std::size_t size_of(wqd::CDataBlock& block) {
  return static_cast<std::size_t>(block.GetDataSize());
}

/// What a program would write without the transfer: each field into an item, and from there.
wqd::DataBlockPtr transfer_by_hand(wqd::CDataBlock& source) {
  wqd::DataBlockPtr target(wqd::CDataBlock::NewDataBlock(ZUL3));
  wqd::CDataItem item;
  for (bool more = source.FirstRecord(); more; more = source.NextRecord()) {
    target->StartRecord();
    for (bool field = source.FirstField(); field; field = source.NextField()) {
      if (source.GetCurrentField(&item)) target->Add(item);
    }
    target->EndRecord();
  }
  return target;
}

wqd::DataBlockPtr transfer(wqd::CDataBlock& source) {
  wqd::DataBlockPtr target(wqd::CDataBlock::NewDataBlock(ZUL3));
  target->Add(&source);
  return target;
}

void register_transfer() {
  const std::string workload = "Transfer ZUL4 into ZUL3";
  const Blocks& sources = received(blocks_of_rows, ZUL4);
  const auto add = [&](const char* name, wqd::DataBlockPtr (*move)(wqd::CDataBlock&)) {
    std::uint64_t sum = 0;
    for (const wqd::DataBlockPtr& source : sources) sum += walk(*move(*source));
    series(workload + name, rows().size() * kFieldsOfRow, sum == digest_of_rows(),
           [&sources, move] {
             std::size_t bytes = 0;
             for (const wqd::DataBlockPtr& source : sources) bytes += size_of(*move(*source));
             return bytes;
           });
  };
  add("/wqdata", transfer);
  add("/own walk and build", transfer_by_hand);
}

bool is_valid(const Bson& bson) {
  bool valid = true;
  each_document(bson, [&valid](const bson_t& document) {
    valid = valid && bson_validate(&document, BSON_VALIDATE_NONE, nullptr);
  });
  return valid;
}

flexbuffers::Builder& flex_rows() {
  auto& builder = *new flexbuffers::Builder;
  builder.Vector([&] {
    for (const Row& row : rows()) add_map(builder, row);
  });
  builder.Finish();
  return builder;
}

/// The items are bytes.
void register_validation() {
  const std::string workload = "Validate, a byte";
  for (const cf_id format : kRecordFormats) {
    const Blocks& blocks = received(blocks_of_rows, format);
    std::size_t bytes = 0;
    for (const wqd::DataBlockPtr& block : blocks) bytes += size_of(*block);
    const auto valid = [&blocks, format] {
      return std::all_of(blocks.begin(), blocks.end(), [format](const wqd::DataBlockPtr& block) {
        return ValidateData(format, block->GetData(), size_of(*block));
      });
    };
    series(our_name(workload, format), bytes, valid(), valid);
  }
  auto& bson = *new Bson;
  append_rows(bson);
  series(workload + "/libbson", bson.size(), is_valid(bson), [&bson] { return is_valid(bson); });
  const std::vector<std::uint8_t>& flex = flex_rows().GetBuffer();
  const auto verify = [&flex] {
    std::vector<std::uint8_t> reuse;
    return flexbuffers::VerifyBuffer(flex.data(), flex.size(), &reuse);
  };
  series(workload + "/flexbuffers", flex.size(), verify(), verify);
  const std::size_t bytes = build_tables();
  series(workload + "/flatbuffers", bytes, are_valid_tables(), are_valid_tables);
}

}  // namespace

int main(int argc, char** argv) {
  register_transfer();
  register_validation();
  return run_benchmarks(argc, argv);
}
