// What the graph classes share: the unit's error class and messages, the weight type and the
// class-reference types.
#pragma once

#include <cstdint>

#include "Runtime/Errors.h"

namespace kz {

KZ_DECLARE_EXCEPTION(EGraphException, Exception)

namespace GGraph {
KZ_UNIT_SCOPE(GGraph)
KZ_RESOURCESTRING(SEdgeNodes, u"Edge must be created with two valid nodes")
KZ_RESOURCESTRING(SUnconnectedNode, u"Node \"%s\" is unconnected to any graph")
KZ_RESOURCESTRING(SDuplicateNodeName, u"Duplicate node names not allowed")
KZ_RESOURCESTRING(SNotNodeClass, u"Class %s is not a graph node class")
KZ_RESOURCESTRING(SNotEdgeClass, u"Class %s is not a graph edge class")
KZ_RESOURCESTRING(SBadNodePosition, u"Stored edge refers to node %d; %d nodes were read")
KZ_RESOURCESTRING(SAssignToSelf, u"A graph cannot be assigned from itself")

/// The palette page of the graph components.
inline constexpr char16_t PalettePage[] = u"Additional";

/// Registers the node and edge classes with the class registry and the graphs on the palette
/// page "Additional". Idempotent; the package start-up runs it.
void Initialize();
}  // namespace GGraph

/// Node and edge weights. Sums wrap around in two's complement, never trap.
using TGraphWeight = std::int32_t;
/// The weight that stands for "unreachable".
inline constexpr TGraphWeight MaxGraphWeight = 2147483647;

/// a + b and a - b wrapping around in 32 bits.
[[nodiscard]] inline std::int32_t WrapAdd(std::int32_t A, std::int32_t B) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(A) + static_cast<std::uint32_t>(B));
}
[[nodiscard]] inline std::int32_t WrapSub(std::int32_t A, std::int32_t B) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(A) - static_cast<std::uint32_t>(B));
}

class TGGraphEdge;
class TGGraphNode;
class TGCustomGraph;

}  // namespace kz
