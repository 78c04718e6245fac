// The persistent pool behind the threaded layers' vector functions.
//
// One job at a time. The job's chunks are handed out by one atomic ticket that
// holds the job's generation, its chunk count and the next chunk: a single
// fetch-and-add both claims a chunk and says of which job, so a worker late for
// a job can only draw from the current one, and only while it has chunks left,
// that is while its caller is still waiting (and its description still valid).
// Idle workers spin briefly for the next job, then sleep on a condition
// variable; the caller wakes them only when some sleep.
#include "pool.h"

#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace qnl_ref {
namespace {

constexpr int kCountShift = 16, kGenerationShift = 32;
constexpr uint64_t kField = 0xFFFF;
// Chunks per job: the next-chunk field may pass the count by one draw per
// worker and job without reaching the count's bits.
constexpr int64_t kMaxChunks = 1 << 14;
constexpr int kMaxWorkers = 255;
constexpr int kSpins = 2000;  // about 50 microseconds of waiting before sleeping

inline void relax() { __builtin_ia32_pause(); }

class Pool {
 public:
  void run(int64_t n, int64_t chunk, int threads, ChunkFunction fn, const void* context) {
    if (threads > kMaxWorkers + 1) threads = kMaxWorkers + 1;
    if (n > chunk * kMaxChunks) chunk = (n + kMaxChunks - 1) / kMaxChunks;
    const int64_t chunks = (n + chunk - 1) / chunk;
    if (threads <= 1 || chunks <= 1 || !busy_.try_lock()) return fn(context, 0, n);
    std::lock_guard<std::mutex> held(busy_, std::adopt_lock);
    while (static_cast<int>(workers_.size()) < threads - 1) {
      const int index = static_cast<int>(workers_.size());
      workers_.emplace_back([this, index] { work(index); });
    }
    fn_ = fn;
    context_ = context;
    n_ = n;
    chunk_ = chunk;
    done_.store(0, std::memory_order_relaxed);
    participants_.store(threads - 1, std::memory_order_relaxed);
    const uint64_t generation = (ticket_.load(std::memory_order_relaxed) >> kGenerationShift) + 1;
    ticket_.store(generation << kGenerationShift | static_cast<uint64_t>(chunks) << kCountShift);
    if (sleepers_.load() > 0) {
      std::lock_guard<std::mutex> lock(sleep_lock_);
      wake_.notify_all();
    }
    const int64_t mine = drain();
    for (int spins = 0; done_.load(std::memory_order_acquire) + mine < chunks; ++spins) {
      // The chunks left are in workers' hands: give them the processor if it is short.
      if (spins < kSpins)
        relax();
      else
        sched_yield();
    }
  }

  // Ends the workers (the library is being unloaded or the process ends); not
  // while a job runs, whose workers end with it.
  void stop() {
    const bool idle = busy_.try_lock();
    {
      std::lock_guard<std::mutex> lock(sleep_lock_);
      stop_.store(true);
      wake_.notify_all();
    }
    if (!idle) return;
    for (std::thread& t : workers_) t.join();
    workers_.clear();
    busy_.unlock();
  }

 private:
  // Claims and computes chunks until the job has none left; returns how many.
  int64_t drain() {
    int64_t count = 0;
    for (;;) {
      const uint64_t t = ticket_.fetch_add(1, std::memory_order_acq_rel);
      const int64_t k = static_cast<int64_t>(t & kField), chunks = static_cast<int64_t>(t >> kCountShift & kField);
      if (k >= chunks) return count;
      const int64_t lo = k * chunk_, hi = lo + chunk_ < n_ ? lo + chunk_ : n_;
      fn_(context_, lo, hi);
      ++count;
    }
  }

  void work(int index) {
    uint64_t seen = 0;  // the last generation this worker looked at
    for (;;) {
      uint64_t t = ticket_.load(std::memory_order_acquire);
      for (int spins = 0; (t >> kGenerationShift) == seen && spins < kSpins; ++spins) {
        relax();
        t = ticket_.load(std::memory_order_acquire);
      }
      if ((t >> kGenerationShift) == seen) {
        std::unique_lock<std::mutex> lock(sleep_lock_);
        sleepers_.fetch_add(1);
        while (((t = ticket_.load()) >> kGenerationShift) == seen && !stop_.load()) wake_.wait(lock);
        sleepers_.fetch_sub(1);
      }
      if (stop_.load()) return;
      seen = t >> kGenerationShift;
      if (index >= participants_.load(std::memory_order_relaxed)) continue;
      if (const int64_t count = drain()) done_.fetch_add(count, std::memory_order_release);
    }
  }

  std::mutex busy_;  // held by the caller of the job in progress
  std::mutex sleep_lock_;
  std::condition_variable wake_;
  std::atomic<uint64_t> ticket_{0};
  std::atomic<int64_t> done_{0};  // chunks the workers finished
  std::atomic<int> participants_{0};
  std::atomic<int> sleepers_{0};
  std::atomic<bool> stop_{false};
  ChunkFunction fn_ = nullptr;
  const void* context_ = nullptr;
  int64_t n_ = 0, chunk_ = 0;
  std::vector<std::thread> workers_;
};

std::atomic<Pool*> g_pool{nullptr};

// A forked child has none of the workers: it starts a pool of its own when it
// needs one (the parent's, whose locks may be held, is left alone).
void forget_pool_in_child() { g_pool.store(nullptr); }

Pool* pool() {
  Pool* p = g_pool.load(std::memory_order_acquire);
  if (p) return p;
  static std::once_flag fork_handler;
  std::call_once(fork_handler, [] { pthread_atfork(nullptr, nullptr, forget_pool_in_child); });
  Pool* fresh = new Pool;
  if (g_pool.compare_exchange_strong(p, fresh)) return fresh;
  delete fresh;
  return p;
}

// The workers run this library's code: they end before it is unloaded. The pool
// object itself stays, in case a thread still holds its address.
__attribute__((destructor)) void stop_pool() {
  if (Pool* p = g_pool.exchange(nullptr)) p->stop();
}

}  // namespace

void parallel_chunks(int64_t n, int64_t chunk, int threads, ChunkFunction fn, const void* context) {
  if (n <= 0) return;
  if (threads <= 1 || chunk >= n) return fn(context, 0, n);
  pool()->run(n, chunk, threads, fn, context);
}

}  // namespace qnl_ref
