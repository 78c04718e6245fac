// What every CBLAS body shares: the enumerations and their Fortran characters, the report
// routines, and how a C argument becomes the address a Fortran entry reads.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "blas_gen.h"
#include "entry.h"
#include "frame.h"
#include "services_gen.h"

extern "C" {
// Reports `number` for the routine `name` ("cblas_dgemm") through cdecl_xerbla.
void cblas_report_parameter(const char* name, int32_t number) QNL_HIDDEN;
// Reports a failed scratch allocation: the value 1000 in place of a parameter number.
void cblas_report_no_memory(const char* name) QNL_HIDDEN;
}

namespace qnl::cblas {

using blas::cdouble;
using blas::cfloat;
using blas::is_complex;

constexpr int kRowMajor = 101, kColMajor = 102;
constexpr int kNoTrans = 111, kTrans = 112, kConjTrans = 113;
constexpr int kUpper = 121, kLower = 122;
constexpr int kNonUnit = 131, kUnit = 132;
constexpr int kLeft = 141, kRight = 142;
constexpr int kPacked = 151, kAMatrix = 161, kBMatrix = 162;

// The character a report leaves behind when the call goes on: no Fortran entry accepts it.
inline constexpr char kUndefined[] = "?";

// Whether a C-layer value of type V may stand for the Fortran entry's parameter T*: a
// typed pointer (or array) only for the same element type, no more const than the
// parameter allows, an integer array for the layer's integers, an array of addresses by
// the same rule; an untyped pointer (the C interface's complex data) for any element; a
// value (integer, scalar) for a read-only address of its own type, an integer for the
// layer's.
template <class V, class T>
constexpr bool passes() {
  if constexpr (std::is_array_v<V>) {
    return passes<std::remove_extent_t<V>*, T>();
  } else if constexpr (std::is_pointer_v<V>) {
    using U = std::remove_pointer_t<V>;
    if constexpr (std::is_const_v<U> && !std::is_const_v<T>)
      return false;
    else if constexpr (std::is_integral_v<U> && !std::is_same_v<std::remove_cv_t<U>, char>)
      return std::is_same_v<std::remove_cv_t<T>, QnlLayerInt>;
    else if constexpr (std::is_pointer_v<U>)  // an array of matrix addresses
      return std::is_pointer_v<T> && passes<U, std::remove_pointer_t<std::remove_cv_t<T>>>();
    else
      return std::is_void_v<U> || std::is_same_v<std::remove_cv_t<U>, std::remove_cv_t<T>>;
  } else if constexpr (std::is_integral_v<V>) {
    // the layer's integer, or the 64-bit one of the wide entries
    return std::is_same_v<T, const QnlLayerInt> || std::is_same_v<T, const V>;
  } else {
    return std::is_same_v<T, const V>;
  }
}

// The address a Fortran entry reads: a pointer argument stands; a value (integer, real
// scalar, complex scalar) is this frame's own copy. It converts to the pointer type the
// entry's typed prototype names, when `passes` allows it.
template <class V>
struct Address {
  void* p;
  template <class T>
  operator T*() const {
    static_assert(passes<V, T>(), "the C layer passes a value of another type than the entry's");
    return static_cast<T*>(p);
  }
};

template <class V>
inline Address<V> ref(V& v) {
  if constexpr (std::is_pointer_v<V>)
    return {const_cast<void*>(static_cast<const void*>(v))};
  else
    return {const_cast<void*>(static_cast<const void*>(&v))};
}

// Calls a Fortran entry with the addresses of its arguments; a temporary lives until the
// call returns.
template <class F, class... A>
inline auto fortran(F* f, A&&... a) {
  return f(ref(a)...);
}

// An integer of the body's width as the 64-bit value the wide entry reads; anything else
// as it is.
template <class V>
inline auto wide(V v) {
  if constexpr (std::is_integral_v<V>)
    return static_cast<int64_t>(v);
  else
    return v;
}

// Calls `f` with the addresses of the arguments, then the value 1 for each parameter of
// `f` beyond them: the hidden lengths that a twin at 64-bit integers with stack arguments
// at the back-end takes from its caller (frame.h, QNL_WIDE_ROAD).
template <class R, class... P, class... A, size_t... L>
inline R call_with_lengths(R (*f)(P...), std::index_sequence<L...>, A... a) {
  return f(ref(a)..., size_t{L * 0 + 1}...);
}
template <class R, class... P, class... A>
inline R call_with_addresses(R (*f)(P...), A... a) {
  return call_with_lengths(f, std::make_index_sequence<sizeof...(P) - sizeof...(A)>{}, a...);
}

// Calls the Fortran entry `Body` (&qnl_body_<routine>) through its twin at 64-bit integers
// (frame.h, enter_wide), which leaves out the entry's checker: only for a routine without
// one, or after checks of this layer that every argument the checker tests has passed.
// Both bodies of a routine then reach the same road, with no widening by the entry.
template <auto Body, class... A>
inline auto fortran_wide(A... a) {
  return call_with_addresses(blas::wide_of<Body>::fn, wide(a)...);
}

// Rows of an operand stored as given (column-major), or of its transpose (row-major).
template <class I>
inline I rows(bool row, bool notrans, I if_notrans, I otherwise) {
  return (notrans != row) ? if_notrans : otherwise;
}

template <class I>
inline I max1(I v) {
  return v > 1 ? v : 1;
}

// Reports the first failing condition of a chain: `bad(m < 0, 3) || bad(n < 0, 4)`.
struct Checker {
  const char* name;
  bool operator()(bool failed, int32_t number) const {
    if (__builtin_expect(failed, 0)) cblas_report_parameter(name, number);
    return failed;
  }
};

// Fortran characters of the enumerations; `row` gives the letters of a row-major call.
inline const char* trans_char(int t) {
  // "N", "T", "C" for 111, 112, 113: a bound test and an address, not three compares.
  static constexpr char kLetters[] = "N\0T\0C";
  const unsigned i = static_cast<unsigned>(t - kNoTrans);
  return i < 3 ? kLetters + 2 * i : nullptr;
}
inline const char* uplo_char(int u, bool row) {
  if (u == kUpper) return row ? "L" : "U";
  if (u == kLower) return row ? "U" : "L";
  return nullptr;
}
inline const char* side_char(int s, bool row) {
  if (s == kLeft) return row ? "R" : "L";
  if (s == kRight) return row ? "L" : "R";
  return nullptr;
}
inline const char* diag_char(int d) { return d == kNonUnit ? "N" : d == kUnit ? "U" : nullptr; }

// A scalar as the body holds it: real ones by value, complex ones behind a pointer.
template <class E, class S>
inline E value_of(S s) {
  if constexpr (std::is_pointer_v<S>) {
    E v;
    std::memcpy(&v, s, sizeof v);
    return v;
  } else {
    return static_cast<E>(s);
  }
}

template <class E>
inline E conj(E v) {
  if constexpr (is_complex<E>) v.im = -v.im;
  return v;
}

template <class E>
inline bool is_zero(E v) {
  if constexpr (is_complex<E>)
    return v.re == 0 && v.im == 0;
  else
    return v == 0;
}
template <class E>
inline bool is_one(E v) {
  if constexpr (is_complex<E>)
    return v.re == 1 && v.im == 0;
  else
    return v == 1;
}

}  // namespace qnl::cblas
