// The test-matrix generators through the facade on every threading layer,
// against Debian's LP64 test-matrix library on the same seeds in the same run:
// the same matrices and seeds back, and not a word from the back-end.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <complex>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int QNL_Set_Interface_Layer(int);

namespace {

using Latmr = void(const int*, const int*, const char*, int*, const char*, double*, const int*, const double*,
                   const double*, const char*, const char*, double*, const int*, const double*, double*, const int*,
                   const double*, const char*, const int*, const int*, const int*, const double*, const double*,
                   const char*, double*, const int*, int*, int*, size_t, size_t, size_t, size_t, size_t, size_t);
using Latm2 = double(const int*, const int*, const int*, const int*, const int*, const int*, const int*, int*, double*,
                     const int*, double*, double*, const int*, const int*, const double*);
using Latm3 = double(const int*, const int*, const int*, const int*, int*, int*, const int*, const int*, const int*,
                     int*, double*, const int*, double*, double*, const int*, const int*, const double*);

// The oracle, in a scope of its own so that its BLAS never meets the facade's.
void* oracle() {
  static void* lib = dlopen("libtmglib.so.3", RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  return lib;
}

template <class F>
F* from(void* lib, const char* name) {
  void* p = lib ? dlsym(lib, name) : dlsym(RTLD_DEFAULT, name);
  EXPECT_NE(p, nullptr) << name;
  return reinterpret_cast<F*>(p);
}

struct Generated {
  std::vector<double> a;
  std::vector<int> seed;
  std::vector<double> values;  // ?latm2 / ?latm3 results
  std::vector<int> subs;       // ?latm3's isub, jsub
  int info = -99;
};

// A graded, pivoted, banded random matrix and single entries of one, by the
// three generators of `lib` (null: the facade's exports).
Generated generate(void* lib) {
  Generated g;
  const int m = 7, n = 6, mode = 3, kl = 2, ku = 3, lda = 8, igrade = 5, ipvtng = 3, idist = 2;
  const double cond = 10, dmax = 2, condl = 4, condr = 3, sparse = 0.2, anorm = -1;
  int seed[4] = {11, 23, 37, 41};
  std::vector<double> d(7), dl(7), dr(6);
  std::vector<int> ipivot = {3, 1, 2, 6, 5, 4, 7}, iwork(7);
  g.a.assign(lda * n, -7);
  const int model = 3, moder = 3;
  from<Latmr>(lib, "dlatmr_")(&m, &n, "U", seed, "N", d.data(), &mode, &cond, &dmax, "T", "B", dl.data(), &model,
                              &condl, dr.data(), &moder, &condr, "L", ipivot.data(), &kl, &ku, &sparse, &anorm, "N",
                              g.a.data(), &lda, iwork.data(), &g.info, 1, 1, 1, 1, 1, 1);
  for (int i = 1; i <= m; ++i)
    for (int j = 1; j <= n; ++j) {
      int isub = 0, jsub = 0;
      g.values.push_back(from<Latm2>(lib, "dlatm2_")(&m, &n, &i, &j, &kl, &ku, &idist, seed, d.data(), &igrade,
                                                     dl.data(), dr.data(), &ipvtng, ipivot.data(), &sparse));
      g.values.push_back(from<Latm3>(lib, "dlatm3_")(&m, &n, &i, &j, &isub, &jsub, &kl, &ku, &idist, seed, d.data(),
                                                     &igrade, dl.data(), dr.data(), &ipvtng, ipivot.data(), &sparse));
      g.subs.push_back(isub);
      g.subs.push_back(jsub);
    }
  g.seed.assign(seed, seed + 4);
  return g;
}

class BackendTestMatrix : public ::testing::TestWithParam<const char*> {};

TEST_P(BackendTestMatrix, GeneratesWhatTheStockLibraryDoesAndPrintsNothing) {
  setenv("QNL_THREADING_LAYER", GetParam(), 1);
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  ASSERT_NE(oracle(), nullptr) << dlerror();
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  Generated got = generate(nullptr);
  std::string err = testing::internal::GetCapturedStderr(), out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(err + out, "") << "the back-end spoke on a good run";
  Generated want = generate(oracle());
  EXPECT_EQ(got.info, 0);
  EXPECT_EQ(got.info, want.info);
  EXPECT_EQ(got.a, want.a);
  EXPECT_EQ(got.values, want.values);
  EXPECT_EQ(got.subs, want.subs);
  EXPECT_EQ(got.seed, want.seed);
}

INSTANTIATE_TEST_SUITE_P(Layers, BackendTestMatrix, ::testing::Values("", "sequential", "tbb", "pgi"),
                         [](const ::testing::TestParamInfo<const char*>& p) {
                           return std::string(*p.param ? p.param : "default");
                         });

// The default layer's OpenMP workers sleep between parallel regions unless the
// user chose otherwise through any OpenMP variable.
struct Policy {
  const char* variable;  // set by the user before the first call, or null
  const char* want;      // OMP_WAIT_POLICY after it, or null for unset
};
void PrintTo(const Policy& p, std::ostream* os) { *os << (p.variable ? p.variable : "nothing set"); }
class BackendOpenMp : public ::testing::TestWithParam<Policy> {};

TEST_P(BackendOpenMp, WorkersWaitPassivelyUnlessTheUserChose) {
  for (const char* v : {"OMP_WAIT_POLICY", "OMP_NUM_THREADS", "GOMP_SPINCOUNT", "QNL_THREADING_LAYER"}) unsetenv(v);
  if (GetParam().variable) putenv(const_cast<char*>(GetParam().variable));
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  generate(nullptr);
  const char* policy = std::getenv("OMP_WAIT_POLICY");
  if (GetParam().want)
    EXPECT_STREQ(policy, GetParam().want);
  else
    EXPECT_EQ(policy, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Layers, BackendOpenMp,
                         ::testing::Values(Policy{nullptr, "passive"}, Policy{"OMP_NUM_THREADS=2", nullptr},
                                           Policy{"OMP_WAIT_POLICY=active", "active"},
                                           Policy{"GOMP_SPINCOUNT=1000", nullptr}));

}  // namespace
