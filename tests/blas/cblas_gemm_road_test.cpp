// The real cblas_?gemm bodies test their arguments in assembly. On random small problems,
// both layouts, at both widths, a call must be turned down exactly when the Fortran entry's
// own checker turns down the column-major call the C layer makes of it.
#include <random>

#include "cblas_harness.h"

using namespace cblas_test;

namespace {

template <class I, class S>
using CGemm = void (*)(int, int, int, I, I, I, S, const S*, I, const S*, I, S, S*, I);
template <class I, class S>
using FGemm = void (*)(const char*, const char*, const I*, const I*, const I*, const S*, const S*, const I*, const S*,
                       const I*, const S*, S*, const I*, size_t, size_t);

// Whether the last call reported and reached no back-end.
bool turned_down() { return !reports().empty() && blas_test::blas_calls() == 0; }

template <class I, class S>
void rejects_as_the_fortran_checker(const char* type) {
  const std::string name = std::string(type) + "gemm";
  auto c = reinterpret_cast<CGemm<I, S>>(blas_test::entry_point("cblas_" + name));
  auto f = reinterpret_cast<FGemm<I, S>>(blas_test::entry_point(name + "_"));
  static S data[64];
  std::mt19937 rng(14);
  int turned = 0;
  for (int i = 0; i < 3000; ++i) {
    // mostly valid options and sizes, so that the leading dimensions decide most calls
    auto option = [&] {
      return rng() % 16 == 0 ? 110 + 4 * static_cast<int>(rng() % 2) : 111 + static_cast<int>(rng() % 3);
    };
    const int layout = 101 + static_cast<int>(rng() % 2), ta = option(), tb = option();
    I v[6];  // m, n, k, lda, ldb, ldc
    for (int j = 0; j < 6; ++j) v[j] = rng() % 16 == 0 ? I(-1) : static_cast<I>(rng() % (j < 3 ? 4 : 5));
    qnl_probe_reset();
    c(layout, ta, tb, v[0], v[1], v[2], S(1), data, v[3], data, v[4], S(0), data, v[5]);
    const bool c_turned = turned_down();
    const char* letter[] = {"X", "N", "T", "C", "X"};
    const char *fa = letter[ta - 110], *fb = letter[tb - 110];
    qnl_probe_reset();
    if (layout == 102)
      f(fa, fb, &v[0], &v[1], &v[2], data, data, &v[3], data, &v[4], data, data, &v[5], 1, 1);
    else
      f(fb, fa, &v[1], &v[0], &v[2], data, data, &v[4], data, &v[3], data, data, &v[5], 1, 1);
    ASSERT_EQ(c_turned, turned_down()) << name << " " << layout << " " << ta << " " << tb << " m " << v[0] << " n "
                                       << v[1] << " k " << v[2] << " ld " << v[3] << " " << v[4] << " " << v[5];
    turned += c_turned;
  }
  EXPECT_GT(turned, 300);
  EXPECT_LT(turned, 2700);
}

// The layer is settled once per process, and each test runs in a process of its own.
TEST(CblasGemmRoad, RejectsAsTheFortranCheckerLp64) {
  set_layer(LP64);
  rejects_as_the_fortran_checker<int32_t, double>("d");
  rejects_as_the_fortran_checker<int32_t, float>("s");
}
TEST(CblasGemmRoad, RejectsAsTheFortranCheckerIlp64) {
  set_layer(ILP64);
  rejects_as_the_fortran_checker<int64_t, double>("d");
  rejects_as_the_fortran_checker<int64_t, float>("s");
}

}  // namespace
