// Run under ThreadSanitizer by the tsan preset (test names containing "Threads").
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>
#include <vector>

#include "KZInterfaceCollections/KZInterfaceCollections.h"

using namespace kz;

namespace {

constexpr int Threads = 4, Rounds = 1500, MaxItems = Threads * Rounds;
std::array<std::atomic<int>, MaxItems> GFreed{};

class TTracked : public TInterfacedObject {
  KZ_CLASS(TTracked, TInterfacedObject)
 public:
  explicit TTracked(int Id) : Id(Id) {}
  ~TTracked() override { GFreed[static_cast<std::size_t>(Id)].fetch_add(1); }
  const int Id;
};

// Counts its notifications, which arrive unlocked from every thread.
class TCountingList : public TInterfaceListPersistent {
  KZ_CLASS(TCountingList, TInterfaceListPersistent)
 public:
  std::atomic<int> Added{0};

 protected:
  void Notify(const TIntfPtr<IInterface>&, TListNotification Action) override { Added += Action == lnAdded; }
};

}  // namespace

TEST(InterfaceListThreads, SharedListAndItemsAcrossThreads) {
  auto* Raw = new TCountingList;
  TIntfPtr<ICloneable> Shared(Raw), HandOver(new TIQueue);  // items dropped on another thread
  auto& Queue = dynamic_cast<TIQueue&>(*HandOver);
  std::atomic<int> Deletes{0};
  std::vector<std::thread> Pool;
  for (int t = 0; t < Threads; ++t)
    Pool.emplace_back([&, t, List = Shared] {
      auto& L = dynamic_cast<TCountingList&>(*List);
      std::mt19937 Rng(static_cast<unsigned>(t) + 1);
      for (int i = 0; i < Rounds; ++i) {
        TIntfPtr<IInterface> Item(new TTracked(t * Rounds + i));
        L.Add(Item);
        Queue.Push(Item);
        L.Lock();  // compound steps: the count must not change under them
        switch (Rng() % 4) {
          case 0:
            if (L.GetCount() > 0) {
              L.Delete(static_cast<std::int32_t>(Rng() % static_cast<unsigned>(L.GetCount())));
              Deletes += 1;
            }
            break;
          case 1:
            for (const TIntfPtr<IInterface>& P : L) ASSERT_NE(P, nullptr);
            break;
          case 2: Deletes += L.Remove(Item) >= 0; break;
          default:
            if (!Queue.IsEmpty()) (void)Queue.Pop();
        }
        L.Unlock();
      }
    });
  for (std::thread& T : Pool) T.join();
  EXPECT_EQ(Raw->GetCount(), MaxItems - Deletes.load());  // nothing lost
  EXPECT_EQ(Raw->Added.load(), MaxItems);
  Shared = nullptr;
  while (!Queue.IsEmpty()) (void)Queue.Pop();
  for (int i = 0; i < MaxItems; ++i) ASSERT_EQ(GFreed[static_cast<std::size_t>(i)].load(), 1) << i;
}
