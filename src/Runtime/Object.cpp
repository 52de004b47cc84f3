#include "Runtime/Object.h"

#include <map>
#include <mutex>

namespace kz {

using namespace Runtime;

bool TMetaClass::InheritsFrom(const TMetaClass* AClass) const {
  for (const TMetaClass* C = this; C; C = C->FParent)
    if (C == AClass) return true;
  return false;
}

const TObject::TMeta& TObject::ClassInfo() {
  static const TMeta Meta(u"TObject", nullptr);
  return Meta;
}

TObject::~TObject() = default;

bool TObject::GetInterface(const TGUID&, void** Obj) {
  *Obj = nullptr;
  return false;
}

String ClassNameOrNil(const TObject* Obj) { return Obj ? Obj->ClassName() : LoadResString(SNilObject); }

namespace {
struct TRegistry {
  std::mutex Lock;
  std::map<String, const TMetaClass*, std::less<>> Classes;
};
TRegistry& Registry() {
  static TRegistry R;
  return R;
}
}  // namespace

void RegisterClass(const TMetaClass& AClass) {
  TRegistry& R = Registry();
  std::lock_guard Guard(R.Lock);
  auto [It, Inserted] = R.Classes.try_emplace(String(AClass.ClassName()), &AClass);
  if (!Inserted && It->second != &AClass) throw EFilerError(SDuplicateClass, {AClass.ClassName()});
}

void UnRegisterClass(const TMetaClass& AClass) {
  TRegistry& R = Registry();
  std::lock_guard Guard(R.Lock);
  auto It = R.Classes.find(AClass.ClassName());
  if (It != R.Classes.end() && It->second == &AClass) R.Classes.erase(It);
}

const TMetaClass* GetClass(StringView Name) {
  TRegistry& R = Registry();
  std::lock_guard Guard(R.Lock);
  auto It = R.Classes.find(Name);
  return It == R.Classes.end() ? nullptr : It->second;
}

const TMetaClass& FindClass(StringView Name) {
  if (const TMetaClass* C = GetClass(Name)) return *C;
  throw EClassNotFound(SClassNotFound, {Name});
}

}  // namespace kz
