// What a LAPACK entry may touch of the caller's memory when the call is a size
// query, when the back-end rejects it, and how it hands back info: for every
// routine of the table, with a back-end that behaves as stock LAPACK does.
#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>

#include "lapack_support.h"

namespace lapack_test {
namespace {

// The workspaces, and the written arrays sized by a workspace length (?gesvdq's iwork).
bool answers_query(const ArgCase& a) { return !std::strcmp(a.cls, "iw") || has(a.flags, 'q'); }

// The stock back-end: on the case's symbol it writes info and, on a query, the
// size answer in element 0 of the workspace that answers it; nothing else.
struct Stock {
  const Case* c = nullptr;
  bool query = false;
  int64_t info = 0;
  bool called = false;
};
Stock g_stock;
constexpr int64_t kAnswer = static_cast<int64_t>(0x5A5A5A5A00000077ull);

void stock_hook(const char* symbol, const uint64_t* w, int n) {
  if (answer_lsame(symbol, w)) return;
  const Case* c = g_stock.c;
  if (!c || !is_symbol_of(*c, symbol)) return;
  g_stock.called = true;
  int first = c->offset + (c->result == 'a' ? 1 : 0);
  for (int k = 0; k < c->nargs && first + k < n; ++k) {
    auto* p = reinterpret_cast<int64_t*>(w[first + k]);
    const ArgCase& a = c->args[k];
    if (!p) continue;
    if (!std::strcmp(a.cls, "o") && has(a.flags, 'z')) *p = g_stock.info;
    if (g_stock.query && g_stock.info == 0 && answers_query(a)) p[0] = kAnswer;
  }
}

class Hostile : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    set_layer(GetParam());
    qnl_probe_set_hook(stock_hook);
  }
  void TearDown() override { g_stock = Stock(); }
  bool lp64() const { return GetParam(); }
};

// One-element integer arrays between guard words, in the caller's width.
constexpr int64_t kGuard = static_cast<int64_t>(0x6B6B6B6B6B6B6B6Bull);
struct Guarded {
  std::vector<int64_t> cells = {kGuard, 0, kGuard};
  int32_t* i32() { return reinterpret_cast<int32_t*>(cells.data() + 1); }
};

// scipy's *_lwork wrappers pass one integer for ipiv, isuppz, jpvt and the like
// on a query: the entry must write the size answer and nothing else. Arrays
// the routine only reads keep their full length (?trsen counts its select
// flags to answer a query).
TEST_P(Hostile, EveryQueryTouchesOnlyItsSizeAnswers) {
  int queries = 0;
  for (int i = 0; i < kCaseCount; ++i) {
    const Case& c = kCases[i];
    if (!c.has_query) continue;
    SCOPED_TRACE(c.name);
    Call call(c, kQuery, lp64());
    std::vector<Guarded> arrays(c.nargs);
    for (int k = 0; k < c.nargs; ++k)
      if (is_array(c.args[k]) && std::strcmp(c.args[k].cls, "ii")) {
        // LP64: the caller's 32-bit element, then a guard half.
        arrays[k].cells[1] = lp64() ? static_cast<int64_t>(0x6B6B6B6B00000000ull | 0x1234u) : 0x1234;
        call.ptrs[k] = arrays[k].cells.data() + 1;
      }
    g_stock = {&c, true, 0, false};
    call.run(c.name);
    for (int k = 0; k < c.nargs; ++k) {
      if (!is_array(c.args[k]) || !std::strcmp(c.args[k].cls, "ii")) continue;
      const std::vector<int64_t>& g = arrays[k].cells;
      EXPECT_EQ(g[0], kGuard) << "before argument " << k;
      EXPECT_EQ(g[2], kGuard) << "after argument " << k;
      bool answers = answers_query(c.args[k]);
      int64_t want = answers ? kAnswer : 0x1234;
      if (lp64()) {
        EXPECT_EQ(arrays[k].i32()[0], static_cast<int32_t>(want)) << "argument " << k;
        EXPECT_EQ(static_cast<uint32_t>(arrays[k].i32()[1]), 0x6B6B6B6Bu) << "argument " << k;
      } else {
        EXPECT_EQ(g[1], want) << "argument " << k;
      }
    }
    ++queries;
    if (HasFailure()) break;
  }
  std::printf("%d query-capable routines\n", queries);
  EXPECT_GT(queries, 400);
}

// An array that ends where the caller's memory does: the next page is not mapped.
struct PageEnd {
  static constexpr size_t kElements = 4;
  long page = sysconf(_SC_PAGESIZE);
  char* base;
  PageEnd() {
    base = static_cast<char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base + page, page, PROT_NONE);
    std::memset(base, 0x3C, page);
  }
  ~PageEnd() { munmap(base, 2 * page); }
  void* array() { return base + page - kElements * 8; }
  bool intact() const {
    for (long i = 0; i < page; ++i)
      if (base[i] != 0x3C) return false;
    return true;
  }
};

// Every routine with an integer array and info, called with sizes (3000) far beyond
// the arrays of four elements it gets, which end where the caller's memory
// does, and a back-end that rejects the call (dgesv with n = 3000, lda = 1):
// nothing is read beyond what the caller has, nothing of the caller's is
// written, and info reports the rejection.
TEST_P(Hostile, ARejectedCallLeavesTheCallersArraysAlone) {
  constexpr int64_t kSize = 3000;
  int rejected = 0;
  for (int i = 0; i < kCaseCount; ++i) {
    const Case& c = kCases[i];
    const int info = info_index(c);
    if (!has_arrays(c) || info < 0) continue;
    SCOPED_TRACE(c.name);
    Call call(c, kHolds, lp64());
    std::vector<PageEnd> ends(c.nargs);
    for (int k = 0; k < c.nargs; ++k) {
      const ArgCase& a = c.args[k];
      if (is_array(a)) call.ptrs[k] = ends[k].array();
      if (!std::strcmp(a.cls, "i"))
        call.cells[k][0] = lp64() ? static_cast<int64_t>(0xF1F1F1F100000000ull | static_cast<uint32_t>(kSize)) : kSize;
    }
    g_stock = {&c, false, -4, false};
    call.run(c.name);
    for (int k = 0; k < c.nargs; ++k) {
      if (!is_array(c.args[k])) continue;
      EXPECT_TRUE(ends[k].intact()) << "argument " << k;
    }
    int64_t got = lp64() ? call.int32_at(info) : call.int64_at(info);
    EXPECT_LT(got, 0) << "info";
    ++rejected;
    if (HasFailure()) break;
  }
  std::printf("%d rejected calls\n", rejected);
  EXPECT_GT(rejected, 600);
}

// info is always written by the routine: the entry stores it without reading
// it first, so a caller's uninitialised info is never looked at. The page that
// holds it is closed; the first access is caught and must be a store.
int g_first_access = 0;  // 0 none, 1 read, 2 write
void* g_info_page = nullptr;
void on_fault(int, siginfo_t*, void* ctx) {
  auto* uc = static_cast<ucontext_t*>(ctx);
  if (!g_first_access) g_first_access = (uc->uc_mcontext.gregs[REG_ERR] & 2) ? 2 : 1;
  mprotect(g_info_page, static_cast<size_t>(sysconf(_SC_PAGESIZE)), PROT_READ | PROT_WRITE);
}

TEST_P(Hostile, InfoIsStoredWithoutBeingReadFirst) {
  if (!lp64()) GTEST_SKIP() << "the ILP64 side passes the caller's info through";
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  g_info_page = mmap(nullptr, page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(g_info_page, MAP_FAILED);
  struct sigaction sa = {}, old = {};
  sa.sa_sigaction = on_fault;
  sa.sa_flags = SA_SIGINFO;
  ASSERT_EQ(sigaction(SIGSEGV, &sa, &old), 0);
  // Unchanged by the call (0 before, 0 after) is where a read-before-store hides.
  for (int64_t backend_info : {0, 3, -4}) {
    auto* info = static_cast<int32_t*>(g_info_page);
    *info = 0;
    int32_t n = 3, nrhs = 1, lda = 3, ldb = 3, ipiv[3] = {0, 0, 0};
    double a[9] = {}, b[3] = {};
    g_stock = {find_case("dgesv"), false, backend_info, false};
    g_first_access = 0;
    ASSERT_EQ(mprotect(g_info_page, page, PROT_NONE), 0);
    reinterpret_cast<void (*)(...)>(qnl_test::exported("dgesv_"))(&n, &nrhs, a, &lda, ipiv, b, &ldb, info);
    mprotect(g_info_page, page, PROT_READ | PROT_WRITE);
    EXPECT_EQ(g_first_access, 2) << "info " << backend_info << ": first access was a read";
    EXPECT_EQ(*info, backend_info);
  }
  sigaction(SIGSEGV, &old, nullptr);
  munmap(g_info_page, page);
}

// The documented length of an output array is an upper bound (dsyevr writes
// isuppz only when it computes every eigenvalue, and scipy passes an empty
// array otherwise): for every routine, a back-end that writes no array leaves
// every element of the caller's as it was.
TEST_P(Hostile, ArraysTheRoutineLeavesAloneStayTheCallers) {
  int routines = 0;
  for (int i = 0; i < kCaseCount; ++i) {
    const Case& c = kCases[i];
    if (!has_arrays(c)) continue;
    SCOPED_TRACE(c.name);
    Call call(c, kHolds, lp64());
    std::vector<std::vector<int64_t>> before = call.cells;
    g_stock = {&c, false, 0, false};
    call.run(c.name);
    for (int k = 0; k < c.nargs; ++k) {
      if (!is_array(c.args[k])) continue;
      // Element 0 of a query-capable workspace is its size answer and always goes back.
      size_t from = std::strcmp(c.args[k].cls, "iw") ? 0 : 1;
      EXPECT_TRUE(std::equal(call.cells[k].begin() + from, call.cells[k].end(), before[k].begin() + from))
          << "argument " << k;
    }
    ++routines;
    if (HasFailure()) break;
  }
  EXPECT_GT(routines, 700);
}

// The test-matrix generators with every integer array exactly as long as the
// routine documents it (iseed 4, ipivot and iwork max(m,n), or the one entry
// ?latm2/?latm3 read): under the address sanitizer any access beyond shows.
TEST_P(Hostile, TestMatrixGeneratorsStayInsideTheirArrays) {
  int generators = 0;
  for (int i = 0; i < kCaseCount; ++i) {
    const Case& c = kCases[i];
    std::string name = c.name;
    if (name.size() != 6 || name.compare(1, 4, "latm") || !std::strchr("23r", name[5])) continue;
    SCOPED_TRACE(c.name);
    Call call(c, kHolds, lp64());
    std::vector<std::vector<int64_t>> exact(c.nargs);
    for (int k = 0; k < c.nargs; ++k) {
      const Config& f = c.args[k].cfg[kHolds];
      if (!is_array(c.args[k]) || !f.referenced) continue;
      // Whole 64-bit cells hold the 32-bit elements too; the test is on the count.
      exact[k].assign(static_cast<size_t>(lp64() ? (f.length + 1) / 2 : f.length), 0x0101010101010101);
      call.ptrs[k] = exact[k].data();
    }
    g_stock = {&c, false, 0, false};
    call.run(c.name);
    EXPECT_TRUE(g_stock.called);
    ++generators;
  }
  EXPECT_EQ(generators, 12);
}

INSTANTIATE_TEST_SUITE_P(Lapack, Hostile, ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool>& p) { return p.param ? "LP64" : "ILP64"; });

}  // namespace
}  // namespace lapack_test
