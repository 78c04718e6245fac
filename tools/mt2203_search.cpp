// Finds the twist constants of the MT2203 family of Mersenne twisters and
// prints them as a table for backends/reference/vsl/mt2203_params.inc.
//
//   g++ -O2 -std=c++17 -o /tmp/mt2203_search tools/mt2203_search.cpp
//   nice /tmp/mt2203_search 16 > backends/reference/vsl/mt2203_params.inc
//
// Every member is a 32-bit twister x[k+69] = x[k+34] ^ ((x[k]^u | x[k+1]^l) A):
// 27 upper bits of one word and the 5 lower bits of the next, so the state
// has 69 * 32 - 5 = 2203 bits, and 2^2203 - 1 is a Mersenne prime. Only the
// twist constant a (the last row of A, top bit set) differs between members.
// Candidates come from a fixed splitmix64 stream, so a run is reproducible.
//
// Test of a candidate: 2 * 2203 bits of one bit position of the sequence give,
// by Berlekamp-Massey, its minimal polynomial f. f must have degree 2203 and no
// factor of degree 1..32 (gcd(f, x^(2^d) - x) = 1: a cheap sieve that rejects
// most candidates); the survivors are irreducible iff x^(2^2203) = x mod f,
// and since 2^2203 - 1 is prime, irreducible means primitive: the period is
// 2^2203 - 1 for every nonzero state.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace {

constexpr int kP = 2203, kN = 69, kM = 34, kR = 5;
constexpr uint32_t kLower = (1u << kR) - 1, kUpper = ~kLower;
constexpr int kFw = kP / 64 + 1;        // words of a polynomial of degree <= p
constexpr int kSw = (2 * kP) / 64 + 2;  // words of a product before reduction
using Poly = std::vector<uint64_t>;     // bit i: the coefficient of x^i

int deg(const Poly& p) {
  for (size_t i = p.size(); i--;)
    if (p[i]) return static_cast<int>(64 * i) + 63 - __builtin_clzll(p[i]);
  return -1;
}
bool bit(const Poly& p, int i) { return (p[i >> 6] >> (i & 63)) & 1; }
void flip(Poly& p, int i) { p[i >> 6] ^= uint64_t{1} << (i & 63); }
// x += y * t^sh, for the first yw words of y.
void add_shifted(Poly& x, const Poly& y, int yw, int sh) {
  const int w = sh >> 6, s = sh & 63;
  for (int j = 0; j < yw; ++j) {
    if (!y[j]) continue;
    if (j + w < static_cast<int>(x.size())) x[j + w] ^= y[j] << s;
    if (s && j + w + 1 < static_cast<int>(x.size())) x[j + w + 1] ^= y[j] >> (64 - s);
  }
}

// The minimal polynomial of bit 0 of the words of the twister with constant a.
Poly min_poly(uint32_t a) {
  uint32_t w[kN];
  int start = 0;
  auto at = [&](int i) -> uint32_t& { return w[(start + i) % kN]; };
  auto step = [&] {
    uint32_t y = (at(0) & kUpper) | (at(1) & kLower);
    w[start] = at(kM) ^ (y >> 1) ^ (-(y & 1u) & a);
    start = (start + 1) % kN;
  };
  w[0] = 5489u;
  for (int i = 1; i < kN; ++i) w[i] = 1812433253u * (w[i - 1] ^ (w[i - 1] >> 30)) + static_cast<uint32_t>(i);
  for (int i = 0; i < kN; ++i) step();  // from here on the words lie in the recurrence's space
  constexpr int kLen = 2 * kP;
  Poly rev(kLen / 64 + 2, 0);  // rev bit j = s[kLen - 1 - j]
  for (int k = 0; k < kLen; ++k) {
    if (at(0) & 1) flip(rev, kLen - 1 - k);
    step();
  }
  Poly c(kFw + 1, 0), b(kFw + 1, 0);
  c[0] = b[0] = 1;
  int l = 0, m = 1;
  for (int n = 0; n < kLen; ++n) {
    const int off = kLen - 1 - n;
    uint64_t acc = 0;
    for (int j = 0; 64 * j <= l; ++j) {
      const int pos = off + 64 * j, wi = pos >> 6, sh = pos & 63;
      uint64_t v = rev[wi] >> sh;
      if (sh && wi + 1 < static_cast<int>(rev.size())) v |= rev[wi + 1] << (64 - sh);
      acc ^= c[j] & v;
    }
    if (!__builtin_parityll(acc)) {
      ++m;
      continue;
    }
    Poly t = c;
    add_shifted(c, b, kFw + 1, m);
    if (2 * l <= n) {
      l = n + 1 - l, b = t, m = 1;
    } else {
      ++m;
    }
  }
  Poly f(kFw, 0);  // x^l c(1/x)
  if (l > kP) return f;
  for (int i = 0; i <= l; ++i)
    if (bit(c, i)) flip(f, l - i);
  return f;
}

uint64_t spread8[256];
// r = r^2 mod f.
void sqr_mod(Poly& r, const Poly& f) {
  Poly sq(kSw, 0);
  for (int i = 0; i < kFw; ++i) {
    uint64_t lo = 0, hi = 0;
    for (int k = 0; k < 4; ++k) {
      lo |= spread8[(r[i] >> (8 * k)) & 255] << (16 * k);
      hi |= spread8[(r[i] >> (32 + 8 * k)) & 255] << (16 * k);
    }
    sq[2 * i] = lo, sq[2 * i + 1] = hi;
  }
  for (int i = deg(sq); i >= kP; --i)
    if (bit(sq, i)) add_shifted(sq, f, kFw, i - kP);
  sq.resize(kFw);
  r = sq;
}

bool coprime(Poly a, Poly b) {
  int da = deg(a), db = deg(b);
  while (db >= 0) {
    if (da < db) std::swap(a, b), std::swap(da, db);
    add_shifted(a, b, kFw, da - db);
    da = deg(a);
  }
  return da == 0;
}

// Primitive: degree p, no small factor, x^(2^p) = x mod f.
bool primitive(const Poly& f) {
  if (deg(f) != kP || !bit(f, 0)) return false;
  Poly r(kFw, 0), x(kFw, 0);
  flip(x, 1);
  r = x;
  for (int d = 1; d <= 32; ++d) {
    sqr_mod(r, f);
    Poly g = r;
    flip(g, 1);
    if (!coprime(f, g)) return false;
  }
  for (int d = 33; d <= kP; ++d) sqr_mod(r, f);
  return r == x;
}

uint64_t splitmix(uint64_t& s) {
  uint64_t z = (s += 0x9e3779b97f4a7c15ull);
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
  return z ^ (z >> 31);
}

}  // namespace

int main(int argc, char** argv) {
  const int want = argc > 1 ? std::atoi(argv[1]) : 16;
  for (int v = 0; v < 256; ++v)
    for (int k = 0; k < 8; ++k) spread8[v] |= uint64_t((v >> k) & 1) << (2 * k);
  std::printf("// Twist constants of the MT2203 members, written by tools/mt2203_search.cpp:\n");
  std::printf("// n = %d, m = %d, r = %d; each gives a primitive characteristic polynomial\n", kN, kM, kR);
  std::printf("// of degree %d, and no two share one.\n", kP);
  uint64_t seed = 0x2203;
  std::vector<uint32_t> found;
  std::vector<Poly> polys;
  long tried = 0;
  while (static_cast<int>(found.size()) < want) {
    const clock_t t0 = clock();
    long tries = 0;
    for (;;) {
      ++tries;
      const uint32_t a = static_cast<uint32_t>(splitmix(seed) >> 32) | 0x80000000u;
      bool seen = false;
      for (uint32_t b : found) seen |= b == a;
      if (seen) continue;
      Poly f = min_poly(a);
      if (!primitive(f)) continue;
      for (const Poly& g : polys) seen |= g == f;
      if (seen) continue;
      found.push_back(a), polys.push_back(f);
      std::printf("    0x%08xu,  // member %zu: candidate %ld\n", a, found.size() - 1, tried + tries);
      std::fflush(stdout);
      std::fprintf(stderr, "member %zu: a = 0x%08x after %ld candidates, %.1f s CPU\n", found.size() - 1, a, tries,
                   double(clock() - t0) / CLOCKS_PER_SEC);
      break;
    }
    tried += tries;
  }
  return 0;
}
