// The quiet roads of the gemm-shaped entries have their checker's tests written out in
// assembly, at both widths; with verbose on, the same entry runs the compiled checker. On
// every input both must leave the same records: the report, or the words the back-end
// received (on LP64 the values behind the integers, not the addresses of the widened words).
#include <random>
#include <set>

#include "blas_harness.h"

using namespace blas_test;

namespace {

template <class I>
using Gemm = void (*)(const char*, const char*, const I*, const I*, const I*, const void*, const void*, const I*,
                      const void*, const I*, const void*, void*, const I*, size_t, size_t);
constexpr bool kIntegerArg[13] = {0, 0, 1, 1, 1, 0, 0, 1, 0, 1, 0, 0, 1};

// Every word the probe recorded for the call but the address of the report's number cell,
// and the report number (0 for none).
template <class I>
std::pair<std::vector<uint64_t>, int32_t> call(Gemm<I> f, const char* ta, const char* tb, const I* v) {
  static double data[64];
  qnl_probe_reset();
  f(ta, tb, &v[0], &v[1], &v[2], data, data, &v[3], data, &v[4], data, data, &v[5], 9, 9);
  std::pair<std::vector<uint64_t>, int32_t> out{{}, 0};
  for (int i = 0; i < qnl_probe_count(); ++i) {
    const qnl_probe::Call* c = qnl_probe_call(i);
    const bool report = std::strcmp(c->symbol, "qnl_serv_xerbla") == 0;
    const bool widened = sizeof(I) == 4 && std::strncmp(c->symbol, "qnl_blas_", 9) == 0;
    for (int k = 0; k < c->nwords; ++k)
      if (!(report && k == 1) && !(widened && k < 13 && kIntegerArg[k])) out.first.push_back(c->word[k]);
    if (report) out.second = static_cast<int32_t>(c->word[3]);
  }
  return out;
}

template <class I>
void answers_as_the_checker(Layer layer, const std::vector<I>& sizes) {
  set_layer(layer);
  const char* letters[] = {"N", "n", "T", "t", "C", "c", "X", " "};
  std::mt19937 rng(14);
  auto pick = [&](auto& table) { return table[rng() % std::size(table)]; };
  int gemms = 0;
  for (const BlasCase& bc : kBlasCases) {
    if (std::strcmp(bc.shape, "gemm") != 0) continue;
    auto f = reinterpret_cast<Gemm<I>>(entry_point(bc.name));
    const I valid[] = {2, 2, 2, 2, 2, 2};
    set_verbose(0);
    call(f, "N", "N", valid);  // binds the slot: the quiet road runs from here on
    std::set<int32_t> seen;
    for (int i = 0; i < 1500; ++i) {
      const char *ta = pick(letters), *tb = pick(letters);
      I v[6];
      for (I& x : v) x = pick(sizes);
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

// The layer is settled once per process, and each test runs in a process of its own.
TEST(GemmRoad, AnswersAsTheCheckerOnEveryIlp64Input) {
  answers_as_the_checker<int64_t>(ILP64, {-1, 0, 1, 2, 3, (int64_t{1} << 32) + 1, 0xffffffffll, INT64_MIN});
}
TEST(GemmRoad, AnswersAsTheCheckerOnEveryLp64Input) {
  answers_as_the_checker<int32_t>(LP64, {-1, 0, 1, 2, 3, INT32_MAX, INT32_MIN, -2});
}

}  // namespace
