// TGTextStream: a buffered stream that knows its text encoding.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>

#include "CommonInterfaces/CommonInterfaces.h"
#include "GStreams/BufferStream.h"
#include "KZInterfaceCollections/KZInterfaceCollections.h"
#include "Runtime/Encodings.h"
#include "Runtime/Format.h"
#include "Runtime/VarRec.h"
#include "Runtime/Streams.h"
#include "Runtime/Types.h"

namespace kz {

/// A buffered stream that knows its text encoding. Created without an encoding, it detects
/// one from a byte-order mark on the first read (and skips the mark), or takes a string
/// stream's own encoding, or falls back to the default encoding; on the first write into an
/// empty block it writes the encoding's preamble unless that question is settled. Created
/// with an encoding, the question is settled until a seek lands on position 0. The encoding
/// is not owned; the underlying stream is owned when the text stream opened it by name.
///
/// Reading never raises at the end of the stream: it yields character 0 (a character 0 in
/// the text reads as the end too), an empty or partial line, or an empty token. GetChar
/// gathers bytes until the encoding counts one character. When the bytes gathered count as
/// two or more characters before one completes (a UTF-8 surrogate pair, an ill-formed
/// UTF-8 sequence followed by more bytes), no later byte can make it one: the rest of the
/// stream is skipped and GetChar answers 0. An encoding that has not completed a character
/// after 16 bytes gives U+FFFD for them. Under the library's own encodings an object of
/// this very class reads a character straight from the block when the block holds all of
/// it, with the same results (ASCII under UTF-8 and the default encoding in line);
/// subclasses always read through Read a byte at a time.
/// Writers answer the stream so that calls chain; a short write raises EWriteError.
class TGTextStream : public TGBufferStream {
  KZ_CLASS(TGTextStream, TGBufferStream)
 public:
  TGTextStream(TStream* Stream, TEncoding* Encoding = nullptr);
  /// Opens FileName with a file open mode (fmCreate, fmOpenRead, ...); raises the file
  /// stream's open errors.
  TGTextStream(const String& FileName, std::uint16_t Mode, TEncoding* Encoding = nullptr);
  ~TGTextStream() override;

  /// A seek that answers position 0 re-opens the preamble question.
  std::int64_t Seek(std::int64_t Offset, TSeekOrigin Origin) override;
  /// Seeks, then steps over the preamble when it is settled and not empty (forward from the
  /// position reached, whatever the origin).
  std::int64_t SeekExcludePreamble(std::int64_t Offset, TSeekOrigin Origin);
  /// The length of the encoding's preamble; settles on the default encoding when none is set.
  virtual std::int32_t PreambleSize();

  TEncoding* GetEncoding() const { return FEncoding; }
  void SetEncoding(TEncoding* Value) { FEncoding = Value; }
  const String& GetDelimiters() const { return FDelimiters; }
  /// Stores a changed value, appending a space when it holds none.
  void SetDelimiters(const String& Value);
  bool GetOwnStream() const { return FOwnStream; }

  // Reading.
  /// The next character, 0 at the end of the stream.
  virtual Char GetChar() {
    Char C;
    return TakeAscii(C) ? C : GetCharBlock();
  }
  /// AChar := GetChar; answers AChar != 0.
  virtual bool GetChar(Char& AChar) {
    if (!TakeAscii(AChar)) AChar = GetChar();
    return AChar != 0;
  }
  /// Up to CR, LF, CR LF or the end; the line end is consumed, not returned. Reads through
  /// GetChar, except that this very class takes runs of ASCII under UTF-8 and the default
  /// encoding (and whole UTF-8 sequences) from the block at once, with the same results.
  virtual String GetLine();
  /// Up to (not including) the next delimiter; leading delimiters are not skipped, so at a
  /// delimiter the token is empty and the stream does not move.
  String GetToken();
  /// GetToken with Delimiters set through SetDelimiters; RestoreOld puts the old delimiters
  /// back afterwards as they were.
  String GetToken(const String& Delimiters, bool RestoreOld);
  /// Skips characters up to space (all control characters), whatever the delimiters.
  void SkipSpaces();
  /// Skips blanks up to and including at most one line end; answers whether one was passed.
  virtual bool SkipInLineSpaces();
  /// SkipSpaces, GetToken, then the strict conversion (EConvertError on bad text).
  std::int32_t GetInteger();
  double GetFloat();
  /// Pushes the character's bytes in the stream's encoding back, so that they read again;
  /// without an encoding the two-byte form. Raises "Overflow on push back" (nothing is
  /// pushed) when the block has not consumed that many bytes.
  void PutBack(Char Value) override;
  using TGBufferStream::PutBack;

  // Writing; each answers the stream.
  /// Encodes S (settling on the default encoding when none is set) and writes it.
  TGTextStream& Put(StringView S);
  /// A narrow character through the default single-byte code page.
  TGTextStream& Put(char C);
  TGTextStream& Put(Char C);
  TGTextStream& Put(std::int32_t Value);
  /// The shortest text that reads back to Value.
  TGTextStream& Put(double Value);
  TGTextStream& PutSpace();
  TGTextStream& PutTab();
  /// CR LF.
  virtual TGTextStream& PutEOL();
  virtual TGTextStream& PutLine(StringView S);
  /// Each argument by its kind, a space between arguments except after a narrow character.
  /// Kinds: integers in decimal; Booleans "True"/"False"; characters as themselves; a float
  /// as the low 32 bits of the address of its argument record, in decimal (not its value);
  /// short, wide and Unicode strings as their text; pointers as "%p"; a narrow character
  /// pointer as one character whose code is the pointer's low 16 bits; an object as
  /// "(ClassName)" and a class as its name (null raises EAccessViolation); a wide character
  /// pointer and an interface as nothing; an ANSI string's bytes read as UTF-16 code units,
  /// low byte first, within the string (an odd last byte is dropped); currency as its amount
  /// written like a float; a variant as its text.
  TGTextStream& WriteArgs(std::initializer_list<TVarRec> Args);
  TGTextStream& WriteLn(std::initializer_list<TVarRec> Args = {});
  TGTextStream& Format(StringView Pattern, std::initializer_list<TFormatArg> Args);
  TGTextStream& FormatLn(StringView Pattern, std::initializer_list<TFormatArg> Args);
  bool GetPreambleStreamed() const { return FPreambleStreamed; }

 protected:
  /// Frees the underlying stream when this stream opened it.
  virtual void FreeStream();
  std::int32_t FillBuffer() override;
  bool PrepareBuffer() override;

  bool FOwnStream = false;
  bool FPreambleStreamed;
  String FDelimiters = u" \r\n\t";
  TEncoding* FEncoding;

 private:
  TGTextStream(std::unique_ptr<TStream> Owned, TEncoding* Encoding);
  /// The next byte when it is ASCII, under an encoding that reads it as itself, and this
  /// object is of this very class (FAsciiFor says so); otherwise false, nothing read.
  bool TakeAscii(Char& C) {
    if (FState != bsRead || FEncoding != FAsciiFor || !FAsciiFor || FBufferPtr >= FBufferEnd || *FBufferPtr >= 0x80)
      return false;
    C = *FBufferPtr++;
    return true;
  }
  /// GetLine past a line of plain ASCII that the block holds up to its LF.
  String GetLinePieces();
  /// GetChar past the ASCII case: a whole character from the block, else byte by byte.
  Char GetCharBlock();
  Char GetCharSlow();
  /// Which standard encoding FEncoding is (0: none of them, or a subclass reading), cached
  /// per encoding.
  std::uint8_t FastKind() { return FEncoding == FFastFor ? FFastKind : NewFastKind(); }
  std::uint8_t NewFastKind();
  const TEncoding* FFastFor = nullptr;
  const TEncoding* FAsciiFor = nullptr;
  std::uint8_t FFastKind = 0;
  /// Skips everything left to read.
  void SkipToEnd();
  void WriteArg(const TVarRec& Arg);
};

/// The kinds of stream token (ordinals 0 to 5).
enum TStreamTokenType : std::uint8_t { sttNone, sttAtom, sttString, sttInteger, sttFloat, sttVariable };

/// A set of token kinds.
class TStreamTokenTypes {
 public:
  constexpr TStreamTokenTypes() = default;
  constexpr TStreamTokenTypes(std::initializer_list<TStreamTokenType> Types) {
    for (TStreamTokenType T : Types) FBits = static_cast<std::uint8_t>(FBits | Bit(T));
  }
  constexpr bool Contains(TStreamTokenType T) const { return (FBits & Bit(T)) != 0; }
  constexpr TStreamTokenTypes& Include(TStreamTokenType T) {
    FBits = static_cast<std::uint8_t>(FBits | Bit(T));
    return *this;
  }
  constexpr TStreamTokenTypes& Exclude(TStreamTokenType T) {
    FBits = static_cast<std::uint8_t>(FBits & ~Bit(T));
    return *this;
  }
  constexpr bool Empty() const { return FBits == 0; }
  friend constexpr bool operator==(TStreamTokenTypes, TStreamTokenTypes) = default;

 private:
  static constexpr std::uint8_t Bit(TStreamTokenType T) { return static_cast<std::uint8_t>(1u << T); }
  std::uint8_t FBits = 0;
};

/// The persistent, reference-counted base of stream tokens; no data of its own.
class TBaseStreamTokenPersistent : public TInterfacedPersistent {
  KZ_CLASS(TBaseStreamTokenPersistent, TInterfacedPersistent)
};

/// One lexical item: kind, line, number, text, a free tag and the white space before it.
/// Reference counted (atomically, from 0; freed at the last release). Assign copies kind,
/// line, number, text and tag, never the white space; Equals compares kind, line and number
/// only (text, tag and white space are left out on purpose).
class TBaseStreamToken : public TBaseStreamTokenPersistent, public virtual IBaseStreamToken {
 public:
  using TMeta = TMetaClassOf<TBaseStreamToken>;
  KZ_CLASS(TBaseStreamToken, TBaseStreamTokenPersistent)
  KZ_INTERFACES(IBaseStreamToken)
 public:
  std::int32_t GetDataType() override { return FDataType; }
  void SetDataType(std::int32_t Value) override { FDataType = Value; }
  std::int32_t GetLineNumber() override { return FLineNumber; }
  void SetLineNumber(std::int32_t Value) override { FLineNumber = Value; }
  double GetNumber() override { return FNumber; }
  void SetNumber(double Value) override { FNumber = Value; }
  String GetText() override { return FText; }
  void SetText(const String& Value) override { FText = Value; }
  std::int32_t GetTag() override { return FTag; }
  void SetTag(std::int32_t Value) override { FTag = Value; }
  String GetWhitespace() override { return FWhitespace; }
  void SetWhitespace(const String& Value) override { FWhitespace = Value; }

  /// A token source is copied; others raise the assign error.
  void Assign(TPersistent* Source) override;
  /// Copies through the source's token interface; a source without one changes nothing.
  void Assign(const TIntfPtr<IInterface>& Source) override;
  void AssignTo(TPersistent* Dest) override { TPersistent::AssignTo(Dest); }
  TIntfPtr<ICloneable> Clone() override;
  bool Equals(const TIntfPtr<IInterface>& Value) override;
  /// False when Value has no token interface.
  bool Equals(TPersistent* Value);
  /// By kind: a string as \"text"\, an integer as Number truncated toward zero, a float
  /// with "%.4f", a variable as "?" and the text; any other kind its text, or when that is
  /// empty one character whose code is the kind's ordinal.
  String ToString() override;
  String AsString() { return ToString(); }

 private:
  std::int32_t FDataType = sttNone;
  std::int32_t FLineNumber = 0;
  double FNumber = 0;
  String FText;
  std::int32_t FTag = 0;
  String FWhitespace;
};

/// A list of token references on the persistent interface list (same locking and
/// notifications). Get, First and Last answer null for an item without the token interface.
class TBaseStreamTokenList : public TInterfaceListPersistent, public virtual IBaseStreamTokenList {
  KZ_CLASS(TBaseStreamTokenList, TInterfaceListPersistent)
  KZ_INTERFACES(IBaseStreamTokenList)
 public:
  std::int32_t GetValueCount() override { return GetCount(); }
  TIntfPtr<IBaseStreamToken> Get(std::int32_t Index) override;
  void Put(std::int32_t Index, const TIntfPtr<IBaseStreamToken>& Value) override;
  std::int32_t Add(const TIntfPtr<IBaseStreamToken>& Value) override;
  TIntfPtr<IBaseStreamToken> First() override;
  TIntfPtr<IBaseStreamToken> Last() override;
  std::int32_t IndexOf(const TIntfPtr<IBaseStreamToken>& Value) override;
  void Insert(std::int32_t Index, const TIntfPtr<IBaseStreamToken>& Value) override;
  void Delete(std::int32_t Index) override { TInterfaceListPersistent::Delete(Index); }
  /// Adds every token of List, sharing the references.
  void Append(const TIntfPtr<IBaseStreamTokenList>& List) override;
  std::int32_t Remove(const TIntfPtr<IBaseStreamToken>& Value) override;
  /// Each token's ToString followed by one space.
  String ToString() override;
  String AsString() { return ToString(); }

  void Assign(TPersistent* Source) override { TInterfaceListPersistent::Assign(Source); }
  void Assign(const TIntfPtr<IInterface>& Source) override { TInterfaceListPersistent::Assign(Source); }
  void AssignTo(TPersistent* Dest) override { TPersistent::AssignTo(Dest); }
  TIntfPtr<ICloneable> Clone() override { return TInterfaceListPersistent::Clone(); }
  std::int32_t GetTag() override { return TInterfaceListPersistent::GetTag(); }
  void SetTag(std::int32_t Value) override { TInterfaceListPersistent::SetTag(Value); }
  /// Same count and, index by index, both absent or equal tokens.
  bool Equals(const TIntfPtr<IInterface>& Value) override;
  bool Equals(TPersistent* Value);
};

}  // namespace kz
