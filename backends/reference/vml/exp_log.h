// Vectorised double exp and log on the vector type of the build, written with
// GCC's vector extensions so that one source serves every instruction set. Each
// kernel takes a vector of arguments and returns its results, and marks by a
// negative lane of `left` the lanes it leaves out (arguments whose results leave
// the normal range, zeros, negatives, infinities, NaN) for a scalar fallback.
// The marks are integer arithmetic on the argument's bits: no comparison, and
// the caller tests them all at once by their sign bits.
//
// exp: n = round(x / ln2), r = x - n ln2 with ln2 in two parts (n ln2_hi is
// exact, and so is x - n ln2_hi), exp(r) by its Taylor series on
// |r| <= ln2 / 2, then scaled by 2^n through the exponent bits.
// log: x = 2^e m with m in [sqrt(2)/2, sqrt(2)), f = m - 1, s = f / (2 + f),
// log(m) = 2 atanh(s) = f - f^2/2 + s (f^2/2 + R(s^2)), R from the series of atanh.
//
// The accuracy picks the work: HA carries the rounding error of the reduced
// argument and of the leading sum into the last addition (about half an ulp),
// LA drops those corrections, EP shortens the series to about 30 bits.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "isa.h"

namespace qnl_vml {
namespace explog {

using D = G<double>;
using I = Mask<double>;  // 64-bit integer lanes
typedef uint64_t U __attribute__((vector_size(sizeof(D))));

// a b + c, in one rounding where the processor has the instruction (a template,
// so that only the branch of this build's width is compiled).
template <class V>
inline V fused(V a, V b, V c) {
#if defined(__AVX512F__)
  if constexpr (sizeof(V) == 64) return (V)_mm512_fmadd_pd((__m512d)a, (__m512d)b, (__m512d)c);
#endif
#if defined(__FMA__)
  if constexpr (sizeof(V) == 32) return (V)_mm256_fmadd_pd((__m256d)a, (__m256d)b, (__m256d)c);
  if constexpr (sizeof(V) == 16) return (V)_mm_fmadd_pd((__m128d)a, (__m128d)b, (__m128d)c);
#endif
  return a * b + c;
}

// sum c[k] x^k, as an even and an odd part in x^2 evaluated side by side.
template <size_t N>
inline D polynomial(D x, const std::array<double, N>& c) {
  static_assert(N >= 2);
  const D x2 = x * x;
  constexpr size_t top_even = (N - 1) / 2 * 2, top_odd = N % 2 == 0 ? N - 1 : N - 2;
  D even = D{} + c[top_even], odd = D{} + c[top_odd];
  // Unrolled, so that the coefficients become constants broadcast once.
#pragma GCC unroll 16
  for (size_t k = top_even; k >= 2; k -= 2) even = fused(even, x2, D{} + c[k - 2]);
#pragma GCC unroll 16
  for (size_t k = top_odd; k >= 3; k -= 2) odd = fused(odd, x2, D{} + c[k - 2]);
  return fused(odd, x, even);
}

// 1/(k+2)! for k = 0..N-1: the Taylor series of (exp(r) - 1 - r) / r^2.
template <size_t N>
constexpr std::array<double, N> exp_taylor() {
  std::array<double, N> c{};
  long double f = 2;
  for (size_t k = 0; k < N; ++k) {
    c[k] = static_cast<double>(1.0L / f);
    f *= static_cast<long double>(k + 3);
  }
  return c;
}

// 2/(2k+3) for k = 0..N-1: the Taylor series of (2 atanh(s) - 2s) / s^3 in s^2.
template <size_t N>
constexpr std::array<double, N> log_taylor() {
  std::array<double, N> c{};
  for (size_t k = 0; k < N; ++k) c[k] = 2.0 / static_cast<double>(2 * k + 3);
  return c;
}

// Near-minimax fits of the same functions on the reduced ranges, for the
// accurate modes: Chebyshev fits at 200 bits (mpmath.chebyfit) on
// |r| <= ln2/2 and s^2 <= (3 - 2 sqrt(2))^2, rounded to double. Largest error,
// relative to the function's value: exp 3.4e-19 (11 terms) and 1.6e-17 (10);
// log 4.7e-18 (7 terms). The Taylor series would need 12 and 10 terms.
constexpr std::array<double, 11> kExpFit11 = {0x1.0000000000000p-1,  0x1.5555555555557p-3,  0x1.5555555555556p-5,
                                              0x1.11111111100dfp-7,  0x1.6c16c16c162d6p-10, 0x1.a01a01abe6323p-13,
                                              0x1.a01a01a6d7831p-16, 0x1.71de0237484cdp-19, 0x1.27e4db67ac2b0p-22,
                                              0x1.af4ddda1c08cdp-26, 0x1.1f72fc83bcbc7p-29};
constexpr std::array<double, 10> kExpFit10 = {
    0x1.0000000000001p-1,  0x1.5555555555556p-3,  0x1.5555555553d68p-5,  0x1.11111111109b5p-7,  0x1.6c16c17889f3cp-10,
    0x1.a01a01a7c2f2cp-13, 0x1.a019b914881bap-16, 0x1.71de0db2eb873p-19, 0x1.28917c9f3a495p-22, 0x1.af389eea54156p-26};
constexpr std::array<double, 7> kLogFit7 = {0x1.5555555555558p-1, 0x1.99999999952e2p-2, 0x1.2492492df14bcp-2,
                                            0x1.c71c62e57c3c4p-3, 0x1.7462b4ac441afp-3, 0x1.39fe604146b74p-3,
                                            0x1.2b584c6b42d60p-3};

template <int A>
constexpr auto kExpTail = kExpFit11;
template <>
constexpr auto kExpTail<1> = kExpFit10;
template <>
constexpr auto kExpTail<2> = exp_taylor<7>();  // degree 8: about 30 bits
template <int A>
constexpr auto kLogTail = kLogFit7;
template <>
constexpr auto kLogTail<2> = log_taylor<4>();  // about 29 bits

// ln2 in two parts: the first with its low 17 bits zero, so n ln2_hi is exact
// for every exponent of a double (|n| < 2^17).
constexpr double kLn2Hi = 0x1.62e42fefa0000p-1;
constexpr double kLn2Lo = 0x1.cf79abc9e3b3ap-40;
constexpr double kInvLn2 = 0x1.71547652b82fep0;
// Adding it rounds to an integer held in the low mantissa bits.
constexpr double kShift = 0x1.8p52;
constexpr double kExpLimit = 708;  // n stays above -1022: results normal

// Lanes left out compute garbage, harmlessly: the caller replaces them.
template <int A>
inline D exp(D x, I& left) {
  constexpr auto& c = kExpTail<A>;
  // Negative where |x| > kExpLimit, NaN included: its bits compare as beyond infinity's.
  left = __builtin_bit_cast(int64_t, kExpLimit) - __builtin_bit_cast(I, magnitude<double>(x));
  const D kd = fused(x, D{} + kInvLn2, D{} + kShift);
  const D minus_n = kShift - kd;
  const D r_hi = fused(minus_n, D{} + kLn2Hi, x);  // exact
  const D r = fused(minus_n, D{} + kLn2Lo, r_hi);
  const D tail = r * r * polynomial(r, c);
  // The low bits of kd hold n: shifted into the exponent field of 1.0, they make 2^n.
  const D scale = __builtin_bit_cast(D, (__builtin_bit_cast(U, kd) << 52) + __builtin_bit_cast(U, D{} + 1.0));
  if constexpr (A == 0) {
    const D r_lo = fused(minus_n, D{} + kLn2Lo, r_hi - r);  // the rounding error of r
    const D hi = 1.0 + r;
    const D lo = (1.0 - hi) + r;
    return (hi + (lo + fused(r_lo, hi, tail))) * scale;
  } else {
    return (1.0 + (r + tail)) * scale;
  }
}

// The bits of sqrt(2)/2 rounded up: mantissas are split around it.
constexpr int64_t kSplit = 0x3fe6a09e667f3bcd;
constexpr int64_t kSignAndExponent = -(int64_t(1) << 52);
constexpr double kExponentBias = 0x1p52 + 2048;

// The bits of the least and the largest positive normal number.
constexpr int64_t kNormalMin = 0x0010000000000000, kNormalMax = 0x7fefffffffffffff;

template <int A>
inline D log(D x, I& left) {
  constexpr auto& c = kLogTail<A>;
  const I bits = __builtin_bit_cast(I, x);
  // Negative unless kNormalMin <= bits <= kNormalMax (negative numbers have negative bits).
  left = (bits - kNormalMin) | (kNormalMax - bits);
  const I shifted = bits - kSplit;
  const I e_bits = shifted & kSignAndExponent;  // e << 52
  const D m = __builtin_bit_cast(D, bits - e_bits);
  // e + 2048 in the low bits of 2^52's mantissa, then e as a double.
  const U biased = (__builtin_bit_cast(U, shifted) ^ (U{} + (uint64_t(1) << 63))) >> 52;
  const D e = __builtin_bit_cast(D, biased | __builtin_bit_cast(U, D{} + 0x1p52)) - kExponentBias;
  const D f = m - 1.0;
  const D s = f / (2.0 + f);
  const D z = s * s;
  const D half_f = 0.5 * f;
  const D half_f2 = half_f * f;
  const D r = z * polynomial(z, c);  // 2 atanh(s) - 2 s = s R(z) with R = z c(z)
  if constexpr (A == 0) {
    // With a fused multiply-add, f^2/2 to twice the precision (else the error is 0).
    const D half_f2_lo = fused(half_f, f, -half_f2);
    return e * kLn2Hi - ((half_f2 - fused(s, half_f2 + r, fused(e, D{} + kLn2Lo, -half_f2_lo))) - f);
  } else {
    return e * kLn2Hi - ((half_f2 - fused(s, half_f2 + r, e * kLn2Lo)) - f);
  }
}

}  // namespace explog
}  // namespace qnl_vml
