// Interface contracts shared by the containers: iterators over pointers, strings, interfaces
// and objects, and the contracts of cloning, locations, vectors, stream tokens and streaming.
#pragma once

#include <cstdint>

#include "Runtime/Runtime.h"

namespace kz {

/// Iterator over untyped elements. Reset goes back before the first element; NextElement
/// returns the next one (raising the collection's own error past the end); CurrentElement is
/// the element NextElement returned last; GetCount is a count whose meaning each iterator
/// documents. Iterators read their collection live and do not keep it alive.
class IIterator : public virtual IInterface {
  KZ_INTERFACE(IIterator, IInterface, "{F83E4161-A296-11D3-B992-00C04F8EDA5F}")
 public:
  virtual Pointer CurrentElement() = 0;
  virtual std::int32_t GetCount() = 0;
  /// The second count query answers GetCount.
  std::int32_t Count() { return GetCount(); }
  virtual bool HasMoreElements() = 0;
  virtual Pointer NextElement() = 0;
  virtual void Reset() = 0;
};

/// Iterator over strings. Its element methods carry an S suffix so that one object can be both
/// an IIterator and an IStringIterator.
class IStringIterator : public virtual IInterface {
  KZ_INTERFACE(IStringIterator, IInterface, "{F83E4162-A296-11D3-B992-00C04F8EDA5F}")
 public:
  virtual String CurrentElementS() = 0;
  virtual std::int32_t GetCount() = 0;
  std::int32_t Count() { return GetCount(); }
  virtual bool HasMoreElements() = 0;
  virtual String NextElementS() = 0;
  virtual void Reset() = 0;
};

/// Iterator over interface references (suffix I).
class IInterfaceIterator : public virtual IInterface {
  KZ_INTERFACE(IInterfaceIterator, IInterface, "{E1A337B7-D59B-11D3-B9BF-00C04F8EDA5F}")
 public:
  virtual TIntfPtr<IInterface> CurrentElementI() = 0;
  virtual std::int32_t GetCount() = 0;
  std::int32_t Count() { return GetCount(); }
  virtual bool HasMoreElements() = 0;
  virtual TIntfPtr<IInterface> NextElementI() = 0;
  virtual void Reset() = 0;
};

/// Iterator over objects (suffix O).
class IObjectIterator : public virtual IInterface {
  KZ_INTERFACE(IObjectIterator, IInterface, "{E1A337B8-D59B-11D3-B9BF-00C04F8EDA5F}")
 public:
  virtual TObject* CurrentElementO() = 0;
  virtual std::int32_t GetCount() = 0;
  std::int32_t Count() { return GetCount(); }
  virtual bool HasMoreElements() = 0;
  virtual TObject* NextElementO() = 0;
  virtual void Reset() = 0;
};

}  // namespace kz
