// GEMM with an operand packed ahead of time, and the triangular multiply whose triangle is
// held in packed storage; s and d only.
//
// A packed operand is a block from ?gemm_alloc: a header saying which operand it holds and
// its size, then alpha op(src) in column-major order with the rows as leading dimension.
// ?gemm_compute multiplies with "P" for a packed operand (whose alpha is already in it) and
// alpha 1 otherwise; ?gemm_free gives the block back.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "backend_blas.h"
#include "backend_matcopy.h"
#include "own.h"

namespace qnl_ref::own {
namespace {

struct alignas(64) PackedHeader {
  char identifier;  // 'A' or 'B'
  I rows, cols;     // of op(src)
};

template <class T>
T* packed_data(void* block) {
  return reinterpret_cast<T*>(static_cast<PackedHeader*>(block) + 1);
}

template <class T>
void* gemm_alloc(const char* identifier, const I* m, const I* n, const I* k) {
  const bool a = is(identifier, 'A');
  if (!a && !is(identifier, 'B')) return nullptr;
  const size_t elements = static_cast<size_t>(a ? *m * *k : *k * *n);
  size_t bytes = sizeof(PackedHeader) + elements * sizeof(T);
  bytes = (bytes + 63) / 64 * 64;
  return std::aligned_alloc(64, bytes);
}

// alpha op(src) into the block, through the back-end's own scaled copy: op(src) is m x k
// for A and k x n for B.
template <class T>
void omatcopy(char trans, I rows, I cols, T alpha, const T* src, I ld, T* dst, I ldd) {
  const char order = 'C';
  const size_t r = static_cast<size_t>(rows), c = static_cast<size_t>(cols);
  if constexpr (std::is_same_v<T, float>)
    qnl_trans_qnl_somatcopy(order, trans, r, c, alpha, const_cast<T*>(src), static_cast<size_t>(ld), dst,
                            static_cast<size_t>(ldd));
  else
    qnl_trans_qnl_domatcopy(order, trans, r, c, alpha, const_cast<T*>(src), static_cast<size_t>(ld), dst,
                            static_cast<size_t>(ldd));
}

template <class T>
void gemm_pack(const char* identifier, const char* trans, const I* m, const I* n, const I* k, const void* alpha,
               const void* src, const I* ld, void* dest) {
  auto* h = static_cast<PackedHeader*>(dest);
  h->identifier = upper(*identifier);
  h->rows = h->identifier == 'A' ? *m : *k;
  h->cols = h->identifier == 'A' ? *k : *n;
  const bool t = upper(*trans) != 'N';
  if (h->rows == 0 || h->cols == 0) return;
  omatcopy<T>(t ? 'T' : 'N', t ? h->cols : h->rows, t ? h->rows : h->cols, *static_cast<const T*>(alpha),
              static_cast<const T*>(src), *ld, packed_data<T>(dest), h->rows);
}

template <class T>
void gemm_compute(const char* ta, const char* tb, const I* m, const I* n, const I* k, const void* a, const I* lda,
                  const void* b, const I* ldb, const void* beta, void* c, const I* ldc) {
  const bool pa = is(ta, 'P'), pb = is(tb, 'P');
  const T* av = pa ? packed_data<T>(const_cast<void*>(a)) : static_cast<const T*>(a);
  const T* bv = pb ? packed_data<T>(const_cast<void*>(b)) : static_cast<const T*>(b);
  gemm<T>(pa ? 'N' : *ta, pb ? 'N' : *tb, *m, *n, *k, T{1}, av, pa ? std::max<I>(1, *m) : *lda, bv,
          pb ? std::max<I>(1, *k) : *ldb, *static_cast<const T*>(beta), static_cast<T*>(c), *ldc);
}

// The triangle of order m (left) or n (right), unpacked into a full square with zeros
// around it, then OpenBLAS's trmm.
template <class T>
void ptrmm(const char* side, const char* uplo, const char* ta, const char* diag, const I* m, const I* n,
           const void* alpha, const void* ap, void* b, const I* ldb) {
  const I order = is(side, 'L') ? *m : *n;
  if (*m == 0 || *n == 0) return;
  std::vector<T> full(static_cast<size_t>(order * order), T{});
  const auto* p = static_cast<const T*>(ap);
  const bool up = is(uplo, 'U');
  for (I j = 0; j < order; ++j)
    for (I i = up ? 0 : j; i < (up ? j + 1 : order); ++i)
      full[static_cast<size_t>(i + j * order)] = up ? p[i + j * (j + 1) / 2] : p[i + j * (2 * order - j - 1) / 2];
  triangular<T, false>(*side, *uplo, *ta, *diag, *m, *n, *static_cast<const T*>(alpha), full.data(), order,
                       static_cast<T*>(b), *ldb);
}

}  // namespace
}  // namespace qnl_ref::own

using namespace qnl_ref::own;

#define QNL_PACKED_SYMBOLS(t, T)                                                                                       \
  void* qnl_blas_##t##gemm_alloc(const char* id, const I* m, const I* n, const I* k, size_t) {                         \
    return gemm_alloc<T>(id, m, n, k);                                                                                 \
  }                                                                                                                    \
  void qnl_blas_##t##gemm_pack(const char* id, const char* tr, const I* m, const I* n, const I* k, void* alpha,        \
                               void* src, const I* ld, void* dest, size_t, size_t) {                                   \
    gemm_pack<T>(id, tr, m, n, k, alpha, src, ld, dest);                                                               \
  }                                                                                                                    \
  void qnl_blas_##t##gemm_compute(const char* ta, const char* tb, const I* m, const I* n, const I* k, void* a,         \
                                  const I* lda, void* b, const I* ldb, void* beta, void* c, const I* ldc, size_t,      \
                                  size_t) {                                                                            \
    gemm_compute<T>(ta, tb, m, n, k, a, lda, b, ldb, beta, c, ldc);                                                    \
  }                                                                                                                    \
  void qnl_blas_##t##gemm_free(void* dest) { std::free(dest); }                                                        \
  void qnl_blas_##t##ptrmm(const char* side, const char* uplo, const char* ta, const char* diag, const I* m,           \
                           const I* n, void* alpha, void* ap, const I*, void* b, const I* ldb, size_t, size_t, size_t, \
                           size_t) {                                                                                   \
    ptrmm<T>(side, uplo, ta, diag, m, n, alpha, ap, b, ldb);                                                           \
  }

// The back-end symbols: exported, while the rest of the library stays hidden.
#pragma GCC visibility push(default)
extern "C" {
QNL_PACKED_SYMBOLS(s, float)
QNL_PACKED_SYMBOLS(d, double)
}
#pragma GCC visibility pop
