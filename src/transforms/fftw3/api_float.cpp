// The fftwf_ entries of the FFTW3 interface.
#include "plan.h"
#include "services_gen.h"

using namespace qnl::fftw3;

namespace {
constexpr int32_t kFftDomain = 2;
}

#define QNL_EXPORT extern "C" __attribute__((visibility("default")))
#define QNL_X(name) fftwf_##name
#define QNL_NAME(name) fftwf_##name
#define QNL_R float
#define QNL_C fftwf_complex
#define QNL_PRECISION kSinglePrecision
#define QNL_NULL_TESTS true
#include "api.inc"
