// Which of the ten kernel libraries suits a processor. The rules are kept apart
// from the instructions that ask the hardware, so a test can replay the CPUID
// answers of any processor.
#pragma once
#include <cstdint>

namespace qnl::vml {

constexpr int kKernelCount = 10;
constexpr int kNoBranch = -1;

struct CpuidRegs {
  uint32_t eax, ebx, ecx, edx;
};

// Where the answers come from: the processor itself, or a recorded table.
struct CpuSource {
  CpuidRegs (*cpuid)(const void* ctx, uint32_t leaf, uint32_t subleaf);
  uint64_t (*xcr0)(const void* ctx);
  const void* ctx;
};

// The enablement gates, one per class from SSE4.2 up; zero caps the class below it.
struct Gates {
  int32_t (*sse4_2)();
  int32_t (*avx)();
  int32_t (*avx2)();
  int32_t (*avx512)();
  int32_t (*avx512_mic)();
};

// The running processor.
const CpuSource& hardware_cpu();

// The kernel index a reproducibility setting asks for, or kNoBranch.
int branch_kernel(int32_t setting);

// The kernel index of a processor: `branch` is a kernel index or kNoBranch.
int classify(const CpuSource& cpu, const Gates& gates, int branch);

// The override's text as read from the environment, `length` as the read
// returned it; the index it names, or -1 when it names none.
int override_kernel(const char* text, int length);

}  // namespace qnl::vml
