// Components: named persistent objects arranged in an ownership tree, with notifications of
// insertion and removal, and the palette registry that groups component classes by page.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "Runtime/Persistent.h"

namespace kz {

/// What a Notification reports about AComponent.
enum TOperation : std::uint8_t { opInsert, opRemove };

/// Component state flags, combined in a TComponentState.
enum TComponentStateFlag : std::uint32_t {
  csLoading = 1u << 0,     // between Loading and Loaded
  csReading = 1u << 1,     // a reader is filling the component's properties
  csWriting = 1u << 2,     // a writer is storing the component
  csDestroying = 1u << 3,  // the component (or its owner) is being destroyed
  csDesigning = 1u << 4,   // the component is being edited by a design tool
};
using TComponentState = std::uint32_t;

namespace Runtime {
KZ_RESOURCESTRING(SInvalidName, u"'%s' is not a valid component name")
KZ_RESOURCESTRING(SDuplicateName, u"A component named %s already exists")
KZ_RESOURCESTRING(SComponentOwnerCycle, u"A component cannot own itself or one of its owners")
}  // namespace Runtime

/// A named object in an ownership tree. The family has a virtual constructor taking the
/// owner: every component class declares a constructor `(TComponent* AOwner)` forwarding to
/// its parent's. A component built with an owner is owned by it (the owner frees it when it
/// is destroyed; release a pointer a metaclass Create hands back); built with null it is
/// owned by its creator. Destroying a component frees what it owns, tells its free-
/// notification links, then leaves its owner.
///
/// Notification(AComponent, Operation) reaches the owner and, through the base
/// implementation, every component it owns (recursively) when a component is inserted into
/// or removed from the owner, and reaches each free-notification link when AComponent is
/// destroyed. Overrides call the base first.
class TComponent : public TPersistent {
 public:
  using TMeta = TMetaClassOf<TComponent, TComponent*>;
  KZ_CLASS(TComponent, TPersistent)
 public:
  explicit TComponent(TComponent* AOwner);
  /// Runs while only this base is alive: a subclass that must hear of its own components'
  /// removal calls DestroyComponents in its destructor.
  ~TComponent() override;

  TComponent* GetOwner() override { return FOwner; }
  const String& GetName() const { return FName; }
  /// Empty, or an identifier (letter or underscore, then letters, digits, underscores)
  /// unique among the owner's components, compared case-insensitively. Raises
  /// EComponentError "'X' is not a valid component name" or "A component named X already
  /// exists".
  virtual void SetName(const String& NewName);
  String GetNamePath() override { return FName; }

  std::int32_t GetComponentCount() const { return static_cast<std::int32_t>(FComponents.size()); }
  /// The owned component at Index; raises EListError for a bad index.
  TComponent* GetComponent(std::int32_t Index) const;
  /// Position among the owner's components, -1 without an owner.
  std::int32_t GetComponentIndex() const;
  /// Moves this component among its owner's components; raises EListError out of range.
  void SetComponentIndex(std::int32_t Value);
  /// The owned component of that name (case-insensitive), or null. Empty names never match.
  TComponent* FindComponent(StringView AName) const;

  /// Takes AComponent over from its current owner (if any). Its name must be unique here;
  /// a component cannot come to own itself or one of its owners (EComponentError).
  void InsertComponent(TComponent* AComponent);
  /// Gives AComponent up (it is then owned by the caller); nothing when not owned here.
  void RemoveComponent(TComponent* AComponent);
  /// Frees every owned component, last first.
  void DestroyComponents();

  /// Links this component and AComponent both ways: each hears (opRemove) of the other's
  /// destruction, once, also when it hears of it through a common owner. Linking twice is
  /// harmless; null raises EAccessViolation.
  void FreeNotification(TComponent* AComponent);
  /// Drops the link both ways.
  void RemoveFreeNotification(TComponent* AComponent);

  virtual void Notification(TComponent* AComponent, TOperation Operation);
  /// Marks the component as loading (csLoading) before its stored form is read.
  virtual void Loading();
  /// Called after the stored form has been read; clears csLoading. Overrides call the base
  /// first.
  virtual void Loaded();
  /// Sets csDestroying on this component and everything it owns.
  void Destroying();

  TComponentState GetComponentState() const { return FComponentState; }
  bool HasState(TComponentStateFlag Flag) const { return (FComponentState & Flag) != 0; }
  /// Sets or clears a flag; for readers, writers and design tools (csReading, csWriting,
  /// csDesigning). csLoading and csDestroying have their own calls.
  void SetComponentState(TComponentStateFlag Flag, bool On);

  /// Free for the user; no behaviour depends on it.
  NativeInt GetTag() const { return FTag; }
  void SetTag(NativeInt Value) { FTag = Value; }

 private:
  void CheckName(const String& NewName, const TComponent* Ignore) const;
  /// True when C is Owner or lies, at any depth, among the components Owner owns.
  static bool IsWithin(const TComponent* C, const TComponent* Owner);
  void Insert(TComponent* AComponent);
  void Remove(TComponent* AComponent);
  void LinkFreeNotification(TComponent* AComponent);
  void UnlinkFreeNotification(TComponent* AComponent);

  TComponent* FOwner = nullptr;
  String FName;
  std::vector<TComponent*> FComponents;
  std::vector<TComponent*> FFreeNotifies;
  TComponentState FComponentState = 0;
  NativeInt FTag = 0;
};

using TComponentClass = const TComponent::TMeta*;

// The component palette: component classes grouped by page, in registration order.
// Thread-safe. Registering also registers each class in the class registry.
/// Adds the classes to the page; a class already on that page keeps its place. A null
/// class raises EAccessViolation.
void RegisterComponents(StringView Page, std::initializer_list<TComponentClass> Classes);
/// The page's classes in registration order (empty for an unknown page).
std::vector<TComponentClass> GetPaletteClasses(StringView Page);
/// The pages in the order of their first registration.
std::vector<String> GetPalettePages();
/// Removes AClass from every page (pages left empty disappear) and from the class registry.
void UnRegisterComponent(TComponentClass AClass);

}  // namespace kz
