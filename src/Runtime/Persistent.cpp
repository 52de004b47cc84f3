#include "Runtime/Persistent.h"

namespace kz {

using namespace Runtime;

void TPersistent::Assign(TPersistent* Source) {
  if (Source)
    Source->AssignTo(this);
  else
    AssignError(nullptr);
}

void TPersistent::AssignTo(TPersistent* Dest) {
  if (!Dest) RaiseNullAccess(u"assignment destination");
  Dest->AssignError(this);
}

void TPersistent::DefineProperties(TFiler*) {}

TPersistent* TPersistent::GetOwner() { return nullptr; }

String TPersistent::GetNamePath() { return ClassName(); }

void TPersistent::AssignError(TPersistent* Source) {
  throw EConvertError(SAssignError, {ClassNameOrNil(Source), ClassName()});
}

}  // namespace kz
