// Forwarding of the reference back-end to the ILP64 OpenBLAS: the libraries it
// opens, and the table its generated stubs jump through.
#pragma once

namespace qnl_ref {

// Where each stub's routine is found.
enum Library { kOpenBlas = 0, kTestMatrix = 1 };

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
