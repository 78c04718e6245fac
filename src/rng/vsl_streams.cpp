// The stream entries: what can be tested without knowing a generator is tested here,
// the 64-bit interface layer is narrowed where a kernel argument is 32-bit, and the
// call goes to the kernel library, whose result is returned as it stands. The entries
// that make a stream load the threading layer first. C names take handles and values,
// the Fortran spellings (UPPER, lower, lower_) take everything by reference.
#include <cstring>
#include <type_traits>

#include "c_select.h"
#include "report.h"
#include "vsl_frame.h"

using namespace qnl;
using namespace qnl::vsl;

#define QNL_VSL_API extern "C" __attribute__((visibility("default")))
// The three Fortran names of a body.
#define QNL_VSL_FORTRAN(body, UPPER, lower) \
  QNL_ALIAS(body, UPPER)                    \
  QNL_ALIAS(body, lower)                    \
  QNL_ALIAS(body, lower##_)

extern "C" int qnl_vsl_check_stream(const void* stream) {
  if (stream == nullptr) return VSL_ERROR_NULL_PTR;
  if (static_cast<const unsigned char*>(stream)[4] != 1) return VSL_RNG_ERROR_BAD_STREAM;
  return 0;
}

namespace qnl::vsl {

int32_t fail(const char* name, int32_t position, int32_t code) {
  report<int32_t>(name, static_cast<int32_t>(strnlen(name, 50)), position);
  return code;
}

}  // namespace qnl::vsl

namespace {

// One slot per kernel symbol, shared by every body that calls it.
struct Kernel {
  const char* symbol;
  Slot slot;
};
Kernel k_new{"__vslNewStreamEx", {}}, k_delete{"__vslDeleteStream", {}}, k_copy{"__vslCopyStream", {}},
    k_copy_state{"__vslCopyStreamState", {}}, k_leapfrog{"__vslLeapfrogStream", {}}, k_skip{"__vslSkipAheadStream", {}},
    k_brng{"__vslGetStreamStateBrng", {}}, k_size{"__vslGetStreamSize", {}}, k_save_f{"__vslSaveStreamF", {}},
    k_load_f{"__vslLoadStreamF", {}}, k_save_m{"__vslSaveStreamM", {}}, k_load_m{"__vslLoadStreamM", {}},
    k_abstract_i{"__vsliNewAbstractStream", {}}, k_abstract_d{"__vsldNewAbstractStream", {}},
    k_abstract_s{"__vslsNewAbstractStream", {}}, k_count{"__vslGetNumRegBrngs", {}},
    k_register{"__vslRegisterBrng", {}}, k_properties{"__vslGetBrngProperties", {}};

template <class F>
F* kernel(Kernel& k) {
  return reinterpret_cast<F*>(bind(k.slot, k.symbol));
}

// The entries that make a stream bring up the threading layer, whose kernels the
// generators may use; the symbol itself is not needed.
void load_threading_layer() {
  qnl_rt_bind_lock();
  (void)qnl_rt_resolve("qnl_serv_get_dynamic");
  qnl_rt_bind_unlock();
}

// The test of a handle, reported at `position` under `name`.
int32_t check(const char* name, const void* stream, int32_t position) {
  int32_t s = qnl_vsl_check_stream(stream);
  return s < 0 ? fail(name, position, s) : 0;
}

constexpr int64_t kMax32 = 0x7FFFFFFF;
using NewFn = int(void**, int32_t, int32_t, const unsigned*);

// `seed` points at the caller's seed, 32 bits on the LP64 layer, 64 on ILP64, where a
// seed with bits above bit 30 goes as two little-endian words.
int new_stream(VSLStreamStatePtr* stream, bool wide, int64_t brng, const void* seed, int64_t seed_value) {
  int32_t words = 1;
  if (wide) {
    if (brng > kMax32) return fail("vslNewStream", 2, kBadBrng);
    words = (seed_value >> 31) != 0 ? 2 : 1;
  }
  if (static_cast<int32_t>(brng) < 0) return fail("vslNewStream", 2, kBadBrng);
  load_threading_layer();
  return kernel<NewFn>(k_new)(stream, static_cast<int32_t>(brng), words, static_cast<const unsigned*>(seed));
}

// The count is narrowed; a negative count is the kernel's to judge.
int new_stream_ex(VSLStreamStatePtr* stream, bool wide, int64_t brng, int64_t n, const unsigned* params) {
  if (wide && brng > kMax32) return fail("vslNewStreamEx", 2, kBadBrng);
  if (wide && n > kMax32) return fail("vslNewStreamEx", 3, kBadArgs);
  if (static_cast<int32_t>(brng) < 0) return fail("vslNewStreamEx", 2, kBadBrng);
  load_threading_layer();
  return kernel<NewFn>(k_new)(stream, static_cast<int32_t>(brng), static_cast<int32_t>(n), params);
}

// Abstract streams: n narrowed, the scalars of the d and s forms passed by value.
template <class... S>
int new_abstract(Kernel& k, const char* name, VSLStreamStatePtr* stream, bool wide, int64_t n, const void* buffer,
                 void* callback, S... scalars) {
  if (wide && n > kMax32) return fail(name, 2, kBadArgs);
  load_threading_layer();
  using F = int(void**, int32_t, const void*, S..., void*);
  return kernel<F>(k)(stream, static_cast<int32_t>(n), buffer, scalars..., callback);
}

int save_f(const char* name, const void* stream, const char* fname, int64_t length) {
  if (int32_t s = check(name, stream, 1)) return s;
  if (fname == nullptr) return fail(name, 2, kBadArgs);
  return kernel<int(const void*, const char*, int64_t)>(k_save_f)(stream, fname, length);
}

int load_f(const char* name, VSLStreamStatePtr* stream, const char* fname, int64_t length) {
  if (fname == nullptr) return fail(name, 2, kBadArgs);
  load_threading_layer();
  return kernel<int(void**, const char*, int64_t)>(k_load_f)(stream, fname, length);
}

int save_m(const void* stream, char* memptr) { return kernel<int(const void*, char*)>(k_save_m)(stream, memptr); }

int copy(VSLStreamStatePtr* newstream, const void* src) {
  if (int32_t s = check("vslCopyStream", src, 2)) return s;
  return kernel<int(void**, const void*)>(k_copy)(newstream, src);
}

int copy_state(void* dst, const void* src) {
  if (int32_t s = check("vslCopyStreamState", dst, 1)) return s;
  if (int32_t s = check("vslCopyStreamState", src, 2)) return s;
  return kernel<int(void*, const void*)>(k_copy_state)(dst, src);
}

// k and nstreams are passed as they stand: the kernel reads their low 32 bits.
int leapfrog(void* stream, int64_t k, int64_t nstreams) {
  if (int32_t s = check("vslLeapfrogStream", stream, 1)) return s;
  return kernel<int(void*, int32_t, int32_t)>(k_leapfrog)(stream, static_cast<int32_t>(k),
                                                          static_cast<int32_t>(nstreams));
}

int skip_ahead(void* stream, long long nskip) {
  if (int32_t s = check("vslSkipAheadStream", stream, 1)) return s;
  return kernel<int(void*, long long)>(k_skip)(stream, nskip);
}

int stream_query(Kernel& k, const char* name, const void* stream) {
  if (int32_t s = check(name, stream, 1)) return s;
  return kernel<int(const void*)>(k)(stream);
}

int brng_properties(int64_t brng, VSLBRngProperties* properties) {
  return kernel<int(int32_t, void*)>(k_properties)(static_cast<int32_t>(brng), properties);
}

}  // namespace

// Twin C bodies behind a selector where an argument has the interface layer's width.
extern "C" {
QNL_HIDDEN int qnl_lp64_vslNewStream(VSLStreamStatePtr* stream, int brng, unsigned seed) {
  return new_stream(stream, false, brng, &seed, seed);
}
QNL_HIDDEN int qnl_ilp64_vslNewStream(VSLStreamStatePtr* stream, int64_t brng, uint64_t seed) {
  return new_stream(stream, true, brng, &seed, static_cast<int64_t>(seed));
}
QNL_HIDDEN int qnl_lp64_vslNewStreamEx(VSLStreamStatePtr* stream, int brng, int n, const unsigned* params) {
  return new_stream_ex(stream, false, brng, n, params);
}
QNL_HIDDEN int qnl_ilp64_vslNewStreamEx(VSLStreamStatePtr* stream, int64_t brng, int64_t n, const unsigned* params) {
  return new_stream_ex(stream, true, brng, n, params);
}
QNL_HIDDEN int qnl_lp64_vsliNewAbstractStream(VSLStreamStatePtr* stream, int n, const unsigned* ibuf,
                                              iUpdateFuncPtr cb) {
  return new_abstract(k_abstract_i, "vsliNewAbstractStream", stream, false, n, ibuf, reinterpret_cast<void*>(cb));
}
QNL_HIDDEN int qnl_ilp64_vsliNewAbstractStream(VSLStreamStatePtr* stream, int64_t n, const unsigned* ibuf,
                                               iUpdateFuncPtr cb) {
  return new_abstract(k_abstract_i, "vsliNewAbstractStream", stream, true, n, ibuf, reinterpret_cast<void*>(cb));
}
}
QNL_C_SELECTOR(vslNewStream, qnl_lp64_vslNewStream, qnl_ilp64_vslNewStream)
QNL_C_SELECTOR(vslNewStreamEx, qnl_lp64_vslNewStreamEx, qnl_ilp64_vslNewStreamEx)
QNL_C_SELECTOR(vsliNewAbstractStream, qnl_lp64_vsliNewAbstractStream, qnl_ilp64_vsliNewAbstractStream)
// The header is the contract: the LP64 body has the type its prototype declares.
static_assert(std::is_same_v<decltype(vslNewStream), decltype(qnl_lp64_vslNewStream)>);
static_assert(std::is_same_v<decltype(vslNewStreamEx), decltype(qnl_lp64_vslNewStreamEx)>);
static_assert(std::is_same_v<decltype(vsliNewAbstractStream), decltype(qnl_lp64_vsliNewAbstractStream)>);

// The Fortran spellings of the stream makers read their integers at the layer's width;
// the seed goes to the kernel at the address the caller gave.
extern "C" QNL_HIDDEN int qnl_body_VSLNEWSTREAM(VSLStreamStatePtr* stream, const QNL_VSL_INT* brng,
                                                const QNL_VSL_UINT* seed) {
  const bool wide = layer() == 1;
  return new_stream(stream, wide, layer_int(brng), seed, layer_int(seed));
}
QNL_VSL_FORTRAN(qnl_body_VSLNEWSTREAM, VSLNEWSTREAM, vslnewstream)
extern "C" QNL_HIDDEN int qnl_body_VSLNEWSTREAMEX(VSLStreamStatePtr* stream, const QNL_VSL_INT* brng,
                                                  const QNL_VSL_INT* n, const unsigned* params) {
  return new_stream_ex(stream, layer() == 1, layer_int(brng), layer_int(n), params);
}
QNL_VSL_FORTRAN(qnl_body_VSLNEWSTREAMEX, VSLNEWSTREAMEX, vslnewstreamex)
extern "C" QNL_HIDDEN int qnl_body_VSLINEWABSTRACTSTREAM(VSLStreamStatePtr* stream, const QNL_VSL_INT* n,
                                                         const unsigned* ibuf, iUpdateFuncPtr cb) {
  return new_abstract(k_abstract_i, "vsliNewAbstractStream", stream, layer() == 1, layer_int(n), ibuf,
                      reinterpret_cast<void*>(cb));
}
QNL_VSL_FORTRAN(qnl_body_VSLINEWABSTRACTSTREAM, VSLINEWABSTRACTSTREAM, vslinewabstractstream)

// The real abstract streams, d (double) and s (float): the twin C bodies behind their
// selector and the Fortran body, for one type letter t of real type T.
#define QNL_VSL_REAL_ABSTRACT(t, T, UPPER, lower)                                                                    \
  extern "C" QNL_HIDDEN int qnl_lp64_vsl##t##NewAbstractStream(VSLStreamStatePtr* stream, int n, const T* buf, T a,  \
                                                               T b, t##UpdateFuncPtr cb) {                           \
    return new_abstract(k_abstract_##t, "vsl" #t "NewAbstractStream", stream, false, n, buf,                         \
                        reinterpret_cast<void*>(cb), a, b);                                                          \
  }                                                                                                                  \
  extern "C" QNL_HIDDEN int qnl_ilp64_vsl##t##NewAbstractStream(VSLStreamStatePtr* stream, int64_t n, const T* buf,  \
                                                                T a, T b, t##UpdateFuncPtr cb) {                     \
    return new_abstract(k_abstract_##t, "vsl" #t "NewAbstractStream", stream, true, n, buf,                          \
                        reinterpret_cast<void*>(cb), a, b);                                                          \
  }                                                                                                                  \
  QNL_C_SELECTOR(vsl##t##NewAbstractStream, qnl_lp64_vsl##t##NewAbstractStream, qnl_ilp64_vsl##t##NewAbstractStream) \
  static_assert(std::is_same_v<decltype(vsl##t##NewAbstractStream), decltype(qnl_lp64_vsl##t##NewAbstractStream)>);  \
  extern "C" QNL_HIDDEN int qnl_body_##UPPER(VSLStreamStatePtr* stream, const QNL_VSL_INT* n, const T* buf,          \
                                             const T* a, const T* b, t##UpdateFuncPtr cb) {                          \
    return new_abstract(k_abstract_##t, "vsl" #t "NewAbstractStream", stream, layer() == 1, layer_int(n), buf,       \
                        reinterpret_cast<void*>(cb), *a, *b);                                                        \
  }                                                                                                                  \
  QNL_VSL_FORTRAN(qnl_body_##UPPER, UPPER, lower)
QNL_VSL_REAL_ABSTRACT(d, double, VSLDNEWABSTRACTSTREAM, vsldnewabstractstream)
QNL_VSL_REAL_ABSTRACT(s, float, VSLSNEWABSTRACTSTREAM, vslsnewabstractstream)

// One body under four names: C and Fortran arguments coincide.
QNL_VSL_API int vslDeleteStream(VSLStreamStatePtr* stream) {
  // A null address holds no handle: it is tested as a null handle, not read.
  if (int32_t s = check("vslDeleteStream", stream ? *stream : nullptr, 1)) return s;
  return kernel<int(void**)>(k_delete)(stream);
}
QNL_VSL_FORTRAN(vslDeleteStream, VSLDELETESTREAM, vsldeletestream)
QNL_VSL_API int vslLoadStreamM(VSLStreamStatePtr* stream, const char* memptr) {
  if (memptr == nullptr) return fail("vslLoadStreamM", 2, kBadArgs);
  load_threading_layer();
  return kernel<int(void**, const char*)>(k_load_m)(stream, memptr);
}
QNL_VSL_FORTRAN(vslLoadStreamM, VSLLOADSTREAMM, vslloadstreamm)
QNL_VSL_API int vslGetNumRegBrngs(void) { return kernel<int()>(k_count)(); }
QNL_VSL_FORTRAN(vslGetNumRegBrngs, VSLGETNUMREGBRNGS, vslgetnumregbrngs)
QNL_VSL_API int vslRegisterBrng(const VSLBRngProperties* properties) {
  return kernel<int(const void*)>(k_register)(properties);
}
QNL_VSL_FORTRAN(vslRegisterBrng, VSLREGISTERBRNG, vslregisterbrng)

// A C body and a Fortran body of three names.
QNL_VSL_API int vslCopyStream(VSLStreamStatePtr* newstream, const VSLStreamStatePtr src) {
  return copy(newstream, src);
}
extern "C" QNL_HIDDEN int qnl_body_VSLCOPYSTREAM(VSLStreamStatePtr* newstream, const VSLStreamStatePtr* src) {
  return copy(newstream, *src);
}
QNL_VSL_FORTRAN(qnl_body_VSLCOPYSTREAM, VSLCOPYSTREAM, vslcopystream)

QNL_VSL_API int vslCopyStreamState(VSLStreamStatePtr dst, const VSLStreamStatePtr src) { return copy_state(dst, src); }
extern "C" QNL_HIDDEN int qnl_body_VSLCOPYSTREAMSTATE(VSLStreamStatePtr* dst, const VSLStreamStatePtr* src) {
  return copy_state(*dst, *src);
}
QNL_VSL_FORTRAN(qnl_body_VSLCOPYSTREAMSTATE, VSLCOPYSTREAMSTATE, vslcopystreamstate)

// One C body for both layers: k and nstreams are not narrowed, only handed on.
QNL_VSL_API int vslLeapfrogStream(VSLStreamStatePtr stream, int k, int nstreams) {
  return leapfrog(stream, k, nstreams);
}
extern "C" QNL_HIDDEN int qnl_body_VSLLEAPFROGSTREAM(VSLStreamStatePtr* stream, const QNL_VSL_INT* k,
                                                     const QNL_VSL_INT* nstreams) {
  return leapfrog(*stream, layer_int(k), layer_int(nstreams));
}
QNL_VSL_FORTRAN(qnl_body_VSLLEAPFROGSTREAM, VSLLEAPFROGSTREAM, vslleapfrogstream)

QNL_VSL_API int vslSkipAheadStream(VSLStreamStatePtr stream, long long nskip) { return skip_ahead(stream, nskip); }
extern "C" QNL_HIDDEN int qnl_body_VSLSKIPAHEADSTREAM(VSLStreamStatePtr* stream, const long long* nskip) {
  return skip_ahead(*stream, *nskip);
}
QNL_VSL_FORTRAN(qnl_body_VSLSKIPAHEADSTREAM, VSLSKIPAHEADSTREAM, vslskipaheadstream)

QNL_VSL_API int vslGetStreamStateBrng(const VSLStreamStatePtr stream) {
  return stream_query(k_brng, "vslGetStreamStateBrng", stream);
}
extern "C" QNL_HIDDEN int qnl_body_VSLGETSTREAMSTATEBRNG(const VSLStreamStatePtr* stream) {
  return stream_query(k_brng, "vslGetStreamStateBrng", *stream);
}
QNL_VSL_FORTRAN(qnl_body_VSLGETSTREAMSTATEBRNG, VSLGETSTREAMSTATEBRNG, vslgetstreamstatebrng)

QNL_VSL_API int vslGetStreamSize(const VSLStreamStatePtr stream) {
  return stream_query(k_size, "vslGetStreamSize", stream);
}
extern "C" QNL_HIDDEN int qnl_body_VSLGETSTREAMSIZE(const VSLStreamStatePtr* stream) {
  return stream_query(k_size, "vslGetStreamSize", *stream);
}
QNL_VSL_FORTRAN(qnl_body_VSLGETSTREAMSIZE, VSLGETSTREAMSIZE, vslgetstreamsize)

// File forms: C names end at a zero byte (length -1), Fortran ones pass their hidden length.
QNL_VSL_API int vslSaveStreamF(const VSLStreamStatePtr stream, const char* fname) {
  return save_f("vslSaveStreamF", stream, fname, -1);
}
extern "C" QNL_HIDDEN int qnl_body_VSLSAVESTREAMF(const VSLStreamStatePtr* stream, const char* fname, size_t length) {
  return save_f("vslSaveStreamF", *stream, fname, static_cast<int64_t>(length));
}
QNL_VSL_FORTRAN(qnl_body_VSLSAVESTREAMF, VSLSAVESTREAMF, vslsavestreamf)

QNL_VSL_API int vslLoadStreamF(VSLStreamStatePtr* stream, const char* fname) {
  return load_f("vslLoadStreamF", stream, fname, -1);
}
extern "C" QNL_HIDDEN int qnl_body_VSLLOADSTREAMF(VSLStreamStatePtr* stream, const char* fname, size_t length) {
  return load_f("vslLoadStreamF", stream, fname, static_cast<int64_t>(length));
}
QNL_VSL_FORTRAN(qnl_body_VSLLOADSTREAMF, VSLLOADSTREAMF, vslloadstreamf)

// Memory forms. The upper-case Fortran name tests the memory before the stream; the
// lower-case ones keep the C order.
QNL_VSL_API int vslSaveStreamM(const VSLStreamStatePtr stream, char* memptr) {
  if (int32_t s = check("vslSaveStreamM", stream, 1)) return s;
  if (memptr == nullptr) return fail("vslSaveStreamM", 2, kBadArgs);
  return save_m(stream, memptr);
}
extern "C" QNL_HIDDEN int qnl_body_vslsavestreamm(const VSLStreamStatePtr* stream, char* memptr) {
  return vslSaveStreamM(*stream, memptr);
}
QNL_ALIAS(qnl_body_vslsavestreamm, vslsavestreamm)
QNL_ALIAS(qnl_body_vslsavestreamm, vslsavestreamm_)
QNL_VSL_API int VSLSAVESTREAMM(const VSLStreamStatePtr* stream, char* memptr) {
  if (memptr == nullptr) return fail("vslSaveStreamM", 2, kBadArgs);
  if (int32_t s = check("vslSaveStreamM", *stream, 1)) return s;
  return save_m(*stream, memptr);
}

QNL_VSL_API int vslGetBrngProperties(int brng, VSLBRngProperties* properties) {
  return brng_properties(brng, properties);
}
extern "C" QNL_HIDDEN int qnl_body_VSLGETBRNGPROPERTIES(const QNL_VSL_INT* brng, VSLBRngProperties* properties) {
  return brng_properties(layer_int(brng), properties);
}
QNL_VSL_FORTRAN(qnl_body_VSLGETBRNGPROPERTIES, VSLGETBRNGPROPERTIES, vslgetbrngproperties)
