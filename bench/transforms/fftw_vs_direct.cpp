// fftw_execute through libqnl_rt.so (reference back-end) against Debian's FFTW
// called directly, both planned with FFTW_ESTIMATE, in one run. Debian's FFTW
// is opened in a link-map namespace of its own: this program also links the
// facade, which exports the same names. Prints direct/facade time ratios (1.0
// means no cost) and the per-call overhead at n = 16 in ns.
#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

// Seconds per call of one round.
double per_call(const std::function<void()>& call, long calls) {
  auto t0 = std::chrono::steady_clock::now();
  for (long i = 0; i < calls; ++i) call();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count() / calls;
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
    // Rounds alternate between the two, so that a busy machine slows both alike; best of each.
    double td = 1e30, tf = 1e30;
    for (int round = 0; round < 7; ++round) {
      td = std::min(td, per_call([&] { d.execute(direct); }, calls));
      tf = std::min(tf, per_call([&] { fftw_execute(facade); }, calls));
    }
    std::printf("%-18s %12.3f %12.3f %8.3f\n", c.name, td * 1e6, tf * 1e6, td / tf);
    if (c.n[0] == 16 && rank == 1) std::printf("%-18s %12.1f ns per call\n", "  overhead", (tf - td) * 1e9);
    d.destroy(direct);
    fftw_destroy_plan(facade);
  }
  return 0;
}
