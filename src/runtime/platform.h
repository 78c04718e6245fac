// Operating-system services of the runtime. Everything the facade needs from the
// platform goes through these few functions, so no other file includes <dlfcn.h>
// or asks the environment directly.
#pragma once
#include <cstddef>

namespace qnl::plat {

// Opens a shared library by path; null on failure. Symbols stay local to it.
void* load_library(const char* path);
// Finds a symbol by exact name; null when absent or when `lib` is null.
void* find_symbol(void* lib, const char* name);

// Full path of the loaded file that holds `address` (links resolved) and of the
// executable. An address that no loaded file holds names the executable, as a
// module handle that cannot be found names the process image. Each returns the
// length written, `size` or more when the path did not fit, and 0 on failure.
int module_file_name(const void* address, char* buf, int size);
int executable_file_name(char* buf, int size);

// Reads an environment variable with the classic length contract: the length
// without NUL when the text fits in `size`, the size needed with NUL when not,
// 0 when unset.
int get_environment(const char* name, char* buf, int size);

// The name of the locale that picks the folder of the localised catalogue.
const char* message_locale();

// Copies `bytes` from `src` as far as that memory can be read, stopping at the
// first page that cannot, without a fault. Returns the number of bytes copied.
size_t copy_readable(void* dst, const void* src, size_t bytes);

// Ends the process at once with `code`: no atexit functions, no stream flush.
[[noreturn]] void terminate_process(int code);

}  // namespace qnl::plat
