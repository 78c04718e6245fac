// Level 3 and packed GEMM. Options are checked first, then sizes, and only then the layout,
// which chooses the leading-dimension bounds; every failure reports and returns. A
// row-major problem becomes the column-major one by exchanging arguments alone: no data
// moves and nothing is allocated. The checks that pass cover every test of the Fortran
// entry's checker on the arguments it then gets, so the routines but the packed family
// reach the entry through its wide road (fortran_wide), which leaves the checker out.
#pragma once
#include "cblas_common.h"

namespace qnl::cblas {

// The transposition characters a routine accepts. The complex symmetric routines turn down
// ConjTrans and the Hermitian ones Trans, whatever the characters could express.
enum class TransSet { All, NoConj, NoPlain };

inline const char* trans_in(int t, TransSet set) {
  if ((set == TransSet::NoConj && t == kConjTrans) || (set == TransSet::NoPlain && t == kTrans)) return nullptr;
  return trans_char(t);
}

// 101 or 102 chooses the row-major or the column-major bounds; anything else reports
// parameter 1. The body has one call site, so it is inlined.
template <class D, class Body>
inline void level3_layout(int layout, const Checker& bad, Body body) {
  if (layout != kColMajor && layout != kRowMajor) {
    bad(true, 1);
    return;
  }
  body(layout == kRowMajor);
}

// The checks of the GEMM forms: options, sizes, then the layout's leading dimensions,
// numbered from `lda_number` on (the compute form has no alpha, so its numbers are one
// lower). An operand marked packed has no leading dimension to check. `call` gets the
// Fortran characters and whether the problem is row-major.
template <class I, class D, class Call>
inline void gemm_checked(int layout, int transa, int transb, const char* ta, const char* tb, I m, I n, I k, I lda,
                         I ldb, I ldc, int lda_number, Call call) {
  const Checker bad{D::name};
  if (bad(!ta, 2) || bad(!tb, 3) || bad(m < 0, 4) || bad(n < 0, 5) || bad(k < 0, 6)) return;
  const bool na = transa == kNoTrans, nb = transb == kNoTrans;
  level3_layout<D>(layout, bad, [&](bool row) {
    if ((transa != kPacked && bad(lda < max1(rows(row, na, m, k)), lda_number)) ||
        (transb != kPacked && bad(ldb < max1(rows(row, nb, k, n)), lda_number + 2)) ||
        bad(ldc < max1(row ? n : m), lda_number + 5))
      return;
    call(row);
  });
}

template <class I, class D, class S>
inline void gemm(int layout, int transa, int transb, I m, I n, I k, S alpha, const void* a, I lda, const void* b, I ldb,
                 S beta, void* c, I ldc) {
  const char* ta = trans_char(transa);
  const char* tb = trans_char(transb);
  gemm_checked<I, D>(layout, transa, transb, ta, tb, m, n, k, lda, ldb, ldc, 9, [&](bool row) {
    // Row-major: B and A exchanged with their options and leading dimensions, m with n.
    // The checks above are the entry's checker's, on the exchanged arguments: the entry
    // need not run them again.
    if (row)
      fortran_wide<D::fortran>(tb, ta, n, m, k, alpha, b, ldb, a, lda, beta, c, ldc);
    else
      fortran_wide<D::fortran>(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
  });
}

template <class I, class D, class S>
inline void gemmt(int layout, int uplo, int transa, int transb, I n, I k, S alpha, const void* a, I lda, const void* b,
                  I ldb, S beta, void* c, I ldc) {
  using E = typename D::E;
  constexpr TransSet set = is_complex<E> ? TransSet::NoConj : TransSet::All;
  const Checker bad{D::name};
  const char* ta = trans_in(transa, set);
  const char* tb = trans_in(transb, set);
  if (bad(!uplo_char(uplo, false), 2) || bad(!ta, 3) || bad(!tb, 4) || bad(n < 0, 5) || bad(k < 0, 6)) return;
  const bool na = transa == kNoTrans, nb = transb == kNoTrans;
  level3_layout<D>(layout, bad, [&](bool row) {
    if (bad(lda < max1(rows(row, na, n, k)), 9) || bad(ldb < max1(rows(row, nb, k, n)), 11) || bad(ldc < max1(n), 14))
      return;
    const char* u = uplo_char(uplo, row);
    if (row)
      fortran_wide<D::fortran>(u, tb, ta, n, k, alpha, b, ldb, a, lda, beta, c, ldc);
    else
      fortran_wide<D::fortran>(u, ta, tb, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
  });
}

template <class I, class D, class S>
inline void symm(int layout, int side, int uplo, I m, I n, S alpha, const void* a, I lda, const void* b, I ldb, S beta,
                 void* c, I ldc) {
  const Checker bad{D::name};
  if (bad(!side_char(side, false), 2) || bad(!uplo_char(uplo, false), 3) || bad(m < 0, 4) || bad(n < 0, 5)) return;
  level3_layout<D>(layout, bad, [&](bool row) {
    if (bad(lda < max1(side == kLeft ? m : n), 8) || bad(ldb < max1(row ? n : m), 10) ||
        bad(ldc < max1(row ? n : m), 13))
      return;
    const char* s = side_char(side, row);
    const char* u = uplo_char(uplo, row);
    if (row)
      fortran_wide<D::fortran>(s, u, n, m, alpha, a, lda, b, ldb, beta, c, ldc);
    else
      fortran_wide<D::fortran>(s, u, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
  });
}

// ?syrk, ?herk, ?syr2k, ?her2k. Hermitian routines are the complex ones with a real beta.
template <class D, class SB>
constexpr bool hermitian_rank_k = is_complex<typename D::E>&& std::is_arithmetic_v<SB>;

template <class D, class SB>
constexpr TransSet rank_k_set = hermitian_rank_k<D, SB>     ? TransSet::NoPlain
                                : is_complex<typename D::E> ? TransSet::NoConj
                                                            : TransSet::All;

// Row-major trans of the rank-k routines: symmetric NoTrans "T", others "N"; Hermitian
// NoTrans "C", ConjTrans "N".
template <class D, class SB>
inline const char* rank_k_row_trans(int t) {
  if (t == kNoTrans) return hermitian_rank_k<D, SB> ? "C" : "T";
  return "N";
}

// The common part: options, sizes, layout and the bounds of a, b (when `with_b`) and c,
// then `call(uplo, trans, row)`.
template <class I, class D, class SB, class Call>
inline void rank_k(int layout, int uplo, int trans, I n, I k, I lda, const I* ldb, I ldc, Call call) {
  const Checker bad{D::name};
  const char* t = trans_in(trans, rank_k_set<D, SB>);
  if (bad(!uplo_char(uplo, false), 2) || bad(!t, 3) || bad(n < 0, 4) || bad(k < 0, 5)) return;
  const bool nt = trans == kNoTrans;
  const int32_t ldc_number = ldb ? 13 : 11;
  level3_layout<D>(layout, bad, [&](bool row) {
    const I bound = max1(rows(row, nt, n, k));
    if (bad(lda < bound, 8) || (ldb && bad(*ldb < bound, 10)) || bad(ldc < max1(n), ldc_number)) return;
    call(uplo_char(uplo, row), row ? rank_k_row_trans<D, SB>(trans) : t, row);
  });
}

template <class I, class D, class SA, class SB>
inline void syrk(int layout, int uplo, int trans, I n, I k, SA alpha, const void* a, I lda, SB beta, void* c, I ldc) {
  rank_k<I, D, SB>(layout, uplo, trans, n, k, lda, nullptr, ldc, [&](const char* u, const char* t, bool) {
    fortran_wide<D::fortran>(u, t, n, k, alpha, a, lda, beta, c, ldc);
  });
}

template <class I, class D, class SA, class SB>
inline void syr2k(int layout, int uplo, int trans, I n, I k, SA alpha, const void* a, I lda, const void* b, I ldb,
                  SB beta, void* c, I ldc) {
  using E = typename D::E;
  rank_k<I, D, SB>(layout, uplo, trans, n, k, lda, &ldb, ldc, [&](const char* u, const char* t, bool row) {
    if constexpr (hermitian_rank_k<D, SB>) {
      if (row) {
        E ca = conj(value_of<E>(alpha));
        E* pa = &ca;
        return fortran_wide<D::fortran>(u, t, n, k, pa, a, lda, b, ldb, beta, c, ldc);
      }
    }
    fortran_wide<D::fortran>(u, t, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
  });
}

template <class I, class D, class S>
inline void trmm(int layout, int side, int uplo, int trans, int diag, I m, I n, S alpha, const void* a, I lda, void* b,
                 I ldb) {
  const Checker bad{D::name};
  const char* t = trans_char(trans);
  const char* d = diag_char(diag);
  if (bad(!side_char(side, false), 2) || bad(!uplo_char(uplo, false), 3) || bad(!t, 4) || bad(!d, 5) || bad(m < 0, 6) ||
      bad(n < 0, 7))
    return;
  level3_layout<D>(layout, bad, [&](bool row) {
    if (bad(lda < max1(side == kLeft ? m : n), 10) || bad(ldb < max1(row ? n : m), 12)) return;
    const char* s = side_char(side, row);
    const char* u = uplo_char(uplo, row);
    if (row)
      fortran_wide<D::fortran>(s, u, t, d, n, m, alpha, a, lda, b, ldb);
    else
      fortran_wide<D::fortran>(s, u, t, d, m, n, alpha, a, lda, b, ldb);
  });
}

// ---- packed GEMM

inline const char* identifier_char(int id, bool exchanged) {
  if (id == kAMatrix) return exchanged ? "B" : "A";
  if (id == kBMatrix) return exchanged ? "A" : "B";
  return nullptr;
}

// No layout: a buffer is asked for under the identifier as given, also for a row-major
// operand that cblas_?gemm_pack will then fill under the other one.
template <class I, class D>
inline auto gemm_alloc(int identifier, I m, I n, I k) {
  using P = typename D::E*;
  const Checker bad{D::name};
  const char* id = identifier_char(identifier, false);
  if (bad(!id, 1) || bad(m < 0, 2) || bad(n < 0, 3) || bad(k < 0, 4)) return P{nullptr};
  return static_cast<P>(fortran(D::fortran, id, m, n, k));
}

template <class I, class D, class S>
inline void gemm_pack(int layout, int identifier, int trans, I m, I n, I k, S alpha, const void* src, I ld,
                      void* dest) {
  const Checker bad{D::name};
  const char* t = trans_char(trans);
  if (bad(!identifier_char(identifier, false), 2) || bad(!t, 3) || bad(m < 0, 4) || bad(n < 0, 5) || bad(k < 0, 6))
    return;
  const bool nt = trans == kNoTrans, is_a = identifier == kAMatrix;
  level3_layout<D>(layout, bad, [&](bool row) {
    const I bound = is_a ? rows(row, nt, m, k) : rows(row, nt, k, n);
    if (bad(ld < max1(bound), 9)) return;
    const char* id = identifier_char(identifier, row);
    if (row)
      fortran(D::fortran, id, t, n, m, k, alpha, src, ld, dest);
    else
      fortran(D::fortran, id, t, m, n, k, alpha, src, ld, dest);
  });
}

inline const char* compute_char(int t) { return t == kPacked ? "P" : trans_char(t); }

template <class I, class D, class S>
inline void gemm_compute(int layout, int transa, int transb, I m, I n, I k, const void* a, I lda, const void* b, I ldb,
                         S beta, void* c, I ldc) {
  const char* ta = compute_char(transa);
  const char* tb = compute_char(transb);
  gemm_checked<I, D>(layout, transa, transb, ta, tb, m, n, k, lda, ldb, ldc, 8, [&](bool row) {
    if (row)
      fortran(D::fortran, tb, ta, n, m, k, b, ldb, a, lda, beta, c, ldc);
    else
      fortran(D::fortran, ta, tb, m, n, k, a, lda, b, ldb, beta, c, ldc);
  });
}

}  // namespace qnl::cblas
