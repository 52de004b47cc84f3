// Keys shared by the map benchmarks: random 16-bit string keys and sets of distinct keys.
#pragma once

#include <cstddef>
#include <random>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Runtime/Types.h"

namespace kzbench {

/// "key:" and eight random code units from '0' on: 12 units.
inline kz::String MakeStringKey(std::mt19937& Rng) {
  kz::String S = u"key:";
  for (int I = 0; I < 8; ++I) S += static_cast<kz::Char>(u'0' + Rng() % 75);
  return S;
}

/// 2N distinct keys from Make(Rng) in the order drawn: the first N into Present, the rest into
/// Absent. Rng goes on from there for the caller's shuffles.
template <class TKey, class TMake>
void DistinctKeys(std::size_t N, std::mt19937& Rng, TMake&& Make, std::vector<TKey>& Present,
                  std::vector<TKey>& Absent) {
  std::unordered_set<TKey> Seen;
  std::vector<TKey> All;
  while (All.size() < 2 * N) {
    TKey K = Make(Rng);
    if (Seen.insert(K).second) All.push_back(std::move(K));
  }
  Present.assign(All.begin(), All.begin() + static_cast<std::ptrdiff_t>(N));
  Absent.assign(All.begin() + static_cast<std::ptrdiff_t>(N), All.end());
}

}  // namespace kzbench
