#include "platform.h"

#include <dlfcn.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <initializer_list>

namespace qnl::plat {

void* load_library(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }

void* find_symbol(void* lib, const char* name) {
  // A null handle would mean "search everything" to dlsym: a missing library
  // must find nothing instead.
  return lib ? dlsym(lib, name) : nullptr;
}

namespace {

int copy_path(const char* path, char* buf, int size) {
  if (!path || size <= 0) return 0;
  size_t n = strlen(path);
  if (n >= static_cast<size_t>(size)) {
    memcpy(buf, path, size - 1);
    buf[size - 1] = '\0';
    return size;
  }
  memcpy(buf, path, n + 1);
  return static_cast<int>(n);
}

int resolved_path(const char* path, char* buf, int size) {
  char real[PATH_MAX];
  if (!path || !realpath(path, real)) return 0;
  return copy_path(real, buf, size);
}

}  // namespace

int executable_file_name(char* buf, int size) { return resolved_path("/proc/self/exe", buf, size); }

int module_file_name(const void* address, char* buf, int size) {
  Dl_info info;
  if (!dladdr(address, &info) || !info.dli_fname) return executable_file_name(buf, size);
  return resolved_path(info.dli_fname, buf, size);
}

int get_environment(const char* name, char* buf, int size) {
  const char* v = getenv(name);
  if (!v) return 0;
  size_t n = strlen(v);
  if (size <= 0 || n >= static_cast<size_t>(size)) return static_cast<int>(n + 1);
  memcpy(buf, v, n + 1);
  return static_cast<int>(n);
}

const char* message_locale() {
  for (const char* var : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* v = getenv(var);
    if (v && *v) return v;
  }
  return "C";
}

void terminate_process(int code) { _exit(code); }

}  // namespace qnl::plat
