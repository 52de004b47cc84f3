// Fixed-size slots for the library's own stores of small objects (list nodes, heap elements):
// carved in address order from chunks, recycled through one free list per size class, so
// that a steady add and remove allocates nothing and an owner's objects lie close together.
// For the library's stores (a list's in-line push and pop take and give in line), not for
// users.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
// A free slot stays poisoned until it is handed out again, so reading a freed object is
// still reported under the address sanitizer.
#define KZ_SLAB_POISON(P, N) ASAN_POISON_MEMORY_REGION(P, N)
#define KZ_SLAB_UNPOISON(P, N) ASAN_UNPOISON_MEMORY_REGION(P, N)
#else
#define KZ_SLAB_POISON(P, N) ((void)(P), (void)(N))
#define KZ_SLAB_UNPOISON(P, N) ((void)(P), (void)(N))
#endif

namespace kz::detail {

/// Slots of Class * Granule bytes (a class is a slot size in granules), at least one word.
/// A slot's first word is its owner's while the slot is handed out and links the free list
/// while it is free, so the owner can tell its live slots among those carved by that word
/// alone; slots not carved yet are never read. The rest of a free slot, and all of a slot
/// not carved yet, is poisoned under the address sanitizer. Each class's chunks double up to
/// a cap and stay until Trim or destruction; a chunk's memory has the default new alignment.
/// Take raises std::bad_alloc.
class TSlab {
 public:
  static constexpr std::size_t Granule = 8;
  /// The classes whose take and give can run in the caller's code (slots up to 256 bytes).
  static constexpr std::size_t SmallClasses = 32;

  TSlab(std::size_t FirstChunkSlots, std::size_t MaxChunkSlots) noexcept
      : FFirstChunkSlots(FirstChunkSlots), FMaxChunkSlots(MaxChunkSlots) {}
  TSlab(const TSlab&) = delete;
  TSlab& operator=(const TSlab&) = delete;
  ~TSlab() { FreeChunks(); }

  /// A slot of a small class from its free list or its chunk, or null when the class needs
  /// another chunk (then Take).
  void* TryTake(std::size_t Class) noexcept { return TakeFrom(FSmall[Class], Class); }
  /// A slot of any class.
  void* Take(std::size_t Class) {
    if (Class <= SmallClasses)
      if (void* Slot = TryTake(Class)) return Slot;
    return TakeSlow(Class);
  }
  /// Gives back a slot Take handed out for Class; answers how many slots are still out.
  std::size_t Give(void* Slot, std::size_t Class) noexcept {
    KZ_SLAB_POISON(static_cast<void**>(Slot) + 1, Class * Granule - sizeof(void*));
    TClass& C = ClassOf(Class);
    *static_cast<void**>(Slot) = C.Free;
    C.Free = Slot;
    return --FLive;
  }
  /// Gives back a slot of unknown class: it is not handed out again before Restart.
  std::size_t Abandon(void* Slot) noexcept {
    *static_cast<void**>(Slot) = nullptr;
    return --FLive;
  }
  /// How many slots are out.
  std::size_t Live() const noexcept { return FLive; }
  /// With no slot out: forgets the free lists (a drained queue leaves them a walk through its
  /// freed slots in reverse, each read before it is reused) and carves every class again from
  /// its first chunk.
  void Restart() noexcept;
  /// Returns the chunks when no slot is out.
  void Trim() noexcept;
  /// Whether P is where a slot that has been carved starts; reads no slot.
  [[nodiscard]] bool IsCarved(const void* P) const noexcept;
  /// Calls Fn(Slot) for every slot carved so far (chunk by chunk, in each in address order)
  /// until Fn answers false. Fn may give back the slot it is given.
  template <class TFn>
  void ForEachCarved(TFn Fn) const {
    for (const TChunk& C : FChunks) {
      const std::size_t SlotSize = C.Class * Granule;
      for (std::byte *P = C.Memory.get(), *End = CarvedEnd(C); P < End; P += SlotSize)
        if (!Fn(static_cast<void*>(P))) return;
    }
  }

 private:
  struct TChunk {
    std::unique_ptr<std::byte[]> Memory;
    std::size_t Bytes;
    std::size_t Class;
    std::byte* Carved;  // every slot below has been carved, up to when the class last left it
  };
  // Free slots, the part of a chunk not carved yet, the index after the chunk being carved
  // (FChunks.size() after a restart), and the slots made.
  struct TClass {
    void* Free = nullptr;
    std::byte* Carve = nullptr;
    std::byte* CarveEnd = nullptr;
    std::size_t NextChunk = 0;
    std::size_t Slots = 0;
  };

  const TClass& ClassOf(std::size_t Class) const noexcept {
    return Class <= SmallClasses ? FSmall[Class] : FLarge[Class - SmallClasses - 1];
  }
  TClass& ClassOf(std::size_t Class) noexcept { return const_cast<TClass&>(std::as_const(*this).ClassOf(Class)); }
  void* TakeFrom(TClass& C, std::size_t Class) noexcept {
    void** Slot = static_cast<void**>(C.Free);
    if (Slot) {
      C.Free = *Slot;
      // The next take reads the next free slot, which a drained store left cold.
      __builtin_prefetch(*Slot, 1);
    } else if (C.Carve != C.CarveEnd) {
      // Carving reads nothing from the slot, so a refill writes memory in order without
      // waiting for it.
      Slot = reinterpret_cast<void**>(C.Carve);
      C.Carve += Class * Granule;
    } else {
      return nullptr;
    }
    ++FLive;
    KZ_SLAB_UNPOISON(Slot, Class * Granule);
    return Slot;
  }
  /// The end of the slots of Chunk carved so far.
  std::byte* CarvedEnd(const TChunk& Chunk) const noexcept {
    const TClass& C = ClassOf(Chunk.Class);
    return C.CarveEnd == Chunk.Memory.get() + Chunk.Bytes && C.Carve > Chunk.Carved ? C.Carve : Chunk.Carved;
  }
  /// The class stops carving its chunk: the chunk keeps how far it got.
  void Leave(TClass& C) noexcept;
  void* TakeSlow(std::size_t Class);
  void Grow(TClass& C, std::size_t Class);
  /// Carving of the chunk's class goes on in chunk Index.
  void CarveFrom(std::size_t Index) noexcept;
  void FreeChunks() noexcept;
  /// The classes that have chunks: a bit per small class, and each large one.
  template <class TFn>
  void ForEachClassWithChunks(TFn Fn);

  std::array<TClass, SmallClasses + 1> FSmall{};
  std::vector<TClass> FLarge;  // classes above SmallClasses
  std::uint64_t FSmallWithChunks = 0;
  std::vector<TChunk> FChunks;
  std::size_t FLive = 0;
  std::size_t FFirstChunkSlots;
  std::size_t FMaxChunkSlots;
};

}  // namespace kz::detail
