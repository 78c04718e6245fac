// Mersenne twisters: MT19937 (the sequence of std::mt19937) and SFMT19937.
// Both regenerate their whole state in blocks; the block loops are cloned for
// AVX2 and AVX-512 so that the integer work and the conversion to doubles run
// on the widest registers the processor has.
#include "vsl_internal.h"

#define QNL_VSL_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))

namespace qnl_vsl {
namespace {

// ---- MT19937 ----
constexpr int kN = 624, kM = 397;
struct Mt {
  uint32_t mt[kN];
  int32_t idx;
};

QNL_VSL_CLONES void mt_regen(uint32_t* __restrict mt) {
  constexpr uint32_t kUpper = 0x80000000u, kLower = 0x7fffffffu, kA = 0x9908b0dfu;
  auto twist = [](uint32_t cur, uint32_t nxt, uint32_t far) {
    uint32_t y = (cur & kUpper) | (nxt & kLower);
    return far ^ (y >> 1) ^ (-(y & 1u) & kA);
  };
  // Three ranges whose reads do not meet their writes, so that each vectorises.
  for (int i = 0; i < kN - kM; ++i) mt[i] = twist(mt[i], mt[i + 1], mt[i + kM]);
  for (int i = kN - kM; i < kN - 1; ++i) mt[i] = twist(mt[i], mt[i + 1], mt[i + kM - kN]);
  mt[kN - 1] = twist(mt[kN - 1], mt[0], mt[kM - 1]);
}

inline uint32_t temper(uint32_t y) {
  y ^= y >> 11;
  y ^= (y << 7) & 0x9d2c5680u;
  y ^= (y << 15) & 0xefc60000u;
  return y ^ (y >> 18);
}

QNL_VSL_CLONES void mt_to_double(const uint32_t* __restrict x, int n, double* __restrict r, double a, double w) {
  for (int i = 0; i < n; ++i) r[i] = a + w * (static_cast<double>(temper(x[i])) * 0x1p-32);
}

int mt_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<Mt*>(p);
  uint32_t* mt = st->mt;
  auto linear = [mt](uint32_t s) {
    mt[0] = s;
    for (int i = 1; i < kN; ++i) mt[i] = 1812433253u * (mt[i - 1] ^ (mt[i - 1] >> 30)) + static_cast<uint32_t>(i);
  };
  if (n <= 1) {
    linear(n == 1 ? params[0] : 5489u);
  } else {  // several seed words: the reference initialisation by array
    linear(19650218u);
    int i = 1, j = 0;
    for (int k = kN > n ? kN : n; k; --k) {
      mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1664525u)) + params[j] + static_cast<uint32_t>(j);
      if (++i >= kN) mt[0] = mt[kN - 1], i = 1;
      if (++j >= n) j = 0;
    }
    for (int k = kN - 1; k; --k) {
      mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1566083941u)) - static_cast<uint32_t>(i);
      if (++i >= kN) mt[0] = mt[kN - 1], i = 1;
    }
    mt[0] = 0x80000000u;
  }
  st->idx = kN;
  return 0;
}

// Hands out the state block by block: fn(block, count, offset in the output).
template <class Fn>
void mt_blocks(Mt* st, int n, Fn fn) {
  for (int done = 0; done < n;) {
    if (st->idx >= kN) mt_regen(st->mt), st->idx = 0;
    int m = kN - st->idx < n - done ? kN - st->idx : n - done;
    fn(st->mt + st->idx, m, done);
    st->idx += m;
    done += m;
  }
}
int mt_d(void* p, int n, double* r, double a, double b) {
  mt_blocks(static_cast<Mt*>(p), n, [&](const uint32_t* x, int m, int off) { mt_to_double(x, m, r + off, a, b - a); });
  return 0;
}
int mt_bits(void* p, int n, unsigned* r) {
  mt_blocks(static_cast<Mt*>(p), n, [&](const uint32_t* x, int m, int off) {
    for (int i = 0; i < m; ++i) r[off + i] = temper(x[i]);
  });
  return 0;
}

// ---- SFMT19937: 156 words of 128 bits ----
constexpr int kSN = 156, kPos1 = 122, kSl1 = 18, kSr1 = 11;
constexpr uint32_t kMsk[4] = {0xdfffffefu, 0xddfecb7fu, 0xbffaffffu, 0xbffffff6u};
constexpr uint32_t kParity[4] = {0x00000001u, 0x00000000u, 0x00000000u, 0x13c9e684u};
struct Sfmt {
  uint32_t s[kSN * 4];
  int32_t idx;
};

// One 128-bit word: a ^ (a << 8 bits) ^ ((b >> 11) & mask) ^ (c >> 8 bits) ^ (d << 18),
// the byte shifts over the whole 128 bits, the others per 32-bit lane.
inline void sfmt_rec(uint32_t* r, const uint32_t* a, const uint32_t* b, const uint32_t* c, const uint32_t* d) {
  uint64_t ah = uint64_t{a[3]} << 32 | a[2], al = uint64_t{a[1]} << 32 | a[0];
  uint64_t xh = ah << 8 | al >> 56, xl = al << 8;
  uint64_t ch = uint64_t{c[3]} << 32 | c[2], cl = uint64_t{c[1]} << 32 | c[0];
  uint64_t yh = ch >> 8, yl = cl >> 8 | ch << 56;
  uint32_t x[4] = {uint32_t(xl), uint32_t(xl >> 32), uint32_t(xh), uint32_t(xh >> 32)};
  uint32_t y[4] = {uint32_t(yl), uint32_t(yl >> 32), uint32_t(yh), uint32_t(yh >> 32)};
  for (int k = 0; k < 4; ++k) r[k] = a[k] ^ x[k] ^ ((b[k] >> kSr1) & kMsk[k]) ^ y[k] ^ (d[k] << kSl1);
}
void sfmt_regen(uint32_t* s) {
  const uint32_t* r1 = s + 4 * (kSN - 2);
  const uint32_t* r2 = s + 4 * (kSN - 1);
  for (int i = 0; i < kSN; ++i) {
    int j = i < kSN - kPos1 ? i + kPos1 : i + kPos1 - kSN;
    sfmt_rec(s + 4 * i, s + 4 * i, s + 4 * j, r1, r2);
    r1 = r2;
    r2 = s + 4 * i;
  }
}
int sfmt_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<Sfmt*>(p);
  uint32_t* s = st->s;
  s[0] = n > 0 ? params[0] : 5489u;
  for (int i = 1; i < kSN * 4; ++i) s[i] = 1812433253u * (s[i - 1] ^ (s[i - 1] >> 30)) + static_cast<uint32_t>(i);
  // Period certification: the parity check of the first 128 bits must be odd.
  uint32_t inner = 0;
  for (int i = 0; i < 4; ++i) inner ^= s[i] & kParity[i];
  for (int i = 16; i > 0; i >>= 1) inner ^= inner >> i;
  if (!(inner & 1)) {
    for (int i = 0; i < 4; ++i)
      if (kParity[i]) {
        s[i] ^= kParity[i] & -kParity[i];
        break;
      }
  }
  st->idx = kSN * 4;
  return 0;
}
template <class Fn>
void sfmt_blocks(Sfmt* st, int n, Fn fn) {
  for (int done = 0; done < n;) {
    if (st->idx >= kSN * 4) sfmt_regen(st->s), st->idx = 0;
    int m = kSN * 4 - st->idx < n - done ? kSN * 4 - st->idx : n - done;
    fn(st->s + st->idx, m, done);
    st->idx += m;
    done += m;
  }
}
QNL_VSL_CLONES void u32_to_double(const uint32_t* __restrict x, int n, double* __restrict r, double a, double w) {
  for (int i = 0; i < n; ++i) r[i] = a + w * (static_cast<double>(x[i]) * 0x1p-32);
}
int sfmt_d(void* p, int n, double* r, double a, double b) {
  sfmt_blocks(static_cast<Sfmt*>(p), n,
              [&](const uint32_t* x, int m, int off) { u32_to_double(x, m, r + off, a, b - a); });
  return 0;
}
int sfmt_bits(void* p, int n, unsigned* r) {
  sfmt_blocks(static_cast<Sfmt*>(p), n,
              [&](const uint32_t* x, int m, int off) { std::memcpy(r + off, x, sizeof(uint32_t) * m); });
  return 0;
}

}  // namespace

extern const Brng kMt19937{sizeof(Mt), 1, 1, 1, 32, mt_init, mt_d, fill_s_via_d<mt_d>, mt_bits, nullptr, nullptr, true};
extern const Brng kSfmt19937{sizeof(Sfmt),         1,         1,       1,       32,  sfmt_init, sfmt_d,
                             fill_s_via_d<sfmt_d>, sfmt_bits, nullptr, nullptr, true};

}  // namespace qnl_vsl
