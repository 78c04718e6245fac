// The product routines the reference back-end builds itself (batch, real times complex,
// two products with one matrix, one triangle of a product), through the facade's Fortran
// entries, against plain loops over the definitions.
#include <cmath>
#include <cstdint>
#include <vector>

#include "reference_types.h"

extern "C" int QNL_Set_Interface_Layer(int);

using namespace ref_test;

namespace {

template <class T>
struct Matrix {
  long rows, cols, ld;
  std::vector<T> v;
  Matrix(long r, long c, long pad, long seed) : rows(r), cols(c), ld(r + pad), v(static_cast<size_t>(ld * c + 1)) {
    for (size_t k = 0; k < v.size(); ++k) v[k] = value<T>(static_cast<long>(k) * 7 + seed);
  }
  T& operator()(long i, long j) { return v[static_cast<size_t>(i + j * ld)]; }
  T operator()(long i, long j) const { return v[static_cast<size_t>(i + j * ld)]; }
};

template <class T>
T op_at(const Matrix<T>& x, char trans, long i, long j) {
  return trans == 'N' ? x(i, j) : conj_if(x(j, i), trans == 'C');
}

// alpha op(A) op(B) + beta C by the definition, element (i, j).
template <class T, class A, class B>
T product_at(char ta, char tb, long k, T alpha, const Matrix<A>& a, const Matrix<B>& b, T beta, T c, long i, long j) {
  T sum{};
  for (long l = 0; l < k; ++l) sum += T(op_at(a, ta, i, l)) * T(op_at(b, tb, l, j));
  return alpha * sum + beta * c;
}

const std::complex<double> kAlpha(0.75, -1.25), kBeta(-1.5, 0.5);

template <class T>
class BackendGemmExt : public ::testing::Test {};
TYPED_TEST_SUITE(BackendGemmExt, AllTypes);

// Three groups (one empty) with their own options and sizes, on both integer widths.
template <class T, class Int>
void run_batch(const char* pattern) {
  struct Group {
    char ta, tb;
    long m, n, k, size;
  } groups[] = {{'N', 'T', 5, 4, 3, 2}, {'C', 'N', 7, 2, 6, 0}, {'T', 'C', 3, 9, 4, 3}};
  std::vector<char> ta, tb;
  std::vector<Int> m, n, k, lda, ldb, ldc, size;
  std::vector<T> alpha, beta;
  std::vector<Matrix<T>> as, bs, cs;
  for (const Group& g : groups) {
    ta.push_back(g.ta);
    tb.push_back(g.tb);
    const long ar = g.ta == 'N' ? g.m : g.k, ac = g.ta == 'N' ? g.k : g.m;
    const long br = g.tb == 'N' ? g.k : g.n, bc = g.tb == 'N' ? g.n : g.k;
    m.push_back(static_cast<Int>(g.m));
    n.push_back(static_cast<Int>(g.n));
    k.push_back(static_cast<Int>(g.k));
    lda.push_back(static_cast<Int>(ar + 1));
    ldb.push_back(static_cast<Int>(br + 2));
    ldc.push_back(static_cast<Int>(g.m + 3));
    size.push_back(static_cast<Int>(g.size));
    alpha.push_back(scalar<T>(kAlpha * static_cast<double>(as.size() + 1)));
    beta.push_back(scalar<T>(kBeta));
    for (long s = 0; s < g.size; ++s) {
      const long seed = static_cast<long>(as.size());
      as.emplace_back(ar, ac, 1, seed);
      bs.emplace_back(br, bc, 2, seed + 100);
      cs.emplace_back(g.m, g.n, 3, seed + 200);
    }
  }
  std::vector<const T*> ap, bp;
  std::vector<T*> cp;
  for (size_t s = 0; s < as.size(); ++s) {
    ap.push_back(as[s].v.data());
    bp.push_back(bs[s].v.data());
    cp.push_back(cs[s].v.data());
  }
  const std::vector<Matrix<T>> before = cs;
  const Int count = 3;
  using F = void(const char*, const char*, const Int*, const Int*, const Int*, const T*, const T* const*, const Int*,
                 const T* const*, const Int*, const T*, T* const*, const Int*, const Int*, const Int*);
  entry<F, T>(pattern)(ta.data(), tb.data(), m.data(), n.data(), k.data(), alpha.data(), ap.data(), lda.data(),
                       bp.data(), ldb.data(), beta.data(), cp.data(), ldc.data(), &count, size.data());
  size_t s = 0;
  for (size_t g = 0; g < 3; ++g)
    for (long q = 0; q < groups[g].size; ++q, ++s)
      for (long j = 0; j < groups[g].n; ++j)
        for (long i = 0; i < groups[g].m; ++i)
          expect_near(cs[s](i, j),
                      product_at(groups[g].ta, groups[g].tb, groups[g].k, alpha[g], as[s], bs[s], beta[g],
                                 before[s](i, j), i, j),
                      100.0 * static_cast<double>(groups[g].k + 1),
                      std::string(pattern) + " group " + std::to_string(g) + " matrix " + std::to_string(s));
  EXPECT_EQ(s, 5u);
}

TYPED_TEST(BackendGemmExt, BatchComputesEveryGroupOnLp64) {
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  run_batch<TypeParam, int32_t>("%cgemm_batch");
  if constexpr (kComplex<TypeParam>) run_batch<TypeParam, int32_t>("%cgemm3m_batch_");
}

TYPED_TEST(BackendGemmExt, BatchComputesEveryGroupOnIlp64) {
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  run_batch<TypeParam, int64_t>("%cgemm_batch_");
  if constexpr (kComplex<TypeParam>) run_batch<TypeParam, int64_t>("%cgemm3m_batch");
}

// y1 = alpha A x1 + beta y1 and y2 = alpha op(A) x2 + beta y2, op the (conjugate) transpose.
TYPED_TEST(BackendGemmExt, TwoProductsWithOneMatrix) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const int32_t*, const int32_t*, const T*, const T*, const int32_t*, const T*, const int32_t*, const T*,
                 const int32_t*, const T*, T*, const int32_t*, T*, const int32_t*);
  auto* f = entry<F, T>(kComplex<T> ? "%cgem2vc" : "%cgem2vu");
  const int32_t m = 13, n = 9, lda = 15;
  const Matrix<T> a(m, n, lda - m, 3);
  for (int32_t inc : {1, -2}) {
    const int32_t ainc = std::abs(inc);
    std::vector<T> x1(static_cast<size_t>(n * ainc)), x2(static_cast<size_t>(m * ainc)),
        y1(static_cast<size_t>(m * ainc)), y2(static_cast<size_t>(n * ainc));
    for (size_t q = 0; q < x1.size(); ++q) x1[q] = value<T>(static_cast<long>(q) + 1);
    for (size_t q = 0; q < x2.size(); ++q) x2[q] = value<T>(static_cast<long>(q) + 50);
    for (size_t q = 0; q < y1.size(); ++q) y1[q] = value<T>(static_cast<long>(q) + 90);
    for (size_t q = 0; q < y2.size(); ++q) y2[q] = value<T>(static_cast<long>(q) + 130);
    const std::vector<T> y1_0 = y1, y2_0 = y2;
    const T alpha = scalar<T>(kAlpha), beta = scalar<T>(kBeta);
    f(&m, &n, &alpha, a.v.data(), &lda, x1.data(), &inc, x2.data(), &inc, &beta, y1.data(), &inc, y2.data(), &inc);
    // element e of a vector of length len with increment inc
    auto at = [&](const std::vector<T>& v, long e, long len) {
      return v[static_cast<size_t>((inc > 0 ? e : len - 1 - e) * ainc)];
    };
    for (long i = 0; i < m; ++i) {
      T sum{};
      for (long j = 0; j < n; ++j) sum += a(i, j) * at(x1, j, n);
      expect_near(at(y1, i, m), alpha * sum + beta * at(y1_0, i, m), 100.0 * n, "y1");
    }
    for (long j = 0; j < n; ++j) {
      T sum{};
      for (long i = 0; i < m; ++i) sum += conj_if(a(i, j), true) * at(x2, i, m);
      expect_near(at(y2, j, n), alpha * sum + beta * at(y2_0, j, n), 100.0 * m, "y2");
    }
  }
}

// One triangle of alpha op(A) op(B) + beta C over several column blocks; the other
// triangle is left alone.
TYPED_TEST(BackendGemmExt, TriangleOfAProduct) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const char*, const char*, const char*, const int32_t*, const int32_t*, const T*, const T*,
                 const int32_t*, const T*, const int32_t*, const T*, T*, const int32_t*);
  auto* f = entry<F, T>("%cgemmt");
  const char ops[] = {'N', 'T', 'C'};
  for (char uplo : {'U', 'L'})
    for (char ta : ops)
      for (char tb : ops)
        for (int32_t k : {0, 11})
          for (bool zero_beta : {false, true}) {
            const int32_t n = ta == 'N' && tb == 'N' ? 200 : 37;
            const Matrix<T> a(ta == 'N' ? n : k, ta == 'N' ? k : n, 2, 1),
                b(tb == 'N' ? k : n, tb == 'N' ? n : k, 3, 2);
            Matrix<T> c(n, n, 1, 3);
            if (zero_beta)  // with beta 0, C is not read: NaN there must not show
              for (long j = 0; j < n; ++j)
                for (long i = 0; i < n; ++i)
                  if (uplo == 'U' ? i <= j : i >= j) c(i, j) = T(std::nan(""));
            const Matrix<T> c0 = c;
            const T alpha = scalar<T>(kAlpha), beta = zero_beta ? T{} : scalar<T>(kBeta);
            const int32_t la = static_cast<int32_t>(a.ld), lb = static_cast<int32_t>(b.ld),
                          lc = static_cast<int32_t>(c.ld);
            f(&uplo, &ta, &tb, &n, &k, &alpha, a.v.data(), &la, b.v.data(), &lb, &beta, c.v.data(), &lc);
            const std::string where = std::string(1, uplo) + ta + tb + " k " + std::to_string(k);
            for (long j = 0; j < n; ++j)
              for (long i = 0; i < n; ++i) {
                if (uplo == 'U' ? i <= j : i >= j)
                  expect_near(c(i, j), product_at(ta, tb, k, alpha, a, b, beta, zero_beta ? T{} : c0(i, j), i, j),
                              100.0 * (k + 1), where);
                else
                  ASSERT_EQ(c(i, j), c0(i, j)) << where << " wrote outside its triangle";
              }
          }
}

// Real A times complex B or x, for the two complex types.
template <class C>
class BackendMixed : public ::testing::Test {};
using ComplexTypes = ::testing::Types<std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(BackendMixed, ComplexTypes);

TYPED_TEST(BackendMixed, RealTimesComplexMatrix) {
  using C = TypeParam;
  using R = Real<C>;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const char*, const char*, const int32_t*, const int32_t*, const int32_t*, const C*, const R*,
                 const int32_t*, const C*, const int32_t*, const C*, C*, const int32_t*);
  auto* f = entry<F, C>(kLetter<C> == 'c' ? "scgemm" : "dzgemm");
  for (char ta : {'N', 'T', 'C'})
    for (char tb : {'N', 'T', 'C'})
      for (bool zero_beta : {false, true}) {
        const int32_t m = 17, n = 11, k = 8;
        const Matrix<R> a(ta == 'N' ? m : k, ta == 'N' ? k : m, 2, 4);
        const Matrix<C> b(tb == 'N' ? k : n, tb == 'N' ? n : k, 1, 5);
        Matrix<C> c(m, n, 3, 6);
        if (zero_beta) std::fill(c.v.begin(), c.v.end(), C(std::nan("")));
        const Matrix<C> c0 = c;
        const C alpha = scalar<C>(kAlpha), beta = zero_beta ? C{} : scalar<C>(kBeta);
        const int32_t la = static_cast<int32_t>(a.ld), lb = static_cast<int32_t>(b.ld), lc = static_cast<int32_t>(c.ld);
        f(&ta, &tb, &m, &n, &k, &alpha, a.v.data(), &la, b.v.data(), &lb, &beta, c.v.data(), &lc);
        for (long j = 0; j < n; ++j)
          for (long i = 0; i < m; ++i)
            expect_near(c(i, j), product_at(ta, tb, k, alpha, a, b, beta, zero_beta ? C{} : c0(i, j), i, j), 100.0 * k,
                        std::string(1, ta) + tb);
      }
}

TYPED_TEST(BackendMixed, RealTimesComplexVector) {
  using C = TypeParam;
  using R = Real<C>;
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  using F = void(const char*, const int64_t*, const int64_t*, const C*, const R*, const int64_t*, const C*,
                 const int64_t*, const C*, C*, const int64_t*);
  auto* f = entry<F, C>(kLetter<C> == 'c' ? "scgemv_" : "dzgemv_");
  const int64_t m = 14, n = 6, lda = 16;
  const Matrix<R> a(m, n, lda - m, 8);
  for (char trans : {'N', 'T'})
    for (int64_t incx : {1, -3})
      for (int64_t incy : {2, -1}) {
        const long xlen = trans == 'N' ? n : m, ylen = trans == 'N' ? m : n;
        std::vector<C> x(static_cast<size_t>(xlen * std::abs(incx))), y(static_cast<size_t>(ylen * std::abs(incy)));
        for (size_t q = 0; q < x.size(); ++q) x[q] = value<C>(static_cast<long>(q) + 11);
        for (size_t q = 0; q < y.size(); ++q) y[q] = value<C>(static_cast<long>(q) + 29);
        const std::vector<C> y0 = y;
        const C alpha = scalar<C>(kAlpha), beta = scalar<C>(kBeta);
        f(&trans, &m, &n, &alpha, a.v.data(), &lda, x.data(), &incx, &beta, y.data(), &incy);
        auto at = [](const std::vector<C>& v, long e, long len, int64_t inc) {
          return v[static_cast<size_t>((inc > 0 ? e : len - 1 - e) * std::abs(inc))];
        };
        for (long i = 0; i < ylen; ++i) {
          C sum{};
          for (long l = 0; l < xlen; ++l) sum += C(trans == 'N' ? a(i, l) : a(l, i)) * at(x, l, xlen, incx);
          expect_near(at(y, i, ylen, incy), alpha * sum + beta * at(y0, i, ylen, incy), 100.0 * xlen,
                      std::string(1, trans) + " incx " + std::to_string(incx) + " incy " + std::to_string(incy));
        }
      }
}

}  // namespace
