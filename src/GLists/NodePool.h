// The storage of the nodes a list makes for itself: slots carved from chunks, recycled through
// one free list per slot size, so that a steady push and pop allocates nothing and the nodes
// of one list lie close together. Once a queue or stack has popped every node alive, the
// chunks are carved again from the first, in address order. For the library's lists (their
// in-line push and pop), not for users.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
// A free slot stays poisoned until it is handed out again, so reading a freed node is still
// reported under the address sanitizer.
#define KZ_NODE_POISON(P, N) ASAN_POISON_MEMORY_REGION(P, N)
#define KZ_NODE_UNPOISON(P, N) ASAN_UNPOISON_MEMORY_REGION(P, N)
#else
#define KZ_NODE_POISON(P, N) ((void)(P), (void)(N))
#define KZ_NODE_UNPOISON(P, N) ((void)(P), (void)(N))
#endif

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
  explicit TNodePool(TGCustomLinkedList* List) noexcept : FList(List) {}
  TNodePool(const TNodePool&) = delete;
  TNodePool& operator=(const TNodePool&) = delete;

  /// The list lets go of its pool: the pool goes now, or with the last node it still holds
  /// (a node the list handed out and someone else frees later).
  void Release() noexcept;
  /// Returns the chunks when no node of the pool is alive.
  void Trim() noexcept;
  /// The list the pool belongs to.
  TGCustomLinkedList* List() const noexcept { return FList; }
  /// Calls Fn(Node, Word) for every node alive in the pool, with its store word, in address
  /// order, until Fn answers false. Fn may free the node it is given.
  template <class TFn>
  void ForEachLive(TFn Fn) {
    for (const TChunk& C : FChunks) {
      const std::size_t SlotSize = C.Class * Unit;
      for (std::byte* P = C.Memory.get(), *End = P + C.Bytes; P != End; P += SlotSize)
        if (const std::uintptr_t W = *reinterpret_cast<std::uintptr_t*>(P);
            (W & ~OwnMarks) == reinterpret_cast<std::uintptr_t>(this) &&
            !Fn(reinterpret_cast<std::uintptr_t*>(P) + 1, W))
          return;
    }
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
    const std::size_t Class = (Size + HeaderSize + Unit - 1) / Unit;
    if (Pool && Class <= MaxClass) {
      void** Slot = static_cast<void**>(Pool->FFree[Class]);
      if (Slot) {
        Pool->FFree[Class] = *Slot;
        // The next allocation reads the next free slot, which a drained queue left cold.
        __builtin_prefetch(*Slot, 1);
      } else if (Pool->FCarve[Class] != Pool->FCarveEnd[Class]) {
        // Carving reads nothing from the slot, so a refill writes memory in order without
        // waiting for it.
        Slot = reinterpret_cast<void**>(Pool->FCarve[Class]);
        Pool->FCarve[Class] += Class * Unit;
      }
      if (Slot) {
        *reinterpret_cast<std::uintptr_t*>(Slot) = reinterpret_cast<std::uintptr_t>(Pool) | Marks;
        ++Pool->FLive;
        KZ_NODE_UNPOISON(Slot + 1, Class * Unit - HeaderSize);
        return Slot + 1;
      }
    }
    return AllocateSlow(Size, Pool, Marks);
  }
  /// Returns memory from Allocate, wherever it came from. Size is the size asked for. A
  /// record's mark must be gone from the word.
  static void Free(void* Node, std::size_t Size) noexcept {
    if (!Node) return;
    void** Slot = static_cast<void**>(Node) - 1;
    TNodePool* Pool = PoolOf(Word(Node));
    if (!Pool) return FreeGlobal(Node);
    const std::size_t Class = (Size + HeaderSize + Unit - 1) / Unit;
    KZ_NODE_POISON(Node, Class * Unit - HeaderSize);
    *Slot = Pool->FFree[Class];
    Pool->FFree[Class] = Slot;
    if (--Pool->FLive == 0 && Pool->FReleased) delete Pool;
  }
  /// Free of a node known to live in this pool while its list still holds the pool (the
  /// in-line pop of a queue or stack). Restarts the pool when that was the last live node.
  void FreeHeld(void* Node, std::size_t Size) noexcept {
    void** Slot = static_cast<void**>(Node) - 1;
    const std::size_t Class = (Size + HeaderSize + Unit - 1) / Unit;
    KZ_NODE_POISON(Node, Class * Unit - HeaderSize);
    *Slot = FFree[Class];
    FFree[Class] = Slot;
    if (--FLive == 0) Restart();
  }
  /// Returns memory from Allocate whose size is unknown (a constructor that raised): a pool
  /// slot is not reused before the pool restarts.
  static void Abandon(void* Node) noexcept;

 private:
  static constexpr std::size_t HeaderSize = sizeof(void*);
  static constexpr std::size_t Unit = 8;
  static constexpr std::size_t MaxClass = 32;  // slots up to 256 bytes

  static void* AllocateSlow(std::size_t Size, TNodePool* Pool, std::uintptr_t Marks);
  static void FreeGlobal(void* Node) noexcept;
  void Grow(std::size_t Class);
  /// Carving goes on in chunk Index.
  void CarveFrom(std::size_t Index) noexcept;
  void FreeChunks() noexcept;
  /// With no node alive, forgets the free lists (a drained queue leaves them a walk through
  /// its freed slots in reverse, each read before it is reused) and carves every size again
  /// from its first chunk. Only the in-line pop restarts: lists whose nodes are freed by the
  /// general path refill faster from the slots freed last, still in cache.
  [[gnu::noinline]] void Restart() noexcept;

  struct TChunk {
    std::unique_ptr<std::byte[]> Memory;
    std::size_t Bytes;
    std::size_t Class;
  };

  std::array<void*, MaxClass + 1> FFree{};  // per slot size in units: first free slot
  std::array<std::size_t, MaxClass + 1> FCarved{};
  // Per slot size: the part of a chunk not carved yet, and the chunk index to look for the
  // next chunk of that size from (FChunks.size() while every chunk has been carved).
  std::array<std::byte*, MaxClass + 1> FCarve{};
  std::array<std::byte*, MaxClass + 1> FCarveEnd{};
  std::array<std::size_t, MaxClass + 1> FNextChunk{};
  std::uint64_t FClasses = 0;  // the sizes that have chunks
  std::vector<TChunk> FChunks;
  std::size_t FLive = 0;
  TGCustomLinkedList* FList;
  bool FReleased = false;
};

}  // namespace kz::detail
