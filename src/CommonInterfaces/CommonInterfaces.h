// Interface contracts shared by the containers: iterators over pointers, strings, interfaces
// and objects, and the contracts of cloning, locations, vectors, stream tokens and streaming.
#pragma once

#include <cstdint>
#include <functional>

#include "Runtime/Interfaces.h"
#include "Runtime/Object.h"
#include "Runtime/Persistent.h"
#include "Runtime/Types.h"

namespace kz {

class TStream;
class TReader;
class TWriter;

/// An event callback whose sender is an interface reference.
using TINotifyEvent = std::function<void(const TIntfPtr<IInterface>& Sender)>;

/// A plane named by its horizontal then its vertical axis.
enum T2DAxis : std::uint8_t { XYAxis, XZAxis, YXAxis, YZAxis, ZXAxis, ZYAxis };

/// The in-place vector operations IVector::Apply performs.
enum TVectorOperation : std::uint8_t { voAdd, voCrossProduct, voDivide, voMultiply, voSubtract, voNormalize };

/// What every iterator interface shares: GetCount is a count whose meaning each iterator
/// documents (Count answers it too), HasMoreElements tells whether a next element exists,
/// Reset goes back before the first element. One object implementing several iterator
/// interfaces implements these once.
class IBaseIterator : public virtual IInterface {
  KZ_INTERFACE(IBaseIterator, IInterface, "{3E8C5A17-6D24-4B90-A1F3-7C58E2D4B916}")
 public:
  virtual std::int32_t GetCount() = 0;
  std::int32_t Count() { return GetCount(); }
  virtual bool HasMoreElements() = 0;
  virtual void Reset() = 0;
};

/// Iterator over untyped elements. NextElement returns the next one (raising the collection's
/// own error past the end); CurrentElement is the element NextElement returned last.
/// Iterators read their collection live and do not keep it alive.
class IIterator : public virtual IBaseIterator {
  KZ_INTERFACE(IIterator, IBaseIterator, "{F83E4161-A296-11D3-B992-00C04F8EDA5F}")
 public:
  virtual Pointer CurrentElement() = 0;
  virtual Pointer NextElement() = 0;
};

/// Iterator over strings. Its element methods carry an S suffix so that one object can be both
/// an IIterator and an IStringIterator.
class IStringIterator : public virtual IBaseIterator {
  KZ_INTERFACE(IStringIterator, IBaseIterator, "{F83E4162-A296-11D3-B992-00C04F8EDA5F}")
 public:
  virtual String CurrentElementS() = 0;
  virtual String NextElementS() = 0;
};

/// Iterator over interface references (suffix I).
class IInterfaceIterator : public virtual IBaseIterator {
  KZ_INTERFACE(IInterfaceIterator, IBaseIterator, "{E1A337B7-D59B-11D3-B9BF-00C04F8EDA5F}")
 public:
  virtual TIntfPtr<IInterface> CurrentElementI() = 0;
  virtual TIntfPtr<IInterface> NextElementI() = 0;
};

/// Iterator over objects (suffix O).
class IObjectIterator : public virtual IBaseIterator {
  KZ_INTERFACE(IObjectIterator, IBaseIterator, "{E1A337B8-D59B-11D3-B9BF-00C04F8EDA5F}")
 public:
  virtual TObject* CurrentElementO() = 0;
  virtual TObject* NextElementO() = 0;
};

/// An object that copies itself. Assign takes the content of a like object given as an
/// interface or a persistent object (AssignTo is the persistent counterpart); Clone is a new
/// object of the same class with the same content, queried for the caller's interface;
/// Equals compares content with any interface; Tag is free for the user.
class ICloneable : public virtual IInterface {
  KZ_INTERFACE(ICloneable, IInterface, "{2D42CCDB-D296-11D3-B9BB-00C04F8EDA5F}")
 public:
  virtual void Assign(const TIntfPtr<IInterface>& Source) = 0;
  virtual void Assign(TPersistent* Source) = 0;
  virtual void AssignTo(TPersistent* Dest) = 0;
  virtual TIntfPtr<ICloneable> Clone() = 0;
  virtual bool Equals(const TIntfPtr<IInterface>& Value) = 0;
  virtual std::int32_t GetTag() = 0;
  virtual void SetTag(std::int32_t Value) = 0;
};

/// A point in space with single-precision coordinates.
class ILocation : public virtual ICloneable {
  KZ_INTERFACE(ILocation, ICloneable, "{5F9BAB2B-8390-4309-8BE9-8EDF14FED450}")
 public:
  virtual float GetX() = 0;
  virtual void SetX(float Value) = 0;
  virtual float GetY() = 0;
  virtual void SetY(float Value) = 0;
  virtual float GetZ() = 0;
  virtual void SetZ(float Value) = 0;
  /// Sets the three coordinates as one change.
  virtual void SetXYZ(float X, float Y, float Z) = 0;
};

/// A point in space with integer coordinates.
class IIntegerLocation : public virtual IInterface {
  KZ_INTERFACE(IIntegerLocation, IInterface, "{A5F2D8D8-915C-4DCE-99C1-B0547D004D76}")
 public:
  virtual std::int32_t GetX() = 0;
  virtual void SetX(std::int32_t Value) = 0;
  virtual std::int32_t GetY() = 0;
  virtual void SetY(std::int32_t Value) = 0;
  virtual std::int32_t GetZ() = 0;
  virtual void SetZ(std::int32_t Value) = 0;
  virtual void SetXYZ(std::int32_t X, std::int32_t Y, std::int32_t Z) = 0;
};

/// A mutable three-component vector. Every operation works in place on this vector; those
/// taking another vector accept any location, or its three components. Angles are in
/// degrees unless the name says radians, in the plane an axis pair names.
class IVector : public virtual ILocation {
  KZ_INTERFACE(IVector, ILocation, "{980EFE02-AC52-4B90-B698-504F58C1F02C}")
 public:
  virtual float GetAngle(T2DAxis Axis) = 0;
  virtual void SetAngle(T2DAxis Axis, float Degrees) = 0;
  virtual float GetAngleInRad(T2DAxis Axis) = 0;
  virtual void SetAngleInRad(T2DAxis Axis, float Radians) = 0;

  virtual void Add(const TIntfPtr<ILocation>& V) = 0;
  virtual void Add(float X, float Y, float Z) = 0;
  virtual void Add(float F) = 0;
  virtual void Subtract(const TIntfPtr<ILocation>& V) = 0;
  virtual void Subtract(float X, float Y, float Z) = 0;
  virtual void Subtract(float F) = 0;
  /// Component by component.
  virtual void Multiply(const TIntfPtr<ILocation>& V) = 0;
  virtual void Multiply(float X, float Y, float Z) = 0;
  virtual void Multiply(float F) = 0;
  virtual void Divide(const TIntfPtr<ILocation>& V) = 0;
  virtual void Divide(float X, float Y, float Z) = 0;
  virtual void Divide(float F) = 0;
  virtual void CrossProduct(const TIntfPtr<ILocation>& V) = 0;
  virtual void CrossProduct(float X, float Y, float Z) = 0;
  virtual void Normalize() = 0;
  /// Performs Operation with V and answers this vector.
  virtual TIntfPtr<IVector> Apply(TVectorOperation Operation, const TIntfPtr<ILocation>& V) = 0;

  virtual float DotProduct(const TIntfPtr<ILocation>& V) = 0;
  virtual float DotProduct(float X, float Y, float Z) = 0;
  virtual double DistanceTo(const TIntfPtr<ILocation>& V) = 0;
  virtual double DistanceTo(float X, float Y, float Z) = 0;
  virtual double DistanceSqrTo(const TIntfPtr<ILocation>& V) = 0;
  virtual double DistanceSqrTo(float X, float Y, float Z) = 0;
  virtual float Length() = 0;
  virtual float GetMagnitude() = 0;
  virtual void SetMagnitude(float Value) = 0;
  /// Same direction (both normalised, then compared like Equals).
  virtual bool EqualsStar(const TIntfPtr<ILocation>& V) = 0;
  /// "x, y, z" in fixed-point notation.
  virtual String ToCommaString() = 0;
};

/// A list of vectors held by reference. Bad indexes raise EListError.
class IVectorList : public virtual IInterface {
  KZ_INTERFACE(IVectorList, IInterface, "{271EB3E0-BFE2-4B3E-BED4-D564E65A3F40}")
 public:
  virtual void Assign(const TIntfPtr<IVectorList>& Source) = 0;
  virtual TIntfPtr<IVectorList> Clone() = 0;
  virtual bool Equals(const TIntfPtr<IVectorList>& Value) = 0;
  virtual std::int32_t GetCount() = 0;
  virtual TIntfPtr<IVector> Get(std::int32_t Index) = 0;
  virtual void Put(std::int32_t Index, const TIntfPtr<IVector>& Value) = 0;
  virtual TIntfPtr<IVector> First() = 0;
  virtual TIntfPtr<IVector> Last() = 0;
  /// -1 when absent.
  virtual std::int32_t IndexOf(const TIntfPtr<IVector>& Value) = 0;
  /// The new vector's index.
  virtual std::int32_t Add(const TIntfPtr<IVector>& Value) = 0;
  /// A new zero vector, appended.
  virtual TIntfPtr<IVector> Add() = 0;
  virtual void Insert(std::int32_t Index, const TIntfPtr<IVector>& Value) = 0;
  /// The index the vector had, -1 when absent.
  virtual std::int32_t Remove(const TIntfPtr<IVector>& Value) = 0;
};

/// One lexical item read from a text: its kind (an ordinal the token classes define), text,
/// number, line and the white space that stood before it.
class IBaseStreamToken : public virtual ICloneable {
  KZ_INTERFACE(IBaseStreamToken, ICloneable, "{CCE9541F-DBBC-42B9-B420-C6F5AAFA67D1}")
 public:
  virtual std::int32_t GetDataType() = 0;
  virtual void SetDataType(std::int32_t Value) = 0;
  virtual std::int32_t GetLineNumber() = 0;
  virtual void SetLineNumber(std::int32_t Value) = 0;
  virtual double GetNumber() = 0;
  virtual void SetNumber(double Value) = 0;
  virtual String GetText() = 0;
  virtual void SetText(const String& Value) = 0;
  virtual String GetWhitespace() = 0;
  virtual void SetWhitespace(const String& Value) = 0;
  /// The token as text, by kind.
  virtual String ToString() = 0;
};

/// A list of tokens held by reference. Bad indexes raise EListError.
class IBaseStreamTokenList : public virtual ICloneable {
  KZ_INTERFACE(IBaseStreamTokenList, ICloneable, "{B6310763-2490-4DF2-B478-8CCE8BEB8E86}")
 public:
  virtual std::int32_t GetValueCount() = 0;
  virtual TIntfPtr<IBaseStreamToken> Get(std::int32_t Index) = 0;
  virtual void Put(std::int32_t Index, const TIntfPtr<IBaseStreamToken>& Value) = 0;
  /// The new token's index.
  virtual std::int32_t Add(const TIntfPtr<IBaseStreamToken>& Value) = 0;
  virtual TIntfPtr<IBaseStreamToken> First() = 0;
  virtual TIntfPtr<IBaseStreamToken> Last() = 0;
  /// -1 when absent.
  virtual std::int32_t IndexOf(const TIntfPtr<IBaseStreamToken>& Value) = 0;
  virtual void Insert(std::int32_t Index, const TIntfPtr<IBaseStreamToken>& Value) = 0;
  virtual void Delete(std::int32_t Index) = 0;
  /// Adds every token of List, sharing the references.
  virtual void Append(const TIntfPtr<IBaseStreamTokenList>& List) = 0;
  /// The index the token had, -1 when absent.
  virtual std::int32_t Remove(const TIntfPtr<IBaseStreamToken>& Value) = 0;
  /// Each token's text followed by one space.
  virtual String ToString() = 0;
};

/// An object that writes itself to a byte stream and reads itself back.
class IStreamable : public virtual IInterface {
  KZ_INTERFACE(IStreamable, IInterface, "{B139B46D-3C87-11D4-BA0E-00C04F8EDA5F}")
 public:
  virtual void LoadFromStream(TStream* Stream) = 0;
  virtual void SaveToStream(TStream* Stream) = 0;
};

/// An object that writes itself through a component writer and reads itself back through a
/// component reader (stored forms).
class IDTStreamable : public virtual IInterface {
  KZ_INTERFACE(IDTStreamable, IInterface, "{B139B46E-3C87-11D4-BA0E-00C04F8EDA5F}")
 public:
  virtual void ReadData(TReader* Reader) = 0;
  virtual void WriteData(TWriter* Writer) = 0;
};

}  // namespace kz
