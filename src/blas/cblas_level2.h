// Level 2. The layout is tested first; a bad option is reported and the call goes on with
// an undefined character (the Fortran entry turns it down), except in ?trsv, which stops;
// numeric checks follow in their fixed order, each failure reporting and returning. A
// row-major problem is the column-major one of the transposed matrix: options and sizes
// are exchanged, and the complex Hermitian and conjugate-transposed cases conjugate the
// vectors (a scratch copy, or an in-place negation undone on every way out).
#pragma once
#include "cblas_common.h"
#include "cblas_conj.h"

namespace qnl::cblas {

// An option's character, or the undefined one after a report.
inline const char* option(const char* c, const Checker& bad, int32_t number) {
  if (c == nullptr) {
    bad(true, number);
    return kUndefined;
  }
  return c;
}

// Row-major transposition of a real or non-conjugating matrix: NoTrans reads the stored
// matrix transposed.
inline const char* row_trans_char(int t) {
  return t == kNoTrans ? "T" : (t == kTrans || t == kConjTrans) ? "N" : nullptr;
}

template <class E, class S>
inline bool gemv_quick(S alpha, S beta) {
  return is_zero(value_of<E>(alpha)) && is_one(value_of<E>(beta));
}

// ?gemv and ?gbmv (banded when `kl` and `ku` are given). Row-major checks run before the
// option is looked at, so a bad trans there is reported last and the call still goes on.
template <class I, class D, bool Banded, class S>
inline void general_mv(int layout, int trans, I m, I n, I kl, I ku, S alpha, const void* a, I lda, const void* x,
                       I incx, S beta, void* y, I incy) {
  using E = typename D::E;
  const Checker bad{D::name};
  constexpr int32_t shift = Banded ? 2 : 0;  // parameter numbers after kl, ku
  auto numeric = [&](I rows) {
    if (bad(m < 0, 3) || bad(n < 0, 4)) return true;
    if constexpr (Banded) {
      if (bad(kl < 0, 5) || bad(ku < 0, 6) || bad(lda <= kl + ku, 9)) return true;
    } else {
      if (bad(lda < max1(rows), 7)) return true;
    }
    return bad(incx == 0, 9 + shift) || bad(incy == 0, 12 + shift);
  };
  auto call = [&](const char* t, I& rows, I& cols, I& lower, I& upper, auto& al, const void* xv, I& ix, auto& be) {
    if constexpr (Banded)
      fortran(D::fortran, t, rows, cols, lower, upper, al, a, lda, xv, ix, be, y, incy);
    else
      fortran(D::fortran, t, rows, cols, al, a, lda, xv, ix, be, y, incy);
  };
  if (layout == kColMajor) {
    const char* t = option(trans_char(trans), bad, 2);
    if (numeric(m) || m == 0 || n == 0 || gemv_quick<E>(alpha, beta)) return;
    call(t, m, n, kl, ku, alpha, x, incx, beta);
  } else if (layout == kRowMajor) {
    if (numeric(n) || m == 0 || n == 0 || gemv_quick<E>(alpha, beta)) return;
    const char* t = option(row_trans_char(trans), bad, 2);
    if (is_complex<E> && trans == kConjTrans) {
      // y = alpha A^H x + beta y on the stored A^T: conj(y) = conj(alpha) A^T conj(x) + conj(beta) conj(y)
      ConjugatedMv<E, I> cj(alpha, beta, x, m, incx);
      if (cj.failed()) return cblas_report_no_memory(D::name);
      cj.negate_y(y, n, incy);
      E* pa = cj.alpha();
      E* pb = cj.beta();
      call(t, n, m, ku, kl, pa, cj.x().data(), cj.x().inc(), pb);
    } else {
      call(t, n, m, ku, kl, alpha, x, incx, beta);
    }
  } else {
    bad(true, 1);
  }
}

template <class I, class D, class S>
inline void gemv(int layout, int trans, I m, I n, S alpha, const void* a, I lda, const void* x, I incx, S beta, void* y,
                 I incy) {
  general_mv<I, D, false>(layout, trans, m, n, I{0}, I{0}, alpha, a, lda, x, incx, beta, y, incy);
}

template <class I, class D, class S>
inline void gbmv(int layout, int trans, I m, I n, I kl, I ku, S alpha, const void* a, I lda, const void* x, I incx,
                 S beta, void* y, I incy) {
  general_mv<I, D, true>(layout, trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy);
}

// ?ger, ?geru: row-major exchanges m with n and x with y. The leading dimension is tested
// before the increments although its number is higher.
template <class I, class D, class S>
inline void ger(int layout, I m, I n, S alpha, const void* x, I incx, const void* y, I incy, void* a, I lda) {
  const Checker bad{D::name};
  if (layout != kColMajor && layout != kRowMajor) return void(bad(true, 1));
  const bool row = layout == kRowMajor;
  if (bad(m < 0, 2) || bad(n < 0, 3) || bad(lda < max1(row ? n : m), 10) || bad(incx == 0, 6) || bad(incy == 0, 8))
    return;
  if (row)
    fortran(D::fortran, n, m, alpha, y, incy, x, incx, a, lda);
  else
    fortran(D::fortran, m, n, alpha, x, incx, y, incy, a, lda);
}

// ?gerc: row-major is ?geru of the transposed matrix with y conjugated.
template <class I, class D, class S>
inline void gerc(int layout, I m, I n, S alpha, const void* x, I incx, const void* y, I incy, void* a, I lda) {
  using E = typename D::E;
  if (layout != kRowMajor) return ger<I, D>(layout, m, n, alpha, x, incx, y, incy, a, lda);
  const Checker bad{D::name};
  ConjCopy<E, I> cy(y, n, incy);
  if (cy.failed()) return cblas_report_no_memory(D::name);
  if (bad(m < 0, 2) || bad(n < 0, 3) || bad(lda < max1(n), 10) || bad(incx == 0, 6) || bad(incy == 0, 8)) return;
  fortran(D::also, n, m, alpha, cy.data(), cy.inc(), x, incx, a, lda);
}

// The frame of the symmetric and Hermitian routines: layout, then uplo (exchanged in
// row-major), then `body(uplo character, row-major)`.
template <class D, class Body>
inline void uplo_frame(int layout, int uplo, Body body) {
  const Checker bad{D::name};
  if (layout != kColMajor && layout != kRowMajor) return void(bad(true, 1));
  const bool row = layout == kRowMajor;
  body(option(uplo_char(uplo, row), bad, 2), row, bad);
}

// ?symv, ?hemv (and the banded and packed forms through `Form`): a row-major Hermitian
// problem conjugates alpha, beta and x, and negates y around the call.
template <class I, class D, class S, class Checks, class Call>
inline void hermitian_mv(int layout, int uplo, I n, S alpha, const void* x, I incx, S beta, void* y, I incy,
                         Checks checks, Call call) {
  using E = typename D::E;
  uplo_frame<D>(layout, uplo, [&](const char* u, bool row, const Checker& bad) {
    if (!(is_complex<E> && row)) {
      if (!checks(bad)) call(u, alpha, x, incx, beta);
      return;
    }
    ConjugatedMv<E, I> cj(alpha, beta, x, n, incx);
    if (cj.failed()) return cblas_report_no_memory(D::name);
    cj.negate_y(y, n, incy);
    if (!checks(bad)) call(u, cj.alpha(), cj.x().data(), cj.x().inc(), cj.beta());
  });
}

template <class I, class D, class S>
inline void symv(int layout, int uplo, I n, S alpha, const void* a, I lda, const void* x, I incx, S beta, void* y,
                 I incy) {
  hermitian_mv<I, D>(
      layout, uplo, n, alpha, x, incx, beta, y, incy,
      [&](const Checker& bad) {
        return bad(n < 0, 3) || bad(lda < max1(n), 6) || bad(incx == 0, 8) || bad(incy == 0, 11);
      },
      [&](const char* u, auto al, const void* xv, I& ix, auto be) {
        fortran(D::fortran, u, n, al, a, lda, xv, ix, be, y, incy);
      });
}

template <class I, class D, class S>
inline void sbmv(int layout, int uplo, I n, I k, S alpha, const void* a, I lda, const void* x, I incx, S beta, void* y,
                 I incy) {
  hermitian_mv<I, D>(
      layout, uplo, n, alpha, x, incx, beta, y, incy,
      [&](const Checker& bad) {
        return bad(n < 0, 3) || bad(k < 0, 4) || bad(lda <= k, 7) || bad(incx == 0, 9) || bad(incy == 0, 12);
      },
      [&](const char* u, auto al, const void* xv, I& ix, auto be) {
        fortran(D::fortran, u, n, k, al, a, lda, xv, ix, be, y, incy);
      });
}

template <class I, class D, class S>
inline void spmv(int layout, int uplo, I n, S alpha, const void* ap, const void* x, I incx, S beta, void* y, I incy) {
  hermitian_mv<I, D>(
      layout, uplo, n, alpha, x, incx, beta, y, incy,
      [&](const Checker& bad) { return bad(n < 0, 3) || bad(incx == 0, 7) || bad(incy == 0, 10); },
      [&](const char* u, auto al, const void* xv, I& ix, auto be) {
        fortran(D::fortran, u, n, al, ap, xv, ix, be, y, incy);
      });
}

// ?syr, ?spr, ?her, ?hpr: a row-major Hermitian update conjugates x.
template <class I, class D, class S, class Checks, class Call>
inline void rank1(int layout, int uplo, I n, const void* x, I incx, Checks checks, Call call) {
  using E = typename D::E;
  uplo_frame<D>(layout, uplo, [&](const char* u, bool row, const Checker& bad) {
    if (!(is_complex<E> && row)) {
      if (!checks(bad)) call(u, x, incx);
      return;
    }
    ConjCopy<E, I> cx(x, n, incx);
    if (cx.failed()) return cblas_report_no_memory(D::name);
    if (!checks(bad)) call(u, cx.data(), cx.inc());
  });
}

template <class I, class D, class S>
inline void syr(int layout, int uplo, I n, S alpha, const void* x, I incx, void* a, I lda) {
  rank1<I, D, S>(
      layout, uplo, n, x, incx,
      [&](const Checker& bad) { return bad(n < 0, 3) || bad(lda < max1(n), 8) || bad(incx == 0, 6); },
      [&](const char* u, const void* xv, I& ix) { fortran(D::fortran, u, n, alpha, xv, ix, a, lda); });
}

template <class I, class D, class S>
inline void spr(int layout, int uplo, I n, S alpha, const void* x, I incx, void* ap) {
  rank1<I, D, S>(
      layout, uplo, n, x, incx, [&](const Checker& bad) { return bad(n < 0, 3) || bad(incx == 0, 6); },
      [&](const char* u, const void* xv, I& ix) { fortran(D::fortran, u, n, alpha, xv, ix, ap); });
}

// ?syr2, ?spr2, ?her2, ?hpr2: a row-major Hermitian update conjugates x and y and passes
// y's copy in x's place and x's in y's.
template <class I, class D, class Checks, class Call>
inline void rank2(int layout, int uplo, I n, const void* x, I incx, const void* y, I incy, Checks checks, Call call) {
  using E = typename D::E;
  uplo_frame<D>(layout, uplo, [&](const char* u, bool row, const Checker& bad) {
    if (!(is_complex<E> && row)) {
      if (!checks(bad)) call(u, x, incx, y, incy);
      return;
    }
    ConjCopy<E, I> cx(x, n, incx);
    if (cx.failed()) return cblas_report_no_memory(D::name);
    ConjCopy<E, I> cy(y, n, incy);
    if (cy.failed()) {
      cx.release();
      return cblas_report_no_memory(D::name);
    }
    if (!checks(bad)) call(u, cy.data(), cy.inc(), cx.data(), cx.inc());
  });
}

template <class I, class D, class S>
inline void syr2(int layout, int uplo, I n, S alpha, const void* x, I incx, const void* y, I incy, void* a, I lda) {
  rank2<I, D>(
      layout, uplo, n, x, incx, y, incy,
      [&](const Checker& bad) {
        return bad(n < 0, 3) || bad(lda < max1(n), 10) || bad(incx == 0, 6) || bad(incy == 0, 8);
      },
      [&](const char* u, const void* xv, I& ix, const void* yv, I& iy) {
        fortran(D::fortran, u, n, alpha, xv, ix, yv, iy, a, lda);
      });
}

template <class I, class D, class S>
inline void spr2(int layout, int uplo, I n, S alpha, const void* x, I incx, const void* y, I incy, void* ap) {
  rank2<I, D>(
      layout, uplo, n, x, incx, y, incy,
      [&](const Checker& bad) { return bad(n < 0, 3) || bad(incx == 0, 6) || bad(incy == 0, 8); },
      [&](const char* u, const void* xv, I& ix, const void* yv, I& iy) {
        fortran(D::fortran, u, n, alpha, xv, ix, yv, iy, ap);
      });
}

// The triangular routines. Row-major: uplo exchanged, NoTrans to "T", Trans to "N", and
// ConjTrans to "N" with x conjugated in place while the options are translated (so before
// the numeric checks) and restored on every way out. `Stops` makes a bad option end the
// call (?trsv).
template <class I, class D, bool Stops, class Checks, class Call>
inline void triangular(int layout, int uplo, int trans, int diag, I n, void* x, I incx, Checks checks, Call call) {
  using E = typename D::E;
  const Checker bad{D::name};
  if (layout != kColMajor && layout != kRowMajor) return void(bad(true, 1));
  const bool row = layout == kRowMajor;
  const char* u = uplo_char(uplo, row);
  if (!u && (u = option(u, bad, 2), Stops)) return;
  Negation<E, I> nx;
  const char* t = row ? row_trans_char(trans) : trans_char(trans);
  if (!t && (t = option(t, bad, 3), Stops)) return;
  if (is_complex<E> && row && trans == kConjTrans && n > 0) nx.apply(x, n, incx);
  const char* d = diag_char(diag);
  if (!d && (d = option(d, bad, 4), Stops)) return;
  if (!checks(bad)) call(u, t, d);
}

template <class I, class D, bool Stops = false>
inline void trmv(int layout, int uplo, int trans, int diag, I n, const void* a, I lda, void* x, I incx) {
  triangular<I, D, Stops>(
      layout, uplo, trans, diag, n, x, incx,
      [&](const Checker& bad) { return bad(n < 0, 5) || bad(lda < max1(n), 7) || bad(incx == 0, 9); },
      [&](const char* u, const char* t, const char* d) { fortran(D::fortran, u, t, d, n, a, lda, x, incx); });
}

template <class I, class D>
inline void trsv(int layout, int uplo, int trans, int diag, I n, const void* a, I lda, void* x, I incx) {
  trmv<I, D, true>(layout, uplo, trans, diag, n, a, lda, x, incx);
}

template <class I, class D>
inline void tbmv(int layout, int uplo, int trans, int diag, I n, I k, const void* a, I lda, void* x, I incx) {
  triangular<I, D, false>(
      layout, uplo, trans, diag, n, x, incx,
      [&](const Checker& bad) { return bad(n < 0, 5) || bad(k < 0, 6) || bad(lda <= k, 8) || bad(incx == 0, 10); },
      [&](const char* u, const char* t, const char* d) { fortran(D::fortran, u, t, d, n, k, a, lda, x, incx); });
}

template <class I, class D>
inline void tpmv(int layout, int uplo, int trans, int diag, I n, const void* ap, void* x, I incx) {
  triangular<I, D, false>(
      layout, uplo, trans, diag, n, x, incx, [&](const Checker& bad) { return bad(n < 0, 5) || bad(incx == 0, 8); },
      [&](const char* u, const char* t, const char* d) { fortran(D::fortran, u, t, d, n, ap, x, incx); });
}

}  // namespace qnl::cblas
