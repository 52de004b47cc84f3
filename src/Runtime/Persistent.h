// Persistent objects: copy by Assign/AssignTo, stored-property hook for the filer.
#pragma once

#include "Runtime/Object.h"
#include "Runtime/WithinUpdate.h"

namespace kz {

class TFiler;

/// Base of objects that copy from like objects. Assign(Source) asks Source->AssignTo(this);
/// when neither side knows the other, EConvertError "Cannot assign a X to a Y" is raised.
class TPersistent : public TObject {
  KZ_CLASS(TPersistent, TObject)
 public:
  /// Copies Source into this object. A null Source raises the assign error with "nil".
  virtual void Assign(TPersistent* Source);
  /// Copies this object into Dest; the default raises the assign error.
  virtual void AssignTo(TPersistent* Dest);
  /// Declares stored properties that are not published ones; empty by default.
  virtual void DefineProperties(TFiler* Filer);
  /// The object that owns this one for naming purposes; null by default.
  virtual TPersistent* GetOwner();
  virtual String GetNamePath();

 protected:
  /// Raises the assign error: "Cannot assign a <Source class or nil> to a <own class>".
  [[noreturn]] void AssignError(TPersistent* Source);
};

}  // namespace kz
