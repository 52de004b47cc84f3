// Long random runs of adds, inserts, deletes, indexed reads and writes, walks and assigns
// against a std::list, with the chain checked after every step.
#include <gtest/gtest.h>

#include <list>
#include <random>

#include "GLists/GLists.h"

using namespace kz;

namespace {

template <class TLinked>
void RunModel(unsigned RunNumber, int Steps) {
  std::mt19937 Rng(RunNumber);
  TLinked L;
  std::list<std::intptr_t> M;
  std::intptr_t NextItem = 1;
  auto Item = [](std::intptr_t V) { return reinterpret_cast<TObject*>(V); };
  auto Pick = [&] { return static_cast<std::int32_t>(Rng() % M.size()); };
  auto At = [&](std::int32_t I) { return std::next(M.begin(), I); };
  constexpr bool Doubly = std::is_same_v<TLinked, TGDoublyLinkedList>;

  for (int S = 0; S < Steps; ++S) {
    SCOPED_TRACE(testing::Message() << "step " << S);
    const unsigned Op = M.empty() ? Rng() % 2 : Rng() % 9;
    switch (Op) {
      case 0:
        L.Add(Item(NextItem));
        M.push_back(NextItem++);
        break;
      case 1: {
        const std::int32_t I = M.empty() ? 0 : Pick();
        auto N = L.NewNode();
        N->SetItem(Item(NextItem));
        L.Insert(N.release(), M.empty() ? nullptr : L.GetNode(I));
        M.insert(M.empty() ? M.end() : At(I), NextItem++);
        break;
      }
      case 2: {
        const std::int32_t I = Pick();
        L.Delete(L.GetNode(I));
        M.erase(At(I));
        break;
      }
      case 3: case 4: {
        // Ascending reads from a random start, as a loop over Item[i] does.
        for (std::int32_t I = Pick(); I < static_cast<std::int32_t>(M.size()) && Rng() % 4; ++I)
          ASSERT_EQ(L.GetItem(I), Item(*At(I)));
        break;
      }
      case 5: {
        const std::int32_t I = Pick();
        L.SetItem(I, Item(NextItem));
        *At(I) = NextItem++;
        break;
      }
      case 6: {
        // A new node in place of one that is not the last (the last keeps the tail on it).
        const std::int32_t I = Pick();
        if (Doubly || I == static_cast<std::int32_t>(M.size()) - 1) break;
        auto N = L.NewNode();
        N->SetItem(Item(NextItem));
        L.SetNode(I, N.release());
        *At(I) = NextItem++;
        break;
      }
      case 7: {
        L.Reset();
        for (auto V : M) {
          if (Rng() % 8 == 0) break;
          ASSERT_EQ(L.Next()->GetItem(), Item(V));
        }
        break;
      }
      case 8: {
        if (Rng() % 4) break;
        TGDoublyLinkedList Copy;
        Copy.Assign(&L);
        if (Rng() % 2) Copy.Delete(Copy.GetHead());
        L.Assign(&Copy);
        M.clear();
        for (TSQNode* N = Copy.GetHead(); N; N = N->GetNext()) M.push_back(reinterpret_cast<std::intptr_t>(N->GetItem()));
        break;
      }
    }
    ASSERT_EQ(L.GetCount(), static_cast<std::int32_t>(M.size()));
    ASSERT_EQ(L.GetHead() == nullptr, M.empty());
    TSQNode* Prev = nullptr;
    auto Expected = M.begin();
    for (TSQNode* N = L.GetHead(); N; Prev = N, N = N->GetNext(), ++Expected) {
      ASSERT_NE(Expected, M.end());
      ASSERT_EQ(N->GetItem(), Item(*Expected));
      if constexpr (Doubly) {
        ASSERT_EQ(static_cast<TSQDoubleNode*>(N)->GetPrevious(), Prev);
      }
    }
    ASSERT_EQ(Expected, M.end());
    ASSERT_EQ(L.GetTail(), Prev);
  }
}

}  // namespace

TEST(GLinkedListModel, SinglyLinkedAgainstStdList) {
  for (unsigned R = 1; R <= 4; ++R) RunModel<TGLinkedList>(R, 3000);
}

TEST(GLinkedListModel, DoublyLinkedAgainstStdList) {
  for (unsigned R = 1; R <= 4; ++R) RunModel<TGDoublyLinkedList>(R, 3000);
}
