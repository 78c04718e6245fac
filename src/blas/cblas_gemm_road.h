// The real cblas_?gemm bodies as a road of their own (QNL_CBLAS_GEMM_ROAD): the C checks
// of gemm (cblas_level3.h) written out on the argument registers and the caller's stack
// arguments, then the Fortran entry's wide road called with the back-end's list. The
// compiled body keeps six registers, stores nine values and pushes the stack arguments
// again; this road keeps nothing across the call but its own block, and is most of what a
// small cblas_dgemm adds over the back-end's own call.
//
// Only the common case is written out: any option, size, layout or leading dimension that
// the checks would turn down leaves the road before it has changed anything but scratch
// registers and the upper halves of the LP64 sizes, and runs the compiled body
// (gemm_cold), which reports in its own order, with its own numbers. A call the road
// takes is one the compiled body takes too, with the same arguments for the entry.
#pragma once
#include "cblas_level3.h"

namespace qnl::cblas {

// The compiled body: checks, reports and the call, for whatever the road does not take.
template <class I, class D, class S>
QNL_COLD void gemm_cold(int layout, int transa, int transb, I m, I n, I k, S alpha, const void* a, I lda, const void* b,
                        I ldb, S beta, void* c, I ldc) {
  gemm<I, D>(layout, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

inline constexpr char kTransLetters[] = "N\0T\0C";

}  // namespace qnl::cblas

// The road at the entry's view (column-major), once the options, the signs and the layout
// have passed. M, N: the registers of the entry's m and n; TA, TB: those of the option
// indices (0 for "N"); A, LDA, B, LDB: the entry's a, lda, b, ldb as offsets of the
// caller's stack arguments from the return address (a row-major call exchanges the
// operands and m with n). k is in r9.
//
// Tests: lda >= max(1, TA == 0 ? M : k), ldb >= max(1, TB == 0 ? k : N), ldc >= max(1, M),
// each bound compared at the caller's width where the integer lies; max(1, x) for x >= 0
// is x + (x < 1).
//
// Block (64 bytes below the return address): m, n, k, alpha, beta at 0 to 32, then on
// LP64 the widened lda, ldb, ldc at 40 to 56; alpha and beta are stored as 8 bytes, of
// which a float is the low 4. The back-end's stack list is pushed below it: the two hidden
// lengths 1, &ldc, c, &beta, &ldb, b, &lda, a; a push reads its operand 8 bytes deeper
// than the one before, which the offsets count. On ILP64 the leading dimensions passed are
// the caller's own words, on LP64 the widened ones.
#define QNL_CBLAS_GEMM_AT(M, N, TA, TB, A, LDA, B, LDB) \
  "movq %%r9, %%rax\n\ttestl %%" TA "d, %%" TA "d\n\tcmoveq %%" M ", %%rax\n\t"                         \
  "cmpq $1, %%rax\n\tadcq $0, %%rax\n\t" QNL_CBLAS_GEMM_BOUND(LDA)                                       \
  "movq %%" N ", %%rax\n\ttestl %%" TB "d, %%" TB "d\n\tcmoveq %%r9, %%rax\n\t"                         \
  "cmpq $1, %%rax\n\tadcq $0, %%rax\n\t" QNL_CBLAS_GEMM_BOUND(LDB)                                       \
  "movq %%" M ", %%rax\n\tcmpq $1, %%rax\n\tadcq $0, %%rax\n\t" QNL_CBLAS_GEMM_BOUND("48")                \
  "subq $64, %%rsp\n\t"                                                                                   \
  "movq %%" M ", (%%rsp)\n\tmovq %%" N ", 8(%%rsp)\n\tmovq %%r9, 16(%%rsp)\n\t"                          \
  "movq %%xmm0, 24(%%rsp)\n\tmovq %%xmm1, 32(%%rsp)\n\t"                                                \
  ".if %c[lp64]\n\t"                                                                                      \
  "movslq 64+" LDA "(%%rsp), %%rax\n\tmovq %%rax, 40(%%rsp)\n\t"                                        \
  "movslq 64+" LDB "(%%rsp), %%rax\n\tmovq %%rax, 48(%%rsp)\n\t"                                        \
  "movslq 112(%%rsp), %%rax\n\tmovq %%rax, 56(%%rsp)\n\t"                                               \
  ".endif\n\t"                                                                                            \
  "pushq $1\n\tpushq $1\n\t" QNL_CBLAS_GEMM_WORD("72", "128") "pushq 128(%%rsp)\n\t"                     \
  "leaq 64(%%rsp), %%rax\n\tpushq %%rax\n\t" QNL_CBLAS_GEMM_WORD("88", "104+" LDB)                      \
  "pushq 112+" B "(%%rsp)\n\t" QNL_CBLAS_GEMM_WORD("96", "120+" LDA) "pushq 128+" A "(%%rsp)\n\t"     \
  "leaq %c[letters](%%rip), %%rax\n\t"                                                                    \
  "leaq (%%rax,%%" TA ",2), %%rdi\n\tleaq (%%rax,%%" TB ",2), %%rsi\n\t"                                \
  "leaq 72(%%rsp), %%rdx\n\tleaq 80(%%rsp), %%rcx\n\tleaq 88(%%rsp), %%r8\n\tleaq 96(%%rsp), %%r9\n\t" \
  "call %c[wide]\n\t"                                                                                     \
  "addq $136, %%rsp\n\t"                                                                                  \
  "ret\n"
// A bound in rax against the leading dimension at offset `at`: any bound above it goes to
// the compiled body.
#define QNL_CBLAS_GEMM_BOUND(at) \
  ".if %c[lp64]\n\tcmpl " at "(%%rsp), %%eax\n\t.else\n\tcmpq " at "(%%rsp), %%rax\n\t.endif\n\tjg %c[cold]\n\t"
// The address of a leading dimension pushed: the widened word's on LP64, the caller's on ILP64.
#define QNL_CBLAS_GEMM_WORD(lp64_at, ilp64_at)                                \
  ".if %c[lp64]\n\tleaq " lp64_at "(%%rsp), %%rax\n\t.else\n\tleaq " ilp64_at \
  "(%%rsp), %%rax\n\t"                                                        \
  ".endif\n\tpushq %%rax\n\t"

// The body of qnl_<width>_cblas_?gemm for the real types (naked, its parameters unnamed):
// on LP64 the sizes are sign-extended in place (the compiled body reads their low halves
// only), then options, signs and the layout; a row-major call takes the road with the
// operands exchanged, a column-major one as given.
#define QNL_CBLAS_GEMM_ROAD(D, I)                                                                                    \
  asm volatile(                                                                                                      \
      ".if %c[lp64]\n\tmovslq %%ecx, %%rcx\n\tmovslq %%r8d, %%r8\n\tmovslq %%r9d, %%r9\n\t.endif\n\t"                \
      "leal -111(%%rsi), %%r10d\n\tcmpl $2, %%r10d\n\tja %c[cold]\n\t"                                               \
      "leal -111(%%rdx), %%r11d\n\tcmpl $2, %%r11d\n\tja %c[cold]\n\t"                                               \
      "movq %%rcx, %%rax\n\torq %%r8, %%rax\n\torq %%r9, %%rax\n\tjs %c[cold]\n\t"                                   \
      "cmpl $101, %%edi\n\tjne 1f\n\t" QNL_CBLAS_GEMM_AT(                                                            \
          "r8", "rcx", "r11", "r10", "24", "32", "8",                                                                \
          "16") "1:\n\tcmpl $102, %%edi\n\tjne %c[cold]\n\t" QNL_CBLAS_GEMM_AT("rcx", "r8", "r10", "r11", "8", "16", \
                                                                               "24", "32")                           \
      :                                                                                                              \
      : [lp64] "i"(sizeof(I) == 4 ? 1 : 0), [cold] "i"(&qnl::cblas::gemm_cold<I, D, typename D::E>),                 \
        [letters] "i"(qnl::cblas::kTransLetters), [wide] "i"(qnl::blas::wide_of<D::fortran>::fn))
