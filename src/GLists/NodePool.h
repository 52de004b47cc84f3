// The storage of the nodes a list makes for itself: a slab of the list's own, so that a steady
// push and pop allocates nothing and the nodes of one list lie close together. Once a queue or
// stack has popped every node alive, the slab carves again from its first chunk, in address
// order. For the library's lists (their in-line push and pop), not for users.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Runtime/Slab.h"

namespace kz {
class TGCustomLinkedList;
}

namespace kz::detail {

// Marks a list keeps in the low bits of a living node's store word.
/// Owned by a list that keeps a record of it: the word is the record's address.
inline constexpr std::uintptr_t OwnRecord = 1;
/// Owned by the list of the pool the word names.
inline constexpr std::uintptr_t OwnStore = 2;
/// Beside OwnStore: the node is exactly a TSQNode.
inline constexpr std::uintptr_t OwnPlain = 4;
inline constexpr std::uintptr_t OwnMarks = 7;

/// Every node is preceded by one word, its store word: its pool while it lives (null for the
/// global heap) with the list's marks in the low bits, the next free slot of its size while
/// it is free. A pool belongs to one list.
class TNodePool {
 public:
  explicit TNodePool(TGCustomLinkedList* List) noexcept : FSlab(FirstChunkSlots, MaxChunkSlots), FList(List) {}
  TNodePool(const TNodePool&) = delete;
  TNodePool& operator=(const TNodePool&) = delete;

  /// The list lets go of its pool: the pool goes now, or with the last node it still holds
  /// (a node the list handed out and someone else frees later).
  void Release() noexcept;
  /// Returns the chunks when no node of the pool is alive.
  void Trim() noexcept { FSlab.Trim(); }
  /// The list the pool belongs to.
  TGCustomLinkedList* List() const noexcept { return FList; }
  /// Calls Fn(Node, Word) for every node alive in the pool, with its store word, in address
  /// order, until Fn answers false. Fn may free the node it is given.
  template <class TFn>
  void ForEachLive(TFn Fn) {
    FSlab.ForEachCarved([&](void* Slot) {
      const std::uintptr_t W = *static_cast<std::uintptr_t*>(Slot);
      return (W & ~OwnMarks) != reinterpret_cast<std::uintptr_t>(this) || Fn(static_cast<std::uintptr_t*>(Slot) + 1, W);
    });
  }
  /// The store word of a node that comes from Allocate.
  static std::uintptr_t& Word(const void* Node) noexcept {
    return const_cast<std::uintptr_t*>(static_cast<const std::uintptr_t*>(Node))[-1];
  }
  /// The pool of a store word.
  static TNodePool* PoolOf(std::uintptr_t Word) noexcept {
    return reinterpret_cast<TNodePool*>(Word & ~OwnMarks);
  }

  /// Node memory of Size bytes: from Pool when there is one and the size fits a slot, else
  /// from the global heap. A pool slot's word gets Marks (the node's marks when a list of
  /// the pool takes it at once). Raises EOutOfMemory.
  static void* Allocate(std::size_t Size, TNodePool* Pool, std::uintptr_t Marks = 0) {
    if (const std::size_t Class = ClassOf(Size); Pool && Class <= TSlab::SmallClasses)
      if (void* Slot = Pool->FSlab.TryTake(Class)) return Stamp(Slot, Pool, Marks);
    return AllocateSlow(Size, Pool, Marks);
  }
  /// Returns memory from Allocate, wherever it came from. Size is the size asked for. A
  /// record's mark must be gone from the word.
  static void Free(void* Node, std::size_t Size) noexcept {
    if (!Node) return;
    TNodePool* Pool = PoolOf(Word(Node));
    if (!Pool) return FreeGlobal(Node);
    if (Pool->FSlab.Give(&Word(Node), ClassOf(Size)) == 0 && Pool->FReleased) delete Pool;
  }
  /// Free of a node known to live in this pool while its list still holds the pool (the
  /// in-line pop of a queue or stack). Restarts the slab when that was the last live node:
  /// lists whose nodes are freed by the general path refill faster from the slots freed
  /// last, still in cache.
  void FreeHeld(void* Node, std::size_t Size) noexcept {
    if (FSlab.Give(&Word(Node), ClassOf(Size)) == 0) FSlab.Restart();
  }
  /// Returns memory from Allocate whose size is unknown (a constructor that raised): a pool
  /// slot is not reused before the pool restarts.
  static void Abandon(void* Node) noexcept;

 private:
  // A node's slot is its store word and the node; larger nodes come from the global heap.
  static constexpr std::size_t ClassOf(std::size_t Size) noexcept {
    return (Size + sizeof(std::uintptr_t) + TSlab::Granule - 1) / TSlab::Granule;
  }
  static constexpr std::size_t FirstChunkSlots = 64;
  static constexpr std::size_t MaxChunkSlots = 64 * 1024;

  /// The node of a slot just taken, its word set to the pool and Marks.
  static void* Stamp(void* Slot, TNodePool* Pool, std::uintptr_t Marks) noexcept {
    *static_cast<std::uintptr_t*>(Slot) = reinterpret_cast<std::uintptr_t>(Pool) | Marks;
    return static_cast<std::uintptr_t*>(Slot) + 1;
  }
  static void* AllocateSlow(std::size_t Size, TNodePool* Pool, std::uintptr_t Marks);
  static void FreeGlobal(void* Node) noexcept;

  TSlab FSlab;
  TGCustomLinkedList* FList;
  bool FReleased = false;
};

}  // namespace kz::detail
