#include "cpu.h"

#include <cpuid.h>

#include <cstring>

namespace qnl::vml {
namespace {

CpuidRegs hardware_cpuid(const void*, uint32_t leaf, uint32_t subleaf) {
  CpuidRegs r{};
  __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
  return r;
}

uint64_t hardware_xcr0(const void*) {
  uint32_t lo, hi;
  __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (static_cast<uint64_t>(hi) << 32) | lo;
}

bool all(uint64_t value, uint64_t mask) { return (value & mask) == mask; }

// Every test asks the processor afresh and looks at no maximum leaf first. The
// register-state word is read only after leaf 1 has shown that the operating
// system exposes it (OSXSAVE is part of every mask that precedes it).
struct Tests {
  const CpuSource& cpu;

  CpuidRegs leaf(uint32_t l, uint32_t sub = 0) const { return cpu.cpuid(cpu.ctx, l, sub); }

  bool vendor() const {
    CpuidRegs r = leaf(0);
    char name[12];
    std::memcpy(name, &r.ebx, 4);
    std::memcpy(name + 4, &r.edx, 4);
    std::memcpy(name + 8, &r.ecx, 4);
    return std::memcmp(name, "GenuineVelor", 12) == 0;
  }
  bool avx512(uint32_t leaf7_mask) const {
    return all(leaf(1).ecx, 0x18000000) && all(cpu.xcr0(cpu.ctx), 0xE6) && all(leaf(7).ebx, leaf7_mask);
  }
  bool avx512_server() const { return avx512(0xC0030000); }
  bool avx512_many_core() const { return avx512(0x1C010000); }
  bool avx2() const {
    // AES and LZCNT are part of the class: a processor without them runs the AVX kernels.
    return all(leaf(1).ecx, 0x1A001000) && all(leaf(7).ebx, 0x128) && all(leaf(0x80000001).ecx, 0x20) &&
           all(cpu.xcr0(cpu.ctx), 0x6);
  }
  bool avx() const { return all(leaf(1).ecx, 0x18000000) && all(cpu.xcr0(cpu.ctx), 0x6); }
  bool sse4_2() const { return all(leaf(1).ecx, 1u << 20); }
  bool sse4_1() const { return all(leaf(1).ecx, 1u << 19); }
  bool ssse3() const { return all(leaf(1).ecx, 1u << 9); }
};

}  // namespace

const CpuSource& hardware_cpu() {
  static const CpuSource source{hardware_cpuid, hardware_xcr0, nullptr};
  return source;
}

int branch_kernel(int32_t setting) {
  if (setting == 1) return kNoBranch;
  switch (setting & 0x3f) {
    case 3:
      return 1;
    case 4:
    case 5:
      return 0;
    case 6:
      return 3;
    case 7:
      return 4;
    case 8:
      return 5;
    case 9:
      return 6;
    case 10:
      return 7;
    case 11:
      return 8;
    case 12:
      return 9;
    default:
      return kNoBranch;
  }
}

int classify(const CpuSource& cpu, const Gates& gates, int branch) {
  Tests t{cpu};
  // Another vendor's processor is never tested for features: the default
  // library, or the reproducible one under any branch.
  if (!t.vendor()) return branch == kNoBranch ? 0 : 1;
  struct Rule {
    bool (Tests::*test)() const;
    int32_t (*gate)();
    int kernel;
  };
  const Rule rules[] = {
      {&Tests::avx512_server, gates.avx512, 9},
      {&Tests::avx512_many_core, gates.avx512_mic, 8},
      {&Tests::avx2, gates.avx2, 7},
      {&Tests::avx, gates.avx, 6},
      {&Tests::sse4_2, gates.sse4_2, 5},
      {&Tests::sse4_1, nullptr, 4},
      {&Tests::ssse3, nullptr, 3},
  };
  for (const Rule& r : rules) {
    // A test that holds under a closed gate goes on to the next lower class.
    if (!(t.*r.test)() || (r.gate && r.gate() == 0)) continue;
    if (branch == kNoBranch) return r.kernel;
    return branch < r.kernel ? branch : r.kernel;
  }
  return branch == 0 || branch == 1 ? branch : 0;
}

int override_kernel(const char* text, int length) {
  auto digit = [](char c) { return c >= '0' && c <= '9'; };
  if (!digit(text[0])) return -1;
  int value = text[0] - '0';
  if (length == 2) {
    if (!digit(text[1])) return -1;
    value = value * 10 + (text[1] - '0');
  }
  return value > 9 ? -1 : value;
}

}  // namespace qnl::vml
