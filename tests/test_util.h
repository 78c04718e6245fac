// Helpers shared by the tests.
#pragma once
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace qnl_test {

// Death tests match what the child wrote to stderr; the library prints to stdout.
inline void stdout_to_stderr() { dup2(STDERR_FILENO, STDOUT_FILENO); }

// An exported symbol of the process, as a C or Fortran caller would link it.
inline void* exported(const char* name) { return dlsym(RTLD_DEFAULT, name); }

template <class F>
F* exported_as(const char* name) {
  return reinterpret_cast<F*>(exported(name));
}

// The upper-case spelling of a routine name.
inline std::string upper(std::string s) {
  for (char& c : s) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  return s;
}

// A Fortran entry's three spellings (lower, lower_, UPPER) are one body; UPPER_ is not exported.
inline void expect_fortran_spellings(const std::string& lower) {
  void* body = exported(lower.c_str());
  ASSERT_NE(body, nullptr) << lower;
  EXPECT_EQ(exported((lower + "_").c_str()), body) << lower;
  EXPECT_EQ(exported(upper(lower).c_str()), body) << lower;
  EXPECT_EQ(exported((upper(lower) + "_").c_str()), nullptr) << lower;
}

// What `call` prints on standard output, where the library reports.
template <class F>
std::string printed(F&& call) {
  testing::internal::CaptureStdout();
  call();
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

}  // namespace qnl_test
