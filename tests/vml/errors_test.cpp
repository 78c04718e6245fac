// Errors on the reference kernel libraries through the facade: each status with
// its IEEE result, errno, the callback's context and both of its return paths,
// NaN arguments that are no error, the accuracy warning, pack and unpack.
// (Accuracy, in-place and misaligned calls: accuracy_test.)
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "qnl_vml.h"
#include "test_util.h"
#include "vml_cases.inc"

namespace {

const double kInf = std::numeric_limits<double>::infinity();

struct Seen {
  int calls = 0;
  int code = 0, index = -1;
  double a1 = 0;
  std::string name;
};
Seen g_seen;

int record_and_replace(VMLErrorContext* c) {
  ++g_seen.calls;
  g_seen.code = c->code;
  g_seen.index = c->index;
  g_seen.a1 = c->a1;
  g_seen.name.assign(c->name, static_cast<size_t>(c->name_length));
  c->r1 = 42;  // written to the result
  return 0;
}
int stop_after_first(VMLErrorContext*) {
  ++g_seen.calls;
  return 1;
}

// A double function, an argument it fails on, the status and the IEEE result without a callback.
struct ErrorCase {
  const char* name;
  double arg;
  int status;
  double result;
};
const ErrorCase kCases[] = {{"vdLn", -1, VML_STATUS_ERRDOM, NAN},      {"vdLn", 0, VML_STATUS_SING, -kInf},
                            {"vdExp", 800, VML_STATUS_OVERFLOW, kInf}, {"vdExp", -800, VML_STATUS_UNDERFLOW, 0},
                            {"vdInv", 0, VML_STATUS_SING, kInf},       {"vdSqrt", -4, VML_STATUS_ERRDOM, NAN},
                            {"vdErfInv", 2, VML_STATUS_ERRDOM, NAN},   {"vdTGamma", 0, VML_STATUS_SING, kInf}};

void same(double got, double want, const std::string& what) {
  if (std::isnan(want))
    EXPECT_TRUE(std::isnan(got)) << what;
  else
    EXPECT_EQ(got, want) << what;
}

TEST(VmlErrors, EachStatusWithItsIeeeResultErrnoAndCallback) {
  for (const ErrorCase& c : kCases) {
    // Element 3 of 5 fails; the others are fine.
    std::vector<double> a = {0.25, 0.5, 0.125, c.arg, 0.375}, y(5);
    const auto call = [&](double* out) {
      qnl_test::exported_as<void(int, const double*, double*)>(c.name)(5, a.data(), out);
    };
    const std::string what = std::string(c.name) + "(" + std::to_string(c.arg) + ")";
    vmlClearErrStatus();
    vmlClearErrorCallBack();
    errno = 0;
    call(y.data());
    EXPECT_EQ(vmlGetErrStatus(), c.status) << what;
    EXPECT_EQ(errno, c.status == VML_STATUS_ERRDOM ? EDOM : ERANGE) << what;
    same(y[3], c.result, what);
    EXPECT_TRUE(std::isfinite(y[0]) && std::isfinite(y[4])) << what;
    // With a callback: it sees the element and its argument, and its result is stored.
    g_seen = {};
    vmlSetErrorCallBack(record_and_replace);
    vmlClearErrStatus();
    call(y.data());
    EXPECT_EQ(g_seen.calls, 1) << what;
    EXPECT_EQ(g_seen.code, c.status) << what;
    EXPECT_EQ(g_seen.index, 3) << what;
    EXPECT_EQ(g_seen.a1, c.arg) << what;
    EXPECT_EQ(y[3], 42) << what;
    // Ignored errors leave the status alone.
    vmlClearErrStatus();
    std::vector<double> y2(5);
    vmlSetMode(VML_HA | VML_ERRMODE_IGNORE);
    call(y2.data());
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK) << what;
    same(y2[3], c.result, what);
    vmlSetMode(VML_DEFAULT_MODE);
  }
  vmlClearErrorCallBack();
}

TEST(VmlErrors, CallbackReturningNonZeroHearsNoMoreOfTheCall) {
  std::vector<double> a(100, -1.0), y(100);
  g_seen = {};
  vmlSetErrorCallBack(stop_after_first);
  vdLn(100, a.data(), y.data());
  EXPECT_EQ(g_seen.calls, 1);
  EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_ERRDOM);
  vmlSetErrorCallBack(record_and_replace);
  g_seen = {};
  vdLn(100, a.data(), y.data());
  EXPECT_EQ(g_seen.calls, 100);
  EXPECT_EQ(g_seen.name, "vdLn");
  vmlClearErrorCallBack();
}

// A NaN argument is no error: every one-argument real function returns NaN and
// leaves the status alone, in the default mode, which reports errors.
TEST(VmlErrors, NanArgumentsAreNoError) {
  for (const VmlCase& c : kVmlCases) {
    if (std::string(c.args) != "ey" || (c.name[1] != 's' && c.name[1] != 'd')) continue;
    vmlClearErrStatus();
    double y[2] = {0, 0};
    if (c.name[1] == 'd') {
      const double a[2] = {NAN, -NAN};
      qnl_test::exported_as<void(int, const double*, double*)>(c.name)(2, a, y);
    } else {
      const float a[2] = {NAN, -NAN};
      float yf[2];
      qnl_test::exported_as<void(int, const float*, float*)>(c.name)(2, a, yf);
      y[0] = yf[0], y[1] = yf[1];
    }
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK) << c.name;
    EXPECT_TRUE(std::isnan(y[0]) && std::isnan(y[1])) << c.name;
  }
}

TEST(VmlErrors, PackAndUnpackBothWays) {
  std::vector<double> a = {0, 1, 2, 3, 4, 5, 6, 7}, y(4, -1), back(8, -1);
  vdPackI(4, a.data(), 2, y.data());
  EXPECT_EQ(y, (std::vector<double>{0, 2, 4, 6}));
  const int idx[4] = {7, 0, 3, 3};
  vdPackV(4, a.data(), idx, y.data());
  EXPECT_EQ(y, (std::vector<double>{7, 0, 3, 3}));
  const int mask[8] = {0, 1, 0, 1, 1, 0, 0, 1};
  vdPackM(8, a.data(), mask, y.data());
  EXPECT_EQ(y, (std::vector<double>{1, 3, 4, 7}));
  vdUnpackM(8, y.data(), back.data(), mask);
  EXPECT_EQ(back, (std::vector<double>{-1, 1, -1, 3, 4, -1, -1, 7}));
  std::vector<double> spread(8, 0);
  vdUnpackI(4, y.data(), spread.data(), 2);
  EXPECT_EQ(spread, (std::vector<double>{1, 0, 3, 0, 4, 0, 7, 0}));
}

// Power of a complex vector in LA warns that the double complex kernel is not the
// HA one; single complex does not.
TEST(VmlErrors, AccuracyWarningOfDoubleComplexPow) {
  QNL_Complex16 a[2] = {{1, 1}, {2, 0}}, y[2];
  vmlClearErrStatus();
  vmzPow(2, a, a, y, VML_LA);
  EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_ACCURACYWARNING);
  vmlClearErrStatus();
  vmzPow(2, a, a, y, VML_HA);
  EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK);
  QNL_Complex8 c[2] = {{1, 1}, {2, 0}}, cy[2];
  vmcPow(2, c, c, cy, VML_LA);
  EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK);
  EXPECT_NEAR(y[1].real, 4, 1e-14);
}

}  // namespace
