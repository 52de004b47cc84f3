// The storage of a heap's elements: a slab the heap owns, so that adding and removing an
// element allocates nothing once the heap has grown and a pointer to an element that left the
// heap still points into memory the heap owns (or, after the heap returned its chunks, into
// none of them), which makes "is this element in this heap" a range and header check instead
// of a lookup table. When its last element is freed (a drained queue) the slab carves from its
// first chunks again rather than follow the free lists, whose order is that of the frees.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Runtime/Slab.h"

namespace kz::detail {

class TElementPool {
 public:
  TElementPool() noexcept : FSlab(FirstChunkSlots, SIZE_MAX) {}
  TElementPool(const TElementPool&) = delete;
  TElementPool& operator=(const TElementPool&) = delete;
  /// Every element made in the pool must have been freed before.
  ~TElementPool() = default;

  /// True when Element is a live element made in this pool; reads only memory of the pool.
  [[nodiscard]] bool Holds(const void* Element) const;
  /// Returns the chunks when no element of the pool is alive (a stale pointer then lies in
  /// no chunk and is refused by Holds without being read).
  void Trim() { FSlab.Trim(); }

  /// Makes element classes allocate from Pool while it lives (per thread).
  class TScope {
   public:
    explicit TScope(TElementPool& Pool);
    ~TScope();
    TScope(const TScope&) = delete;
    TScope& operator=(const TScope&) = delete;

   private:
    TElementPool* FSaved;
  };

  /// The element classes' operator new and delete: in the current pool when there is one,
  /// else from the global heap; both carry a header saying where they came from.
  static void* Allocate(std::size_t Size);
  static void Free(void* Element) noexcept;
  /// Memory for an element of Size bytes in this pool, whatever the current pool is.
  void* AllocateHere(std::size_t Size);

 private:
  // Doubling chunks from this size on, without a cap: a few dozen at most, which bounds the
  // scans in Holds.
  static constexpr std::size_t FirstChunkSlots = 256;

  TSlab FSlab;
};

}  // namespace kz::detail
