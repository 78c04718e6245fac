// The selectors: the first CBLAS call of a process settles the interface layer from the
// environment and still hands every argument, in registers and on the stack, to the body.
#include <cstdlib>

#include "cblas_harness.h"

using namespace cblas_test;

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
