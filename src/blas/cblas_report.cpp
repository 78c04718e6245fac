// The report routines of the C layer.
#include <cstddef>
#include <cstdint>

#include "entry.h"
#include "report.h"
#include "services_gen.h"

extern "C" {

// The number goes to the error routine widened to 64 bits.
QNL_HIDDEN void cblas_report_parameter(const char* name, int32_t number) {
  qnl::report(name, qnl::name_length(name), int64_t{number});
}

QNL_HIDDEN void cblas_report_no_memory(const char* name) {
  qnl::report(name, qnl::name_length(name), int64_t{qnl::kReportCblasNoMemory});
}
}
