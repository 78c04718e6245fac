// The real cblas_?gemm bodies test their arguments in assembly. On random small problems,
// both layouts, at both widths, a call must be turned down exactly when the Fortran entry's
// own checker turns down the column-major call the C layer makes of it.
#include <random>

#include "cblas_harness.h"

namespace {

template <class I, class S>
void rejects_as_the_fortran_checker(const std::string& name) {
  using C = void (*)(int, int, int, I, I, I, S, const S*, I, const S*, I, S, S*, I);
  using F = void (*)(const char*, const char*, const I*, const I*, const I*, const S*, const S*, const I*, const S*,
                     const I*, const S*, S*, const I*, size_t, size_t);
  auto c = reinterpret_cast<C>(blas_test::entry_point("cblas_" + name));
  auto f = reinterpret_cast<F>(blas_test::entry_point(name + "_"));
  auto turned_down = [] { return !blas_test::reports().empty() && blas_test::blas_calls() == 0; };
  static S data[64];
  std::mt19937 rng(14);
  int turned = 0;
  for (int i = 0; i < 3000; ++i) {
    // mostly valid options and sizes, so that the leading dimensions decide most calls
    auto option = [&] { return int(rng() % 16 == 0 ? 110 + 4 * (rng() % 2) : 111 + rng() % 3); };
    const int layout = int(101 + rng() % 2), ta = option(), tb = option();
    I v[6];  // m, n, k, lda, ldb, ldc
    for (int j = 0; j < 6; ++j) v[j] = rng() % 16 == 0 ? I(-1) : I(rng() % (j < 3 ? 4 : 5));
    qnl_probe_reset();
    c(layout, ta, tb, v[0], v[1], v[2], S(1), data, v[3], data, v[4], S(0), data, v[5]);
    const bool c_turned = turned_down();
    // the column-major call: a row-major one exchanges the operands and m with n
    const bool row = layout == 101;
    const I w[6] = {v[row], v[!row], v[2], v[3 + row], v[4 - row], v[5]};
    const char* letter[] = {"X", "N", "T", "C", "X"};
    qnl_probe_reset();
    f(letter[(row ? tb : ta) - 110], letter[(row ? ta : tb) - 110], &w[0], &w[1], &w[2], data, data, &w[3], data, &w[4],
      data, data, &w[5], 1, 1);
    ASSERT_EQ(c_turned, turned_down()) << name << " " << layout << " " << ta << " " << tb << " m " << v[0] << " n "
                                       << v[1] << " k " << v[2] << " ld " << v[3] << " " << v[4] << " " << v[5];
    turned += c_turned;
  }
  EXPECT_TRUE(turned > 300 && turned < 2700) << turned << " of 3000 turned down";
}

// The layer is settled once per process, and each test runs in a process of its own.
TEST(CblasGemmRoad, RejectsAsTheFortranCheckerLp64) {
  blas_test::set_layer(blas_test::LP64);
  rejects_as_the_fortran_checker<int32_t, double>("dgemm");
  rejects_as_the_fortran_checker<int32_t, float>("sgemm");
}
TEST(CblasGemmRoad, RejectsAsTheFortranCheckerIlp64) {
  blas_test::set_layer(blas_test::ILP64);
  rejects_as_the_fortran_checker<int64_t, double>("dgemm");
  rejects_as_the_fortran_checker<int64_t, float>("sgemm");
}

}  // namespace
