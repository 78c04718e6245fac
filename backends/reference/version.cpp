#include "messages.h"
#include "reference.h"

namespace qnl_ref {

Version version() { return {0, 1, 0, "Product", "20261122", "x86-64", QNL_REF_LAYER}; }

const char* version_string() { return "qnl_rt reference back-end 0.1.0 (" QNL_REF_LAYER ", x86-64)"; }

const char* catalogue_text(int id) {
  return id >= 0 && id < qnl::messages::kRowCount ? qnl::messages::kRows[id].text() : "";
}

}  // namespace qnl_ref
