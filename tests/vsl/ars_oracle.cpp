// Random123's ARS-5, built with AES enabled; called only where the processor has AES.
#include <Random123/ars.h>

#include <functional>

#include "counter_oracle.h"

std::function<unsigned()> ars5_words(const std::vector<unsigned>& seed) {
  return counter_words<r123::ARS4x32_R<5>>(seed);
}
