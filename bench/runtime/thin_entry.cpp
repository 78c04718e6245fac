// Cost of a bound thin entry against a direct call of the same back-end
// function. Prints nanoseconds per call for both and their ratio.
//
//   thin_entry [calls] [both|direct|facade|facade_ref]
//
// `facade` calls the by-value C spelling (QNL_CBWR_Get), which passes its
// argument exactly as the direct call does; `facade_ref` the Fortran spelling
// (QNL_CBWR_GET), which also reads its argument through a pointer.
//
// With one mode only, the program makes just those calls, so that
// bench/runtime/callgrind.sh can count instructions per call.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" int QNL_CBWR_GET(const int* option);
extern "C" int QNL_CBWR_Get(int option);

namespace {

using Direct = int (*)(int);

// Keeps the compiler from folding the loops away.
volatile int g_sink;

template <class F>
double nanoseconds_per_call(long calls, F&& f) {
  auto t0 = std::chrono::steady_clock::now();
  for (long i = 0; i < calls; ++i) g_sink = f();
  auto t1 = std::chrono::steady_clock::now();
  return std::chrono::duration<double, std::nano>(t1 - t0).count() / static_cast<double>(calls);
}

}  // namespace

int main(int argc, char** argv) {
  long calls = argc > 1 ? std::atol(argv[1]) : 50000000;
  const char* mode = argc > 2 ? argv[2] : "both";
  int option = 1;
  QNL_CBWR_GET(&option);  // binds the entry and loads the back-end
  // The back-end the facade loaded: opening it again returns the same handle.
  Dl_info info;
  dladdr(reinterpret_cast<void*>(&QNL_CBWR_GET), &info);
  char path[4096];
  std::snprintf(path, sizeof path, "%.*s/libqnl_velor_thread.so",
                static_cast<int>(std::strrchr(info.dli_fname, '/') - info.dli_fname), info.dli_fname);
  void* lib = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  auto direct = lib ? reinterpret_cast<Direct>(dlsym(lib, "qnl_serv_cbwr_get")) : nullptr;
  if (!direct) {
    std::fprintf(stderr, "back-end not loaded from %s\n", path);
    return 1;
  }
  // Calls go through a volatile pointer so both loops pay one indirect call.
  Direct volatile direct_fn = direct;
  int (*volatile by_ref)(const int*) = QNL_CBWR_GET;
  Direct volatile by_value = QNL_CBWR_Get;
  by_value(option);
  bool both = std::strcmp(mode, "both") == 0;
  double d = 0, f = 0, r = 0;
  if (both || !std::strcmp(mode, "direct")) d = nanoseconds_per_call(calls, [&] { return direct_fn(option); });
  if (both || !std::strcmp(mode, "facade")) f = nanoseconds_per_call(calls, [&] { return by_value(option); });
  if (both || !std::strcmp(mode, "facade_ref")) r = nanoseconds_per_call(calls, [&] { return by_ref(&option); });
  if (both)
    std::printf("direct %.3f ns/call; by value %.3f ns/call, ratio %.3f; by reference %.3f ns/call, ratio %.3f\n", d,
                f, f / d, r, r / d);
  return 0;
}
