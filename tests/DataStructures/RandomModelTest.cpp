// Long random runs of Add, Delete(0) and ModifyPriority with a new priority on the integer and
// the object heap in both orders, against a sorted multiset of the contents; the heap property
// and every element's Index are checked after each step.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <set>
#include <type_traits>

#include "Support.h"

using namespace kz;
using namespace kz::test;

namespace {

template <class THeapT>
void RunModel(THeapOrder Order, unsigned RunNumber) {
  constexpr bool Numeric = std::is_same_v<THeapT, TIntHeap>;
  std::unique_ptr<THeapT> H;
  if constexpr (Numeric)
    H = std::make_unique<THeapT>();
  else
    H = std::make_unique<THeapT>(CompareVals);
  H->SetOrder(Order);
  std::mt19937 Rng(RunNumber);
  std::multiset<std::int32_t> Model;
  std::vector<THeapElement*> Elements;
  std::vector<std::unique_ptr<TVal>> Items;
  auto Value = [](THeapElement* E) {
    if constexpr (Numeric)
      return static_cast<TIntHeapElement*>(E)->GetPriority();
    else
      return static_cast<TVal*>(E->GetItem())->V;
  };
  for (int Step = 0; Step < 3000; ++Step) {
    SCOPED_TRACE(testing::Message() << "step " << Step);
    const std::int32_t P = static_cast<std::int32_t>(Rng() % 61) - 30;
    const unsigned Op = Rng() % 20;
    if (Op < 9 || Elements.empty()) {
      TVal* Item = Items.emplace_back(std::make_unique<TVal>(P)).get();
      if constexpr (Numeric)
        Elements.push_back(H->Add(Item, P));
      else
        Elements.push_back(H->Add(Item));
      Model.insert(P);
    } else if (Op < 15) {
      const std::int32_t Top = Order == hpIncreasing ? *Model.begin() : *Model.rbegin();
      THeapElement* E = H->GetElement(0);
      std::erase(Elements, E);
      ASSERT_EQ(static_cast<TVal*>(H->Delete(0))->V, Top);
      Model.erase(Model.find(Top));
    } else {
      THeapElement* E = Elements[Rng() % Elements.size()];
      Model.erase(Model.find(Value(E)));
      Model.insert(P);
      static_cast<TVal*>(E->GetItem())->V = P;
      std::int32_t NewIndex;
      if constexpr (Numeric)
        NewIndex = H->ModifyPriority(E, P);
      else
        NewIndex = H->ModifyPriority(E);
      ASSERT_EQ(H->GetElement(NewIndex), E);
    }
    const std::vector<std::int32_t> L = Layout(*H);
    ASSERT_EQ(std::multiset<std::int32_t>(L.begin(), L.end()), Model);
    for (std::size_t I = 1; I < L.size(); ++I)
      ASSERT_TRUE(Order == hpIncreasing ? L[(I - 1) / 2] <= L[I] : L[(I - 1) / 2] >= L[I]) << "at " << I;
  }
}

TEST(HeapRandomModel, IntAndObjectHeapsInBothOrders) {
  for (unsigned Run = 1; Run <= 2; ++Run) {
    for (THeapOrder O : {hpIncreasing, hpDecreasing}) {
      RunModel<TIntHeap>(O, Run);
      RunModel<THeap>(O, Run + 100);
    }
  }
}

}  // namespace
