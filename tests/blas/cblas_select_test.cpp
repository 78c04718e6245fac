// The selectors: the first CBLAS call of a process settles the interface layer from the
// environment and still hands every argument, in registers and on the stack, to the body.
#include <cstdlib>

#include "cblas_harness.h"

using namespace cblas_test;
using blas_test::set_verbose;

namespace {

template <class I>
void first_call_settles(const char* variable) {
  if (variable)
    setenv("QNL_INTERFACE_LAYER", variable, 1);
  else
    unsetenv("QNL_INTERFACE_LAYER");
  watch();
  // 14 arguments: the last ones and beta travel on the stack, alpha and beta in xmm registers
  Args<I> args(cblas_case("cblas_dgemm"), {{"layout", 101},
                                           {"m", 3},
                                           {"n", 5},
                                           {"k", 4},
                                           {"lda", 4},
                                           {"ldb", 5},
                                           {"ldc", 6},
                                           {"alpha", -2.5},
                                           {"beta", 0.75}});
  args.run();
  EXPECT_TRUE(reports().empty());
  const Seen* s = seen("dgemm");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->ints, (std::vector<int64_t>{5, 3, 4, 5, 4, 6}));
  EXPECT_EQ(join(pointer_names(args, *s)), "alpha,b,a,beta,c");
}

TEST(CblasSelector, FirstCallSettlesIlp64FromTheEnvironment) { first_call_settles<int64_t>("ILP64"); }
TEST(CblasSelector, FirstCallSettlesLp64ByDefault) { first_call_settles<int32_t>(nullptr); }

// A routine without integers has one body that serves both layers.
TEST(CblasSelector, WidthFreeRoutineSettlesToo) {
  setenv("QNL_INTERFACE_LAYER", "ilp64", 1);
  watch();
  Args<int64_t> args(cblas_case("cblas_drotmg"));
  args.run();
  const Seen* s = seen("drotmg");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(join(pointer_names(args, *s)), "d1,d2,b1,b2,p");
  // the layer is now settled for the next width-dependent call
  Args<int64_t> dot(cblas_case("cblas_ddot"), {{"n", 0x100000003ll}});
  dot.run();
  ASSERT_NE(seen("ddot"), nullptr);
  EXPECT_EQ(seen("ddot")->ints[0], 0x100000003ll);
}

extern "C" void dgemm_(const char*, const char*, const void*, const void*, const void*, const double*, const double*,
                       const void*, const double*, const void*, const double*, double*, const void*, size_t, size_t);
extern "C" double ddot_(const void*, const double*, const void*, const double*, const void*);

// A traced C-layer call prints the record of the Fortran entry it ends in, at the layer's
// width, as that entry called directly prints it (but for the addresses of alpha and beta:
// the C layer passes copies).
template <class I>
void traced_like_fortran(Layer layer) {
  set_layer(layer);
  set_verbose(1);
  static double a[64], b[64], c[64];
  const I m = 3, n = 2, k = 4, lda = 5, ldb = 6, ldc = 7, inc = 2;
  const double alpha = 2, beta = 0.5;
  using CGemm = void (*)(int, int, int, I, I, I, double, const double*, I, const double*, I, double, double*, I);
  using CDot = double (*)(I, const double*, I, const double*, I);
  reinterpret_cast<CGemm>(reinterpret_cast<void*>(&cblas_dgemm))(101, 111, 112, m, n, k, alpha, a, lda, b, ldb, beta, c,
                                                                 ldc);
  reinterpret_cast<CDot>(reinterpret_cast<void*>(&cblas_ddot))(n, a, inc, b, ldb);
  dgemm_("T", "N", &n, &m, &k, &alpha, b, &ldb, a, &lda, &beta, c, &ldc, 1, 1);  // the row-major exchange
  ddot_(&n, a, &inc, b, &ldb);
  ASSERT_EQ(qnl_probe_verbose_count(), 4);
  std::vector<std::string> gemm[2];
  for (int i : {0, 2}) {
    const qnl_probe::VerboseLine* line = qnl_probe_verbose_line(i);
    EXPECT_EQ(line->width, layer == LP64 ? 1 : 2);
    gemm[i / 2] = split(line->record);
    gemm[i / 2].erase(gemm[i / 2].begin() + 10);  // beta
    gemm[i / 2].erase(gemm[i / 2].begin() + 5);   // alpha
  }
  EXPECT_EQ(gemm[0], gemm[1]);
  EXPECT_STREQ(qnl_probe_verbose_line(1)->record, qnl_probe_verbose_line(3)->record);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm"), 2);
  EXPECT_TRUE(reports().empty());
}

TEST(CblasTrace, Lp64RecordsAreTheFortranEntrys) { traced_like_fortran<int32_t>(LP64); }
TEST(CblasTrace, Ilp64RecordsAreTheFortranEntrys) { traced_like_fortran<int64_t>(ILP64); }

// A C program written for the standard interface compiles against the header unchanged
// and its calls reach the Fortran entries.
extern "C" int cblas_c_program(void);

TEST(CblasHeader, StandardCProgramCompilesAndRuns) {
  set_layer(LP64);
  qnl_probe_set_result("qnl_blas_idamax", 5);
  EXPECT_EQ(cblas_c_program(), 4);
  for (const char* s : {"qnl_blas_dgemm", "qnl_blas_zdotc", "qnl_blas_dscal", "qnl_blas_dtrsv", "qnl_blas_idamax"})
    EXPECT_EQ(qnl_probe_count_of(s), 1) << s;
  EXPECT_TRUE(reports().empty());
}

}  // namespace
