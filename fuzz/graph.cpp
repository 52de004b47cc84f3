// Reads arbitrary bytes as the stored form of each graph kind, then runs the algorithms over
// whatever was read: reading may raise library errors only, and must leave a graph that the
// algorithms, another store and the destructor handle.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "ActivityNetwork/ActivityNetwork.h"
#include "Runtime/Filer.h"

namespace {

using namespace kz;

std::unique_ptr<TGCustomGraph> MakeGraph(int Kind) {
  switch (Kind) {
    case 0: return std::make_unique<TGGraph>(nullptr);
    case 1: return std::make_unique<TGLabelGraph>(nullptr);
    default: return std::make_unique<TActivityNetwork>(nullptr);
  }
}

void Exercise(TGCustomGraph& G) {
  TIntfPtr<IObjectIterator> It = G.GetNodes();
  TGGraphNode* First = It->HasMoreElements() ? static_cast<TGGraphNode*>(It->NextElementO()) : nullptr;
  (void)G.TopologicalOrder();
  (void)G.IsAcyclic();
  if (!First) return;
  G.TraverseFrom(First);
  try {
    G.EnumerateShortestPaths(First);
  } catch (const EInvalidCast&) {
  }
  if (auto* N = dynamic_cast<TActivityNetwork*>(&G)) {
    std::int32_t PathTime = 0;
    try {
      (void)N->GetCriticalActivities(nullptr, nullptr, PathTime);
    } catch (const Exception&) {
    }
  }
  TBytesStream Out;
  TWriter(&Out).WriteRootComponent(&G);
  G.SetDirected(!G.GetDirected());
  First->Clear();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  static const bool Registered = (GGraph::Initialize(), ActivityNetwork::Initialize(), true);
  (void)Registered;
  const TBytes Bytes(Data, Size);
  for (int Kind = 0; Kind < 3; ++Kind) {
    std::unique_ptr<TGCustomGraph> G = MakeGraph(Kind);
    try {
      TBytesStream M(Bytes);
      TReader(&M).ReadRootComponent(G.get());
    } catch (const Exception&) {
    }
    try {
      Exercise(*G);
    } catch (const Exception&) {
    }
  }
  return 0;
}
