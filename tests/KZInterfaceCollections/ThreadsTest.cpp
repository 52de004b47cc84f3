// Run under ThreadSanitizer by the tsan preset (test names containing "Threads").
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
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
  std::atomic<int> Added{0}, Deleted{0};

 protected:
  void Notify(const TIntfPtr<IInterface>&, TListNotification Action) override {
    (Action == lnAdded ? Added : Deleted).fetch_add(1);
  }
};

}  // namespace

TEST(InterfaceListThreads, SharedListAndItemsAcrossThreads) {
  auto* Raw = new TCountingList;
  TIntfPtr<ICloneable> Shared(Raw);
  TIntfPtr<ICloneable> HandOver(new TIQueue);  // items made on one thread, dropped on another
  auto& Queue = dynamic_cast<TIQueue&>(*HandOver);
  std::atomic<int> Deletes{0}, Visited{0};
  std::vector<std::thread> Pool;
  for (int t = 0; t < Threads; ++t)
    Pool.emplace_back([&, t, List = Shared] {
      auto& L = dynamic_cast<TCountingList&>(*List);
      std::mt19937 Rng(static_cast<unsigned>(t) + 1);
      for (int i = 0; i < Rounds; ++i) {
        TIntfPtr<IInterface> Item(new TTracked(t * Rounds + i));
        L.Add(Item);
        Queue.Push(Item);
        switch (Rng() % 4) {
          case 0: {  // delete a random slot: the count must not change under us
            L.Lock();
            if (const int N = L.GetCount(); N > 0) {
              L.Delete(static_cast<std::int32_t>(Rng() % static_cast<unsigned>(N)));
              Deletes.fetch_add(1);
            }
            L.Unlock();
            break;
          }
          case 1: {  // walk the whole list as one step
            L.Lock();
            for (const TIntfPtr<IInterface>& P : L) Visited.fetch_add(P ? 1 : 0);
            L.Unlock();
            break;
          }
          case 2:
            if (L.Remove(Item) >= 0) Deletes.fetch_add(1);
            break;
          default: {
            L.Lock();
            if (!Queue.IsEmpty()) (void)Queue.Pop();  // often another thread's item
            L.Unlock();
          }
        }
      }
    });
  for (std::thread& T : Pool) T.join();
  EXPECT_EQ(Raw->GetCount(), MaxItems - Deletes.load());  // nothing lost
  EXPECT_EQ(Raw->Added.load(), MaxItems);
  EXPECT_GE(Raw->Deleted.load(), Deletes.load());  // Remove notifies also when absent
  EXPECT_GT(Visited.load(), 0);
  Shared = nullptr;
  while (!Queue.IsEmpty()) (void)Queue.Pop();
  for (int i = 0; i < MaxItems; ++i) ASSERT_EQ(GFreed[static_cast<std::size_t>(i)].load(), 1) << i;
}
