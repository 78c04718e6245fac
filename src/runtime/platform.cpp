#include "platform.h"

#include "loaded_object.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/uio.h>
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

// The file mapped at `addr`, from the process's own map of loaded files: the
// kernel names every mapping by its absolute path, links resolved, as it was
// when the file was opened. The dynamic linker's record of a library found
// through a relative search path is relative, and would be read against
// whatever the working directory has become since.
bool mapped_file(const void* addr, char* path, size_t size) {
  int fd = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  auto want = reinterpret_cast<uintptr_t>(addr);
  char chunk[4096], line[PATH_MAX + 128];
  size_t len = 0;
  bool found = false, skipping = false;
  ssize_t n;
  while (!found && (n = read(fd, chunk, sizeof chunk)) > 0) {
    for (ssize_t i = 0; i < n && !found; ++i) {
      if (chunk[i] != '\n') {
        if (len < sizeof line - 1)
          line[len++] = chunk[i];
        else
          skipping = true;
        continue;
      }
      line[len] = '\0';
      unsigned long lo = 0, hi = 0;
      int name = 0;
      if (!skipping && sscanf(line, "%lx-%lx %*s %*s %*s %*s %n", &lo, &hi, &name) >= 2 && name > 0 && want >= lo &&
          want < hi && line[name] == '/') {
        found = strlen(line + name) < size;
        if (found) strcpy(path, line + name);
      }
      len = 0;
      skipping = false;
    }
  }
  close(fd);
  return found;
}

}  // namespace

// The kernel's link names the executable by its absolute path, links resolved:
// one readlink instead of one per component of the path.
int executable_file_name(char* buf, int size) {
  char path[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  if (n <= 0) return 0;
  path[n] = '\0';
  return copy_path(path, buf, size);
}

int module_file_name(const void* address, char* buf, int size) {
  // A library's absolute record is trusted as it stands (its links resolved),
  // and the main program is the executable the kernel names: both cheaper than
  // having the kernel print the whole map of the process, which is left for a
  // library found through a relative path.
  const char* name = loaded_object_name(address);
  if (name && name[0] == '\0') return executable_file_name(buf, size);
  if (name && name[0] == '/') return resolved_path(name, buf, size);
  char path[PATH_MAX];
  if (mapped_file(address, path, sizeof path)) return resolved_path(path, buf, size);
  return name ? 0 : executable_file_name(buf, size);
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

size_t copy_readable(void* dst, const void* src, size_t bytes) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  auto from = reinterpret_cast<uintptr_t>(src);
  // Within one page, the memory is readable as a whole or not at all.
  if (bytes <= page - from % page) {
    memcpy(dst, src, bytes);
    return bytes;
  }
  // Page by page through the kernel, which stops at the first page it cannot
  // read rather than faulting.
  constexpr int kPieces = 256;
  struct iovec remote[kPieces];
  size_t done = 0;
  while (done < bytes) {
    int k = 0;
    size_t want = 0;
    for (uintptr_t at = from + done; k < kPieces && done + want < bytes; ++k) {
      size_t len = page - at % page;
      if (len > bytes - done - want) len = bytes - done - want;
      remote[k] = {reinterpret_cast<void*>(at), len};
      at += len;
      want += len;
    }
    struct iovec local = {static_cast<char*>(dst) + done, want};
    ssize_t got = process_vm_readv(getpid(), &local, 1, remote, static_cast<unsigned long>(k), 0);
    if (got < 0 && done == 0 && (errno == ENOSYS || errno == EPERM)) {
      // No such call here: a plain copy, as a caller's valid array allows.
      memcpy(dst, src, bytes);
      return bytes;
    }
    if (got <= 0) break;
    done += static_cast<size_t>(got);
    if (static_cast<size_t>(got) < want) break;
  }
  return done;
}

void terminate_process(int code) { _exit(code); }

}  // namespace qnl::plat
