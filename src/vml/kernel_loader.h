// The kernel-library loader: chooses one of ten processor-specific kernel
// libraries, loads it once under a lock of its own, checks its class, and binds
// the vector threaders of the threading layer.
#pragma once
#include <atomic>
#include <cstdint>

#include "entry.h"
#include "search.h"
#include "vml_gen.h"

namespace qnl::vml {

// Environment variable whose leading digits name a kernel index and override the choice.
inline constexpr const char kOverrideVariable[] = "QNL_VML_KERNEL_INDEX";

// The threader slots (kThreaderNames and ThreaderId of vml_gen.h); the first,
// bound last, says all are bound.
extern Slot g_threaders[kThreaderCount] QNL_HIDDEN;

// File name of kernel index 0..9.
const char* kernel_file(int index) QNL_HIDDEN;

// The loader's directories, and the index under which it tried to load.
const LibrarySearch& kernel_search() QNL_HIDDEN;
int loaded_kernel_index() QNL_HIDDEN;

// A kernel-library symbol bound into `slot` on first use; the entries' fast path.
inline void* kernel_slot(Slot& slot, const char* symbol);

}  // namespace qnl::vml

extern "C" {
int32_t qnl_vml_select_kernel() QNL_HIDDEN;
void qnl_vml_load_kernel_library() QNL_HIDDEN;
void qnl_vml_bind_threaders() QNL_HIDDEN;
void* qnl_vml_kernel_symbol(const char* name) QNL_HIDDEN;
void* qnl_vml_kernel_handle() QNL_HIDDEN;
}

namespace qnl::vml {

inline void* kernel_slot(Slot& slot, const char* symbol) {
  void* p = slot.get();
  if (__builtin_expect(p == nullptr, 0)) {
    // Racing binders store the same address; no lock.
    p = qnl_vml_kernel_symbol(symbol);
    slot.fn.store(p, std::memory_order_relaxed);
  }
  return p;
}

// The library up and the threaders bound: the head of every vector-math call.
inline void bring_up() {
  qnl_vml_load_kernel_library();
  if (__builtin_expect(g_threaders[0].get() == nullptr, 0)) qnl_vml_bind_threaders();
}

}  // namespace qnl::vml
