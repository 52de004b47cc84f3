// The binary tree: sides against child positions, its errors, in-order walks, side-keeping
// copies and a degenerate chain of a million nodes.
#include <deque>

#include "TreeTestSupport.h"

using namespace kz;
using namespace kz::test;

namespace {

TGBinaryTreeNode* NewBinary(TGBinaryTree& Tree, TCounted* Item) {
  auto* N = static_cast<TGBinaryTreeNode*>(Tree.NewNode().release());
  N->SetItem(Item);
  return N;
}

TEST(BinaryTree, SidesPositionsAndErrors) {
  std::deque<TCounted> Items;
  for (int I = 0; I < 8; ++I) Items.emplace_back(I);
  auto It = [&](int I) { return &Items[static_cast<std::size_t>(I)]; };
  TGBinaryTree Tree;
  Tree.SetRoot(NewBinary(Tree, It(1)));
  TGBinaryTreeNode* Root = Tree.GetRoot();
  TGBinaryTreeNode* Right = Root->AddRightChild(NewBinary(Tree, It(3)));
  // A lone right child is position 0; AddChild fills the free left side.
  EXPECT_EQ(Root->GetChild(0), Right);
  EXPECT_EQ(MessageOf<ETreeException>([&] { (void)Root->GetChild(1); }), u"Invalid Index");
  TGCustomTreeNode* Left = Root->AddChild(NewBinary(Tree, It(2)));
  EXPECT_EQ(Root->GetLeft(), Left);
  EXPECT_EQ(Root->IndexOf(Right), 1);
  TGBinaryTreeNode* Spare = NewBinary(Tree, It(7));
  EXPECT_EQ(MessageOf<ETreeException>([&] { Root->AddChild(Spare); }), u"Cannot add any more children to node");
  EXPECT_THROW(Root->InsertChild(0), ETreeException);
  EXPECT_THROW(Right->InsertChild(1), ETreeException);

  // Inserting keeps the order of the children present.
  Right->AddRightChild(NewBinary(Tree, It(5)));
  Right->InsertChild(1)->SetItem(It(6));
  EXPECT_EQ(static_cast<TCounted*>(Right->GetLeft()->GetItem())->Tag(), 5);
  EXPECT_EQ(static_cast<TCounted*>(Right->GetRight()->GetItem())->Tag(), 6);
  Right->SetChild(0, Spare);
  EXPECT_EQ(Right->GetLeft(), Spare);
  EXPECT_EQ(TagsInOrder(Tree, Root, toInOrder), (std::vector<int>{2, 1, 7, 3, 6}));
  EXPECT_EQ(TagsInOrder(Tree, Root, toPreOrder), (std::vector<int>{1, 2, 3, 7, 6}));

  // Copies keep the sides, also of a lone right child.
  Right->DeleteChild(Spare);
  TGBinaryTree Copy;
  Copy.Assign(&Tree);
  EXPECT_EQ(Copy.GetRoot()->GetRight()->GetLeft(), nullptr);
  EXPECT_EQ(TagsInOrder(Copy, Copy.GetRoot(), toInOrder), (std::vector<int>{2, 1, 3, 6}));
}

TEST(BinaryTree, MillionNodeDegenerateChain) {
  NodesAlive = 0;
  constexpr int Depth = 1000000;
  TCounted Deepest(9);
  {
    TGBinaryTree Tree;
    Tree.SetNodeType(&TCountedHBNode::ClassInfo());
    Tree.SetRoot(Tree.NewNode().release());
    TGBinaryTreeNode* Last = Tree.GetRoot();
    for (int I = 1; I < Depth; ++I) Last = Last->AddRightChild(static_cast<TGBinaryTreeNode*>(Tree.NewNode().release()));
    Last->SetItem(&Deepest);
    int Visits = 0;
    Tree.Traverse(Tree.GetRoot(), [&](TGCustomTreeNode*, std::int32_t) { ++Visits; }, toInOrder, 0);
    EXPECT_EQ(Visits, Depth);
    EXPECT_EQ(Tree.FindItemNode(Tree.GetRoot(), &Deepest, toInOrder), Last);
    EXPECT_EQ(NodesAlive, Depth);
  }
  EXPECT_EQ(NodesAlive, 0);
}

}  // namespace
