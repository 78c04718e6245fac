// The C entries of the descriptor interface.
#include <cstdarg>
#include <cstring>

#include "dfti_front.h"
#include "qnl_dfti.h"

using namespace qnl::dfti;
using qnl::layer;

namespace {

inline Record* rec(DFTI_DESCRIPTOR_HANDLE h) { return reinterpret_cast<Record*>(h); }
inline Record** rec(DFTI_DESCRIPTOR_HANDLE* h) { return reinterpret_cast<Record**>(h); }

// A layer-width variadic integer.
inline int64_t arg_at_layer(va_list& ap, int lay) {
  return lay == 0 ? static_cast<int64_t>(va_arg(ap, int32_t)) : static_cast<int64_t>(va_arg(ap, int64_t));
}

// Shared tail of the many-dimension creators: lengths arrive slowest first.
long create_from_list(Record** out, int32_t precision, int32_t domain, int64_t rank, const void* list, int lay) {
  if (!list) return kInconsistentConfiguration;
  int64_t lengths[kMaxRank];
  widen(list, lengths, static_cast<int>(rank), lay);
  reverse(lengths, 0, static_cast<int>(rank) - 1);
  return create_md(out, precision, domain, static_cast<int32_t>(rank), lengths);
}

long create_md_entry(DFTI_DESCRIPTOR_HANDLE* handle, int32_t precision, int32_t domain, QNL_DFTI_INT dimension,
                     va_list& ap) {
  int lay = layer();
  int64_t rank = at_layer(static_cast<int64_t>(dimension), lay);
  if (!handle) return kInconsistentConfiguration;
  *handle = nullptr;
  if (rank < 1 || rank > kMaxRank) return kInvalidConfiguration;
  return create_from_list(rec(handle), precision, domain, rank, va_arg(ap, const void*), lay);
}

long create_1d_entry(DFTI_DESCRIPTOR_HANDLE* handle, int32_t precision, int32_t domain, QNL_DFTI_INT length) {
  int64_t n = at_layer(static_cast<int64_t>(length), layer());
  if (!handle) return kInconsistentConfiguration;
  *handle = nullptr;
  if (n < 1) return kInvalidConfiguration;
  return create_1d(rec(handle), precision, domain, n);
}

// The data pointers of a compute call: as many as the descriptor takes, each non-null.
long compute(DFTI_DESCRIPTOR_HANDLE h, bool forward, void* x, va_list& ap) {
  Record* d = rec(h);
  if (!d) return kBadDescriptor;
  if (!x) return kInconsistentConfiguration;
  void* more[3] = {nullptr, nullptr, nullptr};
  for (int k = 1; k < d->buffer_count && k < 4; ++k)
    if (!(more[k - 1] = va_arg(ap, void*))) return kInconsistentConfiguration;
  ComputeFn fn = forward ? d->compute_forward : d->compute_backward;
  if (!fn) return kInvalidConfiguration;
  return fn(d, x, more[0], more[1], more[2]);
}

// Stores `count` values at layer width; under LP64 the first that does not fit
// stops the copy with status 2, those before it written.
long store_list(void* out, const int64_t* v, int count, int lay) {
  for (int i = 0; i < count; ++i) {
    if (lay == 0 && !fits32(v[i])) return kInvalidConfiguration;
    store(static_cast<char*>(out) + i * (lay == 0 ? 4 : 8), v[i], lay);
  }
  return kNoError;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) long DftiCreateDescriptor(DFTI_DESCRIPTOR_HANDLE* handle,
                                                                 enum DFTI_CONFIG_VALUE precision,
                                                                 enum DFTI_CONFIG_VALUE domain, QNL_DFTI_INT dimension,
                                                                 ...) {
  int lay = layer();
  int64_t rank = at_layer(static_cast<int64_t>(dimension), lay);
  if (!handle) return kInconsistentConfiguration;
  *handle = nullptr;
  if (rank < 1 || rank > kMaxRank) return kInvalidConfiguration;
  va_list ap;
  va_start(ap, dimension);
  long status;
  if (rank == 1) {
    int64_t n = arg_at_layer(ap, lay);
    // One dimension still takes the many-dimension creator, with a list of one.
    status = n < 1 ? kInvalidConfiguration : create_md(rec(handle), precision, domain, 1, &n);
  } else {
    status = create_from_list(rec(handle), precision, domain, rank, va_arg(ap, const void*), lay);
  }
  va_end(ap);
  return status;
}

#define QNL_DFTI_CREATE_MD(name, precision)                                                                       \
  __attribute__((visibility("default"))) long name(DFTI_DESCRIPTOR_HANDLE* handle, enum DFTI_CONFIG_VALUE domain, \
                                                   QNL_DFTI_INT dimension, ...) {                                 \
    va_list ap;                                                                                                   \
    va_start(ap, dimension);                                                                                      \
    long status = create_md_entry(handle, precision, domain, dimension, ap);                                      \
    va_end(ap);                                                                                                   \
    return status;                                                                                                \
  }
QNL_DFTI_CREATE_MD(DftiCreateDescriptor_d_md, kDouble)
QNL_DFTI_CREATE_MD(DftiCreateDescriptor_s_md, kSingle)
#undef QNL_DFTI_CREATE_MD

__attribute__((visibility("default"))) long DftiCreateDescriptor_d_1d(DFTI_DESCRIPTOR_HANDLE* handle,
                                                                      enum DFTI_CONFIG_VALUE domain,
                                                                      QNL_DFTI_INT length) {
  return create_1d_entry(handle, kDouble, domain, length);
}

__attribute__((visibility("default"))) long DftiCreateDescriptor_s_1d(DFTI_DESCRIPTOR_HANDLE* handle,
                                                                      enum DFTI_CONFIG_VALUE domain,
                                                                      QNL_DFTI_INT length) {
  return create_1d_entry(handle, kSingle, domain, length);
}

__attribute__((visibility("default"))) long DftiCommitDescriptor(DFTI_DESCRIPTOR_HANDLE h) { return commit(rec(h)); }

__attribute__((visibility("default"))) long DftiComputeForward(DFTI_DESCRIPTOR_HANDLE h, void* x, ...) {
  va_list ap;
  va_start(ap, x);
  long status = compute(h, true, x, ap);
  va_end(ap);
  return status;
}

__attribute__((visibility("default"))) long DftiComputeBackward(DFTI_DESCRIPTOR_HANDLE h, void* x, ...) {
  va_list ap;
  va_start(ap, x);
  long status = compute(h, false, x, ap);
  va_end(ap);
  return status;
}

__attribute__((visibility("default"))) long DftiCopyDescriptor(DFTI_DESCRIPTOR_HANDLE source,
                                                               DFTI_DESCRIPTOR_HANDLE* out) {
  return copy(rec(source), rec(out));
}

__attribute__((visibility("default"))) long DftiFreeDescriptor(DFTI_DESCRIPTOR_HANDLE* handle) {
  return handle ? release(rec(handle)) : kInconsistentConfiguration;
}

__attribute__((visibility("default"))) long DftiSetValue(DFTI_DESCRIPTOR_HANDLE h, enum DFTI_CONFIG_PARAM param, ...) {
  Record* d = rec(h);
  if (!valid(d)) return kBadDescriptor;
  int lay = layer();
  int32_t p = param;
  if (unknown_parameter(p) || p == 1 || p == 2 || p == 23) return kInconsistentConfiguration;
  va_list ap;
  va_start(ap, param);
  long status;
  if (p == 4 || p == 5) {
    status = d->ops->set_scale(d, va_arg(ap, double), p);
  } else if (p == 12 || p == 13) {
    const void* list = va_arg(ap, const void*);
    if (!list) {
      status = kInconsistentConfiguration;
    } else {
      int64_t strides[kMaxRank + 1];
      widen(list, strides, d->rank + 1, lay);
      reverse(strides, 1, d->rank);
      status = (p == 12 ? d->ops->set_input_strides : d->ops->set_output_strides)(d, strides);
    }
  } else if (p == 20) {
    const char* name = va_arg(ap, const char*);
    status =
        name ? d->ops->set_name(d, name, static_cast<int64_t>(strnlen(name, 4096)), 0) : kInconsistentConfiguration;
  } else {
    bool wide = p == 7 || p == 14 || p == 15 || p == 26 || p == 27;
    int64_t v = wide ? arg_at_layer(ap, lay) : static_cast<int64_t>(va_arg(ap, int32_t));
    status = set_scalar(&d, &p, &v);
  }
  va_end(ap);
  return status;
}

__attribute__((visibility("default"))) long DftiGetValue(DFTI_DESCRIPTOR_HANDLE h, enum DFTI_CONFIG_PARAM param, ...) {
  int lay = layer();
  int32_t p = param;
  va_list ap;
  va_start(ap, param);
  void* out = va_arg(ap, void*);
  va_end(ap);
  if (p == 23) {
    // Needs no descriptor; the core's status is not looked at.
    if (!out) return kInconsistentConfiguration;
    char* text = static_cast<char*>(out);
    std::memset(text, 0, 198);
    version_string(text, 198);
    text[197] = 0;
    return kNoError;
  }
  Record* d = rec(h);
  if (!valid(d)) return kBadDescriptor;
  if (unknown_parameter(p)) return kInconsistentConfiguration;
  const Ops* ops = d->ops;
  int64_t list[kMaxRank + 1];
  int32_t status = kNoError;
  switch (p) {
    case 2:
      if ((status = ops->get_lengths(d, list))) return status;
      reverse(list, 0, d->rank - 1);
      return out ? store_list(out, list, d->rank, lay) : kInconsistentConfiguration;
    case 12:
    case 13:
      if ((status = (p == 12 ? ops->get_input_strides : ops->get_output_strides)(d, list))) return status;
      reverse(list, 1, d->rank);
      return out ? store_list(out, list, d->rank + 1, lay) : kInconsistentConfiguration;
    case 4:
    case 5: {
      double scale = 0;
      ops->get_scale(d, &scale, p);  // status dropped
      if (!out) return kInconsistentConfiguration;
      if (d->precision == kSingle)
        *static_cast<float*>(out) = static_cast<float>(scale);
      else
        *static_cast<double*>(out) = scale;
      return kNoError;
    }
    case 20:
      if (!out) return kInconsistentConfiguration;
      status = ops->get_name(d, static_cast<char*>(out), 10);
      static_cast<char*>(out)[9] = 0;
      return status;
    default: {
      // One integer: those of layer width as such, the settings in 32 bits.
      int64_t value = 0;
      status = get_scalar(d, p, &value);
      if (!out) return kInconsistentConfiguration;
      if (p == 1 || p == 7 || p == 14 || p == 15 || p == 26 || p == 27)
        store(out, value, lay);
      else
        *static_cast<int32_t*>(out) = static_cast<int32_t>(value);
      return status;
    }
  }
}

__attribute__((visibility("default"))) char* DftiErrorMessage(long status) {
  return const_cast<char*>(message(status));
}

__attribute__((visibility("default"))) long DftiErrorClass(long status, long error_class) {
  if (layer() == 0) return static_cast<int32_t>(status) == static_cast<int32_t>(error_class);
  return status == error_class;
}

}  // extern "C"
