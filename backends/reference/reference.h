// Shared pieces of the reference back-end's sources.
#pragma once
#include <cstdint>

#include "qnl_service.h"

#ifndef QNL_REF_LAYER
#define QNL_REF_LAYER "sequential"
#endif
#ifndef QNL_REF_THREADED
#define QNL_REF_THREADED 0
#endif

namespace qnl_ref {

inline constexpr bool kThreaded = QNL_REF_THREADED != 0;
using Version = QNLVersion;

Version version();
const char* version_string();
// A row of the built-in message catalogue, unformatted.
const char* catalogue_text(int id);
// The thread count the services report.
int32_t max_threads();
// Passes a thread count on to the computational libraries.
void apply_threads(int32_t n);

}  // namespace qnl_ref
