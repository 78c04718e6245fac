// The matrix copy entries on the probe back-end: the C spelling passes its values on, the
// Fortran spellings read sizes at the interface layer's width, options arrive as the
// sign-extended first byte, and the first call of either settles the layer.
#include <cstdlib>

#include "blas_harness.h"

namespace matcopy_test {
using blas_test::cdouble;
using blas_test::cfloat;
}  // namespace matcopy_test

// What a test hands to a routine, by role and in order within each role.
struct MatcopyValues {
  char option[3] = {};
  size_t size[6] = {};
  unsigned char scalar_bytes[2][16] = {};
  void* array[3] = {};
  template <class T>
  T scalar(int k) const {
    T t;
    std::memcpy(&t, scalar_bytes[k], sizeof t);
    return t;
  }
};

#include "matcopy_cases.inc"

namespace {

using namespace blas_test;

uint64_t sign_extended_option(char c) {
  return static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(c)));
}

// Bytes of the scalars: distinct patterns whose halves differ, so a swapped or truncated
// read shows.
void fill_scalars(MatcopyValues& v) {
  for (int k = 0; k < 2; ++k)
    for (int b = 0; b < 16; ++b) v.scalar_bytes[k][b] = static_cast<unsigned char>(0x11 * (k + 1) + 7 * b + 1);
}

// The words the probe must have seen for a routine given `v`, the sizes being `sizes` as the
// back-end receives them.
std::vector<uint64_t> expected_words(const MatcopyCase& mc, const MatcopyValues& v, const size_t* sizes) {
  std::vector<uint64_t> w;
  int k[128] = {};
  for (const char* r = mc.roles; *r; ++r) {
    const int i = k[static_cast<int>(*r)]++;
    uint64_t lo = 0, hi = 0;
    switch (*r) {
      case 'c':
        w.push_back(sign_extended_option(v.option[i]));
        break;
      case 'n':
        w.push_back(sizes[i]);
        break;
      case 'p':
        w.push_back(reinterpret_cast<uintptr_t>(v.array[i]));
        break;
      case 'a':
        // s: the float's 4 bytes; d and c: 8 bytes; z: two words of 8
        std::memcpy(&lo, v.scalar_bytes[i], mc.letter == 's' ? 4 : 8);
        w.push_back(lo);
        if (mc.letter == 'z') {
          std::memcpy(&hi, v.scalar_bytes[i] + 8, 8);
          w.push_back(hi);
        }
        break;
    }
  }
  return w;
}

void expect_words(const MatcopyCase& mc, const std::vector<uint64_t>& want) {
  const qnl_probe::Call* c = last_call_of(mc.symbol);
  ASSERT_NE(c, nullptr) << mc.symbol;
  ASSERT_EQ(c->nwords, static_cast<int>(want.size())) << mc.name;
  for (size_t i = 0; i < want.size(); ++i) EXPECT_EQ(c->word[i], want[i]) << mc.name << " word " << i;
}

// A Fortran call: every argument by address, then two stray words where a Fortran
// caller puts its hidden lengths; the entry reads neither.
void call_fortran(void* fn, const std::vector<void*>& args) {
  void* p[16] = {};
  for (size_t i = 0; i < args.size(); ++i) p[i] = args[i];
  p[args.size()] = reinterpret_cast<void*>(0x7777);
  p[args.size() + 1] = reinterpret_cast<void*>(0x8888);
  using F = void (*)(void*, void*, void*, void*, void*, void*, void*, void*, void*, void*, void*, void*, void*, void*,
                     void*, void*);
  reinterpret_cast<F>(fn)(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11], p[12], p[13], p[14],
                          p[15]);
}

// Arguments of a Fortran call built from `v`, with each size in a 64-bit cell of `cells`
// (filled by the caller at its width) and each option as a word of which only the first
// letter is the option.
struct FortranCall {
  std::vector<void*> args;
  std::string options[3];
  FortranCall(const MatcopyCase& mc, MatcopyValues& v, int64_t* cells) {
    int k[128] = {};
    for (const char* r = mc.roles; *r; ++r) {
      const int i = k[static_cast<int>(*r)]++;
      switch (*r) {
        case 'c':
          options[i] = std::string(1, v.option[i]) + "ZQ-ignored";
          args.push_back(options[i].data());
          break;
        case 'n':
          args.push_back(&cells[i]);
          break;
        case 'p':
          args.push_back(v.array[i]);
          break;
        case 'a':
          args.push_back(v.scalar_bytes[i]);
          break;
      }
    }
  }
};

TEST(MatcopyExports, SixtyFourNamesInFourSpellingsPerRoutine) {
  int names = 0;
  for (const MatcopyCase& mc : kMatcopyCases) {
    void* c = entry_point(mc.c_name);
    void* fortran = entry_point(mc.fortran);
    ASSERT_NE(c, nullptr) << mc.c_name;
    ASSERT_NE(fortran, nullptr) << mc.fortran;
    EXPECT_NE(c, fortran) << "the C spelling is a body of its own";
    EXPECT_EQ(entry_point(std::string(mc.fortran) + "_"), fortran);
    EXPECT_EQ(entry_point(upper(mc.fortran)), fortran);
    EXPECT_EQ(entry_point(upper(mc.fortran) + "_"), nullptr);
    EXPECT_EQ(entry_point(mc.name), nullptr) << "no bare spelling";
    names += 4;
  }
  EXPECT_EQ(names, 64);
}

class Matcopy : public ::testing::TestWithParam<Layer> {
 protected:
  void SetUp() override { set_layer(GetParam()); }
};

// The C spelling passes sizes whole in either layer, even past 32 bits, and options as
// their sign-extended byte.
TEST_P(Matcopy, CSpellingPassesItsValuesOn) {
  double arrays[3][4];
  for (const MatcopyCase& mc : kMatcopyCases) {
    SCOPED_TRACE(mc.c_name);
    MatcopyValues v;
    const char options[3] = {'r', 'T', static_cast<char>(0xE9)};
    std::memcpy(v.option, options, 3);
    for (int i = 0; i < 6; ++i) v.size[i] = (size_t{1} << 32) + 100 * static_cast<size_t>(i) + 3;
    v.size[1] = ~size_t{0} - 4;  // a negative int64, passed as it is
    fill_scalars(v);
    for (int i = 0; i < 3; ++i) v.array[i] = arrays[i];
    const auto want = expected_words(mc, v, v.size);
    for (int pass = 0; pass < 2; ++pass) {  // binds, then takes the bound road
      const int before = qnl_probe_count_of(mc.symbol);
      mc.call_c(entry_point(mc.c_name), v);
      ASSERT_EQ(qnl_probe_count_of(mc.symbol), before + 1);
      expect_words(mc, want);
    }
  }
}

// Each Fortran spelling reads its sizes at the layer's width: 32 bits sign-extended under
// LP64, whatever the upper half of the caller's cell holds; all 64 bits under ILP64.
TEST_P(Matcopy, FortranSpellingsReadSizesAtTheLayersWidth) {
  float arrays[3][4];
  int calls = 0;
  for (const MatcopyCase& mc : kMatcopyCases) {
    for (const std::string& spelling : {std::string(mc.fortran), std::string(mc.fortran) + "_", upper(mc.fortran)}) {
      SCOPED_TRACE(spelling);
      MatcopyValues v;
      const char options[3] = {'C', static_cast<char>(0x80), 'r'};  // unchecked, as given
      std::memcpy(v.option, options, 3);
      fill_scalars(v);
      for (int i = 0; i < 3; ++i) v.array[i] = arrays[i];
      int64_t cells[6];
      size_t want_sizes[6];
      for (int i = 0; i < 6; ++i) {
        const int32_t low = i == 2 ? -3 : 10 * i + 1;  // one negative size
        if (GetParam() == LP64) {
          cells[i] = static_cast<int64_t>(0xabcd000100000000ull | static_cast<uint32_t>(low));
          want_sizes[i] = static_cast<size_t>(static_cast<int64_t>(low));
        } else {
          cells[i] = (int64_t{5} << 32) + low;
          want_sizes[i] = static_cast<size_t>(cells[i]);
        }
      }
      FortranCall call(mc, v, cells);
      call_fortran(entry_point(spelling), call.args);
      expect_words(mc, expected_words(mc, v, want_sizes));
      ++calls;
    }
  }
  EXPECT_EQ(calls, 48);
}

INSTANTIATE_TEST_SUITE_P(Layers, Matcopy, ::testing::Values(LP64, ILP64),
                         [](const auto& info) { return info.param == LP64 ? "LP64" : "ILP64"; });

// A process whose first library call is a matrix copy: the interface layer is settled from
// the environment by that call, so a later setter finds it taken.
struct FirstCall {
  const char* variable;  // QNL_INTERFACE_LAYER, or null for unset
  bool c_spelling;
  int settled;
};
void PrintTo(const FirstCall& f, std::ostream* os) {
  *os << (f.variable ? f.variable : "unset") << (f.c_spelling ? ", C spelling" : ", Fortran spelling");
}

class MatcopyFirstCall : public ::testing::TestWithParam<FirstCall> {};

TEST_P(MatcopyFirstCall, SettlesTheInterfaceLayer) {
  const FirstCall fc = GetParam();
  if (fc.variable)
    setenv("QNL_INTERFACE_LAYER", fc.variable, 1);
  else
    unsetenv("QNL_INTERFACE_LAYER");
  const MatcopyCase* copy = nullptr;
  for (const MatcopyCase& c : kMatcopyCases)
    if (std::strcmp(c.name, "domatcopy") == 0) copy = &c;
  ASSERT_NE(copy, nullptr);
  double a[4] = {}, b[4] = {};
  MatcopyValues v;
  v.option[0] = 'c';
  v.option[1] = 'n';
  v.size[0] = v.size[1] = v.size[2] = v.size[3] = 2;
  fill_scalars(v);
  v.array[0] = a;
  v.array[1] = b;
  // Sizes in cells whose upper half says which width was read: 2 at 32 bits, 2^32 + 2 at 64.
  int64_t cells[4];
  for (int64_t& c : cells) c = (int64_t{1} << 32) + 2;
  if (fc.c_spelling) {
    copy->call_c(entry_point(copy->c_name), v);
    expect_words(*copy, expected_words(*copy, v, v.size));
  } else {
    FortranCall call(*copy, v, cells);
    call_fortran(entry_point(copy->fortran), call.args);
    size_t want[4];
    for (int i = 0; i < 4; ++i) want[i] = fc.settled == ILP64 ? static_cast<size_t>(cells[i]) : 2;
    expect_words(*copy, expected_words(*copy, v, want));
  }
  EXPECT_EQ(QNL_Set_Interface_Layer(1 - fc.settled), fc.settled) << "the layer is already settled";
}

INSTANTIATE_TEST_SUITE_P(Environments, MatcopyFirstCall,
                         ::testing::Values(FirstCall{"ILP64", true, ILP64}, FirstCall{"ilp64", false, ILP64},
                                           FirstCall{nullptr, true, LP64}, FirstCall{"LP64", false, LP64}),
                         [](const auto& info) {
                           return std::string(info.param.c_spelling ? "C" : "Fortran") + "_" +
                                  (info.param.variable ? info.param.variable : "unset");
                         });

}  // namespace
