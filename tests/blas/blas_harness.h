// Calls any BLAS entry with arguments built from its row of the routine table, and works out
// independently what the probe back-end must have received and what the record must read.
#pragma once
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "blas_cases.inc"
#include "probe_backend.h"
#include "test_util.h"

extern "C" int QNL_Set_Interface_Layer(int);

namespace blas_test {

struct cfloat {
  float re, im;
};
struct cdouble {
  double re, im;
};

enum Layer { LP64 = 0, ILP64 = 1 };

// The names of a comma-separated list.
inline std::vector<std::string> split(const char* list) {
  std::vector<std::string> out(1);
  for (const char* p = list; *p; ++p)
    if (*p == ',')
      out.emplace_back();
    else
      out.back() += *p;
  return out;
}

inline bool starts(const std::string& s, const char* prefix) { return s.rfind(prefix, 0) == 0; }

using qnl_test::upper;

// One argument of a call: its storage, what the caller passes, and what should arrive.
struct Argument {
  std::string name;
  char role;
  int64_t cell[8] = {};  // integer storage, wide enough for the batch's arrays
  std::string text;      // character options
  void* pointer = nullptr;
  int32_t low = 0;  // the caller's value as a 32-bit integer (what the record shows)
};

// Builds arguments that pass every checker: option letters valid for their role (given as
// whole words, of which only the first letter counts), sizes small, leading dimensions
// large, increments non-zero. Integers carry a sentinel upper half: 0xffffffff on LP64,
// which a wrong 64-bit read would turn negative; 1 on ILP64 for routines without a checker
// (the record still shows the low half); 0 for checked ILP64 routines, whose sizes the
// checker reads at 64 bits.
class Call {
 public:
  Call(const char* roles, const char* args, Layer layer, bool checked) : layer_(layer) {
    auto names = split(args);
    const size_t n = std::strlen(roles);
    args_.resize(n);
    static double scratch[64];
    for (size_t i = 0; i < n; ++i) {
      Argument& a = args_[i];
      a.name = names[i];
      a.role = roles[i];
      if (a.role == 'c') {
        a.text = starts(a.name, "uplo")   ? "Upper"
                 : starts(a.name, "side") ? "Left"
                 : starts(a.name, "diag") ? "Non-unit"
                 : starts(a.name, "iden") ? "A-matrix"
                                          : "No transpose";
        if (a.name.find("_array") != std::string::npos) a.text = "N";
        a.pointer = a.text.data();
      } else if (a.role == 'i') {
        int32_t v = starts(a.name, "inc")  ? static_cast<int32_t>(2 + i)
                    : starts(a.name, "ld") ? static_cast<int32_t>(200 + i)
                    : a.name == "nz"       ? 3
                                           : static_cast<int32_t>(1 + i % 5);
        a.low = v;
        const uint64_t high = layer == LP64 ? 0xffffffff00000000ull : checked ? 0 : 0x100000000ull;
        a.cell[0] = static_cast<int64_t>(high | static_cast<uint32_t>(v));
        a.pointer = a.cell;
      } else if (a.role == 'x') {
        const int64_t idx[4] = {-1, 5, 7, 9};
        set_ints(a, idx, 4);
        a.pointer = a.cell;
      } else if (a.name.find("_array") != std::string::npos || a.name.rfind("group_", 0) == 0) {
        // the batch: one group whose sizes and leading dimensions pass
        int64_t v = a.name == "group_count" || a.name == "group_size" ? 1 : starts(a.name, "ld") ? 50 : 4;
        set_ints(a, &v, 1);
        a.pointer = a.cell;
      } else {
        a.pointer = &scratch[i * 2];
      }
    }
  }

  // Integers of an array at the caller's width.
  void set_ints(Argument& a, const int64_t* v, int n) {
    for (int k = 0; k < n; ++k) {
      if (layer_ == LP64)
        reinterpret_cast<int32_t*>(a.cell)[k] = static_cast<int32_t>(v[k]);
      else
        a.cell[k] = v[k];
    }
  }

  Argument& operator[](size_t i) { return args_[i]; }
  Argument& named(const std::string& n) {
    for (auto& a : args_)
      if (a.name == n) return a;
    ADD_FAILURE() << "no argument " << n;
    return args_[0];
  }
  size_t size() const { return args_.size(); }

  // Calls `fn` with the arguments (16 words: the callee reads only its own).
  template <class R>
  R invoke(void* fn, void* extra = nullptr) const {
    void* p[16] = {};
    for (size_t i = 0; i < args_.size(); ++i) p[i] = args_[i].pointer;
    if (extra) p[args_.size()] = extra;
    using F = R (*)(void*, void*, void*, void*, void*, void*, void*, void*, void*, void*, void*, void*, void*, void*,
                    void*, void*);
    return reinterpret_cast<F>(fn)(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11], p[12],
                                   p[13], p[14], p[15]);
  }

  // The record the entry must print: UPPER name, one conversion per argument.
  std::string record(const std::string& name, const void* result_pointer) const {
    std::string out = upper(name) + "(";
    char buf[64];
    bool first = true;
    auto add = [&](const char* s) {
      if (!first) out += ",";
      out += s;
      first = false;
    };
    if (result_pointer) {
      std::snprintf(buf, sizeof buf, "%p", result_pointer);
      add(buf);
    }
    for (const auto& a : args_) {
      if (a.role == 'c')
        std::snprintf(buf, sizeof buf, "%c", a.text[0]);
      else if (a.role == 'i')
        std::snprintf(buf, sizeof buf, "%d", a.low);
      else
        std::snprintf(buf, sizeof buf, "%p", a.pointer);
      add(buf);
    }
    out += ")";
    return out.substr(0, 199);  // the record holds at most 199 characters
  }

  // Checks the words that reached the back-end against the roles: integers widened into
  // the frame's own locals on LP64 and the caller's pointers on ILP64; index arrays copied
  // and sign-extended on LP64; the batch's layer word; one hidden length 1 per option.
  void expect_words(const qnl_probe::Call& c, bool complex_result, bool batch) const {
    int w = complex_result ? 1 : 0;
    if (complex_result) {
      EXPECT_NE(c.word[0], 0u) << "result pointer";
    }
    std::vector<uint64_t> int_values;
    std::vector<uint64_t> index_values;
    for (const auto& a : args_) {
      const uint64_t got = c.word[w++];
      const uint64_t caller = reinterpret_cast<uintptr_t>(a.pointer);
      if (a.role == 'i') {
        if (layer_ == LP64) {
          EXPECT_NE(got, caller) << a.name << " must arrive as the address of a widened local";
          int_values.push_back(static_cast<uint64_t>(static_cast<int64_t>(a.low)));
        } else {
          EXPECT_EQ(got, caller) << a.name << " must arrive as the caller's pointer";
          int_values.push_back(static_cast<uint64_t>(a.cell[0]));
        }
      } else if (a.role == 'x') {
        if (layer_ == LP64) {
          EXPECT_NE(got, caller) << a.name << " must arrive as the copy";
          EXPECT_EQ(got % 128, 0u) << "the copy is aligned to 128";
        } else {
          EXPECT_EQ(got, caller);
        }
        // as many as nz says, at most the 4 the probe keeps
        const int64_t nz = layer_ == LP64 ? args_[0].low : args_[0].cell[0];
        const uint64_t idx[4] = {~0ull, 5, 7, 9};
        for (int64_t i = 0; i < nz && i < 4; ++i) index_values.push_back(idx[i]);
      } else {
        EXPECT_EQ(got, caller) << a.name;
      }
    }
    if (batch) {
      EXPECT_EQ(c.word[w++], layer_ == LP64 ? 1u : 0u) << "the batch's layer word";
    }
    for (const auto& a : args_) {
      if (a.role == 'c') {
        EXPECT_EQ(c.word[w++], 1u) << "hidden length of " << a.name;
      }
    }
    for (uint64_t v : int_values) EXPECT_EQ(c.word[w++], v) << "integer value at the back-end";
    for (uint64_t v : index_values) EXPECT_EQ(c.word[w++], v) << "index at the back-end";
    EXPECT_EQ(c.nwords, w);
  }

 private:
  Layer layer_;
  std::vector<Argument> args_;
};

inline void* entry_point(const std::string& name) { return dlsym(RTLD_DEFAULT, name.c_str()); }

inline void set_layer(Layer layer) { ASSERT_EQ(QNL_Set_Interface_Layer(layer), layer); }
inline void set_verbose(int mode) { *qnl_probe_verbose_mode() = mode; }

inline const qnl_probe::Call* last_call_of(const char* symbol) {
  for (int i = qnl_probe_count() - 1; i >= 0; --i) {
    const qnl_probe::Call* c = qnl_probe_call(i);
    if (c && std::strcmp(c->symbol, symbol) == 0) return c;
  }
  return nullptr;
}

// The report through cdecl_xerbla as the probe saw it: number, name text and length.
struct Report {
  int32_t number;
  std::string name;
  int32_t length;
};
inline std::vector<Report> reports() {
  std::vector<Report> out;
  for (int i = 0; i < qnl_probe_count(); ++i) {
    const qnl_probe::Call* c = qnl_probe_call(i);
    if (!c || std::strcmp(c->symbol, "qnl_serv_xerbla") != 0) continue;
    char name[17] = {};
    std::memcpy(name, &c->word[4], 16);
    const auto len = static_cast<int32_t>(c->word[2]);
    out.push_back({static_cast<int32_t>(c->word[3]), std::string(name, len > 16 ? 16 : len), len});
  }
  return out;
}

inline int blas_calls() {
  int n = 0;
  for (int i = 0; i < qnl_probe_count(); ++i) {
    const qnl_probe::Call* c = qnl_probe_call(i);
    n += c && std::strncmp(c->symbol, "qnl_blas_", 9) == 0;
  }
  return n;
}

}  // namespace blas_test
