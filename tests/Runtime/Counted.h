// Test objects that count how many of them are alive, to check what containers free.
#pragma once

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

}  // namespace kz::test
