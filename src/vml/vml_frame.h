// The frame of every vector-math entry: count and pointer checks, the kernel
// library and its tables, the mode of a mode form, and the threader call, cut
// into pieces a 32-bit count can describe on the 64-bit interface layer.
#pragma once
#include <cstdint>
#include <initializer_list>

#include "entry.h"
#include "kernel_loader.h"
#include "services_gen.h"

namespace qnl::vml {

// One function (one type and stem), shared by its four bodies.
struct Function {
  const char* name;  // the plain C name, reported by every body
  const char* ttab;  // kernel table symbol
  const char* ctab;  // tag table symbol
  Slot kernels, tags, index;
};

constexpr int32_t kPiece = 0x7FFFFFFF;
constexpr int32_t kStatusBadSize = -1;
constexpr int32_t kStatusBadMem = -2;
constexpr int32_t kStatusAccuracyWarning = 1000;

// A scalar given by reference in a Fortran body: read when it is passed on.
template <class T>
struct ByRef {
  const T* p;
};

// An argument as one piece passes it: arrays advance by their own element
// size, scalars stay as they are.
template <class T>
inline T* pass(T* p, int64_t done) {
  return p + done;
}
template <class T>
inline T pass(ByRef<T> r, int64_t) {
  return *r.p;
}
template <class T>
inline T pass(T v, int64_t) {
  return v;
}

struct Tested {
  const void* p;
  int32_t position;
};

// The count as the interface layer reads it: by value (the low half on the
// 32-bit layer, whatever the high half holds) or through a pointer.
inline int64_t count_value(int64_t n) { return layer() == 1 ? n : static_cast<int32_t>(n); }
inline int64_t count_ref(const void* n) {
  return layer() == 1 ? *static_cast<const int64_t*>(n) : *static_cast<const int32_t*>(n);
}

// Reports a rejected call: the checker's report with its position, then the status.
QNL_COLD void reject(const Function& f, int32_t position, int32_t status) QNL_HIDDEN;
// The by-reference mode and status entries, which the frame calls as an application would.
int32_t set_mode_ref(const int32_t* mode) QNL_HIDDEN;
int32_t set_status_ref(const int32_t* status) QNL_HIDDEN;
// The same as set_mode_ref once the frame has brought the library up: it skips
// the load and bind tests that VMLSETMODE makes, twice per call of a mode form.
int32_t set_mode_up(int32_t mode) QNL_HIDDEN;

// Steps that every form shares up to the table index; false when the call ends.
inline bool accept(const Function& f, int64_t n, std::initializer_list<Tested> tested) {
  if (n < 0) {
    reject(f, 1, kStatusBadSize);
    return false;
  }
  if (n == 0) return false;
  for (const Tested& t : tested)
    if (!t.p) {
      reject(f, t.position, kStatusBadMem);
      return false;
    }
  return true;
}

// The library up, both tables bound, the call's mode set, the table index chosen.
inline int32_t table_index(Function& f, const int32_t* mode, int32_t& old_mode, bool warn) {
  bring_up();
  kernel_slot(f.kernels, f.ttab);
  kernel_slot(f.tags, f.ctab);
  if (mode) old_mode = set_mode_up(*mode);
  auto index = reinterpret_cast<int32_t (*)(int32_t)>(kernel_slot(f.index, "qnl_vml_kernel_GetTTableIndex"));
  int32_t i = index(qnl_vml_select_kernel());
  if (warn && i != 2) {
    int32_t s = kStatusAccuracyWarning;
    set_status_ref(&s);
  }
  return i;
}

inline void* const* kernel_table(const Function& f) { return static_cast<void* const*>(f.kernels.get()); }
inline const int32_t* tag_table(const Function& f) { return static_cast<const int32_t*>(f.tags.get()); }

// A vector function: `tested` in declared order, then the arguments after n.
template <int Threader, bool Warn, class... A>
inline void call(Function& f, int64_t n, const int32_t* mode, std::initializer_list<Tested> tested, A... args) {
  if (!accept(f, n, tested)) return;
  int32_t old_mode = 0;
  int32_t i = table_index(f, mode, old_mode, Warn);
  using Fn = void (*)(void*, int32_t, decltype(pass(args, 0))..., int32_t, void*);
  auto threader = reinterpret_cast<Fn>(g_threaders[Threader].get());
  void* handle = qnl_vml_kernel_handle();
  if (layer() == 0) {
    threader(kernel_table(f)[i], static_cast<int32_t>(n), pass(args, 0)..., tag_table(f)[i], handle);
  } else {
    // Pieces one after another; nothing looks at the status between them.
    for (int64_t rest = n, done = 0; rest > 0; rest -= kPiece, done += kPiece) {
      int32_t count = rest < (int64_t{1} << 31) ? static_cast<int32_t>(rest) : kPiece;
      threader(kernel_table(f)[i], count, pass(args, done)..., tag_table(f)[i], handle);
    }
  }
  if (mode) set_mode_up(old_mode);
}

// Pack and unpack: no pointer test, no pieces; the kernel is called directly
// with n and any integer stride as 64-bit values and the layer's width code.
template <class Third, class Fourth>
inline void call_pack(Function& f, int64_t n, const int32_t* mode, const void* a, Third third, Fourth fourth) {
  if (!accept(f, n, {})) return;
  int32_t old_mode = 0;
  int32_t i = table_index(f, mode, old_mode, false);
  using Fn = void (*)(int64_t, const void*, Third, Fourth, int32_t);
  reinterpret_cast<Fn>(kernel_table(f)[i])(n, a, third, fourth, layer() == 1 ? 2 : 1);
  if (mode) set_mode_up(old_mode);
}

}  // namespace qnl::vml
