// Argument checks at the entry of the much-used routines, so that a bad call
// never reaches the back-end. One function per integer width, on the caller's
// own arguments; parameters are numbered from 1 as the routine documents them.
// A failure stores the negative number into info, reports the positive one
// through cdecl_xerbla and returns 1.
#include <cstdint>

#include "lapack_frame.h"
#include "report.h"
#include "services_gen.h"

namespace qnl::lapack {
namespace {

int64_t max2(int64_t a, int64_t b) { return a > b ? a : b; }
int64_t min2(int64_t a, int64_t b) { return a < b ? a : b; }

template <class I>
struct Args {
  const Routine& r;
  void* const* a;

  Args(const Routine& routine, void* const* args) : r(routine), a(args) {
    *static_cast<I*>(a[r.info]) = 0;
  }
  int64_t operator[](int k) const { return *static_cast<const I*>(a[k - 1]); }
  bool is(int k, char c) const { return qnl_body_qnl_serv_lsame(static_cast<const char*>(a[k - 1]), &c, 1, 1) != 0; }
  bool either(int k, char c, char d) const { return is(k, c) || is(k, d); }
  int fail(int k) const {
    *static_cast<I*>(a[r.info]) = static_cast<I>(-k);
    report(r.name(), name_length(r.name()), int64_t{k});
    return 1;
  }
  bool complex() const { return r.name()[0] == 'C' || r.name()[0] == 'Z'; }
};

// A workspace length passes when it is -1: the call is a size query.
bool short_of(int64_t lwork, int64_t need) { return lwork != -1 && lwork < need; }

template <class I>
int getrf(const Routine& r, void* const* p) {  // m, n, a, lda, ipiv, info
  Args<I> x(r, p);
  if (x[1] < 0) return x.fail(1);
  if (x[2] < 0) return x.fail(2);
  if (x[4] < max2(1, x[1])) return x.fail(4);
  return 0;
}

template <class I>
int potrf(const Routine& r, void* const* p) {  // uplo, n, a, lda, info
  Args<I> x(r, p);
  if (!x.either(1, 'U', 'L')) return x.fail(1);
  if (x[2] < 0) return x.fail(2);
  if (x[4] < max2(1, x[2])) return x.fail(4);
  return 0;
}

// m, n, a, lda, tau, work, lwork, info; the workspace needs n columns (qr, ql)
// or m rows (lq).
template <class I, bool Rows>
int qr_like(const Routine& r, void* const* p) {
  Args<I> x(r, p);
  if (x[1] < 0) return x.fail(1);
  if (x[2] < 0) return x.fail(2);
  if (x[4] < max2(1, x[1])) return x.fail(4);
  if (short_of(x[7], max2(1, Rows ? x[1] : x[2]))) return x.fail(7);
  return 0;
}

template <class I>
int gebrd(const Routine& r, void* const* p) {  // m, n, a, lda, d, e, tauq, taup, work, lwork, info
  Args<I> x(r, p);
  if (x[1] < 0) return x.fail(1);
  if (x[2] < 0) return x.fail(2);
  if (x[4] < max2(1, x[1])) return x.fail(4);
  if (short_of(x[10], max2(1, max2(x[1], x[2])))) return x.fail(10);
  return 0;
}

// n, ilo, ihi, a, lda, tau, work, lwork, info: gehrd needs n of workspace,
// orghr ihi - ilo.
template <class I, bool Orghr>
int hessenberg(const Routine& r, void* const* p) {
  Args<I> x(r, p);
  int64_t n = x[1];
  if (n < 0) return x.fail(1);
  if (x[2] < 1 || x[2] > max2(1, n)) return x.fail(2);
  if (x[3] < min2(x[2], n) || x[3] > n) return x.fail(3);
  if (x[5] < max2(1, n)) return x.fail(5);
  if (short_of(x[8], max2(1, Orghr ? x[3] - x[2] : n))) return x.fail(8);
  return 0;
}

template <class I>
int sytrd(const Routine& r, void* const* p) {  // uplo, n, a, lda, d, e, tau, work, lwork, info
  Args<I> x(r, p);
  if (!x.either(1, 'U', 'L')) return x.fail(1);
  if (x[2] < 0) return x.fail(2);
  if (x[4] < max2(1, x[2])) return x.fail(4);
  if (short_of(x[9], 1)) return x.fail(9);
  return 0;
}

template <class I>
int sygst(const Routine& r, void* const* p) {  // itype, uplo, n, a, lda, b, ldb, info
  Args<I> x(r, p);
  if (x[1] < 1 || x[1] > 3) return x.fail(1);
  if (!x.either(2, 'U', 'L')) return x.fail(2);
  if (x[3] < 0) return x.fail(3);
  if (x[5] < max2(1, x[3])) return x.fail(5);
  if (x[7] < max2(1, x[3])) return x.fail(7);
  return 0;
}

// jobz, uplo, n, kd, a, lda, d, e, tau, z, ldz, work, lwork, info. Vectors are
// wanted with jobz V or U (update); the workspace holds n by kd.
template <class I>
int syrdb(const Routine& r, void* const* p) {
  Args<I> x(r, p);
  bool vectors = x.either(1, 'V', 'U');
  if (!vectors && !x.is(1, 'N')) return x.fail(1);
  if (!x.either(2, 'U', 'L')) return x.fail(2);
  int64_t n = x[3];
  if (n < 0) return x.fail(3);
  if (x[4] < 0) return x.fail(4);
  if (x[6] < max2(1, n)) return x.fail(6);
  if (x[11] < 1 || (vectors && x[11] < n)) return x.fail(11);
  if (short_of(x[13], max2(1, n * x[4]))) return x.fail(13);
  return 0;
}

template <class I>
int syevd(const Routine& r, void* const* p) {  // jobz, uplo, n, a, lda, w, work, lwork, iwork, liwork, info
  Args<I> x(r, p);
  bool wantz = x.is(1, 'V');
  int64_t n = x[3];
  int64_t lwmin = 1, liwmin = 1;
  if (n > 1) {
    lwmin = wantz ? 2 * n * n + 6 * n + 1 : 2 * n + 1;
    liwmin = wantz ? 5 * n + 3 : 1;
  }
  bool query = x[8] == -1 || x[10] == -1;
  if (!wantz && !x.is(1, 'N')) return x.fail(1);
  if (!x.either(2, 'U', 'L')) return x.fail(2);
  if (n < 0) return x.fail(3);
  if (x[5] < max2(1, n)) return x.fail(5);
  if (!query && x[8] < lwmin) return x.fail(8);
  if (!query && x[10] < liwmin) return x.fail(10);
  return 0;
}

template <class I>
int heevd(const Routine& r, void* const* p) {  // jobz, uplo, n, a, lda, w, work, lwork, rwork, lrwork, iwork, liwork, info
  Args<I> x(r, p);
  bool wantz = x.is(1, 'V');
  int64_t n = x[3];
  int64_t lwmin = 1, lrwmin = 1, liwmin = 1;
  if (n > 1) {
    lwmin = wantz ? 2 * n + n * n : n + 1;
    lrwmin = wantz ? 1 + 5 * n + 2 * n * n : n;
    liwmin = wantz ? 3 + 5 * n : 1;
  }
  bool query = x[8] == -1 || x[10] == -1 || x[12] == -1;
  if (!wantz && !x.is(1, 'N')) return x.fail(1);
  if (!x.either(2, 'U', 'L')) return x.fail(2);
  if (n < 0) return x.fail(3);
  if (x[5] < max2(1, n)) return x.fail(5);
  if (!query && x[8] < lwmin) return x.fail(8);
  if (!query && x[10] < lrwmin) return x.fail(10);
  if (!query && x[12] < liwmin) return x.fail(12);
  return 0;
}

template <class I>
int hegvd(const Routine& r, void* const* p) {  // itype, jobz, uplo, n, a, lda, b, ldb, ...; workspace left to the back-end
  Args<I> x(r, p);
  if (x[1] < 1 || x[1] > 3) return x.fail(1);
  if (!x.either(2, 'V', 'N')) return x.fail(2);
  if (!x.either(3, 'U', 'L')) return x.fail(3);
  if (x[4] < 0) return x.fail(4);
  if (x[6] < max2(1, x[4])) return x.fail(6);
  if (x[8] < max2(1, x[4])) return x.fail(8);
  return 0;
}

template <class I>
int gesvd(const Routine& r, void* const* p) {  // jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt, ...
  Args<I> x(r, p);
  bool u_as = x.either(1, 'A', 'S'), u_o = x.is(1, 'O');
  bool vt_a = x.is(2, 'A'), vt_s = x.is(2, 'S'), vt_o = x.is(2, 'O');
  int64_t m = x[3], n = x[4];
  if (!u_as && !u_o && !x.is(1, 'N')) return x.fail(1);
  if ((!vt_a && !vt_s && !vt_o && !x.is(2, 'N')) || (u_o && vt_o)) return x.fail(2);
  if (m < 0) return x.fail(3);
  if (n < 0) return x.fail(4);
  if (x[6] < max2(1, m)) return x.fail(6);
  if (x[9] < 1 || (u_as && x[9] < m)) return x.fail(9);
  if (x[11] < 1 || (vt_a && x[11] < n) || (vt_s && x[11] < min2(m, n))) return x.fail(11);
  return 0;
}

// jobvl, jobvr, n, a, lda, then the eigenvalues (wr, wi real; w complex) and
// vl, ldvl, vr, ldvr; the workspace is left to the back-end.
template <class I, int Ldvl>
int geev(const Routine& r, void* const* p) {
  Args<I> x(r, p);
  bool wantvl = x.is(1, 'V'), wantvr = x.is(2, 'V');
  int64_t n = x[3];
  if (!wantvl && !x.is(1, 'N')) return x.fail(1);
  if (!wantvr && !x.is(2, 'N')) return x.fail(2);
  if (n < 0) return x.fail(3);
  if (x[5] < max2(1, n)) return x.fail(5);
  if (x[Ldvl] < 1 || (wantvl && x[Ldvl] < n)) return x.fail(Ldvl);
  if (x[Ldvl + 2] < 1 || (wantvr && x[Ldvl + 2] < n)) return x.fail(Ldvl + 2);
  return 0;
}

template <class I>
int orgqr(const Routine& r, void* const* p) {  // m, n, k, a, lda, tau, work, lwork, info
  Args<I> x(r, p);
  int64_t m = x[1], n = x[2], k = x[3];
  if (m < 0) return x.fail(1);
  if (n < 0 || n > m) return x.fail(2);
  if (k < 0 || k > n) return x.fail(3);
  if (x[5] < max2(1, m)) return x.fail(5);
  if (short_of(x[8], max2(1, n))) return x.fail(8);
  return 0;
}

// side, trans, m, n, k, a, lda, tau, c, ldc, work, lwork, info. The reflectors
// of qr and ql are stored in columns (lda >= order of Q), of lq and rq in rows
// (lda >= k). Complex types take trans C where real ones take T.
template <class I, bool Rows>
int orm(const Routine& r, void* const* p) {
  Args<I> x(r, p);
  bool left = x.is(1, 'L');
  int64_t m = x[3], n = x[4], k = x[5];
  int64_t nq = left ? m : n, nw = left ? n : m;
  if (!left && !x.is(1, 'R')) return x.fail(1);
  if (!x.either(2, 'N', x.complex() ? 'C' : 'T')) return x.fail(2);
  if (m < 0) return x.fail(3);
  if (n < 0) return x.fail(4);
  if (k < 0 || k > nq) return x.fail(5);
  if (x[7] < max2(1, Rows ? k : nq)) return x.fail(7);
  if (x[10] < max2(1, m)) return x.fail(10);
  if (short_of(x[12], max2(1, nw))) return x.fail(12);
  return 0;
}

template <class I>
int dtsvb(const Routine& r, void* const* p) {  // n, nrhs, dl, d, du, b, ldb, info
  Args<I> x(r, p);
  if (x[1] < 0) return x.fail(1);
  if (x[2] < 0) return x.fail(2);
  // ldb is compared with n itself, not max(1, n).
  if (x[7] < x[1]) return x.fail(7);
  return 0;
}

template <class I>
int dttrfb(const Routine& r, void* const* p) {  // n, dl, d, du, info
  Args<I> x(r, p);
  if (x[1] < 0) return x.fail(1);
  return 0;
}

}  // namespace

const CheckPair kCheck_getrf = {getrf<int32_t>, getrf<int64_t>};
const CheckPair kCheck_potrf = {potrf<int32_t>, potrf<int64_t>};
const CheckPair kCheck_geqrf = {qr_like<int32_t, false>, qr_like<int64_t, false>};
const CheckPair kCheck_geqlf = {qr_like<int32_t, false>, qr_like<int64_t, false>};
const CheckPair kCheck_gelqf = {qr_like<int32_t, true>, qr_like<int64_t, true>};
const CheckPair kCheck_gebrd = {gebrd<int32_t>, gebrd<int64_t>};
const CheckPair kCheck_gehrd = {hessenberg<int32_t, false>, hessenberg<int64_t, false>};
const CheckPair kCheck_orghr = {hessenberg<int32_t, true>, hessenberg<int64_t, true>};
const CheckPair kCheck_sytrd = {sytrd<int32_t>, sytrd<int64_t>};
const CheckPair kCheck_sygst = {sygst<int32_t>, sygst<int64_t>};
const CheckPair kCheck_syrdb = {syrdb<int32_t>, syrdb<int64_t>};
const CheckPair kCheck_syevd = {syevd<int32_t>, syevd<int64_t>};
const CheckPair kCheck_heevd = {heevd<int32_t>, heevd<int64_t>};
const CheckPair kCheck_hegvd = {hegvd<int32_t>, hegvd<int64_t>};
const CheckPair kCheck_gesvd = {gesvd<int32_t>, gesvd<int64_t>};
const CheckPair kCheck_geev_real = {geev<int32_t, 9>, geev<int64_t, 9>};
const CheckPair kCheck_geev_complex = {geev<int32_t, 8>, geev<int64_t, 8>};
const CheckPair kCheck_orgqr = {orgqr<int32_t>, orgqr<int64_t>};
const CheckPair kCheck_ormqr = {orm<int32_t, false>, orm<int64_t, false>};
const CheckPair kCheck_ormql = {orm<int32_t, false>, orm<int64_t, false>};
const CheckPair kCheck_ormlq = {orm<int32_t, true>, orm<int64_t, true>};
const CheckPair kCheck_ormrq = {orm<int32_t, true>, orm<int64_t, true>};
const CheckPair kCheck_dtsvb = {dtsvb<int32_t>, dtsvb<int64_t>};
const CheckPair kCheck_dttrfb = {dttrfb<int32_t>, dttrfb<int64_t>};

}  // namespace qnl::lapack
