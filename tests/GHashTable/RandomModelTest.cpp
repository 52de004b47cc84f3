// Long random runs of puts, removes, gets and positional reads against a plain model: the
// content of an unordered_map, capacity growth by the threshold rule, and the structure
// (collisions, bucket orders) checked after every step.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <unordered_map>
#include <vector>

#include "GHashTable/GHashTable.h"

using namespace kz;

namespace {

Pointer W(std::intptr_t V) { return reinterpret_cast<Pointer>(V); }

Pointer Word(Pointer Key) { return Key; }
Pointer Word(const String& Key) { return TGStringHashtable::KeyWord(Key); }

template <class TTable, class TKey>
class TModelRun {
 public:
  TModelRun(TTable& Table, float LoadFactor, std::vector<TKey> Keys, unsigned RunNumber)
      : T(Table), LF(LoadFactor), Cap(Table.GetCapacity()), Keys(std::move(Keys)), Rng(RunNumber) {}

  void Run(int Steps) {
    for (int S = 0; S < Steps; ++S) {
      SCOPED_TRACE(testing::Message() << "step " << S);
      Step();
      Check(S % 2 == 0);
      if (testing::Test::HasFatalFailure()) return;
    }
  }

 private:
  // The word-keyed face of the table, the same for every key type.
  TGCustomHashtable& Core() { return T; }
  std::int64_t ThresholdOf(std::uint32_t C) const { return std::llround(std::nearbyint(static_cast<long double>(C) * LF)); }

  void Step() {
    const TKey& K = Keys[Rng() % Keys.size()];
    const bool Present = M.count(K) > 0;
    switch (Rng() % 8) {
      case 0: case 1: case 2: {
        const std::intptr_t V = static_cast<std::intptr_t>(Rng() % 100000 + 1);
        if (!Present)
          while (static_cast<std::int64_t>(M.size()) >= ThresholdOf(Cap)) Cap = Cap * 2 + 1;
        T.Put(K, W(V));
        M[K] = V;
        break;
      }
      case 3: case 4:
        if (!Present) {
          ASSERT_THROW(T.Remove(K), EGHashtableError);
          break;
        }
        ASSERT_EQ(T.Remove(K), W(M[K]));
        M.erase(K);
        break;
      case 5:
        ASSERT_EQ(T.ContainsKey(K), Present);
        if (Present)
          ASSERT_EQ(T.Get(K), W(M[K]));
        else
          ASSERT_THROW((void)T.Get(K), EGHashtableError);
        break;
      case 6: {  // a short positional walk from a random place, either way
        if (M.empty()) {
          ASSERT_THROW((void)T.GetItemByIndex(0), EListError);
          break;
        }
        const std::int32_t Count = T.GetCount();
        std::int32_t I = static_cast<std::int32_t>(Rng() % Count);
        const int Dir = Rng() % 2 ? 1 : -1;
        for (int J = 0; J < 5 && I >= 0 && I < Count; ++J, I += Dir) {
          const Pointer Key = Core().GetKeyByIndex(I);
          ASSERT_EQ(T.GetItemByIndex(I), T.FindEntry(Key)->GetItem());
          ASSERT_EQ(Key, Positional[I]);
        }
        break;
      }
      default:
        if (Rng() % 50 == 0) {
          T.Clear();
          M.clear();
        }
        break;
    }
  }

  // Checks content, counts and both orders; Forward picks the direction of the positional
  // scan, which also leaves the cursor at one end or the other.
  void Check(bool Forward) {
    ASSERT_EQ(T.GetCount(), static_cast<std::int32_t>(M.size()));
    ASSERT_EQ(T.GetCapacity(), Cap);
    std::set<std::int32_t> Used;
    for (const auto& [K, V] : M) {
      TGHashtableEntry* E = T.FindEntry(Word(K));
      ASSERT_NE(E, nullptr);
      ASSERT_EQ(E->GetItem(), W(V));
      ASSERT_EQ(E->GetHash(), T.HashCode(Word(K), static_cast<std::int32_t>(Cap)));
      Used.insert(E->GetHash());
    }
    ASSERT_EQ(T.GetCollisions(), T.GetCount() - static_cast<std::int32_t>(Used.size()));
    // Iteration: buckets from the highest down; positions: buckets from 0 up, chains in
    // the same head-to-tail order both ways.
    auto Bucket = [&](Pointer Key) { return T.FindEntry(Key)->GetHash(); };
    Positional.clear();
    for (auto It = Core().Indices(); It->HasMoreElements();) Positional.push_back(It->NextElement());
    ASSERT_TRUE(std::is_sorted(Positional.begin(), Positional.end(),
                               [&](Pointer A, Pointer B) { return Bucket(A) > Bucket(B); }));
    std::stable_sort(Positional.begin(), Positional.end(), [&](Pointer A, Pointer B) { return Bucket(A) < Bucket(B); });
    ASSERT_EQ(Positional.size(), M.size());
    const std::int32_t Count = T.GetCount();
    for (std::int32_t J = 0; J < Count; ++J) {
      const std::int32_t I = Forward ? J : Count - 1 - J;
      ASSERT_EQ(Core().GetKeyByIndex(I), Positional[I]);
    }
  }

  TTable& T;
  float LF;
  std::uint32_t Cap;
  std::vector<TKey> Keys;
  std::mt19937 Rng;
  std::unordered_map<TKey, std::intptr_t> M;
  std::vector<Pointer> Positional;
};

}  // namespace

TEST(RandomModel, WordAndStringKeysUnderEveryHashType) {
  std::mt19937 Rng(7);
  std::vector<Pointer> Words;
  for (int I = 0; I < 200; ++I) Words.push_back(W(static_cast<std::intptr_t>(Rng() % 3000000000u) + 1));
  for (int I = 1; I <= 40; ++I) Words.push_back(W(I));  // short keys crowd the low buckets
  std::vector<String> Texts(200);
  for (String& K : Texts)  // short ones and sampled long ones
    for (int J = 0, Len = 1 + static_cast<int>(Rng() % 40); J < Len; ++J) K += static_cast<Char>(u'a' + Rng() % 5);
  unsigned RunNumber = 1;
  for (TGHashType Type : {htTruncation, htDivision, htMidSquare, htFolding}) {
    SCOPED_TRACE(static_cast<int>(Type));
    for (float LF : {0.75f, 3.0f}) {
      TGHashtable T(5, LF);
      T.SetHashType(Type);
      TModelRun<TGHashtable, Pointer>(T, LF, Words, RunNumber++).Run(2500);
    }
    TGStringHashtable S(3, 1.5f);
    S.SetHashType(Type);
    TModelRun<TGStringHashtable, String>(S, 1.5f, Texts, RunNumber++).Run(2500);
  }
}
