#include "messages.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform.h"

namespace qnl::messages {
namespace {

// A localised catalogue is a text file of lines "<id + 0x80000000 in hex> <text>".
// A line is taken only when it ends in CR LF; that pair is not part of the text.
struct Catalogue {
  struct Entry {
    uint32_t key;
    char* text;  // with its line end, as read
  };
  Entry* entries = nullptr;
  size_t count = 0;
};

Catalogue* g_catalogue = nullptr;
char g_localised[kBufferSize];
char g_text_buffer[kBufferSize];
char g_print_buffer[kBufferSize];

Catalogue* open_catalogue(const char* path) {
  FILE* f = std::fopen(path, "rb");
  if (!f) return nullptr;
  auto* cat = static_cast<Catalogue*>(std::calloc(1, sizeof(Catalogue)));
  char* line = nullptr;
  size_t cap = 0;
  ssize_t n;
  while ((n = getline(&line, &cap, f)) > 0) {
    char* end;
    unsigned long key = std::strtoul(line, &end, 16);
    if (end == line || *end != ' ') continue;
    auto* grown = static_cast<Catalogue::Entry*>(std::realloc(cat->entries, (cat->count + 1) * sizeof(Catalogue::Entry)));
    if (!grown) break;
    cat->entries = grown;
    cat->entries[cat->count++] = {static_cast<uint32_t>(key), strdup(end + 1)};
  }
  std::free(line);
  std::fclose(f);
  return cat;
}

// The catalogue's text for `key`, the way a message resource hands it out: the
// length of the text, 0 when the row is absent.
size_t catalogue_text(const Catalogue* cat, uint32_t key, const char** text) {
  for (size_t i = 0; i < cat->count; ++i)
    if (cat->entries[i].key == key) {
      *text = cat->entries[i].text;
      return std::strlen(*text);
    }
  return 0;
}

const char* lookup(int id) {
  if (g_state.catalogue_first_use) {
    g_state.catalogue_first_use = 0;
    char path[128];
    std::snprintf(path, sizeof path, "%s/%s", plat::message_locale(), kCatalogueFile);
    g_catalogue = open_catalogue(path);
    if (g_catalogue) g_state.catalogue_builtin = 0;
  }
  // A number outside the table has no text rather than a wild read.
  if (id < 0 || id >= kRowCount) return "";
  const char* text = kRows[id].text;
  if (g_state.catalogue_builtin) return text;
  const char* local = nullptr;
  size_t n = catalogue_text(g_catalogue, static_cast<uint32_t>(id) + 0x80000000u, &local);
  // Only a text that ends in CR LF is taken, without that pair.
  if (n > 1 && local[n - 2] == '\r' && local[n - 1] == '\n') {
    size_t keep = n - 2 < kBufferSize - 1 ? n - 2 : kBufferSize - 1;
    std::memcpy(g_localised, local, keep);
    g_localised[keep] = '\0';
    text = g_localised;
  }
  return text;
}

// Prints a formatted buffer and flushes every stream of the process.
void print_buffer(const char* buf) {
  int len = static_cast<int>(strnlen(buf, kBufferSize)) - 1;
  // The bound above keeps this branch from ever running; it stays with its texts.
  if (len > kBufferSize) {
    std::printf("\nQNL INTERNAL ERROR: message buffer overflow.");
    std::printf("\n       Lenght: %d   Buffer size: %d\n", len, kBufferSize);
    std::fflush(nullptr);
  }
  std::printf("%s", buf);
  std::fflush(nullptr);
}

}  // namespace
}  // namespace qnl::messages

using namespace qnl::messages;

extern "C" {

const char* qnl_rt_message_text(int id, int nargs, ...) {
  if (id == 0) return "";
  const char* text = lookup(id);
  if (nargs < 1) return text;
  va_list ap;
  va_start(ap, nargs);
  std::vsnprintf(g_text_buffer, kBufferSize, text, ap);
  va_end(ap);
  return g_text_buffer;
}

int qnl_rt_print_message(int kind, int id, int nargs, ...) {
  (void)kind;
  (void)nargs;
  if (id != 0) {
    const char* text = lookup(id);
    va_list ap;
    va_start(ap, nargs);
    std::vsnprintf(g_print_buffer, kBufferSize, text, ap);
    va_end(ap);
    print_buffer(g_print_buffer);
  }
  std::snprintf(g_print_buffer, kBufferSize, "%s", kRows[0].text);
  print_buffer(g_print_buffer);
  return 0;
}

}  // extern "C"
