// Instruction-set extensions the processor has and whose registers the
// operating system saves, asked of CPUID on first use and kept. The compiler's
// __builtin_cpu_supports would link the C runtime's processor model into each
// library with a constructor that runs its CPUID survey at load, on every
// start, whether or not a routine that cares is ever called.
#pragma once

#include <cpuid.h>

#include <atomic>
#include <cstdint>

namespace qnl::cpu {

enum Feature : uint32_t { kSse42 = 1, kAvx = 2, kFma = 4, kAvx2 = 8, kAvx512f = 16, kSurveyed = 1u << 31 };

inline uint32_t survey() {
  unsigned a, b, c, d;
  uint32_t f = kSurveyed;
  if (!__get_cpuid(1, &a, &b, &c, &d)) return f;
  if (c & bit_SSE4_2) f |= kSse42;
  uint64_t xcr0 = 0;
  if (c & bit_OSXSAVE) {
    uint32_t lo, hi;
    __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    xcr0 = (uint64_t{hi} << 32) | lo;
  }
  const bool ymm = (xcr0 & 0x6) == 0x6, zmm = (xcr0 & 0xe6) == 0xe6;
  if (ymm && (c & bit_AVX)) f |= kAvx;
  if (ymm && (c & bit_FMA)) f |= kFma;
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d)) {
    if (ymm && (b & bit_AVX2)) f |= kAvx2;
    if (zmm && (b & bit_AVX512F)) f |= kAvx512f;
  }
  return f;
}

// Threads that race on the first use compute the same answer.
inline bool has(uint32_t features) {
  static std::atomic<uint32_t> known{0};
  uint32_t f = known.load(std::memory_order_relaxed);
  if (!f) known.store(f = survey(), std::memory_order_relaxed);
  return (f & features) == features;
}

}  // namespace qnl::cpu
