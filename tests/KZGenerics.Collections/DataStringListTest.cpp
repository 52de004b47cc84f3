// The string list with typed data per line: sorted find, sorting with objects and data kept
// together, ownership, growth and insertion errors.
#include <gtest/gtest.h>

#include <memory>

#include "KZGenerics.Collections/KZGenerics.Collections.h"

using namespace kz;
template <class T>
using TDataList = KZGenericsCollections::TStringList<T>;

namespace {

int Freed = 0;

class TCounted : public TObject {
  KZ_CLASS(TCounted, TObject)
 public:
  ~TCounted() override { ++Freed; }
};

}  // namespace

TEST(KZDataStringList, FindSortAndData) {
  TDataList<int> L;
  for (int i = 0; i < 5; ++i) L.AddObject(String(1, static_cast<Char>(u'e' - i)), nullptr, i);  // e d c b a
  EXPECT_EQ(L.GetCapacity(), 8);  // 1, 2, 4, 8: doubling once not empty
  L.SetSorted(true);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(L.Get(i), String(1, static_cast<Char>(u'a' + i)));
    EXPECT_EQ(L.GetData(i), 4 - i);  // the data moved with its line
  }
  std::int32_t Index = -1;
  EXPECT_TRUE(L.Find(u"C", Index));  // case-insensitive by default
  EXPECT_EQ(Index, 2);
  EXPECT_FALSE(L.Find(u"bb", Index));
  EXPECT_EQ(Index, 2);
  L.SetDuplicates(dupAccept);
  L.AddObject(u"c", nullptr, 40);
  L.AddObject(u"C", nullptr, 41);
  EXPECT_TRUE(L.Find(u"c", Index));
  EXPECT_EQ(Index, 2);  // the first of the equal lines
  L.SetDuplicates(dupError);
  EXPECT_THROW(L.Add(u"a"), EListError);
  L.SetCaseSensitive(true);  // re-sorted: under the C locale upper case comes first
  EXPECT_EQ(L.Get(0), u"C");
  EXPECT_EQ(L.GetData(0), 41);
  EXPECT_THROW(L.Insert(0, u"x"), EListError);  // sorted
  L.SetSorted(false);
  EXPECT_THROW(L.InsertObject(L.GetCount() + 1, u"x", nullptr), EArgumentOutOfRangeException);
  EXPECT_THROW((void)L.Get(-1), EListError);
  L.Sort([](TDataList<int>* List, std::int32_t A, std::int32_t B) { return List->GetData(B) - List->GetData(A); });
  EXPECT_EQ(L.GetData(0), 41);
  EXPECT_EQ(L.GetData(L.GetCount() - 1), 0);
  L.Move(0, 2);
  EXPECT_EQ(L.GetData(2), 41);
  TDataList<int> Copy;
  Copy.Assign(&L);
  EXPECT_EQ(Copy.GetCount(), L.GetCount());
  EXPECT_EQ(Copy.GetData(2), 41);
  EXPECT_EQ(Copy.IndexOf(u"e"), L.IndexOf(u"e"));
}

TEST(KZDataStringList, OwnershipFreesObjectsOnly) {
  Freed = 0;
  {
    TDataList<std::shared_ptr<int>> L(true);
    auto Data = std::make_shared<int>(1);
    L.AddObject(u"a", new TCounted, Data);
    L.AddObject(u"b", new TCounted, Data);
    L.AddObject(u"c", new TCounted, Data);
    EXPECT_EQ(Data.use_count(), 4);
    L.Exchange(0, 2);
    L.Move(0, 1);
    EXPECT_EQ(Freed, 0);  // moving never frees
    L.Delete(0);
    EXPECT_EQ(Freed, 1);
    EXPECT_EQ(Data.use_count(), 3);  // data is released, not freed
    L.PutObject(0, new TCounted);
    EXPECT_EQ(Freed, 2);
    L.Clear();
    EXPECT_EQ(Freed, 4);
    L.AddObject(u"d", new TCounted);
  }
  EXPECT_EQ(Freed, 5);
  TCounted Kept;
  {
    TDataList<int> NotOwning;
    NotOwning.AddObject(u"k", &Kept);
  }
  EXPECT_EQ(Freed, 5);
}
