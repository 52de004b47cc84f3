#include "Runtime/Bits.h"

namespace kz {

using namespace Runtime;

void TBits::SetSize(std::int32_t Value) {
  if (Value < 0) throw EBitsError(SBitsIndexError);
  FWords.resize((static_cast<std::size_t>(Value) + 63) / 64, 0);
  // Clear the bits past the new end of the last word, so that growing again shows zeros.
  if (Value % 64) FWords.back() &= (std::uint64_t{1} << (Value % 64)) - 1;
  FSize = Value;
}

bool TBits::GetBit(std::int32_t Index) const {
  if (Index < 0 || Index >= FSize) throw EBitsError(SBitsIndexError);
  return (FWords[static_cast<std::size_t>(Index) / 64] >> (Index % 64)) & 1;
}

void TBits::SetBit(std::int32_t Index, bool Value) {
  if (Index < 0 || Index == INT32_MAX) throw EBitsError(SBitsIndexError);
  if (Index >= FSize) SetSize(Index + 1);
  std::uint64_t& W = FWords[static_cast<std::size_t>(Index) / 64];
  const std::uint64_t Mask = std::uint64_t{1} << (Index % 64);
  W = Value ? W | Mask : W & ~Mask;
}

std::int32_t TBits::OpenBit() const {
  for (std::size_t w = 0; w < FWords.size(); ++w)
    if (~FWords[w]) {
      const auto Bit = static_cast<std::int32_t>(w * 64 + static_cast<std::size_t>(__builtin_ctzll(~FWords[w])));
      return Bit < FSize ? Bit : FSize;
    }
  return FSize;
}

void TBits::Assign(TPersistent* Source) {
  if (auto* B = dynamic_cast<TBits*>(Source)) {
    FWords = B->FWords;
    FSize = B->FSize;
  } else {
    inherited::Assign(Source);
  }
}

}  // namespace kz
