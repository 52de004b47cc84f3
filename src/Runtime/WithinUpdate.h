// Running a change inside a target's BeginUpdate/EndUpdate bracket.
#pragma once

namespace kz {

/// Runs Body between Target.BeginUpdate() and Target.EndUpdate(). The update is closed on
/// every way out, so a failed bulk change does not leave the target muted, and an error raised
/// by the closing notification still reaches the caller.
template <class TTarget, class TBody>
void WithinUpdate(TTarget& Target, TBody&& Body) {
  Target.BeginUpdate();
  try {
    Body();
  } catch (...) {
    Target.EndUpdate();
    throw;
  }
  Target.EndUpdate();
}

}  // namespace kz
