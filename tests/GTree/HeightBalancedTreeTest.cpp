// The height-balanced tree: each rotation's shape and balance factors, the duplicate
// policies, FindNode, Delete, and long random runs against a set.
#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>
#include <string>

#include "TreeTestSupport.h"

using namespace kz;
using namespace kz::test;

namespace {

using THB = TGHeightBalancedTreeNode;

// Pre-order "priority/balance" of every node: with the search order it fixes the shape.
std::string Shape(const TGHeightBalancedTree& Tree) {
  std::string S;
  Tree.Traverse(Tree.GetRoot(), [&](TGCustomTreeNode* N, std::int32_t) {
    auto* H = static_cast<THB*>(N);
    S += (S.empty() ? "" : " ") + std::to_string(H->GetPriority()) + "/" + std::to_string(H->GetBalanceFactor());
  }, toPreOrder, 0);
  return S;
}

void AddAll(TGHeightBalancedTree& Tree, const std::vector<int>& Priorities) {
  for (int P : Priorities) Tree.Add(nullptr, P);
}

TEST(HeightBalancedTree, RotationsShapesAndBalances) {
  const std::pair<std::vector<int>, const char*> Cases[] = {
      {{3, 2, 1}, "2/0 1/0 3/0"},  // single right
      {{1, 2, 3}, "2/0 1/0 3/0"},  // single left
      {{3, 1, 2}, "2/0 1/0 3/0"},  // left-right
      {{1, 3, 2}, "2/0 1/0 3/0"},  // right-left
      // Left-right with a left-heavy middle node: the true balances.
      {{20, 10, 30, 5, 15, 17}, "15/0 10/1 5/0 20/0 17/0 30/0"},
      // Right-left with a left-heavy middle node: the shared table gives 10 -1 and 20 0,
      // where the heights would say 0 and -1.
      {{10, 5, 20, 15, 25, 12}, "15/0 10/-1 5/0 12/0 20/0 25/0"},
  };
  for (const auto& [Priorities, Expected] : Cases) {
    TGHeightBalancedTree Tree;
    AddAll(Tree, Priorities);
    EXPECT_EQ(Shape(Tree), Expected);
  }
  // Stored balances left by that table can make a node look heavy on its empty side: the
  // double rotation there has no middle node, and the insertion is refused whole.
  TGHeightBalancedTree Skewed;
  AddAll(Skewed, {7, 10, 15, 25, 18, 17, 1, 3, 5});
  const std::string Before = Shape(Skewed);
  EXPECT_THROW(Skewed.Add(nullptr, 12), EAccessViolation);
  EXPECT_EQ(Shape(Skewed), Before);
}

TEST(HeightBalancedTree, DuplicatesFindNodeAndDelete) {
  TCounted A(1), B(2);
  TGHeightBalancedTree Tree;
  AddAll(Tree, {50, 30, 70, 20, 40, 60, 80, 10});
  THB* Forty = Tree.Add(&A, 45);
  const std::string Before = Shape(Tree);
  EXPECT_EQ(Tree.Add(&B, 45), Forty);
  Tree.SetDuplicates(dupError);
  EXPECT_EQ(MessageOf<EStringListError>([&] { Tree.Add(&B, 45); }), u"Duplicate priorities in tree");
  Tree.SetDuplicates(dupAccept);
  EXPECT_EQ(MessageOf<ETreeException>([&] { Tree.Add(&B, 45); }), LoadResString(GTree::SDuplicateCycle));

  THB* Parent = nullptr;
  EXPECT_EQ(Tree.FindNode(Parent, 45, &A), Forty);
  EXPECT_EQ(Parent->GetPriority(), 40);
  EXPECT_EQ(Tree.FindNode(Parent, 55, nullptr), nullptr);
  EXPECT_EQ(Parent->GetPriority(), 60);

  // Delete removes nothing; where it would never end it raises.
  Tree.Delete(nullptr, 50);                              // root with two children
  Tree.Delete(&B, 45);                                   // not found
  EXPECT_THROW(Tree.Delete(nullptr, 80), EAccessViolation);  // a leaf
  EXPECT_EQ(MessageOf<ETreeException>([&] { Tree.Delete(&A, 45, Tree.GetRoot()->GetHBLeft()); }),
            LoadResString(GTree::SDeleteNotAtRoot));
  Tree.FindNode(Parent, 20, nullptr)->SetItem(&B);  // 20 has the single child 10
  EXPECT_EQ(MessageOf<ETreeException>([&] { Tree.Delete(&B, 20); }), LoadResString(GTree::SDeleteRepeats));
  EXPECT_EQ(Shape(Tree), Before);

  // A start node below the root that would have to rotate is refused before any change.
  TGHeightBalancedTree Small;
  AddAll(Small, {50, 30, 70, 20});
  EXPECT_EQ(MessageOf<ETreeException>([&] { Small.Add(nullptr, 10, Small.GetRoot()->GetHBLeft()); }),
            LoadResString(GTree::SRotationAboveStart));
  EXPECT_EQ(Shape(Small), "50/1 30/1 20/0 70/0");
  Small.Add(nullptr, 40, Small.GetRoot()->GetHBLeft());
  EXPECT_EQ(Shape(Small), "50/1 30/0 20/0 40/0 70/0");
}

// In-order priorities equal the model's; on Balanced runs every stored balance is the true
// height difference (heights computed bottom up, without recursion) and the height bound holds.
void CheckSearchTree(const TGHeightBalancedTree& Tree, const std::set<int>& Model, bool Balanced) {
  std::vector<int> InOrder;
  std::map<const TGCustomTreeNode*, int> H{{nullptr, 0}};
  Tree.Traverse(Tree.GetRoot(), [&](TGCustomTreeNode* N, std::int32_t) {
    InOrder.push_back(static_cast<THB*>(N)->GetPriority());
  }, toInOrder, 0);
  ASSERT_EQ(InOrder, std::vector<int>(Model.begin(), Model.end()));
  if (!Balanced) return;
  Tree.Traverse(Tree.GetRoot(), [&](TGCustomTreeNode* N, std::int32_t) {
    auto* X = static_cast<THB*>(N);
    const int L = H.at(X->GetLeft()), R = H.at(X->GetRight());
    EXPECT_EQ(X->GetBalanceFactor(), L - R) << "at " << X->GetPriority();
    H[X] = 1 + std::max(L, R);
  }, toPostOrder, 0);
  ASSERT_LE(H[Tree.GetRoot()], 1.4405 * std::log2(static_cast<double>(Model.size()) + 2));
}

TEST(HeightBalancedTree, RandomAndOrderedRunsAgainstASet) {
  NodesAlive = 0;
  std::mt19937 Rng(2024);
  // Ascending, descending and alternating runs never take the right-left rotation.
  std::vector<std::vector<int>> Runs(5);
  for (int I = 0; I < 300; ++I) {
    Runs[0].push_back(I);
    Runs[1].push_back(-I);
    Runs[2].push_back(I % 2 ? -I : I);
  }
  for (std::size_t R = 3; R < Runs.size(); ++R)
    for (int I = 0; I < 1000; ++I) Runs[R].push_back(static_cast<int>(Rng() % 600) - 300);
  for (std::size_t R = 0; R < Runs.size(); ++R) {
    {
      TGHeightBalancedTree Tree;
      Tree.SetNodeType(&TCountedHBNode::ClassInfo());
      std::set<int> Model;
      for (int P : Runs[R]) {
        Tree.Add(nullptr, P);
        Model.insert(P);
        ASSERT_NO_FATAL_FAILURE(CheckSearchTree(Tree, Model, R < 3));
      }
      EXPECT_EQ(NodesAlive, static_cast<int>(Model.size()));
    }
    EXPECT_EQ(NodesAlive, 0);
  }
}

}  // namespace
