// Pointer lists: the growable list of untyped pointers, the object list that may own its
// items, and the lock-guarded list of interface references.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "Runtime/Errors.h"
#include "Runtime/Interfaces.h"

namespace kz {

/// Why TList::Notify is called: an item came in, was taken out for the caller, or was
/// removed (deleted, replaced, cleared).
enum TListNotification : std::uint8_t { lnAdded, lnExtracted, lnDeleted };

/// Orders two items: negative, zero or positive.
using TListSortCompare = std::function<int(Pointer Item1, Pointer Item2)>;

/// A growable array of untyped pointers. It owns nothing it holds; descendants follow items
/// through Notify, which is called after the list has changed, for non-null items only.
/// Indexed access is O(1); Insert and Delete shift the tail. A full list grows by a quarter
/// above 64 slots, 16 above 8, else 4. Bad indexes raise EListError "List index out of
/// bounds (%d)"; bad capacities and counts their own list errors.
class TList : public TObject {
  KZ_CLASS(TList, TObject)
 public:
  TList() = default;
  /// Clears through TList's own Clear: a descendant that must see the deletions clears
  /// in its own destructor.
  ~TList() override;

  /// Appends Item and answers its index.
  std::int32_t Add(Pointer Item);
  /// Index in 0..Count.
  void Insert(std::int32_t Index, Pointer Item);
  void Delete(std::int32_t Index);
  /// Deletes the first occurrence of Item; answers its former index or -1.
  std::int32_t Remove(Pointer Item);
  /// Takes the first occurrence of Item out without deleting it (notified lnExtracted);
  /// answers Item, or null when absent.
  Pointer Extract(Pointer Item);
  /// Count 0, capacity 0; each non-null item is notified lnDeleted.
  virtual void Clear();
  /// The first index holding Item, or -1.
  std::int32_t IndexOf(Pointer Item) const;
  Pointer GetItem(std::int32_t Index) const;
  /// Replaces an item: the old one is notified lnDeleted, the new one lnAdded (when they
  /// differ).
  void SetItem(std::int32_t Index, Pointer Item);
  Pointer First() const { return GetItem(0); }
  Pointer Last() const { return GetItem(GetCount() - 1); }
  void Exchange(std::int32_t Index1, std::int32_t Index2);
  /// Moves the item at CurIndex so that it ends at NewIndex (no notification).
  void Move(std::int32_t CurIndex, std::int32_t NewIndex);
  /// Removes the null items.
  void Pack();
  /// Quicksort with Compare (not stable).
  void Sort(const TListSortCompare& Compare);
  /// Grows the list when it is full; answers the list.
  TList* Expand();

  std::int32_t GetCount() const { return static_cast<std::int32_t>(FList.size()); }
  /// Growing appends null items; shrinking deletes the items beyond NewCount from the last.
  /// Raises SListCountError outside 0..MaxListSize.
  void SetCount(std::int32_t NewCount);
  std::int32_t GetCapacity() const { return FCapacity; }
  /// Room for exactly NewCapacity items; below Count raises SListCapacityError.
  void SetCapacity(std::int32_t NewCapacity);

  /// Raises EListError with Msg formatted with Data.
  [[noreturn]] static void Error(const TResourceString& Msg, std::int32_t Data);

 protected:
  /// Called after an item came in or went out; nothing here.
  virtual void Notify(Pointer Ptr, TListNotification Action);
  virtual void Grow();

 private:
  void CheckIndex(std::int32_t Index) const {
    if (Index < 0 || Index >= GetCount()) Error(Runtime::SListIndexError, Index);
  }

  std::vector<Pointer> FList;
  std::int32_t FCapacity = 0;
};

/// A list of objects that, with OwnsObjects (the default), frees every object that leaves it
/// by Delete, Remove, Clear, SetItem, SetCount or destruction; Extract hands the object back
/// unfreed. Items are TObject pointers: storing other pointers through the TList interface
/// of an owning list is not supported.
class TObjectList : public TList {
  KZ_CLASS(TObjectList, TList)
 public:
  explicit TObjectList(bool OwnsObjects = true) : FOwnsObjects(OwnsObjects) {}
  ~TObjectList() override;

  std::int32_t Add(TObject* AObject) { return TList::Add(AObject); }
  void Insert(std::int32_t Index, TObject* AObject) { TList::Insert(Index, AObject); }
  std::int32_t Remove(TObject* AObject) { return TList::Remove(AObject); }
  TObject* Extract(TObject* Item) { return static_cast<TObject*>(TList::Extract(Item)); }
  std::int32_t IndexOf(TObject* AObject) const { return TList::IndexOf(AObject); }
  TObject* GetItem(std::int32_t Index) const { return static_cast<TObject*>(TList::GetItem(Index)); }
  void SetItem(std::int32_t Index, TObject* AObject) { TList::SetItem(Index, AObject); }
  TObject* First() const { return static_cast<TObject*>(TList::First()); }
  TObject* Last() const { return static_cast<TObject*>(TList::Last()); }
  /// The first index from AStartAt whose object is of class AClass (AExact) or derives from
  /// it; -1 when none.
  std::int32_t FindInstanceOf(const TMetaClass* AClass, bool AExact = true, std::int32_t AStartAt = 0) const;

  bool GetOwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }

 protected:
  void Notify(Pointer Ptr, TListNotification Action) override;

 private:
  bool FOwnsObjects;
};

/// A list of interface references. Every operation holds the list's lock, a recursive
/// mutex that Lock/Unlock expose for compound operations. The identifier is the library's
/// own.
class IInterfaceList : public virtual IInterface {
  KZ_INTERFACE(IInterfaceList, IInterface, "{7D3A92C4-5B1E-4F60-A8C7-2E94D1B6F053}")
 public:
  virtual TIntfPtr<IInterface> Get(std::int32_t Index) = 0;
  virtual void Put(std::int32_t Index, TIntfPtr<IInterface> Item) = 0;
  virtual std::int32_t GetCount() = 0;
  virtual void SetCount(std::int32_t NewCount) = 0;
  virtual std::int32_t GetCapacity() = 0;
  virtual void SetCapacity(std::int32_t NewCapacity) = 0;
  virtual std::int32_t Add(TIntfPtr<IInterface> Item) = 0;
  virtual void Insert(std::int32_t Index, TIntfPtr<IInterface> Item) = 0;
  virtual void Delete(std::int32_t Index) = 0;
  virtual std::int32_t Remove(const TIntfPtr<IInterface>& Item) = 0;
  virtual std::int32_t IndexOf(const TIntfPtr<IInterface>& Item) = 0;
  virtual void Clear() = 0;
  virtual TIntfPtr<IInterface> First() = 0;
  virtual TIntfPtr<IInterface> Last() = 0;
  virtual void Exchange(std::int32_t Index1, std::int32_t Index2) = 0;
  virtual void Lock() = 0;
  virtual void Unlock() = 0;
};

/// The reference-counted, thread-safe list of interface references. It holds one reference
/// per slot; identity (IndexOf, Remove) compares the objects' base interfaces. References
/// that leave the list are released after the lock is dropped, so an item's destruction may
/// use the list. Index errors raise EListError "List index out of bounds (%d)".
class TInterfaceList : public TInterfacedObject, public IInterfaceList {
  KZ_CLASS(TInterfaceList, TInterfacedObject)
  KZ_INTERFACES(IInterfaceList)
 public:
  TInterfaceList() = default;
  ~TInterfaceList() override;

  TIntfPtr<IInterface> Get(std::int32_t Index) override;
  void Put(std::int32_t Index, TIntfPtr<IInterface> Item) override;
  std::int32_t GetCount() override;
  /// Growing appends null slots; shrinking releases the references beyond NewCount.
  void SetCount(std::int32_t NewCount) override;
  std::int32_t GetCapacity() override;
  void SetCapacity(std::int32_t NewCapacity) override;
  std::int32_t Add(TIntfPtr<IInterface> Item) override;
  void Insert(std::int32_t Index, TIntfPtr<IInterface> Item) override;
  void Delete(std::int32_t Index) override;
  /// Deletes the first slot holding Item; answers its former index or -1.
  std::int32_t Remove(const TIntfPtr<IInterface>& Item) override;
  std::int32_t IndexOf(const TIntfPtr<IInterface>& Item) override;
  void Clear() override;
  TIntfPtr<IInterface> First() override;
  TIntfPtr<IInterface> Last() override;
  void Exchange(std::int32_t Index1, std::int32_t Index2) override;
  /// Grows the list when it is full.
  void Expand();
  void Lock() override { FLock.lock(); }
  void Unlock() override { FLock.unlock(); }

 private:
  using TGuard = std::lock_guard<std::recursive_mutex>;
  void CheckIndex(std::int32_t Index) const {
    if (Index < 0 || Index >= static_cast<std::int32_t>(FList.size())) TList::Error(Runtime::SListIndexError, Index);
  }
  void GrowIfFull();

  std::recursive_mutex FLock;
  std::vector<TIntfPtr<IInterface>> FList;
  std::int32_t FCapacity = 0;
};

}  // namespace kz
