// Linked and array queues and stacks: orders, tie-breaks, copies between them, the string
// queue's stored form and the array family's errors.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "GLists/GLists.h"
#include "Runtime/Filer.h"
#include "Runtime/TestSupport.h"

using namespace kz;
using namespace kz::test;

namespace {

TObject* Obj(std::intptr_t V) { return reinterpret_cast<TObject*>(V); }

std::vector<std::intptr_t> PopAll(TGQueue& Q) {
  std::vector<std::intptr_t> R;
  while (!Q.IsEmpty()) R.push_back(reinterpret_cast<std::intptr_t>(Q.Pop()));
  return R;
}

template <class Q>
Q& Filled(Q& Target, std::initializer_list<std::intptr_t> Items) {
  for (auto I : Items) Target.Push(Obj(I));
  return Target;
}

using V = std::vector<std::intptr_t>;

}  // namespace

TEST(GLinkedContainers, QueueStackAndTheirAssignAsymmetry) {
  TGQueue Q;
  TGStack S;
  EXPECT_EQ(PopAll(Filled(Q, {1, 2, 3})), (V{1, 2, 3}));
  EXPECT_EQ(PopAll(Filled(S, {1, 2, 3})), (V{3, 2, 1}));
  EXPECT_EQ(MessageOf<EListError>([&] { (void)Q.Pop(); }), u"List is empty");

  Filled(Q, {1, 2, 3});
  S.Assign(&Q);  // through AddNode: reversed
  EXPECT_EQ(S.Top(), Obj(3));
  TGStack Copy;
  int Changes = 0;
  Copy.SetOnChange([&](TObject*) { ++Changes; });
  Copy.Assign(&S);  // stack to stack: order kept
  EXPECT_EQ(Changes, 1);
  Q.Assign(&S);  // stack to queue: kept as well
  EXPECT_EQ(PopAll(Q), (V{3, 2, 1}));
  EXPECT_EQ(PopAll(Copy), (V{3, 2, 1}));

  // AddStack puts the copies, in the source's order, in front of the receiver's head.
  TGStack Other, Target;
  Filled(Other, {5, 4});
  Target.AddStack(&Other);  // into an empty stack: the tail is set
  EXPECT_EQ(Target.GetTail()->GetItem(), Obj(5));
  Target.Push(Obj(9));
  Target.AddStack(&Other);
  EXPECT_EQ(PopAll(Target), (V{4, 5, 9, 4, 5}));

  // Classes derived elsewhere take the virtual path; the library's own push and pop shortcut
  // it, and both must behave alike: order, notifications (a push notifies before the item
  // is set), cursor, and the count check of a stack whose head outlives its count.
  struct TCountingStack : TGStack {
    int Made = 0;
    std::unique_ptr<TSQNode> NewNode() const override {
      ++const_cast<TCountingStack*>(this)->Made;
      return TGStack::NewNode();
    }
  };
  TGStack Plain;
  TCountingStack Derived;
  for (TGStack* St : {&Plain, static_cast<TGStack*>(&Derived)}) {
    std::vector<TObject*> Seen;
    St->SetOnChange([&](TObject*) { Seen.push_back(St->GetHead()->GetItem()); });
    Filled(*St, {1, 2});
    EXPECT_EQ(Seen, (std::vector<TObject*>{nullptr, nullptr}));
    EXPECT_EQ(St->GetItem(1), Obj(1));
    EXPECT_EQ(St->Pop(), Obj(2));
    EXPECT_EQ(St->Next(), St->GetHead());  // the cursor is back at the head
    St->SetOnChange(nullptr);
    std::unique_ptr<TSQNode> Stray = St->NewNode();
    St->GetHead()->SetNext(Stray.get());  // linked past the count
    (void)St->Pop();
    EXPECT_EQ(St->GetHead(), Stray.get());
    EXPECT_EQ(MessageOf<EListError>([&] { St->Push(Obj(5)); }), u"List is empty");
    St->Clear();
  }
  EXPECT_EQ(Derived.Made, 4);  // the refused push made its node first
}

TEST(GLinkedContainers, PriorityQueueTieBreaksAndChangePriority) {
  TGPriorityQueue P;
  P.PushP(Obj(1), 5);
  P.PushP(Obj(2), 5);  // equal to the head: in front
  EXPECT_EQ(P.Top(), Obj(2));
  P.Clear();
  P.PushP(Obj(1), 1);
  P.PushP(Obj(5), 5);
  P.PushP(Obj(6), 5);  // equal to the tail: behind it
  P.PushP(Obj(3), 3);  // in the middle
  P.PushP(Obj(7), 5);  // equal to the tail again
  P.PushP(Obj(4), 3);  // in the middle, in front of the equal one
  TSQPriorityNode* Old = P.GetPriorityNode(2);
  TSQPriorityNode* New = P.ChangePriority(Old, 0);
  EXPECT_NE(New, Old);
  EXPECT_EQ(New->GetItem(), Obj(3));
  EXPECT_EQ(P.ChangePriority(0, 9)->GetItem(), Obj(3));
  EXPECT_EQ(PopAll(P), (V{1, 4, 5, 6, 7, 3}));

  // Priorities travel with AddLinkedList, not with node Assign.
  TSQPriorityNode A(8), B(1);
  B.Assign(&A);
  EXPECT_EQ(B.GetPriority(), 1);
  TGPriorityQueue Source, Copy;
  Source.PushP(Obj(1), 4);
  Source.PushP(Obj(2), 2);
  Copy.AddLinkedList(&Source);
  EXPECT_EQ(Copy.GetPriority(0), 2);
  EXPECT_EQ(Copy.GetPriority(1), 4);
}

TEST(GLinkedContainers, PriorityStringQueueLinksNothing) {
  TGPriorityStringQueue Q;
  int Changes = 0;
  Q.SetOnChange([&](TObject*) { ++Changes; });
  TSQPriorityStringNode* N = Q.PushP(u"a", 3);
  TSQPriorityStringNode* M = Q.PushItemP(u"b", Obj(1), 2);
  EXPECT_EQ(Q.GetCount(), 0);
  EXPECT_EQ(Changes, 0);
  // The nodes handed out stay valid, owned by the queue, until Clear.
  EXPECT_EQ(N->GetValue(), u"a");
  EXPECT_EQ(M->GetItem(), Obj(1));
  EXPECT_EQ(N->GetOwnerList(), &Q);
  EXPECT_EQ(MessageOf<EListError>([&] { Q.ChangePriority(N, 1); }), u"List is empty");
}

TEST(GLinkedContainers, StringQueueLookupsCopiesAndStoredForm) {
  TGStringQueue Q;
  TGStringStack S;
  for (const char16_t* T : {u"one", u"Two", u"three"}) {
    Q.PushString(T);
    S.PushString(T);
  }
  EXPECT_EQ(Q.IndexOfString(u"ONE"), 1);  // counted from 1
  EXPECT_EQ(Q.IndexOfString(u"four"), -1);
  EXPECT_EQ(Q.FindString(u"TWO"), Q.GetNode(1));
  EXPECT_FALSE(Q.Equals(&S));

  TStringList Lines;
  Q.AssignTo(&Lines);
  EXPECT_EQ(Lines.GetCommaText(), u"one,Two,three");
  Lines.Put(1, u"two");
  TGStringQueue FromLines;
  FromLines.Assign(&Lines);
  EXPECT_FALSE(FromLines.Equals(&Q));  // case-sensitive
  FromLines.SetString(1, u"Two");
  EXPECT_TRUE(FromLines.Equals(&Q));
  TObject* Item = Obj(1);
  EXPECT_EQ(FromLines.PopItem(Item), u"one");
  EXPECT_EQ(Item, nullptr);

  // "Strings" is read back at the tail, so a stack keeps the written order.
  TBytesStream M;
  TWriter W(&M);
  W.WriteProperties(&S);
  W.WriteListEnd();
  M.SetPosition(0);
  TGStringStack Back;
  Back.PushString(u"dropped");
  TReader R(&M);
  while (!R.EndOfList()) R.ReadProperty(&Back);
  EXPECT_TRUE(Back.Equals(&S));
  EXPECT_EQ(Back.PopString(), u"three");
}

TEST(GArrayContainers, OrderedListsAndStringQueues) {
  TQQueue Q;
  TQOrderedListClass StackClass = &TQStack::ClassInfo();
  std::unique_ptr<TQOrderedList> S = StackClass->Create();
  for (std::intptr_t I = 1; I <= 3; ++I) {
    Q.Push(Obj(I));
    S->Push(Obj(I));
  }
  Q.Insert(0, Obj(0));  // used as a double-ended queue
  EXPECT_EQ(Q.Pop(), Obj(0));
  EXPECT_EQ(S->Pop(), Obj(3));
  std::unique_ptr<TQOrderedList> Clone = S->Clone();
  EXPECT_EQ(Clone->ClassType(), &TQStack::ClassInfo());
  EXPECT_EQ(Clone->Top(), Obj(2));
  EXPECT_EQ(MessageOf<EConvertError>([&] { Q.Assign(nullptr); }), u"Error assigning nil to TQQueue");
  TGQueue Linked;
  Linked.Push(Obj(9));
  Q.Assign(&Linked);
  EXPECT_EQ(Q.Pop(), Obj(9));
  EXPECT_EQ(MessageOf<EListError>([&] { (void)Q.Pop(); }), u"List is empty");
  TObject Other;
  EXPECT_EQ(MessageOf<EConvertError>([&] { Q.Assign(&Other); }), u"Error assigning TObject to TQQueue");

  TQStringQueue SQ;
  TQStringStack SS;
  for (auto* T : {u"a", u"b"}) {
    SQ.PushString(T);
    SS.PushString(T);
  }
  EXPECT_EQ(SQ.TopString(), u"a");
  EXPECT_EQ(SS.TopString(), u"b");
  EXPECT_EQ(SS.PopString(), u"b");
  EXPECT_EQ(MessageOf<EListError>([&] { SQ.SetSorted(true); }), u"Cannot sort stack or queue");
  TObject* Item = nullptr;
  SQ.PushItem(u"c", Obj(5));
  EXPECT_EQ(SQ.PopItem(Item), u"a");
  EXPECT_EQ(SQ.PopString(), u"b");
  EXPECT_EQ(SQ.TopItem(Item), u"c");
  EXPECT_EQ(Item, Obj(5));
}
