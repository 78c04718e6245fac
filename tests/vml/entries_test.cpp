// Every vector-math entry of the generated list, in all eight names, on both
// interface layers: what reaches the threader (or the pack kernel), in which order
// the mode and status calls come, how long vectors are cut, and what a rejected
// call does.
#include "vml_harness.h"

using namespace vml_test;

namespace {

constexpr int64_t kPiece = 0x7FFFFFFF;

bool is_pack(const VmlCase& c) { return !*c.threader; }

template <class T>
const T* table(const VmlCase& c, const char* which) {
  return static_cast<const T*>(dlsym(kernel_library(), ("qnl_vml_kernel_" + std::string(c.name + 1) + which).c_str()));
}

struct Expect {
  std::string symbol;
  std::vector<uint64_t> words;  // compared on the first words.size() words
  uint64_t mask = ~0ull;        // applied to the last word (a 32-bit width code)
};

void check_calls(const std::vector<Expect>& want, const std::string& what) {
  ASSERT_EQ(qnl_probe_count(), static_cast<int>(want.size())) << what;
  for (size_t i = 0; i < want.size(); ++i) {
    const qnl_probe::Call* got = qnl_probe_call(static_cast<int>(i));
    EXPECT_EQ(got->symbol, want[i].symbol) << what << " call " << i;
    for (size_t k = 0; k < want[i].words.size(); ++k) {
      const uint64_t m = k + 1 == want[i].words.size() ? want[i].mask : ~0ull;
      EXPECT_EQ(got->word[k] & m, want[i].words[k] & m) << what << " call " << i << " word " << k;
    }
  }
}

// The calls one accepted call must make, in order, for table index `index`: the
// mode set, the index asked, the warning off the HA table, the threader once per
// piece of at most 0x7FFFFFFF (every array advanced by its own element size) or the
// pack kernel once, the mode put back.
std::vector<Expect> accepted_calls(const VmlCase& c, const Spelling& s, const Sentinels& v, int32_t index, bool ilp64,
                                   int64_t n) {
  std::vector<Expect> want;
  if (s.mode) want.push_back({"qnl_vml_kernel_SetMode", {static_cast<uint32_t>(v.mode)}});
  want.push_back({"qnl_vml_kernel_GetTTableIndex", {0}});  // this library's class on any real processor
  if (c.warn && index != 2) want.push_back({"qnl_vml_kernel_SetErrStatus", {1000}});
  if (is_pack(c)) {
    const int64_t stride = ilp64 ? v.stride : static_cast<int32_t>(v.stride);
    std::vector<uint64_t> w = {static_cast<uint64_t>(index), static_cast<uint64_t>(n)};
    for (size_t i = 0; c.args[i]; ++i) w.push_back(c.args[i] == 'i' ? static_cast<uint64_t>(stride) : v.arrays[i]);
    w.push_back(ilp64 ? 2 : 1);
    want.push_back({"qnl_vml_probe_kernel", w, 0xffffffffull});
  } else {
    for (int64_t rest = n, done = 0; rest > 0; rest -= kPiece, done += kPiece) {
      std::vector<uint64_t> w = {table<uint64_t>(c, "_ttab")[index], static_cast<uint64_t>(std::min(rest, kPiece))};
      for (size_t i = 0; c.args[i]; ++i) {
        if (c.args[i] != 'a') {
          w.push_back(v.arrays[i] + static_cast<uint64_t>(done * size_of(c, c.args[i])));
        } else {
          w.push_back(v.scalars[i][0]);
          if (size_of(c, 'a') == 16) w.push_back(v.scalars[i][1]);
        }
      }
      w.push_back(static_cast<uint32_t>(table<int32_t>(c, "_ctab")[index]));
      w.push_back(reinterpret_cast<uint64_t>(kernel_library()));
      want.push_back({c.threader, w});
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

// The threader's name tells its shape: <input type>[_<scalar>]_<k>i[_<output type>]_<m>o,
// k inputs (arrays and scalars) and m output arrays of the function's letters.
TEST(VmlEntries, EachThreaderNamesTheShapeOfItsFunctions) {
  for (const VmlCase& c : kVmlCases) {
    if (is_pack(c)) continue;
    const std::string args = c.args, thr = c.threader;
    const auto inputs = std::count_if(args.begin(), args.end(), [](char l) { return std::strchr("era", l); });
    const auto outputs = std::count_if(args.begin(), args.end(), [](char l) { return std::strchr("yw", l); });
    EXPECT_NE(thr.find("_" + std::to_string(inputs) + "i_"), std::string::npos) << c.name << " " << thr;
    EXPECT_EQ(thr.substr(thr.size() - 3), "_" + std::to_string(outputs) + "o") << c.name << " " << thr;
    const char in = args[0] == 'r' ? (c.name[1] == 'c' ? 's' : 'd') : c.name[1];
    EXPECT_EQ(thr[22], in) << c.name << ": the threader is named by its input's type";
  }
}

void every_entry(int layer, int64_t n_passed, int64_t n_seen) {
  bring_up(layer);
  int covered = 0;
  for (const VmlCase& c : kVmlCases) {
    Sentinels v(c);
    v.n = n_passed;
    for (const Spelling& s : spellings(c)) {
      void* fn = qnl_test::exported(s.name.c_str());
      ASSERT_NE(fn, nullptr) << s.name;
      for (int32_t index = 0; index < 4; ++index) {
        qnl_probe_set_result("qnl_vml_kernel_GetTTableIndex", static_cast<uint64_t>(index));
        qnl_probe_reset();
        invoke(c, fn, s, v);
        check_calls(accepted_calls(c, s, v, index, layer == 1, n_seen), s.name + " index " + std::to_string(index));
        if (::testing::Test::HasFailure()) return;
      }
      ++covered;
    }
  }
  EXPECT_EQ(covered + kVmlServiceNames, 1504);
}

TEST(VmlEntries, EveryNameOnTheLP64LayerReadsTheLowHalfOfTheCount) {
  every_entry(0, static_cast<int64_t>(0xABCD000000000005ull), 5);
}
TEST(VmlEntries, EveryNameOnTheILP64Layer) { every_entry(1, 5, 5); }

TEST(VmlEntries, LongVectorsInPiecesOnTheILP64Layer) {
  bring_up(1);
  qnl_probe_set_result("qnl_vml_kernel_GetTTableIndex", 2);
  for (int64_t n : {kPiece, kPiece + 1, 2 * kPiece + 3}) {
    for (const VmlCase& c : kVmlCases) {
      Sentinels v(c);
      v.n = n;
      for (const Spelling& s : {spellings(c)[0], spellings(c)[5]}) {
        qnl_probe_reset();
        invoke(c, qnl_test::exported(s.name.c_str()), s, v);
        check_calls(accepted_calls(c, s, v, 2, true, n), s.name + " n=" + std::to_string(n));
        if (::testing::Test::HasFailure()) return;
      }
    }
  }
}

// Null arrays, negative and zero counts: the report, the status, and nothing else
// (no mode set, no kernel library asked). Positions follow the declared order,
// the count first; a second output reports the first one's position.
void rejections(int layer) {
  bring_up(layer);
  for (const VmlCase& c : kVmlCases) {
    for (const Spelling& s : {spellings(c)[1], spellings(c)[3]}) {
      void* fn = qnl_test::exported(s.name.c_str());
      const Sentinels full(c);
      Sentinels v = full;
      v.n = 0;
      for (uintptr_t& a : v.arrays) a = 0;
      qnl_probe_reset();
      invoke(c, fn, s, v);
      EXPECT_EQ(qnl_probe_count(), 0) << s.name << ": n = 0 with every pointer null makes no call at all";
      v = full;
      v.n = -1;
      v.arrays[0] = 0;
      qnl_probe_reset();
      invoke(c, fn, s, v);
      ASSERT_EQ(reports().size(), 1u) << s.name;
      EXPECT_EQ(reports()[0].number, 1) << s.name << ": the count is tested first";
      EXPECT_EQ(reports()[0].name, c.name) << "every body reports the plain C name";
      EXPECT_EQ(reports()[0].length, static_cast<int32_t>(std::strlen(c.name)));
      EXPECT_EQ(qnl_probe_count_of("qnl_vml_kernel_SetErrStatus"), 1);
      EXPECT_EQ(last_status_set(), -1);
      EXPECT_EQ(qnl_probe_count_of("qnl_vml_kernel_SetMode"), 0) << "a rejected call leaves the mode alone";
      int outputs = 0, first_output = 0;
      for (size_t i = 0; c.args[i] && !is_pack(c); ++i) {
        const bool output = std::strchr("yw", c.args[i]) != nullptr;
        if (output && outputs++ == 0) first_output = static_cast<int>(i) + 2;
        if (!is_array(c.args[i])) continue;
        v = full;
        v.arrays[i] = 0;
        qnl_probe_reset();
        invoke(c, fn, s, v);
        ASSERT_EQ(reports().size(), 1u) << s.name << " null " << i;
        EXPECT_EQ(reports()[0].number, output ? first_output : static_cast<int>(i) + 2) << s.name << " null " << i;
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
  auto exp = qnl_test::exported_as<void(int64_t, const double*, double*)>("vdExp");
  exp(0, nullptr, nullptr);
  exp(int64_t{1} << 32, nullptr, nullptr);  // a count whose low half is zero is zero on this layer
  EXPECT_EQ(kernel_library(), nullptr);
  EXPECT_EQ(qnl_probe_count(), 0);
}

// A mode form restores the mode it found, also over a change made during the call.
TEST(VmlEntries, ModeFormRestoresTheModeItFound) {
  bring_up(0);
  qnl_test::exported_as<int(int)>("vmlSetMode")(0x12);
  qnl_probe_set_hook([](const char* symbol, const uint64_t*, int) {
    if (std::strncmp(symbol, "qnl_vml_serv_threader_", 22) == 0) qnl_test::exported_as<int(int)>("vmlSetMode")(0x55);
  });
  double a[2] = {1, 2}, b[2] = {3, 4}, y[2];
  qnl_test::exported_as<void(int64_t, const double*, const double*, double*, int)>("vmdAdd")(2, a, b, y, 0x33);
  qnl_probe_set_hook(nullptr);
  EXPECT_EQ(qnl_test::exported_as<int()>("vmlGetMode")(), 0x12);
}

}  // namespace
