// Calls one small BLAS routine N times, for bench/cost/run.sh to count the
// instructions of one call under callgrind: (Ir of 2N calls - Ir of N calls) / N
// leaves out start-up, binding and the loop's set-up.
//
//   call_cost ROAD CALL N
//
// ROAD: facade-lp64, facade-ilp64 (libqnl_rt.so on its reference back-end, the
// caller's integers 32 or 64 bits wide), direct64 (the back-end's own ILP64
// OpenBLAS build, 64-bit integers), direct32 (Debian's LP64 OpenBLAS, 32-bit).
// CALL: ddot (n=1), dgemm (2x2x2), cblas_ddot (n=1), cblas_dgemm (2x2x2, row-major),
// dpotrf (n=1, a LAPACK entry's frame: the 1x1 factor is its square root, so repeated
// calls stay positive).
// Every road calls through a function pointer that the compiler cannot see
// through, so each pays one indirect call. Prints the last result, so that a
// road that computes something else is seen.
#include <dlfcn.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" int QNL_Set_Interface_Layer(int);

namespace {

template <class I>
using Dot = double (*)(const I*, const double*, const I*, const double*, const I*);
template <class I>
using Gemm = void (*)(const char*, const char*, const I*, const I*, const I*, const double*, const double*, const I*,
                      const double*, const I*, const double*, double*, const I*, size_t, size_t);
template <class I>
using Potrf = void (*)(const char*, const I*, double*, const I*, I*, size_t);
template <class I>
using CDot = double (*)(I, const double*, I, const double*, I);
template <class I>
using CGemm = void (*)(int, int, int, I, I, I, double, const double*, I, const double*, I, double, double*, I);

template <class F>
F lookup(void* lib, const char* name) {
  void* p = dlsym(lib, name);
  if (!p) {
    std::fprintf(stderr, "call_cost: %s not found\n", name);
    std::exit(1);
  }
  return reinterpret_cast<F>(p);
}

template <class I>
int run(void* lib, const char* call, long n) {
  const double a[4] = {1, 2, 3, 4}, b[4] = {5, 6, 7, 8}, one = 1, zero = 0;
  double c[4] = {0, 0, 0, 0};
  const I one_i = 1, two = 2;
  double r = 0;
  if (!std::strcmp(call, "ddot")) {
    auto volatile f = lookup<Dot<I>>(lib, "ddot_");
    for (long i = 0; i < n; ++i) r = f(&one_i, a, &one_i, b, &one_i);
  } else if (!std::strcmp(call, "dgemm")) {
    auto volatile f = lookup<Gemm<I>>(lib, "dgemm_");
    for (long i = 0; i < n; ++i) f("N", "N", &two, &two, &two, &one, a, &two, b, &two, &zero, c, &two, 1, 1);
    r = c[0] + c[1] + c[2] + c[3];
  } else if (!std::strcmp(call, "dpotrf")) {
    auto volatile f = lookup<Potrf<I>>(lib, "dpotrf_");
    double s = 1e300;
    I info = 0;
    for (long i = 0; i < n; ++i) f("L", &one_i, &s, &one_i, &info, 1);
    r = s + static_cast<double>(info);
  } else if (!std::strcmp(call, "cblas_ddot")) {
    auto volatile f = lookup<CDot<I>>(lib, "cblas_ddot");
    for (long i = 0; i < n; ++i) r = f(1, a, 1, b, 1);
  } else if (!std::strcmp(call, "cblas_dgemm")) {
    auto volatile f = lookup<CGemm<I>>(lib, "cblas_dgemm");
    for (long i = 0; i < n; ++i) f(101, 111, 111, 2, 2, 2, 1.0, a, 2, b, 2, 0.0, c, 2);
    r = c[0] + c[1] + c[2] + c[3];
  } else {
    std::fprintf(stderr, "call_cost: unknown call %s\n", call);
    return 2;
  }
  std::printf("%g\n", r);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: %s facade-lp64|facade-ilp64|direct64|direct32 CALL N\n", argv[0]);
    return 2;
  }
  const char* road = argv[1];
  const long n = std::atol(argv[3]);
  if (!std::strncmp(road, "facade-", 7)) {
    // The reference back-end over the serial OpenBLAS build, the one direct64 calls.
    setenv("QNL_THREADING_LAYER", "sequential", 1);
    const bool lp64 = !std::strcmp(road + 7, "lp64");
    QNL_Set_Interface_Layer(lp64 ? 0 : 1);
    return lp64 ? run<int32_t>(RTLD_DEFAULT, argv[2], n) : run<int64_t>(RTLD_DEFAULT, argv[2], n);
  }
  const bool wide = !std::strcmp(road, "direct64");
  if (!wide && std::strcmp(road, "direct32")) {
    std::fprintf(stderr, "call_cost: unknown road %s\n", road);
    return 2;
  }
  void* lib = dlopen(wide ? QNL_BENCH_OPENBLAS64 : QNL_BENCH_OPENBLAS32, RTLD_NOW | RTLD_LOCAL);
  if (!lib) {
    std::fprintf(stderr, "call_cost: %s\n", dlerror());
    return 1;
  }
  return wide ? run<int64_t>(lib, argv[2], n) : run<int32_t>(lib, argv[2], n);
}
