// The catalogue: built-in rows, the localised file and its fallbacks, printing.
#include "messages.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "test_util.h"

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
    return qnl_test::printed([&] { qnl_rt_print_message(0, id, 1, arg); });
  }
  fs::path dir_;
};

// Rows are found by number, severities are the three the catalogue knows, and every
// text is one a printf-style formatter may take: directives of the few kinds the
// facade's callers pass, nothing that writes through an argument.
TEST(BuiltIn, RowsAreNumberedWithKnownSeveritiesAndSafeFormats) {
  for (int i = 0; i < qnl::messages::kRowCount; ++i) {
    SCOPED_TRACE(i);
    ASSERT_EQ(kRows[i].number, static_cast<uint32_t>(i));
    EXPECT_TRUE(kRows[i].severity == 1 || kRows[i].severity == 2 || kRows[i].severity == 4);
    for (const char* p = std::strchr(kRows[i].text(), '%'); p; p = std::strchr(p + 1, '%')) {
      p += 1 + std::strspn(p + 1, "-+ #0123456789.");  // flags, width, precision
      p += std::strspn(p, "hlLjzt");                   // length
      EXPECT_TRUE(*p && std::strchr("diouxXeEfgGcs%", *p)) << kRows[i].text();
    }
  }
  EXPECT_STREQ(kRows[0].text(), "\n");  // an escaped line feed in the table
}

TEST(BuiltIn, TextOfZeroIsEmptyAndFormattingIsBounded) {
  EXPECT_STREQ(qnl_rt_message_text(0, 0), "");
  EXPECT_STREQ(qnl_rt_message_text(1, 0), "Velor QNL FATAL ERROR: Cannot load %s.");
  EXPECT_STREQ(qnl_rt_message_text(1, 1, "x.so"), "Velor QNL FATAL ERROR: Cannot load x.so.");
  std::string big(600, 'a');
  EXPECT_EQ(std::string(qnl_rt_message_text(1, 1, big.c_str())).size(), 511u);
}

TEST(BuiltIn, PrintingZeroPrintsOneLineFeed) {
  EXPECT_EQ(qnl_test::printed([] { qnl_rt_print_message(0, 0, 0); }), "\n");
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
  EXPECT_STREQ(qnl_rt_message_text(6, 0),
               "Velor QNL ERROR: Parameter %d was incorrect on entry to %s.");              // one character
  EXPECT_STREQ(qnl_rt_message_text(2, 0), "Velor QNL FATAL ERROR: Cannot load %s or %s.");  // absent row
  EXPECT_STREQ(qnl_rt_message_text(1, 0), "Kann %s nicht laden.");
}

TEST_F(Localised, AnEmptyLocalisedTextIsStillATextOfItsOwn) {
  use("800002F9 \r\n");  // row 761, which has no directive
  EXPECT_EQ(print(761, "a.so"), "\n");
}

// A localised row is a format only when its directives are the built-in row's,
// in the same order; a key is exactly eight hex digits and a blank.
struct Row {
  const char* line;
  const char* printed = nullptr;  // what row 1 prints with "a.so"; null: the built-in text
};

// Shows a row in the test's output by its text, not its bytes.
void PrintTo(const Row& r, std::ostream* os) { *os << testing::PrintToString(std::string(r.line)); }

class HostileRows : public Localised, public testing::WithParamInterface<Row> {};

TEST_P(HostileRows, OnlyAMatchingRowReplacesTheBuiltInText) {
  use(GetParam().line);
  EXPECT_EQ(print(1, "a.so"), GetParam().printed ? GetParam().printed : "Velor QNL FATAL ERROR: Cannot load a.so.\n");
}

INSTANTIATE_TEST_SUITE_P(Catalogue, HostileRows,
                         testing::Values(Row{"80000001 Lokal %s.\r\n", "Lokal a.so.\n"},
                                         Row{"80000001 Lokal 100%% %s.\r\n", "Lokal 100% a.so.\n"},
                                         Row{"80000001 Lokal %n%n\r\n"}, Row{"80000001 Lokal %s%n\r\n"},
                                         Row{"80000001 Lokal %s%s%s%s%s%s%s%s\r\n"}, Row{"80000001 Lokal %d\r\n"},
                                         Row{"80000001 Lokal %1$s\r\n"}, Row{"80000001 Lokal %-300s\r\n"},
                                         Row{"80000001 Lokal\r\n"}, Row{"180000001 Lokal %s\r\n"},
                                         Row{"-7FFFFFFF Lokal %s\r\n"}, Row{"0x80000001 Lokal %s\r\n"},
                                         Row{" 80000001 Lokal %s\r\n"}, Row{"80000001\tLokal %s\r\n"},
                                         Row{"8000001 Lokal %s\r\n"}));

// Files that are not catalogues: the built-in text, at once and without
// reading them (a FIFO would block for ever, a device never ends). In a child,
// so that a hang ends as a failure.
class NotACatalogue : public Localised, public testing::WithParamInterface<const char*> {};

TEST_P(NotACatalogue, IsNotRead) {
  use("");
  fs::path cat = dir_ / "xx_TEST" / "qnl_msg.cat";
  std::string kind = GetParam();
  if (kind == "fifo") {
    ASSERT_EQ(mkfifo(cat.c_str(), 0600), 0);
  }
  if (kind == "zero" || kind == "urandom") fs::create_symlink("/dev/" + kind, cat);
  if (kind == "oversized") {
    // 9 MB with row 1 at its head: far more than any catalogue, so not one.
    std::ofstream(cat, std::ios::binary) << "80000001 Lokal %s\r\n";
    fs::resize_file(cat, 9u << 20);
  }
  EXPECT_EXIT(
      {
        qnl_test::stdout_to_stderr();
        alarm(20);
        qnl_rt_print_message(0, 1, 1, "a.so");
        std::exit(0);
      },
      testing::ExitedWithCode(0), "^Velor QNL FATAL ERROR: Cannot load a.so.\n$");
}

INSTANTIATE_TEST_SUITE_P(Catalogue, NotACatalogue, testing::Values("fifo", "zero", "urandom", "oversized"));

TEST_F(Localised, ARowIsFoundAmongManyWithoutHoldingThemAll) {
  std::string text;
  for (int i = 0; i < 100000; ++i) text += "8000FFFF filler row\r\n";
  use(text + "80000001 Lokal %s.\r\n");
  EXPECT_EQ(print(1, "a.so"), "Lokal a.so.\n");
}

}  // namespace
