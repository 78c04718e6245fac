// Service symbols of the probe whose behaviour the facade's frames rely on:
// scratch memory, the clock and the verbose mode. Each still records its call.
#include "backend_services.h"
#include "probe_backend.h"

using qnl_probe::word;

void* qnl_serv_allocate(uint64_t size, int32_t alignment) {
  const uint64_t w[] = {word(size), word(alignment)};
  qnl_probe_record("qnl_serv_allocate", QNL_PROBE_LIBRARY, w, 2);
  return qnl_probe_allocate(size, alignment);
}

void qnl_serv_deallocate(void* p) {
  const uint64_t w[] = {word(p)};
  qnl_probe_record("qnl_serv_deallocate", QNL_PROBE_LIBRARY, w, 1);
  qnl_probe_deallocate(p);
}

double qnl_serv_dsecnd(void) {
  qnl_probe_record("qnl_serv_dsecnd", QNL_PROBE_LIBRARY, nullptr, 0);
  return qnl_probe_clock();
}

void* qnl_serv_verbose_mode(void) {
  qnl_probe_record("qnl_serv_verbose_mode", QNL_PROBE_LIBRARY, nullptr, 0);
  return qnl_probe_verbose_mode();
}

int32_t qnl_serv_verbose(int32_t mode) {
  const uint64_t w[] = {word(mode)};
  qnl_probe_record("qnl_serv_verbose", QNL_PROBE_LIBRARY, w, 1);
  int32_t old = *qnl_probe_verbose_mode();
  *qnl_probe_verbose_mode() = mode;
  return old;
}

void qnl_serv_print_verbose_info(int32_t width, void* record, double seconds) {
  qnl_probe_verbose_print(width, static_cast<const char*>(record), seconds);
}
