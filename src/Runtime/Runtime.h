// The runtime layer the library is built on: object model, errors and messages, text and
// numbers, persistent objects, interfaces, lists, string lists, collections, components.
#pragma once

#include "Runtime/Types.h"
#include "Runtime/Format.h"
#include "Runtime/Errors.h"
#include "Runtime/Text.h"
#include "Runtime/Object.h"
#include "Runtime/Persistent.h"
#include "Runtime/UpdateCounter.h"
#include "Runtime/Enumerable.h"
#include "Runtime/Interfaces.h"
#include "Runtime/StringLists.h"
#include "Runtime/Lists.h"
#include "Runtime/Generics.h"
#include "Runtime/Collections.h"
#include "Runtime/Components.h"
#include "Runtime/Encodings.h"
#include "Runtime/Streams.h"
#include "Runtime/Bits.h"
#include "Runtime/Variants.h"
#include "Runtime/VarRec.h"
#include "Runtime/Filer.h"
