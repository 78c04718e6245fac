// Process start to first result: runs the two first_ddot programs in turns,
// K times each, and times each from just before posix_spawn to the arrival of
// its result on a pipe. Prints the median and quartiles of both and the ratio
// of the medians; both programs must print the same result.
//
//   startup FACADE_PROGRAM DIRECT_PROGRAM [K]
//
// The environment passes on unchanged (bench/cost/run.sh pins the run to one
// processor and chooses the sequential threading layer).
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

extern char** environ;

namespace {

// Milliseconds from spawn to the first line on standard output; `out` gets the line.
double time_one(const char* program, std::string& out) {
  int fd[2];
  if (pipe(fd) != 0) std::exit(1);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fd[1], 1);
  posix_spawn_file_actions_addclose(&actions, fd[0]);
  char* argv[] = {const_cast<char*>(program), nullptr};
  const auto t0 = std::chrono::steady_clock::now();
  pid_t pid;
  if (posix_spawn(&pid, program, &actions, nullptr, argv, environ) != 0) {
    std::perror(program);
    std::exit(1);
  }
  close(fd[1]);
  out.clear();
  char buf[64];
  ssize_t got;
  while (out.find('\n') == std::string::npos && (got = read(fd[0], buf, sizeof buf)) > 0) out.append(buf, got);
  const auto t1 = std::chrono::steady_clock::now();
  close(fd[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  posix_spawn_file_actions_destroy(&actions);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "%s failed\n", program);
    std::exit(1);
  }
  return std::chrono::duration<double, std::milli>(t1 - t0).count();
}

double quantile(std::vector<double> v, double q) {
  std::sort(v.begin(), v.end());
  return v[static_cast<size_t>(q * (v.size() - 1) + 0.5)];
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s FACADE_PROGRAM DIRECT_PROGRAM [K]\n", argv[0]);
    return 2;
  }
  const int k = argc > 3 ? std::atoi(argv[3]) : 101;
  std::vector<double> t[2];
  std::string result[2], line;
  for (int i = 0; i < 3; ++i) time_one(argv[1 + i % 2], line);  // file cache warm for both
  for (int i = 0; i < k; ++i)
    for (int r = 0; r < 2; ++r) {
      t[r].push_back(time_one(argv[1 + r], line));
      if (result[r].empty()) result[r] = line;
      if (line != result[r]) {
        std::fprintf(stderr, "%s gave %s after %s\n", argv[1 + r], line.c_str(), result[r].c_str());
        return 1;
      }
    }
  if (result[0] != result[1]) {
    std::fprintf(stderr, "results differ: facade %s, direct %s\n", result[0].c_str(), result[1].c_str());
    return 1;
  }
  const double m0 = quantile(t[0], 0.5), m1 = quantile(t[1], 0.5);
  std::printf(
      "start to first ddot, %d starts each: facade %.2f ms [%.2f..%.2f], direct %.2f ms [%.2f..%.2f], "
      "ratio %.2f\n",
      k, m0, quantile(t[0], 0.25), quantile(t[0], 0.75), m1, quantile(t[1], 0.25), quantile(t[1], 0.75), m0 / m1);
  return 0;
}
