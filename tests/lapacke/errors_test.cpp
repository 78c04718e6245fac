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

// One call on fresh 64-element matrices of ones: what it prints, what it returns, how many
// calls reach its Fortran entry and how many blocks it allocates (-1: not looked at).
struct Row {
  const char* symbol;
  const char* said;
  double code;
  int entered;
  int allocations;
  bool starve;  // the first allocation fails
  double (*call)(double* a, double* b);
};

constexpr int C = LAPACK_COL_MAJOR, R = LAPACK_ROW_MAJOR;
// clang-format off
const Row kRows[] = {
    // a bad layout is parameter 1 at either level
    {"dgels", "Wrong parameter 1 in LAPACKE_dgels\n", -1, 0, 0, false,
     [](double* a, double* b) -> double { return LAPACKE_dgels(100, 'N', 3, 3, 1, a, 3, b, 3); }},
    {"dgels", "Wrong parameter 1 in LAPACKE_dgels_work\n", -1, 0, 0, false,
     [](double* a, double* b) -> double { return LAPACKE_dgels_work(0, 'N', 3, 3, 1, a, 3, b, 3, b + 32, 8); }},
    // a NaN returns its parameter silently, before the back-end
    {"dgels", "", -6, 0, -1, false,
     [](double* a, double* b) -> double { a[4] = kNan; return LAPACKE_dgels(C, 'N', 3, 3, 1, a, 3, b, 3); }},
    {"dgels", "", -8, 0, -1, false,
     [](double* a, double* b) -> double { b[1] = kNan; return LAPACKE_dgels(R, 'N', 3, 3, 1, a, 3, b, 1); }},
    // dsyevd scans the whole square, dsyev the stored triangle only (a[1] is below the diagonal)
    {"dsyevd", "", -5, 0, -1, false,
     [](double* a, double* b) -> double { a[1] = kNan; return LAPACKE_dsyevd(C, 'V', 'U', 3, a, 3, b); }},
    {"dsyev", "", 0, -1, -1, false,
     [](double* a, double* b) -> double { a[1] = kNan; return LAPACKE_dsyev(C, 'V', 'U', 3, a, 3, b); }},
    // a row-major leading dimension below the columns, before any copy; a row-major query makes none
    {"dgels", "Wrong parameter 7 in LAPACKE_dgels_work\n", -7, 0, 0, false,
     [](double* a, double* b) -> double { return LAPACKE_dgels_work(R, 'N', 3, 4, 1, a, 3, b, 1, b + 32, 8); }},
    {"dgels", "", 0, 1, 0, false,
     [](double* a, double* b) -> double { return LAPACKE_dgels_work(R, 'N', 3, 3, 1, a, 3, b, 1, b + 32, -1); }},
    // no memory: the work array after the query (high level), a transposed copy (middle level)
    {"dgels", "Not enough memory to allocate work array in LAPACKE_dgels\n", -1010, 1, -1, true,
     [](double* a, double* b) -> double { return LAPACKE_dgels(C, 'N', 3, 3, 1, a, 3, b, 3); }},
    {"dgels", "Not enough memory to transpose matrix in LAPACKE_dgels_work\n", -1011, 0, -1, true,
     [](double* a, double* b) -> double { return LAPACKE_dgels_work(R, 'N', 3, 3, 1, a, 3, b, 1, b + 32, 8); }},
    // a function's codes come back as its value, a failed work array as 0; only the
    // infinity norm takes work
    {"dlange", "Wrong parameter 1 in LAPACKE_dlange\n", -1, 0, 0, false,
     [](double* a, double*) -> double { return LAPACKE_dlange(100, 'I', 3, 3, a, 3); }},
    {"dlange", "", -5, 0, 0, false,
     [](double* a, double*) -> double { a[2] = kNan; return LAPACKE_dlange(C, 'I', 3, 3, a, 3); }},
    {"dlange", "", 0, 1, 0, false, [](double* a, double*) -> double { return LAPACKE_dlange(C, 'O', 3, 3, a, 3); }},
    {"dlange", "Not enough memory to allocate work array in LAPACKE_dlange\n", 0, 0, -1, true,
     [](double* a, double*) -> double { return LAPACKE_dlange(C, 'i', 3, 3, a, 3); }},
    // the packing routines report under the plain name; row-major checks uplo, then lda
    // against the columns of the block as trans lays it (3 by 2, or 2 by 3 with "t")
    {"dtppack", "Wrong parameter 1 in LAPACKE_dtppack\n", -1, 0, 0, false,
     [](double* a, double* b) -> double { return LAPACKE_qnl_dtppack(100, 'U', 'N', 4, b, 1, 1, 3, 2, a, 3); }},
    {"dtppack", "Wrong parameter 2 in LAPACKE_dtppack_work\n", -2, 0, 0, false,
     [](double* a, double* b) -> double { return LAPACKE_qnl_dtppack(R, 'x', 'N', 4, b, 1, 1, 3, 2, a, 3); }},
    {"dtppack", "Wrong parameter 11 in LAPACKE_dtppack_work\n", -11, 0, 0, false,
     [](double* a, double* b) -> double { return LAPACKE_qnl_dtppack(R, 'U', 'T', 4, b, 1, 1, 3, 2, a, 2); }},
    {"dtppack", "", 0, 1, -1, false,
     [](double* a, double* b) -> double { return LAPACKE_qnl_dtppack(R, 'U', 'N', 4, b, 1, 1, 3, 2, a, 2); }},
    {"dtppack", "", -10, 0, 0, false,
     [](double* a, double* b) -> double { a[1] = kNan; return LAPACKE_qnl_dtppack(C, 'U', 'N', 4, b, 1, 1, 3, 2, a, 3); }},
};
// clang-format on

TEST_F(Errors, ReportsCodesAndWhatReachesTheBackEnd) {
  for (const Row& r : kRows) {
    SCOPED_TRACE(testing::Message() << r.symbol << " row " << (&r - kRows));
    std::vector<double> a(64, 1.0), b(64, 1.0);
    const std::string symbol = std::string("qnl_lapack_") + r.symbol;
    const int calls = qnl_probe_count_of(symbol.c_str()), blocks = qnl_probe_allocations();
    if (r.starve) qnl_probe_fail_allocations(1);
    double code = 0;
    EXPECT_EQ(printed([&] { code = r.call(a.data(), b.data()); }), r.said);
    qnl_probe_fail_allocations(0);
    EXPECT_EQ(code, r.code);
    if (r.entered >= 0) {
      EXPECT_EQ(qnl_probe_count_of(symbol.c_str()) - calls, r.entered);
    }
    if (r.allocations >= 0) {
      EXPECT_EQ(qnl_probe_allocations() - blocks, r.allocations);
    }
    EXPECT_EQ(qnl_probe_live_allocations(), 0);
  }
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

void fortran_reports_minus_three(const char* symbol, const uint64_t* w, int n) {
  if (std::string(symbol) == "qnl_lapack_dgetrf") *reinterpret_cast<int64_t*>(w[n - 1]) = -3;
}

TEST_F(Errors, FortranArgumentNumberComesBackOneHigher) {
  qnl_probe_set_hook(fortran_reports_minus_three);
  lapack_int ipiv[3];
  EXPECT_EQ(LAPACKE_dgetrf(LAPACK_COL_MAJOR, 3, 3, a.data(), 3, ipiv), -4);
  qnl_probe_set_hook(nullptr);
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

TEST(Xerbla, APositiveCodeIsSilent) {
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
