#include "DataStructures/internal/ElementPool.h"

#include <algorithm>
#include <new>

namespace kz::detail {

namespace {
constexpr std::size_t Granule = 16;  // the default new alignment, kept for every element
constexpr std::size_t FirstChunkSlots = 256;
thread_local TElementPool* CurrentPool = nullptr;
}  // namespace

// Sits just before every element. Live: Link is the owning pool (null for the global heap);
// free: Link is the next free slot of the same class.
struct alignas(Granule) TElementPool::THeader {
  void* Link;
  std::uint32_t Live;
  std::uint32_t Class;  // slot size in granules
};

TElementPool::TScope::TScope(TElementPool& Pool) : FSaved(CurrentPool) { CurrentPool = &Pool; }
TElementPool::TScope::~TScope() { CurrentPool = FSaved; }

namespace {
constexpr std::size_t SlotSizeFor(std::size_t Size) { return (Size + Granule + Granule - 1) / Granule * Granule; }
}  // namespace

void* TElementPool::AllocateHere(std::size_t Size) { return Take(SlotSizeFor(Size)); }

void* TElementPool::Allocate(std::size_t Size) {
  static_assert(sizeof(THeader) == Granule);
  const std::size_t SlotSize = SlotSizeFor(Size);
  if (CurrentPool) return CurrentPool->Take(SlotSize);
  auto* H = static_cast<THeader*>(::operator new(SlotSize));
  H->Link = nullptr;
  H->Live = 1;
  return H + 1;
}

void TElementPool::Free(void* Element) noexcept {
  if (!Element) return;
  THeader* H = static_cast<THeader*>(Element) - 1;
  auto* Pool = static_cast<TElementPool*>(H->Link);
  if (!Pool) {
    ::operator delete(H);
    return;
  }
  H->Live = 0;
  TClass& C = Pool->FClasses[H->Class];
  H->Link = C.Free;
  C.Free = H;
  if (--Pool->FLive == 0) Pool->Restart();
}

void* TElementPool::Take(std::size_t SlotSize) {
  const std::size_t Index = SlotSize / Granule;
  if (Index >= FClasses.size()) FClasses.resize(Index + 1);
  TClass& C = FClasses[Index];
  THeader* H = C.Free;
  if (H) {
    C.Free = static_cast<THeader*>(H->Link);
  } else {
    if (C.Next == C.Limit) Carve(C, SlotSize);
    H = reinterpret_cast<THeader*>(C.Next);
    C.Next += SlotSize;
    H->Class = static_cast<std::uint32_t>(Index);
  }
  H->Link = this;
  H->Live = 1;
  ++FLive;
  return H + 1;
}

void TElementPool::Carve(TClass& C, std::size_t SlotSize) {
  const std::size_t Following = C.Limit ? C.Current + 1 : 0;
  if (Following == C.Chunks.size()) {
    // Doubling chunks: a few dozen at most, which bounds the scans in Holds.
    const std::size_t Slots = C.Slots < FirstChunkSlots ? FirstChunkSlots : C.Slots;
    FChunks.reserve(FChunks.size() + 1);
    C.Chunks.reserve(C.Chunks.size() + 1);
    std::unique_ptr<std::byte[]> Memory(new std::byte[Slots * SlotSize]);
    const auto Begin = reinterpret_cast<std::uintptr_t>(Memory.get());
    FChunks.push_back(TChunk{std::move(Memory), Begin, Begin + Slots * SlotSize, SlotSize, Begin});
    C.Chunks.push_back(FChunks.size() - 1);
    C.Slots += Slots;
  }
  if (C.Limit) FChunks[C.Chunks[C.Current]].Carved = C.Limit;
  C.Current = Following;
  const TChunk& Chunk = FChunks[C.Chunks[Following]];
  C.Next = Chunk.Begin;
  C.Limit = Chunk.End;
}

void TElementPool::Restart() {
  for (TClass& C : FClasses) {
    C.Free = nullptr;
    if (!C.Limit) continue;
    TChunk& Chunk = FChunks[C.Chunks[C.Current]];
    Chunk.Carved = std::max(Chunk.Carved, C.Next);
    const TChunk& First = FChunks[C.Chunks[0]];
    C.Current = 0;
    C.Next = First.Begin;
    C.Limit = First.End;
  }
}

bool TElementPool::Holds(const void* Element) const {
  const auto P = reinterpret_cast<std::uintptr_t>(Element) - sizeof(THeader);
  for (const TChunk& C : FChunks)
    if (P >= C.Begin && P < C.End) {
      if ((P - C.Begin) % C.SlotSize != 0) return false;
      // Slots never handed out hold no header yet.
      const TClass& Class = FClasses[C.SlotSize / Granule];
      const std::uintptr_t Carved = Class.Limit == C.End ? std::max(C.Carved, Class.Next) : C.Carved;
      if (P >= Carved) return false;
      const auto* H = reinterpret_cast<const THeader*>(P);
      return H->Live && H->Link == this;
    }
  return false;
}

void TElementPool::Trim() {
  if (FLive != 0) return;
  FChunks.clear();
  FClasses.clear();
}

}  // namespace kz::detail
