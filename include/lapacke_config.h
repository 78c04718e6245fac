/* Types of the LAPACKE C interface of libqnl_rt.so.
 *
 * lapack_int is 32 bits unless LAPACK_ILP64 is defined (then 64 bits, for
 * programs that run the library with QNL_INTERFACE_LAYER=ILP64). Complex
 * numbers are C99 complex types in C and std::complex in C++ when
 * LAPACK_COMPLEX_CPP is defined; define LAPACK_COMPLEX_STRUCTURE for a plain
 * struct, or LAPACK_COMPLEX_CUSTOM and the two type macros for your own. */
#ifndef QNL_LAPACKE_CONFIG_H
#define QNL_LAPACKE_CONFIG_H

#include <inttypes.h>
#include <stdint.h>
#include <stdlib.h>

#if defined(__cplusplus) && defined(LAPACK_COMPLEX_CPP)
#include <complex>
#endif

#ifndef lapack_int
#if defined(LAPACK_ILP64)
#define lapack_int int64_t
#else
#define lapack_int int32_t
#endif
#endif

#ifndef LAPACK_IFMT
#if defined(LAPACK_ILP64)
#define LAPACK_IFMT PRId64
#else
#define LAPACK_IFMT PRId32
#endif
#endif

#ifndef lapack_logical
#define lapack_logical lapack_int
#endif

#ifndef LAPACK_COMPLEX_CUSTOM
#if defined(LAPACK_COMPLEX_STRUCTURE)
typedef struct {
  float real, imag;
} _lapack_complex_float;
typedef struct {
  double real, imag;
} _lapack_complex_double;
#define lapack_complex_float _lapack_complex_float
#define lapack_complex_double _lapack_complex_double
#define lapack_complex_float_real(z) ((z).real)
#define lapack_complex_float_imag(z) ((z).imag)
#define lapack_complex_double_real(z) ((z).real)
#define lapack_complex_double_imag(z) ((z).imag)
#elif defined(__cplusplus) && defined(LAPACK_COMPLEX_CPP)
#define lapack_complex_float std::complex<float>
#define lapack_complex_double std::complex<double>
#define lapack_complex_float_real(z) ((z).real())
#define lapack_complex_float_imag(z) ((z).imag())
#define lapack_complex_double_real(z) ((z).real())
#define lapack_complex_double_imag(z) ((z).imag())
#else
#include <complex.h>
#define lapack_complex_float float _Complex
#define lapack_complex_double double _Complex
#define lapack_complex_float_real(z) (creal(z))
#define lapack_complex_float_imag(z) (cimag(z))
#define lapack_complex_double_real(z) (creal(z))
#define lapack_complex_double_imag(z) (cimag(z))
#endif
#endif

#endif
