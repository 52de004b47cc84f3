#include <gtest/gtest.h>

#include <vector>

#include "ListColl/ListColl.h"
#include "Runtime/TestSupport.h"

using namespace kz;
using namespace kz::test;

namespace {

std::vector<int> GFreed;
std::vector<int> GSeen;

class TTracked : public TCounted {
 public:
  explicit TTracked(int Tag) : TCounted(Tag) {}
  ~TTracked() override { GFreed.push_back(Tag()); }
};

int TagOf(TObject* O) { return static_cast<TCounted*>(O)->Tag(); }
bool Even(TObject* O) { return TagOf(O) % 2 == 0; }
bool Never(TObject*) {
  ADD_FAILURE() << "test called";
  return false;
}

}  // namespace

TEST(ListCollection, SearchesInTheirDirections) {
  TListCollection L;
  EXPECT_EQ(L.FirstThat(Even), nullptr);
  EXPECT_EQ(L.LastThat(Even), nullptr);
  L.ForEach([](TObject*) { ADD_FAILURE(); });
  std::vector<TObject*> Items;
  for (int T = 1; T <= 5; ++T) L.Add(Items.emplace_back(new TCounted(T)));
  EXPECT_EQ(L.FirstThat(Even), Items[1]);
  EXPECT_EQ(L.LastThat(Even), Items[3]);
  EXPECT_EQ(L.NextThat(Items[1], Even), Items[3]);
  EXPECT_EQ(L.PrevThat(Items[3], Even), Items[1]);
  EXPECT_EQ(L.NextThat(Items[3], Even), nullptr);
  EXPECT_EQ(L.NextThat(Items[4], Even), nullptr);
  EXPECT_EQ(L.PrevThat(Items[0], Even), nullptr);
  TCounted Stranger(2);
  EXPECT_EQ(L.NextThat(&Stranger, Never), nullptr);
  EXPECT_EQ(L.PrevThat(&Stranger, Never), nullptr);
  EXPECT_THROW((void)L.FirstThat(nullptr), EAccessViolation);

  GSeen.clear();
  L.ForEach([](TObject* O) { GSeen.push_back(TagOf(O)); });
  EXPECT_EQ(GSeen, (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST(ListCollection, OwnsItsObjectsAndFreesThemFromTheFirst) {
  const int Before = TCounted::Alive;
  GFreed.clear();
  {
    static TListCollection* Shrinking;
    TListCollection L;
    Shrinking = &L;
    for (int T = 1; T <= 3; ++T) L.Add(new TTracked(T));
    // The walk goes by the count at the start: an action that removes runs off the end.
    EXPECT_EQ(MessageOf<EListError>([&] {
                L.ForEach([](TObject* O) {
                  if (TagOf(O) == 1) delete static_cast<TObject*>(Shrinking->Extract(Shrinking->Last()));
                });
              }),
              u"List index out of bounds (2)");
    EXPECT_EQ(L.GetCount(), 2);
  }
  EXPECT_EQ(GFreed, (std::vector<int>{3, 1, 2}));
  EXPECT_EQ(TCounted::Alive, Before);
}
