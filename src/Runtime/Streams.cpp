#include "Runtime/Streams.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

namespace Runtime {
KZ_RESOURCESTRING(SSeekBeforeStart, u"Cannot seek before the start of the stream (%d)")
}  // namespace Runtime

namespace {

std::int64_t SeekTarget(std::int64_t Offset, TSeekOrigin Origin, std::int64_t Current, std::int64_t Size) {
  std::int64_t Base = 0;
  switch (Origin) {
    case soBeginning: Base = 0; break;
    case soCurrent: Base = Current; break;
    case soEnd: Base = Size; break;
    default: throw EStreamError(SSeekOriginError, {static_cast<std::int32_t>(Origin)});
  }
  std::int64_t Target;
  if (__builtin_add_overflow(Base, Offset, &Target) || Target < 0)
    throw EStreamError(SSeekBeforeStart, {Target < 0 ? Target : Offset});
  return Target;
}

String SystemReason(int Err) { return Utf8ToString(std::generic_category().message(Err)); }

}  // namespace

// --- TStream ---

std::int64_t TStream::GetSize() {
  const std::int64_t Pos = Seek(0, soCurrent);
  const std::int64_t Size = Seek(0, soEnd);
  Seek(Pos, soBeginning);
  return Size;
}

void TStream::SetSize(std::int64_t) { throw EStreamError(SSetSizeError); }

void TStream::ReadBuffer(void* Buffer, std::int32_t Count) {
  if (Count > 0 && Read(Buffer, Count) != Count) throw EReadError(SReadError);
}

void TStream::WriteBuffer(const void* Buffer, std::int32_t Count) {
  if (Count > 0 && Write(Buffer, Count) != Count) throw EWriteError(SWriteError);
}

std::int64_t TStream::CopyFrom(TStream* Source, std::int64_t Count) {
  if (!Source) RaiseNullAccess(u"source stream");
  if (Count == 0) {
    Source->SetPosition(0);
    Count = Source->GetSize();
  }
  if (Count < 0) throw EStreamError(SStreamSizeError, {Count});
  constexpr std::int32_t Chunk = 64 * 1024;
  std::vector<Byte> Buf(static_cast<std::size_t>(std::min<std::int64_t>(Count, Chunk)));
  for (std::int64_t Left = Count; Left > 0;) {
    const auto N = static_cast<std::int32_t>(std::min<std::int64_t>(Left, Chunk));
    Source->ReadBuffer(Buf.data(), N);
    WriteBuffer(Buf.data(), N);
    Left -= N;
  }
  return Count;
}

// --- TFileStream ---

TFileStream::TFileStream(const String& FileName, std::uint16_t Mode) : FFileName(FileName) {
  const std::string Path = StringToUtf8(FileName);
  const char* CMode = nullptr;
  if (Mode == fmCreate || (Mode & 0xFF00) == fmCreate) {
    CMode = "w+b";
    FCanRead = FCanWrite = true;
  } else {
    switch (Mode & 0x0003) {
      case fmOpenRead: CMode = "rb"; FCanRead = true; break;
      case fmOpenWrite: CMode = "r+b"; FCanWrite = true; break;
      case fmOpenReadWrite: CMode = "r+b"; FCanRead = FCanWrite = true; break;
      default: throw EFOpenError(SFileModeError, {static_cast<std::uint32_t>(Mode), FileName});
    }
  }
  errno = 0;
  FFile = std::fopen(Path.c_str(), CMode);
  if (!FFile) {
    const String Reason = SystemReason(errno ? errno : ENOENT);
    if (CMode[0] == 'w') throw EFCreateError(SFCreateError, {FileName, Reason});
    throw EFOpenError(SFOpenError, {FileName, Reason});
  }
  // The stream is unbuffered: callers that want a block in between use a buffered stream.
  std::setvbuf(FFile, nullptr, _IONBF, 0);
}

TFileStream::~TFileStream() {
  if (FFile) std::fclose(FFile);
}

void TFileStream::Switch(TLastOp Op) {
  // C streams need a positioning call between a read and a write.
  if (FLastOp != loNone && FLastOp != Op) std::fseek(FFile, 0, SEEK_CUR);
  FLastOp = Op;
}

std::int32_t TFileStream::Read(void* Buffer, std::int32_t Count) {
  if (Count <= 0 || !FCanRead) return 0;
  Switch(loRead);
  const auto N = static_cast<std::int32_t>(std::fread(Buffer, 1, static_cast<std::size_t>(Count), FFile));
  FPos += N;
  return N;
}

std::int32_t TFileStream::Write(const void* Buffer, std::int32_t Count) {
  if (Count <= 0 || !FCanWrite) return 0;
  Switch(loWrite);
  const auto N = static_cast<std::int32_t>(std::fwrite(Buffer, 1, static_cast<std::size_t>(Count), FFile));
  FPos += N;
  return N;
}

std::int64_t TFileStream::Seek(std::int64_t Offset, TSeekOrigin Origin) {
  // The position is tracked here, so that asking for it costs no system call.
  if (Origin == soCurrent && Offset == 0) return FPos;
  if (Origin > soEnd) throw EStreamError(SSeekOriginError, {static_cast<std::int32_t>(Origin)});
  const int Whence = Origin == soBeginning ? SEEK_SET : Origin == soCurrent ? SEEK_CUR : SEEK_END;
  if (std::fseek(FFile, static_cast<long>(Offset), Whence) != 0) throw EStreamError(SSeekBeforeStart, {Offset});
  FLastOp = loNone;
  FPos = std::ftell(FFile);
  return FPos;
}

std::int64_t TFileStream::GetSize() {
  std::fseek(FFile, 0, SEEK_END);
  const std::int64_t Size = std::ftell(FFile);
  std::fseek(FFile, static_cast<long>(FPos), SEEK_SET);
  FLastOp = loNone;
  return Size;
}

void TFileStream::SetSize(std::int64_t NewSize) {
  if (NewSize < 0) throw EStreamError(SStreamSizeError, {NewSize});
  const std::int64_t Pos = GetPosition();
  std::fflush(FFile);
  std::error_code Err;
  std::filesystem::resize_file(std::filesystem::path(FFileName), static_cast<std::uintmax_t>(NewSize), Err);
  if (Err) throw EStreamError(SSetSizeError);
  Seek(std::min(Pos, NewSize), soBeginning);
}

// --- TMemoryStream ---

std::int32_t TMemoryStream::Read(void* Buffer, std::int32_t Count) {
  const auto Size = static_cast<std::int64_t>(FData.size());
  if (Count <= 0 || FPosition >= Size) return 0;
  const auto N = static_cast<std::int32_t>(std::min<std::int64_t>(Count, Size - FPosition));
  std::memcpy(Buffer, FData.data() + FPosition, static_cast<std::size_t>(N));
  FPosition += N;
  return N;
}

std::int32_t TMemoryStream::Write(const void* Buffer, std::int32_t Count) {
  if (Count <= 0) return 0;
  const std::int64_t End = FPosition + Count;
  if (End > static_cast<std::int64_t>(FData.size())) SetSize(End);
  std::memcpy(FData.data() + FPosition, Buffer, static_cast<std::size_t>(Count));
  FPosition = End;
  return Count;
}

std::int64_t TMemoryStream::Seek(std::int64_t Offset, TSeekOrigin Origin) {
  FPosition = SeekTarget(Offset, Origin, FPosition, static_cast<std::int64_t>(FData.size()));
  return FPosition;
}

void TMemoryStream::SetSize(std::int64_t NewSize) {
  if (NewSize < 0) throw EStreamError(SStreamSizeError, {NewSize});
  try {
    FData.resize(static_cast<std::size_t>(NewSize));
  } catch (const std::length_error&) {
    throw EOutOfMemory(SOutOfMemory);
  }
  FPosition = std::min(FPosition, NewSize);
}

void TMemoryStream::Clear() {
  FData.clear();
  FData.shrink_to_fit();
  FPosition = 0;
}

void TMemoryStream::LoadFromStream(TStream* Stream) {
  if (!Stream) RaiseNullAccess(u"source stream");
  Stream->SetPosition(0);
  const std::int64_t Size = Stream->GetSize();
  SetSize(Size);
  FPosition = 0;
  for (std::int64_t Done = 0; Done < Size;) {
    const auto N = static_cast<std::int32_t>(std::min<std::int64_t>(Size - Done, INT32_MAX));
    Stream->ReadBuffer(FData.data() + Done, N);
    Done += N;
  }
}

void TMemoryStream::SaveToStream(TStream* Stream) {
  if (!Stream) RaiseNullAccess(u"destination stream");
  const auto Size = static_cast<std::int64_t>(FData.size());
  for (std::int64_t Done = 0; Done < Size;) {
    const auto N = static_cast<std::int32_t>(std::min<std::int64_t>(Size - Done, INT32_MAX));
    Stream->WriteBuffer(FData.data() + Done, N);
    Done += N;
  }
}

void TMemoryStream::LoadFromFile(const String& FileName) {
  TFileStream F(FileName, fmOpenRead | fmShareDenyWrite);
  LoadFromStream(&F);
}

void TMemoryStream::SaveToFile(const String& FileName) {
  TFileStream F(FileName, fmCreate);
  SaveToStream(&F);
}

// --- TStringStream ---

TStringStream::TStringStream(StringView AString) : TStringStream(AString, nullptr, false) {}

TStringStream::TStringStream(StringView AString, TEncoding* AEncoding, bool AOwnsEncoding)
    : FEncoding(AEncoding ? AEncoding : TEncoding::UTF8()), FOwnsEncoding(AEncoding && AOwnsEncoding) {
  FData = FEncoding->GetBytes(AString);
  FPosition = static_cast<std::int64_t>(FData.size());
}

TStringStream::TStringStream(TBytes Bytes)
    : TBytesStream(std::move(Bytes)), FEncoding(TEncoding::UTF8()), FOwnsEncoding(false) {}

TStringStream::~TStringStream() {
  if (FOwnsEncoding && !TEncoding::IsStandardEncoding(FEncoding)) delete FEncoding;
}

String TStringStream::GetDataString() const {
  return FEncoding->GetString(FData.data(), static_cast<std::int32_t>(std::min<std::size_t>(FData.size(), INT32_MAX)));
}

String TStringStream::ReadString(std::int32_t Count) {
  const auto Size = static_cast<std::int64_t>(FData.size());
  if (Count <= 0 || FPosition >= Size) return String();
  const auto N = static_cast<std::int32_t>(std::min<std::int64_t>(Count, Size - FPosition));
  String R = FEncoding->GetString(FData.data() + FPosition, N);
  FPosition += N;
  return R;
}

void TStringStream::WriteString(StringView AString) {
  const TBytes B = FEncoding->GetBytes(AString);
  WriteBuffer(B.data(), static_cast<std::int32_t>(B.size()));
}

}  // namespace kz
