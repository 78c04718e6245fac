/* Random streams and distribution generators of qnl_rt: generator numbers,
 * method numbers, status codes and the records shared with the kernel
 * libraries that implement them.
 *
 * Generator numbering. A generator number is a family index shifted left by
 * VSL_BRNG_SHIFT (20) bits; the low 20 bits are kept for the members of a
 * family of independent generators (MT2203: members 0..VSL_MT2203_FAMILY-1) and must be 0 elsewhere. Families 1..13 are
 * built in, 14..16 are the abstract streams; generators added with vslRegisterBrng get the families from
 * VSL_BRNG_USER_FIRST on, in order of registration. A number whose family is unknown is rejected with
 * VSL_RNG_ERROR_BAD_BRNG.
 *
 * Method numbers are per distribution and start at 0 (the default method of
 * each distribution). VSL_RNG_METHOD_ACCURACY_FLAG may be or-ed into the methods
 * whose names have an _ACCURATE form: those keep every result inside the
 * distribution's closed support, exactly at its ends, at some cost in speed.
 * Single precision results are computed in double and rounded once. Per
 * distribution, the accurate form adds:
 *  Uniform: [a, b) kept after the rounding of a + (b - a) u and of the narrowing;
 *  Exponential, Rayleigh, Weibull: log(1 - u) by log1p, results >= a;
 *  Beta: results in [a, a + b] for the exact a + b, so never the rounded sum when
 *    that lies above it;
 *  Gamma: results >= a, and beta X does not underflow to a where only the
 *    intermediate X (a small shape's u^(1/alpha)) is out of range;
 *  Lognormal: results >= b, and beta exp(a + sigma z) is computed as
 *    exp(a + sigma z + log beta) where exp alone would overflow or underflow.
 *
 * Status codes: 0 is success; -1..-99 general errors; -1000..-1099 stream and
 * generator errors; -1100..-1199 abstract and non-deterministic sources;
 * -1200..-1299 saved states in files and memory.
 */
#ifndef QNL_VSL_DEFINES_H
#define QNL_VSL_DEFINES_H

#ifdef __cplusplus
extern "C" {
#endif

/* ---- generator families ---- */
#define VSL_BRNG_SHIFT 20
#define VSL_BRNG_INC (1 << VSL_BRNG_SHIFT)
#define VSL_BRNG_MCG31 (1 * VSL_BRNG_INC)          /* x = 1132489760 x mod (2^31 - 1) */
#define VSL_BRNG_R250 (2 * VSL_BRNG_INC)           /* x[n] = x[n-103] ^ x[n-250] */
#define VSL_BRNG_MRG32K3A (3 * VSL_BRNG_INC)       /* L'Ecuyer's combined recursive generator */
#define VSL_BRNG_MCG59 (4 * VSL_BRNG_INC)          /* x = 13^13 x mod 2^59 */
#define VSL_BRNG_WH (5 * VSL_BRNG_INC)             /* Wichmann-Hill, 1982 */
#define VSL_BRNG_SOBOL (6 * VSL_BRNG_INC)          /* Joe-Kuo direction numbers, dimension 1..40 */
#define VSL_BRNG_NIEDERR (7 * VSL_BRNG_INC)        /* base 2, dimension 1..40 */
#define VSL_BRNG_MT19937 (8 * VSL_BRNG_INC)        /* the sequence of std::mt19937 */
#define VSL_BRNG_MT2203 (9 * VSL_BRNG_INC)         /* 64 independent twisters of period 2^2203-1 */
#define VSL_BRNG_SFMT19937 (10 * VSL_BRNG_INC)     /* SIMD-oriented Mersenne twister */
#define VSL_BRNG_NONDETERM (11 * VSL_BRNG_INC)     /* the processor's RDRAND */
#define VSL_BRNG_ARS5 (12 * VSL_BRNG_INC)          /* AES rounds on a counter, 5 rounds */
#define VSL_BRNG_PHILOX4X32X10 (13 * VSL_BRNG_INC) /* Philox 4x32, 10 rounds */
#define VSL_BRNG_IABSTRACT (14 * VSL_BRNG_INC)     /* abstract streams over caller buffers */
#define VSL_BRNG_DABSTRACT (15 * VSL_BRNG_INC)
#define VSL_BRNG_SABSTRACT (16 * VSL_BRNG_INC)
#define VSL_BRNG_USER_FIRST 17   /* first family given to vslRegisterBrng */
#define VSL_BRNG_MAX_FAMILIES 64 /* built-in and registered together */
#define VSL_MT2203_FAMILY 64
#define VSL_QRNG_MAX_DIMENSION 40

/* Seed words (vslNewStreamEx's params):
 *  MCG31, R250, MT19937, SFMT19937: params[0] (MT19937 with more words: the
 *    reference initialisation by array); MCG59: params[0] low, params[1] high;
 *  WH: one word per component; MRG32k3a: x[n-3..n-1] then y[n-3..n-1], missing 1;
 *  PHILOX4X32X10: two key words, then the four words of the 128-bit counter;
 *  ARS5: four key words, then the counter;
 *  SOBOL, NIEDERR: params[0] is the dimension, 1..VSL_QRNG_MAX_DIMENSION; the
 *    output is the points' coordinates in order, from point 1 (the origin is
 *    skipped); leapfrog with nstreams = dimension and k picks coordinate k;
 *  NONDETERM: params[0] the source (VSL_BRNG_RDRAND), params[1] the retries.
 * Skip-ahead: MCG31, MCG59, WH, MRG32k3a, MT19937, Philox, ARS5, Sobol,
 * Niederreiter. Leapfrog: MCG31, MCG59, WH, Sobol, Niederreiter.
 * viRngUniformBits writes the generator's own integers as n 32-bit words
 * (MCG59: two words per number, low word first); viRngUniformBits32/64 give
 * 32/64 uniform bits per element whatever the generator. */
#define VSL_BRNG_RDRAND 0
#define VSL_BRNG_NONDETERM_NRETRIES 10

/* ---- methods ---- */
#define VSL_RNG_METHOD_ACCURACY_FLAG 0x40000000

#define VSL_RNG_METHOD_UNIFORM_STD 0
#define VSL_RNG_METHOD_UNIFORM_STD_ACCURATE (VSL_RNG_METHOD_UNIFORM_STD | VSL_RNG_METHOD_ACCURACY_FLAG)
#define VSL_RNG_METHOD_UNIFORMBITS_STD 0
#define VSL_RNG_METHOD_UNIFORMBITS32_STD 0
#define VSL_RNG_METHOD_UNIFORMBITS64_STD 0

#define VSL_RNG_METHOD_GAUSSIAN_BOXMULLER 0  /* one variate from each pair of uniforms */
#define VSL_RNG_METHOD_GAUSSIAN_BOXMULLER2 1 /* two variates from each pair */
#define VSL_RNG_METHOD_GAUSSIAN_ICDF 2       /* inverse of the normal distribution function */
#define VSL_RNG_METHOD_GAUSSIANMV_BOXMULLER 0
#define VSL_RNG_METHOD_GAUSSIANMV_BOXMULLER2 1
#define VSL_RNG_METHOD_GAUSSIANMV_ICDF 2

#define VSL_RNG_METHOD_EXPONENTIAL_ICDF 0
#define VSL_RNG_METHOD_EXPONENTIAL_ICDF_ACCURATE (VSL_RNG_METHOD_EXPONENTIAL_ICDF | VSL_RNG_METHOD_ACCURACY_FLAG)
#define VSL_RNG_METHOD_LAPLACE_ICDF 0
#define VSL_RNG_METHOD_WEIBULL_ICDF 0
#define VSL_RNG_METHOD_WEIBULL_ICDF_ACCURATE (VSL_RNG_METHOD_WEIBULL_ICDF | VSL_RNG_METHOD_ACCURACY_FLAG)
#define VSL_RNG_METHOD_CAUCHY_ICDF 0
#define VSL_RNG_METHOD_RAYLEIGH_ICDF 0
#define VSL_RNG_METHOD_RAYLEIGH_ICDF_ACCURATE (VSL_RNG_METHOD_RAYLEIGH_ICDF | VSL_RNG_METHOD_ACCURACY_FLAG)
#define VSL_RNG_METHOD_LOGNORMAL_BOXMULLER2 0
#define VSL_RNG_METHOD_LOGNORMAL_BOXMULLER2_ACCURATE \
  (VSL_RNG_METHOD_LOGNORMAL_BOXMULLER2 | VSL_RNG_METHOD_ACCURACY_FLAG)
#define VSL_RNG_METHOD_LOGNORMAL_ICDF 1
#define VSL_RNG_METHOD_LOGNORMAL_ICDF_ACCURATE (VSL_RNG_METHOD_LOGNORMAL_ICDF | VSL_RNG_METHOD_ACCURACY_FLAG)
#define VSL_RNG_METHOD_GUMBEL_ICDF 0
#define VSL_RNG_METHOD_GAMMA_GNORM 0 /* Marsaglia-Tsang squeeze, boosted below alpha 1 */
#define VSL_RNG_METHOD_GAMMA_GNORM_ACCURATE (VSL_RNG_METHOD_GAMMA_GNORM | VSL_RNG_METHOD_ACCURACY_FLAG)
#define VSL_RNG_METHOD_BETA_CJA 0 /* ratio of gammas; Johnk below p, q of 1 */
#define VSL_RNG_METHOD_BETA_CJA_ACCURATE (VSL_RNG_METHOD_BETA_CJA | VSL_RNG_METHOD_ACCURACY_FLAG)

#define VSL_RNG_METHOD_BERNOULLI_ICDF 0
#define VSL_RNG_METHOD_GEOMETRIC_ICDF 0
#define VSL_RNG_METHOD_BINOMIAL_BTPE 0       /* inversion for small ntrial*p, else ratio-of-uniforms */
#define VSL_RNG_METHOD_HYPERGEOMETRIC_H2PE 0 /* inversion by the probability recurrence */
#define VSL_RNG_METHOD_POISSON_PTPE 0        /* exact: inversion below lambda 10, else PTRS rejection */
#define VSL_RNG_METHOD_POISSON_POISNORM 1    /* inversion below lambda 30, else rounded normal */
#define VSL_RNG_METHOD_POISSONV_POISNORM 0
#define VSL_RNG_METHOD_NEGBINOMIAL_NBAR 0 /* Poisson of a gamma */

/* Storage of the lower-triangular factor T (variance T T') of
 * vdRngGaussianMV, by rows: FULL dimen x dimen (T[i][j] at i*dimen + j),
 * PACKED (row i holds i + 1 entries, starting at i(i+1)/2), DIAGONAL (T[i][i]
 * at i). Vector k is r[k*dimen .. k*dimen + dimen - 1] = a + T z. */
#define VSL_MATRIX_STORAGE_FULL 0
#define VSL_MATRIX_STORAGE_PACKED 1
#define VSL_MATRIX_STORAGE_DIAGONAL 2

/* ---- status codes ---- */
#define VSL_STATUS_OK 0
#define VSL_ERROR_OK 0
#define VSL_ERROR_FEATURE_NOT_IMPLEMENTED -1
#define VSL_ERROR_UNKNOWN -2
#define VSL_ERROR_BADARGS -3
#define VSL_ERROR_MEM_FAILURE -4
#define VSL_ERROR_NULL_PTR -5
#define VSL_RNG_ERROR_BAD_BRNG -1000
#define VSL_RNG_ERROR_INVALID_BRNG_INDEX VSL_RNG_ERROR_BAD_BRNG
#define VSL_RNG_ERROR_LEAPFROG_UNSUPPORTED -1002
#define VSL_RNG_ERROR_SKIPAHEAD_UNSUPPORTED -1003
#define VSL_RNG_ERROR_BRNGS_INCOMPATIBLE -1005
#define VSL_RNG_ERROR_BAD_STREAM -1006
#define VSL_RNG_ERROR_BRNG_TABLE_FULL -1007
#define VSL_RNG_ERROR_BAD_STREAM_STATE_SIZE -1008
#define VSL_RNG_ERROR_BAD_WORD_SIZE -1009
#define VSL_RNG_ERROR_BAD_NSEEDS -1010
#define VSL_RNG_ERROR_BAD_NBITS -1011
#define VSL_RNG_ERROR_QRNG_PERIOD_ELAPSED -1012
#define VSL_RNG_ERROR_LEAPFROG_NSTREAMS_TOO_BIG -1013
#define VSL_RNG_ERROR_BAD_PARAM -1014 /* seed words a generator cannot take (dimension...) */
#define VSL_RNG_ERROR_BAD_UPDATE -1120
#define VSL_RNG_ERROR_NO_NUMBERS -1121
#define VSL_RNG_ERROR_INVALID_ABSTRACT_STREAM -1122
#define VSL_RNG_ERROR_NONDETERM_NOT_SUPPORTED -1130
#define VSL_RNG_ERROR_NONDETERM_NRETRIES_EXCEEDED -1131
#define VSL_RNG_ERROR_ARS5_NOT_SUPPORTED -1140
#define VSL_RNG_ERROR_FILE_CLOSE -1200
#define VSL_RNG_ERROR_FILE_OPEN -1201
#define VSL_RNG_ERROR_FILE_WRITE -1202
#define VSL_RNG_ERROR_FILE_READ -1203
#define VSL_RNG_ERROR_BAD_FILE_FORMAT -1204
#define VSL_RNG_ERROR_UNSUPPORTED_FILE_VER -1205
#define VSL_RNG_ERROR_BAD_MEM_FORMAT -1206

/* ---- types ---- */
typedef void* VSLStreamStatePtr;

/* Abstract streams: called when the buffer is used up. The callback refills
 * buf[*nmin .. *nmax] (or fewer) and returns how many it wrote, 0 when it has
 * no more; *idx is where reading resumes. */
typedef int (*iUpdateFuncPtr)(VSLStreamStatePtr stream, int* n, unsigned int* ibuf, int* nmin, int* nmax, int* idx);
typedef int (*dUpdateFuncPtr)(VSLStreamStatePtr stream, int* n, double* dbuf, int* nmin, int* nmax, int* idx);
typedef int (*sUpdateFuncPtr)(VSLStreamStatePtr stream, int* n, float* sbuf, int* nmin, int* nmax, int* idx);

/* A generator registered with vslRegisterBrng. Every callback receives the
 * address of the generator's own state: StreamStateSize bytes, zeroed, that
 * the library keeps inside its stream record and copies and saves with it.
 * InitStream gets method 0 (new stream) and the seed words. The s and d
 * callbacks fill r with uniform numbers on [a, b); iBRng fills r with n
 * integers of WordSize 32-bit words each, NBits random bits per integer. */
typedef int (*InitStreamPtr)(int method, VSLStreamStatePtr state, int n, const unsigned int params[]);
typedef int (*sBRngPtr)(VSLStreamStatePtr state, int n, float r[], float a, float b);
typedef int (*dBRngPtr)(VSLStreamStatePtr state, int n, double r[], double a, double b);
typedef int (*iBRngPtr)(VSLStreamStatePtr state, int n, unsigned int r[]);

typedef struct _VSLBRngProperties {
  int StreamStateSize; /* bytes of generator state */
  int NSeeds;          /* seed words the generator reads */
  int IncludesZero;    /* 1 when the integer output can be 0 */
  int WordSize;        /* 32-bit words in one integer output */
  int NBits;           /* random bits in one integer output */
  InitStreamPtr InitStream;
  sBRngPtr sBRng;
  dBRngPtr dBRng;
  iBRngPtr iBRng;
} VSLBRngProperties;

#define VSL_INIT_METHOD_STANDARD 0

#ifdef __cplusplus
}
#endif
#endif
