// The Fortran LAPACK entry frame. Every routine is a record of its argument
// classes (generated from src/lapack/lapack.sig) and a call thunk; one frame
// reads the record: it brings a 32-bit caller up to the back-end's 64-bit
// integers and back, binds, checks the much-used routines, routes the big ones
// to their offload symbols, and traces.
#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "entry.h"
#include "verbose.h"

namespace qnl::lapack {

// Argument classes.
enum Class : uint8_t {
  kChar,         // character: address passed on, a hidden length 1 appended
  kIn,           // integer scalar read by the routine
  kOut,          // integer scalar the routine writes (info, sdim, ...)
  kPtr,          // floating scalar or array, or anything else by address
  kFunc,         // callback, passed unchanged
  kPivOut,       // integer array written: copied back after the call
  kPivIn,        // integer array read: widened before the call
  kInOut,        // integer array read and written
  kQueryWork,    // integer workspace whose element 0 answers a size query
  kFixedWork,    // integer workspace not referenced by a size query
  kLogicalWork,  // logical workspace, copied back
};

enum Flag : uint8_t {
  kZeroStart = 1,   // an output whose 64-bit local starts at 0 rather than the caller's value
  kWorkLength = 2,  // lwork, liwork, ...: -1 asks for sizes
  kAnswersQuery = 4,  // an integer array written, sized by a workspace length: a query answers in element 0
};

struct Arg {
  uint8_t cls;
  uint8_t flags;
  uint8_t cond;    // 1-based index of the first condition in Routine::conds; 0 none
  int16_t length;  // offset of the allocation length in Routine::program; -1 none
  int16_t keep;    // offset of the copy-back length when it differs; -1 none
};

enum CondOp : uint8_t { kLetterIn, kLetterNotIn, kValueIs, kValueIsNot };

// "Referenced only when": a character argument's first letter is (not) one of
// `letters`, or an integer argument has (not) `value`. `more` chains an AND.
struct Cond {
  uint8_t arg;
  uint8_t op;
  bool more;
  int32_t value;
  uint32_t letters;  // offset in kText
};

// Length programs, postfix, over the integer scalars' 64-bit values.
enum Op : int16_t { kEnd, kArgValue, kConst, kAdd, kSub, kMul, kDiv, kMax, kMin, kAbs, kLog2 };

enum ResultKind : uint8_t { kNone, kInteger, kReal };

// Offload routes: which sizes choose the qnl_lapack_ao_ symbol.
enum Route : uint8_t { kNoRoute, kRouteBig, kRoutePotrf, kRouteNpi, kRouteSpffrt };

struct Routine;
// An argument check at the entry, one function per integer width, working on the
// caller's arguments. Non-zero: rejected and reported.
struct CheckPair {
  int (*lp64)(const Routine& r, void* const* a);
  int (*ilp64)(const Routine& r, void* const* a);
};

// Calls the back-end symbol `fn` with the marshalled addresses; one per routine,
// passed by the routine's body to enter().
using Invoke = void (*)(void* fn, void* const* args, void* result);

// The pools every record points into (generated beside the entries). Records
// hold offsets rather than addresses: they then need no relocation when the
// library loads, and their pages stay clean and shared.
extern const char kText[] QNL_HIDDEN;  // names, symbols, formats, letters; each ends in 0
extern const Arg kArgPool[] QNL_HIDDEN;
extern const int16_t kProgramPool[] QNL_HIDDEN;
extern const Cond kCondPool[] QNL_HIDDEN;
extern const CheckPair* const kChecks[] QNL_HIDDEN;  // [0] is null: no check

// A routine's arguments by role, bit k for argument k, so that each pass of the
// LP64 frame visits only its own arguments.
struct ArgSets {
  uint64_t scalars;      // integer scalars (kIn, kOut): passed as 64-bit locals
  uint64_t reads;        // those read before the call: not conditional, not kZeroStart
  uint64_t outs;         // kOut
  uint64_t conditional;  // scalars referenced only under a condition
  uint64_t lengths;      // kWorkLength
  uint64_t arrays;       // integer and logical arrays
};
extern const ArgSets kSetPool[] QNL_HIDDEN;

struct Routine {
  uint32_t name_at;       // upper case, as reported and traced
  uint32_t symbol_at;     // back-end symbol
  uint32_t ao_symbol_at;  // offload symbol; 0 none
  uint32_t format_at;     // trace format; 0 for the short frame
  uint32_t args_at;       // first of nargs in kArgPool
  uint32_t program_at;    // the routine's length programs in kProgramPool
  uint32_t conds_at;      // the routine's conditions in kCondPool
  uint32_t sets_at;       // in kSetPool
  uint8_t check_at;       // in kChecks
  uint8_t nargs;
  int8_t info;  // index of info, or -1
  uint8_t route;
  uint8_t result;
  bool short_frame;
  bool has_query_work;

  const char* name() const { return kText + name_at; }
  const char* symbol() const { return kText + symbol_at; }
  const char* ao_symbol() const { return ao_symbol_at ? kText + ao_symbol_at : nullptr; }
  const char* format() const { return format_at ? kText + format_at : nullptr; }
  const Arg* args() const { return kArgPool + args_at; }
  const int16_t* program() const { return kProgramPool + program_at; }
  const Cond* conds() const { return kCondPool + conds_at; }
  const CheckPair* check() const { return kChecks[check_at]; }
  const ArgSets& sets() const { return kSetPool[sets_at]; }
};

// The routine's statics: slot, offload slot and the current choice, trace state,
// and the environment threshold of the routes that have one (-1 until read).
struct Entry {
  Slot slot;
  Slot ao;
  std::atomic<void*> current{nullptr};
  std::atomic<int32_t> threshold{-1};
  verbose::Site site{nullptr};  // pointed at on the first call (frame.cpp, bind)
};

constexpr int kMaxArgs = 40;
constexpr int kMaxArrays = 8;
constexpr int kFrameElements = 16;  // integer arrays up to this length stay in the frame

// Converts a marshalled address to the parameter type of the back-end.
struct Any {
  void* v;
  template <class T>
  operator T*() const {
    if constexpr (std::is_function_v<T>)
      return reinterpret_cast<T*>(v);  // a callback the caller passed as an address
    else
      return static_cast<T*>(v);
  }
};

// The entry: `invoke` calls the back-end, `args` are the caller's addresses,
// result address first where the routine returns through one; `result`
// receives a value result.
void enter(const Routine& r, Entry& e, Invoke invoke, void* const* args, void* result) QNL_HIDDEN;

// The checks of the pre-checked routines (checks.cpp).
extern const CheckPair kCheck_getrf, kCheck_potrf, kCheck_geqrf, kCheck_gelqf, kCheck_geqlf, kCheck_gebrd, kCheck_gehrd,
    kCheck_orghr, kCheck_sytrd, kCheck_sygst, kCheck_syrdb, kCheck_syevd, kCheck_heevd, kCheck_hegvd, kCheck_gesvd,
    kCheck_geev_real, kCheck_geev_complex, kCheck_orgqr, kCheck_ormqr, kCheck_ormlq, kCheck_ormql, kCheck_ormrq,
    kCheck_dtsvb, kCheck_dttrfb QNL_HIDDEN;

}  // namespace qnl::lapack
