// The probe kernel library: the tables of every vector function, whose kernels
// record their calls; the class, the table index and the mode calls, each
// recorded and answered as a test chose. One build, copied under the kernel
// libraries' file names.
#include <xmmintrin.h>

#include "probe_backend.h"

using qnl_probe::word;

namespace {

int32_t g_mode = 0;
int32_t g_status = 0;
void* g_callback = nullptr;

// A kernel as the pack frames call it directly: five words.
template <int I>
void kernel(uint64_t a, uint64_t b, uint64_t c, uint64_t d, uint64_t e) {
  const uint64_t w[] = {static_cast<uint64_t>(I), a, b, c, d, e};
  qnl_probe_record("qnl_vml_probe_kernel", QNL_PROBE_LIBRARY, w, 6);
}

using Kernel = void (*)(uint64_t, uint64_t, uint64_t, uint64_t, uint64_t);
constexpr int kTableSize = 4;

// Library start-up code that changes the floating-point control word, as some
// do: the loader must give the caller's back.
__attribute__((constructor)) void change_control_word() { _mm_setcsr(_mm_getcsr() | 0x8040); }

int32_t answer_int(const char* symbol, const uint64_t* w, int n) { return qnl_probe::answer<int32_t>(symbol, w, n); }

// Records the call with `value` as its word (a clear has none) and stores it; the
// old value is the answer.
template <class T>
T exchange(const char* symbol, T& cell, T value, int words = 1) {
  const uint64_t w[] = {word(value)};
  qnl_probe_record(symbol, QNL_PROBE_LIBRARY, w, words);
  T old = cell;
  cell = value;
  return old;
}
template <class T>
T read(const char* symbol, const T& cell) {
  qnl_probe_record(symbol, QNL_PROBE_LIBRARY, nullptr, 0);
  return cell;
}

}  // namespace

// Tags differ per function and per index, so a test can tell which table entry travelled.
#define QNL_VML_FUNCTION(t, Stem, group)                                                                     \
  QNL_PROBE_API const Kernel qnl_vml_kernel_##t##Stem##_ttab[kTableSize] = {kernel<0>, kernel<1>, kernel<2>, \
                                                                            kernel<3>};                      \
  QNL_PROBE_API const int32_t qnl_vml_kernel_##t##Stem##_ctab[kTableSize] = {__LINE__ * 4, __LINE__ * 4 + 1, \
                                                                             __LINE__ * 4 + 2, __LINE__ * 4 + 3};
#include "vml_functions.inc"

QNL_PROBE_API int32_t dll_cpu_version(void) { return answer_int("dll_cpu_version", nullptr, 0); }

QNL_PROBE_API int32_t qnl_vml_kernel_GetTTableIndex(int32_t kernel_index) {
  const uint64_t w[] = {word(kernel_index)};
  return answer_int("qnl_vml_kernel_GetTTableIndex", w, 1);
}

// Mode, status and callback as the kernel library keeps them: each call recorded
// with its argument; a setter answers the old value, ClearErrStatus the old status.
#define QNL_PROBE_KERNEL_API(R, Stem) QNL_PROBE_API R qnl_vml_kernel_##Stem
#define QNL_PROBE_NAME(Stem) "qnl_vml_kernel_" #Stem
QNL_PROBE_KERNEL_API(int32_t, SetMode)(int32_t mode) { return exchange(QNL_PROBE_NAME(SetMode), g_mode, mode); }
QNL_PROBE_KERNEL_API(int32_t, GetMode)(void) { return read(QNL_PROBE_NAME(GetMode), g_mode); }
QNL_PROBE_KERNEL_API(int32_t, SetErrStatus)(int32_t status) {
  return exchange(QNL_PROBE_NAME(SetErrStatus), g_status, status);
}
QNL_PROBE_KERNEL_API(int32_t, GetErrStatus)(void) { return read(QNL_PROBE_NAME(GetErrStatus), g_status); }
QNL_PROBE_KERNEL_API(int32_t, ClearErrStatus)(void) { return exchange(QNL_PROBE_NAME(ClearErrStatus), g_status, 0, 0); }
QNL_PROBE_KERNEL_API(int32_t, SetErrorCallBack)(void* cb) {
  exchange(QNL_PROBE_NAME(SetErrorCallBack), g_callback, cb);
  return 0;
}
QNL_PROBE_KERNEL_API(void*, GetErrorCallBack)(void) { return read(QNL_PROBE_NAME(GetErrorCallBack), g_callback); }
QNL_PROBE_KERNEL_API(int32_t, ClearErrorCallBack)(void) {
  exchange(QNL_PROBE_NAME(ClearErrorCallBack), g_callback, static_cast<void*>(nullptr), 0);
  return 0;
}
