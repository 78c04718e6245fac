// The two layer setters: what they accept, what they refuse, and how they meet
// the environment and the first binding.
#include <gtest/gtest.h>

#include <cstdlib>

#include "probe_backend.h"
#include "qnl_service.h"
#include "test_util.h"

namespace {

int get_max_threads() { return QNL_Get_Max_Threads(); }

TEST(ThreadingSetter, RefusesTwoAndThreeAndLeavesTheChoiceOpen) {
  EXPECT_EQ(QNL_Set_Threading_Layer(2), -1);
  EXPECT_EQ(QNL_Set_Threading_Layer(3), -1);
  const int seq = 1;
  EXPECT_EQ(qnl_test::exported_as<int(const int*)>("qnl_set_threading_layer")(&seq), 1);
  EXPECT_EQ(QNL_Set_Threading_Layer(4), 1);
  get_max_threads();
  EXPECT_STREQ(qnl_probe_call(-1)->library, "sequential");
}

TEST(ThreadingSetter, RefusedPgiCanStillComeFromTheEnvironment) {
  EXPECT_EXIT(
      {
        qnl_test::stdout_to_stderr();
        if (QNL_Set_Threading_Layer(2) != -1) _exit(9);
        setenv("QNL_THREADING_LAYER", "PGI", 1);
        get_max_threads();
      },
      testing::ExitedWithCode(2), "^Velor QNL FATAL ERROR: Cannot load libqnl_pgi_thread.so.\n$");
}

TEST(ThreadingSetter, AValueWithoutALibraryIsStoredThenCorrectedAtLoad) {
  setenv("QNL_THREADING_LAYER", "SEQ", 1);  // a setter comes before the environment
  EXPECT_EQ(QNL_Set_Threading_Layer(7), 7);
  EXPECT_EQ(QNL_Set_Threading_Layer(1), 7);
  get_max_threads();
  EXPECT_STREQ(qnl_probe_call(-1)->library, "velor_thread");
  EXPECT_EQ(QNL_Set_Threading_Layer(4), 0);
}

TEST(ThreadingSetter, ANegativeValueIsAcceptedToo) {
  EXPECT_EQ(QNL_Set_Threading_Layer(-5), -5);
  get_max_threads();
  EXPECT_EQ(QNL_Set_Threading_Layer(1), 0);
}

TEST(InterfaceSetter, AcceptsZeroOrOneOnceAndOnlyBeforeTheChoice) {
  EXPECT_EQ(QNL_Set_Interface_Layer(5), -1);
  EXPECT_EQ(QNL_Set_Interface_Layer(-1), -1);
  const int ilp64 = 1, lp64 = 0;
  auto by_reference = qnl_test::exported_as<int(const int*)>("qnl_set_interface_layer");
  EXPECT_EQ(by_reference(&ilp64), 1);
  EXPECT_EQ(by_reference(&lp64), 1);
  EXPECT_EQ(QNL_Set_Interface_Layer(0), 1);
}

TEST(InterfaceSetter, ServiceCallsDoNotFixTheInterfaceLayer) {
  setenv("QNL_INTERFACE_LAYER", "ILP64", 1);
  get_max_threads();
  EXPECT_EQ(QNL_Set_Interface_Layer(0), 0);
}

}  // namespace
