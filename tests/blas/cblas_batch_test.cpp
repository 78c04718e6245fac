// cblas_?gemm_batch: the whole description is checked before any call, then the Fortran
// batch entry runs in chunks of 1024 groups with the group and matrix offsets.
#include <dlfcn.h>

#include <algorithm>
#include <set>
#include <vector>

#include "cblas_harness.h"

using namespace cblas_test;

namespace {

template <class I>
struct Batch {
  using Fn = void (*)(CBLAS_LAYOUT, const CBLAS_TRANSPOSE*, const CBLAS_TRANSPOSE*, const I*, const I*, const I*,
                      const double*, const double**, const I*, const double**, const I*, const double*, double**,
                      const I*, I, const I*);
  // Arrays have at least one element, so that none is null unless a test makes it so.
  explicit Batch(int64_t groups, int size = 2) : Batch(groups, std::max<int64_t>(groups, 1), size) {}
  Batch(int64_t groups, int64_t len, int size)
      : transa(len, CblasNoTrans),
        transb(len, CblasNoTrans),
        m(len, 3),
        n(len, 4),
        k(len, 5),
        lda(len, 5),
        ldb(len, 5),
        ldc(len, 5),
        group_size(len, size),
        alpha(2 * len, 1.0),
        beta(2 * len, 0.0),
        count(static_cast<I>(groups)) {
    const size_t matrices = static_cast<size_t>(groups) * (size > 0 ? size : 0) + 1;
    a.assign(matrices, nullptr);
    b.assign(matrices, nullptr);
    c.assign(matrices, nullptr);
  }
  void run(const char* name = "cblas_dgemm_batch", CBLAS_LAYOUT layout = CblasColMajor) {
    auto f = reinterpret_cast<Fn>(dlsym(RTLD_DEFAULT, name));
    f(layout, ptr(transa), ptr(transb), ptr(m), ptr(n), ptr(k), alpha.data(), const_cast<const double**>(a.data()),
      ptr(lda), const_cast<const double**>(b.data()), ptr(ldb), beta.data(), c.data(), ptr(ldc), count,
      ptr(group_size));
  }
  template <class T>
  const T* ptr(const std::vector<T>& v) const {
    return nulled.count(&v) ? nullptr : v.data();
  }

  std::vector<CBLAS_TRANSPOSE> transa, transb;
  std::vector<I> m, n, k, lda, ldb, ldc, group_size;
  std::vector<double> alpha, beta;
  std::vector<double*> a, b, c;
  I count;
  std::set<const void*> nulled;
};

// What each chunk's call carried: the group count behind its pointer and the first and last
// option letters of the chunk.
struct Chunk {
  uint64_t words[15];
  int64_t groups;
  char first_a, last_a, first_b;
};
std::vector<Chunk> g_chunks;
bool g_wide = false;

void batch_hook(const char* symbol, const uint64_t* w, int) {
  if (std::strstr(symbol, "gemm") == nullptr || std::strstr(symbol, "_batch") == nullptr) return;
  Chunk ch{};
  std::memcpy(ch.words, w, sizeof ch.words);
  ch.groups = g_wide ? *reinterpret_cast<const int64_t*>(w[13]) : *reinterpret_cast<const int32_t*>(w[13]);
  const char* ta = reinterpret_cast<const char*>(w[0]);
  ch.first_a = ta[0];
  ch.last_a = ta[ch.groups - 1];
  ch.first_b = reinterpret_cast<const char*>(w[1])[0];
  g_chunks.push_back(ch);
}

template <class I>
void start(Layer layer) {
  set_layer(layer);
  g_wide = layer == ILP64;
  g_chunks.clear();
  qnl_probe_set_hook(batch_hook);
}

uint64_t addr(const void* p) { return reinterpret_cast<uintptr_t>(p); }

template <class I>
void chunks(Layer layer) {
  start<I>(layer);
  {
    Batch<I> one(1024);
    one.transa[1023] = CblasConjTrans;
    one.run();
    ASSERT_EQ(g_chunks.size(), 1u);
    EXPECT_EQ(g_chunks[0].groups, 1024);
    EXPECT_EQ(g_chunks[0].last_a, 'C');
  }
  g_chunks.clear();
  Batch<I> two(1025, 2);
  two.group_size[7] = 5;     // the first chunk holds 1023 * 2 + 5 matrices
  two.group_size[1024] = 0;  // not an error
  two.transa[1024] = CblasTrans;
  two.run();
  EXPECT_TRUE(reports().empty());
  ASSERT_EQ(g_chunks.size(), 2u);
  const Chunk& second = g_chunks[1];
  EXPECT_EQ(second.groups, 1);
  EXPECT_EQ(second.first_a, 'T');
  EXPECT_EQ(second.words[2], addr(&two.m[1024]));
  EXPECT_EQ(second.words[3], addr(&two.n[1024]));
  EXPECT_EQ(second.words[4], addr(&two.k[1024]));
  EXPECT_EQ(second.words[5], addr(&two.alpha[1024]));
  EXPECT_EQ(second.words[6], addr(&two.a[1023 * 2 + 5]));
  EXPECT_EQ(second.words[7], addr(&two.lda[1024]));
  EXPECT_EQ(second.words[8], addr(&two.b[1023 * 2 + 5]));
  EXPECT_EQ(second.words[9], addr(&two.ldb[1024]));
  EXPECT_EQ(second.words[10], addr(&two.beta[1024]));
  EXPECT_EQ(second.words[11], addr(&two.c[1023 * 2 + 5]));
  EXPECT_EQ(second.words[12], addr(&two.ldc[1024]));
  EXPECT_EQ(second.words[14], addr(&two.group_size[1024]));
  EXPECT_EQ(g_chunks[0].words[6], addr(two.a.data()));
  EXPECT_EQ(g_chunks[0].groups, 1024);
}

TEST(CblasBatch, ChunksOf1024Lp64) { chunks<int32_t>(LP64); }
TEST(CblasBatch, ChunksOf1024Ilp64) { chunks<int64_t>(ILP64); }

TEST(CblasBatch, ComplexScalarsAdvanceOneComplexPerGroup) {
  start<int32_t>(LP64);
  Batch<int32_t> z(1025, 1);
  z.alpha.resize(2 * 1025);
  z.run("cblas_zgemm3m_batch");
  ASSERT_EQ(g_chunks.size(), 2u);
  EXPECT_EQ(g_chunks[1].words[5], addr(&z.alpha[2 * 1024]));
  EXPECT_EQ(g_chunks[1].words[10], addr(&z.beta[2 * 1024]));
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_zgemm3m_batch"), 2);
}

TEST(CblasBatch, RowMajorExchangesPerGroup) {
  start<int64_t>(ILP64);
  Batch<int64_t> r(2);
  // row-major NoTrans: lda against k, ldb against n, ldc against n
  r.lda.assign(2, 5);
  r.ldb.assign(2, 4);
  r.ldc.assign(2, 4);
  r.transa[1] = CblasTrans;      // lda against m = 3
  r.transb[0] = CblasConjTrans;  // ldb against k = 5
  r.ldb[0] = 5;
  r.run("cblas_dgemm_batch", CblasRowMajor);
  EXPECT_TRUE(reports().empty());
  ASSERT_EQ(g_chunks.size(), 1u);
  const Chunk& ch = g_chunks[0];
  EXPECT_EQ(ch.first_a, 'C') << "transb's letters come first";
  EXPECT_EQ(ch.first_b, 'N');
  EXPECT_EQ(ch.words[2], addr(r.n.data()));
  EXPECT_EQ(ch.words[3], addr(r.m.data()));
  EXPECT_EQ(ch.words[6], addr(r.b.data()));
  EXPECT_EQ(ch.words[7], addr(r.ldb.data()));
  EXPECT_EQ(ch.words[8], addr(r.a.data()));
  EXPECT_EQ(ch.words[9], addr(r.lda.data()));
  EXPECT_EQ(ch.words[11], addr(r.c.data()));
}

// The description's checks, in order, before any call; one report per array.
struct BatchCheck {
  const char* what;
  int32_t number;
  CBLAS_LAYOUT layout;
  void (*spoil)(Batch<int32_t>&);
};

const BatchCheck kChecks[] = {
    {"bad layout", 1, static_cast<CBLAS_LAYOUT>(7), [](Batch<int32_t>& b) { b.m[0] = -1; }},
    {"negative group count", 15, CblasColMajor, [](Batch<int32_t>& b) { b.count = -1; }},
    {"transa scanned before m", 2, CblasColMajor,
     [](Batch<int32_t>& b) {
       b.m[3] = -1;
       b.transa[5] = static_cast<CBLAS_TRANSPOSE>(110);
       b.transa[6] = static_cast<CBLAS_TRANSPOSE>(114);
     }},
    {"null transa", 2, CblasColMajor, [](Batch<int32_t>& b) { b.nulled.insert(&b.transa); }},
    {"transb", 3, CblasColMajor, [](Batch<int32_t>& b) { b.transb[7] = static_cast<CBLAS_TRANSPOSE>(0); }},
    {"null m", 4, CblasColMajor, [](Batch<int32_t>& b) { b.nulled.insert(&b.m); }},
    {"null m, no groups", 4, CblasColMajor,
     [](Batch<int32_t>& b) {
       b.count = 0;
       b.nulled.insert(&b.m);
     }},
    {"negative n", 5, CblasColMajor, [](Batch<int32_t>& b) { b.n[2] = -1; }},
    {"negative k", 6, CblasColMajor, [](Batch<int32_t>& b) { b.k[9] = -1; }},
    {"lda against m", 9, CblasColMajor, [](Batch<int32_t>& b) { b.lda[4] = 2; }},
    {"null lda", 9, CblasColMajor, [](Batch<int32_t>& b) { b.nulled.insert(&b.lda); }},
    {"row-major lda against k", 9, CblasRowMajor, [](Batch<int32_t>& b) { b.lda[4] = 4; }},
    {"ldb against k", 11, CblasColMajor, [](Batch<int32_t>& b) { b.ldb[4] = 4; }},
    {"row-major ldb against n", 11, CblasRowMajor, [](Batch<int32_t>& b) { b.ldb[4] = 3; }},
    {"null ldb", 11, CblasRowMajor, [](Batch<int32_t>& b) { b.nulled.insert(&b.ldb); }},
    {"ldc against m", 14, CblasColMajor, [](Batch<int32_t>& b) { b.ldc[0] = 2; }},
    {"row-major ldc against n", 14, CblasRowMajor, [](Batch<int32_t>& b) { b.ldc[0] = 3; }},
    {"null ldc", 14, CblasColMajor, [](Batch<int32_t>& b) { b.nulled.insert(&b.ldc); }},
};

TEST(CblasBatch, ChecksBeforeAnyWork) {
  start<int32_t>(LP64);
  for (const auto& bc : kChecks) {
    SCOPED_TRACE(bc.what);
    qnl_probe_reset();
    g_chunks.clear();
    Batch<int32_t> b(1030);
    bc.spoil(b);
    b.run("cblas_dgemm_batch", bc.layout);
    EXPECT_EQ(cblas_reports("cblas_dgemm_batch"), std::vector<int32_t>{bc.number});
    EXPECT_TRUE(g_chunks.empty()) << "no chunk ran";
  }
}

TEST(CblasBatch, NoGroupsNoCall) {
  start<int64_t>(ILP64);
  Batch<int64_t> b(0);
  b.run("cblas_sgemm_batch");
  EXPECT_TRUE(reports().empty());
  EXPECT_TRUE(g_chunks.empty());
  EXPECT_EQ(qnl_probe_allocations(), 0);
}

}  // namespace
