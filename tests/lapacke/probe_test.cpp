// LAPACKE on the probe back-end, by property, one routine per storage shape:
// - a row-major call reaches the Fortran entry with the arguments and the data a
//   column-major call with the transposed matrix delivers (the transposition checked
//   with the stock library's own kit, opened beside the facade);
// - the NaN gate fires at exactly the elements the stock kit's scan calls stored, with
//   the matrix's parameter number, and then the back-end is not reached;
// - workspace queries pass -1 and the next call uses the answer.
#define LAPACK_COMPLEX_CPP
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "lapacke.h"
#include "lapacke_utils.h"
#include "probe_backend.h"

namespace {

constexpr lapack_int N = 5, NRHS = 2, KL = 1, KU = 2, KD = 2;

// What the hook saw at the LAPACK back-end symbol of the call under test.
struct Seen {
  std::string symbol;
  int calls = 0;
  std::vector<uint64_t> words;
  std::vector<int64_t> values;  // 8 bytes behind each address-like word, read during the call
  std::vector<double> array;    // the matrix as the back-end got it
  int array_word = -1;
  size_t array_count = 0;
  double work_answer = 0;    // written to work[0] on a query
  int64_t iwork_answer = 0;  // written to iwork[0] on a query
  int work_word = -1, lwork_word = -1, iwork_word = -1, liwork_word = -1;
  std::vector<int64_t> lworks;  // lwork seen by each call
  std::vector<int64_t> liworks;
  int fill_word = -1;  // a workspace that a call other than a query fills with 1000, 1001, ...
  size_t fill_count = 0;
  std::vector<double> filled_from;  // that workspace as the call got it
};
Seen g_seen;

int64_t int_at(uint64_t w) { return *reinterpret_cast<const int64_t*>(w); }

// Reads 8 bytes behind an argument word: a character local is shorter, hence no ASan.
__attribute__((no_sanitize("address"))) int64_t peek(uint64_t w) {
  int64_t v = 0;
  if (w > 0xFFFF) std::memcpy(&v, reinterpret_cast<const void*>(w), sizeof v);
  return v;
}

// The probe's matrix copy records only: the hook does the transposition it was asked for.
void transpose_copy(const uint64_t* w) {
  char ordering = static_cast<char>(w[0]);
  size_t rows = w[2], cols = w[3];
  const double* a = reinterpret_cast<const double*>(w[5]);
  double* b = reinterpret_cast<double*>(w[7]);
  size_t lda = w[6], ldb = w[8];
  for (size_t i = 0; i < rows; ++i)
    for (size_t j = 0; j < cols; ++j) {
      if (ordering == 'C' || ordering == 'c')
        b[j + i * ldb] = a[i + j * lda];
      else
        b[i + j * ldb] = a[i * lda + j];
    }
}

void hook(const char* symbol, const uint64_t* w, int n) {
  if (!std::strcmp(symbol, "qnl_trans_qnl_domatcopy")) return transpose_copy(w);
  if (std::strncmp(symbol, "qnl_lapack_", 11) != 0) return;
  Seen& s = g_seen;
  s.symbol = symbol;
  ++s.calls;
  s.words.assign(w, w + n);
  s.values.clear();
  for (int k = 0; k < n; ++k) s.values.push_back(peek(w[k]));
  if (s.array_word >= 0) {
    const double* a = reinterpret_cast<const double*>(w[s.array_word]);
    s.array.assign(a, a + s.array_count);
  }
  if (s.fill_word >= 0 && (s.lwork_word < 0 || int_at(w[s.lwork_word]) != -1)) {
    double* work = reinterpret_cast<double*>(w[s.fill_word]);
    s.filled_from.assign(work, work + s.fill_count);
    for (size_t i = 0; i < s.fill_count; ++i) work[i] = 1000.0 + double(i);
  }
  if (s.lwork_word >= 0) {
    int64_t lwork = int_at(w[s.lwork_word]);
    int64_t liwork = s.liwork_word >= 0 ? int_at(w[s.liwork_word]) : 0;
    s.lworks.push_back(lwork);
    s.liworks.push_back(liwork);
    if (lwork == -1) {
      std::memcpy(reinterpret_cast<void*>(w[s.work_word]), &s.work_answer, sizeof(double));
      if (s.iwork_word >= 0) *reinterpret_cast<int64_t*>(w[s.iwork_word]) = s.iwork_answer;
    }
  }
}

// The stock library's kit, the independent oracle of every storage scheme.
void* stock() {
  // Only its kit is called, which calls nothing else: no need to keep its LAPACK apart.
  static void* h = dlopen("liblapacke.so.3", RTLD_NOW | RTLD_LOCAL);
  return h;
}
template <class F>
F* stock_fn(const char* name) {
  void* f = dlsym(stock(), name);
  EXPECT_NE(f, nullptr) << name;
  return reinterpret_cast<F*>(f);
}

// One routine per storage shape: how to call it, where its matrix reaches the back-end,
// and the stock kit's transposition and scan of that shape.
struct Shape {
  const char* routine;
  // The back-end's arguments: c character, i integer, a the matrix, L its leading
  // dimension, p other arrays, o info.
  const char* words;
  lapack_int ld_col;  // the column-major leading dimension of the copy
  lapack_int ld_row;  // the row-major leading dimension the test passes
  size_t col_count;   // elements of the column-major copy
  size_t row_count;   // elements of the row-major array
  int hpos;           // the matrix's parameter number
  std::function<lapack_int(int layout, double* a, lapack_int ld, double* b, lapack_int ldb)> call;
  // Stock: column-major `in` to `layout` `out`.
  std::function<void(int layout, const double* in, lapack_int ldin, double* out, lapack_int ldout)> trans;
  std::function<lapack_int(int layout, const double* a, lapack_int ld)> nancheck;
};

// The stock library's kit routine of that name, typed by our declaration of it.
#define STOCK(name) stock_fn<decltype(name)>(#name)

lapack_int ipiv[N] = {1, 2, 3, 4, 5};
constexpr size_t kPacked = N * (N + 1) / 2;

// A shape's call from its expression in l (layout), a, ld, b and ldb; the stock kit's
// transposition of a full or a packed matrix from its arguments before the arrays (to
// the layout from the other one); the stock kit's scan from its expression in l, a and ld.
#define CALL(expr) [](int l, double* a, [[maybe_unused]] lapack_int ld, double* b, lapack_int ldb) { return expr; }
#define TRANS(kit, ...)                                                               \
  [](int l, const double* in, lapack_int li, double* out, lapack_int lo) {            \
    STOCK(LAPACKE_##kit##_trans)(l == 101 ? 102 : 101, __VA_ARGS__, in, li, out, lo); \
  }
#define PACKED_TRANS(kit, ...)                                                \
  [](int l, const double* in, lapack_int, double* out, lapack_int) {          \
    STOCK(LAPACKE_##kit##_trans)(l == 101 ? 102 : 101, __VA_ARGS__, in, out); \
  }
#define SCAN(expr) []([[maybe_unused]] int l, const double* a, [[maybe_unused]] lapack_int ld) { return expr; }

std::vector<Shape> shapes() {
  constexpr size_t full = N * N, by_rows = N * (N + 1);
  constexpr lapack_int band = 2 * KL + KU + 1;
  return {
      {"dgetrs", "ciiaLpbLo", N, N + 1, full, by_rows, 5, CALL(LAPACKE_dgetrs(l, 'N', N, NRHS, a, ld, ipiv, b, ldb)),
       TRANS(dge, N, N), SCAN(STOCK(LAPACKE_dge_nancheck)(l, N, N, a, ld))},
      {"dpotrs", "ciiaLbLo", N, N + 1, full, by_rows, 5, CALL(LAPACKE_dpotrs(l, 'L', N, NRHS, a, ld, b, ldb)),
       TRANS(dpo, 'L', N), SCAN(STOCK(LAPACKE_dpo_nancheck)(l, 'L', N, a, ld))},
      {"dtrtrs", "ccciiaLbLo", N, N + 1, full, by_rows, 7,
       CALL(LAPACKE_dtrtrs(l, 'U', 'N', 'N', N, NRHS, a, ld, b, ldb)), TRANS(dtr, 'U', 'N', N),
       SCAN(STOCK(LAPACKE_dtr_nancheck)(l, 'U', 'N', N, a, ld))},
      {"dgbtrs", "ciiiiaLpbLo", band, N + 1, band * N, band * (N + 1), 7,
       CALL(LAPACKE_dgbtrs(l, 'N', N, KL, KU, NRHS, a, ld, ipiv, b, ldb)), TRANS(dgb, N, N, KL, KL + KU),
       SCAN(STOCK(LAPACKE_dgb_nancheck)(l, N, N, KL, KL + KU, a, ld))},
      {"dpbtrs", "ciiiaLbLo", KD + 1, N + 1, (KD + 1) * N, (KD + 1) * (N + 1), 6,
       CALL(LAPACKE_dpbtrs(l, 'U', N, KD, NRHS, a, ld, b, ldb)), TRANS(dpb, 'U', N, KD),
       SCAN(STOCK(LAPACKE_dpb_nancheck)(l, 'U', N, KD, a, ld))},
      {"dtbtrs", "ccciiiaLbLo", KD + 1, N + 1, (KD + 1) * N, (KD + 1) * (N + 1), 8,
       CALL(LAPACKE_dtbtrs(l, 'L', 'N', 'N', N, KD, NRHS, a, ld, b, ldb)), TRANS(dtb, 'L', 'N', N, KD),
       SCAN(STOCK(LAPACKE_dtb_nancheck)(l, 'L', 'N', N, KD, a, ld))},
      {"dpptrs", "ciiabLo", 0, 0, kPacked, kPacked, 5, CALL(LAPACKE_dpptrs(l, 'U', N, NRHS, a, b, ldb)),
       PACKED_TRANS(dpp, 'U', N), SCAN(STOCK(LAPACKE_dpp_nancheck)(N, a))},
      {"dtptrs", "ccciiabLo", 0, 0, kPacked, kPacked, 7, CALL(LAPACKE_dtptrs(l, 'L', 'N', 'N', N, NRHS, a, b, ldb)),
       PACKED_TRANS(dtp, 'L', 'N', N), SCAN(STOCK(LAPACKE_dtp_nancheck)(l, 'L', 'N', N, a))},
      {"dpftrs", "cciiabLo", 0, 0, kPacked, kPacked, 6, CALL(LAPACKE_dpftrs(l, 'N', 'U', N, NRHS, a, b, ldb)),
       PACKED_TRANS(dpf, 'N', 'U', N), SCAN(STOCK(LAPACKE_dpf_nancheck)(N, a))},
  };
}

class LapackeProbe : public ::testing::TestWithParam<size_t> {
 protected:
  void SetUp() override {
    ASSERT_NE(stock(), nullptr) << dlerror();
    qnl_probe_reset();
    qnl_probe_set_hook(hook);
    g_seen = Seen{};
  }
  void TearDown() override { qnl_probe_set_hook(nullptr); }
};

double value(size_t i) { return 1.0 + 0.001 * static_cast<double>(i); }

TEST_P(LapackeProbe, RowMajorReachesTheEntryAsColumnMajorTransposed) {
  const Shape s = shapes()[GetParam()];
  SCOPED_TRACE(s.routine);
  std::vector<double> row(s.row_count + 8), b(N * (NRHS + 1), 1.0);
  for (size_t i = 0; i < row.size(); ++i) row[i] = value(i);
  const std::string words = s.words;
  const int array_word = static_cast<int>(words.find('a'));
  g_seen.array_word = array_word;
  g_seen.array_count = s.col_count;
  ASSERT_EQ(s.call(LAPACK_ROW_MAJOR, row.data(), s.ld_row, b.data(), NRHS + 1), 0);
  ASSERT_EQ(g_seen.calls, 1);
  Seen by_row = g_seen;
  if (words[array_word + 1] == 'L') {
    EXPECT_EQ(by_row.values[array_word + 1], s.ld_col);
  }
  // The stored elements the back-end got, put back into the caller's layout by the
  // stock kit, are the caller's: elements outside the scheme stay as they were.
  std::vector<double> back = row;
  s.trans(LAPACK_ROW_MAJOR, by_row.array.data(), s.ld_col, back.data(), s.ld_row);
  EXPECT_EQ(back, row);
  // The column-major call with that matrix passes the same letters, integers and data.
  g_seen = Seen{};
  g_seen.array_word = array_word;
  g_seen.array_count = s.col_count;
  std::vector<double> col = by_row.array, bc(N * NRHS, 1.0);
  ASSERT_EQ(s.call(LAPACK_COL_MAJOR, col.data(), s.ld_col, bc.data(), N), 0);
  ASSERT_EQ(g_seen.calls, 1);
  EXPECT_EQ(g_seen.symbol, by_row.symbol);
  EXPECT_EQ(g_seen.array, by_row.array);
  ASSERT_EQ(g_seen.words.size(), by_row.words.size());
  for (size_t k = 0; k < words.size(); ++k) {
    if (words[k] == 'c') {
      EXPECT_EQ(static_cast<char>(g_seen.values[k]), static_cast<char>(by_row.values[k])) << "argument " << k;
    } else if (words[k] == 'i' || words[k] == 'L') {
      EXPECT_EQ(g_seen.values[k], by_row.values[k]) << "argument " << k;
    }
  }
  // One hidden length 1 per character, after the arguments.
  for (size_t k = words.size(); k < by_row.words.size(); ++k) {
    EXPECT_EQ(by_row.words[k], 1u);
  }
}

TEST_P(LapackeProbe, NanGateFiresAtTheStoredElementsWithTheParameterNumber) {
  const Shape s = shapes()[GetParam()];
  SCOPED_TRACE(s.routine);
  for (int layout : {LAPACK_ROW_MAJOR, LAPACK_COL_MAJOR}) {
    lapack_int ld = layout == LAPACK_ROW_MAJOR ? s.ld_row : s.ld_col;
    size_t count = layout == LAPACK_ROW_MAJOR ? s.row_count : s.col_count;
    int hits = 0;
    for (size_t i = 0; i < count; ++i) {
      std::vector<double> a(count + 8);
      for (size_t k = 0; k < a.size(); ++k) a[k] = value(k);
      a[i] = std::nan("");
      std::vector<double> b(N * (NRHS + 1), 1.0);
      bool stored = s.nancheck(layout, a.data(), ld) != 0;
      hits += stored;
      int before = qnl_probe_count_of(("qnl_lapack_" + std::string(s.routine)).c_str());
      lapack_int info = s.call(layout, a.data(), ld, b.data(), layout == LAPACK_ROW_MAJOR ? NRHS + 1 : N);
      int after = qnl_probe_count_of(("qnl_lapack_" + std::string(s.routine)).c_str());
      if (stored) {
        EXPECT_EQ(info, -s.hpos) << "layout " << layout << " element " << i;
        EXPECT_EQ(after, before) << "layout " << layout << " element " << i;
      } else {
        EXPECT_EQ(info, 0) << "layout " << layout << " element " << i;
        EXPECT_EQ(after, before + 1) << "layout " << layout << " element " << i;
      }
    }
    EXPECT_GT(hits, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, LapackeProbe, ::testing::Range<size_t>(0, 9));

// The kit's scans and the gate of a strided vector (?lassq's x, by incx) against the stock
// kit's scans: a NaN at each element in turn, beside +inf and -inf (whose sum is NaN), at the
// edges the scans special-case: stride 0 or negative, lda below m, a unit diagonal. An unknown
// transr, and a band wider than its ldab (where the stock scan reads on), are not scanned.
#define BOTH(fn, ...) [](bool s, double* x) { return (s ? STOCK(fn) : fn)(__VA_ARGS__); }
TEST(KitNan, EveryScanFindsWhatTheStockScanFinds) {
  constexpr int C = LAPACK_COL_MAJOR, R = LAPACK_ROW_MAJOR;
  const struct {
    size_t count;
    lapack_int (*scan)(bool stock, double* x);
  } cases[] = {
      {5, BOTH(LAPACKE_d_nancheck, 5, x, 0)},
      {5, BOTH(LAPACKE_d_nancheck, 5, x, -1)},
      {12, BOTH(LAPACKE_dge_nancheck, C, 4, 3, x, 3)},
      {40, BOTH(LAPACKE_dge_nancheck, R, 4, 7, x, 9)},
      {18, BOTH(LAPACKE_dge_nancheck, C, 6, 3, x, 6)},  // no gap: one run, summed
      {6, BOTH(LAPACKE_dge_nancheck, R, 3, 2, x, 2)},   // no gap: one short run
      {25, BOTH(LAPACKE_dtr_nancheck, C, 'U', 'U', 5, x, 5)},
      {25, BOTH(LAPACKE_dtr_nancheck, R, 'L', 'N', 5, x, 5)},
      {30, BOTH(LAPACKE_dgb_nancheck, C, 5, 5, 2, 2, x, 5)},
      {15, BOTH(LAPACKE_dtf_nancheck, C, 'N', 'U', 'N', 5, x)},
      {12,
       [](bool s, double* x) {
         double scale = 1.0, sumsq = 0.0;
         return s ? (STOCK(LAPACKE_d_nancheck)(4, x, -3) ? -2 : 0) : LAPACKE_dlassq(4, x, -3, &scale, &sumsq);
       }},
  };
  for (size_t c = 0; c < std::size(cases); ++c) {
    int hits = 0;
    for (size_t i = 0; i + 2 < cases[c].count; ++i) {
      std::vector<double> x(cases[c].count, 1.0);
      x[cases[c].count - 2] = INFINITY;
      x[cases[c].count - 1] = -INFINITY;
      x[i] = std::nan("");
      const lapack_int want = cases[c].scan(true, x.data());
      hits += want != 0;
      EXPECT_EQ(cases[c].scan(false, x.data()), want) << "case " << c << " element " << i;
    }
    EXPECT_GT(hits, 0) << "case " << c;
  }
  std::vector<double> nans(30, std::nan(""));
  EXPECT_EQ(LAPACKE_dgb_nancheck(C, 5, 5, 2, 2, nans.data(), 4), 0);
  EXPECT_EQ(LAPACKE_dtf_nancheck(C, 'X', 'U', 'N', 5, nans.data()), 0);
}

// Workspace queries: -1 in every length, the answers read back, the arrays allocated at
// that size, and the next call made with it.
struct LapackeProbeQuery : LapackeProbe {};

TEST_F(LapackeProbeQuery, WorkAndIworkSizesComeFromTheQuery) {
  // dsyevd: jobz uplo n a lda w work lwork iwork liwork info
  g_seen.work_word = 6;
  g_seen.lwork_word = 7;
  g_seen.iwork_word = 8;
  g_seen.liwork_word = 9;
  g_seen.work_answer = 100.9;  // truncated to 100; the entry's own check wants 2n^2+6n+1 = 81
  g_seen.iwork_answer = 40;    // and 5n+3 = 28
  std::vector<double> a(N * N, 1.0), w(N);
  EXPECT_EQ(LAPACKE_dsyevd(LAPACK_COL_MAJOR, 'V', 'U', N, a.data(), N, w.data()), 0);
  ASSERT_EQ(g_seen.lworks.size(), 2u);
  EXPECT_EQ(g_seen.lworks[0], -1);
  EXPECT_EQ(g_seen.liworks[0], -1);
  EXPECT_EQ(g_seen.lworks[1], 100);
  EXPECT_EQ(g_seen.liworks[1], 40);
}

TEST_F(LapackeProbeQuery, FixedWorkspaceBeforeTheQueryAndComplexAnswerByItsRealPart) {
  // zheev: jobz uplo n a lda w work lwork rwork info; the answer's real part is read.
  g_seen.work_word = 6;
  g_seen.lwork_word = 7;
  g_seen.work_answer = 21.0;
  std::vector<std::complex<double>> a(N * N, 1.0);
  std::vector<double> w(N);
  int before = qnl_probe_allocations();
  EXPECT_EQ(LAPACKE_zheev(LAPACK_COL_MAJOR, 'V', 'U', N, a.data(), N, w.data()), 0);
  ASSERT_EQ(g_seen.lworks.size(), 2u);
  EXPECT_EQ(g_seen.lworks[0], -1);
  EXPECT_EQ(g_seen.lworks[1], 21);
  // rwork of max(1, 3n-2) reals, then work of 21 complex elements.
  EXPECT_EQ(qnl_probe_allocations() - before, 2);
  EXPECT_EQ(qnl_probe_last_allocation_size(), 21u * 16);
  EXPECT_EQ(qnl_probe_live_allocations(), 0);
}

// Outputs of the high level alone are elements of a workspace after the call: dgesvd's
// superb from its queried work (from the second element), dgesvx's rpivot from its fixed
// work; nothing is written past them.
TEST_F(LapackeProbeQuery, OwnOutputsAreTheWorkspaceAfterTheCall) {
  constexpr lapack_int M = 6;
  // dgesvd: jobu jobvt m n a lda s u ldu vt ldvt work lwork info
  g_seen.work_word = g_seen.fill_word = 11;
  g_seen.lwork_word = 12;
  g_seen.work_answer = 40.0;
  g_seen.fill_count = 40;
  std::vector<double> a(M * N, 1.0), s(N), u(M * M), vt(N * N), superb(N, -1.0);
  EXPECT_EQ(
      LAPACKE_dgesvd(LAPACK_COL_MAJOR, 'A', 'A', M, N, a.data(), M, s.data(), u.data(), M, vt.data(), N, superb.data()),
      0);
  for (lapack_int i = 0; i + 1 < N; ++i) EXPECT_EQ(superb[i], 1001.0 + i) << i;
  EXPECT_EQ(superb[N - 1], -1.0);
  // dgesvx: fact trans n nrhs a lda af ldaf ipiv equed r c b ldb x ldx rcond ferr berr work iwork info
  g_seen = Seen{};
  g_seen.fill_word = 19;
  g_seen.fill_count = 4 * N;
  std::vector<double> sq(N * N, 1.0), af(N * N), r(N), c(N), b(N), x(N), ferr(1), berr(1), rpivot(2, -1.0);
  std::vector<lapack_int> piv(N);
  char equed = 'N';
  double rcond = 0;
  EXPECT_EQ(LAPACKE_dgesvx(LAPACK_ROW_MAJOR, 'N', 'N', N, 1, sq.data(), N, af.data(), N, piv.data(), &equed, r.data(),
                           c.data(), b.data(), 1, x.data(), 1, &rcond, ferr.data(), berr.data(), rpivot.data()),
            0);
  EXPECT_EQ(rpivot[0], 1000.0);
  EXPECT_EQ(rpivot[1], -1.0);
  // dgesvj: joba jobu jobv m n a lda sva mv v ldv work lwork info; stat goes in and comes out,
  // and the fixed work's length max(6, m+n) reaches lwork.
  g_seen = Seen{};
  g_seen.fill_word = 11;
  g_seen.fill_count = 6;
  std::vector<double> sva(N), v(N * N), stat = {7, 8, 9, 10, 11, 12, -1};
  EXPECT_EQ(LAPACKE_dgesvj(LAPACK_COL_MAJOR, 'G', 'U', 'V', M, N, a.data(), M, sva.data(), 0, v.data(), N, stat.data()),
            0);
  EXPECT_EQ(g_seen.filled_from, (std::vector<double>{7, 8, 9, 10, 11, 12}));
  EXPECT_EQ(g_seen.values[12], M + N);
  EXPECT_EQ(stat, (std::vector<double>{1000, 1001, 1002, 1003, 1004, 1005, -1}));
}

}  // namespace
