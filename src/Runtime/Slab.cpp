#include "Runtime/Slab.h"

namespace kz::detail {

template <class TFn>
void TSlab::ForEachClassWithChunks(TFn Fn) {
  for (std::uint64_t Left = FSmallWithChunks; Left; Left &= Left - 1) Fn(FSmall[__builtin_ctzll(Left)]);
  for (TClass& C : FLarge)
    if (C.Slots) Fn(C);
}

void* TSlab::TakeSlow(std::size_t Class) {
  if (Class > SmallClasses && Class - SmallClasses > FLarge.size()) FLarge.resize(Class - SmallClasses);
  TClass& C = ClassOf(Class);
  if (void* Slot = TakeFrom(C, Class)) return Slot;
  // The chunks a restart left to carve again come before new ones.
  std::size_t I = C.NextChunk;
  while (I < FChunks.size() && FChunks[I].Class != Class) ++I;
  if (I < FChunks.size())
    CarveFrom(I);
  else
    Grow(C, Class);
  return TakeFrom(C, Class);
}

void TSlab::Grow(TClass& C, std::size_t Class) {
  const std::size_t SlotSize = Class * Granule;
  // Doubling chunks up to a cap: few allocations while a store grows, bounded waste after.
  std::size_t Slots = C.Slots < FFirstChunkSlots ? FFirstChunkSlots : C.Slots;
  if (Slots > FMaxChunkSlots) Slots = FMaxChunkSlots;
  FChunks.reserve(FChunks.size() + 1);
  std::unique_ptr<std::byte[]> Memory(new std::byte[Slots * SlotSize]);
  KZ_SLAB_POISON(Memory.get(), Slots * SlotSize);
  std::byte* Begin = Memory.get();
  FChunks.push_back(TChunk{std::move(Memory), Slots * SlotSize, Class, Begin});
  CarveFrom(FChunks.size() - 1);
  if (Class <= SmallClasses) FSmallWithChunks |= std::uint64_t{1} << Class;
  C.Slots += Slots;
}

void TSlab::Leave(TClass& C) noexcept {
  if (!C.CarveEnd) return;
  TChunk& Chunk = FChunks[C.NextChunk - 1];
  if (C.Carve > Chunk.Carved) Chunk.Carved = C.Carve;
}

void TSlab::CarveFrom(std::size_t Index) noexcept {
  const TChunk& Chunk = FChunks[Index];
  TClass& C = ClassOf(Chunk.Class);
  Leave(C);
  C.Carve = Chunk.Memory.get();
  C.CarveEnd = Chunk.Memory.get() + Chunk.Bytes;
  C.NextChunk = Index + 1;
}

void TSlab::Restart() noexcept {
  std::size_t Waiting = 0;
  ForEachClassWithChunks([&](TClass& C) {
    Leave(C);
    C.Free = nullptr;
    C.Carve = C.CarveEnd = nullptr;
    C.NextChunk = FChunks.size();
    ++Waiting;
  });
  // Each class starts again at its first chunk; what those chunks hold is free or abandoned.
  for (std::size_t I = 0; Waiting && I < FChunks.size(); ++I) {
    if (!ClassOf(FChunks[I].Class).CarveEnd) {
      CarveFrom(I);
      --Waiting;
    }
  }
}

void TSlab::FreeChunks() noexcept {
  for (TChunk& C : FChunks) KZ_SLAB_UNPOISON(C.Memory.get(), C.Bytes);
  FChunks.clear();
}

void TSlab::Trim() noexcept {
  if (FLive != 0) return;
  FreeChunks();
  FSmall.fill(TClass{});
  FLarge.clear();
  FSmallWithChunks = 0;
}

bool TSlab::IsCarved(const void* P) const noexcept {
  const auto A = reinterpret_cast<std::uintptr_t>(P);
  for (const TChunk& C : FChunks)
    if (const auto Begin = reinterpret_cast<std::uintptr_t>(C.Memory.get()); A >= Begin && A - Begin < C.Bytes)
      return (A - Begin) % (C.Class * Granule) == 0 && A < reinterpret_cast<std::uintptr_t>(CarvedEnd(C));
  return false;
}

}  // namespace kz::detail
