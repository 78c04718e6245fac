// The hidden LAPACK bodies against an independent oracle, the reference LAPACK's own
// lapack.h: each parameter has the type lapack.h gives it (precision, const-ness,
// callback), with the layer's integer for lapack_int. A table letter that names the
// wrong type stops the build here.
#include <complex>
#include <cstddef>
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
  using type = T;
};
template <>
struct Layer<lapack_int> {
  using type = QnlLayerInt;
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

// lapack.h's parameters, with its hidden lengths (size_t, last) left out.
template <class Stock, class Body>
struct Agrees;
template <class SR, class... S, class BR, class... B>
struct Agrees<SR (*)(S...), BR (*)(B...)> {
  template <size_t... K>
  static constexpr bool at(std::index_sequence<K...>) {
    using Params = std::tuple<typename Layer<S>::type...>;
    return (std::is_same_v<std::tuple_element_t<K, Params>, B> && ...);
  }
  static constexpr bool value = sizeof...(B) <= sizeof...(S) && at(std::index_sequence_for<B...>{});
};

// `stock` is lapack.h's declaration: LAPACK_x, or LAPACK_x_base for a routine with characters.
#define QNL_AGREES(stock, name) \
  static_assert(Agrees<decltype(&stock), decltype(&qnl_lapack_body_##name)>::value, #name " differs from lapack.h")

// Every kind of data letter: own precision read and written, the real values of a complex
// routine, another precision, and the callbacks of one to three arguments.
QNL_AGREES(LAPACK_dgesv, dgesv);
QNL_AGREES(LAPACK_dsgesv, dsgesv);
QNL_AGREES(LAPACK_zcgesv, zcgesv);
QNL_AGREES(LAPACK_dlarfg, dlarfg);
QNL_AGREES(LAPACK_zheev_base, zheev);
QNL_AGREES(LAPACK_cgecon_base, cgecon);
QNL_AGREES(LAPACK_zgesvd_base, zgesvd);
QNL_AGREES(LAPACK_dgetrs_base, dgetrs);
QNL_AGREES(LAPACK_cgees_base, cgees);
QNL_AGREES(LAPACK_dgees_base, dgees);
QNL_AGREES(LAPACK_sgges_base, sgges);
QNL_AGREES(LAPACK_zgges3_base, zgges3);
QNL_AGREES(LAPACK_ssytrd_2stage_base, ssytrd_2stage);
// Hand-classified rows of the table.
QNL_AGREES(LAPACK_zgeqr, zgeqr);
QNL_AGREES(LAPACK_cgemlq_base, cgemlq);
QNL_AGREES(LAPACK_zggsvd_base, zggsvd);
QNL_AGREES(LAPACK_cgelsd, cgelsd);
QNL_AGREES(LAPACK_zgejsv_base, zgejsv);
QNL_AGREES(LAPACK_dlacn2, dlacn2);
QNL_AGREES(LAPACK_dbdsdc_base, dbdsdc);

}  // namespace
