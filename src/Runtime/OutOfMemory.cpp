// Allocation failure inside the library becomes EOutOfMemory.
//
// The library is linked with --wrap for the throwing forms of operator new, so every
// allocation its own code makes (containers, strings, objects, the standard templates it
// instantiates) goes through the wrappers below. They call the program's operator new
// unchanged (the host may have replaced it, and deletes still pair with it) and translate
// std::bad_alloc only. Nothing global is touched: the host's own allocations still raise
// std::bad_alloc.
#include <new>

#include "Runtime/Errors.h"

#if defined(KZ_WRAP_OPERATOR_NEW)

namespace kz {
namespace {

thread_local bool RaisingOutOfMemory = false;

// Called inside the handler of a std::bad_alloc. The message itself needs memory; when even
// that fails the nested failure is passed up here and the error goes out without text, which
// allocates nothing.
[[noreturn]] void RaiseOutOfMemory() {
  if (RaisingOutOfMemory) throw;
  RaisingOutOfMemory = true;
  try {
    throw EOutOfMemory(Runtime::SOutOfMemory);
  } catch (const std::bad_alloc&) {
    RaisingOutOfMemory = false;
    throw EOutOfMemory(String());
  } catch (...) {
    RaisingOutOfMemory = false;
    throw;
  }
}

}  // namespace
}  // namespace kz

extern "C" {
void* __real__Znwm(std::size_t Size);
void* __real__Znam(std::size_t Size);
void* __real__ZnwmSt11align_val_t(std::size_t Size, std::align_val_t Align);
void* __real__ZnamSt11align_val_t(std::size_t Size, std::align_val_t Align);

void* __wrap__Znwm(std::size_t Size) {
  try {
    return __real__Znwm(Size);
  } catch (const std::bad_alloc&) {
    kz::RaiseOutOfMemory();
  }
}
void* __wrap__Znam(std::size_t Size) {
  try {
    return __real__Znam(Size);
  } catch (const std::bad_alloc&) {
    kz::RaiseOutOfMemory();
  }
}
void* __wrap__ZnwmSt11align_val_t(std::size_t Size, std::align_val_t Align) {
  try {
    return __real__ZnwmSt11align_val_t(Size, Align);
  } catch (const std::bad_alloc&) {
    kz::RaiseOutOfMemory();
  }
}
void* __wrap__ZnamSt11align_val_t(std::size_t Size, std::align_val_t Align) {
  try {
    return __real__ZnamSt11align_val_t(Size, Align);
  } catch (const std::bad_alloc&) {
    kz::RaiseOutOfMemory();
  }
}
}

#endif
