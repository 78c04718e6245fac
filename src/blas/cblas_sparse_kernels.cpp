// One instruction set's build of the sparse level-1 loops: compiled once per set, with
// QNL_SPARSE_ISA naming it (baseline, avx2) and the set's compiler flags.
#include "cblas_sparse_loops.h"

namespace {
struct Tag {};
}  // namespace

namespace qnl::cblas::QNL_SPARSE_ISA {

template <class E, class I>
const SparseKernels<E, I>* kernels() {
  return &SparseLoops<Tag, E, I>::table;
}

template const SparseKernels<float, int32_t>* kernels();
template const SparseKernels<double, int32_t>* kernels();
template const SparseKernels<blas::cfloat, int32_t>* kernels();
template const SparseKernels<blas::cdouble, int32_t>* kernels();
template const SparseKernels<float, int64_t>* kernels();
template const SparseKernels<double, int64_t>* kernels();
template const SparseKernels<blas::cfloat, int64_t>* kernels();
template const SparseKernels<blas::cdouble, int64_t>* kernels();

}  // namespace qnl::cblas::QNL_SPARSE_ISA
