// Node-based lists and the stacks and queues built on them: singly and doubly linked lists of
// object references with one shared cursor, linked queues, stacks, string and priority queues,
// and the array-based ordered list, queue and stack.
#pragma once

#include "Runtime/Errors.h"

namespace kz {
namespace GLists {
KZ_UNIT_SCOPE(GLists)
KZ_RESOURCESTRING(SErrorAssigning, u"Error assigning %s to %s")
KZ_RESOURCESTRING(SInvalidIndex, u"Invalid Index")
KZ_RESOURCESTRING(SListEmpty, u"List is empty")
KZ_RESOURCESTRING(SCannotSortQueue, u"Cannot sort stack or queue")
KZ_RESOURCESTRING(SNodeNotFound, u"Cannot find node within list")
KZ_RESOURCESTRING(SEndOfList, u"End of list")
KZ_RESOURCESTRING(SNodeInList, u"Node already belongs to a list")
KZ_RESOURCESTRING(SBrokenLinks, u"Node links do not reach the end of the list")
KZ_RESOURCESTRING(SNodeFreed, u"Node was freed by a change handler while it was being added")
}  // namespace GLists
}  // namespace kz

#include "GLists/Nodes.h"
#include "GLists/LinkedLists.h"
#include "GLists/LinkedContainers.h"
#include "GLists/ArrayContainers.h"
