// Priority queues on the heaps, and the priority list: an integer-priority heap whose every
// element holds an object stack or queue of all items of that priority.
#pragma once

#include <cstdint>

#include "DataStructures/Heaps.h"
#include "DataStructures/ObjectContainers.h"

namespace kz {

/// A THeap used as a queue: Pop answers the item at the top (the smallest under
/// hpIncreasing, the largest under hpDecreasing). Push and Pop are O(log n). Pop of an empty
/// queue raises EListError (the heap's index error); Peek raises Exception "Queue is empty".
class TPriorityQueue : public THeap {
  KZ_CLASS(TPriorityQueue, THeap)
 public:
  using THeap::THeap;
  THeapElement* Push(TObject* Value) { return Add(Value); }
  [[nodiscard]] TObject* Pop() { return Delete(0); }
  [[nodiscard]] TObject* Peek() const;
};

/// A TIntHeap used as a queue; as TPriorityQueue.
class TIntPriorityQueue : public TIntHeap {
  KZ_CLASS(TIntPriorityQueue, TIntHeap)
 public:
  using TIntHeap::TIntHeap;
  TIntHeapElement* Push(TObject* Value, std::int32_t Priority) { return Add(Value, Priority); }
  [[nodiscard]] TObject* Pop() { return Delete(0); }
  [[nodiscard]] TObject* Peek() const;
};

/// A TFloatHeap used as a queue; as TPriorityQueue.
class TFloatPriorityQueue : public TFloatHeap {
  KZ_CLASS(TFloatPriorityQueue, TFloatHeap)
 public:
  using TFloatHeap::TFloatHeap;
  TFloatHeapElement* Push(TObject* Value, float Priority) { return Add(Value, Priority); }
  [[nodiscard]] TObject* Pop() { return Delete(0); }
  [[nodiscard]] TObject* Peek() const;
};

/// A TIHeap used as a queue; as TPriorityQueue. Pop hands the queue's reference to the
/// caller.
class TIPriorityQueue : public TIHeap {
  KZ_CLASS(TIPriorityQueue, TIHeap)
 public:
  using TIHeap::TIHeap;
  TIHeapElement* Push(const TIntfPtr<IInterface>& Value) { return Add(Value); }
  [[nodiscard]] TIntfPtr<IInterface> Pop() { return Delete(0); }
  [[nodiscard]] TIntfPtr<IInterface> Peek() const;
};

/// Items grouped by integer priority: one heap element per distinct priority (hpIncreasing
/// by default), whose item is an ordered list of the class given at construction (a stack
/// gives last-in-first-out within a priority, a queue first-in-first-out). The list owns
/// those containers, and with FreeIfNoPop also the items that leave it other than by
/// Delete(0): they are freed on Clear, on SetItem replacement and on Delete above index 0.
///
/// The global order behind GetItem: the containers in heap order, each from its last entry
/// to its first, whatever its class (Delete(0) pops the top container in its own order).
/// GetItem(0) is O(1); other indexes copy the heap, O(h log h) in the number of priorities.
/// Indexes outside 0..Count-1 raise EListError "List index out of bounds (%d)".
///
/// Kept as they are: Count survives Clear and Assign. Delete above index 0 removes an
/// emptied container's heap entry only when its priority is 0 (the numeric heap's
/// IndexOf(Item)); at any other priority the empty container stays alive under its entry
/// until Clear or destruction, so that later lookups see it empty (an index that lands on it
/// raises the container's EArgumentOutOfRangeException, Delete(0) on it "List is empty").
/// Safety rules: SetItem(0) writes the entry GetItem(0) reads; an object held more than once
/// is freed once, when its last entry leaves; Assign takes only another TPriorityList
/// (EConvertError otherwise), since adopting a foreign heap's items would free objects this
/// list does not own.
class TPriorityList : public TIntHeap {
  KZ_CLASS(TPriorityList, TIntHeap)
 public:
  /// Null raises EAccessViolation.
  explicit TPriorityList(TKZObjectOrderedListClass OrderedListClass);
  ~TPriorityList() override;

  /// Appends Item to the container of Priority, creating the container for a new priority.
  void Add(TObject* Item, std::int32_t Priority);
  /// The item at Index in the global order.
  [[nodiscard]] TObject* GetItem(std::int32_t Index) const override;
  /// Replaces the item at Index (freeing the old one under FreeIfNoPop).
  void SetItem(std::int32_t Index, TObject* Item);
  /// Removes the item at Index: 0 pops the top container and hands the item back; above 0
  /// the entry is deleted and, under FreeIfNoPop, freed (the answer is then null).
  TObject* Delete(std::int32_t Index) override;
  /// The number of items over all priorities.
  std::int32_t GetCount() const override { return FCount; }
  /// Frees every container (and, under FreeIfNoPop, every item); Count is left as it was.
  void Clear() override;
  /// From another TPriorityList: its order and priorities, each container cloned. Count,
  /// FreeIfNoPop and the container class stay this list's own.
  void Assign(TPersistent* Source) override;

  bool GetFreeIfNoPop() const { return FFreeIfNoPop; }
  void SetFreeIfNoPop(bool Value) { FFreeIfNoPop = Value; }
  TKZObjectOrderedListClass GetOrderedListClass() const { return FOrderedListClass; }

 private:
  TKZObjectOrderedList* ListAt(std::int32_t HeapIndex) const;
  /// Finds the item at Index, leaving its container in FLastList and its position there in
  /// FLastListIndex.
  TObject* Locate(std::int32_t Index) const;
  /// Frees Item unless another entry of the list still holds it.
  void FreeItem(TObject* Item);
  /// Frees an emptied container and forgets it.
  void FreeList(TKZObjectOrderedList* List);

  TKZObjectOrderedListClass FOrderedListClass;
  std::int32_t FCount = 0;
  mutable std::int32_t FLastIndex = 0;
  mutable TKZObjectOrderedList* FLastList = nullptr;
  mutable std::int32_t FLastListIndex = 0;
  bool FFreeIfNoPop = false;
};

}  // namespace kz
