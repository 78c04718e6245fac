// Bandwidth of the reference back-end's matrix copies through the facade's C spellings,
// against memcpy of the same bytes on the same machine in the same run.
//
//   bench_matcopy [N]      square N x N matrices (default 4000), sequential layer
//
// prints GB/s (bytes read plus bytes written over time) and the ratio to memcpy.
#include <chrono>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" {
int QNL_Set_Threading_Layer(int);
void QNL_Domatcopy(char, char, size_t, size_t, double, const double*, size_t, double*, size_t);
void QNL_Dimatcopy(char, char, size_t, size_t, double, double*, size_t, size_t);
void QNL_Domatadd(char, char, char, size_t, size_t, double, const double*, size_t, double, const double*, size_t,
                  double*, size_t);
void QNL_Zomatcopy(char, char, size_t, size_t, std::complex<double>, const std::complex<double>*, size_t,
                   std::complex<double>*, size_t);
}

namespace {

// Seconds per run, the best of five after one warm-up.
template <class F>
double seconds(F f) {
  f();
  double best = 1e30;
  for (int r = 0; r < 5; ++r) {
    const auto start = std::chrono::steady_clock::now();
    f();
    const double t = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    best = t < best ? t : best;
  }
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  const size_t n = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 4000;
  QNL_Set_Threading_Layer(1);  // sequential: the copies are single-threaded
  std::vector<double> a(n * n, 1.5), b(n * n, 0.5), c(n * n);
  std::vector<std::complex<double>> za(n * n, {1, 2}), zb(n * n);
  const double bytes = 2.0 * 8 * static_cast<double>(n * n);
  const double memcpy_gbs = bytes / seconds([&] { std::memcpy(c.data(), a.data(), n * n * 8); }) / 1e9;
  struct Row {
    const char* what;
    double bytes, s;
  } rows[] = {
      {"domatcopy N", bytes, seconds([&] { QNL_Domatcopy('C', 'N', n, n, 2.0, a.data(), n, c.data(), n); })},
      {"domatcopy T", bytes, seconds([&] { QNL_Domatcopy('C', 'T', n, n, 2.0, a.data(), n, c.data(), n); })},
      {"dimatcopy T (square)", bytes, seconds([&] { QNL_Dimatcopy('C', 'T', n, n, 1.0, c.data(), n, n); })},
      {"domatadd N T", 1.5 * bytes,
       seconds([&] { QNL_Domatadd('C', 'N', 'T', n, n, 1.0, a.data(), n, 2.0, b.data(), n, c.data(), n); })},
      {"zomatcopy C", 2 * bytes, seconds([&] {
         QNL_Zomatcopy('C', 'C', n, n, {1, 1}, za.data(), n, zb.data(), n);
       })},
  };
  std::printf("n = %zu\n%-22s %8s %8s\n", n, "operation", "GB/s", "/memcpy");
  std::printf("%-22s %8.2f %8.2f\n", "memcpy", memcpy_gbs, 1.0);
  for (const Row& r : rows)
    std::printf("%-22s %8.2f %8.2f\n", r.what, r.bytes / r.s / 1e9, r.bytes / r.s / 1e9 / memcpy_gbs);
}
