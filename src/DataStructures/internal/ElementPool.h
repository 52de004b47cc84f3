// The storage of a heap's elements: slots carved in address order from chunks the heap owns,
// recycled through free lists, so that adding and removing an element allocates nothing once
// the heap has grown and a pointer to an element that left the heap still points into memory
// the heap owns (or, after the heap returned its chunks, into none of them), which makes "is
// this element in this heap" a range and header check instead of a lookup table. When its
// last element is freed (a drained queue) the pool carves from its first chunks again rather
// than follow the free lists, whose order is that of the frees.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kz::detail {

class TElementPool {
 public:
  TElementPool() = default;
  TElementPool(const TElementPool&) = delete;
  TElementPool& operator=(const TElementPool&) = delete;
  /// Every element made in the pool must have been freed before.
  ~TElementPool() = default;

  /// True when Element is a live element made in this pool; reads only memory of the pool.
  [[nodiscard]] bool Holds(const void* Element) const;
  /// Returns the chunks when no element of the pool is alive (a stale pointer then lies in
  /// no chunk and is refused by Holds without being read).
  void Trim();

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
  struct THeader;
  struct TChunk {
    std::unique_ptr<std::byte[]> Memory;
    std::uintptr_t Begin, End;
    std::size_t SlotSize;
    std::uintptr_t Carved;  // every slot below has been handed out once (has a header)
  };
  // The slots of one size class: freed ones, and the chunk being carved from Next to Limit.
  struct TClass {
    THeader* Free = nullptr;
    std::vector<std::size_t> Chunks;  // into FChunks, in carving order
    std::size_t Current = 0;          // into Chunks, while Limit is not 0
    std::uintptr_t Next = 0, Limit = 0;
    std::size_t Slots = 0;            // in all of Chunks
  };

  void* Take(std::size_t SlotSize);
  /// Moves Class on to its next chunk, making one when it has none left.
  void Carve(TClass& Class, std::size_t SlotSize);
  /// Every element has been freed: each class carves from its first chunk again.
  void Restart();

  std::vector<TChunk> FChunks;
  std::vector<TClass> FClasses;  // by slot size in granules
  std::size_t FLive = 0;
};

}  // namespace kz::detail
