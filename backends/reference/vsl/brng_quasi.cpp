// Quasi-random sequences in base 2: Sobol (Joe and Kuo's direction numbers,
// new-joe-kuo-6.21201) and Niederreiter (the generator matrices of Bratley,
// Fox and Niederreiter on the irreducible polynomials over GF(2)). Both are
// digital sequences, made the same way from 32 direction numbers per dimension
// in Gray-code order. The output is the flattened sequence of points, point 1
// on (point 0, the origin, is skipped); leapfrog and skip-ahead move in it.
#include <mutex>

#include "vsl_internal.h"

namespace qnl_vsl {
namespace {

constexpr int kDim = VSL_QRNG_MAX_DIMENSION, kBits = 32;
using Directions = uint32_t[kDim][kBits];

// Dimensions 2..40: the primitive polynomial (with both end terms) and m_1..m_s.
struct JoeKuo {
  uint16_t poly;
  uint16_t m[8];
};
constexpr JoeKuo kJoeKuo[kDim - 1] = {
    {3, {1}},
    {7, {1, 3}},
    {11, {1, 3, 1}},
    {13, {1, 1, 1}},
    {19, {1, 1, 3, 3}},
    {25, {1, 3, 5, 13}},
    {37, {1, 1, 5, 5, 17}},
    {41, {1, 1, 5, 5, 5}},
    {47, {1, 1, 7, 11, 19}},
    {55, {1, 1, 5, 1, 1}},
    {59, {1, 1, 1, 3, 11}},
    {61, {1, 3, 5, 5, 31}},
    {67, {1, 3, 3, 9, 7, 49}},
    {91, {1, 1, 1, 15, 21, 21}},
    {97, {1, 3, 1, 13, 27, 49}},
    {103, {1, 1, 1, 15, 7, 5}},
    {109, {1, 3, 1, 15, 13, 25}},
    {115, {1, 1, 5, 5, 19, 61}},
    {131, {1, 3, 7, 11, 23, 15, 103}},
    {137, {1, 3, 7, 13, 13, 15, 69}},
    {143, {1, 1, 3, 13, 7, 35, 63}},
    {145, {1, 3, 5, 9, 1, 25, 53}},
    {157, {1, 3, 1, 13, 9, 35, 107}},
    {167, {1, 3, 1, 5, 27, 61, 31}},
    {171, {1, 1, 5, 11, 19, 41, 61}},
    {185, {1, 3, 5, 3, 3, 13, 69}},
    {191, {1, 1, 7, 13, 1, 19, 1}},
    {193, {1, 3, 7, 5, 13, 19, 59}},
    {203, {1, 1, 3, 9, 25, 29, 41}},
    {211, {1, 3, 5, 13, 23, 1, 55}},
    {213, {1, 3, 7, 3, 13, 59, 17}},
    {229, {1, 3, 1, 3, 5, 53, 69}},
    {239, {1, 1, 5, 5, 23, 33, 13}},
    {241, {1, 1, 7, 7, 1, 61, 123}},
    {247, {1, 1, 7, 9, 13, 61, 49}},
    {253, {1, 3, 3, 5, 3, 55, 33}},
    {285, {1, 3, 1, 15, 31, 13, 49, 245}},
    {299, {1, 3, 5, 15, 31, 59, 63, 97}},
    {301, {1, 3, 1, 11, 11, 11, 77, 249}},
};

inline int degree(uint32_t p) { return 31 - __builtin_clz(p); }

void sobol_directions(Directions v) {
  for (int k = 0; k < kBits; ++k) v[0][k] = 1u << (kBits - 1 - k);
  for (int d = 1; d < kDim; ++d) {
    const JoeKuo& jk = kJoeKuo[d - 1];
    const int s = degree(jk.poly);
    for (int k = 0; k < s && k < kBits; ++k) v[d][k] = uint32_t{jk.m[k]} << (kBits - 1 - k);
    for (int k = s; k < kBits; ++k) {
      uint32_t x = v[d][k - s] ^ (v[d][k - s] >> s);
      for (int i = 1; i < s; ++i)
        if ((jk.poly >> (s - i)) & 1) x ^= v[d][k - i];
      v[d][k] = x;
    }
  }
}

// Polynomials over GF(2) as bit masks, bit i the coefficient of x^i.
uint64_t pmul(uint64_t a, uint64_t b) {
  uint64_t r = 0;
  for (; b; b >>= 1, a <<= 1)
    if (b & 1) r ^= a;
  return r;
}
bool irreducible(uint32_t p) {
  const int d = degree(p);
  for (uint32_t q = 2; degree(q) <= d / 2; ++q) {  // trial division by every lower polynomial
    uint32_t r = p;
    for (int s = degree(r) - degree(q); s >= 0 && r; s = r ? degree(r) - degree(q) : -1) r ^= q << s;
    if (!r) return false;
  }
  return true;
}

void niederreiter_directions(Directions v) {
  constexpr int kMaxV = kBits + 16;
  uint32_t poly = 1;
  for (int d = 0; d < kDim; ++d) {
    do ++poly;
    while (!irreducible(poly));
    const int e = degree(poly);
    uint64_t b = 1;  // b = poly^q for the q-th block of e rows
    int u = 0;
    uint8_t vv[kMaxV + 64] = {};
    uint8_t c[kBits][kBits];  // c[r][j]: row j (output digit), column r (input digit)
    for (int j = 0; j < kBits; ++j) {
      if (u == 0) {
        // New block: b *= poly; v = 0...0 1 1...1 then the linear recurrence of b.
        const int kj = 63 - __builtin_clzll(b);
        b = pmul(b, poly);
        const int m = 63 - __builtin_clzll(b);
        for (int r = 0; r < kj; ++r) vv[r] = 0;
        vv[kj] = 1;
        for (int r = kj + 1; r < m; ++r) vv[r] = 1;
        for (int r = 0; r + m < kMaxV; ++r) {
          uint8_t t = 0;
          for (int k = 0; k < m; ++k) t ^= ((b >> k) & 1) & vv[r + k];
          vv[r + m] = t;
        }
      }
      for (int r = 0; r < kBits; ++r) c[r][j] = vv[r + u];
      if (++u == e) u = 0;
    }
    for (int r = 0; r < kBits; ++r) {
      uint32_t t = 0;
      for (int j = 0; j < kBits; ++j) t = t << 1 | c[r][j];
      v[d][r] = t;
    }
  }
}

const Directions& directions(bool sobol) {
  static Directions s, n;
  static std::once_flag once;
  std::call_once(once, [] { sobol_directions(s), niederreiter_directions(n); });
  return sobol ? s : n;
}

struct Quasi {
  int32_t sobol;
  int32_t dim;
  int64_t next;    // index of the next element of the flattened sequence
  int64_t stride;  // leapfrog step in elements
  int64_t point;   // index of the point held in x (0: none yet)
  uint32_t x[kDim];
};

// Point i (i >= 1) directly: the xor of the direction numbers at the set bits of gray(i).
void point_at(Quasi* st, int64_t i) {
  const Directions& v = directions(st->sobol);
  uint64_t g = static_cast<uint64_t>(i) ^ (static_cast<uint64_t>(i) >> 1);
  for (int d = 0; d < st->dim; ++d) {
    uint32_t x = 0;
    for (int k = 0; k < kBits; ++k)
      if ((g >> k) & 1) x ^= v[d][k];
    st->x[d] = x;
  }
  st->point = i;
}

int quasi_next(Quasi* st, uint32_t* out) {
  const int64_t p = st->next / st->dim + 1, c = st->next % st->dim;
  if (p >= (int64_t{1} << kBits)) return VSL_RNG_ERROR_QRNG_PERIOD_ELAPSED;
  if (p == st->point + 1 && st->point > 0) {                  // Gray-code step: one xor per coordinate
    const int k = __builtin_ctzll(static_cast<uint64_t>(p));  // gray(p) ^ gray(p - 1)
    const Directions& v = directions(st->sobol);
    for (int d = 0; d < st->dim; ++d) st->x[d] ^= v[d][k];
    st->point = p;
  } else if (p != st->point) {
    point_at(st, p);
  }
  *out = st->x[c];
  st->next += st->stride;
  return 0;
}

int quasi_init(void* p, bool sobol, int n, const unsigned* params) {
  auto* st = static_cast<Quasi*>(p);
  const unsigned dim = n > 0 ? params[0] : 1;
  if (dim < 1 || dim > kDim) return VSL_RNG_ERROR_BAD_PARAM;
  std::memset(st, 0, sizeof *st);
  st->sobol = sobol;
  st->dim = static_cast<int>(dim);
  st->stride = 1;
  directions(sobol);
  return 0;
}
int sobol_init(int, void* p, int n, const unsigned* params) { return quasi_init(p, true, n, params); }
int nied_init(int, void* p, int n, const unsigned* params) { return quasi_init(p, false, n, params); }

int quasi_bits(void* p, int n, unsigned* r) {
  for (int i = 0; i < n; ++i)
    if (int rc = quasi_next(static_cast<Quasi*>(p), r + i)) return rc;
  return 0;
}
int quasi_d(void* p, int n, double* r, double a, double b) {
  uint32_t x;
  for (int i = 0; i < n; ++i) {
    if (int rc = quasi_next(static_cast<Quasi*>(p), &x)) return rc;
    r[i] = a + (b - a) * (x * 0x1p-32);
  }
  return 0;
}
int quasi_skip(void* p, long long nskip) {
  if (nskip < 0) return VSL_ERROR_BADARGS;
  static_cast<Quasi*>(p)->next += nskip * static_cast<Quasi*>(p)->stride;
  return 0;
}
// Leapfrog with nstreams equal to the dimension yields one coordinate of the points.
int quasi_leap(void* p, int k, int nstreams) {
  auto* st = static_cast<Quasi*>(p);
  if (nstreams < 1 || k < 0 || k >= nstreams) return VSL_ERROR_BADARGS;
  st->next += k * st->stride;
  st->stride *= nstreams;
  return 0;
}

}  // namespace

extern const Brng kSobol{sizeof(Quasi),         1,          1,          1,          32,  sobol_init, quasi_d,
                         fill_s_via_d<quasi_d>, quasi_bits, quasi_skip, quasi_leap, true};
extern const Brng kNiederr{sizeof(Quasi),         1,          1,          1,          32,  nied_init, quasi_d,
                           fill_s_via_d<quasi_d>, quasi_bits, quasi_skip, quasi_leap, true};

}  // namespace qnl_vsl
