// Queues and stacks on linked nodes: plain, string and priority queues, and the stacks.
#pragma once

#include <cstdint>
#include <memory>

#include "GLists/LinkedLists.h"

namespace kz {

class TFiler;
class TReader;
class TWriter;

/// First in, first out: Push appends at the tail, Pop takes the head. Push and Pop are
/// O(1). The items are not owned. Top and Pop of an empty queue raise "List is empty".
class TGQueue : public TGCustomLinkedList {
  KZ_CLASS(TGQueue, TGCustomLinkedList)
 public:
  /// Top, then Delete(Head): the node is freed, the item answered.
  [[nodiscard]] virtual TObject* Pop() {
    if (InlineKind() != TExact::Unknown && CanPopInline()) return PopInline();
    return PopAny();
  }
  /// NewNode, AddNode, then the node's item is set (so OnChange sees an empty node).
  virtual TSQNode* Push(TObject* Value) {
    if (const TExact Kind = InlineKind(); Kind != TExact::Unknown) return PushInline(Value, Kind == TExact::Stack);
    return PushAny(Value);
  }
  /// The head's item.
  [[nodiscard]] TObject* Top() const;

 private:
  TObject* PopAny();
  TSQNode* PushAny(TObject* Value);
};

/// Last in, first out: AddNode puts the node in front of the head.
class TGStack : public TGQueue {
  KZ_CLASS(TGStack, TGQueue)
 public:
  using TGQueue::Assign;
  /// From a TGStack: Clear and AddStack in one update (order kept). Anything else goes
  /// through the linked list's Assign, whose AddNode reverses the order.
  void Assign(TPersistent* Source) override;
  TSQNode* AddNode(TSQNode* ANode) override;
  /// Copies Stack's nodes, in Stack's order, in front of the head; one notification and
  /// no update bracket.
  virtual void AddStack(TGStack* Stack);
};

/// A queue of string nodes (each with a string and an item).
class TGStringQueue : public TGQueue {
  KZ_CLASS(TGStringQueue, TGQueue)
 public:
  using TGQueue::Assign;
  /// From string lists (TStrings): Clear, then PushItem of every line, in one update.
  /// Other sources as the linked list's Assign.
  void Assign(TPersistent* Source) override;
  /// Into string lists: the destination is cleared and gets AddObject(Value, Item) for
  /// each node from the head.
  void AssignTo(TPersistent* Dest) override;
  /// The stored property "Strings": the strings in order. Read back, each string becomes a
  /// node linked by Insert(Node, null), so a stack also reads back in the written order.
  void DefineProperties(TFiler* Filer) override;
  [[nodiscard]] std::unique_ptr<TSQNode> NewNode() const override;
  /// The head's string; then the head is popped.
  [[nodiscard]] virtual String PopString();

  /// A new node with Value, by AddNode.
  TSQStringNode* PushString(const String& Value);
  /// A new node with Value and AnObject, by AddNode.
  TSQStringNode* PushItem(const String& Value, TObject* AnObject);
  [[nodiscard]] String TopString() const;
  /// The head's string; AnObject gets its item; then the head is popped.
  [[nodiscard]] String PopItem(TObject*& AnObject);

  [[nodiscard]] String GetString(std::int32_t Index) const { return GetStringNode(Index)->GetValue(); }
  void SetString(std::int32_t Index, const String& Value) { GetStringNode(Index)->SetValue(Value); }
  /// GetNode as a string node (EInvalidCast for another kind).
  [[nodiscard]] TSQStringNode* GetStringNode(std::int32_t Index) const { return As<TSQStringNode>(GetNode(Index)); }
  void SetStringNode(std::int32_t Index, TSQStringNode* Value) { SetNode(Index, Value); }
  TSQStringNode* Next() const { return As<TSQStringNode>(TGCustomLinkedList::Next()); }
  /// The first node whose string equals Value ignoring ASCII case, or null; cursor stays.
  [[nodiscard]] TSQStringNode* FindString(StringView Value) const;
  /// The position of the first node whose string equals Value ignoring ASCII case,
  /// counted from 1; -1 when absent. Walks with the cursor.
  [[nodiscard]] std::int32_t IndexOfString(StringView Value) const;
  /// Same count and the same strings (case-sensitive) at every index.
  [[nodiscard]] bool Equals(const TGStringQueue* StringQueue) const;

 private:
  void ReadStrings(TReader* Reader);
  void WriteStrings(TWriter* Writer) const;
};

/// A stack of string nodes.
class TGStringStack : public TGStringQueue {
  KZ_CLASS(TGStringStack, TGStringQueue)
 public:
  using TGStringQueue::Assign;
  /// As TGStack::Assign, for TGStringStack sources (string lists as TGStringQueue).
  void Assign(TPersistent* Source) override;
  TSQNode* AddNode(TSQNode* ANode) override;
  /// As TGStack::AddStack.
  virtual void AddStack(TGStringStack* Stack);
};

/// A queue of priority nodes in ascending priority: Top and Pop give the smallest. A push
/// whose priority is at or beyond either end is O(1), others walk (moving the cursor).
/// Ties: equal to the head's priority goes in front of the head, equal to the tail's (and
/// above the head's) behind the tail, otherwise in front of the first equal node.
class TGPriorityQueue : public TGQueue {
  KZ_CLASS(TGPriorityQueue, TGQueue)
 public:
  /// Copies also the priorities of priority nodes.
  void AddLinkedList(TGCustomLinkedList* LinkedList) override;
  /// Links ANode (a TSQPriorityNode, else EInvalidCast) in priority order; BeforeNode is
  /// ignored.
  TSQNode* Insert(TSQNode* ANode, TSQNode* BeforeNode) override;
  [[nodiscard]] std::unique_ptr<TSQNode> NewNode() const override;
  /// A NEW node with ANode's item and NewPriority is inserted, then ANode is deleted;
  /// answers the new node, which replaces ANode for the caller.
  virtual TSQPriorityNode* ChangePriority(TSQNode* ANode, std::int32_t NewPriority);
  virtual TSQPriorityNode* PushP(TObject* Value, std::int32_t APriority);

  TSQPriorityNode* ChangePriority(std::int32_t Index, std::int32_t NewPriority) {
    return ChangePriority(GetPriorityNode(Index), NewPriority);
  }
  [[nodiscard]] std::int32_t GetPriority(std::int32_t Index) const { return GetPriorityNode(Index)->GetPriority(); }
  [[nodiscard]] TSQPriorityNode* GetPriorityNode(std::int32_t Index) const { return As<TSQPriorityNode>(GetNode(Index)); }
  void SetPriorityNode(std::int32_t Index, TSQPriorityNode* Value) { SetNode(Index, Value); }
  TSQPriorityNode* Next() const { return As<TSQPriorityNode>(TGCustomLinkedList::Next()); }
};

/// A string queue of priority string nodes whose Insert links nothing: it walks to the
/// first node of greater priority, points the new node's Next at it and answers the node,
/// leaving Head, Tail, Count and OnChange alone. Every push therefore leaves the queue as
/// it was. The queue keeps each node so answered (out of the chain) until Clear or
/// destruction; the pointer stays valid until then.
class TGPriorityStringQueue : public TGStringQueue {
  KZ_CLASS(TGPriorityStringQueue, TGStringQueue)
 public:
  void AddLinkedList(TGCustomLinkedList* LinkedList) override;
  TSQNode* Insert(TSQNode* ANode, TSQNode* BeforeNode) override;
  [[nodiscard]] std::unique_ptr<TSQNode> NewNode() const override;
  /// As TGPriorityQueue::ChangePriority.
  virtual TSQPriorityStringNode* ChangePriority(TSQNode* ANode, std::int32_t NewPriority);
  /// A new node with Value and APriority, by AddNode.
  virtual TSQPriorityStringNode* PushP(const String& Value, std::int32_t APriority);
  /// A new node with AnObject and APriority (Value is not stored), by Insert.
  virtual TSQPriorityStringNode* PushItemP(const String& Value, TObject* AnObject, std::int32_t APriority);

  TSQPriorityStringNode* ChangePriority(std::int32_t Index, std::int32_t NewPriority) {
    return ChangePriority(GetPriorityNode(Index), NewPriority);
  }
  [[nodiscard]] std::int32_t GetPriority(std::int32_t Index) const { return GetPriorityNode(Index)->GetPriority(); }
  [[nodiscard]] TSQPriorityStringNode* GetPriorityNode(std::int32_t Index) const {
    return As<TSQPriorityStringNode>(GetNode(Index));
  }
  void SetPriorityNode(std::int32_t Index, TSQPriorityStringNode* Value) { SetNode(Index, Value); }
  TSQPriorityStringNode* Next() const { return As<TSQPriorityStringNode>(TGCustomLinkedList::Next()); }
};

}  // namespace kz
