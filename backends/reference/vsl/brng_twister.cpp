// Mersenne twisters: MT19937 (the sequence of std::mt19937), the MT2203 family
// of independent twisters and SFMT19937.
// Both regenerate their whole state in blocks; the block loops are cloned for
// AVX2 and AVX-512 so that the integer work and the conversion to doubles run
// on the widest registers the processor has.
#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>
#include <vector>

#include "vsl_internal.h"

namespace qnl_vsl {
namespace {

// ---- MT19937 ----
constexpr int kN = 624, kM = 397;

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

struct Twist;
struct Mt {
  static constexpr int kLen = kN;
  static constexpr unsigned long long kNearBlocks = 1 << 15;  // ~10 ms; a far jump costs ~20 ms
  uint32_t mt[kN];
  int32_t idx;
  void regen() { mt_regen(mt); }
  static Twist twist();
  static const std::vector<uint64_t>& poly();
};

inline uint32_t temper(uint32_t y) {
  y ^= y >> 11;
  y ^= (y << 7) & 0x9d2c5680u;
  y ^= (y << 15) & 0xefc60000u;
  return y ^ (y >> 18);
}

QNL_VSL_CLONES void mt_to_double(const uint32_t* __restrict x, int n, double* __restrict r, double a, double w) {
  for (int i = 0; i < n; ++i) r[i] = a + w * (static_cast<double>(temper(x[i])) * 0x1p-32);
}

// The reference seeding of a twister of len words: one word linearly, several
// words by the initialisation by array.
void seed_twister(uint32_t* mt, int len, int n, const unsigned* params) {
  auto linear = [mt, len](uint32_t s) {
    mt[0] = s;
    for (int i = 1; i < len; ++i) mt[i] = 1812433253u * (mt[i - 1] ^ (mt[i - 1] >> 30)) + static_cast<uint32_t>(i);
  };
  if (n <= 1) {
    linear(n == 1 ? params[0] : 5489u);
    return;
  }
  linear(19650218u);
  int i = 1, j = 0;
  for (int k = len > n ? len : n; k; --k) {
    mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1664525u)) + params[j] + static_cast<uint32_t>(j);
    if (++i >= len) mt[0] = mt[len - 1], i = 1;
    if (++j >= n) j = 0;
  }
  for (int k = len - 1; k; --k) {
    mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1566083941u)) - static_cast<uint32_t>(i);
    if (++i >= len) mt[0] = mt[len - 1], i = 1;
  }
  mt[0] = 0x80000000u;
}

int mt_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<Mt*>(p);
  seed_twister(st->mt, kN, n, params);
  st->idx = kN;
  return 0;
}

// Hands out the state of a twister of Len words block by block:
// fn(block, count, offset in the output); St::regen refills the block.
template <int Len, class St, class Fn>
void mt_blocks(St* st, int n, Fn fn) {
  for (int done = 0; done < n;) {
    if (st->idx >= Len) st->regen(), st->idx = 0;
    int m = Len - st->idx < n - done ? Len - st->idx : n - done;
    fn(st->mt + st->idx, m, done);
    st->idx += m;
    done += m;
  }
}
// Tempered doubles and bits of any twister whose state is St.
template <class St>
int mt_d(void* p, int n, double* r, double a, double b) {
  mt_blocks<St::kLen>(static_cast<St*>(p), n,
                      [&](const uint32_t* x, int m, int off) { mt_to_double(x, m, r + off, a, b - a); });
  return 0;
}
template <class St>
int mt_bits(void* p, int n, unsigned* r) {
  mt_blocks<St::kLen>(static_cast<St*>(p), n, [&](const uint32_t* x, int m, int off) {
    for (int i = 0; i < m; ++i) r[off + i] = temper(x[i]);
  });
  return 0;
}

// ---- skip-ahead of a twister by its characteristic polynomial ----
// The words x[k] of a twister obey a linear recurrence over GF(2) whose
// characteristic polynomial P has degree 32 n - r (r: the bits of the low
// mask). A jump of J words maps the window W of n words to g(T) W with
// g = x^J mod P, T the one-word step (Horner's rule). The window has r bits
// more than the state (the low bits of its first word); their error is killed
// by one more step, so the jump goes to J - 1 and steps.
struct Twist {
  int n, m;
  uint32_t lower, a;
  int deg() const { return 32 * n - __builtin_popcount(lower); }
};
constexpr Twist kTwist19937{kN, kM, 0x7fffffffu, 0x9908b0dfu};

using Poly = std::vector<uint64_t>;  // bit i: the coefficient of x^i
inline bool bit(const Poly& p, size_t i) { return (p[i >> 6] >> (i & 63)) & 1; }
inline void flip(Poly& p, size_t i) { p[i >> 6] ^= uint64_t{1} << (i & 63); }

struct Window {
  Twist t;
  uint32_t w[kN] = {};
  int start = 0;
  uint32_t& at(int i) { return w[start + i < t.n ? start + i : start + i - t.n]; }
  void step() {
    uint32_t y = (at(0) & ~t.lower) | (at(1) & t.lower);
    w[start] = at(t.m) ^ (y >> 1) ^ (-(y & 1u) & t.a);
    start = start + 1 < t.n ? start + 1 : 0;
  }
  void add(const uint32_t* s) {  // word i of the window ^= s[i], in two straight runs
    const int k = t.n - start;
    for (int i = 0; i < k; ++i) w[start + i] ^= s[i];
    for (int i = k; i < t.n; ++i) w[i - k] ^= s[i];
  }
};

// P from 2 deg bits of one bit position of the words, by Berlekamp-Massey.
Poly charpoly(const Twist& tw) {
  const int deg = tw.deg(), len = 2 * deg;
  Window win{tw};
  for (int i = 0; i < tw.n; ++i) win.w[i] = 1812433253u * static_cast<uint32_t>(i) + 5489u;
  for (int i = 0; i < tw.n; ++i) win.step();  // the sequence from here on is in the recurrence's space
  Poly rev((len + 127) / 64 + 2, 0);          // the bits reversed: rev bit j = s[len - 1 - j]
  for (int k = 0; k < len; ++k) {
    if (win.at(0) & 1) flip(rev, static_cast<size_t>(len - 1 - k));
    win.step();
  }
  const size_t words = (deg + 64) / 64 + 2;
  Poly c(words, 0), b(words, 0);
  c[0] = b[0] = 1;
  int l = 0, m = 1;
  for (int n = 0; n < len; ++n) {
    // d = sum over i <= l of c_i s[n - i] = parity of c & (rev shifted by len - 1 - n).
    const size_t off = static_cast<size_t>(len - 1 - n);
    uint64_t acc = 0;
    for (size_t j = 0; j * 64 <= static_cast<size_t>(l); ++j) {
      size_t pos = off + j * 64, wi = pos >> 6, sh = pos & 63;
      uint64_t v = rev[wi] >> sh;
      if (sh && wi + 1 < rev.size()) v |= rev[wi + 1] << (64 - sh);
      acc ^= c[j] & v;
    }
    if (!__builtin_parityll(acc)) {
      ++m;
      continue;
    }
    Poly t = c;
    for (size_t j = 0; j < words; ++j) {  // c += x^m b
      size_t wi = j + m / 64, sh = m % 64;
      if (wi < words) c[wi] ^= b[j] << sh;
      if (sh && wi + 1 < words) c[wi + 1] ^= b[j] >> (64 - sh);
    }
    if (2 * l <= n) {
      l = n + 1 - l, b = t, m = 1;
    } else {
      ++m;
    }
  }
  Poly p(words, 0);  // P(x) = x^l c(1/x)
  for (int i = 0; i <= l; ++i)
    if (bit(c, static_cast<size_t>(i))) flip(p, static_cast<size_t>(l - i));
  return p;
}

// Arithmetic mod P. Squaring spreads the bits apart; the reduction clears the
// bits above the degree 8 at a time with the multiple q(x) P(x) whose bits
// deg..deg+7 are those 8 (q -> those bits is one to one: triangular with a
// unit diagonal), so it touches only lower bits.
struct PolyMod {
  const Poly& p;
  int deg;
  std::vector<Poly> mult;  // by the 8 bits at deg..deg+7
  PolyMod(const Poly& p_, int deg_) : p(p_), deg(deg_), mult(256, Poly(p_.size(), 0)) {
    for (unsigned q = 0; q < 256; ++q) {
      Poly t(p.size(), 0);
      for (int b = 0; b < 8; ++b)
        if ((q >> b) & 1) xor_shifted(t, p, b);
      mult[bits8(t, deg)] = t;
    }
  }
  static unsigned bits8(const Poly& a, size_t pos) {
    const size_t w = pos >> 6, b = pos & 63;
    uint64_t v = a[w] >> b;
    if (b > 56 && w + 1 < a.size()) v |= a[w + 1] << (64 - b);
    return static_cast<unsigned>(v & 255);
  }
  static void xor_shifted(Poly& a, const Poly& m, size_t sh) {  // a += x^sh m, within a's size
    const size_t wo = sh >> 6, b = sh & 63, n = std::min(m.size(), a.size() - wo);
    if (b == 0) {
      for (size_t j = 0; j < n; ++j) a[j + wo] ^= m[j];
      return;
    }
    a[wo] ^= m[0] << b;
    for (size_t j = 1; j < n; ++j) a[j + wo] ^= m[j] << b | m[j - 1] >> (64 - b);
    if (wo + n < a.size()) a[wo + n] ^= m[n - 1] >> (64 - b);
  }
  // r <- r * r mod P, times x when asked.
  void sqr(Poly& r, bool times_x) const {
    static const auto spread = [] {
      std::array<uint16_t, 256> t{};
      for (unsigned v = 0; v < 256; ++v)
        for (int k = 0; k < 8; ++k) t[v] |= static_cast<uint16_t>(((v >> k) & 1) << (2 * k));
      return t;
    }();
    Poly sq(2 * r.size(), 0);
    for (size_t i = 0; i < r.size(); ++i)
      for (int k = 0; k < 8; ++k) sq[2 * i + k / 4] |= uint64_t{spread[(r[i] >> (8 * k)) & 255]} << (16 * (k % 4));
    for (long k = (2 * deg - 2 - deg) / 8; k >= 0; --k)
      if (unsigned c = bits8(sq, static_cast<size_t>(deg + 8 * k)))
        xor_shifted(sq, mult[c], static_cast<size_t>(8 * k));
    sq.resize(r.size());
    if (times_x) {
      for (size_t i = sq.size(); i-- > 1;) sq[i] = sq[i] << 1 | sq[i - 1] >> 63;
      sq[0] <<= 1;
      if (bit(sq, static_cast<size_t>(deg))) xor_shifted(sq, p, 0);
    }
    r.swap(sq);
  }
};

// words <- T^j words for a window of tw.n words and j >= 1.
void twister_jump(const Twist& tw, const Poly& pp, unsigned long long j, uint32_t* words) {
  const int deg = tw.deg();
  const PolyMod mod(pp, deg);
  Poly g(pp.size(), 0);  // g = x^(j - 1) mod P
  g[0] = 1;
  if (j > 1)
    for (int b = 63 - __builtin_clzll(j - 1); b >= 0; --b) mod.sqr(g, ((j - 1) >> b) & 1);
  Window acc{tw}, s{tw};
  std::memcpy(s.w, words, sizeof(uint32_t) * tw.n);
  for (int i = deg - 1; i >= 0; --i) {
    acc.step();
    if (bit(g, static_cast<size_t>(i))) acc.add(s.w);
  }
  acc.step();
  for (int t = 0; t < tw.n; ++t) words[t] = acc.at(t);
}

Twist Mt::twist() { return kTwist19937; }
const Poly& Mt::poly() {
  static const Poly p = charpoly(kTwist19937);
  return p;
}

// Skips nskip outputs of a twister whose state St hands out its block of
// words: near jumps regenerate the block, far ones go by the polynomial.
template <class St>
int twister_skip(void* p, long long nskip) {
  if (nskip < 0) return VSL_ERROR_BADARGS;
  auto* st = static_cast<St*>(p);
  if (st->idx >= St::kLen) st->regen(), st->idx = 0;
  const unsigned long long k = static_cast<unsigned long long>(st->idx) + static_cast<unsigned long long>(nskip);
  unsigned long long blocks = k / St::kLen;
  st->idx = static_cast<int>(k % St::kLen);
  if (blocks < St::kNearBlocks) {
    while (blocks--) st->regen();
    return 0;
  }
  twister_jump(st->twist(), st->poly(), blocks * St::kLen, st->mt);
  return 0;
}

// ---- MT2203: 64 twisters of 69 words that differ only in the twist constant ----
// Each member's characteristic polynomial (degree 69 * 32 - 5 = 2203) is
// primitive and its own; tools/mt2203_search.cpp found the constants. The
// tempering is MT19937's, constants 0x9d2c5680 and 0xefc60000 included.
constexpr int k2203N = 69, k2203M = 34;
constexpr uint32_t k2203Lower = 0x1fu, k2203Upper = ~k2203Lower;
constexpr uint32_t kTwist2203[] = {
#include "mt2203_params.inc"
};
static_assert(sizeof kTwist2203 / sizeof kTwist2203[0] == VSL_MT2203_FAMILY, "one constant per member");
struct Mt2203 {
  static constexpr int kLen = k2203N;
  static constexpr unsigned long long kNearBlocks = 2048;  // ~0.2 ms, as a far jump
  uint32_t mt[k2203N];
  int32_t idx;
  uint32_t a;
  void regen() {
    for (int i = 0; i < k2203N; ++i) {
      const uint32_t y = (mt[i] & k2203Upper) | (mt[i + 1 < k2203N ? i + 1 : 0] & k2203Lower);
      mt[i] = mt[(i + k2203M) % k2203N] ^ (y >> 1) ^ (-(y & 1u) & a);
    }
  }
  Twist twist() const { return {k2203N, k2203M, k2203Lower, a}; }
  // The member's polynomial, found once per member on first use.
  const Poly& poly() const {
    static std::once_flag once[VSL_MT2203_FAMILY];
    static Poly polys[VSL_MT2203_FAMILY];
    int j = 0;
    while (j + 1 < VSL_MT2203_FAMILY && kTwist2203[j] != a) ++j;
    std::call_once(once[j], [j] { polys[j] = charpoly({k2203N, k2203M, k2203Lower, kTwist2203[j]}); });
    return polys[j];
  }
};
template <int Member>
int mt2203_init(int, void* p, int n, const unsigned* params) {
  auto* st = static_cast<Mt2203*>(p);
  seed_twister(st->mt, k2203N, n, params);
  st->idx = k2203N;
  st->a = kTwist2203[Member];
  return 0;
}
template <int... J>
constexpr std::array<Brng, sizeof...(J)> mt2203_table(std::integer_sequence<int, J...>) {
  return {Brng{sizeof(Mt2203), 1, 1, 1, 32, mt2203_init<J>, mt_d<Mt2203>, fill_s_via_d<mt_d<Mt2203>>, mt_bits<Mt2203>,
               twister_skip<Mt2203>, nullptr, true}...};
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
// the byte shifts over the whole 128 bits, the others per 32-bit lane (SSE2, which
// every x86-64 processor has).
inline __m128i sfmt_rec(__m128i a, __m128i b, __m128i c, __m128i d) {
  const __m128i mask = _mm_set_epi32(int(kMsk[3]), int(kMsk[2]), int(kMsk[1]), int(kMsk[0]));
  const __m128i z = _mm_and_si128(_mm_srli_epi32(b, kSr1), mask);
  return _mm_xor_si128(_mm_xor_si128(_mm_xor_si128(a, _mm_slli_si128(a, 1)), _mm_xor_si128(z, _mm_srli_si128(c, 1))),
                       _mm_slli_epi32(d, kSl1));
}
void sfmt_regen(uint32_t* s) {
  auto* w = reinterpret_cast<__m128i*>(s);
  __m128i r1 = _mm_loadu_si128(w + kSN - 2), r2 = _mm_loadu_si128(w + kSN - 1);
  for (int i = 0; i < kSN; ++i) {
    const int j = i < kSN - kPos1 ? i + kPos1 : i + kPos1 - kSN;
    const __m128i r = sfmt_rec(_mm_loadu_si128(w + i), _mm_loadu_si128(w + j), r1, r2);
    _mm_storeu_si128(w + i, r);
    r1 = r2, r2 = r;
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

extern const Brng kMt19937{
    sizeof(Mt), 1, 1, 1, 32, mt_init, mt_d<Mt>, fill_s_via_d<mt_d<Mt>>, mt_bits<Mt>, twister_skip<Mt>, nullptr, true};
extern const std::array<Brng, VSL_MT2203_FAMILY> kMt2203 =
    mt2203_table(std::make_integer_sequence<int, VSL_MT2203_FAMILY>());
extern const Brng kSfmt19937{sizeof(Sfmt),         1,         1,       1,       32,  sfmt_init, sfmt_d,
                             fill_s_via_d<sfmt_d>, sfmt_bits, nullptr, nullptr, true};

}  // namespace qnl_vsl
