// Sparse level 1, computed by the reference back-end and reached through the facade's Fortran
// entries, against plain loops over the definitions; the packed triangular multiply against
// OpenBLAS. GEMM with packed operands is compared with OpenBLAS in cblas_oracle_test.
#include <cstdint>
#include <vector>

#include "reference_types.h"

extern "C" int QNL_Set_Interface_Layer(int);

using namespace ref_test;

namespace {

template <class T>
class BackendSparse : public ::testing::Test {};
TYPED_TEST_SUITE(BackendSparse, AllTypes);

// 1-based positions in a vector of 40, out of order, and the empty case.
const std::vector<int32_t> kIndices = {3, 40, 1, 17, 9, 22, 2, 31, 12, 25, 5};

TYPED_TEST(BackendSparse, UpdatesGathersAndScattersByIndex) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using Axpyi = void(const int32_t*, const T*, const T*, const int32_t*, T*);
  using Gthr = void(const int32_t*, T*, T*, const int32_t*);
  using Sctr = void(const int32_t*, const T*, const int32_t*, T*);
  const T a = scalar<T>({1.25, -0.5});
  for (int32_t nz : {0, 1, static_cast<int32_t>(kIndices.size())}) {
    const std::vector<T> x = values<T>(kIndices.size(), 1), y0 = values<T>(40, 7);
    std::vector<T> y = y0;
    entry<Axpyi, T>("%caxpyi")(&nz, &a, x.data(), kIndices.data(), y.data());
    std::vector<T> want = y0;
    for (int32_t i = 0; i < nz; ++i) want[static_cast<size_t>(kIndices[i] - 1)] += a * x[static_cast<size_t>(i)];
    for (size_t q = 0; q < y.size(); ++q) expect_near(y[q], want[q], 20.0, "axpyi");

    std::vector<T> g(kIndices.size(), T(-1)), yz = y0;
    entry<Gthr, T>("%cgthr")(&nz, yz.data(), g.data(), kIndices.data());
    EXPECT_EQ(yz, y0) << "gthr leaves y alone";
    std::vector<T> gz(kIndices.size(), T(-1));
    entry<Gthr, T>("%cgthrz_")(&nz, yz.data(), gz.data(), kIndices.data());
    EXPECT_EQ(gz, g) << "gthrz gathers the same";
    for (size_t q = 0; q < kIndices.size(); ++q) {
      const bool used = static_cast<int32_t>(q) < nz;
      EXPECT_EQ(g[q], used ? y0[static_cast<size_t>(kIndices[q] - 1)] : T(-1));
      if (used) {
        EXPECT_EQ(yz[static_cast<size_t>(kIndices[q] - 1)], T{}) << "gthrz zeroes what it took";
      }
    }
    std::vector<T> s = y0;
    entry<Sctr, T>("%csctr")(&nz, x.data(), kIndices.data(), s.data());
    std::vector<T> ws = y0;
    for (int32_t i = 0; i < nz; ++i) ws[static_cast<size_t>(kIndices[i] - 1)] = x[static_cast<size_t>(i)];
    EXPECT_EQ(s, ws);
  }
}

TYPED_TEST(BackendSparse, DotProductsByIndex) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  const std::vector<int64_t> idx(kIndices.begin(), kIndices.end());
  const std::vector<T> x = values<T>(idx.size(), 3), y = values<T>(40, 11);
  for (int64_t nz : {int64_t{0}, static_cast<int64_t>(idx.size())}) {
    for (bool conj : {false, true}) {
      if (!kComplex<T> && conj) continue;
      using F = T(const int64_t*, const T*, const int64_t*, const T*);
      const char* name = !kComplex<T> ? "%cdoti" : conj ? "%cdotci" : "%cdotui";
      const T got = entry<F, T>(name)(&nz, x.data(), idx.data(), y.data());
      T want{};
      for (int64_t i = 0; i < nz; ++i)
        want += conj_if(x[static_cast<size_t>(i)], conj) * y[static_cast<size_t>(idx[static_cast<size_t>(i)] - 1)];
      expect_near(got, want, 500.0, name);
    }
  }
}

template <class T>
class BackendRealOnly : public ::testing::Test {};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(BackendRealOnly, RealTypes);

TYPED_TEST(BackendRealOnly, RotationByIndex) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F = void(const int32_t*, T*, const int32_t*, T*, const T*, const T*);
  const int32_t nz = static_cast<int32_t>(kIndices.size());
  std::vector<T> x = values<T>(kIndices.size(), 2), y = values<T>(40, 9);
  const std::vector<T> x0 = x, y0 = y;
  const T c = T(0.6), s = T(0.8);
  entry<F, T>("%croti")(&nz, x.data(), kIndices.data(), y.data(), &c, &s);
  std::vector<T> wy = y0;
  for (size_t i = 0; i < kIndices.size(); ++i) {
    const size_t j = static_cast<size_t>(kIndices[i] - 1);
    expect_near(x[i], c * x0[i] + s * y0[j], 10.0, "x");
    wy[j] = c * y0[j] - s * x0[i];
  }
  for (size_t j = 0; j < y.size(); ++j) expect_near(y[j], wy[j], 10.0, "y");
}

// B = alpha op(A) B or alpha B op(A), A triangular in packed storage: against OpenBLAS's
// ?tpttr unpacking it and ?trmm multiplying by it.
TYPED_TEST(BackendRealOnly, PackedTriangularMultiply) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  using F = void(const char*, const char*, const char*, const char*, const int64_t*, const int64_t*, const T*, const T*,
                 const int64_t*, T*, const int64_t*);
  using I = int32_t;  // OpenBLAS's LP64 integers
  using Tpttr = void(const char*, const I*, const T*, T*, const I*, I*);
  using Trmm = void(const char*, const char*, const char*, const char*, const I*, const I*, const T*, const T*,
                    const I*, T*, const I*);
  const int64_t m = 13, n = 8, ldb = 15, unused = 1;
  const I m32 = 13, n32 = 8, ldb32 = 15;
  const T alpha = T(-0.75);
  for (char side : {'L', 'R'})
    for (char uplo : {'U', 'L'})
      for (char trans : {'N', 'T'})
        for (char diag : {'N', 'U'}) {
          const I order = side == 'L' ? m32 : n32;
          const std::vector<T> ap = values<T>(static_cast<size_t>(order * (order + 1) / 2), 4);
          std::vector<T> full(static_cast<size_t>(order * order)), b = values<T>(static_cast<size_t>(ldb * n), 5);
          std::vector<T> want = b;
          I info = -1;
          openblas<Tpttr, T>("%ctpttr_")(&uplo, &order, ap.data(), full.data(), &order, &info);
          ASSERT_EQ(info, 0);
          openblas<Trmm, T>("%ctrmm_")(&side, &uplo, &trans, &diag, &m32, &n32, &alpha, full.data(), &order,
                                       want.data(), &ldb32);
          entry<F, T>("%cptrmm")(&side, &uplo, &trans, &diag, &m, &n, &alpha, ap.data(), &unused, b.data(), &ldb);
          expect_all_near(b, want, 300.0, std::string(1, side) + uplo + trans + diag);
        }
}

}  // namespace
