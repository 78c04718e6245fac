// The library's own LAPACK-style routines:
//   ?dttrfb, ?dttrsb, ?dtsvb   tridiagonal systems without pivoting, for diagonally dominant
//                              matrices: A = L U with L unit lower bidiagonal (multipliers in
//                              dl) and U upper bidiagonal (d, and du unchanged)
//   ?tppack, ?tpunpack         a rows x cols block (or its (conjugate) transpose) between a
//                              full array and the packed triangle of order n, at 1-based
//                              position (i, j); elements of the block outside the stored
//                              triangle are not touched
//   ?spffrt2, ?spffrtx         partial L D L^T factorisation (no pivoting, no conjugation) of
//                              the first ncolm columns of a symmetric matrix in packed lower
//                              storage, leaving the Schur complement in the trailing part
// Bad arguments set info to -k and report k, as LAPACK does.
#include <algorithm>

#include "backend_lapack.h"
#include "own.h"

namespace qnl_ref::own {
namespace {

template <class T>
void report_as(const char* stem, int32_t number, I* info) {
  char name[24];
  std::snprintf(name, sizeof name, "%c%s", upper(Traits<T>::letter), stem);
  *info = -number;
  report(name, number);
}

// ---- tridiagonal
template <class T>
I factor_tridiagonal(I n, T* dl, T* d, const T* du) {
  for (I i = 0; i + 1 < n; ++i) {
    if (d[i] == T{}) return i + 1;
    dl[i] /= d[i];
    d[i + 1] -= dl[i] * du[i];
  }
  return n > 0 && d[n - 1] == T{} ? n : 0;
}

template <class T>
void solve_tridiagonal(char trans, I n, I nrhs, const T* dl, const T* d, const T* du, T* b, I ldb) {
  const bool c = trans == 'C';
  auto f = [c](T v) { return c ? conj(v) : v; };
  for (I r = 0; r < nrhs; ++r) {
    T* x = b + r * ldb;
    if (trans == 'N') {
      for (I i = 1; i < n; ++i) x[i] -= dl[i - 1] * x[i - 1];
      x[n - 1] /= d[n - 1];
      for (I i = n - 2; i >= 0; --i) x[i] = (x[i] - du[i] * x[i + 1]) / d[i];
    } else {
      // op(A) = op(U) op(L): first op(U) z = b, then op(L) x = z.
      x[0] /= f(d[0]);
      for (I i = 1; i < n; ++i) x[i] = (x[i] - f(du[i - 1]) * x[i - 1]) / f(d[i]);
      for (I i = n - 2; i >= 0; --i) x[i] -= f(dl[i]) * x[i + 1];
    }
  }
}

template <class T>
void dttrfb(const I* n, void* dl, void* d, void* du, I* info) {
  if (*n < 0) return report_as<T>("DTTRFB", 1, info);
  *info = factor_tridiagonal(*n, static_cast<T*>(dl), static_cast<T*>(d), static_cast<const T*>(du));
}

template <class T>
void dttrsb(const char* trans, const I* n, const I* nrhs, const void* dl, const void* d, const void* du, void* b,
            const I* ldb, I* info) {
  const char t = upper(*trans);
  const int32_t bad = t != 'N' && t != 'T' && t != 'C' ? 1
                      : *n < 0                         ? 2
                      : *nrhs < 0                      ? 3
                      : *ldb < std::max<I>(1, *n)      ? 8
                                                       : 0;
  if (bad) return report_as<T>("DTTRSB", bad, info);
  *info = 0;
  if (*n == 0 || *nrhs == 0) return;
  solve_tridiagonal(t, *n, *nrhs, static_cast<const T*>(dl), static_cast<const T*>(d), static_cast<const T*>(du),
                    static_cast<T*>(b), *ldb);
}

template <class T>
void dtsvb(const I* n, const I* nrhs, void* dl, void* d, void* du, void* b, const I* ldb, I* info) {
  const int32_t bad = *n < 0 ? 1 : *nrhs < 0 ? 2 : *ldb < std::max<I>(1, *n) ? 7 : 0;
  if (bad) return report_as<T>("DTSVB", bad, info);
  *info = factor_tridiagonal(*n, static_cast<T*>(dl), static_cast<T*>(d), static_cast<const T*>(du));
  if (*info == 0 && *n > 0 && *nrhs > 0)
    solve_tridiagonal('N', *n, *nrhs, static_cast<const T*>(dl), static_cast<const T*>(d), static_cast<const T*>(du),
                      static_cast<T*>(b), *ldb);
}

// ---- packed triangle <-> block
inline I packed_index(bool up, I n, I i, I j) { return up ? i + j * (j + 1) / 2 : i + j * (2 * n - j - 1) / 2; }

template <class T, bool Pack>
void tp_copy(const char* uplo, const char* trans, const I* pn, void* ap, const I* pi, const I* pj, const I* prows,
             const I* pcols, void* a, const I* plda, I* info) {
  const char u = upper(*uplo), t = upper(*trans);
  const I n = *pn, i = *pi, j = *pj, rows = *prows, cols = *pcols, lda = *plda;
  const int32_t bad = u != 'U' && u != 'L'                           ? 1
                      : t != 'N' && t != 'T' && t != 'C'             ? 2
                      : n < 0                                        ? 3
                      : i < 1                                        ? 5
                      : j < 1                                        ? 6
                      : rows < 0 || i - 1 + rows > n                 ? 7
                      : cols < 0 || j - 1 + cols > n                 ? 8
                      : lda < std::max<I>(1, t == 'N' ? rows : cols) ? 10
                                                                     : 0;
  if (bad) return report_as<T>(Pack ? "TPPACK" : "TPUNPACK", bad, info);
  *info = 0;
  const bool up = u == 'U', c = t == 'C';
  auto* p = static_cast<T*>(ap);
  auto* full = static_cast<T*>(a);
  for (I cc = 0; cc < cols; ++cc)
    for (I r = 0; r < rows; ++r) {
      const I gi = i - 1 + r, gj = j - 1 + cc;
      if (up ? gi > gj : gi < gj) continue;
      T& packed = p[packed_index(up, n, gi, gj)];
      T& block = t == 'N' ? full[r + cc * lda] : full[cc + r * lda];
      if constexpr (Pack)
        packed = c ? conj(block) : block;
      else
        block = c ? conj(packed) : packed;
    }
}

// ---- partial L D L^T in packed lower storage
template <class T>
void spffrt(void* ap, const I* pn, const I* pncolm) {
  const I n = *pn, ncolm = std::min(*pncolm, n);
  auto* p = static_cast<T*>(ap);
  for (I k = 0; k < ncolm; ++k) {
    const T dk = p[packed_index(false, n, k, k)];
    T* col = p + packed_index(false, n, k, k);  // col[i - k] is A(i, k)
    // The trailing lower triangle loses the outer product of column k, scaled by 1/dk.
    for (I j = k + 1; j < n; ++j) {
      const T s = col[j - k] / dk;
      T* dst = p + packed_index(false, n, j, j);  // dst[i - j] is A(i, j)
      for (I i = j; i < n; ++i) dst[i - j] -= col[i - k] * s;
    }
    for (I i = k + 1; i < n; ++i) col[i - k] /= dk;
  }
}

}  // namespace
}  // namespace qnl_ref::own

using namespace qnl_ref::own;

#define QNL_LAPACK_EXT_SYMBOLS(t, T)                                                                                   \
  void qnl_lapack_ps_##t##dttrfb(const I* n, void* dl, void* d, void* du, I* info) { dttrfb<T>(n, dl, d, du, info); }  \
  void qnl_lapack_##t##dttrsb(const char* tr, const I* n, const I* nrhs, void* dl, void* d, void* du, void* b,         \
                              const I* ldb, I* info, size_t) {                                                         \
    dttrsb<T>(tr, n, nrhs, dl, d, du, b, ldb, info);                                                                   \
  }                                                                                                                    \
  void qnl_lapack_ps_##t##dtsvb(const I* n, const I* nrhs, void* dl, void* d, void* du, void* b, const I* ldb,         \
                                I* info) {                                                                             \
    dtsvb<T>(n, nrhs, dl, d, du, b, ldb, info);                                                                        \
  }                                                                                                                    \
  void qnl_lapack_##t##tppack(const char* u, const char* tr, const I* n, void* ap, const I* i, const I* j, const I* r, \
                              const I* c, void* a, const I* lda, I* info, size_t, size_t) {                            \
    tp_copy<T, true>(u, tr, n, ap, i, j, r, c, a, lda, info);                                                          \
  }                                                                                                                    \
  void qnl_lapack_##t##tpunpack(const char* u, const char* tr, const I* n, void* ap, const I* i, const I* j,           \
                                const I* r, const I* c, void* a, const I* lda, I* info, size_t, size_t) {              \
    tp_copy<T, false>(u, tr, n, ap, i, j, r, c, a, lda, info);                                                         \
  }                                                                                                                    \
  void qnl_lapack_##t##spffrt2(void* ap, const I* n, const I* ncolm, void*, void*) { spffrt<T>(ap, n, ncolm); }        \
  void qnl_lapack_ao_##t##spffrt2(void* ap, const I* n, const I* ncolm, void*, void*) { spffrt<T>(ap, n, ncolm); }     \
  void qnl_lapack_##t##spffrtx(void* ap, const I* n, const I* ncolm, void*, void*) { spffrt<T>(ap, n, ncolm); }        \
  void qnl_lapack_ao_##t##spffrtx(void* ap, const I* n, const I* ncolm, void*, void*) { spffrt<T>(ap, n, ncolm); }

// The back-end symbols: exported, while the rest of the library stays hidden.
#pragma GCC visibility push(default)
extern "C" {
QNL_LAPACK_EXT_SYMBOLS(s, float)
QNL_LAPACK_EXT_SYMBOLS(d, double)
QNL_LAPACK_EXT_SYMBOLS(c, cfloat)
QNL_LAPACK_EXT_SYMBOLS(z, cdouble)
}
#pragma GCC visibility pop
