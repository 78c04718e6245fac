// The reference kernels' own double exp and log, against MPFR, where their
// reductions are hardest: log near 1 and at the edges of the split mantissa,
// exp across the reduced range and at the borders of the range the vector code
// serves, where lanes pass to the scalar code. Run once per kernel build
// (QNL_VML_KERNEL_INDEX, set by ctest), so builds with and without fused
// multiply-add are each measured.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include "qnl_vml.h"

namespace {

// |y - exact| in ulps of exact (subnormal ulp below the normal range).
double ulps(double y, mpfr_t exact) {
  if (mpfr_nan_p(exact)) return std::isnan(y) ? 0 : INFINITY;
  // Beyond the range of double (MPFR's is wider): the rounded value itself.
  const double rounded = mpfr_get_d(exact, MPFR_RNDN);
  if (std::isinf(rounded) || rounded == 0) return rounded == y ? 0 : INFINITY;
  if (!std::isfinite(y)) return INFINITY;
  mpfr_t d;
  mpfr_init2(d, 256);
  mpfr_sub_d(d, exact, y, MPFR_RNDN);
  mpfr_abs(d, d, MPFR_RNDN);
  mpfr_div_2si(d, d, std::max<long>(mpfr_get_exp(exact) - 53, -1074), MPFR_RNDN);
  const double e = mpfr_get_d(d, MPFR_RNDN);
  mpfr_clear(d);
  return e;
}

std::vector<double> exp_points() {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<double> v = {0,
                           -0.0,
                           708,
                           -708,
                           std::nextafter(708, 1000),
                           std::nextafter(-708, -1000),
                           709.78,
                           -745.2,
                           0.5 * std::log(2),
                           -0.5 * std::log(2),
                           INFINITY,
                           -INFINITY,
                           NAN};
  for (int i = 0; i < 60000; ++i) {
    const double t = u(rng);
    v.push_back(i % 3 == 0 ? 720 * t : i % 3 == 1 ? t : std::ldexp(t, -static_cast<int>(rng() % 60)));
  }
  return v;
}

std::vector<double> log_points() {
  std::mt19937_64 rng(12);
  std::uniform_real_distribution<double> u(0, 1);
  const double split = std::sqrt(0.5), min = std::numeric_limits<double>::min();
  std::vector<double> v = {1,
                           split,
                           std::nextafter(split, 0),
                           2 * split,
                           std::nextafter(2 * split, 0),
                           min,
                           std::nextafter(min, 0),
                           std::numeric_limits<double>::max(),
                           0,
                           -1,
                           INFINITY,
                           NAN};
  for (int i = 0; i < 60000; ++i) {
    const double t = u(rng);
    v.push_back(i % 3 == 0   ? 0.5 + 1.5 * t
                : i % 3 == 1 ? 1 + std::ldexp(t - 0.5, -static_cast<int>(rng() % 52))
                             : std::ldexp(1 + t, static_cast<int>(rng() % 2100) - 1075));
  }
  return v;
}

struct Case {
  const char* name;
  void (*fn)(int, const double*, double*, int);
  int (*oracle)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  std::vector<double> (*points)();
};

void worst_ulps(const Case& c) {
  const std::vector<double> a = c.points();
  std::vector<double> y(a.size());
  mpfr_t x, r;
  mpfr_inits2(256, x, r, static_cast<mpfr_ptr>(nullptr));
  for (auto [mode, bound] : {std::pair{VML_HA, 1.0}, {VML_LA, 4.0}, {VML_EP, std::ldexp(1.0, 26)}}) {
    c.fn(static_cast<int>(a.size()), a.data(), y.data(), mode | VML_ERRMODE_IGNORE);
    double worst = 0, at = 0;
    for (size_t i = 0; i < a.size(); ++i) {
      mpfr_set_d(x, a[i], MPFR_RNDN);
      c.oracle(r, x, MPFR_RNDN);
      const double e = ulps(y[i], r);
      if (!(e <= worst)) worst = e, at = a[i];
    }
    EXPECT_LE(worst, bound) << c.name << " mode " << mode << " at " << at;
    std::printf("%s mode %#x: worst %.3g ulp\n", c.name, mode, worst);
  }
  mpfr_clears(x, r, static_cast<mpfr_ptr>(nullptr));
}

bool build_runs_here() {
  const char* index = std::getenv("QNL_VML_KERNEL_INDEX");
  const int i = index ? std::atoi(index) : 0;
  return i < 6 || (i == 6 && __builtin_cpu_supports("avx")) || (i == 7 && __builtin_cpu_supports("avx2")) ||
         (i >= 8 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq"));
}

TEST(VmlExpLog, WithinEachModesBoundWhereTheReductionIsHardest) {
  if (!build_runs_here()) GTEST_SKIP() << "this processor cannot run the kernel build asked for";
  for (const Case& c : {Case{"vdExp", vmdExp, mpfr_exp, exp_points}, Case{"vdLn", vmdLn, mpfr_log, log_points}})
    worst_ulps(c);
}

}  // namespace
