// The verbose frame, through a small family entry built the way computational
// entries are: mode read at the head, an optional rejection, binding, the call.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "probe_backend.h"
#include "qnl_service.h"
#include "verbose.h"

namespace {

qnl::Slot g_slot;
qnl::verbose::Site g_site;
bool g_reject = false;

// TESTCOUNT(n, p): n an integer by reference, p a pointer; forwards p to a
// probe symbol with a 64-bit integer result.
int64_t test_count(const void* n, void* p) {
  qnl::layer();
  int32_t m = g_site.mode();
  auto record = [&](char* buf) {
    qnl::verbose::format_record(buf, "TESTCOUNT(%d,%p)", qnl::verbose::rec_int(n), p);
  };
  if (g_reject) return qnl::verbose::rejected<int64_t>(g_site, m, record);
  auto* f = qnl::family<int64_t(void*)>(g_slot, "qnl_serv_mem_stat");
  return qnl::verbose::run(g_site, m, [&] { return f(p); }, record);
}

void* const kP = reinterpret_cast<void*>(0x1234);
const int32_t kFive = 5;

class Verbose : public testing::Test {
 protected:
  void SetUp() override { QNL_Set_Interface_Layer(0); }
  void mode(int32_t m) { *qnl_probe_verbose_mode() = m; }
  const qnl_probe::VerboseLine* last() { return qnl_probe_verbose_line(-1); }
};

TEST_F(Verbose, AQuietEntryAsksForTheModeOnceAndPrintsNothing) {
  mode(0);
  for (int i = 0; i < 3; ++i) test_count(&kFive, kP);
  EXPECT_EQ(qnl_probe_count_of("qnl_serv_verbose_mode"), 1);
  EXPECT_EQ(qnl_probe_count_of("qnl_serv_mem_stat"), 3);
  EXPECT_EQ(qnl_probe_verbose_count(), 0);
}

TEST_F(Verbose, ModeOneTimesAndPrintsTheRecord) {
  mode(1);
  test_count(&kFive, kP);
  ASSERT_EQ(qnl_probe_verbose_count(), 1);
  EXPECT_STREQ(last()->record, "TESTCOUNT(5,0x1234)");
  EXPECT_EQ(last()->width, 1);
  EXPECT_GE(last()->seconds, 0.0);
  EXPECT_EQ(qnl_probe_clock_readings(), 2);
}

TEST_F(Verbose, OtherModesPrintWithATimeOfZero) {
  mode(2);
  test_count(&kFive, kP);
  ASSERT_EQ(qnl_probe_verbose_count(), 1);
  EXPECT_EQ(last()->seconds, 0.0);
  EXPECT_EQ(qnl_probe_clock_readings(), 0);
}

TEST_F(Verbose, SwitchingOnMidRunReachesEntriesThatAlreadyAsked) {
  mode(0);
  test_count(&kFive, kP);
  test_count(&kFive, kP);
  EXPECT_EQ(qnl_probe_verbose_count(), 0);
  QNL_Verbose(1);  // through the service entry, as an application would
  test_count(&kFive, kP);
  EXPECT_EQ(qnl_probe_verbose_count(), 1);
  EXPECT_EQ(qnl_probe_count_of("qnl_serv_verbose_mode"), 1);
}

TEST_F(Verbose, ANullIntegerShowsAsZero) {
  mode(1);
  test_count(nullptr, kP);
  EXPECT_STREQ(last()->record, "TESTCOUNT(0,0x1234)");
}

TEST(VerboseIlp64, IntegersShowTheirLowHalfAndTheWidthIsTwo) {
  QNL_Set_Interface_Layer(1);
  *qnl_probe_verbose_mode() = 1;
  const int64_t big = (int64_t{1} << 32) + 5;
  test_count(&big, kP);
  EXPECT_STREQ(qnl_probe_verbose_line(-1)->record, "TESTCOUNT(5,0x1234)");
  EXPECT_EQ(qnl_probe_verbose_line(-1)->width, 2);
}

TEST_F(Verbose, ARejectedCallPrintsItsRecordButReachesNoBackEnd) {
  mode(1);
  g_reject = true;
  qnl_probe_fix_clock(1, 5.0);
  test_count(&kFive, kP);
  EXPECT_EQ(qnl_probe_count_of("qnl_serv_mem_stat"), 0);
  ASSERT_EQ(qnl_probe_verbose_count(), 1);
  EXPECT_STREQ(last()->record, "TESTCOUNT(5,0x1234)");
  EXPECT_EQ(last()->seconds, 0.0);
  EXPECT_EQ(qnl_probe_clock_readings(), 2);
  mode(0);
  test_count(&kFive, kP);
  EXPECT_EQ(qnl_probe_verbose_count(), 1);
}

TEST_F(Verbose, AStartReadingOfExactlyZeroTakesNoSecondReading) {
  mode(1);
  qnl_probe_fix_clock(1, 0.0);
  test_count(&kFive, kP);
  EXPECT_EQ(qnl_probe_clock_readings(), 1);
  EXPECT_EQ(last()->seconds, 0.0);
}

}  // namespace
