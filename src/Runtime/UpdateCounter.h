// The update-bracket counter every container uses for BeginUpdate/EndUpdate, and the scope
// guard that restores a value on every way out of a block.
#pragma once

#include <cstdint>
#include <utility>

#include "Runtime/Errors.h"

namespace kz {

/// What an EndUpdate without a matching BeginUpdate does.
enum TUnmatchedEndUpdate : std::uint8_t {
  ueIgnore,        // nothing: the count stays at zero
  ueRaise,         // EInvalidOperation "EndUpdate called without a matching BeginUpdate"
  ueCountNegative, // the count goes below zero; only its return to exactly 0 reports, and a
                   // negative count does not mute (Updating() is false)
  ueReport         // the count stays at zero and End() answers true: the change is reported
};

/// An update-bracket count with a fixed rule for an unmatched end. Begin() opens a bracket,
/// End() closes one and answers true when it closed the outermost (the count is back at 0).
/// Updating() is true while any bracket is open (the count is above zero). O(1), no allocation.
template <TUnmatchedEndUpdate Policy>
class TUpdateCounter {
 public:
  void Begin() noexcept { ++FCount; }

  /// Closes one bracket; true when the count has just returned to zero.
  [[nodiscard]] bool End() {
    if constexpr (Policy == ueIgnore) {
      if (FCount == 0) return false;
    } else if constexpr (Policy == ueReport) {
      if (FCount == 0) return true;
    } else if constexpr (Policy == ueRaise) {
      if (FCount <= 0) throw EInvalidOperation(Runtime::SUnbalancedEndUpdate);
    }
    return --FCount == 0;
  }

  [[nodiscard]] bool Updating() const noexcept { return FCount > 0; }
  [[nodiscard]] std::int32_t Count() const noexcept { return FCount; }
  /// Forgets every open bracket (for a container that is reset from a stored form).
  void Reset() noexcept { FCount = 0; }

 private:
  std::int32_t FCount = 0;
};

/// Sets Target to a new value for the life of the guard and restores the old one on every way
/// out, exceptions included: `TRestoreValue Busy(FBusy, true);`.
template <class T>
class [[nodiscard]] TRestoreValue {
 public:
  TRestoreValue(T& Target, T NewValue) : FTarget(Target), FSaved(std::move(Target)) {
    FTarget = std::move(NewValue);
  }
  TRestoreValue(const TRestoreValue&) = delete;
  TRestoreValue& operator=(const TRestoreValue&) = delete;
  ~TRestoreValue() { FTarget = std::move(FSaved); }

 private:
  T& FTarget;
  T FSaved;
};

}  // namespace kz
