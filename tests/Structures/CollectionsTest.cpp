#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Runtime/TestSupport.h"
#include "Structures/Structures.h"

using namespace kz;
using kz::test::MessageOf;

namespace {

// An item with a number for its display name; it logs the free notifications it receives.
class TNumItem : public TGCollectionItem {
  KZ_CLASS(TNumItem, TGCollectionItem)
 public:
  explicit TNumItem(TCollection* Collection) : TGCollectionItem(Collection) {}
  String GetDisplayName() override { return IntToStr(Value); }
  void Notification(TGCollectionItem* Item) override {
    if (Log) *Log += std::to_string(Value) + ' ';
    inherited::Notification(Item);
  }
  int Value = 0;
  std::string* Log = nullptr;
};

// Joins the collection with its value already set, so that a sorted one places it by value.
TNumItem* JoinNum(TCollection& C, int Value) {
  auto* Item = new TNumItem(nullptr);
  Item->Value = Value;
  Item->SetCollection(&C);
  return Item;
}

std::vector<int> Values(const TCollection& C) {
  std::vector<int> Result;
  for (std::int32_t i = 0; i < C.GetCount(); ++i) Result.push_back(static_cast<TNumItem*>(C.GetItem(i))->Value);
  return Result;
}

int Ascending(TObject*, TCollectionItem* A, TCollectionItem* B) {
  const int X = static_cast<TNumItem*>(A)->Value, Y = static_cast<TNumItem*>(B)->Value;
  return (X > Y) - (X < Y);
}

std::vector<String> Lines(const TStrings& L) { return L.ToStringArray(); }

}  // namespace

TEST(GCollectionItem, LinkedItemsHearOfEachOthersDestruction) {
  std::string Log;
  TGCollection C(&TNumItem::ClassInfo());
  TNumItem* A = JoinNum(C, 1);
  TNumItem* B = JoinNum(C, 2);
  TNumItem* D = JoinNum(C, 3);
  for (TNumItem* Item : {A, B, D}) Item->Log = &Log;
  A->FreeNotification(B);
  A->FreeNotification(D);
  A->FreeNotification(B);  // already linked
  D->FreeNotification(B);
  C.Delete(0);  // A tells the items it watches, the last linked first
  EXPECT_EQ(Log, "3 2 ");
  B->RemoveFreeNotification(D);  // both ways: nobody is told of a freed link
  delete D;
  delete B;
  EXPECT_EQ(Log, "3 2 ");
  EXPECT_THROW(JoinNum(C, 4)->FreeNotification(nullptr), EAccessViolation);
}

TEST(GCollectionItem, ADeadItemLeavesNoLinkBehind) {
  std::string Log;
  auto Pair = [&Log] {
    auto* A = new TNumItem(nullptr);
    auto* B = new TNumItem(nullptr);
    A->Value = 1, B->Value = 2, A->Log = &Log, B->Log = &Log;
    A->FreeNotification(B);
    return std::pair{A, B};
  };
  auto [A, B] = Pair();
  A->NotifyAll();  // B drops its side, A keeps its own
  EXPECT_EQ(Log, "2 ");
  delete B;
  delete A;  // nothing left of B to tell
  auto [A2, B2] = Pair();
  A2->RemoveNotification(B2);  // one way: B2 still lists A2
  delete A2;
  delete B2;
  EXPECT_EQ(Log, "2 ");
}

TEST(GCollection, FindsByDisplayNameAndExportsToStrings) {
  TGCollection C(&TNumItem::ClassInfo());
  JoinNum(C, 10);
  TNumItem* Twenty = JoinNum(C, 20);
  JoinNum(C, 20);
  EXPECT_EQ(C.IndexOf(u"20"), 1);
  TStringList L;
  L.Add(u"stale");
  L.Assign(&C);
  EXPECT_EQ(Lines(L), (std::vector<String>{u"10", u"20", u"20"}));
  EXPECT_EQ(L.GetObject(1), Twenty);
  EXPECT_THROW(C.Assign(&L), EConvertError);
}

TEST(SortedCollection, SortsByTheHandlerEitherWay) {
  TSortedCollection C(&TNumItem::ClassInfo());
  for (int V : {3, 1, 2}) JoinNum(C, V);
  C.SetSorted(true);  // no handler: nothing to sort by
  EXPECT_EQ(Values(C), (std::vector<int>{3, 1, 2}));
  EXPECT_THROW((void)C.Compare(C.GetItem(0), C.GetItem(1)), EAccessViolation);
  C.SetOnCompare(&Ascending);
  C.SetSortOrder(soDescending);  // the handler decides the direction, not SortOrder
  EXPECT_EQ(Values(C), (std::vector<int>{1, 2, 3}));
  C.SetOnCompare([](TObject* Sender, TCollectionItem* A, TCollectionItem* B) { return Ascending(Sender, B, A); });
  C.SetSortOrder(soAscending);
  EXPECT_EQ(Values(C), (std::vector<int>{3, 2, 1}));
  C.SetSorted(false);  // sorts once more, and a sort leaves Sorted on
  EXPECT_TRUE(C.GetSorted());
  C.CustomSort(&Ascending);
  EXPECT_EQ(Values(C), (std::vector<int>{1, 2, 3}));
}

TEST(SortedCollection, AddedItemsArePlacedByBinarySearch) {
  TSortedCollection C(&TNumItem::ClassInfo());
  C.SetOnCompare(&Ascending);
  C.SetSorted(true);
  for (int V : {5, 1, 9, 3, 7, 0, 5, 4}) JoinNum(C, V);
  EXPECT_EQ(Values(C), (std::vector<int>{0, 1, 3, 4, 5, 5, 7, 9}));
  // SortOrder decides only whether the item already fits where it was added; the search
  // itself always orders ascending.
  C.SetSortOrder(soDescending);
  JoinNum(C, 2);  // last, and not above its neighbour 9: it fits a descending order
  JoinNum(C, 8);  // above its neighbour 2: placed by the ascending search
  EXPECT_EQ(Values(C), (std::vector<int>{0, 1, 3, 4, 5, 5, 7, 8, 9, 2}));

  // A comparison that answers other than -1, 0 and 1 cannot place anything.
  TSortedCollection Bad(&TNumItem::ClassInfo());
  Bad.SetOnCompare([](TObject*, TCollectionItem* A, TCollectionItem* B) { return 5 * Ascending(nullptr, A, B); });
  for (int V : {4, 6, 2}) JoinNum(Bad, V);
  Bad.SetSorted(true);
  EXPECT_EQ(Values(Bad), (std::vector<int>{2, 4, 6}));  // quicksort copes
  EXPECT_EQ(MessageOf<EListError>([&] { JoinNum(Bad, 5); }),
            u"Item comparison answered 5; a sorted collection needs exactly -1, 0 or 1");
  EXPECT_EQ(Values(Bad), (std::vector<int>{2, 4, 6, 5}));  // kept, last
  EXPECT_THROW(Bad.Add(), EListError);  // an Add that fails leaves nothing behind
  EXPECT_EQ(Bad.GetCount(), 4);
}

TEST(BoundedLists, MaxCountRefusesTheNextLineAndRecentFilesMoveKnownEntries) {
  TMaxCountStrings L;
  L.SetMaxCount(2);
  L.SetMaxCount(-7);  // ignored
  L.Add(u"a");
  L.Add(u"b");
  EXPECT_EQ(MessageOf<EStringListError>([&] { L.Add(u"c"); }), u"String List Max Count exceeded: 2");
  EXPECT_EQ(L.GetCount(), 2);

  TRecentFiles R;
  for (const char16_t* S : {u"a", u"b", u"c", u"d", u"e"}) EXPECT_EQ(R.Push(S), 0);
  EXPECT_EQ(Lines(R), (std::vector<String>{u"e", u"d", u"c", u"b"}));
  EXPECT_EQ(R.Push(u"D"), 0);  // case-insensitive: moved, keeping its text
  EXPECT_EQ(Lines(R), (std::vector<String>{u"d", u"e", u"c", u"b"}));
  R.DeleteOldest();
  EXPECT_EQ(Lines(R), (std::vector<String>{u"d", u"e", u"c"}));

  TRecentFiles Last;
  Last.SetNewestLast(true);
  for (const char16_t* S : {u"a", u"b", u"c", u"d", u"e"}) Last.Push(S);
  EXPECT_EQ(Last.Push(u"b"), 3);
  EXPECT_EQ(Lines(Last), (std::vector<String>{u"c", u"d", u"e", u"b"}));
  Last.DeleteOldest();
  EXPECT_EQ(Lines(Last), (std::vector<String>{u"d", u"e", u"b"}));
}
