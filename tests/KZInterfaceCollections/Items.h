// Counted interfaced items shared by the interface collection tests.
#pragma once

#include <atomic>

#include "Runtime/Interfaces.h"

class TItem : public kz::TInterfacedObject {
  KZ_CLASS(TItem, kz::TInterfacedObject)
 public:
  explicit TItem(int Id = 0) : Id(Id) { ++Alive; }
  ~TItem() override { --Alive; }
  int Id;
  static inline std::atomic<int> Alive{0};
};

inline kz::TIntfPtr<kz::IInterface> NewItem(int Id = 0) { return kz::TIntfPtr<kz::IInterface>(new TItem(Id)); }
inline int IdOf(const kz::TIntfPtr<kz::IInterface>& P) { return P ? dynamic_cast<TItem*>(P.get())->Id : -1; }
