// The shared road of every C-layer selector (c_select.h) that finds the interface layer
// unset: the layer is settled under the binding lock, then the selector runs again.
#include "c_select.h"

#include <cstddef>

#include "arg_registers.h"
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
)" QNL_ASM_SAVE_XMM_ARGS R"(  call qnl_c_settle_layer
)" QNL_ASM_RESTORE_XMM_ARGS R"(  addq $136, %rsp
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
