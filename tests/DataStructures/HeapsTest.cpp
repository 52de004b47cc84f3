// Heaps: orders, the two child tie-breaks, interior deletes, both ModifyPriority forms, the
// pruned searches, SetOrder, Assign and the errors that replace undefined behaviour.
#include <gtest/gtest.h>

#include <memory>

#include "Support.h"

using namespace kz;
using namespace kz::test;

namespace {

using V = std::vector<std::int32_t>;

struct TOwned {
  std::vector<std::unique_ptr<TVal>> Items;
  TVal* operator()(std::int32_t Value) { return Items.emplace_back(std::make_unique<TVal>(Value)).get(); }
};

TEST(Heaps, OrdersEqualItemsAndChildTieBreaks) {
  for (THeapOrder O : {hpIncreasing, hpDecreasing}) {
    TOwned New;
    THeap H(CompareVals);
    TIntHeap N;
    H.SetOrder(O);
    N.SetOrder(O);
    for (std::int32_t P : {5, 3, 8, 1}) {
      TVal* X = New(P);
      H.Add(X);
      N.Add(X, P);
    }
    V FromH, FromN;
    while (H.GetCount() > 0) FromH.push_back(static_cast<TVal*>(H.Delete(0))->V);
    while (N.GetCount() > 0) FromN.push_back(static_cast<TVal*>(N.Delete(0))->V);
    const V Want = O == hpIncreasing ? V{1, 3, 5, 8} : V{8, 5, 3, 1};
    EXPECT_EQ(FromH, Want);
    EXPECT_EQ(FromN, Want);
  }
  TVal A(1), B(5), C(5), D(9), E(1);
  THeap H(CompareVals);
  TIntHeap N;
  for (TVal* X : {&A, &B, &C, &D, &E}) {
    H.Add(X);
    N.Add(X, X->V);
  }
  EXPECT_EQ(H.GetItem(1), &E);  // the later of two equals stays below
  EXPECT_EQ(N.GetItem(1), &E);
  H.Delete(E.V);
  N.Delete(E.V);
  H.Delete(0);  // D moves to the root and sinks towards one of two equal children
  N.Delete(0);
  EXPECT_EQ(H.GetItem(0), &C);  // object heaps: the right child
  EXPECT_EQ(N.GetItem(0), &B);  // numeric heaps: the left child
}

TEST(Heaps, InteriorDeletesAndPrunedSearch) {
  TOwned New;
  THeap H(CompareVals);
  TIntHeap N;
  std::vector<TVal*> X;
  for (std::int32_t P : {1, 10, 2, 11, 12, 3, 4}) {
    X.push_back(New(P));
    H.Add(X.back());
    N.Add(X.back(), P);
  }
  EXPECT_EQ(Layout(H), V({1, 10, 2, 11, 12, 3, 4}));
  EXPECT_EQ(H.Delete(2), X[2]);  // 4 moves in above 3 and is not sifted down
  EXPECT_EQ(Layout(H), V({1, 10, 4, 11, 12, 3}));
  EXPECT_EQ(H.IndexOf(X[5]), -1);  // 3 sits under 4, whose subtree is skipped
  EXPECT_EQ(H.IndexOf(X[4]), 4);
  EXPECT_EQ(H.Delete(3), X[3]);  // 3 moves in below 10 and is raised
  EXPECT_EQ(Layout(H), V({1, 3, 4, 10, 12}));
  EXPECT_EQ(N.Delete(3), X[3]);  // numeric heaps never re-sift an interior delete
  EXPECT_EQ(Layout(N), V({1, 10, 2, 4, 12, 3}));
  EXPECT_EQ(N.Delete(5), X[5]);
  EXPECT_EQ(Layout(N), V({1, 10, 2, 4, 12}));

  TVal A, B, C;
  TIntHeap P;
  P.Add(&A, 5);
  P.Add(&B, 5);
  EXPECT_EQ(P.IndexOf(&A, 5), 0);
  EXPECT_EQ(P.IndexOf(&B, 5), -1);  // below an element of equal priority
  EXPECT_EQ(P.IndexOf(5), 0);
  EXPECT_EQ(P.IndexOf(&A), -1);  // looks at priority 0 only
  P.Add(&C, 0);
  EXPECT_EQ(P.IndexOf(&C), 0);
  EXPECT_EQ(P.IndexOf(&B, 5), 1);
  // An element changed in place is seen at once, before any ModifyPriority.
  P.GetElement(0)->SetItem(&A);
  static_cast<TIntHeapElement*>(P.GetElement(1))->SetPriority(9);
  EXPECT_EQ(P.IndexOf(&A, 0), 0);
  EXPECT_EQ(P.IndexOf(9), 1);
  static_cast<TIntHeapElement*>(P.GetElement(1))->Clear(-1);
  EXPECT_EQ(P.Delete(0), &A);
  EXPECT_EQ(P.GetItem(0), nullptr);  // the cleared element's -1 is before the moved 5
  TVal* Same = New(10);
  EXPECT_EQ(H.IndexOf(X[1]), 3);
  H.GetElement(3)->SetItem(Same);
  EXPECT_EQ(H.IndexOf(Same), 3);
  EXPECT_EQ(H.IndexOf(X[1]), -1);
}

TEST(Heaps, ModifyPriorityBothFormsBothOrders) {
  for (THeapOrder O : {hpIncreasing, hpDecreasing}) {
    const std::int32_t S = O == hpIncreasing ? 1 : -1;
    auto Signed = [S](V L) {
      for (auto& P : L) P *= S;
      return L;
    };
    TIntHeap N;
    N.SetOrder(O);
    std::vector<TIntHeapElement*> E;
    for (std::int32_t P : {1, 10, 2, 11, 12, 3, 4}) E.push_back(N.Add(nullptr, S * P));
    EXPECT_EQ(N.ModifyPriority(E[4], 0), 0);
    EXPECT_EQ(Layout(N), Signed({0, 1, 2, 11, 10, 3, 4}));
    EXPECT_EQ(N.ModifyPriority(E[4], S * 20), 4);
    EXPECT_EQ(Layout(N), Signed({1, 10, 2, 11, 20, 3, 4}));
    // Without a new priority the tests are reversed: a move toward the root is not raised,
    // a move away from it picks PushUp, which does nothing; only the root sinks.
    E[3]->SetPriority(0);
    EXPECT_EQ(N.ModifyPriority(E[3]), 3);
    E[1]->SetPriority(S * 50);
    EXPECT_EQ(N.ModifyPriority(E[1]), 1);
    E[0]->SetPriority(S * 30);
    EXPECT_EQ(N.ModifyPriority(E[0]), 5);
    EXPECT_EQ(Layout(N), Signed({2, 50, 3, 0, 20, 30, 4}));
  }
}

class TCounted : public TInterfacedObject {
  KZ_CLASS(TCounted, TInterfacedObject)
 public:
  static inline int Live = 0;
  explicit TCounted(int AV) : V(AV) { ++Live; }
  ~TCounted() override { --Live; }
  int V;
};

TEST(Heaps, AssignAndElementCopies) {
  TVal A(1), B(2), C(3);
  THeap H(CompareVals);
  H.SetOrder(hpDecreasing);
  for (TVal* X : {&A, &B, &C}) H.Add(X);
  THeap Copy;
  Copy.Assign(&H);
  EXPECT_EQ(Copy.GetOrder(), hpDecreasing);
  EXPECT_EQ(Layout(Copy), V({3, 1, 2}));
  Copy.Add(&C);  // the comparison came along
  TIntHeap N, N2;
  EXPECT_THROW(N.Assign(&H), EInvalidCast);
  N2.Add(&A, 7);
  N.Add(&B, 1);
  N.Assign(&N2);
  ASSERT_EQ(N.GetCount(), 1);
  EXPECT_EQ(N.GetPriority(0), 7);
  EXPECT_EQ(N.GetItem(0), &A);
  N.Assign(&N);
  EXPECT_EQ(N.GetCount(), 0);

  for (std::int32_t P : {1, 3, 2}) N.Add(nullptr, P);
  N.SetOrder(hpDecreasing);  // sifts only the last element
  EXPECT_EQ(Layout(N), V({2, 3, 1}));
  EXPECT_EQ(TIntHeapElement(nullptr).GetPriority(), -2147483647);
  EXPECT_EQ(TFloatHeapElement(nullptr).GetPriority(), -3.4028234663852886e38f);
  std::unique_ptr<THeapElement> E = N2.GetElement(0)->Clone();
  auto* IE = dynamic_cast<TIntHeapElement*>(E.get());
  ASSERT_TRUE(IE && IE->GetPriority() == 7 && IE->GetItem() == &A);
  IE->Clear();
  EXPECT_TRUE(IE->GetItem() == nullptr && IE->GetPriority() == TIntHeapElement::DefaultPriority);
  TIHeapElement Other(nullptr);
  EXPECT_THROW(IE->Assign(&Other), EConvertError);

  {
    std::vector<TIntfPtr<IInterface>> Items;
    for (int I : {2, 1, 3}) Items.emplace_back(new TCounted(I));
    auto Refs = [&](int I) { return dynamic_cast<TCounted*>(Items[static_cast<std::size_t>(I)].get())->RefCount(); };
    TIPriorityQueue Q([](const TIntfPtr<IInterface>& X, const TIntfPtr<IInterface>& Y) {
      return dynamic_cast<TCounted*>(X.get())->V - dynamic_cast<TCounted*>(Y.get())->V;
    });
    for (auto& I : Items) Q.Push(I);
    {
      TIHeap IC;
      IC.Assign(&Q);
      EXPECT_EQ(Refs(0), 3);
      EXPECT_EQ(IC.IndexOf(Items[2]), 2);
    }
    EXPECT_EQ(Refs(0), 2);
    EXPECT_EQ(Q.Pop(), Items[1]);
    EXPECT_EQ(Refs(1), 1);
  }
  EXPECT_EQ(TCounted::Live, 0);
}

TEST(Heaps, MisuseRaisesInsteadOfFailing) {
  TVal A(1), B(2);
  THeap H;
  H.Add(&A);
  EXPECT_THROW(H.Add(&B), EAccessViolation);  // no comparison
  EXPECT_EQ(H.GetCount(), 1);
  TIHeap IH;
  IH.Add(nullptr);
  EXPECT_THROW(IH.Add(nullptr), EAccessViolation);

  TIntHeap N, Other;
  TIntHeapElement* E = N.Add(&A, 1);
  N.Add(&B, 2);
  EXPECT_EQ(N.Delete(E), &A);
  EXPECT_THROW(N.ModifyPriority(E, 3), EInvalidOperation);  // left the heap and was freed
  EXPECT_THROW(N.Delete(E), EInvalidOperation);
  EXPECT_THROW(N.ModifyPriority(Other.Add(&A, 1)), EInvalidOperation);
  EXPECT_THROW(N.Delete(1), EListError);
  EXPECT_THROW(N.PushDown(-1), EListError);
  EXPECT_THROW(TIntHeap{&THeapElement::ClassInfo()}, EInvalidCast);
  EXPECT_THROW(THeap{static_cast<THeapElementClass>(nullptr)}, EAccessViolation);

  // A comparison that changes its own heap mid-sift is refused, through the wrapper and
  // through the direct call of a plain function alike; every Index stays true.
  static THeap* Busy = nullptr;
  TVal C(3), D(0);
  auto Meddle = [](TObject* X, TObject* Y) {
    if (Busy) Busy->Delete(0);
    return CompareVals(X, Y);
  };
  THeap Wrapped([&](TObject* X, TObject* Y) { return Meddle(X, Y); });
  THeap Plain(static_cast<std::int32_t (*)(TObject*, TObject*)>(Meddle));
  for (THeap* M : {&Wrapped, &Plain}) {
    M->Add(&A);
    M->Add(&C);
    Busy = M;
    EXPECT_THROW(M->Add(&D), EInvalidOperation);  // the new element is taken out again
    EXPECT_EQ(Layout(*M), (V{1, 3}));
    Busy = nullptr;
  }
  static TIHeap* IBusy = nullptr;
  TIHeap IM([](const TIntfPtr<IInterface>&, const TIntfPtr<IInterface>&) -> std::int32_t {
    IBusy->Clear();
    return 0;
  });
  IBusy = &IM;
  IM.Add(nullptr);
  EXPECT_THROW(IM.Add(nullptr), EInvalidOperation);
  EXPECT_EQ(IM.GetCount(), 1);
}

// An element class larger than the default, so one heap holds elements of two sizes.
class TWideElement : public TIntHeapElement {
  KZ_CLASS(TWideElement, TIntHeapElement)
 public:
  using TIntHeapElement::TIntHeapElement;
  char Pad[100] = {};
};

// An element class too large for the slab's in-line sizes.
class THugeElement : public TIntHeapElement {
  KZ_CLASS(THugeElement, TIntHeapElement)
 public:
  using TIntHeapElement::TIntHeapElement;
  char Pad[400] = {};
};

TEST(Heaps, StalePointersAreRefusedWithoutBeingRead) {
  TVal A(1), B(2);
  auto Gone = std::make_unique<TIntHeap>();
  TIntHeapElement* FromGone = Gone->Add(&A, 1);
  Gone.reset();  // its storage is freed: the check must not read it (the sanitizers watch)
  TIntHeap N;
  EXPECT_THROW(N.Delete(FromGone), EInvalidOperation);
  TIntHeapElement* Cleared = N.Add(&A, 1);
  N.Clear();  // the emptied heap returns its storage
  EXPECT_THROW(N.ModifyPriority(Cleared, 2), EInvalidOperation);
  std::unique_ptr<THeapElement> Loose = N.Add(&A, 1)->Clone();  // made outside any heap
  EXPECT_THROW(N.Delete(Loose.get()), EInvalidOperation);

  TIntHeap Wide(&TWideElement::ClassInfo());
  Wide.Add(&B, 5);
  N.Assign(&Wide);  // a TWideElement clone beside a slot of the default size
  TIntHeapElement* Small = N.Add(&A, 9);
  EXPECT_EQ(N.ModifyPriority(N.GetElement(0), 10), 1);
  EXPECT_EQ(N.IndexOf(Small), 0);
  EXPECT_EQ(N.Delete(Small), &A);
  EXPECT_EQ(N.Add(&B, 3), Small);  // a reused slot holds a live element again and is accepted
  EXPECT_EQ(N.IndexOf(Small), 0);

  TIntHeap Drained;  // emptied by pops: it hands out its slots from the first one again
  THeapElement* First = Drained.Add(&A, 1);
  THeapElement* Second = Drained.Add(&B, 2);
  (void)Drained.Delete(0);
  (void)Drained.Delete(0);
  EXPECT_EQ(Drained.Add(&B, 3), First);
  EXPECT_THROW(Drained.Delete(Second), EInvalidOperation);
  EXPECT_EQ(Drained.Add(&A, 4), Second);
  EXPECT_EQ(Drained.IndexOf(Second), 1);

  TIntHeap Huge(&THugeElement::ClassInfo());  // the same answers for the largest slots
  THeapElement* HugeFirst = Huge.Add(&A, 1);
  THeapElement* HugeSecond = Huge.Add(&B, 2);
  EXPECT_EQ(Huge.Delete(HugeFirst), &A);
  EXPECT_THROW(Huge.Delete(HugeFirst), EInvalidOperation);
  EXPECT_EQ(Huge.Add(&A, 3), HugeFirst);
  (void)Huge.Delete(0);
  (void)Huge.Delete(0);
  EXPECT_EQ(Huge.Add(&B, 4), HugeFirst);
  EXPECT_THROW(Huge.Delete(HugeSecond), EInvalidOperation);
  Huge.Clear();
  EXPECT_THROW(Huge.Delete(HugeFirst), EInvalidOperation);

  TIHeap IH;
  TIHeapElement* I = IH.Add(nullptr);
  IH.Clear();
  EXPECT_THROW(IH.Delete(I), EInvalidOperation);
}

}  // namespace
