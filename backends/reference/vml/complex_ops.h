// Complex vector functions: element by element on std::complex, one precision
// wider than the result in HA (so the rounding to the result dominates the error).
#pragma once
#include <quadmath.h>

#include <algorithm>
#include <complex>

#include "ops.h"

namespace qnl_vml::cplx {

template <class T>
using C = std::complex<T>;

// What the kernels ask of every complex function: the errors its results can
// show, the status of an infinite one, the smallest piece worth a thread, and
// that EP shares LA's kernel.
template <int errors, int inf_status = kOverflow, int32_t piece = kCostlyPiece>
struct Traits {
  static constexpr int kErrors = errors;
  static constexpr int32_t kPiece = piece;
  static constexpr bool kOwnEP = false;
  static constexpr int kInfiniteStatus = inf_status;
};

// Working precisions by mode: Own (exact functions), Work (wider in HA only), or
// Widest in every mode: the power, whose error grows with the size of its
// exponent's product with the logarithm, and tan and tanh, whose C-library
// forms near |tanh| = 1 miss by 4 ulps and more.
template <class T, int>
using Own = T;
template <class T, int>
using Widest = typename Wider<T>::type;

#define QNL_COMPLEX1(Stem, Prec, errors, inf_status, expr)           \
  struct Stem : Traits<errors, inf_status> {                         \
    template <class W>                                               \
    static C<W> eval(C<W> x) {                                       \
      return expr;                                                   \
    }                                                                \
    template <int A, class T>                                        \
    static bool map(int32_t n, const C<T>* a, C<T>* y) {             \
      using W = Prec<T, A>;                                          \
      for (int32_t i = 0; i < n; ++i) y[i] = C<T>(eval(C<W>(a[i]))); \
      return true;                                                   \
    }                                                                \
  };

QNL_COMPLEX1(Acos, Work, kInfinite, kOverflow, std::acos(x))
QNL_COMPLEX1(Acosh, Work, kInfinite, kOverflow, std::acosh(x))
QNL_COMPLEX1(Asin, Work, kInfinite, kOverflow, std::asin(x))
QNL_COMPLEX1(Asinh, Work, kInfinite, kOverflow, std::asinh(x))
QNL_COMPLEX1(Atan, Work, kInfinite, kSing, std::atan(x))
QNL_COMPLEX1(Atanh, Work, kInfinite, kSing, std::atanh(x))
QNL_COMPLEX1(Conj, Own, kNone, kOverflow, std::conj(x))
QNL_COMPLEX1(Cos, Work, kInfinite, kOverflow, std::cos(x))
QNL_COMPLEX1(Cosh, Work, kInfinite, kOverflow, std::cosh(x))
QNL_COMPLEX1(Exp, Work, kInfinite, kOverflow, std::exp(x))
QNL_COMPLEX1(Ln, Work, kInfinite, kSing, std::log(x))
QNL_COMPLEX1(Log10, Work, kInfinite, kSing, std::log10(x))
QNL_COMPLEX1(Sin, Work, kInfinite, kOverflow, std::sin(x))
QNL_COMPLEX1(Sinh, Work, kInfinite, kOverflow, std::sinh(x))
QNL_COMPLEX1(Sqrt, Work, kInfinite, kOverflow, std::sqrt(x))
QNL_COMPLEX1(Tan, Widest, kInfinite, kOverflow, std::tan(x))
QNL_COMPLEX1(Tanh, Widest, kInfinite, kOverflow, std::tanh(x))

// x^z = exp(z log x). The working type carries z log x with an absolute error of
// |z| |log x| times its epsilon, and exp makes that the result's relative error:
// once the product passes kQuadPower, long double's 64 bits show in double's
// last bit (2.6 ulp at 6e3), so such powers are computed in quadruple precision.
// The product is bounded from above by the exponents of the parts, which costs
// no logarithm: |log x| <= (|ilogb max(|re|, |im|)| + 1) ln 2 + pi.
constexpr double kQuadPower = 32;

inline C<long double> quad_power(C<long double> x, C<long double> z) {
  __complex128 qx, qz;
  __real__ qx = static_cast<__float128>(x.real());
  __imag__ qx = static_cast<__float128>(x.imag());
  __real__ qz = static_cast<__float128>(z.real());
  __imag__ qz = static_cast<__float128>(z.imag());
  const __complex128 r = cpowq(qx, qz);
  return {static_cast<long double>(__real__ r), static_cast<long double>(__imag__ r)};
}

template <class W>
C<W> power(C<W> x, C<W> z) {
  if constexpr (std::is_same_v<W, long double>) {
    const W big = std::max(std::fabs(x.real()), std::fabs(x.imag()));
    const W log_bound =
        (std::fabs(static_cast<W>(std::ilogb(big))) + 1) * W(0.6931471805599453) + W(3.1415926535897932);
    const W product = (std::fabs(z.real()) + std::fabs(z.imag())) * log_bound;
    if (big > 0 && product > kQuadPower && std::isfinite(product) && std::isfinite(big)) return quad_power(x, z);
  }
  return std::pow(x, z);
}

// Exact functions (computed in their own type) are cheap pieces, the others costly.
#define QNL_COMPLEX2(Stem, work, errors, inf_status, expr)                                                         \
  struct Stem : Traits<errors, inf_status, std::is_same_v<work<float, kHA>, float> ? kCheapPiece : kCostlyPiece> { \
    template <class W>                                                                                             \
    static C<W> eval(C<W> x, C<W> z) {                                                                             \
      return expr;                                                                                                 \
    }                                                                                                              \
    template <int A, class T>                                                                                      \
    static void map(int32_t n, const C<T>* a, const C<T>* b, C<T>* y) {                                            \
      using W = work<T, A>;                                                                                        \
      for (int32_t i = 0; i < n; ++i) y[i] = C<T>(eval(C<W>(a[i]), C<W>(b[i])));                                   \
    }                                                                                                              \
    template <int A, class T>                                                                                      \
    static void map_scalar(int32_t n, const C<T>* a, C<T> b, C<T>* y) {                                            \
      using W = work<T, A>;                                                                                        \
      for (int32_t i = 0; i < n; ++i) y[i] = C<T>(eval(C<W>(a[i]), C<W>(b)));                                      \
    }                                                                                                              \
  };

QNL_COMPLEX2(Add, Own, kInfinite, kOverflow, x + z)
QNL_COMPLEX2(Sub, Own, kInfinite, kOverflow, x - z)
QNL_COMPLEX2(Mul, Work, kInfinite, kOverflow, x* z)
QNL_COMPLEX2(MulByConj, Work, kInfinite, kOverflow, x* std::conj(z))
QNL_COMPLEX2(Div, Work, kInfinite, kSing, x / z)
QNL_COMPLEX2(Pow, Widest, kInfinite, kOverflow, power(x, z))

// Complex to real, f(re, im), and real to complex, in the working type of the accuracy.
template <int errors, class F>
struct OfParts : Traits<errors> {
  template <int A, class T>
  static void map(int32_t n, const C<T>* a, T* y) {
    using W = Work<T, A>;
    for (int32_t i = 0; i < n; ++i) y[i] = static_cast<T>(F()(W(a[i].real()), W(a[i].imag())));
  }
};
QNL_FUNCTION_OBJECT2(Modulus, std::hypot(x, z))  // of the real part x and the imaginary part z
QNL_FUNCTION_OBJECT2(Angle, std::atan2(z, x))
using Abs = OfParts<kInfinite, Modulus>;
using Arg = OfParts<kNone, Angle>;

struct CIS : Traits<kNone> {
  template <int A, class T>
  static void map(int32_t n, const T* a, C<T>* y) {
    using W = Work<T, A>;
    for (int32_t i = 0; i < n; ++i) y[i] = C<T>(static_cast<T>(std::cos(W(a[i]))), static_cast<T>(std::sin(W(a[i]))));
  }
};

}  // namespace qnl_vml::cplx
