#include "Runtime/Errors.h"

#include <atomic>

#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

namespace {
std::atomic<TTranslationHook> GTranslationHook{nullptr};
}

TTranslationHook SetTranslationHook(TTranslationHook Hook) { return GTranslationHook.exchange(Hook); }

std::string TResourceString::QualifiedName() const { return std::string(Unit) + "." + Name; }

String LoadResString(const TResourceString& Res) {
  if (TTranslationHook Hook = GTranslationHook.load())
    if (const char16_t* Text = Hook(Res)) return Text;
  return Res.Text;
}

Exception::Exception(String Msg) : FMessage(std::move(Msg)), FWhat(StringToUtf8(FMessage)) {}

Exception::Exception(const TResourceString& Res) : Exception(LoadResString(Res)) {}

Exception::Exception(const TResourceString& Res, std::initializer_list<TFormatArg> Args)
    : Exception(Format(LoadResString(Res), Args)) {}

// Out of line so that the class has one home for its vtable.
Exception::~Exception() = default;

void RaiseNullAccess(const char16_t* What) { throw EAccessViolation(Runtime::SAccessViolation, {What}); }

}  // namespace kz
