// The hidden LAPACK bodies' prototypes against an independent declaration of the same
// routines, the reference lapack.h: the same types, with the layer's integer for
// lapack_int. A table letter that names the wrong precision or const-ness stops the build
// here. (The BLAS bodies meet the same check in every CBLAS body: cblas_common.h.)
#include <complex>
#include <tuple>
#include <type_traits>
#include <utility>
#define lapack_complex_float std::complex<float>
#define lapack_complex_double std::complex<double>
#include <lapack.h>

#include "lapack_gen.h"

namespace {

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

// Each body parameter against lapack.h's; its hidden lengths at the end are left out.
template <class P, class... B, size_t... K>
constexpr bool each(std::index_sequence<K...>) {
  return (std::is_same_v<typename Layer<std::tuple_element_t<K, P>>::type, B> && ...);
}
template <class SR, class... S, class BR, class... B>
constexpr bool agree(SR (*)(S...), BR (*)(B...)) {
  return sizeof...(B) <= sizeof...(S) && each<std::tuple<S...>, B...>(std::index_sequence_for<B...>{});
}

// `stock`: LAPACK_x, or LAPACK_x_base for a routine with characters
#define QNL_LAPACK(stock, name) agree(decltype(&stock){}, decltype(&qnl_lapack_body_##name){})

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
