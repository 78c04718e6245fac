// The product routines the reference back-end builds itself (real times complex, two
// products with one matrix, one triangle of a product), through the facade's Fortran entries,
// against OpenBLAS's ?gemm and ?gemv on the same operands. Whole buffers are compared, so a
// write into the padding shows too. The batch is compared with OpenBLAS in cblas_oracle_test.
#include <cmath>
#include <cstdint>
#include <vector>

#include "reference_types.h"

using namespace ref_test;

namespace {

using I = int32_t;  // OpenBLAS's LP64 integers
template <class T>
using Gemm = void(const char*, const char*, const I*, const I*, const I*, const T*, const T*, const I*, const T*,
                  const I*, const T*, T*, const I*);
template <class T>
using Gemv = void(const char*, const I*, const I*, const T*, const T*, const I*, const T*, const I*, const T*, T*,
                  const I*);

// The leading dimension and element count of a column-major operand that op() turns into
// rows x cols, with `pad` rows of padding.
struct Stored {
  I ld;
  size_t size;
};
Stored stored(char trans, I rows, I cols, I pad) {
  const I r = trans == 'N' ? rows : cols, c = trans == 'N' ? cols : rows;
  return {r + pad, static_cast<size_t>((r + pad) * c + 1)};
}

const std::complex<double> kAlpha(0.75, -1.25), kBeta(-1.5, 0.5);

template <class T>
class BackendGemmExt : public ::testing::Test {};
TYPED_TEST_SUITE(BackendGemmExt, AllTypes);

// y1 = alpha A x1 + beta y1 and y2 = alpha op(A) x2 + beta y2, op the (conjugate) transpose:
// two ?gemv calls.
TYPED_TEST(BackendGemmExt, TwoProductsWithOneMatrix) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const I*, const I*, const T*, const T*, const I*, const T*, const I*, const T*, const I*, const T*, T*,
                 const I*, T*, const I*);
  auto* f = entry<F, T>(kComplex<T> ? "%cgem2vc" : "%cgem2vu");
  auto* gemv = openblas<Gemv<T>, T>("%cgemv_");
  const I m = 13, n = 9, lda = 15;
  const std::vector<T> a = values<T>(static_cast<size_t>(lda * n), 3);
  const T alpha = scalar<T>(kAlpha), beta = scalar<T>(kBeta);
  for (I inc : {1, -2}) {
    const size_t ainc = static_cast<size_t>(std::abs(inc));
    const std::vector<T> x1 = values<T>(n * ainc, 1), x2 = values<T>(m * ainc, 50);
    std::vector<T> y1 = values<T>(m * ainc, 90), y2 = values<T>(n * ainc, 130), w1 = y1, w2 = y2;
    f(&m, &n, &alpha, a.data(), &lda, x1.data(), &inc, x2.data(), &inc, &beta, y1.data(), &inc, y2.data(), &inc);
    gemv("N", &m, &n, &alpha, a.data(), &lda, x1.data(), &inc, &beta, w1.data(), &inc);
    gemv("C", &m, &n, &alpha, a.data(), &lda, x2.data(), &inc, &beta, w2.data(), &inc);
    expect_all_near(y1, w1, 100.0 * n, "y1 inc " + std::to_string(inc));
    expect_all_near(y2, w2, 100.0 * m, "y2 inc " + std::to_string(inc));
  }
}

// One triangle of alpha op(A) op(B) + beta C over several column blocks, against the whole
// ?gemm product with the other triangle put back: that one is left alone.
TYPED_TEST(BackendGemmExt, TriangleOfAProduct) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const char*, const char*, const char*, const I*, const I*, const T*, const T*, const I*, const T*,
                 const I*, const T*, T*, const I*);
  auto* f = entry<F, T>("%cgemmt");
  for (char uplo : {'U', 'L'})
    for (char ta : {'N', 'T', 'C'})
      for (char tb : {'N', 'T', 'C'})
        for (I k : {0, 11})
          for (bool zero_beta : {false, true}) {
            const I n = ta == 'N' && tb == 'N' ? 200 : 37, ldc = n + 1;
            const Stored a = stored(ta, n, k, 2), b = stored(tb, k, n, 3);
            const std::vector<T> av = values<T>(a.size, 1), bv = values<T>(b.size, 2);
            std::vector<T> c = values<T>(static_cast<size_t>(ldc * n), 3);
            auto inside = [&](I i, I j) { return uplo == 'U' ? i <= j : i >= j; };
            if (zero_beta)  // with beta 0, C is not read: NaN there must not show
              for (I j = 0; j < n; ++j)
                for (I i = 0; i < n; ++i)
                  if (inside(i, j)) c[static_cast<size_t>(i + j * ldc)] = T(std::nan(""));
            const std::vector<T> c0 = c;
            std::vector<T> want = c;
            const T alpha = scalar<T>(kAlpha), beta = zero_beta ? T{} : scalar<T>(kBeta);
            f(&uplo, &ta, &tb, &n, &k, &alpha, av.data(), &a.ld, bv.data(), &b.ld, &beta, c.data(), &ldc);
            openblas<Gemm<T>, T>("%cgemm_")(&ta, &tb, &n, &n, &k, &alpha, av.data(), &a.ld, bv.data(), &b.ld, &beta,
                                            want.data(), &ldc);
            for (I j = 0; j < n; ++j)
              for (I i = 0; i < n; ++i)
                if (!inside(i, j)) want[static_cast<size_t>(i + j * ldc)] = c0[static_cast<size_t>(i + j * ldc)];
            expect_all_near(c, want, 100.0 * (k + 1), std::string(1, uplo) + ta + tb + " k " + std::to_string(k));
          }
}

// Real A times complex B or x, for the two complex types: ?gemm and ?gemv of the complex type
// on A made complex.
template <class C>
class BackendMixed : public ::testing::Test {};
using ComplexTypes = ::testing::Types<std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(BackendMixed, ComplexTypes);

TYPED_TEST(BackendMixed, RealTimesComplexMatrix) {
  using C = TypeParam;
  using R = Real<C>;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const char*, const char*, const I*, const I*, const I*, const C*, const R*, const I*, const C*,
                 const I*, const C*, C*, const I*);
  auto* f = entry<F, C>(kLetter<C> == 'c' ? "scgemm" : "dzgemm");
  const I m = 17, n = 11, k = 8, ldc = m + 3;
  for (char ta : {'N', 'T', 'C'})
    for (char tb : {'N', 'T', 'C'})
      for (bool zero_beta : {false, true}) {
        const Stored a = stored(ta, m, k, 2), b = stored(tb, k, n, 1);
        const std::vector<R> ar = values<R>(a.size, 4);
        const std::vector<C> ac(ar.begin(), ar.end()), bv = values<C>(b.size, 5);
        std::vector<C> c = values<C>(static_cast<size_t>(ldc * n + 1), 6);
        if (zero_beta) std::fill(c.begin(), c.end(), C(std::nan("")));
        std::vector<C> want = c;
        const C alpha = scalar<C>(kAlpha), beta = zero_beta ? C{} : scalar<C>(kBeta);
        f(&ta, &tb, &m, &n, &k, &alpha, ar.data(), &a.ld, bv.data(), &b.ld, &beta, c.data(), &ldc);
        openblas<Gemm<C>, C>("%cgemm_")(&ta, &tb, &m, &n, &k, &alpha, ac.data(), &a.ld, bv.data(), &b.ld, &beta,
                                        want.data(), &ldc);
        expect_all_near(c, want, 100.0 * k, std::string(1, ta) + tb);
      }
}

TYPED_TEST(BackendMixed, RealTimesComplexVector) {
  using C = TypeParam;
  using R = Real<C>;
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  using F = void(const char*, const int64_t*, const int64_t*, const C*, const R*, const int64_t*, const C*,
                 const int64_t*, const C*, C*, const int64_t*);
  auto* f = entry<F, C>(kLetter<C> == 'c' ? "scgemv_" : "dzgemv_");
  const I m = 14, n = 6, lda = 16;
  const std::vector<R> ar = values<R>(static_cast<size_t>(lda * n), 8);
  const std::vector<C> ac(ar.begin(), ar.end());
  for (char trans : {'N', 'T'})
    for (I incx : {1, -3})
      for (I incy : {2, -1}) {
        const I xlen = trans == 'N' ? n : m, ylen = trans == 'N' ? m : n;
        const std::vector<C> x = values<C>(static_cast<size_t>(xlen * std::abs(incx)), 11);
        std::vector<C> y = values<C>(static_cast<size_t>(ylen * std::abs(incy)), 29), want = y;
        const C alpha = scalar<C>(kAlpha), beta = scalar<C>(kBeta);
        const int64_t wide[] = {m, n, lda, incx, incy};
        f(&trans, &wide[0], &wide[1], &alpha, ar.data(), &wide[2], x.data(), &wide[3], &beta, y.data(), &wide[4]);
        openblas<Gemv<C>, C>("%cgemv_")(&trans, &m, &n, &alpha, ac.data(), &lda, x.data(), &incx, &beta, want.data(),
                                        &incy);
        expect_all_near(y, want, 100.0 * xlen, std::string(1, trans) + " incx " + std::to_string(incx));
      }
}

}  // namespace
