// Matrix products that OpenBLAS has no routine of that name for, built on its gemm/gemv:
//   ?gemm_batch, ?gemm3m_batch   groups of products, one OpenBLAS call per matrix
//   dzgemm, scgemm               real A times complex B (one real gemm over [Re B, Im B])
//   dzgemv, scgemv               real A times complex x (the same, with two columns)
//   ?gem2vu, ?gem2vc             y1 = alpha A x1 + beta y1 and y2 = alpha op(A) x2 + beta y2
//   ?gemmt                       one triangle of alpha op(A) op(B) + beta C
#include <algorithm>
#include <cstring>
#include <vector>

#include "backend_blas.h"
#include "own.h"

namespace qnl_ref::own {
namespace {

bool transposes(char t) { return upper(t) != 'N'; }

// ---- batch: the integer arrays are 32 bits wide when the facade says so (`narrow` 1).
template <class T, bool ThreeM>
void gemm_batch(const char* ta, const char* tb, const void* m, const void* n, const void* k, const void* alpha,
                const void* a, const void* lda, const void* b, const void* ldb, const void* beta, const void* c,
                const void* ldc, const void* group_count, const void* group_size, int32_t narrow) {
  const bool w = narrow == 1;
  const I groups = int_at(group_count, 0, w);
  const auto* al = static_cast<const T*>(alpha);
  const auto* be = static_cast<const T*>(beta);
  const auto* as = static_cast<const T* const*>(a);
  const auto* bs = static_cast<const T* const*>(b);
  auto* const* cs = static_cast<T* const*>(c);
  I matrix = 0;
  for (I g = 0; g < groups; ++g) {
    const I count = int_at(group_size, g, w);
    const I gm = int_at(m, g, w), gn = int_at(n, g, w), gk = int_at(k, g, w);
    const I la = int_at(lda, g, w), lb = int_at(ldb, g, w), lc = int_at(ldc, g, w);
    for (I s = 0; s < count; ++s, ++matrix) {
      if constexpr (ThreeM)
        gemm<T, true>(ta[g], tb[g], gm, gn, gk, al[g], as[matrix], la, bs[matrix], lb, be[g], cs[matrix], lc);
      else
        gemm<T>(ta[g], tb[g], gm, gn, gk, al[g], as[matrix], la, bs[matrix], lb, be[g], cs[matrix], lc);
    }
  }
}

// ---- real times complex. With X = alpha op(B) split into its real and imaginary parts
// side by side (k x 2n), one real product op(A) X gives both parts of the result.
template <class R>
struct Mixed {
  using C = std::complex<R>;
  // op(B) element (l, j) of a complex operand in column-major storage.
  static C op_b(const C* b, I ldb, char tb, I l, I j) {
    if (!transposes(tb)) return b[l + j * ldb];
    const C v = b[j + l * ldb];
    return upper(tb) == 'C' ? std::conj(v) : v;
  }

  // C (m x n, or a vector with increment incc when n is 1 and incc != 0) =
  //   alpha op(A) op(B) + beta C, with op(B)(l, j) given by `opb`.
  template <class OpB>
  static void product(char ta, I m, I n, I k, C alpha, const R* a, I lda, OpB opb, C beta, C* c, I ldc, I incc) {
    auto dst = [&](I i, I j) -> C& { return incc ? c[(incc > 0 ? i : i - (m - 1)) * incc] : c[i + j * ldc]; };
    auto store = [&](I i, I j, C v) {
      C& d = dst(i, j);
      d = beta == C{} ? v : v + beta * d;
    };
    if (m == 0 || n == 0) return;
    if (k == 0 || alpha == C{}) {
      for (I j = 0; j < n; ++j)
        for (I i = 0; i < m; ++i) store(i, j, C{});
      return;
    }
    std::vector<R> x(static_cast<size_t>(k) * static_cast<size_t>(2 * n));
    std::vector<R> t(static_cast<size_t>(m) * static_cast<size_t>(2 * n));
    for (I j = 0; j < n; ++j)
      for (I l = 0; l < k; ++l) {
        const C v = alpha * opb(l, j);
        x[static_cast<size_t>(l + j * k)] = v.real();
        x[static_cast<size_t>(l + (j + n) * k)] = v.imag();
      }
    gemm<R>(ta, 'N', m, 2 * n, k, R{1}, a, lda, x.data(), k, R{0}, t.data(), m);
    for (I j = 0; j < n; ++j)
      for (I i = 0; i < m; ++i)
        store(i, j, C(t[static_cast<size_t>(i + j * m)], t[static_cast<size_t>(i + (j + n) * m)]));
  }

  static void gemm_(const char* ta, const char* tb, const I* m, const I* n, const I* k, const void* alpha,
                    const void* a, const I* lda, const void* b, const I* ldb, const void* beta, void* c, const I* ldc) {
    const auto* bb = static_cast<const C*>(b);
    const I lb = *ldb;
    const char t = *tb;
    product(
        *ta, *m, *n, *k, *static_cast<const C*>(alpha), static_cast<const R*>(a), *lda,
        [&](I l, I j) { return op_b(bb, lb, t, l, j); }, *static_cast<const C*>(beta), static_cast<C*>(c), *ldc, 0);
  }

  static void gemv_(const char* trans, const I* m, const I* n, const void* alpha, const void* a, const I* lda,
                    const void* x, const I* incx, const void* beta, void* y, const I* incy) {
    const bool t = transposes(*trans);
    const I rows = t ? *n : *m, len = t ? *m : *n;  // of op(A), and of x
    const auto* xv = static_cast<const C*>(x);
    const I ix = *incx;
    // x is one column of length `len`, read from its first element in memory order of
    // the increment's sign, as the BLAS do.
    auto opx = [&](I l, I) { return xv[(ix > 0 ? l : l - (len - 1)) * ix]; };
    product(*trans, rows, 1, len, *static_cast<const C*>(alpha), static_cast<const R*>(a), *lda, opx,
            *static_cast<const C*>(beta), static_cast<C*>(y), 0, *incy);
  }
};

// ---- two products with one matrix.
template <class T>
void gem2v(const I* m, const I* n, const void* alpha, const void* a, const I* lda, const void* x1, const I* incx1,
           const void* x2, const I* incx2, const void* beta, void* y1, const I* incy1, void* y2, const I* incy2) {
  const T al = *static_cast<const T*>(alpha), be = *static_cast<const T*>(beta);
  const auto* av = static_cast<const T*>(a);
  gemv<T>('N', *m, *n, al, av, *lda, static_cast<const T*>(x1), *incx1, be, static_cast<T*>(y1), *incy1);
  gemv<T>(is_complex<T> ? 'C' : 'T', *m, *n, al, av, *lda, static_cast<const T*>(x2), *incx2, be, static_cast<T*>(y2),
          *incy2);
}

// ---- one triangle of a product, by column blocks: the part of each block off the
// diagonal is a plain gemm into C, the diagonal square goes through scratch and only its
// triangle is stored.
template <class T>
void gemmt(const char* uplo, const char* ta, const char* tb, const I* pn, const I* pk, const void* alpha, const void* a,
           const I* lda, const void* b, const I* ldb, const void* beta, void* c, const I* ldc) {
  constexpr I kBlock = 96;
  const I n = *pn, k = *pk, la = *lda, lb = *ldb, lc = *ldc;
  const bool up = upper(*uplo) == 'U', tra = transposes(*ta), trb = transposes(*tb);
  const T al = *static_cast<const T*>(alpha), be = *static_cast<const T*>(beta);
  const auto* av = static_cast<const T*>(a);
  const auto* bv = static_cast<const T*>(b);
  auto* cv = static_cast<T*>(c);
  // rows i.. of op(A), columns j.. of op(B)
  auto a_rows = [&](I i) { return tra ? av + i * la : av + i; };
  auto b_cols = [&](I j) { return trb ? bv + j : bv + j * lb; };
  std::vector<T> t(static_cast<size_t>(kBlock * kBlock));
  for (I j0 = 0; j0 < n; j0 += kBlock) {
    const I jb = std::min(kBlock, n - j0);
    const I r0 = up ? 0 : j0 + jb, rn = up ? j0 : n - j0 - jb;  // the rectangle off the diagonal
    if (rn > 0 && k > 0)
      gemm<T>(*ta, *tb, rn, jb, k, al, a_rows(r0), la, b_cols(j0), lb, be, cv + r0 + j0 * lc, lc);
    else if (rn > 0)
      for (I j = j0; j < j0 + jb; ++j)
        for (I i = r0; i < r0 + rn; ++i) cv[i + j * lc] = be == T{} ? T{} : be * cv[i + j * lc];
    std::fill(t.begin(), t.end(), T{});
    if (k > 0) gemm<T>(*ta, *tb, jb, jb, k, T{1}, a_rows(j0), la, b_cols(j0), lb, T{0}, t.data(), jb);
    for (I j = 0; j < jb; ++j)
      for (I i = up ? 0 : j; i < (up ? j + 1 : jb); ++i) {
        T& d = cv[(j0 + i) + (j0 + j) * lc];
        const T v = al * t[static_cast<size_t>(i + j * jb)];
        d = be == T{} ? v : v + be * d;
      }
  }
}

}  // namespace
}  // namespace qnl_ref::own

using namespace qnl_ref::own;

#define QNL_BATCH_SYMBOL(name, T, ThreeM)                                                                            \
  void qnl_blas_##name(const char* ta, const char* tb, void* m, void* n, void* k, void* al, void* a, void* lda,      \
                       void* b, void* ldb, void* be, void* c, void* ldc, void* gc, void* gs, int32_t narrow, size_t, \
                       size_t) {                                                                                     \
    gemm_batch<T, ThreeM>(ta, tb, m, n, k, al, a, lda, b, ldb, be, c, ldc, gc, gs, narrow);                          \
  }
#define QNL_GEM2V_SYMBOL(name, T)                                                                                 \
  void qnl_blas_##name(const I* m, const I* n, void* al, void* a, const I* lda, void* x1, const I* ix1, void* x2, \
                       const I* ix2, void* be, void* y1, const I* iy1, void* y2, const I* iy2) {                  \
    gem2v<T>(m, n, al, a, lda, x1, ix1, x2, ix2, be, y1, iy1, y2, iy2);                                           \
  }
#define QNL_GEMMT_SYMBOL(t, T)                                                                                       \
  void qnl_blas_##t##gemmt(const char* u, const char* ta, const char* tb, const I* n, const I* k, void* al, void* a, \
                           const I* lda, void* b, const I* ldb, void* be, void* c, const I* ldc, size_t, size_t,     \
                           size_t) {                                                                                 \
    gemmt<T>(u, ta, tb, n, k, al, a, lda, b, ldb, be, c, ldc);                                                       \
  }
#define QNL_MIXED_SYMBOLS(gm, gv, R)                                                                                  \
  void qnl_blas_##gm(const char* ta, const char* tb, const I* m, const I* n, const I* k, void* al, void* a,           \
                     const I* lda, void* b, const I* ldb, void* be, void* c, const I* ldc, size_t, size_t) {          \
    Mixed<R>::gemm_(ta, tb, m, n, k, al, a, lda, b, ldb, be, c, ldc);                                                 \
  }                                                                                                                   \
  void qnl_blas_##gv(const char* tr, const I* m, const I* n, void* al, void* a, const I* lda, void* x, const I* incx, \
                     void* be, void* y, const I* incy, size_t) {                                                      \
    Mixed<R>::gemv_(tr, m, n, al, a, lda, x, incx, be, y, incy);                                                      \
  }

// The back-end symbols: exported, while the rest of the library stays hidden.
#pragma GCC visibility push(default)
extern "C" {
QNL_BATCH_SYMBOL(sgemm_batch, float, false)
QNL_BATCH_SYMBOL(dgemm_batch, double, false)
QNL_BATCH_SYMBOL(cgemm_batch, cfloat, false)
QNL_BATCH_SYMBOL(zgemm_batch, cdouble, false)
QNL_BATCH_SYMBOL(cgemm3m_batch, cfloat, true)
QNL_BATCH_SYMBOL(zgemm3m_batch, cdouble, true)
QNL_GEM2V_SYMBOL(sgem2vu, float)
QNL_GEM2V_SYMBOL(dgem2vu, double)
QNL_GEM2V_SYMBOL(cgem2vc, cfloat)
QNL_GEM2V_SYMBOL(zgem2vc, cdouble)
QNL_GEMMT_SYMBOL(s, float)
QNL_GEMMT_SYMBOL(d, double)
QNL_GEMMT_SYMBOL(c, cfloat)
QNL_GEMMT_SYMBOL(z, cdouble)
QNL_MIXED_SYMBOLS(scgemm, scgemv, float)
QNL_MIXED_SYMBOLS(dzgemm, dzgemv, double)
}
#pragma GCC visibility pop
