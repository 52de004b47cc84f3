// The string-keyed tables with string lists and their iterators, and the list cursor.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "KZGenerics.Collections/KZGenerics.Collections.h"

using namespace kz;

namespace {

class TNamed : public TObject {
  KZ_CLASS(TNamed, TObject)
 public:
  explicit TNamed(int N) : Number(N) {}
  int Number;
};

// Anything with a published string property "Text".
class TTextHolder : public TPersistent {
  KZ_CLASS(TTextHolder, TPersistent)
 public:
  String GetText() const { return FText; }
  void SetText(String Value) { FText = std::move(Value); }

 private:
  String FText;
};

}  // namespace

TEST(KZStringObjectHashTable, StringListsBothWays) {
  TNamed A(1), B(2), C(3);
  TKZStringObjectHashTable<TNamed> T;
  T.Add(u"a", &A);
  T.Add(u"b", &B);
  T.Add(u"c", &C);
  TStringList Lines;
  Lines.Add(u"old");
  int Changes = 0;
  Lines.SetOnChange([&](TObject*) { ++Changes; });
  Lines.Assign(&T);
  EXPECT_EQ(Changes, 1);
  ASSERT_EQ(Lines.GetCount(), 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(T.GetKeyByIndex(i), Lines.Get(i));
    EXPECT_EQ(T.GetItemByIndex(i), Lines.GetObject(i));
  }

  TKZStringObjectHashTable<TNamed> Copy;
  int TableChanges = 0;
  Copy.SetOnChange([&](TObject*) { ++TableChanges; });
  Copy.Assign(&Lines);
  EXPECT_EQ(TableChanges, 1);
  EXPECT_EQ(Copy.GetItem(u"b")->Number, 2);
  Lines.AddObject(u"b", &A);  // a repeated line
  EXPECT_THROW(Copy.Assign(&Lines), EListError);
  TStringList Wrong;
  Wrong.AddObject(u"x", &Lines);  // not a TNamed
  EXPECT_THROW(Copy.Assign(&Wrong), EInvalidCast);

  // Keys only, through the plain string table.
  TKZStringHashTable<int> Keys;
  TStringList Two;
  Two.Add(u"x");
  Two.Add(u"y");
  Keys.Assign(&Two);
  EXPECT_EQ(Keys.GetItem(u"y"), 0);
  RegisterProperties(TTextHolder::ClassInfo(), {Published(u"Text", &TTextHolder::GetText, &TTextHolder::SetText)});
  TTextHolder Holder;
  Keys.AssignTo(&Holder);
  EXPECT_EQ(Holder.GetText(), Keys.GetKeyByIndex(0) + u"\r\n" + Keys.GetKeyByIndex(1) + u"\r\n");
  TKZDictionary<int, int> Unrelated;
  EXPECT_THROW(Keys.AssignTo(&Unrelated), EConvertError);
}

TEST(KZStringObjectHashTable, IndicesAndElements) {
  TNamed A(1), B(2);
  auto T = std::make_unique<TKZStringObjectHashTable<TNamed>>();
  auto Empty = T->Indices();
  EXPECT_FALSE(Empty->HasMoreElements());
  EXPECT_THROW(Empty->NextElementS(), EListError);  // no buckets at all
  T->Add(u"a", &A);
  T->Add(u"b", &B);
  TIntfPtr<IStringIterator> Keys = T->Indices();
  TIntfPtr<IObjectIterator> Values = T->Elements();
  EXPECT_EQ(Keys->GetCount(), 2);
  EXPECT_THROW(Keys->CurrentElementS(), EListError);  // before the first NextElement
  std::vector<String> Seen;
  while (Keys->HasMoreElements()) {
    Seen.push_back(Keys->NextElementS());
    EXPECT_EQ(Keys->CurrentElementS(), Seen.back());
    EXPECT_EQ(Values->NextElementO(), T->GetItem(Seen.back()));
  }
  EXPECT_EQ(Seen, T->GetKeys()->ToArray());
  EXPECT_FALSE(Values->HasMoreElements());
  (void)Keys->NextElementS();  // past the end stays on the last bucket
  Keys->Reset();
  EXPECT_EQ(Keys->NextElementS(), Seen[0]);
  T.reset();
  EXPECT_THROW(Keys->NextElementS(), EAccessViolation);
  EXPECT_THROW(Values->GetCount(), EAccessViolation);
}

TEST(KZListEnumerator, WalksForwardAndReportsTheWholeCount) {
  Generics::TList<int> L;
  for (int i : {5, 6, 7}) L.Add(i);
  TKZListEnumerator<int> E(&L);
  EXPECT_THROW((void)E.GetCurrent(), EArgumentOutOfRangeException);
  std::vector<int> Walked;
  while (E.MoveNext()) Walked.push_back(E.GetCurrent());
  EXPECT_EQ(Walked, (std::vector<int>{5, 6, 7}));
  EXPECT_FALSE(E.MoveNext());
  EXPECT_EQ(E.GetIndex(), 3);  // stays one past the end
  E.Reset();
  EXPECT_TRUE(E.HasMoreElements());
  EXPECT_EQ(E.NextElement(), 5);
  EXPECT_EQ(E.CurrentElement(), 5);
  EXPECT_EQ(E.GetCount(), 3);
  (void)E.NextElement();
  EXPECT_EQ(E.NextElement(), 7);
  EXPECT_FALSE(E.HasMoreElements());
  EXPECT_THROW((void)E.NextElement(), EArgumentOutOfRangeException);
  EXPECT_THROW((void)TKZListEnumerator<int>(nullptr), EAccessViolation);
}
