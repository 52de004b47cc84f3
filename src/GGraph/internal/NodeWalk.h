// Walking a graph's nodes in GetNodes order.
#pragma once

#include "GGraph/Graphs.h"

namespace kz::detail {

/// Calls Fn on every node GetNodes yields, in its order. GetNodes yields graph nodes only.
template <class TFn>
void ForEachNode(const TGCustomGraph& Graph, TFn&& Fn) {
  TIntfPtr<IObjectIterator> It = Graph.GetNodes();
  while (It->HasMoreElements()) Fn(static_cast<TGGraphNode*>(It->NextElementO()));
}

/// dynamic_cast, quick for an object of exactly class T.
template <class T, class U>
T* DynamicAs(U* Obj) {
  if (Obj && IsExactly<T>(Obj)) return static_cast<T*>(Obj);
  return dynamic_cast<T*>(Obj);
}

/// Edge's ends, raising EAccessViolation for one forgotten by a teardown.
inline TGGraphNode* ToNodeOf(const TGGraphEdge* Edge) {
  if (TGGraphNode* N = Edge->GetToNode()) return N;
  RaiseNullAccess(u"edge's ToNode");
}
inline TGGraphNode* FromNodeOf(const TGGraphEdge* Edge) {
  if (TGGraphNode* N = Edge->GetFromNode()) return N;
  RaiseNullAccess(u"edge's FromNode");
}

}  // namespace kz::detail
