// The one frame of the Fortran LAPACK entries, driven by each routine's record.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "lapack_frame.h"
#include "platform.h"
#include "report.h"
#include "services_gen.h"

namespace qnl::lapack {

namespace {

constexpr int64_t kHigh = INT64_MAX;
constexpr int64_t kLow = INT64_MIN;
// Marks a scratch element the back-end has not written: no 64-bit value a
// routine stores for a 32-bit caller can be it.
constexpr int64_t kUnwritten = INT64_MIN + 0x5A5A;
constexpr int64_t kMarked = int64_t{1} << 20;

// Lengths saturate rather than wrap: an absurd length must fail to allocate,
// never come out small.
int64_t sat(__int128 v) { return v > kHigh ? kHigh : v < kLow ? kLow : static_cast<int64_t>(v); }

int64_t evaluate(const int16_t* pc, const int64_t* v) {
  int64_t st[32];
  int sp = 0;
  for (;;) {
    switch (*pc++) {
      case kEnd:
        return sp ? st[sp - 1] : 0;
      case kArgValue:
        st[sp++] = v[*pc++];
        break;
      case kConst:
        st[sp++] = *pc++;
        break;
      case kAdd:
        --sp, st[sp - 1] = sat(static_cast<__int128>(st[sp - 1]) + st[sp]);
        break;
      case kSub:
        --sp, st[sp - 1] = sat(static_cast<__int128>(st[sp - 1]) - st[sp]);
        break;
      case kMul:
        --sp, st[sp - 1] = sat(static_cast<__int128>(st[sp - 1]) * st[sp]);
        break;
      case kDiv:
        // Fortran integer division truncates; a zero divisor gives 0 rather than a trap.
        --sp, st[sp - 1] = st[sp] == 0 ? 0 : sat(static_cast<__int128>(st[sp - 1]) / st[sp]);
        break;
      case kMax:
      case kMin: {
        bool is_max = pc[-1] == kMax;
        int n = *pc++;
        int64_t m = st[sp - n];
        for (int i = sp - n + 1; i < sp; ++i) m = is_max ? (st[i] > m ? st[i] : m) : (st[i] < m ? st[i] : m);
        sp -= n;
        st[sp++] = m;
        break;
      }
      case kAbs:
        st[sp - 1] = sat(st[sp - 1] < 0 ? -static_cast<__int128>(st[sp - 1]) : st[sp - 1]);
        break;
      case kLog2:
        st[sp - 1] = st[sp - 1] >= 1 ? 63 - __builtin_clzll(static_cast<uint64_t>(st[sp - 1])) : 0;
        break;
      default:
        return 0;
    }
  }
}

// Most lengths are one argument's value: that program is read without the interpreter.
inline int64_t length_of(const int16_t* pc, const int64_t* v) {
  return pc[0] == kArgValue && pc[2] == kEnd ? v[pc[1]] : evaluate(pc, v);
}

int32_t read32(const void* p) { return *static_cast<const int32_t*>(p); }

// Whether a conditionally referenced argument is referenced in this call.
// Letters compare with bit 5 cleared, so either case matches.
bool referenced(const Routine& r, const Arg& a, void* const* caller, const int64_t* v) {
  if (!a.cond) return true;
  for (const Cond* c = r.conds() + a.cond - 1;; ++c) {
    bool hit;
    if (c->op == kLetterIn || c->op == kLetterNotIn) {
      char ch = static_cast<char>(*static_cast<const char*>(caller[c->arg]) & ~0x20);
      hit = ch != 0 && std::strchr(kText + c->letters, ch) != nullptr;
      hit = c->op == kLetterIn ? hit : !hit;
    } else {
      hit = (v[c->arg] == c->value) == (c->op == kValueIs);
    }
    if (!hit) return false;
    if (!c->more) return true;
  }
}

// The LP64 side of a call: 64-bit locals and scratch arrays, and what they give back.
struct Marshal {
  void* q[kMaxArgs];
  int64_t local[kMaxArgs];
  int64_t length[kMaxArgs];  // allocation length of each array passed
  uint64_t arrays = 0;       // the integer arrays that went to the back-end (not null)
  uint64_t dead = 0;         // conditional output scalars this call does not reference
  int64_t* heap[kMaxArrays];
  int nheap = 0;
  int64_t frame[kMaxArrays][kFrameElements];
};

void release(Marshal& s) {
  for (int i = 0; i < s.nheap; ++i) qnl_body_qnl_serv_iface_deallocate(s.heap[i]);
  s.nheap = 0;
}

QNL_COLD void out_of_memory(const Routine& r, void* const* caller, Marshal& s) {
  release(s);
  report(r.name(), name_length(r.name()), int64_t{kReportNoWorkMemory});
  if (r.info >= 0) *static_cast<int32_t*>(caller[r.info]) = -1023;
}

// Sign-extends the caller's n elements into the scratch. A length beyond the
// frame is read only as far as the caller's memory goes: a call with a length
// that its own arguments reject (dgetrs with n = 2^20 and lda = 1) names more
// elements than the caller has, and stock LAPACK rejects it before reading.
void widen_array(int64_t* buf, const int32_t* src, int64_t n) {
  if (n <= kFrameElements) {
    for (int64_t i = 0; i < n; ++i) buf[i] = src[i];
    return;
  }
  // The 32-bit copy goes into the upper half of the scratch and is widened
  // from the front: element i is read before any store reaches it.
  auto* half = reinterpret_cast<int32_t*>(buf) + n;
  size_t bytes = static_cast<size_t>(n) * sizeof(int32_t);
  // What lies beyond the caller's memory stays unwritten: such a call is one
  // the back-end rejects before it reads the array.
  int64_t got = static_cast<int64_t>(plat::copy_readable(half, src, bytes) / sizeof(int32_t));
  for (int64_t i = 0; i < got; ++i) buf[i] = half[i];
  for (int64_t i = got; i < n && i < kMarked; ++i) buf[i] = kUnwritten;
}

// Widens the scalars and prepares the integer arrays. False when scratch could
// not be had; that has been reported.
bool widen(const Routine& r, void* const* p, Marshal& s) {
  static_assert(kMaxArgs <= 64, "argument sets are 64-bit");
  const Arg* args = r.args();
  const ArgSets& sets = r.sets();
  // Addresses pass as they came but for the integer scalars, which go as 64-bit locals.
  // Unconditional scalars first: conditions and lengths read them.
  for (int k = 0; k < r.nargs; ++k) s.q[k] = p[k];
  for (uint64_t m = sets.scalars; m; m &= m - 1) {
    int k = __builtin_ctzll(m);
    s.local[k] = (sets.reads >> k & 1) ? read32(p[k]) : 0;
    s.q[k] = &s.local[k];
  }
  for (uint64_t m = sets.conditional; m; m &= m - 1) {
    // Read only when referenced (il and iu only with range I); else the local stays 0.
    int k = __builtin_ctzll(m);
    if (!referenced(r, args[k], p, s.local))
      s.dead |= uint64_t{1} << k;
    else if (!(args[k].flags & kZeroStart))
      s.local[k] = read32(p[k]);
  }
  bool query = false;
  for (uint64_t m = sets.lengths; m; m &= m - 1) query |= s.local[__builtin_ctzll(m)] == -1;
  // A size query of a routine with a query-capable workspace asks on all its lengths.
  if (query && r.has_query_work)
    for (uint64_t m = sets.lengths; m; m &= m - 1) s.local[__builtin_ctzll(m)] = -1;
  int frames = 0;
  for (uint64_t m = sets.arrays; m; m &= m - 1) {
    int k = __builtin_ctzll(m);
    const Arg& a = args[k];
    // Arrays the options leave unreferenced go as null, and so on a size query
    // do all that the routine writes, but for the arrays that answer it (the
    // workspaces, and ?gesvdq's iwork, otherwise a permutation): a query writes
    // nothing but the size answers, as stock LAPACK does, and callers pass one
    // element for those arrays on a query. Arrays read only are still passed:
    // ?trsen counts its select flags to answer a query.
    bool answers = a.cls == kQueryWork || (a.flags & kAnswersQuery);
    bool skip = !referenced(r, a, p, s.local) || (query && !answers && a.cls != kPivIn);
    if (skip) {
      s.q[k] = nullptr;
      continue;
    }
    int64_t n = length_of(r.program() + a.length, s.local);
    int64_t* buf;
    if (n <= kFrameElements) {
      buf = s.frame[frames++];
    } else {
      uint64_t bytes = n > (kHigh >> 3) ? UINT64_MAX : static_cast<uint64_t>(n) * 8;
      buf = static_cast<int64_t*>(qnl_body_qnl_serv_iface_allocate(bytes, 128));
      if (!buf) {
        out_of_memory(r, p, s);
        return false;
      }
      s.heap[s.nheap++] = buf;
    }
    s.length[k] = n;
    s.arrays |= uint64_t{1} << k;
    s.q[k] = buf;
    if (a.cls == kPivIn || a.cls == kInOut) {
      widen_array(buf, static_cast<const int32_t*>(p[k]), n);
    } else if (a.cls == kPivOut || a.cls == kLogicalWork) {
      // The documented length is an upper bound: dsyevr writes isuppz only
      // when it computes all eigenvalues, and scipy passes an empty array
      // otherwise. Only what the routine wrote goes back. Marking stops at
      // kMarked elements, so that an absurd length of a rejected call costs
      // no more; no array that long is left partly unwritten by a valid call.
      for (int64_t i = 0; i < n && i < kMarked; ++i) buf[i] = kUnwritten;
    }
  }
  return true;
}

// Stores the outputs' low halves to the caller and frees the scratch.
void narrow(const Routine& r, void* const* p, Marshal& s) {
  const Arg* args = r.args();
  // A call the back-end rejected has written no array, and its lengths are
  // the rejected arguments: the caller's arrays are left alone, as stock
  // LAPACK leaves them, rather than copied back at the length they name.
  bool rejected = r.info >= 0 && static_cast<int32_t>(s.local[r.info]) < 0;
  for (uint64_t m = r.sets().outs | (rejected ? 0 : s.arrays); m; m &= m - 1) {
    int k = __builtin_ctzll(m);
    const Arg& a = args[k];
    if (a.cls == kOut) {
      // info is always written by the routine and always stored. Other
      // outputs are stored only when they changed: callers pass constants for
      // integers that the routine leaves alone (a literal LWORK of 1 in the
      // testers' error exits), and those live in read-only memory.
      if (!(s.dead >> k & 1)) {
        auto* dst = static_cast<int32_t*>(p[k]);
        if (k == r.info || *dst != static_cast<int32_t>(s.local[k])) *dst = static_cast<int32_t>(s.local[k]);
      }
      continue;
    }
    const int64_t* buf = static_cast<const int64_t*>(s.q[k]);
    int32_t* dst = static_cast<int32_t*>(p[k]);
    int64_t n = s.length[k];
    switch (a.cls) {
      case kQueryWork:
        // Element 0 is the size answer of a query and otherwise unused.
        dst[0] = static_cast<int32_t>(buf[0]);
        break;
      case kPivOut:
      case kInOut:
      case kLogicalWork:
        if (a.keep >= 0) {
          // Copied back as far as the routine says it wrote, never beyond the scratch.
          int64_t keep = length_of(r.program() + a.keep, s.local);
          n = keep < n ? keep : n;
        }
        for (int64_t i = 0; i < n; ++i)
          if (buf[i] != kUnwritten) dst[i] = static_cast<int32_t>(buf[i]);
        break;
      default:
        break;
    }
  }
  release(s);
}

// The trace line: the routine's format, values from the caller's own variables
// after the call. Integers read as 32 bits, a null integer address as 0.
void format_line(const Routine& r, void* const* p, char* buf) {
  constexpr int kText = verbose::kRecordSize - 1;
  int pos = 0;
  int k = 0;
  for (const char* f = r.format(); *f; ++f) {
    if (*f != '%') {
      if (pos < kText) buf[pos] = *f;
      ++pos;
      continue;
    }
    char piece[32];
    int n;
    switch (*++f) {
      case 'c':
        n = std::snprintf(piece, sizeof piece, "%c", verbose::rec_char(p[k]));
        break;
      case 'd':
        n = std::snprintf(piece, sizeof piece, "%d", verbose::rec_int(p[k]));
        break;
      default:
        n = std::snprintf(piece, sizeof piece, "%p", verbose::rec_ptr(p[k]));
        break;
    }
    ++k;
    for (int i = 0; i < n; ++i, ++pos)
      if (pos < kText) buf[pos] = piece[i];
  }
  buf[pos < kText ? pos : kText] = '\0';
  buf[kText] = '\0';
}

// The trace site's cell starts null (a record without addresses needs no
// relocation at load) and is pointed at kUnknownMode on the first call, before
// the slot is stored: a call that finds the slot bound finds the cell set.
void point_site(Entry& e) {
  const int32_t* unset = nullptr;
  e.site.cell.compare_exchange_strong(unset, &verbose::kUnknownMode, std::memory_order_release);
}

// The mode of an entry that may not have bound yet (a call its check rejected).
int32_t mode_before_binding(Entry& e) {
  point_site(e);
  return e.site.mode();
}

QNL_COLD void* bind_first(const Routine& r, Entry& e) {
  point_site(e);
  return bind_family(e.slot, r.symbol());
}

// Both symbols of a routed entry are bound together, under one lock.
QNL_COLD void bind_pair(const Routine& r, Entry& e) {
  point_site(e);
  qnl_rt_bind_lock();
  e.slot.fn.store(qnl_rt_resolve(r.symbol()), std::memory_order_relaxed);
  e.ao.fn.store(qnl_rt_resolve(r.ao_symbol()), std::memory_order_relaxed);
  qnl_rt_bind_unlock();
}

QNL_COLD int32_t read_threshold(Entry& e) {
  e.threshold.store(-2, std::memory_order_relaxed);
  char buf[10];
  if (qnl_rt_getenv("QNL_SPFFRT_NX", buf, sizeof buf) > 0) e.threshold.store(std::atoi(buf), std::memory_order_relaxed);
  return e.threshold.load(std::memory_order_relaxed);
}

// Size of argument k: the widened local on LP64, the caller's integer on ILP64.
int64_t size_of(void* const* p, const int64_t* local, int k) {
  return local ? local[k] : *static_cast<const int64_t*>(p[k]);
}

// A routed entry chooses between its two symbols on every call.
__attribute__((noinline)) void* bind_routed(const Routine& r, Entry& e, void* const* p, const int64_t* local) {
  if (__builtin_expect(e.slot.fn.load(std::memory_order_acquire) == nullptr, 0)) bind_pair(r, e);
  bool offload;
  switch (r.route) {
    case kRouteBig:
      offload = size_of(p, local, 0) >= 8192 && size_of(p, local, 1) >= 8192;
      break;
    case kRoutePotrf:
      offload = size_of(p, local, 1) >= 6144;
      break;
    case kRouteNpi:
      offload = size_of(p, local, 0) >= 500 && size_of(p, local, 1) >= 500;
      break;
    default: {
      // n and ncolm are read as 32 bits on both sides.
      int32_t t = e.threshold.load(std::memory_order_relaxed);
      if (t == -1) t = read_threshold(e);
      int32_t n = read32(p[1]), ncolm = read32(p[2]);
      offload = t < 1 ? n >= 3000 && ncolm >= 300 : n >= t && ncolm >= t;
      break;
    }
  }
  // The current slot is shared by all threads and written on every call: a
  // racing call may run the other symbol, which computes the same result.
  e.current.store(offload ? e.ao.get() : e.slot.get(), std::memory_order_relaxed);
  return e.current.load(std::memory_order_relaxed);
}

// The bound road of an entry without a route is a load and a test, in line.
inline void* bind(const Routine& r, Entry& e, void* const* p, const int64_t* local) {
  if (r.route != kNoRoute) return bind_routed(r, e, p, local);
  // The slot is read with acquire: a bound slot comes with the site's cell set.
  void* f = e.slot.fn.load(std::memory_order_acquire);
  return __builtin_expect(f == nullptr, 0) ? bind_first(r, e) : f;
}

// The mode is read once `fn` is bound: binding points the site's cell.
template <class After>
void call(const Routine& r, Entry& e, Invoke invoke, void* fn, void* const* q, void* const* p, void* result,
          After after) {
  int32_t m = e.site.mode();
  auto record = [&](char* buf) { format_line(r, p, buf); };
  if (r.result == kInteger) {
    auto* v = static_cast<int64_t*>(result);
    *v = verbose::run(
        e.site, m,
        [&] {
          invoke(fn, q, result);
          after();
          return *v;
        },
        record);
  } else {
    verbose::run(
        e.site, m,
        [&] {
          invoke(fn, q, result);
          after();
        },
        record);
  }
}

__attribute__((noinline)) void enter_lp64(const Routine& r, Entry& e, Invoke invoke, void* const* p, void* result) {
  Marshal s;
  if (!widen(r, p, s)) return;  // reported; no trace line
  void* fn = bind(r, e, p, s.local);
  call(r, e, invoke, fn, s.q, p, result, [&] { narrow(r, p, s); });
}

QNL_COLD void rejected(const Routine& r, Entry& e, void* const* p, int32_t m) {
  verbose::rejected<void>(e.site, m, [&](char* buf) { format_line(r, p, buf); });
}

// The short frame: no trace and no verbose mode; a check, if any, on the widened
// values; an empty slot after binding is fatal.
void* bind_short(const Routine& r, Entry& e) {
  void* f = e.slot.get();
  return f ? f : bind_thin(e.slot, r.symbol());
}

__attribute__((noinline)) void enter_short(const Routine& r, Entry& e, Invoke invoke, void* const* p, void* result,
                                           int lay) {
  if (lay != 0) {
    if (r.check_at && r.check()->ilp64(r, p)) return;
    invoke(bind_short(r, e), p, result);
    return;
  }
  Marshal s;
  if (!widen(r, p, s)) return;
  if (r.check_at && r.check()->ilp64(r, s.q)) {
    // info is stored back in all cases.
    if (r.info >= 0) *static_cast<int32_t*>(p[r.info]) = static_cast<int32_t>(s.local[r.info]);
    release(s);
    return;
  }
  invoke(bind_short(r, e), s.q, result);
  narrow(r, p, s);
}

}  // namespace

void enter(const Routine& r, Entry& e, Invoke invoke, void* const* p, void* result) {
  int lay = layer();
  if (r.short_frame) return enter_short(r, e, invoke, p, result, lay);
  if (r.check_at && (lay == 0 ? r.check()->lp64 : r.check()->ilp64)(r, p)) {
    // Rejected: no back-end call, but a trace line as for one.
    int32_t m = mode_before_binding(e);
    if (m != 0) rejected(r, e, p, m);
    return;
  }
  if (lay == 0) return enter_lp64(r, e, invoke, p, result);
  void* fn = bind(r, e, p, nullptr);
  call(r, e, invoke, fn, p, p, result, [] {});
}

}  // namespace qnl::lapack
