// Standard normal numbers: Box-Muller (one number per pair of uniforms),
// Box-Muller with both numbers of a pair, and the inverse distribution
// function (Wichura's AS 241). The Box-Muller transform runs on SLEEF's
// AVX-512 or AVX2 logarithm and sine-cosine where the processor has them.
#include <immintrin.h>

// SLEEF's header declares its AVX2 and AVX-512 functions only in translation
// units built for those sets; this one is built for the baseline and calls them
// from functions with their own targets, so it declares the four it uses.
#pragma GCC push_options
#pragma GCC target("avx512f,avx2,fma")
extern "C" {
struct Sleef___m256d_2 {
  __m256d x, y;
};
struct Sleef___m512d_2 {
  __m512d x, y;
};
__m256d Sleef_logd4_u10avx2(__m256d);
Sleef___m256d_2 Sleef_sincosd4_u10avx2(__m256d);
__m512d Sleef_logd8_u10avx512f(__m512d);
Sleef___m512d_2 Sleef_sincosd8_u10avx512f(__m512d);
}
#pragma GCC pop_options

#include "../../../src/runtime/cpu_features.h"
#include "dist.h"

namespace qnl_vsl {
namespace {

constexpr double kTwoPi = 6.283185307179586476925286766559;

// In place: x holds u1, y holds u2; on return x = rho cos(theta), y = rho sin(theta)
// with rho = sqrt(-2 log(1 - u1)), theta = 2 pi u2.
void bm_scalar(double* x, double* y, int m) {
  for (int i = 0; i < m; ++i) {
    double rho = std::sqrt(-2.0 * std::log(1.0 - x[i])), t = kTwoPi * y[i];
    x[i] = rho * std::cos(t);
    y[i] = rho * std::sin(t);
  }
}
__attribute__((target("avx2,fma"))) void bm_avx2(double* x, double* y, int m) {
  const __m256d one = _mm256_set1_pd(1.0), m2 = _mm256_set1_pd(-2.0), tp = _mm256_set1_pd(kTwoPi);
  int i = 0;
  for (; i + 4 <= m; i += 4) {
    __m256d l = Sleef_logd4_u10avx2(_mm256_sub_pd(one, _mm256_loadu_pd(x + i)));
    __m256d rho = _mm256_sqrt_pd(_mm256_mul_pd(m2, l));
    Sleef___m256d_2 sc = Sleef_sincosd4_u10avx2(_mm256_mul_pd(tp, _mm256_loadu_pd(y + i)));
    _mm256_storeu_pd(x + i, _mm256_mul_pd(rho, sc.y));
    _mm256_storeu_pd(y + i, _mm256_mul_pd(rho, sc.x));
  }
  bm_scalar(x + i, y + i, m - i);
}
__attribute__((target("avx512f"))) void bm_avx512(double* x, double* y, int m) {
  const __m512d one = _mm512_set1_pd(1.0), m2 = _mm512_set1_pd(-2.0), tp = _mm512_set1_pd(kTwoPi);
  int i = 0;
  for (; i + 8 <= m; i += 8) {
    __m512d l = Sleef_logd8_u10avx512f(_mm512_sub_pd(one, _mm512_loadu_pd(x + i)));
    __m512d rho = _mm512_maskz_sqrt_pd(0xff, _mm512_mul_pd(m2, l));  // GCC 12 warns on the unmasked form
    Sleef___m512d_2 sc = Sleef_sincosd8_u10avx512f(_mm512_mul_pd(tp, _mm512_loadu_pd(y + i)));
    _mm512_storeu_pd(x + i, _mm512_mul_pd(rho, sc.y));
    _mm512_storeu_pd(y + i, _mm512_mul_pd(rho, sc.x));
  }
  bm_scalar(x + i, y + i, m - i);
}
using BmFn = void (*)(double*, double*, int);
BmFn bm_for_this_cpu() {
  if (qnl::cpu::has(qnl::cpu::kAvx512f)) return bm_avx512;
  if (qnl::cpu::has(qnl::cpu::kAvx2 | qnl::cpu::kFma)) return bm_avx2;
  return bm_scalar;
}

}  // namespace

double normal_quantile(double p) {
  // AS 241 (PPND16), relative accuracy about 1e-16.
  double q = p - 0.5, r, x;
  if (std::fabs(q) <= 0.425) {
    r = 0.180625 - q * q;
    return q *
           (((((((2509.0809287301226727 * r + 33430.575583588128105) * r + 67265.770927008700853) * r +
                45921.953931549871457) *
                   r +
               13731.693765509461125) *
                  r +
              1971.5909503065514427) *
                 r +
             133.14166789178437745) *
                r +
            3.387132872796366608) /
           (((((((5226.495278852545925 * r + 28729.085735721942674) * r + 39307.89580009271061) * r +
                21213.794301586595867) *
                   r +
               5394.1960214247511077) *
                  r +
              687.1870074920579083) *
                 r +
             42.313330701600911252) *
                r +
            1.0);
  }
  r = std::sqrt(-std::log(q < 0 ? p : 1.0 - p));
  if (r <= 5.0) {
    r -= 1.6;
    x = (((((((7.7454501427834140764e-4 * r + 0.0227238449892691845833) * r + 0.24178072517745061177) * r +
             1.27045825245236838258) *
                r +
            3.64784832476320460504) *
               r +
           5.7694972214606914055) *
              r +
          4.6303378461565452959) *
             r +
         1.42343711074968357734) /
        (((((((1.05075007164441684324e-9 * r + 5.475938084995344946e-4) * r + 0.0151986665636164571966) * r +
             0.14810397642748007459) *
                r +
            0.68976733498510000455) *
               r +
           1.6763848301838038494) *
              r +
          2.05319162663775882187) *
             r +
         1.0);
  } else {
    r -= 5.0;
    x = (((((((2.01033439929228813265e-7 * r + 2.71155556874348757815e-5) * r + 0.0012426609473880784386) * r +
             0.026532189526576123093) *
                r +
            0.29656057182850489123) *
               r +
           1.7848265399172913358) *
              r +
          5.4637849111641143699) *
             r +
         6.6579046435011037772) /
        (((((((2.04426310338993978564e-15 * r + 1.4215117583164458887e-7) * r + 1.8463183175100546818e-5) * r +
             7.868691311456132591e-4) *
                r +
            0.0148753612908506148525) *
               r +
           0.13692988092273580531) *
              r +
          0.59983220655588793769) *
             r +
         1.0);
  }
  return q < 0 ? -x : x;
}

int gaussian_std(void* stream, int method, int n, double* z) {
  double buf[2 * kChunk];
  for (int done = 0; done < n;) {
    int m = n - done < kChunk ? n - done : kChunk;
    if (method == VSL_RNG_METHOD_GAUSSIAN_ICDF) {
      if (int rc = uniform01(stream, m, z + done)) return rc;
      for (int i = 0; i < m; ++i) z[done + i] = normal_quantile(open01(z[done + i]));
    } else if (method == VSL_RNG_METHOD_GAUSSIAN_BOXMULLER2) {
      int h = (m + 1) / 2;                 // pairs; an odd count drops the last sine
      double* w = m % 2 ? buf : z + done;  // in place when whole pairs fit
      if (int rc = uniform01(stream, 2 * h, w)) return rc;
      bm_for_this_cpu()(w, w + h, h);
      if (w == buf) std::memcpy(z + done, buf, sizeof(double) * m);
    } else {
      if (int rc = uniform01(stream, 2 * m, buf)) return rc;
      bm_for_this_cpu()(buf, buf + m, m);
      std::memcpy(z + done, buf + m, sizeof(double) * m);  // the sines
    }
    done += m;
  }
  return 0;
}

double normal_one(Uniforms& u) {
  double u1 = u.next(), u2 = u.next();
  return std::sqrt(-2.0 * std::log(1.0 - u1)) * std::cos(kTwoPi * u2);
}

}  // namespace qnl_vsl
