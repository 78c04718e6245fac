// The vector width and SLEEF's function names of one kernel-library build.
// QNL_VML_SLEEF names SLEEF's instruction-set suffix: sse2, sse4, avx, avx2,
// avx512f, or purec (one element at a time, for the reproducible build).
#pragma once
#include <sleef.h>

#include <cstring>

#define QNL_VML_CAT3(a, b, c) a##b##c
#define QNL_VML_SLEEF_NAME(fn, vec, acc, isa) QNL_VML_CAT3(Sleef_##fn, vec##_##acc, isa)

#if QNL_VML_ISA_SSE2 || QNL_VML_ISA_SSE4
#include <emmintrin.h>
using VD = __m128d;
using VF = __m128;
#define QNL_VD(fn, acc) QNL_VML_SLEEF_NAME(fn, d2, acc, QNL_VML_SLEEF)
#define QNL_VF(fn, acc) QNL_VML_SLEEF_NAME(fn, f4, acc, QNL_VML_SLEEF)
#elif QNL_VML_ISA_AVX
#include <immintrin.h>
using VD = __m256d;
using VF = __m256;
#define QNL_VD(fn, acc) QNL_VML_SLEEF_NAME(fn, d4, acc, QNL_VML_SLEEF)
#define QNL_VF(fn, acc) QNL_VML_SLEEF_NAME(fn, f8, acc, QNL_VML_SLEEF)
#elif QNL_VML_ISA_AVX512
#include <immintrin.h>
using VD = __m512d;
using VF = __m512;
#define QNL_VD(fn, acc) QNL_VML_SLEEF_NAME(fn, d8, acc, QNL_VML_SLEEF)
#define QNL_VF(fn, acc) QNL_VML_SLEEF_NAME(fn, f16, acc, QNL_VML_SLEEF)
#else
using VD = double;
using VF = float;
#define QNL_VD(fn, acc) QNL_VML_SLEEF_NAME(fn, d1, acc, QNL_VML_SLEEF)
#define QNL_VF(fn, acc) QNL_VML_SLEEF_NAME(fn, f1, acc, QNL_VML_SLEEF)
#endif

namespace qnl_vml {

template <class T>
struct Vec;
template <>
struct Vec<double> {
  using type = VD;
};
template <>
struct Vec<float> {
  using type = VF;
};
template <class T>
using V = typename Vec<T>::type;
template <class T>
constexpr int kLanes = sizeof(V<T>) / sizeof(T);

template <class T>
inline V<T> load(const T* p) {
  V<T> v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
template <class T>
inline void store(T* p, V<T> v) {
  std::memcpy(p, &v, sizeof v);
}

}  // namespace qnl_vml
