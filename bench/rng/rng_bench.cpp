// Random numbers through libqnl_rt.so: MT19937, Philox4x32-10 and MRG32k3a against
// std::mt19937_64 with the std:: distributions, and Philox against Random123's
// own loop, in the same run. Prints nanoseconds per number and the ratios
// (baseline time / our time: above 1 means faster).
#include <Random123/philox.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>

#include "qnl_vsl.h"

namespace {

// Best time per number over repetitions that fill about 2*10^7 numbers in all.
double ns_per(int n, const std::function<void()>& fill) {
  const int reps = std::max(3, 20000000 / n);
  double best = 1e30;
  for (int r = 0; r < reps; ++r) {
    auto t0 = std::chrono::steady_clock::now();
    fill();
    best = std::min(best, std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - t0).count());
    if (n >= 1000000 && r >= 3) break;
  }
  return best / n;
}

volatile double sink;

}  // namespace

int main() {
  const struct {
    const char* name;
    int brng;
  } gens[] = {{"MT19937", VSL_BRNG_MT19937}, {"Philox", VSL_BRNG_PHILOX4X32X10}, {"MRG32k3a", VSL_BRNG_MRG32K3A}};
  std::printf("%-10s %-9s %9s %10s %10s %7s\n", "task", "generator", "n", "ours ns", "std ns", "ratio");
  for (int n : {1000, 10000000}) {
    std::vector<double> d(n);
    std::vector<int> k(n);
    std::mt19937_64 eng(1);
    std::uniform_real_distribution<double> ud(0.0, 1.0);
    std::normal_distribution<double> nd(0.0, 1.0);
    std::poisson_distribution<int> pd(10.0);
    const double base[3] = {
        ns_per(n, [&] { std::generate(d.begin(), d.end(), [&] { return ud(eng); }); sink = d[0]; }),
        ns_per(n, [&] { std::generate(d.begin(), d.end(), [&] { return nd(eng); }); sink = d[0]; }),
        ns_per(n, [&] { std::generate(k.begin(), k.end(), [&] { return pd(eng); }); sink = k[0]; })};
    for (auto& g : gens) {
      VSLStreamStatePtr s = nullptr;
      vslNewStream(&s, g.brng, 1);
      const double ours[3] = {
          ns_per(n, [&] { vdRngUniform(VSL_RNG_METHOD_UNIFORM_STD, s, n, d.data(), 0.0, 1.0); sink = d[0]; }),
          ns_per(n, [&] { vdRngGaussian(VSL_RNG_METHOD_GAUSSIAN_BOXMULLER2, s, n, d.data(), 0.0, 1.0); sink = d[0]; }),
          ns_per(n, [&] { viRngPoisson(VSL_RNG_METHOD_POISSON_PTPE, s, n, k.data(), 10.0); sink = k[0]; })};
      const char* task[3] = {"uniform", "gaussian", "poisson10"};
      for (int t = 0; t < 3; ++t)
        std::printf("%-10s %-9s %9d %10.2f %10.2f %7.2f\n", task[t], g.name, n, ours[t], base[t], base[t] / ours[t]);
      vslDeleteStream(&s);
    }
  }
  // Philox words: our kernel against Random123's loop over counters.
  for (int n : {1000, 10000000}) {
    std::vector<unsigned> w(n);
    VSLStreamStatePtr s = nullptr;
    const unsigned seed[2] = {1, 2};
    vslNewStreamEx(&s, VSL_BRNG_PHILOX4X32X10, 2, seed);
    const double ours = ns_per(n, [&] { viRngUniformBits(VSL_RNG_METHOD_UNIFORMBITS_STD, s, n, w.data()); sink = w[0]; });
    r123::Philox4x32 g;
    r123::Philox4x32::key_type key = {{1, 2}};
    r123::Philox4x32::ctr_type ctr = {{0, 0, 0, 0}};
    const double theirs = ns_per(n, [&] {
      for (int i = 0; i + 4 <= n; i += 4) {
        ctr.incr();
        auto r = g(ctr, key);
        std::copy(r.begin(), r.end(), w.begin() + i);
      }
      sink = w[0];
    });
    std::printf("%-10s %-9s %9d %10.2f %10.2f %7.2f  (Random123 loop)\n", "bits32", "Philox", n, ours, theirs,
                theirs / ours);
    vslDeleteStream(&s);
  }
}
