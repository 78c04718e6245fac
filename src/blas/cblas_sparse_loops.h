// The loops of the sparse level-1 routines, built once per instruction set: each build's
// translation unit instantiates them with a tag type of its own (internal linkage), so no
// build's code can stand in for another's. The loops carry no dependence between
// iterations (the indices of a sparse vector are distinct), which lets the compiler use
// gathers and scatters where the instruction set has them; the real dot products keep several
// partial sums, since their order of accumulation is free.
#pragma once
#include <cstdint>

#include "frame.h"

namespace qnl::cblas {

template <class E>
struct RealPart {
  using type = E;
};
template <>
struct RealPart<blas::cfloat> {
  using type = float;
};
template <>
struct RealPart<blas::cdouble> {
  using type = double;
};

template <class E, class I>
struct SparseKernels {
  using R = typename RealPart<E>::type;
  void (*axpyi)(I nz, E alpha, const E* x, const I* indx, E* y);
  E (*dotu)(I nz, const E* x, const I* indx, const E* y);
  E (*dotc)(I nz, const E* x, const I* indx, const E* y);
  void (*gthr)(I nz, const E* y, E* x, const I* indx);
  void (*gthrz)(I nz, E* y, E* x, const I* indx);
  void (*sctr)(I nz, const E* x, const I* indx, E* y);
  void (*roti)(I nz, E* x, const I* indx, E* y, R c, R s);
};

template <class Tag, class E, class I>
struct SparseLoops {
  using R = typename RealPart<E>::type;
  static constexpr bool complex = blas::is_complex<E>;

  static E mul(E a, E b) {
    if constexpr (complex)
      return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
    else
      return a * b;
  }
  static E add(E a, E b) {
    if constexpr (complex)
      return {a.re + b.re, a.im + b.im};
    else
      return a + b;
  }
  static E conj(E a) {
    if constexpr (complex) a.im = -a.im;
    return a;
  }

  static void axpyi(I nz, E alpha, const E* __restrict x, const I* __restrict indx, E* __restrict y) {
#pragma GCC ivdep
    for (I i = 0; i < nz; ++i) y[indx[i]] = add(y[indx[i]], mul(alpha, x[i]));
  }

  template <bool Conj>
  static E dot(I nz, const E* __restrict x, const I* __restrict indx, const E* __restrict y) {
    if constexpr (complex) {
      // Real and imaginary sums kept apart: gathering whole complex pairs costs more than it
      // saves here.
      R re = 0, im = 0;
      for (I i = 0; i < nz; ++i) {
        const E a = Conj ? conj(x[i]) : x[i], b = y[indx[i]];
        re += a.re * b.re - a.im * b.im;
        im += a.re * b.im + a.im * b.re;
      }
      return {re, im};
    } else {
      E s[4] = {};
      I i = 0;
      for (; i + 4 <= nz; i += 4)
        for (int k = 0; k < 4; ++k) s[k] = add(s[k], mul(Conj ? conj(x[i + k]) : x[i + k], y[indx[i + k]]));
      for (; i < nz; ++i) s[0] = add(s[0], mul(Conj ? conj(x[i]) : x[i], y[indx[i]]));
      return add(add(s[0], s[1]), add(s[2], s[3]));
    }
  }

  static void gthr(I nz, const E* __restrict y, E* __restrict x, const I* __restrict indx) {
#pragma GCC ivdep
    for (I i = 0; i < nz; ++i) x[i] = y[indx[i]];
  }

  static void gthrz(I nz, E* __restrict y, E* __restrict x, const I* __restrict indx) {
#pragma GCC ivdep
    for (I i = 0; i < nz; ++i) {
      x[i] = y[indx[i]];
      y[indx[i]] = E{};
    }
  }

  static void sctr(I nz, const E* __restrict x, const I* __restrict indx, E* __restrict y) {
#pragma GCC ivdep
    for (I i = 0; i < nz; ++i) y[indx[i]] = x[i];
  }

  static void roti(I nz, E* __restrict x, const I* __restrict indx, E* __restrict y, R c, R s) {
    if constexpr (!complex) {
#pragma GCC ivdep
      for (I i = 0; i < nz; ++i) {
        const E t = x[i], u = y[indx[i]];
        x[i] = c * t + s * u;
        y[indx[i]] = c * u - s * t;
      }
    }
  }

  static constexpr SparseKernels<E, I> table{&axpyi, &dot<false>, &dot<true>, &gthr, &gthrz, &sctr, &roti};
};

// The kernels of one instruction set, and the best set of the running processor.
namespace baseline {
template <class E, class I>
const SparseKernels<E, I>* kernels();
}
namespace avx2 {
template <class E, class I>
const SparseKernels<E, I>* kernels();
}

template <class E, class I>
const SparseKernels<E, I>& sparse_kernels();

}  // namespace qnl::cblas
