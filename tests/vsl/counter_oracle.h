// Random123's counter-based generators as word sources: the seed's first words
// are the key, the next four the counter, incremented per block of four words.
#pragma once
#include <algorithm>
#include <vector>

template <class G>
auto counter_words(const std::vector<unsigned>& seed) {
  typename G::key_type k{};
  typename G::ctr_type c{};
  std::copy_n(seed.begin(), k.size(), k.begin());
  std::copy_n(seed.begin() + k.size(), c.size(), c.begin());
  return [g = G(), k, c, block = c, i = c.size()]() mutable {
    if (i == block.size()) block = g(c, k), c.incr(), i = 0;
    return block[i++];
  };
}
