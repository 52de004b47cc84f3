#include "DataStructures/HeapElements.h"

#include "DataStructures/Heaps.h"
#include "DataStructures/internal/ElementPool.h"

namespace kz {

using namespace Runtime;
using namespace DataStructures;

void* THeapElement::operator new(std::size_t Size) { return detail::TElementPool::Allocate(Size); }
void THeapElement::operator delete(void* Element) noexcept { detail::TElementPool::Free(Element); }
void* TIHeapElement::operator new(std::size_t Size) { return detail::TElementPool::Allocate(Size); }
void TIHeapElement::operator delete(void* Element) noexcept { detail::TElementPool::Free(Element); }

void THeapElement::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<THeapElement*>(Source);
  if (!Other) return inherited::Assign(Source);
  const std::int32_t Was = GetIndex();
  FItem = Other->FItem;
  FIndex = Other->GetIndex();
  if (FOwner) {
    if (FIndex != Was) FOwner->PinIndexes();
    Changed(Was);
  }
}

std::int32_t THeapElement::GetIndex() const {
  if (FOwner) FOwner->SyncIndexes();
  return FIndex;
}

void THeapElement::Changed(std::int32_t Index) { FOwner->ElementChanged(this, Index); }

std::unique_ptr<THeapElement> THeapElement::Clone() const {
  std::unique_ptr<THeapElement> Copy = static_cast<const TMeta*>(ClassType())->Create(FItem);
  Copy->Assign(const_cast<THeapElement*>(this));
  return Copy;
}

void THeapElement::Clear() { SetItem(nullptr); }

void TIntHeapElement::Assign(TPersistent* Source) {
  if (auto* Other = dynamic_cast<TIntHeapElement*>(Source)) FPriority = Other->FPriority;
  inherited::Assign(Source);
}

void TIntHeapElement::Clear() { Clear(DefaultPriority); }

void TIntHeapElement::Clear(std::int32_t Priority) {
  inherited::Clear();
  SetPriority(Priority);
}

void TFloatHeapElement::Assign(TPersistent* Source) {
  if (auto* Other = dynamic_cast<TFloatHeapElement*>(Source)) FPriority = Other->FPriority;
  inherited::Assign(Source);
}

void TFloatHeapElement::Clear() { Clear(DefaultPriority); }

void TFloatHeapElement::Clear(float Priority) {
  inherited::Clear();
  SetPriority(Priority);
}

void TIHeapElement::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TIHeapElement*>(Source);
  if (!Other) return inherited::Assign(Source);
  FItem = Other->FItem;
  FIndex = Other->FIndex;
}

std::unique_ptr<TIHeapElement> TIHeapElement::Clone() const {
  std::unique_ptr<TIHeapElement> Copy = static_cast<const TMeta*>(ClassType())->Create(FItem);
  Copy->Assign(const_cast<TIHeapElement*>(this));
  return Copy;
}

void TIHeapElement::Clear() { FItem.reset(); }

}  // namespace kz
