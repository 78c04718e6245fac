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

// The checkers' letter compare answers truly, so that valid options pass; it is not
// recorded, being part of every checked call's own cost.
int32_t qnl_serv_lsame(void* a, void* b, int32_t, int32_t) {
  auto up = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; };
  return up(*static_cast<const char*>(a)) == up(*static_cast<const char*>(b));
}

// The report hook records its three arguments, then the low 32 bits of the reported number
// and up to 16 bytes of the name, both read before the caller's frame is gone.
void qnl_serv_xerbla(void* name, void* info, int32_t len) {
  uint64_t w[6] = {word(name), word(info), word(len), word(*static_cast<const int32_t*>(info)), 0, 0};
  std::memcpy(&w[4], name, len < 0 ? 0 : len < 16 ? static_cast<size_t>(len) : 16);
  qnl_probe_record("qnl_serv_xerbla", QNL_PROBE_LIBRARY, w, 6);
}
