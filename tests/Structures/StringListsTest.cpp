#include <gtest/gtest.h>

#include <locale>
#include <string>
#include <vector>

#include "Runtime/TestSupport.h"
#include "Structures/Structures.h"

using namespace kz;
using kz::test::MessageOf;
using kz::test::TCounted;

namespace {

std::vector<String> Lines(const TStrings& L) { return L.ToStringArray(); }

// Appends its name to a shared log when destroyed, to see what is freed and in which order.
class TLogged : public TObject {
  KZ_CLASS(TLogged, TObject)
 public:
  TLogged(std::string& Log, std::string Name) : FLog(Log), FName(std::move(Name)) {}
  ~TLogged() override { FLog += FName + ';'; }

 private:
  std::string& FLog;
  std::string FName;
};

// Records what a list tells its owner, one word per call.
class TOwnerLog : public TInterfacedObject, public IStringListOwner {
  KZ_CLASS(TOwnerLog, TInterfacedObject)
  KZ_INTERFACES(IStringListOwner)
 public:
  std::string Log;
  void ListChanged(TStrings*) override { Log += "changed "; }
  void ListChanging(TStrings*) override { Log += "changing "; }
  void BeforePut(TStrings*, std::int32_t Index, const String& S) override {
    Log += "put" + std::to_string(Index) + '=' + StringToUtf8(S) + ' ';
  }
  void BeforePutObject(TStrings*, std::int32_t Index, TObject*) override {
    Log += "putobject" + std::to_string(Index) + ' ';
  }
  void BeforeDelete(TStrings*, std::int32_t Index) override { Log += "delete" + std::to_string(Index) + ' '; }
  void BeforeClear(TStrings*) override { Log += "clear "; }
};

// Makes the global locale C.UTF-8 for one test, where collation is by code point.
class TUtf8Locale {
 public:
  TUtf8Locale() : FOld(std::locale::global(std::locale("C.UTF-8"))) {}
  ~TUtf8Locale() { std::locale::global(FOld); }

 private:
  std::locale FOld;
};

}  // namespace

TEST(GStringList, CapacityGrowsBySmallStepsThenByAQuarter) {
  TGStringList L;
  std::vector<std::int32_t> Seen{L.GetCapacity()};
  for (int i = 0; i < 95; ++i) {
    L.Add(u"x");
    if (L.GetCapacity() != Seen.back()) Seen.push_back(L.GetCapacity());
  }
  EXPECT_EQ(Seen, (std::vector<std::int32_t>{0, 4, 8, 12, 28, 44, 60, 76, 95}));
  EXPECT_EQ(MessageOf<EListError>([&] { L.SetCapacity(94); }), u"List capacity out of bounds (94)");
}

TEST(GStringList, EachStringOpsTypeComparesItsOwnWay) {
  TUtf8Locale Utf8;
  TGStringList L;
  EXPECT_EQ(L.GetStringOpsType(), soCaseInsensitiveLocale);
  L.Add(u"abc");
  L.Add(u"\u00E9t\u00E9");  // été
  // Only the locale folds letters beyond ASCII; only the ordinal ones compare code units.
  struct TCase {
    TStringOpsType Type;
    std::int32_t Ascii, Accented;  // where "ABC" and "ÉTÉ" are found
  };
  for (const TCase& C : {TCase{soCaseInsensitiveLocale, 0, 1}, TCase{soCaseInsensitive, 0, -1},
                         TCase{soCaseSensitive, -1, -1}, TCase{soCaseSensitiveLocale, -1, -1}}) {
    L.SetStringOpsType(C.Type);
    EXPECT_EQ(L.IndexOf(u"ABC"), C.Ascii);
    EXPECT_EQ(L.IndexOf(u"\u00C9T\u00C9"), C.Accented);
  }

  // A character beyond the 16-bit range sorts after U+FF01 by code point, before it by
  // code unit; switching the type re-sorts a sorted list.
  TGStringList S;
  S.SetStringOpsType(soCaseSensitiveLocale);
  S.Add(u"\U0001F600");
  S.Add(u"\uFF01");
  S.SetSorted(true);
  EXPECT_EQ(Lines(S), (std::vector<String>{u"\uFF01", u"\U0001F600"}));
  S.SetStringOpsType(soCaseSensitive);
  EXPECT_EQ(Lines(S), (std::vector<String>{u"\U0001F600", u"\uFF01"}));
}

TEST(GStringList, SortedAddFollowsTheDuplicatesPolicy) {
  TGStringList L;
  L.SetStringOpsType(soCaseSensitive);
  L.SetSorted(true);
  for (const char16_t* S : {u"d", u"b", u"a"}) EXPECT_EQ(L.Add(S), 0);
  EXPECT_EQ(L.Add(u"c"), 2);

  TCounted First(1), Second(2);
  EXPECT_EQ(L.AddObject(u"b", &First), 1);  // dupIgnore: the existing line, nothing added
  EXPECT_EQ(L.GetCount(), 4);
  EXPECT_EQ(L.GetObject(1), nullptr);

  L.SetDuplicates(dupError);
  EXPECT_EQ(MessageOf<EListError>([&] { L.Add(u"c"); }), u"String list does not allow duplicates");
  EXPECT_EQ(L.GetCount(), 4);

  L.SetDuplicates(dupAccept);
  EXPECT_EQ(L.AddObject(u"b", &First, &Second), 1);  // before the first equal line
  EXPECT_EQ(L.AddObject(u"b", &Second), 1);
  EXPECT_EQ(Lines(L), (std::vector<String>{u"a", u"b", u"b", u"b", u"c", u"d"}));
  EXPECT_EQ(L.GetData(2), &Second);
  std::int32_t Index = -1;
  EXPECT_FALSE(L.Find(u"bb", Index));
  EXPECT_EQ(Index, 4);
  EXPECT_EQ(MessageOf<EListError>([&] { L.Insert(0, u"z"); }), u"Operation not allowed on sorted list");
}

TEST(GStringList, SortMovesWholeLinesAndTrustsASortedList) {
  TGStringList L;
  L.SetStringOpsType(soCaseSensitive);
  TCounted A(1), C(3);
  L.AddObject(u"c", &C, &A);
  L.Add(u"b");
  L.AddObject(u"a", &A, &C);
  L.Sort();
  EXPECT_EQ(Lines(L), (std::vector<String>{u"a", u"b", u"c"}));
  EXPECT_EQ(L.GetObject(0), &A);
  EXPECT_EQ(L.IndexOfData(&A), 2);
  L.SetSorted(true);
  L.Exchange(0, 2);  // allowed on a sorted list, which Sort then trusts
  L.Sort();
  EXPECT_EQ(Lines(L), (std::vector<String>{u"c", u"b", u"a"}));
}

TEST(GStringList, OwnerHearsOfChangesAndBeforeTheChecks) {
  TGStringList L;
  TIntfPtr<TOwnerLog> Owner(new TOwnerLog);
  L.SetListOwner(TIntfPtr<IStringListOwner>(Owner.get()));
  L.SetOnChanging([&](TObject*) { Owner->Log += "onchanging "; });
  L.SetOnChange([&](TObject*) { Owner->Log += "onchange "; });
  L.Add(u"a");  // insertions reach the owner only as the changing/changed pair
  EXPECT_THROW(L.Put(3, u"x"), EListError);
  EXPECT_THROW(L.PutObject(-1, nullptr), EListError);
  EXPECT_THROW(L.Delete(1), EListError);
  L.Put(0, u"b");
  L.Delete(0);
  L.Clear();  // told even when there is nothing to clear
  EXPECT_EQ(Owner->Log,
            "changing onchanging changed onchange put3=x putobject-1 delete1 put0=b changing onchanging changed onchange "
            "delete0 changing onchanging changed onchange clear ");
  Owner->Log.clear();

  // An update is silent until its end, which reports once.
  L.BeginUpdate();
  L.Add(u"a");
  L.Add(u"b");
  EXPECT_EQ(Owner->Log, "");
  L.EndUpdate();
  EXPECT_EQ(Owner->Log, "changed onchange ");

  // The dying list tells nobody: the destructor drops the owner and events first.
  Owner->Log.clear();
  {
    TGStringList Dying;
    Dying.Add(u"a");
    Dying.SetListOwner(TIntfPtr<IStringListOwner>(Owner.get()));
  }
  EXPECT_EQ(Owner->Log, "");
}

TEST(GStringList, OwnedDataIsFreedBeforeOwnedObjects) {
  std::string Log;
  {
    TGStringList L;
    L.SetFreeObjects(true);
    L.SetFreeData(true);
    L.AddObject(u"a", new TLogged(Log, "obj-a"), new TLogged(Log, "data-a"));
    L.AddObject(u"b", new TLogged(Log, "obj-b"), new TLogged(Log, "data-b"));
    auto* Both = new TLogged(Log, "both-c");
    L.AddObject(u"c", Both, Both);  // freed once
    L.Delete(1);
    L.PutObject(0, new TLogged(Log, "obj-a2"));  // a replaced object is freed
    EXPECT_EQ(Log, "data-b;obj-b;obj-a;");
    Log.clear();
    L.Clear();  // line by line from the first
    EXPECT_EQ(Log, "data-a;obj-a2;both-c;");
    Log.clear();
    L.AddObject(u"e", new TLogged(Log, "obj-e"), new TLogged(Log, "data-e"));
  }
  EXPECT_EQ(Log, "data-e;obj-e;");
}

namespace {
// Notes, when destroyed, which object its list held on line 0 at that moment.
class TWatchesLine : public TObject {
  KZ_CLASS(TWatchesLine, TObject)
 public:
  TWatchesLine(TStrings& List, TObject*& Seen) : FList(List), FSeen(Seen) {}
  ~TWatchesLine() override { FSeen = FList.GetObject(0); }

 private:
  TStrings& FList;
  TObject*& FSeen;
};

// A host list that answers its own data column and counts the walks and stores it serves.
class THostList : public TGStringList {
  KZ_CLASS(THostList, TGStringList)
 public:
  using TGStringList::AddObject;
  using TGStringList::ForEach;
  using TGStringList::InsertObject;
  TObject* GetData(std::int32_t) const override { return nullptr; }
  void PutData(std::int32_t, TObject*) override { ++Calls; }
  std::int32_t IndexOfData(const TObject*) const override { return 42; }
  std::int32_t AddObject(String, TObject*, TObject*) override { return ++Calls; }
  void InsertObject(std::int32_t, String, TObject*, TObject*) override { ++Calls; }
  void ForEach(TForEachObjectProc, TForEachFilterProc, NativeInt) override { ++Calls; }
  void ForEach(const TForEachObjectMethod&, const TForEachFilterMethod&, NativeInt) override { ++Calls; }
  int Calls = 0;
};

class THostSFCList : public TSFCList {
  KZ_CLASS(THostSFCList, TSFCList)
 public:
  void ForEach(TForEachObjectProc, TForEachFilterProc, NativeInt) override { ++Calls; }
  void ForEach(const TForEachObjectMethod&, const TForEachFilterMethod&, NativeInt) override { ++Calls; }
  int Calls = 0;
};
}  // namespace

TEST(GStringList, OwnedOldObjectIsFreedBeforeTheNewOneIsStored) {
  TGStringList L;
  L.SetFreeObjects(true);
  TObject* Seen = nullptr;
  auto* Old = new TWatchesLine(L, Seen);
  L.AddObject(u"a", Old);
  auto* New = new TCounted;
  L.PutObject(0, New);
  EXPECT_EQ(Seen, Old);
  EXPECT_EQ(L.GetObject(0), New);
}

TEST(GStringList, DataColumnAndForEachAreOverridable) {
  THostList Host;
  TGStringList& L = Host;
  L.InsertObject(0, u"x", nullptr, nullptr);
  L.PutData(0, nullptr);
  EXPECT_EQ(L.AddObject(u"y", nullptr, nullptr), 3);
  EXPECT_EQ(L.IndexOfData(nullptr), 42);
  EXPECT_EQ(L.GetData(0), nullptr);
  L.ForEach(TForEachObjectProc(nullptr), nullptr, 0);
  L.ForEach(TForEachObjectMethod(), nullptr, 0);
  EXPECT_EQ(Host.Calls, 5);
  EXPECT_EQ(L.GetCount(), 0);
}

namespace {
std::string GVisited;
void RecordLine(TStrings* Sender, std::int32_t Index, const String& S, TObject*, NativeInt Data) {
  GVisited += StringToUtf8(S) + std::to_string(Index) + ':' + std::to_string(Data) + ' ';
  if (S == u"b") Sender->Delete(Index);
}
bool NotA(TStrings*, std::int32_t, const String& S, TObject*, NativeInt) { return S != u"a"; }
}  // namespace

TEST(GStringList, ForEachWalksBackwardsSoCallbacksMayDelete) {
  TGStringList L;
  for (const char16_t* S : {u"a", u"b", u"c"}) L.Add(S);
  L.ForEach(&RecordLine, nullptr, 7);
  EXPECT_EQ(GVisited, "c2:7 b1:7 a0:7 ");
  EXPECT_EQ(Lines(L), (std::vector<String>{u"a", u"c"}));
  GVisited.clear();
  L.ForEach(&RecordLine, &NotA, 1);
  EXPECT_EQ(GVisited, "c1:1 ");

  // The method form: every line deletes itself, freeing what it owns.
  TCounted::Alive = 0;
  L.SetFreeObjects(true);
  L.AddObject(u"d", new TCounted);
  std::vector<String> Seen;
  L.ForEach(TForEachObjectMethod([&](TStrings* Sender, std::int32_t Index, const String& S, TObject*, NativeInt) {
              Seen.push_back(S);
              Sender->Delete(Index);
            }),
            nullptr, 0);
  EXPECT_EQ(Seen, (std::vector<String>{u"d", u"c", u"a"}));
  EXPECT_EQ(TCounted::Alive, 0);
  EXPECT_THROW(L.ForEach(TForEachObjectProc(nullptr), nullptr, 0), EAccessViolation);
}

TEST(GStringList, AssignTakesOverLinesAndSettings) {
  TStringList Source;
  TCounted Obj;
  Source.AddObject(u"b", &Obj);
  Source.Add(u"a");
  Source.Add(u"a");
  Source.SetDuplicates(dupError);
  Source.SetSorted(true);
  TGStringList L;
  L.Add(u"old");
  L.Assign(&Source);  // copied as they are, duplicates too, then sorted
  EXPECT_EQ(Lines(L), (std::vector<String>{u"a", u"a", u"b"}));
  EXPECT_EQ(L.GetObject(2), &Obj);
  EXPECT_TRUE(L.GetSorted());
  EXPECT_EQ(L.GetDuplicates(), dupError);

  // Another TGStringList arrives as it stands, with data, order and comparison.
  TGStringList Other;
  Other.SetStringOpsType(soCaseSensitive);
  Other.AddObject(u"b", &Obj, &Obj);
  Other.Add(u"a");
  TGStringList Copy;
  Copy.SetSorted(true);
  Copy.Assign(&Other);
  EXPECT_EQ(Lines(Copy), (std::vector<String>{u"b", u"a"}));
  EXPECT_EQ(Copy.GetData(0), &Obj);
  EXPECT_FALSE(Copy.GetSorted());
  EXPECT_EQ(Copy.GetStringOpsType(), soCaseSensitive);
}

TEST(SFCList, OwnerHearsFirstAddsReportOnceAndTheFreeListOwnsItsObjects) {
  TSFCList L;
  TIntfPtr<TOwnerLog> Owner(new TOwnerLog);
  L.SetListOwner(TIntfPtr<IStringListOwner>(Owner.get()));
  L.Add(u"a");
  L.Add(u"b");
  EXPECT_THROW(L.Delete(5), EListError);
  L.Put(0, u"z");
  L.Delete(0);
  L.Clear();
  EXPECT_EQ(Owner->Log, "changed changed delete5 put0=z changing changed delete0 changing changed clear changing changed ");

  // A sorted list copied into a sorted list is sorted once, in one update.
  TStringList Source;
  Source.SetDuplicates(dupAccept);
  Source.SetSorted(true);
  for (const char16_t* S : {u"c", u"a", u"b", u"a"}) Source.Add(S);
  L.SetSorted(true);
  Owner->Log.clear();
  L.Assign(&Source);
  EXPECT_EQ(Lines(L), (std::vector<String>{u"a", u"a", u"b", u"c"}));
  EXPECT_EQ(Owner->Log, "clear changed ");

  // The free list owns its objects: replaced, deleted and cleared ones are freed.
  TCounted::Alive = 0;
  {
    TSFCFreeList F;
    for (int i = 0; i < 4; ++i) F.AddObject(u"x", new TCounted(i));
    F.PutObject(0, new TCounted(9));
    F.Delete(1);
    EXPECT_EQ(TCounted::Alive, 3);
    F.SetListOwner(TIntfPtr<IStringListOwner>(Owner.get()));
    Owner->Log.clear();
    F.Clear();  // one deletion per line, from the last
    EXPECT_EQ(TCounted::Alive, 0);
    EXPECT_EQ(Owner->Log, "delete2 delete1 delete0 clear changed ");
    F.AddObject(u"kept", new TCounted);  // freed with the list
    TCounted Spare;
    F.SetFreeMembers(false);
    F.AddObject(u"spare", &Spare);
    F.Delete(1);
    F.SetFreeMembers(true);

    // The owned old object goes before the new one is stored, with the owner told first.
    TObject* Seen = nullptr;
    auto* Old = new TWatchesLine(F, Seen);
    F.PutObject(0, Old);
    auto* New = new TCounted;
    Owner->Log.clear();
    F.PutObject(0, New);
    EXPECT_EQ(Seen, Old);
    EXPECT_EQ(F.GetObject(0), New);
    EXPECT_EQ(Owner->Log, "putobject0 changed ");
  }
  EXPECT_EQ(TCounted::Alive, 0);

  // A host's ForEach is reached through the list it derives from.
  THostSFCList Host;
  TSFCList& H = Host;
  H.ForEach(TForEachObjectProc(nullptr), nullptr, 0);
  H.ForEach(TForEachObjectMethod(), nullptr, 0);
  EXPECT_EQ(Host.Calls, 2);
}
