// Building records of eight fields, and of vectors.
#include "ours.h"
#include "peers.h"

using namespace wqd_bench;

namespace {

void register_series(const std::string& workload, std::size_t items, std::uint64_t sum,
                     wqd::DataBlockPtr (*build)(cf_id), void (*pack)(msgpack::sbuffer&),
                     void (*append)(Bson&)) {
  for (const cf_id format : kRecordFormats) {
    series(our_name(workload, format), items, walk(*build(format)) == sum,
           [=] { return build(format)->GetDataSize(); });
  }
  static msgpack::sbuffer buffer;
  pack(buffer);
  series(workload + "/msgpack-cxx", items, walk(buffer) == sum, [=] {
    pack(buffer);
    return buffer.size();
  });
  Bson once;
  append(once);
  series(workload + "/libbson", items, walk(once) == sum, [=] {
    Bson bson;
    append(bson);
    return bson.size();
  });
}

}  // namespace

int main(int argc, char** argv) {
  register_series("Build 8-field records", rows().size() * kFieldsOfRow, digest_of_rows(),
                  build_rows, pack_rows, append_rows);
  register_series("Build vectors of 256", vector_rows().size() * 2, digest_of_vectors(),
                  build_vectors, pack_vectors, append_vectors);
  return run_benchmarks(argc, argv);
}
