// Subclasses that redefine what a key means (their own hash, entry class and comparison) are
// obeyed on every path: put, get, contains, remove and regrowth.
#include <gtest/gtest.h>

#include <cctype>
#include <memory>

#include "GHashTable/GHashTable.h"
#include "Runtime/Text.h"

using namespace kz;

namespace {

std::uintptr_t N(Pointer P) { return reinterpret_cast<std::uintptr_t>(P); }
Pointer W(std::uintptr_t V) { return reinterpret_cast<Pointer>(V); }

// Word keys that are equal modulo 1000.
class TModEntry : public TGHashtableEntry {
  KZ_CLASS(TModEntry, TGHashtableEntry)
 public:
  bool KeyEquals(Pointer Key) const override { return N(GetKey()) % 1000 == N(Key) % 1000; }
};

class TModTable : public TGHashtable {
  KZ_CLASS(TModTable, TGHashtable)
 public:
  using TGHashtable::TGHashtable;
  std::int32_t HashCode(Pointer Key, std::int32_t Size) const override {
    return static_cast<std::int32_t>(N(Key) % 1000 % static_cast<std::uintptr_t>(Size));
  }
  std::unique_ptr<TGHashtableEntry> NewHashtableEntry() override { return std::make_unique<TModEntry>(); }
};

// String keys compared and hashed without regard to ASCII case.
class TNoCaseEntry : public TGStringHashtableEntry {
  KZ_CLASS(TNoCaseEntry, TGStringHashtableEntry)
 public:
  bool KeyEquals(Pointer Key) const override { return Key && SameText(GetKeyString(), *static_cast<const String*>(Key)); }
};

class TNoCaseTable : public TGStringHashtable {
  KZ_CLASS(TNoCaseTable, TGStringHashtable)
 public:
  using TGStringHashtable::TGStringHashtable;
  std::int32_t HashCode(Pointer Key, std::int32_t Size) const override {
    const String Folded = LowerCase(*static_cast<const String*>(Key));
    return TGStringHashtable::HashCode(KeyWord(Folded), Size);
  }
  std::unique_ptr<TGHashtableEntry> NewHashtableEntry() override { return std::make_unique<TNoCaseEntry>(); }
};

}  // namespace

TEST(OverriddenKeys, SubclassHashAndComparisonAreObeyed) {
  TModTable T(3, 0.75f);
  for (std::uintptr_t K = 1; K <= 50; ++K) T.Put(W(K), W(K));  // grows several times
  EXPECT_EQ(T.GetCount(), 50);
  EXPECT_EQ(N(T.Get(W(1007))), 7u);
  EXPECT_TRUE(T.ContainsKey(W(2050)));
  EXPECT_FALSE(T.ContainsKey(W(51)));
  T.Put(W(3001), W(99));  // replaces key 1
  EXPECT_EQ(T.GetCount(), 50);
  EXPECT_EQ(N(T.Remove(W(5001))), 99u);
  EXPECT_FALSE(T.ContainsKey(W(1)));

  TNoCaseTable S(3, 0.75f);
  for (String K : {u"Alpha", u"beta", u"GAMMA", u"delta", u"Epsilon", u"zeta", u"Eta"}) S.Put(K, W(K.size()));
  EXPECT_EQ(N(S.Get(u"ALPHA")), 5u);
  EXPECT_TRUE(S.ContainsKey(u"gamma"));
  S.Put(u"BETA", W(40));
  EXPECT_EQ(S.GetCount(), 7);
  EXPECT_EQ(N(S.Remove(u"Beta")), 40u);
  EXPECT_FALSE(S.ContainsKey(u"beta"));
}
