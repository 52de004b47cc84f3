// The checked node cast of the hot paths: the exact class is recognised by its type identity
// before the general (slower) dynamic cast is tried.
#pragma once

#include <typeinfo>

#include "Runtime/Object.h"

namespace kz::detail {

/// As<T>(Node), faster when Node is exactly a T.
template <class T, class U>
T* NodeAs(U* Node) {
  if (Node && typeid(*Node) == typeid(T)) return static_cast<T*>(Node);
  return As<T>(Node);
}

}  // namespace kz::detail
