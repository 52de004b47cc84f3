#include "Runtime/Interfaces.h"

namespace kz {

using namespace Runtime;

std::int32_t TInterfacedObject::QueryInterface(const TGUID& IID, void** Obj) {
  if (GetInterface(IID, Obj)) {
    _AddRef();
    return S_OK;
  }
  *Obj = nullptr;
  return E_NOINTERFACE;
}

std::int32_t TInterfacedObject::_AddRef() { return FRefCount.fetch_add(1, std::memory_order_relaxed) + 1; }

std::int32_t TInterfacedObject::_Release() {
  const std::int32_t R = FRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (R == 0) delete this;
  return R;
}

bool TInterfacedObject::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IInterface::IID) {
    *Obj = static_cast<IInterface*>(this);
    return true;
  }
  return inherited::GetInterface(IID, Obj);
}

bool Supports(IInterface* Instance, const TGUID& IID) {
  if (!Instance) return false;
  void* Obj = nullptr;
  // Asking the object directly adds no reference, so a fresh object at count 0 survives.
  if (auto* Object = dynamic_cast<TObject*>(Instance)) return Object->GetInterface(IID, &Obj);
  if (Instance->QueryInterface(IID, &Obj) != S_OK) return false;
  Instance->_Release();
  return true;
}

bool Supports(TObject* Instance, const TGUID& IID) {
  void* Obj = nullptr;
  return Instance && Instance->GetInterface(IID, &Obj);
}

}  // namespace kz
