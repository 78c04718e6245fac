// The module folder is where libqnl_rt.so really is, also when the dynamic
// linker found it through a relative search path and the program changed its
// working directory before the first call: a back-end planted where that
// relative path would lead from the new directory is never loaded.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

TEST(ModuleFolder, IsNotReadAgainstANewWorkingDirectory) {
  fs::path t = fs::temp_directory_path() / ("qnl_planted_" + std::to_string(getpid()));
  fs::remove_all(t);
  for (const char* d : {"lib", "run/a", "evil/lib", "evil/p/q"}) fs::create_directories(t / d);
  // The real library, reached through a link; a planted tree beside it.
  fs::create_symlink(fs::path(QNL_PROBE_DIR) / "libqnl_rt.so.0", t / "lib" / "libqnl_rt.so.0");
  fs::copy_file(QNL_PLANTED, t / "evil/lib/libqnl_rt.so.0");
  fs::copy_file(QNL_PLANTED, t / "evil/lib/libqnl_velor_thread.so");
  std::string cmd = "cd '" + (t / "run/a").string() + "' && LD_LIBRARY_PATH=../../lib QNL_THREADING_LAYER= '" +
                    QNL_PLANTED_MAIN + "' ../../evil/p/q 2>&1";
  FILE* p = popen(cmd.c_str(), "r");
  ASSERT_NE(p, nullptr);
  std::string out;
  char buf[256];
  while (fgets(buf, sizeof buf, p)) out += buf;
  int status = pclose(p);
  fs::remove_all(t);
  EXPECT_EQ(out.find("PLANTED"), std::string::npos) << out;
  EXPECT_EQ(out.find("666"), std::string::npos) << out;
  EXPECT_EQ(out.rfind("threads ", 0), 0u) << out;
  EXPECT_EQ(status, 0) << out;
}

}  // namespace
