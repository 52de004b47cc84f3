// A growable bit set that packs typed values (bytes, Booleans, 32- and 64-bit integers,
// floating point in a field-sized format, 8-bit strings, raw bytes) into bit fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "Runtime/Bits.h"
#include "Runtime/Errors.h"

namespace kz {

namespace KZEncodedBits {
KZ_UNIT_SCOPE(KZEncodedBits)
KZ_RESOURCESTRING(SInvalidBitString, u"'%s' is not a bit string of '0' and '1'")
KZ_RESOURCESTRING(SFloatFieldRange, u"%s does not fit a floating-point field of %d bits")
}  // namespace KZEncodedBits

/// A bit set whose fields are given by their first bit (Offset) and width in bits (Size).
/// Inside a field the bit at Offset is the least significant; field byte k is bits
/// Offset + 8k .. Offset + 8k + 7. Reading a bit at or past GetSize() raises the bit set's
/// EBitsError (also for bit indexes beyond the 32-bit range); writing one grows the set.
///
/// Deliberate behaviour, kept as it is:
/// - The buffer forms exchange field byte i with buffer byte 2i (a two-byte stride); the odd
///   buffer bytes are left alone. Integers travel through them, so a 32-bit field holds
///   value bytes 0 and 2 in its bytes 0 and 1, its bytes 2 and 3 are written as zero and
///   dropped on reading (64-bit: value bytes 0, 2, 4, 6 in field bytes 0 to 3).
/// - With PreserveSignBit integers are sign and magnitude, the sign in the field's highest
///   bit written after the magnitude; a set sign over a zero magnitude reads as the type's
///   minimum.
/// - Floating point: optional sign bit at Offset, then an exponent of a quarter of the
///   (remaining) field read as an integer, biased by 2^(E-1) - 1, then the mantissa with no
///   hidden bit (first mantissa bit weighs 1/2). GetAsFloat reads its mantissa one bit
///   higher: it skips the field's first mantissa bit and reads the bit just past the field,
///   so that bit must exist (else EBitsError) and adds its weight when set.
/// - Strings round the width up to whole bytes; character i is field byte i.
///
/// Decisions where nothing else was fixed: buffers are spans and bytes past a span's end are
/// dropped on reading and written as zero; a negative count raises
/// EArgumentOutOfRangeException. SetAsDouble/SetAsFloat write only inside the field (the float
/// form one mantissa bit fewer), truncate the mantissa to the field, store a value without a
/// sign bit by its magnitude, write 0 as an all-zero field, and raise EConvertError when the
/// value is not finite or its exponent does not fit the exponent field.
class TKZEncodedBits : public TBits {
  KZ_CLASS(TKZEncodedBits, TBits)
 public:
  TKZEncodedBits() = default;

  [[nodiscard]] bool GetPreserveSignBit() const { return FPreserveSignBit; }
  void SetPreserveSignBit(bool Value) { FPreserveSignBit = Value; }

  /// Up to 8 bits of the field as a byte; a field of width 0 or less gives 0.
  [[nodiscard]] std::uint8_t Decode(std::int32_t Offset, std::int32_t Size) const;
  /// Bit k of the field becomes bit k of Value (0 above bit 7).
  void Encode(std::int32_t Offset, std::int32_t Size, std::uint8_t Value);
  /// Field bytes 0 .. Count-1 into Buffer[0], Buffer[2], ... (stops when the field ends).
  void Decode(std::int32_t Offset, std::int32_t Size, std::span<std::uint8_t> Buffer, std::int32_t Count) const;
  /// Field bytes 0 .. Count-1 from Buffer[0], Buffer[2], ...; the rest of the field is cleared.
  void Encode(std::int32_t Offset, std::int32_t Size, std::span<const std::uint8_t> Buffer, std::int32_t Count);
  /// Field byte i into Bytes[i] while both last.
  void Decode(std::int32_t Offset, std::int32_t Size, TBytes& Bytes) const;
  /// Bytes[i] into field byte i; the rest of the field is cleared.
  void Encode(std::int32_t Offset, std::int32_t Size, const TBytes& Bytes);
  /// Count bytes from the field (zero once the field ends).
  [[nodiscard]] TBytes Decode(std::int32_t Offset, std::int32_t Size, std::int32_t Count) const;

  [[nodiscard]] bool GetAsBoolean(std::int32_t Offset, std::int32_t Size) const;
  void SetAsBoolean(std::int32_t Offset, std::int32_t Size, bool Value);
  [[nodiscard]] std::uint8_t GetAsByte(std::int32_t Offset, std::int32_t Size) const;
  void SetAsByte(std::int32_t Offset, std::int32_t Size, std::uint8_t Value);
  [[nodiscard]] std::int32_t GetAsInteger(std::int32_t Offset, std::int32_t Size) const;
  void SetAsInteger(std::int32_t Offset, std::int32_t Size, std::int32_t Value);
  [[nodiscard]] std::int64_t GetAsInt64(std::int32_t Offset, std::int32_t Size) const;
  void SetAsInt64(std::int32_t Offset, std::int32_t Size, std::int64_t Value);
  [[nodiscard]] double GetAsDouble(std::int32_t Offset, std::int32_t Size) const;
  void SetAsDouble(std::int32_t Offset, std::int32_t Size, double Value);
  [[nodiscard]] float GetAsFloat(std::int32_t Offset, std::int32_t Size) const;
  void SetAsFloat(std::int32_t Offset, std::int32_t Size, float Value);
  /// (Size + 7) / 8 characters.
  [[nodiscard]] AnsiString GetAsString(std::int32_t Offset, std::int32_t Size) const;
  /// Value padded with NUL or cut to (Size + 7) / 8 characters.
  void SetAsString(std::int32_t Offset, std::int32_t Size, const AnsiString& Value);
  /// "1" or "0" per bit from Offset upward; empty for Size <= 0.
  [[nodiscard]] String GetAsBitString(std::int32_t Offset, std::int32_t Size) const;
  /// Bits past the end of Value are cleared; a character other than '0' and '1' raises
  /// Exception, the bits before it already written.
  void SetAsBitString(std::int32_t Offset, std::int32_t Size, StringView Value);

  [[nodiscard]] std::int32_t NumberOfOnes() const;
  [[nodiscard]] std::int32_t NumberOfZeros() const;
  [[nodiscard]] String ToBitString() const { return GetAsBitString(0, GetSize()); }
  /// The bit string.
  [[nodiscard]] virtual String ToString() const { return ToBitString(); }

  /// A new set of this object's class with the same size and bits; owned by the caller.
  [[nodiscard]] std::unique_ptr<TKZEncodedBits> Clone() const;

 private:
  // Positions are 64-bit so that Offset + Size never wraps.
  [[nodiscard]] bool Bit(std::int64_t Index) const;
  void PutBit(std::int64_t Index, bool Value);
  [[nodiscard]] std::uint8_t DecodeAt(std::int64_t Offset, std::int64_t Size) const;
  void EncodeAt(std::int64_t Offset, std::int64_t Size, std::uint8_t Value);
  /// Field byte i <-> Data[i * Stride] for i < Count (bytes past DataSize dropped / zero).
  void DecodeBytes(std::int64_t Offset, std::int64_t Size, std::uint8_t* Data, std::size_t DataSize,
                   std::int64_t Count, std::size_t Stride) const;
  void EncodeBytes(std::int64_t Offset, std::int64_t Size, const std::uint8_t* Data, std::size_t DataSize,
                   std::int64_t Count, std::size_t Stride);
  template <class T>
  [[nodiscard]] T GetSigned(std::int64_t Offset, std::int64_t Size, bool SignBit) const;
  template <class T>
  void SetSigned(std::int64_t Offset, std::int64_t Size, T Value, bool SignBit);
  /// MantissaShift 0 for doubles, 1 for floats.
  [[nodiscard]] long double GetReal(std::int64_t Offset, std::int64_t Size, int MantissaShift) const;
  void SetReal(std::int64_t Offset, std::int64_t Size, long double Value, int MantissaShift);

  bool FPreserveSignBit = false;
};

}  // namespace kz
