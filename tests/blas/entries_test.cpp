// Every BLAS entry of the routine table, on both integer interfaces: what reaches the
// back-end, what comes back, what the record says, and what a rejected call leaves.
#include "blas_harness.h"

using namespace blas_test;

namespace {

const uint64_t kIntResult = 0xffffffff00000007ull;

// What the probe answers for a result of each kind.
uint64_t result_bits(char code) {
  uint64_t b = 0;
  const float f = 2.5f;
  const double d = -3.25;
  if (code == 'f') std::memcpy(&b, &f, sizeof f);
  if (code == 'd' || code == 'c' || code == 'z') std::memcpy(&b, &d, sizeof d);
  return code == 'l' ? kIntResult : code == 'p' ? 0x1234500 : b;
}

// Calls the entry and checks the value that came back against what the probe answered.
// `traced`: an integer result then crosses as its low 32 bits.
void call_and_check_result(const BlasCase& bc, const Call& call, void* fn, bool traced) {
  const std::string sym = std::string("qnl_blas_") + bc.name;
  const uint64_t bits = result_bits(bc.result);
  qnl_probe_set_result(sym.c_str(), bits);
  switch (bc.result) {
    case 'v':
      call.invoke<void>(fn);
      break;
    case 'f': {
      float r = call.invoke<float>(fn);
      EXPECT_EQ(r, 2.5f) << bc.name;
      break;
    }
    case 'd':
      EXPECT_EQ(call.invoke<double>(fn), -3.25) << bc.name;
      break;
    case 'l':
      EXPECT_EQ(static_cast<uint64_t>(call.invoke<int64_t>(fn)), traced ? 7u : kIntResult) << bc.name;
      break;
    case 'p':
      EXPECT_EQ(reinterpret_cast<uintptr_t>(call.invoke<void*>(fn)), 0x1234500u) << bc.name;
      break;
    case 'c': {
      // the probe writes the 8 bits-words into the result: two floats
      cfloat r = call.invoke<cfloat>(fn);
      uint64_t got;
      std::memcpy(&got, &r, 8);
      EXPECT_EQ(got, bits) << bc.name;
      break;
    }
    case 'z': {
      cdouble r = call.invoke<cdouble>(fn);
      uint64_t got[2];
      std::memcpy(got, &r, 16);
      EXPECT_EQ(got[0], bits) << bc.name;
      EXPECT_EQ(got[1], ~bits) << bc.name;
      break;
    }
  }
}

bool complex_result(const BlasCase& bc) { return bc.result == 'c' || bc.result == 'z'; }
bool checked(const BlasCase& bc) { return std::strcmp(bc.shape, "-") != 0; }

class EveryEntry : public ::testing::TestWithParam<Layer> {};

TEST(Entries, ExportThreeSpellingsOfOneBody) {
  for (const BlasCase& bc : kBlasCases) qnl_test::expect_fortran_spellings(bc.name);
  for (const DirectCase& dc : kDirectCases) qnl_test::expect_fortran_spellings(dc.name);
  EXPECT_EQ(std::size(kBlasCases), 212u);
  EXPECT_EQ(std::size(kDirectCases), 20u);
}

// Quiet calls: argument words, hidden lengths, integer values and results at the back-end.
TEST_P(EveryEntry, QuietCallReachesItsSymbolWithTheRightWords) {
  set_layer(GetParam());
  set_verbose(0);
  int covered = 0;
  for (const BlasCase& bc : kBlasCases) {
    SCOPED_TRACE(bc.name);
    Call call(bc.roles, bc.args, GetParam(), checked(bc));
    const std::string sym = std::string("qnl_blas_") + bc.name;
    const int before = qnl_probe_count_of(sym.c_str());
    // twice: the first call binds, the second takes the bound road
    for (int pass = 0; pass < 2; ++pass) {
      call_and_check_result(bc, call, entry_point(bc.name), false);
      ASSERT_EQ(qnl_probe_count_of(sym.c_str()), before + pass + 1);
      call.expect_words(*last_call_of(sym.c_str()), complex_result(bc), bc.batch);
    }
    ++covered;
  }
  EXPECT_TRUE(reports().empty()) << "no valid call is reported";
  EXPECT_EQ(qnl_probe_live_allocations(), 0) << "index copies are released";
  std::printf("entries covered on %s: %d\n", GetParam() == LP64 ? "LP64" : "ILP64", covered);
}

// Traced calls: the record's exact text and width code; the back-end is still called once.
TEST_P(EveryEntry, TracedCallPrintsItsRecord) {
  set_layer(GetParam());
  set_verbose(1);
  for (const BlasCase& bc : kBlasCases) {
    SCOPED_TRACE(bc.name);
    Call call(bc.roles, bc.args, GetParam(), checked(bc));
    const std::string sym = std::string("qnl_blas_") + bc.name;
    const int lines = qnl_probe_verbose_count();
    call_and_check_result(bc, call, entry_point(bc.name), true);
    ASSERT_EQ(qnl_probe_verbose_count(), lines + 1);
    const qnl_probe::VerboseLine* line = qnl_probe_verbose_line(-1);
    EXPECT_EQ(line->width, GetParam() == LP64 ? 1 : 2);
    const qnl_probe::Call* c = last_call_of(sym.c_str());
    ASSERT_NE(c, nullptr);
    call.expect_words(*c, complex_result(bc), bc.batch);
    // a complex result's pointer is the frame's own: it is the one the back-end got
    const void* result = complex_result(bc) ? reinterpret_cast<const void*>(c->word[0]) : nullptr;
    EXPECT_EQ(std::string(line->record), call.record(bc.name, result));
  }
}

// A rejected call: the report (number 1, exact name field and length), the record, and no
// back-end call. The first argument of every checked routine is tested first.
TEST_P(EveryEntry, RejectedCallReportsPrintsAndStops) {
  set_layer(GetParam());
  set_verbose(1);
  int rejected = 0;
  for (const BlasCase& bc : kBlasCases) {
    if (!checked(bc)) continue;
    SCOPED_TRACE(bc.name);
    Call call(bc.roles, bc.args, GetParam(), true);
    Argument& first = call[0];
    if (first.role == 'c') {
      first.text = "X";
      first.pointer = first.text.data();
    } else {
      first.cell[0] = -1;
      first.low = -1;
    }
    const int blas_before = blas_calls();
    const size_t reports_before = reports().size();
    const int lines = qnl_probe_verbose_count();
    qnl_probe_set_result((std::string("qnl_blas_") + bc.name).c_str(), result_bits(bc.result));
    if (bc.result == 'p')
      EXPECT_EQ(call.invoke<void*>(entry_point(bc.name)), nullptr) << "a rejected call returns null";
    else
      call.invoke<void>(entry_point(bc.name));
    EXPECT_EQ(blas_calls(), blas_before) << "no back-end call";
    auto r = reports();
    ASSERT_EQ(r.size(), reports_before + 1);
    EXPECT_EQ(r.back().number, 1);
    EXPECT_EQ(r.back().name, bc.field);
    EXPECT_EQ(r.back().length, bc.field_len);
    ASSERT_EQ(qnl_probe_verbose_count(), lines + 1);
    EXPECT_EQ(std::string(qnl_probe_verbose_line(-1)->record), call.record(bc.name, nullptr));
    ++rejected;
  }
  EXPECT_GT(rejected, 100);
}

INSTANTIATE_TEST_SUITE_P(Layers, EveryEntry, ::testing::Values(LP64, ILP64),
                         [](const auto& info) { return info.param == LP64 ? "LP64" : "ILP64"; });

}  // namespace
