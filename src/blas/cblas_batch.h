// cblas_?gemm_batch, cblas_?gemm3m_batch: the whole description is checked before any
// work, then the Fortran batch entry runs in chunks of at most 1024 groups, whose option
// characters live in two arrays of this frame: nothing is allocated.
#pragma once
#include "cblas_common.h"

namespace qnl::cblas {

inline constexpr int64_t kBatchChunk = 1024;

// One report after a scan of all groups; a null array reports too.
template <class T, class Bad>
inline bool scan(const Checker& bad, const T* array, int64_t groups, int32_t number, Bad is_bad) {
  if (array == nullptr) return bad(true, number);
  bool failed = false;
  for (int64_t g = 0; g < groups; ++g) failed |= is_bad(array[g], g);
  return bad(failed, number);
}

template <class I, class D, class T, class P, class Q>
inline void gemm_batch(int layout, const T* transa, const T* transb, const I* m, const I* n, const I* k,
                       const void* alpha, P a, const I* lda, P b, const I* ldb, const void* beta, Q c, const I* ldc,
                       I group_count, const I* group_size) {
  using E = typename D::E;
  const Checker bad{D::name};
  if (bad(layout != kColMajor && layout != kRowMajor, 1) || bad(group_count < 0, 15)) return;
  const int64_t groups = group_count;
  auto bad_trans = [](T t, int64_t) { return t < kNoTrans || t > kConjTrans; };
  auto negative = [](I v, int64_t) { return v < 0; };
  if (scan(bad, transa, groups, 2, bad_trans) || scan(bad, transb, groups, 3, bad_trans) ||
      scan(bad, m, groups, 4, negative) || scan(bad, n, groups, 5, negative) || scan(bad, k, groups, 6, negative))
    return;
  const bool row = layout == kRowMajor;
  // Rows of a and b as stored: the column-major operand, or the transposed one in row-major.
  auto lda_bad = [&](I v, int64_t g) { return v < max1(rows(row, transa[g] == kNoTrans, m[g], k[g])); };
  auto ldb_bad = [&](I v, int64_t g) { return v < max1(rows(row, transb[g] == kNoTrans, k[g], n[g])); };
  auto ldc_bad = [&](I v, int64_t g) { return v < max1(row ? n[g] : m[g]); };
  if (scan(bad, lda, groups, 9, lda_bad) || scan(bad, ldb, groups, 11, ldb_bad) || scan(bad, ldc, groups, 14, ldc_bad))
    return;

  static constexpr char kChars[] = "NTC";
  char ca[kBatchChunk], cb[kBatchChunk];
  int64_t matrices = 0;  // matrices of the groups before the chunk
  for (int64_t g = 0; g < groups; g += kBatchChunk) {
    const int64_t count = groups - g < kBatchChunk ? groups - g : kBatchChunk;
    for (int64_t i = 0; i < count; ++i) {
      ca[i] = kChars[transa[g + i] - kNoTrans];
      cb[i] = kChars[transb[g + i] - kNoTrans];
    }
    I chunk = static_cast<I>(count);
    const E* al = static_cast<const E*>(alpha) + g;
    const E* be = static_cast<const E*>(beta) + g;
    if (row)
      fortran(D::fortran, cb, ca, n + g, m + g, k + g, al, b + matrices, ldb + g, a + matrices, lda + g, be,
              c + matrices, ldc + g, chunk, group_size + g);
    else
      fortran(D::fortran, ca, cb, m + g, n + g, k + g, al, a + matrices, lda + g, b + matrices, ldb + g, be,
              c + matrices, ldc + g, chunk, group_size + g);
    for (int64_t i = 0; i < count; ++i) matrices += group_size[g + i];
  }
}

}  // namespace qnl::cblas
