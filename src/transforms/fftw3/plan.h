// The plan layer's record, its global settings and the four workers every
// constructor ends in; the same for both precisions.
#pragma once
#include <cstdint>

#include "entry.h"
#include "fftw3.h"

namespace qnl::fftw3 {

struct Plan {
  void* desc;  // first: the plan's address is also the pointer to its descriptor handle
  void* io[4];
  void* ipar;
  void* dpar;
  void* aux;
  void (*execute)(Plan*);
  void (*destroy)(Plan*);
  void* tail;
};

struct IoDim64 {
  int64_t n, is, os;
};

enum class Kind { kComplex, kR2c, kC2r, kSplit };

// 35 single, 36 double: the precision of the descriptor a plan makes.
using Precision = int32_t;
inline constexpr Precision kSinglePrecision = 35, kDoublePrecision = 36;

// The guru64 workers. `a`..`d` are in, out (or ri, ii, ro, io for split).
Plan* plan_guru64(Precision precision, Kind kind, int rank, const IoDim64* dims, int howmany_rank,
                  const IoDim64* howmany_dims, void* a, void* b, void* c, void* d, int sign) QNL_HIDDEN;

// New-array execution on a copy of the record.
void execute_with(const Plan* p, void* a, void* b, void* c, void* d) QNL_HIDDEN;

// Row-major dimension lists of the basic and advanced planners.
// Side multipliers: `in_mult[i]`/`out_mult[i]` multiply the strides of dimension i-1.
Plan* plan_dense(Precision precision, Kind kind, int rank, const int* n, void* in, void* out, int sign) QNL_HIDDEN;
Plan* plan_many(Precision precision, Kind kind, int rank, const int* n, int howmany, void* in, const int* inembed,
                int istride, int idist, void* out, const int* onembed, int ostride, int odist, int sign) QNL_HIDDEN;
Plan* plan_guru32(Precision precision, Kind kind, int rank, const fftw_iodim* dims, int howmany_rank,
                  const fftw_iodim* howmany_dims, void* a, void* b, void* c, void* d, int sign) QNL_HIDDEN;

void* allocate(size_t bytes) QNL_HIDDEN;
void release(void* p) QNL_HIDDEN;

}  // namespace qnl::fftw3
