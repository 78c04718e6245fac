// LU factorisation without pivoting of the first nfact columns of an m x n matrix:
//   A = [L11 0; L21 I] [U11 U12; 0 S],  with S = A22 - L21 U12 left in A22,
// L unit lower triangular (nfact columns), U upper (nfact rows). ?getf2npi works column by
// column; ?getrfnpi factors panels of kPanel columns that way and updates the rest of the
// matrix with OpenBLAS's trsm and gemm. A pivot that is exactly zero is recorded in info
// (its 1-based column, the first one only) and its column is left unscaled, so the
// factorisation runs to the end as LAPACK's unpivoted kernels do.
#include <algorithm>

#include "backend_lapack.h"
#include "own.h"

namespace qnl_ref::own {
namespace {

constexpr I kPanel = 64;

// Column by column over the first `nfact` columns; the rank-one updates cover all n
// columns. Returns the first zero pivot's 1-based column, or 0.
template <class T>
I factor_columns(I m, I n, I nfact, T* a, I lda) {
  I info = 0;
  for (I j = 0; j < nfact; ++j) {
    T* col = a + j * lda;
    const T pivot = col[j];
    if (pivot == T{}) {
      if (info == 0) info = j + 1;
    } else {
      const T r = T{1} / pivot;
      for (I i = j + 1; i < m; ++i) col[i] *= r;
    }
    for (I k = j + 1; k < n; ++k) {
      T* dst = a + k * lda;
      const T u = dst[j];
      if (u == T{}) continue;
      for (I i = j + 1; i < m; ++i) dst[i] -= col[i] * u;
    }
  }
  return info;
}

template <class T>
I factor_blocked(I m, I n, I nfact, T* a, I lda) {
  I info = 0;
  for (I j = 0; j < nfact; j += kPanel) {
    const I jb = std::min(kPanel, nfact - j);
    T* diag = a + j + j * lda;
    // The panel: columns j .. j+jb of rows j .. m.
    const I panel_info = factor_columns(m - j, jb, jb, diag, lda);
    if (panel_info && !info) info = panel_info + j;
    const I rest = n - j - jb;
    if (rest <= 0) continue;
    T* right = a + j + (j + jb) * lda;
    // U12 = L11^-1 A12, then the trailing matrix loses L21 U12.
    triangular<T, true>('L', 'L', 'N', 'U', jb, rest, T{1}, diag, lda, right, lda);
    if (m - j - jb > 0)
      gemm<T>('N', 'N', m - j - jb, rest, jb, T{-1}, diag + jb, lda, right, lda, T{1}, right + jb, lda);
  }
  return info;
}

// Argument checks: the LAPACK convention of -k in info and a report of k.
template <class T>
bool checked(const char* routine, I m, I n, I nfact, I lda, int64_t* info) {
  int32_t bad = m < 0 ? 1 : n < 0 ? 2 : nfact < 0 || nfact > std::min(m, n) ? 3 : lda < std::max<I>(1, m) ? 5 : 0;
  *info = -bad;
  if (bad) {
    char name[24];
    std::snprintf(name, sizeof name, "QNL_%c%s", upper(Traits<T>::letter), routine);
    report(name, bad);
  }
  return bad == 0;
}

template <class T>
void getf2npi(const I* m, const I* n, const I* nfact, void* a, const I* lda, I* info) {
  if (checked<T>("GETF2NPI", *m, *n, *nfact, *lda, info))
    *info = factor_columns(*m, *n, *nfact, static_cast<T*>(a), *lda);
}

template <class T>
void getrfnpi(const I* m, const I* n, const I* nfact, void* a, const I* lda, I* info) {
  if (checked<T>("GETRFNPI", *m, *n, *nfact, *lda, info))
    *info = factor_blocked(*m, *n, *nfact, static_cast<T*>(a), *lda);
}

}  // namespace
}  // namespace qnl_ref::own

using namespace qnl_ref::own;

// The offload twin that the facade picks for large matrices computes here as well.
#define QNL_LU_SYMBOLS(t, T)                                                                        \
  void qnl_lapack_##t##getf2npi(const I* m, const I* n, const I* f, void* a, const I* l, I* i) {    \
    getf2npi<T>(m, n, f, a, l, i);                                                                  \
  }                                                                                                 \
  void qnl_lapack_##t##getrfnpi(const I* m, const I* n, const I* f, void* a, const I* l, I* i) {    \
    getrfnpi<T>(m, n, f, a, l, i);                                                                  \
  }                                                                                                 \
  void qnl_lapack_ao_##t##getrfnpi(const I* m, const I* n, const I* f, void* a, const I* l, I* i) { \
    getrfnpi<T>(m, n, f, a, l, i);                                                                  \
  }

// The back-end symbols: exported, while the rest of the library stays hidden.
#pragma GCC visibility push(default)
extern "C" {
QNL_LU_SYMBOLS(s, float)
QNL_LU_SYMBOLS(d, double)
QNL_LU_SYMBOLS(c, cfloat)
QNL_LU_SYMBOLS(z, cdouble)
}
#pragma GCC visibility pop
