// The catalogue: built-in rows, the localised file and its fallbacks, printing.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "messages.h"

namespace {

namespace fs = std::filesystem;
using qnl::messages::kRows;

// Runs in a fresh folder holding "<locale>/qnl_msg.cat" with `catalogue`.
class Localised : public testing::Test {
 protected:
  void use(const std::string& catalogue) {
    dir_ = fs::temp_directory_path() / ("qnl_msg_" + std::to_string(getpid()));
    fs::create_directories(dir_ / "xx_TEST");
    if (!catalogue.empty()) std::ofstream(dir_ / "xx_TEST" / "qnl_msg.cat", std::ios::binary) << catalogue;
    fs::current_path(dir_);
    setenv("LC_ALL", "xx_TEST", 1);
  }
  void TearDown() override {
    if (!dir_.empty()) fs::remove_all(dir_);
  }
  std::string print(int id, const char* arg) {
    testing::internal::CaptureStdout();
    qnl_rt_print_message(0, id, 1, arg);
    return testing::internal::GetCapturedStdout();
  }
  fs::path dir_;
};

TEST(BuiltIn, RowsAreNumberedAndCarryTheirSeverities) {
  int by_severity[5] = {};
  for (int i = 0; i < qnl::messages::kRowCount; ++i) {
    ASSERT_EQ(kRows[i].number, static_cast<uint32_t>(i));
    ASSERT_LE(kRows[i].severity, 4u);
    ++by_severity[kRows[i].severity];
  }
  EXPECT_EQ(by_severity[4], 1374);
  EXPECT_EQ(by_severity[2], 3);
  EXPECT_EQ(by_severity[1], 37);
  EXPECT_STREQ(kRows[0].text, "\n");
  EXPECT_STREQ(kRows[1089].text, "Velor QNL INTERNAL ERROR: Not enough work memory in function %s");
  EXPECT_STREQ(kRows[1413].text, "Velor QNL Extended Eigensolvers Error: Matrix B is not positive definite.");
  EXPECT_EQ(kRows[761].severity, 2u);
  EXPECT_EQ(kRows[1063].severity, 4u);
}

TEST(BuiltIn, TextOfZeroIsEmptyAndFormattingIsBounded) {
  EXPECT_STREQ(qnl_rt_message_text(0, 0), "");
  EXPECT_STREQ(qnl_rt_message_text(761, 0), "Velor QNL DFTI SUCCESS: No error");
  EXPECT_STREQ(qnl_rt_message_text(1, 0), "Velor QNL FATAL ERROR: Cannot load %s.");
  EXPECT_STREQ(qnl_rt_message_text(1, 1, "x.so"), "Velor QNL FATAL ERROR: Cannot load x.so.");
  std::string big(600, 'a');
  EXPECT_EQ(std::string(qnl_rt_message_text(1, 1, big.c_str())).size(), 511u);
}

TEST(BuiltIn, PrintingZeroPrintsOneLineFeed) {
  testing::internal::CaptureStdout();
  qnl_rt_print_message(0, 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n");
}

TEST_F(Localised, WithoutAFileTheBuiltInTextServesAndTheFileIsNotSoughtAgain) {
  use("");
  EXPECT_EQ(print(1, "a.so"), "Velor QNL FATAL ERROR: Cannot load a.so.\n");
  std::ofstream(dir_ / "xx_TEST" / "qnl_msg.cat", std::ios::binary) << "80000001 Localised %s\r\n";
  EXPECT_EQ(print(1, "a.so"), "Velor QNL FATAL ERROR: Cannot load a.so.\n");
}

TEST_F(Localised, ARowEndingInCrLfReplacesTheBuiltInText) {
  use("80000001 Kann %s nicht laden.\r\n80000003 no line end\n80000006 x");
  EXPECT_EQ(print(1, "a.so"), "Kann a.so nicht laden.\n");
  EXPECT_EQ(print(3, "f"), "Velor QNL FATAL ERROR: Error on loading function f.\n");  // no CR LF
  EXPECT_STREQ(qnl_rt_message_text(6, 0), "Velor QNL ERROR: Parameter %d was incorrect on entry to %s.");  // one character
  EXPECT_STREQ(qnl_rt_message_text(2, 0), "Velor QNL FATAL ERROR: Cannot load %s or %s.");  // absent row
  EXPECT_STREQ(qnl_rt_message_text(1, 0), "Kann %s nicht laden.");
}

TEST_F(Localised, AnEmptyLocalisedTextIsStillATextOfItsOwn) {
  use("80000001 \r\n");
  EXPECT_EQ(print(1, "a.so"), "\n");
}

}  // namespace
