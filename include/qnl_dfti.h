/* The descriptor interface to the discrete Fourier transforms of libqnl_rt.so. */
#ifndef QNL_DFTI_H
#define QNL_DFTI_H

#ifdef __cplusplus
extern "C" {
#endif

/* Integers of the interface layer: 32 bits unless the program is built for
 * the 64-bit integer layer (QNL_ILP64, run with QNL_INTERFACE_LAYER=ILP64). */
#ifdef QNL_ILP64
typedef long long QNL_DFTI_INT;
#else
typedef int QNL_DFTI_INT;
#endif

typedef struct DFTI_DESCRIPTOR* DFTI_DESCRIPTOR_HANDLE;

enum DFTI_CONFIG_PARAM {
  DFTI_FORWARD_DOMAIN = 0,
  DFTI_DIMENSION = 1,
  DFTI_LENGTHS = 2,
  DFTI_PRECISION = 3,
  DFTI_FORWARD_SCALE = 4,
  DFTI_BACKWARD_SCALE = 5,
  DFTI_NUMBER_OF_TRANSFORMS = 7,
  DFTI_COMPLEX_STORAGE = 8,
  DFTI_REAL_STORAGE = 9,
  DFTI_CONJUGATE_EVEN_STORAGE = 10,
  DFTI_PLACEMENT = 11,
  DFTI_INPUT_STRIDES = 12,
  DFTI_OUTPUT_STRIDES = 13,
  DFTI_INPUT_DISTANCE = 14,
  DFTI_OUTPUT_DISTANCE = 15,
  DFTI_WORKSPACE = 17,
  DFTI_ORDERING = 18,
  DFTI_TRANSPOSE = 19,
  DFTI_DESCRIPTOR_NAME = 20,
  DFTI_PACKED_FORMAT = 21,
  DFTI_COMMIT_STATUS = 22,
  DFTI_VERSION = 23,
  DFTI_NUMBER_OF_USER_THREADS = 26,
  DFTI_THREAD_LIMIT = 27,
  DFTI_DESTROY_INPUT = 28
};

enum DFTI_CONFIG_VALUE {
  DFTI_COMMITTED = 30,
  DFTI_UNCOMMITTED = 31,
  DFTI_COMPLEX = 32,
  DFTI_REAL = 33,
  DFTI_SINGLE = 35,
  DFTI_DOUBLE = 36,
  DFTI_COMPLEX_COMPLEX = 39,
  DFTI_COMPLEX_REAL = 40,
  DFTI_REAL_COMPLEX = 41,
  DFTI_REAL_REAL = 42,
  DFTI_INPLACE = 43,
  DFTI_NOT_INPLACE = 44,
  DFTI_ORDERED = 48,
  DFTI_BACKWARD_SCRAMBLED = 49,
  DFTI_ALLOW = 51,
  DFTI_AVOID = 52,
  DFTI_CCS_FORMAT = 54,
  DFTI_PACK_FORMAT = 55,
  DFTI_PERM_FORMAT = 56,
  DFTI_CCE_FORMAT = 57
};

#define DFTI_NO_ERROR 0
#define DFTI_MEMORY_ERROR 1
#define DFTI_INVALID_CONFIGURATION 2
#define DFTI_INCONSISTENT_CONFIGURATION 3
#define DFTI_MULTITHREADED_ERROR 4
#define DFTI_BAD_DESCRIPTOR 5
#define DFTI_UNIMPLEMENTED 6
#define DFTI_INTERNAL_ERROR 7
#define DFTI_NUMBER_OF_THREADS_ERROR 8
#define DFTI_LENGTH_EXCEEDS_INT32 9

#define DFTI_MAX_NAME_LENGTH 10
#define DFTI_VERSION_LENGTH 198

/* Every status comes back sign-extended to 64 bits. For dimension 1 the
 * variadic argument of the create entries is the length; otherwise a pointer to
 * the lengths, slowest dimension first. */
long DftiCreateDescriptor(DFTI_DESCRIPTOR_HANDLE* handle, enum DFTI_CONFIG_VALUE precision,
                          enum DFTI_CONFIG_VALUE domain, QNL_DFTI_INT dimension, ...);
long DftiCreateDescriptor_d_1d(DFTI_DESCRIPTOR_HANDLE* handle, enum DFTI_CONFIG_VALUE domain, QNL_DFTI_INT length);
long DftiCreateDescriptor_s_1d(DFTI_DESCRIPTOR_HANDLE* handle, enum DFTI_CONFIG_VALUE domain, QNL_DFTI_INT length);
long DftiCreateDescriptor_d_md(DFTI_DESCRIPTOR_HANDLE* handle, enum DFTI_CONFIG_VALUE domain, QNL_DFTI_INT dimension,
                               ...);
long DftiCreateDescriptor_s_md(DFTI_DESCRIPTOR_HANDLE* handle, enum DFTI_CONFIG_VALUE domain, QNL_DFTI_INT dimension,
                               ...);
long DftiCopyDescriptor(DFTI_DESCRIPTOR_HANDLE source, DFTI_DESCRIPTOR_HANDLE* copy);
long DftiCommitDescriptor(DFTI_DESCRIPTOR_HANDLE handle);
long DftiComputeForward(DFTI_DESCRIPTOR_HANDLE handle, void* x, ...);
long DftiComputeBackward(DFTI_DESCRIPTOR_HANDLE handle, void* x, ...);
long DftiSetValue(DFTI_DESCRIPTOR_HANDLE handle, enum DFTI_CONFIG_PARAM param, ...);
long DftiGetValue(DFTI_DESCRIPTOR_HANDLE handle, enum DFTI_CONFIG_PARAM param, ...);
long DftiFreeDescriptor(DFTI_DESCRIPTOR_HANDLE* handle);
char* DftiErrorMessage(long status);
long DftiErrorClass(long status, long error_class);

#ifdef __cplusplus
}
#endif
#endif
