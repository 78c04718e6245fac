// LAPACKE_dgesv and LAPACKE_dsyev in both layouts at n = 4, 100, 1000: the facade on
// its reference back-end against Debian's liblapacke, both over OpenBLAS on one
// thread, measured in the same run, interleaved. Prints the best time of each and the
// ratio stock/facade (1.00 is parity, above 1 the facade is faster).
//   bench_lapacke FACADE.so [STOCK.so]
// bench_lapacke_ilp64 (64-bit lapack_int) sets QNL_INTERFACE_LAYER=ILP64 and runs against
// liblapacke64.so.3. The stock side is given the serial OpenBLAS build of its width
// whatever the system's alternatives choose (for ILP64 they choose the pthreads build),
// so that on ILP64 both sides run the very same libopenblas64 and liblapack64.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "lapacke.h"

namespace {

using Gesv = decltype(&LAPACKE_dgesv);
using Syev = decltype(&LAPACKE_dsyev);

struct Side {
  Gesv gesv;
  Syev syev;
};

// Loads the serial build's libraries ahead of the stock LAPACKE: a loaded library
// answers for its name, so the stock side's dependencies resolve to them.
void serial_openblas_first() {
  const bool wide = sizeof(lapack_int) == 8;
  const std::string dir =
      wide ? "/usr/lib/x86_64-linux-gnu/openblas64-serial/" : "/usr/lib/x86_64-linux-gnu/openblas-serial/";
  for (const char* name : {wide ? "libopenblas64.so.0" : "libopenblas.so.0", wide ? "libblas64.so.3" : "libblas.so.3",
                           wide ? "liblapack64.so.3" : "liblapack.so.3"})
    if (!dlopen((dir + name).c_str(), RTLD_NOW | RTLD_LOCAL))
      std::fprintf(stderr, "note: %s%s not found; the stock side takes the system's choice\n", dir.c_str(), name);
}

Side open(const char* path) {
  void* h = dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  if (!h) {
    std::fprintf(stderr, "cannot open %s: %s\n", path, dlerror());
    std::exit(2);
  }
  return {reinterpret_cast<Gesv>(dlsym(h, "LAPACKE_dgesv")), reinterpret_cast<Syev>(dlsym(h, "LAPACKE_dsyev"))};
}

// A well-conditioned symmetric matrix: the same in both layouts.
void fill(std::vector<double>& a, int n) {
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) a[size_t(i) * n + j] = 1.0 / (1.0 + i + j) + (i == j ? n : 0.0);
}

template <class F>
double seconds(F f) {
  auto t0 = std::chrono::steady_clock::now();
  f();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// Best time of one call of `run(side)`, over repetitions filling about `budget` seconds per side.
template <class Run>
void compare(const char* what, int n, int layout, const Side& facade, const Side& stock, Run run) {
  double best_f = 1e30, best_s = 1e30, spent = 0;
  int reps = 0;
  while ((spent < 0.4 || reps < 3) && reps < 2000) {
    double f = seconds([&] { run(facade); });
    double s = seconds([&] { run(stock); });
    best_f = std::min(best_f, f);
    best_s = std::min(best_s, s);
    spent += f + s;
    ++reps;
  }
  std::printf("%-14s n=%-5d %-9s facade %10.3f us  stock %10.3f us  ratio %.3f  (%d reps)\n", what, n,
              layout == LAPACK_ROW_MAJOR ? "row-major" : "col-major", best_f * 1e6, best_s * 1e6, best_s / best_f,
              reps);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s FACADE.so [STOCK.so]\n", argv[0]);
    return 2;
  }
  setenv("OPENBLAS_NUM_THREADS", "1", 1);
  setenv("QNL_THREADING_LAYER", "sequential", 0);
  if (sizeof(lapack_int) == 8) setenv("QNL_INTERFACE_LAYER", "ILP64", 1);
  Side facade = open(argv[1]);
  if (argc <= 2) serial_openblas_first();
  Side stock = open(argc > 2 ? argv[2] : sizeof(lapack_int) == 8 ? "liblapacke64.so.3" : "liblapacke.so.3");
  for (int n : {4, 100, 1000}) {
    std::vector<double> a0(size_t(n) * n), a(a0.size()), b0(size_t(n) * 2, 1.0), b(b0.size()), w(n);
    std::vector<lapack_int> ipiv(n);
    fill(a0, n);
    for (int layout : {LAPACK_ROW_MAJOR, LAPACK_COL_MAJOR}) {
      // Each call gets fresh copies: the copy is part of both sides' time alike.
      compare("LAPACKE_dgesv", n, layout, facade, stock, [&](const Side& s) {
        a = a0;
        b = b0;
        s.gesv(layout, n, 2, a.data(), n, ipiv.data(), b.data(), layout == LAPACK_ROW_MAJOR ? 2 : n);
      });
      compare("LAPACKE_dsyev", n, layout, facade, stock, [&](const Side& s) {
        a = a0;
        s.syev(layout, 'V', 'U', n, a.data(), n, w.data());
      });
    }
  }
  return 0;
}
