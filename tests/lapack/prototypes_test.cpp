// The hidden bodies' prototypes against independent declarations of the same routines:
// BLAS against the published C interface (cblas.h: the same arguments in the same order
// after the layout; an option is characters, a value is read through its address, a
// complex address is void*), LAPACK against the reference lapack.h (the same types, the
// layer's integer for lapack_int). A table letter that names the wrong precision or
// const-ness stops the build here.
#include <complex>
#include <tuple>
#include <type_traits>
#include <utility>
#define lapack_complex_float std::complex<float>
#define lapack_complex_double std::complex<double>
#include <lapack.h>

#include "blas_gen.h"
#include "cblas.h"
#include "lapack_gen.h"

namespace {

using qnl::blas::cdouble;
using qnl::blas::cfloat;

template <class C, class B>
constexpr bool from_cblas() {
  if constexpr (std::is_enum_v<C>) return std::is_same_v<B, const char*>;
  if constexpr (std::is_integral_v<C>) return std::is_same_v<B, const QnlLayerInt*>;
  if constexpr (std::is_floating_point_v<C>) return std::is_same_v<B, const C*>;
  if constexpr (std::is_same_v<C, const void*>)
    return std::is_same_v<B, const cfloat*> || std::is_same_v<B, const cdouble*>;
  if constexpr (std::is_same_v<C, void*>) return std::is_same_v<B, cfloat*> || std::is_same_v<B, cdouble*>;
  return std::is_same_v<B, C>;
}

template <class T>
struct Layer {
  using type = std::conditional_t<std::is_same_v<T, lapack_int>, QnlLayerInt, T>;
};
template <class T>
struct Layer<const T> {
  using type = const typename Layer<T>::type;
};
template <class T>
struct Layer<T*> {
  using type = typename Layer<T>::type*;
};
template <class R, class... A>
struct Layer<R (*)(A...)> {
  using type = typename Layer<R>::type (*)(typename Layer<A>::type...);
};

// Each body parameter against the declaration's, after CBLAS's layout; lapack.h's hidden
// lengths at the end are left out.
template <bool Cblas, size_t Skip, class P, class... B, size_t... K>
constexpr bool each(std::index_sequence<K...>) {
  if constexpr (Cblas) return (from_cblas<std::tuple_element_t<K + Skip, P>, B>() && ...);
  return (std::is_same_v<typename Layer<std::tuple_element_t<K, P>>::type, B> && ...);
}
template <bool Cblas, class SR, class... S, class BR, class... B>
constexpr bool agree(SR (*)(S...), BR (*)(B...)) {
  constexpr size_t skip = Cblas ? sizeof...(S) - sizeof...(B) : 0;
  return sizeof...(B) <= sizeof...(S) && each<Cblas, skip, std::tuple<S...>, B...>(std::index_sequence_for<B...>{});
}

#define QNL_BLAS(name) agree<true>(decltype(&cblas_##name){}, decltype(&qnl_body_##name){})
// `stock`: LAPACK_x, or LAPACK_x_base for a routine with characters
#define QNL_LAPACK(stock, name) agree<false>(decltype(&stock){}, decltype(&qnl_lapack_body_##name){})

// Each level, and the mixed precisions: real scalars of complex routines, single precision
// vectors of a double result, real and complex sines.
static_assert(QNL_BLAS(srotg) && QNL_BLAS(drotmg) && QNL_BLAS(srot) && QNL_BLAS(zdrot) && QNL_BLAS(csscal) &&
              QNL_BLAS(caxpy) && QNL_BLAS(dsdot) && QNL_BLAS(sdsdot) && QNL_BLAS(dznrm2));
static_assert(QNL_BLAS(dgemv) && QNL_BLAS(cgbmv) && QNL_BLAS(ztrsv) && QNL_BLAS(stpmv) && QNL_BLAS(zgerc) &&
              QNL_BLAS(cher) && QNL_BLAS(zhpr2) && QNL_BLAS(dspr));
static_assert(QNL_BLAS(sgemm) && QNL_BLAS(zsymm) && QNL_BLAS(cherk) && QNL_BLAS(zher2k) && QNL_BLAS(dtrsm) &&
              QNL_BLAS(dgemmt));
// Own precision read and written, the real values of a complex routine, another
// precision, callbacks of one to three arguments, and hand-classified rows.
static_assert(QNL_LAPACK(LAPACK_dgesv, dgesv) && QNL_LAPACK(LAPACK_dsgesv, dsgesv) &&
              QNL_LAPACK(LAPACK_zcgesv, zcgesv) && QNL_LAPACK(LAPACK_zheev_base, zheev) &&
              QNL_LAPACK(LAPACK_cgecon_base, cgecon) && QNL_LAPACK(LAPACK_dgetrs_base, dgetrs));
static_assert(QNL_LAPACK(LAPACK_cgees_base, cgees) && QNL_LAPACK(LAPACK_dgees_base, dgees) &&
              QNL_LAPACK(LAPACK_sgges_base, sgges) && QNL_LAPACK(LAPACK_zgges3_base, zgges3));
static_assert(QNL_LAPACK(LAPACK_zgeqr, zgeqr) && QNL_LAPACK(LAPACK_cgemlq_base, cgemlq) &&
              QNL_LAPACK(LAPACK_zggsvd_base, zggsvd) && QNL_LAPACK(LAPACK_dlacn2, dlacn2) &&
              QNL_LAPACK(LAPACK_dbdsdc_base, dbdsdc));

}  // namespace
