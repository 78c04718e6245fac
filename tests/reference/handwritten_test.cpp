// Every symbol that handwritten.txt claims for the back-end's own code is defined by every
// threading-layer build, so the forwarding stubs may leave it out.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> listed() {
  std::ifstream in(QNL_TEST_HANDWRITTEN);
  std::vector<std::string> names;
  for (std::string line; std::getline(in, line);)
    if (!line.empty() && line[0] != '#') names.push_back(line);
  return names;
}

class BackendHandwritten : public testing::TestWithParam<const char*> {};

TEST_P(BackendHandwritten, EveryListedSymbolIsDefined) {
  const std::string path = std::string(QNL_TEST_LIB_DIR "/libqnl_") + GetParam() + ".so";
  void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(h, nullptr) << dlerror();
  const auto names = listed();
  ASSERT_FALSE(names.empty());
  for (const std::string& n : names) {
    void* p = dlsym(h, n.c_str());
    EXPECT_NE(p, nullptr) << n;
    Dl_info info;
    if (p && dladdr(p, &info)) {
      EXPECT_EQ(std::string(info.dli_fname), path) << n << " comes from elsewhere";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Layers, BackendHandwritten,
                         testing::Values("sequential", "velor_thread", "tbb_thread", "pgi_thread"));

}  // namespace
