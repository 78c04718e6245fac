// The reference back-end's forwarding stubs reach the ILP64 OpenBLAS in every
// threading-layer build, its own wrappers hand back complex values and argument
// errors, and the symbols of the back-end's own code are all there.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <complex>
#include <cstdint>
#include <fstream>
#include <string>

namespace {

using Dgesv = void (*)(const int64_t*, const int64_t*, double*, const int64_t*, int64_t*, double*, const int64_t*,
                       int64_t*);

// The threading-layer library of the parameter, opened in a scope of its own.
class Backend : public testing::TestWithParam<const char*> {
 protected:
  void* h = nullptr;
  void SetUp() override {
    h = dlopen((std::string(QNL_TEST_LIB_DIR "/libqnl_") + GetParam() + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(h, nullptr) << dlerror();
  }
};

TEST_P(Backend, OpenBlasArgumentErrorsReachTheBackEndsHook) {
  auto dgesv = reinterpret_cast<Dgesv>(dlsym(h, "qnl_lapack_dgesv"));
  int64_t n = -1, nrhs = 1, lda = 1, info = 0;
  testing::internal::CaptureStdout();
  dgesv(&n, &nrhs, nullptr, &lda, nullptr, nullptr, &lda, &info);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Velor QNL ERROR: Parameter 1 was incorrect on entry to DGESV.\n");
  EXPECT_EQ(info, -1);
}

// Complex-valued functions: the back-end stores the value at the address it is
// handed first, while OpenBLAS returns it in registers.
TEST_P(Backend, ComplexResultsAreStoredThroughTheLeadingAddress) {
  using Zdot =
      void (*)(std::complex<double>*, const int64_t*, const void*, const int64_t*, const void*, const int64_t*);
  using Cdot = void (*)(std::complex<float>*, const int64_t*, const void*, const int64_t*, const void*, const int64_t*);
  const std::complex<double> zx[2] = {{1, 2}, {3, -1}}, zy[2] = {{2, 0}, {1, 1}};
  const std::complex<float> cx[2] = {{1, 2}, {3, -1}}, cy[2] = {{2, 0}, {1, 1}};
  // x.y = (2+4i) + (4+2i); conj(x).y = (2-4i) + (2+4i)
  const struct {
    const char* symbol;
    std::complex<double> expected;
  } kDots[] = {
      {"qnl_blas_zdotu", {6, 6}}, {"qnl_blas_zdotc", {4, 0}}, {"qnl_blas_cdotu", {6, 6}}, {"qnl_blas_cdotc", {4, 0}}};
  int64_t n = 2, one = 1;
  for (const auto& d : kDots) {
    void* f = dlsym(h, d.symbol);
    ASSERT_NE(f, nullptr) << d.symbol;
    if (d.symbol[9] == 'z') {
      std::complex<double> r{-99, -99};
      reinterpret_cast<Zdot>(f)(&r, &n, zx, &one, zy, &one);
      EXPECT_EQ(r, d.expected) << d.symbol;
    } else {
      std::complex<float> r{-99, -99};
      reinterpret_cast<Cdot>(f)(&r, &n, cx, &one, cy, &one);
      EXPECT_EQ(std::complex<double>(r), d.expected) << d.symbol;
    }
  }
  using Zladiv = void (*)(std::complex<double>*, const std::complex<double>*, const std::complex<double>*);
  auto zladiv = reinterpret_cast<Zladiv>(dlsym(h, "qnl_lapack_zladiv"));
  ASSERT_NE(zladiv, nullptr);
  std::complex<double> q, num{6, 6}, den{0, 3};
  zladiv(&q, &num, &den);
  EXPECT_EQ(q, std::complex<double>(2, -2));
}

// A forwarded symbol, the _direct and offload twins too, resolves to the ILP64 OpenBLAS's
// own routine: a slot bound to it calls OpenBLAS with no step in between, so it computes
// and returns its value as OpenBLAS does.
TEST_P(Backend, ForwardedSymbolsAreTheLibraryRoutinesThemselves) {
  for (const char* sym : {"qnl_blas_ddot", "qnl_blas_dgemm", "qnl_blas_dgemm_direct", "qnl_lapack_dgesv",
                          "qnl_lapack_dgetrf", "qnl_lapack_ao_dgetrf", "qnl_lapack_dlange"}) {
    void* f = dlsym(h, sym);
    ASSERT_NE(f, nullptr) << sym;
    Dl_info where;
    ASSERT_NE(dladdr(f, &where), 0) << sym;
    EXPECT_NE(std::string(where.dli_fname).find("libopenblas64"), std::string::npos)
        << sym << " in " << where.dli_fname;
    ASSERT_NE(where.dli_sname, nullptr) << sym;
    std::string routine = std::string(sym).substr(std::string(sym).find('_', 4) + 1);
    if (routine.size() > 7 && routine.compare(routine.size() - 7, 7, "_direct") == 0)
      routine.resize(routine.size() - 7);
    if (routine.rfind("ao_", 0) == 0) routine.erase(0, 3);
    EXPECT_EQ(std::string(where.dli_sname), routine + "_") << sym;
  }
}

// The back-end's letter compare against the C library's in the C locale, for every
// pair of bytes; lengths do not count.
TEST_P(Backend, LsameAgreesWithTheCLocaleForEveryPairOfBytes) {
  auto lsame = reinterpret_cast<int32_t (*)(const char*, const char*, int32_t, int32_t)>(dlsym(h, "qnl_serv_lsame"));
  ASSERT_NE(lsame, nullptr);
  int wrong = 0;
  for (int a = 0; a < 256; ++a)
    for (int b = 0; b < 256; ++b) {
      const char x = static_cast<char>(a), y = static_cast<char>(b);
      const int expected = std::toupper(a) == std::toupper(b);
      if (lsame(&x, &y, 7, 0) != expected && ++wrong < 5) ADD_FAILURE() << a << " " << b;
    }
  EXPECT_EQ(wrong, 0);
}

// Every symbol that handwritten.txt claims for the back-end's own code is defined by every
// threading-layer build, so the forwarding stubs may leave it out.
TEST_P(Backend, EveryHandwrittenSymbolIsDefinedHere) {
  std::ifstream in(QNL_TEST_HANDWRITTEN);
  int names = 0;
  for (std::string n; std::getline(in, n);) {
    if (n.empty() || n[0] == '#') continue;
    ++names;
    void* p = dlsym(h, n.c_str());
    Dl_info info;
    ASSERT_TRUE(p && dladdr(p, &info)) << n;
    EXPECT_NE(std::string(info.dli_fname).find(std::string("libqnl_") + GetParam() + ".so"), std::string::npos)
        << n << " comes from " << info.dli_fname;
  }
  EXPECT_GT(names, 0);
}

INSTANTIATE_TEST_SUITE_P(Layers, Backend, testing::Values("sequential", "velor_thread", "tbb_thread", "pgi_thread"));

}  // namespace
