// The random-number entries on the probe kernel library: every generator of the table in
// its four names on both layers, checked by property (what reaches the kernel, where a
// rejection is reported, that a rejected call loads nothing, how long requests are cut),
// and the stream entries' edge cases.
#include <cmath>
#include <functional>
#include <random>

#include "qnl_vsl.h"
#include "vml_harness.h"
#include "vsl_cases.inc"

using namespace vml_test;

namespace {

using W = uint64_t;
constexpr int64_t kPiece = 0x7FFFFFFF;
const W kR = 0x7f0000100000ull;      // the result array: the probe's kernels never touch it
const W kArray = 0x7f0000200000ull;  // a parameter array, also never read

alignas(8) unsigned char g_live[16] = {0, 0, 0, 0, 1};
alignas(8) unsigned char g_dead[16] = {1, 1, 1, 1, 0, 1, 1, 1};

std::vector<std::string> names(const VslCase& c) { return {c.name, upper(c.name), lower(c.name), lower(c.name) + "_"}; }

// One call of a generator through spelling `k` (0: C, 1-3: Fortran). The C entries are
// called in one shape: integer-class arguments in order, then the reals, which the ABI
// places exactly as each entry's own prototype does.
struct Call {
  int32_t method = 0;
  void* stream = g_live;
  int64_t n = 3;
  W r = kR;
  std::vector<double> v;  // the parameters, as VslCase::reject reads them

  int run(const VslCase& c, int k) const {
    void* fn = qnl_test::exported(names(c)[static_cast<size_t>(k)].c_str());
    EXPECT_NE(fn, nullptr) << names(c)[static_cast<size_t>(k)];
    const size_t np = std::strlen(c.kinds);
    if (k == 0) {
      std::vector<W> ints = {static_cast<uint32_t>(method), reinterpret_cast<W>(stream), static_cast<W>(n), r};
      std::vector<double> reals;
      for (size_t i = 0; i < np; ++i) {
        if (c.kinds[i] == 'i') ints.push_back(static_cast<uint32_t>(static_cast<int32_t>(v[i])));
        if (c.kinds[i] == 'p') ints.push_back(v[i] != 0 ? kArray + i : 0);
        if (c.kinds[i] == 'f' || c.kinds[i] == 'd') reals.push_back(v[i]);
      }
      ints.resize(8);
      reals.resize(4);
      if (c.letter == 's') {
        auto f = reinterpret_cast<int (*)(W, W, W, W, W, W, W, W, float, float, float, float)>(fn);
        return f(ints[0], ints[1], ints[2], ints[3], ints[4], ints[5], ints[6], ints[7], static_cast<float>(reals[0]),
                 static_cast<float>(reals[1]), static_cast<float>(reals[2]), static_cast<float>(reals[3]));
      }
      auto f = reinterpret_cast<int (*)(W, W, W, W, W, W, W, W, double, double, double, double)>(fn);
      return f(ints[0], ints[1], ints[2], ints[3], ints[4], ints[5], ints[6], ints[7], reals[0], reals[1], reals[2],
               reals[3]);
    }
    // Fortran: everything by reference; the count cell is read at the layer's width.
    const int64_t count = n;
    float fs[4];
    double ds[4];
    int32_t is[4];
    std::vector<const void*> a = {&method, &stream, &count, reinterpret_cast<const void*>(r)};
    for (size_t i = 0; i < np; ++i) {
      fs[i] = static_cast<float>(v[i]);
      ds[i] = v[i];
      is[i] = static_cast<int32_t>(v[i]);
      const char kind = c.kinds[i];
      a.push_back(kind == 'f'   ? static_cast<const void*>(&fs[i])
                  : kind == 'd' ? static_cast<const void*>(&ds[i])
                  : kind == 'i' ? static_cast<const void*>(&is[i])
                                : reinterpret_cast<const void*>(v[i] != 0 ? kArray + i : 0));
    }
    a.resize(8);
    using P = const void*;
    return reinterpret_cast<int (*)(P, P, P, P, P, P, P, P)>(fn)(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
  }

  // The words the kernel must record for a piece of `count` starting `done` results in.
  std::vector<W> words(const VslCase& c, int32_t count, int64_t done) const {
    std::vector<W> w = {static_cast<uint32_t>(method), reinterpret_cast<W>(stream), static_cast<uint32_t>(count),
                        r + static_cast<W>(done) * static_cast<W>(c.element)};
    for (size_t i = 0; i < std::strlen(c.kinds); ++i) {
      switch (c.kinds[i]) {
        case 'f':
          w.push_back(qnl_probe::word(static_cast<float>(v[i])));
          break;
        case 'd':
          w.push_back(qnl_probe::word(v[i]));
          break;
        case 'i':
          w.push_back(static_cast<uint32_t>(static_cast<int32_t>(v[i])));
          break;
        default:
          w.push_back(v[i] != 0 ? kArray + i : 0);
      }
    }
    return w;
  }
};

void expect_report(int32_t position, const VslCase& c, const std::string& what) {
  auto r = reports();
  ASSERT_EQ(r.size(), 1u) << what;
  EXPECT_EQ(r[0].number, position) << what;
  EXPECT_EQ(r[0].name, std::string(c.name).substr(0, 16)) << what << ": every body reports the C name";
  EXPECT_EQ(r[0].length, static_cast<int32_t>(std::strlen(c.name))) << what;
}

// The calls the kernels recorded (the kernel library's own start-up calls left out).
std::vector<const qnl_probe::Call*> kernel_calls() {
  std::vector<const qnl_probe::Call*> out;
  for (const qnl_probe::Call* c : calls())
    if (std::strncmp(c->symbol, "_vsl", 4) == 0 || std::strncmp(c->symbol, "__vsl", 5) == 0) out.push_back(c);
  return out;
}

void expect_kernel_calls(const VslCase& c, const Call& call, const std::vector<int32_t>& counts,
                         const std::string& what) {
  const auto got = kernel_calls();
  ASSERT_EQ(got.size(), counts.size()) << what;
  int64_t done = 0;
  for (size_t i = 0; i < counts.size(); ++i) {
    EXPECT_STREQ(got[i]->symbol, c.kernel) << what;
    const auto want = call.words(c, counts[i], done);
    ASSERT_EQ(got[i]->nwords, static_cast<int>(want.size())) << what;
    for (size_t k = 0; k < want.size(); ++k)
      EXPECT_EQ(got[i]->word[k], want[k]) << what << " piece " << i << " word " << k;
    done += counts[i];
  }
}

// Parameter values drawn from edges and ordinary points; NaN (reals only) fails every
// "above" test.
std::vector<double> draw(const VslCase& c, std::mt19937& g) {
  static const double pool[] = {-1, 0, 0.25, 1, 2, 5, NAN};
  std::vector<double> v;
  for (size_t i = 0; i < std::strlen(c.kinds); ++i)
    v.push_back(pool[g() % (std::size(pool) - (c.kinds[i] == 'i' ? 1 : 0))]);
  return v;
}

// A parameter vector every test of the generator accepts.
std::vector<double> accepted(const VslCase& c) {
  std::mt19937 g(7);
  for (;;) {
    auto v = draw(c, g);
    if (c.reject(v.data()) == 0) return v;
  }
}

void set_layer(int layer) { ASSERT_EQ(QNL_Set_Interface_Layer(layer), layer); }

bool threading_layer_loaded() {
  return dlopen((facade_directory() + "libqnl_velor_thread.so").c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr;
}

// Every generator and name: the parameter tests fire at their positions, in the table's
// order, with -3 and no kernel call; an accepted call reaches the kernel once with every
// argument at its declared width and returns what the kernel returned.
void parameters_and_methods(int layer) {
  set_layer(layer);
  std::mt19937 g(1);
  for (const VslCase& c : kVslCases) {
    for (int k = 0; k < 4; ++k) {
      const std::string what = names(c)[static_cast<size_t>(k)];
      for (int trial = 0; trial < 24; ++trial) {
        Call call;
        call.v = trial == 0 ? accepted(c) : draw(c, g);
        // The C name on the LP64 layer reads the low half of the count.
        if (k == 0 && layer == 0) call.n = static_cast<int64_t>(0xABCD000000000003ull);
        const int32_t methods[] = {0, c.limit, c.limit + 1, 0x40000000, 0x40000000 + c.limit};
        call.method = methods[trial % 5];
        const bool method_ok = call.method <= c.limit || (c.accurate && (call.method ^ 0x40000000) <= c.limit);
        const int32_t position = method_ok ? c.reject(call.v.data()) : 1;
        qnl_probe_reset();
        qnl_probe_set_result(c.kernel, static_cast<uint64_t>(trial + 10));
        const int status = call.run(c, k);
        if (position) {
          EXPECT_EQ(status, -3) << what;
          expect_report(position, c, what);
          EXPECT_EQ(qnl_probe_count_of(c.kernel), 0) << what;
        } else {
          EXPECT_EQ(status, trial + 10) << what;
          expect_kernel_calls(c, call, {3}, what);
        }
        if (::testing::Test::HasFailure()) return;
      }
    }
  }
}

TEST(VslGenerators, ParametersAndMethodsOnTheLP64Layer) { parameters_and_methods(0); }
TEST(VslGenerators, ParametersAndMethodsOnTheILP64Layer) { parameters_and_methods(1); }

// The frame's own tests come first, in order, whatever the parameters; none loads the
// kernel library.
TEST(VslGenerators, FrameTestsInOrderAndRejectedCallsLoadNothing) {
  set_layer(1);
  for (const VslCase& c : kVslCases) {
    for (int k = 0; k < 4; ++k) {
      const std::string what = names(c)[static_cast<size_t>(k)];
      struct Row {
        int32_t method;
        void* stream;
        int64_t n;
        W r;
        int status, position;
      } rows[] = {
          {-1, nullptr, -1, 0, -3, 1},          // method first
          {0, nullptr, -1, 0, -5, 2},           // then the stream: its own code
          {0, g_dead, 3, kR, -1006, 2},         // a record that is not a stream
          {0, g_live, -1, 0, -3, 3},            // a negative count
          {0, g_live, 0, 0, 0, 0},              // zero: done, r not looked at
          {c.limit + 1, g_live, 0, 0, 0, 0},    // the method limit comes after the zero test
          {0, g_live, 3, 0, -3, 4},             // null r
          {c.limit + 1, g_live, 3, 0, -3, 4},   // r before the method limit
          {c.limit + 1, g_live, 3, kR, -3, 1},  // then the limit
          {0x40000000 | (c.limit + 1), g_live, 3, kR, -3, 1},
      };
      for (const Row& row : rows) {
        Call call;
        call.method = row.method;
        call.stream = row.stream;
        call.n = row.n;
        call.r = row.r;
        for (const char* k = c.kinds; *k; ++k) call.v.push_back(*k == 'i' ? -1 : NAN);  // all would fail
        qnl_probe_reset();
        EXPECT_EQ(call.run(c, k), row.status) << what << " method " << row.method << " n " << row.n;
        if (row.position)
          expect_report(row.position, c, what);
        else
          EXPECT_TRUE(reports().empty()) << what;
        EXPECT_EQ(qnl_probe_count(), row.position ? 1 : 0) << what << ": the report is the only call";
      }
      if (::testing::Test::HasFailure()) return;
    }
  }
  EXPECT_EQ(kernel_library(), nullptr);
}

// On the 64-bit layer 2^31 variates go as two pieces, r advanced by the first piece's
// count of results (for GaussianMV: vectors, so the pieces overlap), every parameter
// (PoissonV's means too) unchanged; a negative status stops the loop.
TEST(VslGenerators, LongRequestsInPiecesOnTheILP64Layer) {
  set_layer(1);
  for (const VslCase& c : kVslCases) {
    for (int k : {0, 1}) {
      const std::string what = names(c)[static_cast<size_t>(k)];
      Call call;
      call.v = accepted(c);
      call.n = int64_t{1} << 31;
      qnl_probe_reset();
      qnl_probe_set_result(c.kernel, 4);
      EXPECT_EQ(call.run(c, k), 4) << what;
      expect_kernel_calls(c, call, {kPiece, 1}, what);
      call.n = 2 * kPiece + 5;
      qnl_probe_reset();
      EXPECT_EQ(call.run(c, k), 4) << what;
      expect_kernel_calls(c, call, {kPiece, kPiece, 5}, what);
      qnl_probe_reset();
      qnl_probe_set_result(c.kernel, static_cast<uint64_t>(-7));
      EXPECT_EQ(call.run(c, k), -7) << what;
      EXPECT_EQ(kernel_calls().size(), 1u) << what;
      if (::testing::Test::HasFailure()) return;
    }
  }
}

// Named cases, each against the rule as stated rather than the table.
TEST(VslGenerators, NamedEdges) {
  set_layer(0);
  auto status = [](const char* name, int32_t method, std::vector<double> v) {
    for (const VslCase& c : kVslCases)
      if (std::strcmp(c.name, name) == 0) {
        Call call;
        call.method = method;
        call.v = std::move(v);
        qnl_probe_reset();
        int s = call.run(c, 0);
        return std::make_pair(s, reports().empty() ? 0 : reports()[0].number);
      }
    ADD_FAILURE() << name;
    return std::make_pair(0, 0);
  };
  using R = std::pair<int, int32_t>;
  EXPECT_EQ(status("vdRngGaussian", 3, {0, 1}), R(-3, 1));
  EXPECT_EQ(status("vdRngGaussian", 2, {0, 1}), R(0, 0));
  EXPECT_EQ(status("vdRngExponential", 0x40000000, {0, 1}), R(0, 0));
  EXPECT_EQ(status("vdRngCauchy", 0x40000000, {0, 1}), R(-3, 1));
  EXPECT_EQ(status("vdRngUniform", 0, {2, 1}), R(-3, 5));             // b below a: position 5, not 6
  EXPECT_EQ(status("viRngHypergeometric", 0, {1, 2, -1}), R(-3, 7));  // s and m before l
  EXPECT_EQ(status("viRngHypergeometric", 0, {1, 2, 0}), R(-3, 5));
  EXPECT_EQ(status("viRngGeometric", 0, {1}), R(-3, 5));
  EXPECT_EQ(status("viRngBernoulli", 0, {1}), R(0, 0));
  EXPECT_EQ(status("vsRngLognormal", 1, {0, 1, 0, 0}), R(-3, 8));
  EXPECT_EQ(status("viRngNegBinomial", 0, {1, 0.5}), R(0, 0));
  EXPECT_STREQ(qnl_probe_call(-1)->symbol, "_vsliRngNegbinomial");
}

// --- streams ---------------------------------------------------------------------------

struct Seen {
  int32_t count;
  uint32_t seed[2];
};
Seen g_seen;
void capture_seed(const char* symbol, const uint64_t* w, int) {
  if (std::strcmp(symbol, "__vslNewStreamEx") != 0) return;
  g_seen.count = static_cast<int32_t>(w[2]);
  if (g_seen.count == 1 || g_seen.count == 2)
    std::memcpy(g_seen.seed, reinterpret_cast<const void*>(w[3]), 4 * static_cast<size_t>(g_seen.count));
}

TEST(VslStreams, NewStreamSeedWordsAndGenerator) {
  set_layer(1);
  qnl_probe_set_hook(capture_seed);
  VSLStreamStatePtr s = nullptr;
  auto c64 = qnl_test::exported_as<int(void**, int64_t, uint64_t)>("vslNewStream");
  auto f = qnl_test::exported_as<int(void**, const void*, const void*)>("vslnewstream_");
  for (uint64_t seed : {0x7FFFFFFFull, 0x80000000ull, 0x123456789ull}) {
    const int64_t brng = 9;
    for (int k = 0; k < 2; ++k) {
      qnl_probe_reset();
      g_seen = {};
      EXPECT_EQ(k ? f(&s, &brng, &seed) : c64(&s, brng, seed), 0);
      ASSERT_EQ(qnl_probe_count_of("__vslNewStreamEx"), 1);
      EXPECT_EQ(qnl_probe_call(-1)->word[1], 9u);
      EXPECT_EQ(g_seen.count, seed > 0x7FFFFFFF ? 2 : 1) << std::hex << seed;
      EXPECT_EQ(g_seen.seed[0], static_cast<uint32_t>(seed));
      if (g_seen.count == 2) {
        EXPECT_EQ(g_seen.seed[1], static_cast<uint32_t>(seed >> 32));
      }
    }
  }
  for (int64_t brng : {int64_t{-1}, int64_t{0x80000000}}) {
    qnl_probe_reset();
    EXPECT_EQ(c64(&s, brng, 1), -1000);
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0].number, 2);
    EXPECT_EQ(reports()[0].name, "vslNewStream");
  }
  // NewStreamEx: the generator is tested before the count; a negative count goes on.
  auto ex = qnl_test::exported_as<int(void**, int64_t, int64_t, const unsigned*)>("vslNewStreamEx");
  const unsigned params[2] = {1, 2};
  qnl_probe_reset();
  EXPECT_EQ(ex(&s, 0x80000000, 0x80000000, params), -1000);
  EXPECT_EQ(reports().at(0).number, 2);
  qnl_probe_reset();
  EXPECT_EQ(ex(&s, 3, 0x80000000, params), -3);
  EXPECT_EQ(reports().at(0).number, 3);
  qnl_probe_reset();
  EXPECT_EQ(ex(&s, 3, -2, params), 0);
  EXPECT_EQ(static_cast<int32_t>(qnl_probe_call(-1)->word[2]), -2);
  qnl_probe_set_hook(nullptr);
}

// On the 32-bit layer the low halves count: one seed word, whatever the high half.
TEST(VslStreams, NewStreamOnTheLP64Layer) {
  set_layer(0);
  VSLStreamStatePtr s = nullptr;
  auto c64 = qnl_test::exported_as<int(void**, int64_t, uint64_t)>("vslNewStream");
  qnl_probe_set_hook(capture_seed);
  EXPECT_EQ(c64(&s, static_cast<int64_t>(0xFFFF000000000005ull), 0xFFFFFFFF80000001ull), 0);
  EXPECT_EQ(kernel_calls().at(0)->word[1], 5u);
  EXPECT_EQ(g_seen.count, 1);
  EXPECT_EQ(g_seen.seed[0], 0x80000001u);
  qnl_probe_reset();
  EXPECT_EQ(c64(&s, -1, 1), -1000);
  EXPECT_EQ(reports().at(0).number, 2);
  qnl_probe_set_hook(nullptr);
}

// A rejected stream call loads no kernel library.
TEST(VslStreams, RejectionsLoadNothing) {
  set_layer(0);
  VSLStreamStatePtr null_handle = nullptr, dead = g_dead;
  EXPECT_EQ(vslDeleteStream(&null_handle), -5);
  EXPECT_EQ(reports().at(0).number, 1);
  EXPECT_EQ(vsldeletestream_(&dead), -1006);
  EXPECT_EQ(vslSaveStreamF(g_live, nullptr), -3);
  EXPECT_EQ(vslLoadStreamM(&null_handle, nullptr), -3);
  EXPECT_EQ(vslLeapfrogStream(nullptr, 1, 2), -5);
  EXPECT_EQ(kernel_library(), nullptr);
  EXPECT_EQ(reports().size(), 5u);
}

// Only the entries that make a stream look up qnl_serv_get_dynamic in the threading
// layer, and before they bind their kernel. The facade's lookups pass through this dlsym.
std::vector<std::string> g_lookups;
extern "C" void* dlsym(void* handle, const char* name) {
  static auto real = reinterpret_cast<void* (*)(void*, const char*)>(dlvsym(RTLD_NEXT, "dlsym", "GLIBC_2.34"));
  if (name && (std::strcmp(name, "qnl_serv_get_dynamic") == 0 || std::strncmp(name, "__vsl", 5) == 0))
    g_lookups.emplace_back(name);
  return real(handle, name);
}

TEST(VslStreams, OnlyMakersLookUpTheThreadingLayer) {
  set_layer(0);
  VSLStreamStatePtr s = g_live, live = g_live;
  char memory[8] = {};
  vslCopyStream(&s, g_live);
  vslCopyStreamState(g_live, g_live);
  vslLeapfrogStream(g_live, 1, 2);
  vslSkipAheadStream(g_live, 5);
  vslGetStreamStateBrng(g_live);
  vslGetStreamSize(g_live);
  vslSaveStreamF(g_live, "f");
  vslSaveStreamM(g_live, memory);
  vslGetNumRegBrngs();
  vslGetBrngProperties(1, nullptr);
  vslRegisterBrng(nullptr);
  vslDeleteStream(&live);
  for (const std::string& name : g_lookups) EXPECT_EQ(name.rfind("__vsl", 0), 0u) << name;
  EXPECT_EQ(g_lookups.size(), 12u);
  // Each maker looks up the threading layer's symbol first, then (once per slot) binds.
  const unsigned words[1] = {1};
  const std::pair<const char*, std::function<int()>> makers[] = {
      {"__vslNewStreamEx", [&] { return vslNewStream(&s, 1, 1); }},
      {"__vslNewStreamEx", [&] { return vslNewStreamEx(&s, 1, 1, words); }},
      {"__vsliNewAbstractStream", [&] { return vsliNewAbstractStream(&s, 1, words, nullptr); }},
      {"__vsldNewAbstractStream", [&] { return vsldNewAbstractStream(&s, 1, nullptr, 0, 1, nullptr); }},
      {"__vslsNewAbstractStream", [&] { return vslsNewAbstractStream(&s, 1, nullptr, 0, 1, nullptr); }},
      {"__vslLoadStreamF", [&] { return vslLoadStreamF(&s, "f"); }},
      {"__vslLoadStreamM", [&] { return vslLoadStreamM(&s, memory); }},
  };
  for (const auto& [kernel, call] : makers) {
    g_lookups.clear();
    EXPECT_EQ(call(), 0);
    ASSERT_FALSE(g_lookups.empty()) << kernel;
    EXPECT_EQ(g_lookups[0], "qnl_serv_get_dynamic") << kernel;
    for (size_t i = 1; i < g_lookups.size(); ++i) EXPECT_EQ(g_lookups[i], kernel);
  }
}

TEST(VslStreams, FileAndMemoryForms) {
  set_layer(0);
  VSLStreamStatePtr live = g_live, dead = g_dead;
  qnl_probe_reset();
  EXPECT_EQ(vslSaveStreamF(live, "state.bin"), 0);
  EXPECT_EQ(static_cast<int64_t>(qnl_probe_call(-1)->word[2]), -1);
  EXPECT_EQ(VSLSAVESTREAMF(&live, "state.binXYZ", 9), 0);
  EXPECT_EQ(qnl_probe_call(-1)->word[2], 9u);
  EXPECT_EQ(vslloadstreamf_(&live, "f", 1), 0);
  EXPECT_EQ(qnl_probe_call(-1)->word[2], 1u);
  // The upper-case Fortran name tests the memory first; the others the stream.
  struct {
    int (*f)(const VSLStreamStatePtr*, char*);
    int status, position;
  } rows[] = {{VSLSAVESTREAMM, -3, 2}, {vslsavestreamm, -1006, 1}, {vslsavestreamm_, -1006, 1}};
  for (auto& row : rows) {
    qnl_probe_reset();
    EXPECT_EQ(row.f(&dead, nullptr), row.status);
    EXPECT_EQ(reports().at(0).number, row.position);
    EXPECT_EQ(reports().at(0).name, "vslSaveStreamM");
  }
  qnl_probe_reset();
  EXPECT_EQ(vslSaveStreamM(dead, nullptr), -1006);
  EXPECT_EQ(reports().at(0).number, 1);
  qnl_probe_reset();
  EXPECT_EQ(vslCopyStreamState(live, dead), -1006);
  EXPECT_EQ(reports().at(0).number, 2);
}

TEST(VslStreams, AbstractStreamsNarrowTheCount) {
  set_layer(1);
  VSLStreamStatePtr s = nullptr;
  const double buf[2] = {0.5, 0.25};
  auto d = qnl_test::exported_as<int(void**, int64_t, const double*, double, double, dUpdateFuncPtr)>(
      "vsldNewAbstractStream");
  qnl_probe_reset();
  EXPECT_EQ(d(&s, 0x80000000, buf, 0, 1, nullptr), -3);
  EXPECT_EQ(reports().at(0).number, 2);
  EXPECT_EQ(d(&s, 2, buf, -1.5, 4.0, nullptr), 0);
  const qnl_probe::Call* k = qnl_probe_call(-1);
  EXPECT_STREQ(k->symbol, "__vsldNewAbstractStream");
  EXPECT_EQ(k->word[1], 2u);
  EXPECT_EQ(k->word[3], qnl_probe::word(-1.5));
  EXPECT_EQ(k->word[4], qnl_probe::word(4.0));
  const int64_t n = -4;  // not tested here
  auto i = qnl_test::exported_as<int(void**, const int64_t*, const unsigned*, void*)>("vslinewabstractstream_");
  EXPECT_EQ(i(&s, &n, nullptr, nullptr), 0);
  EXPECT_EQ(static_cast<int32_t>(qnl_probe_call(-1)->word[1]), -4);
  EXPECT_TRUE(threading_layer_loaded());
}

}  // namespace
