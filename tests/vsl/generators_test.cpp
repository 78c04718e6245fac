// Basic generators against independent implementations of the same
// sequences (the C++ library, Random123, Boost, L'Ecuyer's floating-point
// recurrence), and the stream operations as properties over every generator.
#include <Random123/philox.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bitset>
#include <boost/random/niederreiter_base2.hpp>
#include <boost/random/sobol.hpp>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>

#include "counter_oracle.h"
#include "vsl_kernels.h"

// Random123's ARS-5, from a file built with AES enabled; called only where the processor has AES.
std::function<unsigned()> ars5_words(const std::vector<unsigned>& seed);

namespace {

// The first n words of generator brng seeded with `seed`, word by word against next().
template <class Next>
void expect_words(int brng, const std::vector<unsigned>& seed, int n, Next next) {
  Stream s(brng, seed);
  ASSERT_EQ(s.rc, 0);
  auto v = s.bits(n);
  for (int i = 0; i < n; ++i) ASSERT_EQ(v[i], static_cast<unsigned>(next())) << i;
}

TEST(Generators, CongruentialAndTwisterMatchTheStandardLibrary) {
  for (unsigned seed : {1u, 5489u, 0x80000007u}) {
    expect_words(VSL_BRNG_MT19937, {seed}, 5000, std::mt19937(seed));
    expect_words(VSL_BRNG_MCG31, {seed}, 5000,
                 std::linear_congruential_engine<uint32_t, 1132489760u, 0, 2147483647u>(seed));
  }
  // MCG59: two words per number, low first; the seed is a pair of words.
  std::linear_congruential_engine<uint64_t, 302875106592253ull, 0, 1ull << 59> e(0x0123456789abcdefull);
  uint64_t x = 0;
  int half = 0;
  expect_words(VSL_BRNG_MCG59, {0x89abcdefu, 0x1234567u}, 2000, [&] { return (half ^= 1) ? x = e() : x >> 32; });
}

// 400000 numbers in one call (the lane path, state words near the moduli
// included) and then 3001 more (the sequential tail and the state carried on).
TEST(Generators, Mrg32k3aMatchesTheFloatingPointRecurrence) {
  double s1[3] = {12345, 12345, 12345}, s2[3] = {12345, 12345, 12345};
  Stream s(VSL_BRNG_MRG32K3A, {12345, 12345, 12345, 12345, 12345, 12345});
  auto v = s.bits(400000), tail = s.bits(3001);
  v.insert(v.end(), tail.begin(), tail.end());
  const double m1 = 4294967087.0, m2 = 4294944443.0;
  for (size_t i = 0; i < v.size(); ++i) {
    double p1 = 1403580.0 * s1[1] - 810728.0 * s1[0];
    p1 -= static_cast<long>(p1 / m1) * m1;
    if (p1 < 0) p1 += m1;
    s1[0] = s1[1], s1[1] = s1[2], s1[2] = p1;
    double p2 = 527612.0 * s2[2] - 1370589.0 * s2[0];
    p2 -= static_cast<long>(p2 / m2) * m2;
    if (p2 < 0) p2 += m2;
    s2[0] = s2[1], s2[1] = s2[2], s2[2] = p2;
    ASSERT_EQ(v[i] + 1.0, p1 <= p2 ? p1 - p2 + m1 : p1 - p2) << i;
  }
}

// The 1982 published recurrence, seeded one word per component reduced mod m
// (0 becomes 1, a missing word is 1).
TEST(Generators, WichmannHillMatchesThePublishedRecurrence) {
  auto check = [](Stream& s, long x, long y, long z) {
    auto v = s.uniform(3000);
    for (int i = 0; i < 3000; ++i) {
      x = 171 * x % 30269, y = 172 * y % 30307, z = 170 * z % 30323;
      ASSERT_NEAR(v[i], std::fmod(x / 30269.0 + y / 30307.0 + z / 30323.0, 1.0), 1e-15) << i;
    }
  };
  Stream a(VSL_BRNG_WH, {1, 2, 3}), b(VSL_BRNG_WH, {30269, 4000000000u});
  check(a, 1, 2, 3);
  check(b, 1, 4000000000 % 30307, 1);
}

TEST(Generators, R250AndSfmtKeepTheirRecurrences) {
  Stream r(VSL_BRNG_R250, {7});
  auto v = r.bits(3000);
  for (int i = 250; i < 3000; ++i) ASSERT_EQ(v[i], v[i - 103] ^ v[i - 250]) << i;
  // SFMT19937 seeded with 1234: the first words of its authors' reference output.
  Stream f(VSL_BRNG_SFMT19937, {1234});
  auto w = f.bits(4 * 1000);
  EXPECT_EQ(std::vector<unsigned>(w.begin(), w.begin() + 5),
            (std::vector<unsigned>{3440181298u, 1564997079u, 1510669302u, 2930277156u, 1452439940u}));
  // Its recurrence on 128-bit words, lane by lane: word i from words i - 156, i - 34, i - 2, i - 1.
  const unsigned msk[4] = {0xdfffffefu, 0xddfecb7fu, 0xbffaffffu, 0xbffffff6u};
  for (int i = 156; i < 1000; ++i)
    for (int k = 0; k < 4; ++k) {
      auto at = [&](int word, int lane) { return lane < 0 || lane > 3 ? 0u : w[4 * word + lane]; };
      const unsigned a = at(i - 156, k), c = at(i - 2, k);
      ASSERT_EQ(w[4 * i + k], a ^ (a << 8) ^ (at(i - 156, k - 1) >> 24) ^ ((at(i - 34, k) >> 11) & msk[k]) ^ (c >> 8) ^
                                  (at(i - 2, k + 1) << 24) ^ (at(i - 1, k) << 18))
          << i << " " << k;
    }
}

// Random123's own known-answer inputs (zeros, all ones, digits of pi) and counters
// whose low word crosses 2^32 and whose low half crosses 2^64 inside the run.
TEST(Generators, CounterBasedMatchRandom123) {
  const std::vector<unsigned> seeds[] = {{0, 0, 0, 0, 0, 0},
                                         {~0u, ~0u, ~0u, ~0u, ~0u, ~0u},
                                         {0xa4093822, 0x299f31d0, 0x243f6a88, 0x85a308d3, 0x13198a2e, 0x03707344},
                                         {0xdeadbeefu, 0x1234u, 0xffffff80u, 0, 5, 6},
                                         {0xdeadbeefu, 0x1234u, 0xffffff80u, ~0u, 5, 6}};
  for (const auto& seed : seeds)
    expect_words(VSL_BRNG_PHILOX4X32X10, seed, 4 * 300 + 3, counter_words<r123::Philox4x32_R<10>>(seed));
  const std::vector<unsigned> ars = {1, 2, 3, 4, 0xfffffff0u, 0xffffffffu, 0xffffffffu, 7};
  Stream s(VSL_BRNG_ARS5, ars);
  if (__builtin_cpu_supports("aes"))
    expect_words(VSL_BRNG_ARS5, ars, 4 * 300 + 3, ars5_words(ars));
  else
    EXPECT_EQ(s.rc, VSL_RNG_ERROR_ARS5_NOT_SUPPORTED);
}

// Quasi-random sequences against Boost's, which also start after the origin.
TEST(Generators, QuasiRandomMatchBoost) {
  expect_words(VSL_BRNG_SOBOL, {40}, 40 * 3000, boost::random::sobol_engine<uint32_t, 32>(40));
  expect_words(VSL_BRNG_NIEDERR, {40}, 40 * 3000, boost::random::niederreiter_base2_engine<uint32_t, 32>(40));
  for (unsigned dim : {0u, 41u}) EXPECT_EQ(Stream(VSL_BRNG_SOBOL, {dim}).rc, VSL_RNG_ERROR_BAD_PARAM);
}

TEST(Generators, NonDeterministicSource) {
  Stream s(VSL_BRNG_NONDETERM, {VSL_BRNG_RDRAND});
  if (!__builtin_cpu_supports("rdrnd")) {
    EXPECT_EQ(s.rc, VSL_RNG_ERROR_NONDETERM_NOT_SUPPORTED);
    return;
  }
  ASSERT_EQ(s.rc, 0);
  int ones = 0;
  for (unsigned x : s.bits(1000)) ones += __builtin_popcount(x);
  EXPECT_NEAR(ones, 16000, 600);  // 32000 bits: about 7 standard deviations
}

// ---- MT2203: every member's output has a primitive minimal polynomial of degree 2203 ----
constexpr int kP2203 = 2203, kLen2203 = 2 * kP2203;
using Bits = std::bitset<kLen2203 + 64>;  // bit i: the coefficient of x^i

// Berlekamp-Massey over GF(2) on bit 0 of 2 * 2203 words; returns x^l c(1/x).
Bits min_poly_of_bit0(const std::vector<unsigned>& w, int& l) {
  Bits rev, c, b;  // rev bit j = s[kLen2203 - 1 - j]
  for (int k = 0; k < kLen2203; ++k) rev[kLen2203 - 1 - k] = w[k] & 1;
  c[0] = b[0] = 1, l = 0;
  for (int n = 0, m = 1; n < kLen2203; ++n, ++m) {
    if (((rev >> (kLen2203 - 1 - n)) & c).count() % 2 == 0) continue;
    const Bits t = c;
    c ^= b << m;
    if (2 * l <= n) l = n + 1 - l, b = t, m = 0;
  }
  Bits f;
  for (int i = 0; i <= l; ++i) f[l - i] = c[i];
  return f;
}
// x^(2^p) = x mod f: f of prime degree p is irreducible, hence primitive as
// 2^2203 - 1 is prime.
bool frobenius_fixes_x(const Bits& f) {
  Bits r, x;
  r[1] = x[1] = 1;
  for (int k = 0; k < kP2203; ++k) {
    Bits sq;
    for (int i = 0; i < kP2203; ++i) sq[2 * i] = r[i];
    for (int i = 2 * kP2203 - 2; i >= kP2203; --i)
      if (sq[i]) sq ^= f << (i - kP2203);
    r = sq;
  }
  return r == x;
}

// The primitivity check costs a fraction of a second per member: the first and
// the last by default, every member with QNL_MT2203_ALL=1.
TEST(Generators, Mt2203MembersHaveFullPeriodAndDiffer) {
  const bool all = std::getenv("QNL_MT2203_ALL") != nullptr;
  std::vector<std::vector<unsigned>> firsts;
  for (int j = 0; j < VSL_MT2203_FAMILY; ++j) {
    Stream s(VSL_BRNG_MT2203 + j, {7});
    ASSERT_EQ(s.rc, 0) << j;
    int l = 0;
    const auto words = s.bits(kLen2203);
    const Bits f = min_poly_of_bit0(words, l);
    EXPECT_EQ(l, kP2203) << "member " << j;
    if (all || j == 0 || j == VSL_MT2203_FAMILY - 1) {
      EXPECT_TRUE(frobenius_fixes_x(f)) << "member " << j;
    }
    firsts.emplace_back(words.begin(), words.begin() + 8);
    for (int i = 0; i < j; ++i) EXPECT_NE(firsts[i], firsts[j]) << "members " << i << " and " << j;
  }
  void* s = nullptr;
  EXPECT_EQ(__vslNewStreamEx(&s, VSL_BRNG_MT2203 + VSL_MT2203_FAMILY, 0, nullptr), VSL_RNG_ERROR_BAD_BRNG);
}

// ---- stream operations over every generator ----
struct Gen {
  int brng;
  std::vector<unsigned> seed;
  bool skip, leap;
};
const Gen kGens[] = {{VSL_BRNG_MCG31, {42}, true, true},         {VSL_BRNG_R250, {42}, false, false},
                     {VSL_BRNG_MRG32K3A, {42, 7}, true, false},  {VSL_BRNG_MCG59, {42, 1}, true, true},
                     {VSL_BRNG_WH, {42, 43, 44}, true, true},    {VSL_BRNG_SOBOL, {3}, true, true},
                     {VSL_BRNG_NIEDERR, {5}, true, true},        {VSL_BRNG_MT19937, {42}, true, false},
                     {VSL_BRNG_SFMT19937, {42}, false, false},   {VSL_BRNG_PHILOX4X32X10, {42}, true, false},
                     {VSL_BRNG_MT2203 + 5, {42, 9}, true, false}};

void PrintTo(const Gen& g, std::ostream* os) { *os << "family " << (g.brng >> VSL_BRNG_SHIFT); }

class StreamOps : public ::testing::TestWithParam<Gen> {
 protected:
  void* make() {
    void* s = nullptr;
    const auto& seed = GetParam().seed;
    EXPECT_EQ(__vslNewStreamEx(&s, GetParam().brng, static_cast<int>(seed.size()), seed.data()), 0);
    return s;
  }
  static std::vector<double> draw(void* s, int n) {
    std::vector<double> v(n);
    EXPECT_EQ(_vsldRngUniform(0, s, n, v.data(), 0.0, 1.0), 0);
    return v;
  }
};

// Copies, memory and file images continue the stream exactly; skip-ahead equals
// drawing and dropping; leapfrog equals taking every k-th.
TEST_P(StreamOps, CopySaveLoadSkipLeapfrog) {
  void* a = make();
  EXPECT_EQ(static_cast<char*>(a)[4], 1);  // the stream tag the facade checks
  draw(a, 37);                             // mid-block state
  void *copy = nullptr, *fromMem = nullptr, *fromFile = nullptr;
  ASSERT_EQ(__vslCopyStream(&copy, a), 0);
  std::vector<char> mem(__vslGetStreamSize(a));
  ASSERT_EQ(__vslSaveStreamM(a, mem.data()), 0);
  ASSERT_EQ(__vslLoadStreamM(&fromMem, mem.data()), 0);
  const std::string file = ::testing::TempDir() + "vsl_stream_" + std::to_string(GetParam().brng);
  ASSERT_EQ(__vslSaveStreamF(a, file.c_str(), -1), 0);
  ASSERT_EQ(__vslLoadStreamF(&fromFile, (file + "   ").c_str(), static_cast<long long>(file.size()) + 3), 0);
  std::remove(file.c_str());
  EXPECT_EQ(__vslGetStreamStateBrng(fromFile), GetParam().brng);
  const auto ref = draw(a, 3000);
  for (void* other : {copy, fromMem, fromFile}) EXPECT_EQ(draw(other, 3000), ref);
  ASSERT_EQ(__vslCopyStreamState(copy, fromMem), 0);
  EXPECT_EQ(draw(copy, 100), draw(fromMem, 100));

  void *base = make(), *s = make(), *l = make();
  const auto seq = draw(base, 4000);
  auto every = [&](int first, int step) {
    std::vector<double> v;
    for (int i = 0; i < 500; ++i) v.push_back(seq[first + step * i]);
    return v;
  };
  const Gen& g = GetParam();
  EXPECT_EQ(__vslSkipAheadStream(s, 1001), g.skip ? 0 : VSL_RNG_ERROR_SKIPAHEAD_UNSUPPORTED);
  if (g.skip) {
    EXPECT_EQ(draw(s, 500), every(1001, 1));
  }
  EXPECT_EQ(__vslLeapfrogStream(l, 2, 7), g.leap ? 0 : VSL_RNG_ERROR_LEAPFROG_UNSUPPORTED);
  if (g.leap) {
    EXPECT_EQ(draw(l, 500), every(2, 7));
  }
  for (void* p : {a, copy, fromMem, fromFile, base, s, l}) {
    ASSERT_EQ(__vslDeleteStream(&p), 0);
    EXPECT_EQ(p, nullptr);
  }
}
INSTANTIATE_TEST_SUITE_P(All, StreamOps, ::testing::ValuesIn(kGens),
                         [](const auto& info) { return "brng" + std::to_string(info.param.brng); });

// A far jump (by the characteristic polynomial) lands where drawing and
// dropping the same count of numbers does.
TEST(Streams, TwisterFarSkipMatchesDrawing) {
  for (auto [brng, nskip] :
       {std::pair{VSL_BRNG_MT19937, 20500017ll}, {VSL_BRNG_MT2203, 150001ll}, {VSL_BRNG_MT2203 + 63, 3000017ll}}) {
    Stream far(brng, {5}), near(brng, {5});
    far.uniform(100), near.uniform(100);
    ASSERT_EQ(__vslSkipAheadStream(far.s, nskip), 0);
    for (long long left = nskip; left > 0; left -= 1 << 20) near.bits(static_cast<int>(std::min(left, 1ll << 20)));
    EXPECT_EQ(far.bits(2000), near.bits(2000)) << brng;
  }
}

TEST(Streams, BadInputGivesCodes) {
  void* s = nullptr;
  EXPECT_EQ(__vslNewStreamEx(&s, 999 << 20, 0, nullptr), VSL_RNG_ERROR_BAD_BRNG);
  EXPECT_EQ(__vslNewStreamEx(&s, VSL_BRNG_MT19937 + 1, 0, nullptr), VSL_RNG_ERROR_BAD_BRNG);
  EXPECT_EQ(__vslDeleteStream(&s), VSL_ERROR_NULL_PTR);
  alignas(16) char foreign[4096] = {0, 0, 0, 0, 1};  // a tag of 1 but not a stream
  EXPECT_EQ(__vslGetStreamSize(foreign), VSL_RNG_ERROR_BAD_STREAM);
  EXPECT_EQ(_vsldRngGaussian(0, foreign, 1, reinterpret_cast<double*>(foreign + 64), 0, 1), VSL_RNG_ERROR_BAD_STREAM);
  EXPECT_EQ(__vslLoadStreamM(&s, foreign), VSL_RNG_ERROR_BAD_MEM_FORMAT);
  EXPECT_EQ(__vslLoadStreamF(&s, "/nonexistent/dir/stream", -1), VSL_RNG_ERROR_FILE_OPEN);

  Stream mt(VSL_BRNG_MT19937, {1}), mc(VSL_BRNG_MCG31, {1});
  EXPECT_EQ(__vslCopyStreamState(mt.s, mc.s), VSL_RNG_ERROR_BRNGS_INCOMPATIBLE);
  // Any one corrupted byte of a saved image is caught.
  std::vector<char> mem(__vslGetStreamSize(mt.s));
  ASSERT_EQ(__vslSaveStreamM(mt.s, mem.data()), 0);
  for (size_t i = 0; i < mem.size(); i += 97) {
    mem[i] ^= 0x20;
    int rc = __vslLoadStreamM(&s, mem.data());
    EXPECT_TRUE(rc == VSL_RNG_ERROR_BAD_MEM_FORMAT || rc == VSL_RNG_ERROR_UNSUPPORTED_FILE_VER ||
                rc == VSL_RNG_ERROR_BAD_BRNG)
        << i << " " << rc;
    mem[i] ^= 0x20;
  }
  // A truncated file.
  const std::string file = ::testing::TempDir() + "vsl_truncated";
  std::ofstream(file, std::ios::binary).write(mem.data(), static_cast<std::streamsize>(mem.size() / 2));
  EXPECT_EQ(__vslLoadStreamF(&s, file.c_str(), -1), VSL_RNG_ERROR_BAD_FILE_FORMAT);
  std::remove(file.c_str());
  EXPECT_EQ(s, nullptr);
}

// ---- registered generators and abstract streams ----
int user_init(int, void* st, int n, const unsigned* p) { return *static_cast<unsigned*>(st) = n ? p[0] : 1, 0; }
unsigned user_next(void* st) {
  return *static_cast<unsigned*>(st) = *static_cast<unsigned*>(st) * 1664525u + 1013904223u;
}
int user_i(void* st, int n, unsigned* r) {
  for (int i = 0; i < n; ++i) r[i] = user_next(st);
  return 0;
}
template <class T>
int user_real(void* st, int n, T* r, T a, T b) {
  for (int i = 0; i < n; ++i) r[i] = a + (b - a) * static_cast<T>(user_next(st) * 0x1p-32);
  return 0;
}

TEST(Streams, RegisteredGeneratorAndAbstractStreams) {
  const int before = __vslGetNumRegBrngs();
  VSLBRngProperties p{sizeof(unsigned), 1, 1, 1, 32, user_init, user_real<float>, user_real<double>, user_i};
  const int brng = __vslRegisterBrng(&p);
  ASSERT_GT(brng, 0);
  EXPECT_EQ(__vslGetNumRegBrngs(), before + 1);
  Stream s(brng, {9});
  unsigned x = 9;
  for (unsigned v : s.bits(10)) EXPECT_EQ(v, user_next(&x));
  VSLBRngProperties q{};
  ASSERT_EQ(__vslGetBrngProperties(brng, &q), 0);
  EXPECT_EQ(q.dBRng, user_real<double>);
  p.NBits = 33;
  EXPECT_EQ(__vslRegisterBrng(&p), VSL_RNG_ERROR_BAD_NBITS);
  ASSERT_EQ(__vslGetBrngProperties(VSL_BRNG_MT19937, &q), 0);
  EXPECT_EQ(q.NBits, 32);

  // An abstract stream over four numbers, refilled three times, then exhausted.
  static int refills;
  refills = 0;
  const double buf[4] = {0.5, 1.5, 1.0, 1.25};
  auto cb = [](void*, int* n, double*, int* nmin, int* nmax, int* idx) {
    EXPECT_EQ(*n, 4);
    EXPECT_EQ(*nmin, 0);
    EXPECT_EQ(*nmax, 3);
    *idx = 0;
    return ++refills < 3 ? 4 : 0;
  };
  void* a = nullptr;
  ASSERT_EQ(__vsldNewAbstractStream(&a, 4, buf, 0.5, 2.5, reinterpret_cast<const void*>(+cb)), 0);
  std::vector<double> r(12);
  EXPECT_EQ(_vsldRngUniform(0, a, 12, r.data(), 0.0, 8.0), 0);
  for (int i = 0; i < 12; ++i) EXPECT_EQ(r[i], 4 * (buf[i % 4] - 0.5));
  EXPECT_EQ(_vsldRngUniform(0, a, 1, r.data(), 0.0, 1.0), VSL_RNG_ERROR_NO_NUMBERS);
  std::vector<char> mem(__vslGetStreamSize(a));
  EXPECT_EQ(__vslSaveStreamM(a, mem.data()), VSL_RNG_ERROR_BAD_STREAM);
  __vslDeleteStream(&a);
}

}  // namespace
