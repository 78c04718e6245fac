// Bandwidth of the sparse level-1 routines that the library computes itself, against a
// plain scalar loop of the same meaning (compiled without vectorisation) and against memcpy
// of as many bytes, all measured in this run on this machine.
//
//   sparse_level1 [NZ] [LENGTH]
//
// prints, per routine and type, the GB/s of the library, of the scalar loop and of memcpy,
// and the ratios library/scalar and library/memcpy. Bytes counted: values and indices read,
// values written.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "element_type.h"

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
  std::printf("%-7s %c  %9.2f %9.2f %9.2f   %6.2f %6.2f\n", r.routine, r.type, g / lib, g / loop, g / copy, loop / lib,
              copy / lib);
}

// The library's entry for type letter t, with the C signature F.
template <class F>
F* entry(char t, const char* stem) {
  const std::string name = std::string("cblas_") + t + stem;
  auto* f = reinterpret_cast<F*>(dlsym(RTLD_DEFAULT, name.c_str()));
  if (!f) {
    std::fprintf(stderr, "no %s\n", name.c_str());
    std::exit(1);
  }
  return f;
}

// Complex scalars go by address, real ones by value.
template <class E>
using Scalar = std::conditional_t<std::is_floating_point_v<E>, E, const void*>;
template <class E>
Scalar<E> by_kind(const E& v) {
  if constexpr (std::is_floating_point_v<E>)
    return v;
  else
    return &v;
}

template <class E>
void run(int nz, int length, const std::vector<int>& indx) {
  std::vector<E> x(nz, E(1.5)), y(length, E(0.5));
  const char t = qnl_test::kLetter<E>;
  const double values = static_cast<double>(nz) * sizeof(E), indices = static_cast<double>(nz) * 4;
  // memcpy of as many bytes as the routine moves (what it reads and what it writes)
  auto copy_seconds = [&](double moved) {
    const size_t n = static_cast<size_t>(moved / 2);
    std::vector<char> src(n, 1), dst(n);
    const double s = best_seconds([&] { std::memcpy(dst.data(), src.data(), n); });
    g_sink = dst[n / 2];
    return s * moved / (2.0 * n);
  };
  auto row = [&](const char* routine, double bytes, auto library, auto scalar) {
    report({routine, t, bytes}, best_seconds(library), best_seconds(scalar), copy_seconds(bytes));
  };
  const int* ix = indx.data();
  const E a(0.25);
  auto* gthr = entry<void(int, const E*, E*, const int*)>(t, "gthr");
  row(
      "gthr", 2 * values + indices, [&] { gthr(nz, y.data(), x.data(), ix); },
      [&] { gthr_loop(nz, y.data(), x.data(), ix); });
  auto* sctr = entry<void(int, const E*, const int*, E*)>(t, "sctr");
  row(
      "sctr", 2 * values + indices, [&] { sctr(nz, x.data(), ix, y.data()); },
      [&] { sctr_loop(nz, x.data(), ix, y.data()); });
  auto* gthrz = entry<void(int, E*, E*, const int*)>(t, "gthrz");
  row(
      "gthrz", 3 * values + indices, [&] { gthrz(nz, y.data(), x.data(), ix); },
      [&] { gthrz_loop(nz, y.data(), x.data(), ix); });
  auto* axpyi = entry<void(int, Scalar<E>, const E*, const int*, E*)>(t, "axpyi");
  row(
      "axpyi", 3 * values + indices, [&] { axpyi(nz, by_kind(a), x.data(), ix, y.data()); },
      [&] { axpyi_loop(nz, a, x.data(), ix, y.data()); });
  E s{};
  if constexpr (std::is_floating_point_v<E>) {
    auto* doti = entry<E(int, const E*, const int*, const E*)>(t, "doti");
    row(
        "doti", 2 * values + indices, [&] { s += doti(nz, x.data(), ix, y.data()); },
        [&] { s += dot_loop(nz, x.data(), ix, y.data()); });
    auto* roti = entry<void(int, E*, const int*, E*, E, E)>(t, "roti");
    row(
        "roti", 4 * values + indices, [&] { roti(nz, x.data(), ix, y.data(), E(0.6), E(0.8)); },
        [&] { roti_loop(nz, x.data(), ix, y.data(), E(0.6), E(0.8)); });
  } else {
    auto* dotui = entry<void(int, const E*, const int*, const E*, E*)>(t, "dotui_sub");
    row(
        "dotui", 2 * values + indices, [&] { dotui(nz, x.data(), ix, y.data(), &s); },
        [&] { s += dot_loop(nz, x.data(), ix, y.data()); });
  }
  g_sink = std::abs(s);
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
  std::printf(
      "nz %d of %d, LP64 indices; GB/s of library, scalar loop, memcpy; ratios library/scalar, "
      "library/memcpy\n",
      static_cast<int>(indx.size()), length);
  std::printf("%-7s %c  %9s %9s %9s   %6s %6s\n", "routine", 't', "library", "scalar", "memcpy", "/scal", "/mcpy");
  run<float>(nz, length, indx);
  run<double>(nz, length, indx);
  run<std::complex<float>>(nz, length, indx);
  run<std::complex<double>>(nz, length, indx);
  return 0;
}
