// Shared by the fuzz targets: a reader of the input that hands out small integers and byte
// runs, and the one rule that only the library's own exceptions may leave it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Runtime/Runtime.h"

namespace kzfuzz {

/// Takes values from the front of the input; answers zeros once it runs out.
class TInput {
 public:
  TInput(const std::uint8_t* Data, std::size_t Size) : FData(Data), FSize(Size) {}
  std::uint8_t Byte() { return FPos < FSize ? FData[FPos++] : 0; }
  std::uint32_t Int(std::uint32_t Bound) {  // 0 .. Bound - 1
    std::uint32_t V = 0;
    for (int i = 0; i < 4; ++i) V = V << 8 | Byte();
    return Bound ? V % Bound : 0;
  }
  std::size_t Left() const { return FSize - FPos; }
  const std::uint8_t* Rest() const { return FData + FPos; }
  /// The remaining bytes; the input is used up afterwards.
  std::string TakeRest() {
    std::string S(reinterpret_cast<const char*>(Rest()), Left());
    FPos = FSize;
    return S;
  }

 private:
  const std::uint8_t* FData;
  std::size_t FSize;
  std::size_t FPos = 0;
};

/// One of the library's encodings chosen by K, or null (to be detected from the bytes).
inline kz::TEncoding* EncodingOf(std::uint8_t K) {
  switch (K % 5) {
    case 1: return kz::TEncoding::Default();
    case 2: return kz::TEncoding::UTF8();
    case 3: return kz::TEncoding::Unicode();
    case 4: return kz::TEncoding::BigEndianUnicode();
    default: return nullptr;
  }
}

/// A broken promise: reported as a crash with its reason.
[[noreturn]] inline void Fail(const char* Why) {
  std::fprintf(stderr, "fuzz check failed: %s\n", Why);
  std::abort();
}
inline void Check(bool Ok, const char* Why) {
  if (!Ok) Fail(Why);
}

/// Runs Body; kz::Exception is an accepted answer to bad input, anything else escapes and
/// libFuzzer reports it.
template <class F>
bool Accepts(F&& Body) {
  try {
    Body();
    return true;
  } catch (const kz::Exception&) {
    return false;
  }
}

}  // namespace kzfuzz
