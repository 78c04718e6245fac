#include "vml_harness.h"

#include <complex>

namespace vml_test {
namespace {

template <class T>
uint64_t bits_of(T v) {
  uint64_t b = 0;
  std::memcpy(&b, &v, sizeof v);
  return b;
}

// The element type of a letter and the values of its scalars.
template <class E>
struct Scalar;
template <>
struct Scalar<float> {
  static float make(double x) { return static_cast<float>(x); }
};
template <>
struct Scalar<double> {
  static double make(double x) { return x; }
};
template <>
struct Scalar<c8> {
  static c8 make(double x) { return {static_cast<float>(x), static_cast<float>(-x)}; }
};
template <>
struct Scalar<c16> {
  static c16 make(double x) { return {x, -x}; }
};

using P = const void*;

template <class E>
void invoke_typed(const Case& c, void* fn, const Spelling& s, const Sentinels& v,
                  const std::vector<uintptr_t>& arrays) {
  auto A = [&](int i) { return reinterpret_cast<P>(arrays[static_cast<size_t>(i)]); };
  const int64_t n = v.n;
  // By value the mode's high half holds garbage: only 32 bits are the mode.
  const int64_t mode64 = static_cast<int64_t>(0xABCD000000000000ull | static_cast<uint32_t>(v.mode));
  const int32_t mode = v.mode;
  const std::string g = c.group;
  E sc[4];
  for (int i = 0; i < 4; ++i) sc[i] = Scalar<E>::make(v.scalar(i));
  const int64_t stride = v.stride;
  if (g == "powx") {
    if (s.by_ref) {
      if (s.mode)
        reinterpret_cast<void (*)(P, P, P, P, P)>(fn)(&n, A(0), &sc[0], A(2), &mode);
      else
        reinterpret_cast<void (*)(P, P, P, P)>(fn)(&n, A(0), &sc[0], A(2));
    } else if (s.mode) {
      reinterpret_cast<void (*)(int64_t, P, E, P, int64_t)>(fn)(n, A(0), sc[0], A(2), mode64);
    } else {
      reinterpret_cast<void (*)(int64_t, P, E, P)>(fn)(n, A(0), sc[0], A(2));
    }
    return;
  }
  if (g == "linfrac") {
    if (s.by_ref) {
      if (s.mode)
        reinterpret_cast<void (*)(P, P, P, P, P, P, P, P, P)>(fn)(&n, A(0), A(1), &sc[0], &sc[1], &sc[2], &sc[3], A(6),
                                                                  &mode);
      else
        reinterpret_cast<void (*)(P, P, P, P, P, P, P, P)>(fn)(&n, A(0), A(1), &sc[0], &sc[1], &sc[2], &sc[3], A(6));
    } else if (s.mode) {
      reinterpret_cast<void (*)(int64_t, P, P, E, E, E, E, P, int64_t)>(fn)(n, A(0), A(1), sc[0], sc[1], sc[2], sc[3],
                                                                            A(6), mode64);
    } else {
      reinterpret_cast<void (*)(int64_t, P, P, E, E, E, E, P)>(fn)(n, A(0), A(1), sc[0], sc[1], sc[2], sc[3], A(6));
    }
    return;
  }
  // All other shapes take only words: n, then pointers or an integer stride.
  const size_t nargs = std::strlen(c.kinds);
  uint64_t w[4] = {};
  for (size_t i = 0; i < nargs; ++i)
    w[i] = c.kinds[i] == 'i' ? (s.by_ref ? reinterpret_cast<uint64_t>(&stride) : static_cast<uint64_t>(stride))
                             : arrays[i];
  const uint64_t nw = s.by_ref ? reinterpret_cast<uint64_t>(&n) : static_cast<uint64_t>(n);
  const uint64_t mw = s.by_ref ? reinterpret_cast<uint64_t>(&mode) : static_cast<uint64_t>(mode64);
  using W = uint64_t;
  if (nargs == 2) {
    if (s.mode)
      reinterpret_cast<void (*)(W, W, W, W)>(fn)(nw, w[0], w[1], mw);
    else
      reinterpret_cast<void (*)(W, W, W)>(fn)(nw, w[0], w[1]);
  } else {
    if (s.mode)
      reinterpret_cast<void (*)(W, W, W, W, W)>(fn)(nw, w[0], w[1], w[2], mw);
    else
      reinterpret_cast<void (*)(W, W, W, W)>(fn)(nw, w[0], w[1], w[2]);
  }
}

}  // namespace

void invoke(const Case& c, void* fn, const Spelling& s, const Sentinels& v, const std::vector<uintptr_t>& arrays) {
  switch (c.letter) {
    case 's':
      return invoke_typed<float>(c, fn, s, v, arrays);
    case 'd':
      return invoke_typed<double>(c, fn, s, v, arrays);
    case 'c':
      return invoke_typed<c8>(c, fn, s, v, arrays);
    default:
      return invoke_typed<c16>(c, fn, s, v, arrays);
  }
}

std::vector<uint64_t> expected_threader_words(const Case& c, const Sentinels& v, const std::vector<uintptr_t>& arrays,
                                              int32_t count, int64_t done) {
  std::vector<uint64_t> w;
  w.push_back(static_cast<uint32_t>(count));
  for (size_t i = 0; i < std::strlen(c.kinds); ++i) {
    if (c.kinds[i] == 'a') {
      w.push_back(arrays[i] + static_cast<uint64_t>(done) * static_cast<uint64_t>(c.size[i]));
      continue;
    }
    const double x = v.scalar(static_cast<int>(i == 1 ? 0 : i - 2));  // powx: b; linfrac: the four after a, b
    switch (c.letter) {
      case 's':
        w.push_back(bits_of(static_cast<float>(x)));
        break;
      case 'd':
        w.push_back(bits_of(x));
        break;
      case 'c':
        w.push_back(bits_of(c8{static_cast<float>(x), static_cast<float>(-x)}));
        break;
      default:
        w.push_back(bits_of(x));
        w.push_back(bits_of(-x));
    }
  }
  return w;
}

std::string facade_directory() {
  Dl_info info;
  dladdr(qnl_test::exported("vmlGetMode"), &info);
  std::string path = info.dli_fname;
  return path.substr(0, path.rfind('/') + 1);
}

void* kernel_library(const char* file) { return dlopen((facade_directory() + file).c_str(), RTLD_NOW | RTLD_NOLOAD); }

std::vector<Report> reports() {
  std::vector<Report> out;
  for (const qnl_probe::Call* c : calls()) {
    if (std::strcmp(c->symbol, "qnl_serv_xerbla") != 0) continue;
    char name[17] = {};
    std::memcpy(name, &c->word[4], 16);
    const auto len = static_cast<int32_t>(c->word[2]);
    out.push_back({static_cast<int32_t>(c->word[3]), std::string(name, len > 16 ? 16 : len), len});
  }
  return out;
}

std::vector<const qnl_probe::Call*> calls() {
  std::vector<const qnl_probe::Call*> out;
  for (int i = 0; i < qnl_probe_count(); ++i) out.push_back(qnl_probe_call(i));
  return out;
}

}  // namespace vml_test
