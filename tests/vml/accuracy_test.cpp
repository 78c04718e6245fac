// Accuracy of the vector functions on the reference kernel libraries, in ulps
// against MPFR (complex functions: MPC) at 256 bits, for every accuracy mode: HA at most 1 ulp, LA at most
// 4, EP at least half the mantissa bits. Points are spread over each function's
// domain by exponent and mantissa, plus its special values; their number comes
// from QNL_VML_ACCURACY_POINTS (a quick sample by default). Prints the worst
// error per function and mode.
#include <gtest/gtest.h>
#include <mpc.h>
#include <mpfr.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "qnl_vml.h"
#include "test_util.h"

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

using Oracle1 = std::function<void(mpfr_ptr r, mpfr_ptr x)>;
using Oracle2 = std::function<void(mpfr_ptr r, mpfr_ptr x, mpfr_ptr y)>;

Oracle1 mp1(int (*f)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t)) {
  return [f](mpfr_ptr r, mpfr_ptr x) { f(r, x, MPFR_RNDN); };
}
Oracle2 mp2(int (*f)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t)) {
  return [f](mpfr_ptr r, mpfr_ptr x, mpfr_ptr y) { f(r, x, y, MPFR_RNDN); };
}

// Oracles that MPFR has not as one call.
void lgamma_of(mpfr_ptr r, mpfr_ptr x) {
  int sign;
  mpfr_lgamma(r, &sign, x, MPFR_RNDN);
}
void expint1_of(mpfr_ptr r, mpfr_ptr x) {
  mpfr_neg(r, x, MPFR_RNDN), mpfr_eint(r, r, MPFR_RNDN), mpfr_neg(r, r, MPFR_RNDN);
}
void cdfnorm_of(mpfr_ptr r, mpfr_ptr x) {  // erfc(-x / sqrt 2) / 2
  Mp root2;
  mpfr_sqrt_ui(root2, 2, MPFR_RNDN), mpfr_div(r, x, root2, MPFR_RNDN), mpfr_neg(r, r, MPFR_RNDN);
  mpfr_erfc(r, r, MPFR_RNDN), mpfr_div_2ui(r, r, 1, MPFR_RNDN);
}
void erf_of(mpfr_ptr r, mpfr_ptr x) { mpfr_erf(r, x, MPFR_RNDN); }
void erfc_of(mpfr_ptr r, mpfr_ptr x) { mpfr_erfc(r, x, MPFR_RNDN); }
// 1/sqrt(-0) is -inf, as 1/-0 is.
void invsqrt_of(mpfr_ptr r, mpfr_ptr x) {
  mpfr_zero_p(x) ? mpfr_ui_div(r, 1, x, MPFR_RNDN) : mpfr_rec_sqrt(r, x, MPFR_RNDN);
}
void invcbrt_of(mpfr_ptr r, mpfr_ptr x) { mpfr_cbrt(r, x, MPFR_RNDN), mpfr_ui_div(r, 1, r, MPFR_RNDN); }
void pow2o3_of(mpfr_ptr r, mpfr_ptr x) { mpfr_sqr(r, x, MPFR_RNDN), mpfr_cbrt(r, r, MPFR_RNDN); }
void pow3o2_of(mpfr_ptr r, mpfr_ptr x) { mpfr_sqrt(r, x, MPFR_RNDN), mpfr_mul(r, r, x, MPFR_RNDN); }

// The inverse of an increasing or decreasing f: y with f(y) = x, by Newton steps
// on f at 256 bits (the derivative from a difference quotient at a tiny step),
// from the value in r on entry: the value under test, or 0 where that is not
// finite. Beyond f's range of values the inverse is NaN; at its ends, infinite.
Oracle1 inverse(void (*f)(mpfr_ptr, mpfr_ptr)) {
  return [f](mpfr_ptr r, mpfr_ptr x) {
    Mp lo, hi, y, fy, d, h;
    mpfr_set_inf(y, -1), f(lo, y), mpfr_set_inf(y, 1), f(hi, y);
    const bool rising = mpfr_less_p(lo, hi);
    if (mpfr_equal_p(x, lo) || mpfr_equal_p(x, hi)) return mpfr_set_inf(r, mpfr_equal_p(x, hi) ? 1 : -1);
    if (mpfr_nan_p(x) || !mpfr_less_p(rising ? lo : hi, x) || !mpfr_less_p(x, rising ? hi : lo)) return mpfr_set_nan(r);
    mpfr_number_p(r) ? mpfr_set(y, r, MPFR_RNDN) : mpfr_set_ui(y, 0, MPFR_RNDN);
    for (int i = 0; i < 40; ++i) {
      f(fy, y);
      mpfr_sub(fy, fy, x, MPFR_RNDN);
      mpfr_set_ui_2exp(h, 1, -120, MPFR_RNDN);
      mpfr_add(d, y, h, MPFR_RNDN), f(d, d), mpfr_sub(d, d, fy, MPFR_RNDN), mpfr_sub(d, d, x, MPFR_RNDN);
      if (mpfr_zero_p(d)) break;
      mpfr_div(fy, fy, d, MPFR_RNDN), mpfr_mul(fy, fy, h, MPFR_RNDN), mpfr_sub(y, y, fy, MPFR_RNDN);
      mpfr_mul_2si(d, y, -180, MPFR_RNDN);
      if (mpfr_cmpabs(fy, d) <= 0) break;  // converged far below double's precision
    }
    mpfr_set(r, y, MPFR_RNDN);
  };
}

struct RealFunction {
  const char* stem;
  int arity;
  double lo, hi;  // domain sampled (clamped to the type's range)
  Oracle1 f1;
  Oracle2 f2;
  double bound = 0;  // > 0: a tighter bound than the mode's (exact functions: 0.5)
};

std::vector<RealFunction> real_functions() {
  const double big = 1e300;
  auto exact1 = [](const char* stem, Oracle1 f) { return RealFunction{stem, 1, -1e300, 1e300, f, {}, 0.5}; };
  return {
      {"Acos", 1, -1, 1, mp1(mpfr_acos), {}},
      {"Acosh", 1, 1, big, mp1(mpfr_acosh), {}},
      {"Asin", 1, -1, 1, mp1(mpfr_asin), {}},
      {"Asinh", 1, -big, big, mp1(mpfr_asinh), {}},
      {"Atan", 1, -big, big, mp1(mpfr_atan), {}},
      {"Atanh", 1, -1, 1, mp1(mpfr_atanh), {}},
      {"Cbrt", 1, -big, big, mp1(mpfr_cbrt), {}},
      {"Cos", 1, -1e7, 1e7, mp1(mpfr_cos), {}},
      {"Cosh", 1, -710, 710, mp1(mpfr_cosh), {}},
      {"Erf", 1, -6, 6, mp1(mpfr_erf), {}},
      {"Erfc", 1, -6, 27, mp1(mpfr_erfc), {}},
      {"Exp", 1, -745, 709, mp1(mpfr_exp), {}},
      {"Expm1", 1, -40, 709, mp1(mpfr_expm1), {}},
      {"Ln", 1, 0, big, mp1(mpfr_log), {}},
      {"Log10", 1, 0, big, mp1(mpfr_log10), {}},
      {"Log1p", 1, -1, big, mp1(mpfr_log1p), {}},
      {"Sin", 1, -1e7, 1e7, mp1(mpfr_sin), {}},
      {"Sinh", 1, -710, 710, mp1(mpfr_sinh), {}},
      {"Sqrt", 1, 0, big, mp1(mpfr_sqrt), {}},
      {"Tan", 1, -1e7, 1e7, mp1(mpfr_tan), {}},
      {"Tanh", 1, -20, 20, mp1(mpfr_tanh), {}},
      {"TGamma", 1, 1e-300, 171, mp1(mpfr_gamma), {}},
      {"LGamma", 1, 1e-300, big, lgamma_of, {}},
      {"ExpInt1", 1, 1e-300, 700, expint1_of, {}},
      {"CdfNorm", 1, -38, 9, cdfnorm_of, {}},
      {"ErfInv", 1, -1, 1, inverse(erf_of), {}},
      {"ErfcInv", 1, 0, 2, inverse(erfc_of), {}},
      {"CdfNormInv", 1, 0, 1, inverse(cdfnorm_of), {}},
      {"InvSqrt", 1, 0, big, invsqrt_of, {}},
      {"InvCbrt", 1, -big, big, invcbrt_of, {}},
      {"Pow2o3", 1, -big, big, pow2o3_of, {}},
      {"Pow3o2", 1, 0, big, pow3o2_of, {}},
      exact1("Inv", [](mpfr_ptr r, mpfr_ptr x) { mpfr_ui_div(r, 1, x, MPFR_RNDN); }),
      exact1("Sqr", [](mpfr_ptr r, mpfr_ptr x) { mpfr_sqr(r, x, MPFR_RNDN); }),
      exact1("Abs", mp1(mpfr_abs)),
      exact1("Ceil", [](mpfr_ptr r, mpfr_ptr x) { mpfr_ceil(r, x); }),
      exact1("Floor", [](mpfr_ptr r, mpfr_ptr x) { mpfr_floor(r, x); }),
      exact1("Trunc", [](mpfr_ptr r, mpfr_ptr x) { mpfr_trunc(r, x); }),
      exact1("Round", [](mpfr_ptr r, mpfr_ptr x) { mpfr_round(r, x); }),
      exact1("Rint", mp1(mpfr_rint)),
      exact1("NearbyInt", mp1(mpfr_rint)),
      exact1("Frac", mp1(mpfr_frac)),
      {"Add", 2, -big, big, {}, mp2(mpfr_add), 0.5},
      {"Sub", 2, -big, big, {}, mp2(mpfr_sub), 0.5},
      {"Mul", 2, -1e150, 1e150, {}, mp2(mpfr_mul), 0.5},
      {"Div", 2, -1e150, 1e150, {}, mp2(mpfr_div), 0.5},
      {"Atan2", 2, -big, big, {}, mp2(mpfr_atan2)},
      {"Hypot", 2, -1e150, 1e150, {}, mp2(mpfr_hypot)},
      {"Pow", 2, 0, 30, {}, mp2(mpfr_pow)},
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

template <class T>
void real_accuracy() {
  const int n = sample_size();
  const char t = Traits<T>::letter;
  vmlClearErrStatus();  // also links the facade, whose entries the loop finds by name
  std::printf("%-12s %-3s %12s %12s %12s\n", "function", "", "HA", "LA", "EP");
  for (const RealFunction& f : real_functions()) {
    std::vector<T> a = points<T>(f.lo, f.hi, n, 1), b;
    if (f.arity == 2) {
      b = points<T>(f.stem == std::string("Pow") ? -40 : f.lo, f.stem == std::string("Pow") ? 40 : f.hi, n, 2);
      b.resize(a.size());
    }
    std::string name = std::string("vm") + t + f.stem;
    void* fn = qnl_test::exported(name.c_str());
    ASSERT_NE(fn, nullptr) << name;
    double worst[3] = {0, 0, 0};
    for (int m = 0; m < 3; ++m) {
      const int mode = kModes[m].bits | VML_ERRMODE_IGNORE;
      std::vector<T> y(a.size());
      if (f.arity == 1)
        reinterpret_cast<void (*)(int, const T*, T*, int)>(fn)(static_cast<int>(a.size()), a.data(), y.data(), mode);
      else
        reinterpret_cast<void (*)(int, const T*, const T*, T*, int)>(fn)(static_cast<int>(a.size()), a.data(), b.data(),
                                                                         y.data(), mode);
      const double bound = f.bound > 0 ? f.bound : mode_bound<T>(kModes[m].bits);
      int reported = 0;
      for (size_t i = 0; i < a.size(); ++i) {
        // r starts at the value under test: the inverse functions solve from there.
        Mp x(a[i]), r(static_cast<double>(y[i]));
        if (f.arity == 1) {
          f.f1(r, x);
        } else {
          Mp z(b[i]);
          f.f2(r, x, z);
        }
        double e = ulps(y[i], r);
        if (e > bound && reported++ < 3)
          ADD_FAILURE() << name << " " << kModes[m].name << " a=" << a[i] << (f.arity == 2 ? " b=" : "")
                        << (f.arity == 2 ? b[i] : T(0)) << " y=" << y[i] << " exact=" << mpfr_get_d(r, MPFR_RNDN)
                        << " ulps=" << e << " bound=" << bound;
        worst[m] = std::max(worst[m], e);
      }
    }
    std::printf("v%c%-10s     %12.3g %12.3g %12.3g\n", t, f.stem, worst[0], worst[1], worst[2]);
  }
}

TEST(VmlAccuracy, RealSingle) { real_accuracy<float>(); }
TEST(VmlAccuracy, RealDouble) { real_accuracy<double>(); }

// Complex functions against MPC. The error of a complex result is that of its
// worse part in ulps of its larger part; exact functions must be within 0.5.
// Arguments have finite parts (zeros, subnormals and the range's edges among
// them) and results that do not overflow; infinite and NaN parts are the error
// tests' business.
using MpcOp = std::function<void(mpc_ptr r, mpc_ptr x, mpc_ptr z)>;
struct ComplexFunction {
  const char* stem;
  int arity;      // 0: real to complex (CIS), 1, 2; 3: complex to real (Abs, Arg)
  double lo, hi;  // range of both parts: hi > 0 a power of the largest finite value, < 0 of its log
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
  return {
      {"Acos", 1, -1, wide, mpc1(mpc_acos)},
      {"Acosh", 1, -1, wide, mpc1(mpc_acosh)},
      {"Asin", 1, -1, wide, mpc1(mpc_asin)},
      {"Asinh", 1, -1, wide, mpc1(mpc_asinh)},
      {"Atan", 1, -1, wide, mpc1(mpc_atan)},
      {"Atanh", 1, -1, wide, mpc1(mpc_atanh)},
      {"Conj", 1, -1, wide, mpc1(mpc_conj), 0.5},
      {"Cos", 1, -1, grow, mpc1(mpc_cos)},
      {"Cosh", 1, -1, grow, mpc1(mpc_cosh)},
      {"Exp", 1, -1, grow, mpc1(mpc_exp)},
      {"Ln", 1, -1, wide, mpc1(mpc_log)},
      {"Log10", 1, -1, wide, mpc1(mpc_log10)},
      {"Sin", 1, -1, grow, mpc1(mpc_sin)},
      {"Sinh", 1, -1, grow, mpc1(mpc_sinh)},
      {"Sqrt", 1, -1, wide, mpc1(mpc_sqrt)},
      {"Tan", 1, -1, grow, mpc1(mpc_tan)},
      {"Tanh", 1, -1, grow, mpc1(mpc_tanh)},
      {"Add", 2, -1, wide, mpc2(mpc_add), 0.5},
      {"Sub", 2, -1, wide, mpc2(mpc_sub), 0.5},
      {"Mul", 2, -1, mul, mpc2(mpc_mul)},
      {"MulByConj", 2, -1, mul,
       [](mpc_ptr r, mpc_ptr x, mpc_ptr z) {
         mpc_conj(z, z, MPC_RNDNN);
         mpc_mul(r, x, z, MPC_RNDNN);
       }},
      {"Div", 2, -1, mul, mpc2(mpc_div)},
      {"Pow", 2, -1, -0.02, mpc2(mpc_pow)},  // |parts| below 0.02 log(max): the power stays finite
      {"Abs", 3, -1, mul, [](mpc_ptr r, mpc_ptr x, mpc_ptr) { mpc_abs(mpc_realref(r), x, MPFR_RNDN); }},
      {"Arg", 3, -1, wide, [](mpc_ptr r, mpc_ptr x, mpc_ptr) { mpc_arg(mpc_realref(r), x, MPFR_RNDN); }},
      {"CIS", 0, -1, -1e-2,  // arguments to 0.01 log(max) ~ 7 (float) and 7e0 (double)
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
  const int n = sample_size();
  const char t = std::is_same_v<T, float> ? 'c' : 'z';
  vmlClearErrStatus();
  std::printf("%-12s %-3s %12s %12s %12s\n", "function", "", "HA", "LA", "EP");
  for (const ComplexFunction& f : complex_functions()) {
    const double top = f.hi > 0 ? std::pow(double(std::numeric_limits<T>::max()), f.hi)
                                : -f.hi * std::log(double(std::numeric_limits<T>::max()));
    std::vector<T> re = points<T>(-top, top, n, 3), im = points<T>(-top, top, n, 4);
    std::vector<C> a, b;
    for (size_t i = 0; i < std::min(re.size(), im.size()); ++i)
      if (std::isfinite(re[i]) && std::isfinite(im[i])) {
        a.emplace_back(re[i], im[i]);
        b.emplace_back(im[(i * 7 + 3) % im.size()], re[(i * 5 + 1) % re.size()]);
        if (!std::isfinite(b.back().real()) || !std::isfinite(b.back().imag())) b.back() = C(T(0.75), T(-1.5));
      }
    const int count = static_cast<int>(a.size());
    std::string name = std::string("vm") + t + f.stem;
    void* fn = qnl_test::exported(name.c_str());
    ASSERT_NE(fn, nullptr) << name;
    double worst[3] = {0, 0, 0};
    for (int m = 0; m < 3; ++m) {
      const int mode = kModes[m].bits | VML_ERRMODE_IGNORE;
      std::vector<C> y(a.size());
      std::vector<T> ar(a.size()), yr(a.size());
      for (size_t i = 0; i < a.size(); ++i) ar[i] = a[i].real();
      if (f.arity == 0)
        reinterpret_cast<void (*)(int, const T*, C*, int)>(fn)(count, ar.data(), y.data(), mode);
      else if (f.arity == 1)
        reinterpret_cast<void (*)(int, const C*, C*, int)>(fn)(count, a.data(), y.data(), mode);
      else if (f.arity == 2)
        reinterpret_cast<void (*)(int, const C*, const C*, C*, int)>(fn)(count, a.data(), b.data(), y.data(), mode);
      else
        reinterpret_cast<void (*)(int, const C*, T*, int)>(fn)(count, a.data(), yr.data(), mode);
      const double bound = f.bound > 0 ? f.bound : mode_bound<T>(kModes[m].bits);
      int reported = 0;
      for (size_t i = 0; i < a.size(); ++i) {
        mpc_t x, z, r;
        for (mpc_ptr v : {x, z, r}) mpc_init2(v, kPrec);
        mpc_set_d_d(x, f.arity == 0 ? static_cast<double>(ar[i]) : static_cast<double>(a[i].real()),
                    f.arity == 0 ? 0.0 : static_cast<double>(a[i].imag()), MPC_RNDNN);
        mpc_set_d_d(z, b[i].real(), b[i].imag(), MPC_RNDNN);
        mpc_set_ui(r, 0, MPC_RNDNN);
        f.f(r, x, z);
        const double e = f.arity == 3 ? complex_ulps(yr[i], T(0), r) : complex_ulps(y[i].real(), y[i].imag(), r);
        for (mpc_ptr v : {x, z, r}) mpc_clear(v);
        if (e > bound && reported++ < 3)
          ADD_FAILURE() << name << " " << kModes[m].name << " a=" << a[i] << " b=" << b[i]
                        << " y=" << (f.arity == 3 ? C(yr[i]) : y[i]) << " ulps=" << e << " bound=" << bound;
        worst[m] = std::max(worst[m], e);
      }
    }
    std::printf("v%c%-10s     %12.3g %12.3g %12.3g\n", t, f.stem, worst[0], worst[1], worst[2]);
  }
}

TEST(VmlAccuracy, ComplexSingle) { complex_accuracy<float>(); }
TEST(VmlAccuracy, ComplexDouble) { complex_accuracy<double>(); }

}  // namespace
