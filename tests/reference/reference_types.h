// Helpers of the tests that check the reference back-end's own routines against plain
// computations: type letters, deterministic values, tolerances and entry lookup.
#pragma once
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "element_type.h"
#include "test_util.h"

extern "C" int QNL_Set_Interface_Layer(int);

namespace ref_test {

using qnl_test::kComplex;
using qnl_test::kLetter;
using qnl_test::printed;
using qnl_test::Real;
using qnl_test::upper;

using AllTypes = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;

// Deterministic values in [-6, 6.7] with distinct real and imaginary parts.
template <class T>
T value(long k) {
  const double re = static_cast<double>(k * 37 % 101) / 8.0 - 6.0;
  if constexpr (kComplex<T>)
    return T(static_cast<Real<T>>(re), static_cast<Real<T>>(static_cast<double>(k * 53 % 97) / 8.0 - 6.0));
  else
    return static_cast<T>(re);
}

template <class T>
std::vector<T> values(size_t n, long seed) {
  std::vector<T> v(n);
  for (size_t k = 0; k < n; ++k) v[k] = value<T>(static_cast<long>(k) * 5 + seed);
  return v;
}

template <class T>
T scalar(std::complex<double> v) {
  if constexpr (kComplex<T>)
    return T(static_cast<Real<T>>(v.real()), static_cast<Real<T>>(v.imag()));
  else
    return static_cast<T>(v.real());
}

template <class T>
T conj_if(T v, bool c) {
  if constexpr (kComplex<T>)
    return c ? std::conj(v) : v;
  else
    return v;
}

template <class T>
double eps() {
  return std::numeric_limits<Real<T>>::epsilon();
}

// The exported entry `name` with the type letter put where `%c` stands.
template <class F, class T>
F* entry(const char* pattern) {
  char name[64];
  std::snprintf(name, sizeof name, pattern, kLetter<T>);
  void* p = dlsym(RTLD_DEFAULT, name);
  EXPECT_NE(p, nullptr) << name;
  return reinterpret_cast<F*>(p);
}

// OpenBLAS's own Fortran entry `pattern` (type letter at `%c`), from Debian's LP64 build loaded
// in a scope of its own: an oracle computed by a library that shares no code with ours.
template <class F, class T>
F* openblas(const char* pattern) {
  static void* lib = dlopen("libopenblas.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  char name[64];
  std::snprintf(name, sizeof name, pattern, kLetter<T>);
  void* p = lib ? dlsym(lib, name) : nullptr;
  EXPECT_NE(p, nullptr) << name << " in OpenBLAS";
  return reinterpret_cast<F*>(p);
}

// What the back-end prints for a bad parameter.
inline std::string report(int param, const std::string& name) {
  return "Velor QNL ERROR: Parameter " + std::to_string(param) + " was incorrect on entry to " + name + ".\n";
}

// The largest |f(i, j)| over i < m, j < n.
template <class F>
double max_abs(long m, long n, F f) {
  double worst = 0;
  for (long j = 0; j < n; ++j)
    for (long i = 0; i < m; ++i) worst = std::max(worst, static_cast<double>(std::abs(f(i, j))));
  return worst;
}

// Each row of `rows` refused by `call(row, &info)`: the back-end's report of the row's
// parameter under `name`, and info set to minus it.
template <class Row, size_t N, class Call>
void expect_refused(const std::string& name, const Row (&rows)[N], Call call) {
  for (const Row& row : rows) {
    int32_t info = 0;
    EXPECT_EQ(printed([&] { call(row, &info); }), report(row.param, name)) << name;
    EXPECT_EQ(info, -row.param) << name;
  }
}

// got within 64 eps * scale of want.
template <class T>
void expect_near(T got, T want, double scale, const std::string& where) {
  ASSERT_LE(std::abs(got - want), 64 * eps<T>() * scale) << where << ": got " << got << " want " << want;
}

// Every element of got the oracle's to the bit (NaN left alone included) or within
// 64 eps * scale of it.
template <class T>
void expect_all_near(const std::vector<T>& got, const std::vector<T>& want, double scale, const std::string& where) {
  ASSERT_EQ(got.size(), want.size()) << where;
  for (size_t i = 0; i < got.size() && !::testing::Test::HasFatalFailure(); ++i)
    if (std::memcmp(&got[i], &want[i], sizeof(T)) != 0)
      expect_near(got[i], want[i], scale, where + " element " + std::to_string(i));
}

}  // namespace ref_test
