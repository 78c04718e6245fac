// Matrix copy, transposition and addition computed by the reference back-end, through the
// facade's entries, for the four types, against OpenBLAS's ?omatcopy and ?imatcopy on the
// same operands: every element of the result, the padding left alone, and the parameter
// number of a bad argument the one OpenBLAS's own checks report. The Fortran spellings
// read their sizes at the interface layer's width, and the first call settles the layer.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "reference_types.h"

extern "C" {
void qnl_domatcopy(const char*, const char*, const int64_t*, const int64_t*, const double*, const double*,
                   const int64_t*, double*, const int64_t*);
}

using namespace ref_test;

namespace {

using I = int32_t;  // OpenBLAS's LP64 integers
template <class T>
using Omatcopy = void(const char*, const char*, const I*, const I*, const T*, const T*, const I*, T*, const I*);
template <class T>
using Imatcopy = void(const char*, const char*, const I*, const I*, const T*, T*, const I*, const I*);

// The C spelling QNL_Domatcopy or the Fortran one qnl_domatcopy of a family.
template <class F, class T>
F* named(const char* family, bool c_spelling) {
  const char l = kLetter<T>;
  const std::string name =
      (c_spelling ? "QNL_" + std::string(1, static_cast<char>(l - 32)) : "qnl_" + std::string(1, l)) + family;
  void* p = dlsym(RTLD_DEFAULT, name.c_str());
  EXPECT_NE(p, nullptr) << name;
  return reinterpret_cast<F*>(p);
}

bool transposes(char trans) { return std::string("TtCc").find(trans) != std::string::npos; }
bool row_major(char order) { return order == 'R' || order == 'r'; }

// A rows x cols matrix is stored as `lines` of `line` elements each; its element (i, j) is
// at pos with leading dimension ld and minor stride s.
size_t lines(char order, size_t rows, size_t cols) { return row_major(order) ? rows : cols; }
size_t line(char order, size_t rows, size_t cols) { return row_major(order) ? cols : rows; }
size_t pos(char order, size_t i, size_t j, size_t ld, size_t s) {
  return row_major(order) ? i * ld + j * s : i * s + j * ld;
}

// OpenBLAS's alpha op(A) into B, with minor strides sa and sb: A gathered into a compact
// matrix, the compact result scattered over B's positions. OpenBLAS refuses empty matrices:
// those leave B as it was.
template <class T>
void oracle_copy(char order, char trans, size_t rows, size_t cols, T alpha, const std::vector<T>& a, size_t lda,
                 size_t sa, std::vector<T>& b, size_t ldb, size_t sb) {
  if (rows == 0 || cols == 0) return;
  const bool t = transposes(trans);
  const size_t brows = t ? cols : rows, bcols = t ? rows : cols;
  const I r = static_cast<I>(rows), c = static_cast<I>(cols);
  const I la = static_cast<I>(line(order, rows, cols)), lb = static_cast<I>(line(order, brows, bcols));
  std::vector<T> ac(rows * cols), bc(rows * cols);
  for (size_t i = 0; i < rows; ++i)
    for (size_t j = 0; j < cols; ++j) ac[pos(order, i, j, static_cast<size_t>(la), 1)] = a[pos(order, i, j, lda, sa)];
  openblas<Omatcopy<T>, T>("%comatcopy_")(&order, &trans, &r, &c, &alpha, ac.data(), &la, bc.data(), &lb);
  for (size_t i = 0; i < brows; ++i)
    for (size_t j = 0; j < bcols; ++j) b[pos(order, i, j, ldb, sb)] = bc[pos(order, i, j, static_cast<size_t>(lb), 1)];
}

struct CopyCase {
  char order, trans;
  size_t rows, cols;
};

// The last four are small plain transpositions of both layouts, up to the tile edge.
const CopyCase kCopyCases[] = {{'C', 'N', 5, 3},   {'C', 'T', 5, 3},   {'C', 'C', 37, 70},  {'C', 'R', 70, 37},
                               {'R', 'N', 37, 70}, {'R', 'T', 70, 37}, {'r', 'c', 64, 64},  {'c', 'r', 1, 1},
                               {'R', 'n', 0, 4},   {'c', 't', 3, 0},   {'C', 't', 129, 65}, {'R', 't', 4, 2},
                               {'r', 'T', 64, 1},  {'R', 'T', 8, 1},   {'c', 't', 7, 8}};

template <class T>
class BackendTrans : public ::testing::Test {};
TYPED_TEST_SUITE(BackendTrans, AllTypes);

const std::complex<double> kAlpha(1.5, -0.75), kBeta(-0.5, 2.0);

// Out of place, with and without minor strides, in both spellings.
TYPED_TEST(BackendTrans, OutOfPlaceCopiesMatchOpenBlas) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using C2 = void(char, char, size_t, size_t, T, const T*, size_t, size_t, T*, size_t, size_t);
  using C1 = void(char, char, size_t, size_t, T, const T*, size_t, T*, size_t);
  using W = int64_t;  // LP64 reads the low half of each cell: the upper half is noise
  using F2 = void(const char*, const char*, const W*, const W*, const T*, const T*, const W*, const W*, T*, const W*,
                  const W*);
  auto* c1 = named<C1, T>("omatcopy", true);
  auto* c2 = named<C2, T>("omatcopy2", true);
  auto* f2 = named<F2, T>("omatcopy2", false);
  // Alpha one also takes the short road of small plain transpositions.
  for (const T alpha : {scalar<T>(kAlpha), scalar<T>(1.0)})
    for (const CopyCase& cc : kCopyCases)
      for (int form = 0; form < 3; ++form) {  // omatcopy, omatcopy2 in C, omatcopy2 in Fortran
        const size_t sa = form == 0 ? 1 : 2, sb = form == 0 ? 1 : 3;
        const bool t = transposes(cc.trans);
        const size_t brows = t ? cc.cols : cc.rows, bcols = t ? cc.rows : cc.cols;
        const size_t lda = line(cc.order, cc.rows, cc.cols) * sa + 3;
        const size_t ldb = line(cc.order, brows, bcols) * sb + 2;
        const std::vector<T> a = values<T>(lda * lines(cc.order, cc.rows, cc.cols) + 1, 0);
        std::vector<T> b(ldb * lines(cc.order, brows, bcols) + 1, value<T>(999)), want = b;
        if (form == 0) {
          c1(cc.order, cc.trans, cc.rows, cc.cols, alpha, a.data(), lda, b.data(), ldb);
        } else if (form == 1) {
          c2(cc.order, cc.trans, cc.rows, cc.cols, alpha, a.data(), lda, sa, b.data(), ldb, sb);
        } else {
          auto cell = [](size_t v) { return static_cast<W>(0xabcd000100000000ull | v); };
          const W r = cell(cc.rows), c = cell(cc.cols), la = cell(lda), lb = cell(ldb), s1 = cell(sa), s2 = cell(sb);
          f2(&cc.order, &cc.trans, &r, &c, &alpha, a.data(), &la, &s1, b.data(), &lb, &s2);
        }
        oracle_copy(cc.order, cc.trans, cc.rows, cc.cols, alpha, a, lda, sa, want, ldb, sb);
        expect_all_near(b, want, 16.0,
                        "form " + std::to_string(form) + " " + cc.order + cc.trans + " " + std::to_string(cc.rows) +
                            "x" + std::to_string(cc.cols));
      }
}

// In place: a square transposition with one leading dimension, a copy where the leading
// dimension shrinks or grows, and a rectangular transposition.
TYPED_TEST(BackendTrans, InPlaceCopiesMatchOpenBlas) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  using F =
      void(const char*, const char*, const int64_t*, const int64_t*, const T*, T*, const int64_t*, const int64_t*);
  using C = void(char, char, size_t, size_t, T, T*, size_t, size_t);
  auto* fortran = named<F, T>("imatcopy", false);
  auto* c = named<C, T>("imatcopy", true);
  const T alpha = scalar<T>(kAlpha);
  struct InPlace {
    char order, trans;
    int64_t rows, cols, lda, ldb;
  } cases[] = {{'C', 'T', 70, 70, 73, 73}, {'R', 'C', 33, 33, 33, 33}, {'C', 'N', 20, 9, 25, 21},
               {'C', 'R', 20, 9, 21, 25},  {'R', 'T', 9, 20, 22, 11},  {'C', 'c', 40, 17, 40, 17},
               {'c', 'n', 0, 5, 1, 1}};
  for (const InPlace& ip : cases)
    for (bool c_spelling : {false, true}) {
      const bool t = transposes(ip.trans);
      const int64_t size = std::max(ip.lda * lines(ip.order, ip.rows, ip.cols),
                                    ip.ldb * lines(ip.order, t ? ip.cols : ip.rows, t ? ip.rows : ip.cols));
      std::vector<T> ab = values<T>(static_cast<size_t>(size) + 1, 0), want = ab;
      if (c_spelling)
        c(ip.order, ip.trans, ip.rows, ip.cols, alpha, ab.data(), ip.lda, ip.ldb);
      else
        fortran(&ip.order, &ip.trans, &ip.rows, &ip.cols, &alpha, ab.data(), &ip.lda, &ip.ldb);
      const I r = static_cast<I>(ip.rows), cl = static_cast<I>(ip.cols), la = static_cast<I>(ip.lda),
              lb = static_cast<I>(ip.ldb);
      if (r > 0 && cl > 0)
        openblas<Imatcopy<T>, T>("%cimatcopy_")(&ip.order, &ip.trans, &r, &cl, &alpha, want.data(), &la, &lb);
      // Only the result is defined: what lies beyond it in the shared array is scratch.
      const size_t brows = static_cast<size_t>(t ? ip.cols : ip.rows),
                   bcols = static_cast<size_t>(t ? ip.rows : ip.cols);
      for (size_t i = 0; i < brows; ++i)
        for (size_t j = 0; j < bcols; ++j) {
          const size_t p = pos(ip.order, i, j, static_cast<size_t>(ip.ldb), 1);
          expect_near(ab[p], want[p], 16.0,
                      std::string(1, ip.order) + ip.trans + " " + std::to_string(ip.rows) + "x" +
                          std::to_string(ip.cols) + " at " + std::to_string(p));
        }
    }
  // ILP64 reads all 64 bits: rows whose low half is 2 are negative, and refused.
  const int64_t wide = -(int64_t{1} << 32) + 2, two = 2;
  std::vector<T> ab = values<T>(8, 0);
  const std::vector<T> before = ab;
  EXPECT_NE(printed([&] { fortran("C", "T", &wide, &two, &alpha, ab.data(), &two, &two); }), "");
  EXPECT_EQ(ab, before);
}

// C = alpha op(A) + beta op(B) for every pair of operations, and in place over A: the sum of
// two OpenBLAS copies.
TYPED_TEST(BackendTrans, AdditionMatchesOpenBlas) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using C = void(char, char, char, size_t, size_t, T, const T*, size_t, T, const T*, size_t, T*, size_t);
  auto* add = named<C, T>("omatadd", true);
  const T alpha = scalar<T>(kAlpha), beta = scalar<T>(kBeta);
  const size_t rows = 45, cols = 38;
  for (char order : {'C', 'r'})
    for (char ta : {'N', 'T', 'C', 'R'})
      for (char tb : {'N', 'T', 'C', 'R'})
        for (bool in_place : {false, true}) {
          // the minor size of each stored operand, plus one
          auto ld_of = [&](char tr) {
            return line(order, transposes(tr) ? cols : rows, transposes(tr) ? rows : cols) + 1;
          };
          const size_t lda = ld_of(ta), ldb = ld_of(tb), ldc = in_place ? lda : line(order, rows, cols) + 2;
          if (in_place && (lda != ldc || transposes(ta))) continue;  // aliasing a transposed A is not defined
          std::vector<T> a = values<T>(lda * std::max(rows, cols), 0), c = values<T>(ldc * std::max(rows, cols), 7);
          const std::vector<T> b = values<T>(ldb * std::max(rows, cols), 1);
          const std::vector<T> a0 = a;
          std::vector<T>& out = in_place ? a : c;
          std::vector<T> x = out, y(out.size());
          // op(A) and op(B) are rows x cols: a transposed operand is stored cols x rows
          auto copy = [&](char tr, T scale, const std::vector<T>& from, size_t ld, std::vector<T>& to) {
            oracle_copy(order, tr, transposes(tr) ? cols : rows, transposes(tr) ? rows : cols, scale, from, ld, 1, to,
                        ldc, 1);
          };
          copy(ta, alpha, a0, lda, x);
          copy(tb, beta, b, ldb, y);
          for (size_t p = 0; p < x.size(); ++p) x[p] += y[p];
          add(order, ta, tb, rows, cols, alpha, a.data(), lda, beta, b.data(), ldb, out.data(), ldc);
          expect_all_near(out, x, 64.0, std::string(1, order) + ta + tb + (in_place ? " in place" : ""));
        }
}

// The parameter number OpenBLAS's ?omatcopy reports for the same call.
template <class T>
int openblas_number(char order, char trans, I rows, I cols, I lda, I ldb, std::vector<T>& a, std::vector<T>& b) {
  const T one = scalar<T>(1.0);
  const std::string out = printed([&] {
    openblas<Omatcopy<T>, T>("%comatcopy_")(&order, &trans, &rows, &cols, &one, a.data(), &lda, b.data(), &ldb);
  });
  int number = 0;
  EXPECT_EQ(std::sscanf(out.c_str(), " ** On entry to %*s parameter number %d", &number), 1) << out;
  return number;
}

// Bad options, sizes and leading dimensions are reported under the routine's name with the
// number OpenBLAS gives the same call, and nothing is written.
TYPED_TEST(BackendTrans, BadArgumentsAreReportedAsOpenBlasDoesAndNothingIsWritten) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using F1 = void(const char*, const char*, const I*, const I*, const T*, const T*, const I*, T*, const I*);
  using CA = void(char, char, char, size_t, size_t, T, const T*, size_t, T, const T*, size_t, T*, size_t);
  auto* copy = named<F1, T>("omatcopy", false);
  auto* add = named<CA, T>("omatadd", true);
  const std::string copy_name = upper(std::string("QNL_") + kLetter<T> + "OMATCOPY");
  std::vector<T> a(64, value<T>(1)), b(64, value<T>(2));
  const T one = scalar<T>(1.0);
  struct Bad {
    char order, trans;
    I rows, cols, lda, ldb;
  } bad[] = {{'X', 'N', 2, 2, 2, 2}, {'C', 'Q', 2, 2, 2, 2}, {'C', 'N', 3, 2, 2, 3}, {'R', 'N', 2, 3, 2, 3},
             {'C', 'T', 3, 2, 3, 1}, {'R', 'T', 3, 2, 2, 2}, {'C', 'N', -2, 2, 2, 2}};
  for (const Bad& x : bad) {
    const int want = openblas_number(x.order, x.trans, x.rows, x.cols, x.lda, x.ldb, a, b);
    EXPECT_EQ(printed([&] { copy(&x.order, &x.trans, &x.rows, &x.cols, &one, a.data(), &x.lda, b.data(), &x.ldb); }),
              report(want, copy_name));
    for (const T& v : b) ASSERT_EQ(v, value<T>(2));
  }
  EXPECT_EQ(printed([&] { add('C', 'N', 'T', 3, 2, one, a.data(), 3, one, b.data(), 1, b.data(), 3); }),
            report(11, upper(std::string("QNL_") + kLetter<T> + "OMATADD")));
  for (const T& v : b) ASSERT_EQ(v, value<T>(2));
}

// Every routine in its four spellings: the C one a body of its own, the three Fortran ones
// one body; no other spelling.
TEST(BackendTransExports, FourSpellingsPerRoutine) {
  for (const char* family : {"omatcopy", "omatcopy2", "imatcopy", "omatadd"})
    for (char l : {'s', 'd', 'c', 'z'}) {
      const std::string lower = std::string("qnl_") + l + family, upper_name = upper(lower);
      const std::string c_name = "QNL_" + std::string(1, static_cast<char>(l - 32)) + family;
      void* fortran = dlsym(RTLD_DEFAULT, lower.c_str());
      ASSERT_NE(fortran, nullptr) << lower;
      EXPECT_NE(dlsym(RTLD_DEFAULT, c_name.c_str()), nullptr) << c_name;
      EXPECT_NE(dlsym(RTLD_DEFAULT, c_name.c_str()), fortran) << c_name;
      EXPECT_EQ(dlsym(RTLD_DEFAULT, (lower + "_").c_str()), fortran) << lower;
      EXPECT_EQ(dlsym(RTLD_DEFAULT, upper_name.c_str()), fortran) << upper_name;
      EXPECT_EQ(dlsym(RTLD_DEFAULT, (upper_name + "_").c_str()), nullptr) << upper_name;
      EXPECT_EQ(dlsym(RTLD_DEFAULT, (std::string(1, l) + family).c_str()), nullptr) << "no bare spelling";
    }
}

// A process whose first library call is a matrix copy: that call settles the interface
// layer from the environment, so a later setter finds it taken. Sizes of -2^32 + 2 copy
// two rows at 32 bits and are refused at 64.
class BackendTransFirstCall : public ::testing::TestWithParam<std::tuple<const char*, bool>> {};

TEST_P(BackendTransFirstCall, SettlesTheInterfaceLayer) {
  const auto [variable, c_spelling] = GetParam();
  if (*variable)
    setenv("QNL_INTERFACE_LAYER", variable, 1);
  else
    unsetenv("QNL_INTERFACE_LAYER");
  const int settled = std::string(variable) == "ILP64" || std::string(variable) == "ilp64";
  const double a[4] = {1, 2, 3, 4}, one = 1;
  double b[4] = {};
  if (c_spelling) {
    named<void(char, char, size_t, size_t, double, const double*, size_t, double*, size_t), double>("omatcopy", true)(
        'C', 'N', 2, 2, one, a, 2, b, 2);
    EXPECT_EQ(b[3], 4.0);
  } else {
    const int64_t cell = -(int64_t{1} << 32) + 2;
    printed([&] { qnl_domatcopy("C", "N", &cell, &cell, &one, a, &cell, b, &cell); });
    EXPECT_EQ(b[3], settled ? 0.0 : 4.0);
  }
  EXPECT_EQ(QNL_Set_Interface_Layer(1 - settled), settled) << "the layer is already settled";
}

INSTANTIATE_TEST_SUITE_P(Environments, BackendTransFirstCall,
                         ::testing::Values(std::make_tuple("ILP64", true), std::make_tuple("ilp64", false),
                                           std::make_tuple("", true), std::make_tuple("LP64", false)),
                         [](const auto& info) {
                           return std::string(std::get<1>(info.param) ? "C_" : "Fortran_") +
                                  (*std::get<0>(info.param) ? std::get<0>(info.param) : "unset");
                         });

}  // namespace
