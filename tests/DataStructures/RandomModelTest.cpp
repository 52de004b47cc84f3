// Long random runs of Add, Delete(0) and ModifyPriority with a new priority on the integer and
// the object heap in both orders, against a sorted multiset of the contents; the heap property
// and every element's Index are checked after each step. Then the object heap's bottom-up
// sift against the plain one, step by step on twin heaps.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <set>
#include <stdexcept>
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

// Twin integer heaps get the same random steps: Watched reads every Index after each step,
// Loose only now and then, after bursts of changes that leave its indexes unwritten. Steps
// include everything that reads an element's Index (its getter, Delete, IndexOf and
// ModifyPriority of an element, writes of its item or priority, an element's Assign, the
// heap's Assign) and Clear. Both must hold the same layout after every step, every Index
// read must equal the element's position (or, after an element's Assign, what the twin
// reads), and the answers must agree.
TEST(HeapRandomModel, IndexReadsAgreeHoweverTheyInterleaveWithChanges) {
  for (unsigned Run = 1; Run <= 3; ++Run) {
    std::mt19937 Rng(Run);
    TIntHeap Watched, Loose;
    TIntHeap* Both[2] = {&Watched, &Loose};
    for (TIntHeap* H : Both) H->SetOrder(Run == 2 ? hpDecreasing : hpIncreasing);
    std::vector<std::unique_ptr<TVal>> Items;
    auto Position = [](const TIntHeap& H, const THeapElement* E) {
      for (std::int32_t I = 0; I < H.GetCount(); ++I)
        if (H.GetElement(I) == E) return I;
      return -1;
    };
    bool Pinned = false;  // an element's Assign left an Index that is not a position
    for (int Step = 0; Step < 6000; ++Step) {
      SCOPED_TRACE(testing::Message() << "run " << Run << " step " << Step);
      const std::int32_t Count = Watched.GetCount();
      const std::int32_t At = Count > 0 ? static_cast<std::int32_t>(Rng() % static_cast<unsigned>(Count)) : 0;
      const std::int32_t Other = Count > 0 ? static_cast<std::int32_t>(Rng() % static_cast<unsigned>(Count)) : 0;
      const std::int32_t P = static_cast<std::int32_t>(Rng() % 41) - 20;
      auto Element = [&](TIntHeap& H, std::int32_t I) { return static_cast<TIntHeapElement*>(H.GetElement(I)); };
      // Stretches of adds and pops only, in which Loose stops writing indexes.
      const unsigned Op = Count == 0 ? 0 : Rng() % (Step / 40 % 2 ? 1000 : 750);
      if (Op < 450) {
        TVal* Item = Items.emplace_back(std::make_unique<TVal>(P)).get();
        for (TIntHeap* H : Both) H->Add(Item, P);
      } else if (Op < 750) {
        ASSERT_EQ(Watched.Delete(0), Loose.Delete(0));
      } else if (Op < 920) {
        // An element whose Index was overwritten by an element's Assign is refused by the
        // steps that look it up: both twins must refuse it alike.
        std::int32_t Answer[2];
        for (int Side : {0, 1}) {
          TIntHeap& H = *Both[Side];
          try {
            if (Op < 800)
              Answer[Side] = H.IndexOf(H.GetElement(At));
            else if (Op < 850)
              Answer[Side] = H.ModifyPriority(H.GetElement(At), P);
            else if (Op < 880) {
              Element(H, At)->SetPriority(P);
              Answer[Side] = H.ModifyPriority(H.GetElement(At));
            } else
              Answer[Side] = static_cast<TVal*>(H.Delete(H.GetElement(At)))->V;
          } catch (const EInvalidOperation&) {
            Answer[Side] = -1000;
          }
        }
        ASSERT_EQ(Answer[0], Answer[1]);
        if (Op < 800 && !Pinned) {
          ASSERT_EQ(Answer[0], At);
        }
      } else if (Op < 940) {
        for (TIntHeap* H : Both) H->GetElement(At)->SetItem(H->GetItem(Other));
      } else if (Op < 945) {
        for (TIntHeap* H : Both) H->GetElement(At)->Assign(H->GetElement(Other));
        Pinned = Pinned || At != Other;
      } else if (Op < 950) {
        for (TIntHeap* H : Both) {
          TIntHeap Copy;
          Copy.Assign(H);
          H->Assign(&Copy);
        }
      } else if (Op < 953) {
        for (TIntHeap* H : Both) H->Clear();
      } else {
        const std::int32_t Read = Element(Loose, At)->GetIndex();
        ASSERT_EQ(Read, Element(Watched, At)->GetIndex());
        if (!Pinned) {
          ASSERT_EQ(Read, At);
        }
      }
      if (Watched.GetCount() == 0) Pinned = false;
      ASSERT_EQ(Watched.GetCount(), Loose.GetCount());
      for (std::int32_t I = 0; I < Watched.GetCount(); ++I) {
        ASSERT_EQ(Watched.GetItem(I), Loose.GetItem(I)) << "at " << I;
        ASSERT_EQ(Watched.GetPriority(I), Loose.GetPriority(I)) << "at " << I;
        const std::int32_t Read = Watched.GetElement(I)->GetIndex();
        if (!Pinned) {
          ASSERT_EQ(Read, I);
        }
        ASSERT_EQ(Position(Watched, Watched.GetElement(I)), I);
      }
      if (Rng() % 200 == 0) {
        for (std::int32_t I = 0; I < Loose.GetCount(); ++I) {
          ASSERT_EQ(Loose.GetElement(I)->GetIndex(), Watched.GetElement(I)->GetIndex()) << "at " << I;
        }
      }
    }
  }
}

// Twin object heaps get the same random steps, ties frequent: Bottom sifts from the bottom
// whenever it knows its order, Plain never (two of its items are rewritten before each step,
// which it cannot tell from a change of order). Later runs mix in interior deletes, SetOrder
// and a comparison that raises on one item, after which Bottom sifts plainly until a drain
// empties it. Indexes are read only now and then, and some sifts' comparison reads one
// itself. Every position, every Index, every answer and every raise must agree; in the first
// runs Bottom must have compared at least a tenth less.
TEST(HeapRandomModel, BottomUpSiftMovesAsThePlainSift) {
  for (unsigned Run = 1; Run <= 4; ++Run) {
    std::mt19937 Rng(Run);
    std::vector<std::unique_ptr<TVal>> Items;
    const TVal* Poison = nullptr;
    long Calls[2] = {0, 0};
    // An element whose Index the comparison reads while the heap sifts.
    THeapElement* Peek[2] = {nullptr, nullptr};
    auto Counting = [&](int Which) {
      return TCompareFunc([&, Which](TObject* A, TObject* B) {
        ++Calls[Which];
        if (Peek[Which]) (void)Peek[Which]->GetIndex();
        if (A == Poison || B == Poison) throw Exception(u"poisoned");
        return CompareVals(A, B);
      });
    };
    THeap Bottom(Counting(0)), Plain(Counting(1));
    for (THeap* H : {&Bottom, &Plain}) H->SetOrder(Run % 2 ? hpIncreasing : hpDecreasing);
    const bool Quirks = Run > 2;
    for (int Step = 0; Step < 4000; ++Step) {
      SCOPED_TRACE(testing::Message() << "run " << Run << " step " << Step);
      if (Plain.GetCount() >= 2)
        for (std::int32_t I : {0, Plain.GetCount() - 1}) Plain.GetElement(I)->SetItem(Plain.GetItem(I));
      unsigned Op = Rng() % 300 == 0 ? 199 : Rng() % 195;
      if (Op >= 190 && Op < 195 && !Quirks) Op = 100;
      const std::int32_t Count = Bottom.GetCount();
      const std::int32_t At = Count > 0 ? static_cast<std::int32_t>(Rng() % static_cast<unsigned>(Count)) : 0;
      auto Both = [&](auto Do) {
        bool Raised[2] = {false, false};
        int Side = 0;
        for (THeap* H : {&Bottom, &Plain}) {
          try {
            Do(*H);
          } catch (const Exception&) {
            Raised[Side] = true;
          }
          ++Side;
        }
        ASSERT_EQ(Raised[0], Raised[1]);
      };
      const bool Peeks = Count > 0 && Rng() % 4 == 0;
      if (Op < 100 || Count == 0) {
        TVal* Item = Items.emplace_back(std::make_unique<TVal>(static_cast<std::int32_t>(Rng() % 8))).get();
        Both([&](THeap& H) {
          if (Peeks) Peek[&H == &Plain] = H.GetElement(At);
          H.Add(Item);
        });
        Peek[0] = Peek[1] = nullptr;
      } else if (Op < 160) {
        TObject* Popped[2];
        Both([&](THeap& H) { Popped[&H == &Plain] = H.Delete(0); });
        ASSERT_EQ(Popped[0], Popped[1]);
      } else if (Op < 190) {
        static_cast<TVal*>(Bottom.GetItem(At))->V = static_cast<std::int32_t>(Rng() % 8);
        std::int32_t Moved[2];
        Both([&](THeap& H) {
          if (Peeks) Peek[&H == &Plain] = H.GetElement(Count - 1);
          Moved[&H == &Plain] = H.ModifyPriority(At);
        });
        Peek[0] = Peek[1] = nullptr;
        ASSERT_EQ(Moved[0], Moved[1]);
      } else if (Op < 192) {
        Poison = static_cast<TVal*>(Bottom.GetItem(static_cast<std::int32_t>(Rng() % static_cast<unsigned>(Count))));
        Both([&](THeap& H) { (void)H.Delete(0); });
        Poison = nullptr;
      } else if (Op < 194) {
        Both([&](THeap& H) { (void)H.Delete(At); });
      } else if (Op < 195) {
        Both([&](THeap& H) { H.SetOrder(H.GetOrder() == hpIncreasing ? hpDecreasing : hpIncreasing); });
      } else {
        while (Bottom.GetCount() > 0) ASSERT_EQ(Bottom.Delete(0), Plain.Delete(0));
      }
      ASSERT_EQ(Bottom.GetCount(), Plain.GetCount());
      // Indexes read now and then, so that the sifts between go without writing them.
      const bool Reads = Rng() % 8 == 0;
      for (std::int32_t I = 0; I < Bottom.GetCount(); ++I) {
        ASSERT_EQ(Bottom.GetItem(I), Plain.GetItem(I)) << "at " << I;
        if (Reads) {
          ASSERT_EQ(Bottom.GetElement(I)->GetIndex(), I);
          ASSERT_EQ(Plain.GetElement(I)->GetIndex(), I);
        }
      }
    }
    if (!Quirks) {
      EXPECT_LT(Calls[0] * 10, Calls[1] * 9);
    }
  }
  // Deep enough for what the bottom-up sift asks for ahead below its first levels, in both
  // orders, with a plain function (called directly) against the plain sift through a wrapper.
  for (const THeapOrder Order : {hpIncreasing, hpDecreasing}) {
    SCOPED_TRACE(testing::Message() << "deep, order " << int(Order));
    std::mt19937 Rng(7 + Order);
    std::vector<std::unique_ptr<TVal>> Items;
    THeap Fast(CompareVals), Plain(TCompareFunc([](TObject* A, TObject* B) { return CompareVals(A, B); }));
    for (THeap* H : {&Fast, &Plain}) H->SetOrder(Order);
    auto Same = [&] {
      ASSERT_EQ(Fast.GetCount(), Plain.GetCount());
      for (std::int32_t I = 0; I < Fast.GetCount(); ++I) {
        ASSERT_EQ(Fast.GetItem(I), Plain.GetItem(I)) << "at " << I;
        ASSERT_EQ(Fast.GetElement(I)->GetIndex(), I);
      }
    };
    for (int Step = 0; Step < 30000; ++Step) {
      if (Plain.GetCount() >= 2)
        for (std::int32_t I : {0, Plain.GetCount() - 1}) Plain.GetElement(I)->SetItem(Plain.GetItem(I));
      if (Fast.GetCount() == 0 || (Step < 20000) == (Rng() % 4 != 0)) {
        TVal* Item = Items.emplace_back(std::make_unique<TVal>(static_cast<std::int32_t>(Rng() % 64))).get();
        for (THeap* H : {&Fast, &Plain}) H->Add(Item);
      } else {
        ASSERT_EQ(Fast.Delete(0), Plain.Delete(0));
      }
      if (Step % 2500 == 0) Same();
    }
    Same();
    while (Fast.GetCount() > 0) ASSERT_EQ(Fast.Delete(0), Plain.Delete(0));
  }
}

}  // namespace
