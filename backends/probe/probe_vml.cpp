// The vector threaders of the probe threading layers: each records what reached
// it, one word per argument (a double complex scalar as two), and runs nothing.
#include <cstring>

#include "probe_backend.h"

namespace {

struct c8 {
  float re, im;
};
struct c16 {
  double re, im;
};

struct Words {
  uint64_t w[qnl_probe::kMaxWords];
  int n = 0;
  template <class T>
  void add(T v) {
    w[n++] = qnl_probe::word(v);
  }
  void add(c8 v) {
    uint64_t x;
    std::memcpy(&x, &v, 8);
    w[n++] = x;
  }
  void add(c16 v) {
    add(v.re);
    add(v.im);
  }
};

template <class... A>
void record(const char* symbol, A... args) {
  Words words;
  (words.add(args), ...);
  qnl_probe_record(symbol, QNL_PROBE_LIBRARY, words.w, words.n);
}

}  // namespace

using K = void*;
using H = void*;
using f32 = float;
using f64 = double;

// name, then the arguments between the count and the tag
#define QNL_PROBE_THREADER(name, ...) \
  QNL_PROBE_API void qnl_vml_serv_threader_##name(K k, int32_t n, __VA_ARGS__, int32_t tag, H h)
#define QNL_PROBE_RECORD(name, ...) record("qnl_vml_serv_threader_" #name, k, n, __VA_ARGS__, tag, h)

QNL_PROBE_THREADER(s_1i_1o, const f32* a, f32* y) { QNL_PROBE_RECORD(s_1i_1o, a, y); }
QNL_PROBE_THREADER(d_1i_1o, const f64* a, f64* y) { QNL_PROBE_RECORD(d_1i_1o, a, y); }
QNL_PROBE_THREADER(s_2i_1o, const f32* a, const f32* b, f32* y) { QNL_PROBE_RECORD(s_2i_1o, a, b, y); }
QNL_PROBE_THREADER(d_2i_1o, const f64* a, const f64* b, f64* y) { QNL_PROBE_RECORD(d_2i_1o, a, b, y); }
QNL_PROBE_THREADER(s_1i_2o, const f32* a, f32* y, f32* z) { QNL_PROBE_RECORD(s_1i_2o, a, y, z); }
QNL_PROBE_THREADER(d_1i_2o, const f64* a, f64* y, f64* z) { QNL_PROBE_RECORD(d_1i_2o, a, y, z); }
QNL_PROBE_THREADER(s_cs_2i_s_1o, const f32* a, f32 b, f32* y) { QNL_PROBE_RECORD(s_cs_2i_s_1o, a, b, y); }
QNL_PROBE_THREADER(d_cd_2i_d_1o, const f64* a, f64 b, f64* y) { QNL_PROBE_RECORD(d_cd_2i_d_1o, a, b, y); }
QNL_PROBE_THREADER(c_1i_1o, const c8* a, c8* y) { QNL_PROBE_RECORD(c_1i_1o, a, y); }
QNL_PROBE_THREADER(z_1i_1o, const c16* a, c16* y) { QNL_PROBE_RECORD(z_1i_1o, a, y); }
QNL_PROBE_THREADER(c_2i_1o, const c8* a, const c8* b, c8* y) { QNL_PROBE_RECORD(c_2i_1o, a, b, y); }
QNL_PROBE_THREADER(z_2i_1o, const c16* a, const c16* b, c16* y) { QNL_PROBE_RECORD(z_2i_1o, a, b, y); }
QNL_PROBE_THREADER(c_1i_2o, const c8* a, c8* y, c8* z) { QNL_PROBE_RECORD(c_1i_2o, a, y, z); }
QNL_PROBE_THREADER(z_1i_2o, const c16* a, c16* y, c16* z) { QNL_PROBE_RECORD(z_1i_2o, a, y, z); }
QNL_PROBE_THREADER(c_cc_2i_c_1o, const c8* a, c8 b, c8* y) { QNL_PROBE_RECORD(c_cc_2i_c_1o, a, b, y); }
QNL_PROBE_THREADER(z_cz_2i_z_1o, const c16* a, c16 b, c16* y) { QNL_PROBE_RECORD(z_cz_2i_z_1o, a, b, y); }
QNL_PROBE_THREADER(c_1i_s_1o, const c8* a, f32* y) { QNL_PROBE_RECORD(c_1i_s_1o, a, y); }
QNL_PROBE_THREADER(z_1i_d_1o, const c16* a, f64* y) { QNL_PROBE_RECORD(z_1i_d_1o, a, y); }
QNL_PROBE_THREADER(s_1i_c_1o, const f32* a, c8* y) { QNL_PROBE_RECORD(s_1i_c_1o, a, y); }
QNL_PROBE_THREADER(d_1i_z_1o, const f64* a, c16* y) { QNL_PROBE_RECORD(d_1i_z_1o, a, y); }
QNL_PROBE_THREADER(s_6i_1o, const f32* a, const f32* b, f32 sa, f32 ha, f32 sb, f32 hb, f32* y) {
  QNL_PROBE_RECORD(s_6i_1o, a, b, sa, ha, sb, hb, y);
}
QNL_PROBE_THREADER(d_6i_1o, const f64* a, const f64* b, f64 sa, f64 ha, f64 sb, f64 hb, f64* y) {
  QNL_PROBE_RECORD(d_6i_1o, a, b, sa, ha, sb, hb, y);
}
