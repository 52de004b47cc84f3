// Priority queues and the priority list: pop orders, the global index order with stack and
// queue containers, FreeIfNoPop ownership, Count across Clear, and emptied containers.
#include <gtest/gtest.h>

#include "Support.h"

using namespace kz;
using namespace kz::test;

namespace {

TEST(PriorityQueues, PopOrderAndEmptyQueue) {
  TVal A(3), B(1), C(2);
  TIntPriorityQueue Q;
  TPriorityQueue P(CompareVals);
  for (TVal* X : {&A, &B, &C}) {
    Q.Push(X, X->V);
    P.Push(X);
  }
  EXPECT_EQ(P.Peek(), &B);
  for (TVal* X : {&B, &C, &A}) EXPECT_EQ(Q.Pop(), X);
  try {
    (void)Q.Peek();
    ADD_FAILURE();
  } catch (const EListError&) {
    ADD_FAILURE() << "a general error is expected";
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), u"Queue is empty");
  }
  EXPECT_THROW((void)Q.Pop(), EListError);
}

TEST(PriorityList, GlobalOrderWithStackAndQueueContainers) {
  TVal X, Y, Z, W;
  for (TKZObjectOrderedListClass Class : {&TKZObjectStack::ClassInfo(), &TKZObjectQueue::ClassInfo()}) {
    const bool Stack = Class == &TKZObjectStack::ClassInfo();
    TPriorityList L(Class);
    for (TVal* V : {&X, &Y}) L.Add(V, 1);
    for (TVal* V : {&Z, &W}) L.Add(V, 2);
    // Containers in heap order, each from its last entry, whatever the container class.
    const std::vector<TObject*> Want{&Y, &X, &W, &Z};
    for (std::int32_t I = 0; I < 4; ++I) EXPECT_EQ(L.GetItem(I), Want[static_cast<std::size_t>(I)]);
    EXPECT_THROW((void)L.GetItem(4), EListError);
    EXPECT_THROW((void)L.GetItem(-1), EListError);
    EXPECT_EQ(L.Delete(2), &W);
    EXPECT_EQ(L.GetItem(2), &Z);
    L.SetItem(2, &W);
    EXPECT_EQ(L.GetItem(2), &W);
    L.SetItem(0, &Z);
    EXPECT_EQ(L.GetItem(0), &Z);
    EXPECT_EQ(L.Delete(0), Stack ? &Z : &X);  // Delete(0) pops in the container's own order
    L.Clear();
    EXPECT_EQ(L.GetCount(), 2);  // kept as it was
    EXPECT_EQ(L.TCustomHeap::GetCount(), 0);
    EXPECT_THROW((void)L.GetItem(0), EListError);
  }
}

TEST(PriorityList, FreeIfNoPopFreesExactlyWhatLeavesOtherThanByPop) {
  const int Before = TVal::Live;
  {
    TPriorityList L(&TKZObjectStack::ClassInfo());
    L.SetFreeIfNoPop(true);
    TVal* Popped = new TVal;
    TVal* Twice = new TVal;
    L.Add(new TVal, 1);
    L.Add(Popped, 1);
    L.Add(new TVal, 2);
    L.Add(Twice, 2);
    L.Add(Twice, 3);
    EXPECT_EQ(TVal::Live, Before + 4);
    EXPECT_EQ(L.Delete(0), Popped);  // handed back, not freed
    delete Popped;
    EXPECT_EQ(L.Delete(2), nullptr);  // the first entry at priority 2, freed
    EXPECT_EQ(TVal::Live, Before + 2);
    L.SetItem(1, new TVal);  // replaces Twice at priority 2; the entry at 3 still holds it
    EXPECT_EQ(TVal::Live, Before + 3);
    L.SetItem(1, L.GetItem(1));  // the same object: nothing freed
    EXPECT_EQ(TVal::Live, Before + 3);
  }
  EXPECT_EQ(TVal::Live, Before);  // the rest went with the list, Twice once
}

TEST(PriorityList, EmptiedContainerStaysUnderItsEntry) {
  TVal A, B, C, D;
  TPriorityList L(&TKZObjectStack::ClassInfo());
  L.Add(&A, 1);
  L.Add(&B, 2);
  EXPECT_EQ(L.Delete(1), &B);  // priority 2's container is now empty but keeps its entry
  EXPECT_EQ(L.TCustomHeap::GetCount(), 2);
  EXPECT_EQ(L.GetCount(), 1);
  L.Add(&C, 3);
  EXPECT_THROW((void)L.GetItem(1), EArgumentOutOfRangeException);  // lands on the empty one
  EXPECT_EQ(L.Delete(0), &A);
  EXPECT_THROW((void)L.Delete(0), EListError);  // the empty container is on top now
  EXPECT_EQ(L.GetCount(), 1);

  TPriorityList Z(&TKZObjectQueue::ClassInfo());  // at priority 0 the entry does go
  Z.Add(&A, -5);
  Z.Add(&B, 0);
  EXPECT_EQ(Z.Delete(1), &B);
  EXPECT_EQ(Z.TCustomHeap::GetCount(), 1);

  TPriorityList Copy(&TKZObjectStack::ClassInfo());
  Copy.Add(&D, 9);
  Z.Add(&C, 4);
  Copy.Assign(&Z);
  EXPECT_EQ(Copy.GetCount(), 1);  // Count is not copied
  Z.Clear();
  EXPECT_EQ(Copy.GetItem(0), &A);  // its own containers
  EXPECT_EQ(Copy.Delete(0), &A);
  EXPECT_EQ(Copy.GetElement(0)->GetItem()->ClassType(), &TKZObjectQueue::ClassInfo());
  TIntHeap Plain;
  EXPECT_THROW(Copy.Assign(&Plain), EConvertError);
}

}  // namespace
