// The buffered and text streams over arbitrary bytes, in every encoding, with reads, writes,
// put-backs, seeks and block-size changes mixed in; and the encodings decoding the same
// bytes. The stream answers within its promises or raises a library exception.
#include <cstring>
#include <memory>

#include "FuzzSupport.h"
#include "GStreams/GStreams.h"

using namespace kz;
using kzfuzz::Check;
using kzfuzz::EncodingOf;

namespace {

void CheckDecoding(TEncoding* E, const Byte* P, std::int32_t N) {
  const String S = E->GetString(P, N);
  Check(E->GetCharCount(P, N) <= static_cast<std::int32_t>(S.size()), "counted more characters than decoded");
  const TBytes Again = E->GetBytes(S);
  Check(E->GetByteCount(S) == static_cast<std::int32_t>(Again.size()), "byte count differs from the bytes");
  Check(E->GetString(Again.data(), static_cast<std::int32_t>(Again.size())) == S,
        "decoded text does not survive encoding and decoding");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  kzfuzz::TInput In(Data, Size);
  const std::uint8_t Setup = In.Byte();
  const std::size_t Ops = In.Byte() % 48;
  // Each operation takes four bytes; what follows them is the underlying stream's content.
  const std::size_t OpBytes = std::min(Ops * 4, In.Left());
  kzfuzz::TInput Program(In.Rest(), OpBytes);
  const TBytes Content(In.Rest() + OpBytes, In.Rest() + In.Left());

  for (std::uint8_t K = 1; K < 5; ++K)
    CheckDecoding(EncodingOf(K), Content.data(), static_cast<std::int32_t>(Content.size()));
  TEncoding* Detected = nullptr;
  const std::int32_t Mark =
      TEncoding::GetBufferEncoding(Content.data(), static_cast<std::int32_t>(Content.size()), Detected);
  Check(Detected && Mark >= 0 && static_cast<std::size_t>(Mark) <= Content.size(), "detection out of bounds");

  TMemoryStream Under(Content);
  const bool Text = Setup & 0x80;
  TEncoding* Enc = EncodingOf(Setup & 0x7F);
  std::unique_ptr<TGBufferStream> B = Text ? std::make_unique<TGTextStream>(&Under, Enc)
                                           : std::make_unique<TGBufferStream>(&Under);
  auto* T = dynamic_cast<TGTextStream*>(B.get());
  Byte Buf[512];
  for (std::size_t i = 0; i < Ops; ++i) {
    const std::uint8_t Op = Program.Byte();
    const std::uint8_t A = Program.Byte();
    const std::uint8_t C = Program.Byte();
    const std::uint8_t D = Program.Byte();
    const std::int64_t Offset = static_cast<std::int16_t>(C << 8 | D);
    kzfuzz::Accepts([&] {
      switch (Op % 10) {
        case 0:
        case 1: {
          const std::int32_t N = B->Read(Buf, A);
          Check(N >= 0 && N <= A, "read more than asked");
          if (N) CheckDecoding(Enc ? Enc : TEncoding::UTF8(), Buf, N);
          break;
        }
        case 2: B->PutBack(static_cast<Byte>(C)); break;
        case 3: B->PutBack(static_cast<Char>(C << 8 | D)); break;
        case 4: B->Seek(Offset, static_cast<TSeekOrigin>(A % 4)); break;
        case 5: {
          std::memset(Buf, C, sizeof Buf);
          const std::int32_t N = B->Write(Buf, A);
          Check(N >= 0 && N <= A, "wrote more than given");
          break;
        }
        case 6: B->SetBufferSize(A % 64); break;
        case 7:
          (void)B->IsEof();
          (void)B->GetBufferPosition();
          (void)B->GetPosition();
          break;
        case 8:
          if (T) T->SeekExcludePreamble(Offset, static_cast<TSeekOrigin>(A % 4));
          else B->Close();
          break;
        case 9:
          if (T) {
            (void)T->PreambleSize();
            if (A & 1) T->SetEncoding(EncodingOf(C));
          }
          break;
      }
    });
  }
  kzfuzz::Accepts([&] { B->Close(); });
  return 0;
}
