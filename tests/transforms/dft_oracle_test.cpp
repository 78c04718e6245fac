// Transforms through libqnl_rt.so's FFTW3 interface on the reference back-end,
// against a direct O(n^2) DFT in long double: complex and real, 1-D to 4-D,
// batched and strided, split arrays, both precisions; forward then backward
// gives n times the input. And the C programs written for FFTW.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "fftw3.h"
#include "qnl_dfti.h"

namespace {

using LC = std::complex<long double>;

// The direct transform of a dense row-major array of `shape`: along each axis
// in turn, every output element the plain sum over that axis with exact
// twiddles (index products reduced modulo n before the angle is taken).
std::vector<LC> direct(std::vector<LC> x, const std::vector<int>& shape, int sign) {
  const long double two_pi = 2 * acosl(-1.0L);
  size_t inner = x.size();
  for (int n : shape) {
    size_t outer = x.size() / inner;
    inner /= n;
    std::vector<LC> w(n), y(x.size());
    for (int k = 0; k < n; ++k) w[k] = std::polar(1.0L, sign * two_pi * k / n);
    for (size_t o = 0; o < outer; ++o)
      for (size_t i = 0; i < inner; ++i)
        for (int k = 0; k < n; ++k) {
          LC sum = 0;
          for (int j = 0; j < n; ++j) sum += x[(o * n + j) * inner + i] * w[(static_cast<long long>(j) * k) % n];
          y[(o * n + k) * inner + i] = sum;
        }
    x.swap(y);
  }
  return x;
}

// One precision of the interface (fftw_iodim and fftwf_iodim are the same struct).
template <class R>
struct Api;
#define QNL_API(R, X, tolerance)                                              \
  template <>                                                                 \
  struct Api<R> {                                                             \
    using C = X##_complex;                                                    \
    static constexpr double tol = tolerance;                                  \
    static constexpr auto dft = X##_plan_dft, many = X##_plan_many_dft;       \
    static constexpr auto r2c = X##_plan_dft_r2c, c2r = X##_plan_dft_c2r;     \
    static constexpr auto split = X##_plan_guru_split_dft;                    \
    static constexpr auto execute = X##_execute, destroy = X##_destroy_plan;  \
    static constexpr auto execute_dft = X##_execute_dft;                      \
    static C* c(std::vector<R>& v) { return reinterpret_cast<C*>(v.data()); } \
  };
QNL_API(double, fftw, 1e-11)
QNL_API(float, fftwf, 2e-5)
#undef QNL_API

std::vector<LC> random_data(size_t n, unsigned seed, bool real = false) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<LC> v(n);
  for (auto& z : v) z = LC(u(gen), real ? 0.0 : u(gen));
  return v;
}

// Largest difference relative to the largest magnitude of the reference.
template <class Get>
double error(const std::vector<LC>& want, Get got) {
  long double scale = 1e-30L, worst = 0;
  for (size_t i = 0; i < want.size(); ++i) {
    scale = std::max(scale, std::abs(want[i]));
    worst = std::max(worst, std::abs(want[i] - got(i)));
  }
  return static_cast<double>(worst / scale);
}

template <class R>
class BackendDft : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(BackendDft, Precisions);

// (re, im) pairs of x in precision R.
template <class R>
std::vector<R> interleave(const std::vector<LC>& x) {
  std::vector<R> v(2 * x.size());
  for (size_t i = 0; i < x.size(); ++i) v[2 * i] = R(x[i].real()), v[2 * i + 1] = R(x[i].imag());
  return v;
}

// Forward against the direct transform, then backward gives n times the input.
// Past 4096 points every bin would cost n^2: a few bins are summed directly,
// relative to the input's norm, and the round trip is checked in full.
template <class R>
void complex_case(const std::vector<int>& shape, bool inplace, unsigned seed) {
  using A = Api<R>;
  size_t total = 1;
  for (int n : shape) total *= n;
  auto x = random_data(total, seed);
  std::vector<R> in = interleave<R>(x), out(2 * total);
  const int rank = static_cast<int>(shape.size());
  auto* res = inplace ? A::c(in) : A::c(out);
  auto fwd = A::dft(rank, shape.data(), A::c(in), res, FFTW_FORWARD, FFTW_ESTIMATE);
  auto bwd = A::dft(rank, shape.data(), res, A::c(in), FFTW_BACKWARD, FFTW_ESTIMATE);
  ASSERT_TRUE(fwd && bwd);
  A::execute(fwd);
  auto got = [&](size_t i) { return LC(res[i][0], res[i][1]); };
  const std::string what = "n[0]=" + std::to_string(shape[0]) + " rank " + std::to_string(rank);
  const double tol = total > 4096 ? 8 * A::tol : A::tol;
  if (total <= 4096) {
    EXPECT_LT(error(direct(x, shape, -1), got), tol) << what;
  } else {
    long double norm = 0;
    for (auto& z : x) norm += std::norm(z);
    for (size_t bin : {size_t{0}, size_t{1}, total / 3, total / 2, total - 1}) {
      LC sum = 0;
      for (size_t j = 0; j < total; ++j)
        sum += x[j] * std::polar(1.0L, -2 * acosl(-1.0L) * ((j * bin) % total) / total);
      EXPECT_LT(std::abs(sum - got(bin)) / sqrtl(norm), tol) << what << " bin " << bin;
    }
  }
  A::execute(bwd);
  EXPECT_LT(error(x, [&](size_t i) { return LC(in[2 * i], in[2 * i + 1]) / static_cast<long double>(total); }), tol)
      << "round trip, " << what;
  A::destroy(fwd);
  A::destroy(bwd);
}

// Every size to 64, primes, powers of two to 2^20 in place, 2-D to 4-D.
TYPED_TEST(BackendDft, ComplexSizesAndShapes) {
  for (int n = 1; n <= 64; ++n) complex_case<TypeParam>({n}, n % 2 == 0, n);
  for (int n : {97, 257, 1009}) complex_case<TypeParam>({n}, false, n);
  for (int k : {7, 11, 14, 17, 20}) complex_case<TypeParam>({1 << k}, true, k);
  for (auto shape : std::vector<std::vector<int>>{{8, 6}, {5, 7, 3}, {4, 3, 2, 5}, {1, 9}, {16, 16, 4}})
    for (bool inplace : {false, true}) complex_case<TypeParam>(shape, inplace, 7);
}

// Real input: the half spectrum of r2c against the complex oracle, then c2r back.
template <class R>
void real_case(const std::vector<int>& shape, bool inplace) {
  using A = Api<R>;
  int rank = static_cast<int>(shape.size());
  int last = shape.back(), h = last / 2 + 1;
  size_t outer = 1;
  for (int d = 0; d + 1 < rank; ++d) outer *= shape[d];
  int real_row = inplace ? 2 * h : last;
  auto x = random_data(outer * last, 3 * last + rank, true);
  std::vector<R> real(outer * real_row + 2), spec(outer * h * 2 + 2);
  for (size_t r = 0; r < outer; ++r)
    for (int j = 0; j < last; ++j) real[r * real_row + j] = static_cast<R>(x[r * last + j].real());
  R* sp = inplace ? real.data() : spec.data();
  auto* cp = reinterpret_cast<typename A::C*>(sp);
  auto fwd = A::r2c(rank, shape.data(), real.data(), cp, FFTW_ESTIMATE);
  auto bwd = A::c2r(rank, shape.data(), cp, real.data(), FFTW_ESTIMATE);
  ASSERT_TRUE(fwd && bwd);
  A::execute(fwd);
  auto want = direct(x, shape, -1);
  std::vector<LC> half;
  for (size_t r = 0; r < outer; ++r)
    for (int j = 0; j < h; ++j) half.push_back(want[r * last + j]);
  EXPECT_LT(error(half, [&](size_t i) { return LC(sp[2 * i], sp[2 * i + 1]); }), A::tol) << "r2c n=" << last;
  A::execute(bwd);
  auto back = [&](size_t i) { return LC(real[i / last * real_row + i % last] / static_cast<long double>(x.size())); };
  EXPECT_LT(error(x, back), A::tol) << "c2r n=" << last;
  A::destroy(fwd);
  A::destroy(bwd);
}

TYPED_TEST(BackendDft, RealEverySizeAndMultiDimensional) {
  for (int n = 1; n <= 64; ++n) real_case<TypeParam>({n}, n % 3 == 0);
  for (auto shape : std::vector<std::vector<int>>{{6, 8}, {5, 7}, {3, 4, 10}, {2, 3, 5, 9}})
    for (bool inplace : {false, true}) real_case<TypeParam>(shape, inplace);
}

// howmany transforms of length n, input every `stride` elements, `dist` apart;
// output packed differently, through new-array execution.
TYPED_TEST(BackendDft, BatchedStridedNewArray) {
  using A = Api<TypeParam>;
  const int n = 12, howmany = 5, istride = 3, idist = n * istride + 1, ostride = 2, odist = n * ostride;
  auto x = random_data(size_t{howmany} * idist, 11);
  std::vector<TypeParam> in = interleave<TypeParam>(x), out(2 * howmany * odist, 0), plan_in(in.size()),
                         plan_out(out.size());
  auto p = A::many(1, &n, howmany, A::c(plan_in), nullptr, istride, idist, A::c(plan_out), nullptr, ostride, odist,
                   FFTW_FORWARD, FFTW_ESTIMATE);
  ASSERT_TRUE(p);
  A::execute_dft(p, A::c(in), A::c(out));
  for (int b = 0; b < howmany; ++b) {
    std::vector<LC> one(n);
    for (int j = 0; j < n; ++j) one[j] = x[b * idist + j * istride];
    auto want = direct(one, {n}, -1);
    EXPECT_LT(error(want,
                    [&](size_t k) {
                      size_t at = 2 * (b * odist + k * ostride);
                      return LC(out[at], out[at + 1]);
                    }),
              A::tol)
        << "batch " << b;
  }
  A::destroy(p);
}

// Split arrays: forward directly, backward by exchanging real and imaginary parts.
TYPED_TEST(BackendDft, SplitArrays) {
  using A = Api<TypeParam>;
  const int n0 = 6, n1 = 10;
  auto x = random_data(n0 * n1, 5);
  std::vector<TypeParam> ri(n0 * n1), ii(n0 * n1), ro(n0 * n1), io(n0 * n1);
  for (int i = 0; i < n0 * n1; ++i) ri[i] = x[i].real(), ii[i] = x[i].imag();
  fftw_iodim dims[2] = {{n0, n1, n1}, {n1, 1, 1}};
  auto p = A::split(2, dims, 0, nullptr, ri.data(), ii.data(), ro.data(), io.data(), FFTW_ESTIMATE);
  ASSERT_TRUE(p);
  A::execute(p);
  EXPECT_LT(error(direct(x, {n0, n1}, -1), [&](size_t i) { return LC(ro[i], io[i]); }), A::tol);
  A::destroy(p);
  auto q = A::split(2, dims, 0, nullptr, io.data(), ro.data(), ii.data(), ri.data(), FFTW_ESTIMATE);
  ASSERT_TRUE(q);
  A::execute(q);
  EXPECT_LT(error(x, [&](size_t i) { return LC(ri[i], ii[i]) / static_cast<long double>(n0 * n1); }), A::tol);
  A::destroy(q);
}

// Real conjugate-even layouts through the descriptor interface, read cell by
// cell against the direct transform. Along one dimension of n, cell j holds
// part `im` of frequency k; in two dimensions a column whose k is 0 or n/2
// holds, down its rows, the same layout of that column's spectrum along m.
struct Part {
  int k, im;
};
Part decode(int format, int n, int j) {
  if (format == DFTI_CCS_FORMAT) return {j / 2, j % 2};
  if (j == 0) return {0, 0};
  if (format == DFTI_PERM_FORMAT && n % 2 == 0) return j == 1 ? Part{n / 2, 0} : Part{j / 2, j % 2};
  return {(j + 1) / 2, 1 - j % 2};
}

TYPED_TEST(BackendDft, RealPackedFormatsThroughDescriptors) {
  const auto precision = std::is_same<TypeParam, double>::value ? DFTI_DOUBLE : DFTI_SINGLE;
  for (int format : {DFTI_CCS_FORMAT, DFTI_PACK_FORMAT, DFTI_PERM_FORMAT})
    for (std::vector<int> shape : {std::vector<int>{1}, {2}, {5}, {16}, {1, 4}, {4, 6}, {5, 6}, {6, 5}, {7, 3}, {8, 8}})
      for (bool inplace : {false, true}) {
        const int rank = static_cast<int>(shape.size()), n = shape.back(), m = rank > 1 ? shape[0] : 1;
        const int ccs = format == DFTI_CCS_FORMAT, cols = ccs ? n / 2 * 2 + 2 : n,
                  rows = rank > 1 && ccs ? m / 2 * 2 + 2 : m;
        const int real_row = inplace ? cols : n;
        auto x = random_data(m * n, n + m + format, true);
        auto z = direct(x, shape, -1);
        DFTI_DESCRIPTOR_HANDLE h = nullptr;
        QNL_DFTI_INT lengths[2] = {shape[0], rank > 1 ? shape[1] : 0};
        ASSERT_EQ(rank == 1 ? DftiCreateDescriptor(&h, precision, DFTI_REAL, 1, lengths[0])
                            : DftiCreateDescriptor(&h, precision, DFTI_REAL, rank, lengths),
                  0);
        ASSERT_EQ(DftiSetValue(h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_REAL), 0);
        ASSERT_EQ(DftiSetValue(h, DFTI_PACKED_FORMAT, format), 0);
        ASSERT_EQ(DftiSetValue(h, DFTI_PLACEMENT, inplace ? DFTI_INPLACE : DFTI_NOT_INPLACE), 0);
        ASSERT_EQ(DftiSetValue(h, DFTI_BACKWARD_SCALE, 1.0 / (m * n)), 0);
        ASSERT_EQ(DftiCommitDescriptor(h), 0);
        std::vector<TypeParam> in(rows * cols + 1, -7), spec(rows * cols + 1, -7), back(m * real_row);
        for (int i = 0; i < m * n; ++i) in[i / n * real_row + i % n] = static_cast<TypeParam>(x[i].real());
        TypeParam* s = inplace ? in.data() : spec.data();
        ASSERT_EQ(inplace ? DftiComputeForward(h, s) : DftiComputeForward(h, in.data(), s), 0);
        long double worst = 0;
        for (int r = 0; r < rows; ++r)
          for (int c = 0; c < cols; ++c) {
            Part col = decode(format, n, c), row{r, col.im};
            if (rank > 1 && (col.k == 0 || 2 * col.k == n)) row = col.im ? Part{-1, 0} : decode(format, m, r);
            if (row.k >= m) continue;  // left unused
            long double want = row.k < 0 ? 0 : row.im ? z[row.k * n + col.k].imag() : z[row.k * n + col.k].real();
            worst = std::max(worst, fabsl(want - s[r * cols + c]));
          }
        std::string what = std::to_string(format) + " " + std::to_string(m) + "x" + std::to_string(n);
        EXPECT_LT(static_cast<double>(worst) / std::sqrt(m * n), Api<TypeParam>::tol * 10) << what;
        EXPECT_EQ(s[rows * cols], -7) << "wrote past the layout, " << what;
        ASSERT_EQ(inplace ? DftiComputeBackward(h, s) : DftiComputeBackward(h, s, back.data()), 0);
        const TypeParam* b = inplace ? s : back.data();
        for (int i = 0; i < m * n; ++i)
          EXPECT_NEAR(b[i / n * real_row + i % n], x[i].real(), Api<TypeParam>::tol * 10) << what;
        DftiFreeDescriptor(&h);
      }
}

// One plan, new arrays from several threads at once: each result is its own
// input's transform. Misaligned arrays take the back-end's second plan, made
// by whichever thread comes first.
TEST(BackendDftThreads, NewArrayExecutionFromManyThreads) {
  const int n = 48, threads = 4;
  std::vector<fftw_complex> plan_in(n), plan_out(n);
  fftw_plan p = fftw_plan_dft_1d(n, plan_in.data(), plan_out.data(), FFTW_FORWARD, FFTW_ESTIMATE);
  ASSERT_NE(p, nullptr);
  std::vector<double> errors(threads);
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t)
    pool.emplace_back([&, t] {
      auto x = random_data(n, 100 + t);
      std::vector<double> in = interleave<double>(x), out(2 * n + 1);
      in.insert(in.begin(), t % 2, 0.0);  // odd threads: arrays one double off the usual alignment
      double *a = in.data() + t % 2, *b = out.data() + t % 2;
      for (int round = 0; round < 50; ++round)
        fftw_execute_dft(p, reinterpret_cast<fftw_complex*>(a), reinterpret_cast<fftw_complex*>(b));
      errors[t] = error(direct(x, {n}, -1), [&](size_t k) { return LC(b[2 * k], b[2 * k + 1]); });
    });
  for (auto& t : pool) t.join();
  for (int t = 0; t < threads; ++t) EXPECT_LT(errors[t], 1e-12) << "thread " << t;
  fftw_destroy_plan(p);
}

// The C programs written for FFTW, compiled as C against fftw3.h, run through the facade.
extern "C" double fftw_c_program_1d(int n);
extern "C" double fftw_c_program_real_2d(int n0, int n1);
extern "C" double fftw_c99_program(int n);

TEST(BackendFftwCPrograms, RoundTrips) {
  for (int n : {1, 8, 60, 127}) EXPECT_LT(fftw_c_program_1d(n), 1e-12) << n;
  EXPECT_LT(fftw_c_program_real_2d(6, 10), 1e-12);
  EXPECT_LT(fftw_c99_program(24), 1e-12);
}

}  // namespace
