// Sparse level 1, computed in the library: x holds nz packed values, indx their zero-based
// positions in the full vector y. These bodies take the quick returns and hand the work to
// the loops built for the running processor (cblas_sparse_loops.h).
#pragma once
#include "cblas_common.h"
#include "cblas_sparse_loops.h"

namespace qnl::cblas {

template <class D, class I>
inline const SparseKernels<typename D::E, I>& loops() {
  return sparse_kernels<typename D::E, I>();
}

template <class I, class D, class S>
inline void axpyi(I nz, S alpha, const void* x, const I* indx, void* y) {
  using E = typename D::E;
  const E a = value_of<E>(alpha);
  if (nz < 1 || is_zero(a)) return;
  loops<D, I>().axpyi(nz, a, static_cast<const E*>(x), indx, static_cast<E*>(y));
}

// A real result comes back as the routine's value (single precision stays single).
template <class I, class D>
inline auto doti(I nz, const void* x, const I* indx, const void* y) {
  using E = typename D::E;
  if (nz < 1) return E{};
  return loops<D, I>().dotu(nz, static_cast<const E*>(x), indx, static_cast<const E*>(y));
}

template <class I, class D>
inline void dotui(I nz, const void* x, const I* indx, const void* y, void* result) {
  using E = typename D::E;
  const E v = nz < 1 ? E{} : loops<D, I>().dotu(nz, static_cast<const E*>(x), indx, static_cast<const E*>(y));
  std::memcpy(result, &v, sizeof v);
}

template <class I, class D>
inline void dotci(I nz, const void* x, const I* indx, const void* y, void* result) {
  using E = typename D::E;
  const E v = nz < 1 ? E{} : loops<D, I>().dotc(nz, static_cast<const E*>(x), indx, static_cast<const E*>(y));
  std::memcpy(result, &v, sizeof v);
}

template <class I, class D>
inline void gthr(I nz, const void* y, void* x, const I* indx) {
  using E = typename D::E;
  if (nz > 0) loops<D, I>().gthr(nz, static_cast<const E*>(y), static_cast<E*>(x), indx);
}

template <class I, class D>
inline void gthrz(I nz, void* y, void* x, const I* indx) {
  using E = typename D::E;
  if (nz > 0) loops<D, I>().gthrz(nz, static_cast<E*>(y), static_cast<E*>(x), indx);
}

template <class I, class D>
inline void sctr(I nz, const void* x, const I* indx, void* y) {
  using E = typename D::E;
  if (nz > 0) loops<D, I>().sctr(nz, static_cast<const E*>(x), indx, static_cast<E*>(y));
}

template <class I, class D, class R>
inline void roti(I nz, void* x, const I* indx, void* y, R c, R s) {
  using E = typename D::E;
  if (nz < 1 || (c == 1 && s == 0)) return;
  loops<D, I>().roti(nz, static_cast<E*>(x), indx, static_cast<E*>(y), c, s);
}

}  // namespace qnl::cblas
