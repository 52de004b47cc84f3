// A node made for a list and held by the code adding it until the list adopts it.
#pragma once

#include <cstdint>

#include "GLists/GLists.h"

namespace kz::detail {

/// Watches Node while code of List adds it: the list notes when it adopts and when it frees
/// the watched node, so that the adding code never reads a node that an OnChange handler
/// freed (for instance by a Clear) and never frees one the list took. Watches nest.
template <class TNode>
class TFreshNode {
 public:
  /// Owning: frees Node at scope exit unless it was released or a list took it.
  TFreshNode(TGCustomLinkedList& List, TNode* Node) noexcept : TFreshNode(List, Node, true) {}
  TFreshNode(const TFreshNode&) = delete;
  TFreshNode& operator=(const TFreshNode&) = delete;
  ~TFreshNode() {
    const bool Taken = FList.FFreshState & TGCustomLinkedList::fsAdopted;
    FList.FFresh = FSavedFresh;
    FList.FFreshState = FSavedState;
    FList.NoteInline();
    // A node adopted by another list (a host's AddNode) belongs to that list.
    if (FOwns && !Taken && !FNode->GetOwnerList()) delete FNode;
  }
  /// Watching only: for a node the list already holds.
  static TFreshNode Watch(TGCustomLinkedList& List, TNode* Node) noexcept { return TFreshNode(List, Node, false); }

  TNode* get() const noexcept { return FNode; }
  TNode* operator->() const noexcept { return FNode; }
  TNode* release() noexcept {
    FOwns = false;
    return FNode;
  }
  /// The node, still alive; raises EListError when the list freed it meanwhile.
  TNode* Live() const {
    if (FList.FFreshState & TGCustomLinkedList::fsFreed) throw EListError(GLists::SNodeFreed);
    return FNode;
  }

 private:
  TFreshNode(TGCustomLinkedList& List, TNode* Node, bool Owns) noexcept
      : FList(List), FNode(Node), FOwns(Owns), FSavedFresh(List.FFresh), FSavedState(List.FFreshState) {
    List.FFresh = Node;
    List.FFreshState = Owns ? 0 : TGCustomLinkedList::fsAdopted;
    List.NoteInline();
  }

  TGCustomLinkedList& FList;
  TNode* FNode;
  bool FOwns;
  const TSQNode* FSavedFresh;
  std::uint8_t FSavedState;
};

}  // namespace kz::detail
