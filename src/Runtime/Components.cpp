#include "Runtime/Components.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

namespace {

bool IsValidIdent(StringView S) {
  auto Alpha = [](Char C) { return (C >= u'A' && C <= u'Z') || (C >= u'a' && C <= u'z') || C == u'_'; };
  if (S.empty() || !Alpha(S[0])) return false;
  return std::all_of(S.begin() + 1, S.end(), [&](Char C) { return Alpha(C) || (C >= u'0' && C <= u'9'); });
}

template <class T, class U>
void EraseValue(std::vector<T>& V, const U& Value) {
  auto It = std::find(V.begin(), V.end(), Value);
  if (It != V.end()) V.erase(It);
}

}  // namespace

TComponent::TComponent(TComponent* AOwner) {
  if (!AOwner) return;
  try {
    AOwner->InsertComponent(this);
  } catch (...) {
    // A failing notification must not leave the owner holding an object that never existed.
    if (FOwner) FOwner->Remove(this);
    throw;
  }
}

TComponent::~TComponent() {
  Destroying();
  while (!FFreeNotifies.empty()) {
    TComponent* Link = FFreeNotifies.back();
    FFreeNotifies.pop_back();
    EraseValue(Link->FFreeNotifies, this);
    // A link sharing our owner hears of us when we leave that owner below; telling it here
    // as well would report one removal twice.
    if (!(FOwner && IsWithin(Link, FOwner))) Link->Notification(this, opRemove);
  }
  DestroyComponents();
  if (FOwner) FOwner->RemoveComponent(this);
}

void TComponent::SetName(const String& NewName) {
  if (NewName == FName) return;
  if (!NewName.empty() && !IsValidIdent(NewName)) throw EComponentError(SInvalidName, {NewName});
  if (FOwner) FOwner->CheckName(NewName, this);
  FName = NewName;
}

TComponent* TComponent::GetComponent(std::int32_t Index) const {
  if (Index < 0 || Index >= GetComponentCount()) throw EListError(SListIndexError, {Index});
  return FComponents[static_cast<std::size_t>(Index)];
}

std::int32_t TComponent::GetComponentIndex() const {
  if (!FOwner) return -1;
  const auto& List = FOwner->FComponents;
  return static_cast<std::int32_t>(std::find(List.begin(), List.end(), this) - List.begin());
}

void TComponent::SetComponentIndex(std::int32_t Value) {
  if (!FOwner) return;
  auto& List = FOwner->FComponents;
  if (Value < 0 || Value >= FOwner->GetComponentCount()) throw EListError(SListIndexError, {Value});
  const auto Cur = List.begin() + GetComponentIndex();
  const auto New = List.begin() + Value;
  if (Cur < New)
    std::rotate(Cur, Cur + 1, New + 1);
  else if (New < Cur)
    std::rotate(New, Cur, Cur + 1);
}

TComponent* TComponent::FindComponent(StringView AName) const {
  if (AName.empty()) return nullptr;
  for (TComponent* C : FComponents)
    if (SameText(C->FName, AName)) return C;
  return nullptr;
}

void TComponent::InsertComponent(TComponent* AComponent) {
  if (!AComponent) RaiseNullAccess(u"component to insert");
  if (AComponent->FOwner == this) return;
  if (IsWithin(this, AComponent)) throw EComponentError(SComponentOwnerCycle);
  CheckName(AComponent->FName, nullptr);
  if (AComponent->FOwner) AComponent->FOwner->RemoveComponent(AComponent);
  Insert(AComponent);
  Notification(AComponent, opInsert);
}

void TComponent::RemoveComponent(TComponent* AComponent) {
  if (!AComponent || AComponent->FOwner != this) return;
  Notification(AComponent, opRemove);
  Remove(AComponent);
}

void TComponent::DestroyComponents() {
  // Each component leaves this list in its own destructor, telling the rest of us.
  while (!FComponents.empty()) {
    delete FComponents.back();
  }
}

void TComponent::FreeNotification(TComponent* AComponent) {
  if (!AComponent) RaiseNullAccess(u"component to watch");
  if (AComponent == this) return;
  LinkFreeNotification(AComponent);
  AComponent->LinkFreeNotification(this);
}

void TComponent::RemoveFreeNotification(TComponent* AComponent) {
  if (!AComponent) return;
  UnlinkFreeNotification(AComponent);
  AComponent->UnlinkFreeNotification(this);
}

void TComponent::Notification(TComponent* AComponent, TOperation Operation) {
  // Walk down from the end, re-clamping, because a receiver may free or move components.
  for (std::size_t i = FComponents.size(); i-- > 0;) {
    FComponents[i]->Notification(AComponent, Operation);
    if (i > FComponents.size()) i = FComponents.size();
  }
}

void TComponent::Loading() { FComponentState |= csLoading; }

void TComponent::Loaded() { FComponentState &= ~static_cast<TComponentState>(csLoading); }

void TComponent::Destroying() {
  if (HasState(csDestroying)) return;
  FComponentState |= csDestroying;
  for (TComponent* C : FComponents) C->Destroying();
}

void TComponent::SetComponentState(TComponentStateFlag Flag, bool On) {
  if (On)
    FComponentState |= Flag;
  else
    FComponentState &= ~static_cast<TComponentState>(Flag);
}

void TComponent::CheckName(const String& NewName, const TComponent* Ignore) const {
  if (NewName.empty()) return;
  for (const TComponent* C : FComponents)
    if (C != Ignore && SameText(C->FName, NewName)) throw EComponentError(SDuplicateName, {NewName});
}

bool TComponent::IsWithin(const TComponent* C, const TComponent* Owner) {
  for (; C; C = C->FOwner)
    if (C == Owner) return true;
  return false;
}

void TComponent::Insert(TComponent* AComponent) {
  FComponents.push_back(AComponent);
  AComponent->FOwner = this;
}

void TComponent::Remove(TComponent* AComponent) {
  EraseValue(FComponents, AComponent);
  AComponent->FOwner = nullptr;
}

void TComponent::LinkFreeNotification(TComponent* AComponent) {
  if (std::find(FFreeNotifies.begin(), FFreeNotifies.end(), AComponent) == FFreeNotifies.end())
    FFreeNotifies.push_back(AComponent);
}

void TComponent::UnlinkFreeNotification(TComponent* AComponent) { EraseValue(FFreeNotifies, AComponent); }

// ---- Palette ------------------------------------------------------------------------------

namespace {
struct TPalette {
  std::mutex Lock;
  std::vector<std::pair<String, std::vector<TComponentClass>>> Pages;
};
TPalette& Palette() {
  static TPalette P;
  return P;
}
}  // namespace

void RegisterComponents(StringView Page, std::initializer_list<TComponentClass> Classes) {
  for (TComponentClass C : Classes)
    if (!C) RaiseNullAccess(u"component class");
  // The class registry first: a name clash there must leave the palette untouched.
  for (TComponentClass C : Classes) RegisterClass(*C);
  TPalette& P = Palette();
  std::lock_guard Guard(P.Lock);
  auto It = std::find_if(P.Pages.begin(), P.Pages.end(), [&](const auto& E) { return E.first == Page; });
  if (It == P.Pages.end()) It = P.Pages.insert(P.Pages.end(), {String(Page), {}});
  for (TComponentClass C : Classes)
    if (std::find(It->second.begin(), It->second.end(), C) == It->second.end()) It->second.push_back(C);
}

std::vector<TComponentClass> GetPaletteClasses(StringView Page) {
  TPalette& P = Palette();
  std::lock_guard Guard(P.Lock);
  for (const auto& E : P.Pages)
    if (E.first == Page) return E.second;
  return {};
}

std::vector<String> GetPalettePages() {
  TPalette& P = Palette();
  std::lock_guard Guard(P.Lock);
  std::vector<String> R;
  for (const auto& E : P.Pages) R.push_back(E.first);
  return R;
}

void UnRegisterComponent(TComponentClass AClass) {
  if (!AClass) return;
  {
    TPalette& P = Palette();
    std::lock_guard Guard(P.Lock);
    for (auto& E : P.Pages) EraseValue(E.second, AClass);
    std::erase_if(P.Pages, [](const auto& E) { return E.second.empty(); });
  }
  UnRegisterClass(*AClass);
}

}  // namespace kz
