// Routines whose answer depends on the lengths of their character arguments.
// The facade hands the back-end 1 for every such length, whatever the caller
// passed, so the library's own version would see strings of one character.
#include <cctype>
#include <cstddef>
#include <cstdint>

#include "forward.h"

// lsamen(n, ca, cb): the library's version answers false whenever a length is
// below n, that is always here. The caller's strings hold at least n
// characters (that is lsamen's contract), so the first n are compared.
extern "C" QNL_REF_EXPORT int64_t qnl_lapack_lsamen(const int64_t* n, const char* ca, const char* cb, size_t, size_t) {
  for (int64_t i = 0; i < *n; ++i)
    if (std::toupper(static_cast<unsigned char>(ca[i])) != std::toupper(static_cast<unsigned char>(cb[i]))) return 0;
  return 1;
}
