// Shared pieces of the LAPACK entry tests: the generated cases, a caller that
// builds every argument of a case, and a probe hook that looks at and writes
// what the back-end received.
#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "probe_backend.h"
#include "qnl_service.h"
#include "test_util.h"

namespace lapack_test {

struct Config {
  bool referenced;  // a conditional argument or array that is passed
  int64_t caller;   // integer scalar: the caller's value
  int64_t widened;  // integer scalar: the 64-bit local the back-end must see on LP64
  int64_t length;   // array: elements prepared
  int64_t keep;     // array: elements copied back
  char letter;      // character argument
};

struct ArgCase {
  const char* cls;
  const char* flags;  // z: starts at 0, w: workspace length, c: conditional, q: answers a query
  Config cfg[3];
};

struct Case {
  const char* name;
  const char* symbol;
  const char* ao_symbol;
  const char* format;
  char result;  // - i l s d c z a
  bool short_frame;
  bool checked;
  bool has_query;
  int nargs;
  int offset;  // 1 when a result address goes before the arguments
  ArgCase args[32];
};

enum ConfigIndex { kHolds = 0, kFails = 1, kQuery = 2 };

extern const Case kCases[];
extern const int kCaseCount;

inline bool has(const char* s, char c) { return std::strchr(s, c) != nullptr; }
inline bool is_scalar(const ArgCase& a) { return !std::strcmp(a.cls, "i") || !std::strcmp(a.cls, "o"); }
inline bool is_array(const ArgCase& a) { return (a.cls[0] == 'i' && a.cls[1] != '\0') || a.cls[0] == 'l'; }
inline bool has_arrays(const Case& c) {
  return std::any_of(c.args, c.args + c.nargs, [](const ArgCase& a) { return is_array(a); });
}
// The argument that returns info (an output integer that starts at 0), or -1.
inline int info_index(const Case& c) {
  for (int k = 0; k < c.nargs; ++k)
    if (!std::strcmp(c.args[k].cls, "o") && has(c.args[k].flags, 'z')) return k;
  return -1;
}

// The bits of a value, zero-extended to 64.
template <class T>
uint64_t bits(T v) {
  uint64_t b = 0;
  std::memcpy(&b, &v, sizeof v);
  return b;
}

// What the back-end wrote: 64-bit values with a high half the caller must never see.
constexpr uint64_t kWrittenHigh = 0x5A5A5A5A00000000ull;
inline int64_t written_scalar(int k) { return static_cast<int64_t>(kWrittenHigh | static_cast<uint64_t>(k + 1)); }
inline int64_t written_element(int k, int64_t i) {
  return static_cast<int64_t>(kWrittenHigh | static_cast<uint64_t>(0x10000 * (k + 1) + i));
}
// Contents of the caller's arrays before the call, of either sign.
inline int32_t pattern(int k, int64_t i) { return static_cast<int32_t>((i % 2 ? -1 : 1) * (1000 * (k + 1) + i)); }

// What the probe hook saw during the call of `symbol`.
struct Seen {
  const char* symbol = nullptr;
  const Case* c = nullptr;
  int cfg = 0;
  bool lp64 = true;
  bool called = false;
  std::vector<uint64_t> words;
  std::vector<int64_t> scalar;              // value behind an integer scalar's word
  std::vector<std::vector<int64_t>> array;  // prepared elements behind an array's word
  int reports = 0;                          // cdecl_xerbla reports: count, last name and number
  std::string report_name;
  int32_t report_number = 0;
  std::vector<std::string> lapack_symbols;  // every qnl_lapack_ symbol reached
};
Seen& seen();

// Answers a qnl_serv_lsame call like the real one; false for any other symbol.
bool answer_lsame(const char* symbol, const uint64_t* w);
// Whether `symbol` is the back-end symbol of case `c` (or its offload twin).
bool is_symbol_of(const Case& c, const char* symbol);

// Installs the hook: lsame answers like the real one; the case's symbol is
// looked at and its outputs written as kWritten*.
void install_hook();

// The caller's side of one call of a case.
struct Call {
  const Case& c;
  int cfg;
  bool lp64;
  std::vector<std::vector<int64_t>> cells;  // one backing store per argument
  std::vector<void*> ptrs;
  char letters[32];
  char result_char[4] = {0, 0, 0, 0};

  Call(const Case& cs, int config, bool is_lp64);
  // Calls the exported spelling; returns the result's bits (complex: real part bits, imaginary in *hi).
  uint64_t run(const char* spelling, uint64_t* hi = nullptr);
  int32_t int32_at(int k, int64_t i = 0) const { return reinterpret_cast<const int32_t*>(cells[k].data())[i]; }
  int64_t int64_at(int k, int64_t i = 0) const { return cells[k][i]; }
  // Address the caller passes for argument k (arguments counted without the result).
  void* arg(int k) const { return ptrs[k]; }
};

inline void set_layer(bool lp64) {
  // Called directly: the link to the facade is what loads it.
  ASSERT_EQ(QNL_Set_Interface_Layer(lp64 ? 0 : 1), lp64 ? 0 : 1);
}

const Case* find_case(const char* name);

}  // namespace lapack_test
