// The shape every exported entry shares: a slot per entry body, the one binding
// lock, the resolvers, the fatal exit, and the fast-path helpers that thin and
// family entries expand into.
#pragma once
#include <atomic>
#include <cstdint>

#define QNL_HIDDEN __attribute__((visibility("hidden")))
#define QNL_COLD __attribute__((cold, noinline))
// Exports `name` as a second symbol of `body`: the same code and the same slot.
#define QNL_ALIAS(body, name) extern "C" decltype(body) name __attribute__((alias(#body), visibility("default")));

// The state the facade keeps for the whole process, in one block: the two
// catalogue flags ahead of the two layer values. A plain C symbol: the C-layer
// selectors (c_select.h) read the interface layer from assembly by this name.
extern "C" {
struct QnlRuntimeState {
  int32_t catalogue_first_use = 1;
  int32_t catalogue_builtin = 1;
  int32_t interface_layer = -1;  // -1 unset, 0 LP64, 1 ILP64
  int32_t threading_layer = -1;  // -1 unset, 0, 1, 2, 4; others corrected at load
};
extern QnlRuntimeState qnl_rt_state QNL_HIDDEN;
}

// A Fortran integer at the interface layer's width, 32 bits under LP64 and 64 under
// ILP64: the by-reference bodies take its address and read it at the layer in force.
struct QnlLayerInt;

namespace qnl {

// The address a frame reads, whatever type the body's prototype gives it.
inline void* vp(const void* p) { return const_cast<void*>(p); }
// A callback's address, which the frame passes on unchanged.
template <class R, class... A>
inline void* vp(R (*f)(A...)) {
  return reinterpret_cast<void*>(f);
}

using RuntimeState = QnlRuntimeState;
inline RuntimeState& g_state = qnl_rt_state;

// A bound back-end address. Zero at load, written only by binding, never cleared.
// Read without a lock: an aligned pointer-wide cell is either null or final.
struct Slot {
  std::atomic<void*> fn{nullptr};
  void* get() const { return fn.load(std::memory_order_relaxed); }
};

// The slot of the internal letter compare, qnl_serv_lsame: the BLAS checkers call the bound
// back-end through it (blas/checks.h).
extern Slot lsame_slot QNL_HIDDEN;

inline int interface_layer() { return __atomic_load_n(&g_state.interface_layer, __ATOMIC_RELAXED); }

// Cold paths of an unbound entry. The thin form calls the exit path a second
// time when the resolver came back empty; the family form does not.
QNL_COLD void* bind_thin(Slot& slot, const char* symbol) QNL_HIDDEN;
QNL_COLD void* bind_family(Slot& slot, const char* symbol) QNL_HIDDEN;
QNL_COLD void* bind_family_core(Slot& slot, const char* symbol) QNL_HIDDEN;
QNL_COLD void* bind_family_cdft(Slot& slot, const char* symbol) QNL_HIDDEN;
QNL_COLD int settle_interface_layer() QNL_HIDDEN;

// A thin entry: `forward` reads any by-reference arguments and calls the bound
// address. The bound road is a load, a test, the argument moves and the jump. The
// unbound road calls qnl_rt_bind_thin_keeping (thin_bind.cpp), which keeps every
// argument register itself, so the compiler sees no call and the bound road saves
// nothing. The call steps over the red zone, which this frame may be using.
template <class F, class Forward>
inline auto thin(Slot& slot, const char* symbol, Forward forward) {
  void* p = slot.get();
  if (__builtin_expect(p == nullptr, 0)) {
    register Slot* r10 asm("r10") = &slot;
    register const char* r11 asm("r11") = symbol;
    asm volatile("lea -128(%%rsp), %%rsp\n\tcall qnl_rt_bind_thin_keeping\n\tlea 128(%%rsp), %%rsp"
                 : "=a"(p), "+r"(r10), "+r"(r11)
                 :
                 : "memory", "cc");
  }
  return forward(reinterpret_cast<F*>(p));
}

// Bound address of a family entry; the caller goes through it even when empty.
template <class F>
inline F* family(Slot& slot, const char* symbol) {
  void* p = slot.get();
  if (__builtin_expect(p == nullptr, 0)) p = bind_family(slot, symbol);
  return reinterpret_cast<F*>(p);
}

// The interface layer of a width-dependent entry, settled on first use.
inline int layer() {
  int v = interface_layer();
  if (__builtin_expect(v == -1, 0)) v = settle_interface_layer();
  return v;
}

}  // namespace qnl

extern "C" {
void qnl_rt_bind_lock() QNL_HIDDEN;
void qnl_rt_bind_unlock() QNL_HIDDEN;
void* qnl_rt_resolve(const char* symbol) QNL_HIDDEN;
void* qnl_rt_resolve_core(const char* symbol) QNL_HIDDEN;
void* qnl_rt_resolve_cdft(const char* symbol) QNL_HIDDEN;
void qnl_rt_exit(int code) QNL_HIDDEN;
int qnl_rt_interface_layer_init() QNL_HIDDEN;
void qnl_rt_load_threading_layer() QNL_HIDDEN;
int qnl_rt_getenv(const char* name, char* buffer, int size) QNL_HIDDEN;
}
