// The linked lists: the shared cursor, messages and the order of their checks, update
// brackets, and what stays alive where a replaced node is still referred to.
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "GLists/GLists.h"
#include "Runtime/TestSupport.h"

using namespace kz;
using namespace kz::test;

namespace {

TObject* Obj(std::intptr_t V) { return reinterpret_cast<TObject*>(V); }

// A list of items 1..N with its nodes, and a counter of notifications.
template <class TLinked>
struct TFixture {
  explicit TFixture(int N) {
    for (int I = 1; I <= N; ++I) Nodes.push_back(L.Add(Obj(I)));
    L.SetOnChange([this](TObject*) { ++Changes; });
  }
  // The items from the head along the Next links.
  std::vector<std::intptr_t> Chain() const {
    std::vector<std::intptr_t> R;
    for (TSQNode* N = L.GetHead(); N; N = N->GetNext()) R.push_back(reinterpret_cast<std::intptr_t>(N->GetItem()));
    return R;
  }
  TLinked L;
  std::vector<TSQNode*> Nodes;
  int Changes = 0;
};

using V = std::vector<std::intptr_t>;

}  // namespace

TEST(GLinkedList, CursorServesIndexedAccessAndWalks) {
  TFixture<TGLinkedList> F(4);
  auto& L = F.L;
  EXPECT_EQ(L.GetNode(2), F.Nodes[2]);
  // Cut the chain behind the head: only a step from the cursor can reach index 3 now.
  F.Nodes[0]->SetNext(nullptr);
  EXPECT_EQ(L.GetItem(3), Obj(4));
  EXPECT_THROW((void)L.GetNode(1), EAccessViolation);  // behind the cursor: from the head
  F.Nodes[0]->SetNext(F.Nodes[1]);

  // Walks and indexed access move the same cursor.
  L.Reset();
  EXPECT_EQ(L.Next(), F.Nodes[0]);
  EXPECT_EQ(L.GetNode(2), F.Nodes[2]);
  EXPECT_EQ(L.Next(), F.Nodes[2]);
  EXPECT_EQ(L.Next(), F.Nodes[3]);
  EXPECT_TRUE(L.EndOfList());
  EXPECT_EQ(MessageOf<EListError>([&] { (void)L.Next(); }), u"End of list");
  EXPECT_EQ(L.IndexOfItem(Obj(2)), 1);
  EXPECT_EQ(L.Next(), F.Nodes[2]);  // left behind the match

  // A change forgets the index but not the node: the walk goes on at index -1 + 1, so the
  // next indexed read starts from a cursor whose index lags by one.
  L.Reset();
  (void)L.Next();
  L.BeginUpdate();
  L.EndUpdate();
  EXPECT_EQ(L.Next(), F.Nodes[1]);
  EXPECT_EQ(L.GetNode(1), F.Nodes[3]);
  EXPECT_EQ(F.Changes, 1);
}

TEST(GLinkedList, DoublyLinkedListReachesTheBackHalfFromTheTail) {
  TFixture<TGDoublyLinkedList> F(4);
  auto& L = F.L;
  F.Nodes[0]->SetNext(nullptr);  // the front route is cut
  L.Reset();                     // and the cursor is no help
  EXPECT_EQ(L.GetNode(2), F.Nodes[2]);  // 4 - 2 - 1 <= 2: from the tail
  L.Reset();
  EXPECT_THROW((void)L.GetNode(1), EAccessViolation);  // from the front
  F.Nodes[0]->SetNext(F.Nodes[1]);

  // Insert and delete keep the back links, with one notification each.
  auto* X = static_cast<TSQDoubleNode*>(L.Insert(L.NewNode().release(), F.Nodes[2]));
  EXPECT_EQ(F.Changes, 1);
  EXPECT_EQ(X->GetPrevious(), F.Nodes[1]);
  L.Delete(X);
  EXPECT_EQ(F.Changes, 2);
  EXPECT_EQ(static_cast<TSQDoubleNode*>(F.Nodes[2])->GetPrevious(), F.Nodes[1]);
}

TEST(GLinkedList, MessagesInTheOrderOfTheirChecks) {
  TGLinkedList Empty;
  TSQNode Stray;
  EXPECT_EQ(MessageOf<EListError>([&] { (void)Empty.Find(nullptr); }), u"List is empty");
  EXPECT_EQ(MessageOf<EListError>([&] { Empty.Delete(nullptr); }), u"Invalid Index");
  EXPECT_EQ(MessageOf<EListError>([&] { Empty.Delete(&Stray); }), u"List is empty");
  EXPECT_EQ(MessageOf<EListError>([&] { (void)Empty.Next(); }), u"End of list");
  TGDoublyLinkedList EmptyDoubly;
  EXPECT_EQ(MessageOf<EListError>([&] { EmptyDoubly.Delete(nullptr); }), u"List is empty");

  TFixture<TGLinkedList> F(2);
  EXPECT_EQ(MessageOf<EListError>([&] { (void)F.L.Find(nullptr); }), u"Invalid Index");
  EXPECT_EQ(MessageOf<EListError>([&] { (void)F.L.Find(&Stray); }), u"Cannot find node within list");
  std::unique_ptr<TSQNode> Refused = F.L.NewNode();
  EXPECT_EQ(MessageOf<EListError>([&] { F.L.Insert(Refused.get(), &Stray); }), u"Cannot find node within list");
  EXPECT_EQ(MessageOf<EListError>([&] { (void)F.L.GetItem(2); }), u"Invalid Index");
  EXPECT_EQ(MessageOf<EListError>([&] { F.L.Insert(F.Nodes[0], nullptr); }), u"Node already belongs to a list");
  EXPECT_EQ(F.Changes, 0);
  EXPECT_EQ(MessageOf<EConvertError>([&] { F.L.Assign(nullptr); }), u"Cannot assign a nil to a TGLinkedList");

  // Links turned into a cycle are reported, not followed for ever.
  F.Nodes[1]->SetNext(F.Nodes[0]);
  EXPECT_EQ(MessageOf<EListError>([&] { (void)F.L.Find(&Stray); }), u"Node links do not reach the end of the list");
  F.Nodes[1]->SetNext(nullptr);
}

TEST(GLinkedList, NotificationsAndUpdates) {
  TFixture<TGLinkedList> F(0);
  auto& L = F.L;
  L.Clear();
  EXPECT_EQ(F.Changes, 1);  // also when empty
  TList Source;
  for (int I = 1; I <= 3; ++I) Source.Add(Obj(I));
  L.Assign(&Source);
  EXPECT_EQ(F.Changes, 2);
  EXPECT_EQ(F.Chain(), (V{1, 2, 3}));
  L.BeginUpdate();
  L.BeginUpdate();
  L.Delete(L.GetHead());
  L.EndUpdate();
  EXPECT_EQ(F.Changes, 2);
  L.EndUpdate();
  EXPECT_EQ(F.Changes, 3);
  L.EndUpdate();  // unmatched: still a change
  EXPECT_EQ(F.Changes, 4);

  // Assign copies items, not nodes; a doubly linked copy gets double nodes.
  TFixture<TGLinkedList> G(3);
  TGDoublyLinkedList D;
  D.Assign(&G.L);
  EXPECT_EQ(D.GetTail()->GetPrevious()->GetItem(), Obj(2));
  G.L.AddLinkedList(&G.L);  // into itself: each node copied once
  EXPECT_EQ(G.Chain(), (V{1, 2, 3, 1, 2, 3}));
  EXPECT_EQ(G.Changes, 1);

  // A handler that raises after the node was adopted leaves the node with the list, which
  // frees it once.
  TGLinkedList R;
  TGStringQueue S;
  R.SetOnChange([](TObject*) { throw EListError(u"refused"); });
  S.SetOnChange([](TObject*) { throw EListError(u"refused"); });
  EXPECT_THROW(R.Add(Obj(1)), EListError);
  EXPECT_THROW(S.PushString(u"a"), EListError);
  EXPECT_EQ(R.GetCount() + S.GetCount(), 2);
  // A handler that frees the node being added, raising or not, is never followed by a
  // read of that node (the sanitizers watch); storing the item then raises.
  // (Clear notifies too: each handler acts once.)
  bool RActs = true, QActs = true, SQActs = true;
  R.SetOnChange([&](TObject*) {
    if (!std::exchange(RActs, false)) return;
    R.Clear();
    throw EListError(u"refused");
  });
  EXPECT_THROW(R.Add(Obj(1)), EListError);
  TGQueue Q;         // the library's own push path
  TGStringQueue SQ;  // the general one
  Q.SetOnChange([&](TObject*) {
    if (std::exchange(QActs, false)) Q.Clear();
  });
  SQ.SetOnChange([&](TObject*) {
    if (std::exchange(SQActs, false)) SQ.Clear();
  });
  EXPECT_THROW(Q.Push(Obj(1)), EListError);
  EXPECT_THROW(SQ.Push(Obj(1)), EListError);
  EXPECT_EQ(Q.GetCount() + SQ.GetCount() + R.GetCount(), 0);
}

TEST(GLinkedList, EnumeratorWalksNodesAndOutlivesRemovals) {
  TFixture<TGLinkedList> F(4);
  std::vector<std::intptr_t> Seen;
  for (TSQNode* N : F.L) {
    Seen.push_back(reinterpret_cast<std::intptr_t>(N->GetItem()));
    if (N == F.Nodes[1]) F.L.Delete(N);  // the walk goes on with its successor
  }
  EXPECT_EQ(Seen, (V{1, 2, 3, 4}));
  auto E = F.L.GetEnumerator();
  while (E->MoveNext()) {
  }
  EXPECT_EQ(E->GetCurrent(), F.Nodes[3]);  // stays on the last node
  EXPECT_FALSE(E->MoveNext());
  auto Orphan = std::make_unique<TGLinkedList>();
  Orphan->Add(nullptr);
  auto Left = Orphan->GetEnumerator();
  Orphan.reset();
  EXPECT_THROW(Left->MoveNext(), EAccessViolation);
}

// Where the list would refer to a node it frees, the node stays alive, owned by the list.
TEST(GLinkedList, ReplacedNodesStayAliveWhileReferredTo) {
  {
    TFixture<TGLinkedList> F(3);
    auto& L = F.L;
    TSQNode* New = L.NewNode().release();
    New->SetItem(Obj(7));
    L.SetNode(2, New);
    EXPECT_EQ(F.Changes, 1);
    EXPECT_EQ(F.Chain(), (V{1, 2, 7}));
    EXPECT_EQ(L.GetTail(), F.Nodes[2]);  // the tail stays on the replaced node
    EXPECT_EQ(L.GetTail()->GetItem(), Obj(3));
    EXPECT_EQ(L.Next(), F.Nodes[2]);  // and so does the cursor
    L.Add(Obj(8));                    // appended behind the replaced node, out of the chain
    EXPECT_EQ(L.GetCount(), 4);
    EXPECT_EQ(F.Chain(), (V{1, 2, 7}));
    EXPECT_EQ(F.Nodes[2]->GetNext()->GetItem(), Obj(8));
    EXPECT_THROW((void)L.GetNode(3), EAccessViolation);
    L.Clear();
    EXPECT_EQ(L.GetCount(), 1);  // one less per node of the chain
    EXPECT_TRUE(L.EndOfList());
  }
  {
    TFixture<TGLinkedList> F(3);
    F.L.SetNode(1, F.L.NewNode().release());
    EXPECT_EQ(F.L.Next(), F.Nodes[1]);  // the replaced node, then its old successor
    EXPECT_EQ(F.L.Next(), F.Nodes[2]);
    F.L.Delete(F.Nodes[2]);  // a kept node's link moves past a node freed later
    EXPECT_EQ(F.Nodes[1]->GetNext(), nullptr);
  }
  {
    TFixture<TGDoublyLinkedList> F(3);
    auto* New = static_cast<TSQDoubleNode*>(F.L.NewNode().release());
    F.L.SetNode(1, New);
    EXPECT_EQ(F.Changes, 1);
    EXPECT_EQ(New->GetNext(), F.Nodes[2]);
    EXPECT_EQ(New->GetPrevious(), F.Nodes[0]);
    EXPECT_EQ(F.Chain(), (V{1, 2, 3}));  // the neighbours still lead to the old node
    EXPECT_EQ(F.L.GetNode(1), F.Nodes[1]);
    EXPECT_EQ(MessageOf<EListError>([&] { F.L.Delete(New); }), u"Cannot find node within list");
    F.L.Delete(F.Nodes[2]);
    EXPECT_EQ(New->GetNext(), nullptr);
    TSQNode Plain;
    EXPECT_THROW(F.L.SetNode(0, &Plain), EInvalidCast);
  }
  {
    // Nodes a list made outlive it: one still unadopted, one adopted by another list, and
    // the freed slots of a list are reused by its next nodes.
    auto Maker = std::make_unique<TGLinkedList>();
    std::unique_ptr<TSQNode> Loose = Maker->NewNode();
    TGLinkedList Other;
    TSQNode* Moved = Other.Insert(Maker->NewNode().release(), nullptr);
    TSQNode* First = Maker->Add(Obj(1));
    Maker->Delete(First);
    EXPECT_EQ(Maker->Add(Obj(2)), First);
    Maker.reset();
    Loose->SetItem(Obj(3));
    Other.Add(Obj(4));
    EXPECT_EQ(Other.GetNode(0), Moved);
    EXPECT_EQ(Other.GetItem(1), Obj(4));
    Loose.reset();
    Other.Clear();
  }
  {
    // Nodes from elsewhere (the global heap, another list's store) are freed once, in the
    // order the list took them, and so are the list's own that nothing links to any more.
    struct TWatched : TSQNode {
      std::vector<int>* Log;
      int Id;
      TWatched(std::vector<int>* L, int I) : Log(L), Id(I) {}
      ~TWatched() override { Log->push_back(Id); }
    };
    std::vector<int> Freed;
    TGQueue Q;
    TGLinkedList Maker;
    Q.Push(Obj(1));
    Q.AddNode(new TWatched(&Freed, 1));
    TSQNode* Borrowed = Q.AddNode(Maker.NewNode().release());
    Q.Push(Obj(2));
    Q.AddNode(new TWatched(&Freed, 2));
    Q.AddNode(new TWatched(&Freed, 3));
    EXPECT_EQ(Borrowed->GetOwnerList(), &Q);
    EXPECT_EQ(Q.GetTail()->GetOwnerList(), &Q);
    EXPECT_EQ(Q.Pop(), Obj(1));
    EXPECT_EQ(Q.Pop(), nullptr);
    EXPECT_EQ(Freed, (std::vector<int>{1}));
    Q.GetHead()->SetNext(nullptr);
    Q.Clear();
    EXPECT_EQ(Freed, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(Q.GetCount(), 3);
    Q.Push(Obj(3));
    EXPECT_EQ(Q.Pop(), Obj(3));
  }
}
