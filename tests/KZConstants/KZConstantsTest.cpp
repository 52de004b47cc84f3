#include <gtest/gtest.h>

#include "KZCommon/KZCommon.h"

using namespace kz;

namespace {
// Stands for another unit's exception, which derives from the root directly as well.
KZ_DECLARE_EXCEPTION(EOtherUnitError, Exception)
KZ_DECLARE_EXCEPTION(EHostError, EKZException)

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
  EXPECT_TRUE(CaughtAsKZException(EKZException(u"a")));
  EXPECT_TRUE(CaughtAsKZException(EHostError(u"b")));
  EXPECT_FALSE(CaughtAsKZException(EOtherUnitError(u"c")));
  EXPECT_FALSE(CaughtAsKZException(EListError(Runtime::SListIndexError, {3})));
}
