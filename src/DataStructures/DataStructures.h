// Heaps of self-indexing elements, the priority queues and priority list built on them, and
// the object stack and queue.
#pragma once

#include "DataStructures/Messages.h"
#include "DataStructures/ObjectContainers.h"
