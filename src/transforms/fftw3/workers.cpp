// The plan layer's shared part: the global settings, the default allocator and
// destructor, the executors, the four guru64 workers and the dimension lists of
// the basic, advanced and 32-bit guru planners.
#include <cstring>
#include <initializer_list>

#include "plan.h"
#include "qnl_dfti.h"
#include "services_gen.h"

using namespace qnl::fftw3;

namespace qnl::fftw3 {
namespace {

void* default_new_plan();

}  // namespace
}  // namespace qnl::fftw3

__attribute__((visibility("default"))) fftw3_qnl_s fftw3_qnl = {0, 1, 0.0, 1, &default_new_plan, 64};

namespace qnl::fftw3 {

void* allocate(size_t bytes) { return qnl_body_QNL_malloc(bytes, fftw3_qnl.default_alignment); }
void release(void* p) { qnl_body_QNL_free(p); }

namespace {

DFTI_DESCRIPTOR_HANDLE& handle(Plan* p) { return *reinterpret_cast<DFTI_DESCRIPTOR_HANDLE*>(&p->desc); }

void default_destroy(Plan* p) {
  if (!p) return;
  for (void* owned : {p->aux, p->dpar, p->ipar})
    if (owned) release(owned);
  if (p->desc) DftiFreeDescriptor(reinterpret_cast<DFTI_DESCRIPTOR_HANDLE*>(p));
  release(p);
}

void* default_new_plan() {
  auto* p = static_cast<Plan*>(allocate(sizeof(Plan)));
  if (!p) return nullptr;
  std::memset(p, 0, sizeof *p);
  p->destroy = default_destroy;
  return p;
}

// The executors drop the compute status: an executing plan has no way to report.
void forward_inplace(Plan* p) { DftiComputeForward(handle(p), p->io[0]); }
void backward_inplace(Plan* p) { DftiComputeBackward(handle(p), p->io[0]); }
void forward_outofplace(Plan* p) { DftiComputeForward(handle(p), p->io[0], p->io[1]); }
void backward_outofplace(Plan* p) { DftiComputeBackward(handle(p), p->io[0], p->io[1]); }
void split_inplace(Plan* p) { DftiComputeForward(handle(p), p->io[0], p->io[1]); }
void split_outofplace(Plan* p) { DftiComputeForward(handle(p), p->io[0], p->io[1], p->io[2], p->io[3]); }

bool succeeded(long status) { return status == 0 || DftiErrorClass(status, DFTI_NO_ERROR) != 0; }

// A layer-width list as the descriptor interface reads it: 32-bit under LP64.
struct List {
  int32_t narrow[8];
  int64_t wide[8];
  bool lp64;
  // False when the value does not survive narrowing.
  bool put(int i, int64_t v) {
    wide[i] = v;
    narrow[i] = static_cast<int32_t>(v);
    return !lp64 || narrow[i] == v;
  }
  const void* data() const { return lp64 ? static_cast<const void*>(narrow) : static_cast<const void*>(wide); }
};

Plan* fail(Plan* p) {
  if (p->destroy) p->destroy(p);
  return nullptr;
}

}  // namespace

Plan* plan_guru64(Precision precision, Kind kind, int rank, const IoDim64* dims, int howmany_rank,
                  const IoDim64* howmany_dims, void* a, void* b, void* c, void* d, int sign) {
  if (!dims || (howmany_rank > 0 && !howmany_dims)) return nullptr;
  if (rank > 7 || howmany_rank > 1) return nullptr;
  Plan* p = static_cast<Plan*>(fftw3_qnl.new_plan());
  if (!p) return nullptr;
  bool lp64 = qnl::layer() == 0;
  List lengths{}, is{}, os{};
  lengths.lp64 = is.lp64 = os.lp64 = lp64;
  is.put(0, 0);
  os.put(0, 0);
  for (int i = 0; i < rank; ++i)
    if (!lengths.put(i, dims[i].n) || !is.put(i + 1, dims[i].is) || !os.put(i + 1, dims[i].os)) return fail(p);
  const bool single = precision == kSinglePrecision;
  const auto domain = kind == Kind::kR2c || kind == Kind::kC2r ? DFTI_REAL : DFTI_COMPLEX;
  DFTI_DESCRIPTOR_HANDLE* h = reinterpret_cast<DFTI_DESCRIPTOR_HANDLE*>(p);
  long status = rank == 1
                    ? (single ? DftiCreateDescriptor_s_1d : DftiCreateDescriptor_d_1d)(h, domain, lengths.wide[0])
                    : (single ? DftiCreateDescriptor_s_md : DftiCreateDescriptor_d_md)(h, domain, rank, lengths.data());
  if (!succeeded(status)) return fail(p);
  DFTI_DESCRIPTOR_HANDLE desc = *h;
  auto set = [&](auto... args) { return succeeded(DftiSetValue(desc, args...)); };
  // In place unless told otherwise: the descriptor's default.
  auto not_inplace = [&]() { return set(DFTI_PLACEMENT, DFTI_NOT_INPLACE); };
  auto same_strides = [&]() {
    for (int i = 0; i < rank; ++i)
      if (dims[i].is != dims[i].os) return false;
    for (int i = 0; i < howmany_rank; ++i)
      if (howmany_dims[i].is != howmany_dims[i].os) return false;
    return true;
  };
  switch (kind) {
    case Kind::kComplex:
      if (!set(DFTI_INPUT_STRIDES, is.data())) return fail(p);
      p->io[0] = a;
      if (a == b) {
        p->execute = sign == FFTW_FORWARD ? forward_inplace : backward_inplace;
        if (!same_strides()) return fail(p);
      } else {
        p->io[1] = b;
        p->execute = sign == FFTW_FORWARD ? forward_outofplace : backward_outofplace;
        if (!not_inplace() || !set(DFTI_OUTPUT_STRIDES, os.data())) return fail(p);
      }
      break;
    case Kind::kR2c:
    case Kind::kC2r: {
      bool forward = kind == Kind::kR2c;
      if (!set(DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX) || !set(DFTI_INPUT_STRIDES, is.data()) ||
          !set(DFTI_OUTPUT_STRIDES, os.data()))
        return fail(p);
      p->io[0] = a;
      // No comparison of the two sides' strides here: they differ by nature.
      if (a == b) {
        p->execute = forward ? forward_inplace : backward_inplace;
      } else {
        p->io[1] = b;
        p->execute = forward ? forward_outofplace : backward_outofplace;
        if (!not_inplace()) return fail(p);
      }
      break;
    }
    case Kind::kSplit:
      // A split plan computes forward only; the inverse comes from exchanging
      // the real and imaginary arrays, as the published interface has it.
      if (!set(DFTI_COMPLEX_STORAGE, DFTI_REAL_REAL) || !set(DFTI_INPUT_STRIDES, is.data())) return fail(p);
      if (a == c && b == d) {
        p->io[0] = a;
        p->io[1] = b;
        p->execute = split_inplace;
        if (!same_strides()) return fail(p);
      } else {
        p->io[0] = a;
        p->io[1] = b;
        p->io[2] = c;
        p->io[3] = d;
        p->execute = split_outofplace;
        if (!not_inplace() || !set(DFTI_OUTPUT_STRIDES, os.data())) return fail(p);
      }
      break;
  }
  if (howmany_rank == 1) {
    List batch{};
    batch.lp64 = lp64;
    if (!batch.put(0, howmany_dims[0].n) || !batch.put(1, howmany_dims[0].is) || !batch.put(2, howmany_dims[0].os))
      return fail(p);
    if (!set(DFTI_NUMBER_OF_TRANSFORMS, batch.wide[0]) || !set(DFTI_INPUT_DISTANCE, batch.wide[1]) ||
        !set(DFTI_OUTPUT_DISTANCE, batch.wide[2]))
      return fail(p);
  }
  if (fftw3_qnl.nthreads >= 0 && !set(DFTI_THREAD_LIMIT, static_cast<long long>(fftw3_qnl.nthreads))) return fail(p);
  if (!succeeded(DftiCommitDescriptor(desc))) return fail(p);
  return p;
}

void execute_with(const Plan* p, void* a, void* b, void* c, void* d) {
  Plan copy = *p;  // the shared record is never written
  copy.io[0] = a;
  copy.io[1] = b;
  if (c || d) {
    copy.io[2] = c;
    copy.io[3] = d;
  }
  if (copy.execute) copy.execute(&copy);
}

Plan* plan_dense(Precision precision, Kind kind, int rank, const int* n, void* in, void* out, int sign) {
  if (rank > 7 || !n) return nullptr;
  IoDim64 dims[7];
  for (int i = 0; i < rank; ++i) dims[i] = IoDim64{n[i], 1, 1};
  int first = rank - 1;  // dimension whose outer neighbour the real side pads
  if (rank > 1 && kind != Kind::kComplex) {
    int64_t h = n[first] / 2 + 1;
    int64_t real_side = in == out ? 2 * h : n[first];
    dims[first - 1].is = kind == Kind::kC2r ? h : real_side;
    dims[first - 1].os = kind == Kind::kC2r ? real_side : h;
    --first;
  }
  for (int i = first; i >= 1; --i) {
    dims[i - 1].is = (kind == Kind::kComplex ? dims[i].n : n[i]) * dims[i].is;
    dims[i - 1].os = (kind == Kind::kComplex ? dims[i].n : n[i]) * dims[i].os;
  }
  return plan_guru64(precision, kind, rank, dims, 0, nullptr, in, out, nullptr, nullptr, sign);
}

Plan* plan_many(Precision precision, Kind kind, int rank, const int* n, int howmany, void* in, const int* inembed,
                int istride, int idist, void* out, const int* onembed, int ostride, int odist, int sign) {
  if (rank > 7 || !n) return nullptr;
  IoDim64 dims[7];
  for (int i = 0; i < rank; ++i) dims[i] = IoDim64{n[i], 0, 0};
  if (rank > 0) {
    dims[rank - 1].is = istride;
    dims[rank - 1].os = ostride;
  }
  bool inplace = in == out;
  for (int i = rank - 1; i >= 1; --i) {
    int64_t h = n[i] / 2 + 1;
    bool last = i == rank - 1;
    int64_t in_default = n[i], out_default = n[i];
    if (kind == Kind::kC2r) {
      if (last) in_default = h;
      if (last && inplace) out_default = 2 * h;
    } else if (kind == Kind::kR2c) {
      if (last && inplace) in_default = 2 * h;
      if (last) out_default = h;
    }
    dims[i - 1].is = static_cast<int64_t>(inembed ? inembed[i] : in_default) * dims[i].is;
    dims[i - 1].os = static_cast<int64_t>(onembed ? onembed[i] : out_default) * dims[i].os;
  }
  IoDim64 batch{howmany, idist, odist};
  return plan_guru64(precision, kind, rank, dims, 1, &batch, in, out, nullptr, nullptr, sign);
}

Plan* plan_guru32(Precision precision, Kind kind, int rank, const fftw_iodim* dims, int howmany_rank,
                  const fftw_iodim* howmany_dims, void* a, void* b, void* c, void* d, int sign) {
  if (rank > 7 || howmany_rank > 1) return nullptr;
  if (!dims || (howmany_rank > 0 && !howmany_dims)) return nullptr;
  IoDim64 wide[7], batch[1];
  for (int i = 0; i < rank; ++i) wide[i] = IoDim64{dims[i].n, dims[i].is, dims[i].os};
  for (int i = 0; i < howmany_rank; ++i) batch[i] = IoDim64{howmany_dims[i].n, howmany_dims[i].is, howmany_dims[i].os};
  return plan_guru64(precision, kind, rank, wide, howmany_rank, howmany_rank > 0 ? batch : nullptr, a, b, c, d, sign);
}

}  // namespace qnl::fftw3
