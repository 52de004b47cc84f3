// The messages of the heap, priority-queue and object-container unit.
#pragma once

#include "Runtime/Errors.h"

namespace kz {
namespace DataStructures {
KZ_UNIT_SCOPE(DataStructures)
KZ_RESOURCESTRING(SListEmpty, u"List is empty")
KZ_RESOURCESTRING(SQueueEmpty, u"Queue is empty")
KZ_RESOURCESTRING(SElementNotInHeap, u"Element is not in this heap")
KZ_RESOURCESTRING(SHeapChangedByCompare, u"Heap changed by its own comparison")
}  // namespace DataStructures
}  // namespace kz
