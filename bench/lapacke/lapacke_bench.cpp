// LAPACKE_dgesv and LAPACKE_dsyev in both layouts at n = 4, 100, 1000: the facade on
// its reference back-end against Debian's liblapacke, both over OpenBLAS on one
// thread, measured in the same run, interleaved. Prints the best time of each and the
// ratio stock/facade (1.00 is parity, above 1 the facade is faster).
//   bench_lapacke FACADE.so [STOCK.so]
// bench_lapacke_ilp64 (64-bit lapack_int) sets QNL_INTERFACE_LAYER=ILP64 and runs against
// liblapacke64.so.3.
// Two stock sides, both on the serial OpenBLAS build of their width whatever the
// system's alternatives choose (for ILP64 they choose the pthreads build):
//   "over openblas"  liblapacke whose LAPACK calls resolve to libopenblas, as the
//                    facade's back-end's do: like for like (a namespace of its own,
//                    loaded through a library that lists libopenblas first);
//   "stock road"     liblapacke as the system links it: LAPACK from the build's
//                    separate liblapack, whose unblocked routines run faster than the
//                    copies inside libopenblas (dsyev's dlasr_).
// A STOCK.so on the command line replaces both.
#include <dlfcn.h>
#include <link.h>

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
  const char* label = "stock";
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

Side symbols(void* h, const char* path) {
  if (!h) {
    std::fprintf(stderr, "cannot open %s: %s\n", path, dlerror());
    std::exit(2);
  }
  return {reinterpret_cast<Gesv>(dlsym(h, "LAPACKE_dgesv")), reinterpret_cast<Syev>(dlsym(h, "LAPACKE_dsyev"))};
}

Side open(const char* path) { return symbols(dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND), path); }

// The like-for-like stock side, or nothing where the build has no such library. The
// namespace keeps its liblapacke apart from the stock road's.
bool open_over_openblas(Side& side) {
#ifdef QNL_STOCK_OVER_OPENBLAS
  void* shim = dlmopen(LM_ID_NEWLM, QNL_STOCK_OVER_OPENBLAS, RTLD_NOW | RTLD_LOCAL);
  Lmid_t space;
  if (!shim || dlinfo(shim, RTLD_DI_LMID, &space) != 0) {
    std::fprintf(stderr, "note: %s: %s\n", QNL_STOCK_OVER_OPENBLAS, dlerror());
    return false;
  }
  const char* name = sizeof(lapack_int) == 8 ? "liblapacke64.so.3" : "liblapacke.so.3";
  side = symbols(dlmopen(space, name, RTLD_NOW | RTLD_NOLOAD), name);
  return true;
#else
  (void)side;
  return false;
#endif
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

// Best time of one call of `run(side)` for each side (the facade first), interleaved,
// over repetitions filling about 0.2 s per side. A repetition times `batch` calls in a
// row: a single call of a few hundred nanoseconds is too close to the clock's own cost.
template <class Run>
void compare(const char* what, int n, int layout, const std::vector<Side>& sides, Run run) {
  const int batch = n <= 16 ? 64 : 1;
  std::vector<double> best(sides.size(), 1e30);
  double spent = 0;
  int reps = 0;
  while ((spent < 0.2 * double(sides.size()) || reps < 3) && reps < 2000) {
    for (size_t i = 0; i < sides.size(); ++i) {
      double t = seconds([&] {
        for (int k = 0; k < batch; ++k) run(sides[i]);
      });
      best[i] = std::min(best[i], t / batch);
      spent += t;
    }
    ++reps;
  }
  std::printf("%-14s n=%-5d %-9s facade %10.3f us", what, n, layout == LAPACK_ROW_MAJOR ? "row-major" : "col-major",
              best[0] * 1e6);
  for (size_t i = 1; i < sides.size(); ++i)
    std::printf("  %s %10.3f us ratio %.3f", sides[i].label, best[i] * 1e6, best[i] / best[0]);
  std::printf("  (%d reps)\n", reps);
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
  std::vector<Side> sides{open(argv[1])};
  if (argc > 2) {
    sides.push_back(open(argv[2]));
  } else {
    Side over;
    if (open_over_openblas(over)) {
      over.label = "over openblas";
      sides.push_back(over);
    }
    serial_openblas_first();
    sides.push_back(open(sizeof(lapack_int) == 8 ? "liblapacke64.so.3" : "liblapacke.so.3"));
    sides.back().label = "stock road";
  }
  for (int n : {4, 100, 1000}) {
    std::vector<double> a0(size_t(n) * n), a(a0.size()), b0(size_t(n) * 2, 1.0), b(b0.size()), w(n);
    std::vector<lapack_int> ipiv(n);
    fill(a0, n);
    for (int layout : {LAPACK_ROW_MAJOR, LAPACK_COL_MAJOR}) {
      // Each call gets fresh copies: the copy is part of both sides' time alike.
      compare("LAPACKE_dgesv", n, layout, sides, [&](const Side& s) {
        a = a0;
        b = b0;
        s.gesv(layout, n, 2, a.data(), n, ipiv.data(), b.data(), layout == LAPACK_ROW_MAJOR ? 2 : n);
      });
      compare("LAPACKE_dsyev", n, layout, sides, [&](const Side& s) {
        a = a0;
        s.syev(layout, 'V', 'U', n, a.data(), n, w.data());
      });
    }
  }
  return 0;
}
