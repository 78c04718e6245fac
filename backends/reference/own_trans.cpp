// Scaled copy, transposition and addition of dense matrices (the qnl_trans_qnl_* symbols):
// B = alpha op(A), in place and out of place, with strides, and C = alpha op(A) + beta op(B).
// A row-major problem is the column-major problem of the transposes, so everything is
// brought to column-major first; then each operand is a view whose element (i, j) lies at
// i*si + j*sj, and one cache-blocked sweep serves every case.
#include <algorithm>
#include <cstring>
#include <vector>

#include "backend_matcopy.h"
#include "own.h"

namespace qnl_ref::own {
namespace {

template <class T>
struct View {
  T* p;
  I si, sj;
};

// Square tiles of 32 KiB (16 KiB for the complex double type) per operand: a tile of the
// source and one of the result stay in the second-level cache at worst.
template <class T>
constexpr I kTile = sizeof(T) > 8 ? 32 : 64;

template <bool Unit, class T>
inline T& at(const View<T>& v, I i, I j) {
  return Unit ? v.p[i + j * v.sj] : v.p[i * v.si + j * v.sj];
}

template <bool Conj, class T>
inline T op(T v) {
  if constexpr (Conj)
    return conj(v);
  else
    return v;
}

// c(i, j) = alpha op(a(i, j)) [+ beta op(b(i, j))] over a block; `Unit`: every operand has
// unit stride in i, so the inner loop runs over contiguous memory.
template <class T, bool CA, bool CB, bool HasB, bool Unit>
void block(I i0, I i1, I j0, I j1, T alpha, const View<const T>& a, T beta, const View<const T>& b, const View<T>& c) {
  for (I j = j0; j < j1; ++j)
    for (I i = i0; i < i1; ++i) {
      T v = alpha * op<CA>(at<Unit>(a, i, j));
      if constexpr (HasB) v += beta * op<CB>(at<Unit>(b, i, j));
      at<Unit>(c, i, j) = v;
    }
}

// c(i, j) = a(i, j) over an m x n block, c with unit stride in i: the plain copy (alpha
// one) in a loop of few live values, where the general block spills its strides on small
// copies. No product either, so no sign of a zero or infinity changes in a complex product.
template <class T>
__attribute__((noinline)) void plain_block(I m, I n, const T* a, I asi, I asj, T* c, I csj) {
  for (I j = 0; j < n; ++j, a += asj, c += csj) {
    const T* pa = a;
    for (I i = 0; i < m; ++i, pa += asi) c[i] = *pa;
  }
}

// The sweep over an m x n result. A result that is contiguous along j is swept as its
// transpose, so that the contiguous direction is the inner loop; a result whose operands
// disagree on direction (a transposition) is swept tile by tile.
template <class T, bool CA, bool CB, bool HasB>
void sweep(I m, I n, T alpha, View<const T> a, T beta, View<const T> b, View<T> c) {
  if (c.sj == 1 && c.si != 1) {
    std::swap(m, n);
    std::swap(a.si, a.sj);
    std::swap(b.si, b.sj);
    std::swap(c.si, c.sj);
  }
  const bool unit = c.si == 1 && a.si == 1 && (!HasB || b.si == 1);
  if (unit) return block<T, CA, CB, HasB, true>(0, m, 0, n, alpha, a, beta, b, c);
  const bool plain = !CA && !HasB && c.si == 1 && alpha == T{1};
  auto tile = [&](I i, I i1, I j, I j1) {
    if (plain)
      plain_block<T>(i1 - i, j1 - j, &at<false>(a, i, j), a.si, a.sj, &at<false>(c, i, j), c.sj);
    else
      block<T, CA, CB, HasB, false>(i, i1, j, j1, alpha, a, beta, b, c);
  };
  if (m <= kTile<T> && n <= kTile<T>) return tile(0, m, 0, n);
  for (I j = 0; j < n; j += kTile<T>)
    for (I i = 0; i < m; i += kTile<T>) tile(i, std::min(m, i + kTile<T>), j, std::min(n, j + kTile<T>));
}

template <class T>
void copy(bool conjugate, I m, I n, T alpha, View<const T> a, View<T> c) {
  const View<const T> none{nullptr, 0, 0};
  if (conjugate)
    sweep<T, true, false, false>(m, n, alpha, a, T{}, none, c);
  else
    sweep<T, false, false, false>(m, n, alpha, a, T{}, none, c);
}

bool valid_order(int32_t o) { return upper(o) == 'R' || upper(o) == 'C'; }
bool valid_trans(int32_t t) { return upper(t) == 'N' || upper(t) == 'T' || upper(t) == 'C' || upper(t) == 'R'; }
bool transposes(int32_t t) { return upper(t) == 'T' || upper(t) == 'C'; }
bool conjugates(int32_t t) { return upper(t) == 'C' || upper(t) == 'R'; }
I signed_size(size_t v) { return static_cast<I>(v); }

// The name under which a routine reports: QNL_<T><FAMILY>, spelled only when a report
// needs it, so that a good call formats nothing.
template <class T>
struct Name {
  const char* family;
  char text[24] = {};
  const char* str() {
    if (!text[0]) {
      std::snprintf(text, sizeof text, "QNL_%c%s", upper(Traits<T>::letter), family);
      for (char* p = text; *p; ++p) *p = upper(*p);
    }
    return text;
  }
};

// The dimensions of a column-major problem: a row-major one has rows and columns swapped.
struct Shape {
  I rows, cols;
  Shape(int32_t ordering, size_t r, size_t c)
      : rows(signed_size(upper(ordering) == 'R' ? c : r)), cols(signed_size(upper(ordering) == 'R' ? r : c)) {}
};

// Order, option and size checks shared by the copies; parameter numbers 1 to 4.
template <class T>
bool copy_checks(Name<T>& name, int32_t ordering, int32_t trans, size_t rows, size_t cols) {
  int32_t bad = !valid_order(ordering)  ? 1
                : !valid_trans(trans)   ? 2
                : signed_size(rows) < 0 ? 3
                : signed_size(cols) < 0 ? 4
                                        : 0;
  if (bad) report(name.str(), bad);
  return bad == 0;
}

template <class T>
void omatcopy2(const char* family, int32_t ordering, int32_t trans, size_t rows, size_t cols, T alpha, const T* a,
               size_t lda, size_t stridea, T* b, size_t ldb, size_t strideb, int32_t lda_arg, int32_t ldb_arg,
               int32_t stride_arg) {
  Name<T> name{family};
  if (!copy_checks(name, ordering, trans, rows, cols)) return;
  const Shape s(ordering, rows, cols);
  const bool t = transposes(trans);
  const I la = signed_size(lda), lb = signed_size(ldb), sa = signed_size(stridea), sb = signed_size(strideb);
  const I need_b = std::max<I>(1, t ? s.cols : s.rows);
  int32_t bad = 0;
  if (stride_arg && sa < 1)
    bad = stride_arg;
  else if (la < (stride_arg ? 1 : std::max<I>(1, s.rows)))
    bad = lda_arg;
  else if (stride_arg && sb < 1)
    bad = stride_arg + 3;
  else if (lb < (stride_arg ? 1 : need_b))
    bad = ldb_arg;
  if (bad) return report(name.str(), bad);
  if (s.rows == 0 || s.cols == 0) return;
  const View<const T> va{a, sa, la};
  const View<T> vb = t ? View<T>{b, lb, sb} : View<T>{b, sb, lb};
  copy(conjugates(trans) && is_complex<T>, s.rows, s.cols, alpha, va, vb);
}

// The plain transposition of a small matrix (alpha one, no conjugation, unit strides),
// which the LAPACKE layer asks for on every row-major call: one loop after a few
// compares, where the general road spends more than the copy itself on names, views and
// the sweep. Anything else, including every call the general road would report, is left
// to it (false).
template <class T>
bool small_transpose(int32_t ordering, int32_t trans, size_t rows, size_t cols, T alpha, const T* a, size_t lda, T* b,
                     size_t ldb) {
  if ((trans != 'T' && trans != 't') || !(alpha == T{1})) return false;
  const bool row = ordering == 'R' || ordering == 'r';
  if (!row && ordering != 'C' && ordering != 'c') return false;
  // The column-major problem: m x n, read down columns of a, written along rows of b.
  const size_t m = row ? cols : rows, n = row ? rows : cols;
  if (m - 1 >= size_t(kTile<T>) || n - 1 >= size_t(kTile<T>) || lda < m || ldb < n) return false;
  // Two columns of a at a time fill neighbouring elements of each row of b.
  size_t j = 0;
  for (; j + 1 < n; j += 2, a += 2 * lda) {
    const T* a1 = a + lda;
    T* d = b + j;
    for (size_t i = 0; i < m; ++i, d += ldb) {
      d[0] = a[i];
      d[1] = a1[i];
    }
  }
  if (j < n) {
    T* d = b + j;
    for (size_t i = 0; i < m; ++i, d += ldb) *d = a[i];
  }
  return true;
}

// In place: a square transposition with one leading dimension swaps across the diagonal
// tile by tile; a copy with one leading dimension scales where it stands; anything else
// goes through a scratch copy of the result.
template <class T>
void imatcopy(int32_t ordering, int32_t trans, size_t rows, size_t cols, T alpha, T* ab, size_t lda, size_t ldb) {
  Name<T> name{"imatcopy"};
  if (!copy_checks(name, ordering, trans, rows, cols)) return;
  const Shape s(ordering, rows, cols);
  const bool t = transposes(trans), cj = conjugates(trans) && is_complex<T>;
  const I la = signed_size(lda), lb = signed_size(ldb);
  if (la < std::max<I>(1, s.rows)) return report(name.str(), 7);
  if (lb < std::max<I>(1, t ? s.cols : s.rows)) return report(name.str(), 8);
  if (s.rows == 0 || s.cols == 0) return;
  const View<const T> src{ab, 1, la};
  if (!t && la == lb) return copy(cj, s.rows, s.cols, alpha, src, View<T>{ab, 1, la});
  if (t && la == lb && s.rows == s.cols) {
    const I n = s.rows;
    auto f = [&](T v) { return alpha * (cj ? conj(v) : v); };
    for (I jb = 0; jb < n; jb += kTile<T>)
      for (I ib = 0; ib <= jb; ib += kTile<T>)
        for (I j = jb; j < std::min(n, jb + kTile<T>); ++j)
          for (I i = ib; i < std::min(ib == jb ? j + 1 : n, ib + kTile<T>); ++i) {
            T& upper_part = ab[i + j * la];
            T& lower_part = ab[j + i * la];
            const T u = upper_part;
            upper_part = f(lower_part);
            if (i != j) lower_part = f(u);
          }
    return;
  }
  const I out_rows = t ? s.cols : s.rows, out_cols = t ? s.rows : s.cols;
  std::vector<T> tmp(static_cast<size_t>(out_rows) * static_cast<size_t>(out_cols));
  copy(cj, s.rows, s.cols, alpha, src, t ? View<T>{tmp.data(), out_rows, 1} : View<T>{tmp.data(), 1, out_rows});
  const View<const T> from{tmp.data(), 1, out_rows};
  copy(false, out_rows, out_cols, T{1}, from, View<T>{ab, 1, lb});
}

template <class T>
void omatadd(int32_t ordering, int32_t ta, int32_t tb, size_t rows, size_t cols, T alpha, const T* a, size_t lda,
             T beta, const T* b, size_t ldb, T* c, size_t ldc) {
  Name<T> name{"omatadd"};
  int32_t bad = !valid_order(ordering)  ? 1
                : !valid_trans(ta)      ? 2
                : !valid_trans(tb)      ? 3
                : signed_size(rows) < 0 ? 4
                : signed_size(cols) < 0 ? 5
                                        : 0;
  if (bad) return report(name.str(), bad);
  const Shape s(ordering, rows, cols);
  const I la = signed_size(lda), lb = signed_size(ldb), lc = signed_size(ldc);
  if (la < std::max<I>(1, transposes(ta) ? s.cols : s.rows)) return report(name.str(), 8);
  if (lb < std::max<I>(1, transposes(tb) ? s.cols : s.rows)) return report(name.str(), 11);
  if (lc < std::max<I>(1, s.rows)) return report(name.str(), 13);
  if (s.rows == 0 || s.cols == 0) return;
  const View<const T> va = transposes(ta) ? View<const T>{a, la, 1} : View<const T>{a, 1, la};
  const View<const T> vb = transposes(tb) ? View<const T>{b, lb, 1} : View<const T>{b, 1, lb};
  const View<T> vc{c, 1, lc};
  const bool ca = conjugates(ta) && is_complex<T>, cb = conjugates(tb) && is_complex<T>;
  if (ca && cb)
    sweep<T, true, true, true>(s.rows, s.cols, alpha, va, beta, vb, vc);
  else if (ca)
    sweep<T, true, false, true>(s.rows, s.cols, alpha, va, beta, vb, vc);
  else if (cb)
    sweep<T, false, true, true>(s.rows, s.cols, alpha, va, beta, vb, vc);
  else
    sweep<T, false, false, true>(s.rows, s.cols, alpha, va, beta, vb, vc);
}

// Scalars cross the C boundary as two-member structs.
template <class T>
T value(T v) {
  return v;
}
cfloat value(qnl_trans_cfloat v) { return {v.re, v.im}; }
cdouble value(qnl_trans_cdouble v) { return {v.re, v.im}; }

}  // namespace
}  // namespace qnl_ref::own

using namespace qnl_ref::own;

#define QNL_TRANS_SYMBOLS(t, S, T)                                                                                     \
  void qnl_trans_qnl_##t##imatcopy(int32_t o, int32_t tr, size_t r, size_t c, S alpha, void* ab, size_t lda,           \
                                   size_t ldb) {                                                                       \
    imatcopy<T>(o, tr, r, c, value(alpha), static_cast<T*>(ab), lda, ldb);                                             \
  }                                                                                                                    \
  void qnl_trans_qnl_##t##omatcopy(int32_t o, int32_t tr, size_t r, size_t c, S alpha, void* a, size_t lda, void* b,   \
                                   size_t ldb) {                                                                       \
    if (small_transpose<T>(o, tr, r, c, value(alpha), static_cast<const T*>(a), lda, static_cast<T*>(b), ldb)) return; \
    omatcopy2<T>("omatcopy", o, tr, r, c, value(alpha), static_cast<const T*>(a), lda, 1, static_cast<T*>(b), ldb, 1,  \
                 7, 9, 0);                                                                                             \
  }                                                                                                                    \
  void qnl_trans_qnl_##t##omatcopy2(int32_t o, int32_t tr, size_t r, size_t c, S alpha, void* a, size_t lda,           \
                                    size_t sa, void* b, size_t ldb, size_t sb) {                                       \
    omatcopy2<T>("omatcopy2", o, tr, r, c, value(alpha), static_cast<const T*>(a), lda, sa, static_cast<T*>(b), ldb,   \
                 sb, 7, 10, 8);                                                                                        \
  }                                                                                                                    \
  void qnl_trans_qnl_##t##omatadd(int32_t o, int32_t ta, int32_t tb, size_t r, size_t c, S alpha, void* a, size_t lda, \
                                  S beta, void* b, size_t ldb, void* cc, size_t ldc) {                                 \
    omatadd<T>(o, ta, tb, r, c, value(alpha), static_cast<const T*>(a), lda, value(beta), static_cast<const T*>(b),    \
               ldb, static_cast<T*>(cc), ldc);                                                                         \
  }

// The back-end symbols: exported, while the rest of the library stays hidden.
#pragma GCC visibility push(default)
extern "C" {
QNL_TRANS_SYMBOLS(s, float, float)
QNL_TRANS_SYMBOLS(d, double, double)
QNL_TRANS_SYMBOLS(c, qnl_trans_cfloat, cfloat)
QNL_TRANS_SYMBOLS(z, qnl_trans_cdouble, cdouble)
}
#pragma GCC visibility pop
