// Object stack and queue: the ends they push and take at, emptiness errors, copies.
#include <gtest/gtest.h>

#include "Support.h"

using namespace kz;
using namespace kz::test;

namespace {

TEST(ObjectContainers, EndsEmptinessAndCopies) {
  TVal X, Y, Z;
  TKZObjectStack S;
  TKZObjectQueue Q;
  for (TKZObjectOrderedList* L : std::initializer_list<TKZObjectOrderedList*>{&S, &Q})
    for (TVal* V : {&X, &Y, &Z}) L->Push(V);
  EXPECT_EQ(S.Top(), &Z);
  EXPECT_EQ(Q.Top(), &X);
  std::unique_ptr<TKZObjectOrderedList> C = Q.Clone();
  EXPECT_EQ(C->ClassType(), &TKZObjectQueue::ClassInfo());
  for (TVal* V : {&Z, &Y, &X}) EXPECT_EQ(S.Pop(), V);
  for (TVal* V : {&X, &Y, &Z}) EXPECT_EQ(Q.Pop(), V);
  EXPECT_TRUE(S.IsEmpty());
  EXPECT_THROW((void)Q.Top(), EListError);
  try {
    (void)S.Pop();
    ADD_FAILURE();
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), u"List is empty");
  }
  S.Assign(C.get());  // a stack takes a queue's entries
  EXPECT_EQ(S.Top(), &Z);
  try {
    S.Assign(&X);
    ADD_FAILURE();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), u"Cannot assign a TVal to a TKZObjectStack");
  }
  EXPECT_EQ(S.GetCount(), 3);
  EXPECT_THROW(TKZObjectOrderedList::ClassInfo().Create(), EAbstractError);
}

}  // namespace
