// A node made for a list and held by the code adding it until the list adopts it.
#pragma once

#include <memory>

#include "GLists/Nodes.h"

namespace kz::detail {

/// Frees the node unless a list adopted it meanwhile: adding a node can raise after the
/// adoption (an OnChange handler that raises), and the list then keeps and frees it.
struct TFreshNodeDelete {
  void operator()(TSQNode* Node) const noexcept {
    if (!Node->GetOwnerList()) delete Node;
  }
};

template <class TNode>
using TFreshNode = std::unique_ptr<TNode, TFreshNodeDelete>;

}  // namespace kz::detail
