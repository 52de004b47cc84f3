// Byte streams: the abstract stream, file, memory, bytes and string streams.
#pragma once

#include <cstdint>
#include <cstdio>

#include "Runtime/Encodings.h"
#include "Runtime/Errors.h"
#include "Runtime/Object.h"

namespace kz {

namespace Runtime {
KZ_RESOURCESTRING(SReadError, u"Stream read error")
KZ_RESOURCESTRING(SWriteError, u"Stream write error")
KZ_RESOURCESTRING(SFOpenError, u"Cannot open file \"%s\". %s")
KZ_RESOURCESTRING(SFCreateError, u"Cannot create file \"%s\". %s")
KZ_RESOURCESTRING(SFileModeError, u"Invalid file open mode $%x for \"%s\"")
KZ_RESOURCESTRING(SSeekOriginError, u"Invalid stream seek origin %d")
KZ_RESOURCESTRING(SStreamSizeError, u"Invalid stream size %d")
KZ_RESOURCESTRING(SSetSizeError, u"Cannot change the size of this stream")
}  // namespace Runtime

/// Where a seek counts from: a 16-bit word, so that any value can be passed on and the
/// streams themselves reject the unknown ones with EStreamError.
using TSeekOrigin = std::uint16_t;
inline constexpr TSeekOrigin soBeginning = 0;
inline constexpr TSeekOrigin soCurrent = 1;
inline constexpr TSeekOrigin soEnd = 2;

/// File open modes, 16-bit flags: one access mode in the low bits, optionally or-ed with a
/// share mode. fmCreate creates the file (or empties an existing one) and opens it for
/// reading and writing. Share modes are accepted and ignored: files are opened shared.
inline constexpr std::uint16_t fmOpenRead = 0x0000;
inline constexpr std::uint16_t fmOpenWrite = 0x0001;
inline constexpr std::uint16_t fmOpenReadWrite = 0x0002;
inline constexpr std::uint16_t fmCreate = 0xFF00;
inline constexpr std::uint16_t fmShareCompat = 0x0000;
inline constexpr std::uint16_t fmShareExclusive = 0x0010;
inline constexpr std::uint16_t fmShareDenyWrite = 0x0020;
inline constexpr std::uint16_t fmShareDenyRead = 0x0030;
inline constexpr std::uint16_t fmShareDenyNone = 0x0040;

/// A sequence of bytes with a position. Read and Write move as many bytes as they can and
/// answer that count (0 for a count of 0 or less); ReadBuffer and WriteBuffer insist on
/// the whole count. Sizes and positions are 64-bit; one transfer moves at most 2 GiB - 1.
class TStream : public TObject {
  KZ_CLASS(TStream, TObject)
 public:
  virtual std::int32_t Read(void* Buffer, std::int32_t Count) = 0;
  virtual std::int32_t Write(const void* Buffer, std::int32_t Count) = 0;
  /// Moves the position and answers it. soEnd counts Offset from the end (a negative Offset
  /// lies before it). An origin outside the three raises EStreamError.
  virtual std::int64_t Seek(std::int64_t Offset, TSeekOrigin Origin) = 0;

  std::int64_t GetPosition() { return Seek(0, soCurrent); }
  void SetPosition(std::int64_t Pos) { Seek(Pos, soBeginning); }
  /// The size; the default seeks to the end and back.
  virtual std::int64_t GetSize();
  /// Changes the size; streams that cannot raise EStreamError.
  virtual void SetSize(std::int64_t NewSize);

  /// Reads exactly Count bytes or raises EReadError "Stream read error".
  void ReadBuffer(void* Buffer, std::int32_t Count);
  /// Writes exactly Count bytes or raises EWriteError "Stream write error".
  void WriteBuffer(const void* Buffer, std::int32_t Count);
  /// Copies Count bytes from Source's position; Count 0 copies the whole of Source from
  /// its start. Raises EReadError/EWriteError on a short transfer; answers the count.
  std::int64_t CopyFrom(TStream* Source, std::int64_t Count);
};

/// A file opened by name. Raises EFOpenError (EFCreateError for fmCreate) naming the file
/// and the system's reason when it cannot be opened. The stream does no buffering of its
/// own: every Read and Write goes to the system.
class TFileStream : public TStream {
  KZ_CLASS(TFileStream, TStream)
 public:
  TFileStream(const String& FileName, std::uint16_t Mode);
  ~TFileStream() override;

  std::int32_t Read(void* Buffer, std::int32_t Count) override;
  std::int32_t Write(const void* Buffer, std::int32_t Count) override;
  std::int64_t Seek(std::int64_t Offset, TSeekOrigin Origin) override;
  std::int64_t GetSize() override;
  void SetSize(std::int64_t NewSize) override;
  const String& GetFileName() const { return FFileName; }

 private:
  enum TLastOp : std::uint8_t { loNone, loRead, loWrite };
  void Switch(TLastOp Op);

  String FFileName;
  std::FILE* FFile = nullptr;
  bool FCanRead = false, FCanWrite = false;
  TLastOp FLastOp = loNone;
  std::int64_t FPos = 0;
};

/// A stream over a growable block of memory that it owns. Writing past the end grows it
/// (zero-filling any gap left by a seek beyond the end); seeking beyond the end is allowed.
class TMemoryStream : public TStream {
  KZ_CLASS(TMemoryStream, TStream)
 public:
  TMemoryStream() = default;
  explicit TMemoryStream(TBytes Data) : FData(std::move(Data)) {}

  std::int32_t Read(void* Buffer, std::int32_t Count) override;
  std::int32_t Write(const void* Buffer, std::int32_t Count) override;
  std::int64_t Seek(std::int64_t Offset, TSeekOrigin Origin) override;
  std::int64_t GetSize() override { return static_cast<std::int64_t>(FData.size()); }
  void SetSize(std::int64_t NewSize) override;

  /// The bytes; valid until the next change of size.
  Byte* GetMemory() { return FData.data(); }
  void Clear();
  /// Replaces the contents with the whole of Stream (from its start); position 0.
  void LoadFromStream(TStream* Stream);
  void SaveToStream(TStream* Stream);
  void LoadFromFile(const String& FileName);
  void SaveToFile(const String& FileName);

 protected:
  TBytes FData;
  std::int64_t FPosition = 0;
};

/// A memory stream whose contents are handed in and out as a byte array.
class TBytesStream : public TMemoryStream {
  KZ_CLASS(TBytesStream, TMemoryStream)
 public:
  explicit TBytesStream(TBytes Data = {}) : TMemoryStream(std::move(Data)) {}
  const TBytes& GetBytes() const { return FData; }
};

/// A memory stream over text held in an encoding. Without an encoding it holds UTF-8, so
/// that no character is lost. The encoding is owned when the stream is told so, except the
/// shared standard instances, which are never freed. Built from a string, the stream is
/// positioned at the end of the text, as if the text had just been written, ready for more.
class TStringStream : public TBytesStream {
  KZ_CLASS(TStringStream, TBytesStream)
 public:
  explicit TStringStream(StringView AString = {});
  TStringStream(StringView AString, TEncoding* AEncoding, bool AOwnsEncoding);
  explicit TStringStream(TBytes Bytes);
  ~TStringStream() override;

  TEncoding* GetEncoding() const { return FEncoding; }
  /// All the bytes decoded with the stream's encoding.
  String GetDataString() const;
  /// Decodes the next Count bytes (fewer at the end) and moves past them.
  String ReadString(std::int32_t Count);
  /// Encodes AString and writes it at the position.
  void WriteString(StringView AString);

 private:
  TEncoding* FEncoding;
  bool FOwnsEncoding;
};

}  // namespace kz
