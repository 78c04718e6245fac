// Calling any vector-math entry of the table with sentinel arguments, and what the
// probe back-end must then have seen.
#pragma once
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "probe_backend.h"
#include "qnl_service.h"
#include "test_util.h"
#include "vml_cases.inc"

namespace vml_test {

using vml_cases::Case;

struct c8 {
  float re, im;
};
struct c16 {
  double re, im;
};

inline std::string upper(std::string s) {
  for (char& c : s) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  return s;
}
inline std::string lower(std::string s) {
  for (char& c : s) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return s;
}

// The eight names of a function: plain C name first, then its mode form, then the
// Fortran spellings without and with the mode.
struct Spelling {
  std::string name;
  bool mode, by_ref;
};
inline std::vector<Spelling> spellings(const Case& c) {
  std::string n = c.name, m = "vm" + n.substr(1);
  return {{n, false, false},
          {m, true, false},
          {upper(n), false, true},
          {lower(n), false, true},
          {lower(n) + "_", false, true},
          {upper(m), true, true},
          {lower(m), true, true},
          {lower(m) + "_", true, true}};
}

// The threader a group and type letter call, by the shape rules of the interface.
inline std::string threader_of(const Case& c) {
  std::string t(1, c.letter), g = c.group;
  std::string r = c.letter == 'c' ? "s" : "d";
  if (g == "unary") return t + "_1i_1o";
  if (g == "binary") return t + "_2i_1o";
  if (g == "tworesult") return t + "_1i_2o";
  if (g == "powx") return t + "_c" + t + "_2i_" + t + "_1o";
  if (g == "c2r") return t + "_1i_" + r + "_1o";
  if (g == "r2c") return r + "_1i_" + t + "_1o";
  if (g == "linfrac") return t + "_6i_1o";
  return "";
}

// Sentinel arguments of one call.
struct Sentinels {
  int64_t n = 5;
  int32_t mode = 0x77;
  int64_t stride = 0x00000007FFFFFFFDll;  // -3 in its low half
  uintptr_t array(int i) const { return 0x7f0000100000ull + 0x10000ull * static_cast<uintptr_t>(i); }
  double scalar(int i) const { return 1.5 + i; }  // real part; imaginary part is its negative
};

// One argument as the caller hands it over.
struct Arg {
  enum Kind { Int, F32, F64, C8, C16 } kind;
  uint64_t bits;  // Int, or the real value's bits
  c8 cf;
  c16 cd;
};

// Calls `fn` with the case's arguments. C spellings take values, Fortran ones pointers.
void invoke(const Case& c, void* fn, const Spelling& s, const Sentinels& v, const std::vector<uintptr_t>& arrays);

// Words the threader must have received for a piece starting `done` elements in.
std::vector<uint64_t> expected_threader_words(const Case& c, const Sentinels& v, const std::vector<uintptr_t>& arrays,
                                              int32_t count, int64_t done);

// The kernel library the facade loaded (by file name in the facade's folder).
void* kernel_library(const char* file = "libqnl_vml_def.so");
std::string facade_directory();

struct Report {
  int32_t number;
  std::string name;
  int32_t length;
};
std::vector<Report> reports();
std::vector<const qnl_probe::Call*> calls();

}  // namespace vml_test

namespace vml_test {
// The status the last SetErrStatus call carried, or 0 without one.
inline int32_t last_status_set() {
  for (int i = qnl_probe_count() - 1; i >= 0; --i) {
    const qnl_probe::Call* c = qnl_probe_call(i);
    if (std::strcmp(c->symbol, "qnl_vml_kernel_SetErrStatus") == 0) return static_cast<int32_t>(c->word[0]);
  }
  return 0;
}
}  // namespace vml_test
