// Layer variables, the filtered environment read, and the library search, seen
// from inside the runtime. This executable sits in build/probe, so its module
// and executable directories are the same folder.
#include <gtest/gtest.h>
#include <dlfcn.h>
#include <limits.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "loader.h"
#include "probe_backend.h"

static std::vector<std::string> g_loads;
extern "C" void* dlopen(const char* file, int mode) {
  static auto real = reinterpret_cast<void* (*)(const char*, int)>(dlsym(RTLD_NEXT, "dlopen"));
  if (file && std::strstr(file, "libqnl_")) g_loads.push_back(std::strrchr(file, '/') ? std::strrchr(file, '/') + 1 : file);
  return real(file, mode);
}

namespace {

using namespace qnl;

void set(const char* name, const char* value) {
  if (value)
    setenv(name, value, 1);
  else
    unsetenv(name);
}

TEST(LayerVariables, InterfaceSpellings) {
  struct {
    const char* text;
    int value;
  } cases[] = {{nullptr, 0},      {"", 0},          {"ILP64", 1},         {"ilp64", 1},       {"'ILP64'", 1},
               {"\"ilp64\"", 1},  {"Ilp64", 0},     {"LP64", 0},          {"ILP64 x", 1},     {"  ILP64", 1},
               {"\tILP64", 0},    {"ILP64\"x", 1},  {"ILP6", 0},          {"''", 0},
               {"ILP64                          ", 1},    // 31 characters
               {"ILP64                           ", 0}};  // 32 characters: counts as unset
  for (const auto& c : cases) {
    set("QNL_INTERFACE_LAYER", c.text);
    EXPECT_EQ(loader::read_interface_variable(), c.value) << (c.text ? c.text : "(unset)");
  }
}

TEST(LayerVariables, TheInterfaceIsReadOnceAndThenKept) {
  set("QNL_INTERFACE_LAYER", "ilp64");
  EXPECT_EQ(qnl_rt_interface_layer_init(), 1);
  set("QNL_INTERFACE_LAYER", "LP64");
  EXPECT_EQ(qnl_rt_interface_layer_init(), 1);
  EXPECT_EQ(layer(), 1);
}

TEST(FilteredEnvironment, LengthContract) {
  char buf[8];
  set("QNL_TEST_VAR", "abc");
  EXPECT_EQ(qnl_rt_getenv("QNL_TEST_VAR", buf, sizeof buf), 3);
  EXPECT_STREQ(buf, "abc");
  set("QNL_TEST_VAR", "1234567");  // 7 characters fill the buffer of 8 exactly
  EXPECT_EQ(qnl_rt_getenv("QNL_TEST_VAR", buf, sizeof buf), 7);
  set("QNL_TEST_VAR", "12345678");  // does not fit: minus the size it needs, buffer cleared
  EXPECT_EQ(qnl_rt_getenv("QNL_TEST_VAR", buf, sizeof buf), -9);
  EXPECT_EQ(buf[0], '\0');
  set("QNL_TEST_VAR", "");
  std::strcpy(buf, "x");
  EXPECT_EQ(qnl_rt_getenv("QNL_TEST_VAR", buf, sizeof buf), 0);
  EXPECT_EQ(buf[0], '\0');
  set("QNL_TEST_VAR", nullptr);
  EXPECT_EQ(qnl_rt_getenv("QNL_TEST_VAR", buf, sizeof buf), 0);
  set("QNL_TEST_VAR", "abc");
  EXPECT_EQ(qnl_rt_getenv("QNL_TEST_VAR", buf, -3), -4);
}

TEST(FilteredEnvironment, ModeOneLetsOnlyTheFourNamesThrough) {
  char buf[64];
  set("QNL_TEST_VAR", "abc");
  set("LANG", "C");
  loader::env_mode() = 1;
  EXPECT_EQ(qnl_rt_getenv("QNL_TEST_VAR", buf, sizeof buf), 0);
  EXPECT_EQ(buf[0], '\0');
  EXPECT_EQ(qnl_rt_getenv("LANG", buf, sizeof buf), 1);
  loader::env_mode() = 0;
  EXPECT_EQ(qnl_rt_getenv("QNL_TEST_VAR", buf, sizeof buf), 3);
}

TEST(Search, DirectoriesEndInASeparatorAndAreResolved) {
  qnl_rt_load_threading_layer();
  char exe[PATH_MAX];
  ASSERT_NE(realpath("/proc/self/exe", exe), nullptr);
  *(std::strrchr(exe, '/') + 1) = '\0';
  EXPECT_STREQ(loader::g_search.module_directory(), exe);
  EXPECT_STREQ(loader::g_search.executable_directory(), exe);
  EXPECT_NE(loader::threading_handle(), nullptr);
}

TEST(Search, EqualDirectoriesMakeOneAttempt) {
  set("QNL_THREADING_LAYER", "PGI");
  qnl_rt_load_threading_layer();
  EXPECT_EQ(loader::threading_handle(), nullptr);
  EXPECT_EQ(g_loads, std::vector<std::string>{"libqnl_pgi_thread.so"});
}

TEST(Search, ANameWithAPathIsNeverLoaded) {
  qnl_rt_load_threading_layer();
  g_loads.clear();
  EXPECT_EQ(loader::g_search.load("./libqnl_sequential.so"), nullptr);
  EXPECT_TRUE(g_loads.empty());
}

// A second loader's search: its directories follow the address it is given,
// and neither its buffers nor its lock are those of the threading layer's.
TEST(Search, ASecondSearchHasItsOwnDirectoriesAndLock) {
  LibrarySearch own;
  own.fill(reinterpret_cast<const void*>(&std::strlen));  // the C library's folder
  Dl_info info;
  ASSERT_NE(dladdr(reinterpret_cast<const void*>(&std::strlen), &info), 0);
  char libc[PATH_MAX];
  ASSERT_NE(realpath(info.dli_fname, libc), nullptr);
  *(std::strrchr(libc, '/') + 1) = '\0';
  EXPECT_STREQ(own.module_directory(), libc);
  EXPECT_FALSE(loader::g_search.filled());
  // Not in the C library's folder: found in the executable's, the second place.
  ASSERT_NE(own.load("libqnl_sequential.so"), nullptr);
  EXPECT_EQ(g_loads, (std::vector<std::string>{"libqnl_sequential.so", "libqnl_sequential.so"}));

  loader::g_search.lock.lock();
  own.lock.lock();  // would spin for ever on a shared word
  own.lock.unlock();
  loader::g_search.lock.unlock();

  // An address no loaded file holds names the executable's folder.
  LibrarySearch nowhere;
  nowhere.fill(reinterpret_cast<const void*>(16));
  EXPECT_STREQ(nowhere.module_directory(), nowhere.executable_directory());
}

// The executable is copied into a folder whose path is 260 bytes or longer and
// run there; its directories cannot be filled, which is a loader failure.
TEST(Search, APathOf260BytesOrMoreIsALoaderFailure) {
  if (getenv("QNL_TEST_DEEP_CHILD")) {
    qnl_rt_load_threading_layer();
    _exit(0);
  }
  char exe[PATH_MAX];
  ASSERT_NE(realpath("/proc/self/exe", exe), nullptr);
  std::string here(exe, std::strrchr(exe, '/'));
  std::string deep = "/tmp/qnl_deep_" + std::to_string(getpid());
  for (int i = 0; i < 6; ++i) deep += "/" + std::string(50, 'd');
  std::string cmd = "mkdir -p " + deep + " && cp " + exe + " " + here + "/libqnl_probe_state.so " + deep +
                    " && QNL_TEST_DEEP_CHILD=1 " + deep + "/" + (std::strrchr(exe, '/') + 1) +
                    " --gtest_filter=Search.APathOf260BytesOrMoreIsALoaderFailure";
  FILE* child = popen(cmd.c_str(), "r");
  ASSERT_NE(child, nullptr);
  char out[512] = {};
  size_t n = fread(out, 1, sizeof out - 1, child);
  int status = pclose(child);
  std::string output(out, n);
  system(("rm -rf /tmp/qnl_deep_" + std::to_string(getpid())).c_str());
  EXPECT_NE(output.find("Velor QNL FATAL ERROR: Cannot load <qnl-loader>.\n"), std::string::npos) << output;
  EXPECT_EQ(WEXITSTATUS(status), 2);
}

TEST(CoreRoads, TheCoreComesFirstThenTheThreadingLayer) {
  void* fn = qnl_rt_resolve_core("qnl_probe_core_call");
  ASSERT_NE(fn, nullptr);
  EXPECT_EQ(g_loads, (std::vector<std::string>{"libqnl_core.so", "libqnl_velor_thread.so"}));
  EXPECT_NE(loader::threading_handle(), nullptr);
  reinterpret_cast<int (*)(int)>(fn)(3);
  EXPECT_STREQ(qnl_probe_call(-1)->library, "core");
}

TEST(CoreRoads, TheClusterCoreLoadsAlone) {
  ASSERT_NE(qnl_rt_resolve_cdft("qnl_probe_cdft_core_call"), nullptr);
  EXPECT_EQ(g_loads, std::vector<std::string>{"libqnl_cdft_core.so"});
  EXPECT_EQ(loader::threading_handle(), nullptr);
}

TEST(CoreRoads, AMissingCoreSymbolIsFatal) {
  EXPECT_EXIT(
      {
        dup2(2, 1);
        qnl_rt_resolve_core("qnl_dnn_absent");
      },
      testing::ExitedWithCode(2), "^Velor QNL FATAL ERROR: Error on loading function qnl_dnn_absent.\n$");
}

}  // namespace
