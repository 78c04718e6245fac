// The kernel symbols of the random-number library, as the facade binds them.
#pragma once
#include <initializer_list>
#include <vector>

#include "qnl_vsl_defines.h"

extern "C" {
int __vslNewStreamEx(void** stream, int brng, int n, const unsigned* params);
int __vslDeleteStream(void** stream);
int __vslCopyStream(void** newstream, const void* src);
int __vslCopyStreamState(void* dst, const void* src);
int __vslLeapfrogStream(void* stream, int k, int nstreams);
int __vslSkipAheadStream(void* stream, long long nskip);
int __vslGetStreamStateBrng(const void* stream);
int __vslGetStreamSize(const void* stream);
int __vslSaveStreamF(const void* stream, const char* fname, long long len);
int __vslLoadStreamF(void** stream, const char* fname, long long len);
int __vslSaveStreamM(const void* stream, char* memptr);
int __vslLoadStreamM(void** stream, const char* memptr);
int __vsliNewAbstractStream(void** stream, int n, const unsigned* ibuf, iUpdateFuncPtr cb);
int __vsldNewAbstractStream(void** stream, int n, const double* dbuf, double a, double b, dUpdateFuncPtr cb);
int __vslGetNumRegBrngs(void);
int __vslRegisterBrng(const void* properties);
int __vslGetBrngProperties(int brng, void* properties);

#define QNL_REAL_2(stem)                                  \
  int _vsls##stem(int, void*, int, float*, float, float); \
  int _vsld##stem(int, void*, int, double*, double, double);
#define QNL_REAL_3(stem)                                         \
  int _vsls##stem(int, void*, int, float*, float, float, float); \
  int _vsld##stem(int, void*, int, double*, double, double, double);
#define QNL_REAL_4(stem)                                                \
  int _vsls##stem(int, void*, int, float*, float, float, float, float); \
  int _vsld##stem(int, void*, int, double*, double, double, double, double);
QNL_REAL_2(RngUniform)
QNL_REAL_2(RngGaussian) QNL_REAL_2(RngExponential) QNL_REAL_2(RngLaplace) QNL_REAL_2(RngCauchy) QNL_REAL_2(RngRayleigh)
    QNL_REAL_2(RngGumbel) QNL_REAL_3(RngWeibull) QNL_REAL_3(RngGamma) QNL_REAL_4(RngLognormal)
        QNL_REAL_4(RngBeta) int _vsldRngGaussianMV(int, void*, int, double*, int, int, const double*, const double*);
int _vsliRngBernoulli(int, void*, int, int*, double);
int _vsliRngBinomial(int, void*, int, int*, int, double);
int _vsliRngGeometric(int, void*, int, int*, double);
int _vsliRngHypergeometric(int, void*, int, int*, int, int, int);
int _vsliRngNegbinomial(int, void*, int, int*, double, double);
int _vsliRngPoisson(int, void*, int, int*, double);
int _vsliRngPoissonV(int, void*, int, int*, const double*);
int _vsliRngUniform(int, void*, int, int*, int, int);
int _vsliRngUniformBits(int, void*, int, unsigned*);
int _vsliRngUniformBits32(int, void*, int, unsigned*);
int _vsliRngUniformBits64(int, void*, int, unsigned long long*);
}

// A stream that deletes itself.
struct Stream {
  void* s = nullptr;
  int rc = 0;
  Stream(int brng, std::initializer_list<unsigned> seed) {
    rc = __vslNewStreamEx(&s, brng, static_cast<int>(seed.size()), seed.begin());
  }
  Stream() = default;
  ~Stream() {
    if (s) __vslDeleteStream(&s);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  std::vector<unsigned> bits(int n) {
    std::vector<unsigned> v(n);
    _vsliRngUniformBits(0, s, n, v.data());
    return v;
  }
  std::vector<double> uniform(int n) {
    std::vector<double> v(n);
    _vsldRngUniform(0, s, n, v.data(), 0.0, 1.0);
    return v;
  }
};
