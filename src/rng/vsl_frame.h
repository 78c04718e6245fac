// The frame of the random-number entries: the stream test, the report of a rejected
// argument, the binding of kernel symbols from the kernel library, and the one frame of
// every distribution generator. Stream records belong to the kernel library; the only
// byte read here is the tag at offset 4.
#pragma once
#include <cstdint>

#include "entry.h"
#include "kernel_loader.h"
#include "qnl_vsl.h"

extern "C" {
// 0 for a live stream, -5 for a null handle, -1006 when the tag byte is not 1.
int qnl_vsl_check_stream(const void* stream) QNL_HIDDEN;
}

namespace qnl::vsl {

constexpr int32_t kBadArgs = VSL_ERROR_BADARGS;
constexpr int32_t kBadBrng = VSL_RNG_ERROR_BAD_BRNG;
constexpr int32_t kAccurate = QNL_VSL_METHOD_ACCURATE;
constexpr int32_t kPiece = 0x7FFFFFFF;  // the largest count a 32-bit kernel takes

// Reports `position` under the C name `name` through cdecl_xerbla and returns `code`.
QNL_COLD int32_t fail(const char* name, int32_t position, int32_t code) QNL_HIDDEN;

// A Fortran integer at the interface layer's width.
inline int64_t layer_int(const void* p) {
  return layer() == 1 ? *static_cast<const int64_t*>(p) : *static_cast<const int32_t*>(p);
}

// The kernel symbol of a slot: the kernel library is loaded and the symbol bound on
// first use. Racing binders store the same address.
inline void* bind(Slot& slot, const char* symbol) {
  void* p = slot.get();
  if (__builtin_expect(p == nullptr, 0)) {
    qnl_vml_load_kernel_library();
    p = qnl_vml_kernel_symbol(symbol);
    slot.fn.store(p, std::memory_order_relaxed);
  }
  return p;
}

// One generator `G` (its name, kernel, method limit, accuracy flag, slot and parameter
// tests) over `n` variates into `r`. Everything is tested before the slot is looked at,
// so a rejected call loads nothing. `wide`: the 64-bit interface layer, where the count
// is cut into pieces a 32-bit kernel can take; each piece advances r by its own count,
// the parameters go unchanged to every piece.
template <class G, class T, class... P>
inline int generate(bool wide, int32_t method, void* stream, int64_t n, T* r, P... p) {
  if (method < 0) return fail(G::name, 1, kBadArgs);
  if (int32_t s = qnl_vsl_check_stream(stream); s < 0) return fail(G::name, 2, s);
  if (n < 0) return fail(G::name, 3, kBadArgs);
  if (n == 0) return 0;
  if (r == nullptr) return fail(G::name, 4, kBadArgs);
  if (method > G::limit && !(G::accurate && (method ^ kAccurate) <= G::limit)) return fail(G::name, 1, kBadArgs);
  if (int32_t position = G::reject(p...)) return fail(G::name, position, kBadArgs);
  auto kernel = reinterpret_cast<int (*)(int32_t, void*, int32_t, T*, P...)>(bind(G::slot, G::kernel));
  if (!wide) return kernel(method, stream, static_cast<int32_t>(n), r, p...);
  int result = 0;
  for (int64_t rest = n, done = 0; rest > 0; rest -= kPiece, done += kPiece) {
    const int32_t count = rest < (int64_t{1} << 31) ? static_cast<int32_t>(rest) : kPiece;
    result = kernel(method, stream, count, r + done, p...);
    if (result < 0) return result;
  }
  return result;
}

}  // namespace qnl::vsl
