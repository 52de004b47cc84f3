#include <initializer_list>

#include "GGraph/GGraph.h"
#include "Runtime/Filer.h"

namespace kz::GGraph {

void Initialize() {
  for (const TMetaClass* C : std::initializer_list<const TMetaClass*>{
           &TGGraphNode::ClassInfo(), &TGLinkedGraphNode::ClassInfo(), &TWeightedNode::ClassInfo(),
           &TGGraphEdge::ClassInfo(), &TWeightedEdge::ClassInfo()})
    RegisterClass(*C);
  RegisterProperties(TGCustomGraph::ClassInfo(),
                     {Published(u"Directed", &TGCustomGraph::GetDirected, &TGCustomGraph::SetDirected)});
  RegisterComponents(PalettePage, {&TGLabelGraph::ClassInfo(), &TGGraph::ClassInfo()});
}

}  // namespace kz::GGraph
