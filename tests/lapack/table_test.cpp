// Every routine of the LAPACK tables, called through its exported spellings on
// both integer interfaces with sentinel arguments: the back-end must receive
// the right symbol, the caller's addresses or widened locals as the classes
// say, one length 1 per character argument, and the caller must get back the
// low halves of what the back-end wrote, no more and no less.
#include <cctype>
#include <cstdio>
#include <string>

#include "lapack_support.h"

namespace lapack_test {
namespace {

int chars(const Case& c) {
  int n = 0;
  for (int k = 0; k < c.nargs; ++k) n += c.args[k].cls[0] == 'c';
  return n;
}

// Elements of array argument k that the caller gets back.
int64_t copied_back(const ArgCase& a, const Config& f) {
  if (!f.referenced) return 0;
  std::string cls = a.cls;
  if (cls == "iw") return 1;
  if (cls == "io" || cls == "iio" || cls == "lw") return f.keep > 0 ? f.keep : 0;
  return 0;
}

constexpr uint64_t kIntResult = 0xC3C3C3C300000042ull;

void check_call(const Case& c, int cfg, bool lp64) {
  Call call(c, cfg, lp64);
  uint64_t want = c.result == 's' ? bits(1.5f) : c.result == 'd' ? bits(2.5) : kIntResult;
  if (c.result != '-') qnl_probe_set_result(c.symbol, want);  // the probe keeps 256 answers
  int allocations = qnl_probe_allocations();
  int first_record = qnl_probe_count();
  uint64_t hi = 0;
  uint64_t got = call.run(c.name, &hi);
  Seen& s = seen();
  ASSERT_TRUE(s.called) << "the back-end was not reached";
  // The plain symbol: no size here reaches an offload threshold.
  int lapack_calls = 0;
  for (int i = first_record; i < qnl_probe_count(); ++i) {
    const char* sym = qnl_probe_call(i)->symbol;
    if (!std::strncmp(sym, "qnl_lapack_", 11)) {
      ++lapack_calls;
      EXPECT_STREQ(sym, c.symbol);
    }
  }
  EXPECT_EQ(lapack_calls, 1);

  int first = c.offset + (c.result == 'a' ? 1 : 0);
  int nchar = chars(c);
  ASSERT_EQ(static_cast<int>(s.words.size()), first + c.nargs + nchar);
  for (int j = 0; j < nchar; ++j) EXPECT_EQ(s.words[first + c.nargs + j], 1u) << "hidden length " << j;
  if (c.result == 'a') {
    EXPECT_EQ(s.words[0], reinterpret_cast<uint64_t>(call.result_char));
    EXPECT_EQ(s.words[1], 1u);
  }

  std::vector<uint64_t> heap_sizes;
  for (int k = 0; k < c.nargs; ++k) {
    SCOPED_TRACE("argument " + std::to_string(k) + " (" + c.args[k].cls + ")");
    const ArgCase& a = c.args[k];
    const Config& f = a.cfg[cfg];
    const uint64_t w = s.words[first + k];
    const auto caller = reinterpret_cast<uint64_t>(call.arg(k));
    std::string cls = a.cls;
    if (!lp64) {
      // ILP64: the caller's addresses, unchanged, and outputs written in place.
      EXPECT_EQ(w, caller);
      if (cls == "o") {
        EXPECT_EQ(call.int64_at(k), written_scalar(k));
      }
      continue;
    }
    if (cls == "c" || cls == "p" || cls == "f") {
      EXPECT_EQ(w, caller);
    } else if (cls == "i" || cls == "o") {
      EXPECT_NE(w, caller);
      EXPECT_EQ(s.scalar[k], f.widened);
      if (cls == "o") {
        int32_t expect = f.referenced ? static_cast<int32_t>(written_scalar(k)) : static_cast<int32_t>(f.caller);
        EXPECT_EQ(call.int32_at(k), expect) << "narrowed output";
        EXPECT_EQ(static_cast<uint64_t>(call.int64_at(k)) >> 32, 0xF1F1F1F1u) << "beyond the caller's 32 bits";
      }
    } else {
      if (!f.referenced) {
        EXPECT_EQ(w, 0u) << "an unreferenced array goes as null";
      } else {
        EXPECT_NE(w, 0u);
        EXPECT_NE(w, caller);
        if (f.length > 16) heap_sizes.push_back(static_cast<uint64_t>(f.length) * 8);
        if (cls == "ii" || cls == "iio") {
          ASSERT_EQ(static_cast<int64_t>(s.array[k].size()), f.length < 0 ? 0 : std::min<int64_t>(f.length, 64));
          for (size_t i = 0; i < s.array[k].size(); ++i) EXPECT_EQ(s.array[k][i], pattern(k, i)) << "element " << i;
        }
      }
      int64_t back = copied_back(a, f);
      for (int64_t i = 0; i < back; ++i)
        ASSERT_EQ(call.int32_at(k, i), static_cast<int32_t>(written_element(k, i))) << "element " << i;
      for (int64_t i = back; i < back + 8; ++i) ASSERT_EQ(call.int32_at(k, i), pattern(k, i)) << "element " << i;
    }
  }
  // Scratch above 16 elements: one block per array, 8 bytes an element, alignment 128; all freed.
  std::vector<uint64_t> asked;
  for (int i = first_record; i < qnl_probe_count(); ++i) {
    const qnl_probe::Call* rec = qnl_probe_call(i);
    if (!std::strcmp(rec->symbol, "qnl_serv_allocate")) {
      asked.push_back(rec->word[0]);
      EXPECT_EQ(rec->word[1], 128u);
    }
  }
  EXPECT_EQ(asked, heap_sizes);
  EXPECT_EQ(qnl_probe_allocations() - allocations, static_cast<int>(heap_sizes.size()));
  EXPECT_EQ(qnl_probe_live_allocations(), 0);

  switch (c.result) {
    case 'i':
    case 'l':
      EXPECT_EQ(got, kIntResult) << "integer results are not narrowed";
      break;
    case 's':
      EXPECT_EQ(static_cast<uint32_t>(got), static_cast<uint32_t>(bits(1.5f)));
      break;
    case 'd':
      EXPECT_EQ(got, bits(2.5));
      break;
    case 'c':
      EXPECT_EQ(static_cast<uint32_t>(got), static_cast<uint32_t>(bits(1.5f)));
      EXPECT_EQ(static_cast<uint32_t>(hi), static_cast<uint32_t>(bits(-2.5f)));
      break;
    case 'z':
      EXPECT_EQ(got, bits(1.5));
      EXPECT_EQ(hi, bits(-2.5));
      break;
    default:
      break;
  }
}

class Layers : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    set_layer(GetParam());
    install_hook();
  }
};

TEST_P(Layers, EveryRoutineMarshalsAsItsClassesSay) {
  const bool lp64 = GetParam();
  int covered = 0, failing = 0;
  for (int i = 0; i < kCaseCount; ++i) {
    const Case& c = kCases[i];
    SCOPED_TRACE(c.name);
    bool before = HasFailure();
    for (int cfg : {kHolds, kFails, kQuery}) {
      if (cfg == kQuery && !c.has_query) continue;
      if (cfg == kFails && !lp64) continue;  // conditions are not looked at on ILP64
      SCOPED_TRACE(cfg == kHolds ? "conditions hold" : cfg == kFails ? "conditions fail" : "size query");
      check_call(c, cfg, lp64);
    }
    if (HasFailure() && !before) {
      if (++failing > 20) FAIL() << "stopping after 20 failing routines";
    } else if (!HasFailure()) {
      ++covered;
    }
  }
  std::printf("%s: %d of %d routines marshal as their classes say\n", lp64 ? "LP64" : "ILP64", covered, kCaseCount);
  RecordProperty("covered", covered);
  EXPECT_EQ(covered, kCaseCount);
}

TEST(Spellings, EveryRoutineIsOneBody) {
  for (int i = 0; i < kCaseCount; ++i) qnl_test::expect_fortran_spellings(kCases[i].name);
}

INSTANTIATE_TEST_SUITE_P(Lapack, Layers, ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool>& p) { return p.param ? "LP64" : "ILP64"; });

}  // namespace
}  // namespace lapack_test
