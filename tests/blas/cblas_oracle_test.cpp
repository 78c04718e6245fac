// CBLAS entries on the reference back-end against OpenBLAS's own CBLAS (Debian's LP64 build,
// loaded in a scope of its own) on the same generated inputs: every routine both libraries
// export, both layouts, every combination of option values, distinct sizes and negative
// strides, on both interface layers. Every buffer the call was given is compared afterwards,
// inputs included: an exchanged operand, a lost conjugation or a copy not restored shows.
#include <dlfcn.h>

#include <cmath>
#include <complex>

#include "cblas_harness.h"
#include "element_type.h"

using namespace cblas_test;

namespace {

void* openblas() {
  static void* lib = dlopen("libopenblas.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  return lib;
}

// The same arguments, calling OpenBLAS's entry of the same name.
struct Oracle : Args<int32_t> {
  using Args::Args;
  void* entry(const char* name) const { return dlsym(openblas(), name); }
};

// Sizes that fit the harness's buffers in either layout and make every exchange visible.
// clang-format off
const Overrides kSmall = {{"m", 3}, {"n", 5}, {"k", 4}, {"kl", 1}, {"ku", 2}, {"lda", 6}, {"ldb", 7}, {"ldc", 8},
                          {"incx", -2}, {"incy", 3}};
// clang-format on

// Largest difference between two buffers, relative to the larger of 1 and the oracle's largest value.
template <class T>
double distance(const void* got, const void* want, int n) {
  const T* g = static_cast<const T*>(got);
  const T* w = static_cast<const T*>(want);
  double scale = 1, diff = 0;
  for (int i = 0; i < n; ++i) scale = std::max(scale, std::fabs(static_cast<double>(w[i])));
  for (int i = 0; i < n; ++i) diff = std::max(diff, std::fabs(static_cast<double>(g[i]) - w[i]));
  return std::isnan(diff) ? INFINITY : diff / scale;
}

double result_distance(const CblasCase& c, uint64_t got, uint64_t want) {
  if (c.result == 'Z') return got == want ? 0 : INFINITY;  // an index: exactly
  if (c.result == 'R' && (c.type == 's' || c.type == 'c')) return distance<float>(&got, &want, 1);
  return distance<double>(&got, &want, 1);
}

// ?gemmt against OpenBLAS's ?gemm of the same n by n product: the stored triangle is the
// product's, the other one stays as it was.
template <class T>
void keep_other_triangle(const Overrides& over, bool complex, T* product, const T* before) {
  const int n = static_cast<int>(over.at("n")), ldc = static_cast<int>(over.at("ldc")), per = complex ? 2 : 1;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const int at = (over.at("layout") == CblasColMajor ? i + j * ldc : i * ldc + j) * per;
      if (over.at("uplo") == CblasUpper ? j < i : j > i)
        for (int r = 0; r < per; ++r) product[at + r] = before[at + r];
    }
}

std::string oracle_name(const CblasCase& c) {
  const std::string name = c.name;
  return std::strcmp(c.shape, "gemmt") == 0 ? name.substr(0, name.size() - 1) : name;
}

template <class I>
void agrees_with_openblas(Layer layer) {
  ASSERT_NE(openblas(), nullptr) << dlerror();
  set_layer(layer);
  int routines = 0, calls = 0, computed = 0;
  for (const auto& c : kCblasCases) {
    const std::string theirs_name = oracle_name(c);
    if (!dlsym(openblas(), theirs_name.c_str()) || !c.fortran[0] || std::strstr(c.shape, "batch")) continue;
    const bool triangle = theirs_name != c.name;
    const auto names = split(c.args);
    const double tolerance = c.type == 's' || c.type == 'c' ? 1e-4 : 1e-12;
    for (const Overrides& over : option_combinations(c, kSmall, "LTUGS")) {
      if (triangle && (c.type == 'c' || c.type == 'z') && (over.at("transa") == 113 || over.at("transb") == 113))
        continue;  // refused by the complex ?gemmt
      SCOPED_TRACE(testing::Message() << c.name << " " << testing::PrintToString(over));
      Args<I> ours(c, over);
      Overrides square = over;
      if (triangle) square["m"] = over.at("n");
      Oracle theirs(cblas_case(theirs_name), square), fresh(cblas_case(theirs_name), square);
      ours.fill();
      theirs.fill();
      fresh.fill();
      const uint64_t got = ours.run(), want = cblas_call<int32_t>(theirs_name.c_str(), theirs);
      if (triangle && ours.single())
        keep_other_triangle(over, ours.complex(), reinterpret_cast<float*>(theirs.buffer("c")),
                            reinterpret_cast<const float*>(fresh.buffer("c")));
      else if (triangle)
        keep_other_triangle(over, ours.complex(), theirs.buffer("c"), fresh.buffer("c"));
      EXPECT_LE(result_distance(c, got, want), tolerance);
      for (size_t k = 0; k < names.size(); ++k) {
        if (!std::strchr("eywv", c.codes[k])) continue;
        const std::string& name = names[k];
        const double d = ours.single() ? distance<float>(ours.buffer(name), theirs.buffer(name), 512)
                                       : distance<double>(ours.buffer(name), theirs.buffer(name), 256);
        EXPECT_LE(d, tolerance) << name;
      }
      computed += theirs.contents() != fresh.contents() || want != 0;
      ++calls;
    }
    ++routines;
  }
  EXPECT_GT(routines, 140);
  EXPECT_GT(computed, calls * 9 / 10) << "the oracle computed";
  std::printf("compared %d routines in %d calls\n", routines, calls);
}

// The packed product: A, B or both packed once with alpha, then multiplied, against OpenBLAS's
// ?gemm on the same operands (alpha squared when both carry it); both layouts, either
// transposition of each operand.
TEST(CblasOracle, PackedProductIsTheProduct) {
  set_layer(LP64);
  using Gemm = void(int, int, int, int, int, int, double, const double*, int, const double*, int, double, double*, int);
  auto* gemm = reinterpret_cast<Gemm*>(dlsym(openblas(), "cblas_dgemm"));
  ASSERT_NE(gemm, nullptr);
  const int m = 3, n = 5, k = 4, ld = 6;
  for (CBLAS_LAYOUT layout : {CblasRowMajor, CblasColMajor})
    for (int packs : {1, 2, 3})  // bit 0: A packed, bit 1: B packed
      for (CBLAS_TRANSPOSE ta : {CblasNoTrans, CblasTrans})
        for (CBLAS_TRANSPOSE tb : {CblasNoTrans, CblasTrans}) {
          SCOPED_TRACE(testing::Message() << layout << " packs " << packs << " " << ta << " " << tb);
          double a[64], b[64], c[64], want[64];
          for (int i = 0; i < 64; ++i) {
            a[i] = std::sin(i);
            b[i] = std::cos(3 * i);
            c[i] = want[i] = 0.5 + i % 7;
          }
          const bool pa = packs & 1, pb = packs & 2;
          double* bufa = pa ? cblas_dgemm_alloc(CblasAMatrix, m, n, k) : nullptr;
          double* bufb = pb ? cblas_dgemm_alloc(CblasBMatrix, m, n, k) : nullptr;
          if (pa) cblas_dgemm_pack(layout, CblasAMatrix, ta, m, n, k, 1.5, a, ld, bufa);
          if (pb) cblas_dgemm_pack(layout, CblasBMatrix, tb, m, n, k, 1.5, b, ld, bufb);
          const int packed = CblasPacked;
          cblas_dgemm_compute(layout, pa ? packed : ta, pb ? packed : tb, m, n, k, pa ? bufa : a, ld, pb ? bufb : b, ld,
                              -0.5, c, ld);
          cblas_dgemm_free(bufa);
          cblas_dgemm_free(bufb);
          gemm(layout, ta, tb, m, n, k, packs == 3 ? 2.25 : 1.5, a, ld, b, ld, -0.5, want, ld);
          EXPECT_LE(distance<double>(c, want, 64), 1e-13);
        }
}

// cblas_?gemm_batch over 1025 groups, which the library hands to the Fortran batch entry in
// two chunks, each group with its own options, sizes, scalars and count (some empty), against
// one OpenBLAS ?gemm per matrix: both layouts, both interface layers, the four types (the
// complex ones also through ?gemm3m_batch).
template <class T, class I>
void batch_agrees(const std::string& name) {
  using R = qnl_test::Real<T>;
  constexpr bool kCplx = qnl_test::kComplex<T>;
  using Ours = void(int, const int*, const int*, const I*, const I*, const I*, const T*, const T**, const I*, const T**,
                    const I*, const T*, T**, const I*, I, const I*);
  using Gemm = void(int, int, int, int, int, int, std::conditional_t<kCplx, const T*, T>, const T*, int, const T*, int,
                    std::conditional_t<kCplx, const T*, T>, T*, int);
  auto* ours = reinterpret_cast<Ours*>(dlsym(RTLD_DEFAULT, name.c_str()));
  auto* gemm =
      reinterpret_cast<Gemm*>(dlsym(openblas(), (std::string("cblas_") + qnl_test::kLetter<T> + "gemm").c_str()));
  ASSERT_TRUE(ours && gemm) << name;
  const int kGroups = 1025, options[] = {CblasNoTrans, CblasTrans, CblasConjTrans};
  for (int layout : {CblasRowMajor, CblasColMajor}) {
    std::vector<int> ta, tb;
    std::vector<I> m, n, k, lda, ldb, ldc, size;
    std::vector<T> alpha, beta;
    std::vector<std::vector<T>> a, b, c;
    for (int g = 0; g < kGroups; ++g) {
      ta.push_back(options[g % 3]), tb.push_back(options[g / 3 % 3]);
      m.push_back(1 + g % 4), n.push_back(1 + g % 5), k.push_back(1 + g % 3);
      size.push_back(g % 7 == 3 ? 0 : g == kGroups - 1 ? 2 : 1);
      auto ld = [&](int trans, I rows, I cols) {
        return (layout == CblasRowMajor) == (trans == CblasNoTrans) ? cols : rows;
      };
      lda.push_back(ld(ta[g], m[g], k[g]) + 1), ldb.push_back(ld(tb[g], k[g], n[g]) + 2);
      ldc.push_back(ld(CblasNoTrans, m[g], n[g]) + 1);
      alpha.push_back(T(static_cast<R>(std::sin(g) + 1.5))), beta.push_back(T(static_cast<R>(std::cos(g))));
      if constexpr (kCplx) alpha.back() += T(0, 0.5), beta.back() -= T(0, 0.25);
      for (I s = 0; s < size[g]; ++s)
        for (auto* v : {&a, &b, &c}) {
          v->emplace_back(64);
          for (int i = 0; i < 64; ++i) v->back()[i] = T(static_cast<R>(std::sin(i + 3.0 * v->size())));
        }
    }
    std::vector<const T*> ap, bp;
    std::vector<T*> cp;
    for (size_t s = 0; s < c.size(); ++s)
      ap.push_back(a[s].data()), bp.push_back(b[s].data()), cp.push_back(c[s].data());
    std::vector<std::vector<T>> want = c;
    ours(layout, ta.data(), tb.data(), m.data(), n.data(), k.data(), alpha.data(), ap.data(), lda.data(), bp.data(),
         ldb.data(), beta.data(), cp.data(), ldc.data(), kGroups, size.data());
    for (size_t g = 0, s = 0; g < static_cast<size_t>(kGroups); ++g)
      for (I q = 0; q < size[g]; ++q, ++s) {
        auto scalar = [](const T& v) {
          if constexpr (kCplx)
            return &v;
          else
            return v;
        };
        gemm(layout, ta[g], tb[g], static_cast<int>(m[g]), static_cast<int>(n[g]), static_cast<int>(k[g]),
             scalar(alpha[g]), a[s].data(), static_cast<int>(lda[g]), b[s].data(), static_cast<int>(ldb[g]),
             scalar(beta[g]), want[s].data(), static_cast<int>(ldc[g]));
        ASSERT_LE(distance<R>(c[s].data(), want[s].data(), kCplx ? 128 : 64), (std::is_same_v<R, float> ? 1e-5 : 1e-13))
            << "layout " << layout << " group " << g << " matrix " << s;
      }
  }
}

template <class I>
void every_batch(Layer layer) {
  set_layer(layer);
  batch_agrees<float, I>("cblas_sgemm_batch");
  batch_agrees<double, I>("cblas_dgemm_batch");
  for (const char* form : {"gemm_batch", "gemm3m_batch"}) {
    batch_agrees<std::complex<float>, I>(std::string("cblas_c") + form);
    batch_agrees<std::complex<double>, I>(std::string("cblas_z") + form);
  }
}

TEST(CblasOracle, BatchAgreesWithOpenBlasLp64) { every_batch<int32_t>(LP64); }
TEST(CblasOracle, BatchAgreesWithOpenBlasIlp64) { every_batch<int64_t>(ILP64); }

TEST(CblasOracle, AgreesWithOpenBlasLp64) { agrees_with_openblas<int32_t>(LP64); }
TEST(CblasOracle, AgreesWithOpenBlasIlp64) { agrees_with_openblas<int64_t>(ILP64); }

}  // namespace
