// Forwarding of the reference back-end to the ILP64 OpenBLAS: the libraries it
// opens, and how its generated symbols find their routines. Each forwarded
// symbol is an indirect function: looking it up (the facade's dlsym) runs its
// resolver, which returns the library routine's own address, so a bound slot
// of the facade leads straight to OpenBLAS and nothing is looked up before it
// is asked for.
#pragma once

#include <atomic>
#include <cstring>

#define QNL_REF_EXPORT __attribute__((visibility("default")))

namespace qnl_ref {

// Where each stub's routine is found: a computational library, or this
// back-end itself (a twin of a routine that is written by hand here).
enum Library { kOpenBlas = 0, kTestMatrix = 1, kSelf = 2 };

struct Target {
  const char* name;
  int library;
};
extern const Target kTargets[];
extern const int kTargetCount;

// A routine of the computational libraries by its symbol name; null if absent.
// The test-matrix library is opened on the first request for one of its routines.
void* computational_symbol(const char* name, int library = kOpenBlas);

// Target k's routine, looked up once; a routine that no library has leads to
// the generated report stub (qnl_ref_targets[k]).
void* bind(int k);
inline constexpr int kMaxTargets = 4096;
extern std::atomic<void*> g_bound[kMaxTargets];
inline void* target(int k) {
  void* p = g_bound[k].load(std::memory_order_relaxed);
  return p ? p : bind(k);
}

}  // namespace qnl_ref

// The generated report stubs, one per target: they name the routine and abort.
extern "C" void* qnl_ref_targets[];
extern "C" [[noreturn]] void qnl_ref_missing(int index);
// The resolver of every forwarded symbol, entered with the target's number.
extern "C" __attribute__((visibility("hidden"))) void* qnl_ref_resolve(int index);

namespace qnl_ref {

// Complex-valued functions of the computational libraries return their value
// in registers (gfortran's ABI); the facade hands an address to store it at.
template <class C, class... A>
inline void store_result(void* result, int index, A... a) {
  C value = reinterpret_cast<C (*)(A...)>(target(index))(a...);
  std::memcpy(result, &value, sizeof value);
}

}  // namespace qnl_ref
