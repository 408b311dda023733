// Walking every field of received bytes, vectors, and looking for one field in each record.
#include <utility>

#include "flexrow.h"
#include "ours.h"
#include "peers.h"
#include "schemapeers.h"

using namespace wqd_bench;

namespace {

void register_walk(const std::string& workload, std::size_t items, std::uint64_t sum,
                   Blocks (*make)(cf_id)) {
  for (const cf_id format : kRecordFormats) {
    const Blocks& blocks = received(make, format);
    series(our_name(workload, format), items, walk(blocks) == sum,
           [&blocks] { return walk(blocks); });
  }
}

template <Vectors vectors>
void register_peers(const std::string& workload, std::size_t items, std::uint64_t sum,
                    void (*pack)(msgpack::sbuffer&), void (*append)(Bson&)) {
  auto& buffer = *new msgpack::sbuffer;
  pack(buffer);
  series(workload + "/msgpack-cxx", items, walk<vectors>(buffer) == sum,
         [&buffer] { return walk<vectors>(buffer); });
  auto& bson = *new Bson;
  append(bson);
  series(workload + "/libbson", items, walk<vectors>(bson) == sum,
         [&bson] { return walk<vectors>(bson); });
}

/// A program whose code was made from the schema does not learn from the bytes what fields they
/// hold: a row of its own, which ours have no operation for.
void register_schemas() {
  const std::string known = "Fields known to the code";
  const std::size_t items = rows().size() * kFieldsOfRow;
  const std::uint64_t sum = digest_of_rows();
  build_tables();
  series(known + "/flatbuffers visited", items, visit_tables() == sum, visit_tables);
  series(known + "/flatbuffers read", items, read_tables() == sum, read_tables);
  build_messages();
  series(known + "/capnproto read", items, read_messages() == sum, read_messages);
}

/// An item holds a copy of a vector, and so do the peers; what they take to leave the bytes where
/// they stand is a row of its own.
void register_walks() {
  const std::size_t fields = rows().size() * kFieldsOfRow;
  register_walk("Walk every field", fields, digest_of_rows(), blocks_of_rows);
  register_peers<Vectors::kCopied>("Walk every field", fields, digest_of_rows(), pack_rows,
                                   append_rows);
  build_tagged_tables();
  series("Walk every field/flatbuffers verified", fields, walk_tagged_tables() == digest_of_rows(),
         walk_tagged_tables);
  register_schemas();
  const std::size_t vectors = vector_rows().size() * 2;
  const std::uint64_t sum = digest_of_vectors();
  register_walk("Walk vectors of 256", vectors, sum, blocks_of_vectors);
  register_peers<Vectors::kCopied>("Walk vectors of 256", vectors, sum, pack_vectors,
                                   append_vectors);
  register_peers<Vectors::kInPlace>("Walk vectors, bytes in place", vectors, sum, pack_vectors,
                                    append_vectors);
}

std::uint64_t find(const Blocks& blocks) {
  std::uint64_t sum = 0;
  wqd::CDataItem item;
  for (const wqd::DataBlockPtr& block : blocks) {
    for (bool more = block->FirstRecord(); more; more = block->NextRecord()) {
      if (block->FindField(kPrice) && block->GetCurrentField(&item)) sum += digest(item);
    }
  }
  return sum;
}

std::uint64_t find(const Bson& bson) {
  std::uint64_t sum = 0;
  each_document(bson, [&sum](const bson_t& document) {
    bson_iter_t field;
    if (bson_iter_init_find_w_len(&field, &document, "4", 1))
      sum += digest(bson_iter_int32(&field));
  });
  return sum;
}

/// Maps are found in by their roots, so that each record is a buffer; they lie back to back.
struct FlexRows {
  std::vector<std::uint8_t> bytes;
  std::vector<std::size_t> sizes;
};

FlexRows flex_rows() {
  FlexRows all;
  flexbuffers::Builder builder;
  for (const Row& row : rows()) {
    builder.Clear();
    add_map(builder, row);
    builder.Finish();
    const std::vector<std::uint8_t>& buffer = builder.GetBuffer();
    all.bytes.insert(all.bytes.end(), buffer.begin(), buffer.end());
    all.sizes.push_back(buffer.size());
  }
  return all;
}

/// Received bytes are verified before they are read, as the library's guide asks for.
template <bool verified>
std::uint64_t find(const FlexRows& all) {
  std::uint64_t sum = 0;
  const std::uint8_t* at = all.bytes.data();
  for (const std::size_t size : all.sizes) {
    const std::uint8_t* const buffer = std::exchange(at, at + size);
    if (verified && !flexbuffers::VerifyBuffer(buffer, size)) continue;
    sum += digest(flexbuffers::GetRoot(buffer, size).AsMap()["4"].AsInt32());
  }
  return sum;
}

void register_find() {
  const std::string workload = "Find a field, next record";
  std::uint64_t sum = 0;
  for (const Row& row : rows()) sum += digest(row.price);
  const std::size_t items = rows().size();
  for (const cf_id format : kRecordFormats) {
    const Blocks& blocks = received(blocks_of_rows, format);
    series(our_name(workload, format), items, find(blocks) == sum,
           [&blocks] { return find(blocks); });
  }
  auto& bson = *new Bson;
  append_rows(bson);
  series(workload + "/libbson", items, find(bson) == sum, [&bson] { return find(bson); });
  const auto& flex = *new FlexRows(flex_rows());
  series(workload + "/flexbuffers verified", items, find<true>(flex) == sum,
         [&flex] { return find<true>(flex); });
  series("Find a field, bytes trusted/flexbuffers", items, find<false>(flex) == sum,
         [&flex] { return find<false>(flex); });
}

}  // namespace

int main(int argc, char** argv) {
  register_walks();
  register_find();
  return run_benchmarks(argc, argv);
}
