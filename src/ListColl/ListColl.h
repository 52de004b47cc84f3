// An owning list of objects searched and walked with callbacks.
#pragma once

#include <cstdint>

#include "Runtime/Lists.h"

namespace kz {

/// Callbacks of TListCollection: an action on one object, a test of one object.
using TListCollectionAction = void (*)(TObject* Item);
using TListCollectionTest = bool (*)(TObject* Item);

/// A TList of objects that it owns: destruction frees them, from the first, each taken out
/// of the list before it is freed (Delete and Clear do not free). Every search is linear,
/// tests in its direction and answers the first object that passes, or null; none changes
/// the list. A null callback raises EAccessViolation.
class TListCollection : public TList {
  KZ_CLASS(TListCollection, TList)
 public:
  TListCollection() = default;
  ~TListCollection() override;

  /// Action on the items at indexes 0 .. (Count at the start) - 1. An action that shrinks
  /// the list makes the walk raise EListError "List index out of bounds".
  void ForEach(TListCollectionAction Action);
  [[nodiscard]] TObject* FirstThat(TListCollectionTest Test) const;
  [[nodiscard]] TObject* LastThat(TListCollectionTest Test) const;
  /// Searches upward from the item after Item (found by identity); null when Item is not
  /// in the list (Test is then not called).
  [[nodiscard]] TObject* NextThat(const TObject* Item, TListCollectionTest Test) const;
  /// Searches downward from the item before Item.
  [[nodiscard]] TObject* PrevThat(const TObject* Item, TListCollectionTest Test) const;

  [[nodiscard]] TObject* GetItem(std::int32_t Index) const { return static_cast<TObject*>(TList::GetItem(Index)); }

 private:
  TObject* Search(std::int32_t From, std::int32_t Step, TListCollectionTest Test) const;
};

}  // namespace kz
