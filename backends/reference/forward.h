// Forwarding of the reference back-end to the ILP64 OpenBLAS: the libraries it
// opens, and the table its generated stubs jump through.
#pragma once

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
void* computational_symbol(const char* name, int library = kOpenBlas);

}  // namespace qnl_ref

// Filled at load; stubs of routines that were not found reach qnl_ref_missing.
extern "C" void* qnl_ref_targets[];
extern "C" [[noreturn]] void qnl_ref_missing(int index);

namespace qnl_ref {

// Complex-valued functions of the computational libraries return their value
// in registers (gfortran's ABI); the facade hands an address to store it at.
template <class C, class... A>
inline void store_result(void* result, int index, A... a) {
  C value = reinterpret_cast<C (*)(A...)>(qnl_ref_targets[index])(a...);
  std::memcpy(result, &value, sizeof value);
}

}  // namespace qnl_ref
