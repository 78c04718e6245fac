/* Random numbers through qnl_rt: two streams (MT19937 and Philox4x32-10) with the same
 * seed, a million uniform and Gaussian doubles and Poisson integers from each, and their
 * sample means and variances beside the exact ones. */
#include <stdio.h>
#include <stdlib.h>

#include "qnl_vsl.h"

enum { kCount = 1000000 };

static void report(const char* what, double sum, double sum2, double mean, double variance) {
  const double m = sum / kCount;
  const double v = sum2 / kCount - m * m;
  printf("  %-28s mean %9.5f (exact %9.5f)   variance %9.5f (exact %9.5f)\n", what, m, mean, v, variance);
}

static void doubles(const char* what, const double* x, double mean, double variance) {
  double s = 0, s2 = 0;
  for (int i = 0; i < kCount; ++i) {
    s += x[i];
    s2 += x[i] * x[i];
  }
  report(what, s, s2, mean, variance);
}

static void integers(const char* what, const int* x, double mean, double variance) {
  double s = 0, s2 = 0;
  for (int i = 0; i < kCount; ++i) {
    s += x[i];
    s2 += (double)x[i] * x[i];
  }
  report(what, s, s2, mean, variance);
}

static int check(int status, const char* call) {
  if (status != VSL_STATUS_OK) fprintf(stderr, "%s failed with status %d\n", call, status);
  return status != VSL_STATUS_OK;
}

int main(void) {
  const struct {
    const char* name;
    int brng;
  } generators[] = {{"MT19937", VSL_BRNG_MT19937}, {"Philox4x32-10", VSL_BRNG_PHILOX4X32X10}};
  const int poisson_method = 0; /* the first Poisson method of the kernel library */
  double* x = malloc(kCount * sizeof *x);
  int* k = malloc(kCount * sizeof *k);
  if (!x || !k) return 1;
  int failed = 0;
  for (size_t g = 0; g < sizeof generators / sizeof generators[0] && !failed; ++g) {
    VSLStreamStatePtr stream = NULL;
    printf("%s, seed 777:\n", generators[g].name);
    if (check(vslNewStream(&stream, generators[g].brng, 777), "vslNewStream")) {
      failed = 1;
      break;
    }
    failed |= check(vdRngUniform(VSL_RNG_METHOD_UNIFORM_STD, stream, kCount, x, 0.0, 1.0), "vdRngUniform");
    if (!failed) doubles("uniform on [0, 1)", x, 0.5, 1.0 / 12);
    failed |= check(vdRngGaussian(VSL_RNG_METHOD_GAUSSIAN_ICDF, stream, kCount, x, 2.0, 3.0), "vdRngGaussian");
    if (!failed) doubles("Gaussian, mean 2, sigma 3", x, 2.0, 9.0);
    failed |= check(viRngPoisson(poisson_method, stream, kCount, k, 4.5), "viRngPoisson");
    if (!failed) integers("Poisson, lambda 4.5", k, 4.5, 4.5);
    failed |= check(vslDeleteStream(&stream), "vslDeleteStream");
  }
  free(x);
  free(k);
  return failed;
}
