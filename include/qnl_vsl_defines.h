/* Random streams of qnl_rt: the handle and callback types and the status codes of the
 * stream and distribution entries (qnl_vsl.h). The generator, method and kernel status
 * constants belong here too, beside these. */
#ifndef QNL_VSL_DEFINES_H
#define QNL_VSL_DEFINES_H

/* Status codes. Codes the facade does not produce come from the kernel library. */
#define VSL_STATUS_OK 0
#define VSL_ERROR_BADARGS (-3)           /* an argument failed its test */
#define VSL_ERROR_NULL_PTR (-5)          /* a null stream handle */
#define VSL_RNG_ERROR_BAD_BRNG (-1000)   /* a generator index out of range */
#define VSL_RNG_ERROR_BAD_STREAM (-1006) /* the handle is not a live stream */

#ifdef __cplusplus
extern "C" {
#endif

/* A stream: a record the kernel library allocates and frees. */
typedef void* VSLStreamStatePtr;

/* The properties record of a generator (vslRegisterBrng, vslGetBrngProperties). */
typedef struct VSLBRngProperties VSLBRngProperties;

/* Callbacks of the abstract streams: refill the caller's buffer from index idx. */
typedef int (*iUpdateFuncPtr)(VSLStreamStatePtr stream, int* n, unsigned int ibuf[], int* nmin, int* nmax, int* idx);
typedef int (*dUpdateFuncPtr)(VSLStreamStatePtr stream, int* n, double dbuf[], int* nmin, int* nmax, int* idx);
typedef int (*sUpdateFuncPtr)(VSLStreamStatePtr stream, int* n, float sbuf[], int* nmin, int* nmax, int* idx);

#ifdef __cplusplus
}
#endif

#endif
