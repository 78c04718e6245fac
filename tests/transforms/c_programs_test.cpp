// The C programs written for FFTW, compiled as C against fftw3.h, run through the facade.
#include <gtest/gtest.h>

extern "C" double fftw_c_program_1d(int n);
extern "C" double fftw_c_program_real_2d(int n0, int n1);
extern "C" double fftw_c99_program(int n);

TEST(BackendFftwCPrograms, RoundTrips) {
  for (int n : {1, 8, 60, 127}) EXPECT_LT(fftw_c_program_1d(n), 1e-12) << n;
  EXPECT_LT(fftw_c_program_real_2d(6, 10), 1e-12);
  EXPECT_LT(fftw_c99_program(24), 1e-12);
}
