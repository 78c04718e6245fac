// The ILP64 quiet road of the gemm-shaped entries has its checker's tests written out in
// assembly; with verbose on, the same entry runs the compiled checker. On every input both
// must leave the same records: the report, or the words the back-end received.
#include <random>
#include <set>

#include "blas_harness.h"

using namespace blas_test;

namespace {

using Gemm = void (*)(const char*, const char*, const int64_t*, const int64_t*, const int64_t*, const void*,
                      const void*, const int64_t*, const void*, const int64_t*, const void*, void*, const int64_t*,
                      size_t, size_t);

// Every word the probe recorded for the call but the address of the report's number cell,
// and the report number (0 for none).
std::pair<std::vector<uint64_t>, int32_t> call(Gemm f, const char* ta, const char* tb, const int64_t* v) {
  static double data[64];
  qnl_probe_reset();
  f(ta, tb, &v[0], &v[1], &v[2], data, data, &v[3], data, &v[4], data, data, &v[5], 9, 9);
  std::pair<std::vector<uint64_t>, int32_t> out{{}, 0};
  for (int i = 0; i < qnl_probe_count(); ++i) {
    const qnl_probe::Call* c = qnl_probe_call(i);
    const bool report = std::strcmp(c->symbol, "qnl_serv_xerbla") == 0;
    for (int k = 0; k < c->nwords; ++k)
      if (!report || k != 1) out.first.push_back(c->word[k]);
    if (report) out.second = static_cast<int32_t>(c->word[3]);
  }
  return out;
}

TEST(GemmRoad, AnswersAsTheCheckerOnEveryInput) {
  set_layer(ILP64);
  const char* letters[] = {"N", "n", "T", "t", "C", "c", "X", " "};
  const int64_t sizes[] = {-1, 0, 1, 2, 3, (int64_t{1} << 32) + 1, 0xffffffffll, INT64_MIN};
  std::mt19937 rng(14);
  auto pick = [&](auto& table) { return table[rng() % std::size(table)]; };
  int gemms = 0;
  for (const BlasCase& bc : kBlasCases) {
    if (std::strcmp(bc.shape, "gemm") != 0) continue;
    auto f = reinterpret_cast<Gemm>(entry_point(bc.name));
    const int64_t valid[] = {2, 2, 2, 2, 2, 2};
    set_verbose(0);
    call(f, "N", "N", valid);  // binds the slot: the quiet road runs from here on
    std::set<int32_t> seen;
    for (int i = 0; i < 1500; ++i) {
      const char *ta = pick(letters), *tb = pick(letters);
      int64_t v[6];
      for (int64_t& x : v) x = pick(sizes);
      set_verbose(0);
      const auto quiet = call(f, ta, tb, v);
      set_verbose(1);
      ASSERT_EQ(quiet, call(f, ta, tb, v)) << bc.name << " " << ta << tb << " " << v[0] << " " << v[1] << " " << v[2]
                                           << " " << v[3] << " " << v[4] << " " << v[5];
      seen.insert(quiet.second);
    }
    EXPECT_EQ(seen, (std::set<int32_t>{0, 1, 2, 3, 4, 5, 8, 10, 13}))
        << bc.name << ": the sample reaches every outcome";
    ++gemms;
  }
  EXPECT_EQ(gemms, 8);
}

}  // namespace
