// The kernel symbols of the random-number library, declared from the table the
// facade binds them by, and a stream that deletes itself.
#pragma once
#include <vector>

#include "backend_vsl.h"
#include "qnl_vsl_defines.h"

struct Stream {
  void* s = nullptr;
  int rc = 0;
  Stream(int brng, const std::vector<unsigned>& seed) {
    rc = __vslNewStreamEx(&s, brng, static_cast<int>(seed.size()), seed.data());
  }
  Stream() = default;
  ~Stream() {
    if (s) __vslDeleteStream(&s);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  std::vector<unsigned> bits(int n) {
    std::vector<unsigned> v(n);
    _vsliRngUniformBits(0, s, n, v.data());
    return v;
  }
  std::vector<double> uniform(int n) {
    std::vector<double> v(n);
    _vsldRngUniform(0, s, n, v.data(), 0.0, 1.0);
    return v;
  }
};
