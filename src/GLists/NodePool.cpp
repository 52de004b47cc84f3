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

void* TNodePool::AllocateSlow(std::size_t Size, TNodePool* Pool) {
  const std::size_t Class = (Size + HeaderSize + Unit - 1) / Unit;
  if (Pool && Class <= MaxClass) {
    Pool->Grow(Class);
    return Allocate(Size, Pool);
  }
  std::byte* Memory;
  try {
    Memory = static_cast<std::byte*>(::operator new(Size + GlobalHeaderSize));
  } catch (const std::bad_alloc&) {
    throw EOutOfMemory(Runtime::SOutOfMemory);
  }
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
}

void TNodePool::Grow(std::size_t Class) {
  const std::size_t SlotSize = Class * Unit;
  // Doubling chunks up to a cap: few allocations while a list grows, bounded waste after.
  std::size_t Slots = FCarved[Class] < FirstChunkSlots ? FirstChunkSlots : FCarved[Class];
  if (Slots > MaxChunkSlots) Slots = MaxChunkSlots;
  try {
    FChunks.reserve(FChunks.size() + 1);
    FChunks.push_back(TChunk{std::unique_ptr<std::byte[]>(new std::byte[Slots * SlotSize]), Slots * SlotSize, Class});
  } catch (const std::bad_alloc&) {
    throw EOutOfMemory(Runtime::SOutOfMemory);
  }
  std::byte* Memory = FChunks.back().Memory.get();
  // Threaded back to front so that slots are handed out in address order.
  void* Free = FFree[Class];
  for (std::size_t I = Slots; I-- > 0;) {
    auto** Slot = reinterpret_cast<void**>(Memory + I * SlotSize);
    *Slot = Free;
    KZ_NODE_POISON(Slot + 1, SlotSize - HeaderSize);
    Free = Slot;
  }
  FFree[Class] = Free;
  FCarved[Class] += Slots;
}

}  // namespace kz::detail
