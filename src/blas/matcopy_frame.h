// The frame of the matrix copy entries, instantiated per routine from the traits that
// matcopy.sig generates. The back-end has one signature, the C spelling's: characters as
// ints, sizes as size_t, scalars by value. The C spelling passes its arguments on; the
// Fortran spelling reads them through their addresses, sizes at the interface layer's
// width. Neither checks an argument: reports of bad options or sizes are the back-end's.
#pragma once
#include <cstddef>
#include <cstdint>
#include <utility>

#include "entry.h"
#include "frame.h"

namespace qnl::matcopy {

using qnl::blas::cdouble;
using qnl::blas::cfloat;

// A character option as the back-end takes it: the first byte, sign-extended.
inline int32_t option(signed char c) { return c; }

// One argument of the C spelling as the back-end gets it.
template <char Role, class V>
inline auto pass(V v) {
  if constexpr (Role == 'c')
    return option(static_cast<signed char>(v));
  else if constexpr (Role == 'p')
    return qnl::vp(v);  // a matrix: the back-end takes its address
  else
    return v;
}

// One argument of the Fortran spelling, read through its address. A size is a 32-bit
// integer under LP64 (layer 0), sign-extended, so a negative value arrives as a huge
// size_t; under ILP64 it is read whole.
template <char Role, class T>
inline auto read(void* p, int layer) {
  if constexpr (Role == 'c') {
    return option(*static_cast<const signed char*>(p));
  } else if constexpr (Role == 'n') {
    if (layer == 0) return static_cast<size_t>(static_cast<int64_t>(*static_cast<const int32_t*>(p)));
    return *static_cast<const size_t*>(p);
  } else if constexpr (Role == 'a') {
    return *static_cast<const T*>(p);
  } else {
    return p;
  }
}

template <class D, size_t... I, class... V>
inline void by_value_at(std::index_sequence<I...>, V... v) {
  using F = typename D::Backend;
  // The layer is settled first although these arguments do not depend on it.
  qnl::layer();
  qnl::thin<F>(D::slot, D::symbol, [=](F* f) { f(pass<D::roles[I]>(v)...); });
}

template <class D, size_t... I, class... P>
inline void by_reference_at(std::index_sequence<I...>, P... p) {
  using F = typename D::Backend;
  const int layer = qnl::layer();
  // Bound first, read after: the arguments are loaded only on the way to the back-end.
  qnl::thin<F>(D::slot, D::symbol, [=](F* f) { f(read<D::roles[I], typename D::T>(p, layer)...); });
}

// The C spelling, QNL_Domatcopy.
template <class D, class... V>
inline void by_value(V... v) {
  by_value_at<D>(std::index_sequence_for<V...>{}, v...);
}

// The Fortran spellings, qnl_domatcopy and its aliases. Hidden lengths of the caller's
// character arguments are never read.
template <class D, class... P>
inline void by_reference(P... p) {
  by_reference_at<D>(std::index_sequence_for<P...>{}, p...);
}

}  // namespace qnl::matcopy
