// Sparse level 1, computed in the library: x holds nz packed values, indx their zero-based
// positions in the full vector y. The loops carry no dependence between iterations (indices
// of a sparse vector are distinct) and the dot products keep several partial sums, so the
// compiler can unroll and vectorise them.
#pragma once
#include "cblas_common.h"

namespace qnl::cblas {

template <class E>
inline E mul(E a, E b) {
  if constexpr (is_complex<E>)
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
  else
    return a * b;
}
template <class E>
inline E add(E a, E b) {
  if constexpr (is_complex<E>)
    return {a.re + b.re, a.im + b.im};
  else
    return a + b;
}

template <class I, class D, class S>
inline void axpyi(I nz, S alpha, const void* x, const I* indx, void* y) {
  using E = typename D::E;
  const E a = value_of<E>(alpha);
  if (nz < 1 || is_zero(a)) return;
  const E* __restrict xs = static_cast<const E*>(x);
  E* __restrict ys = static_cast<E*>(y);
#pragma GCC ivdep
  for (I i = 0; i < nz; ++i) ys[indx[i]] = add(ys[indx[i]], mul(a, xs[i]));
}

// The sum of f(x[i]) * y[indx[i]] in four partial sums, in the element type (single
// precision stays single).
template <class E, class I, class F>
inline E sparse_dot(I nz, const void* x, const I* indx, const void* y, F f) {
  const E* __restrict xs = static_cast<const E*>(x);
  const E* __restrict ys = static_cast<const E*>(y);
  E s[4] = {};
  I i = 0;
  for (; i + 4 <= nz; i += 4)
    for (int k = 0; k < 4; ++k) s[k] = add(s[k], mul(f(xs[i + k]), ys[indx[i + k]]));
  for (; i < nz; ++i) s[0] = add(s[0], mul(f(xs[i]), ys[indx[i]]));
  return add(add(s[0], s[1]), add(s[2], s[3]));
}

template <class E>
inline E same(E v) {
  return v;
}

template <class I, class D>
inline auto doti(I nz, const void* x, const I* indx, const void* y) {
  using E = typename D::E;
  if (nz < 1) return E{};
  return sparse_dot<E>(nz, x, indx, y, same<E>);
}

template <class I, class D>
inline void dotui(I nz, const void* x, const I* indx, const void* y, void* result) {
  using E = typename D::E;
  const E v = nz < 1 ? E{} : sparse_dot<E>(nz, x, indx, y, same<E>);
  std::memcpy(result, &v, sizeof v);
}

template <class I, class D>
inline void dotci(I nz, const void* x, const I* indx, const void* y, void* result) {
  using E = typename D::E;
  const E v = nz < 1 ? E{} : sparse_dot<E>(nz, x, indx, y, conj<E>);
  std::memcpy(result, &v, sizeof v);
}

template <class I, class D>
inline void gthr(I nz, const void* y, void* x, const I* indx) {
  using E = typename D::E;
  const E* __restrict ys = static_cast<const E*>(y);
  E* __restrict xs = static_cast<E*>(x);
#pragma GCC ivdep
  for (I i = 0; i < nz; ++i) xs[i] = ys[indx[i]];
}

template <class I, class D>
inline void gthrz(I nz, void* y, void* x, const I* indx) {
  using E = typename D::E;
  E* __restrict ys = static_cast<E*>(y);
  E* __restrict xs = static_cast<E*>(x);
#pragma GCC ivdep
  for (I i = 0; i < nz; ++i) {
    xs[i] = ys[indx[i]];
    ys[indx[i]] = E{};
  }
}

template <class I, class D>
inline void sctr(I nz, const void* x, const I* indx, void* y) {
  using E = typename D::E;
  const E* __restrict xs = static_cast<const E*>(x);
  E* __restrict ys = static_cast<E*>(y);
#pragma GCC ivdep
  for (I i = 0; i < nz; ++i) ys[indx[i]] = xs[i];
}

template <class I, class D, class R>
inline void roti(I nz, void* x, const I* indx, void* y, R c, R s) {
  using E = typename D::E;
  if (nz < 1 || (c == 1 && s == 0)) return;
  E* __restrict xs = static_cast<E*>(x);
  E* __restrict ys = static_cast<E*>(y);
#pragma GCC ivdep
  for (I i = 0; i < nz; ++i) {
    const E t = xs[i], u = ys[indx[i]];
    xs[i] = c * t + s * u;
    ys[indx[i]] = c * u - s * t;
  }
}

}  // namespace qnl::cblas
