// A forward and backward cursor over a typed list.
#pragma once

#include <cstdint>

#include "Runtime/Generics.h"
#include "Runtime/Object.h"

namespace kz {

/// Walks a list of T (any list with GetCount() and a range-checked GetItem(i)) from index -1
/// on. MoveNext and GetCurrent drive range-for; NextElement, HasMoreElements, CurrentElement,
/// GetCount (the list's whole count) and Reset follow the iterator contract. Reads past either
/// end raise the list's own range error. The list is not owned and must outlive the cursor.
template <class T, class TListOf = Generics::TList<T>>
class TKZListEnumerator : public TObject {
  KZ_CLASS(TKZListEnumerator, TObject)
 public:
  explicit TKZListEnumerator(const TListOf* List) : FList(List) {
    if (!List) RaiseNullAccess(u"list of an enumerator");
  }

  bool MoveNext() {
    if (FList->GetCount() <= FIndex) return false;
    ++FIndex;
    return FIndex < FList->GetCount();
  }
  T GetCurrent() const { return FList->GetItem(FIndex); }
  virtual T CurrentElement() const { return GetCurrent(); }
  T NextElement() {
    ++FIndex;
    return FList->GetItem(FIndex);
  }
  bool HasMoreElements() const { return FIndex < FList->GetCount() - 1; }
  std::int32_t GetCount() const { return FList->GetCount(); }
  std::int32_t Count() const { return GetCount(); }
  void Reset() { FIndex = -1; }
  /// The position reached: -1 before the first element.
  std::int32_t GetIndex() const { return FIndex; }

 private:
  const TListOf* FList;
  std::int32_t FIndex = -1;
};

}  // namespace kz
