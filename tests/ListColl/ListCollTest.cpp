#include <gtest/gtest.h>

#include <vector>

#include "ListColl/ListColl.h"
#include "Runtime/TestSupport.h"

using namespace kz;
using namespace kz::test;

namespace {

std::vector<int> GLog;  // tags seen by ForEach, then tags freed

class TTracked : public TCounted {
 public:
  explicit TTracked(int Tag) : TCounted(Tag) {}
  ~TTracked() override { GLog.push_back(-Tag()); }
};

int TagOf(TObject* O) { return static_cast<TCounted*>(O)->Tag(); }
bool Even(TObject* O) { return TagOf(O) % 2 == 0; }
bool Never(TObject*) {
  ADD_FAILURE() << "test called";
  return false;
}

TListCollection* GList;

}  // namespace

TEST(ListCollection, SearchesInTheirDirections) {
  TListCollection L;
  EXPECT_EQ(L.FirstThat(Even), nullptr);
  EXPECT_EQ(L.LastThat(Even), nullptr);
  std::vector<TObject*> Items;
  for (int T = 1; T <= 5; ++T) L.Add(Items.emplace_back(new TCounted(T)));
  EXPECT_EQ(L.FirstThat(Even), Items[1]);
  EXPECT_EQ(L.LastThat(Even), Items[3]);
  EXPECT_EQ(L.NextThat(Items[1], Even), Items[3]);
  EXPECT_EQ(L.PrevThat(Items[3], Even), Items[1]);
  EXPECT_EQ(L.NextThat(Items[3], Even), nullptr);
  EXPECT_EQ(L.PrevThat(Items[0], Even), nullptr);
  TCounted Stranger(2);
  EXPECT_EQ(L.NextThat(&Stranger, Never), nullptr);
  EXPECT_EQ(L.PrevThat(&Stranger, Never), nullptr);
  EXPECT_THROW((void)L.FirstThat(nullptr), EAccessViolation);
}

TEST(ListCollection, ForEachByTheCountAtTheStartAndFreeingFromTheFirst) {
  const int Before = TCounted::Alive;
  GLog.clear();
  {
    TListCollection L;
    GList = &L;
    for (int T = 1; T <= 3; ++T) L.Add(new TTracked(T));
    // The first call frees the last item: the walk then runs off the end.
    EXPECT_EQ(MessageOf<EListError>([] {
                GList->ForEach([](TObject* O) {
                  GLog.push_back(TagOf(O));
                  if (TagOf(O) == 1) delete static_cast<TObject*>(GList->Extract(GList->Last()));
                });
              }),
              u"List index out of bounds (2)");
  }
  EXPECT_EQ(GLog, (std::vector<int>{1, -3, 2, -1, -2}));
  EXPECT_EQ(TCounted::Alive, Before);
}
