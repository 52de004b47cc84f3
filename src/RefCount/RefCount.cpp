#include "RefCount/RefCount.h"

namespace kz {

using namespace Runtime;

TRefCount::TRefCount(TObject* AOwner) : FOwner(AOwner) {}

TRefCount::~TRefCount() { FOwner = nullptr; }

std::int32_t TRefCount::QueryInterface(const TGUID& IID, void** Obj) {
  *Obj = nullptr;
  void* Found = nullptr;
  void* Base = nullptr;
  // GetInterface adds no reference; the one a query promises is taken on the owner's own
  // count, through its base interface, because that is what the caller will release.
  if (!FOwner || !FOwner->GetInterface(IID, &Found) || !FOwner->GetInterface(IInterface::IID, &Base))
    return E_NOINTERFACE;
  static_cast<IInterface*>(Base)->_AddRef();
  *Obj = Found;
  return S_OK;
}

std::int32_t TRefCount::_AddRef() { return FRefCount.fetch_add(1, std::memory_order_relaxed) + 1; }

std::int32_t TRefCount::_Release() {
  const std::int32_t R = FRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (R == 0) delete this;
  return R;
}

TComponentNexus::TComponentNexus(TComponent* AOwner) : TComponent(AOwner) {}

void TComponentNexus::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (FOnNotification) FOnNotification(AComponent, Operation);
}

}  // namespace kz
