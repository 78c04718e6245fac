// Everything a generated CBLAS shard needs: the body templates of every shape and the
// selector that exports a routine.
#pragma once
#include "cblas_batch.h"
#include "cblas_level1.h"
#include "cblas_level2.h"
#include "cblas_level3.h"
#include "cblas_sparse.h"

// The exported name of a CBLAS routine: reads the interface layer; when it is unset, the
// arguments are saved, the layer is settled and the selector runs again; 0 jumps to the
// LP64 body, anything else to the ILP64 body. Nothing stays on the stack, so the body gets
// the caller's arguments, also those on the stack, untouched.
// clang-format off
#define QNL_CBLAS_SELECTOR(sym, lp64, ilp64)                                                  \
  asm(".text\n.globl " #sym "\n.type " #sym ",@function\n.p2align 4\n" #sym ":\n"             \
      ".Lagain_" #sym ":\n"                                                                   \
      "  movl _ZN3qnl7g_stateE+8(%rip), %eax\n"                                               \
      "  testl %eax, %eax\n"                                                                  \
      "  je " #lp64 "\n"                                                                      \
      "  cmpl $-1, %eax\n"                                                                    \
      "  jne " #ilp64 "\n"                                                                    \
      "  leaq .Lagain_" #sym "(%rip), %r11\n"                                                 \
      "  jmp qnl_cblas_settle\n"                                                              \
      ".size " #sym ", .-" #sym "\n");
// clang-format on
