// Buffered and text streams over any byte stream, and the filer that keeps each collection
// item's class.
#pragma once

#include <cstdint>
#include <memory>

#include "Runtime/Runtime.h"

namespace kz {

namespace GStreams {
KZ_UNIT_SCOPE(GStreams)
KZ_RESOURCESTRING(SInvalidBufferState, u"Invalid buffer state")
KZ_RESOURCESTRING(SInvalidOriginPoint, u"Invalid Origin Point specified: %s")
KZ_RESOURCESTRING(SErrorSeekingInBuffer, u"Error seeking in buffer")
KZ_RESOURCESTRING(SInvalidBufferSize, u"Invalid buffer size specified: %s")
KZ_RESOURCESTRING(SPushBackOverflow, u"Overflow on push back")
KZ_RESOURCESTRING(SInvalidEncodingEOF, u"Invalid stream encoding determination, EOF reached")
/// Declared for clients of the unit; nothing here raises it.
KZ_RESOURCESTRING(SInvalidSeekEOF, u"Invalid seek command, EOF reached")
KZ_RESOURCESTRING(SNoWriterDefined, u"No TWriter defined for filer")
KZ_RESOURCESTRING(SNoReaderDefined, u"No TReader defined for filer")
/// One level of indentation for text the unit's clients write.
inline constexpr StringView IndentString = u"  ";
}  // namespace GStreams

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

/// A buffered stream that knows its text encoding. Created without an encoding, it detects
/// one from a byte-order mark on the first read (and skips the mark), or takes a string
/// stream's own encoding, or falls back to the default encoding; on the first write into an
/// empty block it writes the encoding's preamble unless that question is settled. Created
/// with an encoding, the question is settled until a seek lands on position 0. The encoding
/// is not owned; the underlying stream is owned when the text stream opened it by name.
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
};

/// Writes a collection so that each item reads back with its own class, not only the
/// collection's item class: before an item's properties it stores a hidden property
/// "HiddenItemClass" naming the item's class. Item classes must be registered (RegisterClass)
/// for reading. The reader and writer are not owned.
class TGSpecialFiler : public TObject {
  KZ_CLASS(TGSpecialFiler, TObject)
 public:
  TGSpecialFiler() = default;
  explicit TGSpecialFiler(TWriter* Writer) : FWriter(Writer) {}
  explicit TGSpecialFiler(TReader* Reader) : FReader(Reader) {}

  /// The collection marker; per item a list of the class-name property and the item's
  /// properties; the end of the list. Without a writer raises EStreamError
  /// "No TWriter defined for filer".
  void WriteCollection(TCollection* Value);
  /// Clears Collection (inside one update) and reads the items back, each created from
  /// its stored class name. Without a reader raises EStreamError "No TReader defined for
  /// filer"; an unregistered class raises EClassNotFound, and the items read so far stay.
  void ReadCollection(TCollection* Collection);

  TWriter* GetWriter() const { return FWriter; }
  void SetWriter(TWriter* Value) { FWriter = Value; }
  TReader* GetReader() const { return FReader; }
  void SetReader(TReader* Value) { FReader = Value; }

 private:
  TWriter* FWriter = nullptr;
  TReader* FReader = nullptr;
};

}  // namespace kz
