/* A C99 program that includes <complex.h> before fftw3.h, so that fftw_complex
 * is double _Complex, as FFTW's manual allows. Returns the round-trip error. */
#include <complex.h>
#include <fftw3.h>
#include <math.h>

double fftw_c99_program(int n) {
  fftw_complex* a = fftw_alloc_complex(n);
  fftw_plan p = fftw_plan_dft_1d(n, a, a, FFTW_FORWARD, FFTW_ESTIMATE);
  fftw_plan q = fftw_plan_dft_1d(n, a, a, FFTW_BACKWARD, FFTW_ESTIMATE);
  double err = 0;
  int i;
  for (i = 0; i < n; ++i) a[i] = i + 2.0 * I;
  fftw_execute(p);
  fftw_execute(q);
  for (i = 0; i < n; ++i) err = fmax(err, cabs(a[i] / n - (i + 2.0 * I)));
  fftw_destroy_plan(p);
  fftw_destroy_plan(q);
  fftw_free(a);
  return err;
}
