#include "DataStructures/ObjectContainers.h"

#include "DataStructures/internal/HeapCore.h"

namespace kz {

using namespace Runtime;
using namespace DataStructures;

void TKZObjectOrderedList::Assign(TObject* Source) {
  auto* Other = dynamic_cast<TKZObjectOrderedList*>(Source);
  if (!Other) throw EConvertError(SAssignError, {ClassNameOrNil(Source), ClassName()});
  Clear();
  for (TObject* Entry : *Other) Add(Entry);
}

std::unique_ptr<TKZObjectOrderedList> TKZObjectOrderedList::Clone() const {
  std::unique_ptr<TKZObjectOrderedList> Copy = static_cast<const TMeta*>(ClassType())->Create();
  Copy->Assign(const_cast<TKZObjectOrderedList*>(this));
  return Copy;
}

void TKZObjectOrderedList::CheckNotEmpty() const {
  if (IsEmpty()) throw EListError(SListEmpty);
}

TObject* TKZObjectQueue::Pop() {
  CheckNotEmpty();
  TObject* Result = GetItem(0);
  Delete(0);
  return Result;
}

void TKZObjectQueue::Push(TObject* Value) {
  Add(Value);
}

TObject* TKZObjectQueue::Top() const {
  CheckNotEmpty();
  return GetItem(0);
}

TObject* TKZObjectStack::Pop() {
  CheckNotEmpty();
  TObject* Result = Last();
  Delete(GetCount() - 1);
  return Result;
}

void TKZObjectStack::Push(TObject* Value) {
  Add(Value);
}

TObject* TKZObjectStack::Top() const {
  CheckNotEmpty();
  return Last();
}

}  // namespace kz
