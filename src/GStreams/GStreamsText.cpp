#include <cstdint>
#include <memory>

#include "GStreams/TextStream.h"

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

}  // namespace kz
