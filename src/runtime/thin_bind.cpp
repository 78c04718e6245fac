// The unbound road of a thin entry, entered from inline assembly so that the entry's
// bound road keeps its arguments in their registers and saves nothing: this routine
// keeps every argument register itself (the six integer ones and xmm0-7) across the
// binding. In: r10 the slot, r11 the symbol. Out: rax the slot's address after
// binding. Clobbers r10, r11 and the flags only.
#include "arg_registers.h"
#include "entry.h"

extern "C" QNL_HIDDEN void* qnl_rt_bind_thin_c(qnl::Slot* slot, const char* symbol) {
  return qnl::bind_thin(*slot, symbol);
}

asm(R"(
  .text
  .p2align 4
  .globl qnl_rt_bind_thin_keeping
  .hidden qnl_rt_bind_thin_keeping
  .type qnl_rt_bind_thin_keeping,@function
qnl_rt_bind_thin_keeping:
  pushq %rbp
  movq %rsp, %rbp
  andq $-16, %rsp
  pushq %rdi
  pushq %rsi
  pushq %rdx
  pushq %rcx
  pushq %r8
  pushq %r9
  subq $128, %rsp
)" QNL_ASM_SAVE_XMM_ARGS R"(  movq %r10, %rdi
  movq %r11, %rsi
  call qnl_rt_bind_thin_c
)" QNL_ASM_RESTORE_XMM_ARGS R"(  addq $128, %rsp
  popq %r9
  popq %r8
  popq %rcx
  popq %rdx
  popq %rsi
  popq %rdi
  movq %rbp, %rsp
  popq %rbp
  ret
  .size qnl_rt_bind_thin_keeping, .-qnl_rt_bind_thin_keeping
)");
