// The vector threaders of the reference threading layers. A threader cuts a
// vector into contiguous chunks, shared among the caller and the pool's workers
// in the threaded layers, and calls the kernel on each as kernel(count,
// arguments advanced to the chunk, first element's index). The tag is the kernel
// library's estimate of the smallest piece worth a thread of its own.
#include <cstdint>
#include <tuple>

#include "pool.h"
#include "reference.h"

namespace {

template <class T>
T* at(T* p, int64_t k) {
  return p + k;
}
template <class T>
T at(T v, int64_t) {
  return v;
}

template <class... A>
struct Call {
  using Kernel = void (*)(int32_t, A..., int64_t);
  Kernel kernel;
  std::tuple<A...> args;

  static void chunk(const void* context, int64_t lo, int64_t hi) {
    const Call& c = *static_cast<const Call*>(context);
    std::apply([&](A... a) { c.kernel(static_cast<int32_t>(hi - lo), at(a, lo)..., lo); }, c.args);
  }
};

// Chunks per thread: enough that a thread the system delays leaves its share to
// the others, few enough that claiming them costs nothing.
constexpr int64_t kChunksPerThread = 8;

template <class... A>
void split(void* kernel, int32_t n, int32_t tag, A... args) {
  const Call<A...> call{reinterpret_cast<typename Call<A...>::Kernel>(kernel), std::tuple<A...>(args...)};
  int64_t threads = 1;
  if (qnl_ref::kThreaded && tag > 0 && n / tag >= 2) {
    // Asked only for vectors worth cutting: the count may cost a system call.
    threads = n / tag;
    const int64_t most = qnl_ref::max_threads();
    if (threads > most) threads = most;
  }
  if (threads <= 1) return Call<A...>::chunk(&call, 0, n);
  // Chunks of at least the tag, in multiples of 64 elements, so that no two
  // threads share a cache line.
  int64_t chunk = (n + threads * kChunksPerThread - 1) / (threads * kChunksPerThread);
  if (chunk < tag) chunk = tag;
  chunk = (chunk + 63) / 64 * 64;
  qnl_ref::parallel_chunks(n, chunk, static_cast<int>(threads), &Call<A...>::chunk, &call);
}

struct c8 {
  float re, im;
};
struct c16 {
  double re, im;
};
using f32 = float;
using f64 = double;

}  // namespace

#define QNL_REF_THREADER(name, params, ...)                                            \
  extern "C" __attribute__((visibility("default"))) void qnl_vml_serv_threader_##name( \
      void* kernel, int32_t n, QNL_REF_UNPAREN params, int32_t tag, void*) {           \
    split(kernel, n, tag, __VA_ARGS__);                                                \
  }
#define QNL_REF_UNPAREN(...) __VA_ARGS__

// The shapes every element type T (letter t) has: one or two inputs, two
// outputs, and an array with a constant scalar (named apart: its letters differ).
#define QNL_REF_SHAPES(t, T, with_scalar)                              \
  QNL_REF_THREADER(t##_1i_1o, (const T* a, T* y), a, y)                \
  QNL_REF_THREADER(t##_2i_1o, (const T* a, const T* b, T* y), a, b, y) \
  QNL_REF_THREADER(t##_1i_2o, (const T* a, T* y, T* z), a, y, z)       \
  QNL_REF_THREADER(with_scalar, (const T* a, T b, T* y), a, b, y)
QNL_REF_SHAPES(s, f32, s_cs_2i_s_1o)
QNL_REF_SHAPES(d, f64, d_cd_2i_d_1o)
QNL_REF_SHAPES(c, c8, c_cc_2i_c_1o)
QNL_REF_SHAPES(z, c16, z_cz_2i_z_1o)

// Between real and complex, and the linear fraction's two arrays and four scalars.
QNL_REF_THREADER(c_1i_s_1o, (const c8* a, f32* y), a, y)
QNL_REF_THREADER(z_1i_d_1o, (const c16* a, f64* y), a, y)
QNL_REF_THREADER(s_1i_c_1o, (const f32* a, c8* y), a, y)
QNL_REF_THREADER(d_1i_z_1o, (const f64* a, c16* y), a, y)
#define QNL_REF_LINEAR_FRACTION(t, T) \
  QNL_REF_THREADER(t##_6i_1o, (const T* a, const T* b, T sa, T ha, T sb, T hb, T* y), a, b, sa, ha, sb, hb, y)
QNL_REF_LINEAR_FRACTION(s, f32)
QNL_REF_LINEAR_FRACTION(d, f64)
