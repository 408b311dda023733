// Building records of eight fields, and of vectors.
#include "ours.h"
#include "peers.h"
#include "schemapeers.h"

using namespace wqd_bench;

namespace {

template <typename Build>
void register_series(const std::string& workload, std::size_t items, std::uint64_t sum, Build build,
                     void (*pack)(msgpack::sbuffer&), void (*append)(Bson&)) {
  for (const cf_id format : kRecordFormats) {
    const auto made = all_blocks([=](auto use) { build(format, use); });
    series(our_name(workload, format), items, walk(made) == sum, [=] {
      int bytes = 0;
      build(format, [&bytes](wqd::DataBlockPtr block) { bytes += block->GetDataSize(); });
      return bytes;
    });
  }
  static msgpack::sbuffer buffer;
  pack(buffer);
  series(workload + "/msgpack-cxx", items, walk(buffer) == sum, [=] {
    pack(buffer);
    return buffer.size();
  });
  auto& bson = *new Bson;
  append(bson);
  series(workload + "/libbson", items, walk(bson) == sum, [append, &bson] {
    bson.Clear();
    append(bson);
    return bson.size();
  });
}

void register_schemas(const std::string& workload) {
  const std::size_t items = rows().size() * kFieldsOfRow;
  build_messages();
  build_tables();
  series(workload + "/capnproto", items, read_messages() == digest_of_rows(), build_messages);
  series(workload + "/flatbuffers", items, read_tables() == digest_of_rows(), build_tables);
}

}  // namespace

int main(int argc, char** argv) {
  register_series(
      "Build 8-field records", rows().size() * kFieldsOfRow, digest_of_rows(),
      [](cf_id format, auto use) { build_rows(format, use); }, pack_rows, append_rows);
  register_schemas("Build 8-field records");
  register_series(
      "Build vectors of 256", vector_rows().size() * 2, digest_of_vectors(),
      [](cf_id format, auto use) { build_vectors(format, use); }, pack_vectors, append_vectors);
  return run_benchmarks(argc, argv);
}
