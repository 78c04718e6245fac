// The kernels' own double exp and log against MPFR where their reductions are
// hardest: log near 1 and at the mantissa split, exp across the reduced range and
// at the borders of the range the vector code serves. Run once per kernel build
// (QNL_VML_KERNEL_INDEX, set by ctest): with and without fused multiply-add.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "qnl_vml.h"

namespace {

// |y - exact| in ulps of exact; beyond double's range, the rounded value itself.
double ulps(double y, mpfr_t exact, mpfr_t d) {
  if (mpfr_nan_p(exact)) return std::isnan(y) ? 0 : INFINITY;
  const double rounded = mpfr_get_d(exact, MPFR_RNDN);
  if (std::isinf(rounded) || rounded == 0 || !std::isfinite(y)) return rounded == y ? 0 : INFINITY;
  mpfr_sub_d(d, exact, y, MPFR_RNDN);
  mpfr_div_2si(d, d, std::max<long>(mpfr_get_exp(exact) - 53, -1074), MPFR_RNDN);
  return std::fabs(mpfr_get_d(d, MPFR_RNDN));
}

// Three kinds of point in turn, t uniform in [0, 1), k a random small integer.
std::vector<double> points(bool log, std::vector<double> v) {
  std::mt19937_64 rng(11);
  for (int i = 0; i < 60000; ++i) {
    const double t = std::uniform_real_distribution<double>(0, 1)(rng);
    const int k = static_cast<int>(rng() % 2100);
    const double x[2][3] = {{1440 * (t - 0.5), 2 * t - 1, std::ldexp(t - 0.5, -(k % 60))},
                            {0.5 + 1.5 * t, 1 + std::ldexp(t - 0.5, -(k % 52)), std::ldexp(1 + t, k - 1075)}};
    v.push_back(x[log][i % 3]);
  }
  return v;
}

TEST(VmlExpLog, WithinEachModesBoundWhereTheReductionIsHardest) {
  const char* index = std::getenv("QNL_VML_KERNEL_INDEX");
  const int build = index ? std::atoi(index) : 0;
  if ((build == 7 && !__builtin_cpu_supports("avx2")) || (build >= 8 && !__builtin_cpu_supports("avx512dq")))
    GTEST_SKIP() << "this processor cannot run kernel build " << build;
  const double split = std::sqrt(0.5), min = 0x1p-1022;
  const struct {
    const char* name;
    void (*fn)(int, const double*, double*, int);
    int (*oracle)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
    std::vector<double> a;
  } cases[] = {{"vdExp", vmdExp, mpfr_exp,
                points(false, {0, 708, -708, std::nextafter(708, 800), std::nextafter(-708, -800), 709.78, -745.2,
                               0.5 * std::log(2), INFINITY, -INFINITY, NAN})},
               {"vdLn", vmdLn, mpfr_log,
                points(true, {1, split, std::nextafter(split, 0), 2 * split, std::nextafter(2 * split, 0), min,
                              std::nextafter(min, 0), 0x1.fffffffffffffp1023, 0, -1, INFINITY, NAN})}};
  mpfr_t x, r, d;
  mpfr_inits2(256, x, r, d, static_cast<mpfr_ptr>(nullptr));
  for (const auto& c : cases)
    for (auto [mode, bound] : {std::pair{VML_HA, 1.0}, {VML_LA, 4.0}, {VML_EP, 0x1p26}}) {
      std::vector<double> y(c.a.size());
      c.fn(static_cast<int>(c.a.size()), c.a.data(), y.data(), mode | VML_ERRMODE_IGNORE);
      double worst = 0, at = 0;
      for (size_t i = 0; i < c.a.size(); ++i) {
        mpfr_set_d(x, c.a[i], MPFR_RNDN);
        c.oracle(r, x, MPFR_RNDN);
        const double e = ulps(y[i], r, d);
        if (!(e <= worst)) worst = e, at = c.a[i];
      }
      EXPECT_LE(worst, bound) << c.name << " mode " << mode << " at " << at;
      std::printf("%s mode %#x: worst %.3g ulp\n", c.name, mode, worst);
    }
  mpfr_clears(x, r, d, static_cast<mpfr_ptr>(nullptr));
}

}  // namespace
