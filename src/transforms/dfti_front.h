// What the C and the Fortran faces of the descriptor interface share: handle
// tests, the scalar setter, the core's creators, the status texts.
#pragma once
#include <cstdint>

#include "dfti_record.h"
#include "entry.h"

namespace qnl::dfti {

// Status codes and configuration values the front itself produces or tests.
inline constexpr int32_t kNoError = 0, kInvalidConfiguration = 2, kInconsistentConfiguration = 3, kBadDescriptor = 5,
                         kUnimplemented = 6, kInternalError = 7;
inline constexpr int32_t kCommitted = 30, kUncommitted = 31, kComplex = 32, kReal = 33, kSingle = 35, kDouble = 36;
// Parameters that every getter and setter refuses: the gaps and everything past 28.
inline bool unknown_parameter(int32_t p) { return p < 0 || p > 28 || p == 6 || p == 16 || p == 24 || p == 25; }

inline bool valid(const Record* d) { return d && d->magic == kMagic; }

// Narrows a layer-width value under LP64 (low 32 bits, sign-extended).
inline int64_t at_layer(int64_t v, int lay) { return lay == 0 ? static_cast<int32_t>(v) : v; }
inline bool fits32(int64_t v) { return v == static_cast<int32_t>(v); }

// Reads `count` layer-width integers into 64-bit storage.
inline void widen(const void* src, int64_t* dst, int count, int lay) {
  for (int i = 0; i < count; ++i)
    dst[i] = lay == 0 ? static_cast<const int32_t*>(src)[i] : static_cast<const int64_t*>(src)[i];
}
// Stores one value at layer width.
inline void store(void* dst, int64_t v, int lay) {
  if (lay == 0)
    *static_cast<int32_t*>(dst) = static_cast<int32_t>(v);
  else
    *static_cast<int64_t*>(dst) = v;
}
// Reverses elements [first, last] of a list in place.
inline void reverse(int64_t* v, int first, int last) {
  for (; first < last; ++first, --last) {
    int64_t t = v[first];
    v[first] = v[last];
    v[last] = t;
  }
}

int32_t set_scalar(Record** handle, const int32_t* param, const int64_t* value) QNL_HIDDEN;
// The single-integer parameters: fixed fields of the record and the core's
// scalar getters. kNotScalar for any other parameter.
inline constexpr int32_t kNotScalar = -1;
int32_t get_scalar(Record* d, int32_t param, int64_t* v) QNL_HIDDEN;
// What both faces do alike on a descriptor: commit (null: status 5), copy and
// commit the copy if the source was committed, and free through the handle.
int32_t commit(Record* d) QNL_HIDDEN;
int32_t copy(Record* source, Record** out) QNL_HIDDEN;
int32_t release(Record** handle) QNL_HIDDEN;
// The many-dimension creators by precision and domain; status 2 for any other pair.
int32_t create_md(Record** handle, int32_t precision, int32_t domain, int32_t rank, const int64_t* lengths) QNL_HIDDEN;
int32_t create_1d(Record** handle, int32_t precision, int32_t domain, int64_t length) QNL_HIDDEN;
void bless(Record* d) QNL_HIDDEN;
// Called after every commit that reached the core.
void verbose(Record* d) QNL_HIDDEN;
void version_string(char* buffer, int64_t length) QNL_HIDDEN;
// The status text; status 4 falls to the default row.
const char* message(int64_t status) QNL_HIDDEN;

}  // namespace qnl::dfti
