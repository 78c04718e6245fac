// The frame of a Fortran BLAS entry, instantiated once per routine from the traits that
// the routine table generates (roles of the arguments, back-end symbol, record format,
// checker). Every argument arrives by reference; the back-end takes 64-bit integers by
// reference, so the LP64 side widens into locals and the ILP64 side passes the caller's
// pointers on.
#pragma once
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "checks.h"
#include "entry.h"
#include "report.h"
#include "services_gen.h"
#include "verbose.h"

namespace qnl::blas {

// Complex values as a Fortran function returns them on Linux: in xmm0 (two floats), or in
// xmm0 and xmm1 (two doubles).
struct cfloat {
  float re, im;
};
struct cdouble {
  double re, im;
};
template <class R>
constexpr bool is_complex = std::is_same_v<R, cfloat> || std::is_same_v<R, cdouble>;

template <size_t>
using Arg = void*;
template <size_t>
using Len = size_t;

// The back-end's type: an optional result pointer, the arguments, the batch's layer word,
// then one hidden length per character argument.
template <class D, class Args, class Lens>
struct Backend;
template <class D, size_t... I, size_t... L>
struct Backend<D, std::index_sequence<I...>, std::index_sequence<L...>> {
  using R = typename D::Result;
  using type =
      std::conditional_t<is_complex<R>, void(void*, Arg<I>..., Len<L>...),
                         std::conditional_t<D::batch, R(Arg<I>..., int32_t, Len<L>...), R(Arg<I>..., Len<L>...)>>;

  // Hidden lengths are the constant 1 whatever the caller passed: only first letters count.
  static auto call(type* f, void* result, int32_t layer_word, Arg<I>... v) {
    if constexpr (is_complex<R>)
      f(result, v..., Len<L>{1}...);
    else if constexpr (D::batch)
      return f(v..., layer_word, Len<L>{1}...);
    else
      return f(v..., Len<L>{1}...);
  }
};

// The entry of a hidden body at 64-bit integers (enter_wide below), for `Body` =
// &qnl_body_<routine>: `fn` is qnl_wide_<routine>. Mapped in the generated header.
template <auto Body>
struct wide_of;

template <const char* Roles>
constexpr size_t count_of(char role) {
  size_t n = 0;
  for (const char* p = Roles; *p; ++p) n += *p == role;
  return n;
}

template <class D, size_t N>
using BackendOf = Backend<D, std::make_index_sequence<N>, std::make_index_sequence<count_of<D::roles>('c')>>;

// One value of the record: integers as 32 bits from the caller's variable, characters as
// their first byte, everything else as the pointer itself.
template <char Role>
inline auto rec(void* p) {
  if constexpr (Role == 'c')
    return verbose::rec_char(p);
  else if constexpr (Role == 'i')
    return verbose::rec_int(p);
  else
    return verbose::rec_ptr(p);
}

template <class D, size_t... I, class... P>
QNL_COLD void record(char* buf, const void* result, std::index_sequence<I...>, P... a) {
  if constexpr (is_complex<typename D::Result>)
    verbose::format_record(buf, D::format, result, rec<D::roles[I]>(a)...);
  else
    verbose::format_record(buf, D::format, rec<D::roles[I]>(a)...);
}

// What the back-end gets in place of the caller's argument K: the address of the widened
// local for an integer on LP64 (`w` set), the index copy for the index array on LP64
// (`idx` set), and otherwise the caller's own pointer.
template <class D, size_t K>
inline void* word_of(void* a, int64_t* w, int64_t* idx) {
  if constexpr (D::roles[K] == 'i')
    return w ? static_cast<void*>(&w[K]) : a;
  else if constexpr (D::roles[K] == 'x')
    return idx ? static_cast<void*>(idx) : a;
  else
    return a;
}

// LP64: each integer argument is loaded sign-extended into its 64-bit local.
template <class D, size_t... K, class... P>
inline void widen(int64_t* w, std::index_sequence<K...>, P... a) {
  ((D::roles[K] == 'i' ? void(w[K] = *static_cast<const int32_t*>(a)) : void()), ...);
}

// The sparse level-1 index copy on LP64: 8 bytes per index (at least one), aligned to
// 128, each index sign-extended. Null when the allocation failed and was reported.
template <class D>
QNL_COLD int64_t* copy_indices(int64_t nz, const void* indices) {
  auto* copy = static_cast<int64_t*>(qnl_body_qnl_serv_iface_allocate(8 * static_cast<uint64_t>(nz > 1 ? nz : 1), 128));
  if (copy == nullptr) {
    qnl::report(D::name, D::name_len, int32_t{kReportNoWorkMemory});  // under the routine's bare name
    return nullptr;
  }
  const auto* src = static_cast<const int32_t*>(indices);
  for (int64_t i = 0; i < nz; ++i) copy[i] = src[i];
  return copy;
}

// The back-end call: a complex result lands in `result`; the batch tells its back-end how
// wide the integers of its arrays are (1 for 32 bits, on LP64); the index copy, if any,
// is released once the back-end has returned.
template <class D, size_t... K, class F, class... P>
inline auto invoke(std::index_sequence<K...>, F* f, void* result, int layer, int64_t* w, int64_t* idx, P... a) {
  using B = BackendOf<D, sizeof...(P)>;
  using R = typename D::Result;
  const int32_t layer_word = layer == 0 ? 1 : 0;
  if constexpr (std::is_void_v<R> || is_complex<R>) {
    B::call(f, result, layer_word, word_of<D, K>(a, w, idx)...);
    if (idx) qnl_body_qnl_serv_iface_deallocate(idx);
  } else {
    R r = B::call(f, result, layer_word, word_of<D, K>(a, w, idx)...);
    if (idx) qnl_body_qnl_serv_iface_deallocate(idx);
    return r;
  }
}

// The road of a call entered with a verbose mode other than 0, out of line.
template <class D, class F, class... P>
QNL_COLD typename D::Result traced(int32_t m, F* f, int layer, int64_t* w, int64_t* idx, P... a) {
  using R = typename D::Result;
  constexpr size_t N = sizeof...(P);
  if constexpr (is_complex<R>) {
    R result{};
    auto call = [&] { invoke<D>(std::make_index_sequence<N>{}, f, &result, layer, w, idx, a...); };
    verbose::traced(D::site, m, call, [&](char* buf) { record<D>(buf, &result, std::make_index_sequence<N>{}, a...); });
    return result;
  } else {
    auto call = [&] { return invoke<D>(std::make_index_sequence<N>{}, f, nullptr, layer, w, idx, a...); };
    return verbose::traced(D::site, m, call,
                           [&](char* buf) { record<D>(buf, nullptr, std::make_index_sequence<N>{}, a...); });
  }
}

// A call that the checker turned down: no binding and no back-end, but the record.
template <class D, class... P>
QNL_COLD typename D::Result refuse(int32_t m, P... a) {
  using R = typename D::Result;
  constexpr size_t N = sizeof...(P);
  if constexpr (is_complex<R>) {
    R result{};
    verbose::rejected<void>(D::site, m,
                            [&](char* buf) { record<D>(buf, &result, std::make_index_sequence<N>{}, a...); });
    return result;
  } else {
    return verbose::rejected<R>(D::site, m,
                                [&](char* buf) { record<D>(buf, nullptr, std::make_index_sequence<N>{}, a...); });
  }
}

// Binds and calls; the quiet road stays inline, the traced one goes out of line.
template <class D, class... P>
inline typename D::Result forward(int32_t m, int layer, int64_t* w, int64_t* idx, P... a) {
  using R = typename D::Result;
  constexpr size_t N = sizeof...(P);
  auto* f = family<typename BackendOf<D, N>::type>(D::slot, D::symbol);
  if (__builtin_expect(m != 0, 0)) return traced<D>(m, f, layer, w, idx, a...);
  if constexpr (is_complex<R>) {
    R result;
    invoke<D>(std::make_index_sequence<N>{}, f, &result, layer, w, idx, a...);
    return result;
  } else {
    return invoke<D>(std::make_index_sequence<N>{}, f, nullptr, layer, w, idx, a...);
  }
}

template <size_t K, class... P>
inline void* nth(P... a) {
  void* all[] = {a...};
  return all[K];
}

// Where the quiet road of an unchecked register-only entry goes once the mode test has
// passed (QNL_PLAIN_ROAD): its LP64 widening or its ILP64 jump, chosen once the layer is
// settled, so that the quiet road needs no layer test. Null until then.
template <class D>
struct PlainTarget {
  static inline std::atomic<void*> at{nullptr};
};
template <class D>
constexpr bool has_plain_road(size_t n) {
  return n <= 6 && count_of<D::roles>('i') > 0 && count_of<D::roles>('c') == 0 && count_of<D::roles>('x') == 0 &&
         !is_complex<typename D::Result> && !D::checked && !D::batch;
}
template <class D, size_t N>
struct PlainRoadFns {
  __attribute__((naked)) static void lp64();
  __attribute__((naked)) static void ilp64();
};

// The entry at a settled layer: verbose read, checker of that width, widening on LP64 (with
// the index copy of the sparse routines), binding, the call inside the verbose frame.
template <class D, class... P>
inline typename D::Result frame_at(int layer, P... a) {
  using R = typename D::Result;
  constexpr size_t N = sizeof...(P);
  // A mode of 0 read through the site's cell sends the plain road to its target: the
  // target is stored ahead of the cell, which only the traced call below stores.
  if constexpr (has_plain_road<D>(N))
    if (__builtin_expect(PlainTarget<D>::at.load(std::memory_order_relaxed) == nullptr, 0))
      PlainTarget<D>::at.store(
          reinterpret_cast<void*>(qnl::layer() == 0 ? &PlainRoadFns<D, N>::lp64 : &PlainRoadFns<D, N>::ilp64),
          std::memory_order_seq_cst);
  const int32_t m = D::site.mode();
  // The checker's letter compares go straight through the service's slot (checks.h, same):
  // bound here, ahead of the compare that would bind it through its own entry.
  if constexpr (D::checked && count_of<D::roles>('c') > 0)
    if (__builtin_expect(lsame_slot.get() == nullptr, 0)) bind_thin(lsame_slot, "qnl_serv_lsame");
  if (layer != 0) {
    if constexpr (D::checked)
      if (__builtin_expect(D::template check<int64_t>(a...) != 0, 0)) return refuse<D>(m, a...);
    return forward<D>(m, layer, nullptr, nullptr, a...);
  }
  if constexpr (D::checked)
    if (__builtin_expect(D::template check<int32_t>(a...) != 0, 0)) return refuse<D>(m, a...);
  int64_t w[N];
  widen<D>(w, std::make_index_sequence<N>{}, a...);
  int64_t* idx = nullptr;
  if constexpr (D::index_arg >= 0) {
    idx = copy_indices<D>(w[0], nth<D::index_arg>(a...));
    if (!idx) return R{};
  }
  return forward<D>(m, layer, w, idx, a...);
}

// The entry: the layer gate, then the frame at that layer.
template <class D, class... P>
inline typename D::Result frame(P... a) {
  return frame_at<D>(qnl::layer(), a...);
}

template <class D, class... P>
QNL_COLD typename D::Result frame_cold(P... a) {
  return frame<D>(a...);
}

// The bound address for the quiet road. An entry without a checker fetches its verbose
// cell only on a traced call, and that call binds the slot before the cell is stored, so a
// mode of 0 read through the cell means the slot is bound (or the process went down on a
// call through an empty one): the test is left out. An entry with a checker can store its
// cell on a rejected call that binds nothing, so it tests the slot.
template <class D, class F>
inline F* quiet_slot() {
  return reinterpret_cast<F*>(D::slot.get());
}

// The checker of the active width, inlined (QNL_CHECKER) with all it calls but the letter
// compare and the report: called, it would save and restore the registers the entry keeps
// anyway, and take its arguments a second time.
template <class D, class I, class... P>
__attribute__((always_inline)) inline bool rejects(P... a) {
  return D::template check<I>(a...) != 0;
}

// The two tests of the quiet road, each a compare with the value where it lies. A plain
// load and test would cost one instruction more each, and these tests are most of what a
// bound call of a short routine pays.
inline bool mode_is_zero(const verbose::Site& site) {
  const int32_t* cell = site.cell.load(std::memory_order_acquire);
  asm goto("cmpl $0, %0\n\tjne %l[other]" : : "m"(*cell) : "cc" : other);
  return true;
other:
  return false;
}
inline bool layer_is_lp64() {
  asm goto("cmpl $0, %0\n\tjne %l[other]" : : "m"(g_state.interface_layer) : "cc" : other);
  return true;
other:
  return false;
}

template <class D, size_t... K, class F, class... P>
inline typename D::Result quiet_call(std::index_sequence<K...> seq, F* f, int layer, int64_t* w, P... a) {
  using R = typename D::Result;
  if constexpr (is_complex<R>) {
    R result;
    invoke<D>(seq, f, &result, layer, w, nullptr, a...);
    return result;
  } else {
    return invoke<D>(seq, f, nullptr, layer, w, nullptr, a...);
  }
}

// The common case up front: verbose off, slot bound. The road is the frame's own with
// every test already answered, and nothing of it is kept across a call, so the back-end
// is reached by a jump where the arguments allow. The mode is tested first: a cell is
// stored only by a call that settled the interface layer before it, so a mode of 0 read
// through the cell means the layer is settled, and the one remaining test chooses the
// width (any value but 0 is ILP64, as in the frame). Anything else, and the sparse
// routines with their scratch copy, take the whole frame out of line.
template <class D, class... P>
inline typename D::Result enter(P... a) {
  constexpr size_t N = sizeof...(P);
  using F = typename BackendOf<D, N>::type;
  if constexpr (D::index_arg >= 0) {
    return frame<D>(a...);
  } else {
    // Acquire: the slot and the layer are read after the cell, never ahead of it.
    // Neither value is kept: each is compared where it lies, and each road loads the slot
    // for itself, so the ILP64 road of an unchecked entry is three tests and a jump.
    if (__builtin_expect(mode_is_zero(D::site), 1)) {
      if (!D::checked || __builtin_expect(quiet_slot<D, F>() != nullptr, 1)) {
        if (!layer_is_lp64()) {
          if constexpr (D::checked)
            if (__builtin_expect(rejects<D, int64_t>(a...), 0)) return refuse<D>(0, a...);
          return quiet_call<D>(std::make_index_sequence<N>{}, quiet_slot<D, F>(), 1, nullptr, a...);
        }
        if constexpr (D::checked)
          if (__builtin_expect(rejects<D, int32_t>(a...), 0)) return refuse<D>(0, a...);
        int64_t w[N];
        widen<D>(w, std::make_index_sequence<N>{}, a...);
        return quiet_call<D>(std::make_index_sequence<N>{}, quiet_slot<D, F>(), 0, w, a...);
      }
    }
    return frame_cold<D>(a...);
  }
}

// The entry as the library's own C layer calls it once its own checks have passed: every
// integer is a 64-bit local of the caller, whatever the layer, and every test the entry's
// checker makes is implied by the C layer's, so the quiet road is the ILP64 one without the
// checker: two tests and the back-end call. Verbose on or the slot not yet bound, the whole
// frame runs at 64-bit width, checker included, so records and binding are the entry's own.
template <class D, class... P>
QNL_COLD typename D::Result frame_wide_cold(P... a) {
  return frame_at<D>(1, a...);
}

template <class D, class... P>
inline typename D::Result enter_wide(P... a) {
  static_assert(D::index_arg < 0 && !D::batch, "the index copy and the batch's layer word depend on the layer");
  constexpr size_t N = sizeof...(P);
  using F = typename BackendOf<D, N>::type;
  // A cell is stored only by a call that settled the layer; an unchecked entry's cell only
  // by a call that bound its slot (see quiet_slot).
  if (__builtin_expect(mode_is_zero(D::site), 1))
    if (!D::checked || __builtin_expect(quiet_slot<D, F>() != nullptr, 1))
      return quiet_call<D>(std::make_index_sequence<N>{}, quiet_slot<D, F>(), 1, nullptr, a...);
  return frame_wide_cold<D>(a...);
}

// The stack layout of a checked road of its own (QNL_CHECKED_ROAD), for a routine whose
// back-end call needs stack arguments (more than six words with the hidden lengths) and
// has no complex result: the hidden lengths (in a register where one is free, else
// pushed) and the caller's stack arguments, pushed straight from its frame, make the
// back-end's list. `pad` keeps the call 16-byte aligned.
template <class D, class Seq>
struct WideRoad;
template <class D, size_t... I>
struct WideRoad<D, std::index_sequence<I...>> {
  static constexpr size_t n = sizeof...(I);
  static constexpr size_t lens = count_of<D::roles>('c');
  static constexpr size_t in_stack = n > 6 ? n - 6 : 0;
  static constexpr size_t stack_lens = n + lens <= 6 ? 0 : n >= 6 ? lens : n + lens - 6;
  static constexpr size_t pad = (in_stack + stack_lens) % 2 == 0 ? 1 : 0;
  static constexpr size_t pushed = 8 * (pad + stack_lens);
  static constexpr size_t drop = 8 * (pad + stack_lens + in_stack);
  static constexpr auto cold = &frame_wide_cold<D, Arg<I>...>;
  static_assert(!is_complex<typename D::Result> && n + lens > 6, "the compiled road serves this routine");
};

// The back-end call of a road of its own, once every test has passed: hidden lengths, the
// caller's stack arguments pushed straight from its frame, the call and the return.
#define QNL_ROAD_CALL                                        \
  ".if %c[n] <= 2\n\tmovl $1, %%edx\n\t.endif\n\t"           \
  ".if %c[n] <= 3\n\tmovl $1, %%ecx\n\t.endif\n\t"           \
  ".if %c[n] <= 4\n\tmovl $1, %%r8d\n\t.endif\n\t"           \
  ".if %c[n] <= 5\n\tmovl $1, %%r9d\n\t.endif\n\t"           \
  ".if %c[pad]\n\tsubq $8, %%rsp\n\t.endif\n\t"              \
  ".rept %c[stack_lens]\n\tpushq $1\n\t.endr\n\t"            \
  ".rept %c[in_stack]\n\tpushq %c[from](%%rsp)\n\t.endr\n\t" \
  "call *%c[slot](%%rip)\n\t"                                \
  "addq $%c[drop], %%rsp\n\t"                                \
  "ret"
#define QNL_ROAD_OPERANDS(D, Road)                                                                                    \
  [cell] "i"(&D::site.cell), [slot] "i"(&D::slot.fn), [cold] "i"(Road::cold), [n] "i"(Road::n), [pad] "i"(Road::pad), \
      [stack_lens] "i"(Road::stack_lens), [in_stack] "i"(Road::in_stack),                                             \
      [from] "i"(8 * Road::in_stack + Road::pushed), [drop] "i"(Road::drop)

// The body of a naked qnl_wide_<routine>, for the routines with stack arguments at the
// back-end: its caller, the library's C layer, passes the hidden lengths itself, so its
// list is the back-end's and the quiet road is two tests (three with a checker, whose
// entry can store its cell without binding: see quiet_slot) and a jump. Anything else
// goes to the whole frame at 64-bit width, which reads the arguments ahead of the lengths.
#define QNL_WIDE_ROAD(D, N)                                                      \
  using Road = qnl::blas::WideRoad<D, std::make_index_sequence<N>>;              \
  asm volatile(                                                                  \
      "movq %c[cell](%%rip), %%rax\n\t"                                          \
      "cmpl $0, (%%rax)\n\t"                                                     \
      "jne %c[cold]\n\t"                                                         \
      ".if %c[checked]\n\tcmpq $0, %c[slot](%%rip)\n\tje %c[cold]\n\t.endif\n\t" \
      "jmp *%c[slot](%%rip)"                                                     \
      :                                                                          \
      : [cell] "i"(&D::site.cell), [slot] "i"(&D::slot.fn), [cold] "i"(Road::cold), [checked] "i"(D::checked ? 1 : 0))

// A checked entry's own road, for the routines the wide road serves: verbose off and the
// slot bound, an LP64 call goes on to the compiled LP64 road (CheckedRoad::lp64); on ILP64
// the argument registers are kept on the stack around the checker, which reads them and the
// caller's stack arguments from there (CheckedRoad::check), and a rejected call goes to the
// entry's rejected road with every argument as it came. Anything else: the whole frame.
// Every argument is an address, so no vector register needs keeping across the checker.
template <class D, class Seq>
struct CheckedRoad;

// An argument of the checked road, read from the saved block where the checker uses it:
// read ahead of the letter compares, each would live across those calls in a register
// that the checker saves and restores.
struct Late {
  void* const* block;
  size_t k;
  operator void*() const { return block[k]; }
};

template <class D, size_t... I>
struct CheckedRoad<D, std::index_sequence<I...>> {
  using R = typename D::Result;
  // Above the six saved registers lie the pad and the return address.
  static int64_t check(void* const* block) { return D::template check<int64_t>(Late{block, I < 6 ? I : I + 2}...); }
  static R lp64(Arg<I>... a);
  QNL_COLD static R refused(Arg<I>... a) { return refuse<D>(0, a...); }
  static constexpr auto full = &frame_cold<D, Arg<I>...>;
};

// The entry's LP64 quiet road, every test but the checker's already made.
template <class D, size_t... I>
typename D::Result CheckedRoad<D, std::index_sequence<I...>>::lp64(Arg<I>... a) {
  if (__builtin_expect(rejects<D, int32_t>(a...), 0)) return refuse<D>(0, a...);
  int64_t w[sizeof...(I)];
  widen<D>(w, std::index_sequence<I...>{}, a...);
  return quiet_call<D>(std::index_sequence<I...>{}, quiet_slot<D, typename BackendOf<D, sizeof...(I)>::type>(), 0, w,
                       a...);
}

// The entry tests of a checked entry's own road: verbose off and the slot bound, or the
// whole frame (`full`); then an LP64 call goes to `lp64` and an ILP64 one falls through.
#define QNL_ROAD_TESTS(lp64)        \
  "movq %c[cell](%%rip), %%rax\n\t" \
  "cmpl $0, (%%rax)\n\t"            \
  "jne %c[full]\n\t"                \
  "cmpq $0, %c[slot](%%rip)\n\t"    \
  "je %c[full]\n\t"                 \
  "cmpl $0, %c[layer](%%rip)\n\t"   \
  "je " lp64 "\n\t"

#define QNL_CHECKED_ROAD(D, N)                                            \
  using Road = qnl::blas::WideRoad<D, std::make_index_sequence<N>>;       \
  using Checked = qnl::blas::CheckedRoad<D, std::make_index_sequence<N>>; \
  asm volatile(                                                                                            \
      QNL_ROAD_TESTS("%c[lp64]")                                                                           \
      "subq $8, %%rsp\n\t"                                                                                 \
      "pushq %%r9\n\tpushq %%r8\n\tpushq %%rcx\n\tpushq %%rdx\n\tpushq %%rsi\n\tpushq %%rdi\n\t"           \
      "movq %%rsp, %%rdi\n\t"                                                                              \
      "call %c[check]\n\t"                                                                                 \
      "testq %%rax, %%rax\n\t"                                                                             \
      "popq %%rdi\n\tpopq %%rsi\n\tpopq %%rdx\n\tpopq %%rcx\n\tpopq %%r8\n\tpopq %%r9\n\t"                 \
      "leaq 8(%%rsp), %%rsp\n\t"                                                                           \
      "jne %c[refused]\n\t" QNL_ROAD_CALL                                                                  \
      :                                                                                                    \
      : QNL_ROAD_OPERANDS(D, Road), [full] "i"(Checked::full), [layer] "i"(&qnl_rt_state.interface_layer), \
        [lp64] "i"(&Checked::lp64), [check] "i"(&Checked::check), [refused] "i"(&Checked::refused))

// The checked road of the gemm shape (QNL_GEMM_ROAD): the checker's two letter compares,
// then its size tests for "N", "N", each read where it lies, with no call of a compiled
// checker in between: only the argument registers are kept across the compares, and
// nothing else. The compares come first, so a size read can never fault ahead of them;
// anything but "N", "N" with passing sizes resumes the checker out of line after the
// compares already made (GemmRoad::resume), which reports as the checker does and lets the
// call through or turns it down. On ILP64 the back-end gets the caller's pointers; on LP64
// the road widens the six integers into words of its own block as it tests them.
inline constexpr char kLetterN[] = "N";

template <class D>
struct GemmRoad {
  // The saved block: the six argument registers, `Skip` words (the LP64 road's widened
  // integers and the pad, then the return address), then the caller's stack arguments.
  template <size_t Skip>
  static void* arg(void* const* block, size_t k) {
    return block[k < 6 ? k : k + Skip];
  }
  // `wa` and `wb` are the words of the compares made; `compare_b` asks for the second one.
  template <class I, size_t Skip>
  QNL_COLD static I resume(void* const* b, I wa, I wb, I compare_b) {
    if (compare_b) wb = check::same_word<I>(arg<Skip>(b, 1), "N");
    return check::gemm_options<I, D>(wa, wb, arg<Skip>(b, 0), arg<Skip>(b, 1), *static_cast<const I*>(arg<Skip>(b, 2)),
                                     *static_cast<const I*>(arg<Skip>(b, 3)), *static_cast<const I*>(arg<Skip>(b, 4)),
                                     arg<Skip>(b, 7), arg<Skip>(b, 9), arg<Skip>(b, 12));
  }
};

// An LP64 call that the checker let through out of line: widened and sent on, no test left.
template <class D, class Seq>
struct GemmAccepted;
template <class D, size_t... I>
struct GemmAccepted<D, std::index_sequence<I...>> {
  QNL_COLD static typename D::Result call(Arg<I>... a) {
    int64_t w[sizeof...(I)];
    widen<D>(w, std::index_sequence<I...>{}, a...);
    return quiet_call<D>(std::index_sequence<I...>{}, quiet_slot<D, typename BackendOf<D, sizeof...(I)>::type>(), 0, w,
                         a...);
  }
};

// One letter compare of the gemm road against "N": the option's address from `from`, the
// result tested at the width's `test` (all 64 bits on ILP64, the low 32 on LP64).
#define QNL_GEMM_SAME_N(from, test)                                              \
  from "leaq %c[letter_n](%%rip), %%rsi\n\tmovl $1, %%edx\n\tmovl $1, %%ecx\n\t" \
       "call *%c[lsame](%%rip)\n\t" test "\n\t"
// The two compares, the first failing to 2, the second to 3.
#define QNL_GEMM_COMPARES(test) \
  QNL_GEMM_SAME_N("", test) "je 2f\n\t" QNL_GEMM_SAME_N("movq 8(%%rsp), %%rdi\n\t", test) "je 3f\n\t"
// m, n, k in rax, rcx, rdx: any negative fails to 4; then max(1, m) in rax, max(1, k) in rdx.
#define QNL_GEMM_SIGNS                                \
  "orq %%rax, %%rcx\n\torq %%rdx, %%rcx\n\tjs 4f\n\t" \
  "cmpq $1, %%rax\n\tadcq $0, %%rax\n\t"              \
  "cmpq $1, %%rdx\n\tadcq $0, %%rdx\n\t"
#define QNL_GEMM_SAVE "pushq %%r9\n\tpushq %%r8\n\tpushq %%rcx\n\tpushq %%rdx\n\tpushq %%rsi\n\tpushq %%rdi\n\t"
#define QNL_GEMM_RESTORE "popq %%rdi\n\tpopq %%rsi\n\tpopq %%rdx\n\tpopq %%rcx\n\tpopq %%r8\n\tpopq %%r9\n\t"
// The words handed to resume when the first compare failed, the second, or a size test.
#define QNL_GEMM_FAILS(at)                                                    \
  "2:\n\txorl %%esi, %%esi\n\txorl %%edx, %%edx\n\tmovl $1, %%ecx\n\tjmp " at \
  "\n"                                                                        \
  "3:\n\tmovl $1, %%esi\n\txorl %%edx, %%edx\n\txorl %%ecx, %%ecx\n\tjmp " at \
  "\n"                                                                        \
  "4:\n\tmovl $1, %%esi\n\tmovl $1, %%edx\n\txorl %%ecx, %%ecx\n"

// ILP64 block offsets: m, n, k saved at 16, 24, 32; lda, ldb, ldc (arguments 7, 9, 12) at
// 8 * (k + 2). A size of at least 0 has max(1, size) = size + (size < 1).
// LP64 block (from label 6): the registers at 0 to 40, the widened m, n, k, lda, ldb, ldc
// at 48 to 88, the pad at 96 (aligns the compares), the return address at 104 and the
// caller's stack arguments from 112 (a, lda, b, ldb, beta, c, ldc). Each value is
// sign-extended from 32 bits, stored as the back-end's word, then tested at 64 bits, which
// answers as the 32-bit tests do. The back-end's list is then pushed onto the block:
// each push moves the caller's next stack argument to the same offset, 184.
#define QNL_GEMM_ROAD(D)                                                     \
  using Road = qnl::blas::WideRoad<D, std::make_index_sequence<13>>;         \
  using Checked = qnl::blas::CheckedRoad<D, std::make_index_sequence<13>>;   \
  using Accepted = qnl::blas::GemmAccepted<D, std::make_index_sequence<13>>; \
  asm volatile(                                                                                               \
      QNL_ROAD_TESTS("6f")                                                                                    \
      "subq $8, %%rsp\n\t" QNL_GEMM_SAVE                                                                      \
      QNL_GEMM_COMPARES("testq %%rax, %%rax")                                        \
      "movq 16(%%rsp), %%rax\n\tmovq (%%rax), %%rax\n\t"                                                      \
      "movq 24(%%rsp), %%rcx\n\tmovq (%%rcx), %%rcx\n\t"                                                      \
      "movq 32(%%rsp), %%rdx\n\tmovq (%%rdx), %%rdx\n\t"                                                      \
      QNL_GEMM_SIGNS                                                  \
      "movq 72(%%rsp), %%rcx\n\tcmpq (%%rcx), %%rax\n\tjg 4f\n\t"                                             \
      "movq 88(%%rsp), %%rcx\n\tcmpq (%%rcx), %%rdx\n\tjg 4f\n\t"                                             \
      "movq 112(%%rsp), %%rcx\n\tcmpq (%%rcx), %%rax\n\tjg 4f\n"                                              \
      "5:\n\t" QNL_GEMM_RESTORE "addq $8, %%rsp\n\t" QNL_ROAD_CALL "\n"                                       \
      QNL_GEMM_FAILS("7f")                                                                                    \
      "7:\n\tmovq %%rsp, %%rdi\n\tcall %c[resume]\n\t"                                                        \
      "testq %%rax, %%rax\n\t"                                                                                \
      "je 5b\n\t" QNL_GEMM_RESTORE "addq $8, %%rsp\n\t"                                                       \
      "jmp %c[refused]\n"                                                                                     \
      "6:\n\t"                                                                                                \
      "subq $56, %%rsp\n\t" QNL_GEMM_SAVE                                                                     \
      QNL_GEMM_COMPARES("testl %%eax, %%eax")                                        \
      "movq 16(%%rsp), %%rax\n\tmovslq (%%rax), %%rax\n\tmovq %%rax, 48(%%rsp)\n\t"                           \
      "movq 24(%%rsp), %%rcx\n\tmovslq (%%rcx), %%rcx\n\tmovq %%rcx, 56(%%rsp)\n\t"                           \
      "movq 32(%%rsp), %%rdx\n\tmovslq (%%rdx), %%rdx\n\tmovq %%rdx, 64(%%rsp)\n\t"                           \
      QNL_GEMM_SIGNS                                                  \
      "movq 120(%%rsp), %%rcx\n\tmovslq (%%rcx), %%rcx\n\tmovq %%rcx, 72(%%rsp)\n\tcmpq %%rcx, %%rax\n\tjg 4f\n\t" \
      "movq 136(%%rsp), %%rcx\n\tmovslq (%%rcx), %%rcx\n\tmovq %%rcx, 80(%%rsp)\n\tcmpq %%rcx, %%rdx\n\tjg 4f\n\t" \
      "movq 160(%%rsp), %%rcx\n\tmovslq (%%rcx), %%rcx\n\tmovq %%rcx, 88(%%rsp)\n\tcmpq %%rcx, %%rax\n\tjg 4f\n\t" \
      "subq $8, %%rsp\n\tpushq $1\n\tpushq $1\n\t"                                                            \
      "leaq 112(%%rsp), %%rax\n\tpushq %%rax\n\tpushq 184(%%rsp)\n\tpushq 184(%%rsp)\n\t"                     \
      "leaq 128(%%rsp), %%rax\n\tpushq %%rax\n\tpushq 184(%%rsp)\n\t"                                         \
      "leaq 136(%%rsp), %%rax\n\tpushq %%rax\n\tpushq 184(%%rsp)\n\t"                                         \
      "movq 80(%%rsp), %%rdi\n\tmovq 88(%%rsp), %%rsi\n\tmovq 120(%%rsp), %%r9\n\t"                           \
      "leaq 128(%%rsp), %%rdx\n\tleaq 136(%%rsp), %%rcx\n\tleaq 144(%%rsp), %%r8\n\t"                         \
      "call *%c[slot](%%rip)\n\t"                                                                             \
      "addq $184, %%rsp\n\t"                                                                                  \
      "ret\n"                                                                                                 \
      QNL_GEMM_FAILS("8f")                                                                                    \
      "8:\n\tmovq %%rsp, %%rdi\n\tcall %c[resume32]\n\t"                                                      \
      "testl %%eax, %%eax\n\t" QNL_GEMM_RESTORE "leaq 56(%%rsp), %%rsp\n\t"                                   \
      "je %c[accepted]\n\t"                                                                                   \
      "jmp %c[refused]"                                                                                       \
      :                                                                                                       \
      : QNL_ROAD_OPERANDS(D, Road), [full] "i"(Checked::full), [layer] "i"(&qnl_rt_state.interface_layer),    \
        [refused] "i"(&Checked::refused), [lsame] "i"(&qnl::lsame_slot.fn),                                   \
        [letter_n] "i"(qnl::blas::kLetterN),                                                                  \
        [resume] "i"(&qnl::blas::GemmRoad<D>::template resume<int64_t, 2>),                                   \
        [resume32] "i"(&qnl::blas::GemmRoad<D>::template resume<int32_t, 8>), [accepted] "i"(&Accepted::call))

// The road of an unchecked entry whose arguments all come in registers, none of them a
// character, an index array or a complex result's address (QNL_PLAIN_ROAD). Verbose off,
// the entry jumps to the target its first call settled (PlainTarget): on ILP64 a jump to
// the back-end; on LP64 a road that pushes each integer sign-extended and hands the
// back-end the address where it lies, which is the fewest instructions a 64-bit copy with
// an address takes. Anything else goes to the whole frame with every argument as it came.
// `pad` keeps the call 16-byte aligned.
template <class D, class Seq>
struct PlainRoad;
template <class D, size_t... I>
struct PlainRoad<D, std::index_sequence<I...>> {
  static constexpr size_t n = sizeof...(I);
  static constexpr bool is_int(size_t k) { return k < n && D::roles[k] == 'i'; }
  static constexpr size_t ints = count_of<D::roles>('i');
  static constexpr size_t pad = ints % 2 == 0 ? 1 : 0;
  static constexpr size_t drop = 8 * (ints + pad);
  static constexpr auto cold = &frame_cold<D, Arg<I>...>;
  static_assert(has_plain_road<D>(n), "the plain road serves this routine");
};

// One LP64 integer in argument register `reg`: its sign-extended copy pushed, the register
// pointing at the copy.
#define QNL_PLAIN_WIDEN(k, reg) \
  ".if %c[w" #k "]\n\tmovslq (%%" reg "), %%rax\n\tpushq %%rax\n\tmovq %%rsp, %%" reg "\n\t.endif\n\t"

template <class D, size_t N>
void PlainRoadFns<D, N>::lp64() {
  using Road = PlainRoad<D, std::make_index_sequence<N>>;
  asm volatile(QNL_PLAIN_WIDEN(0, "rdi") QNL_PLAIN_WIDEN(1, "rsi") QNL_PLAIN_WIDEN(2, "rdx")
                   QNL_PLAIN_WIDEN(3, "rcx") QNL_PLAIN_WIDEN(4, "r8") QNL_PLAIN_WIDEN(5, "r9")
               ".if %c[pad]\n\tsubq $8, %%rsp\n\t.endif\n\t"
               "call *%c[slot](%%rip)\n\t"
               "addq $%c[drop], %%rsp\n\t"
               "ret"
               :
               : [slot] "i"(&D::slot.fn), [pad] "i"(Road::pad), [drop] "i"(Road::drop), [w0] "i"(Road::is_int(0)),
                 [w1] "i"(Road::is_int(1)), [w2] "i"(Road::is_int(2)), [w3] "i"(Road::is_int(3)),
                 [w4] "i"(Road::is_int(4)), [w5] "i"(Road::is_int(5)));
}

template <class D, size_t N>
void PlainRoadFns<D, N>::ilp64() {
  asm volatile("jmp *%c[slot](%%rip)" : : [slot] "i"(&D::slot.fn));
}

#define QNL_PLAIN_ROAD(D, N)                                         \
  using Road = qnl::blas::PlainRoad<D, std::make_index_sequence<N>>; \
  asm volatile(                                                      \
      "movq %c[cell](%%rip), %%rax\n\t"                              \
      "cmpl $0, (%%rax)\n\t"                                         \
      "jne %c[cold]\n\t"                                             \
      "jmp *%c[target](%%rip)"                                       \
      :                                                              \
      : [cell] "i"(&D::site.cell), [cold] "i"(Road::cold), [target] "i"(&qnl::blas::PlainTarget<D>::at))

// A _direct entry: no checker and no record. It binds both its slots, then takes the direct
// symbol when the flag byte's bit 0 is set or the sizes are small.
template <class D, size_t... K, class... P>
inline typename D::Result direct_body(std::index_sequence<K...> seq, void* flag, P... a) {
  constexpr size_t N = sizeof...(P);
  using F = typename BackendOf<D, N>::type;
  const int layer = qnl::layer();
  int64_t w[N];
  int64_t* wp = nullptr;
  if (layer == 0) {
    widen<D>(w, seq, a...);
    wp = w;
  }
  F* plain = family<F>(D::plain_slot, D::symbol);
  // Both symbols are bound on the first call, even if only one is ever taken.
  F* fast = family<F>(D::direct_slot, D::direct_symbol);
  bool take = flag && (*static_cast<const unsigned char*>(flag) & 1) != 0;
  // Sizes are read from the caller's own variables at the caller's width.
  void* const all[] = {a...};
  if (!take) take = interface_layer() == 0 ? D::template small<int32_t>(all) : D::template small<int64_t>(all);
  if (take) {
    // Sticky on purpose: once a call went direct, the plain slot holds the direct symbol
    // and every later call of this entry goes there whatever its sizes.
    D::plain_slot.fn.store(reinterpret_cast<void*>(fast), std::memory_order_relaxed);
    return invoke<D>(seq, fast, nullptr, layer, wp, nullptr, a...);
  }
  return invoke<D>(seq, plain, nullptr, layer, wp, nullptr, a...);
}

// The flag pointer comes last in the caller's list; it is not passed on.
template <class D, size_t... K, class... P>
inline typename D::Result direct_split(std::index_sequence<K...> seq, P... a) {
  void* const all[] = {a...};
  return direct_body<D>(seq, all[sizeof...(P) - 1], all[K]...);
}

template <class D, class... P>
inline typename D::Result direct(P... a) {
  if constexpr (D::flag)
    return direct_split<D>(std::make_index_sequence<sizeof...(P) - 1>{}, a...);
  else
    return direct_body<D>(std::make_index_sequence<sizeof...(P)>{}, nullptr, a...);
}

}  // namespace qnl::blas
