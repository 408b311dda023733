/// A record of the benchmarks as a flexbuffers map.
#ifndef WQDATA_BENCH_FLEXROW_H_
#define WQDATA_BENCH_FLEXROW_H_

#include <flatbuffers/flexbuffers.h>

#include "peers.h"

namespace wqd_bench {

inline void add_map(flexbuffers::Builder& builder, const Row& row) {
  builder.Map([&] {
    builder.Int("1", row.number);
    builder.Int("2", row.small);
    builder.Double("3", row.real);
    builder.Int("4", row.price);
    builder.Int("5", packed(row.date));
    builder.Int("6", packed(row.time));
    builder.String("7", row.text);
    builder.Int("8", row.error);
  });
}

}  // namespace wqd_bench

#endif  // WQDATA_BENCH_FLEXROW_H_
