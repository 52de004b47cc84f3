// Three-component single-precision vectors with in-place arithmetic, comparison within a
// fixed tolerance, plane angles and a change event, and a list of vectors held by reference.
#pragma once

#include <cstdint>
#include <functional>

#include "CommonInterfaces/CommonInterfaces.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Lists.h"

namespace kz {

namespace KZVector {
KZ_UNIT_SCOPE(KZVector)
/// The tolerance of TKZVector::Equals, per component, bounds included.
inline constexpr long double VectorTolerance = 0.0001L;
}  // namespace KZVector

/// A mutable vector (x, y, z), reference counted: make it with new and hold it in
/// TIntfPtr<IVector>; it frees itself at the last release (Apply and the list hand out
/// references to it). Every operation that takes another vector comes as three
/// overloads that behave the same: another TKZVector, three components, and an ILocation
/// (a null ILocation raises EAccessViolation). Operations change this vector in place and
/// end with one OnChange call; nothing raises for arithmetic edge cases.
///
/// Deliberate behaviour: Divide skips components whose divisor is exactly 0, and Divide by
/// a scalar 0 does nothing, not even OnChange; Equals allows 0.0001 per component;
/// SetAngle/SetAngleInRad write cos × 180/π and sin × 180/π into the plane's two
/// components (the length is not kept) and do nothing when the angle is already that.
class TKZVector : public TInterfacedObject, public virtual IVector {
 public:
  using TMeta = TMetaClassOf<TKZVector>;
  KZ_CLASS(TKZVector, TInterfacedObject)
  KZ_INTERFACES(IVector)
 public:
  TKZVector() = default;
  TKZVector(float X, float Y, float Z) : FX(X), FY(Y), FZ(Z) {}
  explicit TKZVector(const TKZVector& V) : FX(V.FX), FY(V.FY), FZ(V.FZ) {}
  explicit TKZVector(const TIntfPtr<ILocation>& V) : FX(V->GetX()), FY(V->GetY()), FZ(V->GetZ()) {}

  float GetX() override { return FX; }
  void SetX(float Value) override;
  float GetY() override { return FY; }
  void SetY(float Value) override;
  float GetZ() override { return FZ; }
  void SetZ(float Value) override;
  void SetXYZ(float X, float Y, float Z) override;
  std::int32_t GetTag() override { return FTag; }
  void SetTag(std::int32_t Value) override { FTag = Value; }
  [[nodiscard]] const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Handler) { FOnChange = std::move(Handler); }

  void Add(const TKZVector& V) { Add(V.FX, V.FY, V.FZ); }
  void Add(const TIntfPtr<ILocation>& V) override;
  void Add(float X, float Y, float Z) override;
  void Add(float F) override { Add(F, F, F); }
  void Subtract(const TKZVector& V) { Subtract(V.FX, V.FY, V.FZ); }
  void Subtract(const TIntfPtr<ILocation>& V) override;
  void Subtract(float X, float Y, float Z) override;
  void Subtract(float F) override { Subtract(F, F, F); }
  void Multiply(const TKZVector& V) { Multiply(V.FX, V.FY, V.FZ); }
  void Multiply(const TIntfPtr<ILocation>& V) override;
  void Multiply(float X, float Y, float Z) override;
  void Multiply(float F) override { Multiply(F, F, F); }
  void Divide(const TKZVector& V) { Divide(V.FX, V.FY, V.FZ); }
  void Divide(const TIntfPtr<ILocation>& V) override;
  void Divide(float X, float Y, float Z) override;
  void Divide(float F) override;
  void CrossProduct(const TKZVector& V) { CrossProduct(V.FX, V.FY, V.FZ); }
  void CrossProduct(const TIntfPtr<ILocation>& V) override;
  void CrossProduct(float X, float Y, float Z) override;
  /// A zero vector stays zero (and still fires OnChange).
  void Normalize() override;
  /// Scales to Value; a zero vector is multiplied by Value and stays zero.
  void SetMagnitude(float Value) override;
  /// voNormalize ignores V; an unknown operation does nothing. Answers this vector.
  TIntfPtr<IVector> Apply(TVectorOperation Operation, const TIntfPtr<ILocation>& V) override;
  TIntfPtr<IVector> Apply(TVectorOperation Operation, const TKZVector& V) {
    return Apply(Operation, V.FX, V.FY, V.FZ);
  }
  TIntfPtr<IVector> Apply(TVectorOperation Operation, float X, float Y, float Z);

  float DotProduct(const TKZVector& V) { return DotProduct(V.FX, V.FY, V.FZ); }
  float DotProduct(const TIntfPtr<ILocation>& V) override;
  float DotProduct(float X, float Y, float Z) override;
  double DistanceTo(const TKZVector& V) { return DistanceTo(V.FX, V.FY, V.FZ); }
  double DistanceTo(const TIntfPtr<ILocation>& V) override;
  double DistanceTo(float X, float Y, float Z) override;
  double DistanceSqrTo(const TKZVector& V) { return DistanceSqrTo(V.FX, V.FY, V.FZ); }
  double DistanceSqrTo(const TIntfPtr<ILocation>& V) override;
  double DistanceSqrTo(float X, float Y, float Z) override;
  float Length() override;
  float GetMagnitude() override { return Length(); }

  /// Every component within 0.0001 of the other's, bounds included.
  bool Equals(const TKZVector& V) { return Equals(V.FX, V.FY, V.FZ); }
  bool Equals(float X, float Y, float Z);
  /// Compares with any location; false for null and for objects without ILocation.
  bool Equals(const TIntfPtr<IInterface>& Value) override;
  /// Same direction: normalised copies compared with Equals.
  bool EqualsStar(const TKZVector& V) { return EqualsStar(V.FX, V.FY, V.FZ); }
  bool EqualsStar(const TIntfPtr<ILocation>& V) override;
  bool EqualsStar(float X, float Y, float Z);

  /// Degrees, in -180..180; an axis outside T2DAxis gives 0.
  float GetAngle(T2DAxis Axis) override;
  void SetAngle(T2DAxis Axis, float Degrees) override;
  float GetAngleInRad(T2DAxis Axis) override;
  void SetAngleInRad(T2DAxis Axis, float Radians) override;
  /// The angle of (A, B) in degrees: ±90 or 0 on the vertical axis, else atan2(B, A).
  [[nodiscard]] static float GetAngleDeg(float A, float B);

  /// "x, y, z" with Format's "%f".
  String ToCommaString() override;

  /// Copies the components of a source that implements ILocation; ignores other sources.
  void Assign(const TIntfPtr<IInterface>& Source) override;
  void Assign(TPersistent* Source) override;
  /// Gives this vector's components to a Dest that implements ILocation; ignores others.
  void AssignTo(TPersistent* Dest) override;
  /// A new vector of this vector's class with the same components (not tag or handler).
  TIntfPtr<ICloneable> Clone() override;

 protected:
  /// Calls OnChange(this) when a handler is set.
  virtual void Change();

 private:
  /// The plane's horizontal and vertical components; false for an unknown axis.
  bool Plane(T2DAxis Axis, float*& H, float*& V);
  void WriteAngle(T2DAxis Axis, long double Radians);
  void CopyFrom(TObject* Source);

  float FX = 0, FY = 0, FZ = 0;
  TNotifyEvent FOnChange;
  std::int32_t FTag = 0;
};

/// A list of vectors held by counted reference over the runtime's interface list (bad
/// indexes raise its EListError "List index out of bounds (%d)"). Reference counted like the
/// vectors. Assign and Clone share the vectors; Equals compares element by element with
/// TKZVector's tolerance (two null entries are equal).
class TKZVectorList : public TInterfacedObject, public virtual IVectorList {
  KZ_CLASS(TKZVectorList, TInterfacedObject)
  KZ_INTERFACES(IVectorList)
 public:
  TKZVectorList();

  void Assign(const TIntfPtr<IVectorList>& Source) override;
  TIntfPtr<IVectorList> Clone() override;
  bool Equals(const TIntfPtr<IVectorList>& Value) override;
  std::int32_t GetCount() override;
  TIntfPtr<IVector> Get(std::int32_t Index) override;
  void Put(std::int32_t Index, const TIntfPtr<IVector>& Value) override;
  TIntfPtr<IVector> First() override;
  TIntfPtr<IVector> Last() override;
  std::int32_t IndexOf(const TIntfPtr<IVector>& Value) override;
  std::int32_t Add(const TIntfPtr<IVector>& Value) override;
  TIntfPtr<IVector> Add() override;
  void Insert(std::int32_t Index, const TIntfPtr<IVector>& Value) override;
  std::int32_t Remove(const TIntfPtr<IVector>& Value) override;

 private:
  TIntfPtr<IInterfaceList> FList;
};

}  // namespace kz
