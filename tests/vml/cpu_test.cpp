// Kernel choice from recorded CPUID answers of real processors, with their own
// vendor and with the vendor this library's kernels are built for, under gates
// and reproducibility branches; and the override's text.
#include "cpu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

using namespace qnl::vml;

namespace {

// What a processor answered: leaf 0 vendor, leaf 1 ECX, leaf 7.0 EBX, leaf
// 0x80000001 ECX, and XCR0.
struct Recorded {
  const char* what;
  const char* vendor;
  uint32_t leaf1_ecx, leaf7_ebx, ext_ecx;
  uint64_t xcr0;
  int kernel;  // the class its features deserve
};

const Recorded kProcessors[] = {
    {"SSE3, no SSSE3", "MakerOneCPUs", 0x0000441D, 0, 0x00000001, 0, 0},
    {"SSSE3", "MakerOneCPUs", 0x0000E3BD, 0, 0x00000001, 0, 3},
    {"SSE4.1", "MakerOneCPUs", 0x0008E3FD, 0, 0x00000001, 0, 4},
    {"SSE4.2", "MakerOneCPUs", 0x0098E3BD, 0, 0x00000001, 0, 5},
    {"SSE4.2 low-power core", "MakerOneCPUs", 0x43D8E3BF, 0x00002282, 0x00000101, 0, 5},
    {"AVX, AES", "MakerOneCPUs", 0x1FBAE3FF, 0, 0x00000001, 0x7, 6},
    {"AVX2, FMA, BMI, LZCNT", "MakerOneCPUs", 0x7FFAFBBF, 0x000027AB, 0x00000021, 0x7, 7},
    {"AVX2 client with MPX state", "MakerOneCPUs", 0x7FFAFBBF, 0x029C6FBF, 0x00000121, 0x1F, 7},
    {"AVX-512 F/DQ/BW/VL server", "MakerOneCPUs", 0x7FFEFBFF, 0xD39FFFFB, 0x00000121, 0x2FF, 9},
    {"AVX-512 F/PF/ER/CD many-core", "MakerOneCPUs", 0x7FF8F3BF, 0x1C0D23AB, 0x00000121, 0xE7, 8},
    {"AVX2 of another design", "MakerTwoCPUs", 0x7ED8320B, 0x219C91A9, 0x75C237FF, 0x7, 7},
    {"AVX-512 of another design", "MakerTwoCPUs", 0x7EFA320B, 0xF1BF97A9, 0x75C237FF, 0x2E7, 9},
    // The same chips as an operating system presents them.
    {"AVX2 chip, OS saves no AVX state", "MakerOneCPUs", 0x7FFAFBBF, 0x000027AB, 0x00000021, 0x3, 5},
    {"AVX2 chip, OS without XSAVE", "MakerOneCPUs", 0x77FAFBBF, 0x000027AB, 0x00000021, 0, 5},
    {"AVX-512 chip, OS saves no ZMM state", "MakerOneCPUs", 0x7FFEFBFF, 0xD39FFFFB, 0x00000121, 0x7, 7},
    {"AVX2 chip without AES", "MakerOneCPUs", 0x7DFAFBBF, 0x000027AB, 0x00000021, 0x7, 6},
    {"AVX2 chip without LZCNT", "MakerOneCPUs", 0x7FFAFBBF, 0x000027AB, 0x00000001, 0x7, 6},
};

struct Replay {
  Recorded r;
  const char* vendor;
  mutable int xgetbv_without_osxsave = 0;
};

CpuidRegs replay_cpuid(const void* ctx, uint32_t leaf, uint32_t subleaf) {
  auto* p = static_cast<const Replay*>(ctx);
  CpuidRegs regs{};
  switch (leaf) {
    case 0:
      regs.eax = 0xd;
      std::memcpy(&regs.ebx, p->vendor, 4);
      std::memcpy(&regs.edx, p->vendor + 4, 4);
      std::memcpy(&regs.ecx, p->vendor + 8, 4);
      break;
    case 1:
      regs.ecx = p->r.leaf1_ecx;
      break;
    case 7:
      regs.ebx = subleaf == 0 ? p->r.leaf7_ebx : 0;
      break;
    case 0x80000001:
      regs.ecx = p->r.ext_ecx;
      break;
  }
  return regs;
}

uint64_t replay_xcr0(const void* ctx) {
  auto* p = static_cast<const Replay*>(ctx);
  // The instruction faults where the system has not enabled it.
  if (!(p->r.leaf1_ecx & (1u << 27))) ++p->xgetbv_without_osxsave;
  return p->r.xcr0;
}

int32_t open_gate() { return 1; }
int32_t closed_gate() { return 0; }
const Gates kOpen{open_gate, open_gate, open_gate, open_gate, open_gate};

int classify_as(const Recorded& r, const char* vendor, int branch, const Gates& gates = kOpen) {
  Replay p{r, vendor};
  int k = classify(CpuSource{replay_cpuid, replay_xcr0, &p}, gates, branch);
  EXPECT_EQ(p.xgetbv_without_osxsave, 0) << r.what;
  return k;
}

constexpr const char* kOurs = "GenuineVelor";

const Recorded& row(const char* what) {
  for (const Recorded& r : kProcessors)
    if (std::string(r.what) == what) return r;
  throw std::runtime_error(what);
}

// Every recorded processor under every branch: with our vendor the lesser of the
// branch and its class (below SSSE3 only the branches to 0 and 1 are kept); with
// its own vendor no feature counts, so 0, or 1 under any branch.
TEST(VmlClassification, EveryRecordedProcessorUnderEveryBranch) {
  for (const Recorded& r : kProcessors)
    for (int b = kNoBranch; b < kKernelCount; ++b) {
      const int want = b == kNoBranch ? r.kernel : r.kernel == 0 ? (b <= 1 ? b : 0) : std::min(b, r.kernel);
      EXPECT_EQ(classify_as(r, kOurs, b), want) << r.what << " branch " << b;
      EXPECT_EQ(classify_as(r, r.vendor, b), b == kNoBranch ? 0 : 1) << r.what << " branch " << b << ", own vendor";
    }
}

// Only the low six bits count.
TEST(VmlClassification, BranchCodes) {
  const int want[14] = {-1, -1, -1, 1, 0, 0, 3, 4, 5, 6, 7, 8, 9, -1};
  for (int code = 0; code <= 13; ++code)
    for (int high : {0, 0x40, 0x7fffffc0}) EXPECT_EQ(branch_kernel(code | high), want[code]) << code << " " << high;
}

// A closed gate sends the search to the next lower rule; SSE4.1 and SSSE3 have none.
TEST(VmlClassification, GatesCapFromAbove) {
  Gates g = kOpen;
  int32_t (*Gates::*closing[])() = {&Gates::avx512, &Gates::avx2, &Gates::avx, &Gates::sse4_2};
  for (int i = 0; i < 4; ++i) {
    g.*closing[i] = closed_gate;
    EXPECT_EQ(classify_as(row("AVX-512 F/DQ/BW/VL server"), kOurs, kNoBranch, g), 7 - i) << i;
  }
  Gates mic = kOpen;
  mic.avx512_mic = closed_gate;
  EXPECT_EQ(classify_as(row("AVX-512 F/PF/ER/CD many-core"), kOurs, kNoBranch, mic), 7);
  EXPECT_EQ(classify_as(row("AVX-512 F/PF/ER/CD many-core"), kOurs, 9, mic), 7);
}

// The running processor, its vendor replaced, against the compiler's own reading.
TEST(VmlClassification, RunningProcessorAgreesWithTheCompilersFeatureTests) {
  struct Patched {
    static CpuidRegs cpuid(const void*, uint32_t leaf, uint32_t sub) {
      CpuidRegs r = hardware_cpu().cpuid(nullptr, leaf, sub);
      if (leaf == 0) {
        std::memcpy(&r.ebx, kOurs, 4);
        std::memcpy(&r.edx, kOurs + 4, 4);
        std::memcpy(&r.ecx, kOurs + 8, 4);
      }
      return r;
    }
  };
  const CpuSource patched{Patched::cpuid, hardware_cpu().xcr0, nullptr};
  int k = classify(patched, kOpen, kNoBranch);
  __builtin_cpu_init();
  bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi") &&
              __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("aes");
  bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
  // The compiler's AVX2 test leaves out LZCNT, and its AVX test the register state.
  int at_least = avx512 ? 9 : avx2 ? 6 : __builtin_cpu_supports("sse4.2") ? 5 : __builtin_cpu_supports("ssse3") ? 3 : 0;
  EXPECT_GE(k, at_least);
  if (avx512) {
    EXPECT_EQ(k, 9);
  }
  // No processor on sale carries this library's vendor string.
  EXPECT_EQ(classify(hardware_cpu(), kOpen, kNoBranch), 0);
  EXPECT_EQ(classify(hardware_cpu(), kOpen, 7), 1);
}

TEST(VmlClassification, OverrideText) {
  struct Case {
    const char* text;
    int want;
  } cases[] = {{"0", 0},   {"7", 7},   {"09", 9}, {"10", -1}, {"99", -1}, {"7x", -1},
               {"7xy", 7}, {"12x", 1}, {"x", -1}, {"", -1},   {" 7", -1}, {"9999", 9}};
  for (auto& c : cases)
    EXPECT_EQ(override_kernel(c.text, static_cast<int>(std::strlen(c.text))), c.want) << '"' << c.text << '"';
}

}  // namespace
