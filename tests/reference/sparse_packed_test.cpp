// Sparse level 1 in both spellings against plain loops over the definitions: the CBLAS
// entries (zero-based indices, computed in the library) and the Fortran ones (one-based,
// computed by the reference back-end), on both interface layers; quick returns leave
// everything untouched. The packed triangular multiply against OpenBLAS. GEMM with packed
// operands is compared with OpenBLAS in cblas_oracle_test.
#include <cmath>
#include <cstdint>
#include <vector>

#include "reference_types.h"

using namespace ref_test;

namespace {

template <class T_, class I_>
struct Config {
  using T = T_;
  using I = I_;
};
using Configs = ::testing::Types<Config<float, int32_t>, Config<double, int32_t>, Config<std::complex<float>, int32_t>,
                                 Config<std::complex<double>, int32_t>, Config<float, int64_t>, Config<double, int64_t>,
                                 Config<std::complex<float>, int64_t>, Config<std::complex<double>, int64_t>>;
template <class C>
class BackendSparse : public ::testing::Test {};
TYPED_TEST_SUITE(BackendSparse, Configs);

// CBLAS passes complex scalars by address, real ones by value.
template <class T>
using Scalar = std::conditional_t<kComplex<T>, const void*, T>;
template <class T>
Scalar<T> pass(const T& v) {
  if constexpr (kComplex<T>)
    return &v;
  else
    return v;
}

// 37 distinct zero-based positions in a vector of 60, out of order: not a multiple of any unroll.
constexpr size_t kLength = 60, kMost = 37;
size_t position(size_t i) { return (i * 29 + 11) % kLength; }

TYPED_TEST(BackendSparse, BothSpellingsMatchTheLoops) {
  using T = typename TypeParam::T;
  using I = typename TypeParam::I;
  constexpr int layer = sizeof(I) == 8;
  ASSERT_EQ(QNL_Set_Interface_Layer(layer), layer);
  std::vector<I> zero_based, one_based;
  for (size_t i = 0; i < kMost; ++i) {
    zero_based.push_back(static_cast<I>(position(i)));
    one_based.push_back(static_cast<I>(position(i) + 1));
  }
  const std::vector<T> x0 = values<T>(kMost, 1), y0 = values<T>(kLength, 7), nan(kMost, T(std::nan("")));
  for (I nz : {I(-5), I(0), I(1), static_cast<I>(kMost)})
    for (bool c : {true, false}) {
      SCOPED_TRACE(testing::Message() << (c ? "CBLAS" : "Fortran") << " nz " << nz);
      const I* idx = c ? zero_based.data() : one_based.data();
      const size_t used = nz > 0 ? static_cast<size_t>(nz) : 0;
      // y += alpha x; in the library's loops a zero alpha (either sign) computes nothing, as
      // NaN in x would show (the back-end's loop adds the zero products)
      for (std::complex<double> a : {std::complex<double>(1.25, -0.5), {0, 2}, {0, 0}, {-0.0, 0}}) {
        const T alpha = scalar<T>(a);
        const bool quick = alpha == T(0);
        const std::vector<T>& x = quick && c ? nan : x0;
        std::vector<T> y = y0, want = y0;
        for (size_t i = 0; i < used && !quick; ++i) want[position(i)] += alpha * x[i];
        if (c)
          entry<void(I, Scalar<T>, const T*, const I*, T*), T>("cblas_%caxpyi")(nz, pass(alpha), x.data(), idx,
                                                                                y.data());
        else
          entry<void(const I*, const T*, const T*, const I*, T*), T>("%caxpyi")(&nz, &alpha, x.data(), idx, y.data());
        expect_all_near(y, want, 20.0, "axpyi");
      }
      // gather, gather and zero, scatter
      std::vector<T> g(kMost, T(-1)), gz(kMost, T(-1)), yz = y0, s = y0, want_g(kMost, T(-1)), want_z = y0;
      std::vector<T> want_s = y0;
      for (size_t i = 0; i < used; ++i) {
        want_g[i] = y0[position(i)];
        want_z[position(i)] = T{};
        want_s[position(i)] = x0[i];
      }
      if (c) {
        entry<void(I, const T*, T*, const I*), T>("cblas_%cgthr")(nz, y0.data(), g.data(), idx);
        entry<void(I, T*, T*, const I*), T>("cblas_%cgthrz")(nz, yz.data(), gz.data(), idx);
        entry<void(I, const T*, const I*, T*), T>("cblas_%csctr")(nz, x0.data(), idx, s.data());
      } else {
        entry<void(const I*, const T*, T*, const I*), T>("%cgthr")(&nz, y0.data(), g.data(), idx);
        entry<void(const I*, T*, T*, const I*), T>("%cgthrz_")(&nz, yz.data(), gz.data(), idx);
        entry<void(const I*, const T*, const I*, T*), T>("%csctr")(&nz, x0.data(), idx, s.data());
      }
      EXPECT_EQ(g, want_g);
      EXPECT_EQ(gz, want_g);
      EXPECT_EQ(yz, want_z);
      EXPECT_EQ(s, want_s);
      // dot products, conjugated or not; nothing to sum gives zero
      for (bool conj : {false, true}) {
        if (!kComplex<T> && conj) continue;
        T want{}, got(7);
        for (size_t i = 0; i < used; ++i) want += conj_if(x0[i], conj) * y0[position(i)];
        if (c && kComplex<T>)
          entry<void(I, const T*, const I*, const T*, T*), T>(conj ? "cblas_%cdotci_sub" : "cblas_%cdotui_sub")(
              nz, x0.data(), idx, y0.data(), &got);
        else if (c)
          got = entry<T(I, const T*, const I*, const T*), T>("cblas_%cdoti")(nz, x0.data(), idx, y0.data());
        else
          got = entry<T(const I*, const T*, const I*, const T*), T>(!kComplex<T> ? "%cdoti"
                                                                    : conj       ? "%cdotci"
                                                                           : "%cdotui")(&nz, x0.data(), idx, y0.data());
        expect_near(got, want, 500.0, conj ? "dotci" : "dot");
      }
      // plane rotation, real only; in the library's loops the identity computes nothing
      if constexpr (!kComplex<T>) {
        for (const auto& [cs, sn] : {std::pair<T, T>(T(0.6), T(0.8)), {T(1), T(0)}}) {
          const bool quick = sn == T(0) && c;
          std::vector<T> x = quick ? nan : x0, y = y0, want_x = x, want_y = y0;
          for (size_t i = 0; i < used && !quick; ++i) {
            want_x[i] = cs * x0[i] + sn * y0[position(i)];
            want_y[position(i)] = cs * y0[position(i)] - sn * x0[i];
          }
          if (c)
            entry<void(I, T*, const I*, T*, T, T), T>("cblas_%croti")(nz, x.data(), idx, y.data(), cs, sn);
          else
            entry<void(const I*, T*, const I*, T*, const T*, const T*), T>("%croti")(&nz, x.data(), idx, y.data(), &cs,
                                                                                     &sn);
          expect_all_near(x, want_x, 10.0, "roti x");
          expect_all_near(y, want_y, 10.0, "roti y");
        }
      }
    }
}

template <class T>
class BackendRealOnly : public ::testing::Test {};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(BackendRealOnly, RealTypes);

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
