// The kernel-library loader through the facade on the probe back-end: which file
// loads under the override, the fallback, the class check and its messages, the
// tracing road to the executable's folder, first calls from two threads, and the
// mode, status and callback calls in all their names.
#include <xmmintrin.h>

#include <string>
#include <thread>

#include "vml_harness.h"

using namespace vml_test;

namespace {

const char* const kFiles[] = {"libqnl_vml_def.so",   "libqnl_vml_cmpt.so", "libqnl_vml_p4n.so",
                              "libqnl_vml_mc.so",    "libqnl_vml_mc2.so",  "libqnl_vml_mc3.so",
                              "libqnl_vml_avx.so",   "libqnl_vml_avx2.so", "libqnl_vml_avx512_mic.so",
                              "libqnl_vml_avx512.so"};

int first_call() { return qnl_test::exported_as<int()>("vmlGetMode")(); }

// The file that loaded, as its index; -1 when none or more than one did.
int loaded() {
  int found = -1;
  for (int i = 0; i < 10; ++i)
    if (kernel_library(kFiles[i])) found = found == -1 ? i : -2;
  return found;
}

// The override's text rules are cpu_test's; here the variable reaches the loader, read
// whole ("09" is 9). Every processor this runs on gets index 0 without an override: no
// processor on sale carries the vendor string the kernels are built for.
TEST(VmlLoader, AnOverrideOutranksTheProcessorAndPassesAClassAtItsIndex) {
  setenv("QNL_VML_KERNEL_INDEX", "09", 1);
  qnl_probe_set_result("dll_cpu_version", 9);
  first_call();
  EXPECT_EQ(loaded(), 9);
  EXPECT_EQ(qnl_probe_count_of("dll_cpu_version"), 1);
}

// Any branch on a processor of another vendor picks the reproducible library.
TEST(VmlLoader, ABranchOnAnotherVendorsProcessorLoadsTheReproducibleLibrary) {
  qnl_probe_set_result("qnl_serv_cbwr_get_nolock", 12);
  first_call();
  EXPECT_EQ(loaded(), 1);
}

TEST(VmlLoader, FallbackIsHeldToTheChosenClass) {
  setenv("QNL_VML_KERNEL_INDEX", "2", 1);
  qnl_probe_set_result("dll_cpu_version", 2);
  first_call();
  EXPECT_EQ(loaded(), 0);
}

// Loads that end the process, each with its one message. Index 2 has no file in the probe
// folder, so its choice falls back to index 0, which then must not claim a higher class.
// With tracing on, the mode stands in for the locating address: the module folder becomes
// the executable's, which holds no kernel library. The threaders are resolved in their
// binding order: of the two the TBB layer lacks, the one bound first is reported.
TEST(VmlLoaderDeath, EachFailedLoadEndsTheProcessWithItsMessage) {
  const struct {
    const char *index, *layer;
    int library_class, tracing;
    const char* message;
  } fatal[] = {{"2", "", 3, 0, "dynamic library libqnl_vml_p4n.so is not convenient for this processor."},
               {"", "", 0, 1, "cannot load libqnl_vml_def.so."},
               {"7", "", 0, 1, "cannot load libqnl_vml_avx2.so or libqnl_vml_def.so."},
               {"", "TBB", 0, 0, "Error on loading function qnl_vml_serv_threader_d_2i_1o."}};
  for (const auto& f : fatal)
    EXPECT_EXIT(
        {
          qnl_test::stdout_to_stderr();
          if (*f.index) setenv("QNL_VML_KERNEL_INDEX", f.index, 1);
          if (*f.layer) setenv("QNL_THREADING_LAYER", f.layer, 1);
          if (f.library_class) qnl_probe_set_result("dll_cpu_version", static_cast<uint64_t>(f.library_class));
          *qnl_probe_verbose_mode() = f.tracing;
          first_call();
        },
        ::testing::ExitedWithCode(2), std::string("^Velor QNL FATAL ERROR: ") + f.message + "\n$");
}

TEST(VmlLoader, ControlWordSurvivesTheLibrarysStartUp) {
  const unsigned before = _mm_getcsr();
  first_call();
  ASSERT_EQ(loaded(), 0);
  EXPECT_EQ(_mm_getcsr(), before) << "the probe library sets FTZ and DAZ when it loads";
}

TEST(VmlLoader, FirstCallsFromTwoThreads) {
  ASSERT_EQ(QNL_Set_Interface_Layer(0), 0);
  auto add = qnl_test::exported_as<void(int64_t, const float*, const float*, float*)>("vsAdd");
  float a[4] = {}, y[4];
  std::thread t1([&] { add(4, a, a, y); }), t2([&] { add(4, a, a, y); });
  t1.join();
  t2.join();
  EXPECT_EQ(loaded(), 0);
  EXPECT_EQ(qnl_probe_count_of("qnl_vml_serv_threader_s_2i_1o"), 2);
  // Each thread that found no library on arrival checked the class once.
  EXPECT_GE(qnl_probe_count_of("dll_cpu_version"), 1);
  EXPECT_LE(qnl_probe_count_of("dll_cpu_version"), 2);
}

// Mode, status and callback: every name forwards to its kernel symbol unchanged;
// the integer of a by-reference name is 32 bits on either layer.
void services(int layer) {
  ASSERT_EQ(QNL_Set_Interface_Layer(layer), layer);
  const int64_t cell = static_cast<int64_t>(0xFFFFFFFF00000007ull);
  auto kernel_word = [](const char* symbol) {
    const qnl_probe::Call* c = qnl_probe_call(-1);
    EXPECT_STREQ(c->symbol, symbol);
    return c->word[0];
  };
  for (const char* stem : {"SetMode", "SetErrStatus"}) {
    const std::string kernel = std::string("qnl_vml_kernel_") + stem, mixed = std::string("vml") + stem;
    EXPECT_EQ(qnl_test::exported_as<int(int64_t)>(mixed.c_str())(cell), 0);
    EXPECT_EQ(static_cast<uint32_t>(kernel_word(kernel.c_str())), 7u);
    for (const std::string& name : {upper(mixed), lower(mixed), lower(mixed) + "_"}) {
      EXPECT_EQ(qnl_test::exported_as<int(const int64_t*)>(name.c_str())(&cell), 7) << name;
      EXPECT_EQ(static_cast<uint32_t>(kernel_word(kernel.c_str())), 7u) << name;
    }
  }
  for (const char* stem :
       {"GetMode", "GetErrStatus", "ClearErrStatus", "SetErrorCallBack", "GetErrorCallBack", "ClearErrorCallBack"}) {
    const std::string kernel = std::string("qnl_vml_kernel_") + stem, mixed = std::string("vml") + stem;
    for (const std::string& name : {mixed, upper(mixed), lower(mixed), lower(mixed) + "_"}) {
      void* fn = qnl_test::exported(name.c_str());
      ASSERT_NE(fn, nullptr) << name;
      // The callback pointer goes by value in every spelling.
      reinterpret_cast<uint64_t (*)(uint64_t)>(fn)(0x5ca1ab1e0ull);
      kernel_word(kernel.c_str());
      if (std::string(stem) == "SetErrorCallBack") {
        EXPECT_EQ(qnl_probe_call(-1)->word[0], 0x5ca1ab1e0ull) << name;
      }
    }
  }
  EXPECT_EQ(qnl_test::exported_as<int()>("vmlGetErrStatus")(), 0) << "cleared by the last ClearErrStatus";
}

TEST(VmlServices, EveryNameOnTheLP64Layer) { services(0); }
TEST(VmlServices, EveryNameOnTheILP64Layer) { services(1); }

}  // namespace
