// LP64, unchecked entries with every argument in a register: each integer reaches the
// back-end sign-extended from its low 32 bits, on the binding call and on the quiet road.
#include "blas_harness.h"

using namespace blas_test;

TEST(Lp64Widening, NegativeIntegersArriveSignExtendedOnEveryCall) {
  set_layer(LP64);
  double data[16] = {};
  int covered = 0;
  for (const BlasCase& bc : kBlasCases) {
    const size_t n = std::strlen(bc.roles);
    if (std::strcmp(bc.shape, "-") || n > 6 || std::strpbrk(bc.roles, "cx") || !std::strchr(bc.roles, 'i') ||
        bc.result == 'c' || bc.result == 'z')
      continue;
    int64_t cells[6];  // low half negative, upper half not its sign
    void* a[6] = {data, data, data, data, data, data};
    for (size_t k = 0; k < n; ++k)
      if (bc.roles[k] == 'i') a[k] = &(cells[k] = 0x5a5a5a5a00000000 | static_cast<uint32_t>(-3 - int(k)));
    auto fn = reinterpret_cast<void (*)(void*, void*, void*, void*, void*, void*)>(entry_point(bc.name));
    for (int pass = 0; pass < 2; ++pass) {
      fn(a[0], a[1], a[2], a[3], a[4], a[5]);  // extra register arguments are harmless
      const qnl_probe::Call* c = last_call_of(("qnl_blas_" + std::string(bc.name)).c_str());
      ASSERT_NE(c, nullptr) << bc.name;
      // the stand-in records the n argument words, then the value behind each integer
      for (size_t k = 0, j = n; k < n; ++k)
        if (bc.roles[k] == 'i') {
          EXPECT_EQ(static_cast<int64_t>(c->word[j++]), -3 - int(k)) << bc.name << pass;
        }
    }
    ++covered;
  }
  EXPECT_GE(covered, 40) << "the level-1 routines this road serves";
}
