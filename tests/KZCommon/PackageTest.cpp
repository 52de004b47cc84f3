#include <gtest/gtest.h>

#include <string>

#include "KZCommon/KZCommon.h"

using namespace kz;

TEST(Package, UnitsAreListedInOrderAndInitialisedAtLoad) {
  ASSERT_GE(PackageUnitCount(), 8u);
  EXPECT_STREQ(PackageUnit(0).Name, "Runtime");
  std::string Order;
  for (std::size_t i = 0; i < PackageUnitCount(); ++i) {
    Order += std::string(PackageUnit(i).Name) + " ";
    EXPECT_TRUE(IsUnitInitialized(PackageUnit(i).Name)) << PackageUnit(i).Name;
  }
  // Foundation first, then the containers that stand on it.
  EXPECT_LT(Order.find("KZConstants"), Order.find("Structures"));
  EXPECT_LT(Order.find("CommonInterfaces"), Order.find("GHashTable"));
  EXPECT_FALSE(IsUnitInitialized("NoSuchUnit"));
  EXPECT_THROW(PackageUnit(PackageUnitCount()), EListError);
}
