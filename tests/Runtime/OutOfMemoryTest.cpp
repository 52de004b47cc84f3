#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "Runtime/Runtime.h"

using namespace kz;

// This program replaces operator new so that a test can make allocations of at least a given
// size fail, as a system out of memory would.
namespace {
std::atomic<std::size_t> FailFrom{0};
}

void* operator new(std::size_t Size) {
  const std::size_t Limit = FailFrom.load(std::memory_order_relaxed);
  if (Limit && Size >= Limit) throw std::bad_alloc();
  if (void* P = std::malloc(Size ? Size : 1)) return P;
  throw std::bad_alloc();
}
// The replacement pair allocates with malloc, so its delete frees.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
void operator delete(void* P) noexcept { std::free(P); }
void operator delete(void* P, std::size_t) noexcept { std::free(P); }

namespace {
// What the action raised, caught without allocating while allocations fail.
enum TOutcome { oNothing, oOutOfMemory, oBadAlloc, oOther };
template <class F>
TOutcome RunFailingFrom(std::size_t Limit, F&& Action, String* Text = nullptr) {
  TOutcome R = oNothing;
  FailFrom = Limit;
  try {
    Action();
  } catch (const EOutOfMemory& E) {
    R = oOutOfMemory;
    FailFrom = 0;
    if (Text) *Text = E.Message();
  } catch (const std::bad_alloc&) {
    R = oBadAlloc;
  } catch (...) {
    R = oOther;
  }
  FailFrom = 0;
  return R;
}
}  // namespace

TEST(OutOfMemory, AllocationFailureInsideTheLibraryRaisesEOutOfMemory) {
  TBits Bits;
  String Text;
  EXPECT_EQ(RunFailingFrom(4096, [&] { Bits.SetSize(1 << 20); }, &Text), oOutOfMemory);
  EXPECT_EQ(Text, u"Out of memory");
  EXPECT_EQ(RunFailingFrom(4096, [&] { (void)Format(u"%*d", {5000, 1}); }), oOutOfMemory);
  // When even the message cannot be allocated the error still comes, without text.
  EXPECT_EQ(RunFailingFrom(1, [&] { Bits.SetSize(1 << 20); }, &Text), oOutOfMemory);
  EXPECT_EQ(Text, u"");
  Bits.SetSize(1 << 20);  // and the library works on once memory is back
  EXPECT_EQ(Bits.GetSize(), 1 << 20);
}
