// Layer choice and the search for back-end library files.
#pragma once
#include "entry.h"
#include "search.h"

namespace qnl::loader {

constexpr int kLayerVarSize = 32;

inline constexpr const char kCoreFile[] = "libqnl_core.so";
inline constexpr const char kClusterCoreFile[] = "libqnl_cdft_core.so";

// File of a threading layer value; null for values that have none.
const char* threading_file(int layer) QNL_HIDDEN;
// File of the threading layer in force, as the load failure reports it.
const char* threading_file_name() QNL_HIDDEN;
void* threading_handle() QNL_HIDDEN;

// The search of the threading layer and the two core libraries; its lock is
// the binding lock.
extern LibrarySearch g_search QNL_HIDDEN;

// Parses the text of QNL_INTERFACE_LAYER / QNL_THREADING_LAYER.
int read_interface_variable() QNL_HIDDEN;
int read_threading_variable() QNL_HIDDEN;

// The filter mode of qnl_rt_getenv (zero: every variable passes).
int32_t& env_mode() QNL_HIDDEN;

}  // namespace qnl::loader
