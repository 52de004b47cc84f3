// The messages of the generic collections, in the unit's own name scope.
#pragma once

#include "Runtime/Errors.h"

namespace kz::KZGenericsCollections {
KZ_UNIT_SCOPE(KZGenericsCollections)
KZ_RESOURCESTRING(STableEmpty, u"Table is empty")
}  // namespace kz::KZGenericsCollections
