// The sifts and the pruned search shared by every heap of the unit, over an array of element
// pointers whose Index fields the heap keeps equal to their positions.
#pragma once

#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "DataStructures/HeapElements.h"

namespace kz::detail {

/// Runs Fn, turning a failed allocation into the library's EOutOfMemory.
template <class F>
decltype(auto) GuardMemory(F&& Fn) {
  try {
    return Fn();
  } catch (const std::bad_alloc&) {
    throw EOutOfMemory(Runtime::SOutOfMemory);
  }
}

struct THeapAccess {
  template <class E>
  static void SetIndex(E* Element, std::int32_t Index) {
    Element->FIndex = Index;
  }
};

/// Swaps the element at I with its parent while SwapUp(Parent, Child) holds, setting both
/// Index fields at each swap. Answers the element finally at the end point.
template <class E, class FSwapUp>
E* SiftUp(std::vector<E*>& H, std::int32_t I, FSwapUp SwapUp) {
  while (I > 0) {
    const std::int32_t P = (I - 1) / 2;
    if (!SwapUp(H[P], H[I])) break;
    std::swap(H[P], H[I]);
    // Both at once, so that a comparison raising mid-way leaves every Index true.
    THeapAccess::SetIndex(H[P], P);
    THeapAccess::SetIndex(H[I], I);
    I = P;
  }
  THeapAccess::SetIndex(H[I], I);
  return H[I];
}

/// Swaps the element at I with the chosen child (the right one when TakeRight(Right, Left))
/// while SwapDown(Child, Element) holds.
template <class E, class FTakeRight, class FSwapDown>
E* SiftDown(std::vector<E*>& H, std::int32_t I, FTakeRight TakeRight, FSwapDown SwapDown) {
  const std::int64_t N = static_cast<std::int64_t>(H.size());
  // 64-bit so that 2i + 2 cannot overflow however large the heap.
  for (std::int64_t K = 2 * std::int64_t{I} + 1; K < N; K = 2 * std::int64_t{I} + 1) {
    if (K + 1 < N && TakeRight(H[K + 1], H[K])) ++K;
    if (!SwapDown(H[K], H[I])) break;
    std::swap(H[K], H[I]);
    THeapAccess::SetIndex(H[K], static_cast<std::int32_t>(K));
    THeapAccess::SetIndex(H[I], I);
    I = static_cast<std::int32_t>(K);
  }
  THeapAccess::SetIndex(H[I], I);
  return H[I];
}

/// Pre-order walk from the root, left subtree first. Visit(Element) answers 1 to stop at it,
/// 0 to go on into its children, -1 to skip its subtree. Answers the index or -1. The
/// recursion is as deep as the tree (at most 31 levels).
template <class E, class FVisit>
std::int32_t PreOrderFind(const std::vector<E*>& H, std::int64_t I, FVisit& Visit) {
  if (I >= static_cast<std::int64_t>(H.size())) return -1;
  const int V = Visit(H[static_cast<std::size_t>(I)]);
  if (V > 0) return static_cast<std::int32_t>(I);
  if (V < 0) return -1;
  const std::int32_t Left = PreOrderFind(H, 2 * I + 1, Visit);
  return Left >= 0 ? Left : PreOrderFind(H, 2 * I + 2, Visit);
}

/// Takes the element at Index out of the array: the last element moves into the gap with
/// its Index updated. Answers the removed element, which the caller frees.
template <class E>
E* TakeOut(std::vector<E*>& H, std::int32_t Index) {
  const std::size_t Last = H.size() - 1;
  E* Removed = H[static_cast<std::size_t>(Index)];
  if (static_cast<std::size_t>(Index) != Last) {
    H[static_cast<std::size_t>(Index)] = H[Last];
    THeapAccess::SetIndex(H[static_cast<std::size_t>(Index)], Index);
  }
  H.pop_back();
  return Removed;
}

}  // namespace kz::detail
