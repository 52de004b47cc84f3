// The package root: every unit of the library, and the start-up that runs their
// initialisation once, in unit order, when the library is loaded.
#pragma once

#include <cstddef>
#include <string_view>

#include "Runtime/Runtime.h"
#include "KZConstants/KZConstants.h"
#include "KZMessages/KZMessages.h"
#include "CommonInterfaces/CommonInterfaces.h"
#include "RefCount/RefCount.h"
#include "Structures/Structures.h"
#include "GLists/GLists.h"
#include "ListColl/ListColl.h"
#include "GHashTable/GHashTable.h"
#include "DataStructures/DataStructures.h"
#include "GTree/GTree.h"
#include "GGraph/GGraph.h"
#include "ActivityNetwork/ActivityNetwork.h"
#include "GStreams/GStreams.h"
#include "GParser/GParser.h"
#include "GRegularExpression/GRegularExpression.h"
#include "GValue/GValue.h"
#include "HelperFunctions/HelperFunctions.h"
#include "KZVector/KZVector.h"
#include "KZEncodedBits/KZEncodedBits.h"
#include "InterfaceCollections/InterfaceCollections.h"
#include "KZInterfaceCollections/KZInterfaceCollections.h"
#include "KZGenerics.Collections/KZGenerics.Collections.h"

namespace kz {

/// One unit of the package as the start-up sees it.
struct TPackageUnit {
  const char* Name;
  void (*Initialize)();  // may be null: most units only mark themselves initialised
  void (*Finalize)();    // may be null
};

/// The units in package order.
std::size_t PackageUnitCount();
const TPackageUnit& PackageUnit(std::size_t Index);
/// True once the unit's initialisation has run (and until its finalisation has).
bool IsUnitInitialized(std::string_view Name);

}  // namespace kz
