// Random123's ARS-5, built with AES enabled; called only where cpuid has AES.
#include <Random123/ars.h>

void ars5_oracle(const unsigned* key, const unsigned* ctr, int nblocks, unsigned* out) {
  r123::ARS4x32_R<5> g;
  r123::ARS4x32_R<5>::key_type k = {{key[0], key[1], key[2], key[3]}};
  r123::ARS4x32_R<5>::ctr_type c = {{ctr[0], ctr[1], ctr[2], ctr[3]}};
  for (int b = 0; b < nblocks; ++b, c.incr()) {
    auto o = g(c, k);
    for (int j = 0; j < 4; ++j) out[4 * b + j] = o[j];
  }
}
