// The fftw_ entries of the FFTW3 interface.
#include "plan.h"
#include "services_gen.h"

using namespace qnl::fftw3;

namespace {
constexpr int32_t kFftDomain = 2;
}

#define QNL_EXPORT extern "C" __attribute__((visibility("default")))
#define QNL_X(name) fftw_##name
#define QNL_NAME(name) fftw_##name
#define QNL_R double
#define QNL_C fftw_complex
#define QNL_PRECISION kDoublePrecision
#define QNL_NULL_TESTS false
#include "api.inc"
