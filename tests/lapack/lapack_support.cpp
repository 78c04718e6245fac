#include "lapack_support.h"

#include <cctype>

namespace lapack_test {

const Case kCases[] = {
#include "lapack_cases.inc"
};
const int kCaseCount = sizeof kCases / sizeof kCases[0];

const Case* find_case(const char* name) {
  for (const Case& c : kCases)
    if (!std::strcmp(c.name, name)) return &c;
  return nullptr;
}

Seen& seen() {
  static Seen s;
  return s;
}

namespace {

int first_word(const Case& c) { return c.offset + (c.result == 'a' ? 1 : 0); }

void hook(const char* symbol, const uint64_t* w, int n) {
  if (answer_lsame(symbol, w)) return;
  Seen& s = seen();
  if (!std::strcmp(symbol, "qnl_serv_xerbla")) {
    ++s.reports;
    s.report_name.assign(reinterpret_cast<const char*>(w[0]), static_cast<size_t>(static_cast<int32_t>(w[2])));
    s.report_number = *reinterpret_cast<const int32_t*>(w[1]);
    return;
  }
  if (!std::strncmp(symbol, "qnl_lapack_", 11)) s.lapack_symbols.push_back(symbol);
  if (!s.c) return;
  const Case& c = *s.c;
  if (!is_symbol_of(c, symbol)) return;
  s.called = true;
  s.words.assign(w, w + n);
  if (c.result == 'c') *reinterpret_cast<std::complex<float>*>(w[0]) = {1.5f, -2.5f};
  if (c.result == 'z') *reinterpret_cast<std::complex<double>*>(w[0]) = {1.5, -2.5};
  s.scalar.assign(c.nargs, 0);
  s.array.assign(c.nargs, {});
  int first = first_word(c);
  for (int k = 0; k < c.nargs && first + k < n; ++k) {
    const ArgCase& a = c.args[k];
    auto* p = reinterpret_cast<int64_t*>(w[first + k]);
    if (!p) continue;
    const Config& cfg = a.cfg[s.cfg];
    if (is_scalar(a)) {
      s.scalar[k] = *p;
      if (a.cls[0] == 'o') *p = written_scalar(k);
    } else if (is_array(a)) {
      int64_t len = cfg.length;
      for (int64_t i = 0; i < len && i < 64; ++i) s.array[k].push_back(p[i]);
      if (!std::strcmp(a.cls, "iw")) {
        p[0] = written_element(k, 0);
      } else if (!std::strcmp(a.cls, "io") || !std::strcmp(a.cls, "iio") || !std::strcmp(a.cls, "lw")) {
        for (int64_t i = 0; i < len; ++i) p[i] = written_element(k, i);
      }
    }
  }
}

template <size_t>
using Ptr = void*;

template <class R, size_t... I>
R invoke(void* fn, void* const* a, std::index_sequence<I...>) {
  return reinterpret_cast<R (*)(Ptr<I>...)>(fn)(a[I]...);
}

template <class R, size_t N = 1>
R dispatch(void* fn, void* const* a, size_t n) {
  if constexpr (N > 32) {
    ADD_FAILURE() << "too many arguments";
    return R();
  } else {
    if (n == N) return invoke<R>(fn, a, std::make_index_sequence<N>{});
    return dispatch<R, N + 1>(fn, a, n);
  }
}

}  // namespace

bool answer_lsame(const char* symbol, const uint64_t* w) {
  if (std::strcmp(symbol, "qnl_serv_lsame")) return false;
  const auto a = *reinterpret_cast<const unsigned char*>(w[0]), b = *reinterpret_cast<const unsigned char*>(w[1]);
  qnl_probe_set_result(symbol, std::toupper(a) == std::toupper(b));
  return true;
}

bool is_symbol_of(const Case& c, const char* symbol) {
  return !std::strcmp(symbol, c.symbol) || (c.ao_symbol && !std::strcmp(symbol, c.ao_symbol));
}

void install_hook() { qnl_probe_set_hook(hook); }

Call::Call(const Case& cs, int config, bool is_lp64) : c(cs), cfg(config), lp64(is_lp64) {
  cells.resize(c.nargs);
  ptrs.resize(c.nargs);
  for (int k = 0; k < c.nargs; ++k) {
    const ArgCase& a = c.args[k];
    const Config& f = a.cfg[cfg];
    std::vector<int64_t>& cell = cells[k];
    if (a.cls[0] == 'c') {
      cell.assign(1, 0);
      std::memcpy(cell.data(), &f.letter, 1);
    } else if (is_scalar(a)) {
      // LP64: the high half of the cell is not the caller's and must not be read.
      // ILP64: high bits set wherever no check or route reads the value.
      uint64_t low = static_cast<uint32_t>(static_cast<int32_t>(f.caller));
      if (lp64)
        cell.assign(1, static_cast<int64_t>(0xF1F1F1F100000000ull | low));
      else
        cell.assign(1, c.checked || c.ao_symbol ? f.caller : static_cast<int64_t>(0xF1F1F1F100000000ull | low));
    } else if (is_array(a)) {
      int64_t n = (f.length > 1 ? f.length : 1) + 8;
      EXPECT_LT(n, 1 << 20) << "argument " << k;
      cell.assign(static_cast<size_t>(n), 0);
      auto* i32 = reinterpret_cast<int32_t*>(cell.data());
      for (int64_t i = 0; i < n; ++i) {
        if (lp64)
          i32[i] = pattern(k, i);
        else
          cell[i] = pattern(k, i);
      }
    }
    ptrs[k] = cell.empty() ? reinterpret_cast<void*>(0x7E0000000000ull + 0x1000ull * (k + 1)) : cell.data();
  }
}

uint64_t Call::run(const char* spelling, uint64_t* hi) {
  Seen& s = seen();
  s = Seen();
  s.symbol = c.symbol;
  s.c = &c;
  s.cfg = cfg;
  s.lp64 = lp64;
  void* fn = qnl_test::exported(spelling);
  if (!fn) {
    ADD_FAILURE() << spelling << " not exported";
    return 0;
  }
  const size_t n = static_cast<size_t>(c.nargs);
  switch (c.result) {
    case 'i':
    case 'l':
      return static_cast<uint64_t>(dispatch<int64_t>(fn, ptrs.data(), n));
    case 's':
      return bits(dispatch<float>(fn, ptrs.data(), n));
    case 'd':
      return bits(dispatch<double>(fn, ptrs.data(), n));
    case 'c': {
      auto v = dispatch<std::complex<float>>(fn, ptrs.data(), n);
      if (hi) *hi = bits(v.imag());
      return bits(v.real());
    }
    case 'z': {
      auto v = dispatch<std::complex<double>>(fn, ptrs.data(), n);
      if (hi) *hi = bits(v.imag());
      return bits(v.real());
    }
    case 'a':
      reinterpret_cast<void (*)(char*, size_t, void*)>(fn)(result_char, 1, ptrs[0]);
      return 0;
    default:
      dispatch<void>(fn, ptrs.data(), n);
      return 0;
  }
}

}  // namespace lapack_test
