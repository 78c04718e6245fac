// Size functions of the LAPACKE table's extents (src/lapack/lapacke.sig) for matrices
// whose shape the manual states case by case. A size of 0 leaves a matrix the case
// does not use without a row-major copy, a leading-dimension check or a NaN scan.
// tools/qnlgen/lapacke_diff.py mirrors them for the differential harness's sizes.
#pragma once
#include "lapacke_kit.h"

namespace qnl::lapacke {

// x when a logical flag (?tgexc's wantq, wantz) is set, else 0.
template <class I>
inline I gifset(I flag, I x) {
  return flag ? x : I(0);
}

// x when trans is "n", else y (?sfrk's a: n by k, or k by n when transposed).
template <class I>
inline I gbytrans(char trans, I x, I y) {
  return lsame(trans, 'n') ? x : y;
}

// x for the reflectors of Q (vect "q"), else y: ?ormbr's a is nq by min(nq,k) for Q and
// min(nq,k) by nq for P.
template <class I>
inline I gbyvect(char vect, I x, I y) {
  return lsame(vect, 'q') ? x : y;
}

// Row blocks of a tall-skinny QR of m by n in blocks of mb rows (?orgtsqr_row's T holds
// one block of columns for each): max(1, ceil((m-n)/(mb-n))); 1 when mb <= n (a call the
// routine rejects).
template <class I>
inline I gtsqrblocks(I m, I n, I mb) {
  if (mb <= n || m <= n) return 1;
  return (m - n + (mb - n) - 1) / (mb - n);
}

// Columns of U in ?gesdd: m for "a" and for "o" with m < n (U then holds the square
// factor), min(m,n) for "s"; none otherwise.
template <class I>
inline I gsddu(char jobz, I m, I n) {
  if (lsame(jobz, 'a') || (lsame(jobz, 'o') && m < n)) return m;
  return lsame(jobz, 's') ? (m < n ? m : n) : I(0);
}

// Rows of VT in ?gesdd: n for "a" and for "o" with m >= n, min(m,n) for "s"; none otherwise.
template <class I>
inline I gsddvt(char jobz, I m, I n) {
  if (lsame(jobz, 'a') || (lsame(jobz, 'o') && m >= n)) return n;
  return lsame(jobz, 's') ? (m < n ? m : n) : I(0);
}

// Columns of U or rows of VT in ?gesvd: `all` for job "a", `some` for "s", none otherwise
// ("o" overwrites A, "n" computes none).
template <class I>
inline I gbysvd(char job, I all, I some) {
  return lsame(job, 'a') ? all : lsame(job, 's') ? some : I(0);
}

// Rows of V in ?gesvj: n for jobv "v", mv for "a" (the rotations applied to the caller's
// first mv rows), none otherwise.
template <class I>
inline I gsvjv(char jobv, I n, I mv) {
  return lsame(jobv, 'v') ? n : lsame(jobv, 'a') ? mv : I(0);
}

// Rows of ?laswp's row-major copy: k2, or the largest pivot of rows k1..k2 if larger, read
// from ipiv where the stock interface reads them (k1 + (i - k1)|incx|, 1-based). A k1
// below 1 reads nothing: the stock read would fall before the array.
template <class I>
inline I gpivrows(I k1, I k2, const I* ipiv, I incx) {
  I rows = k2 > 1 ? k2 : I(1);
  const I step = incx < 0 ? -incx : incx;
  for (I i = k1; k1 >= 1 && i <= k2; ++i) {
    const I pivot = ipiv[k1 - 1 + (i - k1) * step];
    if (pivot > rows) rows = pivot;
  }
  return rows;
}

}  // namespace qnl::lapacke
