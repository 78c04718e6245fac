#include "verbose.h"

#include <cstdarg>
#include <cstdio>

namespace qnl::verbose {

const int32_t kUnknownMode = -1;

void format_record(char* buf, const char* format, ...) {
  va_list ap;
  va_start(ap, format);
  std::vsnprintf(buf, kRecordSize, format, ap);
  va_end(ap);
  buf[kRecordSize - 1] = '\0';
}

void print_record(Site& site, double t, const char* record) {
  site.width = interface_layer() == 0 ? 1 : 2;
  qnl_body_qnl_serv_iface_print_verbose_info(site.width, record, t);
}

}  // namespace qnl::verbose
