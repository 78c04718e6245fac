// First binding: which library loads, what a missing library or symbol does,
// the exit handler, and binding from many threads at once.
#include <gtest/gtest.h>

#include <atomic>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "probe_backend.h"
#include "test_util.h"

// Counts the library loads the facade asks for, by file name.
static std::atomic<int> g_loads_of_pgi{0};
extern "C" void* dlopen(const char* file, int mode) {
  static auto real = reinterpret_cast<void* (*)(const char*, int)>(dlsym(RTLD_NEXT, "dlopen"));
  if (file && std::strstr(file, "libqnl_pgi_thread.so")) ++g_loads_of_pgi;
  return real(file, mode);
}

namespace {

using qnl_test::exported_as;
auto get_max_threads() { return exported_as<int()>("QNL_Get_Max_Threads")(); }

TEST(Binding, SixteenThreadsBindOnceCorrectlyAndAllReachTheBackEnd) {
  constexpr int kThreads = 16;
  std::atomic<int> ready{0};
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  qnl_probe_set_result("qnl_serv_get_max_threads", 77);
  std::atomic<int> right{0};
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&] {
      ++ready;
      while (!go) {
      }
      right += get_max_threads() == 77;
    });
  while (ready < kThreads) {
  }
  go = true;
  for (auto& t : threads) t.join();
  EXPECT_EQ(right, kThreads);
  EXPECT_EQ(qnl_probe_count_of("qnl_serv_get_max_threads"), kThreads);
  EXPECT_STREQ(qnl_probe_call(-1)->library, "velor_thread");
}

struct LayerCase {
  const char* value;  // null: unset
  const char* library;
};
void PrintTo(const LayerCase& c, std::ostream* os) {
  *os << (c.value ? testing::PrintToString(std::string(c.value)) : "unset") << " -> " << c.library;
}

class ThreadingVariable : public testing::TestWithParam<LayerCase> {};

TEST_P(ThreadingVariable, ChoosesTheLibrary) {
  if (GetParam().value)
    setenv("QNL_THREADING_LAYER", GetParam().value, 1);
  else
    unsetenv("QNL_THREADING_LAYER");
  get_max_threads();
  EXPECT_STREQ(qnl_probe_call(-1)->library, GetParam().library);
}

// The word rules (blanks, quotes, the length limit) are the interface variable's, tested
// with it in loader_test.cpp; these are the threading layer's own spellings.
INSTANTIATE_TEST_SUITE_P(Spellings, ThreadingVariable,
                         testing::Values(LayerCase{nullptr, "velor_thread"}, LayerCase{"", "velor_thread"},
                                         LayerCase{"SEQUENTIAL", "sequential"}, LayerCase{"sequential", "sequential"},
                                         LayerCase{"SEQ", "sequential"}, LayerCase{"seq", "sequential"},
                                         LayerCase{"Seq", "velor_thread"}, LayerCase{"TBB", "tbb_thread"},
                                         LayerCase{"tbb", "tbb_thread"}, LayerCase{"' seq x", "sequential"},
                                         LayerCase{"ZORBLAT", "velor_thread"}));

TEST(Binding, MissingLibraryPrintsMessageOneAndEndsWithCodeTwo) {
  EXPECT_EXIT(
      {
        qnl_test::stdout_to_stderr();
        setenv("QNL_THREADING_LAYER", "PGI", 1);
        std::atexit([] { std::fputs("atexit ran\n", stderr); });
        std::fputs("unflushed ", stdout);  // the message printer flushes what came before it
        get_max_threads();
        std::fputs("not reached\n", stderr);
      },
      testing::ExitedWithCode(2), "^unflushed Velor QNL FATAL ERROR: Cannot load libqnl_pgi_thread.so.\n$");
}

TEST(Binding, MissingLibraryIsLookedForInBothDirectories) {
  // The facade copy lives in build/probe and this executable elsewhere: two attempts.
  static int attempts = 0;
  static jmp_buf back;
  setenv("QNL_THREADING_LAYER", "PGI", 1);
  // Leaves the failed binding without ending the process.
  if (setjmp(back) == 0)
    exported_as<void(void*)>("QNL_Set_Exit_Handler")(reinterpret_cast<void*>(+[](int) {
      attempts = g_loads_of_pgi.load();
      longjmp(back, 1);
    }));
  EXPECT_EQ(attempts, 2);
}

TEST(Binding, MissingSymbolFailsOnlyAtItsOwnEntry) {
  setenv("QNL_THREADING_LAYER", "TBB", 1);
  qnl_probe_set_result("qnl_serv_get_max_threads", 5);
  EXPECT_EQ(get_max_threads(), 5);
  EXPECT_EXIT(
      {
        qnl_test::stdout_to_stderr();
        exported_as<int()>("QNL_GET_DYNAMIC")();
      },
      testing::ExitedWithCode(2), "^Velor QNL FATAL ERROR: Error on loading function qnl_serv_get_dynamic.\n$");
  EXPECT_EQ(get_max_threads(), 5);
}

// The handler counts its calls and ends the process on the second, before the
// entry jumps through its still-empty slot.
std::atomic<int> g_handler_calls{0};
void counting_handler(int code) {
  std::fprintf(stderr, "handler %d\n", code);
  if (++g_handler_calls == 2) _exit(40 + g_handler_calls);
}

TEST(ExitHandler, AsTheFirstCallWithNoBackEndRunsTwiceWithTwo) {
  EXPECT_EXIT(
      {
        qnl_test::stdout_to_stderr();
        setenv("QNL_THREADING_LAYER", "PGI", 1);
        exported_as<void(void*)>("QNL_SET_EXIT_HANDLER")(reinterpret_cast<void*>(counting_handler));
      },
      testing::ExitedWithCode(42), "Cannot load libqnl_pgi_thread.so.\nhandler 2\nhandler 2\n$");
}

TEST(ExitHandler, AThinEntryCallsAReturningHandlerTwice) {
  EXPECT_EXIT(
      {
        qnl_test::stdout_to_stderr();
        setenv("QNL_THREADING_LAYER", "TBB", 1);
        exported_as<void(void*)>("QNL_Set_Exit_Handler")(reinterpret_cast<void*>(counting_handler));
        exported_as<int()>("QNL_Get_Dynamic")();
      },
      testing::ExitedWithCode(42),
      "^Velor QNL FATAL ERROR: Error on loading function qnl_serv_get_dynamic.\nhandler 2\nhandler 2\n$");
}

// An application survives a load failure by leaving its handler with longjmp:
// every later first call must be able to bind (and fail again) rather than
// find the binding lock still held.
jmp_buf g_back;
int g_left = 0;

void bind_three_after_a_failed_first() {
  qnl_test::stdout_to_stderr();
  alarm(20);  // a first call that spins for ever ends here
  setenv("QNL_THREADING_LAYER", "PGI", 1);
  // Setting the handler is itself the first binding, and fails.
  if (setjmp(g_back) == 0)
    exported_as<void(void*)>("QNL_Set_Exit_Handler")(reinterpret_cast<void*>(+[](int) { longjmp(g_back, 1); }));
  else
    ++g_left;
  static const char* const entries[] = {"QNL_Get_Max_Threads", "QNL_Get_Dynamic", "QNL_Get_Max_Threads"};
  static int i;
  for (i = 0; i < 3; ++i) {
    if (setjmp(g_back) == 0)
      exported_as<int()>(entries[i])();
    else
      ++g_left;
  }
  std::fprintf(stderr, "left %d times\n", g_left);
  std::exit(0);
}

TEST(ExitHandler, LeavingByLongjmpLeavesTheLockFree) {
  EXPECT_EXIT(bind_three_after_a_failed_first(), testing::ExitedWithCode(0), "left 4 times\n$");
}

}  // namespace
