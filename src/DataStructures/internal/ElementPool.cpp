#include "DataStructures/internal/ElementPool.h"

#include <new>

namespace kz::detail {

namespace {
constexpr std::size_t Granule = 16;  // the default new alignment, kept for every element
thread_local TElementPool* CurrentPool = nullptr;

// Sits just before every element. Link is the owning pool while the element lives (null for
// the global heap), the slab's free link while its slot is free, so a live element of a pool
// is a carved slot whose Link is that pool.
struct alignas(Granule) THeader {
  void* Link;
  std::size_t Class;  // the slab's class of the slot
};
static_assert(sizeof(THeader) == Granule);

constexpr std::size_t SlotSizeFor(std::size_t Size) { return (Size + Granule + Granule - 1) / Granule * Granule; }
}  // namespace

TElementPool::TScope::TScope(TElementPool& Pool) : FSaved(CurrentPool) { CurrentPool = &Pool; }
TElementPool::TScope::~TScope() { CurrentPool = FSaved; }

void* TElementPool::AllocateHere(std::size_t Size) {
  const std::size_t Class = SlotSizeFor(Size) / TSlab::Granule;
  auto* H = static_cast<THeader*>(FSlab.Take(Class));
  H->Link = this;
  H->Class = Class;
  return H + 1;
}

void* TElementPool::Allocate(std::size_t Size) {
  if (CurrentPool) return CurrentPool->AllocateHere(Size);
  auto* H = static_cast<THeader*>(::operator new(SlotSizeFor(Size)));
  H->Link = nullptr;
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
  if (Pool->FSlab.Give(H, H->Class) == 0) Pool->FSlab.Restart();
}

bool TElementPool::Holds(const void* Element) const {
  const auto* H = reinterpret_cast<const THeader*>(reinterpret_cast<std::uintptr_t>(Element) - sizeof(THeader));
  // A carved slot's first word is never poisoned, whether the slot is live or free.
  return FSlab.IsCarved(H) && H->Link == this;
}

}  // namespace kz::detail
