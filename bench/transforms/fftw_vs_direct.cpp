// fftw_execute through libqnl_rt.so (reference back-end) against Debian's FFTW
// called directly, both planned with FFTW_ESTIMATE, in one run. Debian's FFTW
// is opened in a link-map namespace of its own: this program also links the
// facade, which exports the same names. The process is pinned to one CPU and
// the two sides run in alternating rounds; prints the medians of the rounds,
// direct/facade time ratios (1.0 means no cost) and the per-call overhead at
// n = 16 in ns.
#include <dlfcn.h>
#include <link.h>
#include <sched.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <vector>

#include "fftw3.h"

namespace {

struct Direct {
  void* (*malloc)(size_t);
  fftw_plan (*many)(int, const int*, int, fftw_complex*, const int*, int, int, fftw_complex*, const int*, int, int, int,
                    unsigned);
  fftw_plan (*r2c)(int, double*, fftw_complex*, unsigned);
  void (*execute)(fftw_plan);
  void (*destroy)(fftw_plan);
};

Direct open_direct() {
  void* h = dlmopen(LM_ID_NEWLM, "/usr/lib/x86_64-linux-gnu/libfftw3.so.3", RTLD_NOW | RTLD_LOCAL);
  if (!h) {
    std::fprintf(stderr, "cannot open Debian's FFTW: %s\n", dlerror());
    std::exit(1);
  }
  Direct d;
  d.malloc = reinterpret_cast<decltype(d.malloc)>(dlsym(h, "fftw_malloc"));
  d.many = reinterpret_cast<decltype(d.many)>(dlsym(h, "fftw_plan_many_dft"));
  d.r2c = reinterpret_cast<decltype(d.r2c)>(dlsym(h, "fftw_plan_dft_r2c_1d"));
  d.execute = reinterpret_cast<decltype(d.execute)>(dlsym(h, "fftw_execute"));
  d.destroy = reinterpret_cast<decltype(d.destroy)>(dlsym(h, "fftw_destroy_plan"));
  return d;
}

// Seconds per call of one round, in this thread's CPU time: time the machine
// gives to other processes does not count.
double cpu_seconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}
double per_call(const std::function<void()>& call, long calls) {
  double t0 = cpu_seconds();
  for (long i = 0; i < calls; ++i) call();
  return (cpu_seconds() - t0) / static_cast<double>(calls);
}

double median(std::vector<double> v) {
  std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
  return v[v.size() / 2];
}

// Keeps the process on the CPU it started on: no migration between rounds.
void pin() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(sched_getcpu(), &one);
  sched_setaffinity(0, sizeof one, &one);
}

struct Case {
  const char* name;
  std::vector<int> n;
  int howmany;
  bool real;
};

}  // namespace

int main(int argc, char** argv) {
  double scale = argc > 1 ? std::atof(argv[1]) : 1.0;  // fewer calls for a quick run
  pin();
  Direct d = open_direct();
  Case cases[] = {{"complex n=16", {16}, 1, false},         {"complex n=1024", {1024}, 1, false},
                  {"complex n=2^20", {1 << 20}, 1, false},  {"real n=1024", {1024}, 1, true},
                  {"complex 64^3", {64, 64, 64}, 1, false}, {"batched 1000x64", {64}, 1000, false}};
  std::printf("%-18s %12s %12s %8s\n", "case", "direct us", "facade us", "ratio");
  for (const Case& c : cases) {
    size_t total = c.howmany;
    for (int v : c.n) total *= v;
    long calls = std::max(2L, static_cast<long>(scale * 2e7 / (total + 50)));
    int rank = static_cast<int>(c.n.size()), dist = static_cast<int>(total / c.howmany);
    auto* a = static_cast<fftw_complex*>(d.malloc(sizeof(fftw_complex) * (total + 1)));
    auto* b = static_cast<fftw_complex*>(d.malloc(sizeof(fftw_complex) * (total + 1)));
    std::memset(a, 0, sizeof(fftw_complex) * total);
    fftw_plan direct = c.real ? d.r2c(c.n[0], reinterpret_cast<double*>(a), b, FFTW_ESTIMATE)
                              : d.many(rank, c.n.data(), c.howmany, a, nullptr, 1, dist, b, nullptr, 1, dist,
                                       FFTW_FORWARD, FFTW_ESTIMATE);
    fftw_plan facade = c.real ? fftw_plan_dft_r2c_1d(c.n[0], reinterpret_cast<double*>(a), b, FFTW_ESTIMATE)
                              : fftw_plan_many_dft(rank, c.n.data(), c.howmany, a, nullptr, 1, dist, b, nullptr, 1,
                                                   dist, FFTW_FORWARD, FFTW_ESTIMATE);
    if (!direct || !facade) {
      std::printf("%-18s could not plan\n", c.name);
      continue;
    }
    // Rounds alternate between the two, each going first in turn, so that a
    // busy machine slows both alike; the median round of each.
    std::vector<double> rd, rf;
    for (int round = 0; round < 11; ++round) {
      if (round % 2) rf.push_back(per_call([&] { fftw_execute(facade); }, calls));
      rd.push_back(per_call([&] { d.execute(direct); }, calls));
      if (round % 2 == 0) rf.push_back(per_call([&] { fftw_execute(facade); }, calls));
    }
    double td = median(rd), tf = median(rf);
    std::printf("%-18s %12.3f %12.3f %8.3f\n", c.name, td * 1e6, tf * 1e6, td / tf);
    if (c.n[0] == 16 && rank == 1) std::printf("%-18s %12.1f ns per call\n", "  overhead", (tf - td) * 1e9);
    d.destroy(direct);
    fftw_destroy_plan(facade);
  }
  return 0;
}
