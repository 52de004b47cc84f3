#include <algorithm>
#include <cstring>

#include "GStreams/BufferStream.h"
#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;
using namespace GStreams;

namespace {
std::unique_ptr<Byte[]> NewBlock(std::uint32_t Size) {
  return std::make_unique<Byte[]>(Size);  // zeroed: a read after a flush sees no garbage
}
}  // namespace

// --- TGBufferStream ---

TGBufferStream::TGBufferStream(TStream* Stream)
    : FStream(Stream), FBuffer(NewBlock(8192)), FBufferEnd(FBuffer.get() + 8192) {}

TGBufferStream::~TGBufferStream() {
  try {
    Close();
  } catch (...) {
    // A destructor cannot report; callers who care call Close themselves.
  }
}

void TGBufferStream::Close() {
  if (FState == bsWrite) FlushBuffer();
}

bool TGBufferStream::IsEof() {
  // A block not used up answers false without asking the stream, which may be absent.
  if (FBufferPtr != FBufferEnd) return false;
  if (!FStream) RaiseNullAccess(u"underlying stream");
  return FStream->GetSize() == FStream->GetPosition();
}

std::int64_t TGBufferStream::GetBufferPosition() const {
  switch (FState) {
    case bsUnknown: return 0;
    case bsRead: return FBufferPtr - FBufferEnd;
    case bsWrite: return FBufferPtr - FBuffer.get();
  }
  throw EStreamError(SInvalidBufferState);
}

std::int32_t TGBufferStream::FillBuffer() {
  const auto ReadBlock = [this] {
    return std::max(FStream->Read(FBuffer.get(), static_cast<std::int32_t>(FBufferSize)), 0);
  };
  std::int32_t N = 0;
  bool Filled = false;
  // A file stream's size costs system calls, and its Read answers 0 at the end without
  // other effect: read first, and only when nothing came ask the end-of-file test, which
  // then decides as if it had been asked first (not at the end: read again).
  if (FStream && FBufferPtr == FBufferEnd && IsExactly<TFileStream>(FStream)) {
    N = ReadBlock();
    Filled = N > 0;
  }
  if (!Filled && !IsEof()) {
    N = ReadBlock();
    Filled = true;
  }
  if (Filled) {
    FBufferPtr = FBuffer.get();
    FBufferEnd = FBuffer.get() + N;
  }
  FState = N >= 1 ? bsRead : bsUnknown;
  if (FOnFillBuffer) FOnFillBuffer(this);
  return N;
}

bool TGBufferStream::FlushBuffer() {
  if (!FStream) RaiseNullAccess(u"underlying stream");
  const auto Count = static_cast<std::int32_t>(FBufferPtr ? FBufferPtr - FBuffer.get() : 0);
  const bool Ok = FStream->Write(FBuffer.get(), Count) == Count;
  FBufferPtr = FBuffer.get();
  FState = bsUnknown;
  if (FOnFlushBuffer) FOnFlushBuffer(this);
  return Ok;
}

bool TGBufferStream::PrepareBuffer() {
  FBufferPtr = FBuffer.get();
  FBufferEnd = FBuffer.get() + FBufferSize;
  return true;
}

std::int32_t TGBufferStream::Read(void* Buffer, std::int32_t Count) {
  if (FState == bsWrite)
    FlushBuffer();
  else if (!FBufferPtr)
    FBufferPtr = FBufferEnd;
  auto* Dest = static_cast<Byte*>(Buffer);
  std::int32_t Total = 0;
  while (Count > 0) {
    if (FBufferPtr == FBufferEnd && FillBuffer() == 0) break;
    const auto N = static_cast<std::int32_t>(std::min<std::int64_t>(Count, FBufferEnd - FBufferPtr));
    std::memcpy(Dest, FBufferPtr, static_cast<std::size_t>(N));
    FBufferPtr += N;
    Dest += N;
    Total += N;
    Count -= N;
  }
  return Total;
}

std::int32_t TGBufferStream::Write(const void* Buffer, std::int32_t Count) {
  if (FState == bsRead) {
    if (!FStream) RaiseNullAccess(u"underlying stream");
    FStream->SetPosition(Seek(0, soCurrent));
  } else if (!FBufferPtr) {
    PrepareBuffer();
  }
  const auto* Src = static_cast<const Byte*>(Buffer);
  std::int32_t Total = 0;
  while (Count > 0) {
    // A block with no room that a flush cannot empty (it was left with its end at its
    // start) would stall the loop: make the whole block available instead.
    if (FBufferPtr == FBufferEnd && FBufferEnd == FBuffer.get()) FBufferEnd = FBuffer.get() + FBufferSize;
    const auto N = static_cast<std::int32_t>(std::min<std::int64_t>(Count, FBufferEnd - FBufferPtr));
    std::memcpy(FBufferPtr, Src, static_cast<std::size_t>(N));
    FBufferPtr += N;
    Src += N;
    Total += N;
    Count -= N;
    if (FBufferPtr == FBufferEnd && !FlushBuffer()) break;
  }
  if (FBufferPtr != FBuffer.get()) FState = bsWrite;
  return Total;
}

std::int64_t TGBufferStream::Seek(std::int64_t Offset, TSeekOrigin Origin) {
  if (!FStream) RaiseNullAccess(u"underlying stream");
  const std::int64_t Current = FStream->GetPosition() + GetBufferPosition();
  std::int64_t Target;
  switch (Origin) {
    case soBeginning: Target = Offset; break;
    case soCurrent: Target = Current + Offset; break;
    case soEnd: Target = FStream->GetSize() - Offset; break;
    default: throw EStreamError(SInvalidOriginPoint, {IntToStr(Origin)});
  }
  if (Target != Current) {
    if (FState == bsWrite && !FlushBuffer()) throw EStreamError(SErrorSeekingInBuffer);
    FStream->SetPosition(Target);
    FBufferPtr = nullptr;
    FState = bsUnknown;
  }
  return Target;
}

void TGBufferStream::PutBack(Byte Value) {
  if (!FBufferPtr || FBufferPtr <= FBuffer.get()) throw EStreamError(SPushBackOverflow);
  *--FBufferPtr = Value;
}

void TGBufferStream::PutBack(Char Value) {
  // Two consumed bytes are needed; with only one, stepping back would leave the block.
  if (!FBufferPtr || FBufferPtr - FBuffer.get() < 2) throw EStreamError(SPushBackOverflow);
  FBufferPtr -= 2;
  FBufferPtr[0] = static_cast<Byte>(Value & 0xFF);
  FBufferPtr[1] = static_cast<Byte>(Value >> 8);
}

void TGBufferStream::SetBufferSize(std::uint32_t Value) {
  if (Value == FBufferSize) return;
  if (Value == 0 || Value > static_cast<std::uint32_t>(INT32_MAX))
    throw EStreamError(SInvalidBufferSize, {UIntToStr(Value)});
  std::unique_ptr<Byte[]> Block = NewBlock(Value);
  FlushBuffer();
  // The new block holds nothing yet: it starts as a freshly built stream's does, so that
  // the next read fills it and the next write prepares it.
  FBuffer = std::move(Block);
  FBufferPtr = nullptr;
  FBufferEnd = FBuffer.get() + Value;
  FBufferSize = Value;
}

}  // namespace kz
