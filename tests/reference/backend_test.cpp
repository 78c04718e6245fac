// The reference back-end's forwarding stubs reach the ILP64 OpenBLAS in every
// threading-layer build: solve a small system and check the answer.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>

namespace {

using Dgesv = void (*)(const int64_t*, const int64_t*, double*, const int64_t*, int64_t*, double*, const int64_t*,
                       int64_t*);
using Dlange = double (*)(const char*, const int64_t*, const int64_t*, const double*, const int64_t*, double*, size_t);

class Backend : public testing::TestWithParam<const char*> {
 protected:
  void* lib() {
    std::string path = std::string(QNL_TEST_LIB_DIR "/libqnl_") + GetParam() + ".so";
    void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(h, nullptr) << dlerror();
    return h;
  }
};

TEST_P(Backend, SolvesThroughOpenBlasWithSixtyFourBitIntegers) {
  void* h = lib();
  ASSERT_NE(h, nullptr);
  auto dgesv = reinterpret_cast<Dgesv>(dlsym(h, "qnl_lapack_dgesv"));
  ASSERT_NE(dgesv, nullptr);
  // Column-major A with a known solution x = (1, 2, 3).
  double a[9] = {4, 2, 1, -1, 5, 2, 2, 1, 6};
  double b[3];
  for (int i = 0; i < 3; ++i) b[i] = a[i] * 1 + a[3 + i] * 2 + a[6 + i] * 3;
  int64_t n = 3, nrhs = 1, info = -99;
  int64_t ipiv[3] = {0, 0, 0};
  dgesv(&n, &nrhs, a, &n, ipiv, b, &n, &info);
  EXPECT_EQ(info, 0);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(b[i], i + 1.0, 1e-12);
  for (int64_t p : ipiv) EXPECT_TRUE(p >= 1 && p <= 3);
}

TEST_P(Backend, FunctionResultsComeBackInTheirRegister) {
  void* h = lib();
  ASSERT_NE(h, nullptr);
  auto dlange = reinterpret_cast<Dlange>(dlsym(h, "qnl_lapack_dlange"));
  ASSERT_NE(dlange, nullptr);
  const double a[4] = {1, -7, 3, 2};
  int64_t two = 2;
  EXPECT_EQ(dlange("M", &two, &two, a, &two, nullptr, 1), 7.0);
  EXPECT_EQ(dlange("F", &two, &two, a, &two, nullptr, 1), std::sqrt(63.0));
}

TEST_P(Backend, OpenBlasArgumentErrorsReachTheBackEndsHook) {
  void* h = lib();
  ASSERT_NE(h, nullptr);
  auto dgesv = reinterpret_cast<Dgesv>(dlsym(h, "qnl_lapack_dgesv"));
  int64_t n = -1, nrhs = 1, lda = 1, info = 0;
  testing::internal::CaptureStdout();
  dgesv(&n, &nrhs, nullptr, &lda, nullptr, nullptr, &lda, &info);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Velor QNL ERROR: Parameter 1 was incorrect on entry to DGESV.\n");
  EXPECT_EQ(info, -1);
}

INSTANTIATE_TEST_SUITE_P(Layers, Backend, testing::Values("sequential", "velor_thread", "tbb_thread", "pgi_thread"));

}  // namespace
