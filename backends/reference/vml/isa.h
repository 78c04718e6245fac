// The vector width and SLEEF's function names of one kernel-library build.
// QNL_VML_SLEEF names SLEEF's instruction-set suffix: sse2, sse4, avx, avx2,
// avx512f, or purec (one element at a time, for the reproducible build).
#pragma once
#include <emmintrin.h>
#include <sleef.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

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

// GCC's vector type of the same width, for lane tests: a comparison gives a
// mask of the lanes where it holds.
template <class T>
struct Gv;
template <>
struct Gv<double> {
  typedef double type __attribute__((vector_size(sizeof(VD))));
};
template <>
struct Gv<float> {
  typedef float type __attribute__((vector_size(sizeof(VF))));
};
template <class T>
using G = typename Gv<T>::type;
template <class T>
using Mask = decltype(G<T>{} < G<T>{});

// Whether any lane of a mask is set.
template <class M>
inline bool any(M m) {
#if defined(__AVX512F__)
  if constexpr (sizeof(M) == 64) return _mm512_test_epi64_mask((__m512i)m, (__m512i)m) != 0;
#endif
#if defined(__AVX__)
  if constexpr (sizeof(M) == 32) return !_mm256_testz_si256((__m256i)m, (__m256i)m);
#endif
  if constexpr (sizeof(M) == 16)
    return _mm_movemask_epi8((__m128i)m) != 0;
  else
    return m[0] != 0;
}

template <class M>
inline bool all(M m) {
  return !any(~m);
}

// Whether any lane of a 64-bit integer vector is negative: one sign test, where
// a mask would need a comparison per bound first.
template <class M>
inline bool any_negative(M m) {
#if defined(__AVX512F__)
  if constexpr (sizeof(M) == 64) return _mm512_cmplt_epi64_mask((__m512i)m, _mm512_setzero_si512()) != 0;
#endif
#if defined(__AVX__)
  if constexpr (sizeof(M) == 32) return !_mm256_testz_pd((__m256d)m, (__m256d)m);
#endif
  if constexpr (sizeof(M) == 16)
    return _mm_movemask_pd((__m128d)m) != 0;
  else
    return m[0] < 0;
}

template <class T>
inline G<T> lanes(const T* p) {
  G<T> v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
// |v|, by clearing the sign bits.
template <class T>
inline G<T> magnitude(G<T> v) {
  using I = std::conditional_t<sizeof(T) == 8, int64_t, int32_t>;
  return __builtin_bit_cast(G<T>, __builtin_bit_cast(Mask<T>, v) & (Mask<T>{} + std::numeric_limits<I>::max()));
}

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
