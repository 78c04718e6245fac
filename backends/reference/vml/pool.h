// The worker threads of the threaded layers' vector functions: a persistent
// pool that takes chunks of a range from a shared counter. The caller computes
// chunks too, so a worker the system has not scheduled delays a call by at most
// the chunk it holds, never by its wake-up.
#pragma once
#include <cstddef>
#include <cstdint>

namespace qnl_ref {

// Computes chunk [lo, hi) of a job described by `context`.
using ChunkFunction = void (*)(const void* context, int64_t lo, int64_t hi);

// Runs fn over [0, n) in chunks of `chunk` elements (the last one shorter), on
// the calling thread and at most threads - 1 workers, and returns when every
// chunk is done. A call made while the pool serves another (from another thread
// or from inside a chunk) computes its range on the caller alone.
void parallel_chunks(int64_t n, int64_t chunk, int threads, ChunkFunction fn, const void* context);

}  // namespace qnl_ref
