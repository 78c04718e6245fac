// Service symbols of the reference back-end: scratch memory, clocks, thread
// counts, version, verbose mode and printing, and the error hooks.
#include <dlfcn.h>
#include <link.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <thread>

#include "backend_services.h"
#include "forward.h"
#include "../../src/runtime/cpu_features.h"
#include "../../src/runtime/loaded_object.h"
#include "reference.h"

namespace qnl_ref {
namespace {

using XerblaHook = void (*)(const char*, const int32_t*, int32_t);
using ProgressHook = int32_t (*)(void*, void*, void*, int32_t);
using PivotHook = int32_t (*)(void*, void*, void*);

std::atomic<XerblaHook> g_xerbla{nullptr};
std::atomic<ProgressHook> g_progress{nullptr};
std::atomic<PivotHook> g_pivot{nullptr};
std::atomic<int32_t> g_threads{0};
std::atomic<int32_t> g_dynamic{1};
std::atomic<int32_t> g_stripes{0};
std::atomic<int32_t> g_cbwr{1};
std::atomic<int64_t> g_bytes{0}, g_peak{0};
std::atomic<int32_t> g_buffers{0};
std::atomic<int32_t> g_peak_mode{0};

int32_t initial_verbose() {
  const char* v = std::getenv("QNL_VERBOSE");
  return v ? std::atoi(v) : 0;
}
int32_t g_verbose = initial_verbose();

// Every block carries a header in front of its aligned start: the address that
// malloc returned and the size asked for.
struct Header {
  void* base;
  uint64_t size;
};

void* aligned_block(uint64_t size, int32_t alignment) {
  size_t align = alignment > 0 && (alignment & (alignment - 1)) == 0 ? static_cast<size_t>(alignment) : 64;
  if (align < alignof(Header)) align = alignof(Header);
  if (size > UINT64_MAX - align - sizeof(Header)) return nullptr;
  void* base = std::malloc(size + align + sizeof(Header));
  if (!base) return nullptr;
  uintptr_t p = (reinterpret_cast<uintptr_t>(base) + sizeof(Header) + align - 1) & ~(uintptr_t)(align - 1);
  auto* h = reinterpret_cast<Header*>(p) - 1;
  h->base = base;
  h->size = size;
  int64_t now = g_bytes += static_cast<int64_t>(size);
  ++g_buffers;
  for (int64_t peak = g_peak.load(); now > peak && !g_peak.compare_exchange_weak(peak, now);) {
  }
  return reinterpret_cast<void*>(p);
}

void release_block(void* p) {
  if (!p) return;
  auto* h = static_cast<Header*>(p) - 1;
  g_bytes -= static_cast<int64_t>(h->size);
  --g_buffers;
  std::free(h->base);
}

using AppXerbla = void (*)(const char*, const int64_t*, size_t);

// The file of the object that holds an address ("" for the main program), or null.
const char* object_of(const void* address) { return qnl::loaded_object_name(address); }

struct XerblaSearch {
  const char* shim;  // takes OpenBLAS's reports for this back-end
  void* found;
};

// A BLAS or LAPACK library (an OpenBLAS build, whoever loaded it) defines dgemm_
// or dgetrf_ beside its xerbla_; an application that links them does not.
bool is_blas_library(void* handle, const char* file) {
  static const char* const kRoutines[] = {"dgemm_", "dgetrf_"};
  for (const char* routine : kRoutines) {
    const char* holder = object_of(dlsym(handle, routine));
    if (holder && std::strcmp(holder, file) == 0) return true;
  }
  return false;
}

int visit_object(dl_phdr_info* object, size_t, void* data) {
  auto& s = *static_cast<XerblaSearch*>(data);
  const char* file = object->dlpi_name && object->dlpi_name[0] ? object->dlpi_name : nullptr;
  void* h = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
  if (!h) return 0;
  void* lower = dlsym(h, "xerbla_");
  void* upper = dlsym(h, "XERBLA");
  const char* holder = object_of(lower);
  // The executable's handle searches the global scope, whose first definition is
  // the executable's own if it has one; any other object must hold the
  // definition itself rather than reach it among its dependencies.
  const bool own_definition = holder && (!file || std::strcmp(holder, file) == 0);
  // The facade's hook has its spellings as one body; an application's has not.
  if (own_definition && lower != upper && !(s.shim && std::strcmp(s.shim, holder) == 0) && !is_blas_library(h, holder))
    s.found = lower;
  dlclose(h);
  return s.found != nullptr;
}

// An xerbla_ that the application defines itself, in the executable or in a
// module loaded with RTLD_LOCAL (as Python extensions are), takes the place of
// the facade's hook: the dynamic linker would have bound the BLAS's own calls
// to it. The first such definition in load order wins.
AppXerbla application_xerbla() {
  static const AppXerbla app = [] {
    XerblaSearch s{object_of(computational_symbol("xerbla_")), nullptr};
    dl_iterate_phdr(visit_object, &s);
    return reinterpret_cast<AppXerbla>(s.found);
  }();
  return app;
}

using AppCblasXerbla = void (*)(int, const char*, const char*, ...);

// The facade exports no cblas_xerbla, so one found in the process is the
// application's (the CBLAS testers check their error exits through it).
AppCblasXerbla application_cblas_xerbla() {
  static const AppCblasXerbla app = reinterpret_cast<AppCblasXerbla>(dlsym(RTLD_DEFAULT, "cblas_xerbla"));
  return app;
}

// Programs written for the reference CBLAS read its flag RowMajorStrg in their
// cblas_xerbla: while it is set, they expect the number a row-major call reports
// to be that of the argument in the exchanged column-major call, and map it back.
// The C layer reports the caller's own positions, so for those programs the
// number is exchanged here first; each rule is its own inverse.
struct RowMajorExchange {
  const char* routine;  // part of the C name, first match wins
  int pairs[2][2];
};
constexpr RowMajorExchange kRowMajorExchanges[] = {
    {"gemm", {{4, 5}, {9, 11}}}, {"symm", {{4, 5}, {0, 0}}}, {"hemm", {{4, 5}, {0, 0}}}, {"trmm", {{6, 7}, {0, 0}}},
    {"trsm", {{6, 7}, {0, 0}}},  {"gemv", {{3, 4}, {0, 0}}}, {"gbmv", {{3, 4}, {5, 6}}}, {"ger", {{2, 3}, {6, 8}}},
    {"her2k", {{0, 0}, {0, 0}}}, {"her2", {{6, 8}, {0, 0}}}, {"hpr2", {{6, 8}, {0, 0}}},
};

int row_major_number(const char* routine, int info) {
  static const int* const flag = static_cast<const int*>(dlsym(RTLD_DEFAULT, "RowMajorStrg"));
  if (!flag || *flag == 0) return info;
  for (const RowMajorExchange& e : kRowMajorExchanges) {
    if (!std::strstr(routine, e.routine)) continue;
    for (const auto& pair : e.pairs) {
      if (info == pair[0]) return pair[1];
      if (info == pair[1]) return pair[0];
    }
    return info;
  }
  return info;
}

double monotonic_seconds() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<double>(ts.tv_sec) + 1e-9 * static_cast<double>(ts.tv_nsec);
}

// A Fortran name field without its trailing blanks, bounded by its length.
int trimmed_length(const char* name, int32_t len) {
  int n = 0;
  while (n < len && name[n] != '\0') ++n;
  while (n > 0 && name[n - 1] == ' ') --n;
  return n;
}

}  // namespace

int32_t max_threads() {
  int32_t n = g_threads.load();
  if (n > 0) return n;
  return kThreaded ? static_cast<int32_t>(std::thread::hardware_concurrency()) : 1;
}

}  // namespace qnl_ref

using namespace qnl_ref;

// The back-end symbols: exported, while the rest of the library stays hidden.
#pragma GCC visibility push(default)
extern "C" {

// memory
void* qnl_serv_malloc(uint64_t size, int32_t alignment) { return aligned_block(size, alignment); }
void* qnl_serv_allocate(uint64_t size, int32_t alignment) { return aligned_block(size, alignment); }
void* qnl_serv_calloc(uint64_t count, uint64_t size, int32_t alignment) {
  if (size && count > UINT64_MAX / size) return nullptr;
  void* p = aligned_block(count * size, alignment);
  if (p) std::memset(p, 0, count * size);
  return p;
}
void* qnl_serv_realloc(void* p, uint64_t size) {
  if (!p) return aligned_block(size, 64);
  void* q = aligned_block(size, 64);
  if (!q) return nullptr;
  uint64_t old = (static_cast<Header*>(p) - 1)->size;
  std::memcpy(q, p, old < size ? old : size);
  release_block(p);
  return q;
}
void qnl_serv_free(void* p) { release_block(p); }
void qnl_serv_deallocate(void* p) { release_block(p); }
void qnl_serv_free_buffers(void) {}
void qnl_serv_thread_free_buffers(void) {}
int32_t qnl_serv_disable_fast_mm(void) { return 1; }
int64_t qnl_serv_mem_stat(void* nbuffers) {
  if (nbuffers) *static_cast<int32_t*>(nbuffers) = g_buffers.load();
  return g_bytes.load();
}
int64_t qnl_serv_peak_mem_usage(int32_t mode) {
  // 0 disables, 1 enables, 2 reports, 3 reports and resets, as the classic service does.
  switch (mode) {
    case 0:
      g_peak_mode = 0;
      return 0;
    case 1:
      g_peak_mode = 1;
      g_peak = g_bytes.load();
      return 0;
    case 2:
      return g_peak_mode ? g_peak.load() : -1;
    case 3: {
      int64_t p = g_peak_mode ? g_peak.exchange(g_bytes.load()) : -1;
      return p;
    }
    default:
      return -1;
  }
}
int32_t qnl_serv_set_memory_limit(int32_t, uint64_t) { return 0; }

// threads
void qnl_serv_set_num_threads(int32_t n) {
  if (n > 0) {
    g_threads = n;
    apply_threads(n);
  }
}
int32_t qnl_serv_set_num_threads_local(int32_t n) {
  int32_t old = g_threads.load();
  qnl_serv_set_num_threads(n);
  return old;
}
int32_t qnl_serv_get_max_threads(void) { return max_threads(); }
int32_t qnl_serv_domain_set_num_threads(int32_t n, int32_t) {
  qnl_serv_set_num_threads(n);
  return n > 0;
}
int32_t qnl_serv_domain_get_max_threads(int32_t) { return max_threads(); }
void qnl_serv_set_dynamic(int32_t on) { g_dynamic = on != 0; }
int32_t qnl_serv_get_dynamic(void) { return g_dynamic.load(); }
void qnl_serv_set_num_stripes(int32_t n) { g_stripes = n; }
int32_t qnl_serv_get_num_stripes(void) { return g_stripes.load(); }

// timers and processor
double qnl_serv_dsecnd(void) { return monotonic_seconds(); }
float qnl_serv_second(void) { return static_cast<float>(monotonic_seconds()); }
void qnl_serv_get_cpu_clocks(void* clocks) {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  *static_cast<uint64_t*>(clocks) = static_cast<uint64_t>(ts.tv_sec) * 1000000000u + static_cast<uint64_t>(ts.tv_nsec);
}
double qnl_serv_get_cpu_frequency(void) { return 1.0; }  // clocks above are nanoseconds: 1 GHz
double qnl_serv_get_max_cpu_frequency(void) { return 1.0; }
double qnl_serv_get_clocks_frequency(void) { return 1.0; }
int32_t qnl_serv_enable_instructions(int32_t) { return 1; }
int32_t qnl_serv_cbwr_get(int32_t) { return g_cbwr.load(); }
int32_t qnl_serv_cbwr_get_nolock(int32_t) { return g_cbwr.load(); }
int32_t qnl_serv_cbwr_set(int32_t setting) {
  g_cbwr = setting;
  return 0;
}
int32_t qnl_serv_cbwr_get_auto_branch(void) { return 1; }
int32_t qnl_serv_is_sse4_2_enabled(void) { return qnl::cpu::has(qnl::cpu::kSse42); }
int32_t qnl_serv_is_avx_enabled(void) { return qnl::cpu::has(qnl::cpu::kAvx); }
int32_t qnl_serv_is_avx2_enabled(void) { return qnl::cpu::has(qnl::cpu::kAvx2); }
int32_t qnl_serv_is_avx512_enabled(void) { return qnl::cpu::has(qnl::cpu::kAvx512f); }
int32_t qnl_serv_is_avx512_mic_enabled(void) { return 0; }

// version and control
void qnl_serv_get_version(void* out) { *static_cast<Version*>(out) = version(); }
void qnl_serv_get_version_string_c(void* buf, int32_t len) {
  if (len > 0) std::snprintf(static_cast<char*>(buf), static_cast<size_t>(len), "%s", version_string());
}
void qnl_serv_get_version_string(void* buf, int32_t len) {
  // Fortran form: blank-padded, no terminator.
  const char* s = version_string();
  size_t n = std::strlen(s);
  for (int32_t i = 0; i < len; ++i) static_cast<char*>(buf)[i] = static_cast<size_t>(i) < n ? s[i] : ' ';
}
int32_t qnl_serv_finalize(void) { return 0; }
int32_t qnl_serv_verbose(int32_t mode) {
  if (mode != 0 && mode != 1) return -1;
  __atomic_store_n(&g_verbose, mode, __ATOMIC_RELAXED);
  return mode;
}
void* qnl_serv_verbose_mode(void) { return &g_verbose; }
void qnl_serv_print_verbose_info(int32_t width, void* record, double seconds) {
  std::printf("QNL_VERBOSE %s %.2fms iface:%s NThr:%d\n", static_cast<const char*>(record), seconds * 1e3,
              width == 1 ? "LP64" : "ILP64", max_threads());
  std::fflush(stdout);
}
int32_t qnl_serv_set_env_mode(int32_t) { return 0; }
int32_t qnl_serv_set_mpi(int32_t, void*) { return 0; }
void qnl_serv_set_exit_handler(void*) {}

// hooks
void* qnl_serv_set_xerbla(void* h) {
  return reinterpret_cast<void*>(g_xerbla.exchange(reinterpret_cast<XerblaHook>(h)));
}
void* qnl_serv_set_progress(void* h) {
  return reinterpret_cast<void*>(g_progress.exchange(reinterpret_cast<ProgressHook>(h)));
}
void* qnl_serv_set_pardiso_pivot(void* h) {
  return reinterpret_cast<void*>(g_pivot.exchange(reinterpret_cast<PivotHook>(h)));
}
void qnl_serv_default_xerbla(void* name, void* info, int32_t len) {
  const char* s = static_cast<const char*>(name);
  char trimmed[64];
  std::snprintf(trimmed, sizeof trimmed, "%.*s", trimmed_length(s, len), s);
  std::printf(catalogue_text(6), *static_cast<const int32_t*>(info), trimmed);
  std::printf("\n");
  std::fflush(nullptr);
}
void qnl_serv_xerbla(void* name, void* info, int32_t len) {
  if (XerblaHook h = g_xerbla.load()) return h(static_cast<const char*>(name), static_cast<const int32_t*>(info), len);
  const char* s = static_cast<const char*>(name);
  if (AppCblasXerbla app = application_cblas_xerbla(); app && len > 6 && std::strncmp(s, "cblas_", 6) == 0) {
    // A report of the C layer goes to the application's cblas_xerbla under the
    // routine's C name, as a C string.
    char routine[64];
    std::snprintf(routine, sizeof routine, "%.*s", trimmed_length(s, len), s);
    return app(row_major_number(routine, *static_cast<const int32_t*>(info)), routine, "");
  }
  if (AppXerbla app = application_xerbla()) {
    // The application's own Fortran xerbla_: its INTEGER may be 32 or 64 bits
    // wide, and a sign-extended 64-bit copy reads right either way.
    int64_t wide = *static_cast<const int32_t*>(info);
    return app(static_cast<const char*>(name), &wide, static_cast<size_t>(len));
  }
  qnl_serv_default_xerbla(name, info, len);
}
int32_t qnl_serv_default_progress(void*, void*, void*, int32_t) { return 0; }
int32_t qnl_serv_progress(void* thread, void* step, void* stage, int32_t len) {
  if (ProgressHook h = g_progress.load()) return h(thread, step, stage, len);
  return qnl_serv_default_progress(thread, step, stage, len);
}
int32_t qnl_serv_default_pardiso_pivot(void*, void*, void*) { return 0; }
int32_t qnl_serv_pardiso_pivot(void* a, void* b, void* eps) {
  if (PivotHook h = g_pivot.load()) return h(a, b, eps);
  return qnl_serv_default_pardiso_pivot(a, b, eps);
}
}  // extern "C"

namespace {
// Each byte's upper-case letter in ASCII, as the C locale's toupper gives it.
struct UpperTable {
  unsigned char up[256];
  constexpr UpperTable() : up() {
    for (int c = 0; c < 256; ++c) up[c] = static_cast<unsigned char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  }
};
constexpr UpperTable kUpper;
}  // namespace

extern "C" {
// Case-insensitive compare of two first letters with no branch and no library call:
// the argument checkers of the facade ask this on every call of a routine with options.
int32_t qnl_serv_lsame(void* a, void* b, int32_t, int32_t) {
  // The upper case of `a` lies zero-extended in the result register; setting its low byte
  // to the comparison leaves a clean 0 or 1 in all 64 bits without a further widening.
  uint32_t r = kUpper.up[*static_cast<unsigned char*>(a)];
  asm("cmpb %1, %b0\n\tsete %b0" : "+q"(r) : "m"(kUpper.up[*static_cast<unsigned char*>(b)]) : "cc");
  return static_cast<int32_t>(r);
}

// offload control: no offload devices exist behind this back-end
int32_t qnl_serv_mic_enable(void) { return -1; }
int32_t qnl_serv_mic_disable(void) { return 0; }
int32_t qnl_serv_mic_get_device_count(void) { return 0; }
int32_t qnl_serv_mic_get_flags(void) { return 0; }
int32_t qnl_serv_mic_set_flags(int32_t) { return -1; }
int32_t qnl_serv_mic_get_status(void) { return -1; }
void qnl_serv_mic_clear_status(void) {}
int32_t qnl_serv_mic_free_memory(int32_t, int32_t) { return -1; }
int32_t qnl_serv_mic_register_memory(int32_t) { return -1; }
int32_t qnl_serv_mic_set_max_memory(int32_t, int32_t, uint64_t) { return -1; }
int32_t qnl_serv_mic_get_meminfo(int32_t, int32_t, void*, void*) { return -1; }
int32_t qnl_serv_mic_get_cpuinfo(int32_t, int32_t, void*, void*, void*) { return -1; }
int32_t qnl_serv_mic_set_device_num_threads(int32_t, int32_t, int32_t) { return -1; }
int32_t qnl_serv_mic_get_workdivision(int32_t, int32_t, void*) { return -1; }
int32_t qnl_serv_mic_set_workdivision(int32_t, int32_t, double) { return -1; }
int32_t qnl_serv_mic_get_resource_limit(void*) { return -1; }
int32_t qnl_serv_mic_set_resource_limit(double) { return -1; }
int32_t qnl_serv_mic_set_offload_report(int32_t) { return -1; }

}  // extern "C"
#pragma GCC visibility pop
