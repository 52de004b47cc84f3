// The filer tests' classes (FilerClasses.h) and the checks that compare two of them.
#pragma once

#include <gtest/gtest.h>

#include "Runtime/FilerClasses.h"

namespace kztest {

// Same classes and the same stored values, item by item.
inline void ExpectSameItems(TCollection& A, TCollection& B) {
  ASSERT_EQ(A.GetCount(), B.GetCount());
  for (int i = 0; i < A.GetCount(); ++i) {
    ASSERT_EQ(A.GetItem(i)->ClassType(), B.GetItem(i)->ClassType());
    EXPECT_EQ(static_cast<TTag*>(A.GetItem(i))->FLabel, static_cast<TTag*>(B.GetItem(i))->FLabel);
    if (auto* S = dynamic_cast<TSizedTag*>(A.GetItem(i))) {
      EXPECT_EQ(S->FSize, static_cast<TSizedTag*>(B.GetItem(i))->FSize);
    }
  }
}

inline void ExpectSame(TGadget& A, TGadget& B) {
  EXPECT_EQ(A.GetName(), B.GetName());
  EXPECT_EQ(A.FCount, B.FCount);
  EXPECT_EQ(A.FBig, B.FBig);
  EXPECT_EQ(A.FRatio, B.FRatio);
  EXPECT_EQ(A.FOn, B.FOn);
  EXPECT_EQ(A.FCaption, B.FCaption);
  EXPECT_EQ(A.FShade, B.FShade);
  EXPECT_EQ(A.FOrigin.FX, B.FOrigin.FX);
  ExpectSameItems(A.FTags, B.FTags);
  EXPECT_EQ(A.FNotes, B.FNotes);
  EXPECT_EQ(A.FBlob, B.FBlob);
}

}  // namespace kztest
