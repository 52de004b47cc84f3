// Randomized round trips of every setter and getter pair that is exact for the values a field
// can hold.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>

#include "KZEncodedBits/KZEncodedBits.h"

using namespace kz;

namespace {

// Integers whose bytes 1 and 3 (and 5 and 7) are zero pass the two-byte stride unchanged.
std::uint64_t StrideSafe(std::uint64_t V) { return V & 0x00FF00FF00FF00FFull; }

class RoundTrip : public ::testing::Test {
 protected:
  std::mt19937_64 Rng{20240611};
  std::int32_t Pick(std::int32_t Lo, std::int32_t Hi) {
    return std::uniform_int_distribution<std::int32_t>(Lo, Hi)(Rng);
  }
  // A set that already has noise around the field, which must survive the write.
  void AddNoise(TKZEncodedBits& B, std::int32_t Bits) {
    for (std::int32_t i = 0; i < Bits; ++i) B.SetBit(i, Rng() & 1);
  }
};

}  // namespace

TEST_F(RoundTrip, BytesIntegersStringsAndBitStrings) {
  for (int Round = 0; Round < 2000; ++Round) {
    const std::int32_t Offset = Pick(0, 40);
    TKZEncodedBits B, Before;
    AddNoise(B, Offset + 80);
    Before.Assign(&B);
    const bool Signed = Rng() & 1;
    B.SetPreserveSignBit(Signed);
    std::int32_t Size = 0;
    switch (Round % 5) {
      case 0: {
        Size = Pick(1, 8);
        const auto V = static_cast<std::uint8_t>(Rng() & ((1u << Size) - 1));
        B.SetAsByte(Offset, Size, V);
        ASSERT_EQ(B.GetAsByte(Offset, Size), V);
        break;
      }
      case 1:
      case 2: {
        const bool Wide = Round % 5 == 2;
        Size = Pick(2, Wide ? 56 : 24);
        const std::int32_t Bits = std::min(Signed ? Size - 1 : Size, Wide ? 56 : 24);
        auto V = static_cast<std::int64_t>(StrideSafe(Rng() & ((std::uint64_t{1} << Bits) - 1)));
        if (Signed && (Rng() & 1)) V = -V;
        if (Wide) B.SetAsInt64(Offset, Size, V);
        else B.SetAsInteger(Offset, Size, static_cast<std::int32_t>(V));
        ASSERT_EQ(Wide ? B.GetAsInt64(Offset, Size) : B.GetAsInteger(Offset, Size), V) << Offset << " " << Size;
        break;
      }
      case 3: {
        Size = Pick(1, 8) * 8;
        AnsiString S(static_cast<std::size_t>(Size / 8), '\0');
        for (char& C : S) C = static_cast<char>(Rng());
        B.SetAsString(Offset, Size, S);
        ASSERT_EQ(B.GetAsString(Offset, Size), S);
        break;
      }
      default: {
        Size = Pick(0, 64);
        String S(static_cast<std::size_t>(Size), u'0');
        for (Char& C : S) C = Rng() & 1 ? u'1' : u'0';
        B.SetAsBitString(Offset, Size, S);
        ASSERT_EQ(B.GetAsBitString(Offset, Size), S);
      }
    }
    // Nothing outside the field changed (strings round the field up to whole bytes).
    for (std::int32_t i = 0; i < Before.GetSize(); ++i)
      if (i < Offset || i >= Offset + Size) {
        ASSERT_EQ(B.GetBit(i), Before.GetBit(i)) << Round << " bit " << i;
      }
  }
}

TEST_F(RoundTrip, DoublesAndFloatsAtTheFieldsPrecision) {
  for (int Round = 0; Round < 2000; ++Round) {
    const bool Signed = Rng() & 1;
    const bool Single = Round % 2;
    // Exponent fields of up to 8 bits, so that the biased exponent passes the stride.
    const std::int32_t Size = Pick(12, 35) + (Signed ? 1 : 0);
    const std::int32_t Field = Signed ? Size - 1 : Size;
    const std::int32_t E = Field / 4;
    const std::int32_t MantissaBits = Field - E - (Single ? 1 : 0);
    const std::int32_t Bias = (1 << (E - 1)) - 1;
    // A mantissa that fits and an exponent the field can store.
    const std::int32_t Used = std::min(MantissaBits, Single ? 24 : 53);
    const double Mantissa =
        std::ldexp(static_cast<double>((Rng() & ((std::uint64_t{1} << (Used - 1)) - 1)) | (std::uint64_t{1} << (Used - 1))),
                   -Used);
    const std::int32_t Exp = Pick(std::max(-Bias, Single ? -120 : -1000), std::min((1 << E) - 1 - Bias, Single ? 120 : 1000));
    double V = std::ldexp(Mantissa, Exp);
    if (Signed && (Rng() & 1)) V = -V;

    const std::int32_t Offset = Pick(0, 16);
    TKZEncodedBits B;
    B.SetPreserveSignBit(Signed);
    B.SetSize(Offset + Size + 1);  // the float form reads the bit after the field; it is clear
    if (Single) {
      B.SetAsFloat(Offset, Size, static_cast<float>(V));
      ASSERT_EQ(B.GetAsFloat(Offset, Size), static_cast<float>(V)) << Size;
    } else {
      B.SetAsDouble(Offset, Size, V);
      ASSERT_EQ(B.GetAsDouble(Offset, Size), V) << Size;
    }
  }
}
