#include "KZInterfaceCollections/KZInterfaceCollections.h"

#include <vector>

#include "Runtime/ListStorage.h"

namespace kz {

using namespace Runtime;
using namespace KZInterfaceCollections;

namespace {
/// Holds the list's lock for a scope.
class TListLock {
 public:
  explicit TListLock(const TInterfaceListPersistent& L) : FList(L) { FList.Lock(); }
  ~TListLock() { FList.Unlock(); }
  TListLock(const TListLock&) = delete;
  TListLock& operator=(const TListLock&) = delete;

 private:
  const TInterfaceListPersistent& FList;
};

const void* Identity(const TIntfPtr<IInterface>& P) { return static_cast<const void*>(P.get()); }
}  // namespace

std::int32_t TInterfacedPersistent::QueryInterface(const TGUID& IID, void** Obj) {
  if (GetInterface(IID, Obj)) {
    _AddRef();
    return S_OK;
  }
  *Obj = nullptr;
  return E_NOINTERFACE;
}

std::int32_t TInterfacedPersistent::_AddRef() { return FRefCount.fetch_add(1, std::memory_order_relaxed) + 1; }

std::int32_t TInterfacedPersistent::_Release() {
  const std::int32_t R = FRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (R == 0) delete this;
  return R;
}

bool TInterfacedPersistent::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IInterface::IID) {
    *Obj = static_cast<IInterface*>(this);
    return true;
  }
  return inherited::GetInterface(IID, Obj);
}

TInterfaceListPersistent::TInterfaceListPersistent() : FList(new TInterfaceList) {}

TInterfaceListPersistent::~TInterfaceListPersistent() {
  try {
    Clear();
  } catch (...) {
    // A subclass's Clear that raises cannot stop destruction; the slots go with FList.
  }
}

void TInterfaceListPersistent::Notify(const TIntfPtr<IInterface>&, TListNotification) {}

std::int32_t TInterfaceListPersistent::Add(const TIntfPtr<IInterface>& Item) {
  const std::int32_t R = FList->Add(Item);
  if (Item) Notify(Item, lnAdded);
  return R;
}

void TInterfaceListPersistent::Insert(std::int32_t Index, const TIntfPtr<IInterface>& Item) {
  FList->Insert(Index, Item);
  if (Item) Notify(Item, lnAdded);
}

TIntfPtr<IInterface> TInterfaceListPersistent::Get(std::int32_t Index) const { return FList->Get(Index); }

void TInterfaceListPersistent::Put(std::int32_t Index, const TIntfPtr<IInterface>& Item) { FList->Put(Index, Item); }

TIntfPtr<IInterface> TInterfaceListPersistent::First() const { return Get(0); }

TIntfPtr<IInterface> TInterfaceListPersistent::Last() const {
  TListLock L(*this);
  return Get(FList->GetCount() - 1);
}

void TInterfaceListPersistent::Delete(std::int32_t Index) {
  TIntfPtr<IInterface> Item;
  {
    TListLock L(*this);
    Item = FList->Get(Index);
    FList->Delete(Index);
  }
  if (Item) Notify(Item, lnDeleted);
}

std::int32_t TInterfaceListPersistent::IndexOf(const TIntfPtr<IInterface>& Item) const {
  return IndexOfItem(Item, FromBeginning);
}

std::int32_t TInterfaceListPersistent::IndexOfItem(const TIntfPtr<IInterface>& Item, TDirection Direction) const {
  if (Direction == FromBeginning) return FList->IndexOf(Item);
  TListLock L(*this);
  for (std::int32_t i = FList->GetCount() - 1; i >= 0; --i)
    if (Identity(FList->Get(i)) == Identity(Item)) return i;
  return -1;
}

std::int32_t TInterfaceListPersistent::Remove(const TIntfPtr<IInterface>& Item) {
  return RemoveItem(Item, FromBeginning);
}

std::int32_t TInterfaceListPersistent::RemoveItem(const TIntfPtr<IInterface>& Item, TDirection Direction) {
  std::int32_t R;
  {
    TListLock L(*this);
    R = IndexOfItem(Item, Direction);
    if (R >= 0) FList->Delete(R);
  }
  if (Item) Notify(Item, lnDeleted);
  return R;
}

void TInterfaceListPersistent::Clear() {
  if (FList) FList->Clear();
}

void TInterfaceListPersistent::Exchange(std::int32_t Index1, std::int32_t Index2) { FList->Exchange(Index1, Index2); }

void TInterfaceListPersistent::Move(std::int32_t CurIndex, std::int32_t NewIndex) {
  TListLock L(*this);
  if (CurIndex == NewIndex) {
    (void)FList->Get(CurIndex);
    return;
  }
  (void)FList->Get(NewIndex);
  TIntfPtr<IInterface> Item = FList->Get(CurIndex);
  FList->Delete(CurIndex);
  FList->Insert(NewIndex, Item);
}

void TInterfaceListPersistent::Sort() {
  Sort([](const TIntfPtr<IInterface>& A, const TIntfPtr<IInterface>& B) {
    const auto PA = reinterpret_cast<std::uintptr_t>(Identity(A)), PB = reinterpret_cast<std::uintptr_t>(Identity(B));
    return PA < PB ? -1 : PA > PB ? 1 : 0;
  });
}

void TInterfaceListPersistent::Sort(const TInterfaceCompare& Compare) {
  TListLock L(*this);
  const std::int32_t N = FList->GetCount();
  std::vector<TIntfPtr<IInterface>> Items;
  Items.reserve(static_cast<std::size_t>(N));
  for (std::int32_t i = 0; i < N; ++i) Items.push_back(FList->Get(i));
  auto Cmp = [&](std::int32_t I, std::int32_t J) { return Compare(Items[static_cast<std::size_t>(I)], Items[static_cast<std::size_t>(J)]); };
  auto Swap = [&](std::int32_t I, std::int32_t J) { std::swap(Items[static_cast<std::size_t>(I)], Items[static_cast<std::size_t>(J)]); };
  detail::QuickSortPositions(0, N - 1, Cmp, Swap);
  for (std::int32_t i = 0; i < N; ++i) FList->Put(i, Items[static_cast<std::size_t>(i)]);
}

TInterfaceListPersistent* TInterfaceListPersistent::Expand() {
  TListLock L(*this);
  if (FList->GetCapacity() == FList->GetCount()) FList->Add(nullptr);
  return this;
}

std::int32_t TInterfaceListPersistent::GetCount() const { return FList->GetCount(); }
void TInterfaceListPersistent::SetCount(std::int32_t Value) { FList->SetCount(Value); }
std::int32_t TInterfaceListPersistent::GetCapacity() const { return FList->GetCapacity(); }
void TInterfaceListPersistent::SetCapacity(std::int32_t Value) { FList->SetCapacity(Value); }

void TInterfaceListPersistent::Assign(TPersistent* Source) {
  auto* S = dynamic_cast<TInterfaceListPersistent*>(Source);
  if (!S) return TPersistent::Assign(Source);
  if (S == this) return;
  Clear();
  TListLock L(*S);
  for (std::int32_t i = 0, N = S->GetCount(); i < N; ++i) Add(S->Get(i));
}

void TInterfaceListPersistent::Assign(const TIntfPtr<IInterface>& Source) {
  const TIntfPtr<IInterfaceList> S = Query<IInterfaceList>(Source);
  if (!S) return;
  Clear();
  S->Lock();
  try {
    for (std::int32_t i = 0, N = S->GetCount(); i < N; ++i) Add(S->Get(i));
  } catch (...) {
    S->Unlock();
    throw;
  }
  S->Unlock();
}

TIntfPtr<ICloneable> TInterfaceListPersistent::Clone() {
  std::unique_ptr<TInterfaceListPersistent> R = static_cast<const TMeta*>(ClassType())->Create();
  R->Assign(this);
  return TIntfPtr<ICloneable>(R.release());
}

bool TInterfaceListPersistent::Equals(const TIntfPtr<IInterface>& Value) {
  const TIntfPtr<ICloneable> Other = Query<ICloneable>(Value);
  return Other && Other.get() == static_cast<ICloneable*>(this);
}

TIntfPtr<TInterfaceListIterator> TInterfaceListPersistent::GetEnumerator() {
  return TIntfPtr<TInterfaceListIterator>(new TInterfaceListIterator(this));
}

TIntfPtr<IInterface> TIQueue::Pop() {
  TListLock L(*this);
  TIntfPtr<IInterface> R = Peek();
  Delete(0);
  return R;
}

TIntfPtr<IInterface> TIQueue::Peek() const {
  TListLock L(*this);
  if (GetCount() == 0) throw EListError(SListIsEmpty);
  return Get(0);
}

TIntfPtr<IInterface> TIStack::Pop() {
  TListLock L(*this);
  TIntfPtr<IInterface> R = Peek();
  Delete(GetCount() - 1);
  return R;
}

TIntfPtr<IInterface> TIStack::Peek() const {
  TListLock L(*this);
  if (GetCount() == 0) throw EListError(SListIsEmpty);
  return Get(GetCount() - 1);
}

bool TInterfaceListIterator::MoveNext() {
  if (FIndex >= FList->GetCount() - 1) return false;
  ++FIndex;
  return true;
}

}  // namespace kz
