/* C programs written for FFTW 3, compiled against the library's fftw3.h as it
 * stands: the manual's one-dimensional pattern (fftw_malloc, plan, execute,
 * destroy, fftw_free), a real 2-D transform on fftw_alloc_real/_complex, the
 * threads and wisdom calls. Each returns the largest error of a round trip. */
#include <fftw3.h>
#include <math.h>

double fftw_c_program_1d(int N) {
  fftw_complex* in = (fftw_complex*)fftw_malloc(sizeof(fftw_complex) * N);
  fftw_complex* out = (fftw_complex*)fftw_malloc(sizeof(fftw_complex) * N);
  fftw_plan p = fftw_plan_dft_1d(N, in, out, FFTW_FORWARD, FFTW_MEASURE);
  fftw_plan q = fftw_plan_dft_1d(N, out, in, FFTW_BACKWARD, FFTW_MEASURE);
  double err = 0;
  int i;
  for (i = 0; i < N; ++i) in[i][0] = cos(3.0 * i), in[i][1] = sin(5.0 * i);
  fftw_execute(p); /* repeat as needed */
  fftw_execute(q);
  for (i = 0; i < N; ++i) err = fmax(err, hypot(in[i][0] / N - cos(3.0 * i), in[i][1] / N - sin(5.0 * i)));
  fftw_destroy_plan(p);
  fftw_destroy_plan(q);
  fftw_free(in);
  fftw_free(out);
  return err;
}

double fftw_c_program_real_2d(int n0, int n1) {
  double* r = fftw_alloc_real((size_t)n0 * n1);
  fftwf_complex* unused = fftwf_alloc_complex(4);
  fftw_complex* c = fftw_alloc_complex((size_t)n0 * (n1 / 2 + 1));
  double err = !fftw_init_threads();
  int i;
  fftw_plan_with_nthreads(2);
  fftw_plan fwd = fftw_plan_dft_r2c_2d(n0, n1, r, c, FFTW_ESTIMATE | FFTW_DESTROY_INPUT);
  fftw_plan bwd = fftw_plan_dft_c2r_2d(n0, n1, c, r, FFTW_ESTIMATE);
  char* wisdom = fftw_export_wisdom_to_string();
  for (i = 0; i < n0 * n1; ++i) r[i] = (i % 7) - 3.0;
  fftw_execute(fwd);
  fftw_execute(bwd);
  for (i = 0; i < n0 * n1; ++i) err = fmax(err, fabs(r[i] / (n0 * n1) - ((i % 7) - 3.0)));
  if (wisdom) fftw_free(wisdom);
  fftw_forget_wisdom();
  fftw_destroy_plan(fwd);
  fftw_destroy_plan(bwd);
  fftw_cleanup_threads();
  fftw_free(r);
  fftw_free(c);
  fftwf_free(unused);
  return err;
}
