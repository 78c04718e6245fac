// Differential harness: every LAPACKE routine of the facade's table that Debian's
// liblapacke also has, called with identical generated inputs in both layouts on the
// facade and on the stock library, each opened with RTLD_LOCAL | RTLD_DEEPBIND so
// their symbols never meet. Return codes and every array must agree within a
// tolerance. Each case runs in a child process, so a crash is a finding, not the end.
// A routine of which every case is rejected by both sides (the same negative info) is
// listed apart, "both rejected", and not counted as agreeing: it shows only that the two
// reject alike. QNL_LAPACKE_DIFF_VERBOSE=1 also lists the cases rejected among real ones.
//
//   lapacke_diff FACADE.so STOCK.so [NAME-FILTER]
// QNL_LAPACKE_DIFF_SAMPLE=k compares every k-th routine of the table only; CI=true
// defaults it to 4 (the full run is QNL_LAPACKE_DIFF_SAMPLE=1).
// Built with 64-bit lapack_int (LAPACK_ILP64) it is run with QNL_INTERFACE_LAYER=ILP64
// against liblapacke64.
#define LAPACK_COMPLEX_CPP
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "lapacke.h"

namespace {

struct Ptr {
  void* v;
  template <class T>
  operator T*() const {
    return static_cast<T*>(v);
  }
};

// One argument of a case: kind (0 char, 1 char by address, 2 integer, 3 scalar, 4 scalar
// output, 5 integer output, 6 integer array, 7 vector, 8 matrix, 9 array of which the
// routine defines a part only: not compared), element type, element
// count (or the integer's value), scalar value, character, and the diagonal indices
// made dominant.
struct ArgCase {
  int kind;
  char type;
  long count;
  double value;
  char letter;
  const char* diagonal;
};

// Returns the routine's value: its info, or what a function-valued routine computes.
using Caller = double (*)(void* f, int layout, void* const* v);
// Makes inputs that only a factorization can give (?gemqr's a and t), with the library `lib`.
using Prep = void (*)(void* lib, int layout, void* const* v);

struct Case {
  const char* name;
  int layout;
  int nargs;
  const ArgCase* args;
  Caller call;
  Prep prep = nullptr;
};

struct Skipped {
  const char* name;
  const char* reason;
};

// The selection callback of the Schur drivers' sorting cases. It gets (wr, wi) or w of an
// eigenvalue, or (alphar, alphai, beta) or (alpha, beta) of a generalized one. The inputs'
// dominant diagonals put eigenvalues near 10.5 and generalized ones near 1: the thresholds
// select some of them, so the reordering has work to do.
template <class... A>
lapack_logical pick(const A*... x) {
  const auto t = std::make_tuple(*x...);
  auto v = std::get<0>(t);
  constexpr bool generalized = sizeof...(A) == 3 || (sizeof...(A) == 2 && !std::is_floating_point_v<decltype(v)>);
  if constexpr (generalized) v /= std::get<sizeof...(A) - 1>(t);
  return std::real(v) > (generalized ? 1.0 : 10.5);
}

#include "lapacke_diff_cases.inc"

size_t element_size(char t) { return t == 's' ? 4 : t == 'd' || t == 'c' ? 8 : t == 'z' ? 16 : sizeof(lapack_int); }

// One element of type t (s d c z) at `out`.
void store(char t, double re, double im, unsigned char* out) {
  float f[2] = {static_cast<float>(re), static_cast<float>(im)};
  double d[2] = {re, im};
  if (t == 's' || t == 'c')
    std::memcpy(out, f, element_size(t));
  else
    std::memcpy(out, d, element_size(t));
}

constexpr long kPad = 16;  // elements past the end that both sides must leave alone

// The arguments of one case as bytes, filled the same way for both sides.
struct Buffers {
  std::vector<std::vector<unsigned char>> data;
  std::vector<void*> ptrs;

  explicit Buffers(const Case& c) {
    data.resize(c.nargs);
    for (int k = 0; k < c.nargs; ++k) {
      const ArgCase& a = c.args[k];
      auto& d = data[k];
      const lapack_int v = static_cast<lapack_int>(a.count);
      if (a.kind <= 5) d.assign(16, 0);  // scalars, in and out
      if (a.kind <= 1)
        d[0] = static_cast<unsigned char>(a.letter);
      else if (a.kind == 2 || a.kind == 5)  // an integer output may be read first
        std::memcpy(d.data(), &v, sizeof v);
      else if (a.kind == 3)
        store(a.type, a.value, 0.0, d.data());
      else if (a.kind == 6) {
        d.assign((a.count + kPad) * sizeof(lapack_int), 0);
        lapack_int* p = reinterpret_cast<lapack_int*>(d.data());
        for (long i = 0; i < a.count; ++i) p[i] = static_cast<lapack_int>(i % 5 + 1);
      } else if (a.kind >= 7) {
        d.assign((a.count + kPad) * element_size(a.type), 0);
        fill(a, d.data(), a.count + kPad);
      }
    }
    for (auto& d : data) ptrs.push_back(d.data());
  }

  // A deterministic pattern in (0.1, 0.9), imaginary parts in (0, 0.05); dominant diagonals.
  static void fill(const ArgCase& a, unsigned char* out, long n) {
    std::vector<double> re(n), im(n);
    for (long i = 0; i < n; ++i) {
      double x = i * 0.6180339887498949;
      re[i] = 0.1 + 0.8 * (x - std::floor(x));
      double y = i * 0.4142135623730951;
      im[i] = 0.05 * (y - std::floor(y));
    }
    for (const char* s = a.diagonal; *s;) {
      char* end;
      long i = std::strtol(s, &end, 10);
      if (i >= 0 && i < n) {
        re[i] += 10.0;
        im[i] = 0.0;
      }
      s = *end ? end + 1 : end;
    }
    for (long i = 0; i < n; ++i) store(a.type, re[i], im[i], out + i * element_size(a.type));
  }
};

bool near(double a, double b, double tol) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  double scale = std::fmax(1.0, std::fmax(std::fabs(a), std::fabs(b)));
  return std::fabs(a - b) <= tol * scale;
}

// "" when both sides agree, else what differs.
std::string compare(const Case& c, const Buffers& x, const Buffers& y) {
  for (int k = 0; k < c.nargs; ++k) {
    const ArgCase& a = c.args[k];
    const auto& p = x.data[k];
    const auto& q = y.data[k];
    if (a.kind == 9) continue;
    if (a.kind == 4 || a.kind >= 7) {
      bool single = a.type == 's' || a.type == 'c';
      double tol = single ? 2e-3 : 1e-9;
      size_t n = p.size() / (single ? 4 : 8);
      for (size_t i = 0; i < n; ++i) {
        double u, v;
        if (single) {
          float f, g;
          std::memcpy(&f, &p[4 * i], 4);
          std::memcpy(&g, &q[4 * i], 4);
          u = f;
          v = g;
        } else {
          std::memcpy(&u, &p[8 * i], 8);
          std::memcpy(&v, &q[8 * i], 8);
        }
        if (!near(u, v, tol)) {
          char msg[160];
          std::snprintf(msg, sizeof msg, "argument %d element %zu: facade %.17g, stock %.17g", k + 2, i, u, v);
          return msg;
        }
      }
    } else if (p != q) {
      char msg[64];
      std::snprintf(msg, sizeof msg, "argument %d differs", k + 2);
      return msg;
    }
  }
  return "";
}

// Runs one case in a child; returns what it showed, a letter and its text: 'A' both sides
// ran (info >= 0) and every output agreed, 'R' both rejected the same argument (only the
// codes could be compared), 'D' a difference, 'S' the stock library's crash. The child
// writes 'F' once the facade's call came back: a child that dies after it is the stock's.
std::string run(const Case& c, void* facade, void* stock, void* stock_lib) {
  int fds[2];
  if (pipe(fds) != 0) return "Dpipe failed";
  pid_t pid = fork();
  if (pid == 0) {
    close(fds[0]);
    alarm(20);
    Buffers x(c), y(c);
    if (c.prep) {  // the same stock factorization makes both sides' inputs
      c.prep(stock_lib, c.layout, x.ptrs.data());
      c.prep(stock_lib, c.layout, y.ptrs.data());
    }
    double rf = c.call(facade, c.layout, x.ptrs.data());
    if (write(fds[1], "F", 1) < 0) _exit(3);
    double rs = c.call(stock, c.layout, y.ptrs.data());
    std::string why;
    // After the same rejected argument only the code is compared: the stock library then
    // writes back whatever its scratch copies held.
    if (!near(rf, rs, 1e-5))
      why = "Dreturned: facade " + std::to_string(rf) + ", stock " + std::to_string(rs);
    else if (rf < 0)
      why = "R" + std::to_string(static_cast<long>(rf));
    else if (!(why = compare(c, x, y)).empty())
      why = "D" + why + " (both returned " + std::to_string(rf) + ")";
    else
      why = "A";
    if (write(fds[1], why.data(), why.size()) < 0) _exit(3);
    _exit(0);
  }
  close(fds[1]);
  std::string got;
  char buf[256];
  ssize_t n;
  while ((n = read(fds[0], buf, sizeof buf)) > 0) got.append(buf, n);
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  bool facade_done = !got.empty() && got[0] == 'F';
  if (WIFSIGNALED(status))
    return (facade_done ? "Sstock library" : "Dfacade") + std::string(" crashed with signal ") +
           std::to_string(WTERMSIG(status));
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || got.size() < 2) return "Dchild failed";
  return got.substr(1);
}

// The library's own routines have no stock counterpart; their oracles are stock routines:
// ?getrf, which does not pivot on a column-dominant matrix, for ?getrfnpi, and the
// unpacking of the whole triangle (?tpttr) for where ?tppack puts each block element.
std::string check_own(void* facade, void* stock) {
  auto npi = reinterpret_cast<decltype(&LAPACKE_qnl_dgetrfnpi)>(dlsym(facade, "LAPACKE_qnl_dgetrfnpi"));
  auto pack = reinterpret_cast<decltype(&LAPACKE_qnl_dtppack)>(dlsym(facade, "LAPACKE_qnl_dtppack"));
  auto unpack = reinterpret_cast<decltype(&LAPACKE_qnl_dtpunpack)>(dlsym(facade, "LAPACKE_qnl_dtpunpack"));
  auto getrf = reinterpret_cast<decltype(&LAPACKE_dgetrf)>(dlsym(stock, "LAPACKE_dgetrf"));
  auto tpttr = reinterpret_cast<decltype(&LAPACKE_dtpttr)>(dlsym(stock, "LAPACKE_dtpttr"));
  if (!npi || !pack || !unpack || !getrf || !tpttr) return "missing";
  const lapack_int n = 6, i = 2, j = 3, rows = 3, cols = 4, lda = 5;
  for (int layout : {LAPACK_ROW_MAJOR, LAPACK_COL_MAJOR}) {
    std::vector<double> x(n * n), y;
    for (lapack_int k = 0; k < n * n; ++k) x[k] = k % n == k / n ? 10.0 : 0.1 * (k % 7);
    y = x;
    std::vector<lapack_int> ipiv(n);
    npi(layout, n, n, n, x.data(), n);
    getrf(layout, n, n, y.data(), n, ipiv.data());
    for (lapack_int k = 0; k < n * n; ++k)
      if (!near(x[k], y[k], 1e-12)) return "dgetrfnpi differs from dgetrf without pivots";
    for (char uplo : {'U', 'L'})
      for (char trans : {'N', 'T'}) {
        std::vector<double> a(lda * lda), ap(n * (n + 1) / 2, -1.0), full(n * n), back(a.size(), 0.0);
        for (size_t k = 0; k < a.size(); ++k) a[k] = k + 1.0;
        // Element (r, c) of the block, where trans and the layout put it.
        auto at = [&](std::vector<double>& m, lapack_int r, lapack_int c) -> double& {
          if (trans != 'N') std::swap(r, c);
          return layout == LAPACK_ROW_MAJOR ? m[r * lda + c] : m[r + c * lda];
        };
        if (pack(layout, uplo, trans, n, ap.data(), i, j, rows, cols, a.data(), lda) != 0 ||
            unpack(layout, uplo, trans, n, ap.data(), i, j, rows, cols, back.data(), lda) != 0)
          return "dtppack or dtpunpack failed";
        tpttr(layout, uplo, n, ap.data(), full.data(), n);
        for (lapack_int r = 0; r < rows; ++r)
          for (lapack_int c = 0; c < cols; ++c) {
            lapack_int gi = i - 1 + r, gj = j - 1 + c;
            if (uplo == 'U' ? gi > gj : gi < gj) continue;
            double got = layout == LAPACK_ROW_MAJOR ? full[gi * n + gj] : full[gi + gj * n];
            if (got != at(a, r, c) || at(back, r, c) != got)
              return std::string("dtppack/dtpunpack: block element misplaced, uplo ") + uplo + ", trans " + trans;
          }
      }
  }
  return "";
}

}  // namespace

// The kit's general and triangular transpositions of every element type, at sizes on both
// sides of the copy's tile and of the triangular recursion, with padded leading dimensions,
// in both layouts: the facade's output, padding included, equals the stock kit's exactly
// (a transposition copies elements as they are).
template <class T>
std::string check_trans(void* facade, void* stock, char t) {
  using Ge = void (*)(int, lapack_int, lapack_int, const T*, lapack_int, T*, lapack_int);
  using Tr = void (*)(int, char, char, lapack_int, const T*, lapack_int, T*, lapack_int);
  const std::string ge = std::string("LAPACKE_") + t + "ge_trans", tr = std::string("LAPACKE_") + t + "tr_trans";
  auto fge = reinterpret_cast<Ge>(dlsym(facade, ge.c_str())), sge = reinterpret_cast<Ge>(dlsym(stock, ge.c_str()));
  auto ftr = reinterpret_cast<Tr>(dlsym(facade, tr.c_str())), str = reinterpret_cast<Tr>(dlsym(stock, tr.c_str()));
  if (!fge || !sge || !ftr || !str) return "missing " + ge + " or " + tr;
  for (lapack_int m : {1, 5, 64, 65, 130})
    for (lapack_int n : {3, 64, 129})
      for (int layout : {LAPACK_ROW_MAJOR, LAPACK_COL_MAJOR}) {
        // The input lies in `layout` with ldin; the output in the other layout with ldout.
        const bool row = layout == LAPACK_ROW_MAJOR;
        const lapack_int ldin = (row ? n : m) + 2, ldout = (row ? m : n) + 3;
        std::vector<T> in(size_t(ldin) * (row ? m : n));
        for (size_t k = 0; k < in.size(); ++k) in[k] = T(k % 1009) - T(0.5);
        std::vector<T> a(size_t(ldout) * (row ? n : m), T(-7)), b = a;
        fge(layout, m, n, in.data(), ldin, a.data(), ldout);
        sge(layout, m, n, in.data(), ldin, b.data(), ldout);
        if (a != b) return ge + " differs at " + std::to_string(m) + "x" + std::to_string(n);
        if (m != n && m + 1 != n) continue;
        for (char uplo : {'U', 'L'})
          for (char diag : {'N', 'U'}) {
            std::vector<T> c(size_t(ldout) * m, T(-7)), d = c;
            ftr(layout, uplo, diag, m, in.data(), ldin, c.data(), ldout);
            str(layout, uplo, diag, m, in.data(), ldin, d.data(), ldout);
            if (c != d) return tr + " differs at n=" + std::to_string(m) + " uplo " + uplo + " diag " + diag;
          }
      }
  return "";
}

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s FACADE.so STOCK.so [NAME-FILTER]\n", argv[0]);
    return 2;
  }
  // One thread on both sides: the children are forked from this process.
  setenv("OPENBLAS_NUM_THREADS", "1", 1);
  setenv("QNL_THREADING_LAYER", "sequential", 0);
  const char* filter = argc > 3 ? argv[3] : "";
  void* facade = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  void* stock = dlopen(argv[2], RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  if (!facade || !stock) {
    std::fprintf(stderr, "cannot open: %s\n", dlerror());
    return 2;
  }
  const char* sample_env = std::getenv("QNL_LAPACKE_DIFF_SAMPLE");
  const char* ci = std::getenv("CI");
  long sample = sample_env ? std::atol(sample_env) : (ci && !std::strcmp(ci, "true") ? 4 : 1);
  if (sample < 1) sample = 1;
  std::map<std::string, long> order;  // routine -> its rank in the table, for sampling
  for (const Case& c : kCases) order.emplace(c.name, static_cast<long>(order.size()));
  // Per routine over its cases (layouts, sides): the first difference, whether any case
  // ran for real, and the codes of the cases that both sides rejected.
  struct Verdict {
    std::string differs;
    bool real = false;
    std::string rejected;
  };
  std::map<std::string, Verdict> verdict;
  std::map<std::string, std::string> skipped;
  for (const Skipped& s : kSkipped)
    if (dlsym(stock, s.name) && std::strstr(s.name, filter)) skipped[s.name] = s.reason;
  for (const Case& c : kCases) {
    if (!std::strstr(c.name, filter) || order[c.name] % sample != 0) continue;
    void* f = dlsym(facade, c.name);
    void* s = dlsym(stock, c.name);
    if (!s) continue;  // not in the stock library: nothing to compare against
    Verdict& v = verdict[c.name];
    const char* where = c.layout == LAPACK_ROW_MAJOR ? "row-major" : "column-major";
    if (!f) {
      v.differs = "missing from the facade";
      continue;
    }
    const std::string res = run(c, f, s, stock), why = res.substr(1);
    if (res[0] == 'S') {
      skipped[c.name] = why;
      continue;
    }
    if (res[0] == 'D' && v.differs.empty()) v.differs = std::string(where) + ": " + why;
    if (res[0] == 'A') v.real = true;
    if (res[0] == 'R') v.rejected += std::string(v.rejected.empty() ? "" : ", ") + where + " " + why;
  }
  for (const auto& [name, why] : skipped) verdict.erase(name);
  // The library's own routines and the kit's copies, against stock oracles: real comparisons.
  if (std::strstr("LAPACKE_qnl_dgetrfnpi LAPACKE_qnl_dtppack", filter))
    verdict["LAPACKE_qnl_d*"] = {check_own(facade, stock), true, ""};
  if (std::strstr("LAPACKE_?ge_trans", filter)) {
    std::string why = check_trans<float>(facade, stock, 's');
    if (why.empty()) why = check_trans<double>(facade, stock, 'd');
    if (why.empty()) why = check_trans<std::complex<float>>(facade, stock, 'c');
    if (why.empty()) why = check_trans<std::complex<double>>(facade, stock, 'z');
    verdict["LAPACKE_?ge_trans, ?tr_trans"] = {why, true, ""};
  }
  // A routine counts as compared for real when at least one of its cases ran on both sides
  // and every output agreed; one whose every case was rejected by both proves only that
  // the two reject alike, and is listed with its codes.
  int real = 0, rejected = 0, differing = 0;
  const bool verbose = std::getenv("QNL_LAPACKE_DIFF_VERBOSE") != nullptr;
  for (const auto& [name, v] : verdict) {
    if (!v.differs.empty()) {
      ++differing;
      std::printf("DIFFERS %s: %s\n", name.c_str(), v.differs.c_str());
    } else if (v.real) {
      ++real;
      if (verbose && !v.rejected.empty()) std::printf("partly rejected %s: %s\n", name.c_str(), v.rejected.c_str());
    } else {
      ++rejected;
      std::printf("both rejected %s: %s\n", name.c_str(), v.rejected.c_str());
    }
  }
  // Skipped routines by reason; a reason of few routines (a stock crash) names them.
  std::map<std::string, std::vector<std::string>> reasons;
  for (const auto& [name, why] : skipped) reasons[why].push_back(name);
  for (const auto& [why, names] : reasons) {
    std::printf("skipped %4zu: %s", names.size(), why.c_str());
    for (size_t k = 0; names.size() <= 8 && k < names.size(); ++k)
      std::printf("%s%s", k ? ", " : " (", names[k].c_str());
    std::printf("%s\n", names.size() <= 8 ? ")" : "");
  }
  if (sample > 1) std::printf("sampled: every %ld-th routine of the table\n", sample);
  std::printf(
      "LAPACKE differential (%d-bit lapack_int): %zu routines; compared for real %d (agreeing %d, differing %d), "
      "both rejected %d, skipped %zu\n",
      int(8 * sizeof(lapack_int)), verdict.size(), real + differing, real, differing, rejected, skipped.size());
  return differing == 0 ? 0 : 1;
}
