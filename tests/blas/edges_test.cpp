// Single behaviours of the BLAS entries: checker order, 64-bit reads, the sparse index copy,
// the batch, and the packed family.
#include "blas_harness.h"

using namespace blas_test;

extern "C" {
void dgemm_(const char*, const char*, const void*, const void*, const void*, const double*, const double*, const void*,
            const double*, const void*, const double*, double*, const void*, size_t, size_t);
double ddot_(const void*, const double*, const void*, const double*, const void*);
double ddoti_(const void*, const double*, const void*, const double*);
void dgemm_batch_(const char*, const char*, const void*, const void*, const void*, const double*, const void*,
                  const void*, const void*, const void*, const double*, void*, const void*, const void*, const void*);
void* dgemm_alloc_(const char*, const void*, const void*, const void*);
void dgemm_pack_(const char*, const char*, const void*, const void*, const void*, const double*, const double*,
                 const void*, void*);
void dgemm_compute_(const char*, const char*, const void*, const void*, const void*, const double*, const void*,
                    const double*, const void*, const double*, double*, const void*);
}

namespace {

double A[64], B[64], C[64], alpha = 1, beta = 0;

// dgemm on LP64 with 32-bit integers; the report number of the call, 0 if it passed.
int dgemm32(const char* ta, const char* tb, int32_t m, int32_t n, int32_t k, int32_t lda, int32_t ldb, int32_t ldc) {
  const size_t before = reports().size();
  const int calls = qnl_probe_count_of("qnl_blas_dgemm");
  dgemm_(ta, tb, &m, &n, &k, &alpha, A, &lda, B, &ldb, &beta, C, &ldc, 1, 1);
  auto r = reports();
  if (r.size() == before) {
    EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm"), calls + 1);
    return 0;
  }
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm"), calls) << "a rejected call reaches no back-end";
  return r.back().number;
}

// The Fortran testers' error exits prove every parameter number; these are the orders and
// spellings they do not try.
TEST(Checker, DgemmOrderAndSpellings) {
  set_layer(LP64);
  EXPECT_EQ(dgemm32("X", "N", -1, 2, 2, 2, 2, 2), 1) << "option before size";
  EXPECT_EQ(dgemm32("n", "t", 2, 3, 4, 2, 3, 2), 0) << "lower case passes";
  EXPECT_EQ(dgemm32("N", "N", 0, 0, 0, 1, 1, 1), 0) << "larger of 1";
  EXPECT_EQ(dgemm32("N", "N", 0, 0, 0, 0, 1, 1), 8);
}

TEST(Checker, DgemmIlp64ReadsSixtyFourBits) {
  set_layer(ILP64);
  set_verbose(1);
  // 2^32 + 5 is positive at 64 bits: it passes, and the record shows its low half
  int64_t m = (int64_t{1} << 32) + 5, n = 2, k = 2, lda = m, ldb = 2, ldc = m;
  dgemm_("N", "N", &m, &n, &k, &alpha, A, &lda, B, &ldb, &beta, C, &ldc, 1, 1);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm"), 1);
  std::string rec = qnl_probe_verbose_line(-1)->record;
  EXPECT_EQ(rec.substr(0, 14), "DGEMM(N,N,5,2,");
  // 32-bit -1 in the low half with a clean upper half is positive at 64 bits
  int64_t m2 = 0xffffffffll;
  int64_t lda2 = m2;
  ldc = m2;
  dgemm_("N", "N", &m2, &n, &k, &alpha, A, &lda2, B, &ldb, &beta, C, &ldc, 1, 1);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm"), 2);
  EXPECT_TRUE(reports().empty());
}

TEST(Frame, DdotHasNoCheck) {
  set_layer(LP64);
  int32_t n = -4, inc = 0;
  ddot_(&n, A, &inc, B, &inc);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_ddot"), 1);
  EXPECT_TRUE(reports().empty());
  const qnl_probe::Call* c = last_call_of("qnl_blas_ddot");
  EXPECT_EQ(static_cast<int64_t>(c->word[5]), -4) << "sign-extended";
}

// ddoti's index array: copied and sign-extended on LP64 (eight bytes for an empty one), the
// report 1089 when the copy cannot be allocated, the caller's array on ILP64.
TEST(Sparse, DdotiIndexCopy) {
  set_layer(LP64);
  int32_t nz = 3, idx[3] = {-2, 0, 70000};
  qnl_probe_set_result("qnl_blas_ddoti", 0x4000000000000000ull);  // 2.0
  EXPECT_EQ(ddoti_(&nz, A, idx, B), 2.0);
  EXPECT_EQ(qnl_probe_last_allocation_size(), 24u);
  EXPECT_EQ(last_call_of("qnl_serv_allocate")->word[1], 128u) << "alignment";
  const qnl_probe::Call* c = last_call_of("qnl_blas_ddoti");
  EXPECT_EQ(std::vector<int64_t>(c->word + 5, c->word + 8), (std::vector<int64_t>{-2, 0, 70000}));
  nz = 0;
  ddoti_(&nz, A, idx, B);
  EXPECT_EQ(qnl_probe_last_allocation_size(), 8u);
  EXPECT_EQ(last_call_of("qnl_blas_ddoti")->nwords, 5) << "nothing copied";
  EXPECT_EQ(qnl_probe_live_allocations(), 0);
  EXPECT_EQ(qnl_probe_count_of("qnl_serv_deallocate"), 2);
  set_verbose(1);
  qnl_probe_fail_allocations(1);
  nz = 2;
  EXPECT_EQ(ddoti_(&nz, A, idx, B), 0.0);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_ddoti"), 2);
  ASSERT_EQ(reports().size(), 1u);
  EXPECT_EQ(reports()[0].number, 1089);
  EXPECT_EQ(qnl_probe_verbose_count(), 0) << "no record for a call that never formed";
}

TEST(Sparse, DdotiAllocatesNothingOnIlp64) {
  set_layer(ILP64);
  int64_t nz = 2, idx[2] = {1, 2};
  ddoti_(&nz, A, idx, B);
  EXPECT_EQ(qnl_probe_allocations(), 0);
  EXPECT_EQ(last_call_of("qnl_blas_ddoti")->word[2], reinterpret_cast<uintptr_t>(idx));
}

// The batch, on the caller's width I.
template <class I>
int batch(int groups, const char* ta, const char* tb, std::vector<I> m, std::vector<I> n, std::vector<I> k,
          std::vector<I> lda, std::vector<I> ldb, std::vector<I> ldc, std::vector<I> size) {
  const size_t before = reports().size();
  I gc = groups;
  const void* ptrs[8] = {};
  dgemm_batch_(ta, tb, m.data(), n.data(), k.data(), &alpha, ptrs, lda.data(), ptrs, ldb.data(), &beta, ptrs,
               ldc.data(), &gc, size.data());
  auto r = reports();
  return r.size() == before ? 0 : r.back().number;
}

TEST(Batch, GroupCountZeroReachesTheBackEnd) {
  set_layer(LP64);
  EXPECT_EQ(batch<int32_t>(0, "", "", {}, {}, {}, {}, {}, {}, {}), 0);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm_batch"), 1);
  EXPECT_EQ(last_call_of("qnl_blas_dgemm_batch")->word[15], 1u) << "LP64 word";
}

TEST(Batch, ParameterThenGroupOrderLp64) {
  set_layer(LP64);
  // a bad m in group 3 and a bad option in group 5: the option wins
  std::vector<int32_t> ok(5, 4), m = ok;
  m[2] = -1;
  EXPECT_EQ(batch<int32_t>(5, "NNNNX", "NNNNN", m, ok, ok, ok, ok, ok, ok), 1);
  EXPECT_EQ(batch<int32_t>(5, "NNNNN", "NNTNN", m, ok, ok, ok, ok, ok, ok), 3);
  std::vector<int32_t> small(5, 1), size(5, 1);
  size[0] = -1;
  EXPECT_EQ(batch<int32_t>(5, "NNNNN", "NNNNN", ok, ok, ok, small, ok, ok, size), 8) << "lda before group_size";
  EXPECT_EQ(batch<int32_t>(5, "NNNNN", "NNNNN", ok, ok, ok, ok, ok, ok, size), 15);
  EXPECT_EQ(batch<int32_t>(-1, "", "", {}, {}, {}, {}, {}, {}, {}), 14);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm_batch"), 0);
}

TEST(Batch, Ilp64PassesZeroAndReadsSixtyFourBits) {
  set_layer(ILP64);
  std::vector<int64_t> ok(2, 4), ld(2, 4);
  ld[1] = int64_t{1} << 33;  // only a 64-bit read sees a large lda
  EXPECT_EQ(batch<int64_t>(2, "NT", "TN", ok, ok, ok, ld, ok, ok, std::vector<int64_t>(2, 1)), 0);
  EXPECT_EQ(last_call_of("qnl_blas_dgemm_batch")->word[15], 0u);
  std::vector<int64_t> m(2, 4);
  m[1] = -(int64_t{1} << 32);  // low half 0, negative at 64 bits
  EXPECT_EQ(batch<int64_t>(2, "NN", "NN", m, ok, ok, ok, ok, ok, std::vector<int64_t>(2, 1)), 3);
}

TEST(Packed, AllocPackCompute) {
  set_layer(LP64);
  int32_t m = 3, n = 7, k = 2, ld = 6, lda = 0, ldb = 2, ldc = 3;
  qnl_probe_set_result("qnl_blas_dgemm_alloc", 0xabc0);
  EXPECT_EQ(dgemm_alloc_("Q", &m, &n, &k), nullptr);
  EXPECT_EQ(reports().back().number, 1);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(dgemm_alloc_("b", &m, &n, &k)), 0xabc0u);
  EXPECT_EQ(last_call_of("qnl_blas_dgemm_alloc")->word[4], 1u) << "one hidden length";

  dgemm_pack_("B", "T", &m, &n, &k, &alpha, A, &ld, C);
  EXPECT_EQ(reports().back().number, 8) << "transposed B has n = 7 rows";
  ld = 7;
  dgemm_pack_("B", "T", &m, &n, &k, &alpha, A, &ld, C);
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm_pack"), 1);

  const size_t before = reports().size();
  dgemm_compute_("P", "N", &m, &n, &k, A, &lda, B, &ldb, &beta, C, &ldc);
  EXPECT_EQ(reports().size(), before) << "a packed operand's lda is not looked at";
  EXPECT_EQ(qnl_probe_count_of("qnl_blas_dgemm_compute"), 1);
  dgemm_compute_("N", "N", &m, &n, &k, A, &lda, B, &ldb, &beta, C, &ldc);
  EXPECT_EQ(reports().back().number, 7);
}

}  // namespace
