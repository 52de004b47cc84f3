// Shared by the tree sources: the explicit stacks of the walks may fail to grow, which the
// library reports as its own out-of-memory error.
#pragma once

#include <new>
#include <utility>

#include "Runtime/Errors.h"

namespace kz::detail {

template <class TBody>
decltype(auto) RaiseOutOfMemoryAsError(TBody&& Body) {
  try {
    return std::forward<TBody>(Body)();
  } catch (const std::bad_alloc&) {
    throw EOutOfMemory(Runtime::SOutOfMemory);
  }
}

}  // namespace kz::detail
