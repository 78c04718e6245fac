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
// x mod (2^32 - C) for any 64-bit x, by folding the high word twice: no division.
template <uint64_t C>
inline uint64_t fold(uint64_t x) {
  x = mul32(x >> 32, C) + (x & 0xffffffffu);
  x = mul32(x >> 32, C) + (x & 0xffffffffu);
  return x >= (1ull << 32) - C ? x - ((1ull << 32) - C) : x;
}
// One step of both components on states below the moduli; returns the output
// in 1..m1. The negative terms enter as a * (m - x), so that both products
// stay below 2^53 and their sum cannot wrap.
inline uint64_t mrg_step(uint64_t& x0, uint64_t& x1, uint64_t& x2, uint64_t& y0, uint64_t& y1, uint64_t& y2) {
  const uint64_t p1 = fold<209>(mul32(1403580u, x1) + mul32(810728u, kM1 - x0));
  const uint64_t p2 = fold<22853>(mul32(527612u, y2) + mul32(1370589u, kM2 - y0));
  x0 = x1, x1 = x2, x2 = p1;
  y0 = y1, y1 = y2, y2 = p2;
  return p1 > p2 ? p1 - p2 : p1 - p2 + kM1;
}

// Bulk output runs in kMrgLanes lanes of L consecutive numbers each, lane j
// starting from the state advanced by j * L (the transition matrices to the
// power L), so that the lanes together give exactly the sequential numbers.
// L is a power of two and its matrices come from a table of squarings.
constexpr int kMrgLanes = 16, kMrgMinLog = 4, kMrgMaxLog = 12, kMrgSub = 64;
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
struct MrgPowers {
  Mat3 a[2][kMrgMaxLog + 1];  // component, log2 of the power
  MrgPowers() {
    const Mat3 a1 = {{0, 1, 0}, {0, 0, 1}, {kM1 - 810728, 1403580, 0}};
    const Mat3 a2 = {{0, 1, 0}, {0, 0, 1}, {kM2 - 1370589, 0, 527612}};
    std::memcpy(a[0][0], a1, sizeof a1);
    std::memcpy(a[1][0], a2, sizeof a2);
    for (int k = 1; k <= kMrgMaxLog; ++k) {
      mat_mul(a[0][k - 1], a[0][k - 1], a[0][k], kM1);
      mat_mul(a[1][k - 1], a[1][k - 1], a[1][k], kM2);
    }
  }
};
const MrgPowers kMrgPowers;

template <uint64_t C>
void mat_vec(const Mat3 a, const uint64_t* v, uint64_t* out) {
  for (int i = 0; i < 3; ++i)
    out[i] = fold<C>(fold<C>(mul32(a[i][0], v[0])) + fold<C>(mul32(a[i][1], v[1])) + fold<C>(mul32(a[i][2], v[2])));
}

// Up to kMrgSub steps of every lane; z[i * kMrgLanes + j] is lane j's output of step i.
QNL_VSL_CLONES void mrg_lane_steps(uint64_t (*__restrict v)[kMrgLanes], int steps, uint64_t* __restrict z) {
  for (int i = 0; i < steps; ++i)
    for (int j = 0; j < kMrgLanes; ++j)
      z[i * kMrgLanes + j] = mrg_step(v[0][j], v[1][j], v[2][j], v[3][j], v[4][j], v[5][j]);
}

// Writes n numbers: put(z, count, stride, offset) stores z[0], z[stride], ...
// at the outputs offset, offset + 1, ...
template <class Put>
void mrg_fill(Mrg* st, int n, Put put) {
  uint64_t s[6];
  for (int i = 0; i < 6; ++i) s[i] = static_cast<uint64_t>(st->s[i]);
  int done = 0;
  for (int lg = kMrgMaxLog; lg >= kMrgMinLog; --lg) {
    const int len = 1 << lg;
    while (n - done >= kMrgLanes * len) {
      alignas(64) uint64_t v[6][kMrgLanes], z[kMrgSub * kMrgLanes];
      uint64_t cur[6];
      std::memcpy(cur, s, sizeof cur);
      for (int j = 0; j < kMrgLanes; ++j) {
        for (int k = 0; k < 6; ++k) v[k][j] = cur[k];
        mat_vec<209>(kMrgPowers.a[0][lg], cur, s);  // s: the start of lane j + 1
        mat_vec<22853>(kMrgPowers.a[1][lg], cur + 3, s + 3);
        std::memcpy(cur, s, sizeof cur);
      }
      for (int i = 0; i < len; i += kMrgSub) {
        const int steps = len < kMrgSub ? len : kMrgSub;
        mrg_lane_steps(v, steps, z);
        for (int j = 0; j < kMrgLanes; ++j) put(z + j, steps, kMrgLanes, done + j * len + i);
      }
      done += kMrgLanes * len;  // s is now the state after the last lane
    }
  }
  while (done < n) {  // the rest one by one, handed over in blocks
    uint64_t z[kMrgSub];
    const int m = n - done < kMrgSub ? n - done : kMrgSub;
    for (int i = 0; i < m; ++i) z[i] = mrg_step(s[0], s[1], s[2], s[3], s[4], s[5]);
    put(z, m, 1, done);
    done += m;
  }
  for (int i = 0; i < 6; ++i) st->s[i] = static_cast<int64_t>(s[i]);
}

QNL_VSL_CLONES void mrg_to_double(const uint64_t* __restrict z, int m, int stride, double* __restrict r, double a,
                                  double w) {
  // z < 2^52 exactly as the low bits of 2^52's mantissa: no 64-bit integer conversion needed.
  for (int i = 0; i < m; ++i) {
    const double x = __builtin_bit_cast(double, z[i * stride] | 0x4330000000000000ull) - 0x1p52;
    r[i] = a + w * (1.0 / (kM1 + 1) * x);
  }
}
int mrg_d(void* p, int n, double* r, double a, double b) {
  mrg_fill(static_cast<Mrg*>(p), n,
           [&](const uint64_t* z, int m, int stride, int off) { mrg_to_double(z, m, stride, r + off, a, b - a); });
  return 0;
}
int mrg_bits(void* p, int n, unsigned* r) {
  mrg_fill(static_cast<Mrg*>(p), n, [&](const uint64_t* z, int m, int stride, int off) {
    for (int i = 0; i < m; ++i) r[off + i] = static_cast<unsigned>(z[i * stride] - 1);
  });
  return 0;
}
// Skip-ahead: the state vectors times the 3x3 transition matrices raised to nskip.
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
  Mat3 a1, a2;
  std::memcpy(a1, kMrgPowers.a[0][0], sizeof a1);
  std::memcpy(a2, kMrgPowers.a[1][0], sizeof a2);
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
