// Counter-based generators: Philox4x32-10 and ARS-5. Each maps a 128-bit
// counter and a key to four 32-bit words; the counter counts blocks. Bulk
// requests run 32 counters at a time in lanes, cloned for AVX2 and AVX-512
// (Philox) or on the AES instructions (ARS).
#include <immintrin.h>

#include "../../../src/runtime/cpu_features.h"
#include "vsl_internal.h"

namespace qnl_vsl {
namespace {

struct Ctr {
  uint32_t key[4];
  uint32_t ctr[4];  // the next block's counter, word 0 lowest
  uint32_t buf[4];  // the current block
  int32_t idx;      // words of buf already used; 4 when none left
};
constexpr int kLanes = 32;

inline void ctr_add(uint32_t* c, uint64_t k) {
  uint64_t lo = (uint64_t{c[1]} << 32 | c[0]), nlo = lo + k;
  uint64_t hi = (uint64_t{c[3]} << 32 | c[2]) + (nlo < lo);
  c[0] = uint32_t(nlo), c[1] = uint32_t(nlo >> 32), c[2] = uint32_t(hi), c[3] = uint32_t(hi >> 32);
}

// ---- Philox4x32-10 ----
QNL_VSL_CLONES void philox_lanes(const uint32_t* key, const uint32_t* ctr, uint32_t* __restrict out) {
  uint32_t c0[kLanes], c1[kLanes], c2[kLanes], c3[kLanes];
  const uint64_t lo = uint64_t{ctr[1]} << 32 | ctr[0];  // the caller keeps lo + kLanes - 1 from wrapping
  for (int j = 0; j < kLanes; ++j) {
    c0[j] = uint32_t(lo + j), c1[j] = uint32_t((lo + j) >> 32), c2[j] = ctr[2], c3[j] = ctr[3];
  }
  uint32_t k0 = key[0], k1 = key[1];
  for (int r = 0; r < 10; ++r) {
    for (int j = 0; j < kLanes; ++j) {
      uint64_t p0 = uint64_t{0xD2511F53u} * c0[j], p1 = uint64_t{0xCD9E8D57u} * c2[j];
      uint32_t n0 = uint32_t(p1 >> 32) ^ c1[j] ^ k0, n2 = uint32_t(p0 >> 32) ^ c3[j] ^ k1;
      c0[j] = n0, c1[j] = uint32_t(p1), c2[j] = n2, c3[j] = uint32_t(p0);
    }
    k0 += 0x9E3779B9u, k1 += 0xBB67AE85u;
  }
  for (int j = 0; j < kLanes; ++j)
    out[4 * j] = c0[j], out[4 * j + 1] = c1[j], out[4 * j + 2] = c2[j], out[4 * j + 3] = c3[j];
}
// The same blocks on AVX-512's widening 32 x 32 -> 64-bit multiply, which GCC 12
// does not find for the loop above (it multiplies all 64 bits). Each word sits in
// a 64-bit lane; the multiply never reads the bits above 32, and they are dropped
// at the end. The masked forms keep GCC 12 from warning about its own helpers.
__attribute__((target("avx512f"))) void philox_lanes_avx512(const uint32_t* key, const uint32_t* ctr,
                                                            uint32_t* __restrict out) {
  constexpr int kV = kLanes / 8;  // independent vectors, enough to hide the multiply's latency
  const __m512i m0 = _mm512_set1_epi64(0xD2511F53), m1 = _mm512_set1_epi64(0xCD9E8D57);
  const __m512i step = _mm512_setr_epi64(0, 1, 2, 3, 4, 5, 6, 7);
  const long long lo = static_cast<long long>(uint64_t{ctr[1]} << 32 | ctr[0]);
  __m512i c0[kV], c1[kV], c2[kV], c3[kV];
#pragma GCC unroll 8
  for (int h = 0; h < kV; ++h) {
    c0[h] = _mm512_add_epi64(_mm512_set1_epi64(lo + 8 * h), step), c1[h] = _mm512_maskz_srli_epi64(0xff, c0[h], 32);
    c2[h] = _mm512_set1_epi64(ctr[2]), c3[h] = _mm512_set1_epi64(ctr[3]);
  }
  uint32_t k0 = key[0], k1 = key[1];
  for (int r = 0; r < 10; ++r) {
    const __m512i key0 = _mm512_set1_epi64(k0), key1 = _mm512_set1_epi64(k1);
#pragma GCC unroll 8
    for (int h = 0; h < kV; ++h) {
      const __m512i p0 = _mm512_maskz_mul_epu32(0xff, c0[h], m0), p1 = _mm512_maskz_mul_epu32(0xff, c2[h], m1);
      c0[h] = _mm512_ternarylogic_epi64(_mm512_maskz_srli_epi64(0xff, p1, 32), c1[h], key0, 0x96), c1[h] = p1;
      c2[h] = _mm512_ternarylogic_epi64(_mm512_maskz_srli_epi64(0xff, p0, 32), c3[h], key1, 0x96), c3[h] = p0;
    }
    k0 += 0x9E3779B9u, k1 += 0xBB67AE85u;
  }
  alignas(32) uint32_t w[4][kLanes];
#pragma GCC unroll 8
  for (int h = 0; h < kV; ++h) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(w[0] + 8 * h), _mm512_maskz_cvtepi64_epi32(0xff, c0[h]));
    _mm256_store_si256(reinterpret_cast<__m256i*>(w[1] + 8 * h), _mm512_maskz_cvtepi64_epi32(0xff, c1[h]));
    _mm256_store_si256(reinterpret_cast<__m256i*>(w[2] + 8 * h), _mm512_maskz_cvtepi64_epi32(0xff, c2[h]));
    _mm256_store_si256(reinterpret_cast<__m256i*>(w[3] + 8 * h), _mm512_maskz_cvtepi64_epi32(0xff, c3[h]));
  }
  for (int j = 0; j < kLanes; ++j)
    for (int k = 0; k < 4; ++k) out[4 * j + k] = w[k][j];
}
using LanesFn = void (*)(const uint32_t*, const uint32_t*, uint32_t*);
void philox_fast(const uint32_t* key, const uint32_t* ctr, uint32_t* out) {
  (qnl::cpu::has(qnl::cpu::kAvx512f) ? philox_lanes_avx512 : philox_lanes)(key, ctr, out);
}

void philox_one(const uint32_t* key, const uint32_t* ctr, uint32_t* out) {
  uint32_t c[4] = {ctr[0], ctr[1], ctr[2], ctr[3]}, k0 = key[0], k1 = key[1];
  for (int r = 0; r < 10; ++r) {
    uint64_t p0 = uint64_t{0xD2511F53u} * c[0], p1 = uint64_t{0xCD9E8D57u} * c[2];
    uint32_t n[4] = {uint32_t(p1 >> 32) ^ c[1] ^ k0, uint32_t(p1), uint32_t(p0 >> 32) ^ c[3] ^ k1, uint32_t(p0)};
    std::memcpy(c, n, sizeof c);
    k0 += 0x9E3779B9u, k1 += 0xBB67AE85u;
  }
  std::memcpy(out, c, sizeof c);
}

// ---- ARS-5: four AES rounds and a last round on counter ^ key, the key
// stepped by a Weyl sequence ----
__attribute__((target("aes,sse4.1"))) inline __m128i ars_block(__m128i c, __m128i key) {
  const __m128i weyl = _mm_set_epi64x(static_cast<long long>(0xBB67AE8584CAA73Bull), 0x9E3779B97F4A7C15ll);
  __m128i k = key, v = _mm_xor_si128(c, k);
  for (int r = 1; r < 5; ++r) k = _mm_add_epi64(k, weyl), v = _mm_aesenc_si128(v, k);
  k = _mm_add_epi64(k, weyl);
  return _mm_aesenclast_si128(v, k);
}
__attribute__((target("aes,sse4.1"))) void ars_one(const uint32_t* key, const uint32_t* ctr, uint32_t* out) {
  __m128i v = ars_block(_mm_loadu_si128(reinterpret_cast<const __m128i*>(ctr)),
                        _mm_loadu_si128(reinterpret_cast<const __m128i*>(key)));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), v);
}
__attribute__((target("aes,sse4.1"))) void ars_lanes(const uint32_t* key, const uint32_t* ctr, uint32_t* out) {
  const __m128i k = _mm_loadu_si128(reinterpret_cast<const __m128i*>(key));
  const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(ctr));
  for (int j = 0; j < kLanes; ++j)  // no carry out of the low 64 bits here, as for Philox
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out) + j, ars_block(_mm_add_epi64(c, _mm_set_epi64x(0, j)), k));
}

// ---- shared stream logic ----
using BlockFn = void (*)(const uint32_t*, const uint32_t*, uint32_t*);

// Writes n words, whole blocks straight into out.
template <BlockFn One, BlockFn Lanes>
void ctr_words(Ctr* st, int n, uint32_t* out) {
  int done = 0;
  while (done < n && st->idx < 4) out[done++] = st->buf[st->idx++];
  // kLanes blocks at a time; a shorter run of 4 blocks or more also goes through
  // the lanes, into a buffer, the counters it does not hand out left unused.
  while (n - done >= 16) {
    if ((uint64_t{st->ctr[1]} << 32 | st->ctr[0]) > ~uint64_t{0} - kLanes) break;  // carry: go one by one
    const int blocks = (n - done) / 4 < kLanes ? (n - done) / 4 : kLanes;
    if (blocks == kLanes) {
      Lanes(st->key, st->ctr, out + done);
    } else {
      uint32_t w[4 * kLanes];
      Lanes(st->key, st->ctr, w);
      std::memcpy(out + done, w, sizeof(uint32_t) * 4 * blocks);
    }
    ctr_add(st->ctr, static_cast<uint64_t>(blocks));
    done += 4 * blocks;
  }
  while (n - done >= 4) {
    One(st->key, st->ctr, out + done);
    ctr_add(st->ctr, 1);
    done += 4;
  }
  if (done < n) {
    One(st->key, st->ctr, st->buf);
    ctr_add(st->ctr, 1);
    st->idx = 0;
    while (done < n) out[done++] = st->buf[st->idx++];
  }
}

QNL_VSL_CLONES void words_to_double(const uint32_t* __restrict x, int n, double* __restrict r, double a, double w) {
  for (int i = 0; i < n; ++i) r[i] = a + w * (static_cast<double>(x[i]) * 0x1p-32);
}

template <BlockFn One, BlockFn Lanes>
int ctr_d(void* p, int n, double* r, double a, double b) {
  alignas(64) uint32_t w[1024];
  for (int done = 0; done < n;) {
    int m = n - done < 1024 ? n - done : 1024;
    ctr_words<One, Lanes>(static_cast<Ctr*>(p), m, w);
    words_to_double(w, m, r + done, a, b - a);
    done += m;
  }
  return 0;
}
template <BlockFn One, BlockFn Lanes>
int ctr_bits(void* p, int n, unsigned* r) {
  ctr_words<One, Lanes>(static_cast<Ctr*>(p), n, r);
  return 0;
}
template <BlockFn One>
int ctr_skip(void* p, long long nskip) {
  if (nskip < 0) return VSL_ERROR_BADARGS;
  auto* st = static_cast<Ctr*>(p);
  uint64_t k = static_cast<uint64_t>(nskip);
  if (st->idx < 4) {
    uint64_t left = 4 - st->idx;
    if (k < left) return st->idx += static_cast<int>(k), 0;
    k -= left;
    st->idx = 4;
  }
  ctr_add(st->ctr, k / 4);
  if (k % 4) {
    One(st->key, st->ctr, st->buf);
    ctr_add(st->ctr, 1);
    st->idx = static_cast<int>(k % 4);
  }
  return 0;
}

// Seed words: key words first (two for Philox, four for ARS), then the counter.
int ctr_init(void* p, int nkey, int n, const unsigned* params) {
  auto* st = static_cast<Ctr*>(p);
  std::memset(st, 0, sizeof *st);
  for (int i = 0; i < n && i < nkey + 4; ++i) (i < nkey ? st->key[i] : st->ctr[i - nkey]) = params[i];
  st->idx = 4;
  return 0;
}
int philox_init(int, void* p, int n, const unsigned* params) { return ctr_init(p, 2, n, params); }
int ars_init(int, void* p, int n, const unsigned* params) {
  if (!cpu_ecx1(25)) return VSL_RNG_ERROR_ARS5_NOT_SUPPORTED;
  return ctr_init(p, 4, n, params);
}

}  // namespace

extern const Brng kPhilox{sizeof(Ctr),
                          6,
                          1,
                          1,
                          32,
                          philox_init,
                          ctr_d<philox_one, philox_fast>,
                          fill_s_via_d<ctr_d<philox_one, philox_fast>>,
                          ctr_bits<philox_one, philox_fast>,
                          ctr_skip<philox_one>,
                          nullptr,
                          true};
extern const Brng kArs5{sizeof(Ctr),
                        8,
                        1,
                        1,
                        32,
                        ars_init,
                        ctr_d<ars_one, ars_lanes>,
                        fill_s_via_d<ctr_d<ars_one, ars_lanes>>,
                        ctr_bits<ars_one, ars_lanes>,
                        ctr_skip<ars_one>,
                        nullptr,
                        true};

}  // namespace qnl_vsl
