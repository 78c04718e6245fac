#include "search.h"

#include <sched.h>

#include <cstring>

#include "messages.h"
#include "platform.h"

namespace qnl {
namespace {

// Fills `dir` from a file name: the path up to and including its last
// separator. Returns false when the path is unavailable or 260 bytes or longer.
bool fill_directory(char* dir, int n) {
  if (n <= 0 || n >= kPathSize) return false;
  dir[n] = '\0';
  char* sep = std::strrchr(dir, '/');
  if (sep && n < kPathSize - 1) sep[1] = '\0';
  return true;
}

bool has_separator(const char* file) { return std::strchr(file, '/') || std::strchr(file, '\\'); }

void* load_from(const char* dir, const char* file) {
  char path[kPathSize] = {};
  size_t d = std::strlen(dir), f = std::strlen(file);
  if (d + f >= sizeof path) return nullptr;  // too long for the buffer: a failed attempt
  std::memcpy(path, dir, d);
  std::memcpy(path + d, file, f + 1);
  return plat::load_library(path);
}

}  // namespace

void SpinLock::lock() {
  // Waiters back off: a short burst of pause instructions, then they give the
  // processor away, so that the thread that is loading a library keeps a core
  // when more threads wait than there are cores.
  for (unsigned spins = 0;; ++spins) {
    int32_t expected = 0;
    if (word_.load(std::memory_order_relaxed) == 0 &&
        word_.compare_exchange_weak(expected, 1, std::memory_order_acquire))
      return;
    if (spins < 64)
      __builtin_ia32_pause();
    else
      sched_yield();
  }
}

void SpinLock::unlock() { word_.store(0, std::memory_order_release); }

void SpinLock::reset() { word_.store(0, std::memory_order_relaxed); }

void LibrarySearch::fill(const void* address) {
  bool module_ok = fill_directory(module_dir_, plat::module_file_name(address, module_dir_, kPathSize));
  bool exe_ok = fill_directory(exe_dir_, plat::executable_file_name(exe_dir_, kPathSize));
  if (!module_ok || !exe_ok) {
    qnl_rt_print_message(0, row::kCannotLoad, 1, "<qnl-loader>");
    qnl_rt_exit(2);
  }
}

void* LibrarySearch::load(const char* file) const {
  if (!has_separator(file)) {
    if (void* h = load_from(module_dir_, file)) return h;
  }
  size_t m = std::strlen(module_dir_);
  if (m == std::strlen(exe_dir_) && std::memcmp(module_dir_, exe_dir_, m) == 0) return nullptr;
  // A name with a path of its own is never loaded.
  if (has_separator(file)) return nullptr;
  return load_from(exe_dir_, file);
}

}  // namespace qnl
