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
      {{5, 3, 8, 9}, "5/-1 3/0 8/-1 9/0"},  // no rotation: balances along the path
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
  EXPECT_EQ(Forty->GetItem(), &A);
  Tree.SetDuplicates(dupError);
  EXPECT_EQ(MessageOf<EStringListError>([&] { Tree.Add(&B, 45); }), u"Duplicate priorities in tree");
  Tree.SetDuplicates(dupAccept);
  EXPECT_EQ(MessageOf<ETreeException>([&] { Tree.Add(&B, 45); }), LoadResString(GTree::SDuplicateCycle));
  EXPECT_EQ(Shape(Tree), Before);
  EXPECT_EQ(Tree.GetCount(), 3);

  THB* Parent = nullptr;
  EXPECT_EQ(Tree.FindNode(Parent, 45, &A), Forty);
  EXPECT_EQ(Parent->GetPriority(), 40);
  EXPECT_EQ(Tree.FindNode(Parent, 45, &B), nullptr);
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
  EXPECT_EQ(Tree.GetCount(), 3);

  // A start node below the root that would have to rotate is refused before any change.
  TGHeightBalancedTree Small;
  AddAll(Small, {50, 30, 70, 20});
  const std::string SmallBefore = Shape(Small);
  EXPECT_EQ(MessageOf<ETreeException>([&] { Small.Add(nullptr, 10, Small.GetRoot()->GetHBLeft()); }),
            LoadResString(GTree::SRotationAboveStart));
  EXPECT_EQ(Shape(Small), SmallBefore);
  Small.Add(nullptr, 40, Small.GetRoot()->GetHBLeft());
  EXPECT_EQ(Shape(Small), "50/1 30/0 20/0 40/0 70/0");
}

// True height of every subtree, bottom up, without recursion.
std::map<const THB*, int> Heights(const TGHeightBalancedTree& Tree) {
  std::map<const THB*, int> H;
  auto Of = [&](const THB* N) { return N ? H[N] : 0; };
  Tree.Traverse(Tree.GetRoot(), [&](TGCustomTreeNode* N, std::int32_t) {
    auto* X = static_cast<THB*>(N);
    H[X] = 1 + std::max(Of(X->GetHBLeft()), Of(X->GetHBRight()));
  }, toPostOrder, 0);
  return H;
}

void CheckSearchTree(const TGHeightBalancedTree& Tree, const std::set<int>& Model, bool Balanced) {
  std::vector<int> InOrder;
  Tree.Traverse(Tree.GetRoot(), [&](TGCustomTreeNode* N, std::int32_t) {
    InOrder.push_back(static_cast<THB*>(N)->GetPriority());
  }, toInOrder, 0);
  ASSERT_EQ(InOrder, std::vector<int>(Model.begin(), Model.end()));
  if (!Balanced) return;
  const auto H = Heights(Tree);
  for (const auto& [N, Height] : H) {
    const int Left = N->GetLeft() ? H.at(N->GetHBLeft()) : 0;
    const int Right = N->GetRight() ? H.at(N->GetHBRight()) : 0;
    ASSERT_EQ(N->GetBalanceFactor(), Left - Right) << "at " << N->GetPriority();
  }
  ASSERT_LE(H.at(Tree.GetRoot()), 1.4405 * std::log2(static_cast<double>(Model.size()) + 2));
}

TEST(HeightBalancedTree, RandomAndOrderedRunsAgainstASet) {
  NodesAlive = 0;
  std::mt19937 Rng(2024);
  std::vector<std::pair<std::vector<int>, bool>> Runs;  // priorities, never takes right-left
  std::vector<int> Ascending(300), Descending(300), Alternating;
  for (int I = 0; I < 300; ++I) {
    Ascending[static_cast<std::size_t>(I)] = I;
    Descending[static_cast<std::size_t>(I)] = 300 - I;
    Alternating.push_back(I % 2 ? -I : I);
  }
  Runs.emplace_back(Ascending, true);
  Runs.emplace_back(Descending, true);
  Runs.emplace_back(Alternating, true);
  for (int R = 0; R < 2; ++R) {
    std::vector<int> Random(1000);
    for (int& P : Random) P = static_cast<int>(Rng() % 600) - 300;
    Runs.emplace_back(Random, false);
  }
  int Refused = 0;
  for (const auto& [Priorities, Balanced] : Runs) {
    {
      TGHeightBalancedTree Tree;
      Tree.SetNodeType(&TCountedHBNode::ClassInfo());
      std::set<int> Model;
      for (int P : Priorities) {
        THB* Parent;
        THB* Existing = Model.count(P) ? Tree.FindNode(Parent, P, nullptr) : nullptr;
        THB* Added;
        try {
          Added = Tree.Add(nullptr, P);
        } catch (const EAccessViolation&) {
          // The shared right-left table left a node heavy on an empty side: refused whole.
          ASSERT_FALSE(Balanced);
          ASSERT_NO_FATAL_FAILURE(CheckSearchTree(Tree, Model, false));
          ++Refused;
          continue;
        }
        if (Existing) {
          ASSERT_EQ(Added, Existing);
        }
        Model.insert(P);
        ASSERT_NO_FATAL_FAILURE(CheckSearchTree(Tree, Model, Balanced));
      }
      EXPECT_EQ(NodesAlive, static_cast<int>(Model.size()));
    }
    EXPECT_EQ(NodesAlive, 0);
  }
  RecordProperty("RefusedInserts", Refused);
}

}  // namespace
