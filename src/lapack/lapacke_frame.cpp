// The LAPACKE template: see lapacke_frame.h.
#include "lapacke_frame.h"

#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

#include "frame.h"
#include "lapack_gen.h"
#include "lapacke_kit.h"
#include "matcopy_gen.h"
#include "services_gen.h"

namespace qnl::lapacke {

using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

// The matrix copies hold complex elements as {re, im} structs of the same layout as
// std::complex (which guarantees it).
template <class B, class C>
inline const B* as(const C* p) {
  static_assert(sizeof(B) == sizeof(C) && alignof(B) == alignof(C));
  return reinterpret_cast<const B*>(p);
}
template <class B, class C>
inline B* as(C* p) {
  static_assert(sizeof(B) == sizeof(C) && alignof(B) == alignof(C));
  return reinterpret_cast<B*>(p);
}

template <>
void omatcopy<float>(char o, char op, size_t r, size_t c, const float* in, size_t li, float* out, size_t lo) {
  qnl_body_QNL_Somatcopy(o, op, r, c, 1.0f, in, li, out, lo);
}
template <>
void omatcopy<double>(char o, char op, size_t r, size_t c, const double* in, size_t li, double* out, size_t lo) {
  qnl_body_QNL_Domatcopy(o, op, r, c, 1.0, in, li, out, lo);
}
template <>
void omatcopy<cfloat>(char o, char op, size_t r, size_t c, const cfloat* in, size_t li, cfloat* out, size_t lo) {
  using B = qnl::blas::cfloat;
  qnl_body_QNL_Comatcopy(o, op, r, c, {1.0f, 0.0f}, as<B>(in), li, as<B>(out), lo);
}
template <>
void omatcopy<cdouble>(char o, char op, size_t r, size_t c, const cdouble* in, size_t li, cdouble* out, size_t lo) {
  using B = qnl::blas::cdouble;
  qnl_body_QNL_Zomatcopy(o, op, r, c, {1.0, 0.0}, as<B>(in), li, as<B>(out), lo);
}

namespace {

constexpr int kWorkMemoryError = -1010, kTransposeMemoryError = -1011;

void* allocate(int64_t elements, size_t size) {
  if (elements < 1) elements = 1;
  return qnl_body_qnl_serv_iface_allocate(uint64_t(elements) * size, 128);
}
void release(void* p) {
  if (p) qnl_body_qnl_serv_iface_deallocate(p);
}

size_t element_size(char type) {
  switch (type) {
    case 's':
      return 4;
    case 'd':
    case 'c':
      return 8;
    case 'z':
      return 16;
    default:
      return 0;  // integers: the width of the twin
  }
}

template <class I>
size_t size_of(char type) {
  size_t s = element_size(type);
  return s ? s : sizeof(I);
}

template <class I>
I value(void* const* p, int k) {
  return *static_cast<const I*>(p[k]);
}
char letter(void* const* p, int k, char otherwise) { return k < 0 ? otherwise : *static_cast<const char*>(p[k]); }

// Runs `f` with the element type of `type` as a typed null pointer.
template <class F>
auto typed(char type, F f) {
  switch (type) {
    case 's':
      return f(static_cast<float*>(nullptr));
    case 'd':
      return f(static_cast<double*>(nullptr));
    case 'c':
      return f(static_cast<cfloat*>(nullptr));
    default:
      return f(static_cast<cdouble*>(nullptr));
  }
}

// The scans of the shapes other than general (nan_at).
template <class I>
__attribute__((noinline)) bool nan_other(const Arg& a, int layout, void* const* p, const I* d, int k) {
  const I* s = d + a.d;
  return typed(a.type, [&](auto* t) -> bool {
    using T = std::remove_pointer_t<decltype(t)>;
    const T* x = static_cast<const T*>(p[k]);
    char u = letter(p, a.ref[0], 'u');
    switch (a.nan) {
      case kScalar:
        return nan_vec<I>(I(1), x, I(1));
      case kVector:  // ?lassq steps by incx, as the stock gate does
        return nan_vec<I>(s[0], x, a.ref[0] >= 0 ? value<I>(p, a.ref[0]) : I(1));
      case kSy:
        return nan_sy<I>(layout, u, s[0], x, value<I>(p, a.ld));
      case kTr:
        return nan_tr<I>(layout, u, letter(p, a.ref[1], 'n'), s[0], x, value<I>(p, a.ld));
      case kGb:
        return nan_gb<I>(layout, s[0], s[1], s[2], s[3], x, value<I>(p, a.ld));
      case kSb:
        return nan_sb<I>(layout, u, s[0], s[1], x, value<I>(p, a.ld));
      case kTb:
        return nan_tb<I>(layout, u, letter(p, a.ref[1], 'n'), s[0], s[1], x, value<I>(p, a.ld));
      case kSp:
      case kPf:
        return nan_sp<I>(s[0], x);
      case kTp:
        return nan_tp<I>(layout, u, letter(p, a.ref[1], 'n'), s[0], x);
      case kTf:
        return nan_tf<I>(layout, letter(p, a.ref[0], 'n'), letter(p, a.ref[1], 'u'), letter(p, a.ref[2], 'n'), s[0], x);
      default:
        return false;
    }
  });
}

// Whether matrix or scalar k of the call holds a NaN, by the scan of its `nan` kind;
// `d` holds the call's dimensions. General matrices, the common case, take a short
// road: the other shapes' code stays out of the high level's frame.
template <class I>
inline bool nan_at(const Routine<I>& r, int layout, void* const* p, const I* d, int k) {
  const Arg& a = r.args[k];
  if (a.nan != kGe) return nan_other<I>(a, layout, p, d, k);
  const I* s = d + a.d;
  return typed(a.type, [&](auto* t) -> bool {
    using T = std::remove_pointer_t<decltype(t)>;
    return nan_ge<I>(layout, s[0], s[1], static_cast<const T*>(p[k]), value<I>(p, a.ld));
  });
}

// The size a query left in the first element: a real part for complex types, truncated.
template <class I>
I answer(char type, const void* cell) {
  switch (type) {
    case 's':
    case 'c': {
      float v;
      std::memcpy(&v, cell, sizeof v);
      return I(v);
    }
    case 'd':
    case 'z': {
      double v;
      std::memcpy(&v, cell, sizeof v);
      return I(v);
    }
    default: {
      I v;
      std::memcpy(&v, cell, sizeof v);
      return v;
    }
  }
}

// A matrix that its job letter does not ask for is neither checked, copied nor tested.
inline bool wanted(const Arg& a, void* const* p) {
  if (a.cond < 0) return true;
  char c = letter(p, a.cond, ' ');
  for (const char* l = a.letters; *l; ++l)
    if (lsame(c, *l)) return true;
  return false;
}

template <class I>
I max1(I v) {
  return v > 1 ? v : 1;
}

bool has_ld(uint8_t kind) {
  return kind == kGe || kind == kSy || kind == kTr || kind == kGb || kind == kSb || kind == kTb;
}

// Column-major leading dimension and element count of a matrix's copy.
template <class I>
void copy_shape(const Arg& a, const I* s, I& ld, int64_t& count) {
  switch (a.kind) {
    case kGe:
      ld = max1(s[0]);
      count = int64_t(ld) * max1(s[1]);
      return;
    case kSy:
    case kTr:
      ld = max1(s[0]);
      count = int64_t(ld) * ld;
      return;
    case kGb:
      ld = max1(s[2] + s[3] + 1);
      count = int64_t(ld) * max1(s[1]);
      return;
    case kSb:
    case kTb:
      ld = max1(s[1] + 1);
      count = int64_t(ld) * max1(s[0]);
      return;
    default:  // packed and RFP
      ld = 0;
      count = int64_t(max1(s[0])) * (s[0] + 1) / 2;
      return;
  }
}

// Row-major leading dimension bound: the matrix's column count.
template <class I>
I columns(const Arg& a, const I* s) {
  switch (a.kind) {
    case kGe:
    case kGb:
      return s[1];
    default:
      return s[0];
  }
}

// The transpositions of the shapes other than general (transpose).
template <class I>
__attribute__((noinline)) void transpose_other(const Arg& a, int from, void* const* p, const I* s, const void* in,
                                               I ldin, void* out, I ldout) {
  typed(a.type, [&](auto* t) {
    using T = std::remove_pointer_t<decltype(t)>;
    const T* x = static_cast<const T*>(in);
    T* y = static_cast<T*>(out);
    char u = letter(p, a.ref[0], 'u');
    switch (a.kind) {
      case kSy:
        trans_sy<I>(from, u, s[0], x, ldin, y, ldout);
        break;
      case kTr:
        trans_tr<I>(from, u, letter(p, a.ref[1], 'n'), s[0], x, ldin, y, ldout);
        break;
      case kGb:
        trans_gb<I>(from, s[0], s[1], s[2], s[3], x, ldin, y, ldout);
        break;
      case kSb:
        trans_sb<I>(from, u, s[0], s[1], x, ldin, y, ldout);
        break;
      case kTb:
        trans_tb<I>(from, u, letter(p, a.ref[1], 'n'), s[0], s[1], x, ldin, y, ldout);
        break;
      case kSp:
        trans_sp<I>(from, u, s[0], x, y);
        break;
      case kTp:
        trans_tp<I>(from, u, letter(p, a.ref[1], 'n'), s[0], x, y);
        break;
      case kPf:
        trans_pf<I>(from, letter(p, a.ref[0], 'n'), letter(p, a.ref[1], 'u'), s[0], x, y);
        break;
      case kTf:
        trans_tf<I>(from, letter(p, a.ref[0], 'n'), letter(p, a.ref[1], 'u'), letter(p, a.ref[2], 'n'), s[0], x, y);
        break;
      default:
        break;
    }
    return 0;
  });
}

// Transposes one matrix between layouts: from `from` layout in `in` to the other in `out`;
// a general matrix by the short road.
template <class I>
inline void transpose(const Arg& a, int from, void* const* p, const I* s, const void* in, I ldin, void* out, I ldout) {
  if (a.kind != kGe) return transpose_other<I>(a, from, p, s, in, ldin, out, ldout);
  typed(a.type, [&](auto* t) {
    using T = std::remove_pointer_t<decltype(t)>;
    trans_ge<I>(from, s[0], s[1], static_cast<const T*>(in), ldin, static_cast<T*>(out), ldout);
    return 0;
  });
}

template <class I>
I call_fortran(const Routine<I>& r, void** q, I* info, void* result) {
  *info = 0;
  q[r.nargs] = info;
  r.fortran(q, result);
  // The C call has the layout in front: a bad argument n of the Fortran routine is n+1 here.
  if (*info < 0 && !(r.flags & kNoLayout)) *info -= 1;
  return *info;
}

char swap_uplo(char u) {
  if (lsame(u, 'l')) return 'U';
  if (lsame(u, 'u')) return 'L';
  return u;
}

// Row-major without copies: uplo exchanged, m and n exchanged.
template <class I>
I middle_no_copy(const Routine<I>& r, void* const* p) {
  void* q[kMaxArgs + 1];
  char uplo = 0;
  I dims[2];
  int ints = 0;
  for (int k = 0; k < r.nargs; ++k) {
    q[k] = p[k];
    const Arg& a = r.args[k];
    if (a.kind == kChar && uplo == 0 && k == 0) {
      uplo = swap_uplo(letter(p, k, 'u'));
      q[k] = &uplo;
    }
    if (a.kind == kInt && ints < 2 && k < 3 && a.ld < 0) dims[ints++] = value<I>(p, k);
  }
  // m and n are the first two integers of ?laset and ?lacpy.
  if (ints == 2 && r.args[0].kind == kChar && r.args[1].kind == kInt && r.args[2].kind == kInt) {
    std::swap(dims[0], dims[1]);
    q[1] = &dims[0];
    q[2] = &dims[1];
  }
  I info;
  return call_fortran(r, q, &info, nullptr);
}

// Row-major block packing: the caller's row-major block is the column-major block of the
// transposed triangle, which has the other uplo, the block at (j, i) and cols by rows.
template <class I>
I middle_pack(const Routine<I>& r, void* const* p) {
  enum { kUplo, kTrans, kN, kAp, kI, kJ, kRows, kCols, kA, kLda };
  char uplo = swap_uplo(letter(p, kUplo, ' '));
  I info = 0;
  if (!lsame(uplo, 'u') && !lsame(uplo, 'l')) {
    info = -2;
  } else {
    I cols = lsame(letter(p, kTrans, 'n'), 'n') ? value<I>(p, kCols) : value<I>(p, kRows);
    if (value<I>(p, kLda) < cols) info = -11;
  }
  if (info != 0) {
    xerbla<I>(r.work, info);
    return info;
  }
  void* q[kMaxArgs + 1];
  for (int k = 0; k < r.nargs; ++k) q[k] = p[k];
  q[kUplo] = &uplo;
  std::swap(q[kI], q[kJ]);
  std::swap(q[kRows], q[kCols]);
  return call_fortran(r, q, &info, nullptr);
}

}  // namespace

// ------------------------------------------------------------------ NaN flag

template <class I>
static int g_nancheck = -1;

template <class I>
int get_nancheck() {
  if (g_nancheck<I> == -1) {
    char buffer[256];
    int length = qnl_rt_getenv("LAPACKE_NANCHECK", buffer, sizeof buffer);
    // On unless the text parses to 0; a text without leading digits parses to 0.
    g_nancheck<I> = (length < 1 || std::strtol(buffer, nullptr, 10) != 0) ? 1 : 0;
  }
  return g_nancheck<I>;
}

template <class I>
void set_nancheck(int flag) {
  g_nancheck<I> = flag != 0 ? 1 : 0;
}

template <class I>
void xerbla(const char* name, I info) {
  if (info == kWorkMemoryError)
    std::printf("Not enough memory to allocate work array in %s\n", name);
  else if (info == kTransposeMemoryError)
    std::printf("Not enough memory to transpose matrix in %s\n", name);
  else if (info < 0)
    std::printf("Wrong parameter %d in %s\n", static_cast<int32_t>(-info), name);
}

// ---------------------------------------------------------------- the levels

namespace {

// The arguments of a set in increasing order: `for (int k : each(mask))`.
struct each {
  uint64_t mask;
  struct iterator {
    uint64_t m;
    int operator*() const { return __builtin_ctzll(m); }
    iterator& operator++() {
      m &= m - 1;
      return *this;
    }
    bool operator!=(const iterator& o) const { return m != o.m; }
  };
  iterator begin() const { return {mask}; }
  iterator end() const { return {0}; }
};
constexpr uint64_t bit(int k) { return uint64_t(1) << k; }
static_assert(kMaxArgs <= 64);

// The argument addresses, by a plain loop: for a count known only at run time the
// compiler makes a string move of memcpy (or of the same loop in line, seeing that the
// arrays cannot overlap), whose start-up costs more than copying the few addresses of a
// call. Out of line the arrays may overlap, and the loop stays a loop.
__attribute__((noinline)) void copy_args(void** q, void* const* p, int n) {
  for (int k = 0; k < n; ++k) q[k] = p[k];
}

// Frees the scratch blocks of set `held`, last argument first.
void release_all(void* const* blocks, uint64_t held) {
  while (held) {
    int k = 63 - __builtin_clzll(held);
    held &= ~bit(k);
    release(blocks[k]);
  }
}

// Row-major norms: the caller's array is the column-major transpose, whose one norm is
// the infinity norm of the matrix and back; its triangle is the other (?lantr), and its
// dimensions or band widths are the two integers before the matrix, exchanged.
template <class I>
I middle_norm_swap(const Routine<I>& r, void* const* p, void* result) {
  void* q[kMaxArgs + 1];
  copy_args(q, p, r.nargs);
  char norm = letter(p, 0, ' ');
  norm = lsame(norm, '1') || lsame(norm, 'o') ? 'I' : lsame(norm, 'i') ? '1' : norm;
  q[0] = &norm;
  char uplo = 0;
  if (r.args[1].kind == kChar) {
    uplo = swap_uplo(letter(p, 1, ' '));
    q[1] = &uplo;
  }
  int k = 2;
  while (k < r.nargs && r.args[k].kind < kGe) ++k;
  std::swap(q[k - 2], q[k - 1]);
  I info;
  return call_fortran(r, q, &info, result);
}

// The middle level; a function-valued routine leaves its value in `result`. `known` holds
// the dimensions when the high level has computed them already (they depend only on
// arguments both levels share), or is null.
template <class I>
I run_middle(const Routine<I>& r, int layout, void* const* p, void* result, const I* known = nullptr) {
  void* q[kMaxArgs + 1];
  I info = 0;
  copy_args(q, p, r.nargs);
  if (layout == kColMajor) return call_fortran(r, q, &info, result);
  if (layout != kRowMajor) {
    xerbla<I>(r.work, I(-1));
    return -1;
  }
  if (r.flags & kNoCopy) return middle_no_copy(r, p);
  if (r.flags & kPack) return middle_pack(r, p);
  if (r.flags & kNormSwap) return middle_norm_swap(r, p, result);
  I computed[kMaxDims];
  const I* d = known;
  if (!d) {
    r.dims(p, computed);
    d = computed;
  }
  // The only argument checks of the C layer: a row-major leading dimension below the column count.
  // The copies' shapes are worked out on the same pass; nothing is allocated before all passed.
  // `todo`: the matrices this call copies (passed, and asked for by their job letters).
  I ld_t[kMaxArgs], ld_in[kMaxArgs];
  int64_t count[kMaxArgs];
  uint64_t todo = 0;
  for (int k : each{r.matrices}) {
    const Arg& a = r.args[k];
    const I* s = d + a.d;
    const bool want = wanted(a, p);
    ld_in[k] = a.ld >= 0 ? value<I>(p, a.ld) : I(0);
    if (want && has_ld(a.kind) && ld_in[k] < columns(a, s)) {
      info = -(a.ld + 2);
      xerbla<I>(r.work, info);
      return info;
    }
    copy_shape(a, s, ld_t[k], count[k]);
    if (a.ld >= 0) q[a.ld] = &ld_t[k];
    if (want && p[k] != nullptr) todo |= bit(k);
  }
  // A workspace query: the sizes do not depend on the layout; nothing is copied.
  for (int k : each{r.owned})
    if (r.args[k].kind == kWork && r.args[k].ld >= 0 && value<I>(p, r.args[k].ld) == -1)
      return call_fortran(r, q, &info, result);
  void* copies[kMaxArgs];
  uint64_t held = 0;
  for (int k : each{todo}) {
    copies[k] = allocate(count[k], size_of<I>(r.args[k].type));
    if (!copies[k]) {
      info = kTransposeMemoryError;
      break;
    }
    held |= bit(k);
    q[k] = copies[k];
  }
  if (info == 0) {
    for (int k : each{held}) {
      const Arg& a = r.args[k];
      if (a.dir & kIn) transpose(a, kRowMajor, p, d + a.d, p[k], ld_in[k], copies[k], ld_t[k]);
    }
    call_fortran(r, q, &info, result);
    // Results go back whatever info says.
    for (int k : each{held}) {
      const Arg& a = r.args[k];
      if (a.dir & kOut) transpose(a, kColMajor, p, d + a.d, copies[k], ld_t[k], p[k], ld_in[k]);
    }
  }
  release_all(copies, held);
  if (info == kTransposeMemoryError) xerbla<I>(r.work, info);
  return info;
}

// Copies the high level's own outputs between the caller's arrays and the workspaces
// they live in: into the workspace (`dir` kIn) or out of it (kOut). `lengths` holds each
// workspace's element count; a copy never reaches past it.
template <class I>
void copy_own(const Routine<I>& r, void* const* p, void* const* owned, uint64_t held, const I* lengths, const I* d,
              uint8_t dir) {
  for (int k = r.nargs; k < r.nargs + r.nown; ++k) {
    const Arg& a = r.args[k];
    if (!(a.dir & dir) || !(held & bit(a.ld))) continue;
    I count = d[a.d], room = lengths[a.ld] - a.ref[0];
    if (count > room) count = room;
    if (count <= 0) continue;
    const size_t size = size_of<I>(a.type);
    char* w = static_cast<char*>(owned[a.ld]) + size * a.ref[0];
    if (dir == kIn)
      std::memcpy(w, p[k], size * count);
    else
      std::memcpy(p[k], w, size * count);
  }
}

template <class I>
I run_high(const Routine<I>& r, int layout, void* const* p, void* result) {
  if (layout != kColMajor && layout != kRowMajor) {
    xerbla<I>(r.high, I(-1));
    return -1;
  }
  I d[kMaxDims];
  r.dims(p, d);
  const I* known = d;
  // The source block of a packing routine lies as trans says: cols by rows unless "n".
  if ((r.flags & kPack) && !lsame(letter(p, 1, 'n'), 'n')) {
    known = nullptr;
    for (int k : each{r.matrices})
      if (r.args[k].kind == kGe) std::swap(d[r.args[k].d], d[r.args[k].d + 1]);
  }
  if (r.checked && get_nancheck<I>()) {
    for (int k : each{r.checked})
      if (wanted(r.args[k], p) && nan_at(r, layout, p, d, k)) return -I(r.args[k].hpos);
  }
  if (!r.owned) return run_middle(r, layout, p, result, known);
  void* q[kMaxArgs];
  void* owned[kMaxArgs];
  uint64_t held = 0, queried = 0;
  I lengths[kMaxArgs];
  // Query answers land in one cell per workspace, two elements of any type wide (?gesvdq's
  // query leaves the optimal and the minimal length in work(1) and work(2)); only the
  // cells of `queried` are cleared and read.
  alignas(16) unsigned char answers[kMaxArgs][32];
  I info = 0;
  copy_args(q, p, r.nargs);
  for (int k : each{r.owned}) {
    const Arg& a = r.args[k];
    if (a.kind == kFixed) {
      if (!wanted(a, p)) continue;
      owned[k] = allocate(d[a.d], size_of<I>(a.type));
      if (!owned[k]) {
        info = kWorkMemoryError;
        break;
      }
      held |= bit(k);
      q[k] = owned[k];
      lengths[k] = d[a.d];
      if (a.ld >= 0) q[a.ld] = &lengths[k];
    } else {
      queried |= bit(k);
      std::memset(answers[k], 0, sizeof answers[k]);
      q[k] = answers[k];
      lengths[k] = -1;
      if (a.ld >= 0) q[a.ld] = &lengths[k];
    }
  }
  if (info == 0 && queried) {
    info = run_middle(r, layout, q, result, known);
    for (int k : each{queried}) {
      if (info != 0) break;
      const Arg& a = r.args[k];
      lengths[k] = answer<I>(a.type, answers[k]);
      owned[k] = allocate(lengths[k], size_of<I>(a.type));
      if (!owned[k]) {
        info = kWorkMemoryError;
        break;
      }
      held |= bit(k);
      q[k] = owned[k];
    }
  }
  if (info == 0) {
    if (r.nown) copy_own(r, p, owned, held, lengths, d, kIn);
    info = run_middle(r, layout, q, result, known);
    if (r.nown) copy_own(r, p, owned, held, lengths, d, kOut);
  }
  release_all(owned, held);
  if (info == kWorkMemoryError) xerbla<I>(r.high, info);
  return info;
}

// A function's value; a rejected call returns its code as the value, a failed allocation 0.
template <class R, class I>
R value_or_code(I info, R value) {
  if (info == kWorkMemoryError || info == kTransposeMemoryError) return R(0);
  return info < 0 ? R(info) : value;
}

}  // namespace

template <class I>
I high(const Routine<I>& r, int layout, void* const* p) {
  return run_high(r, layout, p, nullptr);
}
template <class I>
I middle(const Routine<I>& r, int layout, void* const* p) {
  return run_middle(r, layout, p, nullptr);
}
template <class R, class I>
R high_value(const Routine<I>& r, int layout, void* const* p) {
  R value = 0;
  I info = run_high(r, layout, p, &value);  // before `value` is read
  return value_or_code(info, value);
}
template <class R, class I>
R middle_value(const Routine<I>& r, int layout, void* const* p) {
  R value = 0;
  I info = run_middle(r, layout, p, &value);  // before `value` is read
  return value_or_code(info, value);
}

template int32_t high(const Routine<int32_t>&, int, void* const*);
template int64_t high(const Routine<int64_t>&, int, void* const*);
template int32_t middle(const Routine<int32_t>&, int, void* const*);
template int64_t middle(const Routine<int64_t>&, int, void* const*);
template float high_value(const Routine<int32_t>&, int, void* const*);
template float high_value(const Routine<int64_t>&, int, void* const*);
template double high_value(const Routine<int32_t>&, int, void* const*);
template double high_value(const Routine<int64_t>&, int, void* const*);
template float middle_value(const Routine<int32_t>&, int, void* const*);
template float middle_value(const Routine<int64_t>&, int, void* const*);
template double middle_value(const Routine<int32_t>&, int, void* const*);
template double middle_value(const Routine<int64_t>&, int, void* const*);
template int get_nancheck<int32_t>();
template int get_nancheck<int64_t>();
template void set_nancheck<int32_t>(int);
template void set_nancheck<int64_t>(int);
template void xerbla<int32_t>(const char*, int32_t);
template void xerbla<int64_t>(const char*, int64_t);

}  // namespace qnl::lapacke

// One body for both layers: the Fortran entry reads its three integers at the layer's width.
extern "C" __attribute__((visibility("default"))) void LAPACKE_ilaver(void* major, void* minor, void* patch) {
  qnl_lapack_body_ilaver(static_cast<QnlLayerInt*>(major), static_cast<QnlLayerInt*>(minor),
                         static_cast<QnlLayerInt*>(patch));
}
