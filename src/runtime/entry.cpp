// Binding: the lock, the three resolvers, the fatal exit and the cold paths of
// unbound entries.
#include "entry.h"

#include <pthread.h>

#include "loader.h"
#include "messages.h"
#include "platform.h"
#include "services_gen.h"

QnlRuntimeState qnl_rt_state;

namespace qnl {

namespace {

// Whether this thread holds the binding lock: the exit path lets go of it
// around the handler, which may leave by longjmp and never come back.
thread_local bool t_holds_lock = false;
// A child forked while another thread held the lock has only the copy of a
// held word and no holder to release it: the child starts with it free.
void free_in_child() {
  loader::g_search.lock.reset();
  t_holds_lock = false;
}
using ExitHandler = QNLExitHandler;
std::atomic<ExitHandler> g_exit_handler{nullptr};

void* library_symbol(void* lib, const char* symbol) {
  if (void* p = plat::find_symbol(lib, symbol)) return p;
  qnl_rt_print_message(0, row::kFunctionLoad, 1, symbol);
  qnl_rt_exit(2);
  return nullptr;
}

// The core and cluster-core roads: load once into `handle`, report a failure.
void* resolve_side_library(void*& handle, const char* file, bool then_threading_layer) {
  if (!handle) {
    handle = loader::g_search.load(file);
    if (!handle) {
      qnl_rt_print_message(0, row::kCannotLoad, 1, file);
      qnl_rt_exit(2);
    } else if (then_threading_layer && !loader::threading_handle()) {
      qnl_rt_load_threading_layer();
      if (!loader::threading_handle()) {
        qnl_rt_print_message(0, row::kCannotLoad, 1, loader::threading_file_name());
        qnl_rt_exit(2);
      }
    }
  }
  return handle;
}

void* g_core_handle = nullptr;
void* g_cdft_handle = nullptr;

template <void* (*Resolve)(const char*)>
void* bind_locked(Slot& slot, const char* symbol) {
  qnl_rt_bind_lock();
  // The slot is not re-tested inside the lock: racing binders store the same address.
  slot.fn.store(Resolve(symbol), std::memory_order_relaxed);
  qnl_rt_bind_unlock();
  return slot.get();
}

}  // namespace

void* bind_thin(Slot& slot, const char* symbol) {
  void* p = bind_locked<qnl_rt_resolve>(slot, symbol);
  if (p) return p;
  qnl_rt_exit(2);
  // Whatever the handler did, the entry goes through the slot as it now stands.
  return slot.get();
}

void* bind_family(Slot& slot, const char* symbol) { return bind_locked<qnl_rt_resolve>(slot, symbol); }
void* bind_family_core(Slot& slot, const char* symbol) { return bind_locked<qnl_rt_resolve_core>(slot, symbol); }
void* bind_family_cdft(Slot& slot, const char* symbol) { return bind_locked<qnl_rt_resolve_cdft>(slot, symbol); }

int settle_interface_layer() {
  qnl_rt_bind_lock();
  int v = qnl_rt_interface_layer_init();
  qnl_rt_bind_unlock();
  return v;
}

}  // namespace qnl

using namespace qnl;

extern "C" {

// pthread_once rather than a guarded local static: the guard would bring the C++
// runtime's exception pool (a 71 KB allocation at load) into every process.
static void handle_fork() { pthread_atfork(nullptr, nullptr, free_in_child); }

void qnl_rt_bind_lock() {
  static pthread_once_t fork_handled = PTHREAD_ONCE_INIT;
  pthread_once(&fork_handled, handle_fork);
  loader::g_search.lock.lock();
  t_holds_lock = true;
}

void qnl_rt_bind_unlock() {
  t_holds_lock = false;
  loader::g_search.lock.unlock();
}

void* qnl_rt_resolve(const char* symbol) {
  if (!loader::threading_handle()) qnl_rt_load_threading_layer();
  void* lib = loader::threading_handle();
  if (!lib) {
    qnl_rt_print_message(0, row::kCannotLoad, 1, loader::threading_file_name());
    qnl_rt_exit(2);
    return nullptr;
  }
  return library_symbol(lib, symbol);
}

void* qnl_rt_resolve_core(const char* symbol) {
  return library_symbol(resolve_side_library(g_core_handle, loader::kCoreFile, true), symbol);
}

void* qnl_rt_resolve_cdft(const char* symbol) {
  return library_symbol(resolve_side_library(g_cdft_handle, loader::kClusterCoreFile, false), symbol);
}

void qnl_rt_exit(int code) {
  ExitHandler h = g_exit_handler.load(std::memory_order_relaxed);
  if (!h) plat::terminate_process(code);
  // The handler runs without the binding lock: one that leaves by longjmp must
  // not leave the lock held for ever. If it returns, the lock is taken again,
  // so the binding that called this path releases it as before.
  bool held = t_holds_lock;
  if (held) qnl_rt_bind_unlock();
  h(code);
  if (held) qnl_rt_bind_lock();
}

// The exit handler must be in force before any back-end exists, so this entry
// keeps it in the facade before forwarding it.
static Slot s_set_exit_handler;
void qnl_body_QNL_SET_EXIT_HANDLER(QNLExitHandler handler) {
  g_exit_handler.store(handler, std::memory_order_relaxed);
  void* p = s_set_exit_handler.get();
  if (!p) {
    p = bind_locked<qnl_rt_resolve>(s_set_exit_handler, "qnl_serv_set_exit_handler");
    if (!p) {
      // A failed binding has already called the handler once; this is the second call.
      if (ExitHandler h = g_exit_handler.load(std::memory_order_relaxed))
        h(2);
      else
        plat::terminate_process(2);
      p = s_set_exit_handler.get();
    }
  }
  return reinterpret_cast<void (*)(void*)>(p)(qnl::vp(handler));
}
QNL_SERVICE_ALIASES_QNL_SET_EXIT_HANDLER

}  // extern "C"
