/* Solves and factors through the LAPACKE C interface of libqnl_rt.so with
 * row-major data: LAPACKE_dgesv on a 4x4 system with two right-hand sides,
 * then LAPACKE_dsyev on a symmetric 4x4 matrix; prints the residuals. */
#include <math.h>
#include <stdio.h>

#include "lapacke.h"

#define N 4
#define NRHS 2

int main(void) {
  double a[N][N], a0[N][N], b[N][NRHS], b0[N][NRHS];
  for (int i = 0; i < N; ++i) {
    for (int j = 0; j < N; ++j) a[i][j] = a0[i][j] = (i == j ? 10.0 : 0.0) + 1.0 / (1.0 + i + 2 * j);
    for (int k = 0; k < NRHS; ++k) b[i][k] = b0[i][k] = 1.0 + i - k;
  }
  lapack_int ipiv[N];
  lapack_int info = LAPACKE_dgesv(LAPACK_ROW_MAJOR, N, NRHS, &a[0][0], N, ipiv, &b[0][0], NRHS);
  double res = 0.0;
  for (int i = 0; i < N; ++i)
    for (int k = 0; k < NRHS; ++k) {
      double r = -b0[i][k];
      for (int j = 0; j < N; ++j) r += a0[i][j] * b[j][k];
      res = fmax(res, fabs(r));
    }
  printf("LAPACKE_dgesv (row-major): info %d, max |A x - b| = %.2e\n", (int)info, res);

  double s[N][N], s0[N][N], w[N];
  for (int i = 0; i < N; ++i)
    for (int j = 0; j < N; ++j) s[i][j] = s0[i][j] = 1.0 / (1.0 + i + j) + (i == j ? 2.0 : 0.0);
  info = LAPACKE_dsyev(LAPACK_ROW_MAJOR, 'V', 'U', N, &s[0][0], N, w);
  /* Row-major: eigenvector k is column k of s. */
  double eres = 0.0;
  for (int k = 0; k < N; ++k)
    for (int i = 0; i < N; ++i) {
      double r = -w[k] * s[i][k];
      for (int j = 0; j < N; ++j) r += s0[i][j] * s[j][k];
      eres = fmax(eres, fabs(r));
    }
  printf("LAPACKE_dsyev (row-major): info %d, eigenvalues %.6f %.6f %.6f %.6f, max |S v - w v| = %.2e\n", (int)info,
         w[0], w[1], w[2], w[3], eres);
  return (res < 1e-10 && eres < 1e-10 && info == 0) ? 0 : 1;
}
