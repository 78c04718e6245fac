// CBLAS entries from the routine table, on both interfaces: what reaches the Fortran back-end
// symbol in column-major and in row-major, and the parameter numbers of the checks.
#include <dlfcn.h>

#include "cblas_harness.h"

using namespace cblas_test;

namespace {

bool computed_here(const CblasCase& c) { return c.fortran[0] == '\0'; }
bool batch(const CblasCase& c) { return std::strcmp(c.shape, "gemm_batch") == 0; }

// Checks: the C parameter numbers reported, and whether the Fortran entry was still called.
struct CheckCase {
  const char* name;
  Overrides over;
  std::vector<int32_t> numbers;
  bool reaches;  // the call goes on to the Fortran entry (which may turn it down itself)
};

constexpr double kBad = 7;

// One call with `over`: the reports under the C name, the caller's data bit for bit, no
// scratch left behind; `starve` fails the first scratch allocation.
template <class I>
void expect_check(const CblasCase& c, const Overrides& over, const std::vector<int32_t>& numbers, bool reaches,
                  bool starve = false) {
  qnl_probe_reset();
  Args<I> args(c, over);
  args.fill();
  static std::vector<double> before;  // one block for every call: a fresh one costs the sanitizer page faults
  before.assign(args.data(), args.data() + Args<I>::kBuffer);
  if (starve) qnl_probe_fail_allocations(1);
  args.run();
  EXPECT_EQ(cblas_reports(c.name), numbers);
  EXPECT_EQ(std::memcmp(args.data(), before.data(), before.size() * sizeof(double)), 0)
      << "the caller's data as it was, bit for bit";
  // a call that goes on meets the Fortran entry's own checks: it may report there too
  int entered = 0;
  for (const auto& r : reports()) entered += r.name.rfind("cblas_", 0) != 0;
  entered += qnl_probe_count_of(("qnl_blas_" + std::string(c.fortran)).c_str());
  EXPECT_EQ(entered > 0, reaches);
  EXPECT_EQ(qnl_probe_live_allocations(), 0);
}

// Row-major calls: a row-major call on A must reach the Fortran entry exactly as the
// column-major call on the transposed operands does (A stored by rows is Aᵀ stored by
// columns). The mirror of a call: m and n, kl and ku exchanged; uplo and side flipped; one
// transposed operand's option turned (N and T exchanged, real C as N); the operands of a
// product exchanged with their options and leading dimensions; x and y of a rank-1 update
// exchanged. Every routine, every combination of option values, both interfaces.
bool one_of(const std::string& s, std::initializer_list<const char*> set) {
  for (const char* x : set)
    if (s == x) return true;
  return false;
}

struct Mirror {
  std::string name;                           // the column-major routine
  Overrides over;                             // its arguments
  std::map<std::string, std::string> rename;  // its operand names as the row-major call's
  bool conjugates;                            // the row-major road conjugates data: only letters and integers compare
  bool conj_alpha;                            // the mirror takes conj(alpha)
};

Mirror mirror(const CblasCase& c, Overrides row) {
  const std::string shape = c.shape, name = c.name;
  const bool cplx = c.type == 'c' || c.type == 'z';
  Mirror m{name, row, {}, false, false};
  auto swap = [&](const char* a, const char* b) {
    auto ia = m.over.find(a), ib = m.over.find(b);
    if (ia != m.over.end() && ib != m.over.end()) std::swap(ia->second, ib->second);
  };
  auto flip = [&](const char* arg, int x, int y) {
    auto it = m.over.find(arg);
    if (it != m.over.end() && (it->second == x || it->second == y)) it->second = it->second == x ? y : x;
  };
  m.over["layout"] = 102;
  flip("uplo", 121, 122);
  flip("side", 141, 142);
  flip("identifier", 161, 162);
  if (one_of(shape, {"gemv", "gbmv", "ger", "gerc", "gemm", "symm", "trmm", "gemm_pack", "gemm_compute"}))
    swap("m", "n");
  if (shape == "gbmv") swap("kl", "ku");
  if (one_of(shape, {"gemv", "gbmv", "trmv", "trsv", "tbmv", "tpmv"})) {
    m.conjugates = cplx && m.over["trans"] == 113;
    m.over["trans"] = m.over["trans"] == 111 ? 112 : 111;
  }
  if (one_of(shape, {"syrk", "syr2k"})) {
    const bool herm = std::strstr(c.fortran, "her") != nullptr;
    if (!cplx && m.over["trans"] == 113)
      m.over["trans"] = 111;  // a real C is a T
    else
      flip("trans", 111, herm ? 113 : 112);
    m.conj_alpha = herm && shape == "syr2k";
  }
  if (one_of(shape, {"gemm", "gemmt", "gemm_compute"})) {
    swap("transa", "transb");
    swap("lda", "ldb");
    m.rename = {{"a", "b"}, {"b", "a"}};
  }
  if (one_of(shape, {"ger", "gerc"})) {
    swap("incx", "incy");
    m.rename = {{"x", "y"}, {"y", "x"}};
  }
  if (shape == "gerc") m.name = std::string("cblas_") + c.type + "geru";
  if (cplx && one_of(shape, {"symv", "sbmv", "spmv", "syr", "spr", "syr2", "spr2", "gerc"})) m.conjugates = true;
  return m;
}

// The one Fortran call of a run, with its pointer arguments named as the caller's.
template <class I>
bool one_call(Args<I>& args, const std::map<std::string, std::string>& rename, Seen& got,
              std::vector<std::string>& pointers) {
  if (seen_by_symbol().size() != 1) return false;
  got = seen_by_symbol().begin()->second;
  pointers = pointer_names(args, got);
  for (auto& p : pointers) {
    auto it = rename.find(p);
    if (it != rename.end()) p = it->second;
  }
  return true;
}

template <class I>
void row_major_mirrors_column_major(Layer layer) {
  set_layer(layer);
  watch();
  int compared = 0, starved = 0;
  for (const auto& c : kCblasCases) {
    if (computed_here(c) || batch(c) || c.codes[0] != 'L') continue;
    for (Overrides row : option_combinations(c, kDistinctSizes)) {
      Mirror m = mirror(c, row);
      if (m.conjugates) {  // a conjugated vector arrives as a packed copy: increment 1
        row["incx"] = row["incy"] = 1;
        m = mirror(c, row);
      }
      SCOPED_TRACE(testing::Message() << c.name << " as " << m.name << " " << testing::PrintToString(row));
      qnl_probe_reset();
      seen_by_symbol().clear();
      Args<I> col_args(cblas_case(m.name), m.over);
      if (m.conj_alpha) {
        double* alpha = col_args.buffer("alpha");
        if (c.type == 'c')
          reinterpret_cast<float*>(alpha)[1] = -0.5f;
        else
          alpha[1] = -0.5;
      }
      col_args.run();
      const size_t col_reports = reports().size();
      Seen want;
      std::vector<std::string> want_pointers;
      const bool col_called = one_call(col_args, {}, want, want_pointers);

      qnl_probe_reset();
      seen_by_symbol().clear();
      Args<I> row_args(c, row);
      row_args.run();
      EXPECT_EQ(qnl_probe_live_allocations(), 0) << "scratch freed";
      if (col_reports) {  // a combination the routine turns down in either layout
        EXPECT_FALSE(reports().empty());
        continue;
      }
      EXPECT_TRUE(reports().empty());
      Seen got;
      std::vector<std::string> got_pointers;
      ASSERT_TRUE(col_called);
      ASSERT_TRUE(one_call(row_args, m.rename, got, got_pointers)) << "one Fortran call";
      EXPECT_EQ(got.chars, want.chars);
      EXPECT_EQ(got.ints, want.ints);
      if (!m.conjugates) {
        EXPECT_EQ(join(got_pointers), join(want_pointers));
      }
      if (qnl_probe_allocations() > 0) {  // a road with scratch: without it, 1000 and no call
        expect_check<I>(c, row, {1000}, false, true);
        ++starved;
      }
      ++compared;
    }
  }
  EXPECT_GT(compared, 700);
  EXPECT_GT(starved, 30);
}

TEST(CblasForwarding, RowMajorMirrorsColumnMajorLp64) { row_major_mirrors_column_major<int32_t>(LP64); }
TEST(CblasForwarding, RowMajorMirrorsColumnMajorIlp64) { row_major_mirrors_column_major<int64_t>(ILP64); }

// The value that fails an argument's own check: an unknown option, a negative size, a zero
// leading dimension or increment. Other arguments are not checked by the C layer.
bool bad_value(char code, const std::string& name, double& v) {
  if (std::strchr("LTKUGSD", code)) return v = kBad, true;
  if (code != 'i') return false;
  v = name.rfind("ld", 0) == 0 || name.rfind("inc", 0) == 0 ? 0 : -1;
  return true;
}

// Level 2 reports a bad option and goes on with an undefined character, which the Fortran
// entry turns down; ?trsv, the layout and every level 3 option stop at the report.
bool goes_on(const CblasCase& c, char code) {
  return std::strchr("TUG", code) && std::strcmp(c.shape, "trsv") != 0 &&
         one_of(c.shape, {"gemv", "gbmv", "ger", "gerc", "symv", "sbmv", "spmv", "syr", "spr", "syr2", "spr2", "trmv",
                          "tbmv", "tpmv"});
}

// Every checked argument of every level 2, level 3 and packed routine, alone bad, under
// every layout and packing the routine takes, and every transposition when complex (where
// the row-major roads conjugate data first): reported under its own position in the C call.
template <class I>
void every_bad_argument_alone(Layer layer) {
  set_layer(layer);
  int tried = 0;
  for (const auto& c : kCblasCases) {
    if ((!std::strchr(c.codes, 'L') && !std::strchr(c.codes, 'D')) || batch(c)) continue;
    const auto names = split(c.args);
    for (const Overrides& good : option_combinations(c, {}, c.type == 'c' || c.type == 'z' ? "LTK" : "LK")) {
      qnl_probe_reset();
      Args<I>(c, good).run();
      if (!reports().empty()) continue;  // a combination the routine turns down
      for (size_t k = 0; k < names.size(); ++k) {
        Overrides over = good;
        if (!bad_value(c.codes[k], names[k], over[names[k]])) continue;
        SCOPED_TRACE(testing::Message() << c.name << " " << testing::PrintToString(over));
        // a packed operand's leading dimension is not looked at
        const bool packed = (names[k] == "lda" && good.count("transa") && good.at("transa") == 151) ||
                            (names[k] == "ldb" && good.count("transb") && good.at("transb") == 151);
        if (packed)
          expect_check<I>(c, over, {}, true);
        else
          expect_check<I>(c, over, {static_cast<int32_t>(k + 1)}, goes_on(c, c.codes[k]));
        ++tried;
      }
    }
  }
  EXPECT_GT(tried, 3000);
}

TEST(CblasChecks, EveryBadArgumentAloneLp64) { every_bad_argument_alone<int32_t>(LP64); }
TEST(CblasChecks, EveryBadArgumentAloneIlp64) { every_bad_argument_alone<int64_t>(ILP64); }

// What one bad argument at a time does not show: the order among several bad arguments,
// options that report and go on, quick returns before a check, leading dimensions against
// the sizes as the options have them, and the early returns of the index routines.
const CheckCase kCheckCases[] = {
    {"cblas_dgemv", {{"layout", kBad}, {"m", -1}}, {1}, false},
    {"cblas_dgemv", {{"trans", kBad}, {"m", -1}}, {2, 3}, false},
    {"cblas_zgemv", {{"layout", 101}, {"trans", kBad}, {"m", 0}}, {}, false},
    {"cblas_zgemv", {{"trans", kBad}, {"m", 0}}, {2}, false},
    {"cblas_zgemv", {{"layout", 101}, {"trans", kBad}, {"incx", 0}}, {9}, false},
    {"cblas_dgemv", {{"m", 0}}, {}, false},
    {"cblas_sgemv", {{"alpha", 0}, {"beta", 1}}, {}, false},
    {"cblas_sgemv", {{"alpha", 0}, {"beta", 1}, {"lda", 1}, {"m", 2}}, {7}, false},
    {"cblas_sgemv", {{"alpha", NAN}, {"beta", 1}}, {}, true},
    {"cblas_zgbmv", {{"n", 0}}, {}, false},
    {"cblas_dger", {{"incx", 0}, {"incy", 0}}, {6}, false},
    {"cblas_dtrmv", {{"trans", kBad}, {"diag", kBad}}, {3, 4}, true},
    {"cblas_dtrsv", {{"uplo", kBad}, {"n", -1}}, {2}, false},
    {"cblas_dgemm", {{"layout", kBad}, {"m", -1}}, {4}, false},
    {"cblas_dgemm", {{"transa", kBad}, {"m", -1}}, {2}, false},
    {"cblas_cgemmt", {{"transa", 113}}, {3}, false},
    {"cblas_zgemmt", {{"transb", 113}}, {4}, false},
    {"cblas_dgemmt", {{"transa", 113}}, {}, true},
    {"cblas_dgemmt", {{"n", 3}, {"lda", 2}}, {9}, false},
    {"cblas_dgemmt", {{"n", 3}, {"transb", 112}, {"ldb", 2}}, {11}, false},
    {"cblas_dgemmt", {{"n", 3}, {"ldc", 2}}, {14}, false},
    {"cblas_csyrk", {{"trans", 112}}, {}, true},
    {"cblas_dsyrk", {{"trans", 113}}, {}, true},
    {"cblas_cherk", {{"trans", 113}}, {}, true},
    {"cblas_dgemm_pack", {{"m", 3}, {"ld", 2}}, {9}, false},
    {"cblas_dgemm_pack", {{"identifier", 162}, {"trans", 112}, {"n", 7}, {"ld", 6}}, {9}, false},
    {"cblas_dgemm_compute", {{"transb", 152}}, {3}, false},
    {"cblas_dgemm_compute", {{"m", 3}, {"lda", 2}}, {8}, false},
    {"cblas_dgemm_compute", {{"k", 3}, {"ldb", 2}}, {10}, false},
    {"cblas_dgemm_compute", {{"transb", 151}, {"k", 3}, {"ldb", 2}}, {}, true},
    {"cblas_dgemm_compute", {{"m", 3}, {"ldc", 2}}, {13}, false},
    {"cblas_idamax", {{"n", 0}}, {}, false},
    {"cblas_idamax", {{"incx", 0}}, {}, false},
    {"cblas_icamin", {{"incx", -1}}, {}, false},
    {"cblas_ddot", {{"n", -1}}, {}, true},
    // a row-major Hermitian road copies a conjugated vector, but an empty one needs no scratch
    {"cblas_zher", {{"layout", 101}, {"n", 0}, {"incx", 3}}, {}, true},
};

template <class I>
void check_numbers(Layer layer) {
  set_layer(layer);
  for (const auto& cc : kCheckCases) {
    SCOPED_TRACE(testing::Message() << cc.name << " case " << (&cc - kCheckCases));
    expect_check<I>(cblas_case(cc.name), cc.over, cc.numbers, cc.reaches);
  }
}

TEST(CblasChecks, ParameterNumbersLp64) { check_numbers<int32_t>(LP64); }
TEST(CblasChecks, ParameterNumbersIlp64) { check_numbers<int64_t>(ILP64); }

// The Fortran index is one-based; on LP64 its low 32 bits are sign-extended first.
template <class I>
uint64_t index_result(Layer layer) {
  set_layer(layer);
  qnl_probe_set_result("qnl_blas_idamax", 0xffffffff00000004ull);
  Args<I> args(cblas_case("cblas_idamax"));
  return args.run();
}

TEST(CblasResults, IndexIsZeroBasedLp64) { EXPECT_EQ(index_result<int32_t>(LP64), 3u); }
TEST(CblasResults, IndexIsZeroBasedIlp64) { EXPECT_EQ(index_result<int64_t>(ILP64), 0xffffffff00000003ull); }

TEST(CblasResults, RejectedAllocationReturnsNull) {
  set_layer(ILP64);
  qnl_probe_set_result("qnl_blas_dgemm_alloc", 0x5000);
  Args<int64_t> bad(cblas_case("cblas_dgemm_alloc"), {{"identifier", kBad}});
  EXPECT_EQ(bad.run(), 0u);
  Args<int64_t> good(cblas_case("cblas_dgemm_alloc"));
  EXPECT_EQ(good.run(), 0x5000u);
}

// The packed widths are the two bodies under their own names: no layer decision.
TEST(CblasResults, AllocWidthsNameTheirInterface) {
  set_layer(LP64);
  using Narrow = void* (*)(CBLAS_IDENTIFIER, int32_t, int32_t, int32_t);
  using Wide = void* (*)(CBLAS_IDENTIFIER, int64_t, int64_t, int64_t);
  for (const std::string name : {"cblas_sgemm_alloc", "cblas_dgemm_alloc"}) {
    auto narrow = reinterpret_cast<Narrow>(dlsym(RTLD_DEFAULT, (name + "_lp64").c_str()));
    auto wide = reinterpret_cast<Wide>(dlsym(RTLD_DEFAULT, (name + "_ilp64").c_str()));
    ASSERT_TRUE(narrow && wide) << name;
    // -1 in the low half of a 64-bit value is positive: only the ILP64 body lets it through
    qnl_probe_reset();
    EXPECT_EQ(narrow(CblasAMatrix, 2, 2, -1), nullptr);
    EXPECT_EQ(cblas_reports(name.c_str()), std::vector<int32_t>{4});
    qnl_probe_reset();
    wide(CblasAMatrix, 2, 2, 0xffffffffll);
    EXPECT_TRUE(cblas_reports(name.c_str()).empty());
  }
}

}  // namespace
