// The four element types of the BLAS and their properties, shared by the tests and
// the benchmarks that run a routine for every type.
#pragma once
#include <complex>
#include <type_traits>

namespace qnl_test {

template <class T>
struct RealOf {
  using type = T;
};
template <class R>
struct RealOf<std::complex<R>> {
  using type = R;
};
// The real type under T: float for std::complex<float>.
template <class T>
using Real = typename RealOf<T>::type;
template <class T>
constexpr bool kComplex = !std::is_same_v<T, Real<T>>;

// The routine-name letter of T: s, d, c, z.
template <class T>
constexpr char kLetter = std::is_same_v<Real<T>, float> ? (kComplex<T> ? 'c' : 's') : (kComplex<T> ? 'z' : 'd');

}  // namespace qnl_test
