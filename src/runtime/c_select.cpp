// The shared road of every C-layer selector (c_select.h) that finds the interface layer
// unset: the layer is settled under the binding lock, then the selector runs again.
#include "c_select.h"

#include <cstddef>

#include "entry.h"

static_assert(offsetof(QnlRuntimeState, interface_layer) == QNL_C_SELECTOR_LAYER_OFFSET,
              "the C-layer selectors read the interface layer at this offset of qnl_rt_state");

extern "C" QNL_HIDDEN void qnl_c_settle_layer() { qnl::settle_interface_layer(); }

// Entered by a jump from a selector that found the layer unset, with the selector's address
// in r11: saves every argument register, settles the layer, restores them and goes back.
// 8 pushes and 136 bytes keep the stack 16-byte aligned at the call.
asm(R"(
  .text
  .p2align 4
  .globl qnl_c_settle
  .hidden qnl_c_settle
  .type qnl_c_settle,@function
qnl_c_settle:
  pushq %rdi
  pushq %rsi
  pushq %rdx
  pushq %rcx
  pushq %r8
  pushq %r9
  pushq %r11
  pushq %rax
  subq $136, %rsp
  movdqu %xmm0, 0(%rsp)
  movdqu %xmm1, 16(%rsp)
  movdqu %xmm2, 32(%rsp)
  movdqu %xmm3, 48(%rsp)
  movdqu %xmm4, 64(%rsp)
  movdqu %xmm5, 80(%rsp)
  movdqu %xmm6, 96(%rsp)
  movdqu %xmm7, 112(%rsp)
  call qnl_c_settle_layer
  movdqu 0(%rsp), %xmm0
  movdqu 16(%rsp), %xmm1
  movdqu 32(%rsp), %xmm2
  movdqu 48(%rsp), %xmm3
  movdqu 64(%rsp), %xmm4
  movdqu 80(%rsp), %xmm5
  movdqu 96(%rsp), %xmm6
  movdqu 112(%rsp), %xmm7
  addq $136, %rsp
  popq %rax
  popq %r11
  popq %r9
  popq %r8
  popq %rcx
  popq %rdx
  popq %rsi
  popq %rdi
  jmp *%r11
  .size qnl_c_settle, .-qnl_c_settle
)");
