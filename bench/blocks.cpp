// Transfer from one record format into the other, and validation of received bytes.
#include "flexrow.h"
#include "ours.h"
#include "peers.h"

using namespace wqd_bench;

namespace {

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
  wqd::CDataBlock& built = *build_rows(ZUL4).release();
  wqd::CDataBlock& source = *wrapped(built, ZUL4).release();
  const std::size_t items = rows().size() * kFieldsOfRow;
  series(workload + "/wqdata", items, walk(*transfer(source)) == digest_of_rows(),
         [&source] { return transfer(source)->GetDataSize(); });
  series(workload + "/own walk and build", items,
         walk(*transfer_by_hand(source)) == digest_of_rows(),
         [&source] { return transfer_by_hand(source)->GetDataSize(); });
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
    wqd::CDataBlock& block = *build_rows(format).release();
    const void* const data = block.GetData();
    const auto size = static_cast<std::size_t>(block.GetDataSize());
    series(our_name(workload, format), size, ValidateData(format, data, size),
           [=] { return ValidateData(format, data, size); });
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
}

}  // namespace

int main(int argc, char** argv) {
  register_transfer();
  register_validation();
  return run_benchmarks(argc, argv);
}
