// Streams: the generator table, new/copy/delete, skip-ahead and leapfrog,
// save and load, registered generators, abstract streams over caller buffers
// and the non-deterministic source. Every entry checks what it is handed and
// answers with a status code; nothing here ends the process.
#include <immintrin.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

#include "vsl_internal.h"

namespace qnl_vsl {
namespace {

// ---- non-deterministic source: RDRAND, retried a bounded number of times ----
struct Nondet {
  uint32_t retries;
};
__attribute__((target("rdrnd"))) int rdrand32(uint32_t retries, unsigned* out) {
  for (uint32_t t = 0; t <= retries; ++t)
    if (_rdrand32_step(out)) return 0;
  return VSL_RNG_ERROR_NONDETERM_NRETRIES_EXCEEDED;
}
int nondet_init(int, void* p, int n, const unsigned* params) {
  if (n > 0 && params[0] != VSL_BRNG_RDRAND) return VSL_RNG_ERROR_BAD_PARAM;
  if (!cpu_ecx1(30)) return VSL_RNG_ERROR_NONDETERM_NOT_SUPPORTED;
  static_cast<Nondet*>(p)->retries = n > 1 ? params[1] : VSL_BRNG_NONDETERM_NRETRIES;
  return 0;
}
int nondet_bits(void* p, int n, unsigned* r) {
  for (int i = 0; i < n; ++i)
    if (int rc = rdrand32(static_cast<Nondet*>(p)->retries, r + i)) return rc;
  return 0;
}
int nondet_d(void* p, int n, double* r, double a, double b) {
  unsigned x;
  for (int i = 0; i < n; ++i) {
    if (int rc = nondet_bits(p, 1, &x)) return rc;
    r[i] = a + (b - a) * (x * 0x1p-32);
  }
  return 0;
}
const Brng kNondeterm{sizeof(Nondet),         2,           1,       1,       32,  nondet_init, nondet_d,
                      fill_s_via_d<nondet_d>, nondet_bits, nullptr, nullptr, true};

// ---- abstract streams: numbers come from a caller's buffer, refilled by its callback ----
struct Abstract {
  int32_t n, idx;
  const void* buf;
  double a, b;
  void* cb;
};
inline void* stream_of(void* st) { return static_cast<char*>(st) - kHeader; }

// Makes sure buf[idx] is readable, calling the callback when the buffer is used up.
template <class T, class Cb>
int abstract_ready(Abstract* st) {
  if (st->idx < st->n) return 0;
  int n = st->n, nmin = 0, nmax = st->n - 1, idx = 0;
  int got = reinterpret_cast<Cb>(st->cb)(stream_of(st), &n, const_cast<T*>(static_cast<const T*>(st->buf)), &nmin,
                                         &nmax, &idx);
  if (got == 0) return VSL_RNG_ERROR_NO_NUMBERS;
  if (got < 0 || got > st->n || idx < 0 || idx >= st->n) return VSL_RNG_ERROR_BAD_UPDATE;
  st->idx = idx;
  return 0;
}
template <class T, class Cb>
int abstract_d(void* p, int n, double* r, double a, double b) {
  auto* st = static_cast<Abstract*>(p);
  const bool ints = std::is_same<T, unsigned>::value;
  for (int i = 0; i < n; ++i) {
    if (int rc = abstract_ready<T, Cb>(st)) return rc;
    const double x = static_cast<const T*>(st->buf)[st->idx++];
    const double u = ints ? x * 0x1p-32 : (x - st->a) / (st->b - st->a);
    r[i] = a + (b - a) * u;
  }
  return 0;
}
template <class T, class Cb>
int abstract_bits(void* p, int n, unsigned* r) {
  auto* st = static_cast<Abstract*>(p);
  for (int i = 0; i < n; ++i) {
    if (int rc = abstract_ready<T, Cb>(st)) return rc;
    const T x = static_cast<const T*>(st->buf)[st->idx++];
    r[i] = std::is_same<T, unsigned>::value ? static_cast<unsigned>(x)
                                            : static_cast<unsigned>((x - st->a) / (st->b - st->a) * 0x1p32);
  }
  return 0;
}
template <class T, class Cb>
constexpr Brng abstract_brng() {
  return Brng{
      sizeof(Abstract),     0,       1,       1,    32, nullptr, abstract_d<T, Cb>, fill_s_via_d<abstract_d<T, Cb>>,
      abstract_bits<T, Cb>, nullptr, nullptr, false};
}
const Brng kIAbstract = abstract_brng<unsigned, iUpdateFuncPtr>();
const Brng kDAbstract = abstract_brng<double, dUpdateFuncPtr>();
const Brng kSAbstract = abstract_brng<float, sUpdateFuncPtr>();

// ---- the table ----
std::mutex g_register;
Brng g_user[VSL_BRNG_MAX_FAMILIES];
int g_nuser = 0;

const Brng* family(int brng) {
  static const Brng* const builtin[] = {nullptr, &kMcg31,   &kR250,      &kMrg32k3a,  &kMcg59,     &kWh,
                                        &kSobol, &kNiederr, &kMt19937,   nullptr,     &kSfmt19937, &kNondeterm,
                                        &kArs5,  &kPhilox,  &kIAbstract, &kDAbstract, &kSAbstract};
  if (brng <= 0) return nullptr;
  const int f = brng >> VSL_BRNG_SHIFT, member = brng & (VSL_BRNG_INC - 1);
  if (f == (VSL_BRNG_MT2203 >> VSL_BRNG_SHIFT)) return member < VSL_MT2203_FAMILY ? &kMt2203[member] : nullptr;
  if (member) return nullptr;  // only MT2203 has members
  if (f < VSL_BRNG_USER_FIRST) return builtin[f];
  std::lock_guard<std::mutex> lock(g_register);
  return f - VSL_BRNG_USER_FIRST < g_nuser ? &g_user[f - VSL_BRNG_USER_FIRST] : nullptr;
}

bool is_stream(const void* s) {
  if (!s) return false;
  const auto* h = static_cast<const Header*>(s);
  return h->magic == kMagic && h->tag == 1;
}

int allocate(void** out, int brng, const Brng* b) {
  const size_t size = kHeader + static_cast<size_t>(b->state_size);
  void* s = std::calloc(1, size);
  if (!s) return VSL_ERROR_MEM_FAILURE;
  Header* h = header_of(s);
  h->brng = brng, h->tag = 1, h->magic = kMagic, h->size = static_cast<int32_t>(size);
  *out = s;
  return 0;
}
void release(void* s) {
  header_of(s)->tag = 0, header_of(s)->magic = 0;
  std::free(s);
}

// ---- saved images: a fixed header, then the record ----
struct Image {
  char magic[8];  // "QNLVSLS" and a NUL
  uint32_t version;
  int32_t brng;
  int32_t size;  // bytes of the record that follows
  uint32_t check;
};
constexpr char kImageMagic[8] = "QNLVSLS";
uint32_t fnv1a(const void* p, size_t n) {
  uint32_t h = 2166136261u;
  for (size_t i = 0; i < n; ++i) h = (h ^ static_cast<const uint8_t*>(p)[i]) * 16777619u;
  return h;
}
Image image_of(const void* s) {
  Image im{};
  std::memcpy(im.magic, kImageMagic, 8);
  im.version = 1;
  im.brng = header_of(const_cast<void*>(s))->brng;
  im.size = header_of(const_cast<void*>(s))->size;
  im.check = fnv1a(s, static_cast<size_t>(im.size));
  return im;
}
// Validates an image header; the record is then read and checked against it.
int check_image(const Image& im, int bad_format) {
  if (std::memcmp(im.magic, kImageMagic, 8)) return bad_format;
  if (im.version != 1) return VSL_RNG_ERROR_UNSUPPORTED_FILE_VER;
  const Brng* b = family(im.brng);
  if (!b) return VSL_RNG_ERROR_BAD_BRNG;
  if (!b->saveable || im.size != kHeader + b->state_size) return bad_format;
  return 0;
}
int finish_load(void** out, const Image& im, const void* record, int bad_format) {
  const Header* h = static_cast<const Header*>(record);
  if (fnv1a(record, static_cast<size_t>(im.size)) != im.check || h->brng != im.brng || h->size != im.size ||
      h->magic != kMagic || h->tag != 1)
    return bad_format;
  void* s = std::malloc(static_cast<size_t>(im.size));
  if (!s) return VSL_ERROR_MEM_FAILURE;
  std::memcpy(s, record, static_cast<size_t>(im.size));
  *out = s;
  return 0;
}
// A name of len bytes (-1: NUL-terminated); Fortran pads with blanks.
std::string file_name(const char* fname, long long len) {
  std::string s = len < 0 ? std::string(fname) : std::string(fname, static_cast<size_t>(len));
  while (!s.empty() && s.back() == ' ') s.pop_back();
  return s;
}

}  // namespace

const Brng* brng_of_stream(const void* s) {
  return is_stream(s) ? family(static_cast<const Header*>(s)->brng) : nullptr;
}

int uniform_ab(void* s, int n, double* r, double a, double b) {
  return brng_of_stream(s)->fill_d(state_of(s), n, r, a, b);
}
int uniform01(void* s, int n, double* r) { return uniform_ab(s, n, r, 0.0, 1.0); }
// 32 uniform bits per word: the native words where they have 32 bits, else
// two 16-bit halves of uniform numbers.
int bits32(void* s, int n, unsigned* r) {
  const Brng* b = brng_of_stream(s);
  if (b->word_size == 1 && b->nbits == 32) return b->fill_bits(state_of(s), n, r);
  double u[512];
  for (int done = 0; done < n;) {
    int m = n - done < 256 ? n - done : 256;
    if (int rc = b->fill_d(state_of(s), 2 * m, u, 0.0, 1.0)) return rc;
    for (int i = 0; i < m; ++i)
      r[done + i] = static_cast<unsigned>(u[2 * i] * 65536.0) << 16 | static_cast<unsigned>(u[2 * i + 1] * 65536.0);
    done += m;
  }
  return 0;
}

}  // namespace qnl_vsl

using namespace qnl_vsl;

#define QNL_CHECK_STREAM(s) \
  if (!brng_of_stream(s)) return (s) ? VSL_RNG_ERROR_BAD_STREAM : VSL_ERROR_NULL_PTR

QNL_VSL_EXPORT int __vslNewStreamEx(void** stream, int brng, int n, const unsigned* params) {
  if (!stream) return VSL_ERROR_NULL_PTR;
  const Brng* b = family(brng);
  if (!b || !b->init) return VSL_RNG_ERROR_BAD_BRNG;
  if (n < 0 || (n > 0 && !params)) return VSL_ERROR_BADARGS;
  void* s = nullptr;
  if (int rc = allocate(&s, brng, b)) return rc;
  if (int rc = b->init(VSL_INIT_METHOD_STANDARD, state_of(s), n, params)) {
    release(s);
    return rc;
  }
  *stream = s;
  return 0;
}

QNL_VSL_EXPORT int __vslDeleteStream(void** stream) {
  if (!stream) return VSL_ERROR_NULL_PTR;
  QNL_CHECK_STREAM(*stream);
  release(*stream);
  *stream = nullptr;
  return 0;
}

QNL_VSL_EXPORT int __vslCopyStream(void** newstream, const void* src) {
  if (!newstream) return VSL_ERROR_NULL_PTR;
  QNL_CHECK_STREAM(src);
  const int32_t size = static_cast<const Header*>(src)->size;
  void* s = std::malloc(static_cast<size_t>(size));
  if (!s) return VSL_ERROR_MEM_FAILURE;
  std::memcpy(s, src, static_cast<size_t>(size));
  *newstream = s;
  return 0;
}

QNL_VSL_EXPORT int __vslCopyStreamState(void* dst, const void* src) {
  QNL_CHECK_STREAM(dst);
  QNL_CHECK_STREAM(src);
  const auto* hs = static_cast<const Header*>(src);
  if (header_of(dst)->brng != hs->brng || header_of(dst)->size != hs->size) return VSL_RNG_ERROR_BRNGS_INCOMPATIBLE;
  std::memcpy(state_of(dst), static_cast<const char*>(src) + kHeader, static_cast<size_t>(hs->size - kHeader));
  return 0;
}

QNL_VSL_EXPORT int __vslLeapfrogStream(void* stream, int k, int nstreams) {
  QNL_CHECK_STREAM(stream);
  const Brng* b = brng_of_stream(stream);
  return b->leap ? b->leap(state_of(stream), k, nstreams) : VSL_RNG_ERROR_LEAPFROG_UNSUPPORTED;
}

QNL_VSL_EXPORT int __vslSkipAheadStream(void* stream, long long nskip) {
  QNL_CHECK_STREAM(stream);
  const Brng* b = brng_of_stream(stream);
  return b->skip ? b->skip(state_of(stream), nskip) : VSL_RNG_ERROR_SKIPAHEAD_UNSUPPORTED;
}

QNL_VSL_EXPORT int __vslGetStreamStateBrng(const void* stream) {
  QNL_CHECK_STREAM(stream);
  return static_cast<const Header*>(stream)->brng;
}

// Bytes that vslSaveStreamM writes for this stream.
QNL_VSL_EXPORT int __vslGetStreamSize(const void* stream) {
  QNL_CHECK_STREAM(stream);
  return static_cast<int>(sizeof(Image)) + static_cast<const Header*>(stream)->size;
}

QNL_VSL_EXPORT int __vslSaveStreamM(const void* stream, char* mem) {
  QNL_CHECK_STREAM(stream);
  if (!mem) return VSL_ERROR_NULL_PTR;
  if (!brng_of_stream(stream)->saveable) return VSL_RNG_ERROR_BAD_STREAM;
  const Image im = image_of(stream);
  std::memcpy(mem, &im, sizeof im);
  std::memcpy(mem + sizeof im, stream, static_cast<size_t>(im.size));
  return 0;
}

QNL_VSL_EXPORT int __vslLoadStreamM(void** stream, const char* mem) {
  if (!stream || !mem) return VSL_ERROR_NULL_PTR;
  Image im;
  std::memcpy(&im, mem, sizeof im);
  if (int rc = check_image(im, VSL_RNG_ERROR_BAD_MEM_FORMAT)) return rc;
  return finish_load(stream, im, mem + sizeof im, VSL_RNG_ERROR_BAD_MEM_FORMAT);
}

QNL_VSL_EXPORT int __vslSaveStreamF(const void* stream, const char* fname, long long len) {
  QNL_CHECK_STREAM(stream);
  if (!fname) return VSL_ERROR_NULL_PTR;
  if (!brng_of_stream(stream)->saveable) return VSL_RNG_ERROR_BAD_STREAM;
  FILE* f = std::fopen(file_name(fname, len).c_str(), "wb");
  if (!f) return VSL_RNG_ERROR_FILE_OPEN;
  const Image im = image_of(stream);
  bool ok = std::fwrite(&im, sizeof im, 1, f) == 1 && std::fwrite(stream, static_cast<size_t>(im.size), 1, f) == 1;
  if (std::fclose(f) != 0 && ok) return VSL_RNG_ERROR_FILE_CLOSE;
  return ok ? 0 : VSL_RNG_ERROR_FILE_WRITE;
}

QNL_VSL_EXPORT int __vslLoadStreamF(void** stream, const char* fname, long long len) {
  if (!stream || !fname) return VSL_ERROR_NULL_PTR;
  FILE* f = std::fopen(file_name(fname, len).c_str(), "rb");
  if (!f) return VSL_RNG_ERROR_FILE_OPEN;
  Image im;
  int rc = std::fread(&im, sizeof im, 1, f) == 1 ? check_image(im, VSL_RNG_ERROR_BAD_FILE_FORMAT)
                                                 : VSL_RNG_ERROR_BAD_FILE_FORMAT;
  std::string record;
  if (!rc) {
    record.resize(static_cast<size_t>(im.size));
    rc = std::fread(&record[0], record.size(), 1, f) == 1 ? 0 : VSL_RNG_ERROR_BAD_FILE_FORMAT;
  }
  std::fclose(f);
  return rc ? rc : finish_load(stream, im, record.data(), VSL_RNG_ERROR_BAD_FILE_FORMAT);
}

namespace {
template <class T, class Cb>
int new_abstract(void** stream, int brng, int n, const T* buf, double a, double b, Cb cb) {
  if (!stream || !buf || !cb) return VSL_ERROR_NULL_PTR;
  if (n < 1 || !(a < b)) return VSL_ERROR_BADARGS;
  void* s = nullptr;
  if (int rc = allocate(&s, brng, family(brng))) return rc;
  auto* st = static_cast<Abstract*>(state_of(s));
  st->n = n, st->idx = 0, st->buf = buf, st->a = a, st->b = b, st->cb = reinterpret_cast<void*>(cb);
  *stream = s;
  return 0;
}
}  // namespace

QNL_VSL_EXPORT int __vsliNewAbstractStream(void** stream, int n, const unsigned* ibuf, iUpdateFuncPtr cb) {
  return new_abstract(stream, VSL_BRNG_IABSTRACT, n, ibuf, 0.0, 1.0, cb);
}
QNL_VSL_EXPORT int __vsldNewAbstractStream(void** stream, int n, const double* dbuf, double a, double b,
                                           dUpdateFuncPtr cb) {
  return new_abstract(stream, VSL_BRNG_DABSTRACT, n, dbuf, a, b, cb);
}
QNL_VSL_EXPORT int __vslsNewAbstractStream(void** stream, int n, const float* sbuf, float a, float b,
                                           sUpdateFuncPtr cb) {
  return new_abstract(stream, VSL_BRNG_SABSTRACT, n, sbuf, a, b, cb);
}

QNL_VSL_EXPORT int __vslGetNumRegBrngs(void) {
  std::lock_guard<std::mutex> lock(g_register);
  return g_nuser;
}

QNL_VSL_EXPORT int __vslRegisterBrng(const void* properties) {
  if (!properties) return VSL_ERROR_NULL_PTR;
  const auto* p = static_cast<const VSLBRngProperties*>(properties);
  if (p->StreamStateSize < 1 || p->StreamStateSize > (1 << 24)) return VSL_RNG_ERROR_BAD_STREAM_STATE_SIZE;
  if (p->WordSize < 1 || p->WordSize > 2) return VSL_RNG_ERROR_BAD_WORD_SIZE;
  if (p->NSeeds < 0) return VSL_RNG_ERROR_BAD_NSEEDS;
  if (p->NBits < 1 || p->NBits > 32 * p->WordSize) return VSL_RNG_ERROR_BAD_NBITS;
  if (!p->InitStream || !p->sBRng || !p->dBRng || !p->iBRng) return VSL_ERROR_NULL_PTR;
  std::lock_guard<std::mutex> lock(g_register);
  if (g_nuser >= VSL_BRNG_MAX_FAMILIES - VSL_BRNG_USER_FIRST) return VSL_RNG_ERROR_BRNG_TABLE_FULL;
  g_user[g_nuser] = Brng{p->StreamStateSize, p->NSeeds, p->IncludesZero, p->WordSize, p->NBits, p->InitStream,
                         p->dBRng,           p->sBRng,  p->iBRng,        nullptr,     nullptr,  true};
  return (VSL_BRNG_USER_FIRST + g_nuser++) << VSL_BRNG_SHIFT;
}

QNL_VSL_EXPORT int __vslGetBrngProperties(int brng, void* properties) {
  if (!properties) return VSL_ERROR_NULL_PTR;
  const Brng* b = family(brng);
  if (!b || !b->init) return VSL_RNG_ERROR_BAD_BRNG;
  auto* p = static_cast<VSLBRngProperties*>(properties);
  *p = VSLBRngProperties{b->state_size, b->nseeds, b->includes_zero, b->word_size, b->nbits,
                         b->init,       b->fill_s, b->fill_d,        b->fill_bits};
  return 0;
}
