#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "KZEncodedBits/KZEncodedBits.h"

using namespace kz;

TEST(KZEncodedBitsTest, BytePrimitivesAndBitStrings) {
  TKZEncodedBits B;
  B.Encode(0, 4, 0xA5);
  EXPECT_EQ(B.GetSize(), 4);
  EXPECT_EQ(B.ToBitString(), u"1010");
  EXPECT_EQ(B.Decode(0, 4), 5);
  EXPECT_THROW((void)B.Decode(2, 4), EBitsError);  // bits 4 and 5 do not exist
  B.Encode(0, 12, 0xFF);  // bits of the value above 7 read as 0
  EXPECT_EQ(B.ToBitString(), u"111111110000");
  EXPECT_EQ(B.NumberOfOnes(), 8);
  EXPECT_EQ(B.NumberOfZeros(), 4);

  B.SetAsBitString(0, 3, u"1");
  EXPECT_EQ(B.GetAsBitString(0, 3), u"100");
  EXPECT_THROW(B.SetAsBitString(0, 4, u"11x1"), Exception);
  EXPECT_EQ(B.GetAsBitString(0, 4), u"1101");  // bits before the bad character are written
  EXPECT_THROW((void)B.GetAsBitString(10, 3), EBitsError);
  EXPECT_THROW(B.Encode(-1, 2, 1), EBitsError);
  EXPECT_THROW(B.Encode(INT32_MAX - 3, 8, 1), EBitsError);  // the field runs past the index range
  EXPECT_EQ(B.GetSize(), 12);  // refused before anything is written
  EXPECT_EQ(B.ToString(), B.ToBitString());
}

TEST(KZEncodedBitsTest, BuffersUseATwoByteStride) {
  TKZEncodedBits B;
  const std::uint8_t In[] = {0x12, 0xEE, 0x34, 0xEE, 0x56};
  B.Encode(0, 24, In, 3);
  EXPECT_EQ(B.Decode(0, 24, 3), (TBytes{0x12, 0x34, 0x56}));
  std::uint8_t Out[5] = {0xAA, 0xAA, 0xAA, 0xAA, 0xAA};
  B.Decode(0, 20, Out, 3);  // the field ends inside byte 2
  EXPECT_EQ(TBytes(Out, Out + 5), (TBytes{0x12, 0xAA, 0x34, 0xAA, 0x06}));
  std::uint8_t Short[1] = {0};
  B.Decode(0, 24, Short, 3);  // bytes past the buffer are dropped
  EXPECT_EQ(Short[0], 0x12);

  B.Encode(0, 24, TBytes{0xFF});  // the rest of the field is cleared
  EXPECT_EQ(B.Decode(0, 24, 4), (TBytes{0xFF, 0, 0, 0}));
  EXPECT_THROW((void)B.Decode(0, 8, -1), EArgumentOutOfRangeException);

  B.SetAsByte(0, 6, 0x0F);
  EXPECT_EQ(B.GetAsByte(0, 8), 0xCF);  // bits 6 and 7 are outside the field
}

TEST(KZEncodedBitsTest, IntegersThroughTheStride) {
  TKZEncodedBits B;
  B.SetAsInteger(0, 32, 0x11223344);
  // Value bytes 0 and 2 land in field bytes 0 and 1; field bytes 2 and 3 are zero.
  EXPECT_EQ(B.Decode(0, 32, 4), (TBytes{0x44, 0x22, 0, 0}));
  EXPECT_EQ(B.GetAsInteger(0, 32), 0x00220044);
  B.SetAsInt64(0, 64, 0x0102030405060708);
  EXPECT_EQ(B.Decode(0, 64, 8), (TBytes{0x08, 0x06, 0x04, 0x02, 0, 0, 0, 0}));
  EXPECT_EQ(B.GetAsInt64(0, 64), 0x0002000400060008);

  B.SetPreserveSignBit(true);
  B.SetAsInteger(0, 8, -5);
  EXPECT_EQ(B.GetAsBitString(0, 8), u"10100001");
  EXPECT_EQ(B.GetAsInteger(0, 8), -5);
  B.SetAsBitString(0, 8, u"00000001");  // sign over a zero magnitude
  EXPECT_EQ(B.GetAsInteger(0, 8), INT32_MIN);
  EXPECT_EQ(B.GetAsInt64(0, 8), INT64_MIN);
  B.SetAsInteger(0, 32, INT32_MIN);  // written as it is, sign bit on top
  EXPECT_EQ(B.GetAsInteger(0, 32), INT32_MIN);
  B.SetAsInt64(0, 16, INT64_MIN);  // its magnitude has no bit in reach
  EXPECT_EQ(B.GetAsInt64(0, 16), INT64_MIN);
  B.SetAsInteger(0, 8, -200);  // the sign overrides the magnitude's top bit
  EXPECT_EQ(B.GetAsInteger(0, 8), -72);
}

TEST(KZEncodedBitsTest, FloatingPointFields) {
  TKZEncodedBits B;
  B.SetSize(40);
  EXPECT_EQ(B.GetAsDouble(0, 32), 0.0);
  EXPECT_THROW((void)B.GetAsFloat(8, 32), EBitsError);  // reads one bit past the field

  // E = 4, bias 7: exponent 8, mantissa .1 (first mantissa bit) gives 0.5 * 2^1.
  B.SetAsBitString(0, 16, u"0001" u"100000000000");
  EXPECT_EQ(B.GetAsDouble(0, 16), 1.0);
  // The float form skips that bit and reads from the next one up to bit 16.
  B.SetBit(16, true);
  EXPECT_EQ(B.GetAsFloat(0, 16), 2.0f / 4096);

  B.SetPreserveSignBit(true);
  B.SetAsDouble(0, 17, -0.375);
  EXPECT_TRUE(B.GetBit(0));
  EXPECT_EQ(B.GetAsDouble(0, 17), -0.375);
  EXPECT_THROW(B.SetAsDouble(0, 17, 1e10), EConvertError);  // exponent beyond 4 bits
  EXPECT_THROW(B.SetAsDouble(0, 17, std::numeric_limits<double>::infinity()), EConvertError);
  B.SetAsDouble(0, 17, 0);
  EXPECT_EQ(B.GetAsBitString(0, 17), String(17, u'0'));
}

TEST(KZEncodedBitsTest, StringsAndCopies) {
  TKZEncodedBits B;
  B.SetAsString(0, 9, "AB");
  EXPECT_EQ(B.GetSize(), 16);
  EXPECT_EQ(B.GetAsString(0, 9), "AB");
  B.SetAsString(0, 24, "x");  // padded with NUL
  EXPECT_EQ(B.GetAsString(0, 24), AnsiString("x\0\0", 3));
  EXPECT_THROW((void)B.GetAsString(8, 24), EBitsError);

  std::unique_ptr<TKZEncodedBits> C = B.Clone();
  EXPECT_EQ(C->ClassType(), &TKZEncodedBits::ClassInfo());
  EXPECT_EQ(C->ToBitString(), B.ToBitString());
}
