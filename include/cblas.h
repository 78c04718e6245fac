/* The C interface of the BLAS, as qnl_rt exports it: the standard CBLAS routines and
 * enumerations, and the library's extensions (scaled sums, minimum index, sparse level 1,
 * triangular-result and three-multiplication GEMM, packed GEMM, batched GEMM).
 *
 * Integers other than enumerations are CBLAS_INT: 32 bits by default, 64 bits when the
 * application is built with QNL_ILP64 defined (and runs with the ILP64 interface layer). */
#ifndef QNL_CBLAS_H
#define QNL_CBLAS_H

#include <stddef.h>
#include <stdint.h>

#ifndef CBLAS_INT
#ifdef QNL_ILP64
#define CBLAS_INT int64_t
#else
#define CBLAS_INT int
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define CBLAS_INDEX size_t

typedef enum CBLAS_LAYOUT { CblasRowMajor = 101, CblasColMajor = 102 } CBLAS_LAYOUT;
typedef enum CBLAS_TRANSPOSE { CblasNoTrans = 111, CblasTrans = 112, CblasConjTrans = 113 } CBLAS_TRANSPOSE;
typedef enum CBLAS_UPLO { CblasUpper = 121, CblasLower = 122 } CBLAS_UPLO;
typedef enum CBLAS_DIAG { CblasNonUnit = 131, CblasUnit = 132 } CBLAS_DIAG;
typedef enum CBLAS_SIDE { CblasLeft = 141, CblasRight = 142 } CBLAS_SIDE;
/* An operand of cblas_?gemm_compute that cblas_?gemm_pack has already packed. */
typedef enum CBLAS_STORAGE { CblasPacked = 151 } CBLAS_STORAGE;
/* Which operand of a packed GEMM a buffer holds. */
typedef enum CBLAS_IDENTIFIER { CblasAMatrix = 161, CblasBMatrix = 162 } CBLAS_IDENTIFIER;
#define CBLAS_ORDER CBLAS_LAYOUT /* the older name of the layout: also "enum CBLAS_ORDER" */

/* ---- level 1 */
float cblas_sdsdot(const CBLAS_INT N, const float alpha, const float *X, const CBLAS_INT incX, const float *Y,
                   const CBLAS_INT incY);
double cblas_dsdot(const CBLAS_INT N, const float *X, const CBLAS_INT incX, const float *Y, const CBLAS_INT incY);
float cblas_sdot(const CBLAS_INT N, const float *X, const CBLAS_INT incX, const float *Y, const CBLAS_INT incY);
double cblas_ddot(const CBLAS_INT N, const double *X, const CBLAS_INT incX, const double *Y, const CBLAS_INT incY);
void cblas_cdotu_sub(const CBLAS_INT N, const void *X, const CBLAS_INT incX, const void *Y, const CBLAS_INT incY,
                     void *dotu);
void cblas_cdotc_sub(const CBLAS_INT N, const void *X, const CBLAS_INT incX, const void *Y, const CBLAS_INT incY,
                     void *dotc);
void cblas_zdotu_sub(const CBLAS_INT N, const void *X, const CBLAS_INT incX, const void *Y, const CBLAS_INT incY,
                     void *dotu);
void cblas_zdotc_sub(const CBLAS_INT N, const void *X, const CBLAS_INT incX, const void *Y, const CBLAS_INT incY,
                     void *dotc);
float cblas_snrm2(const CBLAS_INT N, const float *X, const CBLAS_INT incX);
float cblas_sasum(const CBLAS_INT N, const float *X, const CBLAS_INT incX);
double cblas_dnrm2(const CBLAS_INT N, const double *X, const CBLAS_INT incX);
double cblas_dasum(const CBLAS_INT N, const double *X, const CBLAS_INT incX);
float cblas_scnrm2(const CBLAS_INT N, const void *X, const CBLAS_INT incX);
float cblas_scasum(const CBLAS_INT N, const void *X, const CBLAS_INT incX);
double cblas_dznrm2(const CBLAS_INT N, const void *X, const CBLAS_INT incX);
double cblas_dzasum(const CBLAS_INT N, const void *X, const CBLAS_INT incX);
float cblas_scabs1(const void *c);
double cblas_dcabs1(const void *z);
CBLAS_INDEX cblas_isamax(const CBLAS_INT N, const float *X, const CBLAS_INT incX);
CBLAS_INDEX cblas_idamax(const CBLAS_INT N, const double *X, const CBLAS_INT incX);
CBLAS_INDEX cblas_icamax(const CBLAS_INT N, const void *X, const CBLAS_INT incX);
CBLAS_INDEX cblas_izamax(const CBLAS_INT N, const void *X, const CBLAS_INT incX);
CBLAS_INDEX cblas_isamin(const CBLAS_INT N, const float *X, const CBLAS_INT incX);
CBLAS_INDEX cblas_idamin(const CBLAS_INT N, const double *X, const CBLAS_INT incX);
CBLAS_INDEX cblas_icamin(const CBLAS_INT N, const void *X, const CBLAS_INT incX);
CBLAS_INDEX cblas_izamin(const CBLAS_INT N, const void *X, const CBLAS_INT incX);

void cblas_sswap(const CBLAS_INT N, float *X, const CBLAS_INT incX, float *Y, const CBLAS_INT incY);
void cblas_scopy(const CBLAS_INT N, const float *X, const CBLAS_INT incX, float *Y, const CBLAS_INT incY);
void cblas_saxpy(const CBLAS_INT N, const float alpha, const float *X, const CBLAS_INT incX, float *Y,
                 const CBLAS_INT incY);
void cblas_saxpby(const CBLAS_INT N, const float alpha, const float *X, const CBLAS_INT incX, const float beta,
                  float *Y, const CBLAS_INT incY);
void cblas_dswap(const CBLAS_INT N, double *X, const CBLAS_INT incX, double *Y, const CBLAS_INT incY);
void cblas_dcopy(const CBLAS_INT N, const double *X, const CBLAS_INT incX, double *Y, const CBLAS_INT incY);
void cblas_daxpy(const CBLAS_INT N, const double alpha, const double *X, const CBLAS_INT incX, double *Y,
                 const CBLAS_INT incY);
void cblas_daxpby(const CBLAS_INT N, const double alpha, const double *X, const CBLAS_INT incX, const double beta,
                  double *Y, const CBLAS_INT incY);
void cblas_cswap(const CBLAS_INT N, void *X, const CBLAS_INT incX, void *Y, const CBLAS_INT incY);
void cblas_ccopy(const CBLAS_INT N, const void *X, const CBLAS_INT incX, void *Y, const CBLAS_INT incY);
void cblas_caxpy(const CBLAS_INT N, const void *alpha, const void *X, const CBLAS_INT incX, void *Y,
                 const CBLAS_INT incY);
void cblas_caxpby(const CBLAS_INT N, const void *alpha, const void *X, const CBLAS_INT incX, const void *beta, void *Y,
                  const CBLAS_INT incY);
void cblas_zswap(const CBLAS_INT N, void *X, const CBLAS_INT incX, void *Y, const CBLAS_INT incY);
void cblas_zcopy(const CBLAS_INT N, const void *X, const CBLAS_INT incX, void *Y, const CBLAS_INT incY);
void cblas_zaxpy(const CBLAS_INT N, const void *alpha, const void *X, const CBLAS_INT incX, void *Y,
                 const CBLAS_INT incY);
void cblas_zaxpby(const CBLAS_INT N, const void *alpha, const void *X, const CBLAS_INT incX, const void *beta, void *Y,
                  const CBLAS_INT incY);

void cblas_srotg(float *a, float *b, float *c, float *s);
void cblas_srotmg(float *d1, float *d2, float *b1, const float b2, float *P);
void cblas_srot(const CBLAS_INT N, float *X, const CBLAS_INT incX, float *Y, const CBLAS_INT incY, const float c,
                const float s);
void cblas_srotm(const CBLAS_INT N, float *X, const CBLAS_INT incX, float *Y, const CBLAS_INT incY, const float *P);
void cblas_drotg(double *a, double *b, double *c, double *s);
void cblas_drotmg(double *d1, double *d2, double *b1, const double b2, double *P);
void cblas_drot(const CBLAS_INT N, double *X, const CBLAS_INT incX, double *Y, const CBLAS_INT incY, const double c,
                const double s);
void cblas_drotm(const CBLAS_INT N, double *X, const CBLAS_INT incX, double *Y, const CBLAS_INT incY, const double *P);
void cblas_crotg(void *a, const void *b, float *c, void *s);
void cblas_zrotg(void *a, const void *b, double *c, void *s);
void cblas_csrot(const CBLAS_INT N, void *X, const CBLAS_INT incX, void *Y, const CBLAS_INT incY, const float c,
                 const float s);
void cblas_zdrot(const CBLAS_INT N, void *X, const CBLAS_INT incX, void *Y, const CBLAS_INT incY, const double c,
                 const double s);

void cblas_sscal(const CBLAS_INT N, const float alpha, float *X, const CBLAS_INT incX);
void cblas_dscal(const CBLAS_INT N, const double alpha, double *X, const CBLAS_INT incX);
void cblas_cscal(const CBLAS_INT N, const void *alpha, void *X, const CBLAS_INT incX);
void cblas_zscal(const CBLAS_INT N, const void *alpha, void *X, const CBLAS_INT incX);
void cblas_csscal(const CBLAS_INT N, const float alpha, void *X, const CBLAS_INT incX);
void cblas_zdscal(const CBLAS_INT N, const double alpha, void *X, const CBLAS_INT incX);

/* ---- sparse level 1: indices are zero-based */
void cblas_saxpyi(const CBLAS_INT N, const float alpha, const float *X, const CBLAS_INT *indx, float *Y);
void cblas_daxpyi(const CBLAS_INT N, const double alpha, const double *X, const CBLAS_INT *indx, double *Y);
void cblas_caxpyi(const CBLAS_INT N, const void *alpha, const void *X, const CBLAS_INT *indx, void *Y);
void cblas_zaxpyi(const CBLAS_INT N, const void *alpha, const void *X, const CBLAS_INT *indx, void *Y);
float cblas_sdoti(const CBLAS_INT N, const float *X, const CBLAS_INT *indx, const float *Y);
double cblas_ddoti(const CBLAS_INT N, const double *X, const CBLAS_INT *indx, const double *Y);
void cblas_cdotci_sub(const CBLAS_INT N, const void *X, const CBLAS_INT *indx, const void *Y, void *dotui);
void cblas_cdotui_sub(const CBLAS_INT N, const void *X, const CBLAS_INT *indx, const void *Y, void *dotui);
void cblas_zdotci_sub(const CBLAS_INT N, const void *X, const CBLAS_INT *indx, const void *Y, void *dotui);
void cblas_zdotui_sub(const CBLAS_INT N, const void *X, const CBLAS_INT *indx, const void *Y, void *dotui);
void cblas_sgthr(const CBLAS_INT N, const float *Y, float *X, const CBLAS_INT *indx);
void cblas_dgthr(const CBLAS_INT N, const double *Y, double *X, const CBLAS_INT *indx);
void cblas_cgthr(const CBLAS_INT N, const void *Y, void *X, const CBLAS_INT *indx);
void cblas_zgthr(const CBLAS_INT N, const void *Y, void *X, const CBLAS_INT *indx);
void cblas_sgthrz(const CBLAS_INT N, float *Y, float *X, const CBLAS_INT *indx);
void cblas_dgthrz(const CBLAS_INT N, double *Y, double *X, const CBLAS_INT *indx);
void cblas_cgthrz(const CBLAS_INT N, void *Y, void *X, const CBLAS_INT *indx);
void cblas_zgthrz(const CBLAS_INT N, void *Y, void *X, const CBLAS_INT *indx);
void cblas_ssctr(const CBLAS_INT N, const float *X, const CBLAS_INT *indx, float *Y);
void cblas_dsctr(const CBLAS_INT N, const double *X, const CBLAS_INT *indx, double *Y);
void cblas_csctr(const CBLAS_INT N, const void *X, const CBLAS_INT *indx, void *Y);
void cblas_zsctr(const CBLAS_INT N, const void *X, const CBLAS_INT *indx, void *Y);
void cblas_sroti(const CBLAS_INT N, float *X, const CBLAS_INT *indx, float *Y, const float c, const float s);
void cblas_droti(const CBLAS_INT N, double *X, const CBLAS_INT *indx, double *Y, const double c, const double s);

/* ---- level 2 */
#define QNL_CBLAS_L2(t, T, S)                                                                                          \
  void cblas_##t##gemv(const CBLAS_LAYOUT layout, const CBLAS_TRANSPOSE TransA, const CBLAS_INT M, const CBLAS_INT N,  \
                       const S alpha, const T *A, const CBLAS_INT lda, const T *X, const CBLAS_INT incX, const S beta, \
                       T *Y, const CBLAS_INT incY);                                                                    \
  void cblas_##t##gbmv(const CBLAS_LAYOUT layout, const CBLAS_TRANSPOSE TransA, const CBLAS_INT M, const CBLAS_INT N,  \
                       const CBLAS_INT KL, const CBLAS_INT KU, const S alpha, const T *A, const CBLAS_INT lda,         \
                       const T *X, const CBLAS_INT incX, const S beta, T *Y, const CBLAS_INT incY);                    \
  void cblas_##t##trmv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE TransA,                 \
                       const CBLAS_DIAG Diag, const CBLAS_INT N, const T *A, const CBLAS_INT lda, T *X,                \
                       const CBLAS_INT incX);                                                                          \
  void cblas_##t##tbmv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE TransA,                 \
                       const CBLAS_DIAG Diag, const CBLAS_INT N, const CBLAS_INT K, const T *A, const CBLAS_INT lda,   \
                       T *X, const CBLAS_INT incX);                                                                    \
  void cblas_##t##tpmv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE TransA,                 \
                       const CBLAS_DIAG Diag, const CBLAS_INT N, const T *Ap, T *X, const CBLAS_INT incX);             \
  void cblas_##t##trsv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE TransA,                 \
                       const CBLAS_DIAG Diag, const CBLAS_INT N, const T *A, const CBLAS_INT lda, T *X,                \
                       const CBLAS_INT incX);                                                                          \
  void cblas_##t##tbsv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE TransA,                 \
                       const CBLAS_DIAG Diag, const CBLAS_INT N, const CBLAS_INT K, const T *A, const CBLAS_INT lda,   \
                       T *X, const CBLAS_INT incX);                                                                    \
  void cblas_##t##tpsv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE TransA,                 \
                       const CBLAS_DIAG Diag, const CBLAS_INT N, const T *Ap, T *X, const CBLAS_INT incX);
QNL_CBLAS_L2(s, float, float)
QNL_CBLAS_L2(d, double, double)
QNL_CBLAS_L2(c, void, void *)
QNL_CBLAS_L2(z, void, void *)
#undef QNL_CBLAS_L2

#define QNL_CBLAS_L2_REAL(t, T)                                                                                        \
  void cblas_##t##symv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const T alpha, const T *A, \
                       const CBLAS_INT lda, const T *X, const CBLAS_INT incX, const T beta, T *Y,                      \
                       const CBLAS_INT incY);                                                                          \
  void cblas_##t##sbmv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const CBLAS_INT K,         \
                       const T alpha, const T *A, const CBLAS_INT lda, const T *X, const CBLAS_INT incX, const T beta, \
                       T *Y, const CBLAS_INT incY);                                                                    \
  void cblas_##t##spmv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const T alpha,             \
                       const T *Ap, const T *X, const CBLAS_INT incX, const T beta, T *Y, const CBLAS_INT incY);       \
  void cblas_##t##ger(const CBLAS_LAYOUT layout, const CBLAS_INT M, const CBLAS_INT N, const T alpha, const T *X,      \
                      const CBLAS_INT incX, const T *Y, const CBLAS_INT incY, T *A, const CBLAS_INT lda);              \
  void cblas_##t##syr(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const T alpha, const T *X,  \
                      const CBLAS_INT incX, T *A, const CBLAS_INT lda);                                                \
  void cblas_##t##spr(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const T alpha, const T *X,  \
                      const CBLAS_INT incX, T *Ap);                                                                    \
  void cblas_##t##syr2(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const T alpha, const T *X, \
                       const CBLAS_INT incX, const T *Y, const CBLAS_INT incY, T *A, const CBLAS_INT lda);             \
  void cblas_##t##spr2(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const T alpha, const T *X, \
                       const CBLAS_INT incX, const T *Y, const CBLAS_INT incY, T *A);
QNL_CBLAS_L2_REAL(s, float)
QNL_CBLAS_L2_REAL(d, double)
#undef QNL_CBLAS_L2_REAL

#define QNL_CBLAS_L2_COMPLEX(t, R)                                                                                 \
  void cblas_##t##hemv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const void *alpha,     \
                       const void *A, const CBLAS_INT lda, const void *X, const CBLAS_INT incX, const void *beta,  \
                       void *Y, const CBLAS_INT incY);                                                             \
  void cblas_##t##hbmv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const CBLAS_INT K,     \
                       const void *alpha, const void *A, const CBLAS_INT lda, const void *X, const CBLAS_INT incX, \
                       const void *beta, void *Y, const CBLAS_INT incY);                                           \
  void cblas_##t##hpmv(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const void *alpha,     \
                       const void *Ap, const void *X, const CBLAS_INT incX, const void *beta, void *Y,             \
                       const CBLAS_INT incY);                                                                      \
  void cblas_##t##geru(const CBLAS_LAYOUT layout, const CBLAS_INT M, const CBLAS_INT N, const void *alpha,         \
                       const void *X, const CBLAS_INT incX, const void *Y, const CBLAS_INT incY, void *A,          \
                       const CBLAS_INT lda);                                                                       \
  void cblas_##t##gerc(const CBLAS_LAYOUT layout, const CBLAS_INT M, const CBLAS_INT N, const void *alpha,         \
                       const void *X, const CBLAS_INT incX, const void *Y, const CBLAS_INT incY, void *A,          \
                       const CBLAS_INT lda);                                                                       \
  void cblas_##t##her(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const R alpha,          \
                      const void *X, const CBLAS_INT incX, void *A, const CBLAS_INT lda);                          \
  void cblas_##t##hpr(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const R alpha,          \
                      const void *X, const CBLAS_INT incX, void *A);                                               \
  void cblas_##t##her2(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const void *alpha,     \
                       const void *X, const CBLAS_INT incX, const void *Y, const CBLAS_INT incY, void *A,          \
                       const CBLAS_INT lda);                                                                       \
  void cblas_##t##hpr2(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_INT N, const void *alpha,     \
                       const void *X, const CBLAS_INT incX, const void *Y, const CBLAS_INT incY, void *Ap);
QNL_CBLAS_L2_COMPLEX(c, float)
QNL_CBLAS_L2_COMPLEX(z, double)
#undef QNL_CBLAS_L2_COMPLEX

/* ---- level 3 */
#define QNL_CBLAS_L3(t, T, S)                                                                                          \
  void cblas_##t##gemm(const CBLAS_LAYOUT layout, const CBLAS_TRANSPOSE TransA, const CBLAS_TRANSPOSE TransB,          \
                       const CBLAS_INT M, const CBLAS_INT N, const CBLAS_INT K, const S alpha, const T *A,             \
                       const CBLAS_INT lda, const T *B, const CBLAS_INT ldb, const S beta, T *C, const CBLAS_INT ldc); \
  void cblas_##t##gemmt(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE TransA,                \
                        const CBLAS_TRANSPOSE TransB, const CBLAS_INT N, const CBLAS_INT K, const S alpha, const T *A, \
                        const CBLAS_INT lda, const T *B, const CBLAS_INT ldb, const S beta, T *C,                      \
                        const CBLAS_INT ldc);                                                                          \
  void cblas_##t##symm(const CBLAS_LAYOUT layout, const CBLAS_SIDE Side, const CBLAS_UPLO Uplo, const CBLAS_INT M,     \
                       const CBLAS_INT N, const S alpha, const T *A, const CBLAS_INT lda, const T *B,                  \
                       const CBLAS_INT ldb, const S beta, T *C, const CBLAS_INT ldc);                                  \
  void cblas_##t##syrk(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE Trans,                  \
                       const CBLAS_INT N, const CBLAS_INT K, const S alpha, const T *A, const CBLAS_INT lda,           \
                       const S beta, T *C, const CBLAS_INT ldc);                                                       \
  void cblas_##t##syr2k(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE Trans,                 \
                        const CBLAS_INT N, const CBLAS_INT K, const S alpha, const T *A, const CBLAS_INT lda,          \
                        const T *B, const CBLAS_INT ldb, const S beta, T *C, const CBLAS_INT ldc);                     \
  void cblas_##t##trmm(const CBLAS_LAYOUT layout, const CBLAS_SIDE Side, const CBLAS_UPLO Uplo,                        \
                       const CBLAS_TRANSPOSE TransA, const CBLAS_DIAG Diag, const CBLAS_INT M, const CBLAS_INT N,      \
                       const S alpha, const T *A, const CBLAS_INT lda, T *B, const CBLAS_INT ldb);                     \
  void cblas_##t##trsm(const CBLAS_LAYOUT layout, const CBLAS_SIDE Side, const CBLAS_UPLO Uplo,                        \
                       const CBLAS_TRANSPOSE TransA, const CBLAS_DIAG Diag, const CBLAS_INT M, const CBLAS_INT N,      \
                       const S alpha, const T *A, const CBLAS_INT lda, T *B, const CBLAS_INT ldb);                     \
  void cblas_##t##gemm_batch(const CBLAS_LAYOUT layout, const CBLAS_TRANSPOSE *TransA_Array,                           \
                             const CBLAS_TRANSPOSE *TransB_Array, const CBLAS_INT *M_Array, const CBLAS_INT *N_Array,  \
                             const CBLAS_INT *K_Array, const T *alpha_Array, const T **A_Array,                        \
                             const CBLAS_INT *lda_Array, const T **B_Array, const CBLAS_INT *ldb_Array,                \
                             const T *beta_Array, T **C_Array, const CBLAS_INT *ldc_Array,                             \
                             const CBLAS_INT group_count, const CBLAS_INT *group_size);
QNL_CBLAS_L3(s, float, float)
QNL_CBLAS_L3(d, double, double)
QNL_CBLAS_L3(c, void, void *)
QNL_CBLAS_L3(z, void, void *)
#undef QNL_CBLAS_L3

#define QNL_CBLAS_L3_COMPLEX(t, R)                                                                                   \
  void cblas_##t##hemm(const CBLAS_LAYOUT layout, const CBLAS_SIDE Side, const CBLAS_UPLO Uplo, const CBLAS_INT M,   \
                       const CBLAS_INT N, const void *alpha, const void *A, const CBLAS_INT lda, const void *B,      \
                       const CBLAS_INT ldb, const void *beta, void *C, const CBLAS_INT ldc);                         \
  void cblas_##t##herk(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE Trans,                \
                       const CBLAS_INT N, const CBLAS_INT K, const R alpha, const void *A, const CBLAS_INT lda,      \
                       const R beta, void *C, const CBLAS_INT ldc);                                                  \
  void cblas_##t##her2k(const CBLAS_LAYOUT layout, const CBLAS_UPLO Uplo, const CBLAS_TRANSPOSE Trans,               \
                        const CBLAS_INT N, const CBLAS_INT K, const void *alpha, const void *A, const CBLAS_INT lda, \
                        const void *B, const CBLAS_INT ldb, const R beta, void *C, const CBLAS_INT ldc);             \
  void cblas_##t##gemm3m(const CBLAS_LAYOUT layout, const CBLAS_TRANSPOSE TransA, const CBLAS_TRANSPOSE TransB,      \
                         const CBLAS_INT M, const CBLAS_INT N, const CBLAS_INT K, const void *alpha, const void *A,  \
                         const CBLAS_INT lda, const void *B, const CBLAS_INT ldb, const void *beta, void *C,         \
                         const CBLAS_INT ldc);                                                                       \
  void cblas_##t##gemm3m_batch(const CBLAS_LAYOUT layout, const CBLAS_TRANSPOSE *TransA_Array,                       \
                               const CBLAS_TRANSPOSE *TransB_Array, const CBLAS_INT *M_Array,                        \
                               const CBLAS_INT *N_Array, const CBLAS_INT *K_Array, const void *alpha_Array,          \
                               const void **A_Array, const CBLAS_INT *lda_Array, const void **B_Array,               \
                               const CBLAS_INT *ldb_Array, const void *beta_Array, void **C_Array,                   \
                               const CBLAS_INT *ldc_Array, const CBLAS_INT group_count, const CBLAS_INT *group_size);
QNL_CBLAS_L3_COMPLEX(c, float)
QNL_CBLAS_L3_COMPLEX(z, double)
#undef QNL_CBLAS_L3_COMPLEX

/* ---- packed GEMM: a buffer from cblas_?gemm_alloc, filled by cblas_?gemm_pack, used by
 * cblas_?gemm_compute with CblasPacked in place of the operand's transposition. The _lp64
 * and _ilp64 forms of the allocation name the integer width and take no layer decision. */
#define QNL_CBLAS_PACKED(t, T)                                                                                         \
  T *cblas_##t##gemm_alloc(const CBLAS_IDENTIFIER identifier, const CBLAS_INT M, const CBLAS_INT N,                    \
                           const CBLAS_INT K);                                                                         \
  T *cblas_##t##gemm_alloc_lp64(const CBLAS_IDENTIFIER identifier, const int32_t M, const int32_t N, const int32_t K); \
  T *cblas_##t##gemm_alloc_ilp64(const CBLAS_IDENTIFIER identifier, const int64_t M, const int64_t N,                  \
                                 const int64_t K);                                                                     \
  void cblas_##t##gemm_pack(const CBLAS_LAYOUT layout, const CBLAS_IDENTIFIER identifier, const CBLAS_TRANSPOSE trans, \
                            const CBLAS_INT M, const CBLAS_INT N, const CBLAS_INT K, const T alpha, const T *src,      \
                            const CBLAS_INT ld, T *dest);                                                              \
  void cblas_##t##gemm_compute(const CBLAS_LAYOUT layout, const int transa, const int transb, const CBLAS_INT M,       \
                               const CBLAS_INT N, const CBLAS_INT K, const T *A, const CBLAS_INT lda, const T *B,      \
                               const CBLAS_INT ldb, const T beta, T *C, const CBLAS_INT ldc);                          \
  void cblas_##t##gemm_free(T *dest);
QNL_CBLAS_PACKED(s, float)
QNL_CBLAS_PACKED(d, double)
#undef QNL_CBLAS_PACKED

#ifdef __cplusplus
}
#endif

#endif /* QNL_CBLAS_H */
