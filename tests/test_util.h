// Helpers shared by the tests.
#pragma once
#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

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

}  // namespace qnl_test
