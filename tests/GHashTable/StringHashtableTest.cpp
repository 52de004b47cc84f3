// String-keyed tables: orders, the string hash, the string iterator and string lists.
#include <gtest/gtest.h>

#include <vector>

#include "GHashTable/GHashTable.h"
#include "Runtime/TestSupport.h"

using namespace kz;
using kz::test::MessageOf;

namespace {

Pointer W(std::intptr_t V) { return reinterpret_cast<Pointer>(V); }

}  // namespace

TEST(StringHashtable, OrdersUnderEveryHashType) {
  const std::vector<String> Keys = {u"alpha", u"beta", u"gamma", u"delta", u"epsilon",
                                    u"zeta", u"eta", u"theta", u"iota", u"a much longer key, sampled"};
  struct TExpected {
    TGHashType Type;
    std::int32_t Collisions;
    std::vector<String> Iteration, Positional;
  };
  const TExpected Cases[] = {
      {htTruncation, 2,
       {u"a much longer key, sampled", u"epsilon", u"alpha", u"iota", u"eta", u"beta", u"gamma", u"delta", u"zeta", u"theta"},
       {u"theta", u"zeta", u"delta", u"beta", u"gamma", u"eta", u"iota", u"alpha", u"a much longer key, sampled", u"epsilon"}},
      {htDivision, 1,
       {u"a much longer key, sampled", u"gamma", u"iota", u"zeta", u"epsilon", u"eta", u"theta", u"beta", u"alpha", u"delta"},
       {u"delta", u"alpha", u"beta", u"theta", u"epsilon", u"eta", u"zeta", u"iota", u"gamma", u"a much longer key, sampled"}},
      {htMidSquare, 1,
       {u"a much longer key, sampled", u"epsilon", u"delta", u"iota", u"beta", u"alpha", u"theta", u"zeta", u"eta", u"gamma"},
       {u"gamma", u"eta", u"zeta", u"theta", u"alpha", u"beta", u"iota", u"delta", u"a much longer key, sampled", u"epsilon"}},
      {htFolding, 2,
       {u"zeta", u"a much longer key, sampled", u"epsilon", u"delta", u"theta", u"gamma", u"eta", u"alpha", u"beta", u"iota"},
       {u"iota", u"alpha", u"beta", u"eta", u"gamma", u"delta", u"theta", u"epsilon", u"a much longer key, sampled", u"zeta"}},
  };
  for (const TExpected& C : Cases) {
    SCOPED_TRACE(static_cast<int>(C.Type));
    TGStringHashtable T(11, 0.75f);
    T.SetHashType(C.Type);
    for (const String& K : Keys) T.Put(K, W(1));
    EXPECT_EQ(T.GetCapacity(), 23u);
    EXPECT_EQ(T.GetCollisions(), C.Collisions);
    EXPECT_EQ(T.ToArray(), C.Iteration);
    for (std::int32_t I = T.GetCount() - 1; I >= 0; --I) EXPECT_EQ(T.GetKeyByIndex(I), C.Positional[I]);
    EXPECT_THROW(T.Next(), EGHashtableError);  // ToArray ran the own iterator to its end
    T.Reset();
    EXPECT_EQ(T.Next(), C.Iteration[0]);
  }
  EXPECT_TRUE(TGStringHashtable(11, 0.75f).ToArray().empty());
}

TEST(StringHashtable, KeysAreExactStringsAndEmptyIsNull) {
  TGStringHashtable T(11, 0.75f);
  EXPECT_FALSE(T.ContainsKey(u""));
  EXPECT_THROW(T.Put(u"", W(1)), EGHashtableError);
  T.Put(u"abc", W(1));
  T.Put(u"ABC", W(2));
  EXPECT_EQ(T.Get(u"abc"), W(1));
  EXPECT_EQ(T.GetItem(u"ABC"), W(2));
  EXPECT_FALSE(T.ContainsKey(u""));
  EXPECT_EQ(MessageOf<EGHashtableError>([&] { T.Remove(u""); }), u"Argument is null");
  EXPECT_THROW(T.Put(String(1, u'\0'), W(3)), EGHashtableError);  // hashes to 0

  // Long strings are sampled: equal length and equal sampled code units share a bucket.
  const String A = u"0123456789abcdefXYZ", B = u"0!2!4!6!8!a!c!e!X!Z";
  EXPECT_EQ(T.HashCode(TGStringHashtable::KeyWord(A), 1000003), T.HashCode(TGStringHashtable::KeyWord(B), 1000003));
  T.SetItem(A, W(5));
  T.SetItem(B, W(6));
  EXPECT_EQ(T.Get(A), W(5));
  EXPECT_EQ(T.Get(B), W(6));
  EXPECT_EQ(T.GetCollisions(), 1);
}

TEST(StringHashtable, StringIteratorServesKeysOnly) {
  TGStringHashtable T(11, 0.75f);
  T.Put(u"one", W(1));
  T.Put(u"two", W(2));
  auto Values = T.Elements();
  TIntfPtr<IStringIterator> AsStrings = Query<IStringIterator>(Values);
  ASSERT_TRUE(AsStrings);
  EXPECT_THROW(AsStrings->NextElementS(), EGHashtableError);
  EXPECT_EQ(Values->GetCount(), 2);  // the refused call took nothing
  EXPECT_THROW(TGStringHashTableEnumerator(&T, false).MoveNext(), EGHashtableError);

  auto Keys = T.Indices();
  const String K = Keys->NextElementS();
  T.Remove(K);  // the current key stays readable
  EXPECT_EQ(Keys->CurrentElementS(), K);
  EXPECT_EQ(Keys->Count(), 1);
  TGStringHashTableEnumerator Each(&T, true);
  std::vector<String> Seen;
  while (Each.MoveNext()) Seen.push_back(Each.GetCurrent());
  EXPECT_EQ(Seen, std::vector<String>{K == u"one" ? u"two" : u"one"});
}

TEST(StringHashtable, CopiesToAndFromStringLists) {
  TObject First, Second, Third;
  TStringList Lines;
  Lines.AddObject(u"a", &First);
  Lines.AddObject(u"b", &Second);
  Lines.AddObject(u"a", &Third);  // the later duplicate wins
  TGStringHashtable T(11, 0.75f);
  T.Put(u"old", W(1));
  int Changes = 0;
  T.SetOnChange([&](TObject*) { ++Changes; });
  T.Assign(&Lines);
  EXPECT_EQ(Changes, 1);
  EXPECT_EQ(T.GetCount(), 2);
  EXPECT_EQ(T.Get(u"a"), static_cast<Pointer>(&Third));
  EXPECT_EQ(T.Get(u"b"), static_cast<Pointer>(&Second));

  TStringList Out;
  Out.Add(u"stale");
  T.AssignTo(&Out);
  EXPECT_EQ(Out.ToStringArray(), T.ToArray());
  for (std::int32_t I = 0; I < Out.GetCount(); ++I) EXPECT_EQ(static_cast<Pointer>(Out.GetObject(I)), T.Get(Out.Get(I)));

  TGStringHashtable Copy(3, 0.5f);  // a table of strings copies its own key texts
  Copy.Assign(&T);
  EXPECT_EQ(Copy.ToArray(), T.ToArray());
  Lines.Add(u"");  // the empty line is the null key
  EXPECT_THROW(T.Assign(&Lines), EGHashtableError);
  EXPECT_THROW(T.Assign(nullptr), EConvertError);
}
