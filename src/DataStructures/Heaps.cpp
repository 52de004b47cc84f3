#include "DataStructures/Heaps.h"

#include "DataStructures/internal/ElementPool.h"
#include "DataStructures/internal/HeapCore.h"
#include "Runtime/UpdateCounter.h"

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace kz {

using namespace Runtime;
using namespace DataStructures;
using detail::ElementOf;
using detail::THeapAccess;
using detail::PreOrderFind;
using detail::SiftDown;
using detail::SiftDownFromBottom;
using detail::SiftUp;
using detail::TakeOut;
using detail::TNoLookAhead;
using detail::TElementPool;
using detail::WithFlag;

namespace {

// Object heaps judge by a comparison result: Before means "the first belongs nearer the
// root", After the reverse; both are strict.
bool Before(THeapOrder Order, std::int32_t C) { return Order == hpIncreasing ? C < 0 : C > 0; }
bool After(THeapOrder Order, std::int32_t C) { return Order == hpIncreasing ? C > 0 : C < 0; }

template <class P>
bool Before(THeapOrder Order, P A, P B) {
  return Order == hpIncreasing ? A < B : A > B;
}

// The numeric heaps' rules, the same for both priority types; they compare the slots' keys,
// which hold the elements' priorities.
template <class TElem>
struct TNumeric {
  using TPrio = decltype(std::declval<TElem>().GetPriority());
  static TPrio Prio(const THeapElement* E) { return static_cast<const TElem*>(E)->GetPriority(); }
  template <class S>
  static TPrio Key(const S& Slot) {
    if constexpr (std::is_same_v<TPrio, float>)
      return Slot.Key.Float;
    else
      return Slot.Key.Int;
  }
  template <class S>
  static TPrio KeyAt(const std::vector<S>& H, std::int32_t I) {
    return Key(H[static_cast<std::size_t>(I)]);
  }

  template <class S>
  static THeapElement* PushUp(std::vector<S>& H, THeapOrder Order, std::int32_t I, bool Write) {
    // Stops when the parent is not after the child, as written (<= / >=).
    return WithFlag(Write, [&](auto W) -> THeapElement* {
      if (Order == hpIncreasing)
        return SiftUp<decltype(W)::value>(H, I, [](const S& P, const S& C) { return !(Key(P) <= Key(C)); });
      return SiftUp<decltype(W)::value>(H, I, [](const S& P, const S& C) { return !(Key(P) >= Key(C)); });
    });
  }

  template <class S>
  static THeapElement* PushDown(std::vector<S>& H, THeapOrder Order, std::int32_t I, bool Write) {
    // The right child only when strictly before the left one; a move only when strictly before.
    return WithFlag(Write, [&](auto W) -> THeapElement* {
      if (Order == hpIncreasing) {
        auto Lt = [](const S& A, const S& B) { return Key(A) < Key(B); };
        return SiftDown<TNoLookAhead, decltype(W)::value>(H, I, Lt, Lt);
      }
      auto Gt = [](const S& A, const S& B) { return Key(A) > Key(B); };
      return SiftDown<TNoLookAhead, decltype(W)::value>(H, I, Gt, Gt);
    });
  }

  template <class S>
  static std::int32_t IndexOf(const std::vector<S>& H, THeapOrder Order, TObject* Item, TPrio Priority) {
    auto Visit = [&](const S& E) {
      if (Key(E) == Priority && E.Element->GetItem() == Item) return 1;
      return Before(Order, Key(E), Priority) ? 0 : -1;
    };
    return PreOrderFind(H, 0, Visit);
  }

  template <class S>
  static std::int32_t IndexOf(const std::vector<S>& H, THeapOrder Order, TPrio Priority) {
    auto Visit = [&](const S& E) {
      if (Key(E) == Priority) return 1;
      return Before(Order, Key(E), Priority) ? 0 : -1;
    };
    return PreOrderFind(H, 0, Visit);
  }

  // Step 6 of Delete: the tests as written, under which PushUp finds nothing to swap.
  template <class S>
  static bool InteriorPushUp(const std::vector<S>& H, THeapOrder Order, std::int32_t I) {
    const TPrio Moved = KeyAt(H, I), Parent = KeyAt(H, (I - 1) / 2);
    return Order == hpIncreasing ? Moved > Parent : Moved < Parent;
  }

  // ModifyPriority without a new priority: the reverse tests, kept as they are.
  template <class S>
  static bool ReverseTestPushUp(const std::vector<S>& H, THeapOrder Order, std::int32_t I) {
    if (I <= 0) return false;
    const TPrio E = KeyAt(H, I), Parent = KeyAt(H, (I - 1) / 2);
    return Order == hpIncreasing ? E >= Parent : E <= Parent;
  }

  template <class S>
  static bool StrictlyBeforeParent(const std::vector<S>& H, THeapOrder Order, std::int32_t I) {
    return I > 0 && Before(Order, KeyAt(H, I), KeyAt(H, (I - 1) / 2));
  }

  static void CheckClass(const TMetaClass* AClass) {
    if (!AClass) RaiseNullAccess(u"heap element class");
    if (!AClass->InheritsFrom(&TElem::ClassInfo())) throw EInvalidCast(SInvalidCast);
  }
};

// The object heaps' rules, the same for objects and interface references. Item(Entry) is
// what Cmp compares: the slot's key (object heaps) or the element's reference (interface heap).
template <class FItem>
struct TObjectRules {
  // The sifts are compiled per order and per Index writing, so that no level tests either.
  template <class S, class C>
  static auto* PushUp(std::vector<S>& H, THeapOrder Order, std::int32_t I, const C& Cmp, bool Write = true) {
    return WithFlag(Order == hpIncreasing, [&](auto Increasing) {
      constexpr THeapOrder O = decltype(Increasing)::value ? hpIncreasing : hpDecreasing;
      return WithFlag(Write, [&](auto W) {
        return SiftUp<decltype(W)::value>(H, I,
                                          [&](const S& P, const S& K) { return After(O, Cmp(FItem::Of(P), FItem::Of(K))); });
      });
    });
  }
  template <class S, class C>
  static auto* PushDown(std::vector<S>& H, THeapOrder Order, std::int32_t I, const C& Cmp, bool FromBottom = false,
                        bool Write = true) {
    return WithFlag(Order == hpIncreasing, [&](auto Increasing) {
      constexpr THeapOrder O = decltype(Increasing)::value ? hpIncreasing : hpDecreasing;
      auto TakeRight = [&](const S& R, const S& L) { return !After(O, Cmp(FItem::Of(R), FItem::Of(L))); };
      auto MoveUp = [&](const S& K, const S& X) { return Before(O, Cmp(FItem::Of(K), FItem::Of(X))); };
      return WithFlag(Write, [&](auto W) {
        constexpr bool Writes = decltype(W)::value;
        if (FromBottom) return SiftDownFromBottom<FItem, Writes>(H, I, TakeRight, MoveUp);
        return SiftDown<FItem, Writes>(H, I, TakeRight, MoveUp);
      });
    });
  }
  template <class S, class T, class C>
  static std::int32_t IndexOf(const std::vector<S>& H, THeapOrder O, const T& Item, const C& Cmp) {
    auto Visit = [&](const S& X) {
      if (After(O, Cmp(FItem::Of(X), Item))) return -1;
      return FItem::Of(X) == Item ? 1 : 0;
    };
    return PreOrderFind(H, 0, Visit);
  }
  template <class S, class C>
  static bool BeforeParent(const std::vector<S>& H, THeapOrder O, std::int32_t I, const C& Cmp) {
    const auto U = static_cast<std::size_t>(I);
    return I > 0 && Before(O, Cmp(FItem::Of(H[U]), FItem::Of(H[(U - 1) / 2])));
  }
};

struct TSlotItem {
  template <class S>
  static TObject* Of(const S& Slot) {
    return Slot.Key.Item;
  }
  // The items a few levels down are what the comparisons after the next will read.
  template <class S>
  static void Touch(const S& Slot) {
    __builtin_prefetch(Slot.Key.Item);
  }
};
struct TElementItem : detail::TNoLookAhead {
  static const TIntfPtr<IInterface>& Of(const TIHeapElement* Element) { return Element->GetItem(); }
};
using TObjectOps = TObjectRules<TSlotItem>;
using TInterfaceOps = TObjectRules<TElementItem>;

#define KZ_HEAP_CMP [this](const auto& A, const auto& B) { return Compare(A, B); }

using TIntOps = TNumeric<TIntHeapElement>;
using TFloatOps = TNumeric<TFloatHeapElement>;

// Appends Entry (whose element the caller hands over) and sifts it up with Up; when
// anything raises the element is taken out and freed again.
template <class S, class FUp>
auto* InsertEntry(std::vector<S>& H, const S& Entry, FUp Up) {
  auto* X = ElementOf(Entry);
  try {
    H.push_back(Entry);
  } catch (...) {
    delete X;
    throw;
  }
  // Written also by a heap with lazy indexes: the new element is in the cache.
  THeapAccess::SetIndex(X, static_cast<std::int32_t>(H.size()) - 1);
  try {
    if (H.size() > 1) Up(static_cast<std::int32_t>(H.size()) - 1);
  } catch (...) {
    // A sift that raises puts the element back on its path with a true Index.
    delete TakeOut(H, X->GetIndex());
    throw;
  }
  return X;
}

template <class S>
void FreeElements(std::vector<S>& H) {
  std::vector<S> Old;
  Old.swap(H);
  for (const S& X : Old) delete ElementOf(X);
}

TElementPool& PoolOf(std::unique_ptr<TElementPool>& Pool) {
  if (!Pool) Pool = std::make_unique<TElementPool>();
  return *Pool;
}

// Empties the heap and gives its storage back.
template <class S>
void FreeAll(std::vector<S>& H, const std::unique_ptr<TElementPool>& Pool) {
  FreeElements(H);
  if (Pool) Pool->Trim();
}

// The index of Element when it is one of this heap's: a pointer outside the heap's storage
// is refused before it is read.
template <class S, class E>
std::int32_t ElementIndex(const std::vector<S>& H, const std::unique_ptr<TElementPool>& Pool, const E* Element) {
  if (!Element || !Pool || !Pool->Holds(Element)) throw EInvalidOperation(SElementNotInHeap);
  const std::int32_t I = Element->GetIndex();
  if (I < 0 || static_cast<std::size_t>(I) >= H.size() || ElementOf(H[static_cast<std::size_t>(I)]) != Element)
    throw EInvalidOperation(SElementNotInHeap);
  return I;
}

// Clones of a heap's entries, made in the receiving heap's storage before that heap changes,
// then swapped in. Entry(Clone) makes the receiver's entry for an element.
template <class S>
struct TClones {
  std::vector<S> Heap;

  TClones(const TClones&) = delete;
  template <class FEntry>
  TClones(const std::vector<S>& Source, TElementPool& Pool, FEntry Entry) {
    using E = std::remove_pointer_t<decltype(ElementOf(std::declval<S>()))>;
    TElementPool::TScope Scope(Pool);
    std::vector<std::unique_ptr<E>> Copies;
    Copies.reserve(Source.size());
    for (const S& X : Source) Copies.push_back(ElementOf(X)->Clone());
    Heap.reserve(Copies.size());
    for (auto& X : Copies) Heap.push_back(Entry(X.release()));
  }
  ~TClones() { FreeElements(Heap); }
  void MoveInto(std::vector<S>& H) { H.swap(Heap); }
};

}  // namespace

// ---- TCustomHeap ----

TCustomHeap::TCustomHeap() : FElementClass(&THeapElement::ClassInfo()) {}

TCustomHeap::TCustomHeap(THeapElementClass ElementClass) : FElementClass(ElementClass) {
  if (!ElementClass) RaiseNullAccess(u"heap element class");
}

TCustomHeap::~TCustomHeap() {
  SyncIndexes();  // an element's destructor may read another's Index
  FreeElements(FHeap);
}

void TCustomHeap::CheckIndex(std::int32_t Index) const {
  if (Index < 0 || Index >= static_cast<std::int32_t>(FHeap.size())) throw EListError(SListIndexError, {Index});
}

void TCustomHeap::CheckNotComparing() const {
  if (FComparing) throw EInvalidOperation(SHeapChangedByCompare);
}

std::int32_t TCustomHeap::CheckElement(const THeapElement* Element) const {
  return ElementIndex(FHeap, FPool, Element);
}


void TCustomHeap::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TCustomHeap*>(Source);
  if (!Other) return inherited::Assign(Source);
  CheckNotComparing();
  if (Other == this) {
    Clear();
    return;
  }
  if (const TMetaClass* Required = RequiredElementClass())
    for (const TSlot& E : Other->FHeap)
      if (!E.Element->InheritsFrom(Required)) throw EInvalidCast(SInvalidCast);
  TClones<TSlot> Copies(Other->FHeap, PoolOf(FPool), [this](THeapElement* X) {
    THeapAccess::SetOwner(X, this);
    return TSlot{KeyOf(X), X};
  });
  Clear();
  FOrder = Other->FOrder;
  Copies.MoveInto(FHeap);
  FPinned = Other->FPinned;  // the clones took their Index from the source's elements
  Unorder();
  OrderIfSmall();
}

bool TCustomHeap::WriteIndexes() {
  if (!FLazyIndexes || FPinned) return true;
  if (FWritesLeft > 0) {
    --FWritesLeft;
    return true;
  }
  FStale = true;
  return false;
}

void TCustomHeap::RewriteIndexes() const {
  for (std::size_t I = 0; I < FHeap.size(); ++I) THeapAccess::SetIndex(FHeap[I].Element, static_cast<std::int32_t>(I));
  // A comparison reads an Index between the moves of a sift that writes none: the moves after
  // it leave the heap as stale as before.
  if (FComparing) return;
  FStale = false;
  FWritesLeft = FHeap.size();
}

void TCustomHeap::ForgetIndexes() {
  FStale = FPinned = false;
  FWritesLeft = 0;
}

void TCustomHeap::CopyOrdered(const TCustomHeap& Other) {
  // The clone of an element out of place is not looked up: its Index may have been
  // overwritten by an element's Assign.
  if (Other.FOrdered && !Other.FOut) FOrdered = FTracksOrder;
}

void TCustomHeap::OutOfPlace(const THeapElement* Element) {
  if (FOrdered && FOut != Element) {
    if (FOut)
      Unorder();
    else
      FOut = Element;
  }
}

void TCustomHeap::OrderIfSmall() {
  if (FHeap.size() <= 1) {
    FOrdered = FTracksOrder;
    FOut = nullptr;
  }
}

bool TCustomHeap::SiftFromBottom(std::int32_t Index) {
  FSifted = true;
  if (FOut && FOut != FHeap[static_cast<std::size_t>(Index)].Element) Unorder();
  return FOrdered;
}

TObject* TCustomHeap::GetItem(std::int32_t Index) const { return GetElement(Index)->GetItem(); }

THeapElement* TCustomHeap::GetElement(std::int32_t Index) const {
  CheckIndex(Index);
  return FHeap[static_cast<std::size_t>(Index)].Element;
}

TCustomHeap::TKey TCustomHeap::KeyOf(const THeapElement* Element) const { return TKey{.Item = Element->GetItem()}; }

void TCustomHeap::ElementChanged(const THeapElement* Element, std::int32_t Index) {
  if (Index >= 0 && static_cast<std::size_t>(Index) < FHeap.size() && FHeap[static_cast<std::size_t>(Index)].Element == Element) {
    const TKey Key = KeyOf(Element);
    FHeap[static_cast<std::size_t>(Index)].Key = Key;
    OutOfPlace(Element);
  }
}

void TCustomHeap::SetOrder(THeapOrder Value) {
  if (Value == FOrder) return;
  CheckNotComparing();
  FOrder = Value;
  if (FHeap.size() >= 2) {
    Unorder();
    PushUp(static_cast<std::int32_t>(FHeap.size()) - 1);
  }
}

THeapElement* TCustomHeap::Add(TObject* Item) {
  std::unique_ptr<THeapElement> E = MakeElement(Item);
  const TKey Key = KeyOf(E.get());
  return Insert(std::move(E), Key);
}

namespace {
// The library's own element classes are built in the pool directly: the per-thread scope
// that lets any class's constructor find the pool costs more than the rest of a push.
template <class E>
std::unique_ptr<THeapElement> MakeIn(TElementPool& Pool, TObject* Item) {
  void* Memory = Pool.AllocateHere(sizeof(E));
  try {
    return std::unique_ptr<THeapElement>(::new (Memory) E(Item));
  } catch (...) {
    TElementPool::Free(Memory);
    throw;
  }
}
}  // namespace

std::unique_ptr<THeapElement> TCustomHeap::MakeElement(TObject* Item) {
  TElementPool& Pool = PoolOf(FPool);
  // The kind is decided once per element class rather than by metaclass compares per push.
  if (FElementClass != FMakeFor) {
    FMakeFor = FElementClass;
    FMake = FElementClass == &TIntHeapElement::ClassInfo()     ? TMakeKind::Int
            : FElementClass == &THeapElement::ClassInfo()      ? TMakeKind::Plain
            : FElementClass == &TFloatHeapElement::ClassInfo() ? TMakeKind::Float
                                                               : TMakeKind::ByClass;
  }
  switch (FMake) {
    case TMakeKind::Int: return MakeIn<TIntHeapElement>(Pool, Item);
    case TMakeKind::Plain: return MakeIn<THeapElement>(Pool, Item);
    case TMakeKind::Float: return MakeIn<TFloatHeapElement>(Pool, Item);
    case TMakeKind::ByClass: break;
  }
  TElementPool::TScope Scope(Pool);
  return FElementClass->Create(Item);
}

THeapElement* TCustomHeap::Insert(std::unique_ptr<THeapElement> Element, TKey Key) {
  CheckNotComparing();
  THeapAccess::SetOwner(Element.get(), this);
  if (!FTracksOrder) return InsertEntry(FHeap, TSlot{Key, Element.release()}, [this](std::int32_t I) { PushUp(I); });
  // A new leaf is in place for a key after every other, so a full sift up restores the heap.
  OutOfPlace(Element.get());
  FSifted = false;
  THeapElement* Added = InsertEntry(FHeap, TSlot{Key, Element.release()}, [this](std::int32_t I) { PushUp(I); });
  if (FHeap.size() == 1)
    OrderIfSmall();
  else
    Settle(Added);
  return Added;
}

void TCustomHeap::Clear() {
  CheckNotComparing();
  SyncIndexes();  // an element's destructor may read another's Index
  FreeAll(FHeap, FPool);
  ForgetIndexes();
  FOrdered = FTracksOrder;
  FOut = nullptr;
}

TObject* TCustomHeap::Remove(std::int32_t Index) {
  CheckIndex(Index);
  CheckNotComparing();
  // The element moved into the gap is in place for the removed one's key, so it becomes the
  // one out of place, even when the removed one was.
  if (FTracksOrder && FOut == FHeap[static_cast<std::size_t>(Index)].Element) FOut = nullptr;
  // A pop reads and frees the top element, a cache miss unless asked for early: the next pop's
  // top is almost always one of the root's children, so fetch both a whole sift ahead.
  if (Index == 0 && FHeap.size() > 2) {
    __builtin_prefetch(FHeap[1].Element);
    __builtin_prefetch(FHeap[2].Element);
  }
  THeapElement* Removed = TakeOut(FHeap, Index, WriteIndexes());
  TObject* Result = Removed->GetItem();
  if (FHeap.empty()) ForgetIndexes();
  delete Removed;
  if (!FTracksOrder) {
    if (Index == 0 && !FHeap.empty()) {
      // Whoever pops reads the item it gets, which a numeric heap never reads itself: ask for
      // it before the sift, and for the next top's once the sift is done, a whole pop ahead.
      __builtin_prefetch(Result);
      if (FHeap.size() > 1) PushDown(0);
      __builtin_prefetch(FHeap[0].Element->GetItem());
    }
    return Result;
  }
  if (static_cast<std::size_t>(Index) < FHeap.size()) {
    THeapElement* Moved = FHeap[static_cast<std::size_t>(Index)].Element;
    OutOfPlace(Moved);
    if (Index == 0 && FHeap.size() > 1) {
      FSifted = false;
      PushDown(0);
      Settle(Moved);
    }
  }
  OrderIfSmall();
  return Result;
}

// ---- THeap ----

void THeap::Assign(TPersistent* Source) {
  inherited::Assign(Source);
  if (auto* Other = dynamic_cast<THeap*>(Source); Other && Other != this) {
    FCompare = Other->FCompare;
    FPlainCompare = Other->FPlainCompare;
    CopyOrdered(*Other);
  }
}

void THeap::CheckCompare() const {
  if (!FCompare) RaiseNullAccess(u"heap comparison");
}

std::int32_t THeap::Compare(TObject* A, TObject* B) const {
  CheckCompare();
  const TRestoreValue Busy(FComparing, true);
  return FCompare(A, B);
}

THeap::TPlainCompare THeap::PlainCompare(const TCompareFunc& Compare) {
  const TPlainCompare* Target = Compare.target<TPlainCompare>();
  return Target ? *Target : nullptr;
}

// Runs Run(Cmp) with a comparison that calls a plain function held by FCompare directly,
// saving the indirection of the wrapper on every step of a sift; anything else, including
// no comparison at all, goes through Compare.
template <class F>
decltype(auto) THeap::WithCompare(F&& Run) const {
  if (const TPlainCompare Fn = FPlainCompare) {
    const TRestoreValue Busy(FComparing, true);
    return Run([Fn](TObject* A, TObject* B) { return Fn(A, B); });
  }
  return Run([this](TObject* A, TObject* B) { return Compare(A, B); });
}

THeapElement* THeap::PushUp(std::int32_t Index) {
  CheckIndex(Index);
  CheckNotComparing();
  SiftFromBottom(Index);
  const bool Write = WriteIndexes();
  try {
    return WithCompare(
        [&](const auto& Cmp) -> THeapElement* { return TObjectOps::PushUp(FHeap, FOrder, Index, Cmp, Write); });
  } catch (...) {
    Unorder();  // a sift cut short may leave more than one element out of place
    throw;
  }
}

THeapElement* THeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  CheckNotComparing();
  const bool FromBottom = SiftFromBottom(Index);
  const bool Write = WriteIndexes();
  try {
    return WithCompare([&](const auto& Cmp) -> THeapElement* {
      return TObjectOps::PushDown(FHeap, FOrder, Index, Cmp, FromBottom, Write);
    });
  } catch (...) {
    Unorder();
    throw;
  }
}

std::int32_t THeap::IndexOf(TObject* Item) const {
  return TObjectOps::IndexOf(FHeap, FOrder, Item, KZ_HEAP_CMP);
}

TObject* THeap::Delete(std::int32_t Index) {
  CheckIndex(Index);
  const std::int32_t Count = HeapCount();
  if (Index != Count - 1 && Count >= 3) CheckCompare();  // refuse before anything moves
  TObject* Result = Remove(Index);
  if (Index < HeapCount() && TObjectOps::BeforeParent(FHeap, FOrder, Index, KZ_HEAP_CMP)) {
    // Strictly before its parent, so not after the removed element's children.
    const THeapElement* Moved = FHeap[static_cast<std::size_t>(Index)].Element;
    FSifted = false;
    PushUp(Index);
    Settle(Moved);
  }
  return Result;
}

std::int32_t THeap::ModifyPriority(THeapElement* Element) { return ModifyPriority(CheckElement(Element)); }

std::int32_t THeap::ModifyPriority(std::int32_t Index) {
  CheckIndex(Index);
  const THeapElement* E = FHeap[static_cast<std::size_t>(Index)].Element;
  ElementChanged(E, Index);
  FSifted = false;
  const std::int32_t Result =
      (TObjectOps::BeforeParent(FHeap, FOrder, Index, KZ_HEAP_CMP) ? PushUp(Index) : PushDown(Index))->GetIndex();
  Settle(E);
  return Result;
}

// ---- TIntHeap ----

TIntHeap::TIntHeap() : TCustomHeap(&TIntHeapElement::ClassInfo()) { FLazyIndexes = true; }

TIntHeap::TIntHeap(TIntHeapElementClass ElementClass) : TCustomHeap(ElementClass) {
  TIntOps::CheckClass(ElementClass);
  FLazyIndexes = true;
}

const TMetaClass* TIntHeap::RequiredElementClass() const { return &TIntHeapElement::ClassInfo(); }

TCustomHeap::TKey TIntHeap::KeyOf(const THeapElement* Element) const {
  return TKey{.Int = static_cast<const TIntHeapElement*>(Element)->GetPriority()};
}

THeapElement* TIntHeap::PushUp(std::int32_t Index) {
  CheckIndex(Index);
  return TIntOps::PushUp(FHeap, FOrder, Index, WriteIndexes());
}

THeapElement* TIntHeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  return TIntOps::PushDown(FHeap, FOrder, Index, WriteIndexes());
}

TIntHeapElement* TIntHeap::Add(TObject* Item, std::int32_t Priority) {
  std::unique_ptr<THeapElement> E = MakeElement(Item);
  static_cast<TIntHeapElement*>(E.get())->SetPriority(Priority);
  return static_cast<TIntHeapElement*>(Insert(std::move(E), TKey{.Int = Priority}));
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
  ElementChanged(Element, I);
  return (TIntOps::ReverseTestPushUp(FHeap, FOrder, I) ? PushUp(I) : PushDown(I))->GetIndex();
}

std::int32_t TIntHeap::ModifyPriority(THeapElement* Element, std::int32_t NewPriority) {
  const std::int32_t I = CheckElement(Element);
  static_cast<TIntHeapElement*>(Element)->SetPriority(NewPriority);
  return (TIntOps::StrictlyBeforeParent(FHeap, FOrder, I) ? PushUp(I) : PushDown(I))->GetIndex();
}

std::int32_t TIntHeap::GetPriority(std::int32_t Index) const { return TIntOps::Prio(GetElement(Index)); }

// ---- TFloatHeap ----

TFloatHeap::TFloatHeap() : TCustomHeap(&TFloatHeapElement::ClassInfo()) { FLazyIndexes = true; }

TFloatHeap::TFloatHeap(TFloatHeapElementClass ElementClass) : TCustomHeap(ElementClass) {
  TFloatOps::CheckClass(ElementClass);
  FLazyIndexes = true;
}

const TMetaClass* TFloatHeap::RequiredElementClass() const { return &TFloatHeapElement::ClassInfo(); }

TCustomHeap::TKey TFloatHeap::KeyOf(const THeapElement* Element) const {
  return TKey{.Float = static_cast<const TFloatHeapElement*>(Element)->GetPriority()};
}

THeapElement* TFloatHeap::PushUp(std::int32_t Index) {
  CheckIndex(Index);
  return TFloatOps::PushUp(FHeap, FOrder, Index, WriteIndexes());
}

THeapElement* TFloatHeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  return TFloatOps::PushDown(FHeap, FOrder, Index, WriteIndexes());
}

TFloatHeapElement* TFloatHeap::Add(TObject* Item, float Priority) {
  std::unique_ptr<THeapElement> E = MakeElement(Item);
  static_cast<TFloatHeapElement*>(E.get())->SetPriority(Priority);
  return static_cast<TFloatHeapElement*>(Insert(std::move(E), TKey{.Float = Priority}));
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
  ElementChanged(Element, I);
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
  const TRestoreValue Busy(FComparing, true);
  return FCompare(A, B);
}

void TIHeap::CheckNotComparing() const {
  if (FComparing) throw EInvalidOperation(SHeapChangedByCompare);
}

void TIHeap::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TIHeap*>(Source);
  if (!Other) return inherited::Assign(Source);
  CheckNotComparing();
  if (Other == this) {
    Clear();
    return;
  }
  TClones<TIHeapElement*> Copies(Other->FHeap, PoolOf(FPool), [](TIHeapElement* X) { return X; });
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
  CheckNotComparing();
  FOrder = Value;
  if (FHeap.size() >= 2) PushUp(GetCount() - 1);
}

TIHeapElement* TIHeap::PushUp(std::int32_t Index) {
  CheckIndex(Index);
  CheckNotComparing();
  return TInterfaceOps::PushUp(FHeap, FOrder, Index, KZ_HEAP_CMP);
}

TIHeapElement* TIHeap::PushDown(std::int32_t Index) {
  CheckIndex(Index);
  CheckNotComparing();
  return TInterfaceOps::PushDown(FHeap, FOrder, Index, KZ_HEAP_CMP);
}

TIHeapElement* TIHeap::Add(const TIntfPtr<IInterface>& Item) {
  CheckNotComparing();
  std::unique_ptr<TIHeapElement> Element;
  {
    TElementPool::TScope Scope(PoolOf(FPool));
    Element = FElementClass->Create(Item);
  }
  return InsertEntry(FHeap, Element.release(), [this](std::int32_t I) { PushUp(I); });
}

void TIHeap::Clear() {
  CheckNotComparing();
  FreeAll(FHeap, FPool);
}

TIntfPtr<IInterface> TIHeap::Delete(std::int32_t Index) {
  CheckIndex(Index);
  CheckNotComparing();
  const std::int32_t Count = GetCount();
  if (Index != Count - 1 && Count >= 3) CheckCompare();
  TIHeapElement* Removed = TakeOut(FHeap, Index);
  TIntfPtr<IInterface> Result = Removed->GetItem();
  delete Removed;
  if (Index == 0) {
    if (FHeap.size() > 1) PushDown(0);
  } else if (Index < GetCount() && TInterfaceOps::BeforeParent(FHeap, FOrder, Index, KZ_HEAP_CMP)) {
    PushUp(Index);
  }
  return Result;
}

std::int32_t TIHeap::IndexOf(const TIntfPtr<IInterface>& Item) const {
  return TInterfaceOps::IndexOf(FHeap, FOrder, Item, KZ_HEAP_CMP);
}

std::int32_t TIHeap::ModifyPriority(TIHeapElement* Element) { return ModifyPriority(CheckElement(Element)); }

std::int32_t TIHeap::ModifyPriority(std::int32_t Index) {
  CheckIndex(Index);
  return (TInterfaceOps::BeforeParent(FHeap, FOrder, Index, KZ_HEAP_CMP) ? PushUp(Index) : PushDown(Index))->GetIndex();
}

}  // namespace kz
