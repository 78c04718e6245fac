// A probe core or cluster core: one symbol that records its calls, so tests can
// see which side library a resolver loaded and in what order.
#include "probe_backend.h"

QNL_PROBE_API int QNL_PROBE_SIDE_SYMBOL(int32_t v) {
  const uint64_t w[] = {qnl_probe::word(v)};
  return qnl_probe::answer<int>(QNL_PROBE_SIDE_NAME, w, 1);
}
