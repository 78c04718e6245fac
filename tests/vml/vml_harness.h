// Calling any vector-math entry of the generated list with sentinel arguments, and
// reading what the probe back-end saw.
#pragma once
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "probe_backend.h"
#include "qnl_service.h"
#include "test_util.h"
#include "vml_cases.inc"

namespace vml_test {

using qnl_test::upper;
inline std::string lower(std::string s) {
  for (char& c : s) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return s;
}

// The eight names of a function: the C name, its mode form, then the Fortran
// spellings (everything by reference) without and with the mode.
struct Spelling {
  std::string name;
  bool mode, by_ref;
};
inline std::vector<Spelling> spellings(const VmlCase& c) {
  const std::string n = c.name, m = "vm" + n.substr(1);
  return {{n, false, false},
          {m, true, false},
          {upper(n), false, true},
          {lower(n), false, true},
          {lower(n) + "_", false, true},
          {upper(m), true, true},
          {lower(m), true, true},
          {lower(m) + "_", true, true}};
}

// Bytes of an argument's element (arrays) or value (scalars), from the type letter
// of the name: e/y/a the function's type, r/w its real type, i/j 64-bit integers.
inline int size_of(const VmlCase& c, char letter) {
  const char t = c.name[1];
  const int element = t == 's' ? 4 : t == 'z' ? 16 : 8, real = t == 's' || t == 'c' ? 4 : 8;
  return letter == 'r' || letter == 'w' ? real : letter == 'i' || letter == 'j' ? 8 : element;
}
inline bool is_array(char letter) { return std::strchr("eyrw", letter) != nullptr; }

// Sentinel arguments of one call: distinct array addresses, scalars with distinct
// bits (a complex one with a negative imaginary part), an integer stride of -3 in
// its low half, and a mode whose by-value high half is garbage.
struct Sentinels {
  int64_t n = 5;
  int64_t stride = 0x00000007FFFFFFFDll;
  int32_t mode = 0x77;
  std::vector<uintptr_t> arrays;  // per argument; 0 for a scalar or an integer
  uint64_t scalars[8][2] = {};    // per argument, its value's bytes

  explicit Sentinels(const VmlCase& c) {
    const char t = c.name[1];
    for (size_t i = 0; c.args[i]; ++i) {
      arrays.push_back(c.args[i] == 'a' || c.args[i] == 'i' ? 0 : 0x7f0000100000ull + 0x10000ull * i);
      const double x = 1.5 + static_cast<double>(i);
      const float fx[2] = {static_cast<float>(x), static_cast<float>(-x)};
      const double dx[2] = {x, -x};
      std::memcpy(scalars[i], t == 's' || t == 'c' ? static_cast<const void*>(fx) : dx,
                  t == 's'   ? 4
                  : t == 'c' ? 8
                             : 16);
    }
  }
};

// Calls fn on x86-64 System V: integer and pointer arguments fill the integer registers in
// order and floating ones (given as their bits: a float, a complex float's pair, each half
// of a complex double) the vector registers in order, each class on its own; a callee
// reads only the registers its parameters name; integer arguments past the sixth go on
// the stack in order. So one pointer type, fed from the two lists, calls every entry.
// Returns the integer result register.
inline uint64_t call_sysv(void* fn, std::vector<uint64_t> ints, std::vector<uint64_t> fps) {
  ints.resize(10), fps.resize(8);
  double d[8];
  std::memcpy(d, fps.data(), sizeof d);
  using W = uint64_t;
  using D = double;
  return reinterpret_cast<W (*)(W, W, W, W, W, W, W, W, W, W, D, D, D, D, D, D, D, D)>(fn)(
      ints[0], ints[1], ints[2], ints[3], ints[4], ints[5], ints[6], ints[7], ints[8], ints[9], d[0], d[1], d[2], d[3],
      d[4], d[5], d[6], d[7]);
}

// Calls a vector-math entry (no entry has more than eight floating arguments): C
// spellings take values, Fortran ones addresses.
inline void invoke(const VmlCase& c, void* fn, const Spelling& s, const Sentinels& v) {
  std::vector<uint64_t> ints, fps;
  ints.push_back(s.by_ref ? reinterpret_cast<uint64_t>(&v.n) : static_cast<uint64_t>(v.n));
  for (size_t i = 0; c.args[i]; ++i) {
    const char l = c.args[i];
    if (l == 'i')
      ints.push_back(s.by_ref ? reinterpret_cast<uint64_t>(&v.stride) : static_cast<uint64_t>(v.stride));
    else if (l == 'a' && s.by_ref)
      ints.push_back(reinterpret_cast<uint64_t>(v.scalars[i]));
    else if (l == 'a')
      fps.insert(fps.end(), v.scalars[i], v.scalars[i] + (size_of(c, l) + 7) / 8);
    else
      ints.push_back(v.arrays[i]);
  }
  // by value, the mode's high half is garbage
  if (s.mode)
    ints.push_back(s.by_ref ? reinterpret_cast<uint64_t>(&v.mode)
                            : 0xABCD000000000000ull | static_cast<uint32_t>(v.mode));
  call_sysv(fn, ints, fps);
}

inline std::string facade_directory() {
  Dl_info info;
  dladdr(qnl_test::exported("vmlGetMode"), &info);
  const std::string path = info.dli_fname;
  return path.substr(0, path.rfind('/') + 1);
}
// The kernel library the facade loaded, by file name in the facade's folder.
inline void* kernel_library(const char* file = "libqnl_vml_def.so") {
  return dlopen((facade_directory() + file).c_str(), RTLD_NOW | RTLD_NOLOAD);
}

inline std::vector<const qnl_probe::Call*> calls() {
  std::vector<const qnl_probe::Call*> out;
  for (int i = 0; i < qnl_probe_count(); ++i) out.push_back(qnl_probe_call(i));
  return out;
}

// The reports of the calls so far: position, name and the length given with it.
struct Report {
  int32_t number;
  std::string name;
  int32_t length;
};
inline std::vector<Report> reports() {
  std::vector<Report> out;
  for (const qnl_probe::Call* c : calls()) {
    if (std::strcmp(c->symbol, "qnl_serv_xerbla") != 0) continue;
    char name[17] = {};
    std::memcpy(name, &c->word[4], 16);
    const auto len = static_cast<int32_t>(c->word[2]);
    out.push_back({static_cast<int32_t>(c->word[3]), std::string(name, len > 16 ? 16 : len), len});
  }
  return out;
}

// The status the last SetErrStatus call carried, or 0 without one.
inline int32_t last_status_set() {
  for (int i = qnl_probe_count() - 1; i >= 0; --i) {
    const qnl_probe::Call* c = qnl_probe_call(i);
    if (std::strcmp(c->symbol, "qnl_vml_kernel_SetErrStatus") == 0) return static_cast<int32_t>(c->word[0]);
  }
  return 0;
}

}  // namespace vml_test
