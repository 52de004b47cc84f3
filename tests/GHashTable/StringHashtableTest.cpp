// String-keyed tables: the string hash, orders, the string iterator and ToArray.
#include <gtest/gtest.h>

#include <vector>

#include "GHashTable/GHashTable.h"

using namespace kz;

namespace {

Pointer W(std::intptr_t V) { return reinterpret_cast<Pointer>(V); }

const std::vector<String> GreekKeys = {u"alpha", u"beta", u"gamma", u"delta", u"epsilon",
                                       u"zeta", u"eta", u"theta", u"iota", u"a much longer key, sampled"};

}  // namespace

TEST(StringHashtable, OrdersUnderEveryHashType) {
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
    for (std::size_t I = 0; I < GreekKeys.size(); ++I) T.Put(GreekKeys[I], W(I + 1));
    EXPECT_EQ(T.GetCapacity(), 23u);
    EXPECT_EQ(T.GetCollisions(), C.Collisions);
    EXPECT_EQ(T.ToArray(), C.Iteration);
    std::vector<String> Walk;
    for (auto It = T.Indices(); It->HasMoreElements();) Walk.push_back(It->NextElementS());
    EXPECT_EQ(Walk, C.Iteration);
    for (std::int32_t I = T.GetCount() - 1; I >= 0; --I) EXPECT_EQ(T.GetKeyByIndex(I), C.Positional[I]);
    EXPECT_THROW(T.Next(), EGHashtableError);  // ToArray ran the own iterator to its end
    T.Reset();
    EXPECT_EQ(T.Next(), C.Iteration[0]);
  }
  TGStringHashtable Empty(11, 0.75f);
  EXPECT_TRUE(Empty.ToArray().empty());
}

TEST(StringHashtable, KeysAreExactStringsAndEmptyIsNull) {
  TGStringHashtable T(11, 0.75f);
  EXPECT_FALSE(T.ContainsKey(u""));
  EXPECT_THROW(T.Get(u""), EGHashtableError);  // "Table is empty" first
  EXPECT_THROW(T.Put(u"", W(1)), EGHashtableError);
  T.Put(u"abc", W(1));
  T.Put(u"ABC", W(2));
  EXPECT_EQ(T.GetCount(), 2);
  EXPECT_EQ(T.Get(u"abc"), W(1));
  EXPECT_EQ(T.GetItem(u"ABC"), W(2));
  EXPECT_FALSE(T.ContainsKey(u""));
  try {
    T.Remove(u"");
    FAIL();
  } catch (const EGHashtableError& E) {
    EXPECT_EQ(E.Message(), u"Argument is null");
  }
  EXPECT_THROW(T.Put(String(1, u'\0'), W(3)), EGHashtableError);  // hashes to 0
  Pointer V = nullptr;
  EXPECT_TRUE(T.ContainsKey(u"ABC", V));
  EXPECT_EQ(V, W(2));
  EXPECT_EQ(T.Remove(u"abc"), W(1));
  EXPECT_FALSE(T.ContainsKey(u"abc", V));
  EXPECT_EQ(V, nullptr);

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
  Pointer First = Values->NextElement();
  EXPECT_TRUE(First == W(1) || First == W(2));
  TGStringHashTableEnumerator OverValues(&T, false);
  EXPECT_THROW(OverValues.MoveNext(), EGHashtableError);

  auto Keys = T.Indices();
  const String K = Keys->NextElementS();
  EXPECT_EQ(Keys->CurrentElementS(), K);
  T.Remove(K);  // the current key stays readable
  EXPECT_EQ(Keys->CurrentElementS(), K);
  EXPECT_EQ(Keys->Count(), 1);
  TGStringHashTableEnumerator Each(&T, true);
  std::vector<String> Seen;
  while (Each.MoveNext()) Seen.push_back(Each.GetCurrent());
  EXPECT_EQ(Seen, std::vector<String>{K == u"one" ? u"two" : u"one"});
}

TEST(HashIntTable, NegativeKeysAndTheNullKey) {
  TGHashIntTable T(11, 0.75f);
  EXPECT_FALSE(T.ContainsKey(0));
  EXPECT_THROW(T.Remove(0), EGHashtableError);
  T.Put(-5, W(1));
  T.Put(2147483643, W(2));
  EXPECT_EQ(T.GetCount(), 2);
  EXPECT_EQ(T.GetCollisions(), 1);  // the sign bit is cleared before the modulus
  EXPECT_EQ(T.GetItem(-5), W(1));
  EXPECT_EQ(T.Get(2147483643), W(2));
  EXPECT_THROW(T.Put(0, W(3)), EGHashtableError);
  EXPECT_THROW(T.ContainsKey(0), EGHashtableError);
  Pointer V;
  EXPECT_TRUE(T.ContainsKey(-5, V));
  EXPECT_EQ(V, W(1));
  T.SetItem(-5, W(7));
  EXPECT_EQ(T.Remove(-5), W(7));
  EXPECT_EQ(T.GetCount(), 1);
}

TEST(StringHashtable, CopiesToAndFromStringLists) {
  TObject First, Second, Third;
  TStringList Lines;
  Lines.AddObject(u"a", &First);
  Lines.AddObject(u"b", &Second);
  Lines.AddObject(u"a", &Third);
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
  T.Reset();
  T.AssignTo(&Out);
  EXPECT_EQ(Out.ToStringArray(), T.ToArray());
  for (std::int32_t I = 0; I < Out.GetCount(); ++I) EXPECT_EQ(static_cast<Pointer>(Out.GetObject(I)), T.Get(Out.Get(I)));
  Out.Assign(&T);  // the list asks the table
  EXPECT_EQ(Out.GetCount(), 2);

  TGStringHashtable Copy(3, 0.5f);
  Copy.Assign(&T);
  EXPECT_EQ(Copy.ToArray(), T.ToArray());
  EXPECT_EQ(Copy.GetCapacity(), T.GetCapacity());
  Lines.Add(u"");  // the empty line is the null key
  EXPECT_THROW(T.Assign(&Lines), EGHashtableError);
  EXPECT_THROW(T.Assign(nullptr), EConvertError);
}
