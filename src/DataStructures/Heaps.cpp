#include "DataStructures/Heaps.h"

#include "DataStructures/internal/HeapCore.h"

namespace kz {

using namespace Runtime;
using namespace DataStructures;
using detail::PreOrderFind;
using detail::SiftDown;
using detail::SiftUp;
using detail::TakeOut;

namespace {

// Object heaps judge by a comparison result: Before means "the first belongs nearer the
// root", After the reverse; both are strict.
bool Before(THeapOrder Order, std::int32_t C) { return Order == hpIncreasing ? C < 0 : C > 0; }
bool After(THeapOrder Order, std::int32_t C) { return Order == hpIncreasing ? C > 0 : C < 0; }

template <class P>
bool Before(THeapOrder Order, P A, P B) {
  return Order == hpIncreasing ? A < B : A > B;
}

// The numeric heaps' rules, the same for both priority types.
template <class TElem>
struct TNumeric {
  using TPrio = decltype(std::declval<TElem>().GetPriority());
  static TPrio Prio(const THeapElement* E) { return static_cast<const TElem*>(E)->GetPriority(); }

  static THeapElement* PushUp(std::vector<THeapElement*>& H, THeapOrder Order, std::int32_t I) {
    // Stops when the parent is not after the child, as written (<= / >=).
    if (Order == hpIncreasing)
      return SiftUp(H, I, [](const THeapElement* P, const THeapElement* C) { return !(Prio(P) <= Prio(C)); });
    return SiftUp(H, I, [](const THeapElement* P, const THeapElement* C) { return !(Prio(P) >= Prio(C)); });
  }

  static THeapElement* PushDown(std::vector<THeapElement*>& H, THeapOrder Order, std::int32_t I) {
    // The right child only when strictly before the left one; a swap only when strictly before.
    if (Order == hpIncreasing) {
      auto Lt = [](const THeapElement* A, const THeapElement* B) { return Prio(A) < Prio(B); };
      return SiftDown(H, I, Lt, Lt);
    }
    auto Gt = [](const THeapElement* A, const THeapElement* B) { return Prio(A) > Prio(B); };
    return SiftDown(H, I, Gt, Gt);
  }

  static std::int32_t IndexOf(const std::vector<THeapElement*>& H, THeapOrder Order, TObject* Item, TPrio Priority) {
    auto Visit = [&](const THeapElement* E) {
      if (E->GetItem() == Item && Prio(E) == Priority) return 1;
      return Before(Order, Prio(E), Priority) ? 0 : -1;
    };
    return PreOrderFind(H, 0, Visit);
  }

  static std::int32_t IndexOf(const std::vector<THeapElement*>& H, THeapOrder Order, TPrio Priority) {
    auto Visit = [&](const THeapElement* E) {
      if (Prio(E) == Priority) return 1;
      return Before(Order, Prio(E), Priority) ? 0 : -1;
    };
    return PreOrderFind(H, 0, Visit);
  }

  // Step 6 of Delete: the tests as written, under which PushUp finds nothing to swap.
  static bool InteriorPushUp(const std::vector<THeapElement*>& H, THeapOrder Order, std::int32_t I) {
    const TPrio Moved = Prio(H[static_cast<std::size_t>(I)]);
    const TPrio Parent = Prio(H[static_cast<std::size_t>((I - 1) / 2)]);
    return Order == hpIncreasing ? Moved > Parent : Moved < Parent;
  }

  // ModifyPriority without a new priority: the reverse tests, kept as they are.
  static bool ReverseTestPushUp(const std::vector<THeapElement*>& H, THeapOrder Order, std::int32_t I) {
    if (I <= 0) return false;
    const TPrio E = Prio(H[static_cast<std::size_t>(I)]);
    const TPrio Parent = Prio(H[static_cast<std::size_t>((I - 1) / 2)]);
    return Order == hpIncreasing ? E >= Parent : E <= Parent;
  }

  static bool StrictlyBeforeParent(const std::vector<THeapElement*>& H, THeapOrder Order, std::int32_t I) {
    return I > 0 && Before(Order, Prio(H[static_cast<std::size_t>(I)]), Prio(H[static_cast<std::size_t>((I - 1) / 2)]));
  }

  static void CheckClass(const TMetaClass* AClass) {
    if (!AClass) RaiseNullAccess(u"heap element class");
    if (!AClass->InheritsFrom(&TElem::ClassInfo())) throw EInvalidCast(SInvalidCast);
  }
};

using TIntOps = TNumeric<TIntHeapElement>;
using TFloatOps = TNumeric<TFloatHeapElement>;

[[noreturn]] void NotInHeap() { throw EInvalidOperation(SElementNotInHeap); }

}  // namespace

// ---- TCustomHeap ----

TCustomHeap::TCustomHeap() : FElementClass(&THeapElement::ClassInfo()) {}

TCustomHeap::TCustomHeap(THeapElementClass ElementClass) : FElementClass(ElementClass) {
  if (!ElementClass) RaiseNullAccess(u"heap element class");
}

TCustomHeap::~TCustomHeap() {
  for (THeapElement* E : FHeap) delete E;
}

void TCustomHeap::CheckIndex(std::int32_t Index) const {
  if (Index < 0 || Index >= static_cast<std::int32_t>(FHeap.size())) throw EListError(SListIndexError, {Index});
}

std::int32_t TCustomHeap::CheckElement(const THeapElement* Element) const {
  if (!Element || !FLive.count(Element)) NotInHeap();
  return Element->GetIndex();
}


void TCustomHeap::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TCustomHeap*>(Source);
  if (!Other) return inherited::Assign(Source);
  if (Other == this) {
    Clear();
    return;
  }
  if (const TMetaClass* Required = RequiredElementClass())
    for (const THeapElement* E : Other->FHeap)
      if (!E->InheritsFrom(Required)) throw EInvalidCast(SInvalidCast);
  std::vector<std::unique_ptr<THeapElement>> Copies;
  Copies.reserve(Other->FHeap.size());
  for (const THeapElement* E : Other->FHeap) Copies.push_back(E->Clone());
  std::unordered_set<const void*> Live(Other->FHeap.size());
  for (const auto& E : Copies) Live.insert(E.get());
  std::vector<THeapElement*> Heap;
  Heap.reserve(Copies.size());
  Clear();
  FOrder = Other->FOrder;
  for (auto& E : Copies) Heap.push_back(E.release());
  FHeap.swap(Heap);
  FLive.swap(Live);
}

TObject* TCustomHeap::GetItem(std::int32_t Index) const { return GetElement(Index)->GetItem(); }

THeapElement* TCustomHeap::GetElement(std::int32_t Index) const {
  CheckIndex(Index);
  return FHeap[static_cast<std::size_t>(Index)];
}

void TCustomHeap::SetOrder(THeapOrder Value) {
  if (Value == FOrder) return;
  FOrder = Value;
  if (FHeap.size() >= 2) PushUp(static_cast<std::int32_t>(FHeap.size()) - 1);
}

THeapElement* TCustomHeap::Add(TObject* Item) { return Insert(FElementClass->Create(Item)); }

THeapElement* TCustomHeap::Insert(std::unique_ptr<THeapElement> Element) {
  THeapElement* E = Element.get();
  detail::THeapAccess::SetIndex(E, static_cast<std::int32_t>(FHeap.size()));
  FHeap.push_back(E);
  try {
    FLive.insert(E);
  } catch (...) {
    FHeap.pop_back();
    throw;
  }
  Element.release();
  try {
    if (FHeap.size() > 1) PushUp(static_cast<std::int32_t>(FHeap.size()) - 1);
  } catch (...) {
    // The sift swaps whole steps, so the element is somewhere on its path with a true Index.
    delete TakeOut(FHeap, E->GetIndex());
    FLive.erase(E);
    throw;
  }
  return E;
}

void TCustomHeap::Clear() {
  std::vector<THeapElement*> Heap;
  Heap.swap(FHeap);
  FLive.clear();
  for (THeapElement* E : Heap) delete E;
}

TObject* TCustomHeap::Remove(std::int32_t Index) {
  CheckIndex(Index);
  THeapElement* Removed = TakeOut(FHeap, Index);
  TObject* Result = Removed->GetItem();
  FLive.erase(Removed);
  delete Removed;
  if (Index == 0 && FHeap.size() > 1) PushDown(0);
  return Result;
}

// ---- THeap ----

void THeap::Assign(TPersistent* Source) {
  inherited::Assign(Source);
  if (auto* Other = dynamic_cast<THeap*>(Source); Other && Other != this) FCompare = Other->FCompare;
}

void THeap::CheckCompare() const {
  if (!FCompare) RaiseNullAccess(u"heap comparison");
}

std::int32_t THeap::Compare(TObject* A, TObject* B) const {
  CheckCompare();
  return FCompare(A, B);
}

THeapElement* THeap::PushUp(std::int32_t Index) {
  CheckIndex(Index);
  return SiftUp(FHeap, Index, [this](const THeapElement* P, const THeapElement* C) {
    return After(FOrder, Compare(P->GetItem(), C->GetItem()));
  });
}

THeapElement* THeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  return SiftDown(
      FHeap, Index,
      [this](const THeapElement* R, const THeapElement* L) { return !After(FOrder, Compare(R->GetItem(), L->GetItem())); },
      [this](const THeapElement* K, const THeapElement* I) { return Before(FOrder, Compare(K->GetItem(), I->GetItem())); });
}

std::int32_t THeap::IndexOf(TObject* Item) const {
  auto Visit = [&](const THeapElement* E) {
    if (After(FOrder, Compare(E->GetItem(), Item))) return -1;
    return E->GetItem() == Item ? 1 : 0;
  };
  return PreOrderFind(FHeap, 0, Visit);
}

TObject* THeap::Delete(std::int32_t Index) {
  CheckIndex(Index);
  const std::int32_t Count = HeapCount();
  if (Index != Count - 1 && Count >= 3) CheckCompare();  // refuse before anything moves
  TObject* Result = Remove(Index);
  if (Index > 0 && Index < HeapCount()) {
    const std::size_t I = static_cast<std::size_t>(Index);
    if (Before(FOrder, Compare(FHeap[I]->GetItem(), FHeap[(I - 1) / 2]->GetItem()))) PushUp(Index);
  }
  return Result;
}

std::int32_t THeap::ModifyPriority(THeapElement* Element) { return ModifyPriority(CheckElement(Element)); }

std::int32_t THeap::ModifyPriority(std::int32_t Index) {
  CheckIndex(Index);
  const std::size_t I = static_cast<std::size_t>(Index);
  if (Index > 0 && Before(FOrder, Compare(FHeap[I]->GetItem(), FHeap[(I - 1) / 2]->GetItem())))
    return PushUp(Index)->GetIndex();
  return PushDown(Index)->GetIndex();
}

// ---- TIntHeap ----

TIntHeap::TIntHeap() : TCustomHeap(&TIntHeapElement::ClassInfo()) {}

TIntHeap::TIntHeap(TIntHeapElementClass ElementClass) : TCustomHeap(ElementClass) { TIntOps::CheckClass(ElementClass); }

const TMetaClass* TIntHeap::RequiredElementClass() const { return &TIntHeapElement::ClassInfo(); }

THeapElement* TIntHeap::PushUp(std::int32_t Index) {
  CheckIndex(Index);
  return TIntOps::PushUp(FHeap, FOrder, Index);
}

THeapElement* TIntHeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  return TIntOps::PushDown(FHeap, FOrder, Index);
}

TIntHeapElement* TIntHeap::Add(TObject* Item, std::int32_t Priority) {
  std::unique_ptr<THeapElement> E = FElementClass->Create(Item);
  static_cast<TIntHeapElement*>(E.get())->SetPriority(Priority);
  return static_cast<TIntHeapElement*>(Insert(std::move(E)));
}

std::int32_t TIntHeap::IndexOf(TObject* Item) const { return IndexOf(Item, 0); }

std::int32_t TIntHeap::IndexOf(TObject* Item, std::int32_t Priority) const {
  return TIntOps::IndexOf(FHeap, FOrder, Item, Priority);
}

std::int32_t TIntHeap::IndexOf(std::int32_t Priority) const { return TIntOps::IndexOf(FHeap, FOrder, Priority); }

TObject* TIntHeap::Delete(std::int32_t Index) {
  TObject* Result = Remove(Index);
  if (Index > 0 && Index < HeapCount() && TIntOps::InteriorPushUp(FHeap, FOrder, Index)) PushUp(Index);
  return Result;
}

std::int32_t TIntHeap::ModifyPriority(THeapElement* Element) {
  const std::int32_t I = CheckElement(Element);
  return (TIntOps::ReverseTestPushUp(FHeap, FOrder, I) ? PushUp(I) : PushDown(I))->GetIndex();
}

std::int32_t TIntHeap::ModifyPriority(THeapElement* Element, std::int32_t NewPriority) {
  const std::int32_t I = CheckElement(Element);
  static_cast<TIntHeapElement*>(Element)->SetPriority(NewPriority);
  return (TIntOps::StrictlyBeforeParent(FHeap, FOrder, I) ? PushUp(I) : PushDown(I))->GetIndex();
}

std::int32_t TIntHeap::GetPriority(std::int32_t Index) const { return TIntOps::Prio(GetElement(Index)); }

// ---- TFloatHeap ----

TFloatHeap::TFloatHeap() : TCustomHeap(&TFloatHeapElement::ClassInfo()) {}

TFloatHeap::TFloatHeap(TFloatHeapElementClass ElementClass) : TCustomHeap(ElementClass) {
  TFloatOps::CheckClass(ElementClass);
}

const TMetaClass* TFloatHeap::RequiredElementClass() const { return &TFloatHeapElement::ClassInfo(); }

THeapElement* TFloatHeap::PushUp(std::int32_t Index) {
  CheckIndex(Index);
  return TFloatOps::PushUp(FHeap, FOrder, Index);
}

THeapElement* TFloatHeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  return TFloatOps::PushDown(FHeap, FOrder, Index);
}

TFloatHeapElement* TFloatHeap::Add(TObject* Item, float Priority) {
  std::unique_ptr<THeapElement> E = FElementClass->Create(Item);
  static_cast<TFloatHeapElement*>(E.get())->SetPriority(Priority);
  return static_cast<TFloatHeapElement*>(Insert(std::move(E)));
}

std::int32_t TFloatHeap::IndexOf(TObject* Item) const { return IndexOf(Item, 0.0f); }

std::int32_t TFloatHeap::IndexOf(TObject* Item, float Priority) const {
  return TFloatOps::IndexOf(FHeap, FOrder, Item, Priority);
}

std::int32_t TFloatHeap::IndexOf(float Priority) const { return TFloatOps::IndexOf(FHeap, FOrder, Priority); }

TObject* TFloatHeap::Delete(std::int32_t Index) {
  TObject* Result = Remove(Index);
  if (Index > 0 && Index < HeapCount() && TFloatOps::InteriorPushUp(FHeap, FOrder, Index)) PushUp(Index);
  return Result;
}

std::int32_t TFloatHeap::ModifyPriority(THeapElement* Element) {
  const std::int32_t I = CheckElement(Element);
  return (TFloatOps::ReverseTestPushUp(FHeap, FOrder, I) ? PushUp(I) : PushDown(I))->GetIndex();
}

std::int32_t TFloatHeap::ModifyPriority(THeapElement* Element, float NewPriority) {
  const std::int32_t I = CheckElement(Element);
  static_cast<TFloatHeapElement*>(Element)->SetPriority(NewPriority);
  return (TFloatOps::StrictlyBeforeParent(FHeap, FOrder, I) ? PushUp(I) : PushDown(I))->GetIndex();
}

float TFloatHeap::GetPriority(std::int32_t Index) const { return TFloatOps::Prio(GetElement(Index)); }

// ---- TIHeap ----

TIHeap::TIHeap(TIHeapElementClass ElementClass) : FElementClass(ElementClass) {
  if (!ElementClass) RaiseNullAccess(u"heap element class");
}

TIHeap::TIHeap(TICompareFunc CompareFunc) : FElementClass(&TIHeapElement::ClassInfo()), FCompare(std::move(CompareFunc)) {}

TIHeap::~TIHeap() { Clear(); }

void TIHeap::CheckIndex(std::int32_t Index) const {
  if (Index < 0 || Index >= GetCount()) throw EListError(SListIndexError, {Index});
}

std::int32_t TIHeap::CheckElement(const TIHeapElement* Element) const {
  if (!Element || !FLive.count(Element)) NotInHeap();
  return Element->GetIndex();
}

void TIHeap::CheckCompare() const {
  if (!FCompare) RaiseNullAccess(u"heap comparison");
}

std::int32_t TIHeap::Compare(const TIntfPtr<IInterface>& A, const TIntfPtr<IInterface>& B) const {
  CheckCompare();
  return FCompare(A, B);
}

void TIHeap::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TIHeap*>(Source);
  if (!Other) return inherited::Assign(Source);
  if (Other == this) {
    Clear();
    return;
  }
  std::vector<std::unique_ptr<TIHeapElement>> Copies;
  Copies.reserve(Other->FHeap.size());
  for (const TIHeapElement* E : Other->FHeap) Copies.push_back(E->Clone());
  std::unordered_set<const void*> Live(Other->FHeap.size());
  for (const auto& E : Copies) Live.insert(E.get());
  std::vector<TIHeapElement*> Heap;
  Heap.reserve(Copies.size());
  TICompareFunc Compare = Other->FCompare;
  Clear();
  FOrder = Other->FOrder;
  FCompare.swap(Compare);
  for (auto& E : Copies) Heap.push_back(E.release());
  FHeap.swap(Heap);
  FLive.swap(Live);
}

TIntfPtr<IInterface> TIHeap::GetItem(std::int32_t Index) const { return GetElement(Index)->GetItem(); }

TIHeapElement* TIHeap::GetElement(std::int32_t Index) const {
  CheckIndex(Index);
  return FHeap[static_cast<std::size_t>(Index)];
}

void TIHeap::SetOrder(THeapOrder Value) {
  if (Value == FOrder) return;
  FOrder = Value;
  if (FHeap.size() >= 2) PushUp(GetCount() - 1);
}

TIHeapElement* TIHeap::PushUp(std::int32_t Index) {
  CheckIndex(Index);
  return SiftUp(FHeap, Index, [this](const TIHeapElement* P, const TIHeapElement* C) {
    return After(FOrder, Compare(P->GetItem(), C->GetItem()));
  });
}

TIHeapElement* TIHeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  return SiftDown(
      FHeap, Index,
      [this](const TIHeapElement* R, const TIHeapElement* L) { return !After(FOrder, Compare(R->GetItem(), L->GetItem())); },
      [this](const TIHeapElement* K, const TIHeapElement* I) { return Before(FOrder, Compare(K->GetItem(), I->GetItem())); });
}

TIHeapElement* TIHeap::Add(const TIntfPtr<IInterface>& Item) {
  std::unique_ptr<TIHeapElement> Element = FElementClass->Create(Item);
  TIHeapElement* E = Element.get();
  detail::THeapAccess::SetIndex(E, GetCount());
  FHeap.push_back(E);
  try {
    FLive.insert(E);
  } catch (...) {
    FHeap.pop_back();
    throw;
  }
  Element.release();
  try {
    if (FHeap.size() > 1) PushUp(GetCount() - 1);
  } catch (...) {
    delete TakeOut(FHeap, E->GetIndex());
    FLive.erase(E);
    throw;
  }
  return E;
}

void TIHeap::Clear() {
  std::vector<TIHeapElement*> Heap;
  Heap.swap(FHeap);
  FLive.clear();
  for (TIHeapElement* E : Heap) delete E;
}

TIntfPtr<IInterface> TIHeap::Delete(std::int32_t Index) {
  CheckIndex(Index);
  const std::int32_t Count = GetCount();
  if (Index != Count - 1 && Count >= 3) CheckCompare();
  TIHeapElement* Removed = TakeOut(FHeap, Index);
  TIntfPtr<IInterface> Result = Removed->GetItem();
  FLive.erase(Removed);
  delete Removed;
  if (Index == 0) {
    if (FHeap.size() > 1) PushDown(0);
  } else if (Index < GetCount()) {
    const std::size_t I = static_cast<std::size_t>(Index);
    if (Before(FOrder, Compare(FHeap[I]->GetItem(), FHeap[(I - 1) / 2]->GetItem()))) PushUp(Index);
  }
  return Result;
}

std::int32_t TIHeap::IndexOf(const TIntfPtr<IInterface>& Item) const {
  auto Visit = [&](const TIHeapElement* E) {
    if (After(FOrder, Compare(E->GetItem(), Item))) return -1;
    return E->GetItem() == Item ? 1 : 0;
  };
  return PreOrderFind(FHeap, 0, Visit);
}

std::int32_t TIHeap::ModifyPriority(TIHeapElement* Element) { return ModifyPriority(CheckElement(Element)); }

std::int32_t TIHeap::ModifyPriority(std::int32_t Index) {
  CheckIndex(Index);
  const std::size_t I = static_cast<std::size_t>(Index);
  if (Index > 0 && Before(FOrder, Compare(FHeap[I]->GetItem(), FHeap[(I - 1) / 2]->GetItem())))
    return PushUp(Index)->GetIndex();
  return PushDown(Index)->GetIndex();
}

}  // namespace kz
