#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "Runtime/Runtime.h"

using namespace kz;
using kz::test::MessageOf;

namespace {

std::vector<std::string> GEvents;  // "<receiver> <op> <subject>" in arrival order
int GLiveComponents = 0;

class TWatcher : public TComponent {
  KZ_CLASS(TWatcher, TComponent)
 public:
  TWatcher(TComponent* AOwner, const char16_t* AName = u"") : TComponent(AOwner) {
    ++GLiveComponents;
    SetName(AName);
  }
  ~TWatcher() override { --GLiveComponents; }
  void Notification(TComponent* AComponent, TOperation Operation) override {
    inherited::Notification(AComponent, Operation);
    GEvents.push_back(StringToUtf8(GetName()) + (Operation == opInsert ? " insert " : " remove ") +
                      StringToUtf8(AComponent->GetName()));
  }
};

}  // namespace

TEST(Components, OwnerFreesWhatItOwnsAndTellsTheRest) {
  auto* Root = new TWatcher(nullptr, u"Root");
  new TWatcher(Root, u"C");
  auto* A = new TWatcher(Root, u"A");
  auto* B = new TWatcher(Root, u"B");
  new TWatcher(A, u"A1");
  EXPECT_EQ(Root->FindComponent(u"b"), B);
  EXPECT_EQ(Root->FindComponent(u"A1"), nullptr);  // only direct components

  // Leaving an owner tells the owner and, through it, everything it owns.
  GEvents.clear();
  delete B;
  EXPECT_EQ(GEvents, (std::vector<std::string>{"A1 remove B", "A remove B", "C remove B", "Root remove B"}));

  // The owner frees the tree last first; the components still alive hear of each one.
  GEvents.clear();
  delete Root;
  EXPECT_EQ(GLiveComponents, 0);
  EXPECT_EQ(GEvents, (std::vector<std::string>{"C remove A"}));
}

TEST(Components, InsertAndRemoveMoveOwnership) {
  TWatcher Left(nullptr, u"Left"), Right(nullptr, u"Right");
  auto* X = new TWatcher(&Left, u"X");
  GEvents.clear();
  Right.InsertComponent(X);
  EXPECT_EQ(GEvents, (std::vector<std::string>{"X remove X", "Left remove X", "X insert X", "Right insert X"}));

  auto* Y = new TWatcher(&Right);
  EXPECT_EQ(MessageOf<EComponentError>([&] { Y->SetName(u"x"); }), u"A component named x already exists");
  EXPECT_EQ(MessageOf<EComponentError>([&] { Y->SetName(u"9lives"); }), u"'9lives' is not a valid component name");
  auto* Dup = new TWatcher(&Left, u"x");
  EXPECT_THROW(Right.InsertComponent(Dup), EComponentError);
  EXPECT_EQ(Dup->GetOwner(), &Left);  // a refused insertion leaves it where it was
  EXPECT_THROW(X->InsertComponent(&Right), EComponentError);  // no ownership cycles

  Y->SetComponentIndex(0);
  EXPECT_EQ(Right.GetComponent(0), Y);
  EXPECT_EQ(MessageOf<EListError>([&] { Right.GetComponent(2); }), u"List index out of bounds (2)");
  Right.RemoveComponent(Y);
  delete Y;  // ours now
}

TEST(Components, FreeNotificationsWorkBothWaysAndOnce) {
  {
    TWatcher P(nullptr, u"P"), Q(nullptr, u"Q");
    auto* T = new TWatcher(&P, u"T");
    auto* V = new TWatcher(&Q, u"V");
    auto* S = new TWatcher(&P, u"S");
    V->FreeNotification(T);
    V->FreeNotification(T);
    S->FreeNotification(T);  // a sibling that also hears through the owner
    GEvents.clear();
    delete T;
    EXPECT_EQ(GEvents, (std::vector<std::string>{"V remove T", "S remove T", "P remove T"}));

    auto* T2 = new TWatcher(&P, u"T2");
    T2->FreeNotification(V);
    S->FreeNotification(T2);
    T2->RemoveFreeNotification(S);  // dropped from either side
    P.RemoveComponent(S);
    GEvents.clear();
    delete V;  // the link works in the other direction too
    delete T2;
    EXPECT_EQ(GEvents, (std::vector<std::string>{"T2 remove V", "Q remove V", "P remove T2"}));
    delete S;
  }
  EXPECT_EQ(GLiveComponents, 0);
}

namespace {
bool GSawDestroying = false;
struct TProbe : TComponent {
  explicit TProbe(TComponent* O) : TComponent(O) {}
  ~TProbe() override { GSawDestroying = GetOwner()->HasState(csDestroying) && HasState(csDestroying); }
};
class TPaletteA : public TComponent {
  KZ_CLASS(TPaletteA, TComponent)
 public:
  using TComponent::TComponent;
};
}  // namespace

TEST(Components, StateAndPalette) {
  auto* Owner = new TComponent(nullptr);
  new TProbe(Owner);
  delete Owner;
  EXPECT_TRUE(GSawDestroying);  // the whole tree is marked before any of it goes

  RegisterComponents(u"Extra", {&TPaletteA::ClassInfo(), &TWatcher::ClassInfo()});
  RegisterComponents(u"Extra", {&TPaletteA::ClassInfo()});
  EXPECT_EQ(GetPaletteClasses(u"Extra"), (std::vector<TComponentClass>{&TPaletteA::ClassInfo(), &TWatcher::ClassInfo()}));
  UnRegisterComponent(&TPaletteA::ClassInfo());
  UnRegisterComponent(&TWatcher::ClassInfo());
  EXPECT_TRUE(GetPaletteClasses(u"Extra").empty());
  EXPECT_EQ(GetClass(u"TPaletteA"), nullptr);
}
