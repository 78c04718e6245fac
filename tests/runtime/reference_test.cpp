// The service entries on the reference back-end: real memory, clocks, version,
// verbose printing and the error hooks.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "qnl_service.h"

extern "C" {
void XERBLA(const char*, const int*, int);
void cdecl_xerbla(const char*, const int*, int);
double DSECND(void);
}

namespace {

TEST(ReferenceServices, MemoryIsAlignedAndCounted) {
  int32_t buffers = -1;
  int64_t before = QNL_Mem_Stat(&buffers);
  void* p = QNL_malloc(1000, 128);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 128, 0u);
  EXPECT_EQ(QNL_Mem_Stat(&buffers), before + 1000);
  p = QNL_realloc(p, 2000);
  std::memset(p, 1, 2000);
  QNL_free(p);
  EXPECT_EQ(QNL_Mem_Stat(&buffers), before);
}

TEST(ReferenceServices, ClockIsMonotonicAndVersionNamesTheLayer) {
  double a = dsecnd(), b = DSECND();
  EXPECT_GE(b, a);
  QNLVersion v;
  QNL_Get_Version(&v);
  EXPECT_STREQ(v.Platform, "velor_thread");
  char buf[80];
  QNL_Get_Version_String(buf, sizeof buf);
  EXPECT_NE(std::string(buf).find("qnl_rt"), std::string::npos);
}

TEST(ReferenceServices, XerblaPrintsTheTrimmedNameAndAHandlerCatchesChecks) {
  int info = 3;
  testing::internal::CaptureStdout();
  XERBLA("DGEMM ", &info, 6);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Velor QNL ERROR: Parameter 3 was incorrect on entry to DGEMM.\n");
  static std::string seen;
  QNL_SET_XERBLA([](const char* name, const int32_t* i, int32_t len) { seen = std::string(name, len) + std::to_string(*i); });
  cdecl_xerbla("DTRSM ", &info, 6);
  EXPECT_EQ(seen, "DTRSM 3");
  seen.clear();
  testing::internal::CaptureStdout();
  XERBLA("DTRSM", &info, 5);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Velor QNL ERROR: Parameter 3 was incorrect on entry to DTRSM.\n");
  EXPECT_TRUE(seen.empty());
}

TEST(ReferenceServices, SequentialLayerStartsAtOneThreadAndReportsASetCount) {
  QNL_Set_Threading_Layer(QNL_THREADING_SEQUENTIAL);
  EXPECT_EQ(QNL_Get_Max_Threads(), 1);
  QNL_Set_Num_Threads(3);
  EXPECT_EQ(QNL_Get_Max_Threads(), 3);
}

}  // namespace
