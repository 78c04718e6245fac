// The message catalogue: built-in rows, an optional localised file, and the
// printer that writes to the process's standard output.
#pragma once
#include <cstdint>

#include "entry.h"

namespace qnl::messages {

// All texts, each ending in a zero byte. Rows name theirs by offset, so the
// table holds no address and needs no relocation when the library loads.
extern const char kText[] QNL_HIDDEN;

struct Row {
  uint32_t number;
  uint32_t severity;  // 1, 2 or 4; stored, never read
  uint32_t text_at;   // offset of the text in kText
  const char* text() const { return kText + text_at; }
};
constexpr int kRowCount = 1414;
constexpr int kBufferSize = 512;
extern const Row kRows[kRowCount] QNL_HIDDEN;

// File name of the localised catalogue, looked for in a folder named from the locale.
inline constexpr const char kCatalogueFile[] = "qnl_msg.cat";

}  // namespace qnl::messages

// The rows the runtime itself raises.
namespace qnl::row {
constexpr int32_t kCannotLoad = 1;       // "... Cannot load %s."
constexpr int32_t kFunctionLoad = 3;     // "... Error on loading function %s."
constexpr int32_t kNoWorkMemory = 1089;  // "... Not enough work memory in function %s"
}  // namespace qnl::row

extern "C" {
const char* qnl_rt_message_text(int id, int nargs, ...) QNL_HIDDEN;
int qnl_rt_print_message(int kind, int id, int nargs, ...) QNL_HIDDEN;
}
