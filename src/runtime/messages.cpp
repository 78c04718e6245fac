#include "messages.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform.h"

namespace qnl::messages {
namespace {

// A localised catalogue is a text file of lines "<id + 0x80000000 in hex> <text>".
// A line is taken only when it ends in CR LF; that pair is not part of the text.
// The file is kept as read and a row is found when it is asked for.
struct Catalogue {
  char* text = nullptr;
  size_t size = 0;
};

// Far above any real catalogue (the whole table translated is ~150 KB); a
// bigger file is not a catalogue and is not read.
constexpr off_t kCatalogueCap = 8 << 20;

Catalogue* g_catalogue = nullptr;
char g_localised[kBufferSize];
char g_text_buffer[kBufferSize];
char g_print_buffer[kBufferSize];

// Opens a catalogue: a regular file only (never a FIFO that would block or a
// device that never ends), non-blocking, and within the size cap.
Catalogue* open_catalogue(const char* path) {
  int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (fd < 0) return nullptr;
  struct stat st;
  Catalogue* cat = nullptr;
  if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size <= kCatalogueCap) {
    size_t want = static_cast<size_t>(st.st_size), got = 0;
    char* text = static_cast<char*>(std::malloc(want + 1));
    ssize_t n = 1;
    while (text && got < want && (n = read(fd, text + got, want - got)) > 0) got += static_cast<size_t>(n);
    if (text && n >= 0) {
      cat = static_cast<Catalogue*>(std::calloc(1, sizeof(Catalogue)));
      if (cat) *cat = {text, got};
    }
    if (!cat) std::free(text);
  }
  close(fd);
  return cat;
}

// The key of a row in its one documented form: exactly eight hex digits and a
// blank. Anything else (a sign, a prefix, more digits) is not a row.
bool row_key(const char* p, const char* end, uint32_t* key) {
  if (end - p < 9 || p[8] != ' ') return false;
  uint32_t v = 0;
  for (int i = 0; i < 8; ++i) {
    char c = p[i];
    int d = c >= '0' && c <= '9'   ? c - '0'
            : c >= 'a' && c <= 'f' ? c - 'a' + 10
            : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                   : -1;
    if (d < 0) return false;
    v = v << 4 | static_cast<uint32_t>(d);
  }
  *key = v;
  return true;
}

// The catalogue's text for `key`, the way a message resource hands it out: the
// length of the text with its line end, 0 when the row is absent.
size_t catalogue_text(const Catalogue* cat, uint32_t key, const char** text) {
  const char* end = cat->text + cat->size;
  for (const char* line = cat->text; line < end;) {
    const char* nl = static_cast<const char*>(std::memchr(line, '\n', static_cast<size_t>(end - line)));
    const char* next = nl ? nl + 1 : end;
    uint32_t k;
    if (row_key(line, next, &k) && k == key) {
      *text = line + 9;
      return static_cast<size_t>(next - *text);
    }
    line = next;
  }
  return 0;
}

// The next conversion directive of a format from `p`, "%%" skipped: its start
// and length, or false at the end of the text.
bool next_directive(const char*& p, const char** start, size_t* len) {
  while ((p = std::strchr(p, '%'))) {
    const char* d = p++;
    while (*p && std::strchr("0123456789.*$ +-#'hlqjztL", *p)) ++p;
    if (*p) ++p;  // the conversion itself
    if (p - d == 2 && d[1] == '%') continue;
    *start = d;
    *len = static_cast<size_t>(p - d);
    return true;
  }
  return false;
}

// A localised text is used as a format only when its conversion directives are
// those of the built-in row, in the same order: the arguments are the built-in
// row's, and a directive they do not match would read or write through them.
bool same_directives(const char* localised, const char* builtin) {
  const char *a = localised, *b = builtin;
  for (;;) {
    const char *da, *db;
    size_t la, lb;
    bool more_a = next_directive(a, &da, &la), more_b = next_directive(b, &db, &lb);
    if (more_a != more_b) return false;
    if (!more_a) return true;
    if (la != lb || std::memcmp(da, db, la) != 0) return false;
  }
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
  const char* text = kRows[id].text();
  if (g_state.catalogue_builtin) return text;
  const char* local = nullptr;
  size_t n = catalogue_text(g_catalogue, static_cast<uint32_t>(id) + 0x80000000u, &local);
  // Only a text that ends in CR LF is taken, without that pair.
  if (n > 1 && local[n - 2] == '\r' && local[n - 1] == '\n') {
    size_t keep = n - 2 < kBufferSize - 1 ? n - 2 : kBufferSize - 1;
    std::memcpy(g_localised, local, keep);
    g_localised[keep] = '\0';
    if (same_directives(g_localised, text)) text = g_localised;
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
  std::snprintf(g_print_buffer, kBufferSize, "%s", kRows[0].text());
  print_buffer(g_print_buffer);
  return 0;
}

}  // extern "C"
