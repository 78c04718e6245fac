// LU without pivoting computed by the reference back-end, through the facade's entries on
// both interface layers: L U plus the Schur complement gives back A, zero pivots are
// reported in info, bad arguments are refused.
#include <cstdint>
#include <vector>

#include "reference_types.h"

using namespace ref_test;

namespace {

template <class T>
class BackendLu : public ::testing::Test {};
TYPED_TEST_SUITE(BackendLu, AllTypes);

struct Shape {
  long m, n, nfact;
};

// Diagonally dominant, so no pivot comes near zero.
template <class T>
std::vector<T> dominant(long m, long n, long lda) {
  std::vector<T> a(static_cast<size_t>(lda * std::max(n, 1L)));
  for (size_t k = 0; k < a.size(); ++k) a[k] = value<T>(static_cast<long>(k));
  for (long i = 0; i < std::min(m, n); ++i) a[static_cast<size_t>(i + i * lda)] += static_cast<Real<T>>(8 * (m + n));
  return a;
}

// max |A - (L U + S)| over the matrix, relative to max |A|.
template <class T>
double residual(const std::vector<T>& a, const std::vector<T>& f, long m, long n, long nfact, long lda) {
  double worst = 0, scale = 0;
  for (long j = 0; j < n; ++j)
    for (long i = 0; i < m; ++i) {
      T sum = i >= nfact && j >= nfact ? f[static_cast<size_t>(i + j * lda)] : T{};
      for (long k = 0; k < std::min({i + 1, j + 1, nfact}); ++k) {
        const T l = i == k ? T{1} : f[static_cast<size_t>(i + k * lda)];
        sum += l * f[static_cast<size_t>(k + j * lda)];
      }
      worst = std::max(worst, static_cast<double>(std::abs(sum - a[static_cast<size_t>(i + j * lda)])));
      scale = std::max(scale, static_cast<double>(std::abs(a[static_cast<size_t>(i + j * lda)])));
    }
  return scale > 0 ? worst / scale : worst;
}

const Shape kShapes[] = {{5, 5, 5},      {7, 4, 4},       {4, 7, 4}, {9, 9, 3}, {130, 97, 97}, {97, 130, 97},
                         {150, 150, 80}, {200, 140, 140}, {0, 3, 0}, {3, 3, 0}, {1, 1, 1}};

template <class T, class Int>
void factor_and_check(bool blocked, const Shape& s) {
  using F = void(const Int*, const Int*, const Int*, T*, const Int*, Int*);
  auto* f = entry<F, T>(blocked ? "qnl_%cgetrfnpi" : "qnl_%cgetf2npi");
  const long lda = s.m + 3;
  const std::vector<T> a = dominant<T>(s.m, s.n, lda);
  std::vector<T> work = a;
  const Int m = static_cast<Int>(s.m), n = static_cast<Int>(s.n), nf = static_cast<Int>(s.nfact);
  const Int ld = static_cast<Int>(lda);
  Int info = -99;
  f(&m, &n, &nf, work.data(), &ld, &info);
  EXPECT_EQ(info, 0);
  // Growth is bounded by dominance: the error stays a small multiple of n eps.
  EXPECT_LE(residual(a, work, s.m, s.n, s.nfact, lda), 4 * (s.n + 1) * eps<T>())
      << (blocked ? "getrfnpi " : "getf2npi ") << s.m << "x" << s.n << " nfact " << s.nfact;
  for (long j = 0; j < s.n; ++j)
    for (long i = s.m; i < lda; ++i)
      ASSERT_EQ(work[static_cast<size_t>(i + j * lda)], a[static_cast<size_t>(i + j * lda)]) << "padding written";
}

TYPED_TEST(BackendLu, FactorsReproduceTheMatrixOnLp64) {
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  for (const Shape& s : kShapes)
    for (bool blocked : {false, true}) factor_and_check<TypeParam, int32_t>(blocked, s);
}

// Sizes of 500 and more take the facade's second symbol, which computes the same.
TYPED_TEST(BackendLu, FactorsReproduceTheMatrixOnIlp64AndThroughTheLargeMatrixRoute) {
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  for (const Shape& s : {Shape{33, 20, 20}, Shape{520, 505, 300}})
    for (bool blocked : {false, true}) factor_and_check<TypeParam, int64_t>(blocked, s);
}

// Second pivot exactly zero: info is its column, and the factorisation still ends.
TYPED_TEST(BackendLu, ZeroPivotIsReportedInInfo) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const int32_t*, const int32_t*, const int32_t*, T*, const int32_t*, int32_t*);
  for (const char* name : {"qnl_%cgetrfnpi", "qnl_%cgetf2npi"}) {
    // rows (1 2 3), (2 4 5), (1 1 1): the second step meets 4 - 2*2 = 0
    std::vector<T> a = {T(1), T(2), T(1), T(2), T(4), T(1), T(3), T(5), T(1)};
    const int32_t three = 3;
    int32_t info = -99;
    entry<F, T>(name)(&three, &three, &three, a.data(), &three, &info);
    EXPECT_EQ(info, 2) << name;
    EXPECT_EQ(a[1], T(2)) << "the first column is scaled by its pivot 1";
  }
}

TYPED_TEST(BackendLu, BadArgumentsSetInfoAndReport) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const int32_t*, const int32_t*, const int32_t*, T*, const int32_t*, int32_t*);
  struct Bad {
    int32_t m, n, nfact, lda, param;
  } bad[] = {{-1, 2, 0, 1, 1}, {2, -1, 0, 2, 2}, {3, 2, 3, 3, 3}, {2, 3, -1, 2, 3}, {4, 4, 4, 3, 5}};
  std::vector<T> a(32, T(7));
  for (const char* pattern : {"qnl_%cgetrfnpi", "qnl_%cgetf2npi"}) {
    char name[32];
    std::snprintf(name, sizeof name, pattern, kLetter<T>);
    for (const Bad& b : bad) {
      int32_t info = 0;
      auto f = entry<F, T>(pattern);
      EXPECT_EQ(printed([&] { f(&b.m, &b.n, &b.nfact, a.data(), &b.lda, &info); }), report(b.param, upper(name)));
      EXPECT_EQ(info, -b.param);
    }
    for (const T& v : a) ASSERT_EQ(v, T(7));
  }
}

}  // namespace
