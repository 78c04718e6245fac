#include "loader.h"

#include <cstring>
#include <iterator>

#include "platform.h"

namespace qnl::loader {

LibrarySearch g_search;

namespace {

std::atomic<void*> g_threading_handle{nullptr};
// The filter mode of qnl_rt_getenv. Nothing in the facade writes it, so every
// variable passes; the filter stays as a mechanism.
int32_t g_env_mode = 0;

int32_t load_value(const int32_t& v) { return __atomic_load_n(&v, __ATOMIC_RELAXED); }
void store_value(int32_t& v, int32_t x) { __atomic_store_n(&v, x, __ATOMIC_RELAXED); }

// Reads a layer variable into `word` as the first word of its text: leading
// blanks and quotes are skipped and the word ends at the next one. A text of
// 32 characters or more counts as empty.
void layer_word(const char* name, char (&word)[kLayerVarSize + 1]) {
  char text[kLayerVarSize + 1] = {};
  int n = plat::get_environment(name, text, kLayerVarSize);
  if (n > kLayerVarSize || n <= 0) text[0] = '\0';
  auto stop = [](char c) { return c == ' ' || c == '"' || c == '\''; };
  const char* p = text;
  while (*p && stop(*p)) ++p;
  size_t len = 0;
  while (p[len] && !stop(p[len])) ++len;
  std::memcpy(word, p, len);
  word[len] = '\0';
}

struct Spelling {
  const char* text;
  int value;
};

int match(const char* name, const Spelling* table, size_t count) {
  char word[kLayerVarSize + 1];
  layer_word(name, word);
  if (!word[0]) return 0;
  for (size_t i = 0; i < count; ++i)
    if (std::strcmp(word, table[i].text) == 0) return table[i].value;
  return 0;
}

}  // namespace

const char* threading_file(int layer) {
  switch (layer) {
    case 0: return "libqnl_velor_thread.so";
    case 1: return "libqnl_sequential.so";
    case 2: return "libqnl_pgi_thread.so";
    case 4: return "libqnl_tbb_thread.so";
    default: return nullptr;
  }
}

const char* threading_file_name() { return threading_file(load_value(g_state.threading_layer)); }
void* threading_handle() { return g_threading_handle.load(std::memory_order_acquire); }
int read_interface_variable() {
  static const Spelling spellings[] = {{"ILP64", 1}, {"ilp64", 1}};
  return match("QNL_INTERFACE_LAYER", spellings, std::size(spellings));
}

int read_threading_variable() {
  static const Spelling spellings[] = {{"SEQUENTIAL", 1}, {"sequential", 1}, {"SEQ", 1}, {"seq", 1},
                                       {"PGI", 2},        {"pgi", 2},        {"TBB", 4}, {"tbb", 4}};
  return match("QNL_THREADING_LAYER", spellings, std::size(spellings));
}

int32_t& env_mode() { return g_env_mode; }

}  // namespace qnl::loader

using namespace qnl;
using namespace qnl::loader;

extern "C" {

int qnl_rt_interface_layer_init() {
  int v = load_value(g_state.interface_layer);
  if (v != -1) return v;
  v = read_interface_variable();
  store_value(g_state.interface_layer, v);
  return v;
}

void qnl_rt_load_threading_layer() {
  // The directories are those of the file that holds this function.
  if (!g_search.filled()) g_search.fill(reinterpret_cast<const void*>(&qnl_rt_load_threading_layer));
  if (load_value(g_state.threading_layer) == -1) store_value(g_state.threading_layer, read_threading_variable());
  const char* file = threading_file(load_value(g_state.threading_layer));
  if (!file) {
    // Values without a library of their own fall back to the default layer, silently.
    store_value(g_state.threading_layer, 0);
    file = threading_file(0);
  }
  g_threading_handle.store(g_search.load(file), std::memory_order_release);
}

int qnl_rt_getenv(const char* name, char* buffer, int size) {
  static const char* const allowed[] = {"MIC_LD_LIBRARY_PATH", "LD_LIBRARY_PATH", "QNLROOT", "LANG"};
  if (load_value(g_env_mode) >= 1) {
    bool pass = false;
    for (const char* a : allowed) pass = pass || std::strcmp(name, a) == 0;
    if (!pass) {
      if (size >= 1) buffer[0] = '\0';
      return 0;
    }
  }
  int n = plat::get_environment(name, buffer, size < 0 ? 0 : size);
  if (n < size && n > 0) return n;
  int result = n < size ? 0 : -n;
  if (size >= 1) buffer[0] = '\0';
  return result;
}

// The layer setters keep their values in the facade and take no lock: they
// belong before the first call of the library.
__attribute__((visibility("default"))) int QNL_Set_Threading_Layer(int layer) {
  int v = load_value(g_state.threading_layer);
  if (v != -1) return v;
  // Value 2 is reached through the environment only; 3 selects no library.
  if (layer == 2 || layer == 3) return v;
  store_value(g_state.threading_layer, layer);
  return layer;
}

__attribute__((visibility("default"))) int qnl_set_threading_layer(const int* layer) {
  return QNL_Set_Threading_Layer(*layer);
}

__attribute__((visibility("default"))) int QNL_Set_Interface_Layer(int layer) {
  int v = load_value(g_state.interface_layer);
  if (v == -1 && (layer == 0 || layer == 1)) {
    store_value(g_state.interface_layer, layer);
    return layer;
  }
  return v;
}

__attribute__((visibility("default"))) int qnl_set_interface_layer(const int* layer) {
  return QNL_Set_Interface_Layer(*layer);
}

}  // extern "C"
