// Integer distributions. Bernoulli and geometric by inversion; binomial,
// hypergeometric and Poisson (method 1) by inversion searched outward from
// the mode, which costs about a standard deviation of steps; Poisson
// (method 0 and the varying mean) by sequential inversion below a mean of 10
// and Hormann's PTRS rejection above; negative binomial as a Poisson of a gamma.
#include "dist.h"

namespace qnl_vsl {
namespace {

inline int to_int(long long k) { return k < 2147483647 ? static_cast<int>(k) : 2147483647; }

// A distribution on lo..hi known through its mode's mass and the ratios
// f(k + 1) / f(k). The masses around the mode are summed once per call.
struct ModeInversion {
  long long lo, hi, mode;
  double fmode, cdf_mode;  // f(mode), F(mode), normalised
  template <class Ratio>
  void setup(Ratio ratio) {
    // Unnormalised: f(mode) = 1; walk out until the terms stop mattering.
    double below = 0, f = 1;
    for (long long k = mode; k > lo;) {
      f /= ratio(k - 1);
      --k;
      below += f;
      if (f < 1e-18 * (below + 1)) break;
    }
    double above = 0;
    f = 1;
    for (long long k = mode; k < hi; ++k) {
      f *= ratio(k);
      above += f;
      if (f < 1e-18 * (above + 1)) break;
    }
    const double total = below + 1 + above;
    fmode = 1 / total;
    cdf_mode = (below + 1) / total;
  }
  template <class Ratio>
  long long draw(double u, Ratio ratio) const {
    long long k = mode;
    double f = fmode, F = cdf_mode;
    if (u <= F) {
      while (k > lo && u <= F - f) {
        F -= f;
        f /= ratio(k - 1);
        --k;
        if (f <= 0) break;
      }
    } else {
      while (k < hi && u > F) {
        f *= ratio(k);
        ++k;
        F += f;
        if (f <= 0) break;
      }
    }
    return k;
  }
};

int bernoulli(void* s, int n, int* r, double p) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(p >= 0 && p <= 1)) return VSL_ERROR_BADARGS;
  Uniforms u(s);
  for (int i = 0; i < n; ++i) r[i] = u.next() < p;
  return u.rc;
}

// Failures before the first success: floor(log(u) / log(1 - p)).
int geometric(void* s, int n, int* r, double p) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(p > 0 && p < 1)) return VSL_ERROR_BADARGS;
  const double l = std::log1p(-p);
  Uniforms u(s);
  for (int i = 0; i < n; ++i) {
    double x = std::floor(std::log(u.open()) / l);
    r[i] = x < 2147483647.0 ? static_cast<int>(x) : 2147483647;
  }
  return u.rc;
}

int binomial(void* s, int n, int* r, int ntrial, double p) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (ntrial < 1 || !(p >= 0 && p <= 1)) return VSL_ERROR_BADARGS;
  if (p == 0 || p == 1) {
    for (int i = 0; i < n; ++i) r[i] = p == 0 ? 0 : ntrial;
    return 0;
  }
  const double odds = p / (1 - p);
  auto ratio = [&](long long k) { return (ntrial - k) / (k + 1.0) * odds; };
  ModeInversion inv{0, ntrial, static_cast<long long>(std::floor((ntrial + 1.0) * p)), 0, 0};
  if (inv.mode > ntrial) inv.mode = ntrial;
  inv.setup(ratio);
  Uniforms u(s);
  for (int i = 0; i < n; ++i) r[i] = static_cast<int>(inv.draw(u.next(), ratio));
  return u.rc;
}

// Marked items in a sample of s_ from a lot of l holding m_ marked ones.
int hypergeometric(void* s, int n, int* r, int l, int ss, int mm) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (ss < 0 || mm < 0 || ss > l || mm > l) return VSL_ERROR_BADARGS;
  const long long lo = ss + mm - l > 0 ? ss + mm - l : 0, hi = ss < mm ? ss : mm;
  auto ratio = [&](long long k) {
    return static_cast<double>(ss - k) * (mm - k) / ((k + 1.0) * (static_cast<double>(l) - mm - ss + k + 1));
  };
  long long mode = static_cast<long long>(std::floor((ss + 1.0) * (mm + 1.0) / (l + 2.0)));
  mode = mode < lo ? lo : (mode > hi ? hi : mode);
  ModeInversion inv{lo, hi, mode, 0, 0};
  inv.setup(ratio);
  Uniforms u(s);
  for (int i = 0; i < n; ++i) r[i] = static_cast<int>(inv.draw(u.next(), ratio));
  return u.rc;
}

// One Poisson number: sequential inversion for small means, PTRS above.
struct PoissonExact {
  double lambda, el, slam, loglam, b, a, invalpha, vr;
  explicit PoissonExact(double lam) : lambda(lam) {
    el = std::exp(-lam);
    slam = std::sqrt(lam);
    loglam = std::log(lam);
    b = 0.931 + 2.53 * slam;
    a = -0.059 + 0.02483 * b;
    invalpha = 1.1239 + 1.1328 / (b - 3.4);
    vr = 0.9277 - 3.6224 / (b - 2);
  }
  long long draw(Uniforms& u) const {
    if (lambda < 10) {
      double x = u.next(), f = el;
      long long k = 0;
      while (x > f && k < 1000) {
        x -= f;
        ++k;
        f *= lambda / k;
      }
      return k;
    }
    for (;;) {
      double uu = u.next() - 0.5, v = u.open(), us = 0.5 - std::fabs(uu);
      long long k = static_cast<long long>(std::floor((2 * a / us + b) * uu + lambda + 0.43));
      if (us >= 0.07 && v <= vr) return k;
      if (k < 0 || (us < 0.013 && v > us)) continue;
      if (std::log(v) + std::log(invalpha) - std::log(a / (us * us) + b) <= -lambda + k * loglam - std::lgamma(k + 1.0))
        return k;
    }
  }
};

int poisson(int method, void* s, int n, int* r, double lambda) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(lambda > 0) || method < 0 || method > 1) return VSL_ERROR_BADARGS;
  Uniforms u(s);
  if (method == VSL_RNG_METHOD_POISSON_PTPE) {
    PoissonExact pe(lambda);
    for (int i = 0; i < n; ++i) r[i] = to_int(pe.draw(u));
  } else {
    auto ratio = [&](long long k) { return lambda / (k + 1.0); };
    ModeInversion inv{0, 2147483647, static_cast<long long>(std::floor(lambda)), 0, 0};
    inv.setup(ratio);
    for (int i = 0; i < n; ++i) r[i] = static_cast<int>(inv.draw(u.next(), ratio));
  }
  return u.rc;
}

int poisson_v(void* s, int n, int* r, const double* lambda) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!lambda) return VSL_ERROR_BADARGS;
  Uniforms u(s);
  for (int i = 0; i < n; ++i) {
    if (!(lambda[i] > 0)) return VSL_ERROR_BADARGS;
    r[i] = to_int(PoissonExact(lambda[i]).draw(u));
  }
  return u.rc;
}

// P(k) = C(a + k - 1, k) p^a (1 - p)^k: Poisson with a gamma(a, (1 - p) / p) mean.
int negbinomial(void* s, int n, int* r, double a, double p) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(a > 0) || !(p > 0 && p < 1)) return VSL_ERROR_BADARGS;
  Uniforms u(s);
  const double scale = (1 - p) / p;
  for (int i = 0; i < n; ++i) {
    double lam = gamma_one(u, a) * scale;
    r[i] = lam > 0 ? to_int(PoissonExact(lam).draw(u)) : 0;
  }
  return u.rc;
}

// a + floor((b - a) u) on a..b-1.
int uniform_int(void* s, int n, int* r, int a, int b) {
  QNL_DIST_PROLOGUE(s, n, r);
  if (!(a < b)) return VSL_ERROR_BADARGS;
  const double w = static_cast<double>(b) - a;
  return chunked(n, r, [&](double* buf, int m) {
    if (int rc = uniform01(s, m, buf)) return rc;
    for (int i = 0; i < m; ++i) {
      double x = a + std::floor(w * buf[i]);
      buf[i] = x < b ? x : b - 1;
    }
    return 0;
  });
}

}  // namespace
}  // namespace qnl_vsl

using namespace qnl_vsl;

QNL_VSL_EXPORT int _vsliRngBernoulli(int, void* s, int n, int* r, double p) { return bernoulli(s, n, r, p); }
QNL_VSL_EXPORT int _vsliRngGeometric(int, void* s, int n, int* r, double p) { return geometric(s, n, r, p); }
QNL_VSL_EXPORT int _vsliRngBinomial(int, void* s, int n, int* r, int ntrial, double p) {
  return binomial(s, n, r, ntrial, p);
}
QNL_VSL_EXPORT int _vsliRngHypergeometric(int, void* s, int n, int* r, int l, int ss, int mm) {
  return hypergeometric(s, n, r, l, ss, mm);
}
QNL_VSL_EXPORT int _vsliRngNegbinomial(int, void* s, int n, int* r, double a, double p) {
  return negbinomial(s, n, r, a, p);
}
QNL_VSL_EXPORT int _vsliRngPoisson(int m, void* s, int n, int* r, double lambda) { return poisson(m, s, n, r, lambda); }
QNL_VSL_EXPORT int _vsliRngPoissonV(int, void* s, int n, int* r, const double* lambda) {
  return poisson_v(s, n, r, lambda);
}
QNL_VSL_EXPORT int _vsliRngUniform(int, void* s, int n, int* r, int a, int b) { return uniform_int(s, n, r, a, b); }

// The generator's own integers: n 32-bit words, in the order it makes them.
QNL_VSL_EXPORT int _vsliRngUniformBits(int, void* s, int n, unsigned* r) {
  QNL_DIST_PROLOGUE(s, n, r);
  const Brng* b = brng_of_stream(s);
  if (b->word_size == 1) return b->fill_bits(state_of(s), n, r);
  unsigned buf[256];
  for (int done = 0; done < n;) {
    int outputs = (n - done + b->word_size - 1) / b->word_size;
    if (outputs * b->word_size > 256) outputs = 256 / b->word_size;
    if (int rc = b->fill_bits(state_of(s), outputs, buf)) return rc;
    int m = outputs * b->word_size < n - done ? outputs * b->word_size : n - done;
    std::memcpy(r + done, buf, sizeof(unsigned) * m);
    done += m;
  }
  return 0;
}
QNL_VSL_EXPORT int _vsliRngUniformBits32(int, void* s, int n, unsigned* r) {
  QNL_DIST_PROLOGUE(s, n, r);
  return bits32(s, n, r);
}
QNL_VSL_EXPORT int _vsliRngUniformBits64(int, void* s, int n, unsigned long long* r) {
  QNL_DIST_PROLOGUE(s, n, r);
  unsigned w[512];
  for (int done = 0; done < n;) {
    int m = n - done < 256 ? n - done : 256;
    if (int rc = bits32(s, 2 * m, w)) return rc;
    for (int i = 0; i < m; ++i) r[done + i] = static_cast<unsigned long long>(w[2 * i + 1]) << 32 | w[2 * i];
    done += m;
  }
  return 0;
}
