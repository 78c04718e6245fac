// The report routines of the C layer.
#include <cstddef>
#include <cstdint>

#include "entry.h"
#include "services_gen.h"

namespace {

// The routine's name and the number, widened to 64 bits, to the error hook.
void report(const char* name, int64_t number) {
  int64_t cell = number;
  size_t length = 0;
  while (length < 4096 && name[length] != '\0') ++length;
  qnl_body_cdecl_xerbla(const_cast<char*>(name), &cell, static_cast<int32_t>(length));
}

}  // namespace

extern "C" {

QNL_HIDDEN void cblas_report_parameter(const char* name, int32_t number) { report(name, number); }

QNL_HIDDEN void cblas_report_no_memory(const char* name) { report(name, 1000); }
}
