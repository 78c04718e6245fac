// Edge cases of the LAPACK entries: scratch at 16 and 17 elements, failed
// allocations, queries, the argument checks of the much-used routines, offload
// routing, and the extensions' short frame.
#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "lapack_support.h"

namespace lapack_test {
namespace {

template <class... A>
void call(const char* name, A... a) {
  void* fn = qnl_test::exported(name);
  ASSERT_NE(fn, nullptr) << name;
  reinterpret_cast<void (*)(A...)>(fn)(a...);
}

class Edge : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    set_layer(GetParam());
    install_hook();
    seen() = Seen();
  }
  bool lp64() const { return GetParam(); }
};

// Integers of the caller's width.
struct Ints {
  bool lp64;
  std::vector<int64_t> cells;
  explicit Ints(bool is_lp64, std::initializer_list<int64_t> v) : lp64(is_lp64), cells(v) {
    if (lp64)
      for (auto& c : cells) c = static_cast<int64_t>(0xF1F1F1F100000000ull | static_cast<uint32_t>(c));
  }
  void* at(size_t i) { return &cells[i]; }
  int64_t get(size_t i) const { return lp64 ? static_cast<int32_t>(cells[i]) : cells[i]; }
};

TEST_P(Edge, DgesvKeepsSixteenPivotsInTheFrameAndAllocatesSeventeen) {
  for (int64_t n : {16, 17}) {
    Ints v(lp64(), {n, 1, n, n, 77});
    std::vector<int64_t> ipiv(32, 0);
    int before = qnl_probe_allocations();
    int records = qnl_probe_count();
    call("dgesv_", v.at(0), v.at(1), (void*)0x1000, v.at(2), ipiv.data(), (void*)0x2000, v.at(3), v.at(4));
    int allocations = qnl_probe_allocations() - before;
    if (!lp64() || n == 16) {
      EXPECT_EQ(allocations, 0) << n;
      continue;
    }
    EXPECT_EQ(allocations, 1);
    EXPECT_EQ(qnl_probe_last_allocation_size(), 17u * 8);
    EXPECT_EQ(qnl_probe_live_allocations(), 0);
    bool asked = false;
    for (int i = records; i < qnl_probe_count(); ++i)
      if (!std::strcmp(qnl_probe_call(i)->symbol, "qnl_serv_allocate")) asked = qnl_probe_call(i)->word[1] == 128;
    EXPECT_TRUE(asked) << "alignment 128";
  }
}

// Every routine that needs heap scratch in the sentinel call: a failed allocation
// reaches no back-end, prints no trace line, reports 1089 under the routine's name,
// stores -1023 to info, leaves the caller's integer arrays as they were and no
// block behind.
TEST_P(Edge, EveryFailedAllocationReportsAndFreesWhatItHad) {
  if (!lp64()) GTEST_SKIP() << "the ILP64 side allocates nothing";
  int tested = 0;
  for (int i = 0; i < kCaseCount; ++i) {
    const Case& c = kCases[i];
    int heap = 0;
    for (int k = 0; k < c.nargs; ++k)
      heap += is_array(c.args[k]) && c.args[k].cfg[kHolds].referenced && c.args[k].cfg[kHolds].length > 16;
    const int info = info_index(c);
    if (!heap) continue;
    SCOPED_TRACE(c.name);
    Call cl(c, kHolds, true);
    *qnl_probe_verbose_mode() = 1;
    const int lines = qnl_probe_verbose_count();
    qnl_probe_fail_allocations(1);
    cl.run(c.name);
    qnl_probe_fail_allocations(0);
    EXPECT_EQ(qnl_probe_verbose_count(), lines) << "no trace line";
    for (int k = 0; k < c.nargs; ++k)
      for (size_t i = 0; is_array(c.args[k]) && i < cl.cells[k].size(); ++i)
        ASSERT_EQ(cl.int32_at(k, static_cast<int64_t>(i)), pattern(k, static_cast<int64_t>(i))) << "argument " << k;
    EXPECT_TRUE(seen().lapack_symbols.empty());
    EXPECT_EQ(seen().reports, 1);
    EXPECT_EQ(seen().report_name, qnl_test::upper(c.name));
    EXPECT_EQ(seen().report_number, 1089);
    if (info >= 0) {
      EXPECT_EQ(cl.int32_at(info), -1023);
    }
    EXPECT_EQ(qnl_probe_live_allocations(), 0);
    ++tested;
  }
  std::printf("%d routines allocate in the sentinel call\n", tested);
  EXPECT_GT(tested, 100);
}

TEST_P(Edge, DgetrfWithNoRowsCopiesNothingBack) {
  Ints v(lp64(), {0, 5, 1, 3});
  std::vector<int64_t> ipiv(4, 0x0707070707070707);
  int before = qnl_probe_allocations();
  call("dgetrf", v.at(0), v.at(1), (void*)0x1000, v.at(2), ipiv.data(), v.at(3));
  EXPECT_EQ(qnl_probe_allocations(), before);
  EXPECT_EQ(v.get(3), 0);
  for (int64_t p : ipiv) EXPECT_EQ(p, 0x0707070707070707);
  ASSERT_EQ(seen().lapack_symbols.size(), 1u);
}

// The testers' error exits pass literal constants, which live in read-only
// memory, for integers that the table marks as written: an unchanged value must
// not be stored back.
TEST_P(Edge, AnUnchangedOutputIntegerIsNotStoredBack) {
  if (!lp64()) GTEST_SKIP() << "the ILP64 side passes the caller's integers through";
  void* page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(page, MAP_FAILED);
  auto* lwork = static_cast<int32_t*>(page);
  *lwork = 1;
  ASSERT_EQ(mprotect(page, 4096, PROT_READ), 0);
  int32_t m = 0, n = 0, ld = 1, numrank = -5, liwork = 1, lrwork = 1, info = -5, iwork[2] = {0, 0};
  call("dgesvdq_", "A", "P", "T", "A", "A", &m, &n, (void*)0x1000, &ld, (void*)0x2000, (void*)0x3000, &ld,
       (void*)0x4000, &ld, &numrank, iwork, &liwork, (void*)0x5000, lwork, (void*)0x6000, &lrwork, &info, size_t{1},
       size_t{1}, size_t{1}, size_t{1}, size_t{1});
  EXPECT_EQ(*lwork, 1);
  // Outputs that the back-end left at zero still reach the caller.
  EXPECT_EQ(info, 0);
  munmap(page, 4096);
}

// The twenty checked routines per type: each parameter in the documented order
// of checks is reported by its number when it alone is bad; parameters outside
// the list are left to the back-end.
struct Checked {
  const char* stems;  // space-separated, without the type letter
  std::vector<int> order;
};
const Checked kChecked[] = {
    {"getrf getf2 potrf", {1, 2, 4}},
    {"geqrf gelqf geqlf", {1, 2, 4, 7}},
    {"gebrd", {1, 2, 4, 10}},
    {"gehrd orghr", {1, 2, 3, 5, 8}},
    {"sytrd hetrd", {1, 2, 4, 9}},
    {"sygst hegst", {1, 2, 3, 5, 7}},
    {"syrdb herdb", {1, 2, 3, 4, 6, 11, 13}},
    {"syevd", {1, 2, 3, 5, 8, 10}},
    {"heevd", {1, 2, 3, 5, 8, 10, 12}},
    {"hegvd", {1, 2, 3, 4, 6, 8}},
    {"gesvd", {1, 2, 3, 4, 6, 9, 11}},
    {"orgqr ungqr", {1, 2, 3, 5, 8}},
    {"ormqr ormlq ormql ormrq unmqr unmlq unmql unmrq", {1, 2, 3, 4, 5, 7, 10, 12}},
};

const std::vector<int>* order_of(const char* name) {
  std::string stem(name + 1);
  if (stem == "geev") {
    static const std::vector<int> real = {1, 2, 3, 5, 9, 11}, cplx = {1, 2, 3, 5, 8, 10};
    return name[0] == 's' || name[0] == 'd' ? &real : &cplx;
  }
  for (const Checked& c : kChecked)
    if ((" " + std::string(c.stems) + " ").find(" " + stem + " ") != std::string::npos) return &c.order;
  return nullptr;
}

TEST_P(Edge, EveryCheckedRoutineReportsItsParametersInOrder) {
  int routines = 0;
  int per_type[4] = {0, 0, 0, 0};
  *qnl_probe_verbose_mode() = 1;
  for (int i = 0; i < kCaseCount; ++i) {
    const Case& c = kCases[i];
    if (!c.checked || c.short_frame) continue;
    SCOPED_TRACE(c.name);
    const std::vector<int>* order = order_of(c.name);
    ASSERT_NE(order, nullptr) << "a checked routine outside the list";
    for (int k = 0; k < c.nargs; ++k) {
      std::string cls = c.args[k].cls;
      if (cls != "c" && cls != "i") continue;
      bool listed = std::find(order->begin(), order->end(), k + 1) != order->end();
      Call cl(c, kHolds, lp64());
      if (cls == "c")
        *reinterpret_cast<char*>(cl.cells[k].data()) = '?';
      else
        cl.cells[k][0] = lp64() ? static_cast<int64_t>(0xF1F1F1F1FFFFFFFEull) : -2;
      const int lines = qnl_probe_verbose_count();
      cl.run(c.name);
      ASSERT_EQ(qnl_probe_verbose_count(), lines + 1) << "every call is traced, a rejected one too";
      if (listed) {
        EXPECT_EQ(seen().reports, 1) << "parameter " << k + 1;
        EXPECT_EQ(seen().report_number, k + 1);
        EXPECT_FALSE(seen().called) << "parameter " << k + 1;
        // the record is printed after the check: it shows the info the caller gets
        const std::string record = qnl_probe_verbose_line(-1)->record, info = "," + std::to_string(-(k + 1)) + ")";
        EXPECT_EQ(record.rfind(qnl_test::upper(c.name) + "(", 0), 0u) << record;
        EXPECT_EQ(record.substr(record.size() - info.size()), info) << record;
      } else {
        EXPECT_EQ(seen().reports, 0) << "parameter " << k + 1 << " is the back-end's to check";
        EXPECT_TRUE(seen().called);
      }
    }
    // The valid call passes and reaches the back-end.
    Call ok(c, kHolds, lp64());
    ok.run(c.name);
    EXPECT_EQ(seen().reports, 0);
    EXPECT_TRUE(seen().called);
    ++routines;
    ++per_type[std::string("sdcz").find(c.name[0])];
  }
  for (int t = 0; t < 4; ++t) EXPECT_EQ(per_type[t], 20) << "sdcz"[t];
  EXPECT_EQ(routines, 80);
}

TEST_P(Edge, GesvdRejectsOverwritingWithBoth) {
  char o = 'O';
  Ints v(lp64(), {3, 3, 3, 3, 3, 100, 0});
  call("dgesvd", &o, &o, v.at(0), v.at(1), (void*)0x1000, v.at(2), (void*)0x2000, (void*)0x3000, v.at(3), (void*)0x4000,
       v.at(4), (void*)0x5000, v.at(5), v.at(6));
  EXPECT_EQ(seen().report_number, 2);
  EXPECT_EQ(v.get(6), -2);
}

// Every routine with an offload twin but ?spffrt2/x (below) goes there exactly when each of
// its sizes reaches its family's threshold: m and n from 8192 (?getrf, ?geqrf), n from 6144
// (?potrf), m and n from 500 (the LU without pivoting). Other integers are large enough to
// pass the checks, arrays long enough for every copy.
TEST_P(Edge, OffloadTwinsTakeTheCallFromTheirThresholds) {
  int routed = 0;
  for (int i = 0; i < kCaseCount; ++i) {
    const Case& c = kCases[i];
    if (!c.ao_symbol || std::strstr(c.name, "spffrt")) continue;
    SCOPED_TRACE(c.name);
    const bool potrf = std::strstr(c.name, "potrf"), npi = std::strstr(c.name, "npi");
    const int64_t threshold = potrf ? 6144 : npi ? 500 : 8192;
    const std::vector<int> sizes = potrf ? std::vector<int>{1} : std::vector<int>{0, 1};
    for (size_t shy = 0; shy <= sizes.size(); ++shy) {  // the size one short of it, or none
      Call call(c, kHolds, lp64());
      std::vector<int64_t> room(9000);
      for (int k = 0; k < c.nargs; ++k) {
        if (is_array(c.args[k])) call.ptrs[k] = room.data();
        if (std::strcmp(c.args[k].cls, "i")) continue;
        const bool size = std::find(sizes.begin(), sizes.end(), k) != sizes.end();
        const int64_t v = !size ? 9000 : shy < sizes.size() && sizes[shy] == k ? threshold - 1 : threshold;
        call.cells[k][0] = Ints(lp64(), {v}).cells[0];
      }
      call.run(c.name);
      ASSERT_EQ(seen().lapack_symbols.size(), 1u) << shy;
      EXPECT_EQ(seen().lapack_symbols[0], shy == sizes.size() ? c.ao_symbol : c.symbol) << shy;
    }
    ++routed;
  }
  EXPECT_EQ(routed, 16);
}

// qnl_?spffrt2/x: the threshold comes from QNL_SPFFRT_NX, read once per routine.
struct Threshold {
  const char* env;  // null: unset
  int64_t below, at;
};
void PrintTo(const Threshold& t, std::ostream* os) { *os << "QNL_SPFFRT_NX=" << (t.env ? t.env : "unset"); }
class Spffrt : public ::testing::TestWithParam<Threshold> {};

const char* spffrt_symbol(int64_t n, int64_t ncolm) {
  seen() = Seen();
  std::vector<int64_t> v = {static_cast<int64_t>(0xF1F1F1F100000000ull | static_cast<uint64_t>(n)),
                            static_cast<int64_t>(0xF1F1F1F100000000ull | static_cast<uint64_t>(ncolm))};
  call("qnl_dspffrt2_", (void*)0x1000, &v[0], &v[1], (void*)0x2000, (void*)0x3000);
  return seen().lapack_symbols.empty() ? "" : seen().lapack_symbols[0].c_str();
}

TEST_P(Spffrt, ThresholdFromTheEnvironment) {
  if (GetParam().env)
    setenv("QNL_SPFFRT_NX", GetParam().env, 1);
  else
    unsetenv("QNL_SPFFRT_NX");
  install_hook();
  int64_t at = GetParam().at, below = GetParam().below;
  int64_t ncolm_at = GetParam().env && at < 300 ? at : 300;
  EXPECT_STREQ(spffrt_symbol(at, ncolm_at), "qnl_lapack_ao_dspffrt2");
  EXPECT_STREQ(spffrt_symbol(below, ncolm_at), "qnl_lapack_dspffrt2");
  EXPECT_STREQ(spffrt_symbol(at, ncolm_at - 1), "qnl_lapack_dspffrt2");
  // Read once: a later change is not seen.
  setenv("QNL_SPFFRT_NX", "1", 1);
  EXPECT_STREQ(spffrt_symbol(below, ncolm_at), "qnl_lapack_dspffrt2");
}

INSTANTIATE_TEST_SUITE_P(Lapack, Spffrt,
                         ::testing::Values(Threshold{nullptr, 2999, 3000}, Threshold{"100", 99, 100},
                                           Threshold{"0", 2999, 3000}, Threshold{"-5", 2999, 3000},
                                           Threshold{"abc", 2999, 3000}),
                         [](const ::testing::TestParamInfo<Threshold>& p) {
                           return std::string(p.param.env ? "env" : "unset") + std::to_string(p.index);
                         });

TEST_P(Edge, DdtsvbChecksOnTheShortFrame) {
  Ints v(lp64(), {5, 1, 4, 0});
  call("ddtsvb_", v.at(0), v.at(1), (void*)0x1000, (void*)0x2000, (void*)0x3000, (void*)0x4000, v.at(2), v.at(3));
  EXPECT_EQ(seen().report_name, "DDTSVB");
  EXPECT_EQ(seen().report_number, 7);
  EXPECT_EQ(v.get(3), -7);
  EXPECT_TRUE(seen().lapack_symbols.empty());
  EXPECT_EQ(qnl_probe_count_of("qnl_lapack_ps_ddtsvb"), 0);
  // ldb equal to n passes, and the short frame reaches its own symbol.
  Ints ok(lp64(), {5, 1, 5, 0});
  call("DDTSVB", ok.at(0), ok.at(1), (void*)0x1000, (void*)0x2000, (void*)0x3000, (void*)0x4000, ok.at(2), ok.at(3));
  ASSERT_EQ(seen().lapack_symbols.size(), 1u);
  EXPECT_EQ(seen().lapack_symbols[0], "qnl_lapack_ps_ddtsvb");
  EXPECT_EQ(ok.get(3), 0);
}

INSTANTIATE_TEST_SUITE_P(Lapack, Edge, ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool>& p) { return p.param ? "LP64" : "ILP64"; });

}  // namespace
}  // namespace lapack_test
