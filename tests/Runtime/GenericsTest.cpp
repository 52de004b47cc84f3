#include <gtest/gtest.h>

#include <bit>
#include <set>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "Runtime/Runtime.h"

using namespace kz;
using kz::Generics::TEqualityComparer;
using kz::test::MessageOf;
using kz::test::TCountedIntf;

TEST(GenericList, EditingSortingAndRangeErrors) {
  Generics::TList<String> L;
  L.Add(u"c");
  L.Insert(0, u"a");
  L.Insert(2, u"d");
  L.Insert(1, u"b");
  EXPECT_EQ(L.IndexOf(u"C"), -1);  // exact equality
  EXPECT_EQ(L.Remove(u"c"), 2);
  L.Exchange(0, 2);
  for (String& S : L) S += u"!";
  EXPECT_EQ(L.ToArray(), (std::vector<String>{u"d!", u"b!", u"a!"}));
  L.Sort();
  EXPECT_EQ(L.First(), u"a!");
  L.Sort([](const String& A, const String& B) { return B.compare(A); });
  EXPECT_EQ(L.First(), u"d!");

  const String Range = u"Argument out of range";
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.GetItem(3); }), Range);
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.Insert(4, u"z"); }), Range);
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.SetCapacity(2); }), Range);
  L.Clear();
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.Last(); }), Range);
}

TEST(GenericList, ReleasesTheReferencesItHolds) {
  TCountedIntf::Alive = 0;
  {
    Generics::TList<TIntfPtr<IInterface>> Refs;
    TIntfPtr<IInterface> A(new TCountedIntf);
    Refs.Add(A);
    Refs.Add(TIntfPtr<IInterface>(new TCountedIntf));
    Refs.Add(TIntfPtr<IInterface>(new TCountedIntf));
    Refs.Delete(1);
    Refs.SetItem(1, A);
    EXPECT_EQ(TCountedIntf::Alive, 1);
    Refs.Clear();
    EXPECT_EQ(TCountedIntf::Alive, 1);  // A still held here
    Refs.Add(A);
  }
  EXPECT_EQ(TCountedIntf::Alive, 0);
}

TEST(EqualityComparer, DefaultIsSharedAndConsistentWithEquality) {
  auto S = TEqualityComparer<String>::Default();
  EXPECT_EQ(S.get(), TEqualityComparer<String>::Default().get());
  EXPECT_TRUE(S->Equals(u"abc", String(u"ab") + u"c"));
  EXPECT_FALSE(S->Equals(u"abc", u"ABC"));
  EXPECT_EQ(S->GetHashCode(u"abc"), S->GetHashCode(String(u"ab") + u"c"));
  EXPECT_NE(S->GetHashCode(u""), S->GetHashCode(String(1, u'\0')));
  EXPECT_NE(S->GetHashCode(u"ab"), S->GetHashCode(u"ba"));

  auto D = TEqualityComparer<double>::Default();
  EXPECT_EQ(D->GetHashCode(0.0), D->GetHashCode(-0.0));
  TIntfPtr<IInterface> Obj(new TCountedIntf);
  auto I = TEqualityComparer<TIntfPtr<IInterface>>::Default();
  EXPECT_TRUE(I->Equals(Obj, Query<IInterface>(Obj)));

  auto NoCase = TEqualityComparer<String>::Construct(
      [](const String& A, const String& B) { return SameText(A, B); },
      [](const String& Key) { return TEqualityComparer<String>::Default()->GetHashCode(UpperCase(Key)); });
  EXPECT_TRUE(NoCase->Equals(u"Key", u"kEY"));
  EXPECT_EQ(NoCase->GetHashCode(u"Key"), NoCase->GetHashCode(u"kEY"));
  EXPECT_THROW(TEqualityComparer<String>::Construct(nullptr, nullptr), EAccessViolation);
}

TEST(EqualityComparer, DefaultHashesSpreadOverMaskedBuckets) {
  // Similar keys (numbered names, aligned addresses, counters in the high bits) must reach
  // nearly all of the 1024 buckets a power-of-two table keeps by masking.
  static char Block[4096 * 16];
  auto Bucket = [](auto Comparer, const auto& Key) { return static_cast<std::uint32_t>(Comparer->GetHashCode(Key)) & 1023u; };
  std::set<std::uint32_t> Names, Ptrs, Steps;
  for (int i = 0; i < 4096; ++i) {
    Names.insert(Bucket(TEqualityComparer<String>::Default(), u"node" + AsciiToString(std::to_string(i))));
    Ptrs.insert(Bucket(TEqualityComparer<const void*>::Default(), static_cast<const void*>(Block + i * 16)));
    Steps.insert(Bucket(TEqualityComparer<std::int64_t>::Default(), std::int64_t{i} << 32));
  }
  for (const auto* Buckets : {&Names, &Ptrs, &Steps}) EXPECT_GE(Buckets->size(), 980u);

  // String keys that differ little: short numbers, one unit of a 32-unit key (every position,
  // through both lanes and the overlap of the last loads), only the length. Each set must
  // reach nearly all of 1024 buckets and of the 128 tags a table takes from bits 24..30.
  const auto Strings = TEqualityComparer<String>::Default();
  std::vector<String> Numbers, OneUnit, Lengths, ZeroFactor;
  const String Base = u"a key of thirty-two code units !";
  for (int i = 0; i < 4096; ++i) {
    Numbers.push_back(AsciiToString(std::to_string(i)));
    String S = Base;
    S[static_cast<std::size_t>(i / 128)] = static_cast<Char>(0x100 + i % 128);
    OneUnit.push_back(S);
    Lengths.push_back(String(static_cast<std::size_t>(i), u'a'));
    // Four units that cancel the first load's constant, then four that vary: a multiply by
    // the resulting zero must not wipe out the rest.
    ZeroFactor.push_back(String{0x7C15, 0x7F4A, 0x79B9, 0x9E37, static_cast<Char>(u'a' + i % 16),
                                static_cast<Char>(u'a' + i / 16 % 16), static_cast<Char>(u'a' + i / 256), u'z'});
  }
  for (const auto* Keys : {&Numbers, &OneUnit, &Lengths, &ZeroFactor}) {
    std::set<std::uint32_t> Low, Tags;
    for (const String& Key : *Keys) {
      const auto Hash = static_cast<std::uint32_t>(Strings->GetHashCode(Key));
      Low.insert(Hash & 1023u);
      Tags.insert(Hash >> 24 & 0x7Fu);
    }
    EXPECT_GE(Low.size(), 980u);
    EXPECT_GE(Tags.size(), 124u);
  }
}

TEST(EqualityComparer, StringHashNeedsNo128BitInteger) {
  // The string hash's portable product must equal the compiler's 128-bit one, so that every
  // platform hashes alike.
  std::uint64_t A = 0x0123456789ABCDEFull, B = ~0ull;
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(Generics::detail::MulFold64(A, B), Generics::detail::MulFold64Portable(A, B));
    A = A * 6364136223846793005ull + 1442695040888963407ull;
    B = std::rotl(B, 7) ^ A;
  }
}
