// The _direct entries: what reaches which symbol, the thresholds at their boundaries, the
// flag byte and the plain slot that stays direct once a call went there.
#include "blas_harness.h"

using namespace blas_test;

namespace {

// Calls a _direct entry with the harness's arguments, sizes overridden, and says which of
// the two back-end symbols took the call.
struct Outcome {
  bool direct;
  bool plain;
};

const DirectCase& find(const std::string& name) {
  for (const DirectCase& dc : kDirectCases)
    if (name == dc.name) return dc;
  ADD_FAILURE() << name;
  return kDirectCases[0];
}

Outcome call_direct(Layer layer, const std::string& name, std::vector<std::pair<std::string, int64_t>> sizes,
                    unsigned char flag = 0) {
  const DirectCase& dc = find(name);
  Call call(dc.roles, dc.args, layer, false);
  for (auto& [arg, v] : sizes) {
    Argument& a = call.named(arg);
    if (layer == LP64) {
      a.cell[0] = static_cast<int64_t>(0xffffffff00000000ull | static_cast<uint32_t>(v));
    } else {
      a.cell[0] = v;
    }
  }
  const std::string plain = std::string("qnl_blas_") + dc.base, direct = plain + "_direct";
  const int p0 = qnl_probe_count_of(plain.c_str()), d0 = qnl_probe_count_of(direct.c_str());
  if (dc.result == 'f')
    call.invoke<float>(entry_point(name), dc.flag ? &flag : nullptr);
  else if (dc.result == 'd')
    call.invoke<double>(entry_point(name), dc.flag ? &flag : nullptr);
  else
    call.invoke<void>(entry_point(name), dc.flag ? &flag : nullptr);
  return {qnl_probe_count_of(direct.c_str()) == d0 + 1, qnl_probe_count_of(plain.c_str()) == p0 + 1};
}

struct Threshold {
  const char* entry;
  std::vector<std::pair<std::string, int64_t>> sizes;
  bool direct;
};

std::vector<std::pair<std::string, int64_t>> mnk(int64_t m, int64_t n, int64_t k) {
  return {{"m", m}, {"n", n}, {"k", k}};
}

// clang-format off
const Threshold kThresholds[] = {
    {"saxpy_direct", {{"n", 1500}}, true},   {"daxpy_direct", {{"n", 1501}}, false},
    {"caxpy_direct", {{"n", -7}}, true},     {"zaxpy_direct", {{"n", 1501}}, false},
    {"sdot_direct", {{"n", 1500}}, true},    {"ddot_direct", {{"n", 1500}}, true},
    {"ddot_direct", {{"n", 1501}}, false},   {"sdot_direct", {{"n", 1501}}, false},
    {"dgemm_direct", mnk(34, 34, 34), true}, {"dgemm_direct", mnk(35, 34, 34), false},
    {"dgemm_direct", mnk(60, 10, 10), true}, {"dgemm_direct", mnk(61, 10, 10), false},
    {"dgemm_direct", mnk(60, 10, 11), false}, {"dgemm_direct", mnk(1, 40, 40), false},
    {"dgemm_direct", mnk(2, 2, 0), true},    {"dgemm_direct", mnk(60, 1, 35), false},
    {"dgemm_direct", mnk(-1, 1000, 1000), false}, {"dgemm_direct", mnk(-1, -1, -1), true},
    {"sgemm_direct", mnk(34, 34, 34), true}, {"sgemm_direct", mnk(60, 10, 10), false},
    {"cgemm_direct", mnk(34, 1, 34), true},  {"cgemm_direct", mnk(34, 35, 1), false},
    {"zgemm_direct", mnk(1, 1, 34), true},   {"zgemm_direct", mnk(1, 1, 35), false},
    {"cgemm3m_direct", mnk(8, 8, 1000), true}, {"cgemm3m_direct", mnk(34, 34, 8), true},
    {"cgemm3m_direct", mnk(34, 34, 9), false}, {"zgemm3m_direct", mnk(9, 8, 1000), false},
    {"zgemm3m_direct", mnk(8, 34, 8), true}, {"zgemm3m_direct", mnk(35, 8, 8), false},
    {"ssyrk_direct", {{"n", 22}, {"k", 39}}, true}, {"ssyrk_direct", {{"n", 22}, {"k", 40}}, false},
    {"dsyrk_direct", {{"n", 22}, {"k", 44}}, true}, {"dsyrk_direct", {{"n", 23}, {"k", 1}}, false},
    {"dsyrk_direct", {{"n", 1}, {"k", 45}}, false}, {"csyrk_direct", {{"n", 14}, {"k", 69}}, true},
    {"csyrk_direct", {{"n", 15}, {"k", 1}}, false}, {"csyrk_direct", {{"n", 1}, {"k", 70}}, false},
    {"zsyrk_direct", {{"n", 14}, {"k", 49}}, true}, {"zsyrk_direct", {{"n", 14}, {"k", 50}}, false},
    {"strsm_direct", {{"m", 32}, {"n", 32}}, true}, {"dtrsm_direct", {{"m", 33}, {"n", 1}}, false},
    {"ctrsm_direct", {{"m", 1}, {"n", 33}}, false}, {"ztrsm_direct", {{"m", 32}, {"n", 32}}, true},
};
// clang-format on

// One process per layer: the rows that go plain first, since a call that went direct
// keeps its entry's plain slot direct.
class DirectThreshold : public ::testing::TestWithParam<Layer> {};

TEST_P(DirectThreshold, ChoosesBySize) {
  set_layer(GetParam());
  for (bool direct : {false, true})
    for (const Threshold& t : kThresholds) {
      if (t.direct != direct) continue;
      SCOPED_TRACE(testing::Message() << t.entry << " " << testing::PrintToString(t.sizes));
      Outcome o = call_direct(GetParam(), t.entry, t.sizes);
      EXPECT_EQ(o.direct, t.direct);
      EXPECT_EQ(o.plain, !t.direct);
    }
  EXPECT_TRUE(reports().empty()) << "no checker";
  EXPECT_EQ(qnl_probe_verbose_count(), 0) << "no record";
}

INSTANTIATE_TEST_SUITE_P(Boundaries, DirectThreshold, ::testing::Values(LP64, ILP64),
                         [](const auto& info) { return info.param == LP64 ? "LP64" : "ILP64"; });

// Words at the back-end, flag left out: widened locals on LP64, caller's pointers on ILP64.
class EveryDirect : public ::testing::TestWithParam<Layer> {};
TEST_P(EveryDirect, ForwardsLikeThePlainEntry) {
  set_layer(GetParam());
  set_verbose(1);
  for (const DirectCase& dc : kDirectCases) {
    SCOPED_TRACE(dc.name);
    // without a flag the sizes decide: keep the upper halves clean so they stay small
    Call call(dc.roles, dc.args, GetParam(), !dc.flag);
    const std::string direct = std::string("qnl_blas_") + dc.base + "_direct";
    unsigned char flag = 0xff;  // bit 0: direct whatever the sizes (the harness's are small anyway)
    if (dc.result == 'f')
      call.invoke<float>(entry_point(dc.name), dc.flag ? &flag : nullptr);
    else if (dc.result == 'd')
      call.invoke<double>(entry_point(dc.name), dc.flag ? &flag : nullptr);
    else
      call.invoke<void>(entry_point(dc.name), dc.flag ? &flag : nullptr);
    const qnl_probe::Call* c = last_call_of(direct.c_str());
    ASSERT_NE(c, nullptr);
    call.expect_words(*c, false, false);
  }
  EXPECT_EQ(qnl_probe_verbose_count(), 0);
}
INSTANTIATE_TEST_SUITE_P(Layers, EveryDirect, ::testing::Values(LP64, ILP64),
                         [](const auto& info) { return info.param == LP64 ? "LP64" : "ILP64"; });

TEST(Direct, FlagByteBitZero) {
  set_layer(LP64);
  EXPECT_TRUE(call_direct(LP64, "dgemm_direct", mnk(1000, 1000, 1000), 2).plain) << "bit 1 is not read";
  EXPECT_TRUE(call_direct(LP64, "dgemm_direct", mnk(1000, 1000, 1000), 1).direct);
}

TEST(Direct, PlainSlotStaysDirect) {
  set_layer(ILP64);
  EXPECT_TRUE(call_direct(ILP64, "dgemm_direct", mnk(100, 100, 100)).plain);
  EXPECT_TRUE(call_direct(ILP64, "dgemm_direct", mnk(100, 100, 100)).plain);
  EXPECT_TRUE(call_direct(ILP64, "dgemm_direct", mnk(4, 4, 4)).direct);
  Outcome o = call_direct(ILP64, "dgemm_direct", mnk(1000, 1000, 1000));
  EXPECT_TRUE(o.direct) << "sticky";
  EXPECT_FALSE(o.plain);
  // the plain dgemm entry keeps its own slot
  for (const BlasCase& bc : kBlasCases)
    if (std::strcmp(bc.name, "dgemm") == 0) {
      Call g(bc.roles, bc.args, ILP64, true);
      g.invoke<void>(entry_point("dgemm"));
    }
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm_direct"), 2);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm"), 3);
}

}  // namespace
