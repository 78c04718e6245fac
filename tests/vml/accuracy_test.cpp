// Accuracy of every vector function of the generated list on the reference kernel
// libraries, in ulps against MPFR (complex functions: MPC) at 256 bits, in every
// accuracy mode: HA at most 1 ulp, LA at most 4, EP at least half the mantissa
// bits, exact functions half an ulp. Points are spread over each function's domain
// by exponent and mantissa, plus its special values; QNL_VML_ACCURACY_POINTS sets
// their number (a sample by default). Every call runs on arrays off the alignment
// of any vector width, and once more in place, which must give the same bits.
// Prints the worst error per function and mode as a table.
#include <gtest/gtest.h>
#include <mpc.h>
#include <mpfr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "qnl_vml.h"
#include "test_util.h"
#include "vml_cases.inc"

namespace {

constexpr mpfr_prec_t kPrec = 256;

struct Mp {
  mpfr_t v;
  Mp() { mpfr_init2(v, kPrec); }
  explicit Mp(double x) : Mp() { mpfr_set_d(v, x, MPFR_RNDN); }
  ~Mp() { mpfr_clear(v); }
  Mp(const Mp&) = delete;
  operator mpfr_ptr() { return v; }
};

// r = f(x, z): z is the second argument, or the scalar of a power with a scalar.
using Oracle = std::function<void(mpfr_ptr r, mpfr_ptr x, mpfr_ptr z)>;

Oracle mp1(int (*f)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t)) {
  return [f](mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { f(r, x, MPFR_RNDN); };
}
Oracle mp2(int (*f)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t)) {
  return [f](mpfr_ptr r, mpfr_ptr x, mpfr_ptr z) { f(r, x, z, MPFR_RNDN); };
}
Oracle exact(int (*f)(mpfr_ptr, mpfr_srcptr)) {
  return [f](mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { f(r, x); };
}

// Oracles that MPFR has not as one call.
void lgamma_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) {
  int sign;
  mpfr_lgamma(r, &sign, x, MPFR_RNDN);
}
void expint1_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) {
  mpfr_neg(r, x, MPFR_RNDN), mpfr_eint(r, r, MPFR_RNDN), mpfr_neg(r, r, MPFR_RNDN);
}
void cdfnorm_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) {  // erfc(-x / sqrt 2) / 2
  Mp root2;
  mpfr_sqrt_ui(root2, 2, MPFR_RNDN), mpfr_div(r, x, root2, MPFR_RNDN), mpfr_neg(r, r, MPFR_RNDN);
  mpfr_erfc(r, r, MPFR_RNDN), mpfr_div_2ui(r, r, 1, MPFR_RNDN);
}
void erf_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { mpfr_erf(r, x, MPFR_RNDN); }
void erfc_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { mpfr_erfc(r, x, MPFR_RNDN); }
// 1/sqrt(-0) is -inf, as 1/-0 is.
void invsqrt_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) {
  mpfr_zero_p(x) ? mpfr_ui_div(r, 1, x, MPFR_RNDN) : mpfr_rec_sqrt(r, x, MPFR_RNDN);
}
void invcbrt_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { mpfr_cbrt(r, x, MPFR_RNDN), mpfr_ui_div(r, 1, r, MPFR_RNDN); }
void pow2o3_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { mpfr_sqr(r, x, MPFR_RNDN), mpfr_cbrt(r, r, MPFR_RNDN); }
void pow3o2_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { mpfr_sqrt(r, x, MPFR_RNDN), mpfr_mul(r, r, x, MPFR_RNDN); }
void inv_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { mpfr_ui_div(r, 1, x, MPFR_RNDN); }
void sqr_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) { mpfr_sqr(r, x, MPFR_RNDN); }
// The fraction of an infinity is a zero of its sign, as the C library's modf has it.
void modf_fraction_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr) {
  mpfr_inf_p(x) ? mpfr_set_zero(r, mpfr_sgn(x)) : static_cast<void>(mpfr_frac(r, x, MPFR_RNDN));
}

// The scalars of the linear fraction, and those of the powers with a scalar (one
// call per scalar): values of float, so that both precisions and the oracle see them alike.
constexpr float kFraction[4] = {1.1f, -0.3f, -2.7f, 0.9f};
constexpr float kExponents[] = {0.5f, -1.5f, 3.0f, 7.25f, -17.0f, 1 / 3.0f};
constexpr std::complex<float> kComplexExponents[] = {{2, 0}, {0.5f, -1.25f}, {-1.5f, 0.75f}, {3, 0.1f}};

void linear_fraction_of(mpfr_ptr r, mpfr_ptr x, mpfr_ptr z) {
  Mp den;
  mpfr_mul_d(r, x, kFraction[0], MPFR_RNDN), mpfr_add_d(r, r, kFraction[1], MPFR_RNDN);
  mpfr_mul_d(den, z, kFraction[2], MPFR_RNDN), mpfr_add_d(den, den, kFraction[3], MPFR_RNDN);
  mpfr_div(r, r, den, MPFR_RNDN);
}

// The inverse of an increasing or decreasing f: y with f(y) = x, by Newton steps
// on f at 256 bits (the derivative from a difference quotient at a tiny step),
// from the value in r on entry: the value under test, or 0 where that is not
// finite. Beyond f's range of values the inverse is NaN; at its ends, infinite.
Oracle inverse(void (*f)(mpfr_ptr, mpfr_ptr, mpfr_ptr)) {
  return [f](mpfr_ptr r, mpfr_ptr x, mpfr_ptr) {
    Mp lo, hi, y, fy, d, h;
    mpfr_set_inf(y, -1), f(lo, y, nullptr), mpfr_set_inf(y, 1), f(hi, y, nullptr);
    const bool rising = mpfr_less_p(lo, hi);
    if (mpfr_equal_p(x, lo) || mpfr_equal_p(x, hi)) return mpfr_set_inf(r, mpfr_equal_p(x, hi) ? 1 : -1);
    if (mpfr_nan_p(x) || !mpfr_less_p(rising ? lo : hi, x) || !mpfr_less_p(x, rising ? hi : lo)) return mpfr_set_nan(r);
    mpfr_number_p(r) ? mpfr_set(y, r, MPFR_RNDN) : mpfr_set_ui(y, 0, MPFR_RNDN);
    for (int i = 0; i < 40; ++i) {
      f(fy, y, nullptr);
      mpfr_sub(fy, fy, x, MPFR_RNDN);
      mpfr_set_ui_2exp(h, 1, -120, MPFR_RNDN);
      mpfr_add(d, y, h, MPFR_RNDN), f(d, d, nullptr), mpfr_sub(d, d, fy, MPFR_RNDN), mpfr_sub(d, d, x, MPFR_RNDN);
      if (mpfr_zero_p(d)) break;
      mpfr_div(fy, fy, d, MPFR_RNDN), mpfr_mul(fy, fy, h, MPFR_RNDN), mpfr_sub(y, y, fy, MPFR_RNDN);
      mpfr_mul_2si(d, y, -180, MPFR_RNDN);
      if (mpfr_cmpabs(fy, d) <= 0) break;  // converged far below double's precision
    }
    mpfr_set(r, y, MPFR_RNDN);
  };
}

// A real function's oracle and where its points lie.
struct RealFunction {
  const char* stem;
  double lo, hi;  // the first argument's range (clamped to the type's)
  Oracle f;
  double bound = 0;         // > 0: tighter than the mode's (exact functions: 0.5)
  Oracle second = {};       // the second result of a function with two
  double blo = 0, bhi = 0;  // the second argument's range, where it is not the first's
};

std::vector<RealFunction> real_functions() {
  const double big = 1e300, all = 1e300, trig = 1e7;
  return {
      {"Acos", -1, 1, mp1(mpfr_acos)},
      {"Acosh", 1, big, mp1(mpfr_acosh)},
      {"Asin", -1, 1, mp1(mpfr_asin)},
      {"Asinh", -big, big, mp1(mpfr_asinh)},
      {"Atan", -big, big, mp1(mpfr_atan)},
      {"Atanh", -1, 1, mp1(mpfr_atanh)},
      {"Cbrt", -big, big, mp1(mpfr_cbrt)},
      {"Cos", -trig, trig, mp1(mpfr_cos)},
      {"Cosh", -710, 710, mp1(mpfr_cosh)},
      {"Erf", -6, 6, erf_of},
      {"Erfc", -6, 27, erfc_of},
      {"Exp", -745, 709, mp1(mpfr_exp)},
      {"Expm1", -40, 709, mp1(mpfr_expm1)},
      {"Ln", 0, big, mp1(mpfr_log)},
      {"Log10", 0, big, mp1(mpfr_log10)},
      {"Log1p", -1, big, mp1(mpfr_log1p)},
      {"Sin", -trig, trig, mp1(mpfr_sin)},
      {"SinCos", -trig, trig, mp1(mpfr_sin), 0, mp1(mpfr_cos)},
      {"Sinh", -710, 710, mp1(mpfr_sinh)},
      {"Sqrt", 0, big, mp1(mpfr_sqrt)},
      {"Tan", -trig, trig, mp1(mpfr_tan)},
      {"Tanh", -20, 20, mp1(mpfr_tanh)},
      {"TGamma", 1e-300, 171, mp1(mpfr_gamma)},
      {"LGamma", 1e-300, big, lgamma_of},
      {"ExpInt1", 1e-300, 700, expint1_of},
      {"CdfNorm", -38, 9, cdfnorm_of},
      {"ErfInv", -1, 1, inverse(erf_of)},
      {"ErfcInv", 0, 2, inverse(erfc_of)},
      {"CdfNormInv", 0, 1, inverse(cdfnorm_of)},
      {"InvSqrt", 0, big, invsqrt_of},
      {"InvCbrt", -big, big, invcbrt_of},
      {"Pow2o3", -big, big, pow2o3_of},
      {"Pow3o2", 0, big, pow3o2_of},
      {"Inv", -all, all, inv_of, 0.5},
      {"Sqr", -all, all, sqr_of, 0.5},
      {"Abs", -all, all, mp1(mpfr_abs), 0.5},
      {"Ceil", -all, all, exact(mpfr_ceil), 0.5},
      {"Floor", -all, all, exact(mpfr_floor), 0.5},
      {"Trunc", -all, all, exact(mpfr_trunc), 0.5},
      {"Round", -all, all, exact(mpfr_round), 0.5},
      {"Rint", -all, all, mp1(mpfr_rint), 0.5},
      {"NearbyInt", -all, all, mp1(mpfr_rint), 0.5},
      {"Frac", -all, all, mp1(mpfr_frac), 0.5},
      {"Modf", -all, all, exact(mpfr_trunc), 0.5, modf_fraction_of},
      {"Add", -big, big, mp2(mpfr_add), 0.5},
      {"Sub", -big, big, mp2(mpfr_sub), 0.5},
      {"Mul", -1e150, 1e150, mp2(mpfr_mul), 0.5},
      {"Div", -1e150, 1e150, mp2(mpfr_div), 0.5},
      {"Atan2", -big, big, mp2(mpfr_atan2)},
      {"Hypot", -1e150, 1e150, mp2(mpfr_hypot)},
      {"Pow", 0, 30, mp2(mpfr_pow), 0, {}, -40, 40},
      {"Powx", 0, 30, mp2(mpfr_pow)},               // the scalars are kExponents
      {"LinearFrac", -10, 10, linear_fraction_of},  // cancels near 0.27 above and 0.33 below
  };
}

template <class T>
struct Traits;
template <>
struct Traits<float> {
  static constexpr char letter = 's';
  static constexpr int p = 24, emin = -149;
};
template <>
struct Traits<double> {
  static constexpr char letter = 'd';
  static constexpr int p = 53, emin = -1074;
};

// |got - exact| in ulps of T at the binary exponent e (subnormal ulps below the normal range).
template <class T>
double ulps_at(T got, mpfr_ptr exact, long e) {
  Mp d;
  mpfr_set_d(d, static_cast<double>(got), MPFR_RNDN);
  mpfr_sub(d, d, exact, MPFR_RNDN);
  mpfr_div_2si(d, d, std::max<long>(e - Traits<T>::p, Traits<T>::emin), MPFR_RNDN);
  return std::fabs(mpfr_get_d(d, MPFR_RNDN));
}

// Error of y in ulps of the exact value, in the format of T.
template <class T>
double ulps(T y, mpfr_ptr exact) {
  if (mpfr_nan_p(exact)) return std::isnan(y) ? 0 : INFINITY;
  if (std::isnan(y)) return INFINITY;
  const double big = std::numeric_limits<T>::max();
  if (mpfr_inf_p(exact) || mpfr_get_d(exact, MPFR_RNDZ) > big) {
    return std::isinf(y) && (y > 0) == (mpfr_sgn(exact) > 0) ? 0 : INFINITY;
  }
  if (mpfr_get_d(exact, MPFR_RNDZ) < -big) return std::isinf(y) && y < 0 ? 0 : INFINITY;
  if (std::isinf(y)) {
    // Rounded to T the exact value overflows exactly when y may be infinite.
    double e = mpfr_get_d(exact, MPFR_RNDN);
    return static_cast<T>(e) == y ? 0 : INFINITY;
  }
  return ulps_at(y, exact, mpfr_zero_p(exact) ? Traits<T>::emin + Traits<T>::p : mpfr_get_exp(exact));
}

// Points over [lo, hi]: random exponents and mantissas, both signs where the
// domain has them, plus the special values and the domain's edges.
template <class T>
std::vector<T> points(double lo, double hi, int n, unsigned seed) {
  const double tmax = std::numeric_limits<T>::max();
  lo = std::max(lo, -tmax);
  hi = std::min(hi, tmax);
  const T inf = std::numeric_limits<T>::infinity();
  std::vector<T> v = {std::numeric_limits<T>::quiet_NaN()};
  // Special values inside the domain; the infinities where it is unbounded.
  for (T x : {T(0), -T(0), T(1), T(-1), T(0.5), T(2), std::numeric_limits<T>::denorm_min(),
              std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), -std::numeric_limits<T>::max(), T(lo),
              T(hi), lo <= -1e300 ? -inf : T(lo), hi >= 1e300 ? inf : T(hi)})
    if ((x >= lo && x <= hi) || std::isinf(x)) v.push_back(x);
  std::mt19937_64 rng(seed);
  const double amax = std::max(std::fabs(lo), std::fabs(hi));
  const int emax = static_cast<int>(std::ceil(std::log2(amax))) + 1;
  std::uniform_int_distribution<int> ex(Traits<T>::emin, emax);
  std::uniform_real_distribution<double> mant(1, 2), uni(lo, hi);
  while (static_cast<int>(v.size()) < n) {
    double x = (rng() & 1) ? uni(rng) : std::ldexp(mant(rng), ex(rng)) * ((rng() & 2) ? -1 : 1);
    if (x >= lo && x <= hi) v.push_back(static_cast<T>(x));
  }
  return v;
}

int sample_size() {
  const char* s = std::getenv("QNL_VML_ACCURACY_POINTS");
  return s ? std::atoi(s) : 1000;
}

struct Mode {
  const char* name;
  int bits;
};
const Mode kModes[] = {{"HA", VML_HA}, {"LA", VML_LA}, {"EP", VML_EP}};

template <class T>
double mode_bound(int mode) {
  if (mode == VML_HA) return 1.0;
  if (mode == VML_LA) return 4.0;
  return std::ldexp(1.0, Traits<T>::p / 2);
}

// Arrays at an address off every vector width's alignment (their element's own is kept).
template <class E>
struct Offset {
  std::vector<unsigned char> bytes;
  E* p;
  explicit Offset(const std::vector<E>& v) : bytes(v.size() * sizeof(E) + 128) {
    const uintptr_t base = (reinterpret_cast<uintptr_t>(bytes.data()) + 63) & ~uintptr_t{63};
    p = reinterpret_cast<E*>(base + alignof(E));
    if (!v.empty()) std::memcpy(static_cast<void*>(p), v.data(), v.size() * sizeof(E));
  }
  std::vector<E> values(size_t n) const { return std::vector<E>(p, p + n); }
};

template <class E>
bool same_bits(const std::vector<E>& x, const E* y) {
  return std::memcmp(x.data(), y, x.size() * sizeof(E)) == 0;
}

// Calls the mode form of a function on whole arrays; a power with a scalar once per
// run of equal scalars in b. Shapes by the letters of the arguments after n.
template <class E, class R>
void call(const VmlCase& c, int n, const E* a, const E* b, const R* ar, E* y, E* z, R* yr, int mode) {
  const std::string name = std::string("vm") + (c.name + 1), shape = c.args;
  void* fn = qnl_test::exported(name.c_str());
  ASSERT_NE(fn, nullptr) << name;
  if (shape == "ey") {
    reinterpret_cast<void (*)(int, const E*, E*, int)>(fn)(n, a, y, mode);
  } else if (shape == "eey") {
    reinterpret_cast<void (*)(int, const E*, const E*, E*, int)>(fn)(n, a, b, y, mode);
  } else if (shape == "eyy") {
    reinterpret_cast<void (*)(int, const E*, E*, E*, int)>(fn)(n, a, y, z, mode);
  } else if (shape == "eay") {
    for (int lo = 0, hi; lo < n; lo = hi) {
      for (hi = lo + 1; hi < n && b[hi] == b[lo];) ++hi;
      reinterpret_cast<void (*)(int, const E*, E, E*, int)>(fn)(hi - lo, a + lo, b[lo], y + lo, mode);
    }
  } else if (shape == "ew") {
    reinterpret_cast<void (*)(int, const E*, R*, int)>(fn)(n, a, yr, mode);
  } else if (shape == "ry") {
    reinterpret_cast<void (*)(int, const R*, E*, int)>(fn)(n, ar, y, mode);
  } else if (shape == "eeaaaay") {
    if constexpr (std::is_floating_point_v<E>)
      reinterpret_cast<void (*)(int, const E*, const E*, E, E, E, E, E*, int)>(fn)(n, a, b, kFraction[0], kFraction[1],
                                                                                   kFraction[2], kFraction[3], y, mode);
  } else {
    FAIL() << c.name << ": no call for the arguments " << shape;
  }
}

// The arguments of one function, the results of each mode and their worst errors.
template <class E, class R>
struct Run {
  std::vector<E> a, b;
  std::vector<R> ar;
  std::vector<E> y[3], z[3];
  std::vector<R> yr[3];

  // Every mode out of place on offset arrays, and HA once more in place, which
  // must give the same bits; functions between real and complex have no place.
  void compute(const VmlCase& c) {
    const size_t n = std::max(a.size(), ar.size());
    const bool in_place = std::string(c.args).find_first_of("rw") == std::string::npos;
    Offset<E> oa(a), ob(b);
    Offset<R> oar(ar);
    for (int m = 0; m < 3; ++m) {
      Offset<E> oy{std::vector<E>(n)}, oz{std::vector<E>(n)};
      Offset<R> oyr{std::vector<R>(n)};
      call(c, static_cast<int>(n), oa.p, ob.p, oar.p, oy.p, oz.p, oyr.p, kModes[m].bits | VML_ERRMODE_IGNORE);
      y[m] = oy.values(n), z[m] = oz.values(n), yr[m] = oyr.values(n);
    }
    if (!in_place) return;
    Offset<E> again(a), oz{std::vector<E>(n)};
    call(c, static_cast<int>(n), again.p, ob.p, oar.p, again.p, oz.p, static_cast<R*>(nullptr),
         VML_HA | VML_ERRMODE_IGNORE);
    EXPECT_TRUE(same_bits(y[0], again.p)) << c.name << " in place";
    if (c.args == std::string("eyy")) {
      EXPECT_TRUE(same_bits(z[0], oz.p)) << c.name << " in place, second result";
    }
  }
};

// The worst error of each mode, the run failing where a mode's bound is broken
// (the first three cases of each shown, `describe` telling the arguments).
template <class T>
struct Worst {
  const char* name;
  double bound;  // > 0: tighter than the modes' (exact functions: 0.5)
  std::array<double, 3> worst{};
  int reported[3] = {0, 0, 0};
  template <class D>
  void add(int m, double e, D describe) {
    worst[m] = std::max(worst[m], e);
    const double b = bound > 0 ? bound : mode_bound<T>(kModes[m].bits);
    if (e > b && reported[m]++ < 3) {
      std::ostringstream what;
      what << std::setprecision(17);
      describe(what);
      ADD_FAILURE() << name << " " << kModes[m].name << " " << what.str() << " ulps=" << e << " bound=" << b;
    }
  }
};

// Every function of type letter t that computes, with its oracle, as a row of the
// table of worst errors that `measure` returns; a function without an oracle fails.
template <class O, class M>
void each_function(char t, const std::vector<O>& oracles, M measure) {
  for (const VmlCase& c : kVmlCases) {
    if (c.name[1] != t || !*c.threader) continue;  // pack and unpack compute nothing
    const std::string stem = c.name + 2;
    auto f = std::find_if(oracles.begin(), oracles.end(), [&](const O& o) { return stem == o.stem; });
    if (f == oracles.end()) {
      ADD_FAILURE() << c.name << " has no oracle";
      continue;
    }
    const std::array<double, 3> worst = measure(c, stem, &*f);
    std::printf("| %-12s | %9.3g | %9.3g | %9.3g |\n", c.name, worst[0], worst[1], worst[2]);
  }
}
void print_head(const char* what, int points) {
  vmlClearErrStatus();  // also links the facade, whose entries are found by name
  std::printf("\n%s, about %d points per function: worst error in ulps\n\n", what, points);
  std::printf("| %-12s | %9s | %9s | %9s |\n|---|---|---|---|\n", "function", "HA", "LA", "EP");
}

template <class T>
void real_accuracy() {
  const char t = Traits<T>::letter;
  const int n = sample_size();
  print_head(t == 's' ? "Real single" : "Real double", n);
  each_function(t, real_functions(), [&](const VmlCase& c, const std::string& stem, const RealFunction* f) {
    Run<T, T> run;
    run.a = points<T>(f->lo, f->hi, n, 1);
    run.b = points<T>(f->bhi > f->blo ? f->blo : f->lo, f->bhi > f->blo ? f->bhi : f->hi, n, 2);
    run.b.resize(run.a.size());
    if (stem == "Powx")
      for (size_t i = 0; i < run.b.size(); ++i) run.b[i] = kExponents[i * std::size(kExponents) / run.b.size()];
    run.compute(c);
    Worst<T> w{c.name, f->bound};
    for (size_t i = 0; i < run.a.size(); ++i) {
      // r starts at the HA result: the inverse functions solve from there.
      Mp x(run.a[i]), z(run.b[i]), r(run.y[0][i]), r2;
      f->f(r, x, z);
      if (f->second) f->second(r2, x, z);
      for (int m = 0; m < 3; ++m) {
        auto describe = [&](std::ostream& o) {
          o << "a=" << run.a[i] << " b=" << run.b[i] << " y=" << run.y[m][i] << " z=" << run.z[m][i];
        };
        w.add(m, ulps(run.y[m][i], r), describe);
        if (f->second) w.add(m, ulps(run.z[m][i], r2), describe);
      }
    }
    return w.worst;
  });
}

TEST(VmlAccuracy, RealSingle) { real_accuracy<float>(); }
TEST(VmlAccuracy, RealDouble) { real_accuracy<double>(); }

// Complex functions against MPC. The error of a complex result is that of its
// worse part in ulps of its larger part. Arguments have finite parts (zeros,
// subnormals and the range's edges among them) and results that do not
// overflow; infinite and NaN parts are the error tests' business.
using MpcOp = std::function<void(mpc_ptr r, mpc_ptr x, mpc_ptr z)>;
struct ComplexFunction {
  const char* stem;
  double hi;  // range of both parts: > 0 a power of the largest finite value, < 0 a multiple of its log
  MpcOp f;
  double bound = 0;  // > 0: tighter than the mode's
};

MpcOp mpc1(int (*f)(mpc_ptr, mpc_srcptr, mpc_rnd_t)) {
  return [f](mpc_ptr r, mpc_ptr x, mpc_ptr) { f(r, x, MPC_RNDNN); };
}
MpcOp mpc2(int (*f)(mpc_ptr, mpc_srcptr, mpc_srcptr, mpc_rnd_t)) {
  return [f](mpc_ptr r, mpc_ptr x, mpc_ptr z) { f(r, x, z, MPC_RNDNN); };
}

std::vector<ComplexFunction> complex_functions() {
  const double wide = 1, mul = 0.45, grow = -0.97;  // grow: |parts| < 0.97 log(max): exp-like
  const double power = -0.02;                       // |parts| below 0.02 log(max): the power stays finite
  return {
      {"Acos", wide, mpc1(mpc_acos)},
      {"Acosh", wide, mpc1(mpc_acosh)},
      {"Asin", wide, mpc1(mpc_asin)},
      {"Asinh", wide, mpc1(mpc_asinh)},
      {"Atan", wide, mpc1(mpc_atan)},
      {"Atanh", wide, mpc1(mpc_atanh)},
      {"Conj", wide, mpc1(mpc_conj), 0.5},
      {"Cos", grow, mpc1(mpc_cos)},
      {"Cosh", grow, mpc1(mpc_cosh)},
      {"Exp", grow, mpc1(mpc_exp)},
      {"Ln", wide, mpc1(mpc_log)},
      {"Log10", wide, mpc1(mpc_log10)},
      {"Sin", grow, mpc1(mpc_sin)},
      {"Sinh", grow, mpc1(mpc_sinh)},
      {"Sqrt", wide, mpc1(mpc_sqrt)},
      {"Tan", grow, mpc1(mpc_tan)},
      {"Tanh", grow, mpc1(mpc_tanh)},
      {"Add", wide, mpc2(mpc_add), 0.5},
      {"Sub", wide, mpc2(mpc_sub), 0.5},
      {"Mul", mul, mpc2(mpc_mul)},
      {"MulByConj", mul,
       [](mpc_ptr r, mpc_ptr x, mpc_ptr z) {
         mpc_conj(z, z, MPC_RNDNN);
         mpc_mul(r, x, z, MPC_RNDNN);
       }},
      {"Div", mul, mpc2(mpc_div)},
      {"Pow", power, mpc2(mpc_pow)},
      {"Powx", power, mpc2(mpc_pow)},  // the scalars are kComplexExponents
      {"Abs", mul, [](mpc_ptr r, mpc_ptr x, mpc_ptr) { mpc_abs(mpc_realref(r), x, MPFR_RNDN); }},
      {"Arg", wide, [](mpc_ptr r, mpc_ptr x, mpc_ptr) { mpc_arg(mpc_realref(r), x, MPFR_RNDN); }},
      {"CIS", -1e-2,  // real arguments to 0.01 log(max): about 0.9 (float) and 7 (double)
       [](mpc_ptr r, mpc_ptr x, mpc_ptr) { mpfr_sin_cos(mpc_imagref(r), mpc_realref(r), mpc_realref(x), MPFR_RNDN); }},
  };
}

// Error of (re, im) in ulps of the larger part of the exact value; -1 when the
// exact value has a part beyond the format's range.
template <class T>
double complex_ulps(T re, T im, mpc_ptr exact) {
  mpfr_ptr parts[2] = {mpc_realref(exact), mpc_imagref(exact)};
  long e = Traits<T>::emin + Traits<T>::p;
  for (mpfr_ptr part : parts) {
    if (!mpfr_number_p(part) || mpfr_cmpabs(part, Mp(std::numeric_limits<T>::max())) > 0) return -1;
    if (!mpfr_zero_p(part)) e = std::max<long>(e, mpfr_get_exp(part));
  }
  if (!std::isfinite(re) || !std::isfinite(im)) return INFINITY;
  return std::max(ulps_at(re, parts[0], e), ulps_at(im, parts[1], e));
}

template <class T>
void complex_accuracy() {
  using C = std::complex<T>;
  const char t = std::is_same_v<T, float> ? 'c' : 'z';
  const int n = sample_size();
  print_head(t == 'c' ? "Complex single" : "Complex double", n);
  each_function(t, complex_functions(), [&](const VmlCase& c, const std::string& stem, const ComplexFunction* f) {
    const double top = f->hi > 0 ? std::pow(double(std::numeric_limits<T>::max()), f->hi)
                                 : -f->hi * std::log(double(std::numeric_limits<T>::max()));
    std::vector<T> re = points<T>(-top, top, n, 3), im = points<T>(-top, top, n, 4);
    Run<C, T> run;
    for (size_t i = 0; i < std::min(re.size(), im.size()); ++i)
      if (std::isfinite(re[i]) && std::isfinite(im[i])) {
        run.a.emplace_back(re[i], im[i]);
        run.ar.push_back(re[i]);
        C b(im[(i * 7 + 3) % im.size()], re[(i * 5 + 1) % re.size()]);
        run.b.push_back(std::isfinite(b.real()) && std::isfinite(b.imag()) ? b : C(T(0.75), T(-1.5)));
      }
    if (stem == "Powx")
      for (size_t i = 0; i < run.b.size(); ++i)
        run.b[i] = C(kComplexExponents[i * std::size(kComplexExponents) / run.b.size()]);
    if (stem != "CIS") run.ar.clear();
    run.compute(c);
    const bool to_real = c.args == std::string("ew");
    Worst<T> w{c.name, f->bound};
    mpc_t x, z, r;
    for (mpc_ptr v : {x, z, r}) mpc_init2(v, kPrec);
    for (size_t i = 0; i < run.a.size(); ++i) {
      mpc_set_d_d(x, run.a[i].real(), stem == "CIS" ? 0.0 : static_cast<double>(run.a[i].imag()), MPC_RNDNN);
      mpc_set_d_d(z, run.b[i].real(), run.b[i].imag(), MPC_RNDNN);
      mpc_set_ui(r, 0, MPC_RNDNN);
      f->f(r, x, z);
      for (int m = 0; m < 3; ++m) {
        const C y = to_real ? C(run.yr[m][i]) : run.y[m][i];
        w.add(m, complex_ulps(y.real(), y.imag(), r),
              [&](std::ostream& o) { o << "a=" << run.a[i] << " b=" << run.b[i] << " y=" << y; });
      }
    }
    for (mpc_ptr v : {x, z, r}) mpc_clear(v);
    return w.worst;
  });
}

TEST(VmlAccuracy, ComplexSingle) { complex_accuracy<float>(); }
TEST(VmlAccuracy, ComplexDouble) { complex_accuracy<double>(); }

}  // namespace
