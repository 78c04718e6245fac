// Cost of computing through libqnl_rt.so and the reference back-end against
// calling the same routines of Debian's ILP64 OpenBLAS directly, in one run:
// per-call time of quiet, bound small calls (ddot n=1, dgemm 4x4, dgesv 4x4)
// and the throughput of a large dgemm and dgesv.
//
//   facade_vs_openblas lp64|ilp64 [N]     (N: order of the large calls, 2000)
//
// Both roads use the serial OpenBLAS build (QNL_THREADING_LAYER=sequential for
// the facade). Each measurement alternates the two roads and keeps the best
// round of each.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

extern "C" int QNL_Set_Interface_Layer(int);

namespace {

using Dot = double (*)(const void*, const double*, const void*, const double*, const void*);
using Gemm = void (*)(const char*, const char*, const void*, const void*, const void*, const double*, const double*,
                      const void*, const double*, const void*, const double*, double*, const void*, size_t, size_t);
using Gesv = void (*)(const void*, const void*, double*, const void*, void*, double*, const void*, void*);

// The three routines, and the integers of their caller's width.
struct Road {
  Dot dot;
  Gemm gemm;
  Gesv gesv;
  bool wide;
};

// Integers for one road: 32 or 64 bits as its caller passes them.
struct Int {
  int32_t narrow;
  int64_t wide;
  explicit Int(int64_t v) : narrow(static_cast<int32_t>(v)), wide(v) {}
  const void* on(const Road& r) const { return r.wide ? static_cast<const void*>(&wide) : &narrow; }
};

double seconds(const std::function<void()>& f) {
  const auto t0 = std::chrono::steady_clock::now();
  f();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// Best time of each road over alternating rounds.
void compare(const char* what, double work, const char* unit, int rounds, const std::function<void(const Road&)>& run,
             const Road& facade, const Road& direct) {
  double best[2] = {1e30, 1e30};
  for (int r = 0; r < rounds; ++r) {
    best[0] = std::min(best[0], seconds([&] { run(facade); }));
    best[1] = std::min(best[1], seconds([&] { run(direct); }));
  }
  std::printf("%-14s %12.2f %12.2f %s   facade/direct time %.3f\n", what, work / best[0], work / best[1], unit,
              best[0] / best[1]);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s lp64|ilp64 [N]\n", argv[0]);
    return 2;
  }
  const bool lp64 = std::strcmp(argv[1], "lp64") == 0;
  const int64_t big = argc > 2 ? std::atol(argv[2]) : 2000;
  setenv("QNL_THREADING_LAYER", "sequential", 1);
  QNL_Set_Interface_Layer(lp64 ? 0 : 1);

  void* openblas = dlopen(QNL_BENCH_OPENBLAS, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  if (!openblas) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  const Road facade{reinterpret_cast<Dot>(dlsym(RTLD_DEFAULT, "ddot_")),
                    reinterpret_cast<Gemm>(dlsym(RTLD_DEFAULT, "dgemm_")),
                    reinterpret_cast<Gesv>(dlsym(RTLD_DEFAULT, "dgesv_")), !lp64};
  const Road direct{reinterpret_cast<Dot>(dlsym(openblas, "ddot_")), reinterpret_cast<Gemm>(dlsym(openblas, "dgemm_")),
                    reinterpret_cast<Gesv>(dlsym(openblas, "dgesv_")), true};
  if (!facade.dot || !facade.gemm || !facade.gesv || !direct.dot || !direct.gemm || !direct.gesv) {
    std::fprintf(stderr, "routines not found\n");
    return 1;
  }

  const double one = 1, zero = 0;
  const Int n1(1), inc(1), four(4);
  std::vector<double> a4(16), b4(16), c4(16), lu4(16), x4(4);
  for (int i = 0; i < 16; ++i) a4[i] = (i % 5 == 0 ? 8.0 : 0) + 1.0 / (1 + i);
  std::copy(a4.begin(), a4.end(), b4.begin());
  int64_t ipiv[8];
  int64_t info = 0;
  const long calls = 200000;
  std::printf("%s, %ld calls per round; large order %ld\n", lp64 ? "LP64" : "ILP64", calls, static_cast<long>(big));
  std::printf("%-14s %12s %12s\n", "", "facade", "direct");

  // Bind every facade entry before timing.
  double sink = facade.dot(n1.on(facade), a4.data(), inc.on(facade), b4.data(), inc.on(facade));
  compare(
      "ddot n=1", calls * 1e-6, "Mcalls/s", 9,
      [&](const Road& r) {
        for (long i = 0; i < calls; ++i) sink += r.dot(n1.on(r), a4.data(), inc.on(r), b4.data(), inc.on(r));
      },
      facade, direct);
  compare(
      "dgemm 4x4", calls * 1e-6, "Mcalls/s", 9,
      [&](const Road& r) {
        for (long i = 0; i < calls; ++i)
          r.gemm("N", "N", four.on(r), four.on(r), four.on(r), &one, a4.data(), four.on(r), b4.data(), four.on(r),
                 &zero, c4.data(), four.on(r), 1, 1);
      },
      facade, direct);
  // The copy of A and the right-hand side is the same work on both roads.
  compare(
      "dgesv 4x4", calls * 1e-6, "Mcalls/s", 9,
      [&](const Road& r) {
        for (long i = 0; i < calls; ++i) {
          std::copy(a4.begin(), a4.end(), lu4.begin());
          std::fill(x4.begin(), x4.end(), 1.0);
          r.gesv(four.on(r), n1.on(r), lu4.data(), four.on(r), ipiv, x4.data(), four.on(r), &info);
        }
      },
      facade, direct);

  const Int n(big);
  std::vector<double> a(big * big), b(big * big), c(big * big), lu(big * big), x(big);
  std::vector<int64_t> piv(big);
  for (int64_t i = 0; i < big * big; ++i) a[i] = b[i] = ((i * 7919) % 1000) / 1000.0 - 0.5;
  for (int64_t i = 0; i < big; ++i) a[i * big + i] += big;
  const double nd = static_cast<double>(big);
  compare(
      "dgemm large", 2 * nd * nd * nd * 1e-9, "GFlop/s", 5,
      [&](const Road& r) {
        r.gemm("N", "N", n.on(r), n.on(r), n.on(r), &one, a.data(), n.on(r), b.data(), n.on(r), &zero, c.data(),
               n.on(r), 1, 1);
      },
      facade, direct);
  // The copy of A is outside the timed call's flops but inside the round, on both roads.
  compare(
      "dgesv large", 2.0 / 3 * nd * nd * nd * 1e-9, "GFlop/s", 5,
      [&](const Road& r) {
        std::copy(a.begin(), a.end(), lu.begin());
        std::fill(x.begin(), x.end(), 1.0);
        r.gesv(n.on(r), n1.on(r), lu.data(), n.on(r), piv.data(), x.data(), n.on(r), &info);
      },
      facade, direct);
  std::printf("(checksum %g, info %ld)\n", sink + c[0] + x[0], static_cast<long>(info));
  return 0;
}
