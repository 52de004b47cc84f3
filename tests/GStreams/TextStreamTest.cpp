#include <gtest/gtest.h>

#include <string>

#include "GStreams/GStreams.h"
#include "Runtime/Text.h"
#include "Runtime/Variants.h"

using namespace kz;

namespace {

// A subclass: it reads every character a byte at a time through Read.
class TByteReader : public TGTextStream {
  KZ_CLASS(TByteReader, TGTextStream)
 public:
  using TGTextStream::TGTextStream;
};

// A text stream over the given bytes in one encoding.
template <class TReader = TGTextStream>
struct TTextOverT {
  explicit TTextOverT(const std::string& Bytes, TEncoding* Enc = TEncoding::UTF8(), std::uint32_t Block = 64)
      : M(TBytes(Bytes.begin(), Bytes.end())), S(&M, Enc) {
    S.SetBufferSize(Block);
  }
  String Lines(int N) {
    String R = S.GetLine();
    while (--N > 0) R += u"|" + S.GetLine();
    return R;
  }
  String Chars() {
    String R;
    for (Char C; S.GetChar(C);) R += C;
    return R;
  }
  TMemoryStream M;
  TReader S;
};
using TTextOver = TTextOverT<>;

// What Write puts into a UTF-8 text stream.
template <class F>
std::string Written(F&& Write) {
  TMemoryStream M;
  TGTextStream S(&M, TEncoding::UTF8());
  Write(S);
  S.Close();
  return std::string(reinterpret_cast<const char*>(M.GetMemory()), static_cast<std::size_t>(M.GetSize()));
}

}  // namespace

TEST(TextStream, LinesAndBlanks) {
  TTextOver A("ab\r\ncd\r");
  EXPECT_EQ(A.Lines(3), u"ab|cd|");
  TTextOver C("a\n\rb");
  EXPECT_EQ(C.Lines(3), u"a||b");
  // A CR at the end of one block, a two-byte character at the start of the next.
  TTextOver D("ab\r\xC3\xA9x", TEncoding::UTF8(), 3);
  EXPECT_EQ(D.Lines(2), u"ab|\u00E9x");
  TTextOver E("x\r\n\r\ny");
  EXPECT_FALSE(E.S.SkipInLineSpaces());
  EXPECT_EQ(E.S.GetChar(), u'x');
  EXPECT_TRUE(E.S.SkipInLineSpaces());  // one line end only
  EXPECT_TRUE(E.S.SkipInLineSpaces());
  EXPECT_EQ(E.S.GetChar(), u'y');
}

TEST(TextStream, CharactersUnderEachEncoding) {
  const std::string Mixed = "a\xC3\xA9\xE2\x82\xAC\x80\xEF\xBF\xBDz\xC3";
  EXPECT_EQ(TTextOver(Mixed).Chars(), u"a\u00E9\u20AC\uFFFD\uFFFDz");
  EXPECT_EQ(TTextOver(Mixed, TEncoding::UTF8(), 1).Chars(), u"a\u00E9\u20AC\uFFFD\uFFFDz");  // byte by byte
  // A surrogate pair, or an unfinished sequence followed by more: the rest is skipped.
  TTextOver P("a\xF0\x9F\x98\x80" "bc");
  EXPECT_EQ(P.Chars(), u"a");
  EXPECT_EQ(P.S.GetLine(), u"");
  EXPECT_EQ(TTextOver("\xE2\x82" "abc").Chars(), u"");
  EXPECT_EQ(TTextOver(std::string("h\0\xAC\x20", 4) + "x", TEncoding::Unicode()).Chars(), u"h\u20AC");
  EXPECT_EQ(TTextOver(std::string("\0h\x20\xAC", 4), TEncoding::BigEndianUnicode(), 3).Chars(), u"h\u20AC");
  EXPECT_EQ(TTextOver("\x80\xE9", TEncoding::Default()).Chars(), u"\u20AC\u00E9");
  EXPECT_EQ(TTextOver("\xEF\xBB\xBF\xC3\xA9", nullptr).Chars(), u"\u00E9");  // the mark decides
}

TEST(TextStream, BlockReadsMatchByteReads) {
  const std::string Texts[] = {
      "plain line\nlonger than eight bytes here\r\nthird\rfourth",
      "tab\tinside\x01" "control\nx\n",
      std::string("a\r\0b\nc\r", 7),                 // a CR before a 0 and at the end
      "ab\r\x80" "c\n\r\xC3\xA9\n",                  // a CR before bytes that re-encode
      "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC and a long ASCII tail\n\xC3",
      "x\xF0\x9F\x98\x80y\n",                         // a surrogate pair
      "0123456789abcdef0123\xE2\x82\nabc",
      "\xEF\xBB\xBFmarked\nline\x7F\x0E\r\n",
      std::string("\xFF\xFEh\0i\0\n\0\r\0\xAC\x20", 12),
  };
  TEncoding* const Encodings[] = {nullptr, TEncoding::Default(), TEncoding::UTF8(), TEncoding::Unicode(),
                                  TEncoding::BigEndianUnicode()};
  for (const std::string& T : Texts)
    for (TEncoding* E : Encodings)
      for (std::uint32_t Block : {1u, 3u, 8u, 64u}) {
        SCOPED_TRACE(T + " / " + std::to_string(Block));
        // Each line, or the error that a put-back after a CR raised.
        const auto Lines = [&](TGTextStream& S) {
          String R;
          for (int i = 0; i < 8; ++i) try {
              R += S.GetLine() + u"|";
            } catch (const Exception& X) {
              R += X.Message() + u"|";
            }
          return R + (S.GetEncoding() ? S.GetEncoding()->GetEncodingName() : u"none");
        };
        TTextOver Block1(T, E, Block), Chars(T, E, Block);
        TTextOverT<TByteReader> Bytes1(T, E, Block), ByteChars(T, E, Block);
        EXPECT_EQ(Lines(Block1.S), Lines(Bytes1.S));
        EXPECT_EQ(Chars.Chars(), ByteChars.Chars());
      }
}

TEST(TextStream, TokensNumbersAndPutBack) {
  TTextOver A("  x");
  EXPECT_EQ(A.S.GetToken(), u"");
  EXPECT_EQ(A.S.GetToken(), u"");  // never advances over a delimiter
  A.S.SkipSpaces();
  EXPECT_EQ(A.S.GetToken(), u"x");
  A.S.SetDelimiters(u",");
  EXPECT_EQ(A.S.GetDelimiters(), u", ");

  TTextOver B("a;b c");
  EXPECT_EQ(B.S.GetToken(u";", true), u"a");
  EXPECT_EQ(B.S.GetDelimiters(), u" \r\n\t");
  EXPECT_EQ(B.S.GetChar(), u';');
  EXPECT_EQ(B.S.GetToken(u";", false), u"b");
  EXPECT_EQ(B.S.GetDelimiters(), u"; ");

  TTextOver N(" 42 17\n-2.5e1 x");
  EXPECT_EQ(N.S.GetInteger(), 42);
  EXPECT_EQ(N.S.GetChar(), u' ');
  EXPECT_EQ(N.S.GetInteger(), 17);
  EXPECT_EQ(N.S.GetFloat(), -25.0);
  EXPECT_THROW((void)N.S.GetInteger(), EConvertError);

  // A put-back re-encodes; a block that has not consumed enough bytes refuses it whole.
  TTextOver C("\xE2\x82\xAC" "b");
  EXPECT_THROW(C.S.PutBack(u'x'), EStreamError);
  EXPECT_EQ(C.S.GetChar(), u'\u20AC');
  C.S.PutBack(u'\u00E9');
  EXPECT_EQ(C.S.GetLine(), u"\u00E9b");
  TTextOver D("ab", nullptr);
  (void)D.S.GetChar();
  D.S.PutBack(u'\u20AC');  // one byte in the default encoding
  EXPECT_EQ(D.S.GetChar(), u'\u20AC');
}

TEST(TextStream, Writers) {
  EXPECT_EQ(Written([](TGTextStream& S) {
              S.WriteArgs({1, 'x', 2}).WriteLn().Put(u"\u00E9").PutTab().Put(1.5).PutSpace().Put(-7).PutLine(u"!");
              S.FormatLn(u"%d-%s", {3, u"z"});
            }),
            "1 x2\r\n\xC3\xA9\t1.5 -7!\r\n3-z\r\n");
  TObject Obj;
  TVariant V(std::int32_t(5));
  const char* PC = reinterpret_cast<const char*>(std::uintptr_t(0x10041));
  EXPECT_EQ(Written([&](TGTextStream& S) {
              S.WriteArgs({true, false, u'w', String(u"u"), TVarRec::WideString(u"ws"), TVarRec::ShortString("ss"),
                           std::int64_t(-1) << 40, TVarRec::Currency(25000), &Obj, &TStream::ClassInfo(), V,
                           TVarRec::PWideChar(u"gone"), PC, AnsiString("h\0i\0!", 5)});
            }),
            "True False w u ws ss -1099511627776 2.5 (TObject) TStream 5  A hi");
  const std::string T = Written([](TGTextStream& S) { S.WriteArgs({1.25, nullptr}); });
  const std::string Ref = T.substr(0, T.find(' '));
  EXPECT_NO_THROW((void)StrToInt(Utf8ToString(Ref)));  // a reference, not 1.25
  EXPECT_EQ(T.substr(Ref.size() + 1), StringToUtf8(Format(u"%p", {static_cast<const void*>(nullptr)})));
  TObject* Null = nullptr;
  EXPECT_THROW(Written([&](TGTextStream& S) { S.WriteArgs({Null}); }), EAccessViolation);

  TMemoryStream M;  // without an encoding the first write settles on the default one
  TGTextStream(&M).Put(u"\u20AC");
  EXPECT_EQ(M.GetSize() == 1 ? M.GetMemory()[0] : 0, 0x80);
}

TEST(StreamTokens, ToStringEqualsAssignAndList) {
  auto Make = [](TStreamTokenType T, double N, const String& Text, int Line = 1) {
    auto* R = new TBaseStreamToken;
    R->SetDataType(T), R->SetNumber(N), R->SetText(Text), R->SetLineNumber(Line);
    return TIntfPtr<IBaseStreamToken>(R);
  };
  EXPECT_EQ(Make(sttString, 0, u"abc")->ToString(), u"\\\"abc\"\\");
  EXPECT_EQ(Make(sttInteger, -2.7, u"")->ToString(), u"-2");
  EXPECT_EQ(Make(sttInteger, 1e300, u"")->ToString(), FloatToStr(1e300));
  EXPECT_EQ(Make(sttFloat, 1, u"")->ToString(), u"1.0000");
  EXPECT_EQ(Make(sttVariable, 0, u"v")->ToString(), u"?v");
  EXPECT_EQ(Make(sttAtom, 0, u"")->ToString() + Make(sttNone, 0, u"")->ToString(), String(u"\x01\x00", 2));
  TIntfPtr<IBaseStreamToken> A = Make(sttAtom, 3, u"a"), B = Make(sttAtom, 3, u"b");
  EXPECT_TRUE(A->Equals(B));
  EXPECT_FALSE(A->Equals(Make(sttAtom, 3, u"a", 2)));
  A->SetWhitespace(u"  ");
  A->SetTag(9);
  TIntfPtr<IBaseStreamToken> C = Query<IBaseStreamToken>(A->Clone());
  EXPECT_EQ(C->GetText() + C->GetWhitespace(), u"a");  // white space never copied
  EXPECT_EQ(C->GetTag(), 9);

  TIntfPtr<IBaseStreamTokenList> L(new TBaseStreamTokenList);
  EXPECT_EQ(L->ToString(), u"");
  L->Add(A);
  L->Add(Make(sttInteger, 4, u""));
  EXPECT_EQ(L->ToString(), u"a 4 ");
  TIntfPtr<IBaseStreamTokenList> L2 = Query<IBaseStreamTokenList>(L->Clone());
  L2->Put(0, B);
  EXPECT_TRUE(L->Equals(L2));  // tokens equal whatever their text
  L2->Append(L);
  EXPECT_EQ(L2->Get(2).get(), A.get());  // shared, not copied
  EXPECT_FALSE(L->Equals(L2));
  L2->Delete(3);
  L2->Put(2, nullptr);
  L->Add(A);
  EXPECT_FALSE(L->Equals(L2));  // an absent item equals only an absent one
}
