// The LP64 road of the unchecked entries whose arguments all come in registers: each integer
// reaches the back-end as the sign extension of its low 32 bits, whatever lies above them,
// on the binding call and on the quiet road after it.
#include "blas_harness.h"

using namespace blas_test;

namespace {

bool register_only(const BlasCase& bc) {
  return std::strcmp(bc.shape, "-") == 0 && std::strlen(bc.roles) <= 6 && !std::strpbrk(bc.roles, "cx") &&
         std::strchr(bc.roles, 'i') && bc.result != 'c' && bc.result != 'z';
}

TEST(Lp64Widening, NegativeIntegersArriveSignExtendedOnEveryCall) {
  set_layer(LP64);
  set_verbose(0);
  double data[16] = {};
  int covered = 0;
  for (const BlasCase& bc : kBlasCases) {
    if (!register_only(bc)) continue;
    SCOPED_TRACE(bc.name);
    const size_t n = std::strlen(bc.roles);
    int64_t cells[6];
    void* args[6] = {};
    std::vector<int64_t> want;
    for (size_t k = 0; k < n; ++k) {
      args[k] = data;
      if (bc.roles[k] != 'i') continue;
      const int32_t low = -3 - static_cast<int32_t>(k);
      cells[k] = static_cast<int64_t>(0x5a5a5a5a00000000ull | static_cast<uint32_t>(low));
      args[k] = &cells[k];
      want.push_back(low);
    }
    // Extra register arguments are harmless to a routine that takes fewer.
    auto fn = reinterpret_cast<void (*)(void*, void*, void*, void*, void*, void*)>(entry_point(bc.name));
    const std::string sym = std::string("qnl_blas_") + bc.name;
    for (int pass = 0; pass < 2; ++pass) {
      fn(args[0], args[1], args[2], args[3], args[4], args[5]);
      const qnl_probe::Call* c = last_call_of(sym.c_str());
      ASSERT_NE(c, nullptr);
      // the stand-in records the n argument words, then the value behind each integer
      for (size_t j = 0; j < want.size(); ++j)
        EXPECT_EQ(static_cast<int64_t>(c->word[n + j]), want[j]) << "integer " << j << ", call " << pass;
    }
    ++covered;
  }
  EXPECT_GE(covered, 40) << "the level-1 routines this road serves";
}

}  // namespace
