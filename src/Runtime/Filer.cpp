#include "Runtime/Filer.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

namespace {

constexpr Byte GSignature[4] = {'K', 'Z', 'F', '1'};
constexpr std::size_t GReadBlock = 4096;
// Values whose length comes from the stream are taken in pieces of at most this size, so
// a corrupt length costs no more memory than the bytes that really follow it.
constexpr std::size_t GCountedPiece = 64 * 1024;

String ValueName(TFilerValueType V) {
  switch (V) {
    case vaNull: return u"end of list";
    case vaList: return u"list";
    case vaInt8: case vaInt16: case vaInt32: case vaInt64: return u"integer";
    case vaDouble: return u"float";
    case vaString: return u"string";
    case vaFalse: case vaTrue: return u"Boolean";
    case vaBinary: return u"binary data";
    case vaCollection: return u"collection";
  }
  return u"marker " + IntToStr(V);
}

struct TPropRegistry {
  std::mutex Lock;
  std::map<const TMetaClass*, std::vector<TPropInfo>> Tables;
};
TPropRegistry& PropRegistry() {
  static TPropRegistry R;
  return R;
}

const TPropInfo* FindProp(const std::vector<TPropInfo>& Props, StringView Name) {
  for (const TPropInfo& P : Props)
    if (SameText(P.Name, Name)) return &P;
  return nullptr;
}

}  // namespace

void RegisterProperties(const TMetaClass& AClass, std::vector<TPropInfo> Props) {
  TPropRegistry& R = PropRegistry();
  std::lock_guard Guard(R.Lock);
  R.Tables[&AClass] = std::move(Props);
}

std::vector<TPropInfo> GetPropList(const TMetaClass* AClass) {
  std::vector<const TMetaClass*> Chain;
  for (const TMetaClass* C = AClass; C; C = C->ClassParent()) Chain.push_back(C);
  std::vector<TPropInfo> Result;
  TPropRegistry& R = PropRegistry();
  std::lock_guard Guard(R.Lock);
  for (auto It = Chain.rbegin(); It != Chain.rend(); ++It) {
    auto T = R.Tables.find(*It);
    if (T != R.Tables.end()) Result.insert(Result.end(), T->second.begin(), T->second.end());
  }
  return Result;
}

TFiler::TFiler(TStream* Stream) : FStream(Stream) {
  if (!Stream) RaiseNullAccess(u"filer stream");
}

// --- TWriter ---

TWriter::TWriter(TStream* Stream) : TFiler(Stream) {}

void TWriter::WriteBytes(const void* Data, std::size_t Count) {
  const auto* P = static_cast<const Byte*>(Data);
  while (Count > 0) {
    const auto N = static_cast<std::int32_t>(std::min<std::size_t>(Count, INT32_MAX));
    FStream->WriteBuffer(P, N);
    P += N;
    Count -= static_cast<std::size_t>(N);
  }
}

void TWriter::WriteUInt(std::uint64_t Value, int Bytes) {
  Byte B[8];
  for (int i = 0; i < Bytes; ++i) B[i] = static_cast<Byte>(Value >> (8 * i));
  WriteBytes(B, static_cast<std::size_t>(Bytes));
}

void TWriter::WriteValue(TFilerValueType Value) { WriteBytes(&Value, 1); }

void TWriter::WriteInteger(std::int64_t Value) {
  if (Value >= INT8_MIN && Value <= INT8_MAX) WriteValue(vaInt8), WriteUInt(static_cast<std::uint64_t>(Value), 1);
  else if (Value >= INT16_MIN && Value <= INT16_MAX) WriteValue(vaInt16), WriteUInt(static_cast<std::uint64_t>(Value), 2);
  else if (Value >= INT32_MIN && Value <= INT32_MAX) WriteValue(vaInt32), WriteUInt(static_cast<std::uint64_t>(Value), 4);
  else WriteValue(vaInt64), WriteUInt(static_cast<std::uint64_t>(Value), 8);
}

void TWriter::WriteFloat(double Value) {
  std::uint64_t Bits;
  std::memcpy(&Bits, &Value, sizeof Bits);
  WriteValue(vaDouble);
  WriteUInt(Bits, 8);
}

void TWriter::WriteBoolean(bool Value) { WriteValue(Value ? vaTrue : vaFalse); }

void TWriter::WriteString(StringView Value) {
  const std::string U = StringToUtf8(Value);
  if (U.size() > INT32_MAX) throw EWriteError(SValueTooLarge);
  WriteValue(vaString);
  WriteUInt(U.size(), 4);
  WriteBytes(U.data(), U.size());
}

void TWriter::WritePropName(StringView Name) {
  const std::string U = StringToUtf8(Name);
  if (U.empty() || U.size() > 255) throw EWriteError(SInvalidPropertyName, {Name});
  WriteUInt(U.size(), 1);
  WriteBytes(U.data(), U.size());
}

void TWriter::DefineProperty(const String& Name, TReaderProc, TWriterProc WriteData, bool HasData) {
  if (!HasData || !WriteData) return;
  WritePropName(Name);
  WriteData(this);
}

void TWriter::DefineBinaryProperty(const String& Name, TStreamProc, TStreamProc WriteData, bool HasData) {
  if (!HasData || !WriteData) return;
  TMemoryStream M;
  WriteData(&M);
  if (M.GetSize() > INT32_MAX) throw EWriteError(SValueTooLarge);
  WritePropName(Name);
  WriteValue(vaBinary);
  WriteUInt(static_cast<std::uint64_t>(M.GetSize()), 4);
  WriteBytes(M.GetMemory(), static_cast<std::size_t>(M.GetSize()));
}

void TWriter::WriteCollection(TCollection* Value) {
  if (!Value) RaiseNullAccess(u"collection");
  WriteValue(vaCollection);
  for (std::int32_t i = 0; i < Value->GetCount(); ++i) {
    WriteListBegin();
    WriteProperties(Value->GetItem(i));
    WriteListEnd();
  }
  WriteListEnd();
}

void TWriter::WriteProperties(TPersistent* Instance) {
  if (!Instance) RaiseNullAccess(u"instance");
  for (const TPropInfo& P : GetPropList(Instance->ClassType())) {
    switch (P.Kind) {
      case pkInteger: case pkInt64: case pkFloat: case pkBoolean: case pkString: {
        if (!P.Set || !P.Get) continue;
        const TVariant V = P.Get(Instance);
        WritePropName(P.Name);
        if (P.Kind == pkInteger || P.Kind == pkInt64) WriteInteger(V.AsInt64());
        else if (P.Kind == pkFloat) WriteFloat(V.AsReal());
        else if (P.Kind == pkBoolean) WriteBoolean(V.AsBoolean());
        else WriteString(V.AsString());
        break;
      }
      case pkObject: {
        TPersistent* Sub = P.GetObject ? P.GetObject(Instance) : nullptr;
        if (!Sub) continue;
        WritePropName(P.Name);
        if (auto* C = dynamic_cast<TCollection*>(Sub)) {
          WriteCollection(C);
        } else {
          WriteListBegin();
          WriteProperties(Sub);
          WriteListEnd();
        }
        break;
      }
    }
  }
  Instance->DefineProperties(this);
}

void TWriter::WriteComponent(TComponent* Component) {
  if (!Component) RaiseNullAccess(u"component");
  struct TWritingGuard {
    TComponent* C;
    ~TWritingGuard() { C->SetComponentState(csWriting, false); }
  } Guard{Component};
  Component->SetComponentState(csWriting, true);
  WriteString(Component->ClassName());
  WriteString(Component->GetName());
  WriteProperties(Component);
  WriteListEnd();
  for (std::int32_t i = 0; i < Component->GetComponentCount(); ++i) WriteComponent(Component->GetComponent(i));
  WriteListEnd();
}

void TWriter::WriteRootComponent(TComponent* Root) {
  FRoot = Root;
  WriteSignature();
  WriteComponent(Root);
}

void TWriter::WriteSignature() { WriteBytes(GSignature, sizeof GSignature); }

// --- TReader ---

TReader::TDepthGuard::TDepthGuard(TReader& R) : R(R) {
  if (R.FDepth >= MaxDepth) throw EReadError(SNestingTooDeep, {MaxDepth});
  ++R.FDepth;
}

TReader::TReader(TStream* Stream) : TFiler(Stream), FBuffer(GReadBlock) {}

TReader::~TReader() {
  if (FBufEnd > FBufPos) {
    try {
      FStream->Seek(-static_cast<std::int64_t>(FBufEnd - FBufPos), soCurrent);
    } catch (...) {
      // A stream that cannot seek back keeps its position after the read-ahead.
    }
  }
}

void TReader::Fill(std::size_t Need) {
  // Keeps the unread bytes and tops the block up until Need bytes are there.
  if (FBufPos > 0) {
    std::memmove(FBuffer.data(), FBuffer.data() + FBufPos, FBufEnd - FBufPos);
    FBufEnd -= FBufPos;
    FBufPos = 0;
  }
  while (FBufEnd < Need) {
    const std::int32_t N = FStream->Read(FBuffer.data() + FBufEnd, static_cast<std::int32_t>(FBuffer.size() - FBufEnd));
    if (N <= 0) throw EReadError(SUnexpectedEndOfStream);
    FBufEnd += static_cast<std::size_t>(N);
  }
}

void TReader::ReadBytes(void* Dest, std::size_t Count) {
  auto* D = static_cast<Byte*>(Dest);
  while (Count > 0) {
    if (FBufPos == FBufEnd) Fill(1);
    const std::size_t N = std::min(Count, FBufEnd - FBufPos);
    std::memcpy(D, FBuffer.data() + FBufPos, N);
    FBufPos += N;
    D += N;
    Count -= N;
  }
}

void TReader::ReadCounted(std::size_t Count, const std::function<void(const Byte*, std::size_t)>& Sink) {
  std::vector<Byte> Piece;
  while (Count > 0) {
    Piece.resize(std::min(Count, GCountedPiece));
    ReadBytes(Piece.data(), Piece.size());
    Sink(Piece.data(), Piece.size());
    Count -= Piece.size();
  }
}

std::uint64_t TReader::ReadUInt(int Bytes) {
  Byte B[8];
  ReadBytes(B, static_cast<std::size_t>(Bytes));
  std::uint64_t V = 0;
  for (int i = Bytes; i-- > 0;) V = (V << 8) | B[i];
  return V;
}

TFilerValueType TReader::NextValue() {
  if (FBufPos == FBufEnd) Fill(1);
  return static_cast<TFilerValueType>(FBuffer[FBufPos]);
}

TFilerValueType TReader::ReadValue() {
  const TFilerValueType V = NextValue();
  ++FBufPos;
  if (V > vaCollection) throw EReadError(SInvalidStreamFormat);
  return V;
}

void TReader::CheckValue(TFilerValueType Value) {
  const TFilerValueType V = ReadValue();
  if (V != Value) throw EReadError(SUnexpectedValue, {ValueName(Value), ValueName(V)});
}

std::int64_t TReader::ReadIntegerValue(TFilerValueType Marker) {
  switch (Marker) {
    case vaInt8: return static_cast<std::int8_t>(ReadUInt(1));
    case vaInt16: return static_cast<std::int16_t>(ReadUInt(2));
    case vaInt32: return static_cast<std::int32_t>(ReadUInt(4));
    case vaInt64: return static_cast<std::int64_t>(ReadUInt(8));
    default: throw EReadError(SUnexpectedValue, {String(u"integer"), ValueName(Marker)});
  }
}

std::int64_t TReader::ReadInt64() { return ReadIntegerValue(ReadValue()); }

std::int32_t TReader::ReadInteger() {
  const std::int64_t V = ReadInt64();
  if (V < INT32_MIN || V > INT32_MAX) throw EReadError(SIntegerOutOfRange, {V});
  return static_cast<std::int32_t>(V);
}

double TReader::ReadFloat() {
  const TFilerValueType V = ReadValue();
  if (V != vaDouble) return static_cast<double>(ReadIntegerValue(V));
  const std::uint64_t Bits = ReadUInt(8);
  double D;
  std::memcpy(&D, &Bits, sizeof D);
  return D;
}

bool TReader::ReadBoolean() {
  const TFilerValueType V = ReadValue();
  if (V != vaFalse && V != vaTrue) throw EReadError(SUnexpectedValue, {String(u"Boolean"), ValueName(V)});
  return V == vaTrue;
}

String TReader::ReadString() {
  CheckValue(vaString);
  std::string U;
  ReadCounted(static_cast<std::size_t>(ReadUInt(4)),
              [&](const Byte* P, std::size_t N) { U.append(reinterpret_cast<const char*>(P), N); });
  return Utf8ToString(U);
}

String TReader::ReadPropName() {
  const auto Len = static_cast<std::size_t>(ReadUInt(1));
  if (Len == 0) throw EReadError(SUnexpectedValue, {String(u"property name"), ValueName(vaNull)});
  std::string U(Len, '\0');
  ReadBytes(U.data(), Len);
  return Utf8ToString(U);
}

void TReader::SkipValue() {
  TDepthGuard Depth(*this);
  const TFilerValueType V = ReadValue();
  switch (V) {
    case vaNull: case vaFalse: case vaTrue: break;
    case vaInt8: case vaInt16: case vaInt32: case vaInt64: ReadIntegerValue(V); break;
    case vaDouble: ReadUInt(8); break;
    case vaString: case vaBinary: ReadCounted(static_cast<std::size_t>(ReadUInt(4)), [](const Byte*, std::size_t) {}); break;
    case vaList:
      while (!EndOfList()) SkipValue();
      ReadListEnd();
      break;
    case vaCollection:
      while (!EndOfList()) {
        ReadListBegin();
        while (!EndOfList()) {
          ReadPropName();
          SkipValue();
        }
        ReadListEnd();
      }
      ReadListEnd();
      break;
  }
}

void TReader::DefineProperty(const String& Name, TReaderProc ReadData, TWriterProc, bool) {
  if (FPropHandled || !ReadData || !SameText(Name, FPropName)) return;
  FPropHandled = true;
  ReadData(this);
}

void TReader::DefineBinaryProperty(const String& Name, TStreamProc ReadData, TStreamProc, bool) {
  if (FPropHandled || !ReadData || !SameText(Name, FPropName)) return;
  FPropHandled = true;
  CheckValue(vaBinary);
  TMemoryStream M;
  ReadCounted(static_cast<std::size_t>(ReadUInt(4)),
              [&](const Byte* P, std::size_t N) { M.WriteBuffer(P, static_cast<std::int32_t>(N)); });
  M.SetPosition(0);
  ReadData(&M);
}

void TReader::ReadObjectValue(TPersistent* Instance, const TPropInfo& Prop) {
  TPersistent* Sub = Prop.GetObject ? Prop.GetObject(Instance) : nullptr;
  const TFilerValueType V = NextValue();
  auto* Coll = dynamic_cast<TCollection*>(Sub);
  if (Coll && V == vaCollection) {
    ReadCollection(Coll);
  } else if (Sub && !Coll && V == vaList) {
    ReadListBegin();
    while (!EndOfList()) ReadProperty(Sub);
    ReadListEnd();
  } else {
    throw EReadError(SInvalidPropertyValue, {Prop.Name});
  }
}

void TReader::ReadProperty(TPersistent* Instance) {
  if (!Instance) RaiseNullAccess(u"instance");
  TDepthGuard Depth(*this);
  const String Name = ReadPropName();
  try {
    const std::vector<TPropInfo> Props = GetPropList(Instance->ClassType());
    if (const TPropInfo* P = FindProp(Props, Name)) {
      switch (P->Kind) {
        case pkInteger: case pkInt64: case pkFloat: case pkBoolean: case pkString: {
          TVariant V;
          if (P->Kind == pkInteger) V = TVariant(ReadInteger());
          else if (P->Kind == pkInt64) V = TVariant(ReadInt64());
          else if (P->Kind == pkFloat) V = TVariant(ReadFloat());
          else if (P->Kind == pkBoolean) V = TVariant(ReadBoolean());
          else V = TVariant(ReadString());
          if (!P->Set) throw EReadError(SInvalidPropertyValue, {Name});
          P->Set(Instance, V);
          break;
        }
        case pkObject: ReadObjectValue(Instance, *P); break;
      }
      return;
    }
    // Not published: ask the instance's defined properties, remembering an outer question
    // so that a defined property that reads nested properties leaves it as it was.
    const String OuterName = std::exchange(FPropName, Name);
    const bool OuterHandled = std::exchange(FPropHandled, false);
    struct TRestore {
      TReader& R;
      String Name;
      bool Handled;
      ~TRestore() {
        R.FPropName = std::move(Name);
        R.FPropHandled = Handled;
      }
    } Restore{*this, OuterName, OuterHandled};
    Instance->DefineProperties(this);
    if (!FPropHandled) throw EReadError(SUnknownProperty, {Name});
  } catch (const EFilerError&) {
    throw;
  } catch (const Exception& E) {
    throw EReadError(SReadPropertyError, {Instance->ClassName(), Name, E.Message()});
  }
}

void TReader::ReadCollection(TCollection* Collection) {
  if (!Collection) RaiseNullAccess(u"collection");
  TDepthGuard Depth(*this);
  CheckValue(vaCollection);
  WithinUpdate(*Collection, [&] {
    Collection->Clear();
    while (!EndOfList()) {
      ReadListBegin();
      TCollectionItem* Item = Collection->Add();
      while (!EndOfList()) ReadProperty(Item);
      ReadListEnd();
    }
    ReadListEnd();
  });
}

void TReader::ReadComponentBody(TComponent* Component) {
  const String Name = ReadString();
  Component->Loading();
  FLoaded.push_back(Component);
  struct TReadingGuard {
    TComponent* C;
    ~TReadingGuard() { C->SetComponentState(csReading, false); }
  } Guard{Component};
  Component->SetComponentState(csReading, true);
  try {
    Component->SetName(Name);
  } catch (const EFilerError&) {
    throw;
  } catch (const Exception& E) {
    throw EReadError(SReadComponentError, {Name, E.Message()});
  }
  while (!EndOfList()) ReadProperty(Component);
  ReadListEnd();
  while (!EndOfList()) ReadComponent(Component);
  ReadListEnd();
}

TComponent* TReader::ReadComponent(TComponent* Owner) {
  if (!Owner) RaiseNullAccess(u"owner");
  TDepthGuard Depth(*this);
  const String ClassName = ReadString();
  const auto* Meta = dynamic_cast<TComponentClass>(&FindClass(ClassName));
  if (!Meta || !Meta->CanCreate()) throw EReadError(SNotComponentClass, {ClassName});
  TComponent* C = Meta->Create(Owner).release();  // the owner owns it from here on
  ReadComponentBody(C);
  return C;
}

void TReader::LoadedAll() {
  std::vector<TComponent*> Loaded = std::move(FLoaded);
  FLoaded.clear();
  for (TComponent* C : Loaded) C->Loaded();
}

void TReader::ReadRootComponent(TComponent* Root) {
  if (!Root) RaiseNullAccess(u"root component");
  ReadSignature();
  const String ClassName = ReadString();
  if (!SameText(ClassName, Root->ClassName())) throw EReadError(SWrongRootClass, {ClassName, Root->ClassName()});
  FRoot = Root;
  FLoaded.clear();
  ReadComponentBody(Root);
  LoadedAll();
}

std::unique_ptr<TComponent> TReader::ReadRootComponent() {
  ReadSignature();
  const String ClassName = ReadString();
  const auto* Meta = dynamic_cast<TComponentClass>(&FindClass(ClassName));
  if (!Meta || !Meta->CanCreate()) throw EReadError(SNotComponentClass, {ClassName});
  std::unique_ptr<TComponent> Root = Meta->Create(nullptr);
  FRoot = Root.get();
  FLoaded.clear();
  ReadComponentBody(Root.get());
  LoadedAll();
  return Root;
}

void TReader::ReadSignature() {
  Byte S[sizeof GSignature];
  ReadBytes(S, sizeof S);
  if (std::memcmp(S, GSignature, sizeof S) != 0) throw EReadError(SInvalidStreamFormat);
}

}  // namespace kz
