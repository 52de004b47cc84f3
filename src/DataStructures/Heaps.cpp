#include "DataStructures/Heaps.h"

#include "DataStructures/internal/ElementPool.h"
#include "DataStructures/internal/HeapCore.h"

namespace kz {

using namespace Runtime;
using namespace DataStructures;
using detail::GuardMemory;
using detail::PreOrderFind;
using detail::SiftDown;
using detail::SiftUp;
using detail::TakeOut;
using detail::TElementPool;

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

// The object heaps' rules, the same for objects and interface references; Cmp compares items.
struct TObjectRules {
  template <class E, class C>
  static E* PushUp(std::vector<E*>& H, THeapOrder O, std::int32_t I, const C& Cmp) {
    return SiftUp(H, I, [&](const E* P, const E* K) { return After(O, Cmp(P->GetItem(), K->GetItem())); });
  }
  template <class E, class C>
  static E* PushDown(std::vector<E*>& H, THeapOrder O, std::int32_t I, const C& Cmp) {
    return SiftDown(
        H, I, [&](const E* R, const E* L) { return !After(O, Cmp(R->GetItem(), L->GetItem())); },
        [&](const E* K, const E* X) { return Before(O, Cmp(K->GetItem(), X->GetItem())); });
  }
  template <class E, class T, class C>
  static std::int32_t IndexOf(const std::vector<E*>& H, THeapOrder O, const T& Item, const C& Cmp) {
    auto Visit = [&](const E* X) {
      if (After(O, Cmp(X->GetItem(), Item))) return -1;
      return X->GetItem() == Item ? 1 : 0;
    };
    return PreOrderFind(H, 0, Visit);
  }
  template <class E, class C>
  static bool BeforeParent(const std::vector<E*>& H, THeapOrder O, std::int32_t I, const C& Cmp) {
    const auto U = static_cast<std::size_t>(I);
    return I > 0 && Before(O, Cmp(H[U]->GetItem(), H[(U - 1) / 2]->GetItem()));
  }
};

#define KZ_HEAP_CMP [this](const auto& A, const auto& B) { return Compare(A, B); }

using TIntOps = TNumeric<TIntHeapElement>;
using TFloatOps = TNumeric<TFloatHeapElement>;

// Appends Element and sifts it up with Up; when anything raises the element is taken out
// and freed again.
template <class E, class FUp>
E* InsertElement(std::vector<E*>& H, std::unique_ptr<E> Element, FUp Up) {
  E* X = Element.get();
  detail::THeapAccess::SetIndex(X, static_cast<std::int32_t>(H.size()));
  H.push_back(X);
  Element.release();
  try {
    if (H.size() > 1) Up(static_cast<std::int32_t>(H.size()) - 1);
  } catch (...) {
    // The sift swaps whole steps, so the element is somewhere on its path with a true Index.
    delete TakeOut(H, X->GetIndex());
    throw;
  }
  return X;
}

template <class E>
void FreeElements(std::vector<E*>& H) {
  std::vector<E*> Old;
  Old.swap(H);
  for (E* X : Old) delete X;
}

TElementPool& PoolOf(std::unique_ptr<TElementPool>& Pool) {
  if (!Pool) Pool = std::make_unique<TElementPool>();
  return *Pool;
}

// Empties the heap and gives its storage back.
template <class E>
void FreeAll(std::vector<E*>& H, const std::unique_ptr<TElementPool>& Pool) {
  FreeElements(H);
  if (Pool) Pool->Trim();
}

// The index of Element when it is one of this heap's: a pointer outside the heap's storage
// is refused before it is read.
template <class E>
std::int32_t ElementIndex(const std::vector<E*>& H, const std::unique_ptr<TElementPool>& Pool, const E* Element) {
  if (!Element || !Pool || !Pool->Holds(Element)) throw EInvalidOperation(SElementNotInHeap);
  const std::int32_t I = Element->GetIndex();
  if (I < 0 || static_cast<std::size_t>(I) >= H.size() || H[static_cast<std::size_t>(I)] != Element)
    throw EInvalidOperation(SElementNotInHeap);
  return I;
}

// Clones of a heap's elements, made in the receiving heap's storage before that heap
// changes, then swapped in.
template <class E>
struct TClones {
  std::vector<E*> Heap;

  TClones(const TClones&) = delete;
  TClones(const std::vector<E*>& Source, TElementPool& Pool) {
    TElementPool::TScope Scope(Pool);
    std::vector<std::unique_ptr<E>> Copies;
    Copies.reserve(Source.size());
    for (const E* X : Source) Copies.push_back(X->Clone());
    Heap.reserve(Copies.size());
    for (auto& X : Copies) Heap.push_back(X.release());
  }
  ~TClones() { FreeElements(Heap); }
  void MoveInto(std::vector<E*>& H) { H.swap(Heap); }
};

}  // namespace

// ---- TCustomHeap ----

TCustomHeap::TCustomHeap() : FElementClass(&THeapElement::ClassInfo()) {}

TCustomHeap::TCustomHeap(THeapElementClass ElementClass) : FElementClass(ElementClass) {
  if (!ElementClass) RaiseNullAccess(u"heap element class");
}

TCustomHeap::~TCustomHeap() { FreeElements(FHeap); }

void TCustomHeap::CheckIndex(std::int32_t Index) const {
  if (Index < 0 || Index >= static_cast<std::int32_t>(FHeap.size())) throw EListError(SListIndexError, {Index});
}

std::int32_t TCustomHeap::CheckElement(const THeapElement* Element) const {
  return ElementIndex(FHeap, FPool, Element);
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
  TClones<THeapElement> Copies = GuardMemory([&] { return TClones<THeapElement>(Other->FHeap, PoolOf(FPool)); });
  Clear();
  FOrder = Other->FOrder;
  Copies.MoveInto(FHeap);
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

THeapElement* TCustomHeap::Add(TObject* Item) {
  return GuardMemory([&] { return Insert(MakeElement(Item)); });
}

std::unique_ptr<THeapElement> TCustomHeap::MakeElement(TObject* Item) {
  TElementPool::TScope Scope(PoolOf(FPool));
  return FElementClass->Create(Item);
}

THeapElement* TCustomHeap::Insert(std::unique_ptr<THeapElement> Element) {
  return InsertElement(FHeap, std::move(Element), [this](std::int32_t I) { PushUp(I); });
}

void TCustomHeap::Clear() { FreeAll(FHeap, FPool); }

TObject* TCustomHeap::Remove(std::int32_t Index) {
  CheckIndex(Index);
  THeapElement* Removed = TakeOut(FHeap, Index);
  TObject* Result = Removed->GetItem();
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
  return TObjectRules::PushUp(FHeap, FOrder, Index, KZ_HEAP_CMP);
}

THeapElement* THeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  return TObjectRules::PushDown(FHeap, FOrder, Index, KZ_HEAP_CMP);
}

std::int32_t THeap::IndexOf(TObject* Item) const { return TObjectRules::IndexOf(FHeap, FOrder, Item, KZ_HEAP_CMP); }

TObject* THeap::Delete(std::int32_t Index) {
  CheckIndex(Index);
  const std::int32_t Count = HeapCount();
  if (Index != Count - 1 && Count >= 3) CheckCompare();  // refuse before anything moves
  TObject* Result = Remove(Index);
  if (Index < HeapCount() && TObjectRules::BeforeParent(FHeap, FOrder, Index, KZ_HEAP_CMP)) PushUp(Index);
  return Result;
}

std::int32_t THeap::ModifyPriority(THeapElement* Element) { return ModifyPriority(CheckElement(Element)); }

std::int32_t THeap::ModifyPriority(std::int32_t Index) {
  CheckIndex(Index);
  return (TObjectRules::BeforeParent(FHeap, FOrder, Index, KZ_HEAP_CMP) ? PushUp(Index) : PushDown(Index))->GetIndex();
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
  return GuardMemory([&] {
    std::unique_ptr<THeapElement> E = MakeElement(Item);
    static_cast<TIntHeapElement*>(E.get())->SetPriority(Priority);
    return static_cast<TIntHeapElement*>(Insert(std::move(E)));
  });
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
  return GuardMemory([&] {
    std::unique_ptr<THeapElement> E = MakeElement(Item);
    static_cast<TFloatHeapElement*>(E.get())->SetPriority(Priority);
    return static_cast<TFloatHeapElement*>(Insert(std::move(E)));
  });
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

TIHeap::~TIHeap() { FreeElements(FHeap); }

void TIHeap::CheckIndex(std::int32_t Index) const {
  if (Index < 0 || Index >= GetCount()) throw EListError(SListIndexError, {Index});
}

std::int32_t TIHeap::CheckElement(const TIHeapElement* Element) const {
  return ElementIndex(FHeap, FPool, Element);
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
  TClones<TIHeapElement> Copies = GuardMemory([&] { return TClones<TIHeapElement>(Other->FHeap, PoolOf(FPool)); });
  TICompareFunc Compare = Other->FCompare;
  Clear();
  FOrder = Other->FOrder;
  FCompare.swap(Compare);
  Copies.MoveInto(FHeap);
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
  return TObjectRules::PushUp(FHeap, FOrder, Index, KZ_HEAP_CMP);
}

TIHeapElement* TIHeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  return TObjectRules::PushDown(FHeap, FOrder, Index, KZ_HEAP_CMP);
}

TIHeapElement* TIHeap::Add(const TIntfPtr<IInterface>& Item) {
  return GuardMemory([&] {
    std::unique_ptr<TIHeapElement> Element;
    {
      TElementPool::TScope Scope(PoolOf(FPool));
      Element = FElementClass->Create(Item);
    }
    return InsertElement(FHeap, std::move(Element), [this](std::int32_t I) { PushUp(I); });
  });
}

void TIHeap::Clear() { FreeAll(FHeap, FPool); }

TIntfPtr<IInterface> TIHeap::Delete(std::int32_t Index) {
  CheckIndex(Index);
  const std::int32_t Count = GetCount();
  if (Index != Count - 1 && Count >= 3) CheckCompare();
  TIHeapElement* Removed = TakeOut(FHeap, Index);
  TIntfPtr<IInterface> Result = Removed->GetItem();
  delete Removed;
  if (Index == 0) {
    if (FHeap.size() > 1) PushDown(0);
  } else if (Index < GetCount() && TObjectRules::BeforeParent(FHeap, FOrder, Index, KZ_HEAP_CMP)) {
    PushUp(Index);
  }
  return Result;
}

std::int32_t TIHeap::IndexOf(const TIntfPtr<IInterface>& Item) const {
  return TObjectRules::IndexOf(FHeap, FOrder, Item, KZ_HEAP_CMP);
}

std::int32_t TIHeap::ModifyPriority(TIHeapElement* Element) { return ModifyPriority(CheckElement(Element)); }

std::int32_t TIHeap::ModifyPriority(std::int32_t Index) {
  CheckIndex(Index);
  return (TObjectRules::BeforeParent(FHeap, FOrder, Index, KZ_HEAP_CMP) ? PushUp(Index) : PushDown(Index))->GetIndex();
}

}  // namespace kz
