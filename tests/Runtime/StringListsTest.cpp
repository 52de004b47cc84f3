#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "Runtime/Runtime.h"

using namespace kz;
using kz::test::MessageOf;
using kz::test::TCounted;

namespace {

using TLines = std::vector<String>;
TLines Lines(const TStrings& L) { return L.ToStringArray(); }

}  // namespace

TEST(StringList, IndexAndSortedErrorsNameTheirCause) {
  TStringList L;
  L.SetCommaText(u"a,b");
  EXPECT_EQ(MessageOf<EListError>([&] { L.GetObject(-1); }), u"List index out of bounds (-1)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Insert(3, u"x"); }), u"List index out of bounds (3)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Exchange(0, 2); }), u"List index out of bounds (2)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.SetCapacity(1); }), u"List capacity out of bounds (1)");
  L.Insert(2, u"c");  // the end is a valid insertion point

  L.SetSorted(true);
  EXPECT_EQ(MessageOf<EListError>([&] { L.Insert(0, u"a"); }), u"Operation not allowed on sorted list");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Put(0, u"a"); }), u"Operation not allowed on sorted list");

  // A descendant that declines to grow without raising gets the capacity error, never a write
  // past the room.
  struct TStuck : TStringList {
    void SetCapacity(std::int32_t) override {}
  } Stuck;
  EXPECT_EQ(MessageOf<EListError>([&] { Stuck.Add(u"x"); }), u"List capacity out of bounds (0)");
  EXPECT_EQ(Stuck.GetCount(), 0);
}

TEST(StringList, SortedAddFindAndDuplicatesFollowCaseSensitivity) {
  TStringList L;
  L.SetSorted(true);
  EXPECT_EQ(L.Add(u"m"), 0);
  EXPECT_EQ(L.Add(u"c"), 0);
  EXPECT_EQ(L.Add(u"x"), 2);
  EXPECT_EQ(L.Add(u"M"), 1);  // dupIgnore by default, case-insensitive: the existing index
  L.SetDuplicates(dupError);
  EXPECT_EQ(MessageOf<EListError>([&] { L.Add(u"x"); }), u"String list does not allow duplicates");
  EXPECT_EQ(L.GetCount(), 3);

  // dupAccept: Find answers the first of the equal lines, whichever was found first.
  L.SetDuplicates(dupAccept);
  for (const char16_t* S : {u"m", u"M", u"m"}) L.Add(S);
  std::int32_t Index = -1;
  EXPECT_TRUE(L.Find(u"m", Index));
  EXPECT_EQ(Index, 1);
  EXPECT_FALSE(L.Find(u"n", Index));
  EXPECT_EQ(Index, 5);  // the insertion point before "x"

  // Under C.UTF-8 the collation is code point order: upper case before lower case.
  TStringList C;
  C.SetCommaText(u"b,B,a,C");
  EXPECT_EQ(C.IndexOf(u"c"), 3);  // unsorted scan, case-insensitive by default
  C.SetDuplicates(dupAccept);
  C.SetSorted(true);
  EXPECT_EQ(C.Get(3), u"C");
  C.SetCaseSensitive(true);  // re-sorts
  EXPECT_EQ(Lines(C), (TLines{u"B", u"C", u"a", u"b"}));
  EXPECT_EQ(C.IndexOf(u"c"), -1);
}

TEST(StringList, OwnedObjectsAreFreedExactlyWhenTheyLeave) {
  TCounted::Alive = 0;
  {
    TStringList L(true);
    for (int i = 0; i < 5; ++i) L.AddObject(String(1, static_cast<Char>(u'e' - i)), new TCounted(i));
    L.Delete(0);
    L.PutObject(0, new TCounted(10));  // the replaced one is freed
    L.PutObject(0, L.GetObject(0));    // putting the same object back frees nothing
    L.Move(0, 3);  // moving and sorting keep every object
    L.Sort();
    EXPECT_EQ(TCounted::Alive, 4);
    L.Clear();
    EXPECT_EQ(TCounted::Alive, 0);
    L.AddObject(u"o", new TCounted);
  }
  EXPECT_EQ(TCounted::Alive, 0);  // destruction frees the rest

  TCounted Kept;
  {
    TStringList NotOwning;
    NotOwning.AddObject(u"k", &Kept);
    NotOwning.AddObject(u"k", &Kept);
    NotOwning.Delete(0);
  }
  EXPECT_EQ(TCounted::Alive, 1);
}

TEST(StringList, ChangeEventsFireAroundChangesAndOncePerUpdate) {
  TStringList L;
  std::string Log;
  L.SetOnChanging([&](TObject*) { Log += '<'; });
  L.SetOnChange([&](TObject*) { Log += '>'; });
  L.Add(u"a");
  L.Put(0, u"b");
  L.Delete(0);
  EXPECT_THROW(L.Delete(0), EListError);  // a failed operation announces nothing
  L.Clear();                              // clearing an empty list changes nothing
  EXPECT_EQ(Log, "<><><>");

  Log.clear();
  L.BeginUpdate();
  L.BeginUpdate();
  L.Add(u"x");
  L.EndUpdate();
  L.Add(u"y");
  L.EndUpdate();
  L.EndUpdate();  // unbalanced: ignored
  L.SetText(u"1\n2\n3");
  EXPECT_EQ(Log, "<><>");

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
  L.SetText(u"one\r\ntwo\nthree\rfour\r\n\r\nsix\n\rlast\r\n");
  EXPECT_EQ(Lines(L), (TLines{u"one", u"two", u"three", u"four", u"", u"six", u"", u"last"}));
  L.SetText(u"");
  EXPECT_EQ(L.GetCount(), 0);
  L.SetText(u"x\ny\n\n");
  EXPECT_EQ(L.GetText(), u"x\r\ny\r\n\r\n");
  L.SetLineBreak(u"|");
  EXPECT_EQ(L.GetText(), u"x|y||");
  TStringList Copy;
  Copy.SetText(L.GetText());  // the line break is not a split point of SetText
  EXPECT_EQ(Copy.GetCount(), 1);
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
  EXPECT_EQ(Lines(Back), (TLines{u"a", u"b", u"c", u"d e", u"x", u""}));

  // One empty line must not read back as no line; two empty lines as one.
  for (const TLines& Empties : {TLines{u""}, TLines{u"", u""}}) {
    Back.Clear();
    for (const String& S : Empties) Back.Add(S);
    L.SetCommaText(Back.GetCommaText());
    EXPECT_EQ(Lines(L), Empties);
  }

  // Own delimiter and quote; strict mode keeps blanks as data.
  TStringList D;
  D.SetDelimiter(u';');
  D.SetQuoteChar(u'\'');
  D.SetDelimitedText(u"a b;'c;d';'it''s'");
  EXPECT_EQ(Lines(D), (TLines{u"a", u"b", u"c;d", u"it's"}));
  EXPECT_EQ(D.GetDelimitedText(), u"a;b;'c;d';'it''s'");
  EXPECT_EQ(D.GetCommaText(), u"a,b,c;d,it's");  // the comma form ignores the settings
  D.SetStrictDelimiter(true);
  D.SetDelimitedText(u" a b ;c");
  EXPECT_EQ(Lines(D), (TLines{u" a b ", u"c"}));
}

TEST(StringList, SortKeepsObjectsWithTheirLinesAndLeavesASortedListAlone) {
  TCounted A, B;
  TStringList L;
  L.AddObject(u"delta", &A);
  L.AddObject(u"alpha", &B);
  L.Add(u"charlie");
  L.Sort();
  EXPECT_EQ(Lines(L), (TLines{u"alpha", u"charlie", u"delta"}));
  EXPECT_EQ(L.GetObject(0), &B);
  EXPECT_EQ(L.GetObject(2), &A);
  TStringList Copy;
  Copy.Assign(&L);  // objects travel with their lines
  EXPECT_EQ(Copy.GetObject(2), &A);
  // A list flagged Sorted is in order already: CustomSort leaves it alone.
  L.SetSorted(true);
  L.CustomSort([](TStringList*, std::int32_t I, std::int32_t J) { return J - I; });
  EXPECT_EQ(L.Get(0), u"alpha");
}

TEST(Strings, DefaultOperationsWorkOnTheStoragePrimitivesAlone) {
  // A minimal list: strings only, no objects, no capacity of its own.
  class TPlain : public TStrings {
   public:
    std::vector<String> Lines;
    const String& Get(std::int32_t Index) const override { return Lines.at(static_cast<std::size_t>(Index)); }
    std::int32_t GetCount() const override { return static_cast<std::int32_t>(Lines.size()); }
    void Clear() override { Lines.clear(); }
    void Delete(std::int32_t Index) override { Lines.erase(Lines.begin() + Index); }
    void InsertObject(std::int32_t Index, String S, TObject*) override {
      Lines.insert(Lines.begin() + Index, std::move(S));
    }
  } L;
  L.SetText(u"Host=example\nkey=a=b\nnovalue");
  EXPECT_EQ(L.GetValue(u"host"), u"example");  // names compare like the list's strings
  EXPECT_EQ(L.GetValue(u"key"), u"a=b");
  EXPECT_EQ(L.IndexOfName(u"novalue"), -1);
  L.SetValue(u"HOST", u"x");      // replaces (by Put: Delete and InsertObject), naming as given
  L.SetValue(u"key", u"");        // an empty value deletes
  L.SetValueFromIndex(-1, u"v");  // adds a nameless line
  L.SetNameValueSeparator(u':');
  L.SetValue(u"new", u"1");
  L.Move(3, 0);
  L.Exchange(1, 3);
  EXPECT_EQ(L.Lines, (TLines{u"new:1", u"=v", u"novalue", u"HOST=x"}));

  L.Assign(&L);      // self-assignment keeps the lines
  L.AddStrings(&L);  // adding a list to itself doubles it once
  TStringList Copy;
  Copy.Assign(&L);
  EXPECT_TRUE(Copy.Equals(&L));
  EXPECT_EQ(Copy.GetCount(), 8);
  EXPECT_EQ(Copy.GetNameValueSeparator(), u':');
  EXPECT_EQ(MessageOf<EConvertError>([&] { Copy.Assign(nullptr); }), u"Cannot assign a nil to a TStringList");
}
