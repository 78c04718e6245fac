// Every vector-math entry of the table, in all eight names, on both interface
// layers: what reaches the threader (or the pack kernel), in which order the mode
// and status calls come, how long vectors are cut, and what a rejected call does.
#include "vml_harness.h"

using namespace vml_test;

namespace {

constexpr int64_t kPiece = 0x7FFFFFFF;

std::string key(const Case& c) { return std::string(c.name).substr(1); }
bool is_pack(const Case& c) { return std::string(c.group) == "pack"; }

std::vector<uintptr_t> arrays_of(const Case& c, const Sentinels& v) {
  std::vector<uintptr_t> a;
  for (size_t i = 0; i < std::strlen(c.kinds); ++i) a.push_back(c.kinds[i] == 's' ? 0 : v.array(static_cast<int>(i)));
  return a;
}

template <class T>
const T* table(const Case& c, const char* which) {
  void* lib = kernel_library();
  EXPECT_NE(lib, nullptr);
  return static_cast<const T*>(dlsym(lib, ("qnl_vml_kernel_" + key(c) + which).c_str()));
}

struct Expect {
  std::string symbol;
  std::vector<uint64_t> words;  // compared on the first words.size() words
  uint64_t mask = ~0ull;        // applied to the last word (a 32-bit width code)
};

void check_calls(const std::vector<Expect>& want, const std::string& what) {
  auto got = calls();
  ASSERT_EQ(got.size(), want.size()) << what;
  for (size_t i = 0; i < want.size(); ++i) {
    EXPECT_EQ(got[i]->symbol, want[i].symbol) << what << " call " << i;
    for (size_t k = 0; k < want[i].words.size(); ++k) {
      uint64_t m = k + 1 == want[i].words.size() ? want[i].mask : ~0ull;
      EXPECT_EQ(got[i]->word[k] & m, want[i].words[k] & m) << what << " call " << i << " word " << k;
    }
  }
}

// The calls one accepted call must make, in order, for table index `index`.
std::vector<Expect> accepted_calls(const Case& c, const Spelling& s, const Sentinels& v, int32_t index, bool ilp64,
                                   int64_t n) {
  std::vector<Expect> want;
  const auto arrays = arrays_of(c, v);
  if (s.mode) want.push_back({"qnl_vml_kernel_SetMode", {static_cast<uint32_t>(v.mode)}});
  want.push_back({"qnl_vml_kernel_GetTTableIndex", {0}});  // this library's class on any real processor
  if (c.warn && index != 2) want.push_back({"qnl_vml_kernel_SetErrStatus", {1000}});
  if (is_pack(c)) {
    const int64_t stride = ilp64 ? v.stride : static_cast<int32_t>(v.stride);
    std::vector<uint64_t> w = {static_cast<uint64_t>(index), static_cast<uint64_t>(n), arrays[0]};
    for (size_t i = 1; i < 3; ++i) w.push_back(c.kinds[i] == 'i' ? static_cast<uint64_t>(stride) : arrays[i]);
    w.push_back(ilp64 ? 2 : 1);
    want.push_back({"qnl_vml_probe_kernel", w, 0xffffffffull});
  } else {
    auto kernels = table<uint64_t>(c, "_ttab");
    auto tags = table<int32_t>(c, "_ctab");
    void* handle = kernel_library();
    for (int64_t rest = n, done = 0; rest > 0; rest -= kPiece, done += kPiece) {
      const int32_t count = rest < (int64_t{1} << 31) ? static_cast<int32_t>(rest) : kPiece;
      std::vector<uint64_t> w = {kernels[index]};
      for (uint64_t x : expected_threader_words(c, v, arrays, count, done)) w.push_back(x);
      w.push_back(static_cast<uint32_t>(tags[index]));
      w.push_back(reinterpret_cast<uint64_t>(handle));
      want.push_back({"qnl_vml_serv_threader_" + threader_of(c), w});
    }
  }
  if (s.mode) want.push_back({"qnl_vml_kernel_SetMode", {0}});  // the mode in force before the call
  return want;
}

void bring_up(int layer) {
  ASSERT_EQ(QNL_Set_Interface_Layer(layer), layer);
  qnl_test::exported_as<int()>("vmlGetMode")();
  ASSERT_NE(kernel_library(), nullptr);
}

void every_entry(int layer, int64_t n_passed, int64_t n_seen) {
  bring_up(layer);
  Sentinels v;
  v.n = n_passed;
  int covered = 0;
  for (const Case& c : vml_cases::kCases) {
    for (const Spelling& s : spellings(c)) {
      void* fn = qnl_test::exported(s.name.c_str());
      ASSERT_NE(fn, nullptr) << s.name;
      for (int32_t index = 0; index < 4; ++index) {
        qnl_probe_set_result("qnl_vml_kernel_GetTTableIndex", static_cast<uint64_t>(index));
        qnl_probe_reset();
        invoke(c, fn, s, v, arrays_of(c, v));
        check_calls(accepted_calls(c, s, v, index, layer == 1, n_seen), s.name + " index " + std::to_string(index));
        if (::testing::Test::HasFailure()) return;
      }
      ++covered;
    }
  }
  EXPECT_EQ(covered, 8 * static_cast<int>(std::size(vml_cases::kCases)));
  EXPECT_EQ(covered + vml_cases::kServiceNames, 1504);
}

TEST(VmlEntries, EveryNameOnTheLP64LayerReadsTheLowHalfOfTheCount) {
  // The high half of a count given by value or by reference is ignored.
  every_entry(0, static_cast<int64_t>(0xABCD000000000005ull), 5);
}

TEST(VmlEntries, EveryNameOnTheILP64Layer) { every_entry(1, 5, 5); }

// Counts a 32-bit kernel cannot describe go in pieces of at most 0x7FFFFFFF, each
// array advanced by its own element size; the pack frame makes one call.
TEST(VmlEntries, LongVectorsInPiecesOnTheILP64Layer) {
  bring_up(1);
  qnl_probe_set_result("qnl_vml_kernel_GetTTableIndex", 2);
  for (int64_t n : {kPiece, kPiece + 1, 2 * kPiece + 3}) {
    Sentinels v;
    v.n = n;
    for (const Case& c : vml_cases::kCases) {
      for (const Spelling& s : {spellings(c)[0], spellings(c)[5]}) {
        qnl_probe_reset();
        invoke(c, qnl_test::exported(s.name.c_str()), s, v, arrays_of(c, v));
        check_calls(accepted_calls(c, s, v, 2, true, n), s.name + " n=" + std::to_string(n));
        if (::testing::Test::HasFailure()) return;
      }
    }
  }
  // 0x80000000 elements of vdExp: two threader calls, counts 0x7FFFFFFF and 1.
  qnl_probe_reset();
  auto* p = reinterpret_cast<double*>(0x7f0000100000ull);  // never read: the probe's threader computes nothing
  qnl_test::exported_as<void(int64_t, const double*, double*)>("vdExp")(int64_t{1} << 31, p, p);
  ASSERT_EQ(qnl_probe_count_of("qnl_vml_serv_threader_d_1i_1o"), 2);
  EXPECT_EQ(static_cast<uint32_t>(qnl_probe_call(-2)->word[1]), 0x7FFFFFFFu);
  EXPECT_EQ(static_cast<uint32_t>(qnl_probe_call(-1)->word[1]), 1u);
  EXPECT_EQ(qnl_probe_call(-1)->word[2] - qnl_probe_call(-2)->word[2], 8ull * 0x7FFFFFFF);
}

// Null arrays, negative and zero counts: the report, the status, and nothing else.
void rejections(int layer) {
  bring_up(layer);
  Sentinels v;
  for (const Case& c : vml_cases::kCases) {
    for (const Spelling& s : {spellings(c)[1], spellings(c)[3]}) {
      void* fn = qnl_test::exported(s.name.c_str());
      const auto full = arrays_of(c, v);
      // n = 0 with every pointer null: no call at all, not even to the status.
      v.n = 0;
      qnl_probe_reset();
      invoke(c, fn, s, v, std::vector<uintptr_t>(full.size(), 0));
      EXPECT_EQ(qnl_probe_count(), 0) << s.name;
      // n = -1 with a null first array reports position 1, not 2.
      v.n = -1;
      qnl_probe_reset();
      auto no_a = full;
      no_a[0] = 0;
      invoke(c, fn, s, v, no_a);
      ASSERT_EQ(reports().size(), 1u) << s.name;
      EXPECT_EQ(reports()[0].number, 1);
      EXPECT_EQ(reports()[0].name, c.name) << "every body reports the plain C name";
      EXPECT_EQ(reports()[0].length, static_cast<int32_t>(std::strlen(c.name)));
      EXPECT_EQ(qnl_probe_count_of("qnl_vml_kernel_SetErrStatus"), 1);
      EXPECT_EQ(last_status_set(), -1);
      EXPECT_EQ(qnl_probe_count_of("qnl_vml_kernel_SetMode"), 0) << "a rejected call leaves the mode alone";
      v.n = 5;
      for (size_t i = 0; i < full.size() && !is_pack(c); ++i) {
        if (c.kinds[i] != 'a') continue;
        auto holed = full;
        holed[i] = 0;
        qnl_probe_reset();
        invoke(c, fn, s, v, holed);
        // Positions follow the declared order; both outputs of a two-result function say 3.
        const int32_t position = std::string(c.group) == "tworesult" && i == 2 ? 3 : static_cast<int32_t>(i) + 2;
        ASSERT_EQ(reports().size(), 1u) << s.name << " null " << i;
        EXPECT_EQ(reports()[0].number, position) << s.name << " null " << i;
        EXPECT_EQ(last_status_set(), -2);
        EXPECT_EQ(qnl_probe_count_of("qnl_vml_kernel_SetMode"), 0);
        EXPECT_EQ(qnl_probe_count_of("qnl_vml_kernel_GetTTableIndex"), 0);
      }
      if (::testing::Test::HasFailure()) return;
    }
  }
}

TEST(VmlEntries, RejectionsOnTheLP64Layer) { rejections(0); }
TEST(VmlEntries, RejectionsOnTheILP64Layer) { rejections(1); }

TEST(VmlEntries, ZeroCountLoadsNothing) {
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  qnl_test::exported_as<void(int64_t, const double*, double*)>("vdExp")(0, nullptr, nullptr);
  // A count whose low half is zero is zero on this layer.
  qnl_test::exported_as<void(int64_t, const double*, double*)>("vdExp")(int64_t{1} << 32, nullptr, nullptr);
  EXPECT_EQ(kernel_library(), nullptr);
  EXPECT_EQ(qnl_probe_count(), 0);
}

// A mode form restores the mode it found, also over a change made during the call.
TEST(VmlEntries, ModeFormRestoresTheModeItFound) {
  bring_up(0);
  auto set_mode = qnl_test::exported_as<int(int)>("vmlSetMode");
  auto get_mode = qnl_test::exported_as<int()>("vmlGetMode");
  set_mode(0x12);
  qnl_probe_set_hook([](const char* symbol, const uint64_t*, int) {
    if (std::strncmp(symbol, "qnl_vml_serv_threader_", 22) == 0) qnl_test::exported_as<int(int)>("vmlSetMode")(0x55);
  });
  double a[2] = {1, 2}, b[2] = {3, 4}, y[2];
  qnl_test::exported_as<void(int64_t, const double*, const double*, double*, int)>("vmdAdd")(2, a, b, y, 0x33);
  qnl_probe_set_hook(nullptr);
  EXPECT_EQ(get_mode(), 0x12);
}

}  // namespace
