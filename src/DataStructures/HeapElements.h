// Heap elements: the self-indexing entries of the heaps, holding an object or an interface
// reference and, for the numeric heaps, a priority.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>

#include "DataStructures/Messages.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Persistent.h"

namespace kz {

/// Which element sits at index 0: the smallest (hpIncreasing) or the largest (hpDecreasing).
enum THeapOrder : std::uint8_t { hpIncreasing, hpDecreasing };

/// Orders two objects of an object heap: negative, zero or positive.
using TCompareFunc = std::function<std::int32_t(TObject* Object1, TObject* Object2)>;
/// Orders two interface references of an interface heap: negative, zero or positive.
using TICompareFunc =
    std::function<std::int32_t(const TIntfPtr<IInterface>& Item1, const TIntfPtr<IInterface>& Item2)>;

class TCustomHeap;
class TIHeap;
namespace detail {
struct THeapAccess;
}

/// An entry of an object heap: the item (not owned) and the element's position in its heap,
/// which the heap keeps equal to the array index. The family has the virtual constructor
/// (Item) (THeapElementClass). A heap frees its elements when they leave it, so a pointer to
/// one is valid only while the element is in its heap.
/// An element knows the heap that made it and tells it when its item or priority is written,
/// so that the heap's copy of what orders it never differs from the element.
class THeapElement : public TPersistent {
 public:
  using TMeta = kz::TMetaClassOf<THeapElement, TObject*>;
  KZ_CLASS(THeapElement, TPersistent)
 public:
  explicit THeapElement(TObject* Item) : FItem(Item) {}

  /// Storage comes from the heap that makes the element (from the global heap otherwise),
  /// which lets a heap refuse an element that has left it without reading freed memory.
  /// Element classes must not replace these.
  static void* operator new(std::size_t Size);
  static void operator delete(void* Element) noexcept;

  /// From an element of this family: Item and Index. Other sources raise EConvertError.
  void Assign(TPersistent* Source) override;
  /// A new element of this element's own class with the same content.
  [[nodiscard]] std::unique_ptr<THeapElement> Clone() const;
  /// Item := null.
  virtual void Clear();

  TObject* GetItem() const { return FItem; }
  void SetItem(TObject* Value) {
    FItem = Value;
    if (FOwner) Changed(GetIndex());
  }
  /// The element's position in its heap.
  std::int32_t GetIndex() const;

 protected:
  bool Owned() const { return FOwner != nullptr; }
  /// Tells the heap holding this element (if any) that what orders it may have changed;
  /// Index is where the element was. Every writer of the item or a priority calls it.
  void Changed(std::int32_t Index);

 private:
  friend struct detail::THeapAccess;
  TObject* FItem;
  TCustomHeap* FOwner = nullptr;  // the heap that made and holds it; never copied
  std::int32_t FIndex = 0;        // last, so that a derived class's priority fills the padding
};

using THeapElementClass = const THeapElement::TMeta*;

/// An element with a signed 32-bit priority; a new one has DefaultPriority.
class TIntHeapElement : public THeapElement {
  KZ_CLASS(TIntHeapElement, THeapElement)
 public:
  static constexpr std::int32_t DefaultPriority = -2147483647;

  explicit TIntHeapElement(TObject* Item) : THeapElement(Item) {}
  TIntHeapElement(TObject* Item, std::int32_t Priority) : THeapElement(Item), FPriority(Priority) {}

  /// Copies the priority from a TIntHeapElement, then Item and Index as the base does.
  void Assign(TPersistent* Source) override;
  /// Item := null, priority := DefaultPriority.
  void Clear() override;
  void Clear(std::int32_t Priority);

  std::int32_t GetPriority() const { return FPriority; }
  /// Changing the priority of an element in a heap leaves the heap to ModifyPriority.
  void SetPriority(std::int32_t Value) {
    FPriority = Value;
    if (Owned()) Changed(GetIndex());
  }

 private:
  friend struct detail::THeapAccess;
  std::int32_t FPriority = DefaultPriority;
};

using TIntHeapElementClass = const THeapElement::TMeta*;

/// An element with a single-precision priority; a new one has the most negative finite
/// single.
class TFloatHeapElement : public THeapElement {
  KZ_CLASS(TFloatHeapElement, THeapElement)
 public:
  static constexpr float DefaultPriority = std::numeric_limits<float>::lowest();

  explicit TFloatHeapElement(TObject* Item) : THeapElement(Item) {}
  TFloatHeapElement(TObject* Item, float Priority) : THeapElement(Item), FPriority(Priority) {}

  /// Copies the priority from a TFloatHeapElement, then Item and Index as the base does.
  void Assign(TPersistent* Source) override;
  /// Item := null, priority := DefaultPriority.
  void Clear() override;
  void Clear(float Priority);

  float GetPriority() const { return FPriority; }
  /// Changing the priority of an element in a heap leaves the heap to ModifyPriority.
  void SetPriority(float Value) {
    FPriority = Value;
    if (Owned()) Changed(GetIndex());
  }

 private:
  friend struct detail::THeapAccess;
  float FPriority = DefaultPriority;
};

using TFloatHeapElementClass = const THeapElement::TMeta*;

/// An entry of an interface heap: it holds one counted reference to its item while it
/// lives. The family has the virtual constructor (Item) (TIHeapElementClass).
class TIHeapElement : public TPersistent {
 public:
  using TMeta = kz::TMetaClassOf<TIHeapElement, const TIntfPtr<IInterface>&>;
  KZ_CLASS(TIHeapElement, TPersistent)
 public:
  explicit TIHeapElement(const TIntfPtr<IInterface>& Item) : FItem(Item) {}

  /// Storage comes from the heap that makes the element (from the global heap otherwise),
  /// which lets a heap refuse an element that has left it without reading freed memory.
  /// Element classes must not replace these.
  static void* operator new(std::size_t Size);
  static void operator delete(void* Element) noexcept;

  /// From another TIHeapElement: Item and Index. Other sources raise EConvertError.
  void Assign(TPersistent* Source) override;
  [[nodiscard]] std::unique_ptr<TIHeapElement> Clone() const;
  /// Releases the item.
  virtual void Clear();

  const TIntfPtr<IInterface>& GetItem() const { return FItem; }
  void SetItem(TIntfPtr<IInterface> Value) { FItem = std::move(Value); }
  std::int32_t GetIndex() const { return FIndex; }

 private:
  friend struct detail::THeapAccess;
  TIntfPtr<IInterface> FItem;
  std::int32_t FIndex = 0;
};

using TIHeapElementClass = const TIHeapElement::TMeta*;

}  // namespace kz
