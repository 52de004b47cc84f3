#include <gtest/gtest.h>

#include "KZCommon/KZCommon.h"

using namespace kz;

namespace {

// A minimal location: enough to check that the contracts can be implemented together and
// are answered along their parent chain.
class TPoint : public TInterfacedObject, public ILocation {
  KZ_CLASS(TPoint, TInterfacedObject)
  KZ_INTERFACES(ILocation)
 public:
  void Assign(const TIntfPtr<IInterface>& Source) override {
    if (auto L = Query<ILocation>(Source)) SetXYZ(L->GetX(), L->GetY(), L->GetZ());
  }
  void Assign(TPersistent*) override {}
  void AssignTo(TPersistent*) override {}
  TIntfPtr<ICloneable> Clone() override {
    TIntfPtr<ICloneable> R(new TPoint);
    R->Assign(TIntfPtr<IInterface>(static_cast<ILocation*>(this)));
    return R;
  }
  bool Equals(const TIntfPtr<IInterface>& Value) override {
    auto L = Query<ILocation>(Value);
    return L && L->GetX() == FX && L->GetY() == FY && L->GetZ() == FZ;
  }
  std::int32_t GetTag() override { return FTag; }
  void SetTag(std::int32_t Value) override { FTag = Value; }
  float GetX() override { return FX; }
  void SetX(float Value) override { SetXYZ(Value, FY, FZ); }
  float GetY() override { return FY; }
  void SetY(float Value) override { SetXYZ(FX, Value, FZ); }
  float GetZ() override { return FZ; }
  void SetZ(float Value) override { SetXYZ(FX, FY, Value); }
  void SetXYZ(float X, float Y, float Z) override {
    FX = X, FY = Y, FZ = Z;
    if (OnChange) OnChange(TIntfPtr<IInterface>(static_cast<ILocation*>(this)));
  }
  TINotifyEvent OnChange;

 private:
  float FX = 0, FY = 0, FZ = 0;
  std::int32_t FTag = 0;
};

}  // namespace

TEST(CommonInterfaces, LocationAnswersAlongItsParentChain) {
  auto* Raw = new TPoint;
  TIntfPtr<ILocation> P(Raw);
  int Changes = 0;
  Raw->OnChange = [&](const TIntfPtr<IInterface>& Sender) {
    EXPECT_TRUE(Sender == P);
    ++Changes;
  };
  P->SetXYZ(1, 2, 3);
  EXPECT_EQ(Changes, 1);

  EXPECT_TRUE(Query<ICloneable>(P));
  EXPECT_TRUE(Query<IInterface>(P));
  EXPECT_FALSE(Query<IVector>(P));
  EXPECT_FALSE(Supports(P, IBaseStreamToken::IID));

  TIntfPtr<ILocation> Copy = Query<ILocation>(P->Clone());
  ASSERT_TRUE(Copy);
  EXPECT_FALSE(Copy == P);
  EXPECT_TRUE(P->Equals(TIntfPtr<IInterface>(Copy)));
  Copy->SetZ(4);
  EXPECT_FALSE(P->Equals(TIntfPtr<IInterface>(Copy)));
  EXPECT_EQ(Copy->GetX(), 1.0f);

  // The identifiers are the published ones and distinct from each other.
  EXPECT_TRUE(IVector::IID == TGUID::Parse("{980EFE02-AC52-4B90-B698-504F58C1F02C}"));
  EXPECT_FALSE(IStreamable::IID == IDTStreamable::IID);
  EXPECT_TRUE((std::is_same_v<IVector::TParentIntf, ILocation>));
  EXPECT_TRUE((std::is_same_v<IBaseStreamTokenList::TParentIntf, ICloneable>));
}
