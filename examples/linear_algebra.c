/* Multiplies, solves and factors a small system through the Fortran BLAS and
 * LAPACK entries of libqnl_rt.so, and prints each result with its residual.
 * Run it with QNL_VERBOSE=1 to see one trace line per call. */
#include <math.h>
#include <stdio.h>

/* The Fortran entries, LP64: 32-bit integers, every argument by address, and
 * a hidden length after the arguments for each character argument. */
void dgemm_(const char*, const char*, const int*, const int*, const int*, const double*, const double*, const int*,
            const double*, const int*, const double*, double*, const int*, size_t, size_t);
void dgesv_(const int*, const int*, double*, const int*, int*, double*, const int*, int*);
void dpotrf_(const char*, const int*, double*, const int*, int*, size_t);

enum { N = 4 };

static void print_matrix(const char* title, const double* a, int rows, int cols) {
  printf("%s\n", title);
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) printf(" %9.4f", a[i + j * rows]);
    printf("\n");
  }
}

int main(void) {
  const int n = N, one = 1;
  const double alpha = 1, beta = 0;
  /* Column-major A, well conditioned; B = A^T. */
  double a[N * N], b[N * N], c[N * N];
  for (int i = 0; i < N; ++i)
    for (int j = 0; j < N; ++j) {
      a[i + j * N] = (i == j) ? N + 1.0 : 1.0 / (1 + i + 2 * j);
      b[j + i * N] = a[i + j * N];
    }

  /* C = A A^T, symmetric positive definite */
  dgemm_("N", "N", &n, &n, &n, &alpha, a, &n, b, &n, &beta, c, &n, 1, 1);
  print_matrix("dgemm: C = A * A^T", c, N, N);

  /* Solve A x = r for r = A (1, 2, 3, 4)^T */
  double lu[N * N], x[N], r[N];
  int ipiv[N], info = -1;
  for (int i = 0; i < N; ++i) {
    r[i] = 0;
    for (int j = 0; j < N; ++j) r[i] += a[i + j * N] * (j + 1);
    x[i] = r[i];
  }
  for (int k = 0; k < N * N; ++k) lu[k] = a[k];
  dgesv_(&n, &one, lu, &n, ipiv, x, &n, &info);
  double err = 0;
  for (int i = 0; i < N; ++i) err = fmax(err, fabs(x[i] - (i + 1)));
  printf("dgesv: info %d, x =", info);
  for (int i = 0; i < N; ++i) printf(" %.12f", x[i]);
  printf("  (max error %.1e)\n", err);

  /* Cholesky factor of C: L L^T = C */
  double l[N * N];
  for (int k = 0; k < N * N; ++k) l[k] = c[k];
  dpotrf_("L", &n, l, &n, &info, 1);
  for (int j = 0; j < N; ++j)
    for (int i = 0; i < j; ++i) l[i + j * N] = 0;
  double res = 0;
  for (int i = 0; i < N; ++i)
    for (int j = 0; j < N; ++j) {
      double s = 0;
      for (int k = 0; k < N; ++k) s += l[i + k * N] * l[j + k * N];
      res = fmax(res, fabs(s - c[i + j * N]));
    }
  print_matrix("dpotrf: L", l, N, N);
  printf("dpotrf: info %d, max |L L^T - C| = %.1e\n", info, res);
  return info != 0 || err > 1e-12 || res > 1e-12;
}
