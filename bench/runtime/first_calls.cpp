// Time of the first calls of the process when many threads make them at once,
// against one thread making them alone. Each measurement runs in a fresh child
// process, since a first call happens once per process. Prints the medians in
// milliseconds and their ratio.
//
//   first_calls [threads=64] [repetitions=9]
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

extern "C" int QNL_Get_Max_Threads();
extern "C" double dnrm2_(const int* n, const double* x, const int* incx);
extern "C" void dscal_(const int* n, const double* a, double* x, const int* incx);

namespace {

// Each thread binds three entries: a service and two BLAS routines.
void first_calls() {
  int n = 4, inc = 1;
  double x[4] = {1, 2, 3, 4}, a = 0.5;
  QNL_Get_Max_Threads();
  dscal_(&n, &a, x, &inc);
  if (dnrm2_(&n, x, &inc) <= 0) std::abort();
}

// Milliseconds from the start signal until every thread has returned, in a child.
double measure(int threads) {
  int fds[2];
  if (pipe(fds) != 0) std::abort();
  pid_t pid = fork();
  if (pid == 0) {
    std::atomic<int> ready{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> pool;
    for (int i = 0; i < threads; ++i)
      pool.emplace_back([&] {
        ++ready;
        while (!go.load()) std::this_thread::yield();
        first_calls();
      });
    while (ready.load() < threads) std::this_thread::yield();
    auto t0 = std::chrono::steady_clock::now();
    go = true;
    for (auto& t : pool) t.join();
    double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
    if (write(fds[1], &ms, sizeof ms) != sizeof ms) _exit(1);
    _exit(0);
  }
  close(fds[1]);
  double ms = -1;
  if (read(fds[0], &ms, sizeof ms) != sizeof ms) ms = -1;
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  return ms;
}

double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  int threads = argc > 1 ? std::atoi(argv[1]) : 64;
  int reps = argc > 2 ? std::atoi(argv[2]) : 9;
  std::vector<double> one, many;
  for (int r = 0; r < reps; ++r) {
    one.push_back(measure(1));
    many.push_back(measure(threads));
  }
  std::printf("first calls, 1 thread:   median %8.2f ms\n", median(one));
  std::printf("first calls, %d threads: median %8.2f ms, worst %8.2f ms\n", threads, median(many),
              *std::max_element(many.begin(), many.end()));
  std::printf("ratio %d threads / 1 thread: %.2f\n", threads, median(many) / median(one));
  return 0;
}
