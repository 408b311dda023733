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

/// True for a validation that is true, and no longer with a byte damaged that it has to look at.
template <typename Valid>
bool tells_damage(std::uint8_t& byte, Valid valid) {
  const bool whole = valid();
  byte ^= 0xFF;
  const bool damaged = !valid();
  byte ^= 0xFF;
  return whole && damaged;
}

bool is_valid(const Bson& bson) {
  bool valid = true;
  each_document(bson, [&valid](const bson_t& document) {
    valid = valid && bson_validate(&document, BSON_VALIDATE_NONE, nullptr);
  });
  return valid;
}

std::vector<std::uint8_t> flex_rows() {
  flexbuffers::Builder builder;
  builder.Vector([&] {
    for (const Row& row : rows()) add_map(builder, row);
  });
  builder.Finish();
  return builder.GetBuffer();
}

/// The items are bytes. What is damaged is the type of a field, or where a table begins.
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
    auto* const data = static_cast<std::uint8_t*>(blocks.back()->GetData());
    series(our_name(workload, format), bytes, tells_damage(data[format == ZUL3 ? 12 : 16], valid),
           valid);
  }
  auto& bson = *new Bson;
  append_rows(bson);
  const auto validBson = [&bson] { return is_valid(bson); };
  series(workload + "/libbson", bson.size(), tells_damage(bson.data()[4], validBson), validBson);
  std::vector<std::uint8_t>& flex = *new std::vector(flex_rows());
  const auto validFlex = [&flex] { return flexbuffers::VerifyBuffer(flex.data(), flex.size()); };
  series(workload + "/flexbuffers", flex.size(), tells_damage(flex.back(), validFlex), validFlex);
  const std::size_t bytes = build_tables();
  series(workload + "/flatbuffers", bytes, tells_damage(start_of_a_table(), are_valid_tables),
         are_valid_tables);
}

}  // namespace

int main(int argc, char** argv) {
  register_transfer();
  register_validation();
  return run_benchmarks(argc, argv);
}
