// Node classes that count how many of them are alive, and small helpers over tree walks.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "GTree/GTree.h"
#include "Runtime/TestSupport.h"

namespace kz::test {

inline int NodesAlive = 0;

template <class TBase>
class TCountedNodeOf : public TBase {
 public:
  using TBase::TBase;
  TCountedNodeOf(const TCountedNodeOf&) = delete;
  ~TCountedNodeOf() override { --NodesAlive; }

 private:
  [[maybe_unused]] int FCounted = ++NodesAlive;
};

class TCountedNode : public TCountedNodeOf<TGTreeNode> {
  KZ_CLASS(TCountedNode, TGTreeNode)
 public:
  using TCountedNodeOf::TCountedNodeOf;
};

class TCountedHBNode : public TCountedNodeOf<TGHeightBalancedTreeNode> {
  KZ_CLASS(TCountedHBNode, TGHeightBalancedTreeNode)
 public:
  using TCountedNodeOf::TCountedNodeOf;
};

/// The tags (TCounted items) of the nodes a walk visits, 0 for nodes without an item.
inline std::vector<int> TagsInOrder(const TGCustomTree& Tree, TGCustomTreeNode* From, TTraversalOrder Order) {
  std::vector<int> Tags;
  Tree.Traverse(From, [&](TGCustomTreeNode* N, std::int32_t) {
    Tags.push_back(N->GetItem() ? static_cast<TCounted*>(N->GetItem())->Tag() : 0);
  }, Order, 0);
  return Tags;
}

}  // namespace kz::test
