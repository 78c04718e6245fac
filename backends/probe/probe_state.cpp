// Shared state of the probe back-end: call records, chosen results, the verbose
// mode and log, the clock and the scratch allocator.
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <mutex>

#include "probe_backend.h"

using namespace qnl_probe;

namespace {

std::mutex g_mutex;
Call g_calls[kMaxCalls];
int g_count = 0;

struct Result {
  char symbol[64];
  uint64_t bits;
};
Result g_results[256];
int g_result_count = 0;

int32_t g_verbose_mode = 0;
VerboseLine g_lines[256];
int g_line_count = 0;

int g_clock_fixed = 0;
double g_clock_value = 0;

int g_fail_allocations = 0;
int g_allocations = 0;
int g_live = 0;
uint64_t g_last_size = 0;

std::atomic<qnl_probe_hook> g_hook{nullptr};

void copy(char* dst, const char* src, size_t size) {
  std::strncpy(dst, src, size - 1);
  dst[size - 1] = '\0';
}

}  // namespace

QNL_PROBE_API void qnl_probe_record(const char* symbol, const char* library, const uint64_t* words, int n) {
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    Call& c = g_calls[g_count % kMaxCalls];
    ++g_count;
    copy(c.symbol, symbol, sizeof c.symbol);
    copy(c.library, library, sizeof c.library);
    c.nwords = n < kMaxWords ? n : kMaxWords;
    for (int i = 0; i < c.nwords; ++i) c.word[i] = words[i];
  }
  // Outside the lock: the hook may call back into the probe.
  if (qnl_probe_hook hook = g_hook.load()) hook(symbol, words, n);
}

QNL_PROBE_API uint64_t qnl_probe_result_bits(const char* symbol) {
  std::lock_guard<std::mutex> lock(g_mutex);
  for (int i = 0; i < g_result_count; ++i)
    if (std::strcmp(g_results[i].symbol, symbol) == 0) return g_results[i].bits;
  return 0;
}

QNL_PROBE_API void qnl_probe_set_result(const char* symbol, uint64_t bits) {
  std::lock_guard<std::mutex> lock(g_mutex);
  for (int i = 0; i < g_result_count; ++i)
    if (std::strcmp(g_results[i].symbol, symbol) == 0) {
      g_results[i].bits = bits;
      return;
    }
  if (g_result_count < 256) {
    copy(g_results[g_result_count].symbol, symbol, sizeof g_results[0].symbol);
    g_results[g_result_count++].bits = bits;
  }
}

QNL_PROBE_API int qnl_probe_count(void) {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_count;
}

QNL_PROBE_API const Call* qnl_probe_call(int i) {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (i < 0) i += g_count;
  if (i < 0 || i >= g_count || g_count - i > kMaxCalls) return nullptr;
  return &g_calls[i % kMaxCalls];
}

QNL_PROBE_API int qnl_probe_count_of(const char* symbol) {
  std::lock_guard<std::mutex> lock(g_mutex);
  int n = 0;
  int first = g_count > kMaxCalls ? g_count - kMaxCalls : 0;
  for (int i = first; i < g_count; ++i) n += std::strcmp(g_calls[i % kMaxCalls].symbol, symbol) == 0;
  return n;
}

QNL_PROBE_API void qnl_probe_reset(void) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_count = g_line_count = g_allocations = 0;
}

QNL_PROBE_API int32_t* qnl_probe_verbose_mode(void) { return &g_verbose_mode; }

QNL_PROBE_API void qnl_probe_verbose_print(int32_t width, const char* record, double seconds) {
  std::lock_guard<std::mutex> lock(g_mutex);
  VerboseLine& l = g_lines[g_line_count++ % 256];
  l.width = width;
  copy(l.record, record, sizeof l.record);
  l.seconds = seconds;
}

QNL_PROBE_API int qnl_probe_verbose_count(void) {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_line_count;
}

QNL_PROBE_API const VerboseLine* qnl_probe_verbose_line(int i) {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (i < 0) i += g_line_count;
  if (i < 0 || i >= g_line_count) return nullptr;
  return &g_lines[i % 256];
}

std::atomic<int> g_clock_readings{0};

QNL_PROBE_API int qnl_probe_clock_readings(void) { return g_clock_readings.load(); }

QNL_PROBE_API double qnl_probe_clock(void) {
  ++g_clock_readings;
  if (g_clock_fixed) return g_clock_value;
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<double>(ts.tv_sec) + 1e-9 * static_cast<double>(ts.tv_nsec);
}

QNL_PROBE_API void qnl_probe_fix_clock(int fixed, double seconds) {
  g_clock_fixed = fixed;
  g_clock_value = seconds;
}

QNL_PROBE_API void qnl_probe_fail_allocations(int n) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_fail_allocations = n;
}

QNL_PROBE_API void* qnl_probe_allocate(uint64_t size, int32_t alignment) {
  std::lock_guard<std::mutex> lock(g_mutex);
  ++g_allocations;
  g_last_size = size;
  // Sizes no machine could give fail as an allocator would, without asking one.
  if (g_fail_allocations > 0 || size > (uint64_t{1} << 40)) {
    if (g_fail_allocations > 0) --g_fail_allocations;
    return nullptr;
  }
  size_t align = alignment >= static_cast<int32_t>(sizeof(void*)) ? static_cast<size_t>(alignment) : sizeof(void*);
  void* p = nullptr;
  if (posix_memalign(&p, align, size ? size : 1) != 0) return nullptr;
  ++g_live;
  return p;
}

QNL_PROBE_API void qnl_probe_deallocate(void* p) {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (p) --g_live;
  std::free(p);
}

QNL_PROBE_API int qnl_probe_allocations(void) { return g_allocations; }
QNL_PROBE_API int qnl_probe_live_allocations(void) { return g_live; }
QNL_PROBE_API uint64_t qnl_probe_last_allocation_size(void) { return g_last_size; }

QNL_PROBE_API void qnl_probe_set_hook(qnl_probe_hook hook) { g_hook.store(hook); }
