#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Runtime/Runtime.h"

using namespace kz;

namespace {

std::vector<std::string> GEvents;  // "<receiver> <op> <subject>" in arrival order
int GLiveComponents = 0;

std::string NameOf(const TComponent* C) { return StringToUtf8(C->GetName()); }

class TWatcher : public TComponent {
  KZ_CLASS(TWatcher, TComponent)
 public:
  explicit TWatcher(TComponent* AOwner) : TComponent(AOwner) { ++GLiveComponents; }
  TWatcher(TComponent* AOwner, const char16_t* AName) : TWatcher(AOwner) { SetName(AName); }
  ~TWatcher() override { --GLiveComponents; }
  void Notification(TComponent* AComponent, TOperation Operation) override {
    inherited::Notification(AComponent, Operation);
    GEvents.push_back(NameOf(this) + (Operation == opInsert ? " insert " : " remove ") + NameOf(AComponent));
    if (Operation == opRemove && AComponent == Watched) Watched = nullptr;
  }
  void Loaded() override {
    inherited::Loaded();
    LoadedCalls++;
  }
  TComponent* Watched = nullptr;
  int LoadedCalls = 0;
};

}  // namespace

TEST(Components, OwnerFreesWhatItOwnsAndTellsTheRest) {
  GEvents.clear();
  auto* Root = new TWatcher(nullptr, u"Root");
  new TWatcher(Root, u"C");
  auto* A = new TWatcher(Root, u"A");
  auto* B = new TWatcher(Root, u"B");
  auto* A1 = new TWatcher(A, u"A1");
  EXPECT_EQ(GLiveComponents, 5);
  EXPECT_EQ(Root->GetComponentCount(), 3);
  EXPECT_EQ(A->GetOwner(), Root);
  EXPECT_EQ(B->GetComponentIndex(), 2);
  EXPECT_EQ(Root->FindComponent(u"b"), B);
  EXPECT_EQ(Root->FindComponent(u"A1"), nullptr);  // only direct components
  EXPECT_EQ(A->FindComponent(u"A1"), A1);

  // A component that leaves its owner tells the owner and everything the owner owns.
  GEvents.clear();
  delete B;
  EXPECT_EQ(GEvents, (std::vector<std::string>{"A1 remove B", "A remove B", "C remove B", "Root remove B"}));
  EXPECT_EQ(Root->GetComponentCount(), 2);

  // The owner's destruction frees the whole tree, last first; the components still alive
  // hear of each one that goes.
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
  EXPECT_EQ(X->GetOwner(), &Right);
  EXPECT_EQ(Left.GetComponentCount(), 0);
  EXPECT_EQ(GEvents, (std::vector<std::string>{"X remove X", "Left remove X", "X insert X", "Right insert X"}));

  // Names are unique per owner (case-insensitive) and must be identifiers.
  auto* Y = new TWatcher(&Right);
  EXPECT_THROW(Y->SetName(u"x"), EComponentError);
  try {
    Y->SetName(u"9lives");
    FAIL();
  } catch (const EComponentError& E) {
    EXPECT_EQ(E.Message(), u"'9lives' is not a valid component name");
  }
  Y->SetName(u"Y_2");
  auto* Dup = new TWatcher(&Left, u"Y_2");
  EXPECT_THROW(Right.InsertComponent(Dup), EComponentError);
  EXPECT_EQ(Dup->GetOwner(), &Left);  // a refused insertion leaves it where it was
  EXPECT_THROW(X->InsertComponent(&Right), EComponentError);  // no ownership cycles
  EXPECT_THROW(X->InsertComponent(X), EComponentError);

  Right.RemoveComponent(Y);
  EXPECT_EQ(Y->GetOwner(), nullptr);
  delete Y;  // ours now
  Y = new TWatcher(&Right, u"Y");
  Y->SetComponentIndex(0);
  EXPECT_EQ(Right.GetComponent(0), Y);
  EXPECT_THROW(Right.GetComponent(2), EListError);
  EXPECT_THROW(Y->SetComponentIndex(2), EListError);

  // Metaclass creation with an owner: the owner keeps it.
  TComponent* Made = TWatcher::ClassInfo().Create(&Right).release();
  EXPECT_EQ(Made->GetOwner(), &Right);
  EXPECT_EQ(Right.GetComponentCount(), 3);
}

TEST(Components, FreeNotificationsWorkBothWays) {
  {
    TWatcher P(nullptr, u"P"), Q(nullptr, u"Q");
    auto* Target = new TWatcher(&P, u"Target");
    auto* Viewer = new TWatcher(&Q, u"Viewer");
    Viewer->Watched = Target;
    Viewer->FreeNotification(Target);
    Viewer->FreeNotification(Target);  // once is enough
    GEvents.clear();
    delete Target;
    EXPECT_EQ(Viewer->Watched, nullptr);
    EXPECT_EQ(GEvents.front(), "Viewer remove Target");
    EXPECT_EQ(std::count(GEvents.begin(), GEvents.end(), "Viewer remove Target"), 1);

    // The other direction: the watched side hears of the watcher's end too.
    auto* T2 = new TWatcher(&P, u"T2");
    Viewer->FreeNotification(T2);
    T2->Watched = Viewer;
    delete Viewer;
    EXPECT_EQ(T2->Watched, nullptr);

    // A removed link is silent.
    auto* V2 = new TWatcher(&Q, u"V2");
    V2->FreeNotification(T2);
    V2->RemoveFreeNotification(T2);
    GEvents.clear();
    delete T2;
    EXPECT_TRUE(GEvents.empty() || GEvents.front() != "V2 remove T2");
    EXPECT_EQ(std::count(GEvents.begin(), GEvents.end(), "V2 remove T2"), 0);

    // Linked siblings hear of a removal once, not once per path.
    auto* S1 = new TWatcher(&P, u"S1");
    auto* S2 = new TWatcher(&P, u"S2");
    S1->FreeNotification(S2);
    GEvents.clear();
    delete S2;
    EXPECT_EQ(std::count(GEvents.begin(), GEvents.end(), "S1 remove S2"), 1);
    EXPECT_THROW(S1->FreeNotification(nullptr), EAccessViolation);
  }
  EXPECT_EQ(GLiveComponents, 0);
}

namespace {
bool GSawOwnerDestroying = false;
struct TProbe : TComponent {
  explicit TProbe(TComponent* O) : TComponent(O) {}
  ~TProbe() override { GSawOwnerDestroying = GetOwner() && GetOwner()->HasState(csDestroying) && HasState(csDestroying); }
};
}  // namespace

TEST(Components, StateAndLoading) {
  TWatcher C(nullptr, u"C");
  EXPECT_EQ(C.GetComponentState(), 0u);
  C.Loading();
  EXPECT_TRUE(C.HasState(csLoading));
  C.Loaded();
  EXPECT_FALSE(C.HasState(csLoading));
  EXPECT_EQ(C.LoadedCalls, 1);

  // Children are marked destroying before any of them goes.
  auto* Owner = new TComponent(nullptr);
  new TProbe(Owner);
  delete Owner;
  EXPECT_TRUE(GSawOwnerDestroying);
  C.SetTag(-5);
  EXPECT_EQ(C.GetTag(), -5);
}

namespace {
class TPaletteA : public TComponent {
  KZ_CLASS(TPaletteA, TComponent)
 public:
  using TComponent::TComponent;
};
class TPaletteB : public TComponent {
  KZ_CLASS(TPaletteB, TComponent)
 public:
  using TComponent::TComponent;
};
}  // namespace

TEST(Components, PaletteGroupsClassesByPage) {
  RegisterComponents(u"Extra", {&TPaletteA::ClassInfo(), &TPaletteB::ClassInfo()});
  RegisterComponents(u"Extra", {&TPaletteA::ClassInfo()});
  EXPECT_EQ(GetPaletteClasses(u"Extra"),
            (std::vector<TComponentClass>{&TPaletteA::ClassInfo(), &TPaletteB::ClassInfo()}));
  EXPECT_TRUE(GetPaletteClasses(u"None").empty());
  EXPECT_EQ(&FindClass(u"TPaletteB"), &TPaletteB::ClassInfo());
  const auto Pages = GetPalettePages();
  EXPECT_NE(std::find(Pages.begin(), Pages.end(), u"Extra"), Pages.end());

  // The class registry's name check happens before the page changes.
  EXPECT_THROW(RegisterComponents(u"Extra", {nullptr}), EAccessViolation);

  UnRegisterComponent(&TPaletteA::ClassInfo());
  UnRegisterComponent(&TPaletteB::ClassInfo());
  EXPECT_TRUE(GetPaletteClasses(u"Extra").empty());
  EXPECT_EQ(GetClass(u"TPaletteA"), nullptr);
}
