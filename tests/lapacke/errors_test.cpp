// LAPACKE's own reports and return codes on the probe back-end, and the layout kit's
// edge cases through its exported names.
#define LAPACK_COMPLEX_CPP
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "lapacke.h"
#include "lapacke_utils.h"
#include "probe_backend.h"
#include "test_util.h"

namespace {

const double kNan = std::nan("");

using qnl_test::printed;

struct Errors : ::testing::Test {
  std::vector<double> a = std::vector<double>(64, 1.0), b = std::vector<double>(64, 1.0);
  void SetUp() override {
    qnl_probe_reset();
    qnl_probe_set_hook(nullptr);
  }
};

TEST_F(Errors, BadLayoutIsParameterOneAtEitherLevel) {
  lapack_int info = 0;
  EXPECT_EQ(printed([&] { info = LAPACKE_dgels(100, 'N', 3, 3, 1, a.data(), 3, b.data(), 3); }),
            "Wrong parameter 1 in LAPACKE_dgels\n");
  EXPECT_EQ(info, -1);
  double work[8];
  EXPECT_EQ(printed([&] { info = LAPACKE_dgels_work(0, 'N', 3, 3, 1, a.data(), 3, b.data(), 3, work, 8); }),
            "Wrong parameter 1 in LAPACKE_dgels_work\n");
  EXPECT_EQ(info, -1);
  EXPECT_EQ(qnl_probe_count_of("qnl_lapack_dgels"), 0);
}

TEST_F(Errors, NanReturnsItsParameterSilentlyAndUntouched) {
  a[4] = kNan;
  lapack_int info = 0;
  EXPECT_EQ(printed([&] { info = LAPACKE_dgels(LAPACK_COL_MAJOR, 'N', 3, 3, 1, a.data(), 3, b.data(), 3); }), "");
  EXPECT_EQ(info, -6);
  a[4] = 1.0;
  b[1] = kNan;
  EXPECT_EQ(LAPACKE_dgels(LAPACK_ROW_MAJOR, 'N', 3, 3, 1, a.data(), 3, b.data(), 1), -8);
  EXPECT_EQ(qnl_probe_count_of("qnl_lapack_dgels"), 0);
  // dsyevd scans the whole square, dsyev the stored triangle only.
  std::vector<double> s(9, 1.0), w(3);
  s[1] = kNan;  // below the diagonal, column-major
  EXPECT_EQ(LAPACKE_dsyevd(LAPACK_COL_MAJOR, 'V', 'U', 3, s.data(), 3, w.data()), -5);
  EXPECT_EQ(LAPACKE_dsyev(LAPACK_COL_MAJOR, 'V', 'U', 3, s.data(), 3, w.data()), 0);
}

TEST_F(Errors, NanGateCanBeTurnedOff) {
  a[0] = kNan;
  LAPACKE_set_nancheck(0);
  EXPECT_EQ(LAPACKE_get_nancheck(), 0);
  EXPECT_EQ(LAPACKE_dgels(LAPACK_COL_MAJOR, 'N', 3, 3, 1, a.data(), 3, b.data(), 3), 0);
  LAPACKE_set_nancheck(7);
  EXPECT_EQ(LAPACKE_get_nancheck(), 1);
  EXPECT_EQ(LAPACKE_dgels(LAPACK_COL_MAJOR, 'N', 3, 3, 1, a.data(), 3, b.data(), 3), -6);
}

// The environment is read once, by the first get: only a value that parses to 0 turns
// the checks off. Each value runs in its own process (one test per process under CTest).
class NanEnvironment : public ::testing::TestWithParam<std::pair<const char*, int>> {};
TEST_P(NanEnvironment, FirstReadDecides) {
  auto [value, expected] = GetParam();
  if (value)
    setenv("LAPACKE_NANCHECK", value, 1);
  else
    unsetenv("LAPACKE_NANCHECK");
  EXPECT_EQ(LAPACKE_get_nancheck(), expected);
  setenv("LAPACKE_NANCHECK", expected ? "0" : "1", 1);
  EXPECT_EQ(LAPACKE_get_nancheck(), expected);
}
INSTANTIATE_TEST_SUITE_P(Values, NanEnvironment,
                         ::testing::Values(std::make_pair(nullptr, 1), std::make_pair("", 1), std::make_pair("0", 0),
                                           std::make_pair("1", 1), std::make_pair("2", 1), std::make_pair("off", 0)));

TEST_F(Errors, RowMajorLeadingDimensionBelowTheColumnsIsReported) {
  double work[8];
  lapack_int info = 0;
  int before = qnl_probe_allocations();
  EXPECT_EQ(
      printed([&] { info = LAPACKE_dgels_work(LAPACK_ROW_MAJOR, 'N', 3, 4, 1, a.data(), 3, b.data(), 1, work, 8); }),
      "Wrong parameter 7 in LAPACKE_dgels_work\n");
  EXPECT_EQ(info, -7);
  EXPECT_EQ(qnl_probe_allocations(), before);
}

TEST_F(Errors, RowMajorQueryMakesNoCopy) {
  double work[1];
  int before = qnl_probe_allocations();
  EXPECT_EQ(LAPACKE_dgels_work(LAPACK_ROW_MAJOR, 'N', 3, 3, 1, a.data(), 3, b.data(), 1, work, -1), 0);
  EXPECT_EQ(qnl_probe_allocations(), before);
  EXPECT_EQ(qnl_probe_count_of("qnl_lapack_dgels"), 1);
}

void fortran_reports_minus_three(const char* symbol, const uint64_t* w, int n) {
  if (std::string(symbol) == "qnl_lapack_dgetrf") *reinterpret_cast<int64_t*>(w[n - 1]) = -3;
}

TEST_F(Errors, FortranArgumentNumberComesBackOneHigher) {
  qnl_probe_set_hook(fortran_reports_minus_three);
  lapack_int ipiv[3];
  EXPECT_EQ(LAPACKE_dgetrf(LAPACK_COL_MAJOR, 3, 3, a.data(), 3, ipiv), -4);
  qnl_probe_set_hook(nullptr);
}

TEST_F(Errors, NoMemoryForWorkOrCopies) {
  lapack_int info = 0;
  // The work array after the query: -1010 at the high level.
  qnl_probe_fail_allocations(1);
  EXPECT_EQ(printed([&] { info = LAPACKE_dgels(LAPACK_COL_MAJOR, 'N', 3, 3, 1, a.data(), 3, b.data(), 3); }),
            "Not enough memory to allocate work array in LAPACKE_dgels\n");
  EXPECT_EQ(info, -1010);
  // A transposed copy: -1011 at the middle level.
  double work[8];
  qnl_probe_fail_allocations(1);
  EXPECT_EQ(
      printed([&] { info = LAPACKE_dgels_work(LAPACK_ROW_MAJOR, 'N', 3, 3, 1, a.data(), 3, b.data(), 1, work, 8); }),
      "Not enough memory to transpose matrix in LAPACKE_dgels_work\n");
  EXPECT_EQ(info, -1011);
  EXPECT_EQ(qnl_probe_live_allocations(), 0);
}

TEST_F(Errors, RowMajorPotrfExchangesUploAndCopiesNothing) {
  int before = qnl_probe_allocations();
  EXPECT_EQ(LAPACKE_dpotrf(LAPACK_ROW_MAJOR, 'u', 3, a.data(), 3), 0);
  EXPECT_EQ(qnl_probe_allocations(), before);
  const qnl_probe::Call* c = qnl_probe_call(-1);
  ASSERT_STREQ(c->symbol, "qnl_lapack_dpotrf");
  EXPECT_EQ(*reinterpret_cast<const char*>(c->word[0]), 'L');
  EXPECT_EQ(c->word[2], reinterpret_cast<uintptr_t>(a.data()));
}

// A function's codes come back as its value; a failed work array as 0.
TEST_F(Errors, FunctionValuedRoutinesReturnTheirCodesAsValues) {
  double v = 0;
  EXPECT_EQ(printed([&] { v = LAPACKE_dlange(100, 'I', 3, 3, a.data(), 3); }), "Wrong parameter 1 in LAPACKE_dlange\n");
  EXPECT_EQ(v, -1.0);
  a[2] = kNan;
  EXPECT_EQ(LAPACKE_dlange(LAPACK_COL_MAJOR, 'I', 3, 3, a.data(), 3), -5.0);
  a[2] = 1.0;
  int before = qnl_probe_allocations();
  LAPACKE_dlange(LAPACK_COL_MAJOR, 'O', 3, 3, a.data(), 3);  // only the infinity norm takes work
  EXPECT_EQ(qnl_probe_allocations(), before);
  qnl_probe_fail_allocations(1);
  EXPECT_EQ(printed([&] { v = LAPACKE_dlange(LAPACK_COL_MAJOR, 'i', 3, 3, a.data(), 3); }),
            "Not enough memory to allocate work array in LAPACKE_dlange\n");
  EXPECT_EQ(v, 0.0);
  EXPECT_EQ(qnl_probe_count_of("qnl_lapack_dlange"), 1);
}

// The packing routines report under the plain name; row-major checks uplo, then lda
// against the columns of the block as trans lays it (3 by 2, or 2 by 3 with "t").
TEST_F(Errors, PackingChecksAndNames) {
  const struct {
    int layout;
    char uplo, trans;
    lapack_int lda, info;
    const char* said;
  } rows[] = {{100, 'U', 'N', 3, -1, "Wrong parameter 1 in LAPACKE_dtppack\n"},
              {LAPACK_ROW_MAJOR, 'x', 'N', 3, -2, "Wrong parameter 2 in LAPACKE_dtppack_work\n"},
              {LAPACK_ROW_MAJOR, 'U', 'T', 2, -11, "Wrong parameter 11 in LAPACKE_dtppack_work\n"},
              {LAPACK_ROW_MAJOR, 'U', 'N', 2, 0, ""}};
  for (const auto& r : rows) {
    lapack_int info = 1;
    EXPECT_EQ(printed([&] {
                info = LAPACKE_qnl_dtppack(r.layout, r.uplo, r.trans, 4, b.data(), 1, 1, 3, 2, a.data(), r.lda);
              }),
              r.said);
    EXPECT_EQ(info, r.info);
  }
  a[1] = kNan;
  EXPECT_EQ(LAPACKE_qnl_dtppack(LAPACK_COL_MAJOR, 'U', 'N', 4, b.data(), 1, 1, 3, 2, a.data(), 3), -10);
  EXPECT_EQ(qnl_probe_count_of("qnl_lapack_dtppack"), 1);
}

TEST(Xerbla, TextsAndSilence) {
  EXPECT_EQ(printed([] { LAPACKE_xerbla("LAPACKE_x", -1010); }),
            "Not enough memory to allocate work array in LAPACKE_x\n");
  EXPECT_EQ(printed([] { LAPACKE_xerbla("LAPACKE_x", -1011); }),
            "Not enough memory to transpose matrix in LAPACKE_x\n");
  EXPECT_EQ(printed([] { LAPACKE_xerbla("LAPACKE_x", -12); }), "Wrong parameter 12 in LAPACKE_x\n");
  EXPECT_EQ(printed([] { LAPACKE_xerbla("LAPACKE_x", 3); }), "");
  EXPECT_TRUE(LAPACKE_lsame('a', 'A'));
  EXPECT_FALSE(LAPACKE_lsame('a', 'b'));
}

// The conjugate transposition is the same public copy with operation "c".
TEST(Kit, ConjugateTransposeGoesThroughTheCopy) {
  std::complex<double> in[4] = {}, out[4] = {};
  qnl_probe_reset();
  LAPACKE_zge_transc(LAPACK_ROW_MAJOR, 2, 2, in, 2, out, 2);
  ASSERT_EQ(qnl_probe_count_of("qnl_trans_qnl_zomatcopy"), 1);
  const qnl_probe::Call* c = qnl_probe_call(-1);
  EXPECT_EQ(static_cast<char>(c->word[0]), 'r');
  EXPECT_EQ(static_cast<char>(c->word[1]), 'c');
}

// The kit reaches elements 2^31 places into the caller's array (column 2 of a leading
// dimension of 2^30) in LP64: a 32-bit j*lda would wrap to an address before the array.
// The array is an address range of untouched zero pages; only the cells used cost memory.
TEST(Kit, OffsetsPast32BitsStayInTheArray) {
  constexpr lapack_int ld = lapack_int(1) << 30;
  constexpr size_t far = size_t(2) * size_t(ld), bytes = (far + 64) * sizeof(float);
  void* range = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (range == MAP_FAILED) GTEST_SKIP() << "no 8 GiB address range";
  float* big = static_cast<float*>(range);
  const float nan = std::nanf("");
  big[far] = nan;  // element (0, 2)
  EXPECT_TRUE(LAPACKE_sge_nancheck(LAPACK_COL_MAJOR, 1, 3, big, ld));
  EXPECT_TRUE(LAPACKE_sge_nancheck(LAPACK_ROW_MAJOR, 3, 1, big, ld));
  EXPECT_TRUE(LAPACKE_str_nancheck(LAPACK_COL_MAJOR, 'U', 'N', 3, big, ld));
  EXPECT_TRUE(LAPACKE_sgb_nancheck(LAPACK_COL_MAJOR, 3, 3, 0, 0, big, ld));
  EXPECT_TRUE(LAPACKE_shs_nancheck(LAPACK_COL_MAJOR, 3, big, ld));
  // Copies out of and into the far column.
  float small[9] = {};
  big[far + 2] = nan;  // element (2, 2)
  LAPACKE_str_trans(LAPACK_COL_MAJOR, 'L', 'N', 3, big, ld, small, 3);
  EXPECT_TRUE(std::isnan(small[8]));
  small[2] = 0;
  LAPACKE_sgb_trans(LAPACK_COL_MAJOR, 3, 3, 0, 0, big, ld, small, 3);
  EXPECT_TRUE(std::isnan(small[2]));
  big[far + 1] = 0;
  small[5] = nan;  // row-major (1, 2)
  LAPACKE_str_trans(LAPACK_ROW_MAJOR, 'U', 'N', 3, small, 3, big, ld);
  EXPECT_TRUE(std::isnan(big[far + 1]));
  munmap(range, bytes);
}

}  // namespace
