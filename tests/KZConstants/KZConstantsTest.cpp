#include <gtest/gtest.h>

#include "KZCommon/KZCommon.h"

using namespace kz;

namespace {
// Stands for another unit's own exception, which derives from the root directly as well.
KZ_DECLARE_EXCEPTION(EOtherUnitError, Exception)

template <class E>
bool CaughtAsKZException(const E& Raised) {
  try {
    throw Raised;
  } catch (const EKZException&) {
    return true;
  } catch (const Exception&) {
    return false;
  }
}
}  // namespace

TEST(KZConstants, BaseExceptionCatchesOnlyItsOwnFamily) {
  KZ_DECLARE_EXCEPTION(EHostError, EKZException)
  EXPECT_TRUE(CaughtAsKZException(EKZException(u"a")));
  EXPECT_TRUE(CaughtAsKZException(EHostError(u"b")));
  EXPECT_FALSE(CaughtAsKZException(EOtherUnitError(u"c")));
  EXPECT_FALSE(CaughtAsKZException(EListError(SListIndexError, {3})));
  try {
    throw EKZException(u"message text");
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), u"message text");
  }
  EXPECT_EQ(IndentString, u"  ");
}

TEST(KZConstants, PackageListsFoundationUnitsInOrder) {
  std::vector<std::string> Names;
  for (std::size_t i = 0; i < PackageUnitCount(); ++i) Names.emplace_back(PackageUnit(i).Name);
  auto Pos = [&](const char* N) { return std::find(Names.begin(), Names.end(), N) - Names.begin(); };
  EXPECT_LT(Pos("Runtime"), Pos("KZConstants"));
  EXPECT_LT(Pos("KZConstants"), Pos("KZMessages"));
  EXPECT_LT(Pos("KZMessages"), Pos("CommonInterfaces"));
  EXPECT_LT(Pos("CommonInterfaces"), Pos("RefCount"));
  EXPECT_LT(Pos("RefCount"), static_cast<std::ptrdiff_t>(Names.size()));
  EXPECT_TRUE(IsUnitInitialized("RefCount"));
}
