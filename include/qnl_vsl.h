/* Random numbers of qnl_rt: streams and the distribution generators.
 *
 * Streams: vslNewStream(&stream, generator, seed) makes one, vslDeleteStream(&stream)
 * frees it; copies, skip-ahead, leapfrog, saving to a file or to memory, abstract streams
 * over the caller's buffers and registered generators are below. The generators fill
 * r[0..n-1] with variates of one distribution from one stream:
 *   v<t>Rng<Stem>(method, stream, n, r, parameters...)     C, parameters by value
 *   V<T>RNG<STEM>, v<t>rng<stem>, v<t>rng<stem>_            Fortran, everything by reference
 * with t = d (double), s (float) or i (integer results). Every entry returns 0 or a status
 * (qnl_vsl_defines.h); a rejected argument is also reported through the error routine.
 * Counts are QNL_VSL_INT: 32 bits by default, 64 bits when the application is built with
 * QNL_ILP64 defined (and runs with the ILP64 interface layer), where a request of more
 * than 2^31 - 1 variates is made in pieces. Methods and integer parameters are 32-bit. */
#ifndef QNL_VSL_H
#define QNL_VSL_H

#include <stddef.h>
#include <stdint.h>

#include "qnl_vsl_defines.h"

#ifndef QNL_VSL_INT
#ifdef QNL_ILP64
#define QNL_VSL_INT int64_t
#else
#define QNL_VSL_INT int
#endif
#endif
#ifndef QNL_VSL_UINT
#ifdef QNL_ILP64
#define QNL_VSL_UINT uint64_t
#else
#define QNL_VSL_UINT unsigned int
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The method flag of the accurate variants, where a generator has them. */
#define QNL_VSL_METHOD_ACCURATE 0x40000000

/* Streams: C names, then the Fortran spellings (handles by reference; the file names'
 * hidden length last). vslDeleteStream, vslLoadStreamM, vslGetNumRegBrngs and
 * vslRegisterBrng take the same arguments in every spelling. */
int vslNewStream(VSLStreamStatePtr* stream, QNL_VSL_INT brng, QNL_VSL_UINT seed);
int vslNewStreamEx(VSLStreamStatePtr* stream, QNL_VSL_INT brng, QNL_VSL_INT n, const unsigned int params[]);
int vsliNewAbstractStream(VSLStreamStatePtr* stream, QNL_VSL_INT n, const unsigned int ibuf[], iUpdateFuncPtr callback);
int vsldNewAbstractStream(VSLStreamStatePtr* stream, QNL_VSL_INT n, const double dbuf[], double a, double b,
                          dUpdateFuncPtr callback);
int vslsNewAbstractStream(VSLStreamStatePtr* stream, QNL_VSL_INT n, const float sbuf[], float a, float b,
                          sUpdateFuncPtr callback);
int vslCopyStream(VSLStreamStatePtr* newstream, const VSLStreamStatePtr srcstream);
int vslCopyStreamState(VSLStreamStatePtr deststream, const VSLStreamStatePtr srcstream);
int vslLeapfrogStream(VSLStreamStatePtr stream, QNL_VSL_INT k, QNL_VSL_INT nstreams);
int vslSkipAheadStream(VSLStreamStatePtr stream, long long nskip);
int vslGetStreamStateBrng(const VSLStreamStatePtr stream);
int vslGetStreamSize(const VSLStreamStatePtr stream);
int vslSaveStreamF(const VSLStreamStatePtr stream, const char* fname);
int vslLoadStreamF(VSLStreamStatePtr* stream, const char* fname);
int vslSaveStreamM(const VSLStreamStatePtr stream, char* memptr);
int vslGetBrngProperties(QNL_VSL_INT brng, VSLBRngProperties* properties);

#define QNL_VSL_F3(UPPER, lower, PARAMS) \
  int UPPER PARAMS;                      \
  int lower PARAMS;                      \
  int lower##_ PARAMS;
#define QNL_VSL_F4(Mixed, UPPER, lower, PARAMS) \
  int Mixed PARAMS;                             \
  QNL_VSL_F3(UPPER, lower, PARAMS)
QNL_VSL_F4(vslDeleteStream, VSLDELETESTREAM, vsldeletestream, (VSLStreamStatePtr * stream))
QNL_VSL_F4(vslLoadStreamM, VSLLOADSTREAMM, vslloadstreamm, (VSLStreamStatePtr * stream, const char* memptr))
QNL_VSL_F4(vslGetNumRegBrngs, VSLGETNUMREGBRNGS, vslgetnumregbrngs, (void))
QNL_VSL_F4(vslRegisterBrng, VSLREGISTERBRNG, vslregisterbrng, (const VSLBRngProperties* properties))
QNL_VSL_F3(VSLNEWSTREAM, vslnewstream, (VSLStreamStatePtr * stream, const QNL_VSL_INT* brng, const QNL_VSL_UINT* seed))
QNL_VSL_F3(VSLNEWSTREAMEX, vslnewstreamex,
           (VSLStreamStatePtr * stream, const QNL_VSL_INT* brng, const QNL_VSL_INT* n, const unsigned int params[]))
QNL_VSL_F3(VSLINEWABSTRACTSTREAM, vslinewabstractstream,
           (VSLStreamStatePtr * stream, const QNL_VSL_INT* n, const unsigned int ibuf[], iUpdateFuncPtr callback))
QNL_VSL_F3(VSLDNEWABSTRACTSTREAM, vsldnewabstractstream,
           (VSLStreamStatePtr * stream, const QNL_VSL_INT* n, const double dbuf[], const double* a, const double* b,
            dUpdateFuncPtr callback))
QNL_VSL_F3(VSLSNEWABSTRACTSTREAM, vslsnewabstractstream,
           (VSLStreamStatePtr * stream, const QNL_VSL_INT* n, const float sbuf[], const float* a, const float* b,
            sUpdateFuncPtr callback))
QNL_VSL_F3(VSLCOPYSTREAM, vslcopystream, (VSLStreamStatePtr * newstream, const VSLStreamStatePtr* srcstream))
QNL_VSL_F3(VSLCOPYSTREAMSTATE, vslcopystreamstate, (VSLStreamStatePtr * deststream, const VSLStreamStatePtr* srcstream))
QNL_VSL_F3(VSLLEAPFROGSTREAM, vslleapfrogstream,
           (VSLStreamStatePtr * stream, const QNL_VSL_INT* k, const QNL_VSL_INT* nstreams))
QNL_VSL_F3(VSLSKIPAHEADSTREAM, vslskipaheadstream, (VSLStreamStatePtr * stream, const long long* nskip))
QNL_VSL_F3(VSLGETSTREAMSTATEBRNG, vslgetstreamstatebrng, (const VSLStreamStatePtr* stream))
QNL_VSL_F3(VSLGETSTREAMSIZE, vslgetstreamsize, (const VSLStreamStatePtr* stream))
QNL_VSL_F3(VSLSAVESTREAMF, vslsavestreamf, (const VSLStreamStatePtr* stream, const char* fname, size_t fname_len))
QNL_VSL_F3(VSLLOADSTREAMF, vslloadstreamf, (VSLStreamStatePtr * stream, const char* fname, size_t fname_len))
QNL_VSL_F3(VSLSAVESTREAMM, vslsavestreamm, (const VSLStreamStatePtr* stream, char* memptr))
QNL_VSL_F3(VSLGETBRNGPROPERTIES, vslgetbrngproperties, (const QNL_VSL_INT* brng, VSLBRngProperties* properties))

/* The generators: method, stream, n, r, then the distribution's parameters. */
#define QNL_VSL_UNWRAP(...) __VA_ARGS__
#define QNL_VSL_GENERATOR(name, UPPER, lower, R, C_PARAMS, F_PARAMS)                            \
  int name(int method, VSLStreamStatePtr stream, QNL_VSL_INT n, R* r, QNL_VSL_UNWRAP C_PARAMS); \
  QNL_VSL_F3(UPPER, lower,                                                                      \
             (const int* method, VSLStreamStatePtr* stream, const QNL_VSL_INT* n, R* r, QNL_VSL_UNWRAP F_PARAMS))
#define QNL_VSL_BITS(name, UPPER, lower, R)                            \
  int name(int method, VSLStreamStatePtr stream, QNL_VSL_INT n, R* r); \
  QNL_VSL_F3(UPPER, lower, (const int* method, VSLStreamStatePtr* stream, const QNL_VSL_INT* n, R* r))

QNL_VSL_GENERATOR(vdRngCauchy, VDRNGCAUCHY, vdrngcauchy, double, (double a, double beta),
                  (const double* a, const double* beta))
QNL_VSL_GENERATOR(vsRngCauchy, VSRNGCAUCHY, vsrngcauchy, float, (float a, float beta),
                  (const float* a, const float* beta))
QNL_VSL_GENERATOR(vdRngExponential, VDRNGEXPONENTIAL, vdrngexponential, double, (double a, double beta),
                  (const double* a, const double* beta))
QNL_VSL_GENERATOR(vsRngExponential, VSRNGEXPONENTIAL, vsrngexponential, float, (float a, float beta),
                  (const float* a, const float* beta))
QNL_VSL_GENERATOR(vdRngGaussian, VDRNGGAUSSIAN, vdrnggaussian, double, (double a, double sigma),
                  (const double* a, const double* sigma))
QNL_VSL_GENERATOR(vsRngGaussian, VSRNGGAUSSIAN, vsrnggaussian, float, (float a, float sigma),
                  (const float* a, const float* sigma))
QNL_VSL_GENERATOR(vdRngGaussianMV, VDRNGGAUSSIANMV, vdrnggaussianmv, double,
                  (int dimen, int mstorage, const double* a, const double* t),
                  (const int* dimen, const int* mstorage, const double* a, const double* t))
QNL_VSL_GENERATOR(vsRngGaussianMV, VSRNGGAUSSIANMV, vsrnggaussianmv, float,
                  (int dimen, int mstorage, const float* a, const float* t),
                  (const int* dimen, const int* mstorage, const float* a, const float* t))
QNL_VSL_GENERATOR(vdRngGumbel, VDRNGGUMBEL, vdrnggumbel, double, (double a, double beta),
                  (const double* a, const double* beta))
QNL_VSL_GENERATOR(vsRngGumbel, VSRNGGUMBEL, vsrnggumbel, float, (float a, float beta),
                  (const float* a, const float* beta))
QNL_VSL_GENERATOR(vdRngLaplace, VDRNGLAPLACE, vdrnglaplace, double, (double a, double beta),
                  (const double* a, const double* beta))
QNL_VSL_GENERATOR(vsRngLaplace, VSRNGLAPLACE, vsrnglaplace, float, (float a, float beta),
                  (const float* a, const float* beta))
QNL_VSL_GENERATOR(vdRngLognormal, VDRNGLOGNORMAL, vdrnglognormal, double,
                  (double a, double sigma, double b, double beta),
                  (const double* a, const double* sigma, const double* b, const double* beta))
QNL_VSL_GENERATOR(vsRngLognormal, VSRNGLOGNORMAL, vsrnglognormal, float, (float a, float sigma, float b, float beta),
                  (const float* a, const float* sigma, const float* b, const float* beta))
QNL_VSL_GENERATOR(vdRngRayleigh, VDRNGRAYLEIGH, vdrngrayleigh, double, (double a, double beta),
                  (const double* a, const double* beta))
QNL_VSL_GENERATOR(vsRngRayleigh, VSRNGRAYLEIGH, vsrngrayleigh, float, (float a, float beta),
                  (const float* a, const float* beta))
QNL_VSL_GENERATOR(vdRngUniform, VDRNGUNIFORM, vdrnguniform, double, (double a, double b),
                  (const double* a, const double* b))
QNL_VSL_GENERATOR(vsRngUniform, VSRNGUNIFORM, vsrnguniform, float, (float a, float b), (const float* a, const float* b))
QNL_VSL_GENERATOR(vdRngWeibull, VDRNGWEIBULL, vdrngweibull, double, (double alpha, double a, double beta),
                  (const double* alpha, const double* a, const double* beta))
QNL_VSL_GENERATOR(vsRngWeibull, VSRNGWEIBULL, vsrngweibull, float, (float alpha, float a, float beta),
                  (const float* alpha, const float* a, const float* beta))
QNL_VSL_GENERATOR(vdRngBeta, VDRNGBETA, vdrngbeta, double, (double p, double q, double a, double beta),
                  (const double* p, const double* q, const double* a, const double* beta))
QNL_VSL_GENERATOR(vsRngBeta, VSRNGBETA, vsrngbeta, float, (float p, float q, float a, float beta),
                  (const float* p, const float* q, const float* a, const float* beta))
QNL_VSL_GENERATOR(vdRngGamma, VDRNGGAMMA, vdrnggamma, double, (double alpha, double a, double beta),
                  (const double* alpha, const double* a, const double* beta))
QNL_VSL_GENERATOR(vsRngGamma, VSRNGGAMMA, vsrnggamma, float, (float alpha, float a, float beta),
                  (const float* alpha, const float* a, const float* beta))
QNL_VSL_GENERATOR(viRngBernoulli, VIRNGBERNOULLI, virngbernoulli, int, (double p), (const double* p))
QNL_VSL_GENERATOR(viRngBinomial, VIRNGBINOMIAL, virngbinomial, int, (int ntrial, double p),
                  (const int* ntrial, const double* p))
QNL_VSL_GENERATOR(viRngGeometric, VIRNGGEOMETRIC, virnggeometric, int, (double p), (const double* p))
QNL_VSL_GENERATOR(viRngHypergeometric, VIRNGHYPERGEOMETRIC, virnghypergeometric, int, (int l, int s, int m),
                  (const int* l, const int* s, const int* m))
QNL_VSL_GENERATOR(viRngNegBinomial, VIRNGNEGBINOMIAL, virngnegbinomial, int, (double a, double p),
                  (const double* a, const double* p))
QNL_VSL_GENERATOR(viRngPoisson, VIRNGPOISSON, virngpoisson, int, (double lambda), (const double* lambda))
QNL_VSL_GENERATOR(viRngPoissonV, VIRNGPOISSONV, virngpoissonv, int, (const double* lambda), (const double* lambda))
QNL_VSL_GENERATOR(viRngUniform, VIRNGUNIFORM, virnguniform, int, (int a, int b), (const int* a, const int* b))
QNL_VSL_BITS(viRngUniformBits, VIRNGUNIFORMBITS, virnguniformbits, unsigned int)
QNL_VSL_BITS(viRngUniformBits32, VIRNGUNIFORMBITS32, virnguniformbits32, unsigned int)
QNL_VSL_BITS(viRngUniformBits64, VIRNGUNIFORMBITS64, virnguniformbits64, unsigned long long)

#ifdef __cplusplus
}
#endif

#endif
