// The binding lock under contention and across fork: waiters give their core
// away to the holder, and a child forked while another thread holds the lock
// can still bind.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "entry.h"

// Counts how often the process gives its core away.
static std::atomic<int> g_yields{0};
extern "C" int sched_yield() {
  ++g_yields;
  return static_cast<int>(syscall(SYS_sched_yield));
}

namespace {

// Waits up to about 20 s for `done`; a hang shows as a failure, not a stuck run.
template <class F>
bool eventually(F done) {
  for (int i = 0; i < 20000; ++i) {
    if (done()) return true;
    usleep(1000);
  }
  return done();
}

TEST(BindingLock, AWaiterGivesItsCoreToTheHolder) {
  qnl_rt_bind_lock();
  int before = g_yields.load();
  std::atomic<bool> got{false};
  std::thread waiter([&] {
    qnl_rt_bind_lock();
    got = true;
    qnl_rt_bind_unlock();
  });
  bool yielded = eventually([&] { return g_yields.load() > before + 10; });
  EXPECT_FALSE(got.load()) << "the lock was held";
  qnl_rt_bind_unlock();
  waiter.join();
  EXPECT_TRUE(yielded) << "a waiter spun without giving its core away";
  EXPECT_TRUE(got.load());
}

TEST(BindingLock, AChildForkedWhileAnotherThreadHoldsItCanBind) {
  std::atomic<bool> held{false}, release{false};
  std::thread holder([&] {
    qnl_rt_bind_lock();
    held = true;
    while (!release) usleep(1000);
    qnl_rt_bind_unlock();
  });
  while (!held) usleep(1000);
  pid_t pid = fork();
  if (pid == 0) {
    alarm(20);  // a child that spins for ever is ended and counted as a failure
    qnl_rt_bind_lock();
    qnl_rt_bind_unlock();
    _exit(0);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  release = true;
  holder.join();
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the child could not take the lock";
}

}  // namespace
