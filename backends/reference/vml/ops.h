// The vector functions of the reference kernel libraries, one class per stem:
// how to compute a piece in each accuracy (HA, LA, EP) and which errors its
// results can show. SLEEF computes where it has the function; elsewhere a scalar
// loop does, one precision wider than its result in HA.
#pragma once
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "exp_log.h"
#include "isa.h"
#include "own_kernels.h"

namespace qnl_vml {

enum Accuracy { kHA, kLA, kEP };
// Errors a result can show: NaN from numbers (domain), an infinity from finite
// arguments (singularity or overflow, the class says which), zero or subnormal
// from nonzero finite arguments (underflow).
enum Errors { kNone = 0, kDomain = 1, kInfinite = 2, kUnderflow = 4 };
enum Status { kErrDom = 1, kSing = 2, kOverflow = 3, kUnder = 4 };

// Elements below which a thread of its own does not pay: cheap and costly functions.
constexpr int32_t kCheapPiece = 1 << 16;
constexpr int32_t kCostlyPiece = 1 << 12;

template <class T>
struct Wider;
template <>
struct Wider<float> {
  using type = double;
};
template <>
struct Wider<double> {
  using type = long double;
};
// The type a scalar kernel of accuracy A computes in.
template <class T, int A>
using Work = std::conditional_t<A == kHA, typename Wider<T>::type, T>;

// SLEEF on whole vectors, the tail through a padded vector; then a second pass,
// with no call in its loop so that its constants stay in registers, over the
// arguments and results: lanes that `ok` does not pass are computed again by
// `scalar`, one at a time. Returns whether a result may be out of range (not
// finite, or below the normal range when `underflow`, zero included): only then
// does the caller scan the piece element by element for errors. `a` and `y` must
// not overlap.
template <class T, auto F, class Ok, class Scalar>
bool vmap(int32_t n, const T* a, T* y, bool underflow, Ok ok, Scalar scalar) {
  constexpr int L = kLanes<T>;
  int32_t whole = 0;
  for (; whole + L <= n; whole += L) store(y + whole, F(load(a + whole)));
  T in[L], out[L];
  if (whole < n) {
    for (int k = 0; k < L; ++k) in[k] = whole + k < n ? a[whole + k] : T(1);
    store(out, F(load(in)));
  }
  const G<T> big = G<T>{} + std::numeric_limits<T>::max(),
             low = G<T>{} + (underflow ? std::numeric_limits<T>::min() : T(0));
  Mask<T> in_range = ~Mask<T>{};
  auto test = [&](const T* x, T* r) {
    G<T> gr = lanes(r);
    const Mask<T> pass = ok(lanes(x), gr);
    if (__builtin_expect(!all(pass), 0)) {
      for (int k = 0; k < L; ++k)
        if (!pass[k]) r[k] = scalar(x[k]);
      gr = lanes(r);
    }
    const G<T> m = magnitude<T>(gr);
    in_range &= (m <= big) & (m >= low);
  };
  for (int32_t i = 0; i < whole; i += L) test(a + i, y + i);
  if (whole < n) {
    test(in, out);
    for (int k = 0; whole + k < n; ++k) y[whole + k] = out[k];
  }
  return !all(in_range);
}

// Our own vector kernels, inlined: `kernel` computes a vector and marks the
// lanes it leaves out by a negative value in `left`; those are computed again by
// `scalar`, one at a time. Returns whether a lane was left out: served lanes
// never give a result out of range, so only then does the caller scan the piece
// for errors.
template <class T, class Kernel, class Scalar>
bool vmap_own(int32_t n, const T* a, T* y, Kernel kernel, Scalar scalar) {
  constexpr int L = kLanes<T>;
  bool left_out = false;
  auto one = [&](const T* x, T* r) {
    Mask<T> left;
    const G<T> v = kernel(lanes(x), left);
    std::memcpy(r, &v, sizeof v);
    if (__builtin_expect(any_negative(left), 0)) {
      left_out = true;
      for (int k = 0; k < L; ++k)
        if (left[k] < 0) r[k] = scalar(x[k]);
    }
  };
  int32_t i = 0;
  for (; i + L <= n; i += L) one(a + i, y + i);
  if (i < n) {
    T in[L], out[L];
    for (int k = 0; k < L; ++k) in[k] = i + k < n ? a[i + k] : T(1);
    one(in, out);
    std::memcpy(y + i, out, sizeof(T) * static_cast<size_t>(n - i));
  }
  return left_out;
}

template <class T, auto F>
void vmap2(int32_t n, const T* a, const T* b, T* y) {
  constexpr int L = kLanes<T>;
  int32_t i = 0;
  for (; i + L <= n; i += L) store(y + i, F(load(a + i), load(b + i)));
  if (i < n) {
    T in[L], in2[L], out[L];
    for (int k = 0; k < L; ++k) {
      in[k] = i + k < n ? a[i + k] : T(0.5);
      in2[k] = i + k < n ? b[i + k] : T(0.5);
    }
    store(out, F(load(in), load(in2)));
    for (int k = 0; i + k < n; ++k) y[i + k] = out[k];
  }
}

template <class T, auto F>
void vmap_scalar(int32_t n, const T* a, T b, T* y) {
  constexpr int L = kLanes<T>;
  T bb[L];
  for (T& x : bb) x = b;
  const V<T> vb = load(bb);
  int32_t i = 0;
  for (; i + L <= n; i += L) store(y + i, F(load(a + i), vb));
  if (i < n) {
    T in[L], out[L];
    for (int k = 0; k < L; ++k) in[k] = i + k < n ? a[i + k] : T(0.5);
    store(out, F(load(in), vb));
    for (int k = 0; i + k < n; ++k) y[i + k] = out[k];
  }
}

// A function object of two arguments x and z of any floating type.
#define QNL_FUNCTION_OBJECT2(Name, expr) \
  struct Name {                          \
    template <class W>                   \
    W operator()(W x, W z) const {       \
      return expr;                       \
    }                                    \
  };

template <class T>
constexpr T kTinyArgument = std::is_same_v<T, double> ? T(1e-8) : T(1e-3);

// The lanes SLEEF serves to the mode's accuracy: arguments within |x| <= limit
// (SLEEF's range for the function) and, in HA, neither subnormal results, where
// SLEEF bounds the absolute error only, nor tiny arguments, where SLEEF's
// single-precision odd functions miss by a hair.
template <class T, int A>
Mask<T> served(G<T> x, G<T> r, T limit) {
  const G<T> ax = magnitude<T>(x);
  Mask<T> m = ax <= limit;
  if constexpr (A == kHA) {
    const G<T> ar = magnitude<T>(r);
    m &= (ax >= kTinyArgument<T>)&~((ar < std::numeric_limits<T>::min()) & (r != 0));
  }
  return m;
}

// A real function SLEEF has, by its SLEEF names per accuracy. SLEEF's fast
// sine and cosine bound the absolute error only: near their zeros they keep
// fewer than half the bits, so their EP computes as LA. The lanes
// `beyond` marks are computed again one at a time, one precision wider.
#define QNL_SLEEF1(Stem, ha, ha_acc, la, la_acc, ep, ep_acc, errors, inf_status, limit_d, limit_f, fallback) \
  struct Stem {                                                                                              \
    static constexpr int kErrors = errors;                                                                   \
    static constexpr int32_t kPiece = kCostlyPiece;                                                          \
    static constexpr bool kOwnEP = true;                                                                     \
    template <class T>                                                                                       \
    static int infinite(T, T) {                                                                              \
      return inf_status;                                                                                     \
    }                                                                                                        \
    template <int A, class T>                                                                                \
    static bool map(int32_t n, const T* a, T* y) {                                                           \
      using W = typename Wider<T>::type;                                                                     \
      const T limit = static_cast<T>(std::is_same_v<T, double> ? limit_d : limit_f);                         \
      auto ok = [limit](G<T> x, G<T> r) { return served<T, A>(x, r, limit); };                               \
      auto scalar = [](T x) { return static_cast<T>(fallback(static_cast<W>(x))); };                         \
      constexpr bool under = ((errors)&kUnderflow) != 0;                                                     \
      if constexpr (std::is_same_v<T, double>) {                                                             \
        if constexpr (A == kHA) return vmap<T, QNL_VD(ha, ha_acc)>(n, a, y, under, ok, scalar);              \
        if constexpr (A != kHA) return vmap<T, QNL_VD(la, la_acc)>(n, a, y, under, ok, scalar);              \
      } else {                                                                                               \
        if constexpr (A == kHA) return vmap<T, QNL_VF(ha, ha_acc)>(n, a, y, under, ok, scalar);              \
        if constexpr (A == kLA) return vmap<T, QNL_VF(la, la_acc)>(n, a, y, under, ok, scalar);              \
        if constexpr (A == kEP) return vmap<T, QNL_VF(ep, ep_acc)>(n, a, y, under, ok, scalar);              \
      }                                                                                                      \
    }                                                                                                        \
  };

// A real function computed element by element: `expr` of `x` in the working type W.
// `exact` functions are computed in their own type, the others one precision
// wider in every accuracy (their LA and EP share HA's kernel).
#define QNL_SCALAR1(Stem, exact, piece, errors, inf_status, expr)                        \
  struct Stem {                                                                          \
    static constexpr int kErrors = errors;                                               \
    static constexpr int32_t kPiece = piece;                                             \
    static constexpr bool kOwnEP = false;                                                \
    template <class T>                                                                   \
    static int infinite(T, T) {                                                          \
      return inf_status;                                                                 \
    }                                                                                    \
    template <class W>                                                                   \
    static W eval(W x) {                                                                 \
      return expr;                                                                       \
    }                                                                                    \
    template <int A, class T>                                                            \
    static bool map(int32_t n, const T* a, T* y) {                                       \
      using W = std::conditional_t<exact, T, typename Wider<T>::type>;                   \
      for (int32_t i = 0; i < n; ++i) y[i] = static_cast<T>(eval(static_cast<W>(a[i]))); \
      return true;                                                                       \
    }                                                                                    \
  };

namespace real {
using std::log;
constexpr double kAll = INFINITY;
QNL_SLEEF1(Acos, acos, u10, acos, u35, acos, u35, kDomain, kOverflow, kAll, kAll, std::acos)
QNL_SLEEF1(Acosh, acosh, u10, acosh, u10, acosh, u10, kDomain | kInfinite, kOverflow, 1e150, 1e18, std::acosh)
QNL_SLEEF1(Asin, asin, u10, asin, u35, asin, u35, kDomain, kOverflow, kAll, kAll, std::asin)
QNL_SLEEF1(Asinh, asinh, u10, asinh, u10, asinh, u10, kInfinite, kOverflow, 1e150, 1e18, std::asinh)
QNL_SLEEF1(Atan, atan, u10, atan, u35, atan, u35, kNone, kOverflow, kAll, kAll, std::atan)
QNL_SLEEF1(Atanh, atanh, u10, atanh, u10, atanh, u10, kDomain | kInfinite, kSing, kAll, kAll, std::atanh)
QNL_SLEEF1(Cbrt, cbrt, u10, cbrt, u35, cbrt, u35, kNone, kOverflow, kAll, kAll, std::cbrt)
QNL_SLEEF1(Cos, cos, u10, cos, u35, cos, u35, kNone, kOverflow, 1e14, 39000, std::cos)
QNL_SLEEF1(Cosh, cosh, u10, cosh, u35, cosh, u35, kInfinite, kOverflow, 709, 88, std::cosh)
QNL_SLEEF1(Erf, erf, u10, erf, u10, erf, u10, kNone, kOverflow, kAll, kAll, std::erf)
QNL_SLEEF1(SleefExp, exp, u10, exp, u10, exp, u10, kInfinite | kUnderflow, kOverflow, kAll, kAll, std::exp)
QNL_SLEEF1(Expm1, expm1, u10, expm1, u10, expm1, u10, kInfinite, kOverflow, kAll, kAll, std::expm1)
QNL_SLEEF1(SleefLn, log, u10, log, u35, log, u35, kDomain | kInfinite, kSing, kAll, kAll, std::log)
QNL_SLEEF1(Log10, log10, u10, log10, u10, log10, u10, kDomain | kInfinite, kSing, kAll, kAll, std::log10)
QNL_SLEEF1(Log1p, log1p, u10, log1p, u10, log1p, u10, kDomain | kInfinite, kSing, 1e300, 1e37, std::log1p)
QNL_SLEEF1(Sin, sin, u10, sin, u35, sin, u35, kNone, kOverflow, 1e14, 39000, std::sin)
QNL_SLEEF1(Sinh, sinh, u10, sinh, u35, sinh, u35, kInfinite, kOverflow, 709, 88, std::sinh)
QNL_SLEEF1(Sqrt, sqrt, u05, sqrt, u35, sqrt, u35, kDomain, kOverflow, kAll, kAll, std::sqrt)
QNL_SLEEF1(Tan, tan, u10, tan, u35, tan, u35, kNone, kOverflow, 1e14, 39000, std::tan)
QNL_SLEEF1(Tanh, tanh, u10, tanh, u35, tanh, u35, kNone, kOverflow, kAll, kAll, std::tanh)

// A SLEEF function whose double kernels are our own (exp_log.h): `Own::vector`
// computes a vector in each accuracy, `Own::scalar` the lanes it leaves out, in
// long double.
template <class Sleef, class Own>
struct OwnDouble : Sleef {
  template <int A, class T>
  static bool map(int32_t n, const T* a, T* y) {
    if constexpr (std::is_same_v<T, double>)
      return vmap_own(
          n, a, y, [](G<double> x, Mask<double>& left) { return Own::template vector<A>(x, left); },
          [](double x) { return static_cast<double>(Own::scalar(static_cast<long double>(x))); });
    else
      return Sleef::template map<A>(n, a, y);
  }
};
struct ExpKernels {
  template <int A>
  static G<double> vector(G<double> x, Mask<double>& left) {
    return explog::exp<A>(x, left);
  }
  static long double scalar(long double x) { return std::exp(x); }
};
struct LnKernels {
  template <int A>
  static G<double> vector(G<double> x, Mask<double>& left) {
    return explog::log<A>(x, left);
  }
  static long double scalar(long double x) { return std::log(x); }
};
using Exp = OwnDouble<SleefExp, ExpKernels>;
using Ln = OwnDouble<SleefLn, LnKernels>;

QNL_SCALAR1(Abs, true, kCheapPiece, kNone, kOverflow, std::fabs(x))
QNL_SCALAR1(Ceil, true, kCheapPiece, kNone, kOverflow, std::ceil(x))
QNL_SCALAR1(Floor, true, kCheapPiece, kNone, kOverflow, std::floor(x))
QNL_SCALAR1(Trunc, true, kCheapPiece, kNone, kOverflow, std::trunc(x))
QNL_SCALAR1(Round, true, kCheapPiece, kNone, kOverflow, std::round(x))
QNL_SCALAR1(Rint, true, kCheapPiece, kNone, kOverflow, std::rint(x))
QNL_SCALAR1(NearbyInt, true, kCheapPiece, kNone, kOverflow, std::nearbyint(x))
QNL_SCALAR1(Frac, true, kCheapPiece, kNone, kOverflow, std::isinf(x) ? std::copysign(W(0), x) : x - std::trunc(x))
QNL_SCALAR1(Inv, true, kCheapPiece, kInfinite | kUnderflow, kSing, W(1) / x)
QNL_SCALAR1(Sqr, true, kCheapPiece, kInfinite | kUnderflow, kOverflow, x* x)
QNL_SCALAR1(InvSqrt, false, kCostlyPiece, kDomain | kInfinite, kSing, W(1) / std::sqrt(x))
QNL_SCALAR1(InvCbrt, false, kCostlyPiece, kInfinite, kSing, W(1) / std::cbrt(x))
QNL_SCALAR1(Pow2o3, false, kCostlyPiece, kInfinite, kOverflow, std::cbrt(x* x))
QNL_SCALAR1(Pow3o2, false, kCostlyPiece, kDomain | kInfinite, kOverflow, x < 0 ? W(NAN) : x * std::sqrt(x))
QNL_SCALAR1(Erfc, false, kCostlyPiece, kUnderflow, kOverflow, std::erfc(x))
QNL_SCALAR1(CdfNorm, false, kCostlyPiece, kUnderflow, kOverflow, cdf_norm(x))
QNL_SCALAR1(ErfInv, false, kCostlyPiece, kDomain | kInfinite, kSing, erf_inv(x))
QNL_SCALAR1(ErfcInv, false, kCostlyPiece, kDomain | kInfinite, kSing, erfc_inv(x))
QNL_SCALAR1(CdfNormInv, false, kCostlyPiece, kDomain | kInfinite, kSing, cdf_norm_inv(x))
QNL_SCALAR1(ExpInt1, false, kCostlyPiece, kDomain | kInfinite | kUnderflow, kSing, exp_int1(x))
QNL_SCALAR1(LGamma, false, kCostlyPiece, kInfinite, kOverflow, std::lgamma(x))
QNL_SCALAR1(TGamma, false, kCostlyPiece, kDomain | kInfinite | kUnderflow, kOverflow, std::tgamma(x))

// Singular points of the gamma functions: zero and, for LGamma, the negative integers.
template <>
inline int LGamma::infinite(double a, double) {
  return a <= 0 && a == std::floor(a) ? kSing : kOverflow;
}
template <>
inline int LGamma::infinite(float a, float) {
  return a <= 0 && a == std::floor(a) ? kSing : kOverflow;
}
template <>
inline int TGamma::infinite(double a, double) {
  return a == 0 ? kSing : kOverflow;
}
template <>
inline int TGamma::infinite(float a, float) {
  return a == 0 ? kSing : kOverflow;
}

// The two-argument counterpart of fix_range: subnormal results in HA, and in
// EP the arguments SLEEF's fast power leaves to its caller (bases not above zero,
// anything not finite).
QNL_FUNCTION_OBJECT2(PowFn, std::pow(x, z))
QNL_FUNCTION_OBJECT2(Atan2Fn, std::atan2(x, z))
QNL_FUNCTION_OBJECT2(HypotFn, std::hypot(x, z))
template <class T, int A, class F>
void fix_binary(int32_t n, const T* a, const T* b, T bs, T* y, bool fast_pow) {
  using W = typename Wider<T>::type;
  const bool fast = fast_pow && A == kEP && std::is_same_v<T, float>;
  for (int32_t i = 0; i < n; ++i) {
    const T z = b ? b[i] : bs;
    // Near the underflow threshold the kernels' scaled intermediates lose bits (Atan2 of a
    // tiny quotient came out 1.03-1.08 ulps off just above the smallest normal), so high
    // accuracy recomputes every result within a mantissa's width of it in the wider type.
    const bool sub = A == kHA && y[i] != 0 &&
                     std::fabs(y[i]) < std::numeric_limits<T>::min() / std::numeric_limits<T>::epsilon();
    const bool special = fast && (!(a[i] > 0) || !std::isfinite(a[i]) || !std::isfinite(z) || !std::isfinite(y[i]));
    if (__builtin_expect(sub || special, 0)) y[i] = static_cast<T>(F()(static_cast<W>(a[i]), static_cast<W>(z)));
  }
}

// Two arguments.
#define QNL_BINARY(Stem, piece, errors, body, ...)             \
  struct Stem {                                                \
    static constexpr int kErrors = errors;                     \
    static constexpr int32_t kPiece = piece;                   \
    static constexpr bool kOwnEP = true;                       \
    template <class T>                                         \
    static int infinite(T a, T b) {                            \
      (void)a;                                                 \
      (void)b;                                                 \
      return __VA_ARGS__;                                      \
    }                                                          \
    template <int A, class T>                                  \
    static void map(int32_t n, const T* a, const T* b, T* y) { \
      body                                                     \
    }                                                          \
    template <int A, class T>                                  \
    static void map_scalar(int32_t n, const T* a, T b, T* y) { \
      const T* bp = &b;                                        \
      (void)bp;                                                \
      QNL_BINARY_SCALAR_##Stem                                 \
    }                                                          \
  };

#define QNL_EXACT_LOOP(op) \
  for (int32_t i = 0; i < n; ++i) y[i] = a[i] op b[i];
#define QNL_SLEEF2_BODY(ha, ha_acc, la, la_acc, ep, ep_acc, B)          \
  if constexpr (std::is_same_v<T, double>) {                            \
    if constexpr (A == kHA) vmap##B<T, QNL_VD(ha, ha_acc)>(n, a, b, y); \
    if constexpr (A == kLA) vmap##B<T, QNL_VD(la, la_acc)>(n, a, b, y); \
    if constexpr (A == kEP) vmap##B<T, QNL_VD(la, la_acc)>(n, a, b, y); \
  } else {                                                              \
    if constexpr (A == kHA) vmap##B<T, QNL_VF(ha, ha_acc)>(n, a, b, y); \
    if constexpr (A == kLA) vmap##B<T, QNL_VF(la, la_acc)>(n, a, b, y); \
    if constexpr (A == kEP) vmap##B<T, QNL_VF(ep, ep_acc)>(n, a, b, y); \
  }

#define QNL_BINARY_SCALAR_Add
#define QNL_BINARY_SCALAR_Sub
#define QNL_BINARY_SCALAR_Mul
#define QNL_BINARY_SCALAR_Div
#define QNL_BINARY_SCALAR_Atan2
#define QNL_BINARY_SCALAR_Hypot
#define QNL_BINARY_SCALAR_Pow                            \
  QNL_SLEEF2_BODY(pow, u10, pow, u10, pow, u10, _scalar) \
  (fix_binary<T, A, PowFn>(n, a, static_cast<const T*>(nullptr), b, y, true));
QNL_BINARY(Add, kCheapPiece, kInfinite, QNL_EXACT_LOOP(+), kOverflow)
QNL_BINARY(Sub, kCheapPiece, kInfinite, QNL_EXACT_LOOP(-), kOverflow)
QNL_BINARY(Mul, kCheapPiece, kInfinite | kUnderflow, QNL_EXACT_LOOP(*), kOverflow)
QNL_BINARY(Div, kCheapPiece, kDomain | kInfinite | kUnderflow, QNL_EXACT_LOOP(/), b == 0 ? kSing : kOverflow)
QNL_BINARY(Atan2, kCostlyPiece, kNone,
           QNL_SLEEF2_BODY(atan2, u10, atan2, u35, atan2, u35, 2)(fix_binary<T, A, Atan2Fn>(n, a, b, T(0), y, false));
           , kOverflow)
QNL_BINARY(Hypot, kCostlyPiece, kInfinite,
           QNL_SLEEF2_BODY(hypot, u05, hypot, u35, hypot, u35, 2)(fix_binary<T, A, HypotFn>(n, a, b, T(0), y, false));,
           kOverflow)
QNL_BINARY(Pow, kCostlyPiece, kDomain | kInfinite | kUnderflow,
           QNL_SLEEF2_BODY(pow, u10, pow, u10, pow, u10, 2)(fix_binary<T, A, PowFn>(n, a, b, T(0), y, true));
           , a == 0 ? kSing : kOverflow)
}  // namespace real

}  // namespace qnl_vml
