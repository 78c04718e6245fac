/* A two-tone signal through the vector-math and transform families of
 * libqnl_rt.so: the samples come from vdSin, the spectrum from a DFTI
 * descriptor and again from an FFTW3 plan, and the descriptor's backward
 * transform brings the signal back. Prints the two strongest bins and the
 * differences between the roads. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "fftw3.h"
#include "qnl_dfti.h"
#include "qnl_vml.h"

enum { N = 256, TONE1 = 12, TONE2 = 40 };

int main(void) {
  const double two_pi = 6.283185307179586;
  double phase1[N], phase2[N], s1[N], s2[N], signal[N];
  for (int i = 0; i < N; ++i) {
    phase1[i] = two_pi * TONE1 * i / N;
    phase2[i] = two_pi * TONE2 * i / N;
  }
  vdSin(N, phase1, s1);
  vdSin(N, phase2, s2);
  for (int i = 0; i < N; ++i) signal[i] = s1[i] + 0.5 * s2[i];

  /* Complex in-place forward transform through a descriptor. */
  double* z = malloc(2 * N * sizeof(double));
  for (int i = 0; i < N; ++i) z[2 * i] = signal[i], z[2 * i + 1] = 0.0;
  DFTI_DESCRIPTOR_HANDLE d = NULL;
  long status = DftiCreateDescriptor(&d, DFTI_DOUBLE, DFTI_COMPLEX, 1, (QNL_DFTI_INT)N);
  if (status == 0) status = DftiSetValue(d, DFTI_BACKWARD_SCALE, 1.0 / N);
  if (status == 0) status = DftiCommitDescriptor(d);
  if (status == 0) status = DftiComputeForward(d, z);
  if (status != 0) {
    printf("DFTI failed: %s\n", DftiErrorMessage(status));
    return 1;
  }
  int best = 0, second = 0;
  for (int k = 1; k <= N / 2; ++k) {
    double m = hypot(z[2 * k], z[2 * k + 1]);
    if (m > hypot(z[2 * best], z[2 * best + 1])) second = best, best = k;
    else if (m > hypot(z[2 * second], z[2 * second + 1])) second = k;
  }
  printf("strongest bins: %d (|X| = %.3f), %d (|X| = %.3f)\n", best, hypot(z[2 * best], z[2 * best + 1]), second,
         hypot(z[2 * second], z[2 * second + 1]));

  /* The same spectrum from a real-to-complex FFTW3 plan. */
  double* in = fftw_alloc_real(N);
  fftw_complex* out = fftw_alloc_complex(N / 2 + 1);
  fftw_plan p = fftw_plan_dft_r2c_1d(N, in, out, FFTW_ESTIMATE);
  if (!p) {
    printf("no FFTW3 plan\n");
    return 1;
  }
  for (int i = 0; i < N; ++i) in[i] = signal[i];
  fftw_execute(p);
  double spectra = 0.0;
  for (int k = 0; k <= N / 2; ++k)
    spectra = fmax(spectra, hypot(out[k][0] - z[2 * k], out[k][1] - z[2 * k + 1]));
  printf("largest difference between the DFTI and FFTW3 spectra: %.2e\n", spectra);

  /* Back through the descriptor: the scale 1/N returns the samples. */
  status = DftiComputeBackward(d, z);
  double roundtrip = 0.0;
  for (int i = 0; i < N; ++i) roundtrip = fmax(roundtrip, fabs(z[2 * i] - signal[i]));
  printf("backward transform: status %ld, largest error %.2e\n", status, roundtrip);

  fftw_destroy_plan(p);
  fftw_free(in);
  fftw_free(out);
  DftiFreeDescriptor(&d);
  free(z);
  int ok = status == 0 && best == TONE1 && second == TONE2 && spectra < 1e-9 && roundtrip < 1e-12;
  printf("%s\n", ok ? "signal example: ok" : "signal example: FAILED");
  return ok ? 0 : 1;
}
