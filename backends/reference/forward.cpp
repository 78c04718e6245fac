// Opens the ILP64 OpenBLAS build that matches this threading layer, and on
// demand its test-matrix library, each in a scope of its own: with RTLD_DEEPBIND their
// internal calls (LAPACK calling dgemm_) stay inside them and never land on the
// facade's exports, which read 32-bit integers under LP64. OpenBLAS comes in
// through a small shim that sits first in its scope and takes its xerbla_ calls.
#include "forward.h"

#include "../../src/runtime/loaded_object.h"

#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "backend_services.h"
#include "reference.h"

namespace qnl_ref {
namespace {

void* g_libs[3];  // the test-matrix entry stays empty: see test_matrix_library

// Lazy: OpenBLAS and the libraries it needs call one another through thousands of
// procedure links, and binding them all at the open was most of a first call's cost; each
// is bound on its first use instead (LD_BIND_NOW still binds them all at once).
void* open_library(const char* path) {
  void* h = dlopen(path, RTLD_LAZY | RTLD_LOCAL | RTLD_DEEPBIND);
  if (!h) std::fprintf(stderr, "qnl_rt reference back-end: cannot open %s: %s\n", path, dlerror());
  return h;
}

// The file that holds this back-end.
const char* own_file() { return qnl::loaded_object_name(reinterpret_cast<void*>(&own_file)); }

// The shim lives beside this library.
void* open_shim() {
  const char* file = own_file();
  if (!file) return nullptr;
  char path[4096];
  const char* slash = std::strrchr(file, '/');
  int dir = slash ? static_cast<int>(slash - file + 1) : 0;
  std::snprintf(path, sizeof path, "%.*s%s", dir, file, QNL_REF_SHIM);
  void* h = open_library(path);
  using SetXerbla = void (*)(void (*)(void*, void*, int32_t));
  if (auto set = reinterpret_cast<SetXerbla>(h ? dlsym(h, "qnl_shim_set_xerbla") : nullptr)) set(qnl_serv_xerbla);
  return h;
}

// OpenMP workers that busy-wait between parallel regions take the cores from
// one another when the machine is shared, and a run of small LAPACK calls, a
// few regions each, then waits again and again for workers that are not
// running: by default they sleep instead. A user who set any OpenMP variable
// keeps the OpenMP runtime's own defaults. Read when the runtime loads, so
// this only counts before the OpenMP build is opened.
void passive_openmp_by_default() {
  if (std::strcmp(QNL_REF_SHIM, "libqnl_openblas_openmp.so") != 0) return;
  for (char** e = environ; *e; ++e)
    if (!std::strncmp(*e, "OMP_", 4) || !std::strncmp(*e, "GOMP_", 5)) return;
  setenv("OMP_WAIT_POLICY", "passive", 0);
}

// OpenBLAS comes in with the back-end: nearly every first call needs it. No
// routine is looked up here; each is found when the facade asks for it.
__attribute__((constructor)) void open_libraries() {
  passive_openmp_by_default();
  g_libs[kOpenBlas] = open_shim();
  // Already loaded: this only yields a handle for looking up its own symbols.
  const char* self = own_file();
  g_libs[kSelf] = self ? dlopen(self, RTLD_NOW | RTLD_NOLOAD) : nullptr;
  if (kTargetCount > kMaxTargets) {
    std::fprintf(stderr, "qnl_rt reference back-end: %d targets, room for %d\n", kTargetCount, kMaxTargets);
    std::abort();
  }
}

// Few programs need the test-matrix library, and opening it costs start-up
// time: it waits for its first routine. It needs libraries named libblas64.so.3
// and liblapack64.so.3; the ones beside the OpenBLAS build in use are opened
// first, so that it takes those (a loaded library answers for its name) and not
// the system's choice, built over another OpenBLAS. They add no symbol of their
// own to that build's, so nothing else needs them. No lock of ours: resolvers
// run inside the dynamic linker's lock, so waiting here for another thread's
// dlopen could deadlock. Racing openers get the same handle; a failed open is
// tried again.
std::atomic<void*> g_test_matrix{nullptr};
constexpr const char* kWrappers[] = {"libblas64.so.3", "liblapack64.so.3"};
void* test_matrix_library() {
  void* h = g_test_matrix.load(std::memory_order_acquire);
  if (!h) {
    for (const char* name : kWrappers) {
      char path[4096];
      std::snprintf(path, sizeof path, "%s/%s", QNL_REF_OPENBLAS_DIR, name);
      open_library(path);  // kept open for the process, as the test-matrix library is
    }
    h = open_library(QNL_REF_TMGLIB);
    g_test_matrix.store(h, std::memory_order_release);
  }
  return h;
}

}  // namespace

std::atomic<void*> g_bound[kMaxTargets];

void* computational_symbol(const char* name, int library) {
  void* lib = library == kTestMatrix ? test_matrix_library() : g_libs[library];
  return lib ? dlsym(lib, name) : nullptr;
}

void* bind(int k) {
  void* p = computational_symbol(kTargets[k].name(), kTargets[k].library);
  if (!p) p = const_cast<char*>(reinterpret_cast<const char*>(qnl_ref_targets) + qnl_ref_targets[k]);
  // Racing binders store the same address.
  g_bound[k].store(p, std::memory_order_relaxed);
  return p;
}

void apply_threads(int32_t n) {
  using SetThreads = void (*)(int);
  if (auto set = reinterpret_cast<SetThreads>(computational_symbol("openblas_set_num_threads"))) set(n);
}

}  // namespace qnl_ref

extern "C" void* qnl_ref_resolve(int index) { return qnl_ref::target(index); }

extern "C" void qnl_ref_missing(int index) {
  std::fprintf(stderr, "qnl_rt reference back-end: %s is not available from %s\n", qnl_ref::kTargets[index].name(),
               qnl_ref::kTargets[index].library == qnl_ref::kTestMatrix ? QNL_REF_TMGLIB
               : qnl_ref::kTargets[index].library == qnl_ref::kSelf     ? "this back-end"
                                                                        : QNL_REF_OPENBLAS);
  std::abort();
}
