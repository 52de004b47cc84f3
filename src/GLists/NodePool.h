// The storage of the nodes a list makes for itself: slots carved from chunks, recycled through
// one free list per slot size, so that a steady push and pop allocates nothing and the nodes
// of one list lie close together. For the library's lists (their in-line push and pop), not
// for users.
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

namespace kz::detail {

/// Every node is preceded by one word: its pool while it lives (null for the global heap),
/// the next free slot of its size while it is free.
class TNodePool {
 public:
  TNodePool() = default;
  TNodePool(const TNodePool&) = delete;
  TNodePool& operator=(const TNodePool&) = delete;

  /// The list lets go of its pool: the pool goes now, or with the last node it still holds
  /// (a node the list handed out and someone else frees later).
  void Release() noexcept;
  /// Returns the chunks when no node of the pool is alive.
  void Trim() noexcept;
  /// Calls Fn(Node) for every node alive in the pool, in address order, until Fn answers
  /// false. Fn may free the node it is given.
  template <class TFn>
  void ForEachLive(TFn Fn) {
    for (const TChunk& C : FChunks) {
      const std::size_t SlotSize = C.Class * Unit;
      for (std::byte* P = C.Memory.get(), *End = P + C.Bytes; P != End; P += SlotSize)
        if (*reinterpret_cast<void**>(P) == this && !Fn(reinterpret_cast<void**>(P) + 1)) return;
    }
  }
  /// The pool a node lives in (null for the global heap). Node must come from Allocate.
  static const TNodePool* PoolOf(const void* Node) noexcept { return static_cast<const TNodePool* const*>(Node)[-1]; }

  /// Node memory of Size bytes: from Pool when there is one and the size fits a slot, else
  /// from the global heap. Raises EOutOfMemory. A pool slot's first word is null until the
  /// node's constructor writes it, so that a walk of the live slots can tell a node not yet
  /// made.
  static void* Allocate(std::size_t Size, TNodePool* Pool) {
    const std::size_t Class = (Size + HeaderSize + Unit - 1) / Unit;
    if (Pool && Class <= MaxClass)
      if (void** Slot = static_cast<void**>(Pool->FFree[Class])) {
        Pool->FFree[Class] = *Slot;
        *Slot = Pool;
        ++Pool->FLive;
        KZ_NODE_UNPOISON(Slot + 1, Class * Unit - HeaderSize);
        Slot[1] = nullptr;
        return Slot + 1;
      }
    return AllocateSlow(Size, Pool);
  }
  /// Returns memory from Allocate, wherever it came from. Size is the size asked for.
  static void Free(void* Node, std::size_t Size) noexcept {
    if (!Node) return;
    void** Slot = static_cast<void**>(Node) - 1;
    auto* Pool = static_cast<TNodePool*>(*Slot);
    if (!Pool) return FreeGlobal(Node);
    const std::size_t Class = (Size + HeaderSize + Unit - 1) / Unit;
    KZ_NODE_POISON(Node, Class * Unit - HeaderSize);
    *Slot = Pool->FFree[Class];
    Pool->FFree[Class] = Slot;
    if (--Pool->FLive == 0 && Pool->FReleased) delete Pool;
  }
  /// Free of a node known to live in this pool while its list still holds the pool.
  void FreeHeld(void* Node, std::size_t Size) noexcept {
    void** Slot = static_cast<void**>(Node) - 1;
    const std::size_t Class = (Size + HeaderSize + Unit - 1) / Unit;
    KZ_NODE_POISON(Node, Class * Unit - HeaderSize);
    *Slot = FFree[Class];
    FFree[Class] = Slot;
    --FLive;
  }
  /// Returns memory from Allocate whose size is unknown (a constructor that raised): a pool
  /// slot is not reused but goes with its chunk.
  static void Abandon(void* Node) noexcept;

 private:
  static constexpr std::size_t HeaderSize = sizeof(void*);
  static constexpr std::size_t Unit = 8;
  static constexpr std::size_t MaxClass = 32;  // slots up to 256 bytes

  static void* AllocateSlow(std::size_t Size, TNodePool* Pool);
  static void FreeGlobal(void* Node) noexcept;
  void Grow(std::size_t Class);
  void FreeChunks() noexcept;

  struct TChunk {
    std::unique_ptr<std::byte[]> Memory;
    std::size_t Bytes;
    std::size_t Class;
  };

  std::array<void*, MaxClass + 1> FFree{};  // per slot size in units: first free slot
  std::array<std::size_t, MaxClass + 1> FCarved{};
  std::vector<TChunk> FChunks;
  std::size_t FLive = 0;
  bool FReleased = false;
};

}  // namespace kz::detail
