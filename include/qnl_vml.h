/* Vector mathematics of qnl_rt: elementwise functions over vectors, their mode,
 * error status and error callback.
 *
 * Every function exists for the type letters listed with it, as
 *   v<t><Stem>(n, ...)             C, counts and scalars by value
 *   vm<t><Stem>(n, ..., mode)      the same with an accuracy/error mode for this call
 *   V<T><STEM>, v<t><stem>, v<t><stem>_, and VM.../vm.../vm..._ with the mode:
 *                                  the Fortran spellings, everything by reference.
 * Counts are QNL_VML_INT: 32 bits by default, 64 bits when the application is built
 * with QNL_ILP64 defined (and runs with the ILP64 interface layer); there a vector
 * longer than 2^31 - 1 elements is processed in pieces. */
#ifndef QNL_VML_H
#define QNL_VML_H

#include <stdint.h>

#ifndef QNL_VML_INT
#ifdef QNL_ILP64
#define QNL_VML_INT int64_t
#else
#define QNL_VML_INT int
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
  float real, imag;
} QNL_Complex8;
typedef struct {
  double real, imag;
} QNL_Complex16;

/* Mode word: accuracy in the low bits, error handling above. */
#define VML_LA 0x00000001 /* low accuracy: at most 4 ulp */
#define VML_HA 0x00000002 /* high accuracy: at most 1 ulp */
#define VML_EP 0x00000003 /* enhanced performance: at least half the mantissa bits */
#define VML_ACCURACY_MASK 0x0000000F
#define VML_ERRMODE_IGNORE 0x00000100   /* no status, no callback */
#define VML_ERRMODE_ERRNO 0x00000200    /* errno EDOM/ERANGE as well */
#define VML_ERRMODE_STDERR 0x00000400   /* one line per error on stderr */
#define VML_ERRMODE_CALLBACK 0x00001000 /* call the error callback, if one is set */
#define VML_ERRMODE_MASK 0x0000FF00
#define VML_ERRMODE_DEFAULT (VML_ERRMODE_ERRNO | VML_ERRMODE_CALLBACK)
#define VML_DEFAULT_MODE (VML_HA | VML_ERRMODE_DEFAULT)

/* Error status. */
#define VML_STATUS_OK 0
#define VML_STATUS_BADSIZE (-1)
#define VML_STATUS_BADMEM (-2)
#define VML_STATUS_ERRDOM 1
#define VML_STATUS_SING 2
#define VML_STATUS_OVERFLOW 3
#define VML_STATUS_UNDERFLOW 4
#define VML_STATUS_ACCURACYWARNING 1000

/* What the error callback receives: the failing element, its arguments and results
 * (imaginary parts for complex functions), and the function's name. Results the
 * callback writes into r1/r2 (and r1_im/r2_im) are stored in the output vector.
 * A callback returning non-zero hears no further errors of the same call. */
typedef struct {
  int code;
  int index;
  double a1, a2, r1, r2;
  char name[64];
  int name_length;
  double a1_im, a2_im, r1_im, r2_im;
} VMLErrorContext;
typedef int (*VMLErrorCallBack)(VMLErrorContext*);

int vmlSetMode(int mode);
int vmlGetMode(void);
int vmlSetErrStatus(int status);
int vmlGetErrStatus(void);
int vmlClearErrStatus(void);
int vmlSetErrorCallBack(VMLErrorCallBack callback);
VMLErrorCallBack vmlGetErrorCallBack(void);
int vmlClearErrorCallBack(void);
int VMLSETMODE(const int* mode);
int vmlsetmode(const int* mode);
int vmlsetmode_(const int* mode);
int VMLSETERRSTATUS(const int* status);
int vmlseterrstatus(const int* status);
int vmlseterrstatus_(const int* status);
#define QNL_VML_FORTRAN_SERVICE(R, UPPER, lower, A) R UPPER A; R lower A; R lower##_ A;
QNL_VML_FORTRAN_SERVICE(int, VMLGETMODE, vmlgetmode, (void))
QNL_VML_FORTRAN_SERVICE(int, VMLGETERRSTATUS, vmlgeterrstatus, (void))
QNL_VML_FORTRAN_SERVICE(int, VMLCLEARERRSTATUS, vmlclearerrstatus, (void))
QNL_VML_FORTRAN_SERVICE(int, VMLSETERRORCALLBACK, vmlseterrorcallback, (VMLErrorCallBack callback))
QNL_VML_FORTRAN_SERVICE(VMLErrorCallBack, VMLGETERRORCALLBACK, vmlgeterrorcallback, (void))
QNL_VML_FORTRAN_SERVICE(int, VMLCLEARERRORCALLBACK, vmlclearerrorcallback, (void))

/* The functions, by argument shape: X(t, T, UPPER t, Stem, STEM, lower stem). */
#define QNL_VML_UNARY_REAL(X, t, T, U)                                                                            \
  X(t, T, U, Abs, ABS, abs) X(t, T, U, Acos, ACOS, acos) X(t, T, U, Acosh, ACOSH, acosh)                         \
  X(t, T, U, Asin, ASIN, asin) X(t, T, U, Asinh, ASINH, asinh) X(t, T, U, Atan, ATAN, atan)                      \
  X(t, T, U, Atanh, ATANH, atanh) X(t, T, U, Cbrt, CBRT, cbrt) X(t, T, U, CdfNorm, CDFNORM, cdfnorm)             \
  X(t, T, U, CdfNormInv, CDFNORMINV, cdfnorminv) X(t, T, U, Ceil, CEIL, ceil) X(t, T, U, Cos, COS, cos)          \
  X(t, T, U, Cosh, COSH, cosh) X(t, T, U, Erf, ERF, erf) X(t, T, U, ErfInv, ERFINV, erfinv)                      \
  X(t, T, U, Erfc, ERFC, erfc) X(t, T, U, ErfcInv, ERFCINV, erfcinv) X(t, T, U, Exp, EXP, exp)                   \
  X(t, T, U, ExpInt1, EXPINT1, expint1) X(t, T, U, Expm1, EXPM1, expm1) X(t, T, U, Floor, FLOOR, floor)          \
  X(t, T, U, Frac, FRAC, frac) X(t, T, U, Inv, INV, inv) X(t, T, U, InvCbrt, INVCBRT, invcbrt)                   \
  X(t, T, U, InvSqrt, INVSQRT, invsqrt) X(t, T, U, LGamma, LGAMMA, lgamma) X(t, T, U, Ln, LN, ln)                \
  X(t, T, U, Log10, LOG10, log10) X(t, T, U, Log1p, LOG1P, log1p) X(t, T, U, NearbyInt, NEARBYINT, nearbyint)    \
  X(t, T, U, Pow2o3, POW2O3, pow2o3) X(t, T, U, Pow3o2, POW3O2, pow3o2) X(t, T, U, Rint, RINT, rint)             \
  X(t, T, U, Round, ROUND, round) X(t, T, U, Sin, SIN, sin) X(t, T, U, Sinh, SINH, sinh) X(t, T, U, Sqr, SQR, sqr) \
  X(t, T, U, Sqrt, SQRT, sqrt) X(t, T, U, TGamma, TGAMMA, tgamma) X(t, T, U, Tan, TAN, tan)                      \
  X(t, T, U, Tanh, TANH, tanh) X(t, T, U, Trunc, TRUNC, trunc)
#define QNL_VML_UNARY_COMPLEX(X, t, T, U)                                                                  \
  X(t, T, U, Acos, ACOS, acos) X(t, T, U, Acosh, ACOSH, acosh) X(t, T, U, Asin, ASIN, asin)               \
  X(t, T, U, Asinh, ASINH, asinh) X(t, T, U, Atan, ATAN, atan) X(t, T, U, Atanh, ATANH, atanh)            \
  X(t, T, U, Conj, CONJ, conj) X(t, T, U, Cos, COS, cos) X(t, T, U, Cosh, COSH, cosh) X(t, T, U, Exp, EXP, exp) \
  X(t, T, U, Ln, LN, ln) X(t, T, U, Log10, LOG10, log10) X(t, T, U, Sin, SIN, sin) X(t, T, U, Sinh, SINH, sinh) \
  X(t, T, U, Sqrt, SQRT, sqrt) X(t, T, U, Tan, TAN, tan) X(t, T, U, Tanh, TANH, tanh)
#define QNL_VML_BINARY_REAL(X, t, T, U)                                                                    \
  X(t, T, U, Add, ADD, add) X(t, T, U, Atan2, ATAN2, atan2) X(t, T, U, Div, DIV, div)                     \
  X(t, T, U, Hypot, HYPOT, hypot) X(t, T, U, Mul, MUL, mul) X(t, T, U, Pow, POW, pow) X(t, T, U, Sub, SUB, sub)
#define QNL_VML_BINARY_COMPLEX(X, t, T, U)                                                         \
  X(t, T, U, Add, ADD, add) X(t, T, U, Div, DIV, div) X(t, T, U, Mul, MUL, mul)                   \
  X(t, T, U, MulByConj, MULBYCONJ, mulbyconj) X(t, T, U, Pow, POW, pow) X(t, T, U, Sub, SUB, sub)

/* One function in its eight names: D(name, arguments) declares one. */
#define QNL_VML_EIGHT(t, U, Stem, STEM, stem, C_ARGS, F_ARGS)                              \
  void v##t##Stem C_ARGS;                                                                  \
  void vm##t##Stem QNL_VML_WITH_MODE(C_ARGS, int mode);                                    \
  void V##U##STEM F_ARGS;                                                                  \
  void v##t##stem F_ARGS;                                                                  \
  void v##t##stem##_ F_ARGS;                                                               \
  void VM##U##STEM QNL_VML_WITH_MODE(F_ARGS, const int* mode);                             \
  void vm##t##stem QNL_VML_WITH_MODE(F_ARGS, const int* mode);                             \
  void vm##t##stem##_ QNL_VML_WITH_MODE(F_ARGS, const int* mode);
#define QNL_VML_WITH_MODE(ARGS, M) QNL_VML_APPEND ARGS (M)
#define QNL_VML_APPEND(...) (__VA_ARGS__, QNL_VML_LAST
#define QNL_VML_LAST(M) M)

#define QNL_VML_DECLARE_UNARY(t, T, U, Stem, STEM, stem) \
  QNL_VML_EIGHT(t, U, Stem, STEM, stem, (QNL_VML_INT n, const T* a, T* y), (const QNL_VML_INT* n, const T* a, T* y))
#define QNL_VML_DECLARE_BINARY(t, T, U, Stem, STEM, stem)                            \
  QNL_VML_EIGHT(t, U, Stem, STEM, stem, (QNL_VML_INT n, const T* a, const T* b, T* y), \
                (const QNL_VML_INT* n, const T* a, const T* b, T* y))
#define QNL_VML_DECLARE_TWO(t, T, U, Stem, STEM, stem)                        \
  QNL_VML_EIGHT(t, U, Stem, STEM, stem, (QNL_VML_INT n, const T* a, T* y, T* z), \
                (const QNL_VML_INT* n, const T* a, T* y, T* z))
#define QNL_VML_DECLARE_POWX(t, T, U, Stem, STEM, stem)                       \
  QNL_VML_EIGHT(t, U, Stem, STEM, stem, (QNL_VML_INT n, const T* a, T b, T* y), \
                (const QNL_VML_INT* n, const T* a, const T* b, T* y))
#define QNL_VML_DECLARE_LINFRAC(t, T, U, Stem, STEM, stem)                                                         \
  QNL_VML_EIGHT(t, U, Stem, STEM, stem,                                                                           \
                (QNL_VML_INT n, const T* a, const T* b, T scalea, T shifta, T scaleb, T shiftb, T* y),             \
                (const QNL_VML_INT* n, const T* a, const T* b, const T* scalea, const T* shifta, const T* scaleb, \
                 const T* shiftb, T* y))
/* Pack: y gets n elements of a, by stride, by index vector or by mask. Unpack: the reverse. */
#define QNL_VML_DECLARE_PACK(t, T, U)                                                                           \
  QNL_VML_EIGHT(t, U, PackI, PACKI, packi, (QNL_VML_INT n, const T* a, QNL_VML_INT inca, T* y),                 \
                (const QNL_VML_INT* n, const T* a, const QNL_VML_INT* inca, T* y))                              \
  QNL_VML_EIGHT(t, U, PackV, PACKV, packv, (QNL_VML_INT n, const T* a, const QNL_VML_INT* ia, T* y),            \
                (const QNL_VML_INT* n, const T* a, const QNL_VML_INT* ia, T* y))                                \
  QNL_VML_EIGHT(t, U, PackM, PACKM, packm, (QNL_VML_INT n, const T* a, const QNL_VML_INT* ma, T* y),            \
                (const QNL_VML_INT* n, const T* a, const QNL_VML_INT* ma, T* y))                                \
  QNL_VML_EIGHT(t, U, UnpackI, UNPACKI, unpacki, (QNL_VML_INT n, const T* a, T* y, QNL_VML_INT incy),           \
                (const QNL_VML_INT* n, const T* a, T* y, const QNL_VML_INT* incy))                              \
  QNL_VML_EIGHT(t, U, UnpackV, UNPACKV, unpackv, (QNL_VML_INT n, const T* a, T* y, const QNL_VML_INT* iy),      \
                (const QNL_VML_INT* n, const T* a, T* y, const QNL_VML_INT* iy))                                \
  QNL_VML_EIGHT(t, U, UnpackM, UNPACKM, unpackm, (QNL_VML_INT n, const T* a, T* y, const QNL_VML_INT* my),      \
                (const QNL_VML_INT* n, const T* a, T* y, const QNL_VML_INT* my))

QNL_VML_UNARY_REAL(QNL_VML_DECLARE_UNARY, s, float, S)
QNL_VML_UNARY_REAL(QNL_VML_DECLARE_UNARY, d, double, D)
QNL_VML_UNARY_COMPLEX(QNL_VML_DECLARE_UNARY, c, QNL_Complex8, C)
QNL_VML_UNARY_COMPLEX(QNL_VML_DECLARE_UNARY, z, QNL_Complex16, Z)
QNL_VML_BINARY_REAL(QNL_VML_DECLARE_BINARY, s, float, S)
QNL_VML_BINARY_REAL(QNL_VML_DECLARE_BINARY, d, double, D)
QNL_VML_BINARY_COMPLEX(QNL_VML_DECLARE_BINARY, c, QNL_Complex8, C)
QNL_VML_BINARY_COMPLEX(QNL_VML_DECLARE_BINARY, z, QNL_Complex16, Z)
QNL_VML_DECLARE_TWO(s, float, S, Modf, MODF, modf)
QNL_VML_DECLARE_TWO(d, double, D, Modf, MODF, modf)
QNL_VML_DECLARE_TWO(s, float, S, SinCos, SINCOS, sincos)
QNL_VML_DECLARE_TWO(d, double, D, SinCos, SINCOS, sincos)
QNL_VML_DECLARE_POWX(s, float, S, Powx, POWX, powx)
QNL_VML_DECLARE_POWX(d, double, D, Powx, POWX, powx)
QNL_VML_DECLARE_POWX(c, QNL_Complex8, C, Powx, POWX, powx)
QNL_VML_DECLARE_POWX(z, QNL_Complex16, Z, Powx, POWX, powx)
QNL_VML_DECLARE_LINFRAC(s, float, S, LinearFrac, LINEARFRAC, linearfrac)
QNL_VML_DECLARE_LINFRAC(d, double, D, LinearFrac, LINEARFRAC, linearfrac)
/* Complex to real (|a|, arg a) and real to complex (cos a + i sin a; the letter is the result's). */
QNL_VML_EIGHT(c, C, Abs, ABS, abs, (QNL_VML_INT n, const QNL_Complex8* a, float* y),
              (const QNL_VML_INT* n, const QNL_Complex8* a, float* y))
QNL_VML_EIGHT(z, Z, Abs, ABS, abs, (QNL_VML_INT n, const QNL_Complex16* a, double* y),
              (const QNL_VML_INT* n, const QNL_Complex16* a, double* y))
QNL_VML_EIGHT(c, C, Arg, ARG, arg, (QNL_VML_INT n, const QNL_Complex8* a, float* y),
              (const QNL_VML_INT* n, const QNL_Complex8* a, float* y))
QNL_VML_EIGHT(z, Z, Arg, ARG, arg, (QNL_VML_INT n, const QNL_Complex16* a, double* y),
              (const QNL_VML_INT* n, const QNL_Complex16* a, double* y))
QNL_VML_EIGHT(c, C, CIS, CIS, cis, (QNL_VML_INT n, const float* a, QNL_Complex8* y),
              (const QNL_VML_INT* n, const float* a, QNL_Complex8* y))
QNL_VML_EIGHT(z, Z, CIS, CIS, cis, (QNL_VML_INT n, const double* a, QNL_Complex16* y),
              (const QNL_VML_INT* n, const double* a, QNL_Complex16* y))
QNL_VML_DECLARE_PACK(s, float, S)
QNL_VML_DECLARE_PACK(d, double, D)
QNL_VML_DECLARE_PACK(c, QNL_Complex8, C)
QNL_VML_DECLARE_PACK(z, QNL_Complex16, Z)

#ifdef __cplusplus
}
#endif

#endif /* QNL_VML_H */
