// The threading layers' vector threaders, called directly with the test's own
// kernel: every element once with its own index; chunks really shared among
// threads; nested, concurrent and forked calls all complete.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using Kernel = void (*)(int32_t n, const double* a, double* y, int64_t first);
using Threader = void (*)(void* kernel, int32_t n, const double* a, double* y, int32_t tag, void* reserved);
constexpr int32_t kTag = 4096;

Threader threader_of(const char* layer) {
  void* h = dlopen((std::string(QNL_TEST_LIB_DIR "/libqnl_") + layer + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!h) return nullptr;
  if (auto set = reinterpret_cast<void (*)(int32_t)>(dlsym(h, "qnl_serv_set_num_threads"))) set(2);
  return reinterpret_cast<Threader>(dlsym(h, "qnl_vml_serv_threader_d_1i_1o"));
}

// y = a + the element's index as the threader passed it: wrong pieces, indices
// or arguments all show.
void plus_index(int32_t n, const double* a, double* y, int64_t first) {
  for (int32_t i = 0; i < n; ++i) y[i] = a[i] + static_cast<double>(first + i);
}

bool computes_whole(Threader t, int32_t n, Kernel k = plus_index) {
  std::vector<double> a(static_cast<size_t>(n)), y(static_cast<size_t>(n), -1);
  for (int32_t i = 0; i < n; ++i) a[static_cast<size_t>(i)] = 0.5 * i;
  t(reinterpret_cast<void*>(k), n, a.data(), y.data(), kTag, nullptr);
  for (int32_t i = 0; i < n; ++i)
    if (y[static_cast<size_t>(i)] != 1.5 * i) return false;
  return true;
}

// The first chunk waits (up to a deadline) until another thread runs one.
std::atomic<int> g_entered{0};
std::atomic<bool> g_met{false};
void waits_for_company(int32_t n, const double* a, double* y, int64_t first) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  if (g_entered.fetch_add(1) == 0) {
    while (g_entered.load() < 2 && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    g_met = g_entered.load() >= 2;
  }
  plus_index(n, a, y, first);
}

TEST(VmlThreader, EveryElementOnceAndThreadedLayersShareChunks) {
  for (const char* layer : {"sequential", "velor_thread", "tbb_thread", "pgi_thread"}) {
    Threader t = threader_of(layer);
    ASSERT_NE(t, nullptr) << layer;
    for (int32_t n : {0, 1, 63, 2 * kTag - 1, 2 * kTag, 2 * kTag + 1, 17 * kTag + 5, 1000003})
      EXPECT_TRUE(computes_whole(t, n)) << layer << " n=" << n;
    if (std::string(layer) == "sequential") continue;
    g_entered = 0;
    g_met = false;
    EXPECT_TRUE(computes_whole(t, 64 * kTag, waits_for_company)) << layer;
    EXPECT_TRUE(g_met) << layer << ": one thread computed every chunk";
  }
}

Threader g_inner;  // a kernel calling the threader again, as an error callback may
void calls_again(int32_t n, const double* a, double* y, int64_t first) {
  plus_index(n, a, y, first);
  if (!computes_whole(g_inner, 3 * kTag)) y[0] = -1;
}

TEST(VmlThreader, NestedConcurrentAndForkedCallsComplete) {
  Threader t = g_inner = threader_of("velor_thread");
  EXPECT_TRUE(computes_whole(t, 16 * kTag, calls_again));
  std::atomic<int> right{0};
  std::vector<std::thread> callers;
  for (int c = 0; c < 4; ++c)
    callers.emplace_back([&] {
      for (int r = 0; r < 20; ++r) right += computes_whole(t, 9 * kTag + r);
    });
  for (std::thread& c : callers) c.join();
  EXPECT_EQ(right.load(), 80);
#ifndef __SANITIZE_THREAD__  // the thread checker does not follow threads started after a fork
  const pid_t child = fork();
  if (child == 0) {
    alarm(30);  // a child left waiting for its parent's workers ends here
    _exit(computes_whole(t, 64 * kTag) ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
#endif
}

}  // namespace
