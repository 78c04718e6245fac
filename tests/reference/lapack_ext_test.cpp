// The library's own LAPACK-style routines computed by the reference back-end, through the
// facade's entries: LU without pivoting and the partial L D L^T by reconstruction (on both
// interface layers), tridiagonal solves without pivoting by their residual, packed-triangle
// block copies element by element, the reduction to tridiagonal form by A Q = Q T; zero
// pivots are reported in info, bad arguments are refused.
#include <cstdint>
#include <cstdio>
#include <tuple>
#include <vector>

#include "reference_types.h"

using namespace ref_test;

namespace {

template <class T>
class BackendLapackExt : public ::testing::Test {};
TYPED_TEST_SUITE(BackendLapackExt, AllTypes);

template <class T>
using Factor = void(const int32_t*, T*, T*, T*, int32_t*);
template <class T>
using Solve = void(const char*, const int32_t*, const int32_t*, const T*, const T*, const T*, T*, const int32_t*,
                   int32_t*);
// Packing and unpacking a block of a packed triangle.
template <class T>
using TpCopy = void(const char*, const char*, const int32_t*, T*, const int32_t*, const int32_t*, const int32_t*,
                    const int32_t*, T*, const int32_t*, int32_t*);

// A diagonally dominant tridiagonal matrix and its product with a block of vectors.
template <class T>
struct Tridiagonal {
  long n;
  std::vector<T> dl, d, du;
  explicit Tridiagonal(long size)
      : n(size), dl(static_cast<size_t>(size)), d(static_cast<size_t>(size)), du(static_cast<size_t>(size)) {
    for (long i = 0; i < n; ++i) {
      dl[static_cast<size_t>(i)] = value<T>(i + 3);
      du[static_cast<size_t>(i)] = value<T>(2 * i + 5);
      d[static_cast<size_t>(i)] = value<T>(3 * i) + T(static_cast<Real<T>>(20 + i % 3));
    }
  }
  // op(A)(i, j), op by letter
  T at(char trans, long i, long j) const {
    if (trans != 'N') return conj_if(at('N', j, i), trans == 'C');
    if (i == j) return d[static_cast<size_t>(i)];
    if (i == j + 1) return dl[static_cast<size_t>(j)];
    if (j == i + 1) return du[static_cast<size_t>(i)];
    return T{};
  }
};

// max |op(A) x - b| over the block, relative to max |b|
template <class T>
double residual(const Tridiagonal<T>& a, char trans, const std::vector<T>& x, const std::vector<T>& b, long nrhs,
                long ldb) {
  auto at = [&](const std::vector<T>& v, long i, long r) { return v[static_cast<size_t>(i + r * ldb)]; };
  return max_abs(a.n, nrhs,
                 [&](long i, long r) {
                   T sum = -at(b, i, r);
                   for (long j = std::max(0L, i - 1); j <= std::min(a.n - 1, i + 1); ++j)
                     sum += a.at(trans, i, j) * at(x, j, r);
                   return sum;
                 }) /
         max_abs(a.n, nrhs, [&](long i, long r) { return at(b, i, r); });
}

// Diagonally dominant, so no pivot comes near zero.
template <class T>
std::vector<T> dominant(long m, long n, long lda) {
  std::vector<T> a = values<T>(static_cast<size_t>(lda * std::max(n, 1L)), 0);
  for (long i = 0; i < std::min(m, n); ++i) a[static_cast<size_t>(i + i * lda)] += static_cast<Real<T>>(8 * (m + n));
  return a;
}

// max |A - (L U + S)| relative to max |A|: L unit lower and U upper over the first nfact
// columns and rows, S the trailing Schur complement.
template <class T>
double lu_residual(const std::vector<T>& a, const std::vector<T>& f, long m, long n, long nfact, long lda) {
  auto at = [&](const std::vector<T>& v, long i, long j) { return v[static_cast<size_t>(i + j * lda)]; };
  return max_abs(m, n,
                 [&](long i, long j) {
                   T sum = i >= nfact && j >= nfact ? at(f, i, j) : T{};
                   for (long k = 0; k < std::min({i + 1, j + 1, nfact}); ++k)
                     sum += (i == k ? T{1} : at(f, i, k)) * at(f, k, j);
                   return sum - at(a, i, j);
                 }) /
         std::max(1e-300, max_abs(m, n, [&](long i, long j) { return at(a, i, j); }));
}

template <class T, class Int>
void factor_and_check(bool blocked, long m, long n, long nfact) {
  using F = void(const Int*, const Int*, const Int*, T*, const Int*, Int*);
  const long lda = m + 3;
  const std::vector<T> a = dominant<T>(m, n, lda);
  std::vector<T> work = a;
  const Int dims[] = {static_cast<Int>(m), static_cast<Int>(n), static_cast<Int>(nfact), static_cast<Int>(lda)};
  Int info = -99;
  entry<F, T>(blocked ? "qnl_%cgetrfnpi" : "qnl_%cgetf2npi")(&dims[0], &dims[1], &dims[2], work.data(), &dims[3],
                                                             &info);
  EXPECT_EQ(info, 0);
  // Growth is bounded by dominance: the error stays a small multiple of n eps.
  EXPECT_LE(lu_residual(a, work, m, n, nfact, lda), 4 * (n + 1) * eps<T>())
      << (blocked ? "getrfnpi " : "getf2npi ") << m << "x" << n << " nfact " << nfact;
  for (long j = 0; j < n; ++j)
    for (long i = m; i < lda; ++i)
      ASSERT_EQ(work[static_cast<size_t>(i + j * lda)], a[static_cast<size_t>(i + j * lda)]) << "padding written";
}

TYPED_TEST(BackendLapackExt, LuFactorsReproduceTheMatrixOnLp64) {
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  for (auto [m, n, nfact] : {std::tuple{5L, 5L, 5L},
                             {7L, 4L, 4L},
                             {4L, 7L, 4L},
                             {9L, 9L, 3L},
                             {130L, 97L, 97L},
                             {97L, 130L, 97L},
                             {150L, 150L, 80L},
                             {200L, 140L, 140L},
                             {0L, 3L, 0L},
                             {3L, 3L, 0L},
                             {1L, 1L, 1L}})
    for (bool blocked : {false, true}) factor_and_check<TypeParam, int32_t>(blocked, m, n, nfact);
}

// Sizes of 500 and more take the facade's second symbol, which computes the same.
TYPED_TEST(BackendLapackExt, LuFactorsReproduceTheMatrixOnIlp64AndThroughTheLargeMatrixRoute) {
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  for (auto [m, n, nfact] : {std::tuple{33L, 20L, 20L}, {520L, 505L, 300L}})
    for (bool blocked : {false, true}) factor_and_check<TypeParam, int64_t>(blocked, m, n, nfact);
}

// Second pivot exactly zero: info is its column, and the factorisation still ends.
TYPED_TEST(BackendLapackExt, LuZeroPivotIsReportedInInfoAndBadArgumentsAreRefused) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const int32_t*, const int32_t*, const int32_t*, T*, const int32_t*, int32_t*);
  struct Bad {
    int32_t m, n, nfact, lda, param;
  } bad[] = {{-1, 2, 0, 1, 1}, {2, -1, 0, 2, 2}, {3, 2, 3, 3, 3}, {2, 3, -1, 2, 3}, {4, 4, 4, 3, 5}};
  for (const char* pattern : {"qnl_%cgetrfnpi", "qnl_%cgetf2npi"}) {
    auto* f = entry<F, T>(pattern);
    // rows (1 2 3), (2 4 5), (1 1 1): the second step meets 4 - 2*2 = 0
    std::vector<T> a = {T(1), T(2), T(1), T(2), T(4), T(1), T(3), T(5), T(1)};
    const int32_t three = 3;
    int32_t info = -99;
    f(&three, &three, &three, a.data(), &three, &info);
    EXPECT_EQ(info, 2) << pattern;
    EXPECT_EQ(a[1], T(2)) << "the first column is scaled by its pivot 1";
    std::vector<T> untouched(32, T(7));
    char name[32];
    std::snprintf(name, sizeof name, pattern, kLetter<T>);
    expect_refused(upper(name), bad,
                   [&](const Bad& b, int32_t* i) { f(&b.m, &b.n, &b.nfact, untouched.data(), &b.lda, i); });
    EXPECT_EQ(untouched, std::vector<T>(32, T(7)));
  }
}

TYPED_TEST(BackendLapackExt, TridiagonalFactorThenSolveEachOperation) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  const int32_t n = 57, nrhs = 3, ldb = 60;
  const Tridiagonal<T> a(n);
  Tridiagonal<T> f = a;
  int32_t info = -99;
  entry<Factor<T>, T>("%cdttrfb")(&n, f.dl.data(), f.d.data(), f.du.data(), &info);
  ASSERT_EQ(info, 0);
  EXPECT_EQ(f.du, a.du) << "the upper diagonal is U's as it stands";
  for (char trans : {'N', 'T', 'C'}) {
    const std::vector<T> b = values<T>(static_cast<size_t>(ldb * nrhs), 17);
    std::vector<T> x = b;
    info = -99;
    entry<Solve<T>, T>("%cdttrsb")(&trans, &n, &nrhs, f.dl.data(), f.d.data(), f.du.data(), x.data(), &ldb, &info);
    EXPECT_EQ(info, 0);
    EXPECT_LE(residual(a, trans, x, b, nrhs, ldb), 16 * eps<T>()) << trans;
  }
}

TYPED_TEST(BackendLapackExt, TridiagonalSolveInOneCallAndOnIlp64) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  using Solve = void(const int64_t*, const int64_t*, T*, T*, T*, T*, const int64_t*, int64_t*);
  for (int64_t n : {int64_t{1}, int64_t{2}, int64_t{40}}) {
    const int64_t nrhs = 2, ldb = n + 1;
    const Tridiagonal<T> a(n);
    Tridiagonal<T> f = a;
    const std::vector<T> b = values<T>(static_cast<size_t>(ldb * nrhs), 1);
    std::vector<T> x = b;
    int64_t info = -99;
    entry<Solve, T>("%cdtsvb_")(&n, &nrhs, f.dl.data(), f.d.data(), f.du.data(), x.data(), &ldb, &info);
    EXPECT_EQ(info, 0);
    EXPECT_LE(residual(a, 'N', x, b, nrhs, ldb), 16 * eps<T>()) << n;
  }
}

TYPED_TEST(BackendLapackExt, TridiagonalZeroPivotAndBadOptions) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  const int32_t n = 4;
  Tridiagonal<T> f(n);
  // With dl0 = 0 the second pivot stays d1 = 1, so l1 = dl1 and the third pivot is
  // d2 - dl1 du1 = 0 exactly.
  f.dl[0] = T{};
  f.d[1] = T(1);
  f.d[2] = f.dl[1] * f.du[1];
  int32_t info = 0;
  entry<Factor<T>, T>("%cdttrfb")(&n, f.dl.data(), f.d.data(), f.du.data(), &info);
  EXPECT_EQ(info, 3);
  std::vector<T> b(8, T(1));
  const int32_t two = 2, ldb = 4, small = 3;
  struct Bad {
    const char* trans;
    const int32_t* ldb;
    int param;
  } bad[] = {{"X", &ldb, 1}, {"N", &small, 8}};
  auto* solve = entry<Solve<T>, T>("%cdttrsb");
  expect_refused(upper(std::string(1, kLetter<T>) + "DTTRSB"), bad, [&](const Bad& x, int32_t* i) {
    solve(x.trans, &n, &two, f.dl.data(), f.d.data(), f.du.data(), b.data(), x.ldb, i);
  });
  EXPECT_EQ(b, std::vector<T>(8, T(1)));
}

// Each element of the block that lies in the stored triangle goes to (or comes from) its
// packed position, (conjugate) transposed as asked; nothing else changes.
TYPED_TEST(BackendLapackExt, PackedTriangleBlocksBothWays) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  const int32_t n = 9;
  struct Block {
    int32_t i, j, rows, cols;
  } blocks[] = {{1, 1, 9, 9}, {2, 3, 5, 4}, {6, 2, 4, 3}, {4, 4, 0, 2}};
  const T sentinel = T(-77);
  for (char uplo : {'U', 'L'})
    for (char trans : {'N', 'T', 'C'})
      for (const Block& bk : blocks) {
        const bool t = trans != 'N';
        const int32_t lda = (t ? bk.cols : bk.rows) + 2;
        const std::vector<T> a0 = values<T>(static_cast<size_t>(lda * (t ? bk.rows : bk.cols) + 1), 40);
        std::vector<T> a = a0, ap(static_cast<size_t>(n * (n + 1) / 2), sentinel);
        int32_t info = -99;
        entry<TpCopy<T>, T>("qnl_%ctppack")(&uplo, &trans, &n, ap.data(), &bk.i, &bk.j, &bk.rows, &bk.cols, a.data(),
                                            &lda, &info);
        EXPECT_EQ(info, 0);
        std::vector<T> want(ap.size(), sentinel), blank(a0.size(), sentinel);
        for (int32_t c = 0; c < bk.cols; ++c)
          for (int32_t r = 0; r < bk.rows; ++r) {
            const long gi = bk.i - 1 + r, gj = bk.j - 1 + c;
            if (uplo == 'U' ? gi > gj : gi < gj) continue;
            const long p = uplo == 'U' ? gi + gj * (gj + 1) / 2 : gi + gj * (2 * n - gj - 1) / 2;
            const size_t q = static_cast<size_t>(t ? c + r * lda : r + c * lda);
            want[static_cast<size_t>(p)] = conj_if(a0[q], trans == 'C');
            blank[q] = a0[q];  // conjugated twice
          }
        const std::string where =
            std::string(1, uplo) + trans + " block at " + std::to_string(bk.i) + "," + std::to_string(bk.j);
        EXPECT_EQ(ap, want) << where;
        EXPECT_EQ(a, a0) << "packing leaves A alone";
        std::vector<T> out(a0.size(), sentinel);
        entry<TpCopy<T>, T>("qnl_%ctpunpack")(&uplo, &trans, &n, ap.data(), &bk.i, &bk.j, &bk.rows, &bk.cols,
                                              out.data(), &lda, &info);
        EXPECT_EQ(info, 0);
        EXPECT_EQ(out, blank) << where;
      }
}

TYPED_TEST(BackendLapackExt, PackedTriangleBadArguments) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  struct Bad {
    const char *uplo, *trans;
    int32_t n, i, j, rows, cols, lda, param;
  } bad[] = {{"Q", "N", 4, 1, 1, 1, 1, 1, 1}, {"U", "Q", 4, 1, 1, 1, 1, 1, 2}, {"U", "N", -1, 1, 1, 0, 0, 1, 3},
             {"L", "N", 4, 0, 1, 1, 1, 1, 5}, {"L", "N", 4, 1, 0, 1, 1, 1, 6}, {"L", "N", 4, 2, 1, 4, 1, 4, 7},
             {"U", "T", 4, 1, 2, 1, 4, 4, 8}, {"U", "T", 4, 1, 1, 3, 2, 1, 10}};
  std::vector<T> ap(16, T(5)), a(16, T(6));
  for (const char* pattern : {"qnl_%ctppack", "qnl_%ctpunpack"}) {
    char name[32];
    std::snprintf(name, sizeof name, pattern, kLetter<T>);
    auto* f = entry<TpCopy<T>, T>(pattern);
    expect_refused(upper(name).substr(4), bad, [&](const Bad& b, int32_t* info) {
      f(b.uplo, b.trans, &b.n, ap.data(), &b.i, &b.j, &b.rows, &b.cols, a.data(), &b.lda, info);
    });
  }
  EXPECT_EQ(ap, std::vector<T>(16, T(5)));
  EXPECT_EQ(a, std::vector<T>(16, T(6)));
}

// A = L D L^T + S: L unit lower over the first ncolm columns, D their diagonal, S the
// trailing Schur complement.
TYPED_TEST(BackendLapackExt, PartialSymmetricFactorisationReproducesTheMatrix) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(T*, const int32_t*, const int32_t*, T*, T*);
  const int32_t n = 23;
  auto pos = [&](long i, long j) { return static_cast<size_t>(i + j * (2 * n - j - 1) / 2); };  // i >= j
  std::vector<T> ap(static_cast<size_t>(n * (n + 1) / 2));
  for (long j = 0; j < n; ++j)
    for (long i = j; i < n; ++i) ap[pos(i, j)] = value<T>(i * 31 + j) + (i == j ? T(static_cast<Real<T>>(4 * n)) : T{});
  std::vector<T> work(static_cast<size_t>(n)), work2(static_cast<size_t>(n));
  for (const char* pattern : {"qnl_%cspffrt2", "qnl_%cspffrtx"})
    for (int32_t ncolm : {0, 1, 7, n}) {
      std::vector<T> f = ap;
      entry<F, T>(pattern)(f.data(), &n, &ncolm, work.data(), work2.data());
      const double worst = max_abs(n, n, [&](long i, long j) {
        if (i < j) return T{};
        T sum = i >= ncolm && j >= ncolm ? f[pos(i, j)] : T{};
        for (long k = 0; k < std::min<long>(j + 1, ncolm); ++k)
          sum += (i == k ? T(1) : f[pos(i, k)]) * f[pos(k, k)] * (j == k ? T(1) : f[pos(j, k)]);
        return sum - ap[pos(i, j)];
      });
      EXPECT_LE(worst, 64 * eps<T>() * 4 * n) << pattern << " ncolm " << ncolm;
    }
}

// A = Q T Q^H with T tridiagonal from d and e, Q unitary; "U" applies the same Q to a
// given matrix, "N" gives the same diagonals without Q, and a query asks for n kd.
TYPED_TEST(BackendLapackExt, ReductionToTridiagonalForm) {
  using T = TypeParam;
  using R = Real<T>;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const char*, const char*, const int32_t*, const int32_t*, T*, const int32_t*, R*, R*, T*, T*,
                 const int32_t*, T*, const int32_t*, int32_t*);
  auto* f = entry<F, T>(kComplex<T> ? "%cherdb" : "%csyrdb");
  const int32_t n = 30, kd = 4, lda = 32, ldz = 31;
  std::vector<T> a0(static_cast<size_t>(lda * n));
  for (long j = 0; j < n; ++j)
    for (long i = 0; i <= j; ++i) {
      const T v = i == j ? T(std::real(value<T>(i * 7 + j))) : value<T>(i * 7 + j);
      a0[static_cast<size_t>(i + j * lda)] = v;
      a0[static_cast<size_t>(j + i * lda)] = conj_if(v, true);
    }
  std::vector<T> work(static_cast<size_t>(n * kd));
  int32_t query = -1, lwork = n * kd, info = -99;
  f("V", "U", &n, &kd, nullptr, &lda, nullptr, nullptr, nullptr, nullptr, &ldz, work.data(), &query, &info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(std::real(work[0]), static_cast<R>(n * kd));
  for (const char* uplo : {"U", "L"}) {
    std::vector<T> a = a0, tau(static_cast<size_t>(n)), q(static_cast<size_t>(ldz * n));
    std::vector<R> d(static_cast<size_t>(n)), e(static_cast<size_t>(n));
    f("V", uplo, &n, &kd, a.data(), &lda, d.data(), e.data(), tau.data(), q.data(), &ldz, work.data(), &lwork, &info);
    ASSERT_EQ(info, 0);
    auto Q = [&](long i, long j) { return q[static_cast<size_t>(i + j * ldz)]; };
    auto Tm = [&](long i, long j) -> T {
      return i == j                 ? T(d[static_cast<size_t>(i)])
             : std::abs(i - j) == 1 ? T(e[static_cast<size_t>(std::min(i, j))])
                                    : T{};
    };
    // (x y)(i, j) for matrices given as functions of (i, j)
    auto product = [&](auto x, auto y, long i, long j) {
      T sum{};
      for (long l = 0; l < n; ++l) sum += x(i, l) * y(l, j);
      return sum;
    };
    auto A = [&](long i, long j) { return a0[static_cast<size_t>(i + j * lda)]; };
    auto QH = [&](long i, long j) { return conj_if(Q(j, i), true); };
    const double worst = max_abs(n, n, [&](long i, long j) { return product(A, Q, i, j) - product(Q, Tm, i, j); });
    const double ortho = max_abs(n, n, [&](long i, long j) { return product(QH, Q, i, j) - (i == j ? T(1) : T{}); });
    EXPECT_LE(worst, 200 * n * eps<T>()) << uplo << ": A Q = Q T";
    EXPECT_LE(ortho, 20 * n * eps<T>()) << uplo << ": Q^H Q = I";

    std::vector<T> a2 = a0, x = values<T>(static_cast<size_t>(ldz * n), 3);
    const std::vector<T> x0 = x;
    std::vector<R> d2(d.size()), e2(e.size());
    f("U", uplo, &n, &kd, a2.data(), &lda, d2.data(), e2.data(), tau.data(), x.data(), &ldz, work.data(), &lwork,
      &info);
    ASSERT_EQ(info, 0);
    EXPECT_EQ(d2, d);
    EXPECT_EQ(e2, e);
    auto X0 = [&](long i, long j) { return x0[static_cast<size_t>(i + j * ldz)]; };
    const double update =
        max_abs(n, n, [&](long i, long j) { return x[static_cast<size_t>(i + j * ldz)] - product(X0, Q, i, j); });
    EXPECT_LE(update, 400 * n * eps<T>()) << uplo << ": Z := Z Q";

    std::vector<T> a3 = a0;
    f("N", uplo, &n, &kd, a3.data(), &lda, d2.data(), e2.data(), tau.data(), nullptr, &ldz, work.data(), &lwork, &info);
    EXPECT_EQ(info, 0);
    EXPECT_EQ(d2, d);
  }
}

}  // namespace
