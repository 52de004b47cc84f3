// Two adapters: a separate reference counter that an object hands out as its interface
// reference without tying its own lifetime to the count, and a component that passes
// insertion and removal notifications on to an event.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "Runtime/Components.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Object.h"

namespace kz {

/// A reference counter answering interface queries through its owner. Created with new at
/// count 0; it deletes itself when a release brings the count to 0, whatever
/// FreeOnRelease says, and never frees the owner (which must outlive the queries). Counting
/// is atomic; the owner's GetInterface is called without a lock.
class TRefCount : public TObject, public virtual IInterface {
  KZ_CLASS(TRefCount, TObject)
 public:
  explicit TRefCount(TObject* AOwner);
  ~TRefCount() override;

  /// Without an owner: E_NOINTERFACE for every identifier, IInterface included. Otherwise
  /// the owner's interface IID with a reference added through the owner's own counting, or
  /// E_NOINTERFACE.
  std::int32_t QueryInterface(const TGUID& IID, void** Obj) override;
  /// The new count.
  std::int32_t _AddRef() override;
  /// The new count; at 0 the counter has deleted itself.
  std::int32_t _Release() override;

  TObject* GetOwner() const { return FOwner; }
  std::int32_t GetRefCount() const { return FRefCount.load(std::memory_order_relaxed); }
  /// True after construction; kept for hosts, the counter itself does not consult it.
  bool GetFreeOnRelease() const { return FFreeOnRelease; }
  void SetFreeOnRelease(bool Value) { FFreeOnRelease = Value; }

 private:
  bool FFreeOnRelease = true;
  std::atomic<std::int32_t> FRefCount{0};
  TObject* FOwner;
};

/// Receives what a TComponentNexus hears.
using TNexusNotifyEvent = std::function<void(TComponent* AComponent, TOperation Operation)>;

/// A component that lets a non-component object watch components: link it to them with
/// FreeNotification (or give it an owner) and set OnNotification.
class TComponentNexus : public TComponent {
  KZ_CLASS(TComponentNexus, TComponent)
 public:
  explicit TComponentNexus(TComponent* AOwner);
  /// The base notification first, then OnNotification when assigned.
  void Notification(TComponent* AComponent, TOperation Operation) override;
  const TNexusNotifyEvent& GetOnNotification() const { return FOnNotification; }
  void SetOnNotification(TNexusNotifyEvent Handler) { FOnNotification = std::move(Handler); }

 private:
  TNexusNotifyEvent FOnNotification;
};

}  // namespace kz
