// The mode, status and callback calls: forwarders to the kernel library, which
// keeps all three. The facade reads no bit of the mode and keeps no copy.
#include <cstring>

#include "qnl_vml.h"
#include "report.h"
#include "vml_frame.h"

namespace qnl::vml {
namespace {

struct Forwarder {
  const char* symbol;
  Slot slot;
};

Forwarder g_set_mode{"qnl_vml_kernel_SetMode", {}};
Forwarder g_get_mode{"qnl_vml_kernel_GetMode", {}};
Forwarder g_set_status{"qnl_vml_kernel_SetErrStatus", {}};
Forwarder g_get_status{"qnl_vml_kernel_GetErrStatus", {}};
Forwarder g_clear_status{"qnl_vml_kernel_ClearErrStatus", {}};
Forwarder g_set_callback{"qnl_vml_kernel_SetErrorCallBack", {}};
Forwarder g_get_callback{"qnl_vml_kernel_GetErrorCallBack", {}};
Forwarder g_clear_callback{"qnl_vml_kernel_ClearErrorCallBack", {}};

// The library and the threaders come up here too, so any of these calls may be
// the first of vector math.
template <class F>
F* bound(Forwarder& fw) {
  bring_up();
  return reinterpret_cast<F*>(kernel_slot(fw.slot, fw.symbol));
}

using Callback = VMLErrorCallBack;

}  // namespace

int32_t set_mode_ref(const int32_t* mode) { return bound<int32_t(int32_t)>(g_set_mode)(*mode); }
int32_t set_mode_up(int32_t mode) {
  return reinterpret_cast<int32_t (*)(int32_t)>(kernel_slot(g_set_mode.slot, g_set_mode.symbol))(mode);
}
int32_t set_status_ref(const int32_t* status) { return bound<int32_t(int32_t)>(g_set_status)(*status); }

void reject(const Function& f, int32_t position, int32_t status) {
  qnl::report(f.name, static_cast<int32_t>(strnlen(f.name, 25)), position);
  set_status_ref(&status);
}

}  // namespace qnl::vml

using namespace qnl::vml;

#define QNL_VML_API extern "C" __attribute__((visibility("default")))

QNL_VML_API int vmlSetMode(int mode) { return bound<int32_t(int32_t)>(g_set_mode)(mode); }
// By reference: 32 bits are read whatever the interface layer.
QNL_VML_API int VMLSETMODE(const int* mode) { return set_mode_ref(mode); }
QNL_ALIAS(VMLSETMODE, vmlsetmode)
QNL_ALIAS(VMLSETMODE, vmlsetmode_)

QNL_VML_API int vmlSetErrStatus(int status) { return bound<int32_t(int32_t)>(g_set_status)(status); }
QNL_VML_API int VMLSETERRSTATUS(const int* status) { return set_status_ref(status); }
QNL_ALIAS(VMLSETERRSTATUS, vmlseterrstatus)
QNL_ALIAS(VMLSETERRSTATUS, vmlseterrstatus_)

QNL_VML_API int vmlGetMode(void) { return bound<int32_t()>(g_get_mode)(); }
QNL_VML_API int vmlGetErrStatus(void) { return bound<int32_t()>(g_get_status)(); }
QNL_VML_API int vmlClearErrStatus(void) { return bound<int32_t()>(g_clear_status)(); }
// The callback pointer is passed by value in every spelling, the Fortran ones too.
QNL_VML_API int vmlSetErrorCallBack(Callback cb) { return bound<int32_t(Callback)>(g_set_callback)(cb); }
QNL_VML_API Callback vmlGetErrorCallBack(void) { return bound<Callback()>(g_get_callback)(); }
QNL_VML_API int vmlClearErrorCallBack(void) { return bound<int32_t()>(g_clear_callback)(); }

#define QNL_VML_FOUR_NAMES(Mixed, UPPER, lower) \
  QNL_ALIAS(Mixed, UPPER)                       \
  QNL_ALIAS(Mixed, lower)                       \
  QNL_ALIAS(Mixed, lower##_)
QNL_VML_FOUR_NAMES(vmlGetMode, VMLGETMODE, vmlgetmode)
QNL_VML_FOUR_NAMES(vmlGetErrStatus, VMLGETERRSTATUS, vmlgeterrstatus)
QNL_VML_FOUR_NAMES(vmlClearErrStatus, VMLCLEARERRSTATUS, vmlclearerrstatus)
QNL_VML_FOUR_NAMES(vmlSetErrorCallBack, VMLSETERRORCALLBACK, vmlseterrorcallback)
QNL_VML_FOUR_NAMES(vmlGetErrorCallBack, VMLGETERRORCALLBACK, vmlgeterrorcallback)
QNL_VML_FOUR_NAMES(vmlClearErrorCallBack, VMLCLEARERRORCALLBACK, vmlclearerrorcallback)
