/* Start-up cost: loads, binds and computes one ddot, writes its result and
 * leaves at once. Built twice: against libqnl_rt.so (LP64 caller) and against
 * the back-end's own ILP64 OpenBLAS build (64-bit integers); bench/cost/startup
 * times both from process start to the result. */
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#ifdef QNL_DIRECT
typedef int64_t blas_int;
#else
typedef int32_t blas_int;
#endif

double ddot_(const blas_int* n, const double* x, const blas_int* incx, const double* y, const blas_int* incy);

int main(void) {
  const double x[1] = {3}, y[1] = {4};
  const blas_int one = 1;
  char line[32];
  int len = snprintf(line, sizeof line, "%g\n", ddot_(&one, x, &one, y, &one));
  /* No buffered output and no exit functions: the result is the last thing done. */
  if (write(1, line, (size_t)len) != len) return 1;
  _exit(0);
}
