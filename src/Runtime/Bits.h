// The resizable bit set.
#pragma once

#include <cstdint>
#include <vector>

#include "Runtime/Errors.h"
#include "Runtime/Persistent.h"

namespace kz {

KZ_DECLARE_EXCEPTION(EBitsError, Exception)
namespace Runtime {
KZ_RESOURCESTRING(SBitsIndexError, u"Bits index out of range")
}  // namespace Runtime

/// A set of bits numbered from 0 that grows on demand. Reading a bit at or past GetSize()
/// raises EBitsError; setting one there grows the set (new bits are clear). Copies through
/// Assign from another bit set.
class TBits : public TPersistent {
 public:
  using TMeta = TMetaClassOf<TBits>;
  KZ_CLASS(TBits, TPersistent)
 public:
  TBits() = default;

  std::int32_t GetSize() const { return FSize; }
  /// Grows with clear bits or cuts; a negative size raises EBitsError.
  void SetSize(std::int32_t Value);
  bool GetBit(std::int32_t Index) const;
  void SetBit(std::int32_t Index, bool Value);
  /// The index of the first clear bit, or GetSize() when every bit is set.
  std::int32_t OpenBit() const;

  void Assign(TPersistent* Source) override;

 private:
  std::vector<std::uint64_t> FWords;
  std::int32_t FSize = 0;
};

}  // namespace kz
