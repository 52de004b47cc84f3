#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KZCommon/KZCommon.h"

using namespace kz;

namespace {

class IProbe : public virtual IInterface {
  KZ_INTERFACE(IProbe, IInterface, "{6A0B7C10-1111-4D2E-9F00-00000000A001}")
 public:
  virtual int Answer() = 0;
};

class TProbeOwner : public TInterfacedObject, public IProbe {
  KZ_CLASS(TProbeOwner, TInterfacedObject)
  KZ_INTERFACES(IProbe)
 public:
  int Answer() override { return 42; }
};

bool GCounterGone = false;
class TWatchedCount : public TRefCount {
  KZ_CLASS(TWatchedCount, TRefCount)
 public:
  using TRefCount::TRefCount;
  ~TWatchedCount() override { GCounterGone = true; }
};

}  // namespace

TEST(RefCount, QueriesGoToTheOwner) {
  auto* Lone = new TRefCount(nullptr);
  void* Obj = &Obj;
  EXPECT_EQ(Lone->QueryInterface(IInterface::IID, &Obj), static_cast<std::int32_t>(0x80004002u));
  EXPECT_EQ(Obj, nullptr);
  delete Lone;

  TIntfPtr<IProbe> Held(new TProbeOwner);
  auto* Owner = dynamic_cast<TProbeOwner*>(Held.get());
  auto* Counter = new TRefCount(Owner);
  {
    TIntfPtr<IProbe> Got = Query<IProbe>(static_cast<IInterface*>(Counter));
    ASSERT_TRUE(Got);
    EXPECT_EQ(Got->Answer(), 42);
    // The reference handed out is counted by the owner, who will see it released.
    EXPECT_EQ(Owner->RefCount(), 2);
    EXPECT_EQ(Counter->GetRefCount(), 0);
  }
  EXPECT_EQ(Owner->RefCount(), 1);
  EXPECT_EQ(Counter->QueryInterface(TGUID::Parse("{00000000-0000-0000-0000-000000000001}"), &Obj), E_NOINTERFACE);
  delete Counter;
}

TEST(RefCount, DestroysItselfAtZeroButNeverTheOwner) {
  TPersistent Owner;
  for (bool FreeOnRelease : {true, false}) {
    GCounterGone = false;
    auto* Counter = new TWatchedCount(&Owner);
    Counter->SetFreeOnRelease(FreeOnRelease);
    EXPECT_EQ(Counter->_AddRef(), 1);
    EXPECT_EQ(Counter->_AddRef(), 2);
    EXPECT_EQ(Counter->_Release(), 1);
    EXPECT_FALSE(GCounterGone);
    EXPECT_EQ(Counter->_Release(), 0);
    EXPECT_TRUE(GCounterGone);
  }
  EXPECT_EQ(Owner.ClassName(), u"TPersistent");  // still alive (the sanitizer build checks)
}

namespace {
std::vector<std::string> GHeard;
// Hears what the nexus passes on to its components through the base notification.
class TListener : public TComponent {
  KZ_CLASS(TListener, TComponent)
 public:
  using TComponent::TComponent;
  void Notification(TComponent* AComponent, TOperation Operation) override {
    inherited::Notification(AComponent, Operation);
    GHeard.push_back("base");
  }
};
}  // namespace

TEST(RefCount, NexusPassesNotificationsOnAfterTheBase) {
  TComponentNexus Nexus(nullptr);
  new TListener(&Nexus);
  auto* Watched = new TComponent(nullptr);
  std::vector<std::pair<TComponent*, TOperation>> Events;
  Nexus.SetOnNotification([&](TComponent* C, TOperation Op) {
    Events.emplace_back(C, Op);
    GHeard.push_back("event");
  });
  GHeard.clear();
  auto* Child = new TComponent(&Nexus);
  EXPECT_EQ(GHeard, (std::vector<std::string>{"base", "event"}));
  Nexus.FreeNotification(Watched);
  delete Watched;
  EXPECT_EQ(Events, (std::vector<std::pair<TComponent*, TOperation>>{{Child, opInsert}, {Watched, opRemove}}));
}
