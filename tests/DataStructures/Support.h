// Items for the heap tests: an object with a value that counts the live instances.
#pragma once

#include <cstdint>
#include <vector>

#include "DataStructures/DataStructures.h"

namespace kz::test {

class TVal : public TObject {
  KZ_CLASS(TVal, TObject)
 public:
  static inline int Live = 0;
  explicit TVal(std::int32_t AV = 0) : V(AV) { ++Live; }
  ~TVal() override { --Live; }
  std::int32_t V;
};

inline std::int32_t CompareVals(TObject* A, TObject* B) {
  const std::int32_t X = static_cast<TVal*>(A)->V, Y = static_cast<TVal*>(B)->V;
  return X < Y ? -1 : X > Y ? 1 : 0;
}

/// The values of a heap's items (object heaps) or its priorities (numeric heaps), in array
/// order; every element's Index must equal its position.
inline std::vector<std::int32_t> Layout(const TCustomHeap& H) {
  std::vector<std::int32_t> R;
  for (std::int32_t I = 0; I < H.TCustomHeap::GetCount(); ++I) {
    THeapElement* E = H.GetElement(I);
    EXPECT_EQ(E->GetIndex(), I);
    if (auto* N = dynamic_cast<TIntHeapElement*>(E))
      R.push_back(N->GetPriority());
    else
      R.push_back(static_cast<TVal*>(E->GetItem())->V);
  }
  return R;
}

}  // namespace kz::test
