// Calls any CBLAS entry with typed arguments built from its row of the routine table (with
// named overrides), at the integer width of either interface, and reads back what reached
// the Fortran back-end symbol: option letters, integer values, and which caller argument
// (or scalar value) stands at each pointer position.
#pragma once
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "blas_cases.inc"
#include "blas_harness.h"
#include "cblas_cases.inc"
#include "probe_backend.h"

namespace cblas_test {

// The entries are looked up by name; this reference keeps the facade linked even in a test
// that names no entry itself.
inline void* volatile g_linked = reinterpret_cast<void*>(&cblas_dgemm);

using blas_test::ILP64;
using blas_test::Layer;
using blas_test::LP64;
using blas_test::reports;
using blas_test::set_layer;
using blas_test::split;

inline const CblasCase& cblas_case(const std::string& name) {
  for (const auto& c : kCblasCases)
    if (name == c.name) return c;
  ADD_FAILURE() << "no case " << name;
  return kCblasCases[0];
}

inline const BlasCase* blas_case(const std::string& name) {
  for (const auto& c : kBlasCases)
    if (name == c.name) return &c;
  return nullptr;
}

using Overrides = std::map<std::string, double>;

// The values of each option argument, by its code letter ('L' the layout, row-major first).
inline const std::map<char, std::vector<int>> kOptionValues = {
    {'L', {101, 102}}, {'T', {111, 112, 113}}, {'K', {111, 112, 113, 151}}, {'U', {121, 122}}, {'G', {131, 132}},
    {'S', {141, 142}}, {'D', {161, 162}}};

// The default of each option argument: column-major, NoTrans, Upper, NonUnit, Left, matrix A.
inline const std::map<char, int> kOptionDefault = {{'L', 102}, {'T', 111}, {'K', 111}, {'U', 121},
                                                   {'G', 131}, {'S', 141}, {'D', 161}};

// Row-major, sizes and strides all distinct: an exchanged pair shows.
// clang-format off
inline const Overrides kDistinctSizes = {{"layout", 101}, {"m", 3}, {"n", 5}, {"k", 4}, {"kl", 1}, {"ku", 2},
                                         {"lda", 50}, {"ldb", 51}, {"ldc", 52}, {"ld", 53}, {"incx", 2}, {"incy", 3}};
// clang-format on

// Every combination of the values of the option arguments whose code letters are in `codes`,
// over `base`.
inline std::vector<Overrides> option_combinations(const CblasCase& c, const Overrides& base,
                                                  const char* codes = "TKUGSD") {
  std::vector<Overrides> out{base};
  const auto names = split(c.args);
  for (size_t k = 0; k < names.size(); ++k) {
    auto values = kOptionValues.find(c.codes[k]);
    if (values == kOptionValues.end() || !std::strchr(codes, c.codes[k])) continue;
    std::vector<Overrides> more;
    for (const auto& o : out)
      for (int v : values->second) {
        more.push_back(o);
        more.back()[names[k]] = v;
      }
    out.swap(more);
  }
  return out;
}

// Arguments of one call. Defaults pass every check: column-major, NoTrans, Upper, NonUnit,
// Left, matrix A; sizes 2, band widths 1, leading dimensions 50, increments 1; scalars
// 1 + position / 8 (with 0.5 as imaginary component when complex); arrays point into buffers of
// their own.
template <class I>
class Args {
 public:
  static constexpr int kSlots = 16;
  static constexpr int kBuffer = 4096;

  Args(const CblasCase& c, const Overrides& over = {}) : case_(c), names_(split(c.args)) {
    const size_t n = std::strlen(c.codes);
    for (size_t k = 0; k < n; ++k) {
      const std::string& name = names_[k];
      const char code = c.codes[k];
      auto o = over.find(name);
      const bool has = o != over.end();
      const double v = has ? o->second : 0;
      if (auto d = kOptionDefault.find(code); d != kOptionDefault.end()) {
        ival_[k] = has ? static_cast<int64_t>(v) : d->second;
        continue;
      }
      switch (code) {
        case 'i': {
          int64_t def = name.rfind("ld", 0) == 0                        ? 50
                        : name.rfind("inc", 0) == 0                     ? 1
                        : name == "nz"                                  ? 3
                        : name == "group_count"                         ? 1
                        : (name == "k" || name == "kl" || name == "ku") ? 1
                                                                        : 2;
          ival_[k] = has ? static_cast<int64_t>(v) : def;
          break;
        }
        case 'a':
        case 'r':
          scalar_[k] = has ? v : 1 + static_cast<double>(k) / 8;  // distinct values
          if (code == 'a' && complex()) {
            store_scalar(k, scalar_[k], 0.5);
            ptr_[k] = &buffer_[k][0];
          }
          break;
        case 'j': {
          int64_t def = name == "indx" ? -1 : name.rfind("ld", 0) == 0 ? 50 : name == "group_size" ? 1 : 2;
          for (int g = 0; g < 64; ++g) ints_[k][g] = name == "indx" ? 2 * g : has ? static_cast<I>(v) : def;
          ptr_[k] = ints_[k];
          break;
        }
        case 'N':
          for (int g = 0; g < 64; ++g) trans_[k][g] = has ? static_cast<int>(v) : 111;
          ptr_[k] = trans_[k];
          break;
        case 'A':
        case 'C':
          for (int g = 0; g < 64; ++g) pointers_[k][g] = &buffer_[k][g];
          ptr_[k] = pointers_[k];
          break;
        default:  // arrays and pointers to scalars
          ptr_[k] = &buffer_[k][0];
      }
    }
  }

  // Every array filled with magnitudes in [0.5, 1.5] of either sign (a triangular solve stays
  // well conditioned), the same for every call that names the array alike.
  void fill() {
    for (size_t k = 0; k < names_.size(); ++k) {
      if (!std::strchr("eywv", case_.codes[k])) continue;
      const int seed = names_[k][0] * 11 + static_cast<int>(names_[k].size());  // by name, not position
      for (int i = 0; i < 2 * kBuffer / kSlots; ++i) {
        const double v = (0.5 + static_cast<double>((i * 37 + seed) % 17) / 16) * (i % 3 == 1 ? -1 : 1);
        if (single())
          reinterpret_cast<float*>(buffer_[k])[i] = static_cast<float>(v);
        else if (i < kBuffer / kSlots)
          buffer_[k][i] = v;
      }
    }
  }
  // The bytes of every buffer.
  std::vector<double> contents() const { return std::vector<double>(data(), data() + kBuffer); }
  const double* data() const { return buffer_[0]; }

  bool complex() const { return case_.type == 'c' || case_.type == 'z'; }
  bool single() const { return case_.type == 's' || case_.type == 'c'; }

  void* entry(const char* name) const {
    void* p = dlsym(RTLD_DEFAULT, name);
    EXPECT_NE(p, nullptr) << name;
    return p;
  }

  template <class T>
  T arg(int k) const {
    if constexpr (std::is_pointer_v<T>)
      return reinterpret_cast<T>(ptr_[k]);
    else if constexpr (std::is_floating_point_v<T>)
      return static_cast<T>(scalar_[k]);
    else
      return static_cast<T>(ival_[k]);
  }

  template <class F, class... A>
  uint64_t call(F f, A... a) {
    using R = decltype(f(a...));
    if constexpr (std::is_void_v<R>) {
      f(a...);
      return 0;
    } else {
      R r = f(a...);
      uint64_t bits = 0;
      std::memcpy(&bits, &r, sizeof r);
      return bits;
    }
  }

  uint64_t run() { return cblas_call<I>(case_.name, *this); }

  int index(const std::string& name) const {
    for (size_t k = 0; k < names_.size(); ++k)
      if (names_[k] == name) return static_cast<int>(k);
    ADD_FAILURE() << "no argument " << name << " in " << case_.name;
    return 0;
  }
  void* pointer(const std::string& name) const { return ptr_[index(name)]; }
  double* buffer(const std::string& name) { return buffer_[index(name)]; }

  // Which caller argument a back-end pointer word names: an array or pointer argument by
  // address, or a scalar by the value behind it ("~alpha" when conjugated).
  std::string identify(uint64_t word, const unsigned char* behind) const {
    for (size_t k = 0; k < names_.size(); ++k)
      if (ptr_[k] && reinterpret_cast<uintptr_t>(ptr_[k]) == word && case_.codes[k] != 'a') return names_[k];
    for (size_t k = 0; k < names_.size(); ++k) {
      const char code = case_.codes[k];
      if (code != 'a' && code != 'r') continue;
      const bool cplx = code == 'a' && complex();
      const double re = component(behind, 0), im = component(behind, 1);
      if (re != scalar_[k]) continue;
      if (!cplx) return names_[k];
      if (im == 0.5) return names_[k];
      if (im == -0.5) return "~" + names_[k];
    }
    return "scratch";
  }

 private:
  // Component i of a scalar of the routine's precision stored at p.
  double component(const unsigned char* p, int i) const {
    float f[2];
    double d[2];
    std::memcpy(f, p, sizeof f);
    std::memcpy(d, p, sizeof d);
    return single() ? f[i] : d[i];
  }
  void store_scalar(size_t k, double re, double im) {
    if (single()) {
      float f[2] = {static_cast<float>(re), static_cast<float>(im)};
      std::memcpy(buffer_[k], f, sizeof f);
    } else {
      buffer_[k][0] = re;
      buffer_[k][1] = im;
    }
  }

  const CblasCase& case_;
  std::vector<std::string> names_;
  int64_t ival_[kSlots] = {};
  double scalar_[kSlots] = {};
  void* ptr_[kSlots] = {};
  double buffer_[kSlots][kBuffer / kSlots] = {};
  I ints_[kSlots][64] = {};
  int trans_[kSlots][64] = {};
  void* pointers_[kSlots][64] = {};
};

// What one back-end call received, decoded by the Fortran routine's roles; the 16 bytes
// behind every pointer word are read by the probe's hook while the call runs.
struct Seen {
  std::string chars;
  std::vector<int64_t> ints;
  std::vector<uint64_t> pointers;                  // the 'p' words
  std::vector<std::vector<unsigned char>> behind;  // 16 bytes behind each 'p' word
};

inline std::map<std::string, Seen>& seen_by_symbol() {
  static std::map<std::string, Seen> m;
  return m;
}

// Up to 16 bytes behind a pointer word: a scalar may be a 4-byte local of the caller's
// frame, so the copy reads past it without the address sanitizer's objection (the stack
// around it is mapped).
__attribute__((no_sanitize("address"))) inline void peek(void* to, uint64_t from) {
  const volatile unsigned char* p = reinterpret_cast<const volatile unsigned char*>(from);
  auto* out = static_cast<unsigned char*>(to);
  for (int i = 0; i < 16; ++i) out[i] = p[i];
}

inline void capture_hook(const char* symbol, const uint64_t* w, int) {
  if (std::strncmp(symbol, "qnl_blas_", 9) != 0) return;
  const BlasCase* bc = blas_case(symbol + 9);
  if (!bc) return;
  Seen s;
  const int shift = bc->result == 'c' || bc->result == 'z' ? 1 : 0;
  const size_t nargs = std::strlen(bc->roles);
  size_t nint = 0;
  for (size_t k = 0; k < nargs; ++k) {
    const char role = bc->roles[k];
    const uint64_t word = w[k + shift];
    if (role == 'c') {
      s.chars += *reinterpret_cast<const char*>(word);
    } else if (role == 'p') {
      s.pointers.push_back(word);
      std::vector<unsigned char> b(16);
      if (word) peek(b.data(), word);
      s.behind.push_back(b);
    } else if (role == 'i') {
      ++nint;
    }
  }
  // integer values follow the arguments, the batch word and the hidden lengths
  size_t after = nargs + shift + (bc->batch ? 1 : 0);
  for (size_t k = 0; k < nargs; ++k) after += bc->roles[k] == 'c';
  for (size_t k = 0; k < nint; ++k) s.ints.push_back(static_cast<int64_t>(w[after + k]));
  seen_by_symbol()[symbol] = s;
}

inline void watch() {
  seen_by_symbol().clear();
  qnl_probe_set_hook(capture_hook);
}

inline const Seen* seen(const std::string& fortran) {
  auto it = seen_by_symbol().find("qnl_blas_" + fortran);
  return it == seen_by_symbol().end() ? nullptr : &it->second;
}

// The CBLAS reports of the run (those under a "cblas_" name), by number.
inline std::vector<int32_t> cblas_reports(const char* name) {
  std::vector<int32_t> out;
  for (const auto& r : reports()) {
    const std::string shown = std::string(name).substr(0, 16);
    if (r.name == shown) {
      EXPECT_EQ(r.length, static_cast<int32_t>(std::strlen(name)));
      out.push_back(r.number);
    }
  }
  return out;
}

template <class I>
std::vector<std::string> pointer_names(const Args<I>& args, const Seen& s) {
  std::vector<std::string> out;
  for (size_t k = 0; k < s.pointers.size(); ++k) out.push_back(args.identify(s.pointers[k], s.behind[k].data()));
  return out;
}

inline std::string join(const std::vector<std::string>& v) {
  std::string out;
  for (const auto& s : v) out += (out.empty() ? "" : ",") + s;
  return out;
}

}  // namespace cblas_test
