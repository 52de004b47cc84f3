#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "Runtime/Runtime.h"

using namespace kz;
using kz::test::MessageOf;
using kz::test::TCounted;

namespace {

std::vector<String> Lines(const TStrings& L) { return L.ToStringArray(); }

// Records OnChanging / OnChange as '<' and '>'.
struct TEventLog {
  std::string Log;
  void Attach(TStringList& L) {
    L.SetOnChanging([this](TObject*) { Log += '<'; });
    L.SetOnChange([this](TObject*) { Log += '>'; });
  }
};

}  // namespace

TEST(StringList, IndexErrorsAreListErrorsNamingTheIndex) {
  TStringList L;
  L.Add(u"a");
  L.Add(u"b");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Get(2); }), u"List index out of bounds (2)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.GetObject(-1); }), u"List index out of bounds (-1)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Put(5, u"x"); }), u"List index out of bounds (5)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.PutObject(2, nullptr); }), u"List index out of bounds (2)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Delete(2); }), u"List index out of bounds (2)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Insert(3, u"x"); }), u"List index out of bounds (3)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Exchange(0, 7); }), u"List index out of bounds (7)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Move(0, 2); }), u"List index out of bounds (2)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.SetCapacity(1); }), u"List capacity out of bounds (1)");
  EXPECT_EQ(Lines(L), (std::vector<String>{u"a", u"b"}));
  L.Insert(2, u"c");  // the end is a valid insertion point
  L.Insert(0, u"z");
  EXPECT_EQ(Lines(L), (std::vector<String>{u"z", u"a", u"b", u"c"}));
}

TEST(StringList, SortedListPlacesLinesAndAppliesTheDuplicatesPolicy) {
  TStringList L;
  L.SetSorted(true);
  EXPECT_EQ(L.Add(u"m"), 0);
  EXPECT_EQ(L.Add(u"c"), 0);
  EXPECT_EQ(L.Add(u"x"), 2);
  EXPECT_EQ(Lines(L), (std::vector<String>{u"c", u"m", u"x"}));
  EXPECT_EQ(MessageOf<EListError>([&] { L.Insert(0, u"a"); }), u"Operation not allowed on sorted list");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Put(0, u"a"); }), u"Operation not allowed on sorted list");

  // dupIgnore (the default): the existing index, nothing added; case does not matter.
  EXPECT_EQ(L.GetDuplicates(), dupIgnore);
  EXPECT_EQ(L.Add(u"M"), 1);
  EXPECT_EQ(L.GetCount(), 3);

  L.SetDuplicates(dupError);
  EXPECT_EQ(MessageOf<EListError>([&] { L.Add(u"x"); }), u"String list does not allow duplicates");
  EXPECT_EQ(L.GetCount(), 3);

  // dupAccept: Find answers the first of the equal lines, whichever was found first.
  L.SetDuplicates(dupAccept);
  TCounted A(1), B(2), C(3);
  L.AddObject(u"m", &A);
  L.AddObject(u"M", &B);
  L.AddObject(u"m", &C);
  EXPECT_EQ(L.GetCount(), 6);
  std::int32_t Index = -1;
  EXPECT_TRUE(L.Find(u"m", Index));
  EXPECT_EQ(Index, 1);
  EXPECT_EQ(L.IndexOf(u"M"), 1);
  EXPECT_FALSE(L.Find(u"n", Index));
  EXPECT_EQ(Index, 5);  // insertion point before "x"
  EXPECT_EQ(L.IndexOf(u"n"), -1);
  EXPECT_FALSE(L.Find(u"zz", Index));
  EXPECT_EQ(Index, 6);
}

TEST(StringList, ComparisonFollowsCaseSensitivity) {
  // Under C.UTF-8 the collation is code point order, upper case before lower case.
  TStringList L;
  for (const char16_t* S : {u"b", u"B", u"a", u"C"}) L.Add(S);
  EXPECT_EQ(L.IndexOf(u"c"), 3);  // unsorted scan, case-insensitive by default
  EXPECT_EQ(L.IndexOf(u"q"), -1);
  L.SetDuplicates(dupAccept);
  L.SetSorted(true);
  EXPECT_EQ(L.Get(0), u"a");
  EXPECT_EQ(L.Get(3), u"C");
  L.SetCaseSensitive(true);  // re-sorts
  EXPECT_EQ(Lines(L), (std::vector<String>{u"B", u"C", u"a", u"b"}));
  EXPECT_EQ(L.IndexOf(u"c"), -1);
  EXPECT_EQ(L.IndexOf(u"b"), 3);
  EXPECT_LT(L.CompareStrings(u"B", u"a"), 0);
  L.SetCaseSensitive(false);
  EXPECT_GT(L.CompareStrings(u"B", u"a"), 0);
  EXPECT_EQ(L.CompareStrings(u"abc", u"ABC"), 0);
}

TEST(StringList, CapacityGrowsByTheDeltaRuleThroughSetCapacity) {
  TStringList L;
  std::vector<std::int32_t> Seen{L.GetCapacity()};
  for (int i = 0; i < 80; ++i) {
    L.Add(u"x");
    if (L.GetCapacity() != Seen.back()) Seen.push_back(L.GetCapacity());
  }
  EXPECT_EQ(Seen, (std::vector<std::int32_t>{0, 4, 8, 12, 28, 44, 60, 76, 95}));
  L.SetCapacity(200);
  EXPECT_EQ(L.GetCapacity(), 200);
  L.Clear();
  EXPECT_EQ(L.GetCapacity(), 0);

  // A descendant that refuses to grow stops the insertion with its own error.
  struct TLimited : TStringList {
    void SetCapacity(std::int32_t N) override {
      if (N > 4) throw EStringListError(u"full");
      TStringList::SetCapacity(N);
    }
  } Limited;
  for (int i = 0; i < 4; ++i) Limited.Add(u"x");
  EXPECT_THROW(Limited.Add(u"y"), EStringListError);
  EXPECT_EQ(Limited.GetCount(), 4);

  // One that declines silently gets the capacity error instead of a write past the room.
  struct TStuck : TStringList {
    void SetCapacity(std::int32_t) override {}
  } Stuck;
  EXPECT_EQ(MessageOf<EListError>([&] { Stuck.Add(u"x"); }), u"List capacity out of bounds (0)");
  EXPECT_EQ(Stuck.GetCount(), 0);
}

TEST(StringList, OwnedObjectsAreFreedExactlyWhenTheyLeave) {
  TCounted::Alive = 0;
  {
    TStringList L(true);
    for (int i = 0; i < 5; ++i) L.AddObject(u"o", new TCounted(i));
    L.Delete(0);
    EXPECT_EQ(TCounted::Alive, 4);
    L.PutObject(0, new TCounted(10));  // the replaced one is freed
    EXPECT_EQ(TCounted::Alive, 4);
    L.PutObject(0, L.GetObject(0));  // putting the same object back frees nothing
    EXPECT_EQ(TCounted::Alive, 4);
    L.Move(0, 3);
    L.Exchange(1, 2);
    L.Put(1, u"renamed");
    L.CustomSort([](TStringList* List, std::int32_t I, std::int32_t J) {
      return static_cast<TCounted*>(List->GetObject(I))->Tag() - static_cast<TCounted*>(List->GetObject(J))->Tag();
    });
    EXPECT_EQ(TCounted::Alive, 4);
    EXPECT_EQ(static_cast<TCounted*>(L.GetObject(3))->Tag(), 10);
    L.Delete(3);
    EXPECT_EQ(TCounted::Alive, 3);
  }
  EXPECT_EQ(TCounted::Alive, 0);  // destruction frees the rest

  TStringList Owning(true);
  Owning.AddObject(u"a", new TCounted);
  Owning.AddObject(u"b", new TCounted);
  Owning.Clear();
  EXPECT_EQ(TCounted::Alive, 0);

  TCounted Kept;
  {
    TStringList NotOwning;
    NotOwning.AddObject(u"k", &Kept);
    NotOwning.Delete(0);
    NotOwning.AddObject(u"k", &Kept);
    NotOwning.Clear();
    NotOwning.AddObject(u"k", &Kept);
  }
  EXPECT_EQ(TCounted::Alive, 1);
}

TEST(StringList, ChangeEventsFireAroundChangesAndOncePerUpdate) {
  TStringList L;
  TEventLog Events;
  Events.Attach(L);
  L.Add(u"a");
  L.Put(0, u"b");
  L.Delete(0);
  EXPECT_EQ(Events.Log, "<><><>");

  Events.Log.clear();
  EXPECT_THROW(L.Delete(0), EListError);  // a failed operation announces nothing
  L.Clear();                              // clearing an empty list changes nothing
  EXPECT_EQ(Events.Log, "");

  L.BeginUpdate();
  L.BeginUpdate();
  EXPECT_EQ(L.GetUpdateCount(), 2);
  L.Add(u"x");
  L.Add(u"y");
  L.EndUpdate();
  L.Add(u"z");
  L.EndUpdate();
  EXPECT_EQ(Events.Log, "<>");
  EXPECT_EQ(L.UpdateCount(), 0);
  L.EndUpdate();  // unbalanced: ignored
  EXPECT_EQ(L.GetUpdateCount(), 0);

  Events.Log.clear();
  L.SetText(u"1\n2\n3");
  L.SetCommaText(u"p,q");
  EXPECT_EQ(Events.Log, "<><>");

  // The update is closed when a bulk operation fails half-way.
  TStringList Sorted;
  Sorted.SetSorted(true);
  Sorted.SetDuplicates(dupError);
  EXPECT_THROW(Sorted.SetCommaText(u"a,b,a"), EListError);
  EXPECT_EQ(Sorted.GetUpdateCount(), 0);
  EXPECT_EQ(Sorted.GetCount(), 2);
}

TEST(StringList, TextSplitsOnEveryLineBreakAndJoinsWithLineBreak) {
  TStringList L;
  L.SetText(u"one\r\ntwo\nthree\rfour\r\n\r\nsix\n\rlast");
  EXPECT_EQ(Lines(L), (std::vector<String>{u"one", u"two", u"three", u"four", u"", u"six", u"", u"last"}));
  L.SetText(u"a\r\n");
  EXPECT_EQ(Lines(L), (std::vector<String>{u"a"}));
  L.SetText(u"");
  EXPECT_EQ(L.GetCount(), 0);
  EXPECT_EQ(L.GetText(), u"");

  L.SetText(u"x\ny\n\n");
  EXPECT_EQ(L.GetText(), u"x\r\ny\r\n\r\n");
  L.SetLineBreak(u"|");
  EXPECT_EQ(L.GetText(), u"x|y||");
  TStringList Copy;
  Copy.SetText(L.GetText());  // the line break is not a split point of SetText
  EXPECT_EQ(Copy.GetCount(), 1);
  L.SetLineBreak(u"\n");
  Copy.SetText(L.GetText());
  EXPECT_TRUE(Copy.Equals(&L));
}

TEST(StringList, CommaAndDelimitedTextQuoteWhatNeedsItAndReadBack) {
  TStringList L;
  for (const char16_t* S : {u"plain", u"two words", u"say \"hi\"", u"", u"a,b", u" lead", u"tab\t"}) L.Add(S);
  const String Comma = L.GetCommaText();
  EXPECT_EQ(Comma, u"plain,\"two words\",\"say \"\"hi\"\"\",,\"a,b\",\" lead\",\"tab\t\"");
  TStringList Back;
  Back.SetCommaText(Comma);
  EXPECT_EQ(Lines(Back), Lines(L));

  // Blanks separate unquoted items and are skipped around delimiters; a trailing delimiter
  // gives an empty last item.
  Back.SetCommaText(u"  a b , c,\"d e\"x ,");
  EXPECT_EQ(Lines(Back), (std::vector<String>{u"a", u"b", u"c", u"d e", u"x", u""}));
  Back.SetCommaText(u"\"unterminated, still");
  EXPECT_EQ(Lines(Back), (std::vector<String>{u"unterminated, still"}));

  // One empty line must not read back as no line; two empty lines as one.
  Back.Clear();
  Back.Add(u"");
  EXPECT_EQ(Back.GetCommaText(), u"\"\"");
  L.SetCommaText(Back.GetCommaText());
  EXPECT_EQ(Lines(L), (std::vector<String>{u""}));
  Back.Add(u"");
  EXPECT_EQ(Back.GetCommaText(), u",");
  L.SetCommaText(u",");
  EXPECT_EQ(L.GetCount(), 2);

  // Own delimiter and quote; strict mode keeps blanks as data.
  TStringList D;
  D.SetDelimiter(u';');
  D.SetQuoteChar(u'\'');
  D.SetDelimitedText(u"a b;'c;d';'it''s'");
  EXPECT_EQ(Lines(D), (std::vector<String>{u"a", u"b", u"c;d", u"it's"}));
  EXPECT_EQ(D.GetDelimitedText(), u"a;b;'c;d';'it''s'");
  D.SetStrictDelimiter(true);
  D.SetDelimitedText(u" a b ;c");
  EXPECT_EQ(Lines(D), (std::vector<String>{u" a b ", u"c"}));
  EXPECT_EQ(D.GetDelimitedText(), u" a b ;c");
  EXPECT_EQ(D.GetCommaText(), u"\" a b \",c");  // the comma form ignores the settings
}

TEST(StringList, NameValueLines) {
  TStringList L;
  L.SetText(u"Host=example\nport=80\nnovalue\nempty=\nkey=a=b");
  EXPECT_EQ(L.GetName(0), u"Host");
  EXPECT_EQ(L.GetName(2), u"");
  EXPECT_EQ(L.GetValue(u"host"), u"example");  // names compare like the list's strings
  EXPECT_EQ(L.GetValue(u"key"), u"a=b");
  EXPECT_EQ(L.GetValue(u"missing"), u"");
  EXPECT_EQ(L.GetValue(u"novalue"), u"");
  EXPECT_EQ(L.IndexOfName(u"novalue"), -1);
  EXPECT_EQ(L.IndexOfName(u"EMPTY"), 3);
  EXPECT_EQ(L.GetValueFromIndex(4), u"a=b");
  EXPECT_EQ(L.GetValueFromIndex(2), u"");
  EXPECT_EQ(L.GetValueFromIndex(-1), u"");

  L.SetValue(u"PORT", u"8080");  // replaces, writing the name as given
  EXPECT_EQ(L.Get(1), u"PORT=8080");
  L.SetValue(u"new", u"1");
  EXPECT_EQ(L.Get(L.GetCount() - 1), u"new=1");
  L.SetValue(u"host", u"");  // an empty value deletes
  EXPECT_EQ(L.IndexOfName(u"Host"), -1);
  L.SetValue(u"absent", u"");
  L.SetValueFromIndex(0, u"9");
  EXPECT_EQ(L.Get(0), u"PORT=9");
  L.SetValueFromIndex(-1, u"v");
  EXPECT_EQ(L.Get(L.GetCount() - 1), u"=v");

  L.SetNameValueSeparator(u':');
  L.Add(u"a:b");
  EXPECT_EQ(L.GetValue(u"A"), u"b");
}

TEST(StringList, AssignCopiesLinesObjectsAndSettings) {
  TCounted Obj;
  TStringList Src;
  Src.AddObject(u"b", &Obj);
  Src.Add(u"a");
  Src.Add(u"b");
  Src.SetDelimiter(u';');
  TStringList Dst;
  Dst.Add(u"old");
  Dst.Assign(&Src);
  EXPECT_EQ(Lines(Dst), (std::vector<String>{u"b", u"a", u"b"}));
  EXPECT_EQ(Dst.GetObject(0), &Obj);
  EXPECT_EQ(Dst.GetDelimiter(), u';');
  EXPECT_TRUE(Dst.Equals(&Src));
  EXPECT_EQ(Dst.IndexOfObject(&Obj), 0);

  // Into a sorted list the lines are placed and duplicates follow its policy.
  TStringList Sorted;
  Sorted.SetSorted(true);
  Src.AssignTo(&Sorted);
  EXPECT_EQ(Lines(Sorted), (std::vector<String>{u"a", u"b"}));
  EXPECT_FALSE(Sorted.Equals(&Src));
  EXPECT_FALSE(Sorted.Equals(nullptr));

  Dst.Assign(&Dst);  // self-assignment keeps the lines
  EXPECT_EQ(Dst.GetCount(), 3);
  Dst.AddStrings(&Dst);  // adding a list to itself doubles it once
  EXPECT_EQ(Dst.GetCount(), 6);

  struct TOther : TPersistent {
  } Other;
  EXPECT_EQ(MessageOf<EConvertError>([&] { Dst.Assign(&Other); }), u"Cannot assign a TPersistent to a TStringList");
  EXPECT_EQ(MessageOf<EConvertError>([&] { Dst.Assign(nullptr); }), u"Cannot assign a nil to a TStringList");
  EXPECT_EQ(Dst.GetCount(), 6);
}

TEST(StringList, SortingMovingAndExchangingKeepObjectsWithTheirLines) {
  TCounted Objs[5];
  TStringList L;
  const char16_t* Words[] = {u"delta", u"alpha", u"echo", u"charlie", u"bravo"};
  for (int i = 0; i < 5; ++i) L.AddObject(Words[i], &Objs[i]);
  L.Sort();
  EXPECT_EQ(Lines(L), (std::vector<String>{u"alpha", u"bravo", u"charlie", u"delta", u"echo"}));
  EXPECT_EQ(L.GetObject(0), &Objs[1]);
  EXPECT_EQ(L.GetObject(4), &Objs[2]);
  L.Move(4, 0);
  EXPECT_EQ(L.Get(0), u"echo");
  EXPECT_EQ(L.GetObject(0), &Objs[2]);
  L.Move(0, 4);
  L.Exchange(0, 4);
  EXPECT_EQ(L.Get(4), u"alpha");
  EXPECT_EQ(L.GetObject(4), &Objs[1]);

  L.CustomSort([](TStringList* List, std::int32_t I, std::int32_t J) {
    return static_cast<int>(List->Get(J).size()) - static_cast<int>(List->Get(I).size());
  });
  EXPECT_EQ(L.Get(0).size(), 7u);  // "charlie" first: longest
  EXPECT_EQ(L.Get(4).size(), 4u);  // "echo" last

  // A comparison that is not an order must neither crash nor lose lines.
  TStringList Big;
  for (int i = 0; i < 200; ++i) Big.Add(AsciiToString(std::to_string(i * 7919 % 200)));
  const String Before = Big.GetCommaText();
  Big.CustomSort([](TStringList*, std::int32_t, std::int32_t) { return -1; });
  Big.CustomSort([](TStringList*, std::int32_t I, std::int32_t J) { return (I * 31 + J) % 3 - 1; });
  Big.Sort();
  EXPECT_EQ(Big.GetCount(), 200);
  TStringList Reference;
  Reference.SetCommaText(Before);
  Reference.Sort();
  EXPECT_TRUE(Big.Equals(&Reference));

  // A list flagged Sorted is in order already: Sort and CustomSort leave it alone.
  TStringList S;
  S.SetSorted(true);
  S.Add(u"b");
  S.Add(u"a");
  S.CustomSort([](TStringList*, std::int32_t I, std::int32_t J) { return J - I; });
  EXPECT_EQ(Lines(S), (std::vector<String>{u"a", u"b"}));
  S.SetSorted(false);
  S.Insert(0, u"z");
  EXPECT_EQ(Lines(S), (std::vector<String>{u"z", u"a", u"b"}));
}

TEST(Strings, DefaultOperationsWorkOnTheStoragePrimitivesAlone) {
  // A minimal list: strings only, no objects, no capacity of its own.
  class TPlain : public TStrings {
   public:
    std::vector<String> Lines;
    int Deletes = 0;
    const String& Get(std::int32_t Index) const override { return Lines.at(static_cast<std::size_t>(Index)); }
    std::int32_t GetCount() const override { return static_cast<std::int32_t>(Lines.size()); }
    void Clear() override { Lines.clear(); }
    void Delete(std::int32_t Index) override {
      ++Deletes;
      Lines.erase(Lines.begin() + Index);
    }
    void InsertObject(std::int32_t Index, String S, TObject*) override {
      if (Index < 0 || Index > GetCount()) Error(SListIndexError, Index);
      Lines.insert(Lines.begin() + Index, std::move(S));
    }
  } L;
  L.SetCommaText(u"b,a,c");
  EXPECT_EQ(L.Add(u"D"), 3);
  L.Append(u"e");
  EXPECT_EQ(L.IndexOf(u"d"), 3);  // case-insensitive by default
  EXPECT_EQ(L.GetObject(0), nullptr);
  EXPECT_EQ(L.GetCapacity(), 5);
  L.Put(0, u"B");  // by Delete and InsertObject
  L.Exchange(0, 1);
  L.Move(4, 0);
  EXPECT_EQ(L.Lines, (std::vector<String>{u"e", u"a", u"B", u"c", u"D"}));
  EXPECT_EQ(MessageOf<EListError>([&] { L.Insert(9, u"x"); }), u"List index out of bounds (9)");
  L.SetValue(u"k", u"v");
  EXPECT_EQ(L.GetValue(u"K"), u"v");

  TStringList Copy;
  Copy.Assign(&L);
  EXPECT_TRUE(Copy.Equals(&L));
  L.Assign(&Copy);
  EXPECT_EQ(L.GetCount(), 6);
}
