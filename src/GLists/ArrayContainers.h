// Queues and stacks on arrays: the ordered list family on the pointer list, and the string
// queue and stack on TSFCList.
#pragma once

#include <cstdint>
#include <memory>

#include "Runtime/Lists.h"
#include "Structures/Structures.h"

namespace kz {

/// An ordered container of untyped pointers on TList (Add, Delete, GetItem, Insert stay
/// available). Nothing it holds is owned. Push, Pop and Top are the descendants'.
class TQOrderedList : public TList {
 public:
  using TMeta = TMetaClassOf<TQOrderedList>;
  KZ_CLASS(TQOrderedList, TList)
 public:
  TQOrderedList() = default;

  /// From a TList: Clear, then its entries in order; from a linked list: Clear, then the
  /// items from the head. Anything else (null included) raises EConvertError "Error
  /// assigning <source class or nil> to <own class>".
  virtual void Assign(TObject* Source);
  [[nodiscard]] virtual Pointer Pop() = 0;
  virtual void Push(Pointer Value) = 0;
  [[nodiscard]] virtual Pointer Top() const = 0;

  [[nodiscard]] bool IsEmpty() const { return GetCount() == 0; }
  [[nodiscard]] bool GetEmpty() const { return IsEmpty(); }
  /// A new container of this very class holding the same entries.
  [[nodiscard]] std::unique_ptr<TQOrderedList> Clone() const;
};

/// First in, first out: Push appends (O(1) amortised), Pop takes index 0 (shifting the
/// rest, O(n)). Top and Pop of an empty queue raise "List is empty".
class TQQueue : public TQOrderedList {
  KZ_CLASS(TQQueue, TQOrderedList)
 public:
  [[nodiscard]] Pointer Pop() override;
  void Push(Pointer Value) override;
  [[nodiscard]] Pointer Top() const override;
};

/// Last in, first out: Push appends, Top and Pop use the last index; all O(1).
class TQStack : public TQQueue {
  KZ_CLASS(TQStack, TQQueue)
 public:
  [[nodiscard]] Pointer Pop() override;
  [[nodiscard]] Pointer Top() const override;
};

/// Class references for choosing the container at run time; both name metaclasses of the
/// TQOrderedList family (TQQueueClass is meant for TQQueue and its descendants).
using TQOrderedListClass = const TQOrderedList::TMeta*;
using TQQueueClass = const TQQueue::TMeta*;

/// A first-in-first-out queue of lines (string and object) on TSFCList: every Top and Pop
/// reads the line at FTopIndex, which stays 0. Empty Top and Pop raise "List is empty".
/// SetSorted(true) raises "Cannot sort stack or queue", SetSorted(false) does nothing
/// (reached through this class; TStringList::SetSorted is not virtual).
class TQStringQueue : public TSFCList {
  KZ_CLASS(TQStringQueue, TSFCList)
 public:
  /// A line with an empty string and AnObject; answers its index.
  std::int32_t Push(TObject* AnObject);
  std::int32_t PushString(String Value);
  std::int32_t PushItem(String Value, TObject* AnObject);
  [[nodiscard]] TObject* Pop();
  [[nodiscard]] String PopString();
  [[nodiscard]] String PopItem(TObject*& AnObject);
  [[nodiscard]] TObject* Top() const;
  [[nodiscard]] String TopString() const;
  [[nodiscard]] String TopItem(TObject*& AnObject) const;

  [[nodiscard]] bool IsEmpty() const { return GetCount() == 0; }
  [[nodiscard]] bool GetEmpty() const { return IsEmpty(); }
  void SetSorted(bool Value);

 protected:
  /// Raises "List is empty" on an empty queue; else FTopIndex.
  std::int32_t TopIndex() const;

  std::int32_t FTopIndex = 0;
};

/// A last-in-first-out string queue: FTopIndex follows the last line after every change
/// the string list reports (inside an update, when the update ends).
class TQStringStack : public TQStringQueue {
  KZ_CLASS(TQStringStack, TQStringQueue)

 protected:
  void Changed() override;
};

}  // namespace kz
