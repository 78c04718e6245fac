// CBLAS entries from the routine table, on both interfaces: the exported set, what reaches
// the Fortran back-end symbol in column-major and in row-major, and the parameter numbers
// of the checks.
#include <dlfcn.h>

#include <set>

#include "cblas_harness.h"

using namespace cblas_test;

namespace {

bool computed_here(const CblasCase& c) { return c.fortran[0] == '\0'; }
bool batch(const CblasCase& c) { return std::strcmp(c.shape, "gemm_batch") == 0; }

TEST(CblasExports, EveryTableEntryAndNoXerbla) {
  std::set<std::string> names;
  for (const auto& c : kCblasCases) {
    EXPECT_NE(dlsym(RTLD_DEFAULT, c.name), nullptr) << c.name;
    names.insert(c.name);
  }
  EXPECT_EQ(names.size(), std::size(kCblasCases)) << "no name twice";
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "cblas_xerbla"), nullptr);
  for (const char* w :
       {"cblas_dgemm_alloc_lp64", "cblas_dgemm_alloc_ilp64", "cblas_sgemm_alloc_lp64", "cblas_sgemm_alloc_ilp64"})
    EXPECT_NE(dlsym(RTLD_DEFAULT, w), nullptr) << w;
}

// Column-major calls that pass every check reach the Fortran entry once, with the integers
// in their C order and every array and scalar in its C order.
template <class I>
void column_major_forwarding(Layer layer) {
  set_layer(layer);
  watch();
  int checked = 0;
  for (const auto& c : kCblasCases) {
    if (computed_here(c) || batch(c)) continue;
    SCOPED_TRACE(c.name);
    qnl_probe_reset();
    seen_by_symbol().clear();
    Args<I> args(c);
    args.run();
    EXPECT_TRUE(reports().empty());
    const Seen* s = seen(c.fortran);
    ASSERT_NE(s, nullptr) << "no call of " << c.fortran;
    EXPECT_EQ(qnl_probe_count_of((std::string("qnl_blas_") + c.fortran).c_str()), 1);
    std::vector<int64_t> ints;
    std::vector<std::string> pointers;
    std::string chars;  // the defaults' letters, in C order
    for (const char* p = c.codes; *p; ++p) {
      const char* at = std::strchr("TUGSDK", *p);
      if (at) chars += "NUNLAN"[at - "TUGSDK"];
    }
    const auto names = split(c.args);
    for (size_t k = 0; k < names.size(); ++k) {
      if (c.codes[k] == 'i') ints.push_back(args.template arg<I>(static_cast<int>(k)));
      if (std::strchr("areywv", c.codes[k]) && names[k] != "result") pointers.push_back(names[k]);
    }
    EXPECT_EQ(s->ints, ints);
    EXPECT_EQ(s->chars, chars);
    EXPECT_EQ(join(pointer_names(args, *s)), join(pointers));
    ++checked;
  }
  EXPECT_GT(checked, 150);
}

TEST(CblasForwarding, ColumnMajorLp64) { column_major_forwarding<int32_t>(LP64); }
TEST(CblasForwarding, ColumnMajorIlp64) { column_major_forwarding<int64_t>(ILP64); }

// Row-major calls: option letters, integers and pointer arguments at the Fortran entry.
struct RowCase {
  const char* name;
  Overrides over;
  const char* fortran;
  const char* chars;
  std::vector<int64_t> ints;
  const char* pointers;
};

const RowCase kRowCases[] = {
    {"cblas_dgemv", {{"m", 3}, {"n", 5}, {"lda", 5}}, "dgemv", "T", {5, 3, 5, 1, 1}, "alpha,a,x,beta,y"},
    {"cblas_sgemv",
     {{"trans", 112}, {"m", 3}, {"n", 5}, {"lda", 5}},
     "sgemv",
     "N",
     {5, 3, 5, 1, 1},
     "alpha,a,x,beta,y"},
    {"cblas_dgemv",
     {{"trans", 113}, {"m", 3}, {"n", 5}, {"lda", 5}},
     "dgemv",
     "N",
     {5, 3, 5, 1, 1},
     "alpha,a,x,beta,y"},
    {"cblas_cgemv",
     {{"trans", 112}, {"m", 3}, {"n", 5}, {"lda", 5}},
     "cgemv",
     "N",
     {5, 3, 5, 1, 1},
     "alpha,a,x,beta,y"},
    {"cblas_zgemv",
     {{"trans", 113}, {"m", 3}, {"n", 5}, {"lda", 5}},
     "zgemv",
     "N",
     {5, 3, 5, 1, 1},
     "~alpha,a,scratch,~beta,y"},
    {"cblas_dgbmv",
     {{"m", 3}, {"n", 5}, {"kl", 1}, {"ku", 2}, {"lda", 4}},
     "dgbmv",
     "T",
     {5, 3, 2, 1, 4, 1, 1},
     "alpha,a,x,beta,y"},
    {"cblas_zgbmv",
     {{"trans", 113}, {"m", 3}, {"n", 5}, {"kl", 2}, {"ku", 1}, {"lda", 4}},
     "zgbmv",
     "N",
     {5, 3, 1, 2, 4, 1, 1},
     "~alpha,a,scratch,~beta,y"},
    {"cblas_dger",
     {{"m", 3}, {"n", 5}, {"lda", 5}, {"incx", 2}, {"incy", 3}},
     "dger",
     "",
     {5, 3, 3, 2, 5},
     "alpha,y,x,a"},
    {"cblas_zgeru",
     {{"m", 3}, {"n", 5}, {"lda", 5}, {"incx", 2}, {"incy", 3}},
     "zgeru",
     "",
     {5, 3, 3, 2, 5},
     "alpha,y,x,a"},
    {"cblas_cgerc",
     {{"m", 3}, {"n", 5}, {"lda", 5}, {"incx", 2}, {"incy", 3}},
     "cgeru",
     "",
     {5, 3, 1, 2, 5},
     "alpha,scratch,x,a"},
    {"cblas_dsymv", {}, "dsymv", "L", {2, 50, 1, 1}, "alpha,a,x,beta,y"},
    {"cblas_ssymv", {{"uplo", 122}}, "ssymv", "U", {2, 50, 1, 1}, "alpha,a,x,beta,y"},
    {"cblas_zhemv", {}, "zhemv", "L", {2, 50, 1, 1}, "~alpha,a,scratch,~beta,y"},
    {"cblas_dsbmv", {}, "dsbmv", "L", {2, 1, 50, 1, 1}, "alpha,a,x,beta,y"},
    {"cblas_chbmv", {}, "chbmv", "L", {2, 1, 50, 1, 1}, "~alpha,a,scratch,~beta,y"},
    {"cblas_dspmv", {}, "dspmv", "L", {2, 1, 1}, "alpha,ap,x,beta,y"},
    {"cblas_zhpmv", {}, "zhpmv", "L", {2, 1, 1}, "~alpha,ap,scratch,~beta,y"},
    {"cblas_dsyr", {}, "dsyr", "L", {2, 1, 50}, "alpha,x,a"},
    {"cblas_zher", {}, "zher", "L", {2, 1, 50}, "alpha,scratch,a"},
    {"cblas_dspr", {}, "dspr", "L", {2, 1}, "alpha,x,ap"},
    {"cblas_chpr", {}, "chpr", "L", {2, 1}, "alpha,scratch,ap"},
    {"cblas_dsyr2", {}, "dsyr2", "L", {2, 1, 1, 50}, "alpha,x,y,a"},
    {"cblas_zher2", {}, "zher2", "L", {2, 1, 1, 50}, "alpha,scratch,scratch,a"},
    {"cblas_dspr2", {}, "dspr2", "L", {2, 1, 1}, "alpha,x,y,ap"},
    {"cblas_chpr2", {}, "chpr2", "L", {2, 1, 1}, "alpha,scratch,scratch,ap"},
    {"cblas_dtrmv", {{"diag", 132}}, "dtrmv", "LTU", {2, 50, 1}, "a,x"},
    {"cblas_strsv", {{"uplo", 122}, {"trans", 112}}, "strsv", "UNN", {2, 50, 1}, "a,x"},
    {"cblas_ztrmv", {{"trans", 113}}, "ztrmv", "LNN", {2, 50, 1}, "a,x"},
    {"cblas_dtbmv", {}, "dtbmv", "LTN", {2, 1, 50, 1}, "a,x"},
    {"cblas_ctbsv", {{"trans", 113}}, "ctbsv", "LNN", {2, 1, 50, 1}, "a,x"},
    {"cblas_dtpmv", {}, "dtpmv", "LTN", {2, 1}, "ap,x"},
    {"cblas_ztpsv", {{"trans", 112}}, "ztpsv", "LNN", {2, 1}, "ap,x"},
    {"cblas_dgemm",
     {{"transb", 112}, {"m", 3}, {"n", 5}, {"k", 4}, {"lda", 4}, {"ldb", 4}, {"ldc", 5}},
     "dgemm",
     "TN",
     {5, 3, 4, 4, 4, 5},
     "alpha,b,a,beta,c"},
    {"cblas_zgemm3m",
     {{"m", 3}, {"n", 5}, {"k", 4}, {"lda", 4}, {"ldb", 5}, {"ldc", 5}},
     "zgemm3m",
     "NN",
     {5, 3, 4, 5, 4, 5},
     "alpha,b,a,beta,c"},
    {"cblas_dgemmt",
     {{"transb", 112}, {"n", 3}, {"k", 4}, {"lda", 4}, {"ldb", 4}, {"ldc", 3}},
     "dgemmt",
     "LTN",
     {3, 4, 4, 4, 3},
     "alpha,b,a,beta,c"},
    {"cblas_dsymm",
     {{"m", 3}, {"n", 5}, {"lda", 3}, {"ldb", 5}, {"ldc", 5}},
     "dsymm",
     "RL",
     {5, 3, 3, 5, 5},
     "alpha,a,b,beta,c"},
    {"cblas_zhemm",
     {{"side", 142}, {"uplo", 122}, {"m", 3}, {"n", 5}, {"lda", 5}, {"ldb", 5}, {"ldc", 5}},
     "zhemm",
     "LU",
     {5, 3, 5, 5, 5},
     "alpha,a,b,beta,c"},
    {"cblas_dsyrk", {{"n", 3}, {"k", 4}, {"lda", 4}, {"ldc", 3}}, "dsyrk", "LT", {3, 4, 4, 3}, "alpha,a,beta,c"},
    {"cblas_zsyrk",
     {{"trans", 112}, {"n", 3}, {"k", 4}, {"lda", 3}, {"ldc", 3}},
     "zsyrk",
     "LN",
     {3, 4, 3, 3},
     "alpha,a,beta,c"},
    {"cblas_cherk", {{"n", 3}, {"k", 4}, {"lda", 4}, {"ldc", 3}}, "cherk", "LC", {3, 4, 4, 3}, "alpha,a,beta,c"},
    {"cblas_zherk",
     {{"trans", 113}, {"n", 3}, {"k", 4}, {"lda", 3}, {"ldc", 3}},
     "zherk",
     "LN",
     {3, 4, 3, 3},
     "alpha,a,beta,c"},
    {"cblas_dsyr2k",
     {{"n", 3}, {"k", 4}, {"lda", 4}, {"ldb", 4}, {"ldc", 3}},
     "dsyr2k",
     "LT",
     {3, 4, 4, 4, 3},
     "alpha,a,b,beta,c"},
    {"cblas_zher2k",
     {{"n", 3}, {"k", 4}, {"lda", 4}, {"ldb", 4}, {"ldc", 3}},
     "zher2k",
     "LC",
     {3, 4, 4, 4, 3},
     "~alpha,a,b,beta,c"},
    {"cblas_csyr2k",
     {{"n", 3}, {"k", 4}, {"lda", 4}, {"ldb", 4}, {"ldc", 3}},
     "csyr2k",
     "LT",
     {3, 4, 4, 4, 3},
     "alpha,a,b,beta,c"},
    {"cblas_dtrmm",
     {{"uplo", 122}, {"transa", 112}, {"diag", 132}, {"m", 3}, {"n", 5}, {"lda", 3}, {"ldb", 5}},
     "dtrmm",
     "RUTU",
     {5, 3, 3, 5},
     "alpha,a,b"},
    {"cblas_ztrsm",
     {{"side", 142}, {"m", 3}, {"n", 5}, {"lda", 5}, {"ldb", 5}},
     "ztrsm",
     "LLNN",
     {5, 3, 5, 5},
     "alpha,a,b"},
    {"cblas_dgemm_pack", {{"m", 3}, {"n", 5}, {"k", 4}, {"ld", 4}}, "dgemm_pack", "BN", {5, 3, 4, 4}, "alpha,src,dest"},
    {"cblas_sgemm_pack",
     {{"identifier", 162}, {"trans", 112}, {"m", 3}, {"n", 5}, {"k", 4}, {"ld", 4}},
     "sgemm_pack",
     "AT",
     {5, 3, 4, 4},
     "alpha,src,dest"},
    {"cblas_dgemm_compute",
     {{"transa", 151}, {"m", 3}, {"n", 5}, {"k", 4}, {"lda", 1}, {"ldb", 5}, {"ldc", 5}},
     "dgemm_compute",
     "NP",
     {5, 3, 4, 5, 1, 5},
     "b,a,beta,c"},
};

template <class I>
void row_major_forwarding(Layer layer) {
  set_layer(layer);
  watch();
  for (const auto& rc : kRowCases) {
    SCOPED_TRACE(rc.name);
    qnl_probe_reset();
    seen_by_symbol().clear();
    Overrides over = rc.over;
    over["layout"] = 101;
    Args<I> args(cblas_case(rc.name), over);
    args.run();
    EXPECT_TRUE(reports().empty());
    const Seen* s = seen(rc.fortran);
    ASSERT_NE(s, nullptr) << "no call of " << rc.fortran;
    EXPECT_EQ(s->chars, rc.chars);
    EXPECT_EQ(s->ints, rc.ints);
    EXPECT_EQ(join(pointer_names(args, *s)), rc.pointers);
    EXPECT_EQ(qnl_probe_live_allocations(), 0) << "scratch freed";
  }
}

TEST(CblasForwarding, RowMajorLp64) { row_major_forwarding<int32_t>(LP64); }
TEST(CblasForwarding, RowMajorIlp64) { row_major_forwarding<int64_t>(ILP64); }

// Checks: the C parameter numbers reported, and whether the Fortran entry was still called.
struct CheckCase {
  const char* name;
  Overrides over;
  std::vector<int32_t> numbers;
  bool reaches;  // the call goes on to the Fortran entry (which may turn it down itself)
};

constexpr double kBad = 7;

const CheckCase kCheckCases[] = {
    // level 2: layout first, options report and go on, then numeric checks in table order
    {"cblas_dgemv", {{"layout", kBad}, {"m", -1}}, {1}, false},
    {"cblas_dgemv", {{"trans", kBad}}, {2}, true},
    {"cblas_dgemv", {{"trans", kBad}, {"m", -1}}, {2, 3}, false},
    {"cblas_dgemv", {{"n", -1}}, {4}, false},
    {"cblas_dgemv", {{"m", 3}, {"lda", 2}}, {7}, false},
    {"cblas_dgemv", {{"layout", 101}, {"m", 3}, {"lda", 2}}, {}, true},
    {"cblas_dgemv", {{"layout", 101}, {"n", 3}, {"lda", 2}}, {7}, false},
    {"cblas_dgemv", {{"incx", 0}}, {9}, false},
    {"cblas_dgemv", {{"incy", 0}}, {12}, false},
    {"cblas_zgemv", {{"layout", 101}, {"trans", kBad}, {"m", 0}}, {}, false},
    {"cblas_zgemv", {{"trans", kBad}, {"m", 0}}, {2}, false},
    {"cblas_zgemv", {{"layout", 101}, {"trans", kBad}, {"incx", 0}}, {9}, false},
    {"cblas_dgemv", {{"m", 0}}, {}, false},
    {"cblas_sgemv", {{"alpha", 0}, {"beta", 1}}, {}, false},
    {"cblas_sgemv", {{"alpha", 0}, {"beta", 1}, {"lda", 1}, {"m", 2}}, {7}, false},
    {"cblas_sgemv", {{"alpha", NAN}, {"beta", 1}}, {}, true},
    {"cblas_dgbmv", {{"m", -1}}, {3}, false},
    {"cblas_dgbmv", {{"kl", -1}}, {5}, false},
    {"cblas_dgbmv", {{"ku", -1}}, {6}, false},
    {"cblas_dgbmv", {{"kl", 1}, {"ku", 1}, {"lda", 2}}, {9}, false},
    {"cblas_dgbmv", {{"incx", 0}}, {11}, false},
    {"cblas_dgbmv", {{"incy", 0}}, {14}, false},
    {"cblas_zgbmv", {{"n", 0}}, {}, false},
    {"cblas_dger", {{"layout", kBad}}, {1}, false},
    {"cblas_dger", {{"m", -1}}, {2}, false},
    {"cblas_dger", {{"n", -1}}, {3}, false},
    {"cblas_dger", {{"m", 3}, {"lda", 2}, {"incx", 0}}, {10}, false},
    {"cblas_dger", {{"incx", 0}, {"incy", 0}}, {6}, false},
    {"cblas_zgerc", {{"incy", 0}}, {8}, false},
    {"cblas_zgerc", {{"layout", 101}, {"incy", 0}}, {8}, false},
    {"cblas_dsymv", {{"uplo", kBad}}, {2}, true},
    {"cblas_dsymv", {{"n", -1}}, {3}, false},
    {"cblas_dsymv", {{"n", 3}, {"lda", 2}, {"incx", 0}}, {6}, false},
    {"cblas_zhemv", {{"incx", 0}}, {8}, false},
    {"cblas_zhemv", {{"incy", 0}}, {11}, false},
    {"cblas_dsbmv", {{"k", -1}}, {4}, false},
    {"cblas_dsbmv", {{"k", 2}, {"lda", 2}}, {7}, false},
    {"cblas_zhbmv", {{"incx", 0}}, {9}, false},
    {"cblas_zhbmv", {{"incy", 0}}, {12}, false},
    {"cblas_dspmv", {{"incx", 0}}, {7}, false},
    {"cblas_chpmv", {{"incy", 0}}, {10}, false},
    {"cblas_dsyr", {{"n", 3}, {"lda", 2}, {"incx", 0}}, {8}, false},
    {"cblas_zher", {{"incx", 0}}, {6}, false},
    {"cblas_dspr", {{"incx", 0}}, {6}, false},
    {"cblas_dsyr2", {{"n", 3}, {"lda", 2}, {"incx", 0}}, {10}, false},
    {"cblas_cher2", {{"incx", 0}}, {6}, false},
    {"cblas_cher2", {{"incy", 0}}, {8}, false},
    {"cblas_dspr2", {{"incy", 0}}, {8}, false},
    {"cblas_dtrmv", {{"uplo", kBad}}, {2}, true},
    {"cblas_dtrmv", {{"trans", kBad}, {"diag", kBad}}, {3, 4}, true},
    {"cblas_dtrsv", {{"uplo", kBad}, {"n", -1}}, {2}, false},
    {"cblas_ztrsv", {{"trans", kBad}}, {3}, false},
    {"cblas_ctrsv", {{"diag", kBad}}, {4}, false},
    {"cblas_dtrsv", {{"n", -1}}, {5}, false},
    {"cblas_dtrmv", {{"n", 3}, {"lda", 2}}, {7}, false},
    {"cblas_dtrmv", {{"incx", 0}}, {9}, false},
    {"cblas_dtbsv", {{"uplo", kBad}}, {2}, true},
    {"cblas_dtbmv", {{"k", -1}}, {6}, false},
    {"cblas_dtbmv", {{"k", 1}, {"lda", 1}}, {8}, false},
    {"cblas_dtbmv", {{"incx", 0}}, {10}, false},
    {"cblas_dtpmv", {{"n", -1}}, {5}, false},
    {"cblas_stpsv", {{"incx", 0}}, {8}, false},
    // level 3: options, sizes, then the layout, then leading dimensions
    {"cblas_dgemm", {{"layout", kBad}, {"m", -1}}, {4}, false},
    {"cblas_dgemm", {{"layout", kBad}}, {1}, false},
    {"cblas_dgemm", {{"transa", kBad}, {"m", -1}}, {2}, false},
    {"cblas_dgemm", {{"transb", kBad}}, {3}, false},
    {"cblas_dgemm", {{"n", -1}}, {5}, false},
    {"cblas_dgemm", {{"k", -1}}, {6}, false},
    {"cblas_dgemm", {{"m", 3}, {"lda", 2}}, {9}, false},
    {"cblas_dgemm", {{"transa", 112}, {"m", 3}, {"lda", 2}}, {}, true},
    {"cblas_dgemm", {{"layout", 101}, {"k", 3}, {"lda", 2}}, {9}, false},
    {"cblas_dgemm", {{"transb", 113}, {"n", 3}, {"ldb", 2}}, {11}, false},
    {"cblas_dgemm", {{"layout", 101}, {"n", 3}, {"ldb", 2}}, {11}, false},
    {"cblas_dgemm", {{"m", 3}, {"ldc", 2}}, {14}, false},
    {"cblas_dgemm", {{"layout", 101}, {"n", 3}, {"ldc", 2}}, {14}, false},
    {"cblas_cgemm3m", {{"k", -1}}, {6}, false},
    {"cblas_cgemmt", {{"transa", 113}}, {3}, false},
    {"cblas_zgemmt", {{"transb", 113}}, {4}, false},
    {"cblas_dgemmt", {{"transa", 113}}, {}, true},
    {"cblas_dgemmt", {{"uplo", kBad}}, {2}, false},
    {"cblas_sgemmt", {{"n", -1}}, {5}, false},
    {"cblas_sgemmt", {{"k", -1}}, {6}, false},
    {"cblas_dgemmt", {{"n", 3}, {"lda", 2}}, {9}, false},
    {"cblas_dgemmt", {{"n", 3}, {"transb", 112}, {"ldb", 2}}, {11}, false},
    {"cblas_dgemmt", {{"n", 3}, {"ldc", 2}}, {14}, false},
    {"cblas_dsymm", {{"side", kBad}}, {2}, false},
    {"cblas_dsymm", {{"uplo", kBad}}, {3}, false},
    {"cblas_zhemm", {{"m", -1}}, {4}, false},
    {"cblas_zhemm", {{"n", -1}}, {5}, false},
    {"cblas_dsymm", {{"m", 3}, {"lda", 2}}, {8}, false},
    {"cblas_dsymm", {{"side", 142}, {"n", 3}, {"lda", 2}}, {8}, false},
    {"cblas_dsymm", {{"m", 3}, {"ldb", 2}}, {10}, false},
    {"cblas_dsymm", {{"layout", 101}, {"n", 3}, {"ldc", 2}}, {13}, false},
    {"cblas_zsyrk", {{"trans", 113}}, {3}, false},
    {"cblas_csyrk", {{"trans", 112}}, {}, true},
    {"cblas_dsyrk", {{"trans", 113}}, {}, true},
    {"cblas_zherk", {{"trans", 112}}, {3}, false},
    {"cblas_cherk", {{"trans", 113}}, {}, true},
    {"cblas_zsyr2k", {{"trans", 113}}, {3}, false},
    {"cblas_zher2k", {{"trans", 112}}, {3}, false},
    {"cblas_dsyrk", {{"uplo", kBad}}, {2}, false},
    {"cblas_dsyrk", {{"n", -1}}, {4}, false},
    {"cblas_dsyrk", {{"k", -1}}, {5}, false},
    {"cblas_dsyrk", {{"n", 3}, {"lda", 2}}, {8}, false},
    {"cblas_dsyrk", {{"n", 3}, {"ldc", 2}}, {11}, false},
    {"cblas_dsyr2k", {{"trans", 112}, {"k", 3}, {"ldb", 2}}, {10}, false},
    {"cblas_dsyr2k", {{"n", 3}, {"ldc", 2}}, {13}, false},
    {"cblas_dtrmm", {{"side", kBad}}, {2}, false},
    {"cblas_dtrmm", {{"uplo", kBad}}, {3}, false},
    {"cblas_dtrsm", {{"transa", kBad}}, {4}, false},
    {"cblas_dtrsm", {{"diag", kBad}}, {5}, false},
    {"cblas_ztrmm", {{"m", -1}}, {6}, false},
    {"cblas_ztrmm", {{"n", -1}}, {7}, false},
    {"cblas_dtrmm", {{"m", 3}, {"lda", 2}}, {10}, false},
    {"cblas_dtrmm", {{"m", 3}, {"ldb", 2}}, {12}, false},
    {"cblas_dtrmm", {{"layout", 101}, {"n", 3}, {"ldb", 2}}, {12}, false},
    // packed GEMM
    {"cblas_dgemm_alloc", {{"identifier", kBad}}, {1}, false},
    {"cblas_dgemm_alloc", {{"m", -1}}, {2}, false},
    {"cblas_sgemm_alloc", {{"n", -1}}, {3}, false},
    {"cblas_sgemm_alloc", {{"k", -1}}, {4}, false},
    {"cblas_dgemm_pack", {{"identifier", kBad}}, {2}, false},
    {"cblas_dgemm_pack", {{"trans", kBad}}, {3}, false},
    {"cblas_dgemm_pack", {{"m", -1}}, {4}, false},
    {"cblas_dgemm_pack", {{"n", -1}}, {5}, false},
    {"cblas_dgemm_pack", {{"k", -1}}, {6}, false},
    {"cblas_dgemm_pack", {{"layout", kBad}}, {1}, false},
    {"cblas_dgemm_pack", {{"m", 3}, {"ld", 2}}, {9}, false},
    {"cblas_dgemm_pack", {{"identifier", 162}, {"trans", 112}, {"n", 7}, {"ld", 6}}, {9}, false},
    {"cblas_dgemm_compute", {{"transa", kBad}}, {2}, false},
    {"cblas_dgemm_compute", {{"transb", 152}}, {3}, false},
    {"cblas_dgemm_compute", {{"transa", 151}, {"lda", 0}}, {}, true},
    {"cblas_dgemm_compute", {{"m", 3}, {"lda", 2}}, {8}, false},
    {"cblas_dgemm_compute", {{"k", 3}, {"ldb", 2}}, {10}, false},
    {"cblas_dgemm_compute", {{"transb", 151}, {"k", 3}, {"ldb", 2}}, {}, true},
    {"cblas_dgemm_compute", {{"m", 3}, {"ldc", 2}}, {13}, false},
    // level 1: the index routines return early
    {"cblas_idamax", {{"n", 0}}, {}, false},
    {"cblas_idamax", {{"incx", 0}}, {}, false},
    {"cblas_icamin", {{"incx", -1}}, {}, false},
    {"cblas_ddot", {{"n", -1}}, {}, true},
};

template <class I>
void check_numbers(Layer layer) {
  set_layer(layer);
  for (const auto& cc : kCheckCases) {
    const CblasCase& c = cblas_case(cc.name);
    SCOPED_TRACE(testing::Message() << cc.name << " case " << (&cc - kCheckCases));
    qnl_probe_reset();
    Args<I> args(c, cc.over);
    args.run();
    EXPECT_EQ(cblas_reports(c.name), cc.numbers);
    // a call that goes on meets the Fortran entry's own checks: it may report there too
    const std::string fortran = std::string(c.fortran);
    int entered = 0;
    for (const auto& r : reports()) entered += r.name.rfind("cblas_", 0) != 0;
    entered += qnl_probe_count_of(("qnl_blas_" + fortran).c_str());
    EXPECT_EQ(entered > 0, cc.reaches);
    EXPECT_EQ(qnl_probe_live_allocations(), 0);
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

TEST(CblasResults, DotAndComplexDotComeBack) {
  set_layer(LP64);
  const double v = -2.5;
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  qnl_probe_set_result("qnl_blas_ddot", bits);
  Args<int32_t> dot(cblas_case("cblas_ddot"));
  EXPECT_EQ(dot.run(), bits);
  qnl_probe_set_result("qnl_blas_zdotc", bits);
  Args<int32_t> sub(cblas_case("cblas_zdotc_sub"));
  sub.run();
  // the probe answers the real part and its bitwise complement as the imaginary part
  EXPECT_EQ(sub.buffer("result")[0], -2.5);
  uint64_t im;
  std::memcpy(&im, &sub.buffer("result")[1], sizeof im);
  EXPECT_EQ(im, ~bits);
}

// The packed widths are the two bodies under their own names: no layer decision.
TEST(CblasResults, AllocWidthsNameTheirInterface) {
  set_layer(LP64);
  using Narrow = double* (*)(CBLAS_IDENTIFIER, int32_t, int32_t, int32_t);
  using Wide = double* (*)(CBLAS_IDENTIFIER, int64_t, int64_t, int64_t);
  auto narrow = reinterpret_cast<Narrow>(dlsym(RTLD_DEFAULT, "cblas_dgemm_alloc_lp64"));
  auto wide = reinterpret_cast<Wide>(dlsym(RTLD_DEFAULT, "cblas_dgemm_alloc_ilp64"));
  // -1 in the low half of a 64-bit value is positive: only the ILP64 body lets it through
  EXPECT_EQ(narrow(CblasAMatrix, 2, 2, -1), nullptr);
  EXPECT_EQ(cblas_reports("cblas_dgemm_alloc"), std::vector<int32_t>{4});
  qnl_probe_reset();
  wide(CblasAMatrix, 2, 2, 0xffffffffll);
  EXPECT_TRUE(cblas_reports("cblas_dgemm_alloc").empty());
}

}  // namespace
