// The search for library files as a value: a loader owns one, with its own
// pair of directories and its own lock, and every loader shares the code that
// fills the directories and tries a file in them.
#pragma once
#include <atomic>
#include <cstdint>

#include "entry.h"

namespace qnl {

constexpr int kPathSize = 260;  // bytes of a directory or path buffer, NUL included

// A one-word spin lock with no owner: held while a loader loads or binds.
class SpinLock {
 public:
  void lock() QNL_HIDDEN;
  void unlock() QNL_HIDDEN;
  // Frees the word whoever holds it: for a child process, where no holder survives the fork.
  void reset() QNL_HIDDEN;

 private:
  std::atomic<int32_t> word_{0};
};

class LibrarySearch {
 public:
  // Fills both directories: the folder of the file that holds `address` (links
  // resolved) and the folder of the executable. A path that cannot be read, or
  // is 260 bytes or longer, is reported as a load failure of "<qnl-loader>" and
  // ends the process; if the exit handler returns, the buffers stay as read.
  void fill(const void* address) QNL_HIDDEN;
  bool filled() const { return module_dir_[0] != '\0'; }

  // Loads `file` from the module directory, else from the executable
  // directory; a second attempt only where the two differ. A name with a path
  // of its own is never loaded. With the directories still empty the first
  // attempt is the bare name, which the platform looks up by its own rules.
  void* load(const char* file) const QNL_HIDDEN;

  const char* module_directory() const { return module_dir_; }
  const char* executable_directory() const { return exe_dir_; }

  SpinLock lock;

 private:
  char module_dir_[kPathSize] = {};
  char exe_dir_[kPathSize] = {};
};

}  // namespace qnl
