// The nodes every linked list, stack and queue is built from.
#pragma once

#include <cstdint>

#include "Runtime/Persistent.h"

namespace kz {

class TGCustomLinkedList;
namespace detail {
class TNodePool;
}

/// A node of a linked list: an object reference (not owned) and the link to the next node.
/// A node belongs to at most one list; the list that adopts it frees it. Assign copies the
/// item only, never the link.
class TSQNode : public TPersistent {
 public:
  using TMeta = TMetaClassOf<TSQNode>;
  KZ_CLASS(TSQNode, TPersistent)
 public:
  TSQNode() = default;
  ~TSQNode() override;

  /// From a TSQNode: the item. Anything else raises the assign error.
  void Assign(TPersistent* Source) override;

  TObject* GetItem() const { return FItem; }
  void SetItem(TObject* Value) { FItem = Value; }
  TSQNode* GetNext() const { return FNext; }
  void SetNext(TSQNode* Value) { FNext = Value; }
  /// The list that owns the node, or null while the caller owns it. Reads the word the
  /// node's operator new put in front of it: the node must come from new.
  TGCustomLinkedList* GetOwnerList() const;

  // Nodes come and go with every push and pop: the library's lists make theirs in a store
  // of their own (the placement form), where freed slots are reused. Node classes must not
  // replace operator new: the word it puts in front of every node also says which list owns
  // the node, so that ownership does not depend on the visible links.
  static void* operator new(std::size_t Size);
  static void* operator new(std::size_t Size, detail::TNodePool* Pool);
  static void operator delete(void* P, std::size_t Size) noexcept;
  static void operator delete(void* P, detail::TNodePool* Pool) noexcept;

 protected:
  TObject* FItem = nullptr;
  TSQNode* FNext = nullptr;

 private:
  friend class TGCustomLinkedList;
  friend class TGCustomLinkedListEnumerator;
};

using TSQNodeClass = const TSQNode::TMeta*;

/// A node that also links back. GetNext/SetNext are the same link typed as double nodes
/// (GetNext raises EInvalidCast when it leads to another kind of node).
class TSQDoubleNode : public TSQNode {
  KZ_CLASS(TSQDoubleNode, TSQNode)
 public:
  TSQDoubleNode* GetNext() const { return As<TSQDoubleNode>(FNext); }
  void SetNext(TSQDoubleNode* Value) { FNext = Value; }
  TSQDoubleNode* GetPrevious() const { return FPrevious; }
  void SetPrevious(TSQDoubleNode* Value) { FPrevious = Value; }

 protected:
  TSQDoubleNode* FPrevious = nullptr;

  friend class TGDoublyLinkedList;
};

/// A node with a string.
class TSQStringNode : public TSQNode {
  KZ_CLASS(TSQStringNode, TSQNode)
 public:
  /// From a TSQStringNode: the string, then (from any TSQNode) the item.
  void Assign(TPersistent* Source) override;

  const String& GetValue() const { return FValue; }
  void SetValue(String Value) { FValue = std::move(Value); }

 protected:
  String FValue;
};

/// A node with a signed priority. Assign is TSQNode's: the priority is not copied.
class TSQPriorityNode : public TSQNode {
  KZ_CLASS(TSQPriorityNode, TSQNode)
 public:
  explicit TSQPriorityNode(std::int32_t APriority = 0) : FPriority(APriority) {}

  std::int32_t GetPriority() const { return FPriority; }
  void SetPriority(std::int32_t Value) { FPriority = Value; }

 protected:
  std::int32_t FPriority;
};

/// A string node with a signed priority. Assign copies string and item, not the priority.
class TSQPriorityStringNode : public TSQStringNode {
  KZ_CLASS(TSQPriorityStringNode, TSQStringNode)
 public:
  explicit TSQPriorityStringNode(std::int32_t APriority = 0) : FPriority(APriority) {}

  std::int32_t GetPriority() const { return FPriority; }
  void SetPriority(std::int32_t Value) { FPriority = Value; }

 protected:
  std::int32_t FPriority;
};

}  // namespace kz
