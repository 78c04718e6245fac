// A reference kernel library: the tables of every vector function, the mode, the
// error status and the error callback, and the class of processor this build
// needs. The same source is compiled once per instruction set (QNL_VML_INDEX).
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <mutex>

#include "complex_ops.h"
#include "messages.h"
#include "ops.h"
#include "qnl_vml.h"

#define QNL_KERNEL_API extern "C" __attribute__((visibility("default")))

namespace qnl_vml {
namespace {

std::atomic<int32_t> g_mode{VML_DEFAULT_MODE};
std::atomic<int32_t> g_status{VML_STATUS_OK};
std::atomic<VMLErrorCallBack> g_callback{nullptr};
std::mutex g_callback_lock;

constexpr int32_t kBlock = 1024;  // elements computed, then checked, while in cache

// Reports the errors of one piece: the status, errno, a line on stderr and the
// callback, as the mode asks. A callback that returns non-zero hears no more of
// this piece.
class Reporter {
 public:
  explicit Reporter(const char* name) : name_(name), mode_(g_mode.load(std::memory_order_relaxed)) {}

  // Returns what to store as the result: the callback may change it.
  template <class T>
  void report(int code, int64_t index, double a1, double a2, T* r, T* r_im = nullptr, double a1_im = 0,
              double a2_im = 0) {
    if (mode_ & VML_ERRMODE_IGNORE) return;
    g_status.store(code, std::memory_order_relaxed);
    if (mode_ & VML_ERRMODE_ERRNO) errno = code == kErrDom ? EDOM : ERANGE;
    if (mode_ & VML_ERRMODE_STDERR) {
      std::fprintf(stderr, qnl::messages::kRows[736 + code].text(), name_);
      std::fputc('\n', stderr);
    }
    VMLErrorCallBack cb = g_callback.load(std::memory_order_relaxed);
    if (!(mode_ & VML_ERRMODE_CALLBACK) || !cb || stopped_) return;
    VMLErrorContext ctx{};
    ctx.code = code;
    ctx.index = static_cast<int>(index);
    ctx.a1 = a1;
    ctx.a2 = a2;
    ctx.r1 = static_cast<double>(*r);
    ctx.a1_im = a1_im;
    ctx.a2_im = a2_im;
    ctx.r1_im = r_im ? static_cast<double>(*r_im) : 0;
    std::snprintf(ctx.name, sizeof ctx.name, "%s", name_);
    ctx.name_length = static_cast<int>(std::strlen(ctx.name));
    std::lock_guard<std::mutex> lock(g_callback_lock);
    stopped_ = cb(&ctx) != 0;
    *r = static_cast<T>(ctx.r1);
    if (r_im) *r_im = static_cast<T>(ctx.r1_im);
  }

 private:
  const char* name_;
  int32_t mode_;
  bool stopped_ = false;
};

template <class T>
bool out_of_range(T r, bool underflow) {
  T m = std::fabs(r);
  return !(m <= std::numeric_limits<T>::max()) || (underflow && m < std::numeric_limits<T>::min());
}

// The error of one real result from arguments x and z (z is 1 for one argument).
template <class Op, class T>
int error_of(T x, T z, T r) {
  const bool nan_args = std::isnan(x) || std::isnan(z), finite_args = std::isfinite(x) && std::isfinite(z);
  if ((Op::kErrors & kDomain) && std::isnan(r) && !nan_args) return kErrDom;
  if ((Op::kErrors & kInfinite) && std::isinf(r) && finite_args) return Op::infinite(x, z);
  if ((Op::kErrors & kUnderflow) && finite_args && x != 0 && z != 0 && std::fabs(r) < std::numeric_limits<T>::min())
    return kUnder;
  return 0;
}

// Scans a computed block: cheaply for anything out of range, closely if so.
template <class Op, class T>
void check(const char* name, int32_t n, const T* a, const T* b, T bscalar, T* y, int64_t first) {
  bool suspect = false;
  for (int32_t i = 0; i < n; ++i) suspect |= out_of_range(y[i], (Op::kErrors & kUnderflow) != 0);
  if (!suspect) return;
  Reporter rep(name);
  for (int32_t i = 0; i < n; ++i) {
    T z = b ? b[i] : bscalar;
    if (int code = error_of<Op>(a[i], z, y[i])) rep.report(code, first + i, a[i], z, &y[i]);
  }
}

// Room for one block's inputs, left uninitialised: std::complex would zero a
// plain array of itself on every call, a memset of 16 KiB per argument.
template <class T>
struct Scratch {
  alignas(T) unsigned char bytes[sizeof(T) * kBlock];
};

// Inputs of a block kept aside when the output overwrites them.
template <class T>
const T* keep(const T* a, const T* y, int32_t m, Scratch<T>& buffer) {
  if (a != y) return a;
  std::memcpy(buffer.bytes, a, sizeof(T) * static_cast<size_t>(m));
  return reinterpret_cast<const T*>(buffer.bytes);
}

// Complex results: an infinite or NaN part from finite arguments. The scalar of
// a power is not an element: the callback hears 1 as its second argument.
template <class Op, class T>
void check(const char* name, int32_t n, const std::complex<T>* a, const std::complex<T>* b, std::complex<T>,
           std::complex<T>* y, int64_t first) {
  bool suspect = false;
  for (int32_t i = 0; i < n; ++i) suspect |= out_of_range(y[i].real(), false) || out_of_range(y[i].imag(), false);
  if (!suspect) return;
  Reporter rep(name);
  for (int32_t i = 0; i < n; ++i) {
    const std::complex<T> z = b ? b[i] : std::complex<T>(1);
    const bool finite =
        std::isfinite(a[i].real()) && std::isfinite(a[i].imag()) && std::isfinite(z.real()) && std::isfinite(z.imag());
    const bool bad = !std::isfinite(y[i].real()) || !std::isfinite(y[i].imag());
    if (!finite || !bad) continue;
    T re = y[i].real(), im = y[i].imag();
    rep.report(Op::kInfiniteStatus, first + i, a[i].real(), z.real(), &re, &im, a[i].imag(), z.imag());
    y[i] = {re, im};
  }
}

// A vector in blocks that stay in cache: each block's arguments (kept aside where
// the output overwrites them: the scan reads them after the kernel), its kernel,
// then its error scan. E is the element type, real or complex.
template <class F>
void for_blocks(int32_t n, F block) {
  for (int32_t lo = 0; lo < n; lo += kBlock) block(lo, n - lo < kBlock ? n - lo : kBlock);
}

template <class Op, class E, class N, int A>
struct Unary {
  static void run(int32_t n, const E* a, E* y, int64_t first) {
    for_blocks(n, [&](int32_t lo, int32_t m) {
      Scratch<E> in;
      const E* x = keep(a + lo, y + lo, m, in);
      // Whether a result may be out of range: real kernels know, complex ones say so always.
      const bool suspect = Op::template map<A>(m, x, y + lo);
      if constexpr (Op::kErrors != 0)
        if (suspect) check<Op>(N::name, m, x, static_cast<const E*>(nullptr), E(1), y + lo, first + lo);
    });
  }
};

template <class Op, class E, class N, int A>
struct Binary {
  static void run(int32_t n, const E* a, const E* b, E* y, int64_t first) {
    for_blocks(n, [&](int32_t lo, int32_t m) {
      // Kept also without errors to scan: a fix-up pass after the kernel (Atan2's
      // subnormal results) reads the arguments again.
      Scratch<E> in, in2;
      const E* x = keep(a + lo, y + lo, m, in);
      const E* z = keep(b + lo, y + lo, m, in2);
      Op::template map<A>(m, x, z, y + lo);
      if constexpr (Op::kErrors != 0) check<Op>(N::name, m, x, z, E(1), y + lo, first + lo);
    });
  }
};

template <class Op, class E, class N, int A>
struct Powx {
  static void run(int32_t n, const E* a, E b, E* y, int64_t first) {
    for_blocks(n, [&](int32_t lo, int32_t m) {
      Scratch<E> in;
      const E* x = keep(a + lo, y + lo, m, in);
      Op::template map_scalar<A>(m, x, b, y + lo);
      check<Op>(N::name, m, x, static_cast<const E*>(nullptr), b, y + lo, first + lo);
    });
  }
};

// Complex to real and real to complex: no error can arise but overflow of |a|.
template <class Op, class T, class N, int A>
struct ToReal {
  static void run(int32_t n, const std::complex<T>* a, T* y, int64_t first) {
    Op::template map<A>(n, a, y);
    if constexpr (Op::kErrors != 0) {
      Reporter rep(N::name);
      for (int32_t i = 0; i < n; ++i)
        if (std::isinf(y[i]) && std::isfinite(a[i].real()) && std::isfinite(a[i].imag()))
          rep.report(kOverflow, first + i, a[i].real(), 0, &y[i], static_cast<T*>(nullptr), a[i].imag());
    }
  }
};
template <class Op, class T, class N, int A>
struct ToComplex {
  static void run(int32_t n, const T* a, std::complex<T>* y, int64_t) { Op::template map<A>(n, a, y); }
};

// sin and cos together, and the integer and fraction parts.
template <class T, int A>
void sincos(int32_t n, const T* a, T* s, T* c) {
  constexpr int L = kLanes<T>;
  auto f = [](V<T> x) {
    if constexpr (std::is_same_v<T, double>) {
      if constexpr (A == kHA)
        return QNL_VD(sincos, u10)(x);
      else
        return QNL_VD(sincos, u35)(x);
    } else {
      if constexpr (A == kHA)
        return QNL_VF(sincos, u10)(x);
      else
        return QNL_VF(sincos, u35)(x);
    }
  };
  int32_t i = 0;
  for (; i + L <= n; i += L) {
    auto r = f(load(a + i));
    store(s + i, r.x);
    store(c + i, r.y);
  }
  if (i < n) {
    T in[L], o1[L], o2[L];
    for (int k = 0; k < L; ++k) in[k] = i + k < n ? a[i + k] : T(0.5);
    auto r = f(load(in));
    store(o1, r.x);
    store(o2, r.y);
    for (int k = 0; i + k < n; ++k) {
      s[i + k] = o1[k];
      c[i + k] = o2[k];
    }
  }
}

template <class T, class N, int A>
struct SinCos {
  static void run(int32_t n, const T* a, T* y, T* z, int64_t) { sincos<T, A>(n, a, y, z); }
};
template <class T, class N, int A>
struct Modf {
  static void run(int32_t n, const T* a, T* y, T* z, int64_t) {
    for (int32_t i = 0; i < n; ++i) {
      T whole;
      T frac = std::modf(a[i], &whole);
      y[i] = whole;
      z[i] = frac;
    }
  }
};

// x s + h as an unevaluated sum hi + lo to about twice the precision of double:
// the product's rounding error by a fused multiply-add, the sum's by two-sum.
// A zero leading part passes the trailing one up, so that hi is zero only when
// the whole is.
inline void affine(double x, double s, double h, double& hi, double& lo) {
  const double p = x * s, pe = std::fma(x, s, -p);
  hi = p + h;
  const double v = hi - p;
  lo = ((p - (hi - v)) + (h - v)) + pe;
  if (hi == 0) hi = lo, lo = 0;
}

// (a sa + ha) / (b sb + hb) to within about half an ulp in every mode: a
// difference that cancels in the numerator or the denominator would otherwise
// leave any number of wrong bits. Floats are exact products in double; doubles
// divide the leading parts and correct the quotient by the exact remainder and
// the trailing parts. Where the leading quotient is not finite it stands.
inline float linear_fraction(float a, float b, float sa, float ha, float sb, float hb, bool& singular) {
  const double num = double(a) * sa + ha, den = double(b) * sb + hb;
  singular = den == 0 && !std::isnan(num);
  return static_cast<float>(num / den);
}
inline double linear_fraction(double a, double b, double sa, double ha, double sb, double hb, bool& singular) {
  double nh, nl, dh, dl;
  affine(a, sa, ha, nh, nl);
  affine(b, sb, hb, dh, dl);
  singular = dh == 0 && !std::isnan(nh);
  const double q = nh / dh;
  if (!std::isfinite(q) || !std::isfinite(nl) || !std::isfinite(dl)) return q;
  return q + ((std::fma(-q, dh, nh) + nl) - q * dl) / dh;
}

template <class T, class N, int A>
struct LinearFrac {
  static void run(int32_t n, const T* a, const T* b, T sa, T ha, T sb, T hb, T* y, int64_t first) {
    for (int32_t i = 0; i < n; ++i) {
      bool singular;
      const T ai = a[i], bi = b[i];  // y may be a or b
      T r = linear_fraction(ai, bi, sa, ha, sb, hb, singular);
      if (singular) Reporter(N::name).report(kSing, first + i, ai, bi, &r);
      y[i] = r;
    }
  }
};

// Pack and unpack: called directly with 64-bit n and strides; index and mask
// elements are 32 or 64 bits as the width code says.
int64_t element(const void* v, int64_t i, int32_t width) {
  return width == 2 ? static_cast<const int64_t*>(v)[i] : static_cast<const int32_t*>(v)[i];
}
template <class T>
struct Pack {
  static void I(int64_t n, const T* a, int64_t inc, T* y, int32_t) {
    for (int64_t i = 0; i < n; ++i) y[i] = a[i * inc];
  }
  static void V(int64_t n, const T* a, const void* ia, T* y, int32_t w) {
    for (int64_t i = 0; i < n; ++i) y[i] = a[element(ia, i, w)];
  }
  static void M(int64_t n, const T* a, const void* ma, T* y, int32_t w) {
    for (int64_t i = 0, j = 0; i < n; ++i)
      if (element(ma, i, w)) y[j++] = a[i];
  }
  static void UI(int64_t n, const T* a, T* y, int64_t inc, int32_t) {
    for (int64_t i = 0; i < n; ++i) y[i * inc] = a[i];
  }
  static void UV(int64_t n, const T* a, T* y, const void* iy, int32_t w) {
    for (int64_t i = 0; i < n; ++i) y[element(iy, i, w)] = a[i];
  }
  static void UM(int64_t n, const T* a, T* y, const void* my, int32_t w) {
    for (int64_t i = 0, j = 0; i < n; ++i)
      if (element(my, i, w)) y[i] = a[j++];
  }
};

using Kernel = void (*)();
template <class F>
Kernel as_kernel(F* f) {
  return reinterpret_cast<Kernel>(f);
}

}  // namespace
}  // namespace qnl_vml

using namespace qnl_vml;

// Type letter -> element type, and the namespace of its functions.
#define QNL_T_s float
#define QNL_T_d double
#define QNL_T_c float
#define QNL_T_z double
#define QNL_NS_s real
#define QNL_NS_d real
#define QNL_NS_c cplx
#define QNL_NS_z cplx
#define QNL_E_s float
#define QNL_E_d double
#define QNL_E_c std::complex<float>
#define QNL_E_z std::complex<double>

// The table index is the accuracy the mode asks for: 1 LA, 2 HA, 3 EP; index 0
// (a mode without accuracy bits) computes as HA.
#define QNL_TABLES(t, Stem, K, piece, ep)                                               \
  namespace names {                                                                     \
  struct t##Stem {                                                                      \
    static constexpr const char* name = "v" #t #Stem;                                   \
  };                                                                                    \
  }                                                                                     \
  QNL_KERNEL_API const Kernel qnl_vml_kernel_##t##Stem##_ttab[4] = {                    \
      as_kernel(&K<names::t##Stem, kHA>::run), as_kernel(&K<names::t##Stem, kLA>::run), \
      as_kernel(&K<names::t##Stem, kHA>::run), as_kernel(&K<names::t##Stem, ep>::run)}; \
  QNL_KERNEL_API const int32_t qnl_vml_kernel_##t##Stem##_ctab[4] = {piece, piece, piece, piece};

#define QNL_GROUP_unary(t, Stem, N, A) Unary<QNL_NS_##t::Stem, QNL_E_##t, N, A>
#define QNL_GROUP_binary(t, Stem, N, A) Binary<QNL_NS_##t::Stem, QNL_E_##t, N, A>
#define QNL_GROUP_powx(t, Stem, N, A) Powx<QNL_NS_##t::Pow, QNL_E_##t, N, A>
#define QNL_GROUP_c2r(t, Stem, N, A) ToReal<cplx::Stem, QNL_T_##t, N, A>
#define QNL_GROUP_r2c(t, Stem, N, A) ToComplex<cplx::Stem, QNL_T_##t, N, A>
#define QNL_GROUP_tworesult(t, Stem, N, A) Stem<QNL_T_##t, N, A>
#define QNL_GROUP_linfrac(t, Stem, N, A) LinearFrac<QNL_T_##t, N, A>

#define QNL_PIECE_unary(t, Stem) QNL_NS_##t::Stem::kPiece
#define QNL_PIECE_binary(t, Stem) QNL_NS_##t::Stem::kPiece
#define QNL_PIECE_powx(t, Stem) kCostlyPiece
#define QNL_PIECE_c2r(t, Stem) kCostlyPiece
#define QNL_PIECE_r2c(t, Stem) kCostlyPiece
#define QNL_PIECE_tworesult(t, Stem) kCostlyPiece
#define QNL_PIECE_linfrac(t, Stem) kCheapPiece

// EP has a kernel of its own only where SLEEF offers a faster variant; else it is LA's.
#define QNL_EP_OF(own) ((own) ? kEP : kLA)
#define QNL_EP_unary(t, Stem) QNL_EP_OF(QNL_NS_##t::Stem::kOwnEP)
#define QNL_EP_binary(t, Stem) QNL_EP_OF(QNL_NS_##t::Stem::kOwnEP)
#define QNL_EP_powx(t, Stem) QNL_EP_OF(QNL_NS_##t::Pow::kOwnEP)
#define QNL_EP_c2r(t, Stem) kLA
#define QNL_EP_r2c(t, Stem) kLA
#define QNL_EP_tworesult(t, Stem) kLA
#define QNL_EP_linfrac(t, Stem) kLA

#define QNL_PACK_T_s float
#define QNL_PACK_T_d double
#define QNL_PACK_T_c std::complex<float>
#define QNL_PACK_T_z std::complex<double>
#define QNL_PACK_PackI I
#define QNL_PACK_PackV V
#define QNL_PACK_PackM M
#define QNL_PACK_UnpackI UI
#define QNL_PACK_UnpackV UV
#define QNL_PACK_UnpackM UM
#define QNL_PACK_FN(t, Stem) QNL_PACK_FN2(QNL_PACK_T_##t, QNL_PACK_##Stem)
#define QNL_PACK_FN2(T, F) as_kernel(&Pack<T>::F)

#define QNL_TABLE_pack(t, Stem)                                                                                  \
  QNL_KERNEL_API const Kernel qnl_vml_kernel_##t##Stem##_ttab[4] = {QNL_PACK_FN(t, Stem), QNL_PACK_FN(t, Stem),  \
                                                                    QNL_PACK_FN(t, Stem), QNL_PACK_FN(t, Stem)}; \
  QNL_KERNEL_API const int32_t qnl_vml_kernel_##t##Stem##_ctab[4] = {0, 0, 0, 0};

#define QNL_KERNEL_OF(group, t, Stem) QNL_KERNEL_OF2(group, t, Stem)
#define QNL_VML_FUNCTION(t, Stem, group) QNL_FUNCTION_##group(t, Stem, group)
#define QNL_FUNCTION_pack(t, Stem, group) QNL_TABLE_pack(t, Stem)
#define QNL_FUNCTION_TABLE(t, Stem, group)      \
  namespace kernels_##t##Stem {                 \
    template <class N, int A>                   \
    using K = QNL_GROUP_##group(t, Stem, N, A); \
  }                                             \
  QNL_TABLES(t, Stem, kernels_##t##Stem::K, QNL_PIECE_##group(t, Stem), QNL_EP_##group(t, Stem))
#define QNL_FUNCTION_unary QNL_FUNCTION_TABLE
#define QNL_FUNCTION_binary QNL_FUNCTION_TABLE
#define QNL_FUNCTION_tworesult QNL_FUNCTION_TABLE
#define QNL_FUNCTION_powx QNL_FUNCTION_TABLE
#define QNL_FUNCTION_c2r QNL_FUNCTION_TABLE
#define QNL_FUNCTION_r2c QNL_FUNCTION_TABLE
#define QNL_FUNCTION_linfrac QNL_FUNCTION_TABLE
#include "vml_functions.inc"

extern "C" {

QNL_KERNEL_API int32_t dll_cpu_version(void) { return QNL_VML_INDEX; }

QNL_KERNEL_API int32_t qnl_vml_kernel_GetTTableIndex(int32_t) {
  switch (g_mode.load(std::memory_order_relaxed) & VML_ACCURACY_MASK) {
    case VML_LA:
      return 1;
    case VML_EP:
      return 3;
    default:
      return 2;
  }
}

// Mode, status and callback are the process's, shared by all threads: a thread
// of a threaded layer reports into the same status its caller reads.
// A load and a store, not an exchange: a mode form sets and restores the mode on
// every call, and a locked exchange would cost more than a short vector's work.
// Concurrent setters are not ordered among themselves either way.
QNL_KERNEL_API int32_t qnl_vml_kernel_SetMode(int32_t mode) {
  const int32_t old = g_mode.load(std::memory_order_relaxed);
  if (old != mode) g_mode.store(mode, std::memory_order_relaxed);
  return old;
}
QNL_KERNEL_API int32_t qnl_vml_kernel_GetMode(void) { return g_mode.load(); }
QNL_KERNEL_API int32_t qnl_vml_kernel_SetErrStatus(int32_t status) { return g_status.exchange(status); }
QNL_KERNEL_API int32_t qnl_vml_kernel_GetErrStatus(void) { return g_status.load(); }
QNL_KERNEL_API int32_t qnl_vml_kernel_ClearErrStatus(void) { return g_status.exchange(VML_STATUS_OK); }
QNL_KERNEL_API int32_t qnl_vml_kernel_SetErrorCallBack(VMLErrorCallBack cb) {
  g_callback.store(cb);
  return VML_STATUS_OK;
}
QNL_KERNEL_API VMLErrorCallBack qnl_vml_kernel_GetErrorCallBack(void) { return g_callback.load(); }
QNL_KERNEL_API int32_t qnl_vml_kernel_ClearErrorCallBack(void) {
  g_callback.store(nullptr);
  return VML_STATUS_OK;
}

}  // extern "C"
