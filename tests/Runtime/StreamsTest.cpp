#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "Runtime/Runtime.h"

using namespace kz;

namespace {

String Decode(TEncoding* E, const TBytes& B) { return E->GetString(B.data(), static_cast<std::int32_t>(B.size())); }
std::int32_t Count(TEncoding* E, const TBytes& B) {
  return E->GetCharCount(B.data(), static_cast<std::int32_t>(B.size()));
}

}  // namespace

TEST(Encodings, EveryEncodingRoundTripsItsWholeRange) {
  // Windows-1252: all 256 bytes decode and re-encode to themselves.
  TBytes All;
  for (int b = 0; b < 256; ++b) All.push_back(static_cast<Byte>(b));
  const String Ansi = Decode(TEncoding::Default(), All);
  ASSERT_EQ(Ansi.size(), 256u);
  EXPECT_EQ(Ansi[0x80], u'\u20AC');
  EXPECT_EQ(Ansi[0x81], u'\u0081');
  EXPECT_EQ(TEncoding::Default()->GetBytes(Ansi), All);
  EXPECT_EQ(TEncoding::Default()->GetBytes(u"\u4E2D"), TBytes{'?'});

  // The Unicode encodings: every code point, supplementary ones as surrogate pairs.
  String Every;
  for (char32_t Cp = 0; Cp <= 0x10FFFF; ++Cp) {
    if (Cp >= 0xD800 && Cp <= 0xDFFF) continue;
    if (Cp >= 0x10000) {
      Every.push_back(static_cast<Char>(0xD800 + ((Cp - 0x10000) >> 10)));
      Every.push_back(static_cast<Char>(0xDC00 + ((Cp - 0x10000) & 0x3FF)));
    } else {
      Every.push_back(static_cast<Char>(Cp));
    }
  }
  for (TEncoding* E : {TEncoding::UTF8(), TEncoding::Unicode(), TEncoding::BigEndianUnicode()}) {
    const TBytes B = E->GetBytes(Every);
    EXPECT_EQ(E->GetByteCount(Every), static_cast<std::int32_t>(B.size())) << StringToUtf8(E->GetEncodingName());
    EXPECT_EQ(Count(E, B), static_cast<std::int32_t>(Every.size()));
    EXPECT_TRUE(Decode(E, B) == Every) << StringToUtf8(E->GetEncodingName());
  }
  EXPECT_EQ(TEncoding::BigEndianUnicode()->GetBytes(u"A"), (TBytes{0x00, 0x41}));
  EXPECT_EQ(TEncoding::Unicode()->GetBytes(u"A"), (TBytes{0x41, 0x00}));
}

TEST(Encodings, IllFormedInputBecomesReplacementAndCountsStopAtIncompleteTails) {
  TEncoding* U8 = TEncoding::UTF8();
  // Overlong, encoded surrogate, beyond U+10FFFF, stray continuation byte.
  EXPECT_EQ(Decode(U8, {0xC0, 0xAF, 'a'}), u"\uFFFD\uFFFDa");
  EXPECT_EQ(Decode(U8, {0xED, 0xA0, 0x80}), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Decode(U8, {0xF4, 0x90, 0x80, 0x80}), u"\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Decode(U8, {0x80}), u"\uFFFD");
  // A sequence cut at the end decodes to U+FFFD but is not yet counted: more bytes may
  // complete it. A broken one inside the input counts as what it decodes to.
  EXPECT_EQ(Decode(U8, {'a', 0xE2, 0x82}), u"a\uFFFD");
  EXPECT_EQ(Count(U8, {'a', 0xE2, 0x82}), 1);
  EXPECT_EQ(Count(U8, {0xE2, 0x82, 'x'}), 2);
  EXPECT_EQ(Decode(TEncoding::Unicode(), {0x41, 0x00, 0x42}), u"A\uFFFD");
  EXPECT_EQ(Count(TEncoding::Unicode(), {0x41, 0x00, 0x42}), 1);
  EXPECT_EQ(U8->GetBytes(u"\xD800x"), (TBytes{0xEF, 0xBF, 0xBD, 'x'}));
  // Random garbage never decodes out of bounds (the sanitizer build checks the reads).
  std::mt19937 Rng(7);
  for (int i = 0; i < 2000; ++i) {
    TBytes B(static_cast<std::size_t>(Rng() % 9), 0);
    for (Byte& b : B) b = static_cast<Byte>(Rng());
    for (TEncoding* E : {TEncoding::Default(), U8, TEncoding::Unicode(), TEncoding::BigEndianUnicode()})
      EXPECT_LE(Count(E, B), static_cast<std::int32_t>(Decode(E, B).size()));
  }
}

TEST(Encodings, BufferEncodingDetection) {
  const struct {
    TBytes Data;
    TEncoding* Given;
    std::int32_t Skip;
    TEncoding* Found;
  } Cases[] = {{{0xFF, 0xFE, 'A', 0}, nullptr, 2, TEncoding::Unicode()},
               {{0xFE, 0xFF, 0, 'A'}, nullptr, 2, TEncoding::BigEndianUnicode()},
               {{0xEF, 0xBB, 0xBF, 'A'}, nullptr, 3, TEncoding::UTF8()},
               {{'A', 'B'}, nullptr, 0, TEncoding::Default()},
               {{0xEF, 0xBB}, nullptr, 0, TEncoding::Default()},  // a truncated mark is no mark
               {{0xFF, 0xFE, 'A', 0}, TEncoding::UTF8(), 0, TEncoding::UTF8()}};  // a given one is kept
  for (const auto& C : Cases) {
    TEncoding* E = C.Given;
    EXPECT_EQ(TEncoding::GetBufferEncoding(C.Data.data(), static_cast<std::int32_t>(C.Data.size()), E), C.Skip);
    EXPECT_EQ(E, C.Found);
  }
}

TEST(Streams, MemoryStringAndFileStreams) {
  TMemoryStream M;
  EXPECT_EQ(M.Write("hello", 5), 5);
  EXPECT_EQ(M.Seek(-2, soEnd), 3);
  char Buf[8] = {};
  EXPECT_EQ(M.Read(Buf, 8), 2);
  EXPECT_EQ(std::string(Buf, 2), "lo");
  M.SetPosition(7);  // past the end: a write fills the gap with zeros
  M.WriteBuffer("!", 1);
  EXPECT_EQ(M.GetSize(), 8);
  EXPECT_EQ(M.GetMemory()[5], 0);
  M.SetPosition(6);
  EXPECT_THROW(M.ReadBuffer(Buf, 3), EReadError);
  EXPECT_THROW(M.Seek(-1, soBeginning), EStreamError);
  EXPECT_THROW(M.Seek(0, 3), EStreamError);
  M.SetSize(2);
  EXPECT_EQ(M.GetPosition(), 2);
  TBytesStream Dst;
  M.SetPosition(1);
  EXPECT_EQ(Dst.CopyFrom(&M, 0), 2);  // 0 copies the whole source
  EXPECT_EQ(Dst.GetBytes(), (TBytes{'h', 'e'}));
  M.SetPosition(1);
  EXPECT_THROW(Dst.CopyFrom(&M, 5), EReadError);

  TStringStream S(u"h\u00e9");  // UTF-8 by default, positioned at the end
  S.WriteString(u"!");
  EXPECT_EQ(S.GetDataString(), u"h\u00e9!");
  EXPECT_EQ(TStringStream(u"ab", TEncoding::BigEndianUnicode(), true).GetBytes(), (TBytes{0, 'a', 0, 'b'}));
  // An owned private encoding is freed with the stream (the leak checker sees it).
  EXPECT_EQ(TStringStream(u"x", new TUnicodeEncoding, true).GetDataString(), u"x");

  const String Path = (std::filesystem::temp_directory_path() / "kz_streams_test.bin").u16string();
  {
    TFileStream F(Path, fmCreate);
    F.WriteBuffer("abcdef", 6);
    F.SetPosition(2);
    F.ReadBuffer(Buf, 2);  // read after write on one stream
    EXPECT_EQ(std::string(Buf, 2), "cd");
    F.WriteBuffer("X", 1);
    F.SetSize(5);
  }
  {
    TFileStream F(Path, fmOpenRead | fmShareDenyNone);
    EXPECT_EQ(F.Read(Buf, 8), 5);
    EXPECT_EQ(std::string(Buf, 5), "abcdX");
    EXPECT_EQ(F.Write("z", 1), 0);  // opened for reading only
  }
  std::filesystem::remove(std::filesystem::path(Path));
  const String Missing = (std::filesystem::temp_directory_path() / "kz_no_such_dir/missing.txt").u16string();
  try {
    TFileStream F(Missing, fmOpenRead);
    FAIL();
  } catch (const EFOpenError& E) {
    EXPECT_NE(E.Message().find(u"Cannot open file \"" + Missing + u"\""), String::npos);
  }
  EXPECT_THROW(TFileStream(Missing, fmCreate), EFCreateError);
  EXPECT_THROW(TFileStream(Missing, 3), EFOpenError);
}

TEST(Bits, GrowOnWriteRaiseOnReadPastEnd) {
  TBits B;
  B.SetBit(70, true);
  EXPECT_EQ(B.GetSize(), 71);
  EXPECT_TRUE(B.GetBit(70));
  EXPECT_FALSE(B.GetBit(69));
  EXPECT_THROW(B.GetBit(71), EBitsError);
  EXPECT_THROW(B.SetBit(-1, true), EBitsError);
  B.SetSize(65);  // cutting clears what lay beyond, growing shows zeros
  B.SetSize(71);
  EXPECT_FALSE(B.GetBit(70));
  for (int i = 0; i < 71; ++i) B.SetBit(i, i != 3);
  EXPECT_EQ(B.OpenBit(), 3);
  B.SetBit(3, true);
  EXPECT_EQ(B.OpenBit(), 71);
  TBits C;
  C.Assign(&B);
  EXPECT_EQ(C.GetSize(), 71);
  EXPECT_TRUE(C.GetBit(3));
  EXPECT_THROW(C.Assign(nullptr), EConvertError);
}

TEST(Variants, TypeCodesAndConversions) {
  const std::pair<TVariant, int> Types[] = {
      {TVariant(), 0}, {TVariant::Null(), 1}, {TVariant(std::int16_t{2}), 2}, {TVariant(3), 3},
      {TVariant(1.5f), 4}, {TVariant(1.5), 5}, {TVariant::FromCurrency(1), 6}, {TVariant::FromDate(0), 7},
      {TVariant::FromError(5), 10}, {TVariant(true), 11}, {TVariant::FromInterface(nullptr), 13},
      {TVariant::FromInterface(nullptr, true), 9}, {TVariant(std::int64_t{1}), 20}};
  for (const auto& [V, Type] : Types) EXPECT_EQ(V.VarType(), Type);

  EXPECT_EQ(TVariant(2.5).AsInteger(), 2);  // ties to even
  EXPECT_EQ(TVariant(3.5).AsInteger(), 4);
  EXPECT_EQ(TVariant(u"2.6").AsInteger(), 3);
  EXPECT_EQ(TVariant::FromCurrency(123456).AsReal(), 12.3456);
  EXPECT_THROW(TVariant(std::int64_t{1} << 40).AsInteger(), EConvertError);
  EXPECT_THROW(TVariant(u"abc").AsInteger(), EConvertError);
  EXPECT_THROW(TVariant::Null().AsInteger(), EConvertError);  // unlike an empty one
  EXPECT_EQ(TVariant().AsInteger(), 0);
  EXPECT_TRUE(TVariant(u"TRUE").AsBoolean());
  EXPECT_TRUE(TVariant(u"2").AsBoolean());
  EXPECT_THROW(TVariant(u"yes").AsBoolean(), EConvertError);
  EXPECT_EQ(TVariant(true).AsString(), u"True");
  EXPECT_EQ(TVariant::FromDate(45000.75).AsString(), u"2023-03-15 18:00:00");
  EXPECT_EQ(TVariant::FromDate(0).AsString(), u"1899-12-30");
  int Word = 0;
  const TVariant Arr = TVariant::FromDataWord(varArray, &Word);
  EXPECT_EQ(Arr.DataWord(), &Word);
  try {
    Arr.AsString();
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), u"Could not convert variant of type (Array Empty) into type (UnicodeString)");
  }
  EXPECT_THROW(TVariant(1).DataWord(), EConvertError);
}
