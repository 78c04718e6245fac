// The probe back-end records every call it receives and answers with what a test
// chose. Its state lives in libqnl_probe_state.so, which both the probe libraries
// and the tests link, so a test reads the records without loading a back-end.
#pragma once
#include <cstdint>
#include <cstring>
#include <type_traits>

#define QNL_PROBE_API extern "C" __attribute__((visibility("default")))

namespace qnl_probe {

constexpr int kMaxWords = 48;
constexpr int kMaxCalls = 4096;

struct Call {
  char symbol[64];
  char library[32];  // which probe library took the call
  int nwords;
  uint64_t word[kMaxWords];
};

struct VerboseLine {
  int32_t width;
  char record[200];
  double seconds;
};

inline uint64_t word(int32_t v) { return static_cast<uint32_t>(v); }
inline uint64_t word(int64_t v) { return static_cast<uint64_t>(v); }
inline uint64_t word(uint64_t v) { return v; }
inline uint64_t word(const void* p) { return reinterpret_cast<uintptr_t>(p); }
inline uint64_t word(double v) {
  uint64_t w;
  std::memcpy(&w, &v, sizeof w);
  return w;
}
inline uint64_t word(float v) {
  uint32_t w;
  std::memcpy(&w, &v, sizeof w);
  return w;
}

}  // namespace qnl_probe

// Recording and answers.
QNL_PROBE_API void qnl_probe_record(const char* symbol, const char* library, const uint64_t* words, int n);
QNL_PROBE_API uint64_t qnl_probe_result_bits(const char* symbol);
QNL_PROBE_API void qnl_probe_set_result(const char* symbol, uint64_t bits);
QNL_PROBE_API int qnl_probe_count(void);
QNL_PROBE_API const qnl_probe::Call* qnl_probe_call(int i);  // i < 0 counts from the end
QNL_PROBE_API int qnl_probe_count_of(const char* symbol);
QNL_PROBE_API void qnl_probe_reset(void);
// Verbose: the mode integer the back-end hands out, and the lines it was asked to print.
QNL_PROBE_API int32_t* qnl_probe_verbose_mode(void);
QNL_PROBE_API void qnl_probe_verbose_print(int32_t width, const char* record, double seconds);
QNL_PROBE_API int qnl_probe_verbose_count(void);
QNL_PROBE_API const qnl_probe::VerboseLine* qnl_probe_verbose_line(int i);
// Clock: real monotonic seconds unless a test fixes the reading.
QNL_PROBE_API double qnl_probe_clock(void);
QNL_PROBE_API void qnl_probe_fix_clock(int fixed, double seconds);
QNL_PROBE_API int qnl_probe_clock_readings(void);
// Scratch memory: the next `n` allocations fail; counters of live and total blocks.
QNL_PROBE_API void qnl_probe_fail_allocations(int n);
QNL_PROBE_API void* qnl_probe_allocate(uint64_t size, int32_t alignment);
QNL_PROBE_API void qnl_probe_deallocate(void* p);
QNL_PROBE_API int qnl_probe_allocations(void);
QNL_PROBE_API int qnl_probe_live_allocations(void);
QNL_PROBE_API uint64_t qnl_probe_last_allocation_size(void);
// A test's hook runs inside every recorded call, after the record and before the
// answer: it may read and write through the argument words (outputs of the
// back-end) and choose the answer with qnl_probe_set_result. Null removes it.
using qnl_probe_hook = void (*)(const char* symbol, const uint64_t* words, int n);
QNL_PROBE_API void qnl_probe_set_hook(qnl_probe_hook hook);

#ifndef QNL_PROBE_LIBRARY
#define QNL_PROBE_LIBRARY "probe"
#endif

namespace qnl_probe {

// Appends `v` to the words of a record: its bytes from the low end, zero-padded, so a
// 16-byte value (a double complex) takes two words.
template <class T>
inline void put(uint64_t* words, int& n, const T& v) {
  static_assert(std::is_trivially_copyable_v<T>);
  constexpr int count = (sizeof(T) + 7) / 8;
  uint64_t w[count] = {};
  std::memcpy(w, &v, sizeof v);
  for (int i = 0; i < count; ++i) words[n++] = w[i];
}

// Records a call of `symbol` with every argument's bytes as words (put).
template <class... A>
inline void record_values(const char* symbol, const A&... args) {
  uint64_t words[kMaxWords];
  int n = 0;
  (put(words, n, args), ...);
  qnl_probe_record(symbol, QNL_PROBE_LIBRARY, words, n);
}

// Records the call and answers with the result a test set for the symbol (zero by default).
template <class R>
inline R answer(const char* symbol, const uint64_t* words, int n) {
  qnl_probe_record(symbol, QNL_PROBE_LIBRARY, words, n);
  if constexpr (!std::is_void_v<R>) {
    uint64_t bits = qnl_probe_result_bits(symbol);
    R r;
    if constexpr (std::is_pointer_v<R>)
      r = reinterpret_cast<R>(static_cast<uintptr_t>(bits));
    else
      std::memcpy(&r, &bits, sizeof r);
    return r;
  }
}

}  // namespace qnl_probe
