// The LAPACKE layout kit: for each LAPACK storage shape, the NaN scan the high
// level runs over its inputs and the row/column-major transposition the middle
// level uses. One template per shape over the element type T and the integer
// width I (int32_t in the LP64 bodies, int64_t in the ILP64 ones).
//
// Order of checks everywhere: a null array first (nothing found, nothing
// copied), then the layout, then the option letters; anything unexpected
// gives "no NaN" or no copy, silently. Nothing here prints.
//
// Offsets into the caller's arrays are computed in ptrdiff_t (at(), tri()): with the
// 32-bit lapack_int of LP64, j*lda or n*(n+1)/2 of a matrix past 2^31 elements would
// overflow and address memory outside the array.
#pragma once
#include <complex>
#include <cstddef>
#include <cstdint>

#include "entry.h"
#include "services_gen.h"

namespace qnl::lapacke {

constexpr int kRowMajor = 101, kColMajor = 102;

// Case-insensitive compare of two characters, through the service entry.
inline bool lsame(char a, char b) { return qnl_body_qnl_serv_lsame(&a, &b, 1, 1) != 0; }

template <class T>
struct real_of {
  using type = T;
};
template <class R>
struct real_of<std::complex<R>> {
  using type = R;
};

template <class T>
inline bool is_nan(const T& v) {
  return v != v;
}
template <class R>
inline bool is_nan(const std::complex<R>& v) {
  return v.real() != v.real() || v.imag() != v.imag();
}

// A contiguous run of `len` elements. With `sum` the run is first added up in
// the element's precision: a sum that is not NaN clears it without a branch per
// element; a NaN sum (a NaN, or +inf meeting -inf) falls back to the exact scan,
// which alone decides.
template <class T, class I>
inline bool run_has_nan(const T* p, I len, bool sum) {
  if (len <= 0) return false;
  if (sum) {
    T s = T();
    for (I k = 0; k < len; ++k) s += p[k];
    if (!is_nan(s)) return false;
  }
  for (I k = 0; k < len; ++k)
    if (is_nan(p[k])) return true;
  return false;
}

// Offset of element (i, j) of a matrix stored with leading dimension ld.
template <class I>
inline ptrdiff_t at(I i, I j, I ld) {
  return ptrdiff_t(i) + ptrdiff_t(j) * ptrdiff_t(ld);
}
// Elements of a packed triangle of order n (and offset of column n of an upper one).
template <class I>
inline ptrdiff_t tri(I n) {
  return ptrdiff_t(n) * (ptrdiff_t(n) + 1) / 2;
}
// Offset of column j of a lower packed triangle of order n.
template <class I>
inline ptrdiff_t lower_column(I j, I n) {
  return ptrdiff_t(j) * (2 * ptrdiff_t(n) - j + 1) / 2;
}

template <class I>
inline I imin(I a, I b) {
  return a < b ? a : b;
}
template <class I>
inline I imax(I a, I b) {
  return a > b ? a : b;
}

// max and min of any number of values, for the dimension expressions of the tables.
template <class I>
inline I gmax(I a) {
  return a;
}
template <class I, class... R>
inline I gmax(I a, R... r) {
  return imax(a, I(gmax(r...)));
}
template <class I>
inline I gmin(I a) {
  return a;
}
template <class I, class... R>
inline I gmin(I a, R... r) {
  return imin(a, I(gmin(r...)));
}
template <class I>
inline I gabs(I a) {
  return a < 0 ? -a : a;
}
// Columns of the eigenvectors of a selected range: all n for "a" and "v", iu-il+1 for "i".
template <class I>
inline I gbyrange(char range, I all, I some) {
  return lsame(range, 'a') || lsame(range, 'v') ? all : lsame(range, 'i') ? some : I(1);
}

// Rows of the reflectors of a product from the side: m for "l", n for "r".
template <class I>
inline I gbyside(char side, I m, I n) {
  return lsame(side, 'l') ? m : n;
}

inline bool bad_layout(int layout) { return layout != kRowMajor && layout != kColMajor; }
// 0 lower, 1 upper, -1 neither.
inline int upper_of(char uplo) { return lsame(uplo, 'u') ? 1 : lsame(uplo, 'l') ? 0 : -1; }
// 1 unit, 0 non-unit, -1 neither.
inline int unit_of(char diag) { return lsame(diag, 'u') ? 1 : lsame(diag, 'n') ? 0 : -1; }

// ---------------------------------------------------------------- NaN scans

template <class I, class T>
I nan_vec(I n, const T* x, I incx) {
  if (!x) return 0;
  if (incx == 0) return is_nan(x[0]);
  const ptrdiff_t inc = incx < 0 ? -ptrdiff_t(incx) : ptrdiff_t(incx);
  const ptrdiff_t end = ptrdiff_t(n) * inc;
  if (end <= 0) return 0;
  if (inc == 1) return run_has_nan(x, n, n >= 32);
  for (ptrdiff_t k = 0; k < end; k += inc)
    if (is_nan(x[k])) return 1;
  return 0;
}

template <class I, class T>
I nan_ge(int layout, I m, I n, const T* a, I lda) {
  if (!a || bad_layout(layout)) return 0;
  // Columns (rows in row-major) that follow one another without a gap are one run.
  if (layout == kColMajor ? lda == m : lda == n) {
    const int64_t count = m > 0 && n > 0 ? int64_t(m) * int64_t(n) : 0;
    return run_has_nan(a, count, count >= 16);
  }
  if (layout == kColMajor) {
    I len = imin(m, lda);
    for (I j = 0; j < n; ++j)
      if (run_has_nan(a + at(I(0), j, lda), len, m >= 16)) return 1;
  } else {
    I len = imin(n, lda);
    for (I i = 0; i < m; ++i)
      if (run_has_nan(a + at(I(0), i, lda), len, n >= 5)) return 1;
  }
  return 0;
}

template <class I, class T>
I nan_tr(int layout, char uplo, char diag, I n, const T* a, I lda) {
  if (!a || bad_layout(layout)) return 0;
  int up = upper_of(uplo), unit = unit_of(diag);
  if (up < 0 || unit < 0) return 0;
  I st = unit;
  // Column-major lower and row-major upper share one walk of a[i + j*lda].
  if ((layout == kColMajor) != (up == 1)) {
    I rows = imin(n, lda);
    for (I j = 0; j < n - st; ++j)
      if (run_has_nan(a + at(j + st, j, lda), rows - j - st, n >= 20)) return 1;
  } else {
    for (I j = st; j < n; ++j)
      if (run_has_nan(a + at(I(0), j, lda), imin(j + 1 - st, lda), n >= 16)) return 1;
  }
  return 0;
}

template <class I, class T>
I nan_sy(int layout, char uplo, I n, const T* a, I lda) {
  return nan_tr<I>(layout, uplo, 'n', n, a, lda);
}

template <class I, class T>
I nan_gb(int layout, I m, I n, I kl, I ku, const T* ab, I ldab) {
  if (!ab || bad_layout(layout)) return 0;
  I kl1 = imin(kl, m - 1), ku1 = imin(ku, n - 1);
  if (layout == kColMajor) {
    if (kl1 + ku1 >= ldab) return 0;
    for (I j = 0; j < n; ++j) {
      I lo = imax(ku1 - j, I(0)), hi = imin(m + ku1 - j, kl1 + ku1 + 1);
      if (run_has_nan(ab + at(lo, j, ldab), hi - lo, kl1 + ku1 >= 6)) return 1;
    }
  } else {
    if (imin(m, n) > ldab) return 0;
    for (I j = 0; j < n; ++j) {
      I lo = imax(ku1 - j, I(0)), hi = imin(m + ku1 - j, kl1 + ku1 + 1);
      for (I i = lo; i < hi; ++i)
        if (is_nan(ab[at(j, i, ldab)])) return 1;
    }
  }
  return 0;
}

template <class I, class T>
I nan_tb(int layout, char uplo, char diag, I n, I kd, const T* ab, I ldab) {
  if (!ab || bad_layout(layout)) return 0;
  int up = upper_of(uplo), unit = unit_of(diag);
  if (up < 0 || unit < 0) return 0;
  if (!unit) return up ? nan_gb<I>(layout, n, n, I(0), kd, ab, ldab) : nan_gb<I>(layout, n, n, kd, I(0), ab, ldab);
  bool col = layout == kColMajor;
  if (up) return nan_gb<I>(layout, n - 1, n - 1, I(0), kd - 1, col ? ab + ldab : ab + 1, ldab);
  return nan_gb<I>(layout, n - 1, n - 1, kd - 1, I(0), col ? ab + 1 : ab + ldab, ldab);
}

template <class I, class T>
I nan_sb(int layout, char uplo, I n, I kd, const T* ab, I ldab) {
  int up = upper_of(uplo);
  if (up < 0) return 0;
  return up ? nan_gb<I>(layout, n, n, I(0), kd, ab, ldab) : nan_gb<I>(layout, n, n, kd, I(0), ab, ldab);
}

template <class I, class T>
I nan_sp(I n, const T* ap) {
  if (!ap || n <= 0) return 0;
  const ptrdiff_t count = tri(n);
  return run_has_nan(ap, count, count >= 32);
}

template <class I, class T>
I nan_tp(int layout, char uplo, char diag, I n, const T* ap) {
  if (!ap || bad_layout(layout)) return 0;
  int up = upper_of(uplo), unit = unit_of(diag);
  if (up < 0 || unit < 0) return 0;
  if (!unit) return nan_sp<I>(n, ap);
  // The unit-diagonal walks are paired with the cases as settled: the one for
  // column-major upper steps through the columns of the lower scheme.
  if ((layout == kColMajor) == (up == 1)) {
    for (I i = 0; i + 1 < n; ++i)
      if (nan_vec<I>(n - i - 1, ap + 1 + i + lower_column(i, n), I(1))) return 1;
  } else {
    for (I i = 1; i < n; ++i)
      if (nan_vec<I>(i, ap + tri(i), I(1))) return 1;
  }
  return 0;
}

template <class I, class T>
I nan_tf(int layout, char transr, char uplo, char diag, I n, const T* a) {
  if (!a || bad_layout(layout)) return 0;
  bool normal = lsame(transr, 'n');
  if (!normal && !lsame(transr, 't') && !lsame(transr, 'c')) return 0;
  int up = upper_of(uplo), unit = unit_of(diag);
  if (up < 0 || unit < 0) return 0;
  if (!unit) {
    const ptrdiff_t count = n > 0 ? tri(n) : 0;
    return run_has_nan(a, count, count >= 16);
  }
  // The diagonal is left out: the RFP array is two triangles and a rectangle,
  // each tested as row-major.
  bool case_a = (layout == kColMajor) != normal;
  auto tr = [&](char u, I k, const T* p, I ld) { return nan_tr<I>(kRowMajor, u, 'u', k, p, ld); };
  auto ge = [&](I r, I c, const T* p, I ld) { return nan_ge<I>(kRowMajor, r, c, p, ld); };
  if (n % 2) {
    I n1 = up ? n / 2 : n - n / 2, n2 = n - n1;
    if (case_a)
      return up ? (tr('u', n1, a + at(I(0), n2, n2), n2) || ge(n2, n1, a, n2) || tr('l', n2, a + at(I(0), n1, n2), n2))
                : (tr('u', n1, a, n1) || ge(n1, n2, a + 1, n1) || tr('l', n2, a + 1, n1));
    return up ? (tr('l', n1, a + n2, n) || ge(n1, n2, a, n) || tr('u', n2, a + n1, n))
              : (tr('l', n1, a, n) || ge(n2, n1, a + n1, n) || tr('u', n2, a + n, n));
  }
  I k = n / 2;
  if (case_a)
    return up ? (tr('u', k, a + at(I(0), k, k + 1), k) || ge(k, k, a, k) || tr('l', k, a + at(I(0), k, k), k))
              : (tr('u', k, a + k, k) || ge(k, k, a + at(I(0), k, k + 1), k) || tr('l', k, a, k));
  return up ? (tr('l', k, a + k + 1, n + 1) || ge(k, k, a, n + 1) || tr('u', k, a + k, n + 1))
            : (tr('l', k, a + 1, n + 1) || ge(k, k, a + k + 1, n + 1) || tr('u', k, a, n + 1));
}

template <class I, class T>
I nan_hs(int layout, I n, const T* a, I lda) {
  if (!a || bad_layout(layout)) return 0;
  // The subdiagonal: element (j+1, j).
  for (I j = 0; j + 1 < n; ++j)
    if (is_nan(a[layout == kColMajor ? at(j + 1, j, lda) : at(j, j + 1, lda)])) return 1;
  return nan_tr<I>(layout, 'u', 'n', n, a, lda);
}

template <class I, class T>
I nan_gt(I n, const T* dl, const T* d, const T* du) {
  return nan_vec<I>(n - 1, dl, I(1)) || nan_vec<I>(n, d, I(1)) || nan_vec<I>(n - 1, du, I(1));
}

template <class I, class R, class T>
I nan_pt(I n, const R* d, const T* e) {
  return nan_vec<I>(n, d, I(1)) || nan_vec<I>(n - 1, e, I(1));
}

// ---------------------------------------------------------- transpositions

// The blocked public copy does the general transposition, with its own checks
// and trace (`conj`: the conjugating form of the complex types).
template <class T>
void omatcopy(char ordering, char op, size_t rows, size_t cols, const T* in, size_t ldin, T* out, size_t ldout);

template <class I, class T>
void trans_ge(int layout, I m, I n, const T* in, I ldin, T* out, I ldout, bool conj = false) {
  if (!in || !out) return;
  omatcopy<T>(layout == kColMajor ? 'c' : 'r', conj ? 'c' : 't', size_t(m), size_t(n), in, size_t(ldin), out,
              size_t(ldout));
}

template <class I, class T>
void trans_tr(int layout, char uplo, char diag, I n, const T* in, I ldin, T* out, I ldout) {
  if (!in || !out || bad_layout(layout)) return;
  int up = upper_of(uplo), unit = unit_of(diag);
  if (up < 0 || unit < 0) return;
  bool lower_walk = (layout == kColMajor) != (up == 1);
  if (!unit && n > 64) {
    // Halves, then the rectangle between them: cache-friendly for big copies.
    I n1 = n / 2, n2 = n - n1;
    trans_tr<I>(layout, uplo, diag, n1, in, ldin, out, ldout);
    trans_tr<I>(layout, uplo, diag, n2, in + at(n1, n1, ldin), ldin, out + at(n1, n1, ldout), ldout);
    if (lower_walk)
      trans_ge<I>(kColMajor, n2, n1, in + n1, ldin, out + at(I(0), n1, ldout), ldout);
    else
      trans_ge<I>(kColMajor, n1, n2, in + at(I(0), n1, ldin), ldin, out + n1, ldout);
    return;
  }
  I st = unit;
  if (lower_walk) {
    for (I j = 0; j < imin(n - st, ldout); ++j)
      for (I i = j + st; i < imin(n, ldin); ++i) out[at(j, i, ldout)] = in[at(i, j, ldin)];
  } else {
    for (I j = st; j < imin(n, ldout); ++j)
      for (I i = 0; i < imin(j + 1 - st, ldin); ++i) out[at(j, i, ldout)] = in[at(i, j, ldin)];
  }
}

template <class I, class T>
void trans_sy(int layout, char uplo, I n, const T* in, I ldin, T* out, I ldout) {
  trans_tr<I>(layout, uplo, 'n', n, in, ldin, out, ldout);
}

template <class I, class T>
void trans_gb(int layout, I m, I n, I kl, I ku, const T* in, I ldin, T* out, I ldout) {
  if (!in || !out || bad_layout(layout)) return;
  if (layout == kColMajor) {
    for (I j = 0; j < imin(ldout, n); ++j) {
      I hi = imin(imin(m + ku - j, kl + ku + 1), ldin);
      for (I i = imax(ku - j, I(0)); i < hi; ++i) out[at(j, i, ldout)] = in[at(i, j, ldin)];
    }
  } else {
    for (I j = 0; j < imin(ldin, n); ++j) {
      I hi = imin(imin(m + ku - j, kl + ku + 1), ldout);
      for (I i = imax(ku - j, I(0)); i < hi; ++i) out[at(i, j, ldout)] = in[at(j, i, ldin)];
    }
  }
}

template <class I, class T>
void trans_tb(int layout, char uplo, char diag, I n, I kd, const T* in, I ldin, T* out, I ldout) {
  if (!in || !out || bad_layout(layout)) return;
  int up = upper_of(uplo), unit = unit_of(diag);
  if (up < 0 || unit < 0) return;
  if (!unit) {
    if (up)
      trans_gb<I>(layout, n, n, I(0), kd, in, ldin, out, ldout);
    else
      trans_gb<I>(layout, n, n, kd, I(0), in, ldin, out, ldout);
    return;
  }
  bool col = layout == kColMajor;
  I m = n - 1, k = kd - 1;
  if (up == col)  // column-major upper, row-major lower
    trans_gb<I>(layout, m, m, up ? I(0) : k, up ? k : I(0), in + ldin, ldin, out + 1, ldout);
  else
    trans_gb<I>(layout, m, m, up ? I(0) : k, up ? k : I(0), in + 1, ldin, out + ldout, ldout);
}

template <class I, class T>
void trans_sb(int layout, char uplo, I n, I kd, const T* in, I ldin, T* out, I ldout) {
  if (upper_of(uplo) < 0) return;
  trans_tb<I>(layout, uplo, 'n', n, kd, in, ldin, out, ldout);
}

template <class I, class T>
void trans_tp(int layout, char uplo, char diag, I n, const T* in, T* out) {
  if (!in || !out || bad_layout(layout)) return;
  int up = upper_of(uplo), unit = unit_of(diag);
  if (up < 0 || unit < 0) return;
  I st = unit;
  if ((layout == kColMajor) == (up == 1)) {
    for (I j = st; j < n; ++j)
      for (I i = 0; i <= j - st; ++i) out[j - i + lower_column(i, n)] = in[tri(j) + i];
  } else {
    for (I j = 0; j < n - st; ++j)
      for (I i = j + st; i < n; ++i) out[j + tri(i)] = in[lower_column(j, n) + i - j];
  }
}

template <class I, class T>
void trans_sp(int layout, char uplo, I n, const T* in, T* out) {
  trans_tp<I>(layout, uplo, 'n', n, in, out);
}

template <class I, class T>
void trans_tf(int layout, char transr, char uplo, char diag, I n, const T* in, T* out) {
  if (!in || !out || bad_layout(layout)) return;
  bool normal = lsame(transr, 'n');
  if (!normal && !lsame(transr, 't') && !lsame(transr, 'c')) return;
  if (upper_of(uplo) < 0 || unit_of(diag) < 0) return;
  // The RFP array is one rectangle; diag only takes part in the checks.
  I rows, cols;
  if (normal) {
    rows = n % 2 ? n : n + 1;
    cols = n % 2 ? (n + 1) / 2 : n / 2;
  } else {
    rows = n % 2 ? (n + 1) / 2 : n / 2;
    cols = n % 2 ? n : n + 1;
  }
  if (layout == kRowMajor)
    trans_ge<I>(layout, rows, cols, in, cols, out, rows);
  else
    trans_ge<I>(layout, rows, cols, in, rows, out, cols);
}

template <class I, class T>
void trans_pf(int layout, char transr, char uplo, I n, const T* in, T* out) {
  trans_tf<I>(layout, transr, uplo, 'n', n, in, out);
}

template <class I, class T>
void trans_hs(int layout, I n, const T* in, I ldin, T* out, I ldout) {
  if (!in || !out || bad_layout(layout)) return;
  if (layout == kColMajor)
    omatcopy<T>('c', 't', 1, size_t(n - 1), in + 1, size_t(ldin) + 1, out + ldout, size_t(ldout) + 1);
  else
    omatcopy<T>('r', 't', size_t(n - 1), 1, in + ldin, size_t(ldin) + 1, out + 1, size_t(ldout) + 1);
  trans_tr<I>(layout, 'u', 'n', n, in, ldin, out, ldout);
}

}  // namespace qnl::lapacke
