// The Fortran entries of the descriptor interface: every argument by reference,
// integers at layer width, lengths and strides in the core's own order.
#include <cstddef>
#include <cstring>

#include "dfti_front.h"

using namespace qnl::dfti;
using qnl::layer;

namespace {

using FInt = void;  // a layer-width integer seen through its address

inline int64_t read_int(const FInt* p, int lay) {
  return lay == 0 ? *static_cast<const int32_t*>(p) : *static_cast<const int64_t*>(p);
}
inline Record* deref(Record** h) { return h ? *h : nullptr; }

void blank_fill(char* buffer, size_t length) { std::memset(buffer, ' ', length); }

// The compute entries: the descriptor must take exactly N buffers.
template <int N, bool Forward>
int32_t compute(Record** h, void* a, void* b, void* c, void* e) {
  Record* d = deref(h);
  ComputeFn fn = d ? (Forward ? d->compute_forward : d->compute_backward) : nullptr;
  if (d && d->buffer_count == N && fn) return fn(d, a, N > 1 ? b : nullptr, N > 2 ? c : nullptr, N > 3 ? e : nullptr);
  if (!valid(d)) return kBadDescriptor;
  return d->buffer_count == N ? kInvalidConfiguration : kInconsistentConfiguration;
}

int32_t create_1d_common(Record** out, int32_t precision, const FInt* domain, const FInt* dimension,
                         const FInt* length) {
  int lay = layer();
  if (!out) return kInconsistentConfiguration;
  *out = nullptr;
  if (read_int(dimension, lay) != 1) return kInvalidConfiguration;
  int64_t n = read_int(length, lay);
  if (n < 1) return kInvalidConfiguration;
  return create_1d(out, precision, static_cast<int32_t>(read_int(domain, lay)), n);
}

int32_t create_md_common(Record** out, int32_t precision, const FInt* domain, const FInt* dimension,
                         const FInt* lengths) {
  int lay = layer();
  if (!out) return kInconsistentConfiguration;
  *out = nullptr;
  int64_t rank = read_int(dimension, lay);
  if (rank < 1 || rank > kMaxRank) return kInvalidConfiguration;
  if (!lengths) return kInconsistentConfiguration;
  int64_t list[kMaxRank];
  widen(lengths, list, static_cast<int>(rank), lay);
  return create_md(out, precision, static_cast<int32_t>(read_int(domain, lay)), static_cast<int32_t>(rank), list);
}

// The precision of the typed create entries arrives as a real; NaN fails the test.
template <class R>
int32_t typed_precision(const R* p, int32_t want) {
  return *p == static_cast<R>(want) ? want : -1;
}

}  // namespace

extern "C" {

QNL_HIDDEN int32_t f_commit(Record** h) { return commit(deref(h)); }
QNL_HIDDEN int32_t f_free(Record** h) { return release(h); }
QNL_HIDDEN int32_t f_copy(Record** h, Record** out) { return copy(deref(h), out); }

QNL_HIDDEN int32_t f_forward1(Record** h, void* a) { return compute<1, true>(h, a, nullptr, nullptr, nullptr); }
QNL_HIDDEN int32_t f_backward1(Record** h, void* a) { return compute<1, false>(h, a, nullptr, nullptr, nullptr); }
QNL_HIDDEN int32_t f_forward2(Record** h, void* a, void* b) { return compute<2, true>(h, a, b, nullptr, nullptr); }
QNL_HIDDEN int32_t f_backward2(Record** h, void* a, void* b) { return compute<2, false>(h, a, b, nullptr, nullptr); }
QNL_HIDDEN int32_t f_forward4(Record** h, void* a, void* b, void* c, void* e) {
  return compute<4, true>(h, a, b, c, e);
}
QNL_HIDDEN int32_t f_backward4(Record** h, void* a, void* b, void* c, void* e) {
  return compute<4, false>(h, a, b, c, e);
}

QNL_HIDDEN int32_t f_create_1d(Record** out, const FInt* precision, const FInt* domain, const FInt* dimension,
                               const FInt* length) {
  return create_1d_common(out, static_cast<int32_t>(read_int(precision, layer())), domain, dimension, length);
}
QNL_HIDDEN int32_t f_create_highd(Record** out, const FInt* precision, const FInt* domain, const FInt* dimension,
                                  const FInt* lengths) {
  return create_md_common(out, static_cast<int32_t>(read_int(precision, layer())), domain, dimension, lengths);
}
// The typed creators of one precision: R is the type of the precision argument.
#define QNL_F_CREATE_TYPED(t, R, precision)                                                                 \
  QNL_HIDDEN int32_t f_create_##t##_1d(Record** out, const R* p, const FInt* domain, const FInt* dimension, \
                                       const FInt* length) {                                                \
    return create_1d_common(out, typed_precision(p, precision), domain, dimension, length);                 \
  }                                                                                                         \
  QNL_HIDDEN int32_t f_create_##t##_md(Record** out, const R* p, const FInt* domain, const FInt* dimension, \
                                       const FInt* lengths) {                                               \
    return create_md_common(out, typed_precision(p, precision), domain, dimension, lengths);                \
  }
QNL_F_CREATE_TYPED(d, double, kDouble)
QNL_F_CREATE_TYPED(s, float, kSingle)
#undef QNL_F_CREATE_TYPED

QNL_HIDDEN int32_t f_set_intval(Record** h, const FInt* param, const FInt* value) {
  int lay = layer();
  int32_t p = static_cast<int32_t>(read_int(param, lay));
  int64_t v = read_int(value, lay);
  return set_scalar(h, &p, &v);
}

extern "C++" template <class R>
int32_t set_scale_value(Record** h, const FInt* param, const R* value) {
  int32_t p = static_cast<int32_t>(read_int(param, layer()));
  Record* d = deref(h);
  if (!valid(d)) return kBadDescriptor;
  if (p != 4 && p != 5) return kInconsistentConfiguration;
  return d->ops->set_scale(d, static_cast<double>(*value), p);
}
QNL_HIDDEN int32_t f_set_dblval(Record** h, const FInt* param, const double* value) {
  return set_scale_value(h, param, value);
}
QNL_HIDDEN int32_t f_set_sglval(Record** h, const FInt* param, const float* value) {
  return set_scale_value(h, param, value);
}

QNL_HIDDEN int32_t f_set_chars(Record** h, const FInt* param, const char* chars, size_t length) {
  int32_t p = static_cast<int32_t>(read_int(param, layer()));
  Record* d = deref(h);
  if (!valid(d)) return kBadDescriptor;
  if (p != 20) return kInconsistentConfiguration;
  return d->ops->set_name(d, chars, static_cast<int64_t>(length), ' ');
}

QNL_HIDDEN int32_t f_set_intvec(Record** h, const FInt* param, const FInt* values) {
  int lay = layer();
  int32_t p = static_cast<int32_t>(read_int(param, lay));
  if (p != 2 && p != 12 && p != 13) return kInconsistentConfiguration;
  Record* d = deref(h);
  int64_t list[kMaxRank + 1] = {};
  // The rank is read before the handle is validated; a null handle is not
  // followed, which is all a caller passing one could expect.
  if (d && values) {
    int count = d->rank + (p == 2 ? 0 : 1);
    widen(values, list, count < 0 ? 0 : (count > kMaxRank + 1 ? kMaxRank + 1 : count), lay);
  }
  if (!valid(d)) return kBadDescriptor;
  if (p == 2) return kInconsistentConfiguration;
  // No reversal: Fortran order is the core's order.
  return (p == 12 ? d->ops->set_input_strides : d->ops->set_output_strides)(d, list);
}

QNL_HIDDEN int32_t f_get_intval(Record** h, const FInt* param, int64_t* value) {
  int32_t p = static_cast<int32_t>(read_int(param, layer()));
  Record* d = deref(h);
  if (!valid(d)) return kBadDescriptor;
  int64_t v = 0;
  int32_t status;
  if (p == 2) {
    if (d->rank != 1) return kInconsistentConfiguration;
    status = d->ops->get_lengths(d, &v);
  } else if ((status = get_scalar(d, p, &v)) == kNotScalar) {
    return kInconsistentConfiguration;
  }
  // Eight bytes also under LP64: the value goes out sign-extended, as it always has.
  *value = v;
  return status;
}

QNL_HIDDEN int32_t f_get_intvec(Record** h, const FInt* param, void* values) {
  int lay = layer();
  int32_t p = static_cast<int32_t>(read_int(param, lay));
  Record* d = deref(h);
  if (!valid(d)) return kBadDescriptor;
  if (p != 2 && p != 12 && p != 13) return kInconsistentConfiguration;
  int64_t list[kMaxRank + 1] = {};
  const Ops* ops = d->ops;
  int32_t status = (p == 2 ? ops->get_lengths : p == 12 ? ops->get_input_strides : ops->get_output_strides)(d, list);
  int count = d->rank + (p == 2 ? 0 : 1);
  if (lay == 0) {
    // Narrowed into the caller's array whatever the status was.
    for (int i = 0; i < count && i < kMaxRank + 1; ++i)
      static_cast<int32_t*>(values)[i] = static_cast<int32_t>(list[i]);
  } else if (status == kNoError) {
    std::memcpy(values, list, sizeof(int64_t) * count);
  }
  return status;
}

extern "C++" template <class R>
int32_t get_scale_value(Record** h, const FInt* param, R* value) {
  int32_t p = static_cast<int32_t>(read_int(param, layer()));
  Record* d = deref(h);
  if (!valid(d)) return kBadDescriptor;
  if (p != 4 && p != 5) return kInconsistentConfiguration;
  double scale = 0;
  int32_t status = d->ops->get_scale(d, &scale, p);
  *value = static_cast<R>(scale);
  return status;
}
QNL_HIDDEN int32_t f_get_dblval(Record** h, const FInt* param, double* value) {
  return get_scale_value(h, param, value);
}
QNL_HIDDEN int32_t f_get_sglval(Record** h, const FInt* param, float* value) {
  return get_scale_value(h, param, value);
}

QNL_HIDDEN int32_t f_get_chars(Record** h, const FInt* param, char* buffer, size_t length) {
  int32_t p = static_cast<int32_t>(read_int(param, layer()));
  if (p == 23) {
    // The version needs no descriptor.
    blank_fill(buffer, length);
    version_string(buffer, static_cast<int64_t>(length));
    return kNoError;
  }
  Record* d = deref(h);
  if (!valid(d)) return kBadDescriptor;
  if (p != 20) return kInconsistentConfiguration;
  blank_fill(buffer, length);
  return d->ops->get_name(d, buffer, static_cast<int64_t>(length));
}

QNL_HIDDEN int32_t f_error_class(const FInt* status, const FInt* error_class) {
  int lay = layer();
  return read_int(status, lay) == read_int(error_class, lay);
}

QNL_HIDDEN char* f_error_message(char* buffer, size_t length, const FInt* status) {
  const char* text = message(read_int(status, layer()));
  size_t n = strnlen(text, length);
  std::memcpy(buffer, text, n);
  std::memset(buffer + n, ' ', length - n);
  return buffer;
}

}  // extern "C"

#define QNL_DFTI_F(lower, upper, body) \
  QNL_ALIAS(body, lower)               \
  QNL_ALIAS(body, upper)               \
  QNL_ALIAS(body, lower##_)
#include "dfti_fortran.def"
#undef QNL_DFTI_F
