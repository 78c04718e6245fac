// Shared pieces of the routines the reference back-end computes itself, where the ILP64
// OpenBLAS has no routine of that name: element types, option letters, error reports, and
// typed calls of the OpenBLAS routines they are built on.
#pragma once
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <type_traits>

#include "forward.h"

extern "C" void qnl_serv_xerbla(void* name, void* info, int32_t len);

namespace qnl_ref::own {

using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

// The element type's letter (s, d, c, z) and its real type.
template <class T>
struct Traits {
  using Real = T;
  static constexpr char letter = std::is_same_v<T, float> ? 's' : 'd';
};
template <class R>
struct Traits<std::complex<R>> {
  using Real = R;
  static constexpr char letter = std::is_same_v<R, float> ? 'c' : 'z';
};
template <class T>
using Real = typename Traits<T>::Real;
template <class T>
constexpr bool is_complex = !std::is_same_v<T, Real<T>>;

template <class T>
inline T conj(T v) {
  if constexpr (is_complex<T>)
    return std::conj(v);
  else
    return v;
}

inline char upper(int c) { return static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c); }
inline bool is(const char* option, char letter) { return upper(*option) == letter; }

// Reports parameter `number` of routine `name` through the back-end's error hook.
inline void report(const char* name, int32_t number) {
  int32_t len = 0;
  while (name[len]) ++len;
  qnl_serv_xerbla(const_cast<char*>(name), &number, len);
}

// An integer of a caller's array: 32 bits wide when `narrow`, else 64.
inline int64_t int_at(const void* array, int64_t i, bool narrow) {
  return narrow ? static_cast<const int32_t*>(array)[i] : static_cast<const int64_t*>(array)[i];
}

// An OpenBLAS routine `<letter><stem>` by its symbol; absent ones end the process, as a
// forwarding stub of a missing routine does.
template <class F>
F* openblas(char letter, const char* stem) {
  char name[32];
  std::snprintf(name, sizeof name, "%c%s", letter, stem);
  void* p = computational_symbol(name);
  if (!p) {
    std::fprintf(stderr, "qnl_rt reference back-end: %s is not available from OpenBLAS\n", name);
    std::abort();
  }
  return reinterpret_cast<F*>(p);
}

// Typed calls of the ILP64 OpenBLAS Fortran routines, each looked up once per type.
using I = int64_t;

// ?gemm_, or ?gemm3m_ (complex types only) with ThreeM.
template <class T, bool ThreeM = false>
void gemm(char ta, char tb, I m, I n, I k, T alpha, const T* a, I lda, const T* b, I ldb, T beta, T* c, I ldc) {
  using F = void(const char*, const char*, const I*, const I*, const I*, const T*, const T*, const I*, const T*,
                 const I*, const T*, T*, const I*, size_t, size_t);
  static F* f = openblas<F>(Traits<T>::letter, ThreeM ? "gemm3m_" : "gemm_");
  f(&ta, &tb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);
}

template <class T>
void gemv(char trans, I m, I n, T alpha, const T* a, I lda, const T* x, I incx, T beta, T* y, I incy) {
  using F = void(const char*, const I*, const I*, const T*, const T*, const I*, const T*, const I*, const T*, T*,
                 const I*, size_t);
  static F* f = openblas<F>(Traits<T>::letter, "gemv_");
  f(&trans, &m, &n, &alpha, a, &lda, x, &incx, &beta, y, &incy, 1);
}

// ?trmm_, or ?trsm_ with Solve.
template <class T, bool Solve>
void triangular(char side, char uplo, char ta, char diag, I m, I n, T alpha, const T* a, I lda, T* b, I ldb) {
  using F = void(const char*, const char*, const char*, const char*, const I*, const I*, const T*, const T*, const I*,
                 T*, const I*, size_t, size_t, size_t, size_t);
  static F* f = openblas<F>(Traits<T>::letter, Solve ? "trsm_" : "trmm_");
  f(&side, &uplo, &ta, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1);
}

}  // namespace qnl_ref::own
