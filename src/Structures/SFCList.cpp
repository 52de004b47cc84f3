#include "Runtime/Text.h"
#include "Runtime/WithinUpdate.h"
#include "Structures/internal/StructuresSupport.h"

namespace kz {

using namespace Runtime;
using namespace Structures;

// ---- TSFCList ----------------------------------------------------------------------------------

TSFCList::~TSFCList() { Silence(); }

void TSFCList::Silence() {
  FOwner.reset();
  SetOnChange(nullptr);
  SetOnChanging(nullptr);
}

void TSFCList::Assign(TPersistent* Source) {
  auto* List = dynamic_cast<TStringList*>(Source);
  if (List && List != this && List->GetSorted() && GetSorted()) {
    // One sort at the end instead of a sorted insertion per line.
    WithinUpdate(*this, [&] {
      SetSorted(false);
      inherited::Assign(Source);
      SetSorted(true);
    });
  } else {
    inherited::Assign(Source);
  }
}

std::int32_t TSFCList::AddObject(String S, TObject* AObject) {
  std::int32_t Result = -1;
  WithinUpdate(*this, [&] { Result = inherited::AddObject(std::move(S), AObject); });
  return Result;
}

void TSFCList::Put(std::int32_t Index, String S) {
  if (FOwner) FOwner->BeforePut(this, Index, S);
  inherited::Put(Index, std::move(S));
}

void TSFCList::PutObject(std::int32_t Index, TObject* AObject) {
  if (FOwner) FOwner->BeforePutObject(this, Index, AObject);
  inherited::PutObject(Index, AObject);
}

void TSFCList::Delete(std::int32_t Index) {
  if (FOwner) FOwner->BeforeDelete(this, Index);
  inherited::Delete(Index);
}

void TSFCList::Clear() {
  if (FOwner) FOwner->BeforeClear(this);
  inherited::Clear();
}

void TSFCList::ForEach(TForEachObjectProc Proc, TForEachFilterProc Filter, NativeInt Data) {
  detail::ForEachLine(this, Proc, Filter, Data);
}

void TSFCList::ForEach(const TForEachObjectMethod& Proc, const TForEachFilterMethod& Filter, NativeInt Data) {
  detail::ForEachLine(this, Proc, Filter, Data);
}

void TSFCList::Changed() {
  if (FUpdating) return;
  if (FOwner) FOwner->ListChanged(this);
  inherited::Changed();
}

void TSFCList::Changing() {
  if (FUpdating) return;
  if (FOwner) FOwner->ListChanging(this);
  inherited::Changing();
}

void TSFCList::SetUpdateState(bool Updating) {
  // Set first, so that the Changing the base sends as an update begins stays silent.
  FUpdating = Updating;
  inherited::SetUpdateState(Updating);
}

// ---- TSFCFreeList ------------------------------------------------------------------------------

TSFCFreeList::~TSFCFreeList() {
  Silence();
  Clear();
}

TObject* TSFCFreeList::OwnedObjectAt(std::int32_t Index) const {
  // A base list that owns its objects already frees them.
  if (!FFreeMembers || GetOwnsObjects() || Index < 0 || Index >= GetCount()) return nullptr;
  return GetObject(Index);
}

void TSFCFreeList::PutObject(std::int32_t Index, TObject* AObject) {
  WithinUpdate(*this, [&] {
    // The owner hears first, as TSFCList tells it; what it does may change the line.
    if (const TIntfPtr<IStringListOwner> Owner = GetListOwner()) Owner->BeforePutObject(this, Index, AObject);
    TObject* Old = OwnedObjectAt(Index);
    if (Old && Old != AObject) {
      delete Old;
      // The old object's destructor may have changed the list: the line is looked up again.
      if (Index >= GetCount()) return;
    }
    TStringList::PutObject(Index, AObject);
  });
}

void TSFCFreeList::Delete(std::int32_t Index) {
  TObject* Old = OwnedObjectAt(Index);
  inherited::Delete(Index);
  delete Old;
}

void TSFCFreeList::Clear() {
  WithinUpdate(*this, [&] {
    if (FFreeMembers)
      for (std::int32_t i = GetCount() - 1; i >= 0; --i) Delete(i);
    inherited::Clear();
  });
}

}  // namespace kz
