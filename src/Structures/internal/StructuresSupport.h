// Pieces shared by the Structures unit's source files. Not part of the public interface.
#pragma once

#include "Structures/Structures.h"

namespace kz::detail {

/// The ForEach walk of the string lists: from the last line down to the first.
void ForEachLine(TStrings* List, const TForEachObjectMethod& Proc, const TForEachFilterMethod& Filter,
                 NativeInt Data);
/// The plain form as the method form.
void ForEachLine(TStrings* List, TForEachObjectProc Proc, TForEachFilterProc Filter, NativeInt Data);

}  // namespace kz::detail
