// Every spelling of every service entry, called with sentinel arguments, must
// deliver exactly the expected words to its back-end symbol and hand the
// back-end's result back unchanged.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "probe_backend.h"
#include "qnl_service.h"
#include "test_util.h"

namespace {

// Sentinels with high bits set: a 32-bit read shows only the low half, a
// missing widening or a swapped argument shows as a wrong word.
const int64_t I32[8] = {(int64_t)0xA1A1A1A100000003, (int64_t)0xB2B2B2B2FFFFFFF9, (int64_t)0xC3C3C3C300000011,
                        (int64_t)0xD4D4D4D480000000, (int64_t)0xE5E5E5E57FFFFFFF, (int64_t)0xF6F6F6F600000006,
                        (int64_t)0x1717171700000007, (int64_t)0x2828282800000008};
const int64_t I32V[8] = {(int64_t)0x9191919100000021, (int64_t)0x9292929200000022, (int64_t)0x9393939300000023,
                         (int64_t)0x9494949400000024, (int64_t)0, 0, 0, 0};
const uint64_t U64[8] = {0xFEDCBA9876543210, 0x0123456789ABCDEF, 0x8000000000000001, 0x7FFFFFFFFFFFFFFF, 0, 0, 0, 0};
const double F64[8] = {-1.25, 3.5e300, 2.0e-310, 7.0, -0.0, 0.5, 9.75, 1e10};
void* const PTR[8] = {(void*)0x1111000011110000, (void*)0x2222000022220000, (void*)0x3333000033330000,
                      (void*)0x4444000044440000, (void*)0x5555000055550000, (void*)0x6666000066660000,
                      (void*)0x7777000077770000, (void*)0x8888000088880000};

struct Case {
  const char* spelling;
  const char* symbol;
  char result;  // - i l d s p
  int nargs;
  void (*call)(void* fn, uint64_t* result);
  std::vector<uint64_t> (*expected)();
};

const Case kCases[] = {
#include "services_cases.inc"
};

uint64_t result_mask(char result) {
  return result == 'i' || result == 's' ? 0xFFFFFFFFu : ~uint64_t{0};
}

// Probe symbols that act rather than answer: their results are not chosen by the
// test, and two of them would dereference the sentinels, so they are left to
// the tests of the frames that use them.
bool acts(const char* symbol) {
  for (const char* s : {"qnl_serv_allocate", "qnl_serv_dsecnd", "qnl_serv_verbose_mode", "qnl_serv_verbose"})
    if (std::strcmp(symbol, s) == 0) return true;
  return false;
}
bool dereferences_sentinels(const char* symbol) {
  for (const char* s : {"qnl_serv_deallocate", "qnl_serv_print_verbose_info", "qnl_serv_lsame", "qnl_serv_xerbla"})
    if (std::strcmp(symbol, s) == 0) return true;
  return false;
}

TEST(ServiceEntries, EverySpellingForwardsItsArgumentsAndResult) {
  const uint64_t answer = 0x3FF8000000000000;  // 1.5 as a double, a pointer- and integer-sized pattern too
  int covered = 0;
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.spelling);
    void* fn = qnl_test::exported(c.spelling);
    ASSERT_NE(fn, nullptr) << "not exported";
    if (dereferences_sentinels(c.symbol)) continue;
    qnl_probe_set_result(c.symbol, c.result == 's' ? 0x3FC00000 : answer);
    int before = qnl_probe_count();
    uint64_t got = 0;
    c.call(fn, &got);
    ASSERT_EQ(qnl_probe_count(), before + 1);
    const qnl_probe::Call* rec = qnl_probe_call(-1);
    EXPECT_STREQ(rec->symbol, c.symbol);
    std::vector<uint64_t> want = c.expected();
    ASSERT_EQ(rec->nwords, c.nargs);
    for (int i = 0; i < c.nargs; ++i) EXPECT_EQ(rec->word[i], want[i]) << "argument " << i;
    if (c.result != '-' && !acts(c.symbol)) {
      EXPECT_EQ(got & result_mask(c.result), (c.result == 's' ? 0x3FC00000 : answer) & result_mask(c.result));
    }
    ++covered;
  }
  // Every row but the hand-written ones: the count guards against a table that lost rows.
  EXPECT_EQ(covered, 244);
}

TEST(ServiceEntries, AliasesShareOneBodyAndTwinsDoNot) {
  using qnl_test::exported;
  EXPECT_EQ(exported("QNL_Get_Max_Threads"), exported("qnl_get_max_threads_"));
  EXPECT_EQ(exported("QNL_GET_MAX_THREADS"), exported("qnl_get_max_threads"));
  EXPECT_NE(exported("QNL_Set_Num_Threads"), exported("QNL_SET_NUM_THREADS"));
  EXPECT_EQ(exported("XERBLA"), exported("XERBLA_"));
  EXPECT_EQ(exported("xerbla"), exported("xerbla_"));
  EXPECT_NE(exported("XERBLA"), exported("cdecl_xerbla"));
  EXPECT_NE(exported("QNL_MIC_register_memory"), nullptr);
  EXPECT_EQ(exported("QNL_MIC_Register_Memory"), nullptr);
  // Spellings that must not exist.
  for (const char* absent : {"DSECND_", "QNL_Dsecnd", "QNL_SET_THREADING_LAYER", "qnl_set_threading_layer_",
                             "QNL_Set_Xerbla", "LSAME_", "cdecl_xerbla_", "cblas_xerbla"})
    EXPECT_EQ(exported(absent), nullptr) << absent;
}

TEST(ServiceEntries, FreeOfANullCellForwardsNull) {
  void* cell = nullptr;
  qnl_test::exported_as<void(void**)>("QNL_FREE")(&cell);
  const qnl_probe::Call* rec = qnl_probe_call(-1);
  EXPECT_STREQ(rec->symbol, "qnl_serv_free");
  EXPECT_EQ(rec->word[0], 0u);
}

TEST(ServiceEntries, XerblaReachesTheDefaultEvenWithAHandlerInstalled) {
  auto set = qnl_test::exported_as<void*(void*)>("QNL_SET_XERBLA");
  set(reinterpret_cast<void*>(+[](const char*, const int*, int) {}));
  EXPECT_STREQ(qnl_probe_call(-1)->symbol, "qnl_serv_set_xerbla");
  int info = 3;
  for (const char* name : {"XERBLA", "xerbla", "xerbla_", "XERBLA_"}) {
    qnl_test::exported_as<void(const char*, const int*, int)>(name)("DGEMM ", &info, 6);
    EXPECT_STREQ(qnl_probe_call(-1)->symbol, "qnl_serv_default_xerbla") << name;
  }
  qnl_test::exported_as<void(const char*, const int*, int)>("cdecl_xerbla")("DGEMM ", &info, 6);
  EXPECT_STREQ(qnl_probe_call(-1)->symbol, "qnl_serv_xerbla");
}

TEST(ServiceEntries, LsameComparesFirstLettersInEverySpelling) {
  for (const char* name : {"LSAME", "lsame", "lsame_"}) {
    auto lsame = qnl_test::exported_as<int(const char*, const char*, int, int)>(name);
    EXPECT_EQ(lsame("n", "N", 1, 1), 1) << name;
    EXPECT_EQ(lsame("Tx", "ty", 2, 2), 1) << name;
    EXPECT_EQ(lsame("N", "T", 1, 1), 0) << name;
  }
  auto internal = qnl_test::exported_as<int(const char*, const char*, int, int)>("qnl_serv_lsame");
  EXPECT_EQ(internal("c", "C", 1, 1), 1);
}

}  // namespace
