#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "GStreams/GStreams.h"
#include "Runtime/Text.h"

using namespace kz;

namespace {

// A memory stream that counts the reads asked of it and can refuse to write.
class TCountingStream : public TMemoryStream {
 public:
  using TMemoryStream::TMemoryStream;
  std::int32_t Read(void* Buffer, std::int32_t Count) override {
    ++Reads;
    return TMemoryStream::Read(Buffer, Count);
  }
  std::int32_t Write(const void* Buffer, std::int32_t Count) override {
    return RefuseWrites ? 0 : TMemoryStream::Write(Buffer, Count);
  }
  int Reads = 0;
  bool RefuseWrites = false;
};

TBytes Range(int N) {
  TBytes B(static_cast<std::size_t>(N), 0);
  for (int i = 0; i < N; ++i) B[static_cast<std::size_t>(i)] = static_cast<Byte>(i * 7);
  return B;
}

std::string Message(const std::function<void()>& F) {
  try {
    F();
  } catch (const EStreamError& E) {
    return StringToUtf8(E.Message());
  }
  return "no error";
}

}  // namespace

TEST(GBufferStream, ReadsAndWritesInBlocksOfAnySizeReportingFillsAndFlushes) {
  TCountingStream U(Range(300000));
  TGBufferStream B(&U);
  int Fills = 0, Flushes = 0;
  B.SetOnFillBuffer([&](TObject*) { ++Fills; });
  B.SetOnFlushBuffer([&](TObject*) { ++Flushes; });
  EXPECT_EQ(Message([&] { B.SetBufferSize(0); }), "Invalid buffer size specified: 0");
  B.SetBufferSize(100000);  // larger than the block built at construction
  EXPECT_EQ(Flushes, 1);
  TBytes Got(300000, 0);
  for (int i = 0; i < 300000; i += 1000) ASSERT_EQ(B.Read(Got.data() + i, 1000), 1000);
  EXPECT_EQ(Got, Range(300000));
  EXPECT_EQ(Fills, 3);
  EXPECT_EQ(B.GetState(), bsRead);
  Byte X;
  EXPECT_EQ(B.Read(&X, 1), 0);
  EXPECT_EQ(Fills, 4);  // the fill at the end gets nothing
  EXPECT_EQ(B.GetState(), bsUnknown);
  EXPECT_TRUE(B.IsEof());

  // Writing: the block goes out when full and on destruction; a read flushes a pending write.
  TMemoryStream W;
  {
    TGBufferStream O(&W);
    O.SetBufferSize(65536 + 3);
    O.SetOnFlushBuffer([&](TObject*) { ++Flushes; });
    Flushes = 0;
    for (int i = 0; i < 200000; i += 1000) O.Write(Got.data() + i, 1000);
    EXPECT_EQ(Flushes, 3);
    EXPECT_EQ(O.GetBufferPosition(), 200000 - 3 * 65539);
    O.Read(&X, 0);  // flushes, reads nothing
    EXPECT_EQ(Flushes, 4);
    EXPECT_EQ(W.GetSize(), 200000);
    O.Seek(0, soEnd);
    O.Write(Got.data() + 200000, 100000);
  }
  EXPECT_EQ(TBytes(W.GetMemory(), W.GetMemory() + W.GetSize()), Got);
}

TEST(GBufferStream, SeekingKeepsOrDropsTheBlock) {
  TCountingStream U(Range(100));
  TGBufferStream B(&U);
  EXPECT_EQ(B.Seek(10, soEnd), 90);   // counted back from the end
  EXPECT_EQ(B.Seek(-10, soEnd), 110);  // a negative offset lies past the end
  B.Seek(0, soBeginning);
  Byte Buf[4];
  B.Read(Buf, 4);
  const int Reads = U.Reads;
  EXPECT_EQ(B.GetBufferPosition(), -96);
  EXPECT_EQ(B.Seek(4, soBeginning), 4);  // no move: block, pointers and state kept
  EXPECT_EQ(B.GetState(), bsRead);
  B.Read(Buf, 4);
  EXPECT_EQ(Buf[0], 4 * 7);
  EXPECT_EQ(U.Reads, Reads);
  EXPECT_EQ(B.Seek(-2, soCurrent), 6);  // a move drops the block
  EXPECT_EQ(B.GetState(), bsUnknown);
  B.Read(Buf, 1);
  EXPECT_EQ(Buf[0], 6 * 7);
  EXPECT_EQ(U.Reads, Reads + 1);

  EXPECT_EQ(Message([&] { B.Seek(0, 3); }), "Invalid Origin Point specified: 3");
  // The flush before a moving seek must write everything.
  TCountingStream R;
  TGBufferStream W(&R);
  W.Write("abc", 3);
  EXPECT_EQ(W.Seek(0, soCurrent), 3);  // no move, no flush
  R.RefuseWrites = true;
  EXPECT_EQ(Message([&] { W.Seek(0, soBeginning); }), "Error seeking in buffer");
}

TEST(GBufferStream, PutBackIsLimitedToConsumedBytesOfTheBlock) {
  TMemoryStream U(Range(10));
  TGBufferStream B(&U);
  EXPECT_EQ(Message([&] { B.PutBack(Byte{1}); }), "Overflow on push back");
  Byte Buf[3];
  B.Read(Buf, 3);
  for (Byte V : {0xAA, 0xBB, 0xCC}) B.PutBack(V);
  EXPECT_EQ(Message([&] { B.PutBack(Byte{0xDD}); }), "Overflow on push back");
  B.Read(Buf, 3);
  EXPECT_EQ(Buf[0], 0xCC);
  EXPECT_EQ(Buf[2], 0xAA);
  // A character needs two consumed bytes and is stored low byte first.
  B.PutBack(Char{0x1234});
  B.Read(Buf, 2);
  EXPECT_EQ(Buf[0], 0x34);
  EXPECT_EQ(Buf[1], 0x12);
  B.Seek(1, soBeginning);  // moving seek: nothing consumed any more
  B.Read(Buf, 1);
  EXPECT_EQ(Message([&] { B.PutBack(Char{1}); }), "Overflow on push back");

  // Over a file: a fill at the end keeps the last block (its bytes can still be put back),
  // a fill past the end empties it.
  const String Path = (std::filesystem::temp_directory_path() / "kz_buffer_stream.bin").u16string();
  {
    TFileStream Out(Path, fmCreate);
    Out.WriteBuffer(Range(10).data(), 10);
  }
  TFileStream In(Path, fmOpenRead);
  TGBufferStream F(&In);
  F.SetBufferSize(4);
  int Fills = 0;
  F.SetOnFillBuffer([&](TObject*) { ++Fills; });
  Byte All[11];
  EXPECT_EQ(F.Read(All, 11), 10);
  EXPECT_EQ(Fills, 4);
  EXPECT_TRUE(F.IsEof());
  F.PutBack(Byte{0xEE});
  EXPECT_EQ(F.Read(All, 2), 1);
  EXPECT_EQ(All[0], 0xEE);
  F.Seek(20, soBeginning);
  EXPECT_EQ(F.Read(All, 1), 0);
  EXPECT_EQ(Message([&] { F.PutBack(Byte{1}); }), "Overflow on push back");
  std::filesystem::remove(std::filesystem::path(Path));
}

TEST(GTextStream, DetectsMarksOnReadAndWritesThemFirst) {
  Byte B[2];
  TMemoryStream M({0xFE, 0xFF, 0x00, 0x41});
  TGTextStream T(&M);
  ASSERT_EQ(T.Read(B, 1), 1);  // the mark is skipped
  EXPECT_EQ(T.GetEncoding(), TEncoding::BigEndianUnicode());
  EXPECT_EQ(B[0], 0x00);
  EXPECT_EQ(T.SeekExcludePreamble(0, soBeginning), 2);
  // Over a string stream the stream's own encoding wins.
  TStringStream S(u"x", TEncoding::Unicode(), false);
  S.SetPosition(0);
  TGTextStream ST(&S);
  ST.Read(B, 2);
  EXPECT_EQ(ST.GetEncoding(), TEncoding::Unicode());
  EXPECT_EQ(B[0], 'x');
  // Given an encoding, nothing is skipped until a seek to 0 re-opens the question.
  TMemoryStream U({0xEF, 0xBB, 0xBF, 0x41});
  TGTextStream G(&U, TEncoding::UTF8());
  G.Read(B, 1);
  EXPECT_EQ(B[0], 0xEF);
  G.Seek(0, soBeginning);
  G.Read(B, 1);
  EXPECT_EQ(B[0], 0x41);

  TMemoryStream W;
  {
    TGTextStream T(&W, TEncoding::UTF8());
    T.Write("a", 1);  // settled at construction: no mark
    T.Seek(0, soBeginning);
    T.Write("b", 1);  // into an empty block after a seek to 0: mark first
  }
  EXPECT_EQ(TBytes(W.GetMemory(), W.GetMemory() + W.GetSize()), (TBytes{0xEF, 0xBB, 0xBF, 'b'}));
  const String Path = (std::filesystem::temp_directory_path() / "kz_text_stream.txt").u16string();
  {
    TGTextStream T(Path, fmCreate, TEncoding::Unicode());
    T.Seek(0, soBeginning);
    T.Write("A\0", 2);
  }  // flushes, then frees the file stream it opened
  W.LoadFromFile(Path);
  EXPECT_EQ(TBytes(W.GetMemory(), W.GetMemory() + W.GetSize()), (TBytes{0xFF, 0xFE, 'A', 0}));
  std::filesystem::remove(std::filesystem::path(Path));
  EXPECT_THROW(TGTextStream(Path, fmOpenRead), EFOpenError);
}

TEST(GBufferStream, OverNoStreamAnswersWithoutTouchingIt) {
  TGBufferStream B(nullptr);
  EXPECT_FALSE(B.IsEof());  // the fresh block is not used up
  Byte X;
  EXPECT_THROW(B.Read(&X, 1), EAccessViolation);
}
