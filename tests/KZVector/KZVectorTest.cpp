#include <gtest/gtest.h>

#include "KZVector/KZVector.h"

using namespace kz;

namespace {

TIntfPtr<IVector> Vec(float X, float Y, float Z) { return TIntfPtr<IVector>(new TKZVector(X, Y, Z)); }

void ExpectXYZ(const TIntfPtr<IVector>& V, float X, float Y, float Z) {
  EXPECT_FLOAT_EQ(V->GetX(), X);
  EXPECT_FLOAT_EQ(V->GetY(), Y);
  EXPECT_FLOAT_EQ(V->GetZ(), Z);
}

struct TCountingVector {
  TKZVector* Raw = new TKZVector(4, 5, 8);
  TIntfPtr<IVector> V{Raw};
  int Changes = 0;
  TCountingVector() {
    Raw->SetOnChange([this](TObject* Sender) {
      EXPECT_EQ(Sender, Raw);
      ++Changes;
    });
  }
};

}  // namespace

TEST(KZVectorTest, ArithmeticInPlaceWithThreeOverloads) {
  TCountingVector C;
  C.V->Divide(Vec(2, 0, 4));
  ExpectXYZ(C.V, 2, 5, 2);  // a zero divisor leaves its component alone
  C.V->Divide(0.0f);
  EXPECT_EQ(C.Changes, 1);  // dividing by a scalar 0 is not even a change
  C.Raw->Divide(TKZVector(1, 5, 0));
  ExpectXYZ(C.V, 2, 1, 2);
  C.V->Multiply(2, 3, 4);
  ExpectXYZ(C.V, 4, 3, 8);
  C.V->SetXYZ(1, 0, 0);
  C.V->CrossProduct(0, 1, 0);
  ExpectXYZ(C.V, 0, 0, 1);
  EXPECT_EQ(C.Changes, 5);
  EXPECT_THROW(C.V->Add(TIntfPtr<ILocation>()), EAccessViolation);

  EXPECT_EQ(C.V->Apply(voAdd, Vec(1, 2, 3)), C.V);
  ExpectXYZ(C.V, 1, 2, 4);
  C.V->Apply(voNormalize, nullptr);  // ignores the operand
  EXPECT_FLOAT_EQ(C.V->Length(), 1.0f);

  C.V->SetXYZ(0, 0, 0);
  const int Before = C.Changes;
  C.V->Normalize();
  ExpectXYZ(C.V, 0, 0, 0);
  C.V->SetXYZ(3, 0, 4);
  C.V->SetMagnitude(10);
  ExpectXYZ(C.V, 6, 0, 8);
  EXPECT_EQ(C.Changes, Before + 3);
}

TEST(KZVectorTest, QueriesAndTolerance) {
  TIntfPtr<IVector> V = Vec(1, 2, 3);
  EXPECT_FLOAT_EQ(V->DotProduct(4, 5, 6), 32);
  EXPECT_DOUBLE_EQ(V->DistanceSqrTo(Vec(1, 4, 7)), 20);
  EXPECT_DOUBLE_EQ(V->DistanceTo(4, 6, 3), 5);
  EXPECT_EQ(V->ToCommaString(), Format(u"%f, %f, %f", {1.0, 2.0, 3.0}));

  TKZVector One(1, 1, 1);
  EXPECT_TRUE(One.Equals(1.00005f, 0.99995f, 1));
  EXPECT_FALSE(One.Equals(1.001f, 1, 1));
  EXPECT_TRUE(One.Equals(TIntfPtr<IInterface>(Vec(1, 1, 1.00009f))));
  EXPECT_FALSE(One.Equals(TIntfPtr<IInterface>()));
  EXPECT_TRUE(Vec(1, 0, 0)->EqualsStar(Vec(5, 0, 0)));
  EXPECT_FALSE(Vec(1, 0, 0)->EqualsStar(Vec(0, 0, 0)));
  // Huge components do not overflow the length.
  EXPECT_FLOAT_EQ(Vec(3e38f, 0, 0)->Length(), 3e38f);
}

TEST(KZVectorTest, Angles) {
  EXPECT_FLOAT_EQ(Vec(0, -3, 7)->GetAngle(XYAxis), -90);
  EXPECT_FLOAT_EQ(Vec(1, 1, 0)->GetAngle(XYAxis), 45);
  EXPECT_FLOAT_EQ(Vec(-1, 0, 0)->GetAngleInRad(XYAxis), 3.14159265f);
  EXPECT_EQ(Vec(1, 1, 1)->GetAngle(static_cast<T2DAxis>(6)), 0);

  TCountingVector C;
  C.V->SetXYZ(1, 0, 2);
  C.V->SetAngle(XYAxis, 90);
  EXPECT_NEAR(C.V->GetX(), 0, 1e-5);
  EXPECT_FLOAT_EQ(C.V->GetY(), 57.29578f);
  EXPECT_FLOAT_EQ(C.V->GetZ(), 2);
  const int Changes = C.Changes;
  C.V->SetAngle(XYAxis, 90);  // already there
  EXPECT_EQ(C.Changes, Changes);
}

TEST(KZVectorTest, CopiesAndInterfaces) {
  TIntfPtr<IVector> V = Vec(1, 2, 3);
  V->SetTag(7);
  TIntfPtr<IVector> Copy = Query<IVector>(V->Clone());
  ASSERT_TRUE(Copy);
  EXPECT_NE(Copy, V);
  ExpectXYZ(Copy, 1, 2, 3);
  EXPECT_EQ(Copy->GetTag(), 0);
  Copy->Assign(TIntfPtr<IInterface>(Vec(4, 5, 6)));
  ExpectXYZ(Copy, 4, 5, 6);
}

TEST(KZVectorTest, VectorList) {
  TIntfPtr<IVectorList> L(new TKZVectorList);
  TIntfPtr<IVector> A = Vec(1, 2, 3), B = Vec(4, 5, 6);
  EXPECT_EQ(L->Add(A), 0);
  TIntfPtr<IVector> Z = L->Add();
  ExpectXYZ(Z, 0, 0, 0);
  L->Insert(1, B);
  EXPECT_EQ(L->First(), A);
  EXPECT_EQ(L->Last(), Z);
  EXPECT_EQ(L->IndexOf(B), 1);
  EXPECT_THROW((void)L->Get(3), EListError);
  EXPECT_THROW(L->Put(-1, A), EListError);

  TIntfPtr<IVectorList> C = L->Clone();
  EXPECT_EQ(C->Get(1), B);  // the vectors are shared
  EXPECT_TRUE(C->Equals(L));
  C->Put(1, Vec(4, 5, 6.00001f));
  EXPECT_TRUE(C->Equals(L));
  C->Put(1, Vec(4, 5, 7));
  EXPECT_FALSE(C->Equals(L));
  EXPECT_EQ(C->Remove(A), 0);
  C->Assign(L);
  EXPECT_TRUE(C->Equals(L));
}
