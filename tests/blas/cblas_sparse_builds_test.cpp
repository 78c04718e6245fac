// Every instruction-set build of the sparse level-1 loops computes what the baseline build
// computes, whichever the running processor would choose.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "cblas_sparse_loops.h"

namespace {

using qnl::blas::cdouble;
using qnl::blas::cfloat;
using qnl::cblas::SparseKernels;

template <class E_, class I_>
struct Config {
  using E = E_;
  using I = I_;
};

template <class E>
E make(int i) {
  const double re = std::sin(i) * 3, im = std::cos(2 * i);
  if constexpr (qnl::blas::is_complex<E>)
    return {static_cast<decltype(E::re)>(re), static_cast<decltype(E::re)>(im)};
  else
    return static_cast<E>(re + im);
}

template <class E>
double distance(E a, E b) {
  if constexpr (qnl::blas::is_complex<E>)
    return std::hypot(a.re - b.re, a.im - b.im);
  else
    return std::fabs(a - b);
}

template <class C>
class SparseBuilds : public testing::Test {};
using Configs =
    testing::Types<Config<float, int32_t>, Config<double, int32_t>, Config<cfloat, int32_t>, Config<cdouble, int32_t>,
                   Config<float, int64_t>, Config<double, int64_t>, Config<cfloat, int64_t>, Config<cdouble, int64_t>>;
TYPED_TEST_SUITE(SparseBuilds, Configs);

// Runs one kernel of a build on fresh data and returns x, y and the dot products.
template <class E, class I>
std::vector<E> run(const SparseKernels<E, I>& k, int which) {
  constexpr int nz = 61, length = 300;
  std::vector<I> indx;
  for (int i = 0; i < nz; ++i) indx.push_back(static_cast<I>((i * 7 + 3) % length));
  std::vector<E> x, y;
  for (int i = 0; i < nz; ++i) x.push_back(make<E>(i));
  for (int i = 0; i < length; ++i) y.push_back(make<E>(1000 + i));
  E extra[2] = {};
  switch (which) {
    case 0:
      k.axpyi(nz, make<E>(5), x.data(), indx.data(), y.data());
      break;
    case 1:
      k.gthr(nz, y.data(), x.data(), indx.data());
      break;
    case 2:
      k.gthrz(nz, y.data(), x.data(), indx.data());
      break;
    case 3:
      k.sctr(nz, x.data(), indx.data(), y.data());
      break;
    case 4:
      k.roti(nz, x.data(), indx.data(), y.data(), 0.6f, 0.8f);
      break;
    case 5:
      extra[0] = k.dotu(nz, x.data(), indx.data(), y.data());
      extra[1] = k.dotc(nz, x.data(), indx.data(), y.data());
      break;
  }
  x.insert(x.end(), y.begin(), y.end());
  x.insert(x.end(), extra, extra + 2);
  return x;
}

TYPED_TEST(SparseBuilds, Avx2AgreesWithBaseline) {
  using E = typename TypeParam::E;
  using I = typename TypeParam::I;
  const auto& base = *qnl::cblas::baseline::kernels<E, I>();
  const auto& avx2 = *qnl::cblas::avx2::kernels<E, I>();
  const bool can_run = __builtin_cpu_supports("avx2");
  if (!can_run) GTEST_SKIP() << "no AVX2 on this processor";
  EXPECT_NE(&base, &avx2);
  for (int which = 0; which < 6; ++which) {
    const auto want = run(base, which), got = run(avx2, which);
    ASSERT_EQ(want.size(), got.size());
    for (size_t i = 0; i < want.size(); ++i) EXPECT_LE(distance(want[i], got[i]), 1e-4) << which << " at " << i;
  }
}

}  // namespace
