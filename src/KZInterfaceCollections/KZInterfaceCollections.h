// The persistent interface list, the interface queue and stack built on it, and the
// iterators over interface lists and string lists.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "CommonInterfaces/CommonInterfaces.h"
#include "Runtime/Enumerable.h"
#include "Runtime/Errors.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Lists.h"
#include "Runtime/Persistent.h"
#include "Runtime/StringLists.h"

namespace kz {

namespace KZInterfaceCollections {
KZ_UNIT_SCOPE(KZInterfaceCollections)
KZ_RESOURCESTRING(SListIsEmpty, u"list is empty")
}  // namespace KZInterfaceCollections

/// Where a search through a list starts.
enum TDirection : std::uint8_t { FromBeginning, FromEnd };

/// Orders two interface references (negative, zero, positive).
using TInterfaceCompare = std::function<int(const TIntfPtr<IInterface>& A, const TIntfPtr<IInterface>& B)>;

class TInterfaceListIterator;

/// A persistent object whose lifetime is its reference count: created at count 0, it frees
/// itself at the last release (counting is atomic). A caller that never takes an interface
/// reference owns it and deletes it.
class TInterfacedPersistent : public TPersistent, public virtual IInterface {
  KZ_CLASS(TInterfacedPersistent, TPersistent)
 public:
  std::int32_t QueryInterface(const TGUID& IID, void** Obj) override;
  std::int32_t _AddRef() override;
  std::int32_t _Release() override;
  bool GetInterface(const TGUID& IID, void** Obj) override;

 private:
  std::atomic<std::int32_t> FRefCount{0};
};

/// A persistent, reference-counted list of interface references, one counted reference per
/// slot. Every operation runs under the list's own re-entrant lock (Lock/Unlock bracket
/// several operations); Notify is called after the lock is dropped, and references leaving
/// the list are released outside it, so an item's destruction may use the list. Remove
/// notifies lnDeleted for a non-null item even when it is absent; Clear, Put and nil slots
/// notify nothing. Bad indexes raise EListError "List index out of bounds (%d)".
class TInterfaceListPersistent : public TInterfacedPersistent, public virtual ICloneable {
 public:
  using TMeta = TMetaClassOf<TInterfaceListPersistent>;
  KZ_CLASS(TInterfaceListPersistent, TInterfacedPersistent)
  KZ_INTERFACES(ICloneable)
 public:
  TInterfaceListPersistent();
  ~TInterfaceListPersistent() override;

  std::int32_t Add(const TIntfPtr<IInterface>& Item);
  void Insert(std::int32_t Index, const TIntfPtr<IInterface>& Item);
  [[nodiscard]] TIntfPtr<IInterface> Get(std::int32_t Index) const;
  void Put(std::int32_t Index, const TIntfPtr<IInterface>& Item);
  [[nodiscard]] TIntfPtr<IInterface> First() const;
  [[nodiscard]] TIntfPtr<IInterface> Last() const;
  void Delete(std::int32_t Index);
  [[nodiscard]] std::int32_t IndexOf(const TIntfPtr<IInterface>& Item) const;
  /// Identity of the objects' base interfaces; -1 when absent.
  [[nodiscard]] std::int32_t IndexOfItem(const TIntfPtr<IInterface>& Item, TDirection Direction) const;
  std::int32_t Remove(const TIntfPtr<IInterface>& Item);
  std::int32_t RemoveItem(const TIntfPtr<IInterface>& Item, TDirection Direction);
  /// Silent: no notifications.
  virtual void Clear();
  void Exchange(std::int32_t Index1, std::int32_t Index2);
  void Move(std::int32_t CurIndex, std::int32_t NewIndex);
  /// Orders by the references' addresses.
  void Sort();
  /// An inconsistent comparison yields some order, never a read outside the list.
  void Sort(const TInterfaceCompare& Compare);
  /// Appends one null slot when the capacity equals the count.
  TInterfaceListPersistent* Expand();
  std::int32_t GetCount() const;
  /// Growing fills with null slots.
  void SetCount(std::int32_t Value);
  std::int32_t GetCapacity() const;
  void SetCapacity(std::int32_t Value);
  void Lock() const { FList->Lock(); }
  void Unlock() const { FList->Unlock(); }

  /// A TInterfaceListPersistent source is copied item by item; others raise the assign error.
  void Assign(TPersistent* Source) override;
  /// An IInterfaceList source is copied item by item; other interfaces change nothing.
  void Assign(const TIntfPtr<IInterface>& Source) override;
  void AssignTo(TPersistent* Dest) override { TPersistent::AssignTo(Dest); }
  /// A new list of this list's own class, assigned from it.
  TIntfPtr<ICloneable> Clone() override;
  /// Identity: true only for this very list.
  bool Equals(const TIntfPtr<IInterface>& Value) override;
  std::int32_t GetTag() override { return FTag; }
  void SetTag(std::int32_t Value) override { FTag = Value; }
  std::int32_t get_Tag() { return FTag; }
  void set_Tag(std::int32_t Value) { FTag = Value; }

  /// A new iterator over this list (not keeping it alive).
  [[nodiscard]] TIntfPtr<TInterfaceListIterator> GetEnumerator();

 protected:
  /// Hears additions (lnAdded) and removals (lnDeleted) of non-null items, unlocked.
  virtual void Notify(const TIntfPtr<IInterface>& Item, TListNotification Action);

 private:
  TIntfPtr<TInterfaceList> FList;
  std::int32_t FTag = 0;
};

/// First in, first out. Pop and Peek on an empty queue raise EListError "list is empty".
class TIQueue : public TInterfaceListPersistent {
  KZ_CLASS(TIQueue, TInterfaceListPersistent)
 public:
  std::int32_t Push(const TIntfPtr<IInterface>& Item) { return Add(Item); }
  [[nodiscard]] TIntfPtr<IInterface> Pop();
  [[nodiscard]] TIntfPtr<IInterface> Peek() const;
  bool IsEmpty() const { return GetCount() == 0; }
};

/// Last in, first out. Pop and Peek on an empty stack raise EListError "list is empty".
class TIStack : public TInterfaceListPersistent {
  KZ_CLASS(TIStack, TInterfaceListPersistent)
 public:
  std::int32_t Push(const TIntfPtr<IInterface>& Item) { return Add(Item); }
  [[nodiscard]] TIntfPtr<IInterface> Pop();
  [[nodiscard]] TIntfPtr<IInterface> Peek() const;
  bool IsEmpty() const { return GetCount() == 0; }
};

/// Walks a persistent interface list by position, reading its count afresh at every step;
/// takes no lock between steps. GetCount is the list's whole count. Past the end
/// NextElementI raises the list's index error. The list is not kept alive.
class TInterfaceListIterator : public TInterfacedObject, public IInterfaceIterator {
  KZ_CLASS(TInterfaceListIterator, TInterfacedObject)
  KZ_INTERFACES(IInterfaceIterator)
 public:
  explicit TInterfaceListIterator(TInterfaceListPersistent* List) : FList(List) {}
  TIntfPtr<IInterface> CurrentElementI() override { return FList->Get(FIndex); }
  std::int32_t GetCount() override { return FList->GetCount(); }
  std::int32_t get_Count() { return GetCount(); }
  bool HasMoreElements() override { return FIndex < FList->GetCount() - 1; }
  TIntfPtr<IInterface> NextElementI() override { return FList->Get(++FIndex); }
  void Reset() override { FIndex = -1; }
  bool MoveNext();
  [[nodiscard]] TIntfPtr<IInterface> GetCurrent() { return CurrentElementI(); }

 private:
  std::int32_t FIndex = -1;
  TInterfaceListPersistent* FList;
};

/// Walks a string list by position: lines (S), their objects (O) and the objects as untyped
/// pointers (IIterator's elements, also named NextElementP). GetCount is the list's whole
/// count; past the end the string list raises its index error. The list is not kept alive.
class TStringsIterator : public TInterfacedObject, public IStringIterator, public IObjectIterator, public IIterator {
  KZ_CLASS(TStringsIterator, TInterfacedObject)
  KZ_INTERFACES(IStringIterator, IObjectIterator, IIterator)
 public:
  explicit TStringsIterator(TStrings* Strings) : FStrings(Strings) {}
  String CurrentElementS() override { return FStrings->Get(FIndex); }
  TObject* CurrentElementO() override { return FStrings->GetObject(FIndex); }
  Pointer CurrentElement() override { return CurrentElementO(); }
  Pointer CurrentElementP() { return CurrentElement(); }
  std::int32_t GetCount() override { return FStrings->GetCount(); }
  bool HasMoreElements() override { return FIndex < FStrings->GetCount() - 1; }
  String NextElementS() override { return FStrings->Get(++FIndex); }
  TObject* NextElementO() override { return FStrings->GetObject(++FIndex); }
  Pointer NextElement() override { return NextElementO(); }
  Pointer NextElementP() { return NextElement(); }
  void Reset() override { FIndex = -1; }

 private:
  std::int32_t FIndex = -1;
  TStrings* FStrings;
};

}  // namespace kz
