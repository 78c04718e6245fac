// Argument checkers of the BLAS entries, one template per shape of routine. `I` is the
// caller's integer width (int32_t for LP64, int64_t for ILP64): the twins share every test,
// its order and its number and differ only in the width they read and report at. Tests run
// in argument order; the first failure is reported through cdecl_xerbla under the routine's
// name field (D::field, D::field_len) with the argument's position, and the checker returns 1.
#pragma once
#include <cstdint>

#include "entry.h"
#include "report.h"
#include "services_gen.h"

// Checkers are inlined into the quiet road of their entry (frame.h, `rejects`).
#define QNL_CHECKER inline __attribute__((always_inline))

namespace qnl::blas::check {

// qnl_serv_lsame with lengths 1, 1 against a one-letter constant, called at the back-end
// through the service's slot: every entry whose checker compares letters binds that slot
// before its first check (frame.h, frame_at), and its quiet roads run only once the entry's
// own slot is bound, which a passed check precedes. The ILP64 twin takes the whole 64-bit
// result register as its truth value, the LP64 twin the low 32 bits.
template <class I>
QNL_CHECKER I same_word(const void* a, const char* letter) {
  using Lsame = I (*)(const char*, const char*, int32_t, int32_t);
  // A plain read, so that the call goes through the slot in memory: the slot is final here.
  auto fn = *reinterpret_cast<Lsame const*>(&lsame_slot.fn);
  return fn(static_cast<const char*>(a), letter, 1, 1);
}
template <class I>
QNL_CHECKER bool same(const void* a, const char* letter) {
  return same_word<I>(a, letter) != 0;
}

template <class I>
QNL_CHECKER I get(const void* p) {
  return *static_cast<const I*>(p);
}
template <class I>
QNL_CHECKER I max1(I v) {
  return v > 1 ? v : 1;
}

template <class I>
QNL_CHECKER bool one_of(const void* a, const char* l1, const char* l2) {
  return same<I>(a, l1) || same<I>(a, l2);
}

// A transposition option: "N", then the letters the routine admits beyond it (D::trans).
template <class I, class D>
QNL_CHECKER bool trans_ok(const void* a) {
  if (same<I>(a, "N")) return true;
  for (const char* t = D::trans; *t; ++t) {
    if (*t == 'T' && same<I>(a, "T")) return true;
    if (*t == 'C' && same<I>(a, "C")) return true;
  }
  return false;
}
template <class I>
QNL_CHECKER bool uplo_ok(const void* a) {
  return one_of<I>(a, "U", "L");
}
template <class I>
QNL_CHECKER bool diag_ok(const void* a) {
  return one_of<I>(a, "U", "N");
}
template <class I>
QNL_CHECKER bool side_ok(const void* a) {
  return one_of<I>(a, "L", "R");
}

#define QNL_FAIL(n) return (qnl::report(D::field, D::field_len, static_cast<I>(n)), I{1})

// The tests of gemm after its options: sizes, then each leading dimension against the
// rows of its operand as the options have them.
template <class I, class D>
QNL_CHECKER I gemm_sizes(I M, I N, I K, I nrowa, I nrowb, const void* lda, const void* ldb, const void* ldc) {
  if (M < 0) QNL_FAIL(3);
  if (N < 0) QNL_FAIL(4);
  if (K < 0) QNL_FAIL(5);
  if (get<I>(lda) < max1(nrowa)) QNL_FAIL(8);
  if (get<I>(ldb) < max1(nrowb)) QNL_FAIL(10);
  if (get<I>(ldc) < max1(M)) QNL_FAIL(13);
  return 0;
}

// gemm with an option other than "N": its "C" and "T" compares, then the sizes. Out of
// line, so that the common road keeps nothing across its two letter compares but the
// first one's result.
template <class I, class D>
QNL_COLD I gemm_options(I wa, I wb, const void* ta, const void* tb, I M, I N, I K, const void* lda, const void* ldb,
                        const void* ldc) {
  const bool nota = wa != 0, notb = wb != 0;
  if (!nota && !same<I>(ta, "C") && !same<I>(ta, "T")) QNL_FAIL(1);
  if (!notb && !same<I>(tb, "C") && !same<I>(tb, "T")) QNL_FAIL(2);
  return gemm_sizes<I, D>(M, N, K, nota ? M : K, notb ? K : N, lda, ldb, ldc);
}

// transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc (gemm, gemm3m, dzgemm, scgemm)
template <class I, class D, class P>
QNL_CHECKER I gemm(P ta, P tb, P m, P n, P k, P, P, P lda, P, P ldb, P, P, P ldc) {
  // The compare's words are kept as they came, not as truth values: one register move
  // across the second compare instead of a test and a set.
  const I wa = same_word<I>(ta, "N"), wb = same_word<I>(tb, "N");
  const I M = get<I>(m), N = get<I>(n), K = get<I>(k);
  if (__builtin_expect(wa != 0 && wb != 0, 1)) return gemm_sizes<I, D>(M, N, K, M, K, lda, ldb, ldc);
  return gemm_options<I, D>(wa, wb, ta, tb, M, N, K, lda, ldb, ldc);
}

// uplo, transa, transb, n, k, alpha, a, lda, b, ldb, beta, c, ldc
template <class I, class D, class P>
QNL_CHECKER I gemmt(P uplo, P ta, P tb, P n, P k, P, P, P lda, P, P ldb, P, P, P ldc) {
  const bool nota = same<I>(ta, "N"), notb = same<I>(tb, "N");
  const I N = get<I>(n), K = get<I>(k);
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (!nota && !same<I>(ta, "C") && !same<I>(ta, "T")) QNL_FAIL(2);
  if (!notb && !same<I>(tb, "C") && !same<I>(tb, "T")) QNL_FAIL(3);
  if (N < 0) QNL_FAIL(4);
  if (K < 0) QNL_FAIL(5);
  if (get<I>(lda) < max1(nota ? N : K)) QNL_FAIL(8);
  if (get<I>(ldb) < max1(notb ? K : N)) QNL_FAIL(10);
  if (get<I>(ldc) < max1(N)) QNL_FAIL(13);
  return 0;
}

// trans, m, n, alpha, a, lda, x, incx, beta, y, incy
template <class I, class D, class P>
QNL_CHECKER I gemv(P trans, P m, P n, P, P, P lda, P, P incx, P, P, P incy) {
  if (!trans_ok<I, D>(trans)) QNL_FAIL(1);
  if (get<I>(m) < 0) QNL_FAIL(2);
  if (get<I>(n) < 0) QNL_FAIL(3);
  if (get<I>(lda) < max1(get<I>(m))) QNL_FAIL(6);
  if (get<I>(incx) == 0) QNL_FAIL(8);
  if (get<I>(incy) == 0) QNL_FAIL(11);
  return 0;
}

// trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy
template <class I, class D, class P>
QNL_CHECKER I gbmv(P trans, P m, P n, P kl, P ku, P, P, P lda, P, P incx, P, P, P incy) {
  if (!trans_ok<I, D>(trans)) QNL_FAIL(1);
  if (get<I>(m) < 0) QNL_FAIL(2);
  if (get<I>(n) < 0) QNL_FAIL(3);
  if (get<I>(kl) < 0) QNL_FAIL(4);
  if (get<I>(ku) < 0) QNL_FAIL(5);
  if (get<I>(lda) < get<I>(kl) + get<I>(ku) + 1) QNL_FAIL(8);
  if (get<I>(incx) == 0) QNL_FAIL(10);
  if (get<I>(incy) == 0) QNL_FAIL(13);
  return 0;
}

// uplo, n, alpha, a, lda, x, incx, beta, y, incy (symv, hemv)
template <class I, class D, class P>
QNL_CHECKER I symv(P uplo, P n, P, P, P lda, P, P incx, P, P, P incy) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(lda) < max1(get<I>(n))) QNL_FAIL(5);
  if (get<I>(incx) == 0) QNL_FAIL(7);
  if (get<I>(incy) == 0) QNL_FAIL(10);
  return 0;
}

// uplo, n, k, alpha, a, lda, x, incx, beta, y, incy (sbmv, hbmv)
template <class I, class D, class P>
QNL_CHECKER I sbmv(P uplo, P n, P k, P, P, P lda, P, P incx, P, P, P incy) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(k) < 0) QNL_FAIL(3);
  if (get<I>(lda) < get<I>(k) + 1) QNL_FAIL(6);
  if (get<I>(incx) == 0) QNL_FAIL(8);
  if (get<I>(incy) == 0) QNL_FAIL(11);
  return 0;
}

// uplo, n, alpha, ap, x, incx, beta, y, incy (spmv, hpmv)
template <class I, class D, class P>
QNL_CHECKER I spmv(P uplo, P n, P, P, P, P incx, P, P, P incy) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(incx) == 0) QNL_FAIL(6);
  if (get<I>(incy) == 0) QNL_FAIL(9);
  return 0;
}

// uplo, trans, diag, n, a, lda, x, incx (trmv, trsv)
template <class I, class D, class P>
QNL_CHECKER I trmv(P uplo, P trans, P diag, P n, P, P lda, P, P incx) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (!trans_ok<I, D>(trans)) QNL_FAIL(2);
  if (!diag_ok<I>(diag)) QNL_FAIL(3);
  if (get<I>(n) < 0) QNL_FAIL(4);
  if (get<I>(lda) < max1(get<I>(n))) QNL_FAIL(6);
  if (get<I>(incx) == 0) QNL_FAIL(8);
  return 0;
}

// uplo, trans, diag, n, k, a, lda, x, incx (tbmv, tbsv)
template <class I, class D, class P>
QNL_CHECKER I tbmv(P uplo, P trans, P diag, P n, P k, P, P lda, P, P incx) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (!trans_ok<I, D>(trans)) QNL_FAIL(2);
  if (!diag_ok<I>(diag)) QNL_FAIL(3);
  if (get<I>(n) < 0) QNL_FAIL(4);
  if (get<I>(k) < 0) QNL_FAIL(5);
  if (get<I>(lda) < get<I>(k) + 1) QNL_FAIL(7);
  if (get<I>(incx) == 0) QNL_FAIL(9);
  return 0;
}

// uplo, trans, diag, n, ap, x, incx (tpmv, tpsv)
template <class I, class D, class P>
QNL_CHECKER I tpmv(P uplo, P trans, P diag, P n, P, P, P incx) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (!trans_ok<I, D>(trans)) QNL_FAIL(2);
  if (!diag_ok<I>(diag)) QNL_FAIL(3);
  if (get<I>(n) < 0) QNL_FAIL(4);
  if (get<I>(incx) == 0) QNL_FAIL(7);
  return 0;
}

// m, n, alpha, x, incx, y, incy, a, lda (ger, geru, gerc): no option letter, no lsame
template <class I, class D, class P>
QNL_CHECKER I ger(P m, P n, P, P, P incx, P, P incy, P, P lda) {
  if (get<I>(m) < 0) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(incx) == 0) QNL_FAIL(5);
  if (get<I>(incy) == 0) QNL_FAIL(7);
  if (get<I>(lda) < max1(get<I>(m))) QNL_FAIL(9);
  return 0;
}

// uplo, n, alpha, x, incx, a, lda (syr, her)
template <class I, class D, class P>
QNL_CHECKER I syr(P uplo, P n, P, P, P incx, P, P lda) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(incx) == 0) QNL_FAIL(5);
  if (get<I>(lda) < max1(get<I>(n))) QNL_FAIL(7);
  return 0;
}

// uplo, n, alpha, x, incx, ap (spr, hpr)
template <class I, class D, class P>
QNL_CHECKER I spr(P uplo, P n, P, P, P incx, P) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(incx) == 0) QNL_FAIL(5);
  return 0;
}

// uplo, n, alpha, x, incx, y, incy, a, lda (syr2, her2)
template <class I, class D, class P>
QNL_CHECKER I syr2(P uplo, P n, P, P, P incx, P, P incy, P, P lda) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(incx) == 0) QNL_FAIL(5);
  if (get<I>(incy) == 0) QNL_FAIL(7);
  if (get<I>(lda) < max1(get<I>(n))) QNL_FAIL(9);
  return 0;
}

// uplo, n, alpha, x, incx, y, incy, ap (spr2, hpr2)
template <class I, class D, class P>
QNL_CHECKER I spr2(P uplo, P n, P, P, P incx, P, P incy, P) {
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(incx) == 0) QNL_FAIL(5);
  if (get<I>(incy) == 0) QNL_FAIL(7);
  return 0;
}

// side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc (symm, hemm)
template <class I, class D, class P>
QNL_CHECKER I symm(P side, P uplo, P m, P n, P, P, P lda, P, P ldb, P, P, P ldc) {
  const I M = get<I>(m), N = get<I>(n);
  const I nrowa = same<I>(side, "L") ? M : N;
  if (!side_ok<I>(side)) QNL_FAIL(1);
  if (!uplo_ok<I>(uplo)) QNL_FAIL(2);
  if (M < 0) QNL_FAIL(3);
  if (N < 0) QNL_FAIL(4);
  if (get<I>(lda) < max1(nrowa)) QNL_FAIL(7);
  if (get<I>(ldb) < max1(M)) QNL_FAIL(9);
  if (get<I>(ldc) < max1(M)) QNL_FAIL(12);
  return 0;
}

// uplo, trans, n, k, alpha, a, lda, beta, c, ldc (syrk, herk)
template <class I, class D, class P>
QNL_CHECKER I syrk(P uplo, P trans, P n, P k, P, P, P lda, P, P, P ldc) {
  const I N = get<I>(n), K = get<I>(k);
  const I nrowa = same<I>(trans, "N") ? N : K;
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (!trans_ok<I, D>(trans)) QNL_FAIL(2);
  if (N < 0) QNL_FAIL(3);
  if (K < 0) QNL_FAIL(4);
  if (get<I>(lda) < max1(nrowa)) QNL_FAIL(7);
  if (get<I>(ldc) < max1(N)) QNL_FAIL(10);
  return 0;
}

// uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc (syr2k, her2k)
template <class I, class D, class P>
QNL_CHECKER I syr2k(P uplo, P trans, P n, P k, P, P, P lda, P, P ldb, P, P, P ldc) {
  const I N = get<I>(n), K = get<I>(k);
  const I nrowa = same<I>(trans, "N") ? N : K;
  if (!uplo_ok<I>(uplo)) QNL_FAIL(1);
  if (!trans_ok<I, D>(trans)) QNL_FAIL(2);
  if (N < 0) QNL_FAIL(3);
  if (K < 0) QNL_FAIL(4);
  if (get<I>(lda) < max1(nrowa)) QNL_FAIL(7);
  if (get<I>(ldb) < max1(nrowa)) QNL_FAIL(9);
  if (get<I>(ldc) < max1(N)) QNL_FAIL(12);
  return 0;
}

// side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb (trmm, trsm; ptrmm skips lda,
// its triangle being packed)
template <class I, class D, class P, bool Packed = false>
QNL_CHECKER I trmm(P side, P uplo, P ta, P diag, P m, P n, P, P, P lda, P, P ldb) {
  const I M = get<I>(m), N = get<I>(n);
  const I nrowa = same<I>(side, "L") ? M : N;
  if (!side_ok<I>(side)) QNL_FAIL(1);
  if (!uplo_ok<I>(uplo)) QNL_FAIL(2);
  if (!trans_ok<I, D>(ta)) QNL_FAIL(3);
  if (!diag_ok<I>(diag)) QNL_FAIL(4);
  if (M < 0) QNL_FAIL(5);
  if (N < 0) QNL_FAIL(6);
  if (!Packed && get<I>(lda) < max1(nrowa)) QNL_FAIL(9);
  if (get<I>(ldb) < max1(M)) QNL_FAIL(11);
  return 0;
}
template <class I, class D, class P>
QNL_CHECKER I ptrmm(P side, P uplo, P ta, P diag, P m, P n, P alpha, P a, P lda, P b, P ldb) {
  return trmm<I, D, P, true>(side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb);
}

// m, n, alpha, a, lda, x1, incx1, x2, incx2, beta, y1, incy1, y2, incy2 (gem2vu, gem2vc)
template <class I, class D, class P>
QNL_CHECKER I gem2v(P m, P n, P, P, P lda, P, P incx1, P, P incx2, P, P, P incy1, P, P incy2) {
  if (get<I>(m) < 0) QNL_FAIL(1);
  if (get<I>(n) < 0) QNL_FAIL(2);
  if (get<I>(lda) < max1(get<I>(m))) QNL_FAIL(5);
  if (get<I>(incx1) == 0) QNL_FAIL(7);
  if (get<I>(incx2) == 0) QNL_FAIL(9);
  if (get<I>(incy1) == 0) QNL_FAIL(12);
  if (get<I>(incy2) == 0) QNL_FAIL(14);
  return 0;
}

// The batch: every array holds one entry per group. Each parameter is tested across all
// groups before the next parameter, so a bad option in a later group outranks a bad size
// in an earlier one; the report carries no group number.
template <class I, class D>
QNL_COLD I gemm_batch(void* ta, void* tb, void* m, void* n, void* k, void*, void*, void* lda, void*, void* ldb, void*,
                      void*, void* ldc, void* group_count, void* group_size) {
  const I groups = get<I>(group_count);
  if (groups < 0) QNL_FAIL(14);
  const char* TA = static_cast<const char*>(ta);
  const char* TB = static_cast<const char*>(tb);
  const I* M = static_cast<const I*>(m);
  const I* N = static_cast<const I*>(n);
  const I* K = static_cast<const I*>(k);
  for (I g = 0; g < groups; ++g)
    if (!same<I>(TA + g, "N") && !same<I>(TA + g, "C") && !same<I>(TA + g, "T")) QNL_FAIL(1);
  for (I g = 0; g < groups; ++g)
    if (!same<I>(TB + g, "N") && !same<I>(TB + g, "C") && !same<I>(TB + g, "T")) QNL_FAIL(2);
  for (I g = 0; g < groups; ++g)
    if (M[g] < 0) QNL_FAIL(3);
  for (I g = 0; g < groups; ++g)
    if (N[g] < 0) QNL_FAIL(4);
  for (I g = 0; g < groups; ++g)
    if (K[g] < 0) QNL_FAIL(5);
  for (I g = 0; g < groups; ++g)
    if (static_cast<const I*>(lda)[g] < max1(same<I>(TA + g, "N") ? M[g] : K[g])) QNL_FAIL(8);
  for (I g = 0; g < groups; ++g)
    if (static_cast<const I*>(ldb)[g] < max1(same<I>(TB + g, "N") ? K[g] : N[g])) QNL_FAIL(10);
  for (I g = 0; g < groups; ++g)
    if (static_cast<const I*>(ldc)[g] < max1(M[g])) QNL_FAIL(13);
  for (I g = 0; g < groups; ++g)
    if (static_cast<const I*>(group_size)[g] < 0) QNL_FAIL(15);
  return 0;
}

// identifier, m, n, k
template <class I, class D>
QNL_COLD I gemm_alloc(void* id, void* m, void* n, void* k) {
  if (!one_of<I>(id, "A", "B")) QNL_FAIL(1);
  if (get<I>(m) < 0) QNL_FAIL(2);
  if (get<I>(n) < 0) QNL_FAIL(3);
  if (get<I>(k) < 0) QNL_FAIL(4);
  return 0;
}

// identifier, trans, m, n, k, alpha, src, ld, dest: the source has m rows for "A" with
// "N", n rows for "B" transposed, and k rows otherwise.
template <class I, class D>
QNL_COLD I gemm_pack(void* id, void* trans, void* m, void* n, void* k, void*, void*, void* ld, void*) {
  const bool is_a = same<I>(id, "A");
  if (!is_a && !same<I>(id, "B")) QNL_FAIL(1);
  const bool notrans = same<I>(trans, "N");
  if (!notrans && !same<I>(trans, "C") && !same<I>(trans, "T")) QNL_FAIL(2);
  const I M = get<I>(m), N = get<I>(n), K = get<I>(k);
  if (M < 0) QNL_FAIL(3);
  if (N < 0) QNL_FAIL(4);
  if (K < 0) QNL_FAIL(5);
  const I rows = is_a && notrans ? M : !is_a && !notrans ? N : K;
  if (get<I>(ld) < max1(rows)) QNL_FAIL(8);
  return 0;
}

// transa, transb, m, n, k, a, lda, b, ldb, beta, c, ldc: "P" marks an operand that is
// already packed, whose leading dimension is then not looked at.
template <class I, class D>
QNL_COLD I gemm_compute(void* ta, void* tb, void* m, void* n, void* k, void*, void* lda, void*, void* ldb, void*, void*,
                        void* ldc) {
  const bool nota = same<I>(ta, "N"), notb = same<I>(tb, "N");
  const bool packa = !nota && same<I>(ta, "P"), packb = !notb && same<I>(tb, "P");
  if (!nota && !packa && !same<I>(ta, "C") && !same<I>(ta, "T")) QNL_FAIL(1);
  if (!notb && !packb && !same<I>(tb, "C") && !same<I>(tb, "T")) QNL_FAIL(2);
  const I M = get<I>(m), N = get<I>(n), K = get<I>(k);
  if (M < 0) QNL_FAIL(3);
  if (N < 0) QNL_FAIL(4);
  if (K < 0) QNL_FAIL(5);
  if (!packa && get<I>(lda) < max1(nota ? M : K)) QNL_FAIL(7);
  if (!packb && get<I>(ldb) < max1(notb ? K : N)) QNL_FAIL(9);
  if (get<I>(ldc) < max1(M)) QNL_FAIL(12);
  return 0;
}

#undef QNL_FAIL

}  // namespace qnl::blas::check
