// Matrix copy, transposition and addition computed by the reference back-end, through the
// facade's entries, for the four types: every result element against a plain loop over
// the definition, the padding between columns left alone, and bad arguments reported.
#include <cstdint>
#include <string>
#include <vector>

#include "reference_types.h"

extern "C" int QNL_Set_Interface_Layer(int);

using namespace ref_test;

namespace {

template <class F>
F* named_entry(const std::string& stem, bool c_spelling) {
  std::string name = c_spelling ? "QNL_" + stem : "qnl_" + stem;
  void* p = dlsym(RTLD_DEFAULT, name.c_str());
  EXPECT_NE(p, nullptr) << name;
  return reinterpret_cast<F*>(p);
}

template <class T>
std::string stem(const char* family, bool c_spelling) {
  const char l = kLetter<T>;
  return std::string(1, c_spelling ? static_cast<char>(l - 32) : l) + family;
}

bool upper_is(char c, char u) { return c == u || c == u + 32; }

// Position of element (i, j) of a matrix stored in `order` with leading dimension `ld`
// and minor stride `s`.
size_t pos(char order, size_t i, size_t j, size_t ld, size_t s = 1) {
  return upper_is(order, 'R') ? i * ld + j * s : i * s + j * ld;
}

// op(X)(i, j) by definition, op given by its letter.
template <class T>
T op_at(const std::vector<T>& x, char order, char trans, size_t i, size_t j, size_t ld, size_t s = 1) {
  const bool t = upper_is(trans, 'T') || upper_is(trans, 'C');
  const bool c = upper_is(trans, 'C') || upper_is(trans, 'R');
  return conj_if(t ? x[pos(order, j, i, ld, s)] : x[pos(order, i, j, ld, s)], c);
}

template <class T>
void expect_close(T got, T want, const std::string& where) {
  // Each element is one multiply and at most one add: a few units of rounding.
  ASSERT_LE(std::abs(got - want), 8 * eps<T>() * std::abs(want) + 1e-30) << where << " got " << got << " want " << want;
}

struct CopyCase {
  char order, trans;
  size_t rows, cols;
};

const CopyCase kCopyCases[] = {{'C', 'N', 5, 3},   {'C', 'T', 5, 3},   {'C', 'C', 37, 70},  {'C', 'R', 70, 37},
                               {'R', 'N', 37, 70}, {'R', 'T', 70, 37}, {'r', 'c', 64, 64},  {'c', 'r', 1, 1},
                               {'R', 'n', 0, 4},   {'c', 't', 3, 0},   {'C', 't', 129, 65}, {'R', 't', 4, 2},
                               {'r', 'T', 64, 1}};

template <class T>
class BackendTrans : public ::testing::Test {};
TYPED_TEST_SUITE(BackendTrans, AllTypes);

const std::complex<double> kAlpha(1.5, -0.75), kBeta(-0.5, 2.0);

// Out of place, with and without minor strides, in both spellings: each result element
// against the definition, every other element of B left as it was.
TYPED_TEST(BackendTrans, OutOfPlaceCopiesMatchTheDefinition) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using C2 = void(char, char, size_t, size_t, T, const T*, size_t, size_t, T*, size_t, size_t);
  using C1 = void(char, char, size_t, size_t, T, const T*, size_t, T*, size_t);
  using F2 = void(const char*, const char*, const int32_t*, const int32_t*, const T*, const T*, const int32_t*,
                  const int32_t*, T*, const int32_t*, const int32_t*);
  auto* c1 = named_entry<C1>(stem<T>("omatcopy", true), true);
  auto* c2 = named_entry<C2>(stem<T>("omatcopy2", true), true);
  auto* f2 = named_entry<F2>(stem<T>("omatcopy2", false), false);
  const T sentinel = value<T>(999);
  // Alpha one also takes the short road of small plain transpositions.
  for (const T alpha : {scalar<T>(kAlpha), scalar<T>(1.0)})
    for (const CopyCase& cc : kCopyCases) {
      for (int form = 0; form < 3; ++form) {  // omatcopy, omatcopy2 in C, omatcopy2 in Fortran
        const size_t sa = form == 0 ? 1 : 2, sb = form == 0 ? 1 : 3;
        const bool t = upper_is(cc.trans, 'T') || upper_is(cc.trans, 'C');
        const size_t brows = t ? cc.cols : cc.rows, bcols = t ? cc.rows : cc.cols;
        const bool row_major = upper_is(cc.order, 'R');
        const size_t lda = (row_major ? cc.cols : cc.rows) * sa + 3, ldb = (row_major ? bcols : brows) * sb + 2;
        std::vector<T> a(lda * (row_major ? cc.rows : cc.cols) + 1), b(ldb * (row_major ? brows : bcols) + 1, sentinel);
        for (size_t k = 0; k < a.size(); ++k) a[k] = value<T>(static_cast<int>(k));
        if (form == 0) {
          c1(cc.order, cc.trans, cc.rows, cc.cols, alpha, a.data(), lda, b.data(), ldb);
        } else if (form == 1) {
          c2(cc.order, cc.trans, cc.rows, cc.cols, alpha, a.data(), lda, sa, b.data(), ldb, sb);
        } else {
          const int32_t r = static_cast<int32_t>(cc.rows), c = static_cast<int32_t>(cc.cols);
          const int32_t la = static_cast<int32_t>(lda), lb = static_cast<int32_t>(ldb);
          const int32_t s1 = static_cast<int32_t>(sa), s2 = static_cast<int32_t>(sb);
          f2(&cc.order, &cc.trans, &r, &c, &alpha, a.data(), &la, &s1, b.data(), &lb, &s2);
        }
        std::vector<bool> written(b.size(), false);
        for (size_t i = 0; i < brows; ++i)
          for (size_t j = 0; j < bcols; ++j) {
            const size_t p = pos(cc.order, i, j, ldb, sb);
            written[p] = true;
            const std::string where = std::string("form ") + std::to_string(form) + " " + cc.order + cc.trans + " " +
                                      std::to_string(cc.rows) + "x" + std::to_string(cc.cols) + " (" +
                                      std::to_string(i) + "," + std::to_string(j) + ")";
            expect_close(b[p], alpha * op_at(a, cc.order, cc.trans, i, j, lda, sa), where);
          }
        for (size_t p = 0; p < b.size(); ++p)
          if (!written[p]) {
            ASSERT_EQ(b[p], sentinel) << "element " << p << " outside the result was written";
          }
      }
    }
}

// In place: a square transposition with one leading dimension, a copy where the leading
// dimension shrinks or grows, and a rectangular transposition.
TYPED_TEST(BackendTrans, InPlaceCopiesMatchTheDefinition) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(1), 1);
  using F =
      void(const char*, const char*, const int64_t*, const int64_t*, const T*, T*, const int64_t*, const int64_t*);
  using C = void(char, char, size_t, size_t, T, T*, size_t, size_t);
  auto* fortran = named_entry<F>(stem<T>("imatcopy", false), false);
  auto* c = named_entry<C>(stem<T>("imatcopy", true), true);
  const T alpha = scalar<T>(kAlpha);
  struct InPlace {
    char order, trans;
    size_t rows, cols, lda, ldb;
  } cases[] = {{'C', 'T', 70, 70, 73, 73}, {'R', 'C', 33, 33, 33, 33}, {'C', 'N', 20, 9, 25, 21},
               {'C', 'R', 20, 9, 21, 25},  {'R', 'T', 9, 20, 22, 11},  {'C', 'c', 40, 17, 40, 17},
               {'c', 'n', 0, 5, 1, 1}};
  for (const InPlace& ip : cases) {
    for (bool c_spelling : {false, true}) {
      const bool row_major = upper_is(ip.order, 'R');
      const bool t = upper_is(ip.trans, 'T') || upper_is(ip.trans, 'C');
      const size_t brows = t ? ip.cols : ip.rows, bcols = t ? ip.rows : ip.cols;
      const size_t size = std::max(ip.lda * (row_major ? ip.rows : ip.cols), ip.ldb * (row_major ? brows : bcols));
      std::vector<T> ab(size + 1);
      for (size_t k = 0; k < ab.size(); ++k) ab[k] = value<T>(static_cast<int>(k));
      const std::vector<T> a = ab;
      if (c_spelling) {
        c(ip.order, ip.trans, ip.rows, ip.cols, alpha, ab.data(), ip.lda, ip.ldb);
      } else {
        const int64_t r = static_cast<int64_t>(ip.rows), cl = static_cast<int64_t>(ip.cols);
        const int64_t la = static_cast<int64_t>(ip.lda), lb = static_cast<int64_t>(ip.ldb);
        fortran(&ip.order, &ip.trans, &r, &cl, &alpha, ab.data(), &la, &lb);
      }
      for (size_t i = 0; i < brows; ++i)
        for (size_t j = 0; j < bcols; ++j)
          expect_close(ab[pos(ip.order, i, j, ip.ldb)], alpha * op_at(a, ip.order, ip.trans, i, j, ip.lda),
                       std::string(1, ip.order) + ip.trans + " " + std::to_string(ip.rows) + "x" +
                           std::to_string(ip.cols) + " (" + std::to_string(i) + "," + std::to_string(j) + ")");
    }
  }
}

// C = alpha op(A) + beta op(B) for every pair of operations, and in place over A.
TYPED_TEST(BackendTrans, AdditionMatchesTheDefinition) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using C = void(char, char, char, size_t, size_t, T, const T*, size_t, T, const T*, size_t, T*, size_t);
  auto* add = named_entry<C>(stem<T>("omatadd", true), true);
  const T alpha = scalar<T>(kAlpha), beta = scalar<T>(kBeta);
  const char ops[] = {'N', 'T', 'C', 'R'};
  for (char order : {'C', 'r'})
    for (char ta : ops)
      for (char tb : ops)
        for (bool in_place : {false, true}) {
          const size_t rows = 45, cols = 38;
          const bool row_major = upper_is(order, 'R');
          auto ld_of = [&](char tr) {
            const bool t = tr == 'T' || tr == 'C';
            return (row_major != t ? cols : rows) + 1;  // minor size of the stored operand
          };
          const size_t lda = ld_of(ta), ldb = ld_of(tb), ldc = (row_major ? cols : rows) + 2;
          if (in_place && lda != ldc) continue;
          std::vector<T> a(lda * std::max(rows, cols)), b(ldb * std::max(rows, cols)), c(ldc * std::max(rows, cols));
          for (size_t k = 0; k < a.size(); ++k) a[k] = value<T>(static_cast<int>(k));
          for (size_t k = 0; k < b.size(); ++k) b[k] = value<T>(static_cast<int>(3 * k + 1));
          const std::vector<T> a0 = a;
          T* out = in_place ? a.data() : c.data();
          add(order, ta, tb, rows, cols, alpha, a.data(), lda, beta, b.data(), ldb, out, in_place ? lda : ldc);
          if (in_place && (ta == 'T' || ta == 'C')) continue;  // aliasing a transposed A is not defined
          for (size_t i = 0; i < rows; ++i)
            for (size_t j = 0; j < cols; ++j)
              expect_close(out[pos(order, i, j, in_place ? lda : ldc)],
                           alpha * op_at(a0, order, ta, i, j, lda) + beta * op_at(b, order, tb, i, j, ldb),
                           std::string(1, order) + ta + tb + (in_place ? " in place" : "") + " (" + std::to_string(i) +
                               "," + std::to_string(j) + ")");
        }
}

// Bad options and leading dimensions are reported with their parameter number under the
// routine's name, and nothing is written.
TYPED_TEST(BackendTrans, BadArgumentsAreReportedAndNothingIsWritten) {
  using T = TypeParam;
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  using C1 = void(char, char, size_t, size_t, T, const T*, size_t, T*, size_t);
  using CA = void(char, char, char, size_t, size_t, T, const T*, size_t, T, const T*, size_t, T*, size_t);
  using F1 = void(const char*, const char*, const int32_t*, const int32_t*, const T*, const T*, const int32_t*, T*,
                  const int32_t*);
  auto* copy = named_entry<C1>(stem<T>("omatcopy", true), true);
  auto* fcopy = named_entry<F1>(stem<T>("omatcopy", false), false);
  auto* add = named_entry<CA>(stem<T>("omatadd", true), true);
  const char L = static_cast<char>(kLetter<T> - 32);
  const std::string copy_name = std::string("QNL_") + L + "OMATCOPY", add_name = std::string("QNL_") + L + "OMATADD";
  std::vector<T> a(64, value<T>(1)), b(64, value<T>(2));
  const T one = scalar<T>(1.0);
  struct Bad {
    char order, trans;
    size_t rows, cols, lda, ldb;
    int param;
  } bad[] = {{'X', 'N', 2, 2, 2, 2, 1}, {'C', 'Q', 2, 2, 2, 2, 2}, {'C', 'N', 3, 2, 2, 3, 7},
             {'R', 'N', 2, 3, 2, 3, 7}, {'C', 'T', 3, 2, 3, 1, 9}, {'R', 'T', 3, 2, 2, 2, 9}};
  for (const Bad& x : bad) {
    EXPECT_EQ(printed([&] { copy(x.order, x.trans, x.rows, x.cols, one, a.data(), x.lda, b.data(), x.ldb); }),
              report(x.param, copy_name));
    for (const T& v : b) ASSERT_EQ(v, value<T>(2));
  }
  // A negative row count from an LP64 caller arrives sign-extended and is refused.
  const int32_t minus = -2, two = 2;
  EXPECT_EQ(printed([&] { fcopy("C", "N", &minus, &two, &one, a.data(), &two, b.data(), &two); }),
            report(3, copy_name));
  EXPECT_EQ(printed([&] { add('C', 'N', 'T', 3, 2, one, a.data(), 3, one, b.data(), 1, b.data(), 3); }),
            report(11, add_name));
  for (const T& v : b) ASSERT_EQ(v, value<T>(2));
}

}  // namespace
