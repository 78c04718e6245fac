/* Calls service entries of libqnl_rt.so and prints what the facade chose:
 * the back-end library, its thread count, scratch memory and a timing. */
#include <stdint.h>
#include <stdio.h>

#include "qnl_service.h"

int main(void) {
  QNLVersion v;
  char text[128];
  QNL_Get_Version(&v);
  QNL_Get_Version_String(text, sizeof text);
  printf("back-end   : %s\n", text);
  printf("layer      : %s (version %d.%d.%d)\n", v.Platform, v.MajorVersion, v.MinorVersion, v.UpdateVersion);
  printf("threads    : %d\n", QNL_Get_Max_Threads());

  double t0 = dsecnd();
  double* x = QNL_malloc(1 << 20, 128);
  for (int i = 0; i < (1 << 17); ++i) x[i] = i * 0.5;
  double sum = 0;
  for (int i = 0; i < (1 << 17); ++i) sum += x[i];
  int32_t buffers = 0;
  int64_t bytes = QNL_Mem_Stat(&buffers);
  printf("scratch    : %lld bytes in %d buffer(s), aligned %s\n", (long long)bytes, buffers,
         ((uintptr_t)x % 128) == 0 ? "to 128" : "badly");
  QNL_free(x);
  printf("sum        : %.1f in %.3f ms\n", sum, (dsecnd() - t0) * 1e3);
  return 0;
}
