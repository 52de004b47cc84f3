// Helpers of the runtime tests: objects that count how many of them are alive (to check what
// containers free or release) and the message of an expected exception.
#pragma once

#include <gtest/gtest.h>

#include "Runtime/Runtime.h"

namespace kz::test {

class TCounted : public TObject {
  KZ_CLASS(TCounted, TObject)
 public:
  explicit TCounted(int Tag = 0) : FTag(Tag) { ++Alive; }
  ~TCounted() override { --Alive; }
  int Tag() const { return FTag; }
  static inline int Alive = 0;

 private:
  int FTag;
};

/// The interfaced counterpart of TCounted, to check what holders of references release.
class TCountedIntf : public TInterfacedObject {
 public:
  TCountedIntf() { ++Alive; }
  ~TCountedIntf() override { --Alive; }
  static inline int Alive = 0;
};

/// Runs Action and answers the message of the E it raises; a test failure when it raises
/// nothing.
template <class E, class F>
String MessageOf(F&& Action) {
  try {
    Action();
  } catch (const E& Ex) {
    return Ex.Message();
  }
  ADD_FAILURE() << "no exception of the expected class";
  return String();
}

}  // namespace kz::test
