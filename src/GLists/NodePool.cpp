#include "GLists/NodePool.h"

#include <new>

#include "Runtime/Errors.h"

namespace kz::detail {

namespace {
// A node from the global heap gets two words in front, so that it keeps the default new
// alignment for node classes that want it; the one next to the node is null.
constexpr std::size_t GlobalHeaderSize = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
}  // namespace

void* TNodePool::AllocateSlow(std::size_t Size, TNodePool* Pool, std::uintptr_t Marks) {
  if (const std::size_t Class = ClassOf(Size); Pool && Class <= TSlab::SmallClasses) {
    return Stamp(Pool->FSlab.Take(Class), Pool, Marks);
  }
  auto* Memory = static_cast<std::byte*>(::operator new(Size + GlobalHeaderSize));
  void** Slot = reinterpret_cast<void**>(Memory + GlobalHeaderSize) - 1;
  *Slot = nullptr;
  return Slot + 1;
}

void TNodePool::FreeGlobal(void* Node) noexcept { ::operator delete(static_cast<std::byte*>(Node) - GlobalHeaderSize); }

void TNodePool::Abandon(void* Node) noexcept {
  if (!Node) return;
  TNodePool* Pool = PoolOf(Word(Node));
  if (!Pool) return FreeGlobal(Node);
  if (Pool->FSlab.Abandon(&Word(Node)) == 0 && Pool->FReleased) delete Pool;
}

void TNodePool::Release() noexcept {
  if (FSlab.Live() == 0)
    delete this;
  else
    FReleased = true;
}

}  // namespace kz::detail
