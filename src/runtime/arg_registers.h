// Assembly text that keeps the vector argument registers xmm0-7 in the 128 bytes
// at the stack pointer around a call, for the routines that bind or settle on the
// caller's behalf and must hand every argument register back unchanged.
#pragma once

#define QNL_ASM_SAVE_XMM_ARGS       \
  "  movdqu %xmm0, 0(%rsp)\n"   \
  "  movdqu %xmm1, 16(%rsp)\n"  \
  "  movdqu %xmm2, 32(%rsp)\n"  \
  "  movdqu %xmm3, 48(%rsp)\n"  \
  "  movdqu %xmm4, 64(%rsp)\n"  \
  "  movdqu %xmm5, 80(%rsp)\n"  \
  "  movdqu %xmm6, 96(%rsp)\n"  \
  "  movdqu %xmm7, 112(%rsp)\n"

#define QNL_ASM_RESTORE_XMM_ARGS    \
  "  movdqu 0(%rsp), %xmm0\n"   \
  "  movdqu 16(%rsp), %xmm1\n"  \
  "  movdqu 32(%rsp), %xmm2\n"  \
  "  movdqu 48(%rsp), %xmm3\n"  \
  "  movdqu 64(%rsp), %xmm4\n"  \
  "  movdqu 80(%rsp), %xmm5\n"  \
  "  movdqu 96(%rsp), %xmm6\n"  \
  "  movdqu 112(%rsp), %xmm7\n"
