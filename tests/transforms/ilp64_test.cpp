// The descriptor interface and the FFTW3 layer under the 64-bit integer layer
// (run with QNL_INTERFACE_LAYER=ILP64; built with QNL_ILP64 so that the header's
// integers are 64-bit): lengths and strides travel as 64-bit values.
#include <gtest/gtest.h>

#include <complex>
#include <vector>

#include "fftw3.h"
#include "qnl_dfti.h"

static_assert(sizeof(QNL_DFTI_INT) == 8, "built for the 64-bit layer");

TEST(BackendDftiIlp64, WideValuesPassUnnarrowed) {
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  QNL_DFTI_INT n[] = {2, 65536, 65536};
  ASSERT_EQ(DftiCreateDescriptor(&h, DFTI_DOUBLE, DFTI_COMPLEX, 3, n), 0);
  QNL_DFTI_INT strides[4] = {};
  EXPECT_EQ(DftiGetValue(h, DFTI_INPUT_STRIDES, strides), 0);  // LP64 gives 2 here
  EXPECT_EQ(strides[1], QNL_DFTI_INT{1} << 32);
  EXPECT_EQ(strides[3], 1);
  QNL_DFTI_INT howmany = 0;
  ASSERT_EQ(DftiSetValue(h, DFTI_NUMBER_OF_TRANSFORMS, QNL_DFTI_INT{3}), 0);
  EXPECT_EQ(DftiGetValue(h, DFTI_NUMBER_OF_TRANSFORMS, &howmany), 0);
  EXPECT_EQ(howmany, 3);
  EXPECT_EQ(DftiFreeDescriptor(&h), 0);
  // No narrowing of the two statuses compared.
  EXPECT_EQ(DftiErrorClass(0x100000003L, 3), 0);
}

TEST(BackendDftiIlp64, PlansComputeWithWideLists) {
  const int n0 = 6, n1 = 5;
  std::vector<std::complex<double>> a(n0 * n1), b(n0 * n1);
  a[1 * n1 + 2] = 1;
  fftw_plan p = fftw_plan_dft_2d(n0, n1, reinterpret_cast<fftw_complex*>(a.data()),
                                 reinterpret_cast<fftw_complex*>(b.data()), FFTW_FORWARD, FFTW_ESTIMATE);
  ASSERT_NE(p, nullptr);
  fftw_execute(p);
  for (int k0 = 0; k0 < n0; ++k0)
    for (int k1 = 0; k1 < n1; ++k1) {
      std::complex<double> want = std::polar(1.0, -2 * M_PI * (1.0 * k0 / n0 + 2.0 * k1 / n1));
      EXPECT_NEAR(std::abs(b[k0 * n1 + k1] - want), 0, 1e-14);
    }
  fftw_destroy_plan(p);
}
