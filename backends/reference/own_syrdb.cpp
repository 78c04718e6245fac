// ?syrdb, ?herdb: reduction of a symmetric (Hermitian) matrix to real tridiagonal form,
// A = Q T Q^H, with d and e the diagonals of T and Q as jobz asks: "N" not formed, "V"
// formed in Z, "U" applied to the caller's Z from the right (Z := Z Q). kd is the band
// width of an intermediate stage; here the reduction runs in one stage through OpenBLAS's
// ?sytrd/?hetrd, and the reflectors it leaves in A and tau are those of that routine.
// Scratch is the back-end's own, so lwork only answers a query: at least max(1, n kd).
#include <algorithm>
#include <vector>

#include "backend_lapack.h"
#include "own.h"

namespace qnl_ref::own {
namespace {

template <class T>
struct Reduction {
  using R = Real<T>;
  static constexpr char letter = Traits<T>::letter;
  using Trd = void(const char*, const I*, T*, const I*, R*, R*, T*, T*, const I*, I*, size_t);
  using Gtr = void(const char*, const I*, T*, const I*, const T*, T*, const I*, I*, size_t);
  using Mtr = void(const char*, const char*, const char*, const I*, const I*, const T*, const I*, const T*, T*,
                   const I*, T*, const I*, I*, size_t, size_t, size_t);

  static void run(const char* jobz, const char* uplo, const I* pn, const I* kd, void* a, const I* lda, void* d, void* e,
                  void* tau, void* z, const I* ldz, void* work, const I* lwork, I* info) {
    static Trd* trd = openblas<Trd>(letter, is_complex<T> ? "hetrd_" : "sytrd_");
    static Gtr* gtr = openblas<Gtr>(letter, is_complex<T> ? "ungtr_" : "orgtr_");
    static Mtr* mtr = openblas<Mtr>(letter, is_complex<T> ? "unmtr_" : "ormtr_");
    const I n = *pn;
    auto* w = static_cast<T*>(work);
    if (*lwork == -1) {
      w[0] = T(static_cast<R>(std::max<I>(1, n * *kd)));
      *info = 0;
      return;
    }
    const char job = upper(*jobz);
    auto* av = static_cast<T*>(a);
    auto* tv = static_cast<T*>(tau);
    auto* zv = static_cast<T*>(z);
    // One scratch for all three steps, as large as the largest optimum.
    const I query = -1;
    T best[3] = {T{1}, T{1}, T{1}};
    I ignored = 0;
    trd(uplo, &n, av, lda, static_cast<R*>(d), static_cast<R*>(e), tv, &best[0], &query, &ignored, 1);
    if (job == 'V') gtr(uplo, &n, zv, ldz, tv, &best[1], &query, &ignored, 1);
    if (job == 'U') mtr("R", uplo, "N", &n, &n, av, lda, tv, zv, ldz, &best[2], &query, &ignored, 1, 1, 1);
    I size = 1;
    for (const T& b : best) size = std::max(size, static_cast<I>(std::real(b)));
    std::vector<T> scratch(static_cast<size_t>(size));
    trd(uplo, &n, av, lda, static_cast<R*>(d), static_cast<R*>(e), tv, scratch.data(), &size, info, 1);
    if (*info != 0 || n == 0) return;
    if (job == 'V') {
      // Q is formed from the reflectors, copied over to Z.
      const bool up = upper(*uplo) == 'U';
      for (I j = 0; j < n; ++j)
        for (I i = up ? 0 : j; i < (up ? j + 1 : n); ++i) zv[i + j * *ldz] = av[i + j * *lda];
      gtr(uplo, &n, zv, ldz, tv, scratch.data(), &size, info, 1);
    } else if (job == 'U') {
      mtr("R", uplo, "N", &n, &n, av, lda, tv, zv, ldz, scratch.data(), &size, info, 1, 1, 1);
    }
  }
};

}  // namespace
}  // namespace qnl_ref::own

using namespace qnl_ref::own;

#define QNL_SYRDB_SYMBOL(name, T)                                                                                     \
  void qnl_lapack_##name(const char* jobz, const char* uplo, const I* n, const I* kd, void* a, const I* lda, void* d, \
                         void* e, void* tau, void* z, const I* ldz, void* work, const I* lwork, I* info, size_t,      \
                         size_t) {                                                                                    \
    Reduction<T>::run(jobz, uplo, n, kd, a, lda, d, e, tau, z, ldz, work, lwork, info);                               \
  }

// The back-end symbols: exported, while the rest of the library stays hidden.
#pragma GCC visibility push(default)
extern "C" {
QNL_SYRDB_SYMBOL(ssyrdb, float)
QNL_SYRDB_SYMBOL(dsyrdb, double)
QNL_SYRDB_SYMBOL(cherdb, cfloat)
QNL_SYRDB_SYMBOL(zherdb, cdouble)
}
#pragma GCC visibility pop
