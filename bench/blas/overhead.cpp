// Cost of a bound, quiet BLAS entry: the same back-end symbol of the probe back-end is
// called through the facade's entry and straight through its address, both through a
// function pointer (no PLT on either road).
//
//   blas_overhead ddot|dgemm lp64|ilp64 facade|backend CALLS
//
// prints the nanoseconds per call of the chosen road; run under callgrind with CALLS and
// 2*CALLS, the difference of the totals over CALLS is the instructions per call.
#include <dlfcn.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" int QNL_Set_Interface_Layer(int);

namespace {

double a[4] = {1, 2, 3, 4}, b[4] = {5, 6, 7, 8}, c[4] = {}, one = 1, zero = 0;

using Dot = double (*)(const void*, const double*, const void*, const double*, const void*);
using Gemm = void (*)(const char*, const char*, const void*, const void*, const void*, const double*,
                      const double*, const void*, const double*, const void*, const double*, double*, const void*,
                      size_t, size_t);

void* backend_symbol(const char* name) {
  // the entry's first call has loaded the back-end beside the facade; find it there
  Dl_info info;
  if (!dladdr(dlsym(RTLD_DEFAULT, "ddot_"), &info)) return nullptr;
  char path[4096];
  std::snprintf(path, sizeof path, "%s", info.dli_fname);
  char* slash = std::strrchr(path, '/');
  std::snprintf(slash ? slash + 1 : path, sizeof path - (slash ? slash + 1 - path : 0), "libqnl_velor_thread.so");
  void* lib = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  return lib ? dlsym(lib, name) : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: %s ddot|dgemm lp64|ilp64 facade|backend CALLS\n", argv[0]);
    return 2;
  }
  const bool gemm = std::strcmp(argv[1], "dgemm") == 0;
  const bool lp64 = std::strcmp(argv[2], "lp64") == 0;
  const bool facade = std::strcmp(argv[3], "facade") == 0;
  const long calls = std::atol(argv[4]);
  QNL_Set_Interface_Layer(lp64 ? 0 : 1);

  int32_t n32 = 1, one32 = 1, two32 = 2;
  int64_t n64 = 1, one64 = 1, two64 = 2;
  const void* n = lp64 ? static_cast<void*>(&n32) : &n64;
  const void* inc = lp64 ? static_cast<void*>(&one32) : &one64;
  const void* two = lp64 ? static_cast<void*>(&two32) : &two64;

  // bind both entries once, quietly
  auto ddot = reinterpret_cast<Dot>(dlsym(RTLD_DEFAULT, "ddot_"));
  auto dgemm = reinterpret_cast<Gemm>(dlsym(RTLD_DEFAULT, "dgemm_"));
  ddot(n, a, inc, b, inc);
  dgemm("N", "N", two, two, two, &one, a, two, b, two, &zero, c, two, 1, 1);
  if (!facade) {
    ddot = reinterpret_cast<Dot>(backend_symbol("qnl_blas_ddot"));
    dgemm = reinterpret_cast<Gemm>(backend_symbol("qnl_blas_dgemm"));
    n = &n64, inc = &one64, two = &two64;  // the back-end's own integers
    if (!ddot || !dgemm) {
      std::fprintf(stderr, "back-end symbols not found\n");
      return 1;
    }
  }
  const auto t0 = std::chrono::steady_clock::now();
  double sink = 0;
  if (gemm) {
    for (long i = 0; i < calls; ++i) dgemm("N", "N", two, two, two, &one, a, two, b, two, &zero, c, two, 1, 1);
  } else {
    for (long i = 0; i < calls; ++i) sink += ddot(n, a, inc, b, inc);
  }
  const auto t1 = std::chrono::steady_clock::now();
  std::printf("%.2f ns/call (%g)\n", std::chrono::duration<double, std::nano>(t1 - t0).count() / calls, sink);
  return 0;
}
