// cblas_?gemm_batch: the whole description is checked before any call. What the chunks of
// the Fortran batch entry compute is compared with OpenBLAS in cblas_oracle_test.
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

void start(Layer layer) {
  set_layer(layer);
  qnl_probe_reset();
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
  start(LP64);
  for (const auto& bc : kChecks) {
    SCOPED_TRACE(bc.what);
    qnl_probe_reset();
    Batch<int32_t> b(1030);
    bc.spoil(b);
    b.run("cblas_dgemm_batch", bc.layout);
    EXPECT_EQ(cblas_reports("cblas_dgemm_batch"), std::vector<int32_t>{bc.number});
    EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm_batch"), 0) << "no chunk ran";
  }
}

TEST(CblasBatch, NoGroupsNoCall) {
  start(ILP64);
  Batch<int64_t> b(0);
  b.run("cblas_sgemm_batch");
  EXPECT_TRUE(reports().empty());
  EXPECT_EQ(qnl_probe_count(), 0) << "no call, no allocation";
}

}  // namespace
