// Shared pieces of the distribution kernels: argument checks, chunked
// uniforms and standard normals.
#pragma once
#include <cmath>

#include "vsl_internal.h"

namespace qnl_vsl {

constexpr int kChunk = 1024;
constexpr int kAccurate = VSL_RNG_METHOD_ACCURACY_FLAG;

// The common checks of every kernel: a stream of ours, n, r.
#define QNL_DIST_PROLOGUE(stream, n, r)                                                           \
  do {                                                                                            \
    if (!brng_of_stream(stream)) return (stream) ? VSL_RNG_ERROR_BAD_STREAM : VSL_ERROR_NULL_PTR; \
    if ((n) <= 0) return (n) < 0 ? VSL_ERROR_BADARGS : 0;                                         \
    if (!(r)) return VSL_ERROR_BADARGS;                                                           \
  } while (0)

// u on [0,1) to (0,1): the one value 0 becomes 2^-54.
inline double open01(double u) { return u > 0 ? u : 0x1p-54; }

// Uniforms one at a time for rejection methods, drawn 256 at a time; the
// first failing status of the generator is kept in rc.
struct Uniforms {
  void* stream;
  double buf[256];
  int pos = 256;
  int rc = 0;
  explicit Uniforms(void* s) : stream(s) {}
  double next() {
    if (pos == 256) {
      if (int e = uniform01(stream, 256, buf)) {
        if (!rc) rc = e;
        for (double& b : buf) b = 0.5;  // keeps the caller's loop finite
      }
      pos = 0;
    }
    return buf[pos++];
  }
  double open() { return open01(next()); }
};

// n standard normal numbers by method 0, 1 or 2 (Box-Muller, Box-Muller pairs, inverse).
int gaussian_std(void* stream, int method, int n, double* z);
// One standard normal at a time for rejection methods.
double normal_one(Uniforms& u);
// A standard gamma number of shape alpha.
double gamma_one(Uniforms& u, double alpha);
// The inverse of the standard normal distribution function, p in (0,1).
double normal_quantile(double p);

// Fills r[0..n) in chunks: g(double* buf, int m) fills m doubles (a status
// code back), then each is stored converted to T.
template <class T, class G>
int chunked(int n, T* r, G g) {
  if (sizeof(T) == sizeof(double)) return g(reinterpret_cast<double*>(r), n);
  double buf[kChunk];
  for (int done = 0; done < n; done += kChunk) {
    int m = n - done < kChunk ? n - done : kChunk;
    if (int rc = g(buf, m)) return rc;
    for (int i = 0; i < m; ++i) r[done + i] = static_cast<T>(buf[i]);
  }
  return 0;
}

// Transforms of uniforms through an inverse distribution function f(u), u in (0,1).
template <class T, class F>
int icdf(void* stream, int n, T* r, F f) {
  return chunked(n, r, [&](double* b, int m) {
    for (int done = 0; done < m; done += kChunk) {
      int k = m - done < kChunk ? m - done : kChunk;
      if (int rc = uniform01(stream, k, b + done)) return rc;
      for (int i = 0; i < k; ++i) b[done + i] = f(open01(b[done + i]));
    }
    return 0;
  });
}

// Keeps x inside [lo, hi] where rounding of the transform took it out.
template <class T>
inline T clamp_to(T x, T lo, T hi) {
  return x < lo ? lo : (x > hi ? hi : x);
}

}  // namespace qnl_vsl
