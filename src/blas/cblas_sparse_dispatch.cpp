// Chooses the build of the sparse level-1 loops for the running processor, once per type.
// AVX2 gathers pay off; AVX-512 adds scatters, which measured slower than scalar stores
// on the machines we run (bench/blas/sparse.cpp), so no AVX-512 build is kept.
#include "../runtime/cpu_features.h"
#include "cblas_sparse_loops.h"

namespace qnl::cblas {

template <class E, class I>
const SparseKernels<E, I>& sparse_kernels() {
  // A load and a test of the kept survey: as cheap as a once-only choice, without
  // the guard that would link the C++ exception pool.
  return cpu::has(cpu::kAvx2) ? *avx2::kernels<E, I>() : *baseline::kernels<E, I>();
}

template const SparseKernels<float, int32_t>& sparse_kernels();
template const SparseKernels<double, int32_t>& sparse_kernels();
template const SparseKernels<blas::cfloat, int32_t>& sparse_kernels();
template const SparseKernels<blas::cdouble, int32_t>& sparse_kernels();
template const SparseKernels<float, int64_t>& sparse_kernels();
template const SparseKernels<double, int64_t>& sparse_kernels();
template const SparseKernels<blas::cfloat, int64_t>& sparse_kernels();
template const SparseKernels<blas::cdouble, int64_t>& sparse_kernels();

}  // namespace qnl::cblas
