// Dense level 1: values become addresses and the Fortran entry does the rest. The index
// routines are zero-based here and one-based in Fortran.
#pragma once
#include "cblas_common.h"

namespace qnl::cblas {

// Integers, scalars and pointers, in the C order, as the Fortran entry's addresses.
template <class I, class D, class... A>
inline auto forward(A... a) {
  return fortran_wide<D::fortran>(a...);
}

// A complex dot product: the Fortran function's value lands where `result` points.
template <class I, class D>
inline void dot_sub(I n, const void* x, I incx, const void* y, I incy, void* result) {
  const auto v = fortran_wide<D::fortran>(n, x, incx, y, incy);
  std::memcpy(result, &v, sizeof v);
}

// i?amax, i?amin: 0 without a call for an empty vector or a non-positive increment.
template <class I, class D>
inline size_t iamax(I n, const void* x, I incx) {
  if (n < 1 || incx < 1) return 0;
  int64_t r = fortran_wide<D::fortran>(n, x, incx);
  // On LP64 the Fortran result is a 32-bit integer in a 64-bit register.
  if constexpr (sizeof(I) == 4) r = static_cast<int32_t>(r);
  return static_cast<size_t>(r - 1);
}

}  // namespace qnl::cblas
