// The general tree: counts, walks, searches, notifications, copies, ownership and deep chains.
#include <deque>
#include <string>

#include "TreeTestSupport.h"

using namespace kz;
using namespace kz::test;

namespace {

class GeneralTree : public testing::Test {
 protected:
  void SetUp() override {
    NodesAlive = 0;
    for (int I = 0; I < 16; ++I) Items.emplace_back(I);
    Tree.SetNodeType(&TCountedNode::ClassInfo());
  }
  TCounted* It(int I) { return &Items[static_cast<std::size_t>(I)]; }
  // Root 1 with children 2, 3, 4; each of those with two children (5..10).
  void BuildSample() {
    Tree.SetRoot(Tree.NewNode().release());
    Tree.GetRoot()->SetItem(It(1));
    for (int I = 0; I < 3; ++I) {
      TGCustomTreeNode* C = Tree.GetRoot()->NewChild();
      C->SetItem(It(2 + I));
      C->NewChild()->SetItem(It(5 + 2 * I));
      C->NewChild()->SetItem(It(6 + 2 * I));
    }
  }

  std::deque<TCounted> Items;
  TGTree Tree;
};

TEST_F(GeneralTree, CountWalksAndSearches) {
  BuildSample();
  TGTreeNode* Root = Tree.GetRoot();
  EXPECT_EQ(Tree.GetCount(), 4);
  EXPECT_EQ(TagsInOrder(Tree, Root, toPreOrder), (std::vector<int>{1, 2, 5, 6, 3, 7, 8, 4, 9, 10}));
  EXPECT_EQ(TagsInOrder(Tree, Root, toInOrder), (std::vector<int>{5, 2, 6, 1, 7, 3, 8, 9, 4, 10}));
  EXPECT_EQ(TagsInOrder(Tree, Root, toPostOrder), (std::vector<int>{5, 6, 2, 7, 8, 3, 9, 10, 4, 1}));

  TGCustomTreeNode* Eight = Root->GetChild(1)->GetChild(1);
  EXPECT_EQ(Tree.FindNode(Root, Root, toPreOrder), nullptr);
  EXPECT_EQ(Tree.FindNode(Root, Eight, toPostOrder), Root->GetChild(1));
  EXPECT_EQ(Eight->GetParent(), Root->GetChild(1));
  EXPECT_EQ(Tree.FindItemNode(Root, It(8), toInOrder), Eight);
  EXPECT_THROW((void)Root->GetChild(3), EArgumentOutOfRangeException);

  TList List;
  Tree.AssignTo(&List);
  EXPECT_EQ(List.GetItem(3), It(6));

  // A walk's iterator cannot free nodes of the walk; its own exceptions pass unchanged.
  EXPECT_EQ(MessageOf<ETreeException>([&] {
              Tree.Traverse(Root, [&](TGCustomTreeNode* N, std::int32_t) { Tree.Delete(N); }, toPostOrder, 0);
            }),
            LoadResString(GTree::SFreeDuringWalk));
  EXPECT_EQ(NodesAlive, 10);
}

TEST_F(GeneralTree, ErrorsAndNotifications) {
  BuildSample();
  TGTree Other;
  auto Foreign = Other.NewNode();
  EXPECT_EQ(MessageOf<ETreeException>([&] { Tree.Delete(Foreign.get()); }), u"Owner of Node does not match Self");
  EXPECT_EQ(MessageOf<ETreeException>([&] { Tree.GetRoot()->DeleteChild(Foreign.get()); }), u"Unknown Tree Node");
  EXPECT_EQ(MessageOf<ETreeException>([&] { Tree.SetNodeType(&TGTreeNode::ClassInfo()); }),
            u"Cannot change node types while any nodes exist");
  EXPECT_THROW(Tree.Delete(Tree.GetRoot()), EAccessViolation);

  std::string Log;
  Tree.SetOnChanging([&](TObject* S) { Log += S == &Tree ? "[" : "?"; });
  Tree.SetOnChange([&](TObject* S) { Log += S == &Tree ? "]" : S == Tree.GetRoot() ? "r" : "n"; });
  Tree.EndUpdate();  // unmatched: ignored
  Tree.BeginUpdate();
  Tree.BeginUpdate();
  Tree.GetRoot()->NewChild();
  Tree.EndUpdate();
  Tree.EndUpdate();
  EXPECT_EQ(Log, "[]");
  // Freeing a node with two leaves: each leaf's clear, its removal from the node, the
  // node's own clear, then its removal from the root.
  Tree.Delete(Tree.GetRoot()->GetChild(0));
  EXPECT_EQ(NodesAlive, 8);
  // A handler cannot free nodes that a running clear still holds.
  Tree.SetOnChange([&](TObject* S) {
    if (S != &Tree) Tree.Clear();
  });
  EXPECT_THROW(Tree.GetRoot()->GetChild(0)->Clear(), ETreeException);
  Tree.SetOnChange([&](TObject* S) { Log += S == &Tree ? "]" : S == Tree.GetRoot() ? "r" : "n"; });
  Tree.Clear();
  EXPECT_EQ(Log, "[]nnnnnr[]");
  EXPECT_EQ(NodesAlive, 0);
  Tree.SetOnChanging(nullptr);  // the destructor clears, and Log goes first
  Tree.SetOnChange(nullptr);
}

TEST_F(GeneralTree, LinkingOwnershipAndInsertParent) {
  BuildSample();
  TGTreeNode* Root = Tree.GetRoot();
  TGCustomTreeNode* Two = Root->GetChild(0);
  TGCustomTreeNode* Three = Root->GetChild(1);
  // A node placed elsewhere, the root and any ancestor cannot be linked again.
  EXPECT_EQ(MessageOf<ETreeException>([&] { Root->SetChild(0, Three); }), LoadResString(GTree::SNodeAlreadyLinked));
  EXPECT_EQ(MessageOf<ETreeException>([&] { Two->AddChild(Two); }), LoadResString(GTree::SNodeCycle));
  EXPECT_THROW(Tree.SetRoot(Two), ETreeException);

  // The replaced node stays alive, unlinked, until the tree goes or it is linked again.
  auto Fresh = Tree.NewNode();
  Fresh->SetItem(It(11));
  Root->SetChild(0, Fresh.release());
  EXPECT_EQ(Tree.FindNode(Root, Two, toPreOrder), nullptr);
  Three->AddChild(Two);
  EXPECT_EQ(Two->GetParent(), Three);
  Three->SetChild(2, nullptr);  // Two unlinked again

  // InsertParent puts the new node in the old place, the receiver below it.
  auto Between = Tree.NewNode();
  Between->SetItem(It(12));
  TGCustomTreeNode* Nine = Root->GetChild(2)->GetChild(0);
  EXPECT_EQ(Nine->InsertParent(Between.get()), Nine);
  EXPECT_EQ(Nine->GetParent(), Between.release());
  EXPECT_EQ(TagsInOrder(Tree, Root, toPreOrder), (std::vector<int>{1, 11, 3, 7, 8, 4, 12, 9, 10}));
  EXPECT_EQ(Root->IndexOf(Root->InsertChild(1)), 1);
  Tree.Clear();
  EXPECT_EQ(NodesAlive, 3);  // Two and its children, kept by the tree
}

TEST_F(GeneralTree, AssignCopiesDeeply) {
  BuildSample();
  TGTree Copy;
  Copy.SetNodeType(&TCountedNode::ClassInfo());
  Copy.Assign(&Tree);
  EXPECT_EQ(NodesAlive, 20);
  EXPECT_EQ(TagsInOrder(Copy, Copy.GetRoot(), toPostOrder), TagsInOrder(Tree, Tree.GetRoot(), toPostOrder));
  EXPECT_EQ(Copy.GetRoot()->GetChild(0)->GetTree(), &Copy);

  TGCustomTreeNode* Three = Tree.GetRoot()->GetChild(1);
  EXPECT_EQ(MessageOf<ETreeException>([&] { Three->Assign(Tree.GetRoot()); }), LoadResString(GTree::SCopyIntoSubtree));
  EXPECT_THROW(Tree.GetRoot()->Assign(Three), ETreeException);
  Three->Assign(Copy.GetRoot()->GetChild(2));
  EXPECT_EQ(TagsInOrder(Tree, Three, toPreOrder), (std::vector<int>{4, 9, 10}));
  Three->AddChildren(Three);
  EXPECT_EQ(TagsInOrder(Tree, Three, toPreOrder), (std::vector<int>{4, 9, 10, 9, 10}));

  TGTree Empty;
  EXPECT_THROW(Copy.Assign(&Empty), EConvertError);
  EXPECT_EQ(Copy.GetCount(), 1);
  EXPECT_THROW(Copy.Assign(Tree.GetRoot()), EConvertError);
}

TEST_F(GeneralTree, MillionNodeChain) {
  constexpr int Depth = 1000000;
  {
    TGTree Chain;
    Chain.SetNodeType(&TCountedNode::ClassInfo());
    Chain.SetRoot(Chain.NewNode().release());
    TGCustomTreeNode* Last = Chain.GetRoot();
    for (int I = 1; I < Depth; ++I) Last = Last->NewChild();
    Last->SetItem(It(3));
    int Visits = 0;
    Chain.Traverse(Chain.GetRoot(), [&](TGCustomTreeNode*, std::int32_t) { ++Visits; }, toInOrder, 0);
    EXPECT_EQ(Visits, Depth);
    EXPECT_EQ(Chain.FindItemNode(Chain.GetRoot(), It(3), toPostOrder), Last);
    TGTree Copy;
    Copy.Assign(&Chain);
    EXPECT_EQ(NodesAlive, Depth);
    // Unlinked, the chain below the root is kept and freed (silently) with the tree; the
    // copy is freed through the notifying clear.
    Chain.GetRoot()->SetChild(0, nullptr);
  }
  EXPECT_EQ(NodesAlive, 0);
}

}  // namespace
