/* A C program written for the standard CBLAS, compiled against the library's header as it
 * stands: the older enumeration names, values by value, complex data behind void pointers. */
#include <cblas.h>

int cblas_c_program(void) {
  double a[6] = {1, 2, 3, 4, 5, 6}, b[6] = {1, 0, 0, 1, 1, 1}, c[4] = {0};
  double z[4] = {1, 2, 3, 4}, dot[2];
  enum CBLAS_ORDER order = CblasRowMajor;
  enum CBLAS_TRANSPOSE no = CblasNoTrans;
  CBLAS_INDEX i;
  cblas_dgemm(order, no, no, 2, 2, 3, 1.0, a, 3, b, 2, 0.0, c, 2);
  cblas_zdotc_sub(2, z, 1, z, 1, dot);
  cblas_dscal(6, 2.0, a, 1);
  cblas_dtrsv(CblasColMajor, CblasUpper, CblasNoTrans, CblasNonUnit, 2, a, 2, c, 1);
  i = cblas_idamax(6, a, 1);
  return (int)i;
}
