// The DFT core of the reference back-end: the descriptor record behind the
// front's fixed fields, its operations, and compute functions that run FFTW
// plans made at commit. FFTW plans with FFTW_ESTIMATE on placeholder addresses
// (an estimating planner does not touch the arrays) and runs on the caller's
// arrays through its new-array entries. Arrays whose alignment differs from the
// placeholders', or an out-of-place descriptor handed one array twice, get a
// plan made for that case on first use, kept with the descriptor.
#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include "dft_fftw.h"
#include "dfti_record.h"
#include "forward.h"
#include "reference.h"

namespace qnl_ref::dft {
namespace {

using qnl::dfti::kMagic;
using qnl::dfti::kMaxRank;
using qnl::dfti::Ops;
using qnl::dfti::Record;

enum : int32_t {
  kOk = 0,
  kMemory = 1,
  kInvalid = 2,
  kInconsistent = 3,
  kUnimplemented = 6,
  kCommitted = 30,
  kUncommitted = 31,
  kComplex = 32,
  kReal = 33,
  kSingle = 35,
  kDouble = 36,
  kComplexComplex = 39,
  kComplexReal = 40,
  kRealReal = 42,
  kInplace = 43,
  kOrdered = 48,
  kAllow = 51,
  kCcs = 54,
  kPack = 55,
  kPerm = 56,
  kCce = 57,
};

// Plan variants: bit 0, arrays not aligned like the placeholders; bit 1, an
// out-of-place descriptor given the same array for input and output.
constexpr int kVariants = 4;
using Strides = int64_t[kMaxRank + 1];

// What the core keeps besides the shared fields; plain data, copied whole.
struct Settings {
  int64_t lengths[kMaxRank];        // fastest dimension first
  Strides in_strides, out_strides;  // element k+1 goes with lengths[k]; element 0 is the offset
  bool in_strides_set, out_strides_set;
  int64_t in_distance, out_distance, transforms, thread_limit;
  double forward_scale, backward_scale;
  char name[64];
  int64_t name_length;
  int32_t name_pad;
  // As committed, for each direction: strides of the call's input and output.
  Strides is[2], os[2];
};

struct Core {
  Record head;
  Settings s;
  std::atomic<void*> plans[2][kVariants];  // [backward, forward][variant]
};

Core* core(Record* d) { return reinterpret_cast<Core*>(d); }
bool single(const Core* c) { return c->head.precision == kSingle; }
bool real_domain(const Core* c) { return c->head.forward_domain == kReal; }
bool split(const Core* c) { return !real_domain(c) && c->head.complex_storage == kRealReal; }
bool inplace(const Core* c) { return c->head.placement == kInplace; }
// Conjugate-even data as real numbers (CCS, PACK or PERM): computed through a
// scratch half spectrum and laid out from there.
bool packed(const Core* c) { return real_domain(c) && c->head.conjugate_even_storage == kComplexReal; }
int64_t half(const Core* c) { return c->s.lengths[0] / 2 + 1; }

void uncommit(Core* c) {
  c->head.commit_status = kUncommitted;
  c->head.compute_forward = nullptr;
  c->head.compute_backward = nullptr;
}

template <class R>
const Fftw<R>& lib();
template <>
const Fftw<double>& lib<double>() {
  return fftw_double();
}
template <>
const Fftw<float>& lib<float>() {
  return fftw_float();
}

template <class R>
void drop_plans(Core* c) {
  const Fftw<R>& f = lib<R>();
  std::lock_guard<std::mutex> hold(planner_lock());
  for (auto& set : c->plans)
    for (auto& p : set)
      if (void* plan = p.exchange(nullptr)) f.destroy(plan);
}
void drop(Core* c) { single(c) ? drop_plans<float>(c) : drop_plans<double>(c); }

// Dense strides; `first` is the fastest dimension's extent in memory.
void dense(const Core* c, int64_t first, int64_t* s) {
  s[0] = 0;
  s[1] = 1;
  for (int k = 1; k < c->head.rank; ++k) s[k + 1] = s[k] * (k == 1 ? first : c->s.lengths[k - 1]);
}

// The strides of each direction: those set, or dense ones. A real transform's
// defaults depend on the side: its forward input and backward output are real,
// padded to 2(n/2+1) in place.
void settle_strides(Core* c) {
  Settings& s = c->s;
  int64_t n0 = s.lengths[0], h = half(c);
  int64_t complex_first = real_domain(c) ? h : n0;
  // A packed layout counts in reals: rows of n+2 (CCS, n even) or n.
  if (packed(c)) complex_first = c->head.packed_format == kCcs ? 2 * h : n0;
  int64_t real_first = inplace(c) ? (packed(c) ? complex_first : 2 * h) : n0;
  for (int fwd = 0; fwd < 2; ++fwd) {
    int64_t in_first = fwd ? real_first : complex_first, out_first = fwd ? complex_first : real_first;
    if (!real_domain(c)) in_first = out_first = n0;
    int64_t* is = s.is[fwd];
    int64_t* os = s.os[fwd];
    if (s.in_strides_set)
      std::memcpy(is, s.in_strides, sizeof(Strides));
    else
      dense(c, in_first, is);
    if (s.out_strides_set)
      std::memcpy(os, s.out_strides, sizeof(Strides));
    else if (!real_domain(c) && inplace(c))
      std::memcpy(os, is, sizeof(Strides));
    else
      dense(c, out_first, os);
  }
}

// Aligned, distinct addresses that an estimating planner never dereferences.
template <class R>
R* placeholder(int k) {
  return reinterpret_cast<R*>(static_cast<uintptr_t>(0x100000) * (k + 1));
}

template <class R>
void* make_plan(const Core* c, bool forward, int variant) {
  const Fftw<R>& f = lib<R>();
  const int rank = c->head.rank;
  const int64_t* is = c->s.is[forward];
  const int64_t* os = c->s.os[forward];
  IoDim dims[kMaxRank];
  // FFTW takes the slowest dimension first.
  for (int k = 0; k < rank; ++k) dims[rank - 1 - k] = IoDim{c->s.lengths[k], is[k + 1], os[k + 1]};
  IoDim batch{c->s.transforms, c->s.in_distance, c->s.out_distance};
  unsigned flags = kEstimate | ((variant & 1) ? kUnaligned : 0u);
  bool same = inplace(c) || (variant & 2);
  R* in = placeholder<R>(0);
  R* out = same ? in : placeholder<R>(1);
  std::lock_guard<std::mutex> hold(planner_lock());
  if (f.plan_with_nthreads)
    f.plan_with_nthreads(c->s.thread_limit > 0 ? static_cast<int>(c->s.thread_limit) : max_threads());
  if (packed(c)) {
    // The half spectrum lies dense in the scratch: rows of h, transforms h*m apart.
    const int64_t* real_s = forward ? is : os;
    const int64_t h = half(c), scratch_s[3] = {0, 1, h};
    for (int k = 0; k < rank; ++k) {
      int64_t n = c->s.lengths[k];
      dims[rank - 1 - k] =
          forward ? IoDim{n, real_s[k + 1], scratch_s[k + 1]} : IoDim{n, scratch_s[k + 1], real_s[k + 1]};
    }
    int64_t spectrum = h * (rank > 1 ? c->s.lengths[1] : 1);
    if (forward) {
      IoDim scratch_batch{c->s.transforms, c->s.in_distance, spectrum};
      return f.guru64_r2c(rank, dims, 1, &scratch_batch, in, placeholder<R>(1), flags);
    }
    IoDim scratch_batch{c->s.transforms, spectrum, c->s.out_distance};
    return f.guru64_c2r(rank, dims, 1, &scratch_batch, placeholder<R>(1), in, flags);
  }
  if (!real_domain(c)) {
    if (split(c)) {
      R* ii = placeholder<R>(2);
      return f.guru64_split_dft(rank, dims, 1, &batch, in, ii, out, same ? ii : placeholder<R>(3), flags);
    }
    return f.guru64_dft(rank, dims, 1, &batch, in, out, forward ? -1 : 1, flags);
  }
  if (forward) return f.guru64_r2c(rank, dims, 1, &batch, in, out, flags);
  // A multi-dimensional c2r keeps its input only where FFTW can manage it.
  bool may_destroy = c->head.option_flags & qnl::dfti::kDestroyInputAllowed;
  if (!may_destroy && !same)
    if (void* p = f.guru64_c2r(rank, dims, 1, &batch, in, out, flags | kPreserveInput)) return p;
  return f.guru64_c2r(rank, dims, 1, &batch, in, out, flags);
}

template <class R>
void* plan_for(Core* c, bool forward, int variant) {
  std::atomic<void*>& slot = c->plans[forward][variant];
  void* p = slot.load(std::memory_order_acquire);
  if (p) return p;
  p = make_plan<R>(c, forward, variant);
  void* expected = nullptr;
  if (p && !slot.compare_exchange_strong(expected, p)) {
    // Another thread made the same plan first.
    std::lock_guard<std::mutex> hold(planner_lock());
    lib<R>().destroy(p);
    p = expected;
  }
  return p;
}

// Multiplies every element of one side by `factor`: `comps` reals per element.
template <class R>
void scale_side(R* base, int comps, int rank, const int64_t* n, const int64_t* s, int64_t howmany, int64_t dist,
                R factor) {
  int64_t index[kMaxRank] = {};
  for (int64_t t = 0; t < howmany; ++t) {
    for (;;) {
      int64_t off = t * dist;
      for (int k = 0; k < rank; ++k) off += index[k] * s[k + 1];
      for (int q = 0; q < comps; ++q) base[off * comps + q] *= factor;
      int k = 0;
      while (k < rank && ++index[k] == n[k]) index[k++] = 0;
      if (k == rank) break;
    }
  }
}

template <class R>
bool aligned(const Fftw<R>& f, R* p) {
  return (reinterpret_cast<uintptr_t>(p) & f.alignment_mask) == 0;
}

template <class R, bool Forward>
int32_t compute(Record* d, void* a, void* b, void* x, void* y) {
  Core* c = core(d);
  const Fftw<R>& f = lib<R>();
  const int64_t* is = c->s.is[Forward];
  const int64_t* os = c->s.os[Forward];
  bool in_place = inplace(c);
  R* in[2];
  R* out[2];
  int arrays = split(c) ? 2 : 1;
  if (split(c)) {
    // The backward transform of split arrays is the forward one with real and
    // imaginary parts exchanged.
    in[0] = static_cast<R*>(Forward ? a : b);
    in[1] = static_cast<R*>(Forward ? b : a);
    out[0] = static_cast<R*>(in_place ? in[0] : (Forward ? x : y));
    out[1] = static_cast<R*>(in_place ? in[1] : (Forward ? y : x));
  } else {
    in[0] = static_cast<R*>(a);
    out[0] = static_cast<R*>(in_place ? a : b);
  }
  // Element 0 of the strides is an offset, in elements of each side.
  bool complex_in = !real_domain(c) ? !split(c) : !Forward;
  bool complex_out = !real_domain(c) ? !split(c) : Forward;
  for (int k = 0; k < arrays; ++k) {
    in[k] += is[0] * (complex_in ? 2 : 1);
    out[k] += os[0] * (complex_out ? 2 : 1);
  }
  int variant = 0;
  for (int k = 0; k < arrays; ++k)
    if (!aligned(f, in[k]) || !aligned(f, out[k])) variant |= 1;
  if (!in_place && in[0] == out[0]) variant |= 2;
  void* plan = plan_for<R>(c, Forward, variant);
  if (!plan) return kUnimplemented;
  if (split(c))
    f.execute_split_dft(plan, in[0], in[1], out[0], out[1]);
  else if (!real_domain(c))
    f.execute_dft(plan, in[0], out[0]);
  else if (Forward)
    f.execute_r2c(plan, in[0], out[0]);
  else
    f.execute_c2r(plan, in[0], out[0]);
  double scale = Forward ? c->s.forward_scale : c->s.backward_scale;
  if (scale != 1.0) {
    int64_t n[kMaxRank];
    std::memcpy(n, c->s.lengths, sizeof n);
    if (real_domain(c) && Forward) n[0] = half(c);
    for (int k = 0; k < arrays; ++k)
      scale_side<R>(out[k], complex_out ? 2 : 1, d->rank, n, os, c->s.transforms, c->s.out_distance,
                    static_cast<R>(scale));
  }
  return kOk;
}

// Where the real and imaginary parts of z[k] stand in the packed layout of one
// dimension of n (-1: not stored, known to be zero).
struct PackedPlace {
  int64_t re, im;
};
PackedPlace packed_place(int32_t format, int64_t n, int64_t k) {
  if (format == kCcs) return {2 * k, 2 * k + 1};
  if (k == 0) return {0, -1};
  if (format == kPerm && n % 2 == 0) return k == n / 2 ? PackedPlace{1, -1} : PackedPlace{2 * k, 2 * k + 1};
  return {2 * k - 1, 2 * k < n ? 2 * k : -1};  // PACK, and PERM of odd n
}

// Offsets, in reals with strides s, of the parts of z(k1, k2) of the half
// spectrum (k2 along the fast dimension n, k1 along m), and of the cells a
// forward transform clears. Every row holds the one-dimensional layout along
// n. In two dimensions the columns k2 = 0 and, for even n, k2 = n/2 are the
// transforms of real sequences along m: the real slot of such a column holds
// their one-dimensional layout down its rows, for k1 up to m/2 (the rest are
// conjugates, not stored), and its imaginary slot, where the format has one,
// holds zeros.
struct PackedCells {
  int64_t re, im, blank[2];
};
PackedCells packed_cells(int32_t format, int rank, int64_t n, int64_t m, int64_t k1, int64_t k2, const int64_t* s) {
  const PackedPlace col = packed_place(format, n, k2);
  const int64_t row_step = rank > 1 ? s[2] : 0;
  auto at = [&](int64_t row, int64_t column) { return row < 0 || column < 0 ? -1 : row * row_step + column * s[1]; };
  if (rank == 1 || (k2 != 0 && 2 * k2 != n)) return {at(k1, col.re), at(k1, col.im), {-1, -1}};
  if (2 * k1 > m) return {-1, -1, {-1, -1}};  // conjugates of the upper half
  const PackedPlace row = packed_place(format, m, k1);
  return {at(row.re, col.re), at(row.im, col.re), {at(row.re, col.im), at(row.im, col.im)}};
}

template <class R, bool Forward>
int32_t compute_packed(Record* d, void* a, void* b, void*, void*) {
  Core* c = core(d);
  const Fftw<R>& f = lib<R>();
  const int64_t* is = c->s.is[Forward];
  const int64_t* os = c->s.os[Forward];
  const int rank = d->rank;
  const int64_t n = c->s.lengths[0], m = rank > 1 ? c->s.lengths[1] : 1, h = half(c), howmany = c->s.transforms;
  R* in = static_cast<R*>(a) + is[0];
  R* out = static_cast<R*>(inplace(c) ? a : b) + os[0];
  thread_local std::vector<R> scratch;
  scratch.resize(static_cast<size_t>(2 * h * m * howmany));
  R* z = scratch.data();
  int variant = aligned(f, Forward ? in : out) && aligned(f, z) ? 0 : 1;
  void* plan = plan_for<R>(c, Forward, variant);
  if (!plan) return kUnimplemented;
  const int32_t format = d->packed_format;
  if (Forward) {
    f.execute_r2c(plan, in, z);
    const R scale = static_cast<R>(c->s.forward_scale);
    for (int64_t t = 0; t < howmany; ++t) {
      R* dst = out + t * c->s.out_distance;
      for (int64_t k1 = 0; k1 < m; ++k1)
        for (int64_t k2 = 0; k2 < h; ++k2) {
          PackedCells at = packed_cells(format, rank, n, m, k1, k2, os);
          if (at.re < 0) continue;
          const R* src = z + 2 * ((t * m + k1) * h + k2);
          dst[at.re] = src[0] * scale;
          if (at.im >= 0) dst[at.im] = src[1] * scale;
          for (int64_t blank : at.blank)
            if (blank >= 0) dst[blank] = R(0);
        }
    }
    return kOk;
  }
  for (int64_t t = 0; t < howmany; ++t) {
    const R* src = in + t * c->s.in_distance;
    for (int64_t k1 = 0; k1 < m; ++k1)
      for (int64_t k2 = 0; k2 < h; ++k2) {
        // The lower half of a real column is the conjugate of the upper.
        bool mirrored = rank > 1 && (k2 == 0 || 2 * k2 == n) && 2 * k1 > m;
        PackedCells at = packed_cells(format, rank, n, m, mirrored ? m - k1 : k1, k2, is);
        R* dst = z + 2 * ((t * m + k1) * h + k2);
        dst[0] = src[at.re];
        dst[1] = at.im < 0 ? R(0) : mirrored ? -src[at.im] : src[at.im];
      }
  }
  f.execute_c2r(plan, z, out);
  if (c->s.backward_scale != 1.0)
    scale_side<R>(out, 1, rank, c->s.lengths, os, howmany, c->s.out_distance, static_cast<R>(c->s.backward_scale));
  return kOk;
}

template <class R>
int32_t commit_as(Core* c) {
  drop_plans<R>(c);
  settle_strides(c);
  if (!plan_for<R>(c, true, 0) || !plan_for<R>(c, false, 0)) {
    drop_plans<R>(c);
    return kInconsistent;
  }
  c->head.compute_forward = packed(c) ? &compute_packed<R, true> : &compute<R, true>;
  c->head.compute_backward = packed(c) ? &compute_packed<R, false> : &compute<R, false>;
  return kOk;
}

// ---- operations --------------------------------------------------------------

int32_t op_commit(Record* d) {
  Core* c = core(d);
  if (d->magic != kMagic) return 5;
  uncommit(c);
  if (real_domain(c)) {
    // Complex conjugate-even data in the CCE layout; real ones in CCS, PACK or
    // PERM, which are laid out for one and two dimensions.
    bool complex_storage = d->conjugate_even_storage == kComplexComplex;
    if (complex_storage != (d->packed_format == kCce)) return kInconsistent;
    if (!complex_storage && d->rank > 2) return kUnimplemented;
  }
  if (c->s.transforms < 1) return kInvalid;
  d->buffer_count = (inplace(c) ? 1 : 2) * (split(c) ? 2 : 1);
  // The scrambled order is free to the core; it keeps the natural order.
  int32_t status = single(c) ? commit_as<float>(c) : commit_as<double>(c);
  if (status != kOk) return status;
  d->commit_status = kCommitted;
  d->state_flags |= 1;
  return kOk;
}

// Settings that change a plan's shape put the descriptor back to uncommitted.
int32_t changed(Record* d) {
  uncommit(core(d));
  return kOk;
}

int32_t op_get_in_strides(Record* d, int64_t* v) {
  Core* c = core(d);
  if (!c->s.in_strides_set) settle_strides(c);
  std::memcpy(v, c->s.in_strides_set ? c->s.in_strides : c->s.is[1], sizeof(int64_t) * (d->rank + 1));
  return kOk;
}
int32_t op_get_out_strides(Record* d, int64_t* v) {
  Core* c = core(d);
  if (!c->s.out_strides_set) settle_strides(c);
  std::memcpy(v, c->s.out_strides_set ? c->s.out_strides : c->s.os[1], sizeof(int64_t) * (d->rank + 1));
  return kOk;
}
int32_t op_set_in_strides(Record* d, const int64_t* v) {
  Core* c = core(d);
  std::memcpy(c->s.in_strides, v, sizeof(int64_t) * (d->rank + 1));
  c->s.in_strides_set = true;
  return changed(d);
}
int32_t op_set_out_strides(Record* d, const int64_t* v) {
  Core* c = core(d);
  std::memcpy(c->s.out_strides, v, sizeof(int64_t) * (d->rank + 1));
  c->s.out_strides_set = true;
  return changed(d);
}
int32_t op_get_lengths(Record* d, int64_t* v) {
  std::memcpy(v, core(d)->s.lengths, sizeof(int64_t) * d->rank);
  return kOk;
}
int32_t op_get_name(Record* d, char* buffer, int64_t size) {
  const Settings& s = core(d)->s;
  for (int64_t i = 0; i < size; ++i) buffer[i] = i < s.name_length ? s.name[i] : static_cast<char>(s.name_pad);
  return kOk;
}
int32_t op_set_name(Record* d, const char* name, int64_t length, int32_t pad) {
  Settings& s = core(d)->s;
  s.name_length = length < static_cast<int64_t>(sizeof s.name) ? length : static_cast<int64_t>(sizeof s.name);
  if (name) std::memcpy(s.name, name, static_cast<size_t>(s.name_length));
  s.name_pad = pad;
  return kOk;
}
int32_t op_get_scale(Record* d, double* v, int32_t param) {
  *v = param == 4 ? core(d)->s.forward_scale : core(d)->s.backward_scale;
  return kOk;
}
int32_t op_set_scale(Record* d, double v, int32_t param) {
  (param == 4 ? core(d)->s.forward_scale : core(d)->s.backward_scale) = v;
  return changed(d);
}
int32_t op_copy(Record* d, Record** out) {
  Core* from = core(d);
  Core* c = new (std::nothrow) Core();
  if (!c) return kMemory;
  c->head = from->head;
  c->s = from->s;
  c->head.next = nullptr;
  uncommit(c);
  *out = &c->head;
  return kOk;
}
int32_t op_get_in_distance(Record* d, int64_t* v) {
  *v = core(d)->s.in_distance;
  return kOk;
}
int32_t op_get_out_distance(Record* d, int64_t* v) {
  *v = core(d)->s.out_distance;
  return kOk;
}
int32_t op_get_transforms(Record* d, int64_t* v) {
  *v = core(d)->s.transforms;
  return kOk;
}
int32_t op_set_in_distance(Record* d, int64_t v) {
  core(d)->s.in_distance = v;
  return changed(d);
}
int32_t op_set_out_distance(Record* d, int64_t v) {
  core(d)->s.out_distance = v;
  return changed(d);
}
int32_t op_set_transforms(Record* d, int64_t v) {
  if (v < 1) return kInvalid;
  core(d)->s.transforms = v;
  return changed(d);
}
int32_t op_get_thread_limit(Record* d, int64_t* v) {
  *v = core(d)->s.thread_limit;
  return kOk;
}
int32_t op_set_thread_limit(Record* d, int64_t v) {
  if (v < 0) return kInvalid;
  core(d)->s.thread_limit = v;
  return changed(d);
}

int32_t op_destroy(Record* d) {
  Core* c = core(d);
  drop(c);
  c->head.magic = 0;
  delete c;
  return kOk;
}

const Ops kOps = {op_commit,           nullptr,
                  op_get_in_strides,   op_get_out_strides,
                  op_set_in_strides,   op_set_out_strides,
                  op_get_lengths,      op_get_name,
                  op_set_name,         op_get_scale,
                  op_set_scale,        op_copy,
                  op_get_in_distance,  op_get_out_distance,
                  op_get_transforms,   op_set_in_distance,
                  op_set_out_distance, op_set_transforms,
                  op_get_thread_limit, op_set_thread_limit};

int32_t create(Record** out, int32_t precision, int32_t domain, int32_t rank, const int64_t* lengths) {
  if (!out) return kInconsistent;
  if (rank < 1 || rank > kMaxRank || !lengths) return kInvalid;
  for (int k = 0; k < rank; ++k)
    if (lengths[k] < 1) return kInvalid;
  Core* c = new (std::nothrow) Core();
  if (!c) return kMemory;
  Record& h = c->head;
  h.magic = kMagic;
  h.commit_status = kUncommitted;
  h.rank = rank;
  h.buffer_count = 1;
  h.destroy = op_destroy;
  h.ops = &kOps;
  h.forward_domain = domain;
  h.precision = precision;
  h.complex_storage = kComplexComplex;
  h.real_storage = kRealReal;
  h.conjugate_even_storage = kComplexComplex;
  h.placement = kInplace;
  h.packed_format = kCce;
  h.workspace = kAllow;
  h.ordering = kOrdered;
  h.number_of_user_threads = 1;
  std::memcpy(c->s.lengths, lengths, sizeof(int64_t) * rank);
  c->s.transforms = 1;
  c->s.forward_scale = c->s.backward_scale = 1.0;
  *out = &h;
  return kOk;
}

}  // namespace
}  // namespace qnl_ref::dft

using qnl_ref::dft::create;
using qnl_ref::dft::Record;

#define QNL_REF_CREATORS(t, precision, domain)                                                                  \
  extern "C" QNL_REF_EXPORT int32_t qnl_dft_dfti_create_##t##1d(Record * *out, int64_t n) {                     \
    return create(out, precision, domain, 1, &n);                                                               \
  }                                                                                                             \
  extern "C" QNL_REF_EXPORT int32_t qnl_dft_dfti_create_##t##md(Record** out, int32_t rank, const int64_t* n) { \
    return create(out, precision, domain, rank, n);                                                             \
  }
QNL_REF_CREATORS(dc, 36, 32)
QNL_REF_CREATORS(dr, 36, 33)
QNL_REF_CREATORS(sc, 35, 32)
QNL_REF_CREATORS(sr, 35, 33)
#undef QNL_REF_CREATORS

// Per-descriptor thread set-up of other cores; FFTW needs none.
extern "C" QNL_REF_EXPORT void qnl_dft_bless_node_omp(Record*) {}

// A line per commit belongs to the verbose mode of the computing core; this
// one has nothing to add to the trace of the entries.
extern "C" QNL_REF_EXPORT void qnl_dft_dfti_verbose(Record*) {}

extern "C" QNL_REF_EXPORT void qnl_dft_dfti_get_version_string(char* buffer, int64_t length) {
  char text[160];
  int n = std::snprintf(text, sizeof text, "qnl_rt reference DFT core (%s) on %s", QNL_REF_LAYER,
                        qnl_ref::dft::fftw_double().version);
  for (int64_t i = 0; i < length && i < n; ++i) buffer[i] = text[i];
}
