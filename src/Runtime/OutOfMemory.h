// Allocation failure where the library's allocation hook does not reach.
//
// The library's own code needs nothing: it is linked so that its allocations raise
// EOutOfMemory (OutOfMemory.cpp). Two kinds of allocation escape that: a template in an
// installed header is compiled into the host's program, and narrow strings grow inside the
// C++ runtime's own compiled code. Both run their allocating steps through
// RaiseOutOfMemoryAsError to keep the library's error.
#pragma once

#include <new>
#include <utility>

#include "Runtime/Errors.h"

namespace kz::detail {

/// Runs Body and answers its result; a std::bad_alloc from it becomes EOutOfMemory.
template <class TBody>
decltype(auto) RaiseOutOfMemoryAsError(TBody&& Body) {
  try {
    return std::forward<TBody>(Body)();
  } catch (const std::bad_alloc&) {
    throw EOutOfMemory(Runtime::SOutOfMemory);
  }
}

}  // namespace kz::detail
