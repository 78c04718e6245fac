// Debian's FFTW3 as the DFT core sees it: the few routines it calls, looked up
// in a link-map namespace of their own, for each precision.
#pragma once
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace qnl_ref::dft {

struct IoDim {
  ptrdiff_t n, is, os;
};

// The routines of one precision; R is the real type. Plans are opaque.
template <class R>
struct Fftw {
  using Plan = void*;
  Plan (*guru64_dft)(int, const IoDim*, int, const IoDim*, R*, R*, int, unsigned);
  Plan (*guru64_split_dft)(int, const IoDim*, int, const IoDim*, R*, R*, R*, R*, unsigned);
  Plan (*guru64_r2c)(int, const IoDim*, int, const IoDim*, R*, R*, unsigned);
  Plan (*guru64_c2r)(int, const IoDim*, int, const IoDim*, R*, R*, unsigned);
  void (*execute_dft)(Plan, R*, R*);
  void (*execute_split_dft)(Plan, R*, R*, R*, R*);
  void (*execute_r2c)(Plan, R*, R*);
  void (*execute_c2r)(Plan, R*, R*);
  void (*destroy)(Plan);
  // Arrays share a plan's SIMD alignment when these address bits agree
  // (FFTW's alignment_of, measured once at load).
  uintptr_t alignment_mask;
  void (*plan_with_nthreads)(int);  // null without a threads build
  const char* version;
};

// Loaded on first use; null members only where a routine is optional.
const Fftw<double>& fftw_double();
const Fftw<float>& fftw_float();
// FFTW's planner is not re-entrant: every plan is made and destroyed under it.
std::mutex& planner_lock();

inline constexpr unsigned kForward = static_cast<unsigned>(-1);
inline constexpr unsigned kEstimate = 1u << 6;
inline constexpr unsigned kUnaligned = 1u << 1;
inline constexpr unsigned kPreserveInput = 1u << 4;
inline constexpr unsigned kDestroyInput = 1u << 0;

}  // namespace qnl_ref::dft
