// Component streaming: a reader and a writer of typed values, lists, properties, collections
// and whole component trees over any stream, and the table of published properties that
// drives them. The byte format is described in docs/streaming-format.md.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include "Runtime/Collections.h"
#include "Runtime/Components.h"
#include "Runtime/Streams.h"
#include "Runtime/Variants.h"

namespace kz {

namespace Runtime {
KZ_RESOURCESTRING(SInvalidStreamFormat, u"Invalid stream format")
KZ_RESOURCESTRING(SUnexpectedEndOfStream, u"Unexpected end of stream")
KZ_RESOURCESTRING(SUnexpectedValue, u"Invalid stream value: %s expected, found %s")
KZ_RESOURCESTRING(SIntegerOutOfRange, u"Integer value %d out of range")
KZ_RESOURCESTRING(SUnknownProperty, u"Property %s does not exist")
KZ_RESOURCESTRING(SInvalidPropertyValue, u"Invalid value for property %s")
KZ_RESOURCESTRING(SReadPropertyError, u"Error reading %s.%s: %s")
KZ_RESOURCESTRING(SReadComponentError, u"Error reading component %s: %s")
KZ_RESOURCESTRING(SInvalidPropertyName, u"Invalid property name '%s'")
KZ_RESOURCESTRING(SNestingTooDeep, u"Stream nesting deeper than %d levels")
KZ_RESOURCESTRING(SNotComponentClass, u"Class %s is not a component class")
KZ_RESOURCESTRING(SNotItemClass, u"Class %s is not a collection item class")
KZ_RESOURCESTRING(SWrongRootClass, u"Stream holds a %s, not a %s")
KZ_RESOURCESTRING(SValueTooLarge, u"Value too large to stream")
}  // namespace Runtime

/// The marker byte that starts each value. vaNull also ends lists and property sequences.
enum TFilerValueType : std::uint8_t {
  vaNull,        // end of a list
  vaList,        // a list begins
  vaInt8,        // integers: the smallest of four widths that holds the value
  vaInt16,
  vaInt32,
  vaInt64,
  vaDouble,      // IEEE 754 binary64
  vaString,      // UTF-8 text
  vaFalse,
  vaTrue,
  vaBinary,      // raw bytes of a binary property
  vaCollection,  // a collection's items follow, each a list of properties
};

class TFiler;
class TReader;
class TWriter;

using TReaderProc = std::function<void(TReader* Reader)>;
using TWriterProc = std::function<void(TWriter* Writer)>;
using TStreamProc = std::function<void(TStream* Stream)>;

// --- Published properties ---

/// The kinds of published property. pkObject is a sub-object the instance owns: a
/// collection streams as a collection, any other persistent object as a list of its own
/// properties; it is read in place, never replaced.
enum TPropKind : std::uint8_t { pkInteger, pkInt64, pkFloat, pkBoolean, pkString, pkObject };

/// One published property of a class: its name, kind and accessors. Value kinds carry the
/// value as a TVariant; a property without Set is not stored. Object kinds use GetObject.
struct TPropInfo {
  String Name;
  TPropKind Kind;
  std::function<TVariant(TPersistent* Instance)> Get;
  std::function<void(TPersistent* Instance, const TVariant& Value)> Set;
  std::function<TPersistent*(TPersistent* Instance)> GetObject;
};

/// Sets the published properties of AClass (its own, not its parents'), replacing any set
/// before. Thread-safe; the table lives as long as the library.
void RegisterProperties(const TMetaClass& AClass, std::vector<TPropInfo> Props);
/// The published properties of AClass and its parents, parents' first, each class's in
/// registration order.
std::vector<TPropInfo> GetPropList(const TMetaClass* AClass);

namespace detail {
template <class T>
constexpr TPropKind PropKindOf() {
  if constexpr (std::is_same_v<T, bool>) return pkBoolean;
  else if constexpr (std::is_same_v<T, String>) return pkString;
  else if constexpr (std::is_floating_point_v<T>) return pkFloat;
  else if constexpr (std::is_enum_v<T> || (std::is_integral_v<T> && sizeof(T) <= 4)) return pkInteger;
  else if constexpr (std::is_integral_v<T>) return pkInt64;
  else static_assert(sizeof(T) == 0, "unsupported published property type");
}
template <class T>
TVariant ToVariant(const T& V) {
  if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, String>) return TVariant(V);
  else if constexpr (std::is_floating_point_v<T>) return TVariant(static_cast<double>(V));
  else if constexpr (PropKindOf<T>() == pkInteger) return TVariant(static_cast<std::int32_t>(V));
  else return TVariant(static_cast<std::int64_t>(V));
}
template <class T>
T FromVariant(const TVariant& V) {
  if constexpr (std::is_same_v<T, bool>) return V.AsBoolean();
  else if constexpr (std::is_same_v<T, String>) return V.AsString();
  else if constexpr (std::is_floating_point_v<T>) return static_cast<T>(V.AsReal());
  else if constexpr (PropKindOf<T>() == pkInteger) return static_cast<T>(V.AsInteger());
  else return static_cast<T>(V.AsInt64());
}
}  // namespace detail

/// A published value property from a getter and a setter. Integers up to 32 bits and
/// enumerations are pkInteger, wider ones pkInt64. (A TPropInfo built by hand without Set
/// is not stored.)
template <class C, class G, class S>
TPropInfo Published(String Name, G (C::*Get)() const, void (C::*Set)(S)) {
  using T = std::remove_cvref_t<G>;
  static_assert(std::is_same_v<T, std::remove_cvref_t<S>>, "getter and setter types differ");
  TPropInfo P{std::move(Name), detail::PropKindOf<T>(), nullptr, nullptr, nullptr};
  P.Get = [Get](TPersistent* O) { return detail::ToVariant<T>((static_cast<C*>(O)->*Get)()); };
  P.Set = [Set](TPersistent* O, const TVariant& V) { (static_cast<C*>(O)->*Set)(detail::FromVariant<T>(V)); };
  return P;
}

/// A published sub-object property (a collection or another persistent object).
template <class C, class T>
TPropInfo PublishedObject(String Name, T* (C::*Get)() const) {
  static_assert(std::is_base_of_v<TPersistent, T>, "sub-objects are persistent");
  TPropInfo P{std::move(Name), pkObject, nullptr, nullptr, nullptr};
  P.GetObject = [Get](TPersistent* O) -> TPersistent* { return (static_cast<C*>(O)->*Get)(); };
  return P;
}

// --- Filers ---

/// What the reader and the writer share: the stream (not owned) and the custom-property
/// hooks that TPersistent::DefineProperties calls.
class TFiler : public TObject {
  KZ_CLASS(TFiler, TObject)
 public:
  explicit TFiler(TStream* Stream);

  /// A stored property that is not a published one. The writer stores it (under Name, by
  /// calling WriteData) only when HasData is true; the reader calls ReadData when it meets
  /// a property of that name. WriteData writes one value (a list counts as one).
  virtual void DefineProperty(const String& Name, TReaderProc ReadData, TWriterProc WriteData, bool HasData) = 0;
  /// The same for raw bytes: WriteData fills a memory stream, ReadData reads one holding
  /// exactly the stored bytes.
  virtual void DefineBinaryProperty(const String& Name, TStreamProc ReadData, TStreamProc WriteData,
                                    bool HasData) = 0;

  TStream* GetStream() const { return FStream; }
  /// The component whose tree is being read or written, or null.
  TComponent* GetRoot() const { return FRoot; }

 protected:
  TStream* FStream;
  TComponent* FRoot = nullptr;
};

/// Writes values at the stream's position, straight through (no buffering). Raises
/// EWriteError when the stream takes fewer bytes than given.
class TWriter : public TFiler {
  KZ_CLASS(TWriter, TFiler)
 public:
  explicit TWriter(TStream* Stream);

  void DefineProperty(const String& Name, TReaderProc ReadData, TWriterProc WriteData, bool HasData) override;
  void DefineBinaryProperty(const String& Name, TStreamProc ReadData, TStreamProc WriteData, bool HasData) override;

  void WriteValue(TFilerValueType Value);
  void WriteListBegin() { WriteValue(vaList); }
  void WriteListEnd() { WriteValue(vaNull); }
  /// In the smallest integer width that holds Value.
  void WriteInteger(std::int64_t Value);
  void WriteFloat(double Value);
  void WriteBoolean(bool Value);
  void WriteString(StringView Value);
  /// A property name: 1 to 255 bytes of UTF-8, else EWriteError.
  void WritePropName(StringView Name);
  /// The collection marker, each item as a list of its properties, and the end of the list.
  void WriteCollection(TCollection* Value);
  /// The stored published properties of Instance, then its defined properties; the caller
  /// ends the sequence (WriteListEnd).
  void WriteProperties(TPersistent* Instance);
  /// Class name, name, properties, then the owned components, each recursively.
  void WriteComponent(TComponent* Component);
  /// The format signature, then Root as WriteComponent writes it.
  void WriteRootComponent(TComponent* Root);
  void WriteSignature();

 private:
  void WriteBytes(const void* Data, std::size_t Count);
  void WriteUInt(std::uint64_t Value, int Bytes);
};

/// Reads what a TWriter wrote. Reads ahead in blocks and gives the unread bytes back to
/// the stream (seeking back) when destroyed. Every malformed or truncated input raises
/// EReadError with what was wrong (or EClassNotFound for an unknown class) without reading
/// past the end; lengths are trusted only as far as bytes actually arrive, and nesting is
/// limited to MaxDepth levels. Exceptions raised by property setters and component naming
/// while reading come back as EReadError naming the property.
class TReader : public TFiler {
  KZ_CLASS(TReader, TFiler)
 public:
  static constexpr int MaxDepth = 512;

  explicit TReader(TStream* Stream);
  ~TReader() override;

  void DefineProperty(const String& Name, TReaderProc ReadData, TWriterProc WriteData, bool HasData) override;
  void DefineBinaryProperty(const String& Name, TStreamProc ReadData, TStreamProc WriteData, bool HasData) override;

  TFilerValueType ReadValue();
  /// The next marker, not consumed.
  TFilerValueType NextValue();
  bool EndOfList() { return NextValue() == vaNull; }
  /// Reads a marker and raises EReadError unless it is Value.
  void CheckValue(TFilerValueType Value);
  void ReadListBegin() { CheckValue(vaList); }
  void ReadListEnd() { CheckValue(vaNull); }
  /// Any integer width; a value outside 32 bits raises EReadError.
  std::int32_t ReadInteger();
  std::int64_t ReadInt64();
  /// A double, or an integer widened.
  double ReadFloat();
  bool ReadBoolean();
  String ReadString();
  String ReadPropName();
  /// Skips one value of any kind (lists and collections whole).
  void SkipValue();
  /// Reads one property (name and value) into Instance: a published property of its class,
  /// else one of its defined properties; neither raises EReadError "Property X does not
  /// exist".
  void ReadProperty(TPersistent* Instance);
  /// Clears Collection and reads items of its item class.
  void ReadCollection(TCollection* Collection);
  /// Reads a component written by WriteComponent, created by class name and owned by
  /// Owner (not null).
  TComponent* ReadComponent(TComponent* Owner);
  /// Reads into Root a tree written by WriteRootComponent; the stored class must be Root's.
  /// Loaded runs on every component read, root first, once the whole tree is in.
  void ReadRootComponent(TComponent* Root);
  /// The same, creating the root from its stored class name.
  std::unique_ptr<TComponent> ReadRootComponent();
  void ReadSignature();

 private:
  void Fill(std::size_t Need);
  void ReadBytes(void* Dest, std::size_t Count);
  /// Count bytes whose count came from the stream: allocation follows what arrives.
  void ReadCounted(std::size_t Count, const std::function<void(const Byte*, std::size_t)>& Sink);
  std::uint64_t ReadUInt(int Bytes);
  std::int64_t ReadIntegerValue(TFilerValueType Marker);
  void ReadComponentBody(TComponent* Component);
  void ReadObjectValue(TPersistent* Instance, const TPropInfo& Prop);
  void LoadedAll();

  struct TDepthGuard {
    explicit TDepthGuard(TReader& R);
    ~TDepthGuard() { --R.FDepth; }
    TReader& R;
  };

  std::vector<Byte> FBuffer;
  std::size_t FBufPos = 0, FBufEnd = 0;
  int FDepth = 0;
  String FPropName;  // the property DefineProperties is being asked about
  bool FPropHandled = false;
  std::vector<TComponent*> FLoaded;
};

}  // namespace kz
