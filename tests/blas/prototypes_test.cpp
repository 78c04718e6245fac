// The hidden BLAS bodies against the published C interface (cblas.h), which lists the
// same arguments in the same order after the layout: an option is a character, an
// integer or a real scalar by value is read through an address, and every array or
// scalar address has the C interface's precision and const-ness (complex ones are
// void* there, so only their const-ness is compared). A table letter that names the
// wrong type stops the build here.
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "blas_gen.h"
#include "cblas.h"

namespace {

template <class C, class B>
constexpr bool agrees() {
  using namespace qnl::blas;
  if constexpr (std::is_enum_v<C>)
    return std::is_same_v<B, const char*>;
  else if constexpr (std::is_integral_v<C>)
    return std::is_same_v<B, const QnlLayerInt*>;
  else if constexpr (std::is_floating_point_v<C>)
    return std::is_same_v<B, const C*>;
  else if constexpr (std::is_same_v<C, const void*>)
    return std::is_same_v<B, const cfloat*> || std::is_same_v<B, const cdouble*>;
  else if constexpr (std::is_same_v<C, void*>)
    return std::is_same_v<B, cfloat*> || std::is_same_v<B, cdouble*>;
  else
    return std::is_same_v<B, C>;
}

template <class Cblas, class Body>
struct Agrees;
template <class CR, class... C, class BR, class... B>
struct Agrees<CR (*)(C...), BR (*)(B...)> {
  static constexpr size_t skip = sizeof...(C) - sizeof...(B);  // the layout, when there is one
  template <size_t... K>
  static constexpr bool at(std::index_sequence<K...>) {
    using Params = std::tuple<C...>;
    return (agrees<std::tuple_element_t<K + skip, Params>, B>() && ...);
  }
  static constexpr bool value = skip <= 1 && at(std::index_sequence_for<B...>{});
};

#define QNL_AGREES(name) \
  static_assert(Agrees<decltype(&cblas_##name), decltype(&qnl_body_##name)>::value, #name " differs from cblas.h")

// Each level and each mixed-precision shape: real scalars of complex routines, single
// precision vectors of a double result, rotations with real or complex sines.
QNL_AGREES(srotg);
QNL_AGREES(drotmg);
QNL_AGREES(srot);
QNL_AGREES(zdrot);
QNL_AGREES(csscal);
QNL_AGREES(zscal);
QNL_AGREES(dswap);
QNL_AGREES(caxpy);
QNL_AGREES(dsdot);
QNL_AGREES(sdsdot);
QNL_AGREES(dznrm2);
QNL_AGREES(dgemv);
QNL_AGREES(cgbmv);
QNL_AGREES(ztrsv);
QNL_AGREES(stpmv);
QNL_AGREES(dger);
QNL_AGREES(zgerc);
QNL_AGREES(cher);
QNL_AGREES(zhpr2);
QNL_AGREES(dspr);
QNL_AGREES(sgemm);
QNL_AGREES(zsymm);
QNL_AGREES(cherk);
QNL_AGREES(zher2k);
QNL_AGREES(dtrsm);
QNL_AGREES(dgemmt);

}  // namespace
