// Object stack and queue: the ends they push and take at, emptiness errors, copies.
#include <gtest/gtest.h>

#include "DataStructures/DataStructures.h"

using namespace kz;

namespace {

class TItem : public TObject {
  KZ_CLASS(TItem, TObject)
};

TEST(ObjectContainers, StackAndQueueTakeFromTheirOwnEnds) {
  TItem X, Y, Z;
  TKZObjectStack S;
  TKZObjectQueue Q;
  for (TKZObjectOrderedList* L : {static_cast<TKZObjectOrderedList*>(&S), static_cast<TKZObjectOrderedList*>(&Q)}) {
    EXPECT_TRUE(L->IsEmpty());
    L->Push(&X);
    L->Push(&Y);
    L->Push(&Z);
    EXPECT_FALSE(L->GetEmpty());
  }
  EXPECT_EQ(S.Top(), &Z);
  EXPECT_EQ(Q.Top(), &X);
  EXPECT_EQ(S.Pop(), &Z);
  EXPECT_EQ(S.Pop(), &Y);
  EXPECT_EQ(Q.Pop(), &X);
  EXPECT_EQ(Q.Pop(), &Y);
  EXPECT_EQ(S.Pop(), &X);
  EXPECT_EQ(Q.Pop(), &Z);
  for (TKZObjectOrderedList* L : {static_cast<TKZObjectOrderedList*>(&S), static_cast<TKZObjectOrderedList*>(&Q)}) {
    EXPECT_TRUE(L->IsEmpty());
    try {
      (void)L->Pop();
      ADD_FAILURE() << "Pop of an empty list";
    } catch (const EListError& E) {
      EXPECT_EQ(E.Message(), u"List is empty");
    }
    EXPECT_THROW((void)L->Top(), EListError);
  }
}

TEST(ObjectContainers, CloneKeepsClassAndEntriesAssignChecksSource) {
  TItem X, Y;
  TKZObjectQueue Q;
  Q.Push(&X);
  Q.Push(&Y);
  std::unique_ptr<TKZObjectOrderedList> C = Q.Clone();
  EXPECT_EQ(C->ClassType(), &TKZObjectQueue::ClassInfo());
  Q.Clear();
  ASSERT_EQ(C->GetCount(), 2);
  EXPECT_EQ(C->Pop(), &X);

  TKZObjectStack S;
  S.Push(&Y);
  S.Assign(&Q);  // a stack takes a queue's entries, replacing its own
  EXPECT_TRUE(S.IsEmpty());
  S.Assign(C.get());
  EXPECT_EQ(S.Top(), &Y);
  try {
    S.Assign(&X);
    ADD_FAILURE() << "assigned from a plain object";
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), u"Cannot assign a TItem to a TKZObjectStack");
  }
  EXPECT_THROW(S.Assign(nullptr), EConvertError);
  EXPECT_EQ(S.GetCount(), 1);
  EXPECT_THROW(TKZObjectOrderedList::ClassInfo().Create(), EAbstractError);
}

}  // namespace
