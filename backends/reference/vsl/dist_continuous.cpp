// Continuous distributions. Methods without the accuracy flag transform in
// the fastest form; with it, logarithms of 1 - u go through log1p, every
// result is kept inside the support, the ends included exactly, and gamma and
// lognormal scales are applied where the intermediate would leave the range.
#include "dist.h"

namespace qnl_vsl {

// Standard gamma of shape al >= 1 by Marsaglia and Tsang.
static double gamma_mt(Uniforms& u, double al) {
  const double d = al - 1.0 / 3, c = 1 / std::sqrt(9 * d);
  double x;
  for (;;) {
    double z = normal_one(u), v = 1 + c * z;
    if (v <= 0) continue;
    v = v * v * v;
    double w = u.open();
    if (w < 1 - 0.0331 * z * z * z * z || std::log(w) < 0.5 * z * z + d * (1 - v + std::log(v))) {
      x = d * v;
      break;
    }
  }
  return x;
}

// Standard gamma; below alpha 1, of shape alpha + 1 boosted by u^(1/alpha).
double gamma_one(Uniforms& u, double alpha) {
  if (alpha >= 1) return gamma_mt(u, alpha);
  const double x = gamma_mt(u, alpha + 1);
  return x * std::pow(u.open(), 1 / alpha);
}

// beta times a standard gamma, from the same uniforms as gamma_one. For a small
// shape the boost u^(1/alpha) underflows long before beta x u^(1/alpha) would:
// below the normal range the product is redone by logarithms.
static double scaled_gamma(Uniforms& u, double alpha, double beta) {
  if (alpha >= 1) return beta * gamma_mt(u, alpha);
  const double x = gamma_mt(u, alpha + 1), w = u.open(), y = beta * (x * std::pow(w, 1 / alpha));
  return y >= 0x1p-1022 ? y : std::exp(std::log(beta) + std::log(x) + std::log(w) / alpha);
}

namespace {

template <class T>
int uniform(int method, void* s, int n, T* r, T a, T b) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(a < b)) return VSL_ERROR_BADARGS;
  if (int rc = chunked(n, r, [&](double* buf, int m) { return uniform_ab(s, m, buf, a, b); })) return rc;
  if (method & kAccurate) {
    // a + (b - a) u may round up to b (and to b in the narrowing to float): [a, b) is kept.
    const T top = std::nextafter(b, a);
    for (int i = 0; i < n; ++i) r[i] = clamp_to(r[i], a, top);
  }
  return 0;
}

// -log(1 - u): the accurate form keeps the digits of small u.
inline double neglog1m(double u, bool accurate) { return accurate ? -std::log1p(-u) : -std::log(1.0 - u); }

template <class T>
int exponential(int method, void* s, int n, T* r, T a, T beta) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(beta > 0)) return VSL_ERROR_BADARGS;
  const bool acc = method & kAccurate;
  if (int rc = icdf(s, n, r, [&](double u) { return a + beta * neglog1m(u, acc); })) return rc;
  if (acc)
    for (int i = 0; i < n; ++i) r[i] = r[i] < a ? a : r[i];
  return 0;
}

template <class T>
int laplace(int, void* s, int n, T* r, T a, T beta) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(beta > 0)) return VSL_ERROR_BADARGS;
  return icdf(s, n, r,
              [&](double u) { return u < 0.5 ? a + beta * std::log(2 * u) : a - beta * std::log(2 * (1 - u)); });
}

template <class T>
int cauchy(int, void* s, int n, T* r, T a, T beta) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(beta > 0)) return VSL_ERROR_BADARGS;
  return icdf(s, n, r, [&](double u) { return a + beta * std::tan(M_PI * (u - 0.5)); });
}

// F(x) = 1 - exp(-((x - a) / beta)^2)
template <class T>
int rayleigh(int method, void* s, int n, T* r, T a, T beta) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(beta > 0)) return VSL_ERROR_BADARGS;
  const bool acc = method & kAccurate;
  if (int rc = icdf(s, n, r, [&](double u) { return a + beta * std::sqrt(neglog1m(u, acc)); })) return rc;
  if (acc)
    for (int i = 0; i < n; ++i) r[i] = r[i] < a ? a : r[i];
  return 0;
}

// F(x) = 1 - exp(-exp((x - a) / beta)): the distribution of a minimum.
template <class T>
int gumbel(int, void* s, int n, T* r, T a, T beta) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(beta > 0)) return VSL_ERROR_BADARGS;
  return icdf(s, n, r, [&](double u) { return a + beta * std::log(-std::log(u)); });
}

// F(x) = 1 - exp(-((x - a) / beta)^alpha)
template <class T>
int weibull(int method, void* s, int n, T* r, T alpha, T a, T beta) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(alpha > 0) || !(beta > 0)) return VSL_ERROR_BADARGS;
  const bool acc = method & kAccurate;
  const double inv = 1.0 / alpha;
  if (int rc = icdf(s, n, r, [&](double u) { return a + beta * std::pow(neglog1m(u, acc), inv); })) return rc;
  if (acc)
    for (int i = 0; i < n; ++i) r[i] = r[i] < a ? a : r[i];
  return 0;
}

template <class T>
int gaussian(int method, void* s, int n, T* r, T a, T sigma) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(sigma > 0) || method < 0 || method > 2) return VSL_ERROR_BADARGS;
  return chunked(n, r, [&](double* buf, int m) {
    if (int rc = gaussian_std(s, method, m, buf)) return rc;
    for (int i = 0; i < m; ++i) buf[i] = a + sigma * buf[i];
    return 0;
  });
}

// beta * exp(a + sigma z) + b; method 0 takes z from Box-Muller pairs, 1 from the inverse.
template <class T>
int lognormal(int method, void* s, int n, T* r, T a, T sigma, T b, T beta) {
  QNL_DIST_PROLOGUE(s, n, r);
  const int m0 = method & ~kAccurate;
  if (!(sigma > 0) || !(beta > 0) || m0 < 0 || m0 > 1) return VSL_ERROR_BADARGS;
  const int gm = m0 ? VSL_RNG_METHOD_GAUSSIAN_ICDF : VSL_RNG_METHOD_GAUSSIAN_BOXMULLER2;
  return chunked(n, r, [&](double* buf, int m) {
    if (int e = gaussian_std(s, gm, m, buf)) return e;
    // exp alone overflows (or underflows) where beta exp(.) need not: the accurate
    // form then takes beta into the exponent.
    const bool acc = method & kAccurate;
    const double lb = std::log(beta);
    for (int i = 0; i < m; ++i) {
      const double e = a + sigma * buf[i];
      double y = beta * std::exp(e);
      if (acc && !(y >= 0x1p-1022 && y <= 0x1p1023)) y = std::exp(e + lb);
      buf[i] = b + y;
    }
    return 0;
  });
}

template <class T>
int gamma(int method, void* s, int n, T* r, T alpha, T a, T beta) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(alpha > 0) || !(beta > 0)) return VSL_ERROR_BADARGS;
  Uniforms u(s);
  if (method & kAccurate)
    for (int i = 0; i < n; ++i) r[i] = static_cast<T>(a + scaled_gamma(u, alpha, beta));
  else
    for (int i = 0; i < n; ++i) r[i] = static_cast<T>(a + beta * gamma_one(u, alpha));
  return u.rc;
}

// Standard beta: Johnk's method when p and q are both below 1, else a ratio of gammas.
double beta_one(Uniforms& u, double p, double q) {
  if (p < 1 && q < 1) {
    for (;;) {
      double x = std::pow(u.open(), 1 / p), y = std::pow(u.open(), 1 / q);
      if (x + y <= 1 && x + y > 0) return x / (x + y);
    }
  }
  double g1 = gamma_one(u, p), g2 = gamma_one(u, q);
  return g1 / (g1 + g2);
}

template <class T>
int beta(int method, void* s, int n, T* r, T p, T q, T a, T b) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(p > 0) || !(q > 0) || !(b > 0)) return VSL_ERROR_BADARGS;
  Uniforms u(s);
  for (int i = 0; i < n; ++i) r[i] = static_cast<T>(a + b * beta_one(u, p, q));
  if (method & kAccurate) {
    // a + b rounded may lie above the exact end of the support: the top kept is the
    // largest T not above it (the rounding error of the sum, by Knuth's two-sum).
    const T top = a + b, bv = top - a, err = (a - (top - bv)) + (b - bv);
    const T hi = err < 0 ? std::nextafter(top, a) : top;
    for (int i = 0; i < n; ++i) r[i] = clamp_to<T>(r[i], a, hi);
  }
  return u.rc;
}

// Vectors a + T z with T lower triangular, stored by rows: full (dimen x dimen),
// packed (row i holds i + 1 entries) or its diagonal alone.
template <class T>
int gaussian_mv(int method, void* s, int n, T* r, int dimen, int mstorage, const T* a, const T* t) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (dimen < 1 || mstorage < 0 || mstorage > 2 || !a || !t || method < 0 || method > 2) return VSL_ERROR_BADARGS;
  double z[256];
  for (int k = 0; k < n; ++k) {
    T* out = r + static_cast<size_t>(k) * dimen;
    // Draw all of z for this vector: dimen standard normals, in pieces of 256.
    for (int i = 0; i < dimen; ++i) out[i] = a[i];
    for (int j0 = 0; j0 < dimen; j0 += 256) {
      int m = dimen - j0 < 256 ? dimen - j0 : 256;
      if (int rc = gaussian_std(s, method, m, z)) return rc;
      for (int jj = 0; jj < m; ++jj) {
        const int j = j0 + jj;
        if (mstorage == VSL_MATRIX_STORAGE_DIAGONAL) {
          out[j] += static_cast<T>(t[j] * z[jj]);
          continue;
        }
        for (int i = j; i < dimen; ++i) {
          const T tij = mstorage == VSL_MATRIX_STORAGE_FULL ? t[static_cast<size_t>(i) * dimen + j]
                                                            : t[static_cast<size_t>(i) * (i + 1) / 2 + j];
          out[i] += static_cast<T>(tij * z[jj]);
        }
      }
    }
  }
  return 0;
}

}  // namespace
}  // namespace qnl_vsl

using namespace qnl_vsl;

#define QNL_TWO(stem, fn)                                                                  \
  QNL_VSL_EXPORT int _vsls##stem(int m, void* s, int n, float* r, float p1, float p2) {    \
    return fn(m, s, n, r, p1, p2);                                                         \
  }                                                                                        \
  QNL_VSL_EXPORT int _vsld##stem(int m, void* s, int n, double* r, double p1, double p2) { \
    return fn(m, s, n, r, p1, p2);                                                         \
  }
#define QNL_THREE(stem, fn)                                                                           \
  QNL_VSL_EXPORT int _vsls##stem(int m, void* s, int n, float* r, float p1, float p2, float p3) {     \
    return fn(m, s, n, r, p1, p2, p3);                                                                \
  }                                                                                                   \
  QNL_VSL_EXPORT int _vsld##stem(int m, void* s, int n, double* r, double p1, double p2, double p3) { \
    return fn(m, s, n, r, p1, p2, p3);                                                                \
  }
#define QNL_FOUR(stem, fn)                                                                                       \
  QNL_VSL_EXPORT int _vsls##stem(int m, void* s, int n, float* r, float p1, float p2, float p3, float p4) {      \
    return fn(m, s, n, r, p1, p2, p3, p4);                                                                       \
  }                                                                                                              \
  QNL_VSL_EXPORT int _vsld##stem(int m, void* s, int n, double* r, double p1, double p2, double p3, double p4) { \
    return fn(m, s, n, r, p1, p2, p3, p4);                                                                       \
  }

QNL_TWO(RngUniform, uniform)
QNL_TWO(RngGaussian, gaussian)
QNL_TWO(RngExponential, exponential)
QNL_TWO(RngLaplace, laplace)
QNL_TWO(RngCauchy, cauchy)
QNL_TWO(RngRayleigh, rayleigh)
QNL_TWO(RngGumbel, gumbel)
QNL_THREE(RngWeibull, weibull)
QNL_THREE(RngGamma, gamma)
QNL_FOUR(RngLognormal, lognormal)
QNL_FOUR(RngBeta, beta)

QNL_VSL_EXPORT int _vslsRngGaussianMV(int m, void* s, int n, float* r, int dimen, int mstorage, const float* a,
                                      const float* t) {
  return gaussian_mv(m, s, n, r, dimen, mstorage, a, t);
}
QNL_VSL_EXPORT int _vsldRngGaussianMV(int m, void* s, int n, double* r, int dimen, int mstorage, const double* a,
                                      const double* t) {
  return gaussian_mv(m, s, n, r, dimen, mstorage, a, t);
}
