#include "kernel_loader.h"

#include <xmmintrin.h>

#include <cstring>

#include "cpu.h"
#include "messages.h"
#include "platform.h"
#include "search.h"
#include "services_gen.h"

namespace qnl::vml {

Slot g_threaders[kThreaderCount];

namespace {

constexpr int kOverrideSize = 32;

// The kernel libraries by index. The first eight names have no "lib" prefix of
// their own and take the platform's; the two AVX-512 libraries carry "lib" in
// their names already, which the platform's rule leaves as it is.
const char* const kKernelFiles[kKernelCount] = {
    "libqnl_vml_def.so", "libqnl_vml_cmpt.so", "libqnl_vml_p4n.so",  "libqnl_vml_mc.so",         "libqnl_vml_mc2.so",
    "libqnl_vml_mc3.so", "libqnl_vml_avx.so",  "libqnl_vml_avx2.so", "libqnl_vml_avx512_mic.so", "libqnl_vml_avx512.so",
};

std::atomic<int32_t> g_selected{-1};
int32_t g_loaded_index = 0;
// Its own pair of directories and its own lock: a plain test-and-set lock, apart
// from the binding lock; this one may be held while that one is taken, never
// the reverse.
LibrarySearch g_search;
std::atomic<void*> g_handle{nullptr};
using VersionFn = int32_t (*)();
std::atomic<VersionFn> g_version{nullptr};

void fill_directories() {
  // The verbose service is asked first, whatever the buffers hold: it brings the
  // threading layer up. Its mode then doubles as the locating address: zero
  // means this library; with tracing on, the number names no loaded file and
  // the module directory becomes the executable's. Kept as it is.
  auto* mode = static_cast<const int32_t*>(qnl_body_qnl_serv_iface_verbose_mode());
  intptr_t traced = mode ? *mode : 0;
  if (g_search.filled()) return;
  g_search.fill(traced ? reinterpret_cast<const void*>(traced) : reinterpret_cast<const void*>(&fill_directories));
}

// The floating-point control word is the caller's: a library's start-up code
// may change it, so every attempt is bracketed.
void* attempt_preserving_mxcsr(const char* file) {
  unsigned int csr = _mm_getcsr();
  void* h = g_search.load(file);
  _mm_setcsr(csr);
  return h;
}

int32_t reproducibility_branch() { return branch_kernel(qnl_body_qnl_serv_cbwr_get_nolock(1)); }

}  // namespace

const char* kernel_file(int index) { return kKernelFiles[index]; }

const LibrarySearch& kernel_search() { return g_search; }
int loaded_kernel_index() { return g_loaded_index; }

}  // namespace qnl::vml

using namespace qnl;
using namespace qnl::vml;

extern "C" {

int32_t qnl_vml_select_kernel() {
  int32_t cached = g_selected.load(std::memory_order_relaxed);
  if (cached != -1) return cached;
  char text[kOverrideSize + 1] = {};
  int length = qnl_rt_getenv(kOverrideVariable, text, kOverrideSize);
  int forced = override_kernel(text, length);
  if (forced >= 0) {
    // Outranks everything, also an index this processor cannot run.
    g_selected.store(forced, std::memory_order_relaxed);
    return forced;
  }
  static const Gates gates{qnl_body_qnl_serv_is_sse4_2_enabled, qnl_body_qnl_serv_is_avx_enabled,
                           qnl_body_qnl_serv_is_avx2_enabled, qnl_body_qnl_serv_is_avx512_enabled,
                           qnl_body_qnl_serv_is_avx512_mic_enabled};
  int32_t k = classify(hardware_cpu(), gates, reproducibility_branch());
  g_selected.store(k, std::memory_order_relaxed);
  return k;
}

void qnl_vml_load_kernel_library() {
  if (g_handle.load(std::memory_order_acquire)) return;
  g_search.lock.lock();
  void* h = g_handle.load(std::memory_order_relaxed);
  if (!h) {
    fill_directories();
    g_loaded_index = qnl_vml_select_kernel();
    h = attempt_preserving_mxcsr(kernel_file(g_loaded_index));
    g_handle.store(h, std::memory_order_release);
    if (!h && g_loaded_index == 0) {
      qnl_rt_print_message(0, 755, 1, kernel_file(0));
      qnl_rt_exit(2);
    } else if (!h) {
      // The loaded index stays the chosen one: the class check below holds the
      // fallback library to the chosen class.
      h = attempt_preserving_mxcsr(kernel_file(0));
      g_handle.store(h, std::memory_order_release);
      if (!h) {
        qnl_rt_print_message(0, 756, 2, kernel_file(g_loaded_index), kernel_file(0));
        qnl_rt_exit(2);
      }
    }
  }
  g_search.lock.unlock();
  // Every thread that found no library on arrival checks the class once.
  if (!h) {
    qnl_rt_print_message(0, 758, 0);
    qnl_rt_exit(2);
  }
  auto version = reinterpret_cast<VersionFn>(plat::find_symbol(h, "dll_cpu_version"));
  if (!version) {
    qnl_rt_print_message(0, 759, 1, "dll_cpu_version");
    qnl_rt_exit(2);
    return;
  }
  g_version.store(version, std::memory_order_relaxed);
  if (version() > g_loaded_index) {
    qnl_rt_print_message(0, 757, 1, kernel_file(g_loaded_index));
    qnl_rt_exit(2);
  }
}

void qnl_vml_bind_threaders() {
  // Resolved in binding order, so a missing symbol is reported in that order.
  // Each slot is stored as it is resolved, except the first: an entry that finds
  // it set uses the others without a lock, so it is published after them.
  Slot first;
  bind_family(first, kThreaderNames[0]);
  for (int i = 1; i < kThreaderCount; ++i) bind_family(g_threaders[i], kThreaderNames[i]);
  g_threaders[0].fn.store(first.get(), std::memory_order_release);
  for (const Slot& s : g_threaders)
    if (!s.get()) {
      qnl_rt_exit(2);
      return;
    }
}

void* qnl_vml_kernel_symbol(const char* name) {
  void* h = g_handle.load(std::memory_order_acquire);
  if (!h) {
    qnl_rt_print_message(0, 758, 0);
    qnl_rt_exit(2);
  }
  void* p = plat::find_symbol(h, name);
  if (!p) {
    qnl_rt_print_message(0, 759, 1, name);
    qnl_rt_exit(2);
  }
  return p;
}

void* qnl_vml_kernel_handle() { return g_handle.load(std::memory_order_relaxed); }

}  // extern "C"
