// Row-major complex roads that conjugate data: the scratch copy the Fortran entry receives,
// the in-place negation it sees, negative zeros, and the caller's data restored on every way
// out (after the call, after a report, after a failed allocation).
#include <cmath>

#include "cblas_harness.h"

using namespace cblas_test;

namespace {

// What the hook saw: the vector behind one word of the watched call, and a caller's buffer,
// copied while the call (or the report) ran.
struct Watch {
  std::string symbol;  // "qnl_blas_zhemv" or "qnl_serv_xerbla"
  int word = -1;       // index of the pointer word to copy (-1: none)
  size_t bytes = 0;
  const double* caller = nullptr;
  size_t caller_bytes = 0;
  std::vector<double> behind, during;
  uint64_t pointer = 0;
  int hits = 0;
};
Watch g_watch;

void hook(const char* symbol, const uint64_t* w, int) {
  if (g_watch.symbol != symbol) return;
  ++g_watch.hits;
  if (g_watch.word >= 0 && g_watch.bytes > 0) {
    g_watch.pointer = w[g_watch.word];
    g_watch.behind.resize(g_watch.bytes / 8);
    std::memcpy(g_watch.behind.data(), reinterpret_cast<const void*>(w[g_watch.word]), g_watch.bytes);
  }
  if (g_watch.caller) {
    g_watch.during.resize(g_watch.caller_bytes / 8);
    std::memcpy(g_watch.during.data(), g_watch.caller, g_watch.caller_bytes);
  }
}

void watch_call(const char* symbol, int word, size_t bytes, const double* caller, size_t caller_bytes) {
  g_watch = Watch{symbol, word, bytes, caller, caller_bytes, {}, {}, 0, 0};
  qnl_probe_set_hook(hook);
}

// Complex double elements (re, im) from 1.5 + k, imaginary parts k - 1 (the first is -1,
// the second +0: its conjugate must be -0).
void fill(double* v, int n, int stride) {
  for (int k = 0; k < n; ++k) {
    v[2 * k * stride] = 1.5 + k;
    v[2 * k * stride + 1] = k - 1.0;
  }
}

bool same_bits(const double* a, const double* b, int count) { return std::memcmp(a, b, count * 8) == 0; }

template <class I>
void hemv_conjugates(Layer layer) {
  set_layer(layer);
  Args<I> args(cblas_case("cblas_zhemv"), {{"layout", 101}, {"n", 3}});
  double* x = args.buffer("x");
  double* y = args.buffer("y");
  fill(x, 3, 1);
  fill(y, 3, 1);
  double y_before[6];
  std::memcpy(y_before, y, sizeof y_before);
  // zhemv(uplo, n, alpha, a, lda, x, incx, beta, y, incy): x is word 5
  watch_call("qnl_blas_zhemv", 5, 48, y, 48);
  args.run();
  ASSERT_EQ(g_watch.hits, 1);
  EXPECT_NE(g_watch.pointer, reinterpret_cast<uintptr_t>(x)) << "x arrives as scratch";
  EXPECT_EQ(g_watch.pointer % 128, 0u);
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(g_watch.behind[2 * k], x[2 * k]);
    EXPECT_EQ(g_watch.behind[2 * k + 1], -x[2 * k + 1]);
    EXPECT_EQ(g_watch.during[2 * k + 1], -y_before[2 * k + 1]) << "y negated during the call";
  }
  EXPECT_TRUE(std::signbit(g_watch.behind[3])) << "conjugating +0 gives -0";
  EXPECT_TRUE(std::signbit(g_watch.during[3]));
  EXPECT_TRUE(same_bits(y, y_before, 6)) << "y restored bit for bit";
  EXPECT_FALSE(std::signbit(y[3]));
  EXPECT_EQ(qnl_probe_live_allocations(), 0);
  EXPECT_EQ(qnl_probe_last_allocation_size(), 48u);
}

TEST(CblasConjugation, HemvLp64) { hemv_conjugates<int32_t>(LP64); }
TEST(CblasConjugation, HemvIlp64) { hemv_conjugates<int64_t>(ILP64); }

// A negative increment reverses memory order so that the copy keeps BLAS order at unit
// stride.
TEST(CblasConjugation, NegativeIncrementKeepsBlasOrder) {
  set_layer(LP64);
  Args<int32_t> args(cblas_case("cblas_zher"), {{"layout", 101}, {"n", 3}, {"incx", -2}});
  double* x = args.buffer("x");
  fill(x, 3, 2);
  // zher(uplo, n, alpha, x, incx, a, lda): x is word 3, incx word 4
  watch_call("qnl_blas_zher", 3, 48, nullptr, 0);
  args.run();
  ASSERT_EQ(g_watch.hits, 1);
  for (int k = 0; k < 3; ++k) {
    const int from = 2 * (2 - k) * 2;  // memory element 2 - k at stride 2
    EXPECT_EQ(g_watch.behind[2 * k], x[from]);
    EXPECT_EQ(g_watch.behind[2 * k + 1], -x[from + 1]);
  }
  const qnl_probe::Call* c = blas_test::last_call_of("qnl_blas_zher");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->word[9], 1u) << "increment 1 at the back-end";  // after 7 words and a length: n, incx, lda
}

TEST(CblasConjugation, EmptyVectorAllocatesNothing) {
  set_layer(ILP64);
  Args<int64_t> args(cblas_case("cblas_zher"), {{"layout", 101}, {"n", 0}, {"incx", 3}});
  watch_call("qnl_blas_zher", 3, 0, nullptr, 0);
  args.run();
  EXPECT_EQ(qnl_probe_allocations(), 0);
  const qnl_probe::Call* c = blas_test::last_call_of("qnl_blas_zher");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->word[3], reinterpret_cast<uintptr_t>(args.pointer("x"))) << "the caller's x";
  EXPECT_EQ(c->word[9], 3u) << "the caller's increment";
}

// A report after the copy still restores y: zhemv with incy 0 reports 11, and the negation
// had touched the one element once.
TEST(CblasConjugation, ReportAfterNegationRestoresY) {
  set_layer(LP64);
  Args<int32_t> args(cblas_case("cblas_zhemv"), {{"layout", 101}, {"n", 3}, {"incy", 0}});
  double* y = args.buffer("y");
  fill(y, 1, 1);
  double before[2] = {y[0], y[1]};
  watch_call("qnl_serv_xerbla", -1, 0, y, 16);
  args.run();
  EXPECT_EQ(cblas_reports("cblas_zhemv"), std::vector<int32_t>{11});
  ASSERT_EQ(g_watch.hits, 1);
  EXPECT_EQ(g_watch.during[1], -before[1]) << "negated once when the report ran";
  EXPECT_TRUE(same_bits(y, before, 2));
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_zhemv"), 0);
  EXPECT_EQ(qnl_probe_live_allocations(), 0);
}

// Failed scratch: report 1000 under the C name, nothing changed, nothing called.
struct NoMemoryCase {
  const char* name;
  Overrides over;
  const char* vector;  // the caller's vector that must come back unchanged
};
const NoMemoryCase kNoMemory[] = {
    {"cblas_zgemv", {{"layout", 101}, {"trans", 113}, {"m", 3}, {"n", 3}}, "y"},
    {"cblas_zhemv", {{"layout", 101}, {"n", 3}}, "y"},
    {"cblas_zhbmv", {{"layout", 101}, {"n", 3}}, "y"},
    {"cblas_zhpmv", {{"layout", 101}, {"n", 3}}, "y"},
    {"cblas_zher", {{"layout", 101}, {"n", 3}}, "x"},
    {"cblas_zhpr", {{"layout", 101}, {"n", 3}}, "x"},
    {"cblas_zher2", {{"layout", 101}, {"n", 3}}, "y"},
    {"cblas_zhpr2", {{"layout", 101}, {"n", 3}}, "x"},
    {"cblas_zgerc", {{"layout", 101}, {"n", 3}}, "y"},
    {"cblas_zgbmv", {{"layout", 101}, {"trans", 113}, {"m", 3}}, "y"},
};

TEST(CblasConjugation, FailedScratchReportsThousand) {
  set_layer(LP64);
  for (const auto& nc : kNoMemory) {
    SCOPED_TRACE(nc.name);
    qnl_probe_reset();
    Args<int32_t> args(cblas_case(nc.name), nc.over);
    double* v = args.buffer(nc.vector);
    fill(v, 3, 1);
    std::vector<double> before(v, v + 6);
    qnl_probe_fail_allocations(1);
    args.run();
    EXPECT_EQ(cblas_reports(nc.name), std::vector<int32_t>{1000});
    EXPECT_EQ(blas_test::blas_calls(), 0);
    EXPECT_TRUE(same_bits(v, before.data(), 6));
    EXPECT_EQ(qnl_probe_live_allocations(), 0);
  }
}

// The triangular routines conjugate x in place for ConjTrans: the Fortran entry (or a later
// report) sees it negated, the caller gets it back.
struct InPlaceCase {
  const char* name;
  const char* fault;  // an argument that makes a check fail after the negation
  double value;
};
const InPlaceCase kInPlace[] = {
    {"cblas_ztrmv", "lda", 1}, {"cblas_ztrsv", "lda", 1}, {"cblas_ztbmv", "k", -1},
    {"cblas_ztbsv", "k", -1},  {"cblas_ztpmv", "n", -1},  {"cblas_ztpsv", "incx", 0},
};

template <class I>
void triangular_in_place(Layer layer) {
  set_layer(layer);
  for (const auto& ic : kInPlace) {
    SCOPED_TRACE(ic.name);
    for (bool report : {false, true}) {
      qnl_probe_reset();
      Overrides over = {{"layout", 101}, {"trans", 113}, {"n", 3}, {"incx", -1}};
      if (report) over[ic.fault] = ic.value;
      Args<I> args(cblas_case(ic.name), over);
      double* x = args.buffer("x");
      fill(x, 3, 1);
      std::vector<double> before(x, x + 6);
      const std::string sym = report ? "qnl_serv_xerbla" : std::string("qnl_blas_") + (ic.name + 6);
      watch_call(sym.c_str(), -1, 0, x, 48);
      args.run();
      ASSERT_EQ(g_watch.hits, 1);
      // n < 0 negates nothing; an increment of 0 names one element
      const int touched = over["n"] < 0 ? 0 : over["incx"] == 0 ? 1 : 3;
      for (int k = 0; k < 3; ++k)
        EXPECT_EQ(g_watch.during[2 * k + 1], k < touched ? -before[2 * k + 1] : before[2 * k + 1]) << k;
      EXPECT_EQ(std::signbit(g_watch.during[3]), touched == 3);
      EXPECT_TRUE(same_bits(x, before.data(), 6));
      EXPECT_EQ(qnl_probe_allocations(), 0) << "no scratch";
    }
  }
}

TEST(CblasConjugation, TriangularInPlaceLp64) { triangular_in_place<int32_t>(LP64); }
TEST(CblasConjugation, TriangularInPlaceIlp64) { triangular_in_place<int64_t>(ILP64); }

// ?her2: the copy of y stands where x goes and the copy of x where y goes.
TEST(CblasConjugation, Her2ExchangesTheCopies) {
  set_layer(ILP64);
  Args<int64_t> args(cblas_case("cblas_zher2"), {{"layout", 101}, {"n", 2}});
  fill(args.buffer("x"), 2, 1);
  double* y = args.buffer("y");
  for (int k = 0; k < 4; ++k) y[k] = 10 + k;
  // zher2(uplo, n, alpha, x, incx, y, incy, a, lda): x word 3
  watch_call("qnl_blas_zher2", 3, 32, nullptr, 0);
  args.run();
  ASSERT_EQ(g_watch.hits, 1);
  EXPECT_EQ(g_watch.behind[0], 10);
  EXPECT_EQ(g_watch.behind[1], -11);
  EXPECT_EQ(g_watch.behind[3], -13);
  EXPECT_EQ(qnl_probe_live_allocations(), 0);
}

}  // namespace
