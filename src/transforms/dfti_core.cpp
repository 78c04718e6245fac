// The core symbols of the descriptor interface, each bound into its own slot on
// first use, and the pieces both faces of the front share.
#include <cstring>

#include "dfti_front.h"
#include "messages.h"

namespace qnl::dfti {
namespace {

using Create1d = int32_t(Record**, int64_t);
using CreateMd = int32_t(Record**, int32_t, const int64_t*);
Slot s_dc1d, s_dr1d, s_sc1d, s_sr1d, s_dcmd, s_drmd, s_scmd, s_srmd, s_bless, s_version, s_verbose;

// Index 0..3 for (double, complex), (double, real), (single, complex), (single, real); -1 otherwise.
int pick(int32_t precision, int32_t domain) {
  if ((precision != kDouble && precision != kSingle) || (domain != kComplex && domain != kReal)) return -1;
  return (precision == kSingle ? 2 : 0) + (domain == kReal ? 1 : 0);
}

}  // namespace

int32_t create_md(Record** handle, int32_t precision, int32_t domain, int32_t rank, const int64_t* lengths) {
  static Slot* const slots[] = {&s_dcmd, &s_drmd, &s_scmd, &s_srmd};
  static const char* const names[] = {"qnl_dft_dfti_create_dcmd", "qnl_dft_dfti_create_drmd",
                                      "qnl_dft_dfti_create_scmd", "qnl_dft_dfti_create_srmd"};
  int k = pick(precision, domain);
  if (k < 0) return kInvalidConfiguration;
  int32_t status = family<CreateMd>(*slots[k], names[k])(handle, rank, lengths);
  if (status == 0) bless(*handle);
  return status;
}

int32_t create_1d(Record** handle, int32_t precision, int32_t domain, int64_t length) {
  static Slot* const slots[] = {&s_dc1d, &s_dr1d, &s_sc1d, &s_sr1d};
  static const char* const names[] = {"qnl_dft_dfti_create_dc1d", "qnl_dft_dfti_create_dr1d",
                                      "qnl_dft_dfti_create_sc1d", "qnl_dft_dfti_create_sr1d"};
  int k = pick(precision, domain);
  if (k < 0) return kInvalidConfiguration;
  int32_t status = family<Create1d>(*slots[k], names[k])(handle, length);
  if (status == 0) bless(*handle);
  return status;
}

void bless(Record* d) { family<void(Record*)>(s_bless, "qnl_dft_bless_node_omp")(d); }

void verbose(Record* d) { family<void(Record*)>(s_verbose, "qnl_dft_dfti_verbose")(d); }

void version_string(char* buffer, int64_t length) {
  family<void(char*, int64_t)>(s_version, "qnl_dft_dfti_get_version_string")(buffer, length);
}

const char* message(int64_t status) {
  // Rows 761..771: statuses 0..3, a row no status reaches, 5..9, the default.
  constexpr int kFirstRow = 761, kDefaultRow = 771;
  int row = status >= 0 && status <= 9 && status != 4 ? kFirstRow + static_cast<int>(status) : kDefaultRow;
  return qnl_rt_message_text(row, 0);
}

int32_t commit(Record* d) {
  if (!d) return kBadDescriptor;
  // No magic test ahead of the core's commit: the core validates its own record.
  if (!d->ops || !d->ops->commit) return d->magic == kMagic ? kInternalError : kBadDescriptor;
  int32_t status = d->ops->commit(d);
  verbose(d);
  return status;
}

int32_t copy(Record* source, Record** out) {
  if (!valid(source)) return kBadDescriptor;
  if (!out) return kInconsistentConfiguration;
  Record* made = nullptr;
  if (int32_t status = source->ops->copy(source, &made)) return status;
  if (source->commit_status == kCommitted) {
    if (int32_t status = made->ops->commit(made)) {
      made->destroy(made);
      return status;
    }
  }
  *out = made;
  return kNoError;
}

int32_t release(Record** handle) {
  Record* d = handle ? *handle : nullptr;
  if (!valid(d)) return kBadDescriptor;
  if (d->destroy) d->destroy(d);
  *handle = nullptr;
  return kNoError;
}

int32_t get_scalar(Record* d, int32_t param, int64_t* v) {
  const Ops* ops = d->ops;
  switch (param) {
    case 7:
      return ops->get_number_of_transforms(d, v);
    case 14:
      return ops->get_input_distance(d, v);
    case 15:
      return ops->get_output_distance(d, v);
    case 27:
      return ops->get_thread_limit(d, v);
    case 28:
      *v = d->option_flags & kDestroyInputAllowed ? 51 : 52;
      return kNoError;
    default:
      break;
  }
  // The fields a getter reads straight from the record, by parameter number.
  static constexpr struct {
    int32_t param;
    int32_t Record::*field;
  } kFields[] = {{0, &Record::forward_domain},
                 {1, &Record::rank},
                 {3, &Record::precision},
                 {8, &Record::complex_storage},
                 {9, &Record::real_storage},
                 {10, &Record::conjugate_even_storage},
                 {11, &Record::placement},
                 {17, &Record::workspace},
                 {18, &Record::ordering},
                 {19, &Record::transpose},
                 {21, &Record::packed_format},
                 {22, &Record::commit_status},
                 {26, &Record::number_of_user_threads}};
  for (const auto& f : kFields)
    if (f.param == param) {
      *v = d->*f.field;
      return kNoError;
    }
  return kNotScalar;
}

int32_t set_scalar(Record** handle, const int32_t* param, const int64_t* value) {
  if (!handle) return kInconsistentConfiguration;
  Record* d = *handle;
  if (!valid(d)) return kBadDescriptor;
  // Uncommitted before the parameter is even looked at: a refused setting
  // still leaves the descriptor to be committed again. Only the head.
  d->commit_status = kUncommitted;
  d->compute_forward = nullptr;
  d->compute_backward = nullptr;
  d->state_flags &= ~1u;
  const int64_t v = *value;
  auto chain = [d](auto write) {
    for (Record* r = d; r; r = r->next) write(r);
    return kNoError;
  };
  switch (*param) {
    case 7:
      return d->ops->set_number_of_transforms(d, v);
    case 14:
      return d->ops->set_input_distance(d, v);
    case 15:
      return d->ops->set_output_distance(d, v);
    case 27:
      return d->ops->set_thread_limit(d, v);
    case 8:
      if (v == 39 || v == 42) return chain([v](Record* r) { r->complex_storage = static_cast<int32_t>(v); });
      return v == 40 || v == 41 ? kUnimplemented : kInconsistentConfiguration;
    case 9:
      if (v == 42) return chain([v](Record* r) { r->real_storage = static_cast<int32_t>(v); });
      return v == 41 ? kUnimplemented : kInconsistentConfiguration;
    case 10:
      if (v == 39 || v == 40)
        return chain([v](Record* r) {
          r->conjugate_even_storage = static_cast<int32_t>(v);
          if (v == 39) r->packed_format = 57;
        });
      return v == 41 || v == 42 ? kUnimplemented : kInconsistentConfiguration;
    case 11:
      if (v == 43 || v == 44) return chain([v](Record* r) { r->placement = static_cast<int32_t>(v); });
      return kInconsistentConfiguration;
    case 17:
      if (v != 51 && v != 52) return kInconsistentConfiguration;
      d->workspace = static_cast<int32_t>(v);
      return kNoError;
    case 18:
      if (v == 48 || (v == 49 && d->forward_domain != kReal))
        return chain([v](Record* r) { r->ordering = static_cast<int32_t>(v); });
      return v == 49 || v == 50 ? kUnimplemented : kInconsistentConfiguration;
    case 21:
      if (v >= 54 && v <= 57) return chain([v](Record* r) { r->packed_format = static_cast<int32_t>(v); });
      return kInconsistentConfiguration;
    case 26:
      for (Record* r = d; r; r = r->next) {
        if (!fits32(v)) return kInconsistentConfiguration;
        r->number_of_user_threads = static_cast<int32_t>(v);
      }
      return kNoError;
    case 28:
      if (v == 51)
        d->option_flags |= kDestroyInputAllowed;
      else if (v == 52)
        d->option_flags &= ~kDestroyInputAllowed;
      else
        return kInconsistentConfiguration;
      return kNoError;
    default:
      return kInconsistentConfiguration;
  }
}

}  // namespace qnl::dfti
