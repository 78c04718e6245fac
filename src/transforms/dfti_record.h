// The descriptor record as the front and the computational core share it: the
// front reads and writes the fields below at these byte positions; everything
// between them belongs to the core. Also the core's table of operations.
#pragma once
#include <cstddef>
#include <cstdint>

namespace qnl::dfti {

struct Record;
using ComputeFn = int32_t (*)(Record*, void*, void*, void*, void*);
using DestroyFn = int32_t (*)(Record*);

struct Ops {
  int32_t (*commit)(Record*);
  void* core_own;
  int32_t (*get_input_strides)(Record*, int64_t*);
  int32_t (*get_output_strides)(Record*, int64_t*);
  int32_t (*set_input_strides)(Record*, const int64_t*);
  int32_t (*set_output_strides)(Record*, const int64_t*);
  int32_t (*get_lengths)(Record*, int64_t*);
  int32_t (*get_name)(Record*, char*, int64_t);
  int32_t (*set_name)(Record*, const char*, int64_t, int32_t pad);
  int32_t (*get_scale)(Record*, double*, int32_t param);
  int32_t (*set_scale)(Record*, double, int32_t param);
  int32_t (*copy)(Record*, Record**);
  int32_t (*get_input_distance)(Record*, int64_t*);
  int32_t (*get_output_distance)(Record*, int64_t*);
  int32_t (*get_number_of_transforms)(Record*, int64_t*);
  int32_t (*set_input_distance)(Record*, int64_t);
  int32_t (*set_output_distance)(Record*, int64_t);
  int32_t (*set_number_of_transforms)(Record*, int64_t);
  int32_t (*get_thread_limit)(Record*, int64_t*);
  int32_t (*set_thread_limit)(Record*, int64_t);
};

struct Record {
  ComputeFn compute_forward;   // 0
  ComputeFn compute_backward;  // 8
  unsigned char core0[24];
  int32_t buffer_count;  // 40
  uint8_t state_flags;   // 44
  unsigned char core1[3];
  uint32_t magic;         // 48
  int32_t commit_status;  // 52
  unsigned char core2[32];
  int32_t rank;  // 88
  unsigned char core3[44];
  DestroyFn destroy;  // 136
  const Ops* ops;     // 144
  unsigned char core4[24];
  int32_t forward_domain;  // 176
  int32_t precision;       // 180
  unsigned char core5[8];
  int32_t complex_storage;         // 192
  int32_t real_storage;            // 196
  int32_t conjugate_even_storage;  // 200
  int32_t placement;               // 204
  int32_t packed_format;           // 208
  unsigned char core6[24];
  int32_t workspace;  // 236
  int32_t ordering;   // 240
  int32_t transpose;  // 244
  unsigned char core7[176];
  Record* next;  // 424
  unsigned char core8[320];
  int32_t number_of_user_threads;  // 752
  unsigned char core9[8];
  uint32_t option_flags;  // 764
};

#define QNL_DFTI_AT(field, at) static_assert(offsetof(Record, field) == at, #field " moved")
QNL_DFTI_AT(buffer_count, 40);
QNL_DFTI_AT(state_flags, 44);
QNL_DFTI_AT(magic, 48);
QNL_DFTI_AT(commit_status, 52);
QNL_DFTI_AT(rank, 88);
QNL_DFTI_AT(destroy, 136);
QNL_DFTI_AT(ops, 144);
QNL_DFTI_AT(forward_domain, 176);
QNL_DFTI_AT(precision, 180);
QNL_DFTI_AT(complex_storage, 192);
QNL_DFTI_AT(packed_format, 208);
QNL_DFTI_AT(workspace, 236);
QNL_DFTI_AT(transpose, 244);
QNL_DFTI_AT(next, 424);
QNL_DFTI_AT(number_of_user_threads, 752);
QNL_DFTI_AT(option_flags, 764);
#undef QNL_DFTI_AT

inline constexpr uint32_t kMagic = 0x544644;  // "DFT" and a zero
inline constexpr uint32_t kDestroyInputAllowed = 16;
inline constexpr int kMaxRank = 7;

}  // namespace qnl::dfti
