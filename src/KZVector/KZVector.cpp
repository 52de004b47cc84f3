#include "KZVector/KZVector.h"

#include <cmath>
#include <numbers>

#include "Runtime/Format.h"
#include "Runtime/Single.h"

namespace kz {

using namespace Runtime;
using namespace KZVector;

namespace {

constexpr long double RadToDeg = 180.0L / std::numbers::pi_v<long double>;
constexpr long double DegToRad = std::numbers::pi_v<long double> / 180.0L;

bool Within(float Mine, float Other) {
  const long double O = Other;
  return O - VectorTolerance <= Mine && Mine <= O + VectorTolerance;
}

}  // namespace

void TKZVector::Change() {
  if (FOnChange) FOnChange(this);
}

void TKZVector::SetX(float Value) {
  FX = Value;
  Change();
}

void TKZVector::SetY(float Value) {
  FY = Value;
  Change();
}

void TKZVector::SetZ(float Value) {
  FZ = Value;
  Change();
}

void TKZVector::SetXYZ(float X, float Y, float Z) {
  FX = X;
  FY = Y;
  FZ = Z;
  Change();
}

void TKZVector::Add(const TIntfPtr<ILocation>& V) { Add(V->GetX(), V->GetY(), V->GetZ()); }
void TKZVector::Add(float X, float Y, float Z) { SetXYZ(FX + X, FY + Y, FZ + Z); }
void TKZVector::Subtract(const TIntfPtr<ILocation>& V) { Subtract(V->GetX(), V->GetY(), V->GetZ()); }
void TKZVector::Subtract(float X, float Y, float Z) { SetXYZ(FX - X, FY - Y, FZ - Z); }
void TKZVector::Multiply(const TIntfPtr<ILocation>& V) { Multiply(V->GetX(), V->GetY(), V->GetZ()); }
void TKZVector::Multiply(float X, float Y, float Z) { SetXYZ(FX * X, FY * Y, FZ * Z); }
void TKZVector::Divide(const TIntfPtr<ILocation>& V) { Divide(V->GetX(), V->GetY(), V->GetZ()); }

void TKZVector::Divide(float X, float Y, float Z) {
  SetXYZ(X != 0 ? FX / X : FX, Y != 0 ? FY / Y : FY, Z != 0 ? FZ / Z : FZ);
}

void TKZVector::Divide(float F) {
  if (F != 0) SetXYZ(FX / F, FY / F, FZ / F);
}

void TKZVector::CrossProduct(const TIntfPtr<ILocation>& V) { CrossProduct(V->GetX(), V->GetY(), V->GetZ()); }

void TKZVector::CrossProduct(float X, float Y, float Z) {
  SetXYZ(FY * Z - FZ * Y, FZ * X - FX * Z, FX * Y - FY * X);
}

float TKZVector::Length() {
  return ToSingle(std::sqrt(static_cast<long double>(FX) * FX + static_cast<long double>(FY) * FY +
                            static_cast<long double>(FZ) * FZ));
}

void TKZVector::Normalize() {
  const float L = Length();
  const long double Factor = L > 0 ? 1.0L / L : 0.0L;
  SetXYZ(ToSingle(FX * Factor), ToSingle(FY * Factor), ToSingle(FZ * Factor));
}

void TKZVector::SetMagnitude(float Value) {
  const float M = GetMagnitude();
  const long double Factor = M != 0 ? static_cast<long double>(Value) / M : Value;
  SetXYZ(ToSingle(FX * Factor), ToSingle(FY * Factor), ToSingle(FZ * Factor));
}

TIntfPtr<IVector> TKZVector::Apply(TVectorOperation Operation, const TIntfPtr<ILocation>& V) {
  if (Operation == voNormalize) {
    Normalize();
    return this;
  }
  if (Operation > voNormalize) return this;
  return Apply(Operation, V->GetX(), V->GetY(), V->GetZ());
}

TIntfPtr<IVector> TKZVector::Apply(TVectorOperation Operation, float X, float Y, float Z) {
  switch (Operation) {
    case voAdd: Add(X, Y, Z); break;
    case voCrossProduct: CrossProduct(X, Y, Z); break;
    case voDivide: Divide(X, Y, Z); break;
    case voMultiply: Multiply(X, Y, Z); break;
    case voSubtract: Subtract(X, Y, Z); break;
    case voNormalize: Normalize(); break;
  }
  return this;
}

float TKZVector::DotProduct(const TIntfPtr<ILocation>& V) { return DotProduct(V->GetX(), V->GetY(), V->GetZ()); }

float TKZVector::DotProduct(float X, float Y, float Z) {
  return ToSingle(static_cast<long double>(FX) * X + static_cast<long double>(FY) * Y +
                  static_cast<long double>(FZ) * Z);
}

double TKZVector::DistanceTo(const TIntfPtr<ILocation>& V) { return DistanceTo(V->GetX(), V->GetY(), V->GetZ()); }
double TKZVector::DistanceTo(float X, float Y, float Z) { return std::sqrt(DistanceSqrTo(X, Y, Z)); }

double TKZVector::DistanceSqrTo(const TIntfPtr<ILocation>& V) {
  return DistanceSqrTo(V->GetX(), V->GetY(), V->GetZ());
}

double TKZVector::DistanceSqrTo(float X, float Y, float Z) {
  const double DX = static_cast<double>(FX) - X, DY = static_cast<double>(FY) - Y,
               DZ = static_cast<double>(FZ) - Z;
  return DX * DX + DY * DY + DZ * DZ;
}

bool TKZVector::Equals(float X, float Y, float Z) { return Within(FX, X) && Within(FY, Y) && Within(FZ, Z); }

bool TKZVector::Equals(const TIntfPtr<IInterface>& Value) {
  const TIntfPtr<ILocation> L = Query<ILocation>(Value);
  return L && Equals(L->GetX(), L->GetY(), L->GetZ());
}

bool TKZVector::EqualsStar(const TIntfPtr<ILocation>& V) { return EqualsStar(V->GetX(), V->GetY(), V->GetZ()); }

bool TKZVector::EqualsStar(float X, float Y, float Z) {
  // Plain objects: the copies are never handed out as interfaces.
  TKZVector Mine(FX, FY, FZ), Other(X, Y, Z);
  Mine.Normalize();
  Other.Normalize();
  return Mine.Equals(Other);
}

bool TKZVector::Plane(T2DAxis Axis, float*& H, float*& V) {
  switch (Axis) {
    case XYAxis: H = &FX, V = &FY; return true;
    case XZAxis: H = &FX, V = &FZ; return true;
    case YXAxis: H = &FY, V = &FX; return true;
    case YZAxis: H = &FY, V = &FZ; return true;
    case ZXAxis: H = &FZ, V = &FX; return true;
    case ZYAxis: H = &FZ, V = &FY; return true;
  }
  return false;
}

float TKZVector::GetAngleDeg(float A, float B) {
  if (A == 0) return B < 0 ? -90.0f : B > 0 ? 90.0f : 0.0f;
  return ToSingle(std::atan2(static_cast<long double>(B), static_cast<long double>(A)) * RadToDeg);
}

float TKZVector::GetAngle(T2DAxis Axis) {
  float *H, *V;
  return Plane(Axis, H, V) ? GetAngleDeg(*H, *V) : 0.0f;
}

float TKZVector::GetAngleInRad(T2DAxis Axis) {
  float *H, *V;
  return Plane(Axis, H, V) ? ToSingle(std::atan2(static_cast<long double>(*V), static_cast<long double>(*H))) : 0.0f;
}

void TKZVector::SetAngle(T2DAxis Axis, float Degrees) {
  if (GetAngle(Axis) != Degrees) WriteAngle(Axis, Degrees * DegToRad);
}

void TKZVector::SetAngleInRad(T2DAxis Axis, float Radians) {
  if (GetAngleInRad(Axis) != Radians) WriteAngle(Axis, Radians);
}

void TKZVector::WriteAngle(T2DAxis Axis, long double Radians) {
  float *H, *V;
  if (Plane(Axis, H, V)) {
    // The cosine and sine go through the degree conversion too: callers rely on it.
    *H = ToSingle(std::cos(Radians) * RadToDeg);
    *V = ToSingle(std::sin(Radians) * RadToDeg);
  }
  Change();
}

String TKZVector::ToCommaString() { return Format(u"%f, %f, %f", {FX, FY, FZ}); }

void TKZVector::CopyFrom(TObject* Source) {
  void* L = nullptr;
  if (Source && Source->GetInterface(ILocation::IID, &L)) {
    ILocation* Loc = static_cast<ILocation*>(L);
    SetXYZ(Loc->GetX(), Loc->GetY(), Loc->GetZ());
  }
}

void TKZVector::Assign(const TIntfPtr<IInterface>& Source) {
  if (const TIntfPtr<ILocation> L = Query<ILocation>(Source)) SetXYZ(L->GetX(), L->GetY(), L->GetZ());
}

void TKZVector::Assign(TPersistent* Source) { CopyFrom(Source); }

void TKZVector::AssignTo(TPersistent* Dest) {
  void* L = nullptr;
  if (Dest && Dest->GetInterface(ILocation::IID, &L)) static_cast<ILocation*>(L)->SetXYZ(FX, FY, FZ);
}

TIntfPtr<ICloneable> TKZVector::Clone() {
  std::unique_ptr<TKZVector> R = static_cast<const TMeta*>(ClassType())->Create();
  R->FX = FX;
  R->FY = FY;
  R->FZ = FZ;
  return TIntfPtr<ICloneable>(R.release());
}

TKZVectorList::TKZVectorList() : FList(new TInterfaceList) {}

void TKZVectorList::Assign(const TIntfPtr<IVectorList>& Source) {
  if (!Source) RaiseNullAccess(u"vector list");
  if (Source.get() == static_cast<IVectorList*>(this)) return;
  FList->Clear();
  for (std::int32_t i = 0, N = Source->GetCount(); i < N; ++i) Add(Source->Get(i));
}

TIntfPtr<IVectorList> TKZVectorList::Clone() {
  TIntfPtr<IVectorList> R(new TKZVectorList);
  R->Assign(TIntfPtr<IVectorList>(this));
  return R;
}

bool TKZVectorList::Equals(const TIntfPtr<IVectorList>& Value) {
  if (!Value || Value->GetCount() != GetCount()) return false;
  for (std::int32_t i = 0, N = GetCount(); i < N; ++i) {
    const TIntfPtr<IVector> A = Get(i), B = Value->Get(i);
    if (!A || !B) {
      if (A || B) return false;
      continue;
    }
    if (!TKZVector(A->GetX(), A->GetY(), A->GetZ()).Equals(B->GetX(), B->GetY(), B->GetZ())) return false;
  }
  return true;
}

std::int32_t TKZVectorList::GetCount() { return FList->GetCount(); }
TIntfPtr<IVector> TKZVectorList::Get(std::int32_t Index) { return Query<IVector>(FList->Get(Index)); }
void TKZVectorList::Put(std::int32_t Index, const TIntfPtr<IVector>& Value) { FList->Put(Index, Value); }
TIntfPtr<IVector> TKZVectorList::First() { return Query<IVector>(FList->First()); }
TIntfPtr<IVector> TKZVectorList::Last() { return Query<IVector>(FList->Last()); }
std::int32_t TKZVectorList::IndexOf(const TIntfPtr<IVector>& Value) { return FList->IndexOf(Value); }
std::int32_t TKZVectorList::Add(const TIntfPtr<IVector>& Value) { return FList->Add(Value); }

TIntfPtr<IVector> TKZVectorList::Add() {
  TIntfPtr<IVector> V(new TKZVector);
  FList->Add(V);
  return V;
}

void TKZVectorList::Insert(std::int32_t Index, const TIntfPtr<IVector>& Value) { FList->Insert(Index, Value); }
std::int32_t TKZVectorList::Remove(const TIntfPtr<IVector>& Value) { return FList->Remove(Value); }

}  // namespace kz
