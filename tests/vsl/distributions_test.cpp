// Every distribution against its exact law (Boost.Math): a Kolmogorov-Smirnov
// test for the continuous ones and a chi-square test for the integer ones, at
// a fixed seed, plus the mean and the variance. The sample size is
// QNL_VSL_STAT_N (default 10^6, 2 10^5 where CI is set).
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/math/distributions.hpp>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "vsl_kernels.h"

namespace bm = boost::math;

namespace {

int sample_size() {
  const char* e = std::getenv("QNL_VSL_STAT_N");
  const char* ci = std::getenv("CI");
  return e ? std::atoi(e) : (ci && *ci ? 200000 : 1000000);
}

// Mean within 6 standard errors, variance within 6 standard errors of its estimate.
void expect_moments(const std::vector<double>& x, double mean, double var, double kurtosis) {
  const double n = static_cast<double>(x.size());
  double m = 0, v = 0;
  for (double t : x) m += t;
  m /= n;
  for (double t : x) v += (t - m) * (t - m);
  v /= n - 1;
  EXPECT_NEAR(m, mean, 6 * std::sqrt(var / n));
  EXPECT_NEAR(v / var, 1.0, 6 * std::sqrt((kurtosis - 1) / n));
}

// Kolmogorov-Smirnov: sqrt(n) D above 1.95 has probability 0.001 under the law.
// D is taken at 20000 evenly spaced order statistics, which keeps the number
// of evaluations of the distribution function small.
void expect_ks(std::vector<double> x, const std::function<double(double)>& cdf) {
  std::sort(x.begin(), x.end());
  const double n = static_cast<double>(x.size());
  const size_t step = std::max<size_t>(1, x.size() / 20000);
  double d = 0;
  for (size_t i = 0; i < x.size(); i += step) {
    const double f = cdf(x[i]);
    d = std::max({d, f - i / n, (i + 1) / n - f});
  }
  EXPECT_LT(std::sqrt(n) * d, 1.95);
}

// Chi-square over the values whose expected count is at least 20, the rest in two tails.
void expect_chi2(const std::vector<int>& x, const std::function<double(int)>& pmf, int lo, int hi) {
  const double n = static_cast<double>(x.size());
  std::vector<double> count(hi - lo + 1);
  for (int k : x) count[std::clamp(k, lo, hi) - lo] += 1;
  double chi = 0, tail = 0, tail_obs = 0;
  int df = -1;
  for (int k = lo; k <= hi; ++k) {
    const double e = n * pmf(k);
    if (e < 20) {
      tail += e, tail_obs += count[k - lo];
      continue;
    }
    chi += (count[k - lo] - e) * (count[k - lo] - e) / e, ++df;
  }
  if (tail > 20) chi += (tail_obs - tail) * (tail_obs - tail) / tail, ++df;
  ASSERT_GT(df, 0);
  EXPECT_LT(chi, bm::quantile(bm::chi_squared(df), 0.999)) << "df " << df;
}

// The law putting 1/k on each of k values.
std::function<double(int)> flat(int k) {
  return [k](int) { return 1.0 / k; };
}

class Dist : public ::testing::Test {
 protected:
  Stream s{VSL_BRNG_MT19937, {20261123}};
  const int n = sample_size();
};

// ---- continuous: each case runs in double and in float ----
struct Law {
  std::function<double(double)> cdf;
  double mean, var, kurtosis;
  bool moments = true;
};
// A Boost law moved to shift + scale X.
template <class L>
Law law(const L& l, double shift = 0, double scale = 1) {
  auto sup = bm::support(l);
  return {[=](double t) { return bm::cdf(l, std::clamp((t - shift) / scale, sup.first, sup.second)); },
          shift + scale * bm::mean(l), scale * scale * bm::variance(l), bm::kurtosis(l)};
}
void check_real(const char* what, const std::function<int(int, double*)>& d, const std::function<int(int, float*)>& f,
                const Law& law) {
  SCOPED_TRACE(what);
  const int n = sample_size();
  std::vector<double> x(n);
  ASSERT_EQ(d(n, x.data()), 0);
  expect_ks(x, law.cdf);
  if (law.moments) expect_moments(x, law.mean, law.var, law.kurtosis);
  std::vector<float> y(n);
  ASSERT_EQ(f(n, y.data()), 0);
  expect_ks(std::vector<double>(y.begin(), y.end()), law.cdf);
}
// The double and the float kernel of one law on the same parameters (narrowed for float).
#define REAL(stem, m, ...)                                                  \
  [&](int k, double* r) { return _vsld##stem(m, s.s, k, r, __VA_ARGS__); }, \
      [&](int k, float* r) { return _vsls##stem(m, s.s, k, r, __VA_ARGS__); }

TEST_F(Dist, Continuous) {
  const int acc = VSL_RNG_METHOD_ACCURACY_FLAG;
  for (int m : {0, acc}) check_real("uniform", REAL(RngUniform, m, -2.0, 3.0), law(bm::uniform_distribution<>(-2, 3)));
  for (int m : {0, 1, 2}) check_real("gaussian", REAL(RngGaussian, m, 1.5, 2.0), law(bm::normal(1.5, 2.0)));
  for (int m : {0, acc})
    check_real("exponential", REAL(RngExponential, m, 1.0, 2.5), law(bm::exponential(1 / 2.5), 1.0));
  check_real("laplace", REAL(RngLaplace, 0, -1.0, 0.5), law(bm::laplace(-1.0, 0.5)));
  Law cauchy{[](double x) { return bm::cdf(bm::cauchy(2.0, 3.0), x); }, 0, 0, 0, false};
  check_real("cauchy", REAL(RngCauchy, 0, 2.0, 3.0), cauchy);
  for (int m : {0, acc})
    check_real("rayleigh", REAL(RngRayleigh, m, 0.5, 2.0), law(bm::rayleigh(2.0 / std::sqrt(2.0)), 0.5));
  // Ours is the law of a minimum: -X follows Boost's extreme value law.
  const bm::extreme_value ev(-1.0, 2.0);
  Law gumbel{[=](double x) { return bm::cdf(bm::complement(ev, -x)); }, -bm::mean(ev), bm::variance(ev),
             bm::kurtosis(ev)};
  check_real("gumbel", REAL(RngGumbel, 0, 1.0, 2.0), gumbel);
  for (int m : {0, acc}) check_real("weibull", REAL(RngWeibull, m, 1.7, 0.5, 3.0), law(bm::weibull(1.7, 3.0), 0.5));
  for (int m : {0, 1, acc, acc | 1})
    check_real("lognormal", REAL(RngLognormal, m, 0.2, 0.5, -1.0, 2.0),
               law(bm::lognormal(0.2 + std::log(2.0), 0.5), -1.0));
  for (double alpha : {0.4, 1.0, 4.5})
    for (int m : {0, acc})
      check_real("gamma", REAL(RngGamma, m, alpha, 1.0, 2.0), law(bm::gamma_distribution<>(alpha, 2.0), 1.0));
  for (auto pq : {std::pair{0.5, 0.7}, std::pair{2.0, 3.0}, std::pair{0.6, 4.0}})
    for (int m : {0, acc})
      check_real("beta", REAL(RngBeta, m, pq.first, pq.second, -1.0, 2.0),
                 law(bm::beta_distribution<>(pq.first, pq.second), -1.0, 2.0));
}

TEST_F(Dist, GaussianMultivariate) {
  // T lower triangular; the last coordinate mixes all three normals.
  const double a[3] = {1, -2, 0.5}, full[9] = {2, 0, 0, 0.5, 1, 0, -1, 0.3, 0.7}, packed[6] = {2, 0.5, 1, -1, 0.3, 0.7},
               diag[3] = {2, 1, 0.7};
  const double* t[3] = {full, packed, diag};
  const double sd[3] = {std::sqrt(1 + 0.09 + 0.49), std::sqrt(1 + 0.09 + 0.49), 0.7};
  const int nv = n / 3;
  std::vector<double> r(3 * static_cast<size_t>(nv)), last(nv), first(nv);
  for (int storage = 0; storage < 3; ++storage)
    for (int m = 0; m < 3; ++m) {
      SCOPED_TRACE(storage * 10 + m);
      ASSERT_EQ(_vsldRngGaussianMV(m, s.s, nv, r.data(), 3, storage, a, t[storage]), 0);
      double cov = 0;
      for (int i = 0; i < nv; ++i)
        last[i] = r[3 * i + 2], first[i] = r[3 * i], cov += (r[3 * i] - 1) * (r[3 * i + 1] + 2);
      expect_ks(last, [&](double x) { return bm::cdf(bm::normal(0.5, sd[storage]), x); });
      expect_moments(first, 1, 4, 3);
      EXPECT_NEAR(cov / nv, storage == 2 ? 0 : 1.0, 6 * std::sqrt(4 * 1.25 / nv));
    }
}

// ---- integer laws ----
template <class L>
void check_int(const char* what, const std::function<int(int, int*)>& g, const L& law, int lo, int hi) {
  SCOPED_TRACE(what);
  std::vector<int> x(sample_size());
  ASSERT_EQ(g(static_cast<int>(x.size()), x.data()), 0);
  expect_chi2(
      x, [&](int k) { return bm::pdf(law, k); }, lo, hi);
  expect_moments(std::vector<double>(x.begin(), x.end()), bm::mean(law), bm::variance(law), bm::kurtosis(law));
}

// One integer kernel on its parameters.
#define INT(stem, m, ...) [&](int k, int* r) { return _vsliRng##stem(m, s.s, k, r, __VA_ARGS__); }

TEST_F(Dist, Integer) {
  check_int("bernoulli", INT(Bernoulli, 0, 0.3), bm::bernoulli(0.3), 0, 1);
  for (auto [n, p] : {std::pair{20, 0.3}, std::pair{1000, 0.6}, std::pair{100000, 0.001}})
    check_int("binomial", INT(Binomial, 0, n, p), bm::binomial(n, p), 0, n);
  check_int("geometric", INT(Geometric, 0, 0.2), bm::geometric(0.2), 0, 200);
  check_int("hypergeometric", INT(Hypergeometric, 0, 500, 60, 200), bm::hypergeometric(200, 60, 500), 0, 60);
  check_int("negbinomial", INT(Negbinomial, 0, 2.5, 0.3), bm::negative_binomial(2.5, 0.3), 0, 200);
  for (double lambda : {0.7, 3.5, 12.0, 150.0})
    for (int m : {0, 1}) check_int("poisson", INT(Poisson, m, lambda), bm::poisson(lambda), 0, 400);
}

TEST_F(Dist, IntegerUniformAndVaryingMean) {
  std::vector<int> x(n);
  ASSERT_EQ(_vsliRngUniform(0, s.s, n, x.data(), -3, 17), 0);
  expect_chi2(x, flat(20), -3, 16);
  // Means alternate 2 and 50: each half follows its own law.
  std::vector<double> lam(n);
  for (int i = 0; i < n; ++i) lam[i] = i % 2 ? 50 : 2;
  ASSERT_EQ(_vsliRngPoissonV(0, s.s, n, x.data(), lam.data()), 0);
  for (int half : {0, 1}) {
    std::vector<int> y;
    for (int i = half; i < n; i += 2) y.push_back(x[i]);
    expect_chi2(
        y, [&](int k) { return bm::pdf(bm::poisson(half ? 50 : 2), k); }, 0, 200);
  }
}

// Bits: the top and the bottom byte of every word are uniform on 256 values.
TEST_F(Dist, Bits) {
  std::vector<unsigned> w(n);
  std::vector<unsigned long long> w64(n / 2);
  ASSERT_EQ(_vsliRngUniformBits32(0, s.s, n, w.data()), 0);
  ASSERT_EQ(_vsliRngUniformBits64(0, s.s, n / 2, w64.data()), 0);
  for (int shift : {0, 24}) {
    std::vector<int> b(n);
    for (int i = 0; i < n; ++i) b[i] = (w[i] >> shift) & 255;
    expect_chi2(b, flat(256), 0, 255);
    for (int i = 0; i < n / 2; ++i) b[i] = (w64[i] >> (shift + 32)) & 255;
    b.resize(n / 2);
    expect_chi2(b, flat(256), 0, 255);
  }
}

// Every pseudo-random generator: uniform doubles by KS, the bits by chi-square.
TEST(Generators, UniformOnEveryGenerator) {
  const int n = sample_size();
  for (int brng : {VSL_BRNG_MCG31, VSL_BRNG_R250, VSL_BRNG_MRG32K3A, VSL_BRNG_MCG59, VSL_BRNG_WH, VSL_BRNG_MT19937,
                   VSL_BRNG_SFMT19937, VSL_BRNG_PHILOX4X32X10, VSL_BRNG_ARS5, VSL_BRNG_NONDETERM}) {
    SCOPED_TRACE(brng >> 20);
    Stream s(brng, {brng == VSL_BRNG_NONDETERM ? unsigned{VSL_BRNG_RDRAND} : 777u});
    if (s.rc) {  // a source this processor lacks
      EXPECT_TRUE(s.rc == VSL_RNG_ERROR_ARS5_NOT_SUPPORTED || s.rc == VSL_RNG_ERROR_NONDETERM_NOT_SUPPORTED);
      continue;
    }
    auto u = s.uniform(n);
    expect_ks(u, [](double x) { return x; });
    expect_moments(u, 0.5, 1.0 / 12, 1.8);
    std::vector<unsigned> w(n);
    ASSERT_EQ(_vsliRngUniformBits32(0, s.s, n, w.data()), 0);
    std::vector<int> b(n);
    for (int i = 0; i < n; ++i) b[i] = w[i] >> 24;
    expect_chi2(b, flat(256), 0, 255);
  }
}

// The accurate flag where the fast forms provably lose, as the share of results
// failing a check: past the support (uniform's b; beta's exact a + b, where 1 + b
// rounds to 1 + 2 ulp), gamma underflowing to a beyond its law, lognormal's exp
// overflowing (log r ~ N(710 + log beta, 1)). The fast share must be above the band.
TEST_F(Dist, AccurateKeepsTheSupport) {
  const int n = 4000;
  const double bd = 0x1.cp-52, bf = 0x1.cp-23;
  // P(beta X < 2^-1075) for X of shape 0.001 and beta 1e300: (2^-1075 / beta)^alpha / G(1 + alpha).
  const double p0 = std::exp(0.001 * (-1075 * M_LN2 - std::log(1e300))) / std::tgamma(1.001);
  auto narrow = [&](auto f) {
    return [=](int m, double* r) {
      std::vector<float> v(n);
      const int rc = f(m, v.data());
      std::copy(v.begin(), v.end(), r);
      return rc;
    };
  };
  struct Row {
    std::function<int(int, double*)> fill;
    std::function<bool(double)> bad;
    double lo, hi;  // the band of the accurate share
  } rows[] = {
      {narrow([&](int m, float* r) { return _vslsRngUniform(m, s.s, n, r, 1.0f, 1.0000001f); }),
       [](double x) { return !(x >= 1 && x < 1.0000001f); }, 0, 0},
      {[&](int m, double* r) { return _vsldRngBeta(m, s.s, n, r, 1.0, 0.05, 1.0, bd); },
       [&](double x) { return !(x >= 1 && x - 1 <= bd); }, 0, 0},
      {narrow([&](int m, float* r) { return _vslsRngBeta(m, s.s, n, r, 1.0f, 0.05f, 1.0f, float(bf)); }),
       [&](double x) { return !(x >= 1 && x - 1 <= bf); }, 0, 0},
      {[&](int m, double* r) { return _vsldRngGamma(m, s.s, n, r, 0.001, 0.0, 1e300); },
       [](double x) { return x == 0; }, p0 - 0.04, p0 + 0.04},
      {[&](int m, double* r) { return _vsldRngLognormal(m, s.s, n, r, 710.0, 1.0, 0.0, 1e-300); },
       [](double x) { return !(std::abs(std::log(x) - 710 - std::log(1e-300)) < 6); }, 0, 0},
  };
  std::vector<double> r(n);
  for (const Row& row : rows)
    for (int m : {0, VSL_RNG_METHOD_ACCURACY_FLAG}) {
      ASSERT_EQ(row.fill(m, r.data()), 0);
      const double share = std::count_if(r.begin(), r.end(), row.bad) / double(n);
      const bool ok = m ? share >= row.lo && share <= row.hi : share > row.hi + 0.1;
      EXPECT_TRUE(ok) << (m ? "accurate" : "fast") << " row " << &row - rows << ": share " << share;
    }
}

}  // namespace
