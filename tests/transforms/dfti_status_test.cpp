// The descriptor interface's status paths and the FFTW3 planners' refusals,
// through libqnl_rt.so on the reference back-end, LP64 layer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "fftw3.h"
#include "qnl_dfti.h"

extern "C" {
int dfti_compute_forward_z(DFTI_DESCRIPTOR_HANDLE*, void*);
int dfti_get_value_intval(DFTI_DESCRIPTOR_HANDLE*, const int*, void*);
int dfti_set_value_intvec(DFTI_DESCRIPTOR_HANDLE*, const int*, const int*);
int dfti_get_value_intvec(DFTI_DESCRIPTOR_HANDLE*, const int*, int*);
int dfti_create_descriptor_d_1d(DFTI_DESCRIPTOR_HANDLE*, const double*, const int*, const int*, const int*);
int DFTI_CREATE_DESCRIPTOR_HIGHD(DFTI_DESCRIPTOR_HANDLE*, const int*, const int*, const int*, const int*);
char* dfti_error_message_external_(char*, size_t, const int*);
int dfti_free_descriptor_external(DFTI_DESCRIPTOR_HANDLE*);
}

namespace {

struct Desc {
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  ~Desc() {
    if (h) DftiFreeDescriptor(&h);
  }
};

long status_of(DFTI_DESCRIPTOR_HANDLE h) {
  int v = 0;
  DftiGetValue(h, DFTI_COMMIT_STATUS, &v);
  return v;
}

TEST(BackendDftiCreate, RefusalsLeaveANullHandle) {
  struct Row {
    int dimension;
    enum DFTI_CONFIG_VALUE precision, domain;
    long want;
  } rows[] = {{0, DFTI_DOUBLE, DFTI_COMPLEX, 2},
              {8, DFTI_DOUBLE, DFTI_COMPLEX, 2},
              {2, DFTI_DOUBLE, DFTI_COMPLEX, 3},
              {1, DFTI_COMPLEX, DFTI_COMPLEX, 2},
              {1, DFTI_DOUBLE, DFTI_SINGLE, 2}};
  for (const Row& r : rows) {  // dimension 1 takes a length of 8, others a null lengths pointer
    DFTI_DESCRIPTOR_HANDLE h = reinterpret_cast<DFTI_DESCRIPTOR_HANDLE>(const_cast<Row*>(&r));
    EXPECT_EQ(r.dimension == 1 ? DftiCreateDescriptor(&h, r.precision, r.domain, 1, 8)
                               : DftiCreateDescriptor(&h, r.precision, r.domain, r.dimension, nullptr),
              r.want)
        << r.dimension;
    EXPECT_EQ(h, nullptr);
  }
  EXPECT_EQ(DftiCreateDescriptor(nullptr, DFTI_DOUBLE, DFTI_COMPLEX, 1, 8), 3);
  DFTI_DESCRIPTOR_HANDLE h;
  int n[] = {4};
  EXPECT_EQ(DftiCreateDescriptor_d_1d(&h, DFTI_COMPLEX, 0), 2);
  EXPECT_EQ(DftiCreateDescriptor_s_md(&h, DFTI_CONFIG_VALUE(34), 1, nullptr), 3);
  EXPECT_EQ(DftiCreateDescriptor_s_md(&h, DFTI_CONFIG_VALUE(34), 1, n), 2);
}

// Every scalar setting on a committed descriptor, over every named value and one
// outside them: a setting of a known parameter uncommits, even when refused; the
// front's refusals (unknown parameters, dimension, lengths, version) do not. An
// accepted value reads back, a refused one leaves the old value, and the current
// value of every enumerated setting is accepted again.
TEST(BackendDftiSetValue, SettingsUncommitAndReadBack) {
  const std::vector<int> front = {1, 2, 6, 16, 23, 24, 25, 29}, fixed = {0, 3, 19, 22};
  // The values each enumerated setting names: any other is refused.
  const std::map<int, std::vector<int>> named = {{8, {39, 40, 41, 42}},  {9, {41, 42}},  {10, {39, 40, 41, 42}},
                                                 {11, {43, 44}},         {17, {51, 52}}, {18, {48, 49, 50}},
                                                 {21, {54, 55, 56, 57}}, {28, {51, 52}}};
  auto in = [](const std::vector<int>& set, int p) { return std::find(set.begin(), set.end(), p) != set.end(); };
  for (int p = 0; p <= 29; ++p) {
    if (p == 4 || p == 5 || p == 12 || p == 13 || p == 20) continue;  // scales, stride lists, the name
    for (int v = 29; v <= 59; ++v) {
      Desc d;
      ASSERT_EQ(DftiCreateDescriptor(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 1, 16), 0);
      ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
      long long before = 0, after = 0;
      const bool readable = !in(front, p);
      if (readable) {
        ASSERT_EQ(DftiGetValue(d.h, DFTI_CONFIG_PARAM(p), &before), 0) << p;
      }
      const int value = v == 59 ? 77 : v == 29 ? static_cast<int>(before) : v;
      const long s = DftiSetValue(d.h, DFTI_CONFIG_PARAM(p), value);
      const std::string what = std::to_string(p) + " = " + std::to_string(value);
      EXPECT_TRUE(s == 0 || s == 3 || s == 6) << what << ": " << s;
      EXPECT_EQ(status_of(d.h), in(front, p) ? DFTI_COMMITTED : DFTI_UNCOMMITTED) << what;
      const bool enumerated = named.count(p), current = v == 29;
      EXPECT_EQ(s, in(front, p) || in(fixed, p)            ? 3
                   : enumerated && current                 ? 0
                   : enumerated && !in(named.at(p), value) ? 3
                                                           : s)
          << what;
      if (!readable || p == 22) continue;
      ASSERT_EQ(DftiGetValue(d.h, DFTI_CONFIG_PARAM(p), &after), 0) << p;
      EXPECT_EQ(after, s == 0 ? value : before) << what;
      EXPECT_EQ(s == 0 ? DftiCommitDescriptor(d.h) : 0, 0) << what;  // an accepted value commits
    }
  }
  // Values named but not supported, and an ordering real transforms lack.
  Desc real, d;
  ASSERT_EQ(DftiCreateDescriptor(&real.h, DFTI_DOUBLE, DFTI_REAL, 1, 16), 0);
  ASSERT_EQ(DftiCreateDescriptor(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 1, 16), 0);
  for (auto [p, v] : {std::pair{8, 40}, {8, 41}, {9, 41}, {10, 42}, {18, 50}})
    EXPECT_EQ(DftiSetValue(d.h, DFTI_CONFIG_PARAM(p), v), 6) << p << " = " << v;
  EXPECT_EQ(DftiSetValue(real.h, DFTI_ORDERING, DFTI_BACKWARD_SCRAMBLED), 6);
  EXPECT_EQ(DftiSetValue(nullptr, DFTI_PLACEMENT, DFTI_INPLACE), 5);
  // Conjugate-even settings the core refuses at commit: complex storage in a
  // real-number format, and the real-number formats beyond two dimensions.
  ASSERT_EQ(DftiSetValue(real.h, DFTI_PACKED_FORMAT, DFTI_PACK_FORMAT), 0);
  EXPECT_EQ(DftiCommitDescriptor(real.h), 3);
  Desc plane;
  QNL_DFTI_INT n3[] = {4, 6, 2};
  ASSERT_EQ(DftiCreateDescriptor(&plane.h, DFTI_DOUBLE, DFTI_REAL, 3, n3), 0);
  ASSERT_EQ(DftiSetValue(plane.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_REAL), 0);
  ASSERT_EQ(DftiSetValue(plane.h, DFTI_PACKED_FORMAT, DFTI_CCS_FORMAT), 0);
  EXPECT_EQ(DftiCommitDescriptor(plane.h), 6);
}

TEST(BackendDftiCompute, NullUncommittedAndBufferCount) {
  std::vector<std::complex<double>> x(16), y(16);
  EXPECT_EQ(DftiComputeForward(nullptr, x.data()), 5);
  Desc d;
  ASSERT_EQ(DftiCreateDescriptor(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 1, 16), 0);
  EXPECT_EQ(DftiComputeForward(d.h, nullptr), 3);
  EXPECT_EQ(DftiComputeForward(d.h, x.data()), 2);
  EXPECT_EQ(DftiComputeBackward(d.h, x.data()), 2);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  EXPECT_EQ(DftiComputeForward(d.h, x.data(), nullptr), 3);
  x[1] = 1;
  EXPECT_EQ(DftiComputeForward(d.h, x.data(), y.data()), 0);
  EXPECT_NEAR(std::abs(y[4] - std::polar(1.0, -2 * M_PI * 4 / 16)), 0, 1e-14);
  // The Fortran entry wants exactly its own number of buffers.
  EXPECT_EQ(dfti_compute_forward_z(&d.h, x.data()), 3);
  EXPECT_EQ(dfti_compute_forward_z(nullptr, x.data()), 5);
  // A scale set after commit takes a commit again; then it applies.
  ASSERT_EQ(DftiSetValue(d.h, DFTI_FORWARD_SCALE, 0.5), 0);
  EXPECT_EQ(DftiComputeForward(d.h, x.data(), y.data()), 2);
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  ASSERT_EQ(DftiComputeForward(d.h, x.data(), y.data()), 0);
  EXPECT_NEAR(std::abs(y[4] - 0.5 * std::polar(1.0, -2 * M_PI * 4 / 16)), 0, 1e-14);
  EXPECT_EQ(DftiCommitDescriptor(nullptr), 5);
}

TEST(BackendDftiGetValue, VersionNameLengthsStrides) {
  char version[DFTI_VERSION_LENGTH];
  EXPECT_EQ(DftiGetValue(nullptr, DFTI_VERSION, version), 0);
  EXPECT_GT(std::strlen(version), 0u);
  EXPECT_EQ(DftiGetValue(nullptr, DFTI_VERSION, nullptr), 3);
  Desc d;
  QNL_DFTI_INT n[] = {3, 5, 7};
  ASSERT_EQ(DftiCreateDescriptor(&d.h, DFTI_SINGLE, DFTI_COMPLEX, 3, n), 0);
  QNL_DFTI_INT back[3] = {};
  EXPECT_EQ(DftiGetValue(d.h, DFTI_LENGTHS, back), 0);
  EXPECT_EQ(std::vector<QNL_DFTI_INT>(back, back + 3), std::vector<QNL_DFTI_INT>(n, n + 3));
  // The core holds them fastest first: the Fortran getter shows its order.
  int lengths_param = DFTI_LENGTHS, core_order[8] = {};
  EXPECT_EQ(dfti_get_value_intvec(&d.h, &lengths_param, core_order), 0);
  EXPECT_EQ(std::vector<int>(core_order, core_order + 3), (std::vector<int>{7, 5, 3}));
  EXPECT_EQ(DftiSetValue(d.h, DFTI_DESCRIPTOR_NAME, "a_long_descriptor_name"), 0);
  char name[32];
  std::memset(name, 'x', sizeof name);
  EXPECT_EQ(DftiGetValue(d.h, DFTI_DESCRIPTOR_NAME, name), 0);
  EXPECT_STREQ(name, "a_long_de");
  EXPECT_EQ(name[10], 'x');
  float scale = 0;
  EXPECT_EQ(DftiGetValue(d.h, DFTI_BACKWARD_SCALE, &scale), 0);
  EXPECT_EQ(scale, 1.0f);
  EXPECT_EQ(DftiGetValue(d.h, DFTI_CONFIG_PARAM(25), &scale), 3);
  EXPECT_EQ(DftiGetValue(d.h, DFTI_PRECISION, nullptr), 3);
  // C order reverses strides 1..rank around the offset; Fortran order does not.
  QNL_DFTI_INT strides[] = {0, 100, 10, 1};
  ASSERT_EQ(DftiSetValue(d.h, DFTI_INPUT_STRIDES, strides), 0);
  int strides_param = DFTI_INPUT_STRIDES, fortran[4] = {};
  EXPECT_EQ(dfti_get_value_intvec(&d.h, &strides_param, fortran), 0);
  EXPECT_EQ(std::vector<int>(fortran, fortran + 4), (std::vector<int>{0, 1, 10, 100}));
  int set_back[] = {0, 1, 10, 100};
  ASSERT_EQ(dfti_set_value_intvec(&d.h, &strides_param, set_back), 0);
  QNL_DFTI_INT c_view[4] = {};
  EXPECT_EQ(DftiGetValue(d.h, DFTI_INPUT_STRIDES, c_view), 0);
  EXPECT_EQ(std::vector<QNL_DFTI_INT>(c_view, c_view + 4), (std::vector<QNL_DFTI_INT>{0, 100, 10, 1}));
  // Dense strides past 32 bits stop the LP64 copy with status 2.
  Desc big;
  QNL_DFTI_INT huge[] = {2, 65536, 65536};
  ASSERT_EQ(DftiCreateDescriptor(&big.h, DFTI_DOUBLE, DFTI_COMPLEX, 3, huge), 0);
  QNL_DFTI_INT out[4] = {-1, -1, -1, -1};
  EXPECT_EQ(DftiGetValue(big.h, DFTI_OUTPUT_STRIDES, out), 2);
  EXPECT_EQ(out[0], 0);
  // Eight bytes through the Fortran integer getter, also under LP64.
  long long wide = -1;
  int rank_param = DFTI_DIMENSION;
  EXPECT_EQ(dfti_get_value_intval(&big.h, &rank_param, &wide), 0);
  EXPECT_EQ(wide, 3);
}

// Every status has its own message, the unknown ones share one; the Fortran
// entry gives the same text padded with blanks.
TEST(BackendDftiErrors, MessagesClassesFreeCopy) {
  std::set<std::string> seen;
  for (long status = -1; status <= 11; ++status) {
    const std::string text = DftiErrorMessage(status);
    EXPECT_EQ(text.rfind(status ? "Velor QNL DFTI ERROR: " : "Velor QNL DFTI SUCCESS: ", 0), 0u) << status;
    const bool known = status >= 0 && status <= 9 && status != 4;
    EXPECT_EQ(seen.insert(text).second, known || status == -1) << status;  // -1 comes first
    char padded[100];
    const int s32 = static_cast<int>(status);
    dfti_error_message_external_(padded, sizeof padded, &s32);
    EXPECT_EQ(std::string(padded, sizeof padded), text + std::string(sizeof padded - text.size(), ' ')) << status;
  }
  EXPECT_EQ(DftiErrorClass(3, 3), 1);
  EXPECT_EQ(DftiErrorClass(3, 2), 0);
  EXPECT_EQ(DftiErrorClass(0x100000003L, 3), 1);  // LP64 reads the low halves
  EXPECT_EQ(DftiFreeDescriptor(nullptr), 3);
  DFTI_DESCRIPTOR_HANDLE none = nullptr;
  EXPECT_EQ(DftiFreeDescriptor(&none), 5);
  EXPECT_EQ(dfti_free_descriptor_external(nullptr), 5);
  Desc d, copy;
  ASSERT_EQ(DftiCreateDescriptor(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 1, 8), 0);
  EXPECT_EQ(DftiCopyDescriptor(nullptr, &copy.h), 5);
  EXPECT_EQ(DftiCopyDescriptor(d.h, nullptr), 3);
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  ASSERT_EQ(DftiCopyDescriptor(d.h, &copy.h), 0);
  EXPECT_EQ(status_of(copy.h), DFTI_COMMITTED);
  std::vector<std::complex<double>> x(8, 1.0);
  EXPECT_EQ(DftiComputeForward(copy.h, x.data()), 0);
  EXPECT_NEAR(x[0].real(), 8, 1e-14);
  DFTI_DESCRIPTOR_HANDLE gone = d.h;
  EXPECT_EQ(DftiFreeDescriptor(&gone), 0);
  EXPECT_EQ(gone, nullptr);
  d.h = nullptr;
}

TEST(BackendDftiFortran, CreateEntries) {
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  double nan = std::nan(""), prec = 36.0;
  int domain = DFTI_COMPLEX, one = 1, n = 8;
  EXPECT_EQ(dfti_create_descriptor_d_1d(&h, &nan, &domain, &one, &n), 2);
  EXPECT_EQ(h, nullptr);
  ASSERT_EQ(dfti_create_descriptor_d_1d(&h, &prec, &domain, &one, &n), 0);
  EXPECT_EQ(dfti_free_descriptor_external(&h), 0);
  int precision = DFTI_DOUBLE, dims = 2, lengths[] = {4, 6};
  ASSERT_EQ(DFTI_CREATE_DESCRIPTOR_HIGHD(&h, &precision, &domain, &dims, lengths), 0);
  int got[2] = {}, param = DFTI_LENGTHS;
  EXPECT_EQ(dfti_get_value_intvec(&h, &param, got), 0);
  EXPECT_EQ(got[0], 4);  // no reversal on the Fortran road
  EXPECT_EQ(dfti_free_descriptor_external(&h), 0);
}

// ---- FFTW3 planners: refusals are null plans --------------------------------

TEST(BackendFftwPlanners, ImpossibleShapesGiveNullPlans) {
  std::vector<fftw_complex> a(64), b(64);
  int n8[8] = {2, 2, 2, 2, 2, 2, 2, 2};
  EXPECT_EQ(fftw_plan_dft(8, n8, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  fftw_plan seven = fftw_plan_dft(7, n8, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE);
  EXPECT_NE(seven, nullptr);
  fftw_destroy_plan(seven);
  EXPECT_EQ(fftw_plan_dft(0, n8, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  EXPECT_EQ(fftw_plan_dft(-1, n8, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  EXPECT_EQ(fftw_plan_dft_1d(0, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  EXPECT_EQ(fftw_plan_dft(2, nullptr, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  fftw_iodim dim{8, 1, 1}, batch[2] = {{2, 8, 8}, {2, 16, 16}};
  EXPECT_EQ(fftw_plan_guru_dft(1, &dim, 2, batch, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  EXPECT_EQ(fftw_plan_guru_dft(1, &dim, 1, nullptr, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  fftw_iodim skew{8, 1, 2};
  EXPECT_EQ(fftw_plan_guru_dft(1, &skew, 0, nullptr, a.data(), a.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  fftw_iodim skew_batch{2, 8, 9};
  EXPECT_EQ(fftw_plan_guru_dft(1, &dim, 1, &skew_batch, a.data(), a.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  // In-place real plans do not compare the two sides' strides.
  fftw_iodim real_dim{8, 1, 1};
  fftw_plan r2c =
      fftw_plan_guru_dft_r2c(1, &real_dim, 0, nullptr, reinterpret_cast<double*>(a.data()), a.data(), FFTW_ESTIMATE);
  EXPECT_NE(r2c, nullptr);
  fftw_destroy_plan(r2c);
  fftw_iodim64 too_long{int64_t{1} << 31, 1, 1};
  EXPECT_EQ(fftw_plan_guru64_dft(1, &too_long, 0, nullptr, a.data(), b.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  double* r = reinterpret_cast<double*>(a.data());
  EXPECT_EQ(fftw_plan_guru_split_dft_r2c(1, &dim, 0, nullptr, r, r, r, FFTW_ESTIMATE), nullptr);
  EXPECT_EQ(fftw_plan_r2r_1d(8, r, r, FFTW_REDFT10, FFTW_ESTIMATE), nullptr);
  EXPECT_EQ(fftwf_plan_dft(8, n8, nullptr, nullptr, FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  // Null plans and null arrays are ignored by execution and destruction.
  fftw_execute(nullptr);
  fftw_destroy_plan(nullptr);
  fftw_execute_dft(nullptr, a.data(), b.data());
}

TEST(BackendFftwPlanners, OnlyMinusOneIsForwardAndTheAllocatorIsReplaceable) {
  for (int sign : {-1, 1, 0, 7}) {
    std::vector<fftw_complex> a(8), b(8);
    a[1][0] = 1;
    fftw_plan p = fftw_plan_dft_1d(8, a.data(), b.data(), sign, FFTW_MEASURE);
    ASSERT_NE(p, nullptr);
    fftw_execute(p);
    double want = sign == -1 ? -std::sin(2 * M_PI / 8) : std::sin(2 * M_PI / 8);
    EXPECT_NEAR(b[1][1], want, 1e-14) << sign;
    fftw_destroy_plan(p);
  }
  auto saved = fftw3_qnl.new_plan;
  fftw3_qnl.new_plan = [] { return static_cast<void*>(nullptr); };
  std::vector<fftw_complex> a(8);
  EXPECT_EQ(fftw_plan_dft_1d(8, a.data(), a.data(), FFTW_FORWARD, FFTW_ESTIMATE), nullptr);
  EXPECT_EQ(fftwf_plan_dft_r2c_1d(8, nullptr, nullptr, FFTW_ESTIMATE), nullptr);
  fftw3_qnl.new_plan = saved;
  EXPECT_EQ(fftw_alignment_of(reinterpret_cast<double*>(0x1003)), 3);
  EXPECT_STREQ(fftw_version, "FFTW 3.3.4 wrappers to Velor(R) QNL");
  EXPECT_STREQ(fftwf_cc, "");
}

}  // namespace
