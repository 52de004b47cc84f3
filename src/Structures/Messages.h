// The Structures unit's messages.
#pragma once

#include "Runtime/Errors.h"

namespace kz {

namespace Structures {
KZ_UNIT_SCOPE(Structures)
KZ_RESOURCESTRING(SStringListFull, u"String List Max Count exceeded: %d")
KZ_RESOURCESTRING(SInvalidCompareResult,
                  u"Item comparison answered %d; a sorted collection needs exactly -1, 0 or 1")
}  // namespace Structures

}  // namespace kz
