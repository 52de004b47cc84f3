#include "Runtime/VarRec.h"

namespace kz {

using namespace Runtime;

std::string_view TVarRec::NarrowText() const {
  if (FType == vtPChar) {
    const char* P = static_cast<const char*>(FPtr);
    return P ? std::string_view(P) : std::string_view();
  }
  if (FType != vtString && FType != vtAnsiString) Raise(vtAnsiString);
  return std::string_view(static_cast<const char*>(FPtr), FLength);
}

StringView TVarRec::WideText() const {
  if (FType == vtPWideChar) {
    const Char* P = static_cast<const Char*>(FPtr);
    return P ? StringView(P) : StringView();
  }
  if (FType != vtWideString && FType != vtUnicodeString) Raise(vtUnicodeString);
  return StringView(static_cast<const Char*>(FPtr), FLength);
}

void TVarRec::Raise(TValueType Expected) const {
  throw EInvalidCast(SVarRecKindError, {static_cast<int>(FType), static_cast<int>(Expected)});
}

}  // namespace kz
