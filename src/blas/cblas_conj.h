// Conjugation of complex vectors for the row-major Hermitian roads: a conjugate copy into
// scratch, and an in-place negation of imaginary parts that is undone when the guard goes.
// Conjugation flips the sign bit of the imaginary part, so +0 becomes -0.
#pragma once
#include <cstdint>

#include "cblas_common.h"

namespace qnl::cblas {

template <class E>
inline void flip_imag(E& v) {
  if constexpr (is_complex<E>) v.im = -v.im;
}

// A conjugate copy of `len` elements read with increment `inc`, in BLAS element order at
// unit stride (a non-positive increment fills the copy back to front). With `len` at 0 or
// below nothing is allocated and the caller's vector and increment stand. `failed` tells a
// failed allocation, which the body reports and returns on.
template <class E, class I>
class ConjCopy {
 public:
  ConjCopy(const void* v, I len, I inc) : caller_(v), data_(v), inc_(inc) {
    if (len <= 0) return;
    auto* copy = static_cast<E*>(qnl_body_qnl_serv_iface_allocate(static_cast<uint64_t>(len) * sizeof(E), 128));
    if (copy == nullptr) {
      failed_ = true;
      return;
    }
    const auto* src = static_cast<const E*>(v);
    const I step = inc < 0 ? -inc : inc;
    if (inc > 0) {
      for (I i = 0; i < len; ++i) copy[i] = conj(src[i * step]);
    } else {
      for (I i = 0; i < len; ++i) copy[len - 1 - i] = conj(src[i * step]);
    }
    data_ = copy;
    inc_ = 1;
  }
  ~ConjCopy() { release(); }
  ConjCopy(const ConjCopy&) = delete;
  ConjCopy& operator=(const ConjCopy&) = delete;

  // Frees the scratch now, if there is any (the pointer differs from the caller's).
  void release() {
    if (data_ != caller_) qnl_body_qnl_serv_iface_deallocate(const_cast<void*>(data_));
    data_ = caller_;
  }
  bool failed() const { return failed_; }
  const void* data() const { return data_; }
  I& inc() { return inc_; }

 private:
  const void* caller_;
  const void* data_;
  I inc_;
  bool failed_ = false;
};

// Negates the imaginary parts of `len` elements at stride |inc| in place when applied, and
// again on destruction, so the caller's vector is restored on every way out. An increment
// of 0 names one element, which is touched once.
template <class E, class I>
class Negation {
 public:
  Negation() = default;
  Negation(const Negation&) = delete;
  Negation& operator=(const Negation&) = delete;
  void apply(void* v, I len, I inc) {
    v_ = static_cast<E*>(v);
    step_ = inc < 0 ? -inc : inc;
    len_ = step_ == 0 && len > 0 ? 1 : len;
    pass();
  }
  ~Negation() { pass(); }

 private:
  void pass() {
    for (I i = 0; i < len_; ++i) flip_imag(v_[i * step_]);
  }
  E* v_ = nullptr;
  I len_ = 0;
  I step_ = 0;
};

// The row-major Hermitian and conjugate-transposed matrix-vector products: alpha and beta
// conjugated in locals, a conjugate copy of x, and y negated in place for the call. The
// copy is freed before y is negated back, on every way out.
template <class E, class I>
class ConjugatedMv {
 public:
  template <class S>
  ConjugatedMv(S alpha, S beta, const void* x, I x_len, I incx)
      : alpha_(conj(value_of<E>(alpha))), beta_(conj(value_of<E>(beta))), x_(x, x_len, incx) {}
  bool failed() const { return x_.failed(); }
  void negate_y(void* y, I n, I incy) {
    if (n > 0) y_.apply(y, n, incy);
  }
  E* alpha() { return &alpha_; }
  E* beta() { return &beta_; }
  ConjCopy<E, I>& x() { return x_; }

 private:
  E alpha_, beta_;
  Negation<E, I> y_;
  ConjCopy<E, I> x_;
};

}  // namespace qnl::cblas
