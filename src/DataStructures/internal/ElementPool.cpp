#include "DataStructures/internal/ElementPool.h"

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
  H->Link = Pool->FFree[H->Class];
  Pool->FFree[H->Class] = H;
  --Pool->FLive;
}

void* TElementPool::Take(std::size_t SlotSize) {
  const std::size_t Class = SlotSize / Granule;
  if (Class >= FFree.size() || !FFree[Class]) Grow(SlotSize, Class);
  THeader* H = FFree[Class];
  FFree[Class] = static_cast<THeader*>(H->Link);
  H->Link = this;
  H->Live = 1;
  ++FLive;
  return H + 1;
}

void TElementPool::Grow(std::size_t SlotSize, std::size_t Class) {
  if (Class >= FFree.size()) {
    FClassSlots.resize(Class + 1, 0);  // first: FFree's size says both are long enough
    FFree.resize(Class + 1, nullptr);
  }
  // Doubling chunks: a few dozen at most, which bounds the scans in Holds and Free.
  const std::size_t Slots = FClassSlots[Class] < FirstChunkSlots ? FirstChunkSlots : FClassSlots[Class];
  FChunks.reserve(FChunks.size() + 1);
  std::unique_ptr<std::byte[]> Memory(new std::byte[Slots * SlotSize]);
  const auto Begin = reinterpret_cast<std::uintptr_t>(Memory.get());
  // Threaded back to front so that slots are handed out in address order.
  THeader* Free = FFree[Class];
  for (std::size_t I = Slots; I-- > 0;) {
    auto* H = reinterpret_cast<THeader*>(Memory.get() + I * SlotSize);
    H->Link = Free;
    H->Live = 0;
    H->Class = static_cast<std::uint32_t>(Class);
    Free = H;
  }
  FChunks.push_back(TChunk{std::move(Memory), Begin, Begin + Slots * SlotSize, SlotSize});
  FFree[Class] = Free;
  FClassSlots[Class] += Slots;
}

bool TElementPool::Holds(const void* Element) const {
  const auto P = reinterpret_cast<std::uintptr_t>(Element) - sizeof(THeader);
  for (const TChunk& C : FChunks)
    if (P >= C.Begin && P < C.End) {
      if ((P - C.Begin) % C.SlotSize != 0) return false;
      const auto* H = reinterpret_cast<const THeader*>(P);
      return H->Live && H->Link == this;
    }
  return false;
}

void TElementPool::Trim() {
  if (FLive != 0) return;
  FChunks.clear();
  FFree.clear();
  FClassSlots.clear();
}

}  // namespace kz::detail
