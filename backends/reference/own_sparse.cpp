// Sparse level 1: a compressed vector x of nz values whose positions in the full vector y
// are the 1-based indices indx (64-bit here; the facade copies 32-bit ones).
//   ?axpyi   y(indx) += a x          ?doti, ?dotui, ?dotci   sum of (conj) x times y(indx)
//   ?gthr    x = y(indx)             ?gthrz                  the same, then y(indx) = 0
//   ?sctr    y(indx) = x             ?roti                   plane rotation of x and y(indx)
// Each loop is a plain indexed sweep that the compiler vectorises with gathers where the
// target has them; nz of zero or less does nothing.
#include "backend_blas.h"
#include "own.h"

namespace qnl_ref::own {
namespace {

template <class T>
void axpyi(const I* nz, const void* a, const void* x, const I* indx, void* y) {
  const T alpha = *static_cast<const T*>(a);
  const auto* xv = static_cast<const T*>(x);
  auto* yv = static_cast<T*>(y);
  for (I i = 0; i < *nz; ++i) yv[indx[i] - 1] += alpha * xv[i];
}

template <class T, bool Conj>
T doti(const I* nz, const void* x, const I* indx, const void* y) {
  const auto* xv = static_cast<const T*>(x);
  const auto* yv = static_cast<const T*>(y);
  T sum{};
  for (I i = 0; i < *nz; ++i) sum += (Conj ? conj(xv[i]) : xv[i]) * yv[indx[i] - 1];
  return sum;
}

template <class T, bool Zero>
void gthr(const I* nz, void* y, void* x, const I* indx) {
  auto* yv = static_cast<T*>(y);
  auto* xv = static_cast<T*>(x);
  for (I i = 0; i < *nz; ++i) {
    xv[i] = yv[indx[i] - 1];
    if constexpr (Zero) yv[indx[i] - 1] = T{};
  }
}

template <class T>
void sctr(const I* nz, const void* x, const I* indx, void* y) {
  const auto* xv = static_cast<const T*>(x);
  auto* yv = static_cast<T*>(y);
  for (I i = 0; i < *nz; ++i) yv[indx[i] - 1] = xv[i];
}

template <class T>
void roti(const I* nz, void* x, const I* indx, void* y, const void* c, const void* s) {
  const T cv = *static_cast<const T*>(c), sv = *static_cast<const T*>(s);
  auto* xv = static_cast<T*>(x);
  auto* yv = static_cast<T*>(y);
  for (I i = 0; i < *nz; ++i) {
    const T xi = xv[i], yi = yv[indx[i] - 1];
    xv[i] = cv * xi + sv * yi;
    yv[indx[i] - 1] = cv * yi - sv * xi;
  }
}

// A complex result goes through the pointer ahead of the arguments.
template <class T, bool Conj>
void doti_into(void* result, const I* nz, const void* x, const I* indx, const void* y) {
  *static_cast<T*>(result) = doti<T, Conj>(nz, x, indx, y);
}

}  // namespace
}  // namespace qnl_ref::own

using namespace qnl_ref::own;

#define QNL_SPARSE_SYMBOLS(t, T)                                                                                   \
  void qnl_blas_##t##axpyi(const I* nz, void* a, void* x, const I* indx, void* y) { axpyi<T>(nz, a, x, indx, y); } \
  void qnl_blas_##t##gthr(const I* nz, void* y, void* x, const I* indx) { gthr<T, false>(nz, y, x, indx); }        \
  void qnl_blas_##t##gthrz(const I* nz, void* y, void* x, const I* indx) { gthr<T, true>(nz, y, x, indx); }        \
  void qnl_blas_##t##sctr(const I* nz, void* x, const I* indx, void* y) { sctr<T>(nz, x, indx, y); }

// The back-end symbols: exported, while the rest of the library stays hidden.
#pragma GCC visibility push(default)
extern "C" {
QNL_SPARSE_SYMBOLS(s, float)
QNL_SPARSE_SYMBOLS(d, double)
QNL_SPARSE_SYMBOLS(c, cfloat)
QNL_SPARSE_SYMBOLS(z, cdouble)

float qnl_blas_sdoti(const I* nz, void* x, const I* indx, void* y) { return doti<float, false>(nz, x, indx, y); }
double qnl_blas_ddoti(const I* nz, void* x, const I* indx, void* y) { return doti<double, false>(nz, x, indx, y); }
void qnl_blas_cdotui(void* r, const I* nz, void* x, const I* indx, void* y) {
  doti_into<cfloat, false>(r, nz, x, indx, y);
}
void qnl_blas_zdotui(void* r, const I* nz, void* x, const I* indx, void* y) {
  doti_into<cdouble, false>(r, nz, x, indx, y);
}
void qnl_blas_cdotci(void* r, const I* nz, void* x, const I* indx, void* y) {
  doti_into<cfloat, true>(r, nz, x, indx, y);
}
void qnl_blas_zdotci(void* r, const I* nz, void* x, const I* indx, void* y) {
  doti_into<cdouble, true>(r, nz, x, indx, y);
}
void qnl_blas_sroti(const I* nz, void* x, const I* indx, void* y, void* c, void* s) {
  roti<float>(nz, x, indx, y, c, s);
}
void qnl_blas_droti(const I* nz, void* x, const I* indx, void* y, void* c, void* s) {
  roti<double>(nz, x, indx, y, c, s);
}
}
#pragma GCC visibility pop
