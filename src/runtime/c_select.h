// The exported name of a routine of a C layer (CBLAS, LAPACKE, ...) with one body per
// interface layer: it reads the layer from qnl_rt_state; when it is unset, the arguments are
// saved, the layer is settled and the selector runs again (c_select.cpp); 0 jumps to the
// LP64 body, anything else to the ILP64 body: one compare and a jump for LP64, one more
// jump for ILP64 (any positive value), the rest only for a negative value. Nothing stays
// on the stack, so the body gets the caller's arguments, also those on the stack, untouched.
#pragma once

#define QNL_C_SELECTOR_LAYER_OFFSET 8
#define QNL_C_SELECTOR_STR(x) #x
#define QNL_C_SELECTOR_AT(x) QNL_C_SELECTOR_STR(x)

// clang-format off
#define QNL_C_SELECTOR(sym, lp64, ilp64)                                                      \
  asm(".text\n.globl " #sym "\n.type " #sym ",@function\n.p2align 4\n" #sym ":\n"             \
      ".Lagain_" #sym ":\n"                                                                   \
      "  cmpl $0, qnl_rt_state+" QNL_C_SELECTOR_AT(QNL_C_SELECTOR_LAYER_OFFSET) "(%rip)\n"   \
      "  je " #lp64 "\n"                                                                      \
      "  jg " #ilp64 "\n"                                                                     \
      "  cmpl $-1, qnl_rt_state+" QNL_C_SELECTOR_AT(QNL_C_SELECTOR_LAYER_OFFSET) "(%rip)\n"  \
      "  jne " #ilp64 "\n"                                                                    \
      "  leaq .Lagain_" #sym "(%rip), %r11\n"                                                 \
      "  jmp qnl_c_settle\n"                                                                  \
      ".size " #sym ", .-" #sym "\n");
// clang-format on
