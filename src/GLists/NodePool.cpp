#include "GLists/NodePool.h"

#include <new>

#include "Runtime/Errors.h"

namespace kz::detail {

namespace {
// A node from the global heap gets two words in front, so that it keeps the default new
// alignment for node classes that want it; the one next to the node is null.
constexpr std::size_t GlobalHeaderSize = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
constexpr std::size_t FirstChunkSlots = 64;
constexpr std::size_t MaxChunkSlots = 64 * 1024;
}  // namespace

void* TNodePool::AllocateSlow(std::size_t Size, TNodePool* Pool, std::uintptr_t Marks) {
  const std::size_t Class = (Size + HeaderSize + Unit - 1) / Unit;
  if (Pool && Class <= MaxClass) {
    // The chunks a restart left to carve again come before new ones.
    std::size_t I = Pool->FNextChunk[Class];
    while (I < Pool->FChunks.size() && Pool->FChunks[I].Class != Class) ++I;
    if (I < Pool->FChunks.size())
      Pool->CarveFrom(I);
    else
      Pool->Grow(Class);
    return Allocate(Size, Pool, Marks);
  }
  auto* Memory = static_cast<std::byte*>(::operator new(Size + GlobalHeaderSize));
  void** Slot = reinterpret_cast<void**>(Memory + GlobalHeaderSize) - 1;
  *Slot = nullptr;
  return Slot + 1;
}

void TNodePool::FreeGlobal(void* Node) noexcept { ::operator delete(static_cast<std::byte*>(Node) - GlobalHeaderSize); }

void TNodePool::Abandon(void* Node) noexcept {
  if (!Node) return;
  void** Slot = static_cast<void**>(Node) - 1;
  TNodePool* Pool = PoolOf(Word(Node));
  if (!Pool) return FreeGlobal(Node);
  *Slot = nullptr;
  if (--Pool->FLive == 0 && Pool->FReleased) delete Pool;
}

void TNodePool::Restart() noexcept {
  std::uint64_t Waiting = FClasses;
  for (std::uint64_t Left = Waiting; Left; Left &= Left - 1) {
    const int Class = __builtin_ctzll(Left);
    FFree[Class] = nullptr;
    FCarve[Class] = FCarveEnd[Class] = nullptr;
    FNextChunk[Class] = FChunks.size();
  }
  // Each size starts again at its first chunk; what those chunks hold is free or abandoned.
  for (std::size_t I = 0; Waiting && I < FChunks.size(); ++I)
    if (const std::uint64_t Bit = std::uint64_t{1} << FChunks[I].Class; Waiting & Bit) {
      Waiting &= ~Bit;
      CarveFrom(I);
    }
}

void TNodePool::CarveFrom(std::size_t Index) noexcept {
  const TChunk& C = FChunks[Index];
  FCarve[C.Class] = C.Memory.get();
  FCarveEnd[C.Class] = C.Memory.get() + C.Bytes;
  FNextChunk[C.Class] = Index + 1;
}

void TNodePool::Release() noexcept {
  if (FLive == 0)
    delete this;
  else
    FReleased = true;
}

void TNodePool::FreeChunks() noexcept {
  for (TChunk& C : FChunks) KZ_NODE_UNPOISON(C.Memory.get(), C.Bytes);
  FChunks.clear();
}

void TNodePool::Trim() noexcept {
  if (FLive != 0) return;
  FreeChunks();
  FFree.fill(nullptr);
  FCarved.fill(0);
  FCarve.fill(nullptr);
  FCarveEnd.fill(nullptr);
  FNextChunk.fill(0);
  FClasses = 0;
}

void TNodePool::Grow(std::size_t Class) {
  const std::size_t SlotSize = Class * Unit;
  // Doubling chunks up to a cap: few allocations while a list grows, bounded waste after.
  std::size_t Slots = FCarved[Class] < FirstChunkSlots ? FirstChunkSlots : FCarved[Class];
  if (Slots > MaxChunkSlots) Slots = MaxChunkSlots;
  FChunks.reserve(FChunks.size() + 1);
  FChunks.push_back(TChunk{std::unique_ptr<std::byte[]>(new std::byte[Slots * SlotSize]), Slots * SlotSize, Class});
  std::byte* Memory = FChunks.back().Memory.get();
  // A slot's word is a live node's only mark, so the words of slots not carved yet must not
  // hold one by chance.
  for (std::size_t I = 0; I < Slots; ++I) {
    auto** Slot = reinterpret_cast<void**>(Memory + I * SlotSize);
    *Slot = nullptr;
    KZ_NODE_POISON(Slot + 1, SlotSize - HeaderSize);
  }
  CarveFrom(FChunks.size() - 1);
  FClasses |= std::uint64_t{1} << Class;
  FCarved[Class] += Slots;
}

}  // namespace kz::detail
