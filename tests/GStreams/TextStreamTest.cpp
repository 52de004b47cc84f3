#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "GStreams/GStreams.h"
#include "Runtime/Text.h"
#include "Runtime/Variants.h"

using namespace kz;

namespace {

// A text stream over the given bytes in one encoding.
struct TTextOver {
  explicit TTextOver(const std::string& Bytes, TEncoding* Enc = TEncoding::UTF8(), std::uint32_t Block = 8192)
      : M(TBytes(Bytes.begin(), Bytes.end())), S(&M, Enc) {
    if (Block != 8192) S.SetBufferSize(Block);
  }
  TMemoryStream M;
  TGTextStream S;
};

// What a writer put into its stream, as UTF-8.
struct TTextInto {
  TMemoryStream M;
  TGTextStream S{&M, TEncoding::UTF8()};
  std::string Text() {
    S.Close();
    return std::string(reinterpret_cast<const char*>(M.GetMemory()), static_cast<std::size_t>(M.GetSize()));
  }
};

}  // namespace

TEST(TextStream, LineEnds) {
  TTextOver A("ab\r\ncd");
  EXPECT_EQ(A.S.GetLine(), u"ab");
  EXPECT_EQ(A.S.GetLine(), u"cd");
  EXPECT_EQ(A.S.GetLine(), u"");
  TTextOver B("ab\r");
  EXPECT_EQ(B.S.GetLine(), u"ab");
  EXPECT_EQ(B.S.GetChar(), 0);
  TTextOver C("a\n\rb");
  EXPECT_EQ(C.S.GetLine(), u"a");
  EXPECT_EQ(C.S.GetLine(), u"");
  EXPECT_EQ(C.S.GetLine(), u"b");
  // A CR at the end of one block and a multi-byte character at the start of the next.
  TTextOver D("ab\r\xC3\xA9x", TEncoding::UTF8(), 3);
  EXPECT_EQ(D.S.GetLine(), u"ab");
  EXPECT_EQ(D.S.GetLine(), u"\u00E9x");
  TTextOver E("x\r\n\r\ny", TEncoding::UTF8());
  EXPECT_FALSE(E.S.SkipInLineSpaces());
  EXPECT_EQ(E.S.GetChar(), u'x');
  EXPECT_TRUE(E.S.SkipInLineSpaces());  // one line end only
  EXPECT_TRUE(E.S.SkipInLineSpaces());
  EXPECT_EQ(E.S.GetChar(), u'y');
}

TEST(TextStream, CharactersUnderEachEncoding) {
  // UTF-8: one, two and three bytes, an ill-formed lone byte.
  TTextOver U("a\xC3\xA9\xE2\x82\xAC\x80z");
  std::u16string Got;
  for (Char C; U.S.GetChar(C);) Got += C;
  EXPECT_EQ(Got, u"a\u00E9\u20AC\uFFFDz");
  // Straight from the block or gathered byte by byte across blocks: the same characters.
  const std::string Mixed = "a\xC3\xA9\xE2\x82\xAC\x80\xEF\xBF\xBDz\xC3";
  TTextOver Whole(Mixed), Bytewise(Mixed, TEncoding::UTF8(), 1);
  for (Char C; Whole.S.GetChar(C);) EXPECT_EQ(Bytewise.S.GetChar(), C);
  EXPECT_EQ(Bytewise.S.GetChar(), 0);
  // A surrogate pair, or an unfinished sequence followed by more: the rest is skipped.
  TTextOver P("a\xF0\x9F\x98\x80" "bc");
  EXPECT_EQ(P.S.GetChar(), u'a');
  EXPECT_EQ(P.S.GetChar(), 0);
  EXPECT_EQ(P.S.GetLine(), u"");
  TTextOver T("\xE2\x82" "abc");
  EXPECT_EQ(T.S.GetChar(), 0);
  // UTF-16 both orders, odd byte at the end; Windows-1252 high bytes.
  TTextOver L(std::string("h\0\xAC\x20", 4) + "x", TEncoding::Unicode());
  EXPECT_EQ(L.S.GetChar(), u'h');
  EXPECT_EQ(L.S.GetChar(), u'\u20AC');
  EXPECT_EQ(L.S.GetChar(), 0);
  TTextOver B(std::string("\0h\x20\xAC", 4), TEncoding::BigEndianUnicode(), 3);
  EXPECT_EQ(B.S.GetLine(), u"h\u20AC");
  TTextOver W("\x80\xE9", TEncoding::Default());
  EXPECT_EQ(W.S.GetLine(), u"\u20AC\u00E9");
  // A byte-order mark chooses the encoding.
  TTextOver M("\xEF\xBB\xBF\xC3\xA9", nullptr);
  EXPECT_EQ(M.S.GetLine(), u"\u00E9");
}

TEST(TextStream, TokensNumbersAndPutBack) {
  TTextOver A("  x");
  EXPECT_EQ(A.S.GetToken(), u"");
  EXPECT_EQ(A.S.GetToken(), u"");  // never advances over a delimiter
  A.S.SkipSpaces();
  EXPECT_EQ(A.S.GetToken(), u"x");
  A.S.SkipSpaces();  // at the end: silent
  A.S.SetDelimiters(u",");
  EXPECT_EQ(A.S.GetDelimiters(), u", ");
  A.S.SetDelimiters(u"; ");
  EXPECT_EQ(A.S.GetDelimiters(), u"; ");

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
  EXPECT_DOUBLE_EQ(N.S.GetFloat(), -25.0);
  EXPECT_THROW((void)N.S.GetInteger(), EConvertError);
  EXPECT_THROW((void)N.S.GetInteger(), EConvertError);  // empty text at the end

  // A put-back re-encodes; a block that has not consumed enough bytes refuses whole.
  TTextOver C("\xE2\x82\xAC" "b");
  EXPECT_THROW(C.S.PutBack(u'x'), EStreamError);
  EXPECT_EQ(C.S.GetChar(), u'\u20AC');
  C.S.PutBack(u'\u00E9');  // two bytes where three were read
  EXPECT_EQ(C.S.GetLine(), u"\u00E9b");
  TTextOver D("ab", nullptr);
  EXPECT_EQ(D.S.GetChar(), u'a');
  try {
    D.S.PutBack(u'\u20AC');  // three bytes in UTF-8... here the default single-byte encoding
    EXPECT_EQ(D.S.GetChar(), u'\u20AC');
  } catch (const EStreamError&) {
    ADD_FAILURE() << "one byte was consumed, one is needed";
  }
}

TEST(TextStream, Writers) {
  TTextInto A;
  A.S.WriteArgs({1, 'x', 2}).WriteLn().Put(u"\u00E9").PutTab().Put(1.5).PutSpace().Put(-7).PutLine(u"!");
  A.S.FormatLn(u"%d-%s", {3, u"z"});
  EXPECT_EQ(A.Text(), "1 x2\r\n\xC3\xA9\t1.5 -7!\r\n3-z\r\n");

  TObject Obj;
  TVariant V(std::int32_t(5));
  const char16_t* PW = u"gone";
  const char* PC = reinterpret_cast<const char*>(std::uintptr_t(0x10041));
  TTextInto B;
  B.S.WriteArgs({true, false, u'w', String(u"u"), TVarRec::WideString(u"ws"), TVarRec::ShortString("ss"),
                 std::int64_t(-1) << 40, TVarRec::Currency(25000), &Obj, &TStream::ClassInfo(), V,
                 TVarRec::PWideChar(PW), PC, AnsiString("h\0i\0!", 5)});
  EXPECT_EQ(B.Text(), "True False w u ws ss -1099511627776 2.5 (TObject) TStream 5  A hi");

  TTextInto C;
  C.S.WriteArgs({1.25, nullptr});
  const std::string T = C.Text();
  const auto Sp = T.find(' ');
  ASSERT_NE(Sp, std::string::npos);
  EXPECT_NO_THROW((void)StrToInt(Utf8ToString(T.substr(0, Sp))));  // a reference, not 1.25
  EXPECT_NE(T.substr(0, Sp), "1.25");
  EXPECT_EQ(T.substr(Sp + 1), StringToUtf8(Format(u"%p", {static_cast<const void*>(nullptr)})));
  TObject* Null = nullptr;
  EXPECT_THROW(C.S.WriteArgs({Null}), EAccessViolation);

  // Without an encoding the first write settles on the default one.
  TMemoryStream M;
  TGTextStream D(&M);
  D.Put(u"\u20AC");
  D.Close();
  ASSERT_EQ(M.GetSize(), 1);
  EXPECT_EQ(M.GetMemory()[0], 0x80);
}

TEST(StreamTokens, ToStringEqualsAssignAndList) {
  auto Make = [](TStreamTokenType T, double N, const String& Text, int Line = 1) {
    TIntfPtr<IBaseStreamToken> R(new TBaseStreamToken);
    R->SetDataType(T);
    R->SetNumber(N);
    R->SetText(Text);
    R->SetLineNumber(Line);
    return R;
  };
  EXPECT_EQ(Make(sttString, 0, u"abc")->ToString(), u"\\\"abc\"\\");
  EXPECT_EQ(Make(sttInteger, -2.7, u"")->ToString(), u"-2");
  EXPECT_EQ(Make(sttInteger, 1e300, u"")->ToString(), FloatToStr(1e300));
  EXPECT_EQ(Make(sttFloat, 1, u"")->ToString(), u"1.0000");
  EXPECT_EQ(Make(sttVariable, 0, u"v")->ToString(), u"?v");
  EXPECT_EQ(Make(sttAtom, 0, u"")->ToString(), String(1, Char(1)));
  EXPECT_EQ(Make(sttNone, 0, u"")->ToString(), String(1, Char(0)));
  EXPECT_EQ(Make(sttAtom, 0, u"+")->ToString(), u"+");

  TIntfPtr<IBaseStreamToken> A = Make(sttAtom, 3, u"a"), B = Make(sttAtom, 3, u"b");
  EXPECT_TRUE(A->Equals(B));
  EXPECT_FALSE(A->Equals(Make(sttAtom, 3, u"a", 2)));
  EXPECT_FALSE(A->Equals(nullptr));
  A->SetWhitespace(u"  ");
  A->SetTag(9);
  TIntfPtr<IBaseStreamToken> C = Query<IBaseStreamToken>(A->Clone());
  EXPECT_EQ(C->GetText(), u"a");
  EXPECT_EQ(C->GetTag(), 9);
  EXPECT_EQ(C->GetWhitespace(), u"");  // never copied
  TStringList NotAToken;
  EXPECT_THROW(dynamic_cast<TBaseStreamToken*>(C.get())->Assign(&NotAToken), EConvertError);

  TIntfPtr<IBaseStreamTokenList> L(new TBaseStreamTokenList);
  EXPECT_EQ(L->ToString(), u"");
  L->Add(A);
  L->Add(Make(sttInteger, 4, u""));
  EXPECT_EQ(L->ToString(), u"a 4 ");
  TIntfPtr<IBaseStreamTokenList> L2 = Query<IBaseStreamTokenList>(L->Clone());
  EXPECT_TRUE(L->Equals(L2));
  L2->Put(0, B);
  EXPECT_TRUE(L->Equals(L2));  // tokens equal whatever their text
  L2->Append(L);
  EXPECT_EQ(L2->GetValueCount(), 4);
  EXPECT_EQ(L2->Get(2).get(), A.get());  // shared, not copied
  EXPECT_FALSE(L->Equals(L2));
  L2->Delete(3);
  L2->Delete(2);
  L2->Insert(0, nullptr);
  L->Insert(0, nullptr);
  EXPECT_TRUE(L->Equals(L2));
  L->Put(0, A);
  EXPECT_FALSE(L->Equals(L2));
  EXPECT_EQ(L->Remove(A), 0);
  EXPECT_EQ(L->IndexOf(A), 0);
  constexpr TStreamTokenTypes Numbers{sttInteger, sttFloat};
  EXPECT_TRUE(Numbers.Contains(sttFloat));
  EXPECT_FALSE(Numbers.Contains(sttString));
}
