// An application that defines its own xerbla_ hears of argument errors through
// it, as the classic test programs expect.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

static std::string g_seen;
extern "C" void xerbla_(const char* name, const int* info, size_t len) {
  g_seen = std::string(name, len) + ":" + std::to_string(*info);
}
extern "C" void cdecl_xerbla(const char*, const int*, int);

TEST(ApplicationXerbla, TakesTheReportsOfTheLibrary) {
  int info = 4;
  testing::internal::CaptureStdout();
  cdecl_xerbla("DGEMM ", &info, 6);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(g_seen, "DGEMM :4");
}
