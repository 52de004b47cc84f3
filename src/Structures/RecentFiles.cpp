#include "Runtime/Text.h"
#include "Structures/Structures.h"

namespace kz {

using namespace Runtime;
using namespace Structures;

// ---- TMaxCountStrings ----------------------------------------------------------------------------

void TMaxCountStrings::SetCapacity(std::int32_t NewCapacity) {
  if (FMaxCount > -1) {
    if (NewCapacity > FMaxCount) NewCapacity = FMaxCount;
    // The list grows through here, so a full list refuses its next line.
    if (GetCapacity() >= NewCapacity && NewCapacity == FMaxCount)
      throw EStringListError(SStringListFull, {FMaxCount});
  }
  inherited::SetCapacity(NewCapacity);
}

void TMaxCountStrings::SetMaxCount(std::int32_t Value) {
  if (Value == FMaxCount || Value < -1) return;
  FMaxCount = Value;
  if (GetCapacity() < FMaxCount) SetCapacity(FMaxCount);
}

// ---- TRecentFiles --------------------------------------------------------------------------------

TRecentFiles::TRecentFiles() {
  SetCaseSensitive(false);
  SetMaxCount(4);
}

std::int32_t TRecentFiles::Push(StringView S) {
  const std::int32_t Index = IndexOf(S);
  if (Index < 0) {
    if (GetCount() == GetMaxCount()) DeleteOldest();
    if (FNewestLast) return Add(String(S));
    Insert(0, String(S));
    return 0;
  }
  const std::int32_t Newest = FNewestLast ? GetCount() - 1 : 0;
  Move(Index, Newest);
  return Newest;
}

void TRecentFiles::DeleteOldest() {
  if (GetCount() > 0) Delete(FNewestLast ? 0 : GetCount() - 1);
}

}  // namespace kz
