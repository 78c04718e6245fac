// Cost of computing through libqnl_rt.so and the reference back-end against
// calling the same routines of Debian's ILP64 OpenBLAS directly, in one run:
// per-call time of quiet, bound small calls (ddot n=1, dgemm 4x4, dgesv 4x4)
// and the throughput of a large dgemm and dgesv.
//
//   facade_vs_openblas lp64|ilp64 [N]     (N: order of the large calls, 2000)
//
// Both roads use the serial OpenBLAS build (QNL_THREADING_LAYER=sequential for
// the facade). The process is pinned to the processor it starts on; each
// measurement alternates the two roads round by round and reports the median
// round of each with its quartiles, and the ratio of the medians. Inputs that a
// routine overwrites are copied before the timed region, and the two roads'
// results must agree exactly (the same OpenBLAS code computes both).
#include <dlfcn.h>
#include <sched.h>

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

double quantile(std::vector<double> v, double q) {
  std::sort(v.begin(), v.end());
  return v[static_cast<size_t>(q * (v.size() - 1) + 0.5)];
}

// One measurement: `prepare` readies a road's inputs outside the clock, `run` is timed,
// `result` gives what the round computed. Rounds alternate the roads; the first round of
// each is a warm-up and is not counted.
struct Measure {
  const char* what;
  double work;
  const char* unit;
  int rounds;
  std::function<void(const Road&)> prepare, run;
  std::function<std::vector<double>()> result;
};

bool compare(const Measure& m, const Road& facade, const Road& direct) {
  std::vector<double> t[2];
  std::vector<double> out[2];
  const Road* roads[2] = {&facade, &direct};
  for (int r = 0; r <= m.rounds; ++r)
    for (int k = 0; k < 2; ++k) {
      m.prepare(*roads[k]);
      const double s = seconds([&] { m.run(*roads[k]); });
      if (r > 0) t[k].push_back(s);
      out[k] = m.result();
    }
  const bool same = out[0] == out[1];
  const double f = quantile(t[0], 0.5), d = quantile(t[1], 0.5);
  std::printf("%-12s %9.2f [%7.2f..%7.2f] %9.2f [%7.2f..%7.2f] %-8s  facade/direct time %.3f%s\n", m.what, m.work / f,
              m.work / quantile(t[0], 0.75), m.work / quantile(t[0], 0.25), m.work / d, m.work / quantile(t[1], 0.75),
              m.work / quantile(t[1], 0.25), m.unit, f / d, same ? "" : "  RESULTS DIFFER");
  return same;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s lp64|ilp64 [N]\n", argv[0]);
    return 2;
  }
  const bool lp64 = std::strcmp(argv[1], "lp64") == 0;
  // Pinned to the processor it starts on, so that both roads run on the same one.
  cpu_set_t one_cpu;
  CPU_ZERO(&one_cpu);
  CPU_SET(sched_getcpu(), &one_cpu);
  sched_setaffinity(0, sizeof one_cpu, &one_cpu);
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
  std::vector<double> a4(16), b4(16), c4(16);
  for (int i = 0; i < 16; ++i) a4[i] = (i % 5 == 0 ? 8.0 : 0) + 1.0 / (1 + i);
  std::copy(a4.begin(), a4.end(), b4.begin());
  int64_t info = 0;
  const long calls = 200000, solves = 20000;
  std::printf("%s, %ld calls per round (%ld for dgesv 4x4); large order %ld; median [quartiles] of 9 rounds\n",
              lp64 ? "LP64" : "ILP64", calls, solves, static_cast<long>(big));
  std::printf("%-12s %29s %29s\n", "", "facade", "direct");

  // Bind every facade entry before timing.
  double sink = facade.dot(n1.on(facade), a4.data(), inc.on(facade), b4.data(), inc.on(facade));
  bool ok = true;
  const auto nothing = [](const Road&) {};
  ok &= compare({"ddot n=1", calls * 1e-6, "Mcalls/s", 9, nothing,
                 [&](const Road& r) {
                   sink = 0;
                   for (long i = 0; i < calls; ++i) sink += r.dot(n1.on(r), a4.data(), inc.on(r), b4.data(), inc.on(r));
                 },
                 [&] { return std::vector<double>{sink}; }},
                facade, direct);
  ok &= compare({"dgemm 4x4", calls * 1e-6, "Mcalls/s", 9, [&](const Road&) { std::fill(c4.begin(), c4.end(), 0.0); },
                 [&](const Road& r) {
                   for (long i = 0; i < calls; ++i)
                     r.gemm("N", "N", four.on(r), four.on(r), four.on(r), &one, a4.data(), four.on(r), b4.data(),
                            four.on(r), &zero, c4.data(), four.on(r), 1, 1);
                 },
                 [&] { return c4; }},
                facade, direct);
  // Every solve gets its own copy of A and of the right-hand side, made before the clock starts.
  std::vector<double> lus(16 * solves), xs(4 * solves);
  std::vector<int64_t> ipivs(4 * solves);
  ok &=
      compare({"dgesv 4x4", solves * 1e-6, "Mcalls/s", 9,
               [&](const Road&) {
                 for (long i = 0; i < solves; ++i) std::copy(a4.begin(), a4.end(), lus.begin() + 16 * i);
                 std::fill(xs.begin(), xs.end(), 1.0);
               },
               [&](const Road& r) {
                 for (long i = 0; i < solves; ++i)
                   r.gesv(four.on(r), n1.on(r), &lus[16 * i], four.on(r), &ipivs[4 * i], &xs[4 * i], four.on(r), &info);
               },
               [&] { return xs; }},
              facade, direct);

  const Int n(big);
  std::vector<double> a(big * big), b(big * big), c(big * big), lu(big * big), x(big);
  std::vector<int64_t> piv(big);
  for (int64_t i = 0; i < big * big; ++i) a[i] = b[i] = ((i * 7919) % 1000) / 1000.0 - 0.5;
  for (int64_t i = 0; i < big; ++i) a[i * big + i] += big;
  const double nd = static_cast<double>(big);
  ok &= compare({"dgemm large", 2 * nd * nd * nd * 1e-9, "GFlop/s", 5, nothing,
                 [&](const Road& r) {
                   r.gemm("N", "N", n.on(r), n.on(r), n.on(r), &one, a.data(), n.on(r), b.data(), n.on(r), &zero,
                          c.data(), n.on(r), 1, 1);
                 },
                 [&] { return c; }},
                facade, direct);
  ok &= compare(
      {"dgesv large", 2.0 / 3 * nd * nd * nd * 1e-9, "GFlop/s", 5,
       [&](const Road&) {
         std::copy(a.begin(), a.end(), lu.begin());
         std::fill(x.begin(), x.end(), 1.0);
       },
       [&](const Road& r) { r.gesv(n.on(r), n1.on(r), lu.data(), n.on(r), piv.data(), x.data(), n.on(r), &info); },
       [&] { return x; }},
      facade, direct);
  std::printf("(info %ld)\n", static_cast<long>(info));
  if (!ok) {
    std::fprintf(stderr, "the two roads computed different results\n");
    return 1;
  }
  return 0;
}
