// Loaded together with one ILP64 OpenBLAS build and ahead of it in its scope:
// OpenBLAS's own calls of xerbla_ land here and go to the back-end's
// dispatcher, so an application's handler hears of LAPACK's argument errors too.
#include <cstddef>
#include <cstdint>

using Dispatch = void (*)(void* name, void* info, int32_t len);
static Dispatch g_dispatch = nullptr;

extern "C" __attribute__((visibility("default"))) void qnl_shim_set_xerbla(Dispatch d) { g_dispatch = d; }

// The ILP64 build reports its parameter number as a 64-bit integer.
extern "C" __attribute__((visibility("default"))) void xerbla_(const char* name, const int64_t* info, size_t len) {
  int32_t narrow = static_cast<int32_t>(*info);
  if (g_dispatch) g_dispatch(const_cast<char*>(name), &narrow, static_cast<int32_t>(len));
}
