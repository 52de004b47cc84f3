// Object stack and queue on a growable list of object references, and their common base.
#pragma once

#include <cstdint>
#include <memory>

#include "DataStructures/Messages.h"
#include "Runtime/Generics.h"

namespace kz {

/// A growable list of object references with one end to push at and one to take from. It
/// never owns its objects. Push is amortised O(1); Pop is O(1) for the stack and O(n) for
/// the queue (the list shifts). Top and Pop of an empty list raise EListError "List is
/// empty"; other index errors are the list's EArgumentOutOfRangeException. The family has
/// a virtual constructor without arguments (TKZObjectOrderedListClass).
class TKZObjectOrderedList : public Generics::TList<TObject*> {
 public:
  using TMeta = kz::TMetaClassOf<TKZObjectOrderedList>;
  KZ_CLASS(TKZObjectOrderedList, Generics::TList<TObject*>)
 public:
  TKZObjectOrderedList() = default;

  /// Source must be an ordered list (any kind): this list is cleared and takes Source's
  /// entries from index 0 on. Other sources, null included, raise EConvertError "Cannot
  /// assign a X to a Y".
  virtual void Assign(TObject* Source);
  /// A new list of this list's own class holding the same entries.
  [[nodiscard]] std::unique_ptr<TKZObjectOrderedList> Clone() const;

  [[nodiscard]] virtual TObject* Pop() = 0;
  virtual void Push(TObject* Value) = 0;
  /// The entry Pop would answer, left in place.
  [[nodiscard]] virtual TObject* Top() const = 0;

  bool IsEmpty() const { return GetCount() == 0; }
  bool GetEmpty() const { return IsEmpty(); }

 protected:
  void CheckNotEmpty() const;
};

using TKZObjectOrderedListClass = const TKZObjectOrderedList::TMeta*;

/// First in, first out: Push appends, Top and Pop take index 0.
class TKZObjectQueue : public TKZObjectOrderedList {
  KZ_CLASS(TKZObjectQueue, TKZObjectOrderedList)
 public:
  [[nodiscard]] TObject* Pop() override;
  void Push(TObject* Value) override;
  [[nodiscard]] TObject* Top() const override;
};

/// Last in, first out: Push appends, Top and Pop take the last entry.
class TKZObjectStack : public TKZObjectOrderedList {
  KZ_CLASS(TKZObjectStack, TKZObjectOrderedList)
 public:
  [[nodiscard]] TObject* Pop() override;
  void Push(TObject* Value) override;
  [[nodiscard]] TObject* Top() const override;
};

}  // namespace kz
