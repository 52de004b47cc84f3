// TGTextStream: a buffered stream that knows its text encoding.
#pragma once

#include <cstdint>
#include <memory>

#include "GStreams/BufferStream.h"
#include "Runtime/Encodings.h"
#include "Runtime/Streams.h"
#include "Runtime/Types.h"

namespace kz {

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

}  // namespace kz
