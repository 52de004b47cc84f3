// Graph edges: the plain edge, the weighted edge and the edge list a node keeps.
#pragma once

#include <cstdint>

#include "GGraph/Base.h"
#include "KZGenerics.Collections/ListEnumerator.h"
#include "Runtime/Generics.h"
#include "Runtime/Persistent.h"

namespace kz {

class TReader;
class TWriter;

namespace detail {
struct TGraphArrays;
}  // namespace detail

/// A connection from the node that made it (FromNode, its owner) to ToNode. The family has
/// a virtual constructor taking both ends (TGGraphEdgeClass). Building an edge lists it at
/// its ends and counts it in ToNode's InDegree (mirrored at ToNode in an undirected graph);
/// destroying it undoes exactly that. Both ends must belong to one graph, else
/// EGraphException "Edge must be created with two valid nodes": an edge never joins two
/// graphs, so a node that leaves its graph takes no edge along.
class TGGraphEdge : public TPersistent {
 public:
  using TMeta = kz::TMetaClassOf<TGGraphEdge, TGGraphNode*, TGGraphNode*>;
  KZ_CLASS(TGGraphEdge, TPersistent)
 public:
  TGGraphEdge(TGGraphNode* AFromNode, TGGraphNode* AToNode);
  /// Unlinks the edge from both ends (each hears Change). Handlers must not raise here.
  ~TGGraphEdge() override;

  /// Null only on an edge caught in a graph's teardown (FastClear).
  [[nodiscard]] TGGraphNode* GetFromNode() const { return FFromNode; }
  [[nodiscard]] TGGraphNode* GetToNode() const { return FToNode; }

  /// From another edge: a plain edge has nothing to copy.
  void Assign(TPersistent* Source) override;
  /// The edge's own stored data after its class name and end positions; nothing here.
  virtual void ReadData(TReader* Reader);
  virtual void WriteData(TWriter* Writer);
  /// Part of tearing a whole graph down (see TGGraphNode::FastClear): in an undirected graph
  /// the edge leaves the list of a ToNode that is neither Node nor FromNode; FromNode is
  /// forgotten when it is Node, ToNode always. No events, no in-degree bookkeeping.
  virtual void FastClear(TGGraphNode* Node);
  /// Tells FromNode and, when it differs, ToNode.
  virtual void Change();

 private:
  friend class TGGraphNode;
  friend struct detail::TGraphArrays;
  // The ends first: a walk reads them (and a subclass's first field) in one line.
  TGGraphNode* FToNode = nullptr;
  TGGraphNode* FFromNode = nullptr;
  // Whether the edge sits in FromNode's and ToNode's lists: "is it listed yet" in O(1).
  bool FListedAtFrom = false;
  bool FListedAtTo = false;
};

using TGGraphEdgeClass = const TGGraphEdge::TMeta*;

/// An edge with an int32 weight (a duration, a distance).
class TWeightedEdge : public TGGraphEdge {
  KZ_CLASS(TWeightedEdge, TGGraphEdge)
 public:
  TWeightedEdge(TGGraphNode* AFromNode, TGGraphNode* AToNode) : TGGraphEdge(AFromNode, AToNode) {}

  [[nodiscard]] TGraphWeight GetWeight() const { return FWeight; }
  /// Stores Value; Change only when it differs.
  void SetWeight(TGraphWeight Value);
  /// Copies the weight from another weighted edge.
  void Assign(TPersistent* Source) override;
  void ReadData(TReader* Reader) override;
  void WriteData(TWriter* Writer) override;

 private:
  TGraphWeight FWeight = 0;
};

/// A node's list of edges, in insertion order. It does not own the edges.
class TGGraphEdges : public Generics::TList<TGGraphEdge*> {
  KZ_CLASS(TGGraphEdges, Generics::TList<TGGraphEdge*>)
 public:
  /// Takes Edge out (searching from the front, or from the back with FromBack); false when
  /// it is not listed.
  bool RemoveEdge(TGGraphEdge* Edge, bool FromBack = false);
};

using TGGraphEdgesEnumeratorBase = TKZListEnumerator<TGGraphEdge*, TGGraphEdges>;

/// Walks a node's edges (read live, not owned).
class TGGraphEdgesEnumerator : public TGGraphEdgesEnumeratorBase {
  KZ_CLASS(TGGraphEdgesEnumerator, TGGraphEdgesEnumeratorBase)
 public:
  using TGGraphEdgesEnumeratorBase::TGGraphEdgesEnumeratorBase;
};

}  // namespace kz
