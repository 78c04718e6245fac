// The random-number entries on the probe kernel library: every generator of the table in
// its four names on both layers, by property (what reaches the kernel, where a rejection
// is reported, that a rejected call loads nothing, how long requests are cut), and the
// stream entries' edge cases.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <tuple>

#include "qnl_vsl.h"
#include "vml_harness.h"
#include "vsl_cases.inc"

using namespace vml_test;

namespace {

// Each test settles the interface layer, which a process does once, and checks that
// rejected calls load no kernel library: each needs the process of its own that ctest
// gives it (run one at a time with --gtest_filter when calling the program by hand).
using W = uint64_t;
constexpr int32_t kPiece = 0x7FFFFFFF, kAccurate = QNL_VSL_METHOD_ACCURATE;
const W kR = 0x7f0000100000ull;      // the result array: the probe's kernels never touch it
const W kArray = 0x7f0000200000ull;  // a parameter array, never read either
alignas(8) unsigned char g_live[16] = {0, 0, 0, 0, 1}, g_dead[16] = {1, 1, 1, 1, 0, 1};

std::string spelling(const VslCase& c, int k) {  // C, UPPER, lower, lower_
  return k == 1 ? upper(c.name) : k ? lower(c.name) + (k == 3 ? "_" : "") : c.name;
}

std::vector<const qnl_probe::Call*> kernel_calls() {  // the kernel library's start-up left out
  std::vector<const qnl_probe::Call*> out;
  for (const qnl_probe::Call* c : calls())
    if (std::strncmp(c->symbol, "_vsl", 4) == 0 || std::strncmp(c->symbol, "__vsl", 5) == 0) out.push_back(c);
  return out;
}

// One call of a generator through spelling k: C by value, Fortran everything by
// reference with the count cell read at the layer's width.
struct Call {
  int32_t method = 0;
  void* stream = g_live;
  int64_t n = 3;
  W r = kR;
  std::vector<double> v;  // the parameters, as VslCase::reject reads them

  W pointer(size_t i) const { return v[i] != 0 ? kArray + i : 0; }

  int run(const VslCase& c, int k) const {
    float fs[4];
    double ds[4];
    int32_t is[4];
    std::vector<W> ints = {static_cast<uint32_t>(method), reinterpret_cast<W>(stream), static_cast<W>(n), r}, fps;
    if (k != 0) ints = {W(&method), W(&stream), W(&n), r};
    for (size_t i = 0; c.kinds[i]; ++i) {
      const char kind = c.kinds[i];
      fs[i] = static_cast<float>(v[i]), ds[i] = v[i], is[i] = static_cast<int32_t>(v[i]);
      if (k != 0)
        ints.push_back(kind == 'f' ? W(&fs[i]) : kind == 'd' ? W(&ds[i]) : kind == 'i' ? W(&is[i]) : pointer(i));
      else if (kind == 'i' || kind == 'p')
        ints.push_back(kind == 'i' ? static_cast<uint32_t>(is[i]) : pointer(i));
      else
        fps.push_back(kind == 'f' ? qnl_probe::word(fs[i]) : qnl_probe::word(ds[i]));
    }
    return static_cast<int>(call_sysv(qnl_test::exported(spelling(c, k).c_str()), ints, fps));
  }

  // The words the kernel must record for each piece: r advanced by the results before it.
  void expect_pieces(const VslCase& c, const std::vector<int32_t>& counts, const std::string& what) const {
    const auto got = kernel_calls();
    ASSERT_EQ(got.size(), counts.size()) << what;
    for (size_t p = 0, done = 0; p < counts.size(); done += static_cast<size_t>(counts[p]), ++p) {
      std::vector<W> w = {static_cast<uint32_t>(method), reinterpret_cast<W>(stream), static_cast<uint32_t>(counts[p]),
                          r + done * static_cast<W>(c.element)};
      for (size_t i = 0; i < std::strlen(c.kinds); ++i)
        w.push_back(c.kinds[i] == 'f'   ? qnl_probe::word(static_cast<float>(v[i]))
                    : c.kinds[i] == 'd' ? qnl_probe::word(v[i])
                    : c.kinds[i] == 'i' ? static_cast<uint32_t>(static_cast<int32_t>(v[i]))
                                        : pointer(i));
      EXPECT_STREQ(got[p]->symbol, c.kernel) << what;
      EXPECT_EQ(std::vector<W>(got[p]->word, got[p]->word + got[p]->nwords), w) << what << " piece " << p;
    }
  }
};

// Status and reported position of one call; a report names the C name from every body.
std::pair<int, int32_t> outcome(const VslCase& c, int k, const Call& call) {
  qnl_probe_reset();
  const int status = call.run(c, k);
  const auto r = reports();
  EXPECT_LE(r.size(), 1u);
  if (r.empty()) return {status, 0};
  EXPECT_EQ(r[0].name, std::string(c.name).substr(0, 16));
  EXPECT_EQ(r[0].length, static_cast<int32_t>(std::strlen(c.name)));
  return {status, r[0].number};
}

// Parameter values from edges and ordinary points; NaN (reals only) fails every "above".
std::vector<double> draw(const VslCase& c, std::mt19937& g) {
  static const double pool[] = {-1, 0, 0.25, 1, 2, 5, NAN};
  std::vector<double> v;
  for (const char* k = c.kinds; *k; ++k) v.push_back(pool[g() % (std::size(pool) - (*k == 'i'))]);
  return v;
}

std::vector<double> accepted(const VslCase& c) {
  std::mt19937 g(7);
  for (;;)
    if (auto v = draw(c, g); c.reject(v.data()) == 0) return v;
}

void set_layer(int layer) { ASSERT_EQ(QNL_Set_Interface_Layer(layer), layer); }

using Outcome = std::pair<int, int32_t>;

void every_generator(int layer) {
  set_layer(layer);
  // The frame's own tests, in order, before the parameters (all of which would fail).
  for (const VslCase& c : kVslCases)
    for (int k = 0; k < 4; ++k) {
      std::vector<double> bad;
      for (const char* p = c.kinds; *p; ++p) bad.push_back(*p == 'i' ? -1 : NAN);
      const std::tuple<int32_t, void*, int64_t, W, Outcome> rows[] = {
          {-1, nullptr, 0, 0, {-3, 1}},          {0, nullptr, 0, 0, {-5, 2}},
          {0, g_dead, 3, kR, {-1006, 2}},        {0, g_live, -1, 0, {-3, 3}},
          {c.limit + 1, g_live, 0, 0, {0, 0}},   {c.limit + 1, g_live, 3, 0, {-3, 4}},
          {c.limit + 1, g_live, 3, kR, {-3, 1}}, {kAccurate | (c.limit + 1), g_live, 3, kR, {-3, 1}},
      };
      for (const auto& [method, stream, n, r, want] : rows)
        EXPECT_EQ(outcome(c, k, Call{method, stream, n, r, bad}), want)
            << spelling(c, k) << " method " << method << " n " << n;
      if (int32_t position = c.reject(bad.data())) {  // then the parameters
        EXPECT_EQ(outcome(c, k, Call{0, g_live, 3, kR, bad}), Outcome(-3, position)) << spelling(c, k);
      }
    }
  EXPECT_EQ(kernel_library(), nullptr) << "a rejected call loads nothing";
  // Methods and parameters: the table's tests fire at their positions with -3 and no
  // kernel call; an accepted call returns what the kernel did, every argument at its width.
  std::mt19937 g(1);
  for (const VslCase& c : kVslCases)
    for (int k = 0; k < 4; ++k)
      for (int trial = 0; trial < 25 && !::testing::Test::HasFailure(); ++trial) {
        Call call;
        call.v = trial < 5 ? accepted(c) : draw(c, g);
        if (k == 0 && layer == 0) call.n = static_cast<int64_t>(0xABCD000000000003ull);  // the low half counts
        call.method = std::vector<int32_t>{0, c.limit, c.limit + 1, kAccurate, kAccurate + c.limit}[trial % 5];
        const bool method_ok = call.method <= c.limit || (c.accurate && (call.method ^ kAccurate) <= c.limit);
        const int32_t position = method_ok ? c.reject(call.v.data()) : 1;
        qnl_probe_set_result(c.kernel, static_cast<uint64_t>(trial + 10));
        EXPECT_EQ(outcome(c, k, call), Outcome(position ? -3 : trial + 10, position)) << spelling(c, k);
        call.expect_pieces(c, position ? std::vector<int32_t>{} : std::vector<int32_t>{3}, spelling(c, k));
      }
  if (layer == 0) return;
  // 2^31 and more variates go in pieces; a negative status stops the loop.
  for (const VslCase& c : kVslCases)
    for (int k : {0, 1}) {
      Call call;
      call.v = accepted(c);
      for (auto [n, counts] : {std::pair<int64_t, std::vector<int32_t>>{int64_t{1} << 31, {kPiece, 1}},
                               {2 * int64_t{kPiece} + 5, {kPiece, kPiece, 5}}}) {
        call.n = n;
        qnl_probe_set_result(c.kernel, 4);
        EXPECT_EQ(outcome(c, k, call), Outcome(4, 0));
        call.expect_pieces(c, counts, spelling(c, k) + " n " + std::to_string(n));
      }
      qnl_probe_set_result(c.kernel, static_cast<uint64_t>(-7));
      EXPECT_EQ(outcome(c, k, call), Outcome(-7, 0));
      EXPECT_EQ(kernel_calls().size(), 1u) << spelling(c, k);
    }
}

TEST(VslGenerators, EveryNameOnTheLP64Layer) { every_generator(0); }
TEST(VslGenerators, EveryNameOnTheILP64Layer) { every_generator(1); }

// Named cases, against the rules as stated rather than the table.
TEST(VslGenerators, NamedEdges) {
  set_layer(0);
  auto run = [](const char* name, int32_t method, std::vector<double> v) {
    for (const VslCase& c : kVslCases)
      if (std::strcmp(c.name, name) == 0) return outcome(c, 0, Call{method, g_live, 3, kR, std::move(v)});
    ADD_FAILURE() << name;
    return Outcome();
  };
  EXPECT_EQ(run("vdRngGaussian", 3, {0, 1}), Outcome(-3, 1));
  EXPECT_EQ(run("vdRngGaussian", 2, {0, 1}), Outcome(0, 0));
  EXPECT_EQ(run("vdRngExponential", 0x40000000, {0, 1}), Outcome(0, 0));
  EXPECT_EQ(run("vdRngCauchy", 0x40000000, {0, 1}), Outcome(-3, 1));
  EXPECT_EQ(run("vdRngUniform", 0, {2, 1}), Outcome(-3, 5));             // b below a: position 5, not 6
  EXPECT_EQ(run("viRngHypergeometric", 0, {1, 2, -1}), Outcome(-3, 7));  // s and m before l
  EXPECT_EQ(run("viRngHypergeometric", 0, {1, 2, 0}), Outcome(-3, 5));
  EXPECT_EQ(run("vsRngLognormal", 1, {0, 1, 0, 0}), Outcome(-3, 8));
  EXPECT_EQ(run("viRngNegBinomial", 0, {1, 0.5}), Outcome(0, 0));
  EXPECT_STREQ(kernel_calls().at(0)->symbol, "_vsliRngNegbinomial");
}

// --- streams ---------------------------------------------------------------------------

std::vector<uint32_t> g_seed;  // the seed words the kernel saw
void capture_seed(const char* symbol, const uint64_t* w, int) {
  if (std::strcmp(symbol, "__vslNewStreamEx") != 0 || (w[2] != 1 && w[2] != 2)) return;
  const auto* p = reinterpret_cast<const uint32_t*>(w[3]);
  g_seed.assign(p, p + w[2]);
}

Outcome stream_outcome(int status) {
  const auto r = reports();
  return {status, r.empty() ? 0 : r.back().number};
}

TEST(VslStreams, NewStreamOnTheILP64Layer) {
  set_layer(1);
  qnl_probe_set_hook(capture_seed);
  VSLStreamStatePtr s = nullptr;
  auto c = qnl_test::exported_as<int(void**, int64_t, uint64_t)>("vslNewStream");
  auto f = qnl_test::exported_as<int(void**, const int64_t*, const uint64_t*)>("vslnewstream_");
  const int64_t brng = 9;
  for (uint64_t seed : {0x7FFFFFFFull, 0x80000000ull, 0x123456789ull})
    for (int k = 0; k < 2; ++k) {
      EXPECT_EQ(k ? f(&s, &brng, &seed) : c(&s, brng, seed), 0);
      EXPECT_EQ(kernel_calls().back()->word[1], 9u);
      std::vector<uint32_t> want = {static_cast<uint32_t>(seed)};  // little-endian words
      if (seed > 0x7FFFFFFF) want.push_back(static_cast<uint32_t>(seed >> 32));
      EXPECT_EQ(g_seed, want) << std::hex << seed;
    }
  for (int64_t bad : {int64_t{-1}, int64_t{0x80000000}}) EXPECT_EQ(stream_outcome(c(&s, bad, 1)), Outcome(-1000, 2));
  EXPECT_EQ(reports().back().name, "vslNewStream");
  // NewStreamEx: the generator before the count; a negative count is the kernel's.
  auto ex = qnl_test::exported_as<int(void**, int64_t, int64_t, const unsigned*)>("vslNewStreamEx");
  EXPECT_EQ(stream_outcome(ex(&s, 0x80000000, 0x80000000, nullptr)), Outcome(-1000, 2));
  EXPECT_EQ(stream_outcome(ex(&s, 3, 0x80000000, nullptr)), Outcome(-3, 3));
  EXPECT_EQ(ex(&s, 3, -2, nullptr), 0);
  EXPECT_EQ(static_cast<int32_t>(kernel_calls().back()->word[2]), -2);
  // Abstract streams narrow n; the d and s forms pass their scalars by value.
  auto d = qnl_test::exported_as<int(void**, int64_t, const double*, double, double, void*)>("vsldNewAbstractStream");
  EXPECT_EQ(stream_outcome(d(&s, 0x80000000, nullptr, 0, 1, nullptr)), Outcome(-3, 2));
  EXPECT_EQ(d(&s, 2, nullptr, -1.5, 4.0, nullptr), 0);
  const W* w = kernel_calls().back()->word;
  EXPECT_EQ(std::vector<W>(w + 1, w + 5), (std::vector<W>{2, 0, qnl_probe::word(-1.5), qnl_probe::word(4.0)}));
  qnl_probe_set_hook(nullptr);
}

// No interposed dlsym under the sanitizers, which look up symbols before start-up.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
}  // namespace

// Only the entries that make a stream look up qnl_serv_get_dynamic, and before they bind
// their kernel. The facade's lookups pass through this dlsym.
std::vector<std::string> g_lookups;
extern "C" void* dlsym(void* handle, const char* name) {
  static auto real = reinterpret_cast<void* (*)(void*, const char*)>(dlvsym(RTLD_NEXT, "dlsym", "GLIBC_2.34"));
  if (name && (std::strcmp(name, "qnl_serv_get_dynamic") == 0 || std::strncmp(name, "__vsl", 5) == 0))
    g_lookups.emplace_back(name);
  return real(handle, name);
}

namespace {

TEST(VslStreams, OnlyMakersLookUpTheThreadingLayer) {
  set_layer(0);
  VSLStreamStatePtr s = g_live, live = g_live;
  char memory[8] = {};
  const unsigned words[1] = {1};
  for (int status :
       {vslCopyStream(nullptr, g_live), vslCopyStreamState(g_live, g_live), vslLeapfrogStream(g_live, 1, 2),
        vslSkipAheadStream(g_live, 5), vslGetStreamStateBrng(g_live), vslGetStreamSize(g_live),
        vslSaveStreamF(g_live, "f"), vslSaveStreamM(g_live, memory), vslGetNumRegBrngs(),
        vslGetBrngProperties(1, nullptr), vslRegisterBrng(nullptr), vslDeleteStream(&live)})
    EXPECT_EQ(status, 0);  // a bad first argument of vslCopyStream is the kernel's to judge
  EXPECT_EQ(g_lookups.size(), 12u);
  for (const std::string& name : g_lookups) EXPECT_EQ(name.rfind("__vsl", 0), 0u) << name;
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
#endif

// Rejections load nothing; the low halves count on this layer. File names: -1 from C
// (zero-terminated), the hidden length from Fortran. Memory: the upper-case Fortran name
// tests the memory first, the other names the stream first.
TEST(VslStreams, OnTheLP64Layer) {
  set_layer(0);
  VSLStreamStatePtr s = nullptr, live = g_live, dead = g_dead;
  EXPECT_EQ(stream_outcome(vslDeleteStream(&s)), Outcome(-5, 1));
  EXPECT_EQ(stream_outcome(vsldeletestream_(&dead)), Outcome(-1006, 1));
  EXPECT_EQ(stream_outcome(vslSaveStreamF(g_live, nullptr)), Outcome(-3, 2));
  EXPECT_EQ(stream_outcome(vslLoadStreamM(&s, nullptr)), Outcome(-3, 2));
  EXPECT_EQ(stream_outcome(vslCopyStreamState(g_live, g_dead)), Outcome(-1006, 2));
  EXPECT_EQ(kernel_library(), nullptr);
  qnl_probe_set_hook(capture_seed);
  auto c = qnl_test::exported_as<int(void**, int64_t, uint64_t)>("vslNewStream");
  EXPECT_EQ(c(&s, static_cast<int64_t>(0xFFFF000000000005ull), 0xFFFFFFFF80000001ull), 0);
  EXPECT_EQ(kernel_calls().back()->word[1], 5u);
  EXPECT_EQ(g_seed, std::vector<uint32_t>{0x80000001u});
  qnl_probe_set_hook(nullptr);
  EXPECT_EQ(vslSaveStreamF(live, "state.bin"), 0);
  EXPECT_EQ(static_cast<int64_t>(kernel_calls().back()->word[2]), -1);
  EXPECT_EQ(VSLSAVESTREAMF(&live, "state.binXYZ", 9), 0);
  EXPECT_EQ(kernel_calls().back()->word[2], 9u);
  EXPECT_EQ(stream_outcome(VSLSAVESTREAMM(&dead, nullptr)), Outcome(-3, 2));
  EXPECT_EQ(stream_outcome(vslsavestreamm(&dead, nullptr)), Outcome(-1006, 1));
  EXPECT_EQ(stream_outcome(vslsavestreamm_(&dead, nullptr)), Outcome(-1006, 1));
  EXPECT_EQ(stream_outcome(vslSaveStreamM(dead, nullptr)), Outcome(-1006, 1));
  EXPECT_EQ(reports().back().name, "vslSaveStreamM");
}

}  // namespace
