#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "GStreams/TextStream.h"
#include "Runtime/Text.h"
#include "Runtime/Variants.h"

namespace kz {

using namespace Runtime;
using namespace GStreams;

TGTextStream::TGTextStream(TStream* Stream, TEncoding* Encoding)
    : TGBufferStream(Stream), FPreambleStreamed(Encoding != nullptr), FEncoding(Encoding) {}

TGTextStream::TGTextStream(const String& FileName, std::uint16_t Mode, TEncoding* Encoding)
    : TGTextStream(std::make_unique<TFileStream>(FileName, Mode), Encoding) {}

TGTextStream::TGTextStream(std::unique_ptr<TStream> Owned, TEncoding* Encoding)
    : TGTextStream(Owned.get(), Encoding) {
  Owned.release();
  FOwnStream = true;
}

TGTextStream::~TGTextStream() {
  try {
    Close();
  } catch (...) {
    // As for the buffered stream: destruction cannot report a failed write.
  }
  FreeStream();
}

void TGTextStream::FreeStream() {
  if (FOwnStream) {
    delete FStream;
    FStream = nullptr;
  }
}

std::int64_t TGTextStream::Seek(std::int64_t Offset, TSeekOrigin Origin) {
  const std::int64_t R = inherited::Seek(Offset, Origin);
  FPreambleStreamed = R > 0;
  return R;
}

std::int64_t TGTextStream::SeekExcludePreamble(std::int64_t Offset, TSeekOrigin Origin) {
  std::int64_t R = TGBufferStream::Seek(Offset, Origin);
  if (FPreambleStreamed && PreambleSize() >= 1) R = TGBufferStream::Seek(PreambleSize(), soCurrent);
  return R;
}

std::int32_t TGTextStream::PreambleSize() {
  if (!FEncoding) FEncoding = TEncoding::Default();
  return static_cast<std::int32_t>(FEncoding->GetPreamble().size());
}

void TGTextStream::SetDelimiters(const String& Value) {
  if (Value == FDelimiters) return;
  FDelimiters = Value;
  if (FDelimiters.find(u' ') == String::npos) FDelimiters += u' ';
}

std::int32_t TGTextStream::FillBuffer() {
  const std::int32_t N = inherited::FillBuffer();
  if (N < 1 || FPreambleStreamed) return N;
  if (!FEncoding)
    if (auto* S = dynamic_cast<TStringStream*>(FStream)) FEncoding = S->GetEncoding();
  const std::int32_t P = TEncoding::GetBufferEncoding(FBuffer.get(), N, FEncoding);
  if (static_cast<std::uint32_t>(P) > FBufferSize) throw EStreamError(SInvalidEncodingEOF);
  FBufferPtr += P;
  FPreambleStreamed = true;
  return N;
}

bool TGTextStream::PrepareBuffer() {
  const bool R = inherited::PrepareBuffer();
  if (!FEncoding) {
    FEncoding = TEncoding::Default();
    FPreambleStreamed = false;
  }
  if (!FPreambleStreamed) {
    const TBytes Preamble = FEncoding->GetPreamble();
    // Settled first: the preamble's own write must not ask the question again.
    FPreambleStreamed = true;
    if (!Preamble.empty()) Write(Preamble.data(), static_cast<std::int32_t>(Preamble.size()));
  }
  return R;
}

// --- reading ---

namespace {
// How far GetChar gathers bytes without the encoding completing a character.
constexpr std::int32_t MaxCharBytes = 16;
}  // namespace

namespace {
enum : std::uint8_t { fkOther, fkUTF8, fkAnsi, fkUTF16LE, fkUTF16BE };
}  // namespace

std::uint8_t TGTextStream::NewFastKind() {
  FFastFor = FEncoding;
  // A subclass may read, fill or count differently: it keeps the byte-at-a-time path.
  // The complete object's class; no constructor of the class reads.
  FFastKind = !FEncoding || !IsExactly<TGTextStream>(this) ? fkOther
              : FEncoding == TEncoding::UTF8()                    ? fkUTF8
              : FEncoding == TEncoding::Default()                 ? fkAnsi
              : FEncoding == TEncoding::Unicode()                 ? fkUTF16LE
              : FEncoding == TEncoding::BigEndianUnicode()        ? fkUTF16BE
                                                                  : fkOther;
  FAsciiFor = FFastKind == fkUTF8 || FFastKind == fkAnsi ? FEncoding : nullptr;
  return FFastKind;
}

Char TGTextStream::GetCharBlock() {
  // Straight from the block when it holds the whole character: the same answer as the
  // gathering loop, which the standard encodings make cheap to predict.
  if (FState == bsRead && FBufferPtr && FBufferPtr < FBufferEnd) {
    const Byte* P = FBufferPtr;
    const std::int64_t Avail = FBufferEnd - P;
    switch (FastKind()) {
      case fkUTF8: {
        if (P[0] < 0x80) {
          ++FBufferPtr;
          return P[0];
        }
        // A whole well-formed sequence of two or three bytes: every shorter prefix could
        // still be completed, so the gathering loop would stop exactly here too.
        char32_t Cp;
        bool Truncated;
        const std::size_t Step = Utf8Step(P, static_cast<std::size_t>(Avail), Cp, Truncated);
        if (!Truncated && Step >= 2 && Cp < 0x10000 && Cp != 0xFFFD) {
          FBufferPtr += Step;
          return static_cast<Char>(Cp);
        }
        break;
      }
      case fkAnsi:
        ++FBufferPtr;
        return P[0] >= 0x80 ? FEncoding->GetString(P, 1)[0] : Char(P[0]);
      case fkUTF16LE:
      case fkUTF16BE:
        if (Avail < 2) break;
        FBufferPtr += 2;
        return FFastKind == fkUTF16LE ? Char(P[0] | (P[1] << 8)) : Char((P[0] << 8) | P[1]);
      default: break;
    }
  }
  return GetCharSlow();
}

Char TGTextStream::GetCharSlow() {
  Byte Bytes[MaxCharBytes];
  std::int32_t N = 0;
  for (;;) {
    if (Read(&Bytes[N], 1) == 0) return 0;
    ++N;
    // The first read may settle the encoding from the text.
    if (!FEncoding) FEncoding = TEncoding::Default();
    const std::int32_t Count = FEncoding->GetCharCount(Bytes, N);
    if (Count == 1) break;
    if (Count > 1) {
      // More bytes only add characters: one can never be counted again.
      SkipToEnd();
      return 0;
    }
    if (N == MaxCharBytes) return u'\uFFFD';
  }
  const String S = FEncoding->GetString(Bytes, N);
  return S.empty() ? Char(0) : S[0];
}

void TGTextStream::SkipToEnd() {
  Byte Block[4096];
  while (Read(Block, sizeof Block) > 0) {
  }
}

namespace {
constexpr std::uint64_t Ones = 0x0101010101010101u, Tops = 0x8080808080808080u;

// Eight bytes at once: the top bit of each byte of 0..13 or 128..255 (the low seven bits
// plus 114 reach 128 exactly from 14 on, and carry into no other byte).
inline std::uint64_t OutsideMarks(const Byte* P) {
  std::uint64_t W;
  std::memcpy(&W, P, 8);
  return (~((W & ~Tops) + Ones * 114) | W) & Tops;
}

// Whether a byte of [P, End) lies outside 14..127; no early exit, so it runs straight.
bool AnyOutside(const Byte* P, const Byte* End) {
  std::uint64_t Marks = 0;
  if (End - P < 8) {
    for (; P < End; ++P) Marks |= *P < 14 || *P >= 0x80;
    return Marks != 0;
  }
  for (; End - P > 8; P += 8) Marks |= OutsideMarks(P);
  return (Marks | OutsideMarks(End - 8)) != 0;  // the last word may overlap the one before
}

// The end of the run of ASCII bytes from P that a line holds: none of 0, LF, CR.
const Byte* AsciiLineRun(const Byte* P, const Byte* End) {
  for (;;) {
    for (; End - P >= 8; P += 8)
      if (const std::uint64_t Marks = OutsideMarks(P)) {
        P += (std::endian::native == std::endian::little ? std::countr_zero(Marks) : std::countl_zero(Marks)) / 8;
        break;
      }
    while (P < End && *P < 0x80 && *P > 13) ++P;
    if (P == End || *P >= 0x80 || *P == 0 || *P == 10 || *P == 13) return P;
    ++P;  // a control character inside the line
  }
}
}  // namespace

String TGTextStream::GetLine() {
  // This very class under an encoding that reads ASCII as itself: GetChar and PutBack are
  // its own, so the block may be read directly wherever that gives what they would.
  if (const std::uint8_t Kind = FastKind();
      (Kind == fkUTF8 || Kind == fkAnsi) && FState == bsRead && FBufferPtr < FBufferEnd) {
    // The common line: an LF in the block with plain ASCII before it.
    const Byte* const First = FBufferPtr;
    if (const void* Found = std::memchr(First, 10, static_cast<std::size_t>(FBufferEnd - First))) {
      const Byte* const Lf = static_cast<const Byte*>(Found);
      if (!AnyOutside(First, Lf)) {
        FBufferPtr += Lf - First + 1;
        return String(First, Lf);
      }
      // UTF-8 with whole well-formed sequences of two or three bytes between runs of ASCII
      // reads in one pass too; anything else (a CR, a 0, a byte that does not decode so,
      // the default encoding's upper half) goes piece by piece from the start.
      if (Kind == fkUTF8) {
        String R(static_cast<std::size_t>(Lf - First), u'\0');  // at most a character a byte
        Char* D = R.data();
        for (const Byte* P = First;;) {
          const Byte* const Run = AsciiLineRun(P, Lf);
          D = std::copy(P, Run, D);
          P = Run;
          if (P == Lf) {
            R.resize(static_cast<std::size_t>(D - R.data()));
            FBufferPtr += Lf - First + 1;
            return R;
          }
          char32_t Cp;
          bool Truncated;
          const std::size_t Step = *P < 0x80 ? 0 : Utf8Step(P, static_cast<std::size_t>(Lf - P), Cp, Truncated);
          if (Step < 2 || Truncated || Cp >= 0x10000 || Cp == 0xFFFD) break;
          *D++ = static_cast<Char>(Cp);
          P += Step;
        }
      }
    }
  }
  return GetLinePieces();
}

String TGTextStream::GetLinePieces() {
  if (FastKind() != fkUTF8 && FFastKind != fkAnsi) {
    String R;
    Char C;
    while (GetChar(C) && C != 10 && C != 13) R += C;
    if (C == 13 && GetChar(C) && C != 10) PutBack(C);
    return R;
  }
  String R;
  Char C = 0;
  for (;;) {
    if (FState == bsRead && FEncoding == FAsciiFor && FBufferPtr < FBufferEnd) {
      const Byte* const First = FBufferPtr;
      const Byte* const End = FBufferEnd;
      const Byte* P = AsciiLineRun(First, End);
      if (R.empty() && P < End && *P >= 0x80) {
        // More pieces follow: room for the rest of the line in the block, at most a
        // character per byte, spares growing the line piece by piece.
        const void* Lf = std::memchr(P, 10, static_cast<std::size_t>(End - P));
        R.reserve(static_cast<std::size_t>((Lf ? static_cast<const Byte*>(Lf) : End) - First));
      }
      const auto N = static_cast<std::size_t>(P - First);
      if (R.empty() && R.capacity() < N) {
        R = String(First, P);
      } else {
        const std::size_t Old = R.size();
        R.resize(Old + N);
        std::copy(First, P, R.begin() + static_cast<std::ptrdiff_t>(Old));
      }
      FBufferPtr += P - First;
      // A line end in the block, with what follows a CR there and ASCII: GetChar would take
      // it, PutBack would store the same byte again. Anything else goes the long way.
      if (P < End && *P == 10) {
        ++FBufferPtr;
        return R;
      }
      if (End - P >= 2 && *P == 13 && P[1] < 0x80 && P[1] != 0) {
        FBufferPtr += P[1] == 10 ? 2 : 1;
        return R;
      }
    }
    if (!TakeAscii(C)) C = GetCharBlock();
    if (C == 0 || C == 10 || C == 13) break;
    R += C;
  }
  if (C == 13 && TGTextStream::GetChar(C) && C != 10) PutBack(C);
  return R;
}

String TGTextStream::GetToken() {
  String R;
  Char C;
  while (GetChar(C)) {
    if (FDelimiters.find(C) != String::npos) {
      PutBack(C);
      break;
    }
    R += C;
  }
  return R;
}

String TGTextStream::GetToken(const String& Delimiters, bool RestoreOld) {
  const String Old = FDelimiters;
  SetDelimiters(Delimiters);
  String R = GetToken();
  if (RestoreOld) FDelimiters = Old;
  return R;
}

void TGTextStream::SkipSpaces() {
  Char C;
  while (GetChar(C))
    if (C > 32) {
      PutBack(C);
      return;
    }
}

bool TGTextStream::SkipInLineSpaces() {
  Char C;
  while (GetChar(C)) {
    if (C > 32) {
      PutBack(C);
      return false;
    }
    if (C == 13) {
      if (GetChar(C) && C != 10) PutBack(C);
      return true;
    }
    if (C == 10) return true;
  }
  return false;
}

std::int32_t TGTextStream::GetInteger() {
  SkipSpaces();
  return StrToInt(GetToken());
}

double TGTextStream::GetFloat() {
  SkipSpaces();
  return StrToFloat(GetToken());
}

void TGTextStream::PutBack(Char Value) {
  if (!FEncoding) return inherited::PutBack(Value);
  const TBytes Bytes = FEncoding->GetBytes(StringView(&Value, 1));
  // Checked first so that a refused put-back leaves the block as it was.
  if (!FBufferPtr || FBufferPtr - FBuffer.get() < static_cast<std::ptrdiff_t>(Bytes.size()))
    throw EStreamError(SPushBackOverflow);
  for (auto It = Bytes.rbegin(); It != Bytes.rend(); ++It) inherited::PutBack(*It);
}

// --- writing ---

TGTextStream& TGTextStream::Put(StringView S) {
  if (!FEncoding) FEncoding = TEncoding::Default();
  const TBytes Bytes = FEncoding->GetBytes(S);
  const auto N = static_cast<std::int32_t>(Bytes.size());
  if (N > 0 && Write(Bytes.data(), N) != N) throw EWriteError(SWriteError);
  return *this;
}

TGTextStream& TGTextStream::Put(char C) {
  const Byte B = static_cast<Byte>(C);
  return Put(TEncoding::Default()->GetString(&B, 1));
}

TGTextStream& TGTextStream::Put(Char C) { return Put(StringView(&C, 1)); }
TGTextStream& TGTextStream::Put(std::int32_t Value) { return Put(IntToStr(Value)); }
TGTextStream& TGTextStream::Put(double Value) { return Put(FloatToStr(Value)); }
TGTextStream& TGTextStream::PutSpace() { return Put(u' '); }
TGTextStream& TGTextStream::PutTab() { return Put(u'\t'); }
TGTextStream& TGTextStream::PutEOL() { return Put(StringView(u"\r\n")); }
TGTextStream& TGTextStream::PutLine(StringView S) { return Put(S).PutEOL(); }

void TGTextStream::WriteArg(const TVarRec& Arg) {
  switch (Arg.VType()) {
    case vtInteger: Put(Arg.VInteger()); break;
    case vtBoolean: Put(StringView(Arg.VBoolean() ? u"True" : u"False")); break;
    case vtChar: Put(Arg.VChar()); break;
    case vtFloat: {
      // The record's reference, not the value, as the writer always has done.
      const auto Ref = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&Arg));
      Put(IntToStr(static_cast<std::int32_t>(Ref)));
      break;
    }
    case vtString: {
      const std::string_view T = Arg.NarrowText();
      Put(TEncoding::Default()->GetString(reinterpret_cast<const Byte*>(T.data()), static_cast<std::int32_t>(T.size())));
      break;
    }
    case vtPointer: Put(kz::Format(u"%p", {static_cast<const void*>(Arg.VPointer())})); break;
    case vtPChar: Put(static_cast<Char>(reinterpret_cast<std::uintptr_t>(Arg.VPChar()) & 0xFFFF)); break;
    case vtObject: {
      TObject* O = Arg.VObject();
      if (!O) RaiseNullAccess(u"object argument");
      Put(u'(').Put(O->ClassName()).Put(u')');
      break;
    }
    case vtClass:
      if (!Arg.VClass()) RaiseNullAccess(u"class argument");
      Put(Arg.VClass()->ClassName());
      break;
    case vtWideChar: Put(Arg.VWideChar()); break;
    case vtAnsiString: {
      // The bytes taken as UTF-16 code units, low byte first, only as far as the string goes.
      const std::string_view T = Arg.NarrowText();
      String W(T.size() / 2, u'\0');
      for (std::size_t i = 0; i < W.size(); ++i)
        W[i] = static_cast<Char>(static_cast<unsigned char>(T[2 * i]) | (static_cast<unsigned char>(T[2 * i + 1]) << 8));
      Put(W);
      break;
    }
    case vtCurrency: Put(static_cast<double>(Arg.VCurrency()) / 10000.0); break;
    case vtVariant: Put(Arg.VVariant().AsString()); break;
    case vtWideString:
    case vtUnicodeString: Put(Arg.WideText()); break;
    case vtInt64: Put(IntToStr(Arg.VInt64())); break;
    case vtPWideChar:
    case vtInterface: break;
  }
}

TGTextStream& TGTextStream::WriteArgs(std::initializer_list<TVarRec> Args) {
  std::size_t i = 0;
  for (const TVarRec& Arg : Args) {
    WriteArg(Arg);
    if (++i < Args.size() && Arg.VType() != vtChar) PutSpace();
  }
  return *this;
}

TGTextStream& TGTextStream::WriteLn(std::initializer_list<TVarRec> Args) { return WriteArgs(Args).PutEOL(); }

TGTextStream& TGTextStream::Format(StringView Pattern, std::initializer_list<TFormatArg> Args) {
  return Put(kz::Format(Pattern, Args));
}

TGTextStream& TGTextStream::FormatLn(StringView Pattern, std::initializer_list<TFormatArg> Args) {
  return Format(Pattern, Args).PutEOL();
}

// --- TBaseStreamToken ---

void TBaseStreamToken::Assign(TPersistent* Source) {
  auto* S = dynamic_cast<TBaseStreamToken*>(Source);
  if (!S) return inherited::Assign(Source);
  FDataType = S->FDataType;
  FLineNumber = S->FLineNumber;
  FNumber = S->FNumber;
  FText = S->FText;
  FTag = S->FTag;
}

void TBaseStreamToken::Assign(const TIntfPtr<IInterface>& Source) {
  const TIntfPtr<IBaseStreamToken> S = Query<IBaseStreamToken>(Source);
  if (!S) return;
  FDataType = S->GetDataType();
  FLineNumber = S->GetLineNumber();
  FNumber = S->GetNumber();
  FText = S->GetText();
  FTag = S->GetTag();
}

TIntfPtr<ICloneable> TBaseStreamToken::Clone() {
  std::unique_ptr<TBaseStreamToken> R = static_cast<const TMeta*>(ClassType())->Create();
  R->Assign(this);
  return TIntfPtr<ICloneable>(R.release());
}

bool TBaseStreamToken::Equals(const TIntfPtr<IInterface>& Value) {
  const TIntfPtr<IBaseStreamToken> T = Query<IBaseStreamToken>(Value);
  return T && T->GetDataType() == FDataType && T->GetLineNumber() == FLineNumber && T->GetNumber() == FNumber;
}

bool TBaseStreamToken::Equals(TPersistent* Value) {
  void* Obj = nullptr;
  if (!Value || !Value->GetInterface(IBaseStreamToken::IID, &Obj)) return false;
  return Equals(TIntfPtr<IInterface>(static_cast<IBaseStreamToken*>(Obj)));
}

String TBaseStreamToken::ToString() {
  switch (FDataType) {
    case sttString: return u"\\\"" + FText + u"\"\\";
    case sttInteger: {
      // Truncated toward zero; beyond 64 bits (or NaN) the text of the double itself.
      const double T = std::trunc(FNumber);
      return std::fabs(T) < 9.2e18 ? IntToStr(static_cast<std::int64_t>(T)) : FloatToStr(T);
    }
    case sttFloat: return kz::Format(u"%.4f", {FNumber});
    case sttVariable: return u"?" + FText;
    default: return FText.empty() ? String(1, static_cast<Char>(FDataType)) : FText;
  }
}

// --- TBaseStreamTokenList ---

namespace {
TIntfPtr<IBaseStreamToken> AsToken(const TIntfPtr<IInterface>& P) { return Query<IBaseStreamToken>(P); }
}  // namespace

TIntfPtr<IBaseStreamToken> TBaseStreamTokenList::Get(std::int32_t Index) {
  return AsToken(TInterfaceListPersistent::Get(Index));
}
void TBaseStreamTokenList::Put(std::int32_t Index, const TIntfPtr<IBaseStreamToken>& Value) {
  TInterfaceListPersistent::Put(Index, Value);
}
std::int32_t TBaseStreamTokenList::Add(const TIntfPtr<IBaseStreamToken>& Value) {
  return TInterfaceListPersistent::Add(Value);
}
TIntfPtr<IBaseStreamToken> TBaseStreamTokenList::First() { return AsToken(TInterfaceListPersistent::First()); }
TIntfPtr<IBaseStreamToken> TBaseStreamTokenList::Last() { return AsToken(TInterfaceListPersistent::Last()); }
std::int32_t TBaseStreamTokenList::IndexOf(const TIntfPtr<IBaseStreamToken>& Value) {
  return TInterfaceListPersistent::IndexOf(Value);
}
void TBaseStreamTokenList::Insert(std::int32_t Index, const TIntfPtr<IBaseStreamToken>& Value) {
  TInterfaceListPersistent::Insert(Index, Value);
}
std::int32_t TBaseStreamTokenList::Remove(const TIntfPtr<IBaseStreamToken>& Value) {
  return TInterfaceListPersistent::Remove(Value);
}

void TBaseStreamTokenList::Append(const TIntfPtr<IBaseStreamTokenList>& List) {
  if (!List) return;
  // A list appended to itself adds its items once.
  for (std::int32_t i = 0, N = List->GetValueCount(); i < N; ++i) Add(List->Get(i));
}

String TBaseStreamTokenList::ToString() {
  String R;
  for (std::int32_t i = 0, N = GetCount(); i < N; ++i) {
    const TIntfPtr<IBaseStreamToken> T = Get(i);
    if (T) R += T->ToString();
    R += u' ';
  }
  return R;
}

bool TBaseStreamTokenList::Equals(const TIntfPtr<IInterface>& Value) {
  const TIntfPtr<IBaseStreamTokenList> L = Query<IBaseStreamTokenList>(Value);
  if (!L || L->GetValueCount() != GetCount()) return false;
  for (std::int32_t i = 0, N = GetCount(); i < N; ++i) {
    const TIntfPtr<IBaseStreamToken> A = Get(i), B = L->Get(i);
    if (!A || !B) {
      if (A || B) return false;
    } else if (!A->Equals(B)) {
      return false;
    }
  }
  return true;
}

bool TBaseStreamTokenList::Equals(TPersistent* Value) {
  void* Obj = nullptr;
  if (!Value || !Value->GetInterface(IBaseStreamTokenList::IID, &Obj)) return false;
  return Equals(TIntfPtr<IInterface>(static_cast<IBaseStreamTokenList*>(Obj)));
}

}  // namespace kz
