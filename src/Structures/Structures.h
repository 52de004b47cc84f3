// String lists with an object and a datum per line, owner notifications and filtered
// iteration; owned collections with free notifications, lookup by name and host-ordered
// sorting; the string list with a hard maximum count and the most-recently-used list.
// The unit's one include for users; each class family has its own header.
#pragma once

#include "Structures/Messages.h"
#include "Structures/GStringList.h"
#include "Structures/SFCList.h"
#include "Structures/Collections.h"
#include "Structures/RecentFiles.h"
