// The storage of a heap's elements: slots carved from chunks the heap owns, recycled through
// free lists, so that adding and removing an element allocates nothing once the heap has
// grown and a pointer to an element that left the heap still points into memory the heap
// owns (or, after the heap returned its chunks, into none of them), which makes "is this
// element in this heap" a range and header check instead of a lookup table.
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
  };

  void* Take(std::size_t SlotSize);
  void Grow(std::size_t SlotSize, std::size_t Class);

  std::vector<TChunk> FChunks;
  std::vector<THeader*> FFree;             // one free list per slot size class
  std::vector<std::size_t> FClassSlots;    // slots carved so far, per class
  std::size_t FLive = 0;
};

}  // namespace kz::detail
