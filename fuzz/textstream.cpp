// Every reader of the text stream over arbitrary bytes, under each encoding and block size:
// characters, lines, tokens, blanks, numbers and put-backs in an order the input chooses.
// Promises checked: lines are the characters split at CR, LF and CR LF; a character put
// back reads again; an integer read writes back and reads again the same; the stream's
// readers answer as a subclass does, which reads every character a byte at a time.
#include <memory>

#include "FuzzSupport.h"
#include "GStreams/GStreams.h"
#include "Runtime/Text.h"

using namespace kz;
using kzfuzz::Check;
using kzfuzz::EncodingOf;

namespace {

// Reads through Read a byte at a time: the class reads from its block directly.
class TByteReader : public TGTextStream {
  KZ_CLASS(TByteReader, TGTextStream)
 public:
  using TGTextStream::TGTextStream;
};

template <class TReader = TGTextStream>
struct TText {
  TText(const TBytes& Bytes, TEncoding* Enc, std::uint32_t Block) : M(Bytes), S(&M, Enc) { S.SetBufferSize(Block); }
  TMemoryStream M;
  TReader S;
};

// One reading step chosen by Op and A; answers what it read, or the error it raised.
String Step(TGTextStream& S, std::uint8_t Op, std::uint8_t A) {
  try {
    switch (Op % 9) {
      case 0: {
        const Char C = S.GetChar();
        if (C && kzfuzz::Accepts([&] { S.PutBack(C); })) Check(S.GetChar() == C, "a put-back character reads differently");
        return String(1, C);
      }
      case 1: return S.GetLine();
      case 2: return S.GetToken();
      case 3: return S.GetToken(String(1, static_cast<Char>(A)), A & 1);
      case 4: S.SkipSpaces(); return u"";
      case 5: return S.SkipInLineSpaces() ? u"1" : u"0";
      case 6: {
        const std::int32_t V = S.GetInteger();
        TMemoryStream Out;
        TGTextStream W(&Out, TEncoding::UTF8());
        W.Put(V).Close();
        Out.SetPosition(0);
        TGTextStream R(&Out, TEncoding::UTF8());
        Check(R.GetInteger() == V, "an integer does not read back");
        return IntToStr(V);
      }
      case 7: return FloatToStr(S.GetFloat());
      default: S.PutBack(static_cast<Char>(A)); return u"";
    }
  } catch (const Exception& E) {
    return u"!" + E.Message();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  kzfuzz::TInput In(Data, Size);
  TEncoding* Enc = EncodingOf(In.Byte());
  const std::uint32_t Block = 1 + In.Byte() % 64;
  const std::size_t Ops = In.Byte() % 32;
  const std::size_t OpBytes = std::min(Ops * 2, In.Left());
  kzfuzz::TInput Program(In.Rest(), OpBytes);
  const TBytes Content(In.Rest() + OpBytes, In.Rest() + In.Left());

  // Lines against characters: split the characters up to the first 0 at the line ends.
  {
    TText<> Chars(Content, Enc, Block), Lines(Content, Enc, Block);
    String All;
    for (Char C; Chars.S.GetChar(C);) All += C;
    kzfuzz::Accepts([&] {
      std::size_t Pos = 0;
      while (Pos < All.size()) {
        std::size_t End = All.find_first_of(u"\r\n", Pos);
        if (End == String::npos) End = All.size();
        Check(Lines.S.GetLine() == All.substr(Pos, End - Pos), "a line differs from its characters");
        Pos = End < All.size() && All[End] == u'\r' && End + 1 < All.size() && All[End + 1] == u'\n' ? End + 2 : End + 1;
      }
    });
  }

  TText<> T(Content, Enc, Block);
  TText<TByteReader> Bytes(Content, Enc, Block);
  for (std::size_t i = 0; i < Ops; ++i) {
    const std::uint8_t Op = Program.Byte(), A = Program.Byte();
    Check(Step(T.S, Op, A) == Step(Bytes.S, Op, A), "a reader answers differently from the byte-at-a-time one");
  }
  return 0;
}
