/* The FFTW3 C interface of libqnl_rt.so: plans are descriptors of its DFT
 * interface. Programs written for FFTW 3 compile against this header as they
 * are; double (fftw_) and single (fftwf_) precision. */
#ifndef FFTW3_H
#define FFTW3_H

#include <stddef.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Complex numbers: C99 complex when <complex.h> came first, else two reals. */
#if !defined(FFTW_NO_Complex) && defined(_Complex_I) && defined(complex) && defined(I)
#define QNL_FFTW_COMPLEX(R, C) typedef R _Complex C
#else
#define QNL_FFTW_COMPLEX(R, C) typedef R C[2]
#endif

enum fftw_r2r_kind_do_not_use_me {
  FFTW_R2HC = 0, FFTW_HC2R = 1, FFTW_DHT = 2,
  FFTW_REDFT00 = 3, FFTW_REDFT01 = 4, FFTW_REDFT10 = 5, FFTW_REDFT11 = 6,
  FFTW_RODFT00 = 7, FFTW_RODFT01 = 8, FFTW_RODFT10 = 9, FFTW_RODFT11 = 10
};

struct fftw_iodim_do_not_use_me {
  int n, is, os;
};
struct fftw_iodim64_do_not_use_me {
  ptrdiff_t n, is, os;
};

typedef void (*fftw_write_char_func_do_not_use_me)(char c, void* data);
typedef int (*fftw_read_char_func_do_not_use_me)(void* data);

/* One precision's interface; X pastes the prefix, R is the real type, C the complex one. */
#define QNL_FFTW_API(X, R, C)                                                                                  \
  QNL_FFTW_COMPLEX(R, C);                                                                                      \
  typedef struct X(plan_s) * X(plan);                                                                          \
  typedef struct fftw_iodim_do_not_use_me X(iodim);                                                            \
  typedef struct fftw_iodim64_do_not_use_me X(iodim64);                                                        \
  typedef enum fftw_r2r_kind_do_not_use_me X(r2r_kind);                                                        \
  typedef fftw_write_char_func_do_not_use_me X(write_char_func);                                               \
  typedef fftw_read_char_func_do_not_use_me X(read_char_func);                                                 \
                                                                                                               \
  void X(execute)(const X(plan) p);                                                                            \
  X(plan) X(plan_dft)(int rank, const int* n, C* in, C* out, int sign, unsigned flags);                       \
  X(plan) X(plan_dft_1d)(int n, C* in, C* out, int sign, unsigned flags);                                     \
  X(plan) X(plan_dft_2d)(int n0, int n1, C* in, C* out, int sign, unsigned flags);                            \
  X(plan) X(plan_dft_3d)(int n0, int n1, int n2, C* in, C* out, int sign, unsigned flags);                    \
  X(plan) X(plan_many_dft)(int rank, const int* n, int howmany, C* in, const int* inembed, int istride,       \
                           int idist, C* out, const int* onembed, int ostride, int odist, int sign,            \
                           unsigned flags);                                                                    \
  X(plan) X(plan_guru_dft)(int rank, const X(iodim) * dims, int howmany_rank, const X(iodim) * howmany_dims,  \
                           C* in, C* out, int sign, unsigned flags);                                           \
  X(plan) X(plan_guru_split_dft)(int rank, const X(iodim) * dims, int howmany_rank,                           \
                                 const X(iodim) * howmany_dims, R* ri, R* ii, R* ro, R* io, unsigned flags);   \
  X(plan) X(plan_guru64_dft)(int rank, const X(iodim64) * dims, int howmany_rank,                             \
                             const X(iodim64) * howmany_dims, C* in, C* out, int sign, unsigned flags);        \
  X(plan) X(plan_guru64_split_dft)(int rank, const X(iodim64) * dims, int howmany_rank,                       \
                                   const X(iodim64) * howmany_dims, R* ri, R* ii, R* ro, R* io,               \
                                   unsigned flags);                                                            \
  void X(execute_dft)(const X(plan) p, C* in, C* out);                                                         \
  void X(execute_split_dft)(const X(plan) p, R* ri, R* ii, R* ro, R* io);                                     \
                                                                                                               \
  X(plan) X(plan_many_dft_r2c)(int rank, const int* n, int howmany, R* in, const int* inembed, int istride,   \
                               int idist, C* out, const int* onembed, int ostride, int odist, unsigned flags); \
  X(plan) X(plan_dft_r2c)(int rank, const int* n, R* in, C* out, unsigned flags);                             \
  X(plan) X(plan_dft_r2c_1d)(int n, R* in, C* out, unsigned flags);                                           \
  X(plan) X(plan_dft_r2c_2d)(int n0, int n1, R* in, C* out, unsigned flags);                                  \
  X(plan) X(plan_dft_r2c_3d)(int n0, int n1, int n2, R* in, C* out, unsigned flags);                          \
  X(plan) X(plan_many_dft_c2r)(int rank, const int* n, int howmany, C* in, const int* inembed, int istride,   \
                               int idist, R* out, const int* onembed, int ostride, int odist, unsigned flags); \
  X(plan) X(plan_dft_c2r)(int rank, const int* n, C* in, R* out, unsigned flags);                             \
  X(plan) X(plan_dft_c2r_1d)(int n, C* in, R* out, unsigned flags);                                           \
  X(plan) X(plan_dft_c2r_2d)(int n0, int n1, C* in, R* out, unsigned flags);                                  \
  X(plan) X(plan_dft_c2r_3d)(int n0, int n1, int n2, C* in, R* out, unsigned flags);                          \
  X(plan) X(plan_guru_dft_r2c)(int rank, const X(iodim) * dims, int howmany_rank,                             \
                               const X(iodim) * howmany_dims, R* in, C* out, unsigned flags);                  \
  X(plan) X(plan_guru_dft_c2r)(int rank, const X(iodim) * dims, int howmany_rank,                             \
                               const X(iodim) * howmany_dims, C* in, R* out, unsigned flags);                  \
  X(plan) X(plan_guru_split_dft_r2c)(int rank, const X(iodim) * dims, int howmany_rank,                       \
                                     const X(iodim) * howmany_dims, R* in, R* ro, R* io, unsigned flags);      \
  X(plan) X(plan_guru_split_dft_c2r)(int rank, const X(iodim) * dims, int howmany_rank,                       \
                                     const X(iodim) * howmany_dims, R* ri, R* ii, R* out, unsigned flags);     \
  X(plan) X(plan_guru64_dft_r2c)(int rank, const X(iodim64) * dims, int howmany_rank,                         \
                                 const X(iodim64) * howmany_dims, R* in, C* out, unsigned flags);              \
  X(plan) X(plan_guru64_dft_c2r)(int rank, const X(iodim64) * dims, int howmany_rank,                         \
                                 const X(iodim64) * howmany_dims, C* in, R* out, unsigned flags);              \
  X(plan) X(plan_guru64_split_dft_r2c)(int rank, const X(iodim64) * dims, int howmany_rank,                   \
                                       const X(iodim64) * howmany_dims, R* in, R* ro, R* io, unsigned flags);  \
  X(plan) X(plan_guru64_split_dft_c2r)(int rank, const X(iodim64) * dims, int howmany_rank,                   \
                                       const X(iodim64) * howmany_dims, R* ri, R* ii, R* out, unsigned flags); \
  void X(execute_dft_r2c)(const X(plan) p, R* in, C* out);                                                     \
  void X(execute_dft_c2r)(const X(plan) p, C* in, R* out);                                                     \
  void X(execute_split_dft_r2c)(const X(plan) p, R* in, R* ro, R* io);                                        \
  void X(execute_split_dft_c2r)(const X(plan) p, R* ri, R* ii, R* out);                                       \
                                                                                                               \
  X(plan) X(plan_many_r2r)(int rank, const int* n, int howmany, R* in, const int* inembed, int istride,       \
                           int idist, R* out, const int* onembed, int ostride, int odist,                      \
                           const X(r2r_kind) * kind, unsigned flags);                                          \
  X(plan) X(plan_r2r)(int rank, const int* n, R* in, R* out, const X(r2r_kind) * kind, unsigned flags);       \
  X(plan) X(plan_r2r_1d)(int n, R* in, R* out, X(r2r_kind) kind, unsigned flags);                             \
  X(plan) X(plan_r2r_2d)(int n0, int n1, R* in, R* out, X(r2r_kind) kind0, X(r2r_kind) kind1, unsigned flags); \
  X(plan) X(plan_r2r_3d)(int n0, int n1, int n2, R* in, R* out, X(r2r_kind) kind0, X(r2r_kind) kind1,        \
                         X(r2r_kind) kind2, unsigned flags);                                                   \
  X(plan) X(plan_guru_r2r)(int rank, const X(iodim) * dims, int howmany_rank, const X(iodim) * howmany_dims,  \
                           R* in, R* out, const X(r2r_kind) * kind, unsigned flags);                           \
  X(plan) X(plan_guru64_r2r)(int rank, const X(iodim64) * dims, int howmany_rank,                             \
                             const X(iodim64) * howmany_dims, R* in, R* out, const X(r2r_kind) * kind,         \
                             unsigned flags);                                                                  \
  void X(execute_r2r)(const X(plan) p, R* in, R* out);                                                         \
                                                                                                               \
  void X(destroy_plan)(X(plan) p);                                                                             \
  void X(forget_wisdom)(void);                                                                                 \
  void X(cleanup)(void);                                                                                       \
  void X(set_timelimit)(double t);                                                                             \
  void X(plan_with_nthreads)(int nthreads);                                                                    \
  int X(planner_nthreads)(void);                                                                               \
  int X(init_threads)(void);                                                                                   \
  void X(cleanup_threads)(void);                                                                               \
  void X(make_planner_thread_safe)(void);                                                                      \
  void X(threads_set_callback)(void (*parallel_loop)(void* (*work)(char*), char* jobdata, size_t elsize,      \
                                                     int njobs, void* data),                                  \
                               void* data);                                                                    \
  int X(export_wisdom_to_filename)(const char* filename);                                                      \
  void X(export_wisdom_to_file)(FILE * output_file);                                                           \
  char* X(export_wisdom_to_string)(void);                                                                      \
  void X(export_wisdom)(X(write_char_func) write_char, void* data);                                            \
  int X(import_system_wisdom)(void);                                                                           \
  int X(import_wisdom_from_filename)(const char* filename);                                                    \
  int X(import_wisdom_from_file)(FILE * input_file);                                                           \
  int X(import_wisdom_from_string)(const char* input_string);                                                  \
  int X(import_wisdom)(X(read_char_func) read_char, void* data);                                               \
  void X(fprint_plan)(const X(plan) p, FILE* output_file);                                                     \
  void X(print_plan)(const X(plan) p);                                                                         \
  char* X(sprint_plan)(const X(plan) p);                                                                       \
  void* X(malloc)(size_t n);                                                                                   \
  R* X(alloc_real)(size_t n);                                                                                  \
  C* X(alloc_complex)(size_t n);                                                                               \
  void X(free)(void* p);                                                                                       \
  void X(flops)(const X(plan) p, double* add, double* mul, double* fmas);                                     \
  double X(estimate_cost)(const X(plan) p);                                                                    \
  double X(cost)(const X(plan) p);                                                                             \
  int X(alignment_of)(R * p);                                                                                  \
  extern const char X(version)[];                                                                              \
  extern const char X(cc)[];                                                                                   \
  extern const char X(codelet_optim)[]

#define QNL_FFTW_PREFIX_D(name) fftw_##name
#define QNL_FFTW_PREFIX_F(name) fftwf_##name
QNL_FFTW_API(QNL_FFTW_PREFIX_D, double, fftw_complex);
QNL_FFTW_API(QNL_FFTW_PREFIX_F, float, fftwf_complex);

#define FFTW_FORWARD (-1)
#define FFTW_BACKWARD (+1)
#define FFTW_NO_TIMELIMIT (-1.0)

/* Planner flags: accepted everywhere, read nowhere. */
#define FFTW_MEASURE (0U)
#define FFTW_DESTROY_INPUT (1U << 0)
#define FFTW_UNALIGNED (1U << 1)
#define FFTW_CONSERVE_MEMORY (1U << 2)
#define FFTW_EXHAUSTIVE (1U << 3)
#define FFTW_PRESERVE_INPUT (1U << 4)
#define FFTW_PATIENT (1U << 5)
#define FFTW_ESTIMATE (1U << 6)
#define FFTW_WISDOM_ONLY (1U << 21)

/* The plan layer's own settings, shared by both precisions (libqnl_rt.so only). */
struct fftw3_qnl_s {
  int verbose;
  int nthreads;
  double timelimit;
  int spare_word;
  void* (*new_plan)(void);
  int default_alignment;
};
extern struct fftw3_qnl_s fftw3_qnl;

#ifdef __cplusplus
}
#endif
#endif
