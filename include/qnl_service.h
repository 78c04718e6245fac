/* Service calls of qnl_rt for C programs: memory, threads, timers, version,
 * verbose mode, error hooks and the two layer setters. */
#ifndef QNL_SERVICE_H
#define QNL_SERVICE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
  int MajorVersion;
  int MinorVersion;
  int UpdateVersion;
  const char* ProductStatus;
  const char* Build;
  const char* Processor;
  const char* Platform;
} QNLVersion;

#define QNL_INTERFACE_LP64 0
#define QNL_INTERFACE_ILP64 1
#define QNL_THREADING_VELOR 0
#define QNL_THREADING_SEQUENTIAL 1
#define QNL_THREADING_PGI 2
#define QNL_THREADING_TBB 4

int QNL_Set_Threading_Layer(int layer);
int QNL_Set_Interface_Layer(int layer);

void* QNL_malloc(uint64_t size, int32_t alignment);
void* QNL_calloc(uint64_t count, uint64_t size, int32_t alignment);
void* QNL_realloc(void* p, uint64_t size);
void QNL_free(void* p);
void QNL_Free_Buffers(void);
void QNL_Thread_Free_Buffers(void);
int64_t QNL_Mem_Stat(int32_t* nbuffers);
int64_t QNL_Peak_Mem_Usage(int32_t mode);

void QNL_Set_Num_Threads(int32_t n);
int32_t QNL_Set_Num_Threads_Local(int32_t n);
int32_t QNL_Get_Max_Threads(void);
void QNL_Set_Dynamic(int32_t on);
int32_t QNL_Get_Dynamic(void);

double dsecnd(void);
void QNL_Get_Version(QNLVersion* version);
void QNL_Get_Version_String(char* buf, int32_t len);
int32_t QNL_Verbose(int32_t mode);
int32_t QNL_CBWR_Get(int32_t option);
int32_t QNL_CBWR_Set(int32_t setting);
int32_t QNL_Finalize(void);

typedef void (*QNLExitHandler)(int32_t code);
void QNL_Set_Exit_Handler(QNLExitHandler handler);
typedef void (*QNLXerblaHandler)(const char* name, const int32_t* info, int32_t len);
void* QNL_SET_XERBLA(QNLXerblaHandler handler);
typedef int32_t (*QNLProgressHandler)(const int32_t* thread, const int32_t* step, const char* stage, int32_t len);
typedef int32_t (*QNLPardisoPivotHandler)(const double* aii, double* bii, const double* eps);

#ifdef __cplusplus
}
#endif

#endif
