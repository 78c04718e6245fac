// Congruential and shift-register generators: MCG31m1, MCG59, MRG32k3a,
// Wichmann-Hill and R250.
#include "vsl_internal.h"

namespace qnl_vsl {
namespace {

// ---- multiplicative congruential generators, one or three components ----
// State: the current values and the multipliers (a leapfrogged stream keeps
// a^nstreams).
template <int K>
struct Mcg {
  uint64_t x[K];
  uint64_t a[K];
};

struct McgSpec {
  uint64_t a, m;  // m of 0 stands for 2^64 reduced by mask
  int shift;      // m = 2^shift when a power of two, else 0
};
constexpr McgSpec kMcg31Spec{1132489760u, 2147483647u, 0};
constexpr McgSpec kMcg59Spec{302875106592253ull, 1ull << 59, 59};  // 13^13
constexpr McgSpec kWhSpec[3] = {{171, 30269, 0}, {172, 30307, 0}, {170, 30323, 0}};

inline uint64_t step(uint64_t x, uint64_t a, const McgSpec& s) { return s.shift ? (x * a) & (s.m - 1) : x * a % s.m; }
inline uint64_t seed_value(uint64_t seed, const McgSpec& s) {
  uint64_t x = s.shift ? seed & (s.m - 1) : seed % s.m;
  return x ? x : 1;
}

template <int K>
int mcg_skip_impl(void* p, long long nskip, const McgSpec* spec) {
  auto* st = static_cast<Mcg<K>*>(p);
  if (nskip < 0) return VSL_ERROR_BADARGS;
  for (int i = 0; i < K; ++i) st->x[i] = mulmod(st->x[i], powmod(st->a[i], nskip, spec[i].m), spec[i].m);
  return 0;
}
template <int K>
int mcg_leap_impl(void* p, int k, int nstreams, const McgSpec* spec) {
  auto* st = static_cast<Mcg<K>*>(p);
  if (nstreams < 1 || k < 0 || k >= nstreams) return VSL_ERROR_BADARGS;
  // Output j of a stream is x0 * a^(j+1). Stream k must yield x0 * a^(k+1+j*n):
  // start from x0 * a^(k+1) / a^n and step with a^n. Units mod m form a group
  // of order phi, so the inverse is the power phi - 1.
  for (int i = 0; i < K; ++i) {
    const uint64_t m = spec[i].m, phi = spec[i].shift ? m >> 1 : m - 1;
    const uint64_t an = powmod(st->a[i], nstreams, m);
    st->x[i] = mulmod(mulmod(st->x[i], powmod(st->a[i], k + 1ull, m), m), powmod(an, phi - 1, m), m);
    st->a[i] = an;
  }
  return 0;
}

// MCG31m1: u = x / m, the integer output is x.
int mcg31_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<Mcg<1>*>(p);
  st->x[0] = seed_value(n > 0 ? params[0] : 1, kMcg31Spec);
  st->a[0] = kMcg31Spec.a;
  return 0;
}
int mcg31_d(void* p, int n, double* r, double a, double b) {
  auto* st = static_cast<Mcg<1>*>(p);
  uint64_t x = st->x[0];
  const uint64_t m = st->a[0];
  fill_scaled(r, n, a, b, 1.0 / 2147483647.0, [&] { return static_cast<double>(x = x * m % 2147483647u); });
  st->x[0] = x;
  return 0;
}
int mcg31_bits(void* p, int n, unsigned* r) {
  auto* st = static_cast<Mcg<1>*>(p);
  for (int i = 0; i < n; ++i) r[i] = static_cast<unsigned>(st->x[0] = st->x[0] * st->a[0] % 2147483647u);
  return 0;
}
int mcg31_skip(void* p, long long n) { return mcg_skip_impl<1>(p, n, &kMcg31Spec); }
int mcg31_leap(void* p, int k, int n) { return mcg_leap_impl<1>(p, k, n, &kMcg31Spec); }

// MCG59: u = x / 2^59, the integer output is x as two words, low first.
int mcg59_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<Mcg<1>*>(p);
  uint64_t seed = n > 0 ? params[0] : 1;
  if (n > 1) seed |= static_cast<uint64_t>(params[1]) << 32;
  st->x[0] = seed_value(seed, kMcg59Spec);
  st->a[0] = kMcg59Spec.a;
  return 0;
}
int mcg59_d(void* p, int n, double* r, double a, double b) {
  auto* st = static_cast<Mcg<1>*>(p);
  uint64_t x = st->x[0];
  const uint64_t m = st->a[0];
  constexpr uint64_t mask = (1ull << 59) - 1;
  fill_scaled(r, n, a, b, 0x1p-59, [&] { return static_cast<double>(x = x * m & mask); });
  st->x[0] = x;
  return 0;
}
int mcg59_bits(void* p, int n, unsigned* r) {
  auto* st = static_cast<Mcg<1>*>(p);
  for (int i = 0; i < n; ++i) {
    uint64_t x = st->x[0] = step(st->x[0], st->a[0], kMcg59Spec);
    r[2 * i] = static_cast<unsigned>(x);
    r[2 * i + 1] = static_cast<unsigned>(x >> 32);
  }
  return 0;
}
int mcg59_skip(void* p, long long n) {
  // 2^59 is not prime, but a^n mod 2^59 by squaring is exact all the same.
  return mcg_skip_impl<1>(p, n, &kMcg59Spec);
}
int mcg59_leap(void* p, int k, int n) { return mcg_leap_impl<1>(p, k, n, &kMcg59Spec); }

// Wichmann-Hill: u = frac(x1/m1 + x2/m2 + x3/m3); the integer output is u * 2^32.
int wh_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<Mcg<3>*>(p);
  for (int i = 0; i < 3; ++i) {
    st->x[i] = seed_value(i < n ? params[i] : 1, kWhSpec[i]);
    st->a[i] = kWhSpec[i].a;
  }
  return 0;
}
inline double wh_next(Mcg<3>* st) {
  double u = 0;
  for (int i = 0; i < 3; ++i) {
    st->x[i] = st->x[i] * st->a[i] % kWhSpec[i].m;
    u += static_cast<double>(st->x[i]) / static_cast<double>(kWhSpec[i].m);
  }
  return u - static_cast<int>(u);
}
int wh_d(void* p, int n, double* r, double a, double b) {
  auto* st = static_cast<Mcg<3>*>(p);
  fill_scaled(r, n, a, b, 1.0, [&] { return wh_next(st); });
  return 0;
}
int wh_bits(void* p, int n, unsigned* r) {
  auto* st = static_cast<Mcg<3>*>(p);
  for (int i = 0; i < n; ++i) r[i] = static_cast<unsigned>(wh_next(st) * 0x1p32);
  return 0;
}
int wh_skip(void* p, long long n) { return mcg_skip_impl<3>(p, n, kWhSpec); }
int wh_leap(void* p, int k, int n) { return mcg_leap_impl<3>(p, k, n, kWhSpec); }

// ---- MRG32k3a ----
constexpr int64_t kM1 = 4294967087ll, kM2 = 4294944443ll;
struct Mrg {
  int64_t s[6];  // x[n-3], x[n-2], x[n-1], y[n-3], y[n-2], y[n-1]
};
int mrg_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<Mrg*>(p);
  for (int i = 0; i < 6; ++i) st->s[i] = (i < n ? params[i] : 1) % (i < 3 ? kM1 : kM2);
  if (!st->s[0] && !st->s[1] && !st->s[2]) st->s[0] = 1;
  if (!st->s[3] && !st->s[4] && !st->s[5]) st->s[3] = 1;
  return 0;
}
// x mod (2^32 - C) for x below 2^55, by folding the high word twice: no division.
template <uint64_t C>
inline int64_t fold(uint64_t x) {
  x = (x >> 32) * C + (x & 0xffffffffu);
  x = (x >> 32) * C + (x & 0xffffffffu);
  return static_cast<int64_t>(x >= (1ull << 32) - C ? x - ((1ull << 32) - C) : x);
}
inline int64_t mrg_next(int64_t* s) {
  // The negative terms enter as m - a, keeping the sums positive and below 2^55.
  const int64_t p1 = fold<209>(1403580ull * s[1] + uint64_t(kM1 - 810728) * s[0]);
  const int64_t p2 = fold<22853>(527612ull * s[5] + uint64_t(kM2 - 1370589) * s[3]);
  s[0] = s[1], s[1] = s[2], s[2] = p1;
  s[3] = s[4], s[4] = s[5], s[5] = p2;
  return p1 > p2 ? p1 - p2 : p1 - p2 + kM1;  // in 1..m1
}
int mrg_d(void* p, int n, double* r, double a, double b) {
  int64_t s[6];
  std::memcpy(s, p, sizeof s);
  fill_scaled(r, n, a, b, 1.0 / (kM1 + 1), [&] { return static_cast<double>(mrg_next(s)); });
  std::memcpy(p, s, sizeof s);
  return 0;
}
int mrg_bits(void* p, int n, unsigned* r) {
  auto* st = static_cast<Mrg*>(p);
  for (int i = 0; i < n; ++i) r[i] = static_cast<unsigned>(mrg_next(st->s) - 1);
  return 0;
}
// Skip-ahead: the state vectors times the 3x3 transition matrices raised to nskip.
using Mat3 = uint64_t[3][3];
void mat_mul(const Mat3 a, const Mat3 b, Mat3 out, uint64_t m) {
  Mat3 t;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      uint64_t acc = 0;
      for (int k = 0; k < 3; ++k) acc = (acc + mulmod(a[i][k], b[k][j], m)) % m;
      t[i][j] = acc;
    }
  std::memcpy(out, t, sizeof t);
}
void mat_apply_pow(Mat3 a, unsigned long long e, int64_t* v, uint64_t m) {
  Mat3 r = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  for (; e; e >>= 1, mat_mul(a, a, a, m))
    if (e & 1) mat_mul(r, a, r, m);
  uint64_t out[3];
  for (int i = 0; i < 3; ++i) {
    uint64_t acc = 0;
    for (int k = 0; k < 3; ++k) acc = (acc + mulmod(r[i][k], static_cast<uint64_t>(v[k]), m)) % m;
    out[i] = acc;
  }
  for (int i = 0; i < 3; ++i) v[i] = static_cast<int64_t>(out[i]);
}
int mrg_skip(void* p, long long nskip) {
  if (nskip < 0) return VSL_ERROR_BADARGS;
  auto* st = static_cast<Mrg*>(p);
  Mat3 a1 = {{0, 1, 0}, {0, 0, 1}, {kM1 - 810728, 1403580, 0}};
  Mat3 a2 = {{0, 1, 0}, {0, 0, 1}, {kM2 - 1370589, 0, 527612}};
  mat_apply_pow(a1, nskip, st->s, kM1);
  mat_apply_pow(a2, nskip, st->s + 3, kM2);
  return 0;
}

// ---- R250: x[n] = x[n-103] ^ x[n-250], seeded through MCG31m1 ----
struct R250 {
  uint32_t x[250];
  int32_t pos;
};
int r250_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<R250*>(p);
  uint64_t s = seed_value(n > 0 ? params[0] : 1, kMcg31Spec);
  auto next16 = [&] { return static_cast<uint32_t>((s = s * kMcg31Spec.a % kMcg31Spec.m) >> 15); };
  for (auto& w : st->x) w = next16() << 16 | next16();
  // Make 32 of the words linearly independent, as Kirkpatrick and Stoll do.
  uint32_t msb = 0x80000000u, mask = 0xffffffffu;
  for (int k = 0; k < 32; ++k, msb >>= 1, mask >>= 1) st->x[7 * k + 3] = (st->x[7 * k + 3] & mask) | msb;
  st->pos = 0;
  return 0;
}
inline uint32_t r250_next(R250* st) {
  int i = st->pos, j = i < 103 ? i + 147 : i - 103;  // x[n-250] at i, x[n-103] at j
  uint32_t v = st->x[i] ^= st->x[j];
  st->pos = i == 249 ? 0 : i + 1;
  return v;
}
int r250_d(void* p, int n, double* r, double a, double b) {
  auto* st = static_cast<R250*>(p);
  fill_scaled(r, n, a, b, 0x1p-32, [&] { return static_cast<double>(r250_next(st)); });
  return 0;
}
int r250_bits(void* p, int n, unsigned* r) {
  auto* st = static_cast<R250*>(p);
  for (int i = 0; i < n; ++i) r[i] = r250_next(st);
  return 0;
}

}  // namespace

extern const Brng kMcg31{sizeof(Mcg<1>),        1,          0,          1,          31,  mcg31_init, mcg31_d,
                         fill_s_via_d<mcg31_d>, mcg31_bits, mcg31_skip, mcg31_leap, true};
extern const Brng kMcg59{sizeof(Mcg<1>),        2,          0,          2,          59,  mcg59_init, mcg59_d,
                         fill_s_via_d<mcg59_d>, mcg59_bits, mcg59_skip, mcg59_leap, true};
extern const Brng kWh{sizeof(Mcg<3>), 3, 1, 1, 32, wh_init, wh_d, fill_s_via_d<wh_d>, wh_bits, wh_skip, wh_leap, true};
extern const Brng kMrg32k3a{sizeof(Mrg),         6,        1,        1,       32,  mrg_init, mrg_d,
                            fill_s_via_d<mrg_d>, mrg_bits, mrg_skip, nullptr, true};
extern const Brng kR250{sizeof(R250),         1,         1,       1,       32,  r250_init, r250_d,
                        fill_s_via_d<r250_d>, r250_bits, nullptr, nullptr, true};

}  // namespace qnl_vsl
