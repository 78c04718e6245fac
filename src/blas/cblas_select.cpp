// The shared pieces of the CBLAS selectors and the report routines of the C layer.
#include <cstddef>
#include <cstdint>

#include "entry.h"
#include "report.h"
#include "services_gen.h"

static_assert(offsetof(qnl::RuntimeState, interface_layer) == 8,
              "the CBLAS selectors read the interface layer at offset 8 of qnl::g_state");

extern "C" QNL_HIDDEN void qnl_cblas_settle_layer() { qnl::settle_interface_layer(); }

// Entered by a jump from a selector that found the layer unset, with the selector's address
// in r11: saves every argument register, settles the layer, restores them and goes back.
// 8 pushes and 136 bytes keep the stack 16-byte aligned at the call.
asm(R"(
  .text
  .p2align 4
  .globl qnl_cblas_settle
  .hidden qnl_cblas_settle
  .type qnl_cblas_settle,@function
qnl_cblas_settle:
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
  call qnl_cblas_settle_layer
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
  .size qnl_cblas_settle, .-qnl_cblas_settle
)");

extern "C" {

// The number goes to the error routine widened to 64 bits.
QNL_HIDDEN void cblas_report_parameter(const char* name, int32_t number) {
  qnl::report(name, qnl::name_length(name), int64_t{number});
}

QNL_HIDDEN void cblas_report_no_memory(const char* name) {
  qnl::report(name, qnl::name_length(name), int64_t{qnl::kReportCblasNoMemory});
}
}
