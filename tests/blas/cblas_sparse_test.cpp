// Sparse level 1 computed in the library, for every type on both interfaces, against plain
// loops of the same meaning; quick returns leave everything untouched.
#include <dlfcn.h>

#include <cmath>
#include <complex>
#include <limits>
#include <string>
#include <vector>

#include "cblas_harness.h"
#include "element_type.h"

namespace {

template <class E_, class I_, int Layer_>
struct Config {
  using E = E_;
  using I = I_;
  static constexpr int layer = Layer_;
};

using qnl_test::kComplex;
using qnl_test::kLetter;
using qnl_test::Real;

template <class F>
F* entry(char t, const char* stem) {
  const std::string name = std::string("cblas_") + t + stem;
  void* p = dlsym(RTLD_DEFAULT, name.c_str());
  EXPECT_NE(p, nullptr) << name;
  return reinterpret_cast<F*>(p);
}

template <class C>
class CblasSparse : public testing::Test {
 protected:
  using E = typename C::E;
  using I = typename C::I;
  static constexpr int kLength = 1000;  // the full vector
  static constexpr int kNz = 37;        // not a multiple of any unroll

  void SetUp() override {
    cblas_test::set_layer(static_cast<cblas_test::Layer>(C::layer));
    for (int i = 0; i < kNz; ++i) indx.push_back(static_cast<I>((i * 389 + 11) % kLength));  // distinct
    for (int i = 0; i < kNz; ++i) x.push_back(value(i, 0.25));
    for (int i = 0; i < kLength; ++i) y.push_back(value(i, -0.125));
  }
  static E value(int i, double shift) {
    const double re = std::sin(i + shift) * 4, im = std::cos(3 * i + shift);
    if constexpr (kComplex<E>)
      return E(static_cast<Real<E>>(re), static_cast<Real<E>>(im));
    else
      return static_cast<E>(re);
  }
  static double tolerance() { return std::is_same_v<Real<E>, float> ? 1e-3 : 1e-12; }

  std::vector<I> indx;
  std::vector<E> x, y;
  const char t = kLetter<E>;
};

using Configs =
    testing::Types<Config<float, int32_t, 0>, Config<double, int32_t, 0>, Config<std::complex<float>, int32_t, 0>,
                   Config<std::complex<double>, int32_t, 0>, Config<float, int64_t, 1>, Config<double, int64_t, 1>,
                   Config<std::complex<float>, int64_t, 1>, Config<std::complex<double>, int64_t, 1>>;
TYPED_TEST_SUITE(CblasSparse, Configs);

// Complex scalars are passed by address, real ones by value.
template <class E>
using Scalar = std::conditional_t<kComplex<E>, const void*, E>;
template <class E>
Scalar<E> pass(const E& v) {
  if constexpr (kComplex<E>)
    return &v;
  else
    return v;
}

TYPED_TEST(CblasSparse, AxpyiMatchesLoop) {
  using E = typename TypeParam::E;
  using I = typename TypeParam::I;
  auto* f = entry<void(I, Scalar<E>, const E*, const I*, E*)>(this->t, "axpyi");
  const E alpha = this->value(5, 0.5);
  std::vector<E> want = this->y;
  for (int i = 0; i < this->kNz; ++i) want[this->indx[i]] += alpha * this->x[i];
  f(this->kNz, pass(alpha), this->x.data(), this->indx.data(), this->y.data());
  for (int i = 0; i < this->kLength; ++i) EXPECT_NEAR(std::abs(this->y[i] - want[i]), 0, this->tolerance()) << i;
}

TYPED_TEST(CblasSparse, GatherScatterMatchLoop) {
  using E = typename TypeParam::E;
  using I = typename TypeParam::I;
  auto* gthr = entry<void(I, const E*, E*, const I*)>(this->t, "gthr");
  auto* gthrz = entry<void(I, E*, E*, const I*)>(this->t, "gthrz");
  auto* sctr = entry<void(I, const E*, const I*, E*)>(this->t, "sctr");
  std::vector<E> got(this->kNz);
  gthr(this->kNz, this->y.data(), got.data(), this->indx.data());
  for (int i = 0; i < this->kNz; ++i) EXPECT_EQ(got[i], this->y[this->indx[i]]);

  std::vector<E> zeroed = this->y, taken(this->kNz);
  gthrz(this->kNz, zeroed.data(), taken.data(), this->indx.data());
  std::vector<E> want = this->y;
  for (int i = 0; i < this->kNz; ++i) want[this->indx[i]] = E{};
  EXPECT_EQ(taken, got);
  EXPECT_EQ(zeroed, want);

  std::vector<E> full = this->y;
  sctr(this->kNz, this->x.data(), this->indx.data(), full.data());
  want = this->y;
  for (int i = 0; i < this->kNz; ++i) want[this->indx[i]] = this->x[i];
  EXPECT_EQ(full, want);
}

TYPED_TEST(CblasSparse, DotsMatchLoop) {
  using E = typename TypeParam::E;
  using I = typename TypeParam::I;
  E plain{}, conjugated{};
  for (int i = 0; i < this->kNz; ++i) {
    plain += this->x[i] * this->y[this->indx[i]];
    if constexpr (kComplex<E>) conjugated += std::conj(this->x[i]) * this->y[this->indx[i]];
  }
  if constexpr (kComplex<E>) {
    auto* dotu = entry<void(I, const E*, const I*, const E*, E*)>(this->t, "dotui_sub");
    auto* dotc = entry<void(I, const E*, const I*, const E*, E*)>(this->t, "dotci_sub");
    E u, c;
    dotu(this->kNz, this->x.data(), this->indx.data(), this->y.data(), &u);
    dotc(this->kNz, this->x.data(), this->indx.data(), this->y.data(), &c);
    EXPECT_NEAR(std::abs(u - plain), 0, this->tolerance() * 10);
    EXPECT_NEAR(std::abs(c - conjugated), 0, this->tolerance() * 10);
    // nothing to sum stores zero
    E z(7, 7);
    dotc(0, this->x.data(), this->indx.data(), this->y.data(), &z);
    EXPECT_EQ(z, E{});
  } else {
    auto* doti = entry<E(I, const E*, const I*, const E*)>(this->t, "doti");
    EXPECT_NEAR(doti(this->kNz, this->x.data(), this->indx.data(), this->y.data()), plain, this->tolerance() * 10);
    EXPECT_EQ(doti(-1, this->x.data(), this->indx.data(), this->y.data()), E{});
  }
}

TYPED_TEST(CblasSparse, RotiMatchesLoop) {
  using E = typename TypeParam::E;
  using I = typename TypeParam::I;
  if constexpr (!kComplex<E>) {
    auto* roti = entry<void(I, E*, const I*, E*, E, E)>(this->t, "roti");
    const E c = static_cast<E>(0.6), s = static_cast<E>(0.8);
    std::vector<E> wx = this->x, wy = this->y;
    for (int i = 0; i < this->kNz; ++i) {
      const E a = wx[i], b = wy[this->indx[i]];
      wx[i] = c * a + s * b;
      wy[this->indx[i]] = c * b - s * a;
    }
    roti(this->kNz, this->x.data(), this->indx.data(), this->y.data(), c, s);
    for (int i = 0; i < this->kNz; ++i) EXPECT_NEAR(this->x[i], wx[i], this->tolerance());
    for (int i = 0; i < this->kLength; ++i) EXPECT_NEAR(this->y[i], wy[i], this->tolerance());
  }
}

// Quick returns: a NaN in x would show in y if anything were computed.
TYPED_TEST(CblasSparse, QuickReturnsTouchNothing) {
  using E = typename TypeParam::E;
  using I = typename TypeParam::I;
  using R = Real<E>;
  const R nan = std::numeric_limits<R>::quiet_NaN();
  std::vector<E> poisoned(this->kNz, E(nan));
  const std::vector<E> before = this->y;
  auto* axpyi = entry<void(I, Scalar<E>, const E*, const I*, E*)>(this->t, "axpyi");
  for (R zero : {R(0), R(-0.0)}) {
    const E alpha(zero);
    axpyi(this->kNz, pass(alpha), poisoned.data(), this->indx.data(), this->y.data());
  }
  const E one(1);
  axpyi(0, pass(one), poisoned.data(), this->indx.data(), this->y.data());
  axpyi(-5, pass(one), poisoned.data(), this->indx.data(), this->y.data());
  if constexpr (!kComplex<E>) {
    auto* roti = entry<void(I, E*, const I*, E*, E, E)>(this->t, "roti");
    roti(this->kNz, poisoned.data(), this->indx.data(), this->y.data(), E(1), E(0));
    EXPECT_TRUE(std::isnan(poisoned[0])) << "x untouched";
  }
  EXPECT_EQ(std::memcmp(this->y.data(), before.data(), before.size() * sizeof(E)), 0);
  EXPECT_EQ(blas_test::blas_calls(), 0) << "computed here, no back-end";
}

// Complex alpha with one part zero still computes.
TEST(CblasSparseEdges, ComplexAlphaWithImaginaryPartComputes) {
  cblas_test::set_layer(cblas_test::LP64);
  const std::complex<double> alpha(0, 2), x[1] = {{1, 0}};
  const int32_t indx[1] = {1};
  std::complex<double> y[2] = {};
  cblas_zaxpyi(1, &alpha, x, indx, y);
  EXPECT_EQ(y[1], std::complex<double>(0, 2));
  EXPECT_EQ(y[0], std::complex<double>());
}

}  // namespace
