/// A date and a time as numbers, which is how users of the other libraries pack them.
#ifndef WQDATA_BENCH_PACKED_H_
#define WQDATA_BENCH_PACKED_H_

#include "data.h"

namespace wqd_bench {

inline std::int32_t packed(ZULDATE date) { return static_cast<std::int32_t>(digest(date)); }
inline std::int32_t packed(ZULTIME time) { return static_cast<std::int32_t>(digest(time)); }

}  // namespace wqd_bench

#endif  // WQDATA_BENCH_PACKED_H_
