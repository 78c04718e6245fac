// Bandwidth of the sparse level-1 routines that the library computes itself, against a
// plain scalar loop of the same meaning (compiled without vectorisation) and against memcpy
// of as many bytes, all measured in this run on this machine.
//
//   sparse_level1 [NZ] [LENGTH]
//
// prints, per routine and type, the GB/s of the library, of the scalar loop and of memcpy,
// and the ratios library/scalar and library/memcpy. Bytes counted: values and indices read,
// values written.
#include <algorithm>
#include <chrono>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "cblas.h"

namespace {

using Clock = std::chrono::steady_clock;

template <class F>
double best_seconds(F f, int reps = 7) {
  double best = 1e30;
  for (int r = 0; r < reps; ++r) {
    const auto t0 = Clock::now();
    f();
    best = std::min(best, std::chrono::duration<double>(Clock::now() - t0).count());
  }
  return best;
}

// The reference loops: the routines' meaning, one element at a time.
#define QNL_SCALAR __attribute__((noinline, optimize("no-tree-vectorize", "no-unroll-loops")))

template <class E>
QNL_SCALAR void gthr_loop(int n, const E* y, E* x, const int* indx) {
  for (int i = 0; i < n; ++i) x[i] = y[indx[i]];
}
template <class E>
QNL_SCALAR void sctr_loop(int n, const E* x, const int* indx, E* y) {
  for (int i = 0; i < n; ++i) y[indx[i]] = x[i];
}
template <class E>
QNL_SCALAR void gthrz_loop(int n, E* y, E* x, const int* indx) {
  for (int i = 0; i < n; ++i) {
    x[i] = y[indx[i]];
    y[indx[i]] = E{};
  }
}
template <class E>
QNL_SCALAR void axpyi_loop(int n, E a, const E* x, const int* indx, E* y) {
  for (int i = 0; i < n; ++i) y[indx[i]] += a * x[i];
}
template <class E>
QNL_SCALAR E dot_loop(int n, const E* x, const int* indx, const E* y) {
  E s{};
  for (int i = 0; i < n; ++i) s += x[i] * y[indx[i]];
  return s;
}
template <class E>
QNL_SCALAR void roti_loop(int n, E* x, const int* indx, E* y, E c, E s) {
  for (int i = 0; i < n; ++i) {
    const E t = x[i], u = y[indx[i]];
    x[i] = c * t + s * u;
    y[indx[i]] = c * u - s * t;
  }
}

volatile double g_sink;

struct Row {
  const char* routine;
  char type;
  double bytes;
};

void report(const Row& r, double lib, double loop, double copy) {
  const double g = 1e-9 * r.bytes;
  std::printf("%-7s %c  %9.2f %9.2f %9.2f   %6.2f %6.2f\n", r.routine, r.type, g / lib, g / loop, g / copy,
              loop / lib, copy / lib);
}

template <class E>
char letter() {
  if constexpr (std::is_same_v<E, float>) return 's';
  if constexpr (std::is_same_v<E, double>) return 'd';
  if constexpr (std::is_same_v<E, std::complex<float>>) return 'c';
  return 'z';
}

template <class E>
auto by_kind(const E& v) {
  if constexpr (std::is_floating_point_v<E>)
    return v;
  else
    return static_cast<const void*>(&v);
}

template <class E>
void run(int nz, int length, const std::vector<int>& indx) {
  std::vector<E> x(nz, E(1.5)), y(length, E(0.5)), buf(length);
  const char t = letter<E>();
  const double value_bytes = static_cast<double>(nz) * sizeof(E), index_bytes = static_cast<double>(nz) * 4;
  // memcpy of as many bytes as the routine moves (read plus write counted once each)
  auto copy_for = [&](double moved) {
    const size_t n = std::min(static_cast<size_t>(moved / 2), buf.size() * sizeof(E));
    std::vector<char> src(n, 1), dst(n);
    const double s = best_seconds([&] { std::memcpy(dst.data(), src.data(), n); });
    g_sink = dst[n / 2];
    return s * moved / (2.0 * n);
  };
  const E a(0.25);
  {
    const Row r{"gthr", t, 2 * value_bytes + index_bytes};
    double lib, loop;
    if constexpr (std::is_same_v<E, float>)
      lib = best_seconds([&] { cblas_sgthr(nz, y.data(), x.data(), indx.data()); });
    else if constexpr (std::is_same_v<E, double>)
      lib = best_seconds([&] { cblas_dgthr(nz, y.data(), x.data(), indx.data()); });
    else if constexpr (std::is_same_v<E, std::complex<float>>)
      lib = best_seconds([&] { cblas_cgthr(nz, y.data(), x.data(), indx.data()); });
    else
      lib = best_seconds([&] { cblas_zgthr(nz, y.data(), x.data(), indx.data()); });
    loop = best_seconds([&] { gthr_loop(nz, y.data(), x.data(), indx.data()); });
    report(r, lib, loop, copy_for(r.bytes));
  }
  {
    const Row r{"sctr", t, 2 * value_bytes + index_bytes};
    double lib;
    if constexpr (std::is_same_v<E, float>)
      lib = best_seconds([&] { cblas_ssctr(nz, x.data(), indx.data(), y.data()); });
    else if constexpr (std::is_same_v<E, double>)
      lib = best_seconds([&] { cblas_dsctr(nz, x.data(), indx.data(), y.data()); });
    else if constexpr (std::is_same_v<E, std::complex<float>>)
      lib = best_seconds([&] { cblas_csctr(nz, x.data(), indx.data(), y.data()); });
    else
      lib = best_seconds([&] { cblas_zsctr(nz, x.data(), indx.data(), y.data()); });
    const double loop = best_seconds([&] { sctr_loop(nz, x.data(), indx.data(), y.data()); });
    report(r, lib, loop, copy_for(r.bytes));
  }
  {
    const Row r{"gthrz", t, 3 * value_bytes + index_bytes};
    double lib;
    if constexpr (std::is_same_v<E, float>)
      lib = best_seconds([&] { cblas_sgthrz(nz, y.data(), x.data(), indx.data()); });
    else if constexpr (std::is_same_v<E, double>)
      lib = best_seconds([&] { cblas_dgthrz(nz, y.data(), x.data(), indx.data()); });
    else if constexpr (std::is_same_v<E, std::complex<float>>)
      lib = best_seconds([&] { cblas_cgthrz(nz, y.data(), x.data(), indx.data()); });
    else
      lib = best_seconds([&] { cblas_zgthrz(nz, y.data(), x.data(), indx.data()); });
    const double loop = best_seconds([&] { gthrz_loop(nz, y.data(), x.data(), indx.data()); });
    report(r, lib, loop, copy_for(r.bytes));
  }
  {
    const Row r{"axpyi", t, 3 * value_bytes + index_bytes};
    double lib;
    if constexpr (std::is_same_v<E, float>)
      lib = best_seconds([&] { cblas_saxpyi(nz, by_kind(a), x.data(), indx.data(), y.data()); });
    else if constexpr (std::is_same_v<E, double>)
      lib = best_seconds([&] { cblas_daxpyi(nz, by_kind(a), x.data(), indx.data(), y.data()); });
    else if constexpr (std::is_same_v<E, std::complex<float>>)
      lib = best_seconds([&] { cblas_caxpyi(nz, by_kind(a), x.data(), indx.data(), y.data()); });
    else
      lib = best_seconds([&] { cblas_zaxpyi(nz, by_kind(a), x.data(), indx.data(), y.data()); });
    const double loop = best_seconds([&] { axpyi_loop(nz, a, x.data(), indx.data(), y.data()); });
    report(r, lib, loop, copy_for(r.bytes));
  }
  {
    const Row r{"doti", t, 2 * value_bytes + index_bytes};
    double lib;
    E s{};
    if constexpr (std::is_same_v<E, float>)
      lib = best_seconds([&] { s = cblas_sdoti(nz, x.data(), indx.data(), y.data()); });
    else if constexpr (std::is_same_v<E, double>)
      lib = best_seconds([&] { s = cblas_ddoti(nz, x.data(), indx.data(), y.data()); });
    else if constexpr (std::is_same_v<E, std::complex<float>>)
      lib = best_seconds([&] { cblas_cdotui_sub(nz, x.data(), indx.data(), y.data(), &s); });
    else
      lib = best_seconds([&] { cblas_zdotui_sub(nz, x.data(), indx.data(), y.data(), &s); });
    const double loop = best_seconds([&] { s += dot_loop(nz, x.data(), indx.data(), y.data()); });
    g_sink = std::abs(s);
    report(r, lib, loop, copy_for(r.bytes));
  }
  if constexpr (std::is_floating_point_v<E>) {
    const Row r{"roti", t, 4 * value_bytes + index_bytes};
    const E c(0.6), s(0.8);
    double lib;
    if constexpr (std::is_same_v<E, float>)
      lib = best_seconds([&] { cblas_sroti(nz, x.data(), indx.data(), y.data(), c, s); });
    else
      lib = best_seconds([&] { cblas_droti(nz, x.data(), indx.data(), y.data(), c, s); });
    const double loop = best_seconds([&] { roti_loop(nz, x.data(), indx.data(), y.data(), c, s); });
    report(r, lib, loop, copy_for(r.bytes));
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int nz = argc > 1 ? std::atoi(argv[1]) : 1 << 20;
  const int length = argc > 2 ? std::atoi(argv[2]) : 1 << 22;
  // distinct indices in increasing order, as a sparse vector holds them
  std::vector<int> all(length);
  for (int i = 0; i < length; ++i) all[i] = i;
  std::mt19937 rng(7);
  std::shuffle(all.begin(), all.end(), rng);
  std::vector<int> indx(all.begin(), all.begin() + std::min(nz, length));
  std::sort(indx.begin(), indx.end());
  std::printf("nz %d of %d, LP64 indices; GB/s of library, scalar loop, memcpy; ratios library/scalar, "
              "library/memcpy\n",
              static_cast<int>(indx.size()), length);
  std::printf("%-7s %c  %9s %9s %9s   %6s %6s\n", "routine", 't', "library", "scalar", "memcpy", "/scal", "/mcpy");
  run<float>(nz, length, indx);
  run<double>(nz, length, indx);
  run<std::complex<float>>(nz, length, indx);
  run<std::complex<double>>(nz, length, indx);
  return 0;
}
