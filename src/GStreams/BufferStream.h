// TGBufferStream: a block of memory between its user and an underlying byte stream.
#pragma once

#include <cstdint>
#include <memory>

#include "GStreams/Messages.h"
#include "Runtime/Object.h"
#include "Runtime/Streams.h"
#include "Runtime/Types.h"

namespace kz {

/// What the block of a buffered stream holds.
enum TBufferState : std::uint8_t {
  bsUnknown,  // nothing of interest
  bsRead,     // bytes read ahead from the underlying stream
  bsWrite     // bytes not yet written to the underlying stream
};

/// A block of memory between its user and an underlying stream (not owned), so that many
/// small reads and writes become few large ones; consumed bytes of the block can be pushed
/// back. The block serves reading or writing at a time: a caller that switches between
/// writing and reading seeks first (a seek that moves discards the block, one that does not
/// move keeps it); without it, a read after a write sees the block's old bytes and a write
/// after reading up to the end writes the last block read again. Seeking from the end counts the offset backwards: Seek(10, soEnd) is ten
/// bytes before the end, Seek(-10, soEnd) ten bytes past it. Pending bytes are written by
/// Close and by destruction; a short write there is not reported.
class TGBufferStream : public TStream {
  KZ_CLASS(TGBufferStream, TStream)
 public:
  explicit TGBufferStream(TStream* Stream);
  ~TGBufferStream() override;

  std::int32_t Read(void* Buffer, std::int32_t Count) override;
  /// Answers the count written; a short write to the underlying stream ends it early.
  std::int32_t Write(const void* Buffer, std::int32_t Count) override;
  /// Raises EStreamError "Invalid Origin Point specified: %s" for an origin outside 0..2
  /// and "Error seeking in buffer" when the pending bytes cannot be written first.
  std::int64_t Seek(std::int64_t Offset, TSeekOrigin Origin) override;

  /// Writes pending bytes when the block holds some.
  void Close();
  bool IsEof();
  /// Logical position minus the underlying position: 0, the unread bytes read ahead
  /// (negative), or the bytes waiting to be written.
  std::int64_t GetBufferPosition() const;
  /// Steps back over the last consumed byte (two bytes for a character, low byte first)
  /// and stores the value there; raises EStreamError "Overflow on push back" when the block
  /// has no consumed byte (two for a character) to step over.
  virtual void PutBack(Byte Value);
  virtual void PutBack(Char Value);

  TBufferState GetState() const { return FState; }
  std::uint32_t GetBufferSize() const { return FBufferSize; }
  /// Flushes the block in every state (in the read state that writes the consumed bytes
  /// again at the underlying position: change the size before reading) and replaces it by
  /// an empty block of Value bytes. 0 and sizes above 2^31 - 1 raise EStreamError
  /// "Invalid buffer size specified: %s"; the current size does nothing at all.
  void SetBufferSize(std::uint32_t Value);
  const TNotifyEvent& GetOnFillBuffer() const { return FOnFillBuffer; }
  void SetOnFillBuffer(TNotifyEvent Value) { FOnFillBuffer = std::move(Value); }
  const TNotifyEvent& GetOnFlushBuffer() const { return FOnFlushBuffer; }
  void SetOnFlushBuffer(TNotifyEvent Value) { FOnFlushBuffer = std::move(Value); }
  TStream* GetStream() const { return FStream; }

 protected:
  /// Reads the next block from the underlying stream; answers the bytes read.
  virtual std::int32_t FillBuffer();
  /// Writes the bytes before the block position; answers whether all were written.
  virtual bool FlushBuffer();
  /// Makes the whole block available for writing.
  virtual bool PrepareBuffer();

  TStream* FStream;
  std::unique_ptr<Byte[]> FBuffer;
  Byte* FBufferPtr = nullptr;
  Byte* FBufferEnd;
  TBufferState FState = bsUnknown;
  TNotifyEvent FOnFillBuffer;
  TNotifyEvent FOnFlushBuffer;
  std::uint32_t FBufferSize = 8192;
};

}  // namespace kz
