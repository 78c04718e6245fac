/* A program of a library user: built against the installed headers and
 * library, it multiplies through the C layer and asks which back-end served. */
#include <cblas.h>
#include <qnl_service.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  /* Row-major [1 2; 3 4] times [5 6; 7 8] is [19 22; 43 50]. */
  const double a[] = {1, 2, 3, 4}, b[] = {5, 6, 7, 8}, want[] = {19, 22, 43, 50};
  double c[4] = {0};
  cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, 2, 2, 2, 1.0, a, 2, b, 2, 0.0, c, 2);
  char version[128] = "";
  QNL_Get_Version_String(version, sizeof version);
  printf("consumer: %g %g %g %g on %s\n", c[0], c[1], c[2], c[3], version);
  return memcmp(c, want, sizeof c) != 0 || version[0] == '\0';
}
