// The one road of a frame's report to the error routine: every entry that
// rejects an argument or runs out of scratch names the routine and a number
// through cdecl_xerbla, and the text the user sees is the error routine's.
#pragma once
#include <cstddef>
#include <cstdint>

#include "entry.h"
#include "messages.h"
#include "services_gen.h"

namespace qnl {

// A number a report carries in place of a parameter position.
enum ReportNumber : int32_t {
  // The catalogue row that names the routine: "... Not enough work memory in function %s".
  kReportNoWorkMemory = row::kNoWorkMemory,
  // A failed scratch allocation of the C layer: a fixed value, not a parameter position.
  kReportCblasNoMemory = 1000,
};

// Length of a routine's C name, by a scan bounded at 4096 bytes.
inline int32_t name_length(const char* name) {
  int32_t n = 0;
  while (n < 4096 && name[n] != '\0') ++n;
  return n;
}

// Reports `number` under the first `length` bytes of `name`. The number reaches
// the error routine by address, in a cell of the width `W` the caller reports at.
template <class W>
QNL_COLD void report(const char* name, int32_t length, W number) {
  W cell = number;
  // the error routine reads the number at the width of the layer it reports for
  qnl_body_cdecl_xerbla(name, reinterpret_cast<const int32_t*>(&cell), length);
}

}  // namespace qnl
