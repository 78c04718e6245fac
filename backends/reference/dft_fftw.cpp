// Opens Debian's FFTW3 in a link-map namespace of its own (dlmopen). The facade
// exports fftw_* too, and when a program reaches it through a link named
// libfftw3.so.3 the dynamic linker already knows the facade by that name: a
// plain dlopen, even with RTLD_DEEPBIND, would hand FFTW's threads library the
// facade as its libfftw3.so.3. In a namespace of its own FFTW's calls only ever
// find FFTW.
#include "dft_fftw.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "reference.h"

namespace qnl_ref::dft {
namespace {

// The build of FFTW that matches this threading layer.
// By full path: a search by name would follow LD_LIBRARY_PATH, which may hold
// links of FFTW's names that lead to the facade. The plain library goes first,
// so that the threads build's need of libfftw3.so.3 is met by it.
#ifndef QNL_REF_FFTW_DIR
#define QNL_REF_FFTW_DIR "/usr/lib/x86_64-linux-gnu"
#endif
// Threaded layers take FFTW's threads build, whose parallel loops run on
// threads of this namespace (run_jobs): threads started by the C library of
// FFTW's namespace are unknown to this one's, and FFTW's OpenMP build was seen
// to leave the process's heap corrupt at exit.
#define QNL_REF_FFTW_LIB(stem) QNL_REF_FFTW_DIR "/" stem ".so.3"
constexpr const char* kDoubleLibs[] = {QNL_REF_FFTW_LIB("libfftw3"),
                                       QNL_REF_THREADED ? QNL_REF_FFTW_LIB("libfftw3_threads") : nullptr};
constexpr const char* kFloatLibs[] = {QNL_REF_FFTW_LIB("libfftw3f"),
                                      QNL_REF_THREADED ? QNL_REF_FFTW_LIB("libfftw3f_threads") : nullptr};

// FFTW's parallel loop: jobs 1.. on threads of ours, job 0 on the caller.
void run_jobs(void* (*work)(char*), char* jobs, size_t size, int count, void*) {
  std::vector<std::thread> helpers;
  helpers.reserve(count > 1 ? count - 1 : 0);
  for (int j = 1; j < count; ++j) helpers.emplace_back([=] { work(jobs + size * j); });
  if (count > 0) work(jobs);
  for (auto& t : helpers) t.join();
}

Lmid_t g_namespace = LM_ID_NEWLM;

void* open_in_namespace(const char* file) {
  void* h = dlmopen(g_namespace, file, RTLD_NOW | RTLD_LOCAL);
  if (!h) {
    std::fprintf(stderr, "qnl_rt reference back-end: cannot open %s: %s\n", file, dlerror());
    std::abort();
  }
  if (g_namespace == LM_ID_NEWLM) dlinfo(h, RTLD_DI_LMID, &g_namespace);
  return h;
}

template <class F>
void find(void* h, const char* prefix, const char* stem, F& fn, bool required = true) {
  char name[96];
  std::snprintf(name, sizeof name, "%s%s", prefix, stem);
  fn = reinterpret_cast<F>(dlsym(h, name));
  if (!fn && required) {
    std::fprintf(stderr, "qnl_rt reference back-end: FFTW has no %s\n", name);
    std::abort();
  }
}

template <class R>
Fftw<R> load(const char* const (&files)[2], const char* prefix) {
  std::lock_guard<std::mutex> hold(planner_lock());
  void* h = open_in_namespace(files[0]);
  if (files[1]) h = open_in_namespace(files[1]);
  Fftw<R> f{};
  find(h, prefix, "plan_guru64_dft", f.guru64_dft);
  find(h, prefix, "plan_guru64_split_dft", f.guru64_split_dft);
  find(h, prefix, "plan_guru64_dft_r2c", f.guru64_r2c);
  find(h, prefix, "plan_guru64_dft_c2r", f.guru64_c2r);
  find(h, prefix, "execute_dft", f.execute_dft);
  find(h, prefix, "execute_split_dft", f.execute_split_dft);
  find(h, prefix, "execute_dft_r2c", f.execute_r2c);
  find(h, prefix, "execute_dft_c2r", f.execute_c2r);
  find(h, prefix, "destroy_plan", f.destroy);
  int (*alignment_of)(R*) = nullptr;
  find(h, prefix, "alignment_of", alignment_of);
  uintptr_t modulus = 1;
  while (modulus < 4096 && alignment_of(reinterpret_cast<R*>(modulus)) != 0) modulus <<= 1;
  f.alignment_mask = modulus - 1;
  find(h, prefix, "version", f.version);
  int (*init_threads)() = nullptr;
  void (*set_callback)(void (*)(void* (*)(char*), char*, size_t, int, void*), void*) = nullptr;
  find(h, prefix, "init_threads", init_threads, false);
  find(h, prefix, "threads_set_callback", set_callback, false);
  find(h, prefix, "plan_with_nthreads", f.plan_with_nthreads, false);
  if (init_threads && set_callback) {
    init_threads();
    set_callback(run_jobs, nullptr);
  } else {
    f.plan_with_nthreads = nullptr;
  }
  return f;
}

}  // namespace

std::mutex& planner_lock() {
  static std::mutex m;
  return m;
}

const Fftw<double>& fftw_double() {
  static const Fftw<double> f = load<double>(kDoubleLibs, "fftw_");
  return f;
}
const Fftw<float>& fftw_float() {
  static const Fftw<float> f = load<float>(kFloatLibs, "fftwf_");
  return f;
}

}  // namespace qnl_ref::dft
