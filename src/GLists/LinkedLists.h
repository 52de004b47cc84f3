// Singly and doubly linked lists of object references sharing one cursor for indexed access,
// walks and searches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "GLists/NodePool.h"
#include "GLists/Nodes.h"
#include "Runtime/Persistent.h"
#include "Runtime/UpdateCounter.h"

namespace kz {

class TList;
class TGCustomLinkedListEnumerator;
namespace detail {
template <class TNode>
class TFreshNode;
struct TOwnRecord;
}

/// Base of every linked list: a chain of nodes from Head to Tail. The list owns its nodes
/// (never their items) and frees them on Delete, Clear and destruction. Every structural
/// change calls Change, which forgets the cursor index and fires OnChange outside updates.
/// Errors are EListError with the unit's messages; a failed check in Insert or Delete
/// leaves the list unchanged. An OnChange handler that frees the node being added (by a
/// Clear, say) before its contents are stored makes the adding call raise SNodeFreed
/// instead of writing to it.
///
/// The cursor (FLastAccessedIndex, FLastAccessedNode) is shared: GetNode moves it, Next
/// walks on from it, IndexOfItem leaves it behind the match. An ascending GetNode/GetItem
/// loop is one step per call; anything else walks from the head (O(n)). Delete, Insert
/// before a node and SetNode search the predecessor from the head (O(n)); appending and
/// removing the head are O(1).
///
/// Nodes the chain no longer reaches but something may still read stay alive, owned by the
/// list, until Clear or destruction: see SetNode here and in TGDoublyLinkedList, and
/// TGPriorityStringQueue::Insert. Clear also forgets the cursor node, so no walk continues
/// into freed nodes. Walks that meet a missing link raise EAccessViolation; links that run
/// on past every node the list owns (a cycle made through SetNext) raise "Node links do not
/// reach the end of the list".
///
/// Ownership does not follow the links: the list frees the nodes of its own store that it
/// owns by a pass over the store, and nodes from elsewhere (made with new, or by another
/// list) in the order it took them. Nodes must come from new. Clear and destruction take
/// time in proportion to the slots the store has carved since it was last emptied.
class TGCustomLinkedList : public TPersistent {
 public:
  using TMeta = TMetaClassOf<TGCustomLinkedList>;
  KZ_CLASS(TGCustomLinkedList, TPersistent)
 public:
  TGCustomLinkedList() = default;
  /// Silences OnChange, then frees every node it owns. Enumerators still alive raise
  /// EAccessViolation when used afterwards.
  ~TGCustomLinkedList() override;

  /// From a linked list: Clear, then copies of its nodes through AddLinkedList; from a
  /// TList: Clear, then Add of each entry. One notification. Anything else raises the
  /// assign error.
  void Assign(TPersistent* Source) override;
  void Assign(TList* Source);
  void Assign(std::nullptr_t) { Assign(static_cast<TPersistent*>(nullptr)); }

  /// The node at Index (0..Count-1, else "Invalid Index"); moves the cursor there.
  [[nodiscard]] virtual TSQNode* GetNode(std::int32_t Index) const;
  /// Replaces the node at Index by Value, which the list adopts. The replaced node is not
  /// freed but kept, out of the chain, until Clear: the tail reference stays on it when it
  /// was the last node (later appends hang behind it, counted but out of the chain from
  /// Head) and the cursor stays on it, so a walk goes on with its old successor.
  virtual void SetNode(std::int32_t Index, TSQNode* Value);
  /// Appends copies (NewNode + Assign) of LinkedList's nodes, as far as its Count at the
  /// start, through AddNode, in one update. Null raises EAccessViolation.
  virtual void AddLinkedList(TGCustomLinkedList* LinkedList);
  virtual void BeginUpdate();
  /// Frees every node; Count drops by one per node of the chain from Head. Notifies, also
  /// when empty. Returns the node store's memory when none of its nodes is alive.
  virtual void Clear();
  /// Closes an update; at depth 0 (also for an EndUpdate without BeginUpdate) calls Change.
  virtual void EndUpdate();
  /// Links ANode where this list adds (here: Insert(ANode, null)).
  virtual TSQNode* AddNode(TSQNode* ANode);
  /// Unlinks and frees ANode (not its item), then resets the walk. Null raises "Invalid
  /// Index"; then as Find.
  virtual void Delete(TSQNode* ANode);
  /// The node in front of ANode (null for the head). Raises "List is empty", then "Invalid
  /// Index" for null, then "Cannot find node within list".
  [[nodiscard]] virtual TSQNode* Find(TSQNode* ANode) const;
  /// Links ANode in front of BeforeNode, or at the end when BeforeNode is null, and adopts
  /// it; answers ANode. ANode must be a free node (null raises EAccessViolation, a node of
  /// a list "Node already belongs to a list"); after such an error the caller still owns
  /// it. An OnChange handler that raises does so after the adoption: the list keeps it.
  virtual TSQNode* Insert(TSQNode* ANode, TSQNode* BeforeNode);
  /// A fresh node of this list's node class. Its memory comes from the list's node store
  /// (freed slots are reused; the store goes with the list, or with the last of its nodes
  /// still alive elsewhere), so free it on the thread that uses the list.
  [[nodiscard]] virtual std::unique_ptr<TSQNode> NewNode() const;

  /// A new node holding AnObject, added by AddNode.
  TSQNode* Add(TObject* AnObject);
  /// The first node holding AnObject (identity), or null; the cursor stays.
  [[nodiscard]] TSQNode* FindItem(const TObject* AnObject) const;
  /// Zero-based index of the first node holding AnObject, or -1. Walks with the cursor.
  [[nodiscard]] std::int32_t IndexOfItem(const TObject* AnObject) const;
  [[nodiscard]] TObject* GetItem(std::int32_t Index) const {
    // The step of an ascending loop, inline when GetNode is this library's base one; any
    // other case (and every error) is GetNode's.
    if (Index > 0 && Index - 1 == FLastAccessedIndex && Index < FCount && FLastAccessedNode)
      if (TSQNode* N = FLastAccessedNode->FNext; N && Exact() >= TExact::List) {
        FLastAccessedIndex = Index;
        FLastAccessedNode = N;
        return N->FItem;
      }
    return GetNode(Index)->GetItem();
  }
  void SetItem(std::int32_t Index, TObject* Value) { GetNode(Index)->SetItem(Value); }

  /// Starts a walk at the head.
  void Reset() const;
  /// The cursor node; then the cursor moves on. "End of list" when the cursor is null.
  TSQNode* Next() const;
  /// True when the cursor node is null.
  [[nodiscard]] bool EndOfList() const { return FLastAccessedNode == nullptr; }

  [[nodiscard]] std::int32_t GetCount() const { return FCount; }
  [[nodiscard]] bool IsEmpty() const { return FCount == 0; }
  [[nodiscard]] bool GetEmpty() const { return IsEmpty(); }
  [[nodiscard]] TSQNode* GetHead() const { return FHead; }
  [[nodiscard]] TSQNode* GetTail() const { return FTail; }
  const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Handler) {
    FOnChange = std::move(Handler);
    NoteInline();
  }

  /// A fresh enumerator of the nodes, independent of the cursor.
  [[nodiscard]] std::unique_ptr<TGCustomLinkedListEnumerator> GetEnumerator();

 protected:
  /// Push of an exact TGQueue (AtHead false) or TGStack (true) without its virtual calls:
  /// a TSQNode from the store, linked as Insert would, Change, then the item. In line while
  /// no OnChange handler could see the empty node.
  TSQNode* PushNewNode(TObject* Value, bool AtHead) {
    if (FOnChange || !FPool) return PushNewNodeSlow(Value, AtHead);
    return PushInline(Value, AtHead);
  }
  /// PushNewNode once InlineKind said so.
  TSQNode* PushInline(TObject* Value, bool AtHead) {
    TSQNode* Before = AtHead ? FHead : nullptr;
    if (Before && FCount == 0) return PushNewNodeSlow(Value, AtHead);
    void* Memory = detail::TNodePool::Allocate(sizeof(TSQNode), FPool, detail::OwnStore | detail::OwnPlain);
    auto* Node = ::new (Memory) TSQNode();
    Node->FItem = Value;
    ++FOwnedCount;
    Splice(Node, Before, nullptr);
    FLastAccessedIndex = -1;
    return Node;
  }
  /// Whether Top and Delete(Head) may go in line once InlineKind said so: the head is a
  /// plain TSQNode of the list's own store.
  bool CanPopInline() const {
    const TSQNode* N = FHead;
    return FCount != 0 && N &&
           detail::TNodePool::Word(N) ==
               (reinterpret_cast<std::uintptr_t>(FPool) | detail::OwnStore | detail::OwnPlain);
  }
  /// Top, then Delete(Head), once CanPopInline said so.
  TObject* PopInline() {
    TSQNode* N = FHead;
    TObject* Result = N->FItem;
    FHead = N->FNext;
    if (N == FTail) FTail = nullptr;
    --FOwnedCount;
    // A plain node's destructors do nothing, so its slot goes straight back to the store.
    FPool->FreeHeld(N, sizeof(TSQNode));
    --FCount;
    FLastAccessedNode = FHead;
    // Change, with no handler to call.
    FLastAccessedIndex = -1;
    return Result;
  }
  /// Delete(FHead) without its virtual calls, for a list whose Delete, Find and Change are
  /// the base's; the caller has checked that Count and Head are not zero.
  void DeleteHead();
  /// Which class of this library the object is exactly; Other for classes derived elsewhere
  /// and for those whose GetNode differs from the base's. Lets hot paths skip virtual calls
  /// whose targets are then known.
  enum class TExact : std::int8_t { Unknown, Other, List, Queue, Stack };
  TExact Exact() const { return FExact != TExact::Unknown ? FExact : FindExact(); }
  /// The in-line push and pop's one test: Queue or Stack while this is an exact TGQueue or
  /// TGStack that has its store, no OnChange handler, no watcher and no node being added
  /// (once Exact() has been asked), else Unknown.
  TExact InlineKind() const { return FInline; }
  /// Forgets the cursor index (always), then fires OnChange unless inside an update.
  virtual void Change();
  /// What this class's Change does, for callers that know Change is not overridden.
  void Changed() {
    FLastAccessedIndex = -1;
    if (FOnChange && !FUpdateCount.Updating()) FOnChange(this);
  }
  /// Insert's linking, after its checks: Prev is the node in front of BeforeNode (null for
  /// the head or when BeforeNode is null). No notification.
  void LinkNode(TSQNode* ANode, TSQNode* BeforeNode, TSQNode* Prev) noexcept {
    Splice(ANode, BeforeNode, Prev);
    Adopt(ANode);
  }
  /// LinkNode without the adoption.
  void Splice(TSQNode* ANode, TSQNode* BeforeNode, TSQNode* Prev) noexcept {
    if (!BeforeNode) {
      if (!FTail)
        FHead = ANode;
      else
        FTail->FNext = ANode;
      FTail = ANode;
      FLastAccessedIndex = FCount;
    } else {
      if (BeforeNode == FLastAccessedNode) ++FLastAccessedIndex;
      if (!Prev)
        FHead = ANode;
      else
        Prev->FNext = ANode;
      ANode->FNext = BeforeNode;
    }
    FLastAccessedNode = ANode;
    ++FCount;
  }
  /// Delete's unlinking and freeing, after its checks; leaves the cursor at the head. No
  /// notification.
  void UnlinkNode(TSQNode* ANode, TSQNode* Prev) noexcept;
  /// Appends copies of Source's nodes; CopyPriority also copies priorities between
  /// priority nodes.
  void AddCopies(TGCustomLinkedList* Source, bool CopyPriority);
  /// Puts copies of Source's nodes, in Source's order, in front of the head. One Change.
  void AddStackCopies(TGCustomLinkedList* Source);
  /// Raises unless ANode may be adopted; then makes sure that Adopt(ANode) cannot fail.
  void CheckFree(const TSQNode* ANode);
  /// Takes ownership of ANode without linking it. A node that is not one of the library's
  /// node classes made in this list's store needs CheckFree (or PrepareAdopt) first.
  void Adopt(TSQNode* ANode) noexcept;
  /// Makes sure that Adopt(ANode) cannot fail; raises EOutOfMemory.
  void PrepareAdopt(const TSQNode* ANode);
  /// Records a node kept out of the chain (owned, freed at Clear): its links are moved on
  /// past every node freed later, so that they never lead to freed memory.
  void Keep(TSQNode* ANode);
  /// The store the library's node classes are made in (as `new (NodePool()) TSQNode`).
  detail::TNodePool* NodePool() const { return FPool ? FPool : MakeNodePool(); }
  /// Frees a node this list owns.
  void FreeNode(TSQNode* ANode) noexcept;
  /// Tells the enumerators that ANode leaves the chain (they go on with its successor).
  [[gnu::noinline]] void NodeLeaving(TSQNode* ANode) noexcept;
  /// The node after N on a walk; raises when N is null.
  static TSQNode* Step(TSQNode* N);
  /// Raises "Node links do not reach the end of the list" once a walk took more steps
  /// than there are nodes.
  void CheckSteps(std::int32_t Steps) const;

  mutable std::int32_t FLastAccessedIndex = -1;
  mutable TSQNode* FLastAccessedNode = nullptr;
  std::int32_t FCount = 0;
  TSQNode* FHead = nullptr;
  TSQNode* FTail = nullptr;
  TNotifyEvent FOnChange;
  TUpdateCounter<ueIgnore> FUpdateCount;

 private:
  friend class TGCustomLinkedListEnumerator;
  template <class TNode>
  friend class detail::TFreshNode;
  void FreeAll() noexcept;
  TSQNode* PushNewNodeSlow(TObject* Value, bool AtHead);
  /// Whether ANode is one of the library's node classes living in this list's store: such
  /// a node, once adopted, is found and freed through the store.
  bool InOwnStore(const TSQNode* ANode) const noexcept;
  void DropRecord(detail::TOwnRecord* Record) noexcept;
  /// Moves the links of kept nodes that lead to ANode on past it.
  [[gnu::noinline]] void KeptLinksPast(TSQNode* ANode) noexcept;
  detail::TNodePool* MakeNodePool() const;
  TExact FindExact() const;

  // Every node the list owns is counted here; those not in its own store also have a
  // record, in a ring in the order the list took them.
  std::int32_t FOwnedCount = 0;
  std::int32_t FRecordCount = 0;
  detail::TOwnRecord* FRecords = nullptr;
  detail::TOwnRecord* FSpareRecord = nullptr;  // made by PrepareAdopt for the next Adopt
  std::vector<TSQNode*> FKept;
  TGCustomLinkedListEnumerator* FEnumerators = nullptr;
  mutable detail::TNodePool* FPool = nullptr;
  mutable TExact FExact = TExact::Unknown;
  mutable TExact FInline = TExact::Unknown;  // see InlineKind; kept by NoteInline
  // The node that code of this list is adding (see detail::TFreshNode), and whether the
  // list has adopted and freed it since.
  enum : std::uint8_t { fsAdopted = 1, fsFreed = 2 };
  const TSQNode* FFresh = nullptr;
  std::uint8_t FFreshState = 0;
  /// Called wherever what InlineKind depends on changes.
  void NoteInline() const noexcept {
    const bool Plain = FPool && !FOnChange && !FEnumerators && FKept.empty() && !FFresh;
    FInline = FExact >= TExact::Queue && Plain ? FExact : TExact::Unknown;
  }
};

using TGCustomLinkedListClass = const TGCustomLinkedList::TMeta*;

/// Walks the nodes from the head: the first MoveNext goes to the head, each further one to
/// the next node; at the end it answers false and stays on the last node. A node deleted
/// while the enumerator stands on it is stepped over to its successor. Used after its list
/// is destroyed it raises EAccessViolation.
class TGCustomLinkedListEnumerator : public TObject {
  KZ_CLASS(TGCustomLinkedListEnumerator, TObject)
 public:
  explicit TGCustomLinkedListEnumerator(TGCustomLinkedList* List);
  ~TGCustomLinkedListEnumerator() override;

  bool MoveNext();
  [[nodiscard]] TSQNode* GetCurrent() const { return FNode; }

 private:
  friend class TGCustomLinkedList;
  TSQNode* FNode = nullptr;
  TGCustomLinkedList* FList;
  bool FPending = false;  // FNode is the successor of a node that left: MoveNext answers it
  bool FEnded = false;
  TGCustomLinkedListEnumerator* FPrevEnum = nullptr;
  TGCustomLinkedListEnumerator* FNextEnum = nullptr;
};

/// The singly linked list of object references.
class TGLinkedList : public TGCustomLinkedList {
  KZ_CLASS(TGLinkedList, TGCustomLinkedList)
};

/// A linked list of TSQDoubleNode that also links back. GetNode reaches the back half
/// (FCount - Index - 1 <= Index) from the tail. Insert, Delete and SetNode take double
/// nodes only (EInvalidCast otherwise).
class TGDoublyLinkedList : public TGLinkedList {
  KZ_CLASS(TGDoublyLinkedList, TGLinkedList)
 public:
  [[nodiscard]] TSQNode* GetNode(std::int32_t Index) const override;
  /// Value takes the replaced node's links, but neither the neighbours nor Head and Tail
  /// are pointed at it: the replaced node stays alive and in the chain, and Value is kept,
  /// outside the chain, until Clear. One notification.
  void SetNode(std::int32_t Index, TSQNode* Value) override;
  void Delete(TSQNode* ANode) override;
  /// One notification.
  TSQNode* Insert(TSQNode* ANode, TSQNode* BeforeNode) override;
  [[nodiscard]] std::unique_ptr<TSQNode> NewNode() const override;

  [[nodiscard]] TSQDoubleNode* GetHead() const { return As<TSQDoubleNode>(FHead); }
  [[nodiscard]] TSQDoubleNode* GetTail() const { return As<TSQDoubleNode>(FTail); }
};

}  // namespace kz
