#include "GLists/GLists.h"

namespace kz {

using namespace Runtime;
using namespace GLists;

// ---------------------------------------------------------------------------------------------
// TQOrderedList, TQQueue, TQStack

void TQOrderedList::Assign(TObject* Source) {
  if (auto* Pointers = dynamic_cast<TList*>(Source)) {
    Clear();
    for (std::int32_t I = 0; I < Pointers->GetCount(); ++I) Add(Pointers->GetItem(I));
  } else if (auto* Linked = dynamic_cast<TGCustomLinkedList*>(Source)) {
    Clear();
    std::int32_t Left = Linked->GetCount();
    for (TSQNode* N = Linked->GetHead(); N && Left > 0; N = N->GetNext(), --Left) Add(N->GetItem());
  } else {
    throw EConvertError(SErrorAssigning, {ClassNameOrNil(Source), ClassName()});
  }
}

std::unique_ptr<TQOrderedList> TQOrderedList::Clone() const {
  const auto* Meta = dynamic_cast<const TMeta*>(ClassType());
  if (!Meta) throw EAbstractError(SNoFactory, {ClassName()});
  std::unique_ptr<TQOrderedList> Result = Meta->Create();
  Result->Assign(const_cast<TQOrderedList*>(this));
  return Result;
}

Pointer TQQueue::Top() const {
  if (GetCount() == 0) throw EListError(SListEmpty);
  return GetItem(0);
}

Pointer TQQueue::Pop() {
  const Pointer Result = Top();
  Delete(0);
  return Result;
}

void TQQueue::Push(Pointer Value) { Add(Value); }

Pointer TQStack::Top() const {
  if (GetCount() == 0) throw EListError(SListEmpty);
  return GetItem(GetCount() - 1);
}

Pointer TQStack::Pop() {
  const Pointer Result = Top();
  Delete(GetCount() - 1);
  return Result;
}

// ---------------------------------------------------------------------------------------------
// TQStringQueue, TQStringStack

std::int32_t TQStringQueue::Push(TObject* AnObject) { return AddObject(String(), AnObject); }

std::int32_t TQStringQueue::PushString(String Value) { return Add(std::move(Value)); }

std::int32_t TQStringQueue::PushItem(String Value, TObject* AnObject) { return AddObject(std::move(Value), AnObject); }

std::int32_t TQStringQueue::TopIndex() const {
  if (GetCount() == 0) throw EListError(SListEmpty);
  return FTopIndex;
}

TObject* TQStringQueue::Top() const { return GetObject(TopIndex()); }

String TQStringQueue::TopString() const { return Get(TopIndex()); }

String TQStringQueue::TopItem(TObject*& AnObject) const {
  const std::int32_t I = TopIndex();
  String Result = Get(I);
  AnObject = GetObject(I);
  return Result;
}

TObject* TQStringQueue::Pop() {
  TObject* Result = Top();
  Delete(FTopIndex);
  return Result;
}

String TQStringQueue::PopString() {
  String Result = TopString();
  Delete(FTopIndex);
  return Result;
}

String TQStringQueue::PopItem(TObject*& AnObject) {
  String Result = TopItem(AnObject);
  Delete(FTopIndex);
  return Result;
}

void TQStringQueue::SetSorted(bool Value) {
  if (Value) throw EListError(SCannotSortQueue);
}

void TQStringStack::Changed() {
  FTopIndex = GetCount() - 1;
  inherited::Changed();
}

}  // namespace kz
