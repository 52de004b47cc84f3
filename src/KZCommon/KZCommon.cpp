#include "KZCommon/KZCommon.h"

#include <array>
#include <atomic>

namespace kz {

using namespace Runtime;

namespace {

// Package order. None of the units builds global state at start-up.
constexpr std::array<TPackageUnit, 23> GUnits{{
    {"Runtime", nullptr, nullptr},
    {"KZConstants", nullptr, nullptr},
    {"KZMessages", nullptr, nullptr},
    {"CommonInterfaces", nullptr, nullptr},
    {"RefCount", nullptr, nullptr},
    {"Structures", nullptr, nullptr},
    {"GLists", nullptr, nullptr},
    {"ListColl", nullptr, nullptr},
    {"GHashTable", nullptr, nullptr},
    {"DataStructures", nullptr, nullptr},
    {"GTree", nullptr, nullptr},
    {"GGraph", &GGraph::Initialize, nullptr},
    {"ActivityNetwork", &ActivityNetwork::Initialize, nullptr},
    {"GStreams", nullptr, nullptr},
    {"GParser", nullptr, nullptr},
    {"GRegularExpression", nullptr, nullptr},
    {"GValue", nullptr, nullptr},
    {"HelperFunctions", nullptr, nullptr},
    {"KZVector", nullptr, nullptr},
    {"KZEncodedBits", nullptr, nullptr},
    {"InterfaceCollections", nullptr, nullptr},
    {"KZInterfaceCollections", nullptr, nullptr},
    {"KZGenerics.Collections", nullptr, nullptr},
}};

std::array<std::atomic<bool>, GUnits.size()> GInitialized{};

// Runs the initialisations when the shared library is loaded and the finalisations, in
// reverse order, when it is unloaded.
struct TPackageStartup {
  TPackageStartup() {
    for (std::size_t i = 0; i < GUnits.size(); ++i) {
      if (GUnits[i].Initialize) GUnits[i].Initialize();
      GInitialized[i] = true;
    }
  }
  ~TPackageStartup() {
    for (std::size_t i = GUnits.size(); i-- > 0;) {
      if (GUnits[i].Finalize) GUnits[i].Finalize();
      GInitialized[i] = false;
    }
  }
};
const TPackageStartup GStartup;

}  // namespace

std::size_t PackageUnitCount() { return GUnits.size(); }

const TPackageUnit& PackageUnit(std::size_t Index) {
  if (Index >= GUnits.size()) throw EListError(SListIndexError, {static_cast<std::int64_t>(Index)});
  return GUnits[Index];
}

bool IsUnitInitialized(std::string_view Name) {
  for (std::size_t i = 0; i < GUnits.size(); ++i)
    if (Name == GUnits[i].Name) return GInitialized[i];
  return false;
}

}  // namespace kz
