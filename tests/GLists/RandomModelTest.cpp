// Long random runs of adds, inserts, deletes, indexed reads and writes, walks and assigns
// against a std::list, with the chain checked after every step.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <list>
#include <memory>
#include <random>
#include <set>
#include <vector>

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
    const unsigned Op = M.empty() ? 0 : Rng() % 8;
    switch (Op) {
      case 0: {
        // Before a random node, or (one time in three) appended by Add.
        const std::int32_t I = M.empty() || Rng() % 3 == 0 ? -1 : Pick();
        auto N = L.NewNode();
        N->SetItem(Item(NextItem));
        if (I < 0)
          L.AddNode(N.release());
        else
          L.Insert(N.release(), L.GetNode(I));
        M.insert(I < 0 ? M.end() : At(I), NextItem++);
        break;
      }
      case 1: {
        const std::int32_t I = Pick();
        L.Delete(L.GetNode(I));
        M.erase(At(I));
        break;
      }
      case 2: case 3:  // ascending reads from a random start, as a loop over Item[i] does
        for (std::int32_t I = Pick(); I < static_cast<std::int32_t>(M.size()) && Rng() % 4; ++I)
          ASSERT_EQ(L.GetItem(I), Item(*At(I)));
        break;
      case 4: {
        const std::int32_t I = Pick();
        L.SetItem(I, Item(NextItem));
        *At(I) = NextItem++;
        break;
      }
      case 5: {
        // A new node in place of one that is not the last (the last keeps the tail on it).
        const std::int32_t I = Pick();
        if (Doubly || I == static_cast<std::int32_t>(M.size()) - 1) break;
        auto N = L.NewNode();
        N->SetItem(Item(NextItem));
        L.SetNode(I, N.release());
        *At(I) = NextItem++;
        break;
      }
      case 6:
        L.Reset();
        for (auto It = M.begin(); It != M.end() && Rng() % 8; ++It) ASSERT_EQ(L.Next()->GetItem(), Item(*It));
        break;
      case 7: {
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

// Bursts of pushes and pops that often drain the list (after which its store hands out its
// slots again from the start), with nodes made by NewNode held outside the list across the
// drains, then dropped or added, a walk left open across pops, an OnChange handler switched on
// and off (each push and pop tells it once), and the odd Clear. Every node alive must have its
// own slot.
template <class TLinked>
void RunPushPopModel(unsigned RunNumber, int Steps) {
  constexpr bool Lifo = std::is_same_v<TLinked, TGStack>;
  std::mt19937 Rng(RunNumber);
  TLinked L;
  std::deque<std::intptr_t> M;
  std::vector<std::unique_ptr<TSQNode>> Held;
  std::unique_ptr<TGCustomLinkedListEnumerator> Walk;
  std::intptr_t NextItem = 1;
  auto Item = [](std::intptr_t V) { return reinterpret_cast<TObject*>(V); };
  auto Add = [&](std::intptr_t V) { Lifo ? M.push_front(V) : M.push_back(V); };
  std::int32_t Changes = 0;
  bool Handled = false;

  for (int S = 0; S < Steps; ++S) {
    SCOPED_TRACE(testing::Message() << "step " << S);
    switch (Rng() % 8) {
      case 0: case 1: case 2:
        for (unsigned N = Rng() % 200; N > 0; --N) {
          const std::int32_t Before = Changes;
          ASSERT_EQ(L.Push(Item(NextItem))->GetItem(), Item(NextItem));
          ASSERT_EQ(Changes - Before, Handled ? 1 : 0);
          Add(NextItem++);
        }
        break;
      case 3: case 4: case 5:
        for (unsigned N = Rng() % 3 ? Rng() % 200 : M.size(); N > 0 && !M.empty(); --N) {
          const std::int32_t Before = Changes;
          ASSERT_EQ(L.Pop(), Item(M.front()));
          ASSERT_EQ(Changes - Before, Handled ? 1 : 0);
          M.pop_front();
        }
        break;
      case 6:
        if (Held.empty() || Rng() % 2) {
          Held.push_back(L.NewNode());
          Held.back()->SetItem(Item(NextItem++));
        } else {
          const std::size_t I = Rng() % Held.size();
          if (Rng() % 2) {
            Add(reinterpret_cast<std::intptr_t>(Held[I]->GetItem()));
            L.AddNode(Held[I].release());
          }
          Held.erase(Held.begin() + static_cast<std::ptrdiff_t>(I));
        }
        break;
      case 7:
        if (Rng() % 5 == 0) {
          Handled = !Handled;
          L.SetOnChange(Handled ? TNotifyEvent([&](TObject*) { ++Changes; }) : TNotifyEvent());
        } else if (Rng() % 8 == 0) {
          L.Clear();
          M.clear();
        } else if (!Walk) {
          Walk = L.GetEnumerator();
        } else if (Rng() % 3 == 0) {
          Walk.reset();
        } else if (Walk->MoveNext()) {
          // Pops meanwhile step the walk past the nodes they free.
          ASSERT_NE(std::find(M.begin(), M.end(), reinterpret_cast<std::intptr_t>(Walk->GetCurrent()->GetItem())),
                    M.end());
        }
        break;
    }
    ASSERT_EQ(L.GetCount(), static_cast<std::int32_t>(M.size()));
    std::set<const TSQNode*> Alive;
    for (const auto& N : Held) Alive.insert(N.get());
    auto Expected = M.begin();
    TSQNode* Last = nullptr;
    for (TSQNode* N = L.GetHead(); N; Last = N, N = N->GetNext(), ++Expected) {
      ASSERT_NE(Expected, M.end());
      ASSERT_EQ(N->GetItem(), Item(*Expected));
      ASSERT_TRUE(Alive.insert(N).second);
    }
    ASSERT_EQ(Expected, M.end());
    ASSERT_EQ(L.GetTail(), Last);
    for (const auto& N : Held) ASSERT_EQ(N->GetOwnerList(), nullptr);
  }
}

}  // namespace

TEST(GLinkedListModel, QueueAndStackPushPopAcrossDrains) {
  for (unsigned R = 1; R <= 4; ++R) {
    RunPushPopModel<TGQueue>(R, 2000);
    RunPushPopModel<TGStack>(R, 2000);
  }
}

TEST(GLinkedListModel, SinglyLinkedAgainstStdList) {
  for (unsigned R = 1; R <= 4; ++R) RunModel<TGLinkedList>(R, 3000);
}

TEST(GLinkedListModel, DoublyLinkedAgainstStdList) {
  for (unsigned R = 1; R <= 4; ++R) RunModel<TGDoublyLinkedList>(R, 3000);
}
