// The LAPACKE template. Every routine is a record of its arguments (generated
// from src/lapack/lapacke.sig) and a thunk that calls the Fortran entry's
// hidden body; two functions read the record:
//   high    layout check, NaN gate, fixed and queried workspace, then middle;
//   middle  column-major: one call; row-major: leading-dimension checks,
//           transposed copies through the layout kit, the call, copies back.
// Both are templates over the integer width I of the twin (int32_t for LP64,
// int64_t for ILP64); each twin has its own NaN flag.
#pragma once
#include <cstdint>

#include "entry.h"

namespace qnl::lapacke {

// Argument kinds of the middle level, after the layout.
enum Kind : uint8_t {
  kChar,     // char by value
  kCharPtr,  // char by address (equed)
  kInt,      // lapack_int by value
  kScalar,   // real or complex by value
  kOutPtr,   // anything else passed on by address: scalar outputs, integer arrays, callbacks
  kVector,   // one-dimensional floating array: d[0] its length; ref: its stride (-1: 1)
  kWork,     // workspace sized by a query; `ld` is its length argument (-1: none, the
             // answer its own query leaves sizes it)
  kFixed,    // workspace of a fixed length d[0]; ld: the argument that gets the length, -1 none
  kOwn,      // an output of the high level alone, after the routine's arguments: d[0] elements
             // of the workspace `ld` from element ref[0], copied out (kIn: also in)
  kGe,       // d: rows, cols
  kSy,       // d: n; ref: uplo
  kTr,       // d: n; ref: uplo, diag (-1: non-unit)
  kGb,       // d: m, n, kl, ku
  kSb,       // d: n, kd; ref: uplo
  kTb,       // d: n, kd; ref: uplo, diag
  kSp,       // d: n; ref: uplo
  kTp,       // d: n; ref: uplo, diag
  kPf,       // d: n; ref: transr, uplo
  kTf,       // d: n; ref: transr, uplo, diag
};

enum Dir : uint8_t { kIn = 1, kOut = 2, kInOut = 3 };

constexpr int kMaxLetters = 4;  // job letters that ask for a matrix, at most

struct Arg {
  uint8_t kind;
  char type;      // element: s d c z, i integer, l logical
  uint8_t dir;    // of floating arrays
  uint8_t nan;    // 0 none; else the Kind whose scan the NaN gate runs
  int8_t ld;      // index of the leading dimension, -1 none
  int8_t ref[3];  // indices of option letters (see Kind), -1 none
  int8_t d;       // first slot of its dimensions in the computed array
  int8_t hpos;    // 1-based parameter number at the high level (layout is 1), 0 absent there
  int8_t cond;    // a job letter argument: the matrix is used only when it is one of `letters`
  // Held in the record rather than by address: the argument arrays then carry
  // no pointer and need no relocation when the library loads.
  char letters[kMaxLetters + 1];
};

// The type of a callback argument (the select functions of ?gees, ?gges, ...).
template <class R, class... A>
using Callback = R (*)(A...);

// Fills the dimension slots from the argument addresses.
template <class I>
using Dims = void (*)(void* const* p, I* d);
// Calls the Fortran entry's hidden body with the addresses in `q` (info last);
// a function-valued routine stores its value in `result`.
using Fortran = void (*)(void* const* q, void* result);

enum Flags : uint8_t {
  kNoCopy = 1,    // row-major: uplo exchanged, m and n exchanged; nothing copied
  kNoLayout = 2,  // no matrix, no layout argument: the middle level is a bare call
  kPack = 4,      // a block between a full array and a packed triangle (uplo, trans first):
                  // row-major exchanges uplo, the block's position and its sizes; no copy
  kNormSwap = 8,  // a norm (norm first): row-major takes the norm of the transpose as it lies,
                  // the one and infinity norms, the triangle and the two integers before the
                  // matrix (m and n, kl and ku) exchanged; no copy
};

template <class I>
struct Routine {
  const char* high;  // "LAPACKE_dgels"
  const char* work;  // "LAPACKE_dgels_work"
  const Arg* args;
  uint8_t nargs;
  uint8_t flags;
  // Argument sets, bit k for argument k, so that each pass visits only its own arguments:
  uint64_t checked;   // run through the NaN gate (those with `nan`)
  uint64_t matrices;  // copied in row-major (Kind kGe and after)
  uint64_t owned;     // workspace the high level allocates (kWork, kFixed)
  Dims<I> dims;
  Fortran fortran;
  uint8_t nown;  // own outputs of the high level (kOwn), after the nargs arguments
};

constexpr int kMaxArgs = 48;  // at most 64: the argument sets are 64-bit
constexpr int kMaxDims = 64;

template <class I>
I high(const Routine<I>& r, int layout, void* const* p);
template <class I>
I middle(const Routine<I>& r, int layout, void* const* p);

// Function-valued routines (norms, lapy2, lamch): the value, or an error code as a value.
template <class R, class I>
R high_value(const Routine<I>& r, int layout, void* const* p);
template <class R, class I>
R middle_value(const Routine<I>& r, int layout, void* const* p);

template <class I>
int get_nancheck();
template <class I>
void set_nancheck(int flag);
template <class I>
void xerbla(const char* name, I info);

}  // namespace qnl::lapacke
