#include "GLists/GLists.h"

#include "Runtime/Filer.h"
#include "Runtime/StringLists.h"
#include "Runtime/Text.h"
#include "GLists/internal/FreshNode.h"
#include "Runtime/WithinUpdate.h"

namespace kz {

using namespace Runtime;
using namespace GLists;

namespace {

// A stack copies a stack of its own class in order, inside one update; false for others.
template <class TStack>
bool AssignStack(TStack& Self, TPersistent* Source) {
  auto* Stack = dynamic_cast<TStack*>(Source);
  if (!Stack) return false;
  WithinUpdate(Self, [&] {
    Self.Clear();
    Self.AddStack(Stack);
  });
  return true;
}

// A new node with ANode's item (and string) and NewPriority is inserted, then ANode deleted.
template <class TNode>
TNode* WithNewPriority(TGCustomLinkedList& Queue, TSQNode* ANode, std::int32_t NewPriority) {
  detail::TFreshNode<TSQNode> Owned(Queue, Queue.NewNode().release());
  auto* Node = As<TNode>(Owned.get());
  Node->Assign(ANode);
  Node->SetPriority(NewPriority);
  Queue.Insert(Node, nullptr);
  Owned.release();
  Queue.Delete(ANode);
  return Node;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// TGQueue, TGStack

TObject* TGQueue::Top() const {
  if (FCount == 0) throw EListError(SListEmpty);
  if (!FHead) RaiseNullAccess(u"list head");
  return FHead->GetItem();
}

TObject* TGQueue::PopAny() {
  TObject* Result = Top();
  if (const TExact Kind = Exact(); Kind == TExact::Queue || Kind == TExact::Stack)
    DeleteHead();
  else
    Delete(FHead);
  return Result;
}

TSQNode* TGQueue::PushAny(TObject* Value) {
  if (const TExact Kind = Exact(); Kind == TExact::Queue || Kind == TExact::Stack)
    return PushNewNode(Value, Kind == TExact::Stack);
  detail::TFreshNode<TSQNode> Node(*this, NewNode().release());
  TSQNode* Result = AddNode(Node.get());
  Node.release();
  // The handler runs before the item is stored and may have freed the node.
  if (Result == Node.get()) Node.Live();
  Result->SetItem(Value);
  return Result;
}

TSQNode* TGStack::AddNode(TSQNode* ANode) { return Insert(ANode, FHead); }

void TGStack::AddStack(TGStack* Stack) { AddStackCopies(Stack); }

void TGStack::Assign(TPersistent* Source) {
  if (!AssignStack(*this, Source)) inherited::Assign(Source);
}

// ---------------------------------------------------------------------------------------------
// TGStringQueue, TGStringStack

std::unique_ptr<TSQNode> TGStringQueue::NewNode() const {
  return std::unique_ptr<TSQNode>(new (NodePool()) TSQStringNode());
}

TSQStringNode* TGStringQueue::PushString(const String& Value) { return PushItem(Value, nullptr); }

TSQStringNode* TGStringQueue::PushItem(const String& Value, TObject* AnObject) {
  detail::TFreshNode<TSQNode> Owned(*this, NewNode().release());
  auto* Node = As<TSQStringNode>(Owned.get());
  Node->SetValue(Value);
  Node->SetItem(AnObject);
  AddNode(Node);
  Owned.release();
  return Node;
}

String TGStringQueue::TopString() const {
  if (FCount == 0) throw EListError(SListEmpty);
  if (!FHead) RaiseNullAccess(u"list head");
  return As<TSQStringNode>(FHead)->GetValue();
}

String TGStringQueue::PopString() {
  String Result = TopString();
  Delete(FHead);
  return Result;
}

String TGStringQueue::PopItem(TObject*& AnObject) {
  String Result = TopString();
  AnObject = FHead->GetItem();
  Delete(FHead);
  return Result;
}

TSQStringNode* TGStringQueue::FindString(StringView Value) const {
  std::int32_t Steps = 0;
  for (TSQNode* N = FHead; N; N = N->GetNext(), CheckSteps(++Steps)) {
    auto* Node = As<TSQStringNode>(N);
    if (CompareText(Node->GetValue(), Value) == 0) return Node;
  }
  return nullptr;
}

std::int32_t TGStringQueue::IndexOfString(StringView Value) const {
  Reset();
  for (std::int32_t Steps = 0; !EndOfList(); CheckSteps(++Steps))
    if (CompareText(Next()->GetValue(), Value) == 0) return FLastAccessedIndex;
  return -1;
}

bool TGStringQueue::Equals(const TGStringQueue* StringQueue) const {
  if (!StringQueue) RaiseNullAccess(u"string queue");
  if (GetCount() != StringQueue->GetCount()) return false;
  for (std::int32_t I = 0; I < GetCount(); ++I)
    if (GetString(I) != StringQueue->GetString(I)) return false;
  return true;
}

void TGStringQueue::Assign(TPersistent* Source) {
  if (auto* Strings = dynamic_cast<TStrings*>(Source))
    WithinUpdate(*this, [&] {
      Clear();
      for (std::int32_t I = 0; I < Strings->GetCount(); ++I) PushItem(Strings->Get(I), Strings->GetObject(I));
    });
  else
    inherited::Assign(Source);
}

void TGStringQueue::AssignTo(TPersistent* Dest) {
  if (auto* Strings = dynamic_cast<TStrings*>(Dest)) {
    Strings->Clear();
    std::int32_t Steps = 0;
    for (TSQNode* N = FHead; N; N = N->GetNext(), CheckSteps(++Steps))
      Strings->AddObject(As<TSQStringNode>(N)->GetValue(), N->GetItem());
  } else {
    inherited::AssignTo(Dest);
  }
}

void TGStringQueue::DefineProperties(TFiler* Filer) {
  inherited::DefineProperties(Filer);
  Filer->DefineProperty(
      u"Strings", [this](TReader* Reader) { ReadStrings(Reader); },
      [this](TWriter* Writer) { WriteStrings(Writer); }, true);
}

void TGStringQueue::WriteStrings(TWriter* Writer) const {
  Writer->WriteListBegin();
  for (std::int32_t I = 0; I < GetCount(); ++I) Writer->WriteString(GetString(I));
  Writer->WriteListEnd();
}

void TGStringQueue::ReadStrings(TReader* Reader) {
  Reader->ReadListBegin();
  WithinUpdate(*this, [&] {
    Clear();
    while (!Reader->EndOfList()) {
      detail::TFreshNode<TSQNode> Owned(*this, NewNode().release());
      auto* Node = As<TSQStringNode>(Owned.get());
      Insert(Node, nullptr);
      Owned.release();
      String Value = Reader->ReadString();
      As<TSQStringNode>(Owned.Live())->SetValue(std::move(Value));
    }
  });
  Reader->ReadListEnd();
}

TSQNode* TGStringStack::AddNode(TSQNode* ANode) { return Insert(ANode, FHead); }

void TGStringStack::AddStack(TGStringStack* Stack) { AddStackCopies(Stack); }

void TGStringStack::Assign(TPersistent* Source) {
  if (!AssignStack(*this, Source)) inherited::Assign(Source);
}

// ---------------------------------------------------------------------------------------------
// TGPriorityQueue

std::unique_ptr<TSQNode> TGPriorityQueue::NewNode() const {
  return std::unique_ptr<TSQNode>(new (NodePool()) TSQPriorityNode(0));
}

void TGPriorityQueue::AddLinkedList(TGCustomLinkedList* LinkedList) { AddCopies(LinkedList, true); }

TSQNode* TGPriorityQueue::Insert(TSQNode* ANode, TSQNode*) {
  auto* Node = As<TSQPriorityNode>(ANode);
  CheckFree(Node);
  const std::int32_t P = Node->GetPriority();
  Reset();
  if (!FHead) {
    FHead = FTail = Node;
  } else if (As<TSQPriorityNode>(FHead)->GetPriority() >= P) {
    Node->SetNext(FHead);
    FHead = Node;
  } else if (FTail && As<TSQPriorityNode>(FTail)->GetPriority() <= P) {
    FTail->SetNext(Node);
    FTail = Node;
  } else {
    TSQNode* Prev = nullptr;
    TSQNode* N = Next();
    for (std::int32_t Steps = 0; As<TSQPriorityNode>(N)->GetPriority() < P; CheckSteps(++Steps)) {
      Prev = N;
      N = Next();
    }
    Node->SetNext(N);
    Prev->SetNext(Node);
  }
  ++FCount;
  Adopt(Node);
  Change();
  return Node;
}

TSQPriorityNode* TGPriorityQueue::PushP(TObject* Value, std::int32_t APriority) {
  detail::TFreshNode<TSQPriorityNode> Node(*this, new (NodePool()) TSQPriorityNode(APriority));
  Node->SetItem(Value);
  AddNode(Node.get());
  return Node.release();
}

TSQPriorityNode* TGPriorityQueue::ChangePriority(TSQNode* ANode, std::int32_t NewPriority) {
  return WithNewPriority<TSQPriorityNode>(*this, ANode, NewPriority);
}

// ---------------------------------------------------------------------------------------------
// TGPriorityStringQueue

std::unique_ptr<TSQNode> TGPriorityStringQueue::NewNode() const {
  return std::unique_ptr<TSQNode>(new (NodePool()) TSQPriorityStringNode(0));
}

void TGPriorityStringQueue::AddLinkedList(TGCustomLinkedList* LinkedList) { AddCopies(LinkedList, true); }

TSQNode* TGPriorityStringQueue::Insert(TSQNode* ANode, TSQNode*) {
  auto* Node = As<TSQPriorityStringNode>(ANode);
  CheckFree(Node);
  const std::int32_t P = Node->GetPriority();
  Reset();
  TSQNode* Found = nullptr;
  for (std::int32_t Steps = 0; !EndOfList(); CheckSteps(++Steps)) {
    TSQNode* N = TGCustomLinkedList::Next();
    if (As<TSQPriorityStringNode>(N)->GetPriority() > P) {
      Found = N;
      break;
    }
  }
  Keep(Node);
  Node->SetNext(Found);
  // Linked nowhere, but kept: the caller may go on using the node it is given.
  Adopt(Node);
  return Node;
}

TSQPriorityStringNode* TGPriorityStringQueue::PushP(const String& Value, std::int32_t APriority) {
  detail::TFreshNode<TSQPriorityStringNode> Node(*this, new (NodePool()) TSQPriorityStringNode(APriority));
  Node->SetValue(Value);
  AddNode(Node.get());
  return Node.release();
}

TSQPriorityStringNode* TGPriorityStringQueue::PushItemP(const String&, TObject* AnObject, std::int32_t APriority) {
  detail::TFreshNode<TSQPriorityStringNode> Node(*this, new (NodePool()) TSQPriorityStringNode(APriority));
  Node->SetItem(AnObject);
  Insert(Node.get(), nullptr);
  return Node.release();
}

TSQPriorityStringNode* TGPriorityStringQueue::ChangePriority(TSQNode* ANode, std::int32_t NewPriority) {
  return WithNewPriority<TSQPriorityStringNode>(*this, ANode, NewPriority);
}

}  // namespace kz
