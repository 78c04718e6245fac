// The stream record and the table of basic generators shared by the
// generators, the stream calls and the distributions.
#pragma once
#include <cpuid.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "qnl_vsl_defines.h"

#define QNL_VSL_EXPORT extern "C" __attribute__((visibility("default")))
// Bulk loops built for AVX-512, AVX2 and the baseline, chosen at load time.
#define QNL_VSL_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))

namespace qnl_vsl {

// Operations of one family. Uniform fills write [a, b) from the generator's
// own resolution; bits fills write word_size 32-bit words per output.
struct Brng {
  int state_size;  // bytes after the record header
  int nseeds;
  int includes_zero;
  int word_size;
  int nbits;
  int (*init)(int method, void* st, int n, const unsigned* params);
  int (*fill_d)(void* st, int n, double* r, double a, double b);
  int (*fill_s)(void* st, int n, float* r, float a, float b);
  int (*fill_bits)(void* st, int n, unsigned* r);
  int (*skip)(void* st, long long nskip);      // null: not supported
  int (*leap)(void* st, int k, int nstreams);  // null: not supported
  bool saveable;                               // false: holds caller pointers
};

// The record: a 16-byte header followed by the generator's state. The tag at
// offset 4 is 1 in a live stream; the magic tells our records from others.
struct Header {
  int32_t brng;
  uint8_t tag;
  uint8_t pad[3];
  uint32_t magic;
  int32_t size;  // whole record, header included
};
static_assert(offsetof(Header, tag) == 4, "the tag lives at byte 4");
constexpr uint32_t kMagic = 0x4c53564eu;
constexpr int kHeader = 16;

inline void* state_of(void* stream) { return static_cast<char*>(stream) + kHeader; }
inline Header* header_of(void* stream) { return static_cast<Header*>(stream); }

// The family of a live stream of ours, else null.
const Brng* brng_of_stream(const void* stream);

// Family tables, defined beside each generator.
extern const std::array<Brng, VSL_MT2203_FAMILY> kMt2203;  // one entry per member
extern const Brng kMcg31, kR250, kMrg32k3a, kMcg59, kWh, kSobol, kNiederr, kMt19937, kSfmt19937, kArs5, kPhilox;

// Uniform doubles on [0,1) from any stream; returns a status code.
int uniform01(void* stream, int n, double* r);
int uniform_ab(void* stream, int n, double* r, double a, double b);
int bits32(void* stream, int n, unsigned* r);

// Fill a double buffer from integer outputs through a conversion per generator.
template <class T, class Gen>
inline void fill_scaled(T* r, int n, T a, T b, double unit, Gen next) {
  const double w = static_cast<double>(b) - a;
  for (int i = 0; i < n; ++i) r[i] = static_cast<T>(a + w * (unit * next()));
}

// Floats through a double buffer: one path per generator for both types.
template <int (*FillD)(void*, int, double*, double, double)>
int fill_s_via_d(void* st, int n, float* r, float a, float b) {
  double buf[256];
  for (int done = 0; done < n;) {
    int m = n - done < 256 ? n - done : 256;
    int rc = FillD(st, m, buf, a, b);
    if (rc < 0) return rc;
    for (int i = 0; i < m; ++i) r[done + i] = static_cast<float>(buf[i]);
    done += m;
  }
  return 0;
}

// Processor features of cpuid leaf 1, register ecx: 25 AES, 30 RDRAND.
inline bool cpu_ecx1(int bit) {
  unsigned a, b, c, d;
  return __get_cpuid(1, &a, &b, &c, &d) && ((c >> bit) & 1);
}

// The product of two numbers below 2^32, written so that vector code uses one
// 32 x 32 -> 64-bit multiply per lane.
inline uint64_t mul32(uint64_t a, uint64_t b) { return uint64_t{static_cast<uint32_t>(a)} * static_cast<uint32_t>(b); }

// Modular arithmetic helpers for the congruential generators.
inline uint64_t mulmod(uint64_t a, uint64_t b, uint64_t m) {
  return static_cast<uint64_t>(static_cast<unsigned __int128>(a) * b % m);
}
inline uint64_t powmod(uint64_t a, unsigned long long e, uint64_t m) {
  uint64_t r = 1 % m;
  for (; e; e >>= 1, a = mulmod(a, a, m))
    if (e & 1) r = mulmod(r, a, m);
  return r;
}

}  // namespace qnl_vsl
