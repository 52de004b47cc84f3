#include "KZEncodedBits/KZEncodedBits.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Runtime/OutOfMemory.h"
#include "Runtime/Single.h"
#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;
using namespace KZEncodedBits;

namespace {

// Field positions are computed in 64 bits so that Offset + Size never wraps; the bit set
// then refuses what lies beyond its 32-bit index range.
using TPos = std::int64_t;

// A write refuses a field that reaches past the last bit the set can hold before it grows
// the set at all.
void CheckWritable(TPos Offset, TPos Size) {
  if (Size > 0 && (Offset < 0 || Offset + Size - 1 >= INT32_MAX)) throw EBitsError(SBitsIndexError);
}

void CheckCount(TPos Count) {
  if (Count < 0) throw EArgumentOutOfRangeException(SArgumentOutOfRange);
}

}  // namespace

bool TKZEncodedBits::Bit(TPos Index) const {
  if (Index < 0 || Index > INT32_MAX) throw EBitsError(SBitsIndexError);
  return GetBit(static_cast<std::int32_t>(Index));
}

void TKZEncodedBits::PutBit(TPos Index, bool Value) {
  if (Index < 0 || Index > INT32_MAX) throw EBitsError(SBitsIndexError);
  SetBit(static_cast<std::int32_t>(Index), Value);
}

std::uint8_t TKZEncodedBits::DecodeAt(TPos Offset, TPos Size) const {
  std::uint8_t R = 0;
  for (TPos j = std::min<TPos>(Size, 8) - 1; j >= 0; --j) R = static_cast<std::uint8_t>(R << 1 | Bit(Offset + j));
  return R;
}

void TKZEncodedBits::EncodeAt(TPos Offset, TPos Size, std::uint8_t Value) {
  CheckWritable(Offset, Size);
  for (TPos k = 0; k < Size; ++k) PutBit(Offset + k, k < 8 && (Value >> k & 1));
}

void TKZEncodedBits::DecodeBytes(TPos Offset, TPos Size, std::uint8_t* Data, std::size_t DataSize, TPos Count,
                                 std::size_t Stride) const {
  CheckCount(Count);
  for (TPos i = 0; i < Count && Size - 8 * i > 0; ++i) {
    const std::uint8_t B = DecodeAt(Offset + 8 * i, std::min<TPos>(Size - 8 * i, 8));
    const auto At = static_cast<std::size_t>(i) * Stride;
    if (At < DataSize) Data[At] = B;
  }
}

void TKZEncodedBits::EncodeBytes(TPos Offset, TPos Size, const std::uint8_t* Data, std::size_t DataSize,
                                 TPos Count, std::size_t Stride) {
  CheckCount(Count);
  CheckWritable(Offset, Size);
  // Past the data the field is cleared, 8 bits at a time, to its end.
  for (TPos i = 0; Size - 8 * i > 0; ++i) {
    const auto At = static_cast<std::size_t>(i) * Stride;
    const std::uint8_t B = i < Count && At < DataSize ? Data[At] : 0;
    EncodeAt(Offset + 8 * i, std::min<TPos>(Size - 8 * i, 8), B);
  }
}

std::uint8_t TKZEncodedBits::Decode(std::int32_t Offset, std::int32_t Size) const { return DecodeAt(Offset, Size); }

void TKZEncodedBits::Encode(std::int32_t Offset, std::int32_t Size, std::uint8_t Value) {
  EncodeAt(Offset, Size, Value);
}

void TKZEncodedBits::Decode(std::int32_t Offset, std::int32_t Size, std::span<std::uint8_t> Buffer,
                            std::int32_t Count) const {
  DecodeBytes(Offset, Size, Buffer.data(), Buffer.size(), Count, 2);
}

void TKZEncodedBits::Encode(std::int32_t Offset, std::int32_t Size, std::span<const std::uint8_t> Buffer,
                            std::int32_t Count) {
  EncodeBytes(Offset, Size, Buffer.data(), Buffer.size(), Count, 2);
}

void TKZEncodedBits::Decode(std::int32_t Offset, std::int32_t Size, TBytes& Bytes) const {
  DecodeBytes(Offset, Size, Bytes.data(), Bytes.size(), static_cast<TPos>(Bytes.size()), 1);
}

void TKZEncodedBits::Encode(std::int32_t Offset, std::int32_t Size, const TBytes& Bytes) {
  EncodeBytes(Offset, Size, Bytes.data(), Bytes.size(), static_cast<TPos>(Bytes.size()), 1);
}

TBytes TKZEncodedBits::Decode(std::int32_t Offset, std::int32_t Size, std::int32_t Count) const {
  CheckCount(Count);
  TBytes R(static_cast<std::size_t>(Count), 0);
  Decode(Offset, Size, R);
  return R;
}

template <class T>
T TKZEncodedBits::GetSigned(TPos Offset, TPos Size, bool SignBit) const {
  using U = std::make_unsigned_t<T>;
  std::uint8_t Buf[sizeof(T)] = {};
  DecodeBytes(Offset, SignBit ? Size - 1 : Size, Buf, sizeof(T), sizeof(T), 2);
  U Magnitude = 0;
  for (std::size_t i = sizeof(T); i-- > 0;) Magnitude = static_cast<U>(Magnitude << 8 | Buf[i]);
  if (SignBit && Bit(Offset + Size - 1))
    // Negated in unsigned arithmetic; a zero magnitude under the sign is the minimum.
    return Magnitude == 0 ? std::numeric_limits<T>::min() : static_cast<T>(static_cast<U>(0) - Magnitude);
  return static_cast<T>(Magnitude);
}

template <class T>
void TKZEncodedBits::SetSigned(TPos Offset, TPos Size, T Value, bool SignBit) {
  using U = std::make_unsigned_t<T>;
  // The magnitude of the minimum is the minimum's own bits, which unsigned negation gives.
  U Magnitude = static_cast<U>(Value);
  if (SignBit && Value < 0) Magnitude = static_cast<U>(static_cast<U>(0) - Magnitude);
  std::uint8_t Buf[sizeof(T)];
  for (std::size_t i = 0; i < sizeof(T); ++i) Buf[i] = static_cast<std::uint8_t>(Magnitude >> (8 * i));
  EncodeBytes(Offset, Size, Buf, sizeof(T), sizeof(T), 2);
  if (SignBit) PutBit(Offset + Size - 1, Value < 0);
}

bool TKZEncodedBits::GetAsBoolean(std::int32_t Offset, std::int32_t Size) const {
  return GetAsInteger(Offset, Size) != 0;
}

void TKZEncodedBits::SetAsBoolean(std::int32_t Offset, std::int32_t Size, bool Value) {
  SetAsInteger(Offset, Size, Value ? 1 : 0);
}

std::uint8_t TKZEncodedBits::GetAsByte(std::int32_t Offset, std::int32_t Size) const {
  std::uint8_t B = 0;
  DecodeBytes(Offset, Size, &B, 1, 1, 2);
  return B;
}

void TKZEncodedBits::SetAsByte(std::int32_t Offset, std::int32_t Size, std::uint8_t Value) {
  EncodeBytes(Offset, Size, &Value, 1, 1, 2);
}

std::int32_t TKZEncodedBits::GetAsInteger(std::int32_t Offset, std::int32_t Size) const {
  return GetSigned<std::int32_t>(Offset, Size, FPreserveSignBit);
}

void TKZEncodedBits::SetAsInteger(std::int32_t Offset, std::int32_t Size, std::int32_t Value) {
  SetSigned<std::int32_t>(Offset, Size, Value, FPreserveSignBit);
}

std::int64_t TKZEncodedBits::GetAsInt64(std::int32_t Offset, std::int32_t Size) const {
  return GetSigned<std::int64_t>(Offset, Size, FPreserveSignBit);
}

void TKZEncodedBits::SetAsInt64(std::int32_t Offset, std::int32_t Size, std::int64_t Value) {
  SetSigned<std::int64_t>(Offset, Size, Value, FPreserveSignBit);
}

long double TKZEncodedBits::GetReal(TPos Offset, TPos Size, int MantissaShift) const {
  long double Sign = 1;
  if (FPreserveSignBit) {
    if (Bit(Offset)) Sign = -1;
    ++Offset;
    --Size;
  }
  const TPos E = Size / 4;
  const std::int32_t Exponent = GetSigned<std::int32_t>(Offset, E, false);
  const long double Bias = std::trunc(std::ldexp(1.0L, static_cast<int>(std::clamp<TPos>(E - 1, -1, 20000)))) - 1;
  long double M = 0;
  for (TPos j = Offset + Size - 1 + MantissaShift; j >= Offset + E + MantissaShift; --j) M = (M + Bit(j)) / 2;
  // Beyond these bounds the result is 0 or infinite either way; the clamp keeps the
  // exponent inside int.
  const long double Scale = std::clamp<long double>(Exponent - Bias, -40000, 40000);
  return std::ldexp(Sign * M, static_cast<int>(Scale));
}

void TKZEncodedBits::SetReal(TPos Offset, TPos Size, long double Value, int MantissaShift) {
  CheckWritable(Offset, Size);
  const std::int32_t FieldSize = static_cast<std::int32_t>(Size);
  if (!std::isfinite(Value))
    throw EConvertError(SFloatFieldRange, {FloatToStr(static_cast<double>(Value)), FieldSize});
  int Exp = 0;
  const long double Mantissa = Value == 0 ? 0 : std::frexp(std::fabs(Value), &Exp);
  const TPos Field = FPreserveSignBit ? Size - 1 : Size;
  const TPos E = Field / 4;
  TPos Biased = 0;
  if (Value != 0) {
    // The exponent goes through the 32-bit integer form, so it must fit both that and E bits.
    const TPos Bias = E > 32 ? TPos{1} << 32 : static_cast<TPos>(std::trunc(std::ldexp(1.0L, static_cast<int>(E - 1)))) - 1;
    Biased = Exp + Bias;
    if (Biased < 0 || Biased > INT32_MAX || (E < 32 && Biased >= (TPos{1} << std::max<TPos>(E, 0))))
      throw EConvertError(SFloatFieldRange, {FloatToStr(static_cast<double>(Value)), FieldSize});
  }
  if (FPreserveSignBit) {
    PutBit(Offset, Value < 0);
    ++Offset;
    --Size;
  }
  SetSigned<std::int32_t>(Offset, E, static_cast<std::int32_t>(Biased), false);
  long double R = Mantissa;
  for (TPos j = Offset + E; j < Offset + Size; ++j) {
    bool B = false;
    if (j >= Offset + E + MantissaShift) {
      R *= 2;
      B = R >= 1;
      if (B) R -= 1;
    }
    PutBit(j, B);
  }
}

double TKZEncodedBits::GetAsDouble(std::int32_t Offset, std::int32_t Size) const {
  return ToDouble(GetReal(Offset, Size, 0));
}

void TKZEncodedBits::SetAsDouble(std::int32_t Offset, std::int32_t Size, double Value) {
  SetReal(Offset, Size, Value, 0);
}

float TKZEncodedBits::GetAsFloat(std::int32_t Offset, std::int32_t Size) const {
  return ToSingle(GetReal(Offset, Size, 1));
}

void TKZEncodedBits::SetAsFloat(std::int32_t Offset, std::int32_t Size, float Value) {
  SetReal(Offset, Size, Value, 1);
}

AnsiString TKZEncodedBits::GetAsString(std::int32_t Offset, std::int32_t Size) const {
  const TPos Length = (static_cast<TPos>(Size) + 7) / 8;
  if (Length <= 0) return AnsiString();
  (void)Bit(Offset + Length * 8 - 1);  // a field past the end raises before anything is allocated
  // Narrow strings grow inside the C++ runtime, out of reach of the library's allocation hook.
  AnsiString R = detail::RaiseOutOfMemoryAsError([&] { return AnsiString(static_cast<std::size_t>(Length), 0); });
  DecodeBytes(Offset, Length * 8, reinterpret_cast<std::uint8_t*>(R.data()), R.size(), Length, 1);
  return R;
}

void TKZEncodedBits::SetAsString(std::int32_t Offset, std::int32_t Size, const AnsiString& Value) {
  const TPos Length = (static_cast<TPos>(Size) + 7) / 8;
  if (Length <= 0) return;
  EncodeBytes(Offset, Length * 8, reinterpret_cast<const std::uint8_t*>(Value.data()), Value.size(), Length, 1);
}

String TKZEncodedBits::GetAsBitString(std::int32_t Offset, std::int32_t Size) const {
  if (Size <= 0) return String();
  (void)Bit(static_cast<TPos>(Offset) + Size - 1);
  String R(static_cast<std::size_t>(Size), 0);
  for (std::int32_t k = 0; k < Size; ++k) R[static_cast<std::size_t>(k)] = Bit(static_cast<TPos>(Offset) + k) ? u'1' : u'0';
  return R;
}

void TKZEncodedBits::SetAsBitString(std::int32_t Offset, std::int32_t Size, StringView Value) {
  CheckWritable(Offset, Size);
  for (TPos k = 0; k < Size; ++k) {
    const Char C = static_cast<std::size_t>(k) < Value.size() ? Value[static_cast<std::size_t>(k)] : u'0';
    if (C != u'0' && C != u'1') throw Exception(SInvalidBitString, {Value});
    PutBit(Offset + k, C == u'1');
  }
}

std::int32_t TKZEncodedBits::NumberOfOnes() const {
  std::int32_t N = 0;
  for (std::int32_t i = 0; i < GetSize(); ++i) N += GetBit(i);
  return N;
}

std::int32_t TKZEncodedBits::NumberOfZeros() const { return GetSize() - NumberOfOnes(); }

std::unique_ptr<TKZEncodedBits> TKZEncodedBits::Clone() const {
  std::unique_ptr<TBits> R = static_cast<const TMeta*>(ClassType())->Create();
  R->Assign(const_cast<TKZEncodedBits*>(this));
  return std::unique_ptr<TKZEncodedBits>(static_cast<TKZEncodedBits*>(R.release()));
}

}  // namespace kz
