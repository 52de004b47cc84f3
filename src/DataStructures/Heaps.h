// Binary heaps of self-indexing elements: ordered by a comparison of the stored objects
// (THeap) or interface references (TIHeap), or by an integer or single-precision priority
// held in the element (TIntHeap, TFloatHeap).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "DataStructures/HeapElements.h"

namespace kz {

namespace detail {
class TElementPool;
}

/// The common base of the object and numeric heaps: an array of owned elements in which every
/// parent is not after its children in the heap order and every element's Index is its
/// position. Add, Delete(0) and ModifyPriority are O(log n); elements are freed when they
/// leave (Delete, Clear, destruction), items never; their storage is the heap's own and is
/// reused (returned when the heap is emptied by Clear or destroyed). Index arguments out of range raise
/// EListError "List index out of bounds (%d)"; an element that is not in this heap (one that
/// has left it, or another heap's) raises EInvalidOperation "Element is not in this heap".
/// A caller's comparison that changes its own heap (adds, deletes, clears, sifts, assigns)
/// makes that change raise EInvalidOperation "Heap changed by its own comparison".
/// The family has a virtual constructor without arguments.
class TCustomHeap : public TPersistent {
 public:
  using TMeta = kz::TMetaClassOf<TCustomHeap>;
  KZ_CLASS(TCustomHeap, TPersistent)
 protected:
  /// A copy of what orders an element, kept beside it so that sifts compare contiguous
  /// memory: the item (object heaps) or the priority (numeric heaps). The element stays the
  /// truth; the heap rewrites the copy whenever the element's item or priority changes.
  union TKey {
    TObject* Item;
    std::int32_t Int;
    float Float;
  };
  struct TSlot {
    TKey Key;
    THeapElement* Element;
  };
 public:
  /// Add makes THeapElement elements.
  TCustomHeap();
  /// Add makes ElementClass elements; null raises EAccessViolation.
  explicit TCustomHeap(THeapElementClass ElementClass);
  ~TCustomHeap() override;

  /// From another TCustomHeap: this heap is cleared, takes Source's order and a clone of
  /// each of its elements at the same position. Assigning a heap to itself empties it.
  /// Other sources raise EConvertError, and a numeric heap refuses elements without its
  /// priority (EInvalidCast). Nothing changes when the copy fails.
  void Assign(TPersistent* Source) override;
  virtual std::int32_t GetCount() const { return static_cast<std::int32_t>(FHeap.size()); }
  [[nodiscard]] virtual TObject* GetItem(std::int32_t Index) const;
  [[nodiscard]] THeapElement* GetElement(std::int32_t Index) const;
  THeapOrder GetOrder() const { return FOrder; }
  /// Stores the new order and sifts up only the last element; the rest of the array is not
  /// re-heaped (meant for empty or freshly built heaps).
  virtual void SetOrder(THeapOrder Value);
  THeapElementClass GetElementClass() const { return FElementClass; }

  /// Moves the element at Index up while it is strictly before its parent; answers it.
  virtual THeapElement* PushUp(std::int32_t Index) = 0;
  /// Moves the element at Index down while a child is strictly before it; answers the
  /// element finally at the starting position's end point.
  virtual THeapElement* PushDown(std::int32_t Index) = 0;
  /// A new element of the element class holding Item, sifted into place.
  virtual THeapElement* Add(TObject* Item);
  /// The position of Item found by the heap's pruned search, or -1.
  [[nodiscard]] virtual std::int32_t IndexOf(TObject* Item) const = 0;
  /// Element's position (its Index).
  [[nodiscard]] std::int32_t IndexOf(const THeapElement* Element) const { return CheckElement(Element); }
  /// Frees every element.
  virtual void Clear();
  /// Removes the element at Index and answers its item. Only the last element is moved
  /// into the gap; see each heap for how far it is sifted.
  virtual TObject* Delete(std::int32_t Index) = 0;
  TObject* Delete(const THeapElement* Element) { return Delete(CheckElement(Element)); }
  /// Restores the heap after the caller changed what orders Element; answers its new index.
  virtual std::int32_t ModifyPriority(THeapElement* Element) = 0;

 protected:
  /// A new element of the element class holding Item, in this heap's storage.
  std::unique_ptr<THeapElement> MakeElement(TObject* Item);
  /// Appends Element (made by MakeElement) under Key and sifts it up. When the sift raises
  /// the element is taken out and freed again before the error goes on.
  THeapElement* Insert(std::unique_ptr<THeapElement> Element, TKey Key);
  /// Steps 1 to 4 of Delete: takes the element at Index out (freeing it), moves the last
  /// element into the gap and sifts down from the top when Index is 0. Answers the item.
  TObject* Remove(std::int32_t Index);
  /// Element's index; raises when the element is not in this heap.
  std::int32_t CheckElement(const THeapElement* Element) const;
  void CheckIndex(std::int32_t Index) const;
  /// The class every element must derive from (null: any); Assign refuses other sources.
  virtual const TMetaClass* RequiredElementClass() const { return nullptr; }
  /// The number of elements, whatever a descendant's GetCount counts.
  std::int32_t HeapCount() const { return static_cast<std::int32_t>(FHeap.size()); }
  /// Raises while a caller's comparison of this heap runs (FComparing).
  void CheckNotComparing() const;

  /// The key this heap keeps for Element (the item; numeric heaps the priority).
  virtual TKey KeyOf(const THeapElement* Element) const;
  /// Rewrites the key of Element when it sits at Index.
  void ElementChanged(const THeapElement* Element, std::int32_t Index);

  // What the heap knows of its own order, for the object heap's bottom-up sift. FOrdered:
  // no parent is after its child, except perhaps FOut (when set), which is then in place for
  // some key it could hold (its key before a write, or the key of the element it replaced),
  // so that one proper sift of it restores the whole heap. Every path that may break more
  // clears FOrdered; it is set again only when at most one element is left, by a proper
  // sift of FOut (Settle), or by Clear. Only heaps that TrackOrder keep it; the numeric heaps
  // keep the plain sift, which measured faster for them, and stay unordered.

  /// Element was written or moved into a gap: it becomes the one out of place, or the heap
  /// unordered.
  void OutOfPlace(const THeapElement* Element);
  void TrackOrder() { FTracksOrder = FOrdered = true; }
  void Unorder() {
    FOrdered = false;
    FOut = nullptr;
  }
  /// Ordered again when at most one element is left.
  void OrderIfSmall();
  /// Whether a sift of the element at Index may go from the bottom; a sift of another element
  /// than FOut gives up what is known.
  bool SiftFromBottom(std::int32_t Index);
  /// After a sift of Element that restores the heap when only Element was out of place.
  void Settle(const THeapElement* Element) {
    if (FSifted && FOrdered && FOut == Element) FOut = nullptr;
  }
  /// Takes up the source heap's knowledge when both order by the same key.
  void CopyOrdered(const TCustomHeap& Other);

  // Lazy Index fields. The sifts of a numeric or object heap may leave Index unwritten (a
  // random store per level); the heap then knows its indexes are stale and rewrites all of
  // them, O(n), before anything reads one (the element's GetIndex asks its heap). After a
  // rewrite it writes them for as many operations as it holds elements before it may go
  // stale again, so alternating reads and changes stay O(1) amortized.

  /// Whether the operation starting now must write the Index of what it moves; when it
  /// answers false the heap is stale from here on.
  bool WriteIndexes();
  /// Makes every Index true again.
  void SyncIndexes() const {
    if (FStale) RewriteIndexes();
  }
  /// An element's Assign wrote an Index that is not its position: it must read so until the
  /// element moves, so the heap writes every Index at once until it is emptied.
  void PinIndexes() { FPinned = true; }
  /// The heap was emptied: nothing is stale or pinned.
  void ForgetIndexes();

  std::vector<TSlot> FHeap;
  THeapOrder FOrder = hpIncreasing;
  THeapElementClass FElementClass;
  // Set while a caller's comparison runs: a sift holds positions that a change would void.
  mutable bool FComparing = false;
  bool FTracksOrder = false;
  bool FOrdered = false;
  // Set by this library's PushUp and PushDown, so that an override that does not sift leaves
  // the heap unordered.
  bool FSifted = false;
  const THeapElement* FOut = nullptr;
  // Set by heaps whose sifts may leave Index fields stale.
  bool FLazyIndexes = false;
  bool FPinned = false;
  mutable bool FStale = false;
  mutable std::size_t FWritesLeft = 0;  // operations to run with Index writes
  // What MakeElement builds for FMakeFor: one of the library's classes in place, or any
  // other through its metaclass.
  enum class TMakeKind : std::uint8_t { ByClass, Plain, Int, Float };
  THeapElementClass FMakeFor = nullptr;
  TMakeKind FMake = TMakeKind::ByClass;

 private:
  friend class THeapElement;
  void RewriteIndexes() const;

  // The storage of the elements, made on first use; a pointer is checked against it before
  // it is read.
  std::unique_ptr<detail::TElementPool> FPool;
};

/// A heap ordered by a caller's comparison of the items. Equal items never swap: a later
/// one stays below. Children that compare equal yield the right one. An interior Delete
/// only moves the last element up when it is strictly before its parent and never sifts it
/// down, so the heap property may stay broken below it. IndexOf(Item) searches in pre-order,
/// skipping subtrees whose root is after Item. A null comparison raises EAccessViolation
/// as soon as one is needed.
/// While the heap property is known to hold below the element sifted (not after an
/// interior Delete that left it broken, SetOrder, an item written without ModifyPriority,
/// or a comparison that raised), PushDown and so Delete(0) go from the bottom: the hole
/// descends to a leaf with one comparison per level and the element climbs back. For a
/// consistent comparison the moves, positions and Index fields are those of the plain sift;
/// how many comparisons are made, and in which order, is not promised. A comparison that
/// raises leaves what the plain sift leaves. The comparison must stay consistent while items
/// are in the heap: after changing what it reads of an item, call ModifyPriority for that
/// item before anything else sifts. Index fields are written as lazily as TIntHeap's; what
/// the comparison reads of one while a sift runs is not promised.
class THeap : public TCustomHeap {
  KZ_CLASS(THeap, TCustomHeap)
 public:
  THeap() { Init(); }
  explicit THeap(THeapElementClass ElementClass) : TCustomHeap(ElementClass) { Init(); }
  explicit THeap(TCompareFunc CompareFunc)
      : FCompare(std::move(CompareFunc)), FPlainCompare(PlainCompare(FCompare)) {
    Init();
  }

  /// As TCustomHeap::Assign; also takes the comparison of a THeap source.
  void Assign(TPersistent* Source) override;
  const TCompareFunc& GetCompare() const { return FCompare; }

  THeapElement* PushUp(std::int32_t Index) override;
  THeapElement* PushDown(std::int32_t Index) override;
  using TCustomHeap::IndexOf;
  [[nodiscard]] std::int32_t IndexOf(TObject* Item) const override;
  using TCustomHeap::Delete;
  TObject* Delete(std::int32_t Index) override;
  /// PushUp when the element is strictly before its parent, PushDown otherwise.
  std::int32_t ModifyPriority(THeapElement* Element) override;
  std::int32_t ModifyPriority(std::int32_t Index);

 private:
  void Init() {
    TrackOrder();
    FLazyIndexes = true;
  }
  std::int32_t Compare(TObject* A, TObject* B) const;
  void CheckCompare() const;
  template <class F>
  decltype(auto) WithCompare(F&& Run) const;
  using TPlainCompare = std::int32_t (*)(TObject*, TObject*);
  /// The plain function Compare holds, or null (no comparison, or any other callable).
  static TPlainCompare PlainCompare(const TCompareFunc& Compare);
  TCompareFunc FCompare;
  TPlainCompare FPlainCompare = nullptr;  // looked up once, not on every sift
};

/// A heap ordered by the elements' 32-bit priorities (elements are TIntHeapElement or
/// derived). Children of equal priority yield the left one. An interior Delete never
/// re-sifts. IndexOf searches in pre-order and descends only below elements strictly before
/// the wanted priority, so an element below an equal priority is not found.
/// Sifts may leave the moved elements' Index unwritten: the first read of an Index after
/// them rewrites all (O(n)), and reads between changes cost O(1) amortized.
class TIntHeap : public TCustomHeap {
  KZ_CLASS(TIntHeap, TCustomHeap)
 public:
  TIntHeap();
  /// ElementClass must be TIntHeapElement or derived (EInvalidCast otherwise).
  explicit TIntHeap(TIntHeapElementClass ElementClass);

  THeapElement* PushUp(std::int32_t Index) override;
  THeapElement* PushDown(std::int32_t Index) override;
  using TCustomHeap::Add;
  TIntHeapElement* Add(TObject* Item, std::int32_t Priority);
  using TCustomHeap::IndexOf;
  /// IndexOf(Item, 0): finds Item only at priority 0.
  [[nodiscard]] std::int32_t IndexOf(TObject* Item) const override;
  [[nodiscard]] std::int32_t IndexOf(TObject* Item, std::int32_t Priority) const;
  [[nodiscard]] std::int32_t IndexOf(std::int32_t Priority) const;
  using TCustomHeap::Delete;
  TObject* Delete(std::int32_t Index) override;
  /// After the caller changed Element's priority. The tests are the reverse of the form
  /// with a new priority: PushUp when the priority is not before the parent's, PushDown
  /// otherwise, so an element moved toward the root is not raised by this form.
  std::int32_t ModifyPriority(THeapElement* Element) override;
  /// Stores NewPriority, then PushUp when it is strictly before the parent's, else PushDown.
  std::int32_t ModifyPriority(THeapElement* Element, std::int32_t NewPriority);
  [[nodiscard]] std::int32_t GetPriority(std::int32_t Index) const;

 protected:
  const TMetaClass* RequiredElementClass() const override;
  TKey KeyOf(const THeapElement* Element) const override;
};

/// TIntHeap with single-precision priorities (elements are TFloatHeapElement or derived),
/// Index fields written as lazily.
class TFloatHeap : public TCustomHeap {
  KZ_CLASS(TFloatHeap, TCustomHeap)
 public:
  TFloatHeap();
  /// ElementClass must be TFloatHeapElement or derived (EInvalidCast otherwise).
  explicit TFloatHeap(TFloatHeapElementClass ElementClass);

  THeapElement* PushUp(std::int32_t Index) override;
  THeapElement* PushDown(std::int32_t Index) override;
  using TCustomHeap::Add;
  TFloatHeapElement* Add(TObject* Item, float Priority);
  using TCustomHeap::IndexOf;
  /// IndexOf(Item, 0): finds Item only at priority 0.
  [[nodiscard]] std::int32_t IndexOf(TObject* Item) const override;
  [[nodiscard]] std::int32_t IndexOf(TObject* Item, float Priority) const;
  [[nodiscard]] std::int32_t IndexOf(float Priority) const;
  using TCustomHeap::Delete;
  TObject* Delete(std::int32_t Index) override;
  /// As TIntHeap::ModifyPriority(Element).
  std::int32_t ModifyPriority(THeapElement* Element) override;
  std::int32_t ModifyPriority(THeapElement* Element, float NewPriority);
  [[nodiscard]] float GetPriority(std::int32_t Index) const;

 protected:
  const TMetaClass* RequiredElementClass() const override;
  TKey KeyOf(const THeapElement* Element) const override;
};

/// THeap for counted interface references: each element holds one reference to its item
/// while it is in the heap. Same rules, errors and quirks as THeap (a comparison that
/// changes its own heap included).
class TIHeap : public TPersistent {
  KZ_CLASS(TIHeap, TPersistent)
 public:
  /// Add makes ElementClass elements (TIHeapElement by default); null raises
  /// EAccessViolation.
  explicit TIHeap(TIHeapElementClass ElementClass = &TIHeapElement::ClassInfo());
  explicit TIHeap(TICompareFunc CompareFunc);
  ~TIHeap() override;

  /// From another TIHeap: order, comparison and a clone of each element at the same
  /// position. Assigning a heap to itself empties it. Other sources raise EConvertError.
  void Assign(TPersistent* Source) override;
  std::int32_t GetCount() const { return static_cast<std::int32_t>(FHeap.size()); }
  [[nodiscard]] TIntfPtr<IInterface> GetItem(std::int32_t Index) const;
  [[nodiscard]] TIHeapElement* GetElement(std::int32_t Index) const;
  THeapOrder GetOrder() const { return FOrder; }
  /// As TCustomHeap::SetOrder.
  void SetOrder(THeapOrder Value);
  TIHeapElementClass GetElementClass() const { return FElementClass; }
  const TICompareFunc& GetCompare() const { return FCompare; }

  TIHeapElement* PushUp(std::int32_t Index);
  TIHeapElement* PushDown(std::int32_t Index);
  TIHeapElement* Add(const TIntfPtr<IInterface>& Item);
  void Clear();
  TIntfPtr<IInterface> Delete(std::int32_t Index);
  TIntfPtr<IInterface> Delete(const TIHeapElement* Element) { return Delete(CheckElement(Element)); }
  /// Pre-order search for the same object, skipping subtrees whose root is after Item.
  [[nodiscard]] std::int32_t IndexOf(const TIntfPtr<IInterface>& Item) const;
  [[nodiscard]] std::int32_t IndexOf(const TIHeapElement* Element) const { return CheckElement(Element); }
  std::int32_t ModifyPriority(TIHeapElement* Element);
  std::int32_t ModifyPriority(std::int32_t Index);

 private:
  std::int32_t Compare(const TIntfPtr<IInterface>& A, const TIntfPtr<IInterface>& B) const;
  void CheckCompare() const;
  void CheckNotComparing() const;
  std::int32_t CheckElement(const TIHeapElement* Element) const;
  void CheckIndex(std::int32_t Index) const;

  THeapOrder FOrder = hpIncreasing;
  std::vector<TIHeapElement*> FHeap;
  TIHeapElementClass FElementClass;
  TICompareFunc FCompare;
  mutable bool FComparing = false;  // as TCustomHeap's
  std::unique_ptr<detail::TElementPool> FPool;
};

}  // namespace kz
